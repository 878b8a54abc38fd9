// Interpolation, resampling and crossing searches over sampled curves: the routines behind
// Interp, XFromY, YFromX, PropagationDelay, the range reductions and the Fourier resampling.
//
// A curve is n points (x[i], y[i]) in the order of its samples. Nothing here requires the x
// values to be sorted, but only monotonic x make the searches mean what their names say.
//
// Interpolation of order m at a place t uses the polynomial of degree m through m + 1
// consecutive points, the stencil. Everything in this file chooses stencils by one rule: with k
// the first point whose x is at or beyond t (the last point when there is none), the stencil is
// points max(0, k - m) ... max(0, k - m) + m. So t lies in the stencil's last interval where it
// can, and points before or after the data extrapolate from the first or last m + 1 points.
// Orders are capped at n - 1 and at kMaxInterpOrder: a polynomial through more points than that
// only amplifies rounding and noise.
//
// Equal x values within a stencil (the vertical edge of a piecewise-linear source), NaN and
// infinities leave the polynomial undefined or non-finite. Where that happens the routines below
// fall back to the straight line through the two points that enclose t, so a bad point only
// touches the values next to it.
//
// None of these routines allocates per point, reports messages or reads options: callers do.
#pragma once

#include <algorithm>
#include <complex>
#include <cstdint>
#include <vector>

namespace wavex {

inline constexpr int kMaxInterpOrder = 16;

// The options of an interpolation or search. Callers start from all zeros ({}) and set the order,
// the direction and the level-search flag.
struct InterpOpts {
    // Set: the search sequence is the y values and the result is the x where y reaches the level
    // (XFromY). Clear: the search sequence is the x values and the result is y there (YFromX).
    uint8_t levelSearch = 0;
    uint8_t flag2 = 0;    // unused, always 0
    uint8_t flag3 = 0;    // unused, always 0
    uint8_t reserved = 0;
    int32_t order = 0;      // 1 linear, 2 quadratic, ...
    int32_t direction = 0;  // +1 rising crossings only, -1 falling only, 0 both
    int64_t tail = 0;       // unused, always 0
};
static_assert(sizeof(InterpOpts) == 24, "four one-byte flags, order, direction, tail");

// The value at `at` of the polynomial of degree opts.order (taken as 0 when negative) through the
// opts.order + 1 points (x[j], y[j]), in Lagrange form. Exact at the points themselves;
// extrapolates outside them. Equal x values among the points give a non-finite result.
double support_Interp(const double* y, const double* x, double at, const InterpOpts& opts);

// A list built by a forward scan that adds each item at its head: walked from the head it runs
// from the last item found back to the first, and its reverse runs in the order of the scan.
// Stored as an array in scan order, so adding at the head and reading the reverse cost nothing.
template <class T>
class YList {
public:
    // Makes `value` the new head (kept at the end of one contiguous array).
    void addNewest(T value) { items_.push_back(value); }
    size_t size() const { return items_.size(); }
    bool empty() const { return items_.empty(); }
    void clear() { items_.clear(); }
    // Walked from the head: the newest item first.
    auto begin() const { return items_.rbegin(); }
    auto end() const { return items_.rend(); }
    const T& head() const { return items_.back(); }
    // Reverses the list in place: afterwards the head is the item found first.
    void reverse() { std::reverse(items_.begin(), items_.end()); }
    // The items oldest first, the reverse of the list's order (for a list as the scan built it:
    // scan order), contiguous: what a caller copies when it fills an array "from the end, head in
    // the last slot".
    const T* oldestFirst() const { return items_.data(); }

private:
    std::vector<T> items_;
};

// Scans the n points of the sequence b for the places where it reaches `level` and adds, for each,
// the value of the sequence a interpolated there to `results` and a point index to `indices`.
// The lists are built newest first (see YList), so their reverse runs along the curve.
//
// Where b reaches the level:
//   - between points i and i+1 when b[i] and b[i+1] lie on opposite sides of the level: the
//     crossing is rising when b[i+1] is above; its index is i;
//   - at a point p exactly on the level, arrived at from one side (rising when from below); a run
//     of such points counts once, at its first point p, and p is the index; leaving the level does
//     not count again, so a curve that touches the level and turns back reaches it once;
//   - a curve that starts on the level reaches it at point 0, in the direction it leaves; a curve
//     that never leaves the level reaches it once, at point 0, in no direction (found only when
//     both directions are asked for);
//   - a NaN in b breaks the curve: no crossing involves it, and the next point starts afresh.
// opts.direction keeps rising (+1), falling (-1) or all (0) crossings.
//
// The value at a crossing: at a point on the level, a[p] exactly. Between points, with the
// stencil of order opts.order that ends at point i+1:
//   - opts.levelSearch clear: a as a polynomial of b, evaluated at the level (YFromX: a = y, b = x);
//   - opts.levelSearch set: the place between a[i] and a[i+1] where b, as a polynomial of a,
//     equals the level (XFromY: a = x, b = y); order 1 and 2 in closed form, higher orders by
//     bracketed iteration.
// When that value is not finite or, for a level search, not between a[i] and a[i+1], the linear
// interpolation between points i and i+1 is used.
void support_FindYFromX(YList<double>& results, YList<long long>& indices, const double* a, const double* b,
                        long long n, double level, InterpOpts opts);

// Resamples the curve (x[i], y[i]), i < n, at the count points t_i = i * step + start, writing the
// values to out[0 .. count) and, when xOut is given, the t_i to xOut[0 .. count). x may be null:
// the x values are then the indices 0, 1, ..., n - 1.
// Each value is the interpolation of the given order (capped at n - 1 and kMaxInterpOrder; below 0
// taken as 0) over the stencil the rule above picks for t_i; an empty curve gives NaN.
//
// One forward sweep: the search cursor never moves back, so the work is linear in n + count. A
// negative step is swept from the last output point to the first, which is the same forward sweep
// over the data. (For x values that are not increasing the sweep still runs forward, and each
// point interpolates over the stencil the cursor has reached.)
void support_Resample(const double* y, const double* x, int64_t n, double start, double step, int64_t count,
                      int order, double* out, double* xOut = nullptr);

// The most points a resampled curve may have: its y and x values together may take at most half
// of the machine's physical memory. Callers refuse larger requests with a message rather than
// exhaust the memory.
int64_t support_MaxResamplePoints();

// Fills `map` with the indices 0 .. n-1 ordered so that values[map[0]], values[map[1]], ... ascend.
// Stable: equal values keep their order. NaN values go last, in their order.
void sp_GetSortMap(const double* values, int64_t n, std::vector<int64_t>& map);

// The x values of a curve of n points as reals: null when it has no reference (`present` false),
// else `x` when the reference is real, else the real parts of the complex reference `z`
// (frequencies kept as complex numbers) copied into `scratch`. An empty reference, whose arrays
// may be null, still gives a pointer (to nothing to read).
const double* support_RealAbscissa(bool present, const double* x, const std::complex<double>* z, int64_t n,
                                   std::vector<double>& scratch);

}  // namespace wavex

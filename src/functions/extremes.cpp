// Local extremes and cycle periods of a curve: Maxima, Minima and CyclePeriod.
//
// All three work on one division at a time (a stepped or Monte Carlo run gives one result curve
// per run). Scalar arguments are the first real value of their vector; a complex reference is
// taken by its real parts.
#include "support/interpolation.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/array.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---- Maxima, Minima ----------------------------------------------------------------------------
//
// Maxima(v [, level [, options]]) gives every local maximum of v as a curve: y the maximum values,
// x where they occur. Minima mirrors it. A local maximum is a point, or a run of equal points (a
// plateau, which counts once), whose neighbours on both sides are lower. The first and last points
// have a neighbour on one side only and do not count unless the option "ends" is given; a NaN
// neighbour is never lower, so a NaN breaks the curve as it does for crossings.
//   level    keep only maxima above it (minima below it), strictly; NaN or [] keeps all.
//   options  a string vector of words, each followed by its value where it takes one, case
//            ignored: "prominence" P keeps only extremes of prominence P or more (engineering
//            suffixes allowed: "10m"); "ends" lets the first and last points count.
// The prominence of a maximum is its height above the higher of the two lowest points that
// separate it from a higher point on either side, or from the end of its stretch of the curve
// (up to an end or a NaN) where there is no higher point; a side with no points at all (an end
// maximum) is left out. For minima everything is mirrored.
// The x of an extreme is the middle of its plateau: (x[first] + x[last]) / 2. A curve without a
// reference gets the point indices as x (a plateau of two points sits at i + 0.5), with a plain
// number as reference unit. Units: v's. Fewer than two points or no extreme: an empty curve.
// Messages: "Unknown option '%s' in function '%s'", "Option '%s' in function '%s' needs a number".

enum class Extrema { Maxima, Minima, Count };

struct ExtremaOp {
    Extrema op;
    int sign;  // the scan looks for maxima of sign * v
};

constexpr ExtremaOp kExtrema[] = {
    {Extrema::Maxima, 1},
    {Extrema::Minima, -1},
};

static_assert(rowsInOrder(kExtrema, &ExtremaOp::op, [](const ExtremaOp& c) { return c.sign == 1 || c.sign == -1; }),
              "row i holds extreme kind i, with sign +1 or -1");

struct ExtremaOptions {
    double level = kNaN;  // NaN: no level
    double prominence = -std::numeric_limits<double>::infinity();
    bool ends = false;
};

// Reads the level and option words; false after reporting a message.
bool readExtremaOptions(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages, ExtremaOptions& o) {
    if (args.count() > 1) o.level = args.scalar(1);
    const int64_t words = args.count() > 2 ? args.length(2) : 0;
    for (int64_t k = 0; k < words; ++k) {
        std::string_view word = args.string(2, static_cast<size_t>(k));
        if (iequals(word, "ends")) {
            o.ends = true;
        } else if (iequals(word, "prominence")) {
            std::optional<double> p;
            if (k + 1 < words) p = parseEngineeringNumber(args.string(2, static_cast<size_t>(++k)));
            if (!p || std::isnan(*p)) {
                messages.error("Option '%s' in function '%s' needs a number", word, info->name);
                return false;
            }
            o.prominence = *p;
        } else {
            messages.error("Unknown option '%s' in function '%s'", word, info->name);
            return false;
        }
    }
    return true;
}

// The extremes of a curve in order, each by the first point of its plateau, in a buffer with
// room for as many as the curve can hold (uninitialised, and recycled when large).
struct Extremes {
    explicit Extremes(int64_t n) : first(static_cast<size_t>(n / 2 + 2)) {}
    Array<int64_t> first;
    int64_t count = 0;
};

// The last point of the plateau that starts at point i.
int64_t plateauEnd(const double* y, int64_t n, int64_t i) {
    int64_t last = i;
    while (last + 1 < n && y[last + 1] == y[i]) ++last;
    return last;
}

// The maxima of sign * y that pass the level (given as sign * level; NaN passes all). An interior
// point with distinct neighbours, the common case, is written without a branch and kept by
// advancing the count; a run of equal points takes the branch that is rarely taken.
template <int sign>
void scanExtrema(const double* y, int64_t n, double level, bool ends, Extremes& found) {
    auto v = [y](int64_t i) { return sign * y[i]; };
    if (std::isnan(level)) level = -std::numeric_limits<double>::infinity();
    if (n < 2) return;
    int64_t* out = found.first.data();
    int64_t k = 0;
    int64_t i = plateauEnd(y, n, 0);  // the run at the start: an extreme only with "ends"
    if (ends && i + 1 < n && v(i + 1) < v(0) && v(0) > level) out[k++] = 0;
    for (++i; i < n - 1; ++i) {
        const double a = v(i - 1), b = v(i), c = v(i + 1);
        if (b == c) [[unlikely]] {
            if (!(a < b)) continue;
            const int64_t last = plateauEnd(y, n, i);
            if (b > level && (last + 1 < n ? v(last + 1) < b : ends)) out[k++] = i;
            i = last;
            continue;
        }
        out[k] = i;
        k += (a < b) & (b > c) & (b > level);
    }
    if (ends && i == n - 1 && v(n - 2) < v(n - 1) && v(n - 1) > level) out[k++] = n - 1;
    found.count = k;
}

// For each extreme (in order), the lowest value of sign * y between it and the nearest strictly
// higher point before it (or the start of its stretch), walking the points in `step` direction:
// +1 gives the left bases, read at each plateau's first point; -1 the right bases, read at the
// last point, over the extremes in reverse. A side without points gets NaN. One pass with a stack
// of descending values, each holding the lowest value since the entry below it: linear in n.
template <int sign>
void prominenceBases(const double* y, int64_t n, const Extremes& found, int step, std::vector<double>& bases) {
    struct Entry {
        double value, lowest;
    };
    std::vector<Entry> stack;
    const auto count = static_cast<size_t>(found.count);
    bases.assign(count, kNaN);
    size_t next = step > 0 ? 0 : count - 1;
    // The point where extreme `next` is read; past the last extreme, one no walk reaches.
    auto readAt = [&] { return next >= count ? -1 : step > 0 ? found.first[next] : plateauEnd(y, n, found.first[next]); };
    int64_t at = readAt();
    for (int64_t i = step > 0 ? 0 : n - 1; i >= 0 && i < n && next < count; i += step) {
        const double v = sign * y[i];
        if (std::isnan(v)) {
            stack.clear();
            continue;
        }
        const bool sideEmpty = stack.empty();
        double lowest = v;
        while (!stack.empty() && stack.back().value <= v) {
            lowest = std::min(lowest, stack.back().lowest);
            stack.pop_back();
        }
        stack.push_back({v, lowest});
        if (i == at) {
            if (!sideEmpty) bases[next] = lowest;
            next = step > 0 ? next + 1 : next - 1;  // below 0 wraps past the end and stops the walk
            at = readAt();
        }
    }
}

// Drops the extremes whose prominence is below `least`.
template <int sign>
void keepProminent(const double* y, int64_t n, double least, Extremes& found) {
    if (found.count == 0) return;
    std::vector<double> left, right;
    prominenceBases<sign>(y, n, found, 1, left);
    prominenceBases<sign>(y, n, found, -1, right);
    int64_t kept = 0;
    for (int64_t k = 0; k < found.count; ++k) {
        const double l = left[static_cast<size_t>(k)], r = right[static_cast<size_t>(k)];
        const double base = std::isnan(l) ? r : std::isnan(r) ? l : std::max(l, r);
        const int64_t first = found.first[static_cast<size_t>(k)];
        if (sign * y[first] - base >= least) found.first[static_cast<size_t>(kept++)] = first;
    }
    found.count = kept;
}

template <int sign>
void findExtrema(const double* y, int64_t n, const ExtremaOptions& o, Extremes& found) {
    scanExtrema<sign>(y, n, sign * o.level, o.ends, found);
    if (o.prominence > 0) keepProminent<sign>(y, n, o.prominence, found);
}

template <Extrema op>
FUNC_ERROR extremaHandler(WAVEX_HANDLER_PARAMS) {
    ExtremaOptions o;
    if (!readExtremaOptions(args, info, *messages, o)) return FUNC_FAILED;
    const double* y = args.data(0);
    const int64_t n = args.length(0);
    Extremes found(n);
    findExtrema<kExtrema[static_cast<size_t>(op)].sign>(y, n, o, found);

    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    result->setPhysType(args.physType(0), x ? args.refPhysType(0) : units::Number);
    result->setType(VD_REAL, VD_REAL);
    double* outY = result->makeReal(found.count, RESULT_RESHAPED, -1);
    double* outX = result->makeRealRef(found.count, RESULT_RESHAPED, -1);
    for (int64_t k = 0; k < found.count; ++k) {
        const int64_t first = found.first[static_cast<size_t>(k)], last = plateauEnd(y, n, first);
        outY[k] = y[first];
        outX[k] = x ? (x[first] + x[last]) / 2 : static_cast<double>(first + last) / 2;
    }
    if (x) result->setRefName(args.refName(0));
    return FUNC_OK;
}

// ---- CyclePeriod -------------------------------------------------------------------------------
//
// CyclePeriod(v [, level]): the period of each cycle, the time from one rising crossing of the
// level to the next, over the time of the crossing that starts the cycle. The crossings are those
// of XFromY (support_FindYFromX, rising only, interpolation order the option InterpOrder, default
// 2). The level defaults to midway between the smallest and largest finite values of the
// division; NaN or [] also means the default. Units: the y and x units are both v's x unit, and
// the reference name is v's. Fewer than two rising crossings (a flat, empty or all-NaN curve) give
// an empty curve. A curve without reference fails with "Argument 1 in function '%s' has no
// reference (xvalues)".

double midway(const double* y, int64_t n) {
    double lo = std::numeric_limits<double>::infinity(), hi = -lo;
    for (int64_t i = 0; i < n; ++i) {
        if (!std::isfinite(y[i])) continue;
        lo = std::min(lo, y[i]);
        hi = std::max(hi, y[i]);
    }
    return lo <= hi ? lo + (hi - lo) / 2 : kNaN;
}

FUNC_ERROR cyclePeriod(WAVEX_HANDLER_PARAMS) {
    const int64_t n = args.length(0);
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, *messages);
    if (!x) return FUNC_FAILED;
    const double* y = args.data(0);
    double level = args.count() > 1 ? args.scalar(1) : kNaN;
    if (std::isnan(level)) level = midway(y, n);

    InterpOpts opts{};
    opts.levelSearch = 1;
    opts.direction = 1;
    opts.order = std::max(sp_GetIntOption("InterpOrder", 2), 1);
    YList<double> crossings;
    YList<long long> indices;
    if (!std::isnan(level)) support_FindYFromX(crossings, indices, x, y, n, level, opts);

    const double* t = crossings.oldestFirst();  // in the order of the curve
    const auto periods = static_cast<int64_t>(crossings.size() > 1 ? crossings.size() - 1 : 0);
    result->setPhysType(args.refPhysType(0), args.refPhysType(0));
    result->setType(VD_REAL, VD_REAL);
    double* out = result->makeReal(periods, RESULT_RESHAPED, -1);
    double* at = result->makeRealRef(periods, RESULT_RESHAPED, -1);
    for (int64_t k = 0; k < periods; ++k) {
        out[k] = t[k + 1] - t[k];
        at[k] = t[k];
    }
    result->setRefName(args.refName(0));
    return FUNC_OK;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"CyclePeriod", {arg::Real.each(), arg::Real.each()}, 1, cyclePeriod,
     {.signature = "CyclePeriod(v [, level])",
      .summary = "The period of each cycle of v: the time from one rising crossing of a level to the next.",
      .returns = "a real curve per run in v's x unit, over the x-values of the crossings that start the "
                 "cycles",
      .notes = "The crossings are XFromY's (rising only, order InterpOrder). level defaults to midway "
               "between the run's smallest and largest finite values (NaN or [] too). Fewer than two "
               "rising crossings give an empty curve; v needs x-values.",
      .example = "t = vector(41)/4; CyclePeriod(XY(sin(2.5132741228718345*t), t))"}},
    {"Maxima", {arg::Real.each(), arg::Real, arg::String}, 1, extremaHandler<Extrema::Maxima>,
     {.signature = "Maxima(v [, level [, options]])",
      .summary = "Every local maximum of v, at the x-value where it occurs.",
      .returns = "a real curve per run in v's units: the maxima over their x-values (point indices when v "
                 "has none)",
      .notes = "A maximum is a point, or a plateau of equal points (counted once, at its middle x), higher "
               "than its neighbours on both sides; the end points count only with the option 'ends'. "
               "level keeps only maxima strictly above it (NaN or [] keeps all). options: a string "
               "vector of words, 'prominence', P keeps maxima standing at least P above their "
               "surroundings; an unknown word is an error.",
      .example = "v = XY([0, 2, 1, 3, 3, 1, 2.5, 0, 5], vector(9)); Maxima(v); Maxima(v, 2.6, ['ends'])"}},
    {"Minima", {arg::Real.each(), arg::Real, arg::String}, 1, extremaHandler<Extrema::Minima>,
     {.signature = "Minima(v [, level [, options]])",
      .summary = "Every local minimum of v, at the x-value where it occurs.",
      .returns = "a real curve per run in v's units: the minima over their x-values (point indices when v "
                 "has none)",
      .notes = "Maxima mirrored: level keeps minima strictly below it; options 'prominence', P and 'ends' "
               "as for Maxima.",
      .example = "v = XY([0, 2, 1, 3, 3, 1, 2.5, 0, 5], vector(9)); Minima(v, [], ['prominence', '1.5', 'ends'])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

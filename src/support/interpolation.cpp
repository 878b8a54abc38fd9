#include "support/interpolation.hpp"

#include <unistd.h>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The order used on n points: 0 ... min(n - 1, kMaxInterpOrder).
int cappedOrder(int order, int64_t n) {
    return static_cast<int>(std::clamp<int64_t>(order, 0, std::clamp<int64_t>(n - 1, 0, kMaxInterpOrder)));
}

// First point of the stencil of order m whose last interval ends at point k.
int64_t stencilStart(int64_t k, int m) { return std::max<int64_t>(0, k - m); }

// The straight line through (x0, y0) and (x1, y1) at t; a vertical line gives the y of the side
// of t.
double line(double x0, double y0, double x1, double y1, double t) {
    if (x1 == x0) return t < x0 ? y0 : y1;
    return y0 + (y1 - y0) * ((t - x0) / (x1 - x0));
}

// ---- Resampling ------------------------------------------------------------------------------

// x values of a curve: its samples, or the point indices when it has none.
struct Sampled {
    const double* x;
    double operator[](int64_t i) const { return x[i]; }
};
struct Indexed {
    double operator[](int64_t i) const { return static_cast<double>(i); }
};

// The quadratic through three points at t in Newton form over one common denominator: one
// division. Not exact at the middle and last points: the sweep returns a point's own y when t
// falls on it.
inline double quadratic(double x0, double y0, double x1, double y1, double x2, double y2, double t) {
    double h01 = x1 - x0, h12 = x2 - x1, h02 = x2 - x0;
    double a = (y1 - y0) * h12;
    return y0 + (t - x0) * (((t - x1) * ((y2 - y1) * h01 - a) + a * h02) / (h01 * h12 * h02));
}

// The sweep of support_Resample. Order is 1 or 2 for the inlined kernels, 0 for any order m
// through support_Interp.
template <int Order, class X>
void sweep(const double* y, X x, int64_t n, double start, double step, int64_t count, int m, double* out,
           double* xOut) {
    const double xLast = x[n - 1];
    int64_t k = 0;
    InterpOpts opts{};
    opts.order = m;
    auto valueAt = [&](double t) {
        // The cursor stops at the first x at or beyond t; a NaN x is passed over. Before the end,
        // with t up to the last x, it cannot run past that x and needs no bound.
        if (k < n && t <= xLast) {
            while (!(x[k] >= t)) ++k;
        } else {
            while (k < n && !(x[k] >= t)) ++k;
        }
        int64_t last = k < n ? k : n - 1;
        if (x[last] == t) return y[last];
        int64_t w = stencilStart(last, m);
        double v;
        if constexpr (Order == 1) {
            v = line(x[w], y[w], x[w + 1], y[w + 1], t);
        } else if constexpr (Order == 2) {
            v = quadratic(x[w], y[w], x[w + 1], y[w + 1], x[w + 2], y[w + 2], t);
        } else {
            double xs[kMaxInterpOrder + 1];
            for (int j = 0; j <= m; ++j) xs[j] = x[w + j];
            v = support_Interp(y + w, xs, t, opts);
        }
        if (std::isfinite(v) || n < 2) return v;
        int64_t j = std::max<int64_t>(last, 1);
        return line(x[j - 1], y[j - 1], x[j], y[j], t);
    };
    auto at = [&](int64_t i) {
        double t = static_cast<double>(i) * step + start;
        out[i] = valueAt(t);
        if (xOut) xOut[i] = t;
    };
    if (step >= 0 || std::isnan(step)) {
        for (int64_t i = 0; i < count; ++i) at(i);
    } else {
        for (int64_t i = count; i-- > 0;) at(i);
    }
}

template <class X>
void resample(const double* y, X x, int64_t n, double start, double step, int64_t count, int m, double* out,
              double* xOut) {
    switch (m) {
        case 1: sweep<1>(y, x, n, start, step, count, m, out, xOut); break;
        case 2: sweep<2>(y, x, n, start, step, count, m, out, xOut); break;
        default: sweep<0>(y, x, n, start, step, count, m, out, xOut); break;
    }
}

// ---- Crossing search -------------------------------------------------------------------------

// The place u between 0 and h where c + B u + A u^2 vanishes, or NaN.
double quadraticRoot(double A, double B, double c, double h) {
    double lo = std::min(0.0, h), hi = std::max(0.0, h);
    double slack = 1e-9 * (hi - lo);  // a root just outside by rounding is taken as the end point
    auto inside = [&](double u) { return u >= lo - slack && u <= hi + slack; };
    double u1 = kNaN, u2 = kNaN;
    if (A == 0) {
        u1 = -c / B;
    } else {
        double disc = B * B - 4 * A * c;
        if (disc < 0) return kNaN;
        double q = -0.5 * (B + std::copysign(std::sqrt(disc), B));
        u1 = q / A;
        u2 = c / q;
    }
    if (inside(u1)) return std::clamp(u1, lo, hi);
    if (inside(u2)) return std::clamp(u2, lo, hi);
    return kNaN;
}

// Where, between a[i-1] and a[i], the polynomial of order m through the points (a[w+j], b[w+j])
// equals the level. b[i-1] and b[i] lie on opposite sides of the level. NaN when it is not found.
double levelPlace(const double* a, const double* b, int64_t i, int64_t w, int m, double level) {
    double a0 = a[i - 1], a1 = a[i], h = a1 - a0;
    if (h == 0) return a0;  // a vertical edge
    double f0 = b[i - 1] - level, f1 = b[i] - level;
    if (m <= 1) return a0 + h * (f0 / (f0 - f1));
    if (m == 2) {
        // Newton form over the segment: b = b[i-1] + d1 u + d2 u (u - h), u = t - a0.
        const double *p = a + w, *v = b + w;
        double d1 = (f1 - f0) / h;
        double d2 = ((v[2] - v[1]) / (p[2] - p[1]) - (v[1] - v[0]) / (p[1] - p[0])) / (p[2] - p[0]);
        return a0 + quadraticRoot(d2, d1 - h * d2, f0, h);
    }
    // Illinois iteration on the bracket [a0, a1], from the linear estimate.
    InterpOpts opts{};
    opts.order = m;
    double lo = a0, hi = a1, flo = f0, fhi = f1;
    int side = 0;
    for (int iteration = 0; iteration < 100; ++iteration) {
        double t = lo + (hi - lo) * (flo / (flo - fhi));
        if (!(t != lo && t != hi)) return t;  // the bracket cannot shrink further
        double ft = support_Interp(b + w, a + w, t, opts) - level;
        if (!std::isfinite(ft)) return kNaN;
        if (ft == 0) return t;
        if ((ft > 0) == (fhi > 0)) {
            hi = t;
            fhi = ft;
            if (side == -1) flo *= 0.5;
            side = -1;
        } else {
            lo = t;
            flo = ft;
            if (side == 1) fhi *= 0.5;
            side = 1;
        }
    }
    return lo + (hi - lo) * (flo / (flo - fhi));
}

// The first point from i on that is not above (Above) or not below the level, or n. With AVX2 the
// scan passes over whole blocks of 16 points on one side with four vector compares (ordered: a
// NaN stops the block).
template <bool Above>
int64_t pastSide(const double* b, int64_t i, int64_t n, double level) {
#if defined(__AVX2__)
    constexpr int kPredicate = Above ? _CMP_GT_OQ : _CMP_LT_OQ;
    const __m256d lv = _mm256_set1_pd(level);
    for (; i + 16 <= n; i += 16) {
        __m256d m = _mm256_and_pd(_mm256_cmp_pd(_mm256_loadu_pd(b + i), lv, kPredicate),
                                  _mm256_cmp_pd(_mm256_loadu_pd(b + i + 4), lv, kPredicate));
        m = _mm256_and_pd(m, _mm256_and_pd(_mm256_cmp_pd(_mm256_loadu_pd(b + i + 8), lv, kPredicate),
                                           _mm256_cmp_pd(_mm256_loadu_pd(b + i + 12), lv, kPredicate)));
        if (_mm256_movemask_pd(m) != 0xF) break;
    }
#endif
    while (i < n && (Above ? b[i] > level : b[i] < level)) ++i;
    return i;
}

// The value of a at the crossing of the level between points i-1 and i.
double crossingValue(const double* a, const double* b, int64_t i, int m, double level, const InterpOpts& opts) {
    int64_t w = stencilStart(i, m);
    double a0 = a[i - 1], a1 = a[i];
    if (opts.levelSearch) {
        double t = levelPlace(a, b, i, w, m, level);
        if (t >= std::min(a0, a1) && t <= std::max(a0, a1)) return t;
        return line(b[i - 1], a0, b[i], a1, level);
    }
    InterpOpts o{};
    o.order = m;
    double v = support_Interp(a + w, b + w, level, o);
    return std::isfinite(v) ? v : line(b[i - 1], a0, b[i], a1, level);
}

}  // namespace

double support_Interp(const double* y, const double* x, double at, const InterpOpts& opts) {
    int m = std::max(opts.order, 0);
    double sum = 0;
    for (int j = 0; j <= m; ++j) {
        double term = y[j];
        // Each factor is exactly 1 at the point j itself and exactly 0 at the others.
        for (int k = 0; k <= m; ++k)
            if (k != j) term *= (at - x[k]) / (x[j] - x[k]);
        sum += term;
    }
    return sum;
}

void support_FindYFromX(YList<double>& results, YList<long long>& indices, const double* a, const double* b,
                        long long n, double level, InterpOpts opts) {
    if (n <= 0) return;
    int m = cappedOrder(opts.order, n);
    auto wanted = [&](int direction) {
        return opts.direction == 0 || (opts.direction > 0 ? direction > 0 : direction < 0);
    };
    auto exact = [&](int64_t p, int direction) {
        if (!wanted(direction)) return;
        results.addNewest(a[p]);
        indices.addNewest(p);
    };

    int last = 0;        // side of the last point off the level: +1 above, -1 below, 0 none yet
    int64_t run = -1;    // first point of the current run on the level, or -1
    auto breakCurve = [&] {
        if (run >= 0 && last == 0) exact(run, 0);  // a stretch that never left the level
        last = 0;
        run = -1;
    };
    for (int64_t i = 0; i < n; ++i) {
        double v = b[i];
        int side = v > level ? 1 : v < level ? -1 : 0;
        if (side == 0) {
            if (v != level) {  // NaN
                breakCurve();
                continue;
            }
            if (run < 0) {
                run = i;
                if (last != 0) exact(i, -last);  // arrived at the level
            }
            continue;
        }
        if (run >= 0) {
            if (last == 0) exact(run, side);  // left the level the curve started on
            run = -1;
        } else if (last == -side && wanted(side)) {
            results.addNewest(crossingValue(a, b, i, m, level, opts));
            indices.addNewest(i - 1);
        }
        last = side;
        i = (side > 0 ? pastSide<true>(b, i + 1, n, level) : pastSide<false>(b, i + 1, n, level)) - 1;
    }
    breakCurve();
}

void support_Resample(const double* y, const double* x, int64_t n, double start, double step, int64_t count,
                      int order, double* out, double* xOut) {
    if (count <= 0) return;
    if (n <= 0) {
        std::fill(out, out + count, kNaN);
        for (int64_t i = 0; xOut && i < count; ++i) xOut[i] = static_cast<double>(i) * step + start;
        return;
    }
    int m = cappedOrder(order, n);
    if (x) resample(y, Sampled{x}, n, start, step, count, m, out, xOut);
    else resample(y, Indexed{}, n, start, step, count, m, out, xOut);
}

int64_t support_MaxResamplePoints() {
    static const int64_t limit = [] {
        long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
        double bytes = pages > 0 && size > 0 ? static_cast<double>(pages) * static_cast<double>(size) : 4e9;
        return static_cast<int64_t>(bytes / 2 / (2 * sizeof(double)));
    }();
    return limit;
}

void sp_GetSortMap(const double* values, int64_t n, std::vector<int64_t>& map) {
    map.resize(static_cast<size_t>(std::max<int64_t>(n, 0)));
    for (int64_t i = 0; i < n; ++i) map[static_cast<size_t>(i)] = i;
    std::stable_sort(map.begin(), map.end(), [values](int64_t i, int64_t j) {
        double u = values[i], v = values[j];
        return u < v || (!std::isnan(u) && std::isnan(v));
    });
}

const double* support_RealAbscissa(bool present, const double* x, const std::complex<double>* z, int64_t n,
                                   std::vector<double>& scratch) {
    if (!present) return nullptr;
    if (x) return x;
    scratch.resize(static_cast<size_t>(std::max<int64_t>(n, 1)));
    for (int64_t i = 0; z && i < n; ++i) scratch[static_cast<size_t>(i)] = z[i].real();
    return scratch.data();
}

}  // namespace wavex

#include "support/range_integral.hpp"

#include "support/clones.hpp"
#include "support/interpolation.hpp"

#include <algorithm>
#include <cmath>

namespace wavex {
namespace {

struct OutcomeInfo {
    RangeOutcome outcome;
    const char* message;
    int status;
};

constexpr OutcomeInfo kOutcomes[] = {
    {RangeOutcome::Done, nullptr, 0},
    {RangeOutcome::StartAfterEnd, "Start is after end in '%s' function", 2},
    {RangeOutcome::SameStartEnd, "Start and end are identical in '%s' function", 2},
    {RangeOutcome::OutOfRange, "The x value specified for the '%s' function is out of range", 1},
    {RangeOutcome::NonMonotonic, "Argument to '%s' function is non-monotonic", 2},
};

consteval bool outcomesComplete() {
    if (std::size(kOutcomes) != static_cast<size_t>(RangeOutcome::Count)) return false;
    for (size_t i = 0; i < std::size(kOutcomes); ++i)
        if (static_cast<size_t>(kOutcomes[i].outcome) != i) return false;
    return true;
}
static_assert(outcomesComplete(), "row i holds outcome i");

// One piece before its constant factor (1/2 for the trapezoid, 1/3 for the square).
template <IntegralMode M>
inline double term(double xa, double ya, double xb, double yb) {
    if constexpr (M == IntegralMode::Mean) return (ya + yb) * (xb - xa);
    else return (ya * ya + ya * yb + yb * yb) * (xb - xa);
}

// The constant factor applied to a sum of terms (a division by 3 keeps 12/3 exactly 4).
template <IntegralMode M>
double finish(double sum) {
    if constexpr (M == IntegralMode::Mean) return sum * 0.5;
    else return sum / 3;
}

template <IntegralMode M>
double piece(double xa, double ya, double xb, double yb) {
    return finish<M>(term<M>(xa, ya, xb, yb));
}

// The pieces between the points from .. to, in eight interleaved partial sums: vectorisable,
// and more accurate than one running sum.
template <IntegralMode M>
WAVEX_CLONES double pieces(const double* x, const double* y, int64_t from, int64_t to) {
    constexpr int kWays = 8;
    double part[kWays] = {};
    int64_t i = from + 1;
    for (; i + kWays <= to + 1; i += kWays)
        for (int k = 0; k < kWays; ++k) part[k] += term<M>(x[i + k - 1], y[i + k - 1], x[i + k], y[i + k]);
    double s = 0;
    for (double p : part) s += p;
    for (; i <= to; ++i) s += term<M>(x[i - 1], y[i - 1], x[i], y[i]);
    return finish<M>(s);
}

// The y value at x = at, with the index of the point at or before it; `found` counts the places.
struct Place {
    size_t found = 0;
    double y = 0;
    int64_t index = 0;
};

Place yAt(const double* y, const double* x, int64_t n, double at) {
    YList<double> values;
    YList<long long> indices;
    InterpOpts opts{};
    opts.order = 2;
    support_FindYFromX(values, indices, y, x, n, at, opts);
    Place p;
    p.found = values.size();
    if (p.found == 1) {
        p.y = values.head();
        p.index = indices.head();
    }
    return p;
}

template <IntegralMode M>
double integrate(const double* y, const double* x, int64_t f, int64_t l, double px, double py, double e,
                 double yl) {
    double sum = 0;
    if (f <= l) {
        sum += piece<M>(px, py, x[f], y[f]) + pieces<M>(x, y, f, l);
        px = x[l];
        py = y[l];
    }
    return sum + piece<M>(px, py, e, yl);
}

// x values that are the indices of the points.
struct Indices {
    double operator[](int64_t i) const { return static_cast<double>(i); }
};

// One pass: the division (and root) of each point does not wait on the running sum's chain of
// additions, so the processor overlaps them; measured faster than a vectorised second pass over
// blocks of sums, which reads the sums twice.
template <IntegralMode M, class X>
WAVEX_CLONES void runningAverage(const double* y, X x, int64_t n, double* out) {
    const double x0 = x[0];
    out[0] = M == IntegralMode::Mean ? y[0] : std::fabs(y[0]);
    double sum = 0;  // before the constant factor
    for (int64_t i = 1; i < n; ++i) {
        sum += term<M>(x[i - 1], y[i - 1], x[i], y[i]);
        const double span = x[i] - x0;
        if constexpr (M == IntegralMode::Mean) out[i] = span != 0 ? sum * 0.5 / span : y[i];
        else out[i] = span != 0 ? std::sqrt(sum / (3 * span)) : std::fabs(y[i]);
    }
}

}  // namespace

void support_RunningAverage(const double* y, const double* x, int64_t n, IntegralMode mode, double* out) {
    if (n <= 0) return;
    auto over = [&](auto xs) {
        if (mode == IntegralMode::Mean) runningAverage<IntegralMode::Mean>(y, xs, n, out);
        else runningAverage<IntegralMode::Square>(y, xs, n, out);
    };
    if (x) over(x);
    else over(Indices{});
}

RangeIntegral support_RangeIntegral(const double* y, const double* x, int64_t n, std::optional<double> start,
                                    std::optional<double> end, IntegralMode mode) {
    RangeIntegral r;
    if (start && end) {
        if (*start > *end) r.outcome = RangeOutcome::StartAfterEnd;
        else if (*start == *end) r.outcome = RangeOutcome::SameStartEnd;
        if (r.outcome != RangeOutcome::Done) return r;
    }
    if ((start && std::isnan(*start)) || (end && std::isnan(*end)) || (n <= 0 && (start || end))) {
        r.outcome = RangeOutcome::OutOfRange;
        return r;
    }
    if (n <= 0) return r;

    int64_t f = 1, l = n - 2;
    double yf = y[0], yl = y[n - 1];
    if (end && *end >= x[n - 1]) end.reset();
    double s = x[0];
    if (start) {
        s = std::max(x[0], *start);
        Place p = yAt(y, x, n, s);
        if (p.found == 0) r.outcome = RangeOutcome::OutOfRange;
        if (p.found > 1) r.outcome = RangeOutcome::NonMonotonic;
        if (r.outcome != RangeOutcome::Done) return r;
        yf = p.y;
        f = p.index + 1;
    }
    if (end) {
        Place p = yAt(y, x, n, *end);
        if (p.found == 0) {
            r.outcome = RangeOutcome::OutOfRange;
            return r;
        }
        if (p.found == 1) {
            yl = p.y;
            l = p.index;
        }
    }

    double px = start ? s : x[0], py = start ? yf : y[0];
    if (n > 1) {
        double e = end ? *end : x[l + 1];
        r.integral = mode == IntegralMode::Mean ? integrate<IntegralMode::Mean>(y, x, f, l, px, py, e, yl)
                                                : integrate<IntegralMode::Square>(y, x, f, l, px, py, e, yl);
    }
    r.span = (end ? *end : x[n - 1]) - s;
    return r;
}

const char* rangeOutcomeMessage(RangeOutcome outcome) { return kOutcomes[static_cast<size_t>(outcome)].message; }
int rangeOutcomeStatus(RangeOutcome outcome) { return kOutcomes[static_cast<size_t>(outcome)].status; }

}  // namespace wavex

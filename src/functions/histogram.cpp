// Histogram(v, bins [, start [, end]]): how many values of v fall in each of `bins` equal bins
// from start to end, over all divisions of v together (the spread of a Monte Carlo run).
//
// Bins: truncated toward zero. 0 takes the option MCNumberOfBins; when that is 0 too, ⌈√n⌉ for n
// finite values in v (the square-root rule: cheap, never more bins than values, and a fair shape
// for the hundreds to thousands of runs of a Monte Carlo analysis).
// Range: start and end default to the smallest and largest finite values of v (NaN means the
// default too); when those are equal the range is widened by 0.5 on either side. Bin k holds the
// values from edge k up to edge k + 1, the last bin its end too; edge k is start + k·(end −
// start)/bins, the last edge end itself. Values outside the range, NaN and infinities beyond it,
// are not counted.
// Result: the counts, a plain number, over the bin centres in v's unit, named by v's name. With
// the option HistoCurveStyle "Stepped" (the default; case ignored) each bin is a flat step, two
// points at its left and right edges with its count; any other style, one point at its centre.
// No finite value in v while the start or end is to come from it (an empty v), or 0 bins from the
// square-root rule: an empty curve.
// Messages: "Invalid number of bins in function '%s'" (negative or NaN), "Too many bins (%.15g)
// in function '%s'" (the result would take more than half of the machine's memory), "Start and
// end of function '%s' must be finite" (an infinite end, or a span beyond the range of a double),
// and the range messages "Start is after end in '%s' function" and "Start and end are identical
// in '%s' function", also when one end is given and the data's own other end lies at or before it.
#include "support/interpolation.hpp"
#include "support/range_integral.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavex {
namespace {

struct Spread {
    double lo = std::numeric_limits<double>::infinity();
    double hi = -std::numeric_limits<double>::infinity();
    int64_t finite = 0;
};

// The smallest and largest finite values and their count. The first pass has no branch and
// ignores only NaN, keeping eight lanes of minima, maxima and NaN counts so that the compiler
// makes it vector code with no chain from one element to the next; infinities are rare enough to
// earn a second, careful pass.
Spread spread(const double* v, int64_t n) {
    constexpr int kLanes = 8;
    double lo[kLanes], hi[kLanes];
    int64_t nans[kLanes] = {};
    std::fill(lo, lo + kLanes, Spread{}.lo);
    std::fill(hi, hi + kLanes, Spread{}.hi);
    auto take = [&](int j, double d) {
        lo[j] = d < lo[j] ? d : lo[j];
        hi[j] = d > hi[j] ? d : hi[j];
        nans[j] += d != d;
    };
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes)
        for (int j = 0; j < kLanes; ++j) take(j, v[i + j]);
    for (int j = 0; i < n; ++i, ++j) take(j, v[i]);
    Spread s;
    for (int j = 0; j < kLanes; ++j) {
        s.lo = std::min(s.lo, lo[j]);
        s.hi = std::max(s.hi, hi[j]);
        s.finite -= nans[j];
    }
    s.finite += n;
    if (std::isfinite(s.lo) && std::isfinite(s.hi)) return s;
    s = Spread{};
    for (i = 0; i < n; ++i) {
        if (!std::isfinite(v[i])) continue;
        s.lo = std::min(s.lo, v[i]);
        s.hi = std::max(s.hi, v[i]);
        ++s.finite;
    }
    return s;
}

// The edges of `bins` equal bins from start to end: edge k is start + k·step, the last one end
// itself (as numpy's linspace lays them out, so counts agree with it at the edges).
struct Edges {
    double start, end;
    int64_t bins;
    double step = (end - start) / static_cast<double>(bins);
    double operator()(int64_t k) const { return k == bins ? end : static_cast<double>(k) * step + start; }
};

// Adds the values in [start, end] to counts[k * stride] of their bin k. The index from the scaled
// offset can be one off at an edge through rounding; comparing with the edges themselves puts
// every value where the edge definition says.
void count(const double* v, int64_t n, const Edges& edge, double* counts, int stride) {
    const double start = edge.start, end = edge.end;
    const int64_t bins = edge.bins;
    const double scale = static_cast<double>(bins) / (end - start);
    for (int64_t i = 0; i < n; ++i) {
        const double d = v[i];
        if (!(d >= start && d <= end)) continue;
        auto k = std::min(static_cast<int64_t>((d - start) * scale), bins - 1);
        if (d < edge(k)) --k;
        else if (k + 1 < bins && d >= edge(k + 1)) ++k;
        counts[k * stride] += 1;
    }
}

FUNC_ERROR badRange(double start, double end, const FuncInfo* info, MessageHandler& messages) {
    messages.error(rangeOutcomeMessage(start > end ? RangeOutcome::StartAfterEnd : RangeOutcome::SameStartEnd),
                   info->name);
    return FUNC_FAILED;
}

FUNC_ERROR histogram(WAVEX_HANDLER_PARAMS) {
    const double* v = args.data(0);
    const int64_t n = args.length(0);
    double bins = std::trunc(args.scalar(1));
    if (bins == 0) bins = sp_GetIntOption("MCNumberOfBins", 0);
    if (!(bins >= 0)) {
        messages->error("Invalid number of bins in function '%s'", info->name);
        return FUNC_FAILED;
    }
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    double start = args.count() > 2 ? args.scalar(2) : nan, end = args.count() > 3 ? args.scalar(3) : nan;
    const bool givenStart = !std::isnan(start), givenEnd = !std::isnan(end);
    if (givenStart && givenEnd && start >= end) return badRange(start, end, info, *messages);

    const bool stepped = iequals(sp_GetStringOption("HistoCurveStyle", "Stepped"), "Stepped");
    result->setPhysType(units::Number, args.physType(0));
    result->setType(VD_REAL, VD_REAL);
    result->setRefName(args.yName(0));

    if (bins == 0 || !givenStart || !givenEnd) {
        const Spread s = spread(v, n);
        if (bins == 0) bins = std::ceil(std::sqrt(static_cast<double>(s.finite)));
        if ((!givenStart || !givenEnd) && s.finite == 0) bins = 0;  // nothing to set the range by
        if (!givenStart) start = s.lo;
        if (!givenEnd) end = s.hi;
    }
    if (bins == 0) {
        result->makeReal(0, RESULT_OWN, -1);
        result->makeRealRef(0, RESULT_OWN, -1);
        return FUNC_OK;
    }
    if (!givenStart && !givenEnd && start == end) {
        start -= 0.5;
        end += 0.5;
    } else if (start >= end) {  // one end given, the other from the data at or beyond it
        return badRange(start, end, info, *messages);
    }
    if (!std::isfinite(end - start)) {  // an infinite end, or ends too far apart for a double
        messages->error("Start and end of function '%s' must be finite", info->name);
        return FUNC_FAILED;
    }
    if (bins > static_cast<double>(support_MaxResamplePoints() / (stepped ? 2 : 1))) {
        messages->error("Too many bins (%.15g) in function '%s'", bins, info->name);
        return FUNC_FAILED;
    }

    const auto b = static_cast<int64_t>(bins);
    const int points = stepped ? 2 : 1;
    double* counts = result->makeReal(b * points, RESULT_OWN, -1);
    double* x = result->makeRealRef(b * points, RESULT_OWN, -1);
    std::fill(counts, counts + b * points, 0.0);
    const Edges edge{start, end, b};
    count(v, n, edge, counts, points);
    for (int64_t k = 0; k < b; ++k) {
        if (stepped) {
            counts[2 * k + 1] = counts[2 * k];
            x[2 * k] = edge(k);
            x[2 * k + 1] = edge(k + 1);
        } else {
            x[k] = (edge(k) + edge(k + 1)) / 2;
        }
    }
    return FUNC_OK;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Histogram", {arg::Real.joined(), arg::Real, arg::Real, arg::Real}, 2, histogram,
     {.signature = "Histogram(v, bins [, start [, end]])",
      .summary = "How many values of v fall in each of a number of equal bins.",
      .returns = "a real curve of counts (plain numbers) over x in v's unit: with the option HistoCurveStyle "
                 "'Stepped' (default) two points per bin at its edges, else one at its centre",
      .notes = "All runs are counted together (the spread of a Monte Carlo analysis). bins 0 takes the "
               "option MCNumberOfBins, and when that is 0 too, ⌈√n⌉ for n finite values. start and end "
               "default to the smallest and largest finite values; a value on an inner edge counts in the "
               "bin above it, the last bin includes its end. NaN and values outside the range are not "
               "counted.",
      .example = "Histogram([4.95, 5.02, 4.98, 5.07, 5.01, 4.99, 5.03, 4.96, 5.00], 4)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

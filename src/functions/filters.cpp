// Digital filters that run over the points of a curve in index order: FIR, IIR and LPF.
//
// With x[0 … N−1] the data, c[0 … M−1] the second argument and y the result:
//   FIR(data, c [, history])  y[n] = Σ_{k<M} c[k]·(k ≤ n ? x[n−k] : h[k−1])
//       h: the history argument's values (zero beyond them) or, without one, x[0] throughout,
//       as if the input had always been at its first value.
//   IIR(data, c [, history])  y[n] = c[0]·x[n] + Σ_{1≤k<M} c[k]·(k ≤ n ? y[n−k] : h[k−1])
//       h: M−1 values, zero, then the history argument's first M−1 values (the rest ignored).
//       The feedback terms are added, not subtracted.
//   LPF(data, τ [, y0])       y[0] = y0 or x[0]; y[i] = y[i−1] + Δ·d/(Δ + τ), Δ = t[i] − t[i−1],
//       d = x[i−1] − y[i−1] (0 at the first step without y0): a first-order low-pass in x, each
//       step moving toward the previous input by Δ/(Δ + τ), so uneven x spacing is followed
//       point by point. t are the x values; a curve without them gives an empty result.
// Before the start, FIR and IIR read the history as h[k−1] for every n < k, not h[k−n−1]: the
// history stands for the samples before the start as seen from the first output only. Scripts
// rely on this indexing. FIR and IIR ignore the x spacing.
// The result is real, as long as the data, over the data's x values, with the data's units. None
// of them reports: an empty second argument (no coefficients, no time constant) gives an empty
// result; NaN in the data or the coefficients runs through the sums as NaN.
#include "support/interpolation.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <span>
#include <vector>

namespace wavex {
namespace {

// What a kernel reads: the data, its x values (null when it has none), the second argument and
// the optional third.
struct FilterInput {
    std::span<const double> x;
    const double* t;
    std::span<const double> c;
    std::span<const double> init;
    bool hasInit;
};

// Outputs that reach back before the start: the history term h[k−1] stands in for x or y[n−k].
// `source` is x for FIR and y for IIR; the sums run from k = `first`.
void warmUp(const FilterInput& in, const double* source, const std::vector<double>& h, size_t first, double* y,
            size_t head) {
    const double* c = in.c.data();
    for (size_t n = 0; n < head; ++n) {
        double acc = first == 0 ? 0.0 : c[0] * in.x[n];
        for (size_t k = first; k < in.c.size(); ++k) acc += c[k] * (k <= n ? source[n - k] : h[k - 1]);
        y[n] = acc;
    }
}

// y[j] = Σ_k c[k]·x[j−k] for j < len, x reaching back taps − 1 points before its start: tap by
// tap over the whole block, so the inner loop runs over contiguous outputs held in cache, and
// each output sums its terms in the order of k as the sum is written.
void firBlock(double* __restrict y, const double* __restrict x, const double* __restrict c, size_t taps, size_t len) {
    for (size_t j = 0; j < len; ++j) y[j] = c[0] * x[j];
    for (size_t k = 1; k < taps; ++k) {
        const double ck = c[k];
        const double* s = x - k;
        for (size_t j = 0; j < len; ++j) y[j] += ck * s[j];
    }
}

void fir(const FilterInput& in, double* y) {
    const size_t n = in.x.size(), taps = in.c.size();
    const double* x = in.x.data();
    std::vector<double> h(taps, in.hasInit ? 0.0 : x[0]);
    if (in.hasInit) std::copy_n(in.init.begin(), std::min(in.init.size(), taps), h.begin());
    const size_t head = std::min(n, taps - 1);
    warmUp(in, x, h, 0, y, head);
    constexpr size_t kBlock = 512;  // outputs per block: 4 KB, kept in the first-level cache
    for (size_t i = head; i < n; i += kBlock) firBlock(y + i, x + i, in.c.data(), taps, std::min(kBlock, n - i));
}

void iir(const FilterInput& in, double* y) {
    const size_t n = in.x.size(), taps = in.c.size();
    const double* x = in.x.data();
    const double* c = in.c.data();
    std::vector<double> h(taps - 1, 0.0);
    if (in.hasInit) std::copy_n(in.init.begin(), std::min(in.init.size(), taps - 1), h.begin());
    const size_t head = std::min(n, taps - 1);
    warmUp(in, y, h, 1, y, head);
    if (taps == 2) {  // the common first-order section, without the inner loop
        const double c0 = c[0], c1 = c[1];
        for (size_t i = head; i < n; ++i) y[i] = c0 * x[i] + c1 * y[i - 1];
        return;
    }
    for (size_t i = head; i < n; ++i) {
        double acc = c[0] * x[i];
        for (size_t k = 1; k < taps; ++k) acc += c[k] * y[i - k];
        y[i] = acc;
    }
}

void lpf(const FilterInput& in, double* y) {
    const size_t n = in.x.size();
    const double* x = in.x.data();
    const double* t = in.t;
    const double tau = in.c[0];
    const bool given = !in.init.empty();
    y[0] = given ? in.init[0] : x[0];
    double d = given ? x[0] - y[0] : 0;
    for (size_t i = 1; i < n; ++i) {
        const double step = t[i] - t[i - 1];
        y[i] = y[i - 1] + step * d / (step + tau);
        d = x[i] - y[i];
    }
}

enum class Filter { FIR, IIR, LPF, Count };

struct FilterOp {
    Filter op;
    void (*kernel)(const FilterInput& in, double* y);  // called with at least one data point
    bool needsX;                                       // without x values the result is empty
};

constexpr FilterOp kFilters[] = {
    {Filter::FIR, fir, false},
    {Filter::IIR, iir, false},
    {Filter::LPF, lpf, true},
};

static_assert(rowsInOrder(kFilters, &FilterOp::op, [](const FilterOp& c) { return c.kernel != nullptr; }),
              "row i holds filter i, with its kernel");

std::span<const double> values(const FuncArgs& args, int i) {
    if (args.count() <= i || !args.data(i)) return {};
    return {args.data(i), static_cast<size_t>(args.length(i))};
}

FUNC_ERROR filter(const FuncArgs& args, FuncResult* result, Filter op) {
    const FilterOp& f = kFilters[static_cast<size_t>(op)];
    std::vector<double> scratch;
    const double* t = args.realRefData(0, scratch);
    const FilterInput in{values(args, 0), t, values(args, 1), values(args, 2), args.count() > 2};
    if (in.c.empty() || (f.needsX && !t)) return FUNC_OK;

    const int64_t total = args.totalLength(0);
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    double* y = result->makeReal(static_cast<int64_t>(in.x.size()), RESULT_LIKE_ARGS, total);
    if (!in.x.empty()) f.kernel(in, y);
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0);
    return FUNC_OK;
}

template <Filter op>
FUNC_ERROR filterHandler(WAVEX_HANDLER_PARAMS) {
    return filter(args, result, op);
}

constexpr FuncInfo kFunctions[] = {
    {"FIR", {arg::Real.each(), arg::Real, arg::Real}, 2, filterHandler<Filter::FIR>,
     {.signature = "FIR(data, coefficients [, history])",
      .summary = "A finite impulse response filter run over the points of data.",
      .returns = "a real curve per run over data's x-values, in data's unit",
      .notes = "y[n] = Σ c[k]·x[n-k] over the points in index order; the x spacing is ignored. Before "
               "the start x[n-k] reads history[k-1] (zero beyond the history given) or, without a "
               "history, x[0]: the input as if it had always been at its first value. No coefficients "
               "give an empty result.",
      .example = "FIR(XY([0, 0, 3, 3, 3], vector(5)), [0.5, 0.5])"}},
    {"IIR", {arg::Real.each(), arg::Real, arg::Real}, 2, filterHandler<Filter::IIR>,
     {.signature = "IIR(data, coefficients [, history])",
      .summary = "An infinite impulse response (recursive) filter run over the points of data.",
      .returns = "a real curve per run over data's x-values, in data's unit",
      .notes = "y[n] = c[0]·x[n] + Σ_{k>=1} c[k]·y[n-k]: the feedback terms are added, not subtracted; "
               "the x spacing is ignored. Before the start y[n-k] reads history[k-1] (zero without "
               "one). No coefficients give an empty result.",
      .example = "IIR(XY([1, 1, 1, 1, 1], vector(5)), [0.5, 0.5])"}},
    {"LPF", {arg::Real.each(), arg::Real, arg::Real}, 2, filterHandler<Filter::LPF>,
     {.signature = "LPF(data, tau [, y0])",
      .summary = "A first-order low-pass filter with time constant tau, following uneven x spacing.",
      .returns = "a real curve per run over data's x-values, in data's unit",
      .notes = "y[0] = y0 (default data's first value); each step moves y toward the previous input "
               "value by Δx/(Δx + tau). data needs x-values: without them the result is empty.",
      .example = "LPF(XY([0, 1, 1, 1, 1], [0, 1, 2, 3, 4]), 1)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

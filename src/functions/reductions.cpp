// Reductions of a curve, or of a stretch of it, to one number: Mean1, RMS1, RootSumOfSquares,
// SumNoise, Maximum, Minimum, Locate, Ones and Zeros.
//
// Scalar arguments are the first real value of their vector. Results are one-value real vectors
// without reference, except the x that Maximum and Minimum report.
#include "support/interpolation.hpp"
#include "support/range_integral.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <cfloat>
#include <cmath>
#include <optional>
#include <vector>

namespace wavex {
namespace {

// ---- Range integrals ---------------------------------------------------------------------------
//
// Over the stretch from start to end (arguments 2 and 3; absent: the ends of the data), with the
// integral and span of support/range_integral.hpp:
//   Mean1             ∫y dx / span (a zero span gives NaN)        unit of y
//   RMS1              √(∫y² dx / span) (a zero span gives 0)      unit of y
//   RootSumOfSquares  √(∫y² dx)                                   √(unit of y² · unit of x)
//   SumNoise          the same function under a second name       (V²/Hz over Hz gives V)
// The reference unit is 24 (no reference). A curve without x values fails with "Argument %d in
// function '%s' has no reference (xvalues)"; a bad start or end gets the integrator's message:
// those that fail return status 1, "out of range" succeeds with an empty result.

enum class Integral { Mean1, RMS1, RootSumOfSquares, Count };

struct IntegralOp {
    Integral op;
    IntegralMode mode;
    double (*value)(double integral, double span);
    PhysType (*unit)(PhysType y, PhysType x);
};

constexpr IntegralOp kIntegrals[] = {
    {Integral::Mean1, IntegralMode::Mean, [](double integral, double span) { return integral / span; },
     [](PhysType y, PhysType) { return y; }},
    {Integral::RMS1, IntegralMode::Square,
     [](double integral, double span) { return span != 0 ? std::sqrt(integral / span) : 0.0; },
     [](PhysType y, PhysType) { return y; }},
    {Integral::RootSumOfSquares, IntegralMode::Square, [](double integral, double) { return std::sqrt(integral); },
     [](PhysType y, PhysType x) { return units::sqrt(units::mult(units::mult(y, y), x)); }},
};

static_assert(rowsInOrder(kIntegrals, &IntegralOp::op, [](const IntegralOp& c) { return c.value && c.unit; }),
              "row i holds integral i, with its value and unit rules");

FUNC_ERROR rangeIntegral(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                         Integral op) {
    const IntegralOp& o = kIntegrals[static_cast<size_t>(op)];
    const int64_t n = args.length(0);
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, messages);
    if (!x) return FUNC_FAILED_RANGE;
    RangeIntegral r = support_RangeIntegral(args.data(0), x, n, args.optionalScalar(1), args.optionalScalar(2),
                                            o.mode);
    result->setPhysType(o.unit(args.physType(0), args.refPhysType(0)), units::NoRef);
    if (r.outcome != RangeOutcome::Done) {
        messages.error(rangeOutcomeMessage(r.outcome), info->name);
        if (rangeOutcomeStatus(r.outcome) == 2) return FUNC_FAILED_RANGE;
        result->makeRealNoRef(0);
        return FUNC_OK;
    }
    result->makeRealNoRef(1)[0] = o.value(r.integral, r.span);
    return FUNC_OK;
}

template <Integral op>
FUNC_ERROR integralHandler(WAVEX_HANDLER_PARAMS) {
    return rangeIntegral(args, result, info, *messages, op);
}

// ---- Maximum, Minimum --------------------------------------------------------------------------
//
// The largest (smallest) y value of the points whose x lies from start to end, with its x as the
// result's one x value: points before the start are passed over and the walk stops at the first
// point beyond the end (x limits apply only to a curve with a reference). The walk starts from the
// most negative (positive) finite double and keeps a point only when it is strictly better, so
// the first of equal extremes wins and NaN, or -inf for Maximum (+inf for Minimum), never does.
// Complex y values compare, and report, by magnitude; a complex x by its magnitude too. Units:
// those of the argument. No point in the stretch (or empty data) gives an empty result; nothing
// is reported.

enum class Extreme { Maximum, Minimum, Count };

struct ExtremeOp {
    Extreme op;
    double worst;  // every value that counts beats it
    bool (*better)(double v, double best);
};

constexpr ExtremeOp kExtremes[] = {
    {Extreme::Maximum, -DBL_MAX, [](double v, double best) { return v > best; }},
    {Extreme::Minimum, DBL_MAX, [](double v, double best) { return v < best; }},
};

static_assert(rowsInOrder(kExtremes, &ExtremeOp::op, [](const ExtremeOp& c) { return c.better != nullptr; }),
              "row i holds extreme i");

inline double magnitude(double v) { return v; }
inline double magnitude(const Complex& z) { return std::abs(z); }

struct Found {
    int64_t index = -1;
    double value = 0;
};

// The walk over y values of type T with x values of type X (double, Complex, or none: void).
template <class T, class X>
Found findExtreme(const ExtremeOp& o, const T* y, const X* x, int64_t n, std::optional<double> start,
                  std::optional<double> end) {
    Found f;
    double best = o.worst;
    for (int64_t i = 0; i < n; ++i) {
        if (x) {
            double xi = magnitude(x[i]);
            if (start && xi < *start) continue;
            if (end && xi > *end) break;
        }
        double v = magnitude(y[i]);
        if (o.better(v, best)) {
            best = v;
            f.index = i;
        }
    }
    f.value = best;
    return f;
}

template <class T>
Found findExtreme(const ExtremeOp& o, const FuncArgs& args, const T* y) {
    const int64_t n = args.length(0);
    std::optional<double> start = args.optionalScalar(1), end = args.optionalScalar(2);
    if (const double* x = args.refData(0)) return findExtreme(o, y, x, n, start, end);
    if (const Complex* x = args.complexRefData(0)) return findExtreme(o, y, x, n, start, end);
    return findExtreme(o, y, static_cast<const double*>(nullptr), n, start, end);
}

FUNC_ERROR extreme(const FuncArgs& args, FuncResult* result, Extreme op) {
    const ExtremeOp& o = kExtremes[static_cast<size_t>(op)];
    Found f = args.type(0) == VD_REAL ? findExtreme(o, args, args.data(0)) : findExtreme(o, args, args.complexData(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    const bool withRef = args.refType(0) != VD_NONE;
    result->setType(VD_REAL, f.index >= 0 && withRef ? VD_REAL : VD_NONE);
    if (f.index < 0) {
        result->makeReal(0, RESULT_OWN, -1);
        return FUNC_OK;
    }
    result->makeReal(1, RESULT_OWN, -1)[0] = f.value;
    if (const double* x = args.refData(0)) result->makeRealRef(1, RESULT_OWN, -1)[0] = x[f.index];
    else if (const Complex* z = args.complexRefData(0)) result->makeRealRef(1, RESULT_OWN, -1)[0] = std::abs(z[f.index]);
    return FUNC_OK;
}

template <Extreme op>
FUNC_ERROR extremeHandler(WAVEX_HANDLER_PARAMS) {
    return extreme(args, result, op);
}

// ---- Locate ------------------------------------------------------------------------------------
//
// Locate(vector, value): the index i of the interval [v[i], v[i+1]) of a monotonic vector that
// holds the value, by bisection. The vector is rising when v[0] < v[N-1], else falling (the
// comparisons mirrored). Below the first value: -1; at or beyond the last: N - 1; one value: 0.
// At most ceil(ln N / ln 2) halvings; a halving that moves neither bound (a NaN) pulls the upper
// bound down by one, and if the halvings run out first the result is empty. Empty vector: empty
// result. Nothing is reported.

std::optional<double> locate(const double* v, int64_t n, double value) {
    if (n == 0) return std::nullopt;
    if (n == 1) return 0.0;
    const bool rising = v[0] < v[n - 1];
    auto below = [&](double a) { return rising ? value < a : value > a; };       // before a
    auto atOrAfter = [&](double a) { return rising ? value >= a : value <= a; };  // a or beyond
    if (below(v[0])) return -1.0;
    if (atOrAfter(v[n - 1])) return static_cast<double>(n - 1);
    const auto halvings = static_cast<int64_t>(std::ceil(std::log(static_cast<double>(n)) / std::log(2.0)));
    int64_t lo = 0, hi = n - 1;
    for (int64_t k = 0; hi != lo + 1; ++k) {
        if (k == halvings) return std::nullopt;
        const int64_t mid = (lo + hi) / 2;
        if (mid > n - 1) return static_cast<double>(n - 2);
        const int64_t oldLo = lo, oldHi = hi;
        if (below(v[mid])) hi = mid;
        else if (atOrAfter(v[mid])) lo = mid;
        if (lo == oldLo && hi == oldHi) --hi;
    }
    return static_cast<double>(lo);
}

FUNC_ERROR locateHandler(WAVEX_HANDLER_PARAMS) {
    std::optional<double> index = locate(args.data(0), args.length(0), args.scalar(1));
    double* out = result->makeReal(index ? 1 : 0, RESULT_OWN, -1);
    if (index) out[0] = *index;
    return FUNC_OK;
}

// ---- Ones, Zeros -------------------------------------------------------------------------------
//
// 1 when every element equals the value (1 for Ones, 0 for Zeros), else 0; an empty vector gives
// 1. All divisions are tested together. Nothing is reported.

enum class AllEqual { Ones, Zeros, Count };

struct AllEqualOp {
    AllEqual op;
    double value;
};

constexpr AllEqualOp kAllEqual[] = {
    {AllEqual::Ones, 1.0},
    {AllEqual::Zeros, 0.0},
};

static_assert(rowsInOrder(kAllEqual, &AllEqualOp::op), "row i holds test i");

FUNC_ERROR allEqual(const FuncArgs& args, FuncResult* result, AllEqual op) {
    const double value = kAllEqual[static_cast<size_t>(op)].value;
    const double* v = args.data(0);
    const int64_t n = args.length(0);
    int64_t i = 0;
    while (i < n && v[i] == value) ++i;
    result->makeReal(1, RESULT_OWN, -1)[0] = i == n ? 1.0 : 0.0;
    return FUNC_OK;
}

template <AllEqual op>
FUNC_ERROR allEqualHandler(WAVEX_HANDLER_PARAMS) {
    return allEqual(args, result, op);
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Locate", {arg::Real, arg::Real}, 2, locateHandler,
     {.signature = "Locate(v, value)",
      .summary = "The index of the interval of a monotonic vector that holds a value, by bisection.",
      .returns = "one real index i with v[i] <= value < v[i+1] (mirrored for a falling v), no x-values",
      .notes = "v is taken as rising when v[0] < its last value, else falling. A value before the first "
               "element gives -1, one at or beyond the last gives length - 1; a vector of one value "
               "gives 0, an empty one an empty result. v is not checked for order.",
      .example = "Locate([1, 2, 4, 8, 16], 5); Locate([1, 2, 4, 8, 16], 0.5)"}},
    {"Maximum", {arg::Numeric.each(), arg::Real, arg::Real}, 1, extremeHandler<Extreme::Maximum>,
     {.signature = "Maximum(v [, start [, end]])",
      .summary = "The largest value of v between two x-values, at its x-value.",
      .returns = "one value per run, in v's unit, over the one x-value where it occurs",
      .notes = "Only points with start <= x <= end count (start and end default to the ends of the data; "
               "no interpolation). The first of equal maxima wins; NaN never does. Complex values "
               "compare and are reported by magnitude. No point in the stretch gives an empty result.",
      .example = "Maximum(XY([0, 3, 1, 5, 2], [0, 1, 2, 3, 4])); Maximum(XY([0, 3, 1, 5, 2], [0, 1, 2, 3, 4]), 0, 2)"}},
    {"Mean1", {arg::Real.each(), arg::Real.each(), arg::Real.each()}, 1, integralHandler<Integral::Mean1>,
     {.signature = "Mean1(v [, start [, end]])",
      .summary = "The mean of v over x between two x-values: the trapezoid integral over the span.",
      .returns = "one real value per run, in v's unit, without x-values",
      .notes = "start and end default to the ends of the data. Ends that fall between samples take their "
               "y by quadratic interpolation (order 2), then the stretch is integrated by trapezoids. A "
               "start before the data or an end beyond it is cut to the data; a start beyond the data "
               "reports \"out of range\" and gives an empty result; start after end, or equal to it, "
               "fails. v needs x-values.",
      .example = "v = XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]); Mean1(v); Mean1(v, 0.5, 3)"}},
    {"Minimum", {arg::Numeric.each(), arg::Real, arg::Real}, 1, extremeHandler<Extreme::Minimum>,
     {.signature = "Minimum(v [, start [, end]])",
      .summary = "The smallest value of v between two x-values, at its x-value.",
      .returns = "one value per run, in v's unit, over the one x-value where it occurs",
      .notes = "As Maximum, mirrored: the first of equal minima wins, NaN never does, complex values "
               "compare by magnitude, no interpolation at the ends.",
      .example = "Minimum(XY([4, 3, 1, 5, 1], [0, 1, 2, 3, 4]))"}},
    {"Ones", {arg::Real}, 1, allEqualHandler<AllEqual::Ones>,
     {.signature = "Ones(v)",
      .summary = "1 when every element of v is 1, else 0.",
      .returns = "one real value, 1 or 0",
      .notes = "All runs are tested together; an empty vector gives 1.",
      .example = "Ones(unitvec(3)); Ones([1, 1, 0])"}},
    {"RMS1", {arg::Real.each(), arg::Real.each(), arg::Real.each()}, 1, integralHandler<Integral::RMS1>,
     {.signature = "RMS1(v [, start [, end]])",
      .summary = "The RMS of v over x between two x-values.",
      .returns = "one real value per run, in v's unit, without x-values",
      .notes = "√(∫v² dx / span): each piece is the exact integral of the square of the straight line "
               "between two points. Ends between samples are interpolated quadratically (order 2), as "
               "for Mean1, with the same messages.",
      .example = "v = XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]); RMS1(v); RMS1(v, 1, 3)"}},
    {"RootSumOfSquares", {arg::Real.each(), arg::Real.each(), arg::Real.each()}, 1,
     integralHandler<Integral::RootSumOfSquares>,
     {.signature = "RootSumOfSquares(v [, start [, end]])",
      .summary = "The root of the integral of v² over x between two x-values.",
      .returns = "one real value per run without x-values, in √(v's unit² × x unit) (V²/Hz over Hz: V)",
      .notes = "√(∫v² dx), the pieces and the end interpolation of RMS1, not divided by the span: the "
               "total noise of a noise density. Same as SumNoise.",
      .example = "RootSumOfSquares(XY([1, 1, 1], [0, 2, 4]))"}},
    {"SumNoise", {arg::Real.each(), arg::Real.each(), arg::Real.each()}, 1,
     integralHandler<Integral::RootSumOfSquares>,
     {.signature = "SumNoise(v [, start [, end]])",
      .summary = "Same as RootSumOfSquares: the root of the integral of v² over x.",
      .returns = "one real value per run without x-values, in √(v's unit² × x unit)",
      .notes = "Used on a noise density over frequency it gives the total noise in the band.",
      .example = "SumNoise(XY([2, 2, 2], [0, 50, 100]), 0, 25)"}},
    {"Zeros", {arg::Real}, 1, allEqualHandler<AllEqual::Zeros>,
     {.signature = "Zeros(v)",
      .summary = "1 when every element of v is 0, else 0.",
      .returns = "one real value, 1 or 0",
      .notes = "All runs are tested together; an empty vector gives 1.",
      .example = "Zeros(makevec(3)); Zeros([0, 2])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

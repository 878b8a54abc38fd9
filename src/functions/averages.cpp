// Running averages, area and truncation of a curve: avg, Rms, area and Truncate.
//
// All four work on one curve per call (the host calls them once per division) and take their x
// values from the curve's reference; a complex reference (frequencies kept as complex numbers)
// serves through its real parts. Scalar arguments are the first real value of their vector.
#include "support/interpolation.hpp"
#include "support/range_integral.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace wavex {
namespace {

// ---- avg, Rms ----------------------------------------------------------------------------------
//
// The running average from the first point to each point, with the pieces of the range
// integrator (support/range_integral.hpp):
//   avg  r[i] = ∫y dx / (x[i] - x[0])     (trapezoids)                      r[0] = y[0]
//   Rms  r[i] = √(∫y² dx / (x[i] - x[0])) (the square of the straight lines)  r[0] = |y[0]|
// over the x values, or over the indices 0, 1, ... when the curve has none. The result has the
// argument's length, reference (shared, not copied) and unit. Where x[i] equals x[0] the average
// is the value at the point; x values that run back count negative, as integ's steps do. An
// empty curve gives an empty result; a NaN makes its point and every later one NaN. Nothing is
// reported.

enum class Running { Avg, Rms, Count };

struct RunningOp {
    Running op;
    IntegralMode mode;
};

constexpr RunningOp kRunning[] = {
    {.op = Running::Avg, .mode = IntegralMode::Mean},
    {.op = Running::Rms, .mode = IntegralMode::Square},
};

static_assert(rowsInOrder(kRunning, &RunningOp::op), "row i holds running average i");

FUNC_ERROR runningAverage(const FuncArgs& args, FuncResult* result, Running op) {
    const RunningOp& o = kRunning[static_cast<size_t>(op)];
    const int64_t n = args.length(0), total = args.totalLength(0);
    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    support_RunningAverage(args.data(0), x, n, o.mode, result->makeReal(n, RESULT_LIKE_ARGS, total));
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0);
    return FUNC_OK;
}

template <Running op>
FUNC_ERROR runningHandler(WAVEX_HANDLER_PARAMS) {
    return runningAverage(args, result, op);
}

// ---- area --------------------------------------------------------------------------------------
//
// area(v [, start [, end]]): ∫y dx from start to end (absent: the ends of the data) by the
// trapezoids of the range integrator, its ends interpolated as it does; one value per division,
// without reference, in units::mult(y unit, x unit) (V over s gives V·s, unknown when the product
// has no name). Bad input is treated as Mean1 treats it: no x values fail with "Argument 1 in
// function 'area' has no reference (xvalues)", start after end, equal start and end and x values
// that reach the start twice fail with the integrator's message, a start or end off the curve
// (or NaN) reports "out of range" and gives an empty result. An empty or one-point curve has
// area 0.

FUNC_ERROR area(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, *messages);
    if (!x) return FUNC_FAILED_RANGE;
    RangeIntegral r = support_RangeIntegral(args.data(0), x, args.length(0), args.optionalScalar(1),
                                            args.optionalScalar(2), IntegralMode::Mean);
    result->setPhysType(units::mult(args.physType(0), args.refPhysType(0)), units::NoRef);
    if (r.outcome != RangeOutcome::Done) {
        messages->error(rangeOutcomeMessage(r.outcome), info->name);
        if (rangeOutcomeStatus(r.outcome) == 2) return FUNC_FAILED_RANGE;
        result->makeRealNoRef(0);
        return FUNC_OK;
    }
    result->makeRealNoRef(1)[0] = r.integral;
    return FUNC_OK;
}

// ---- Truncate ----------------------------------------------------------------------------------
//
// Truncate(v, start [, end]): the points of the curve with start <= x <= end (end absent: to the
// last point), with a point added at x = start and at x = end where they fall between two points,
// its y interpolated linearly. Real and complex y; a complex reference keeps its type (the added
// points take the start or end as real part, the imaginary part interpolated). Units, reference
// name and division labels stay; each division is cut on its own.
//
// x values are expected ascending, as a simulator writes them: the walk starts at the first point
// at or beyond start and stops at the first point beyond end. A stretch that reaches past the
// data is cut at the data's ends (no extrapolation; -Inf and Inf are allowed), and start = end
// gives the one point there. A stretch wholly beside the data, an empty curve or a NaN start or
// end report "The x value specified for the 'Truncate' function is out of range" and give an empty
// curve; start after end fails with "Start is after end in 'Truncate' function"; a curve without x
// values fails with "Argument 1 in function 'Truncate' has no reference (xvalues)". Strings are
// refused by the host: there is nothing to interpolate between two texts.

// Points first .. last-1 kept, and the added points at the ends: each between the point before
// and the point after it, at `fraction` of the way.
struct Stretch {
    int64_t first = 0, last = 0;
    bool head = false, tail = false;
    double headFraction = 0, tailFraction = 0;

    int64_t size() const { return last - first + head + tail; }
};

std::optional<Stretch> findStretch(const double* x, int64_t n, double start, double end) {
    Stretch s;
    while (s.first < n && !(x[s.first] >= start)) ++s.first;
    s.last = s.first;
    while (s.last < n && !(x[s.last] > end)) ++s.last;
    if (s.first == n || s.last == 0) return std::nullopt;  // all before start, or all beyond end
    auto fraction = [&](int64_t b, double at) { return (at - x[b - 1]) / (x[b] - x[b - 1]); };
    s.head = s.first > 0 && x[s.first] != start;
    if (s.head) s.headFraction = fraction(s.first, start);
    const double lastX = s.last > s.first ? x[s.last - 1] : start;
    s.tail = s.last < n && lastX != end;
    if (s.tail) s.tailFraction = fraction(s.last, end);
    return s;
}

template <class T>
T between(const T& a, const T& b, double fraction) {
    return a + (b - a) * fraction;
}

template <class T>
void cut(const T* from, const Stretch& s, T* to) {
    if (s.head) *to++ = between(from[s.first - 1], from[s.first], s.headFraction);
    to = std::copy(from + s.first, from + s.last, to);
    if (s.tail) *to = between(from[s.last - 1], from[s.last], s.tailFraction);
}

// The x values of the added points: the start and end themselves, not their interpolation.
void pin(double& x, double at) { x = at; }
void pin(Complex& x, double at) { x.real(at); }

template <class X>
void cutReference(const X* from, const Stretch& s, double start, double end, X* to) {
    cut(from, s, to);
    if (s.head) pin(to[0], start);
    if (s.tail) pin(to[s.size() - 1], end);
}

FUNC_ERROR truncate(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, *messages);
    if (!x) return FUNC_FAILED;
    const double start = args.scalar(1);
    const double end = args.count() > 2 ? args.scalar(2) : std::numeric_limits<double>::infinity();
    if (start > end) {
        messages->error(rangeOutcomeMessage(RangeOutcome::StartAfterEnd), info->name);
        return FUNC_FAILED;
    }
    std::optional<Stretch> found;
    if (!std::isnan(start) && !std::isnan(end)) found = findStretch(x, args.length(0), start, end);
    if (!found) messages->error(rangeOutcomeMessage(RangeOutcome::OutOfRange), info->name);
    const Stretch s = found.value_or(Stretch{});
    const int64_t m = s.size();

    result->setType(args.type(0), args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    if (args.type(0) == VD_COMPLEX) cut(args.complexData(0), s, result->makeComplex(m, RESULT_RESHAPED, -1));
    else cut(args.data(0), s, result->makeReal(m, RESULT_RESHAPED, -1));
    if (const Complex* z = args.complexRefData(0))
        cutReference(z, s, start, end, result->makeComplexRef(m, RESULT_RESHAPED, -1));
    else
        cutReference(args.refData(0), s, start, end, result->makeRealRef(m, RESULT_RESHAPED, -1));
    result->setRefName(args.refName(0));
    return FUNC_OK;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"area", {arg::Real.each(), arg::Real, arg::Real}, 1, area,
     {.signature = "area(v [, start [, end]])",
      .summary = "The integral of v over x between two x-values, by trapezoids.",
      .returns = "one real value per run, in v's unit times its x unit (V·s)",
      .notes = "start and end default to the first and last x-values; ends that fall between samples "
               "are interpolated as Mean1 does. A start beyond the data reports \"out of range\" and "
               "gives an empty result. v must have x-values.",
      .example = "area(XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]), 0.5, 3)"}},
    {"avg", {arg::Real.each()}, 1, runningHandler<Running::Avg>,
     {.signature = "avg(v)",
      .summary = "The running mean of v from its first point.",
      .returns = "a curve per run over v's x-values, in v's unit",
      .notes = "r[i] = integral of v from x[0] to x[i] by trapezoids / (x[i] - x[0]); r[0] = v[0]. A "
               "NaN makes its point and every later one NaN.",
      .example = "avg(XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]))"}},
    {"Rms", {arg::Real.each()}, 1, runningHandler<Running::Rms>,
     {.signature = "Rms(v)",
      .summary = "The running RMS of v from its first point.",
      .returns = "a curve per run over v's x-values, in v's unit",
      .notes = "Each piece is the exact integral of the square of the straight line between two "
               "points, so the result is exact for piecewise-linear data.",
      .example = "Rms(XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]))"}},
    {"Truncate", {arg::Curve.each(), arg::Real, arg::Real}, 2, truncate,
     {.signature = "Truncate(v, start [, end])",
      .summary = "The part of v between two x-values, its ends interpolated.",
      .returns = "a curve per run, real or complex as v, in v's units; a run the stretch misses is empty",
      .notes = "end defaults to the last point. Points are added at start and end where they fall "
               "between samples (linear interpolation); no extrapolation. A stretch wholly beside the "
               "data reports that the x value is out of range; start after end fails.",
      .example = "Truncate(XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]), 0.5, 3.25)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

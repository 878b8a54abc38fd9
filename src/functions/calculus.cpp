// Running integral and derivative of a curve over its x-values (integ, diff), and the vector
// constructors (vector, unitvec, makevec, makecomplexvec).
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace wavex {
namespace {

// ---- Integration and differentiation ---------------------------------------------------------
//
// One curve per call (the host calls once per division), y[0..n-1] over x[0..n-1]; the result
// has n points over the same x-values (shared, not copied).
//
// integ: the cumulative trapezoid rule in input order,
//   r[0] = 0,  r[i] = r[i-1] + (y[i-1] + y[i])·0.5·(x[i] - x[i-1]),
//   so decreasing x-values give negative steps. Unit: y unit × x unit. Needs x-values: without
//   them "Argument %d in function '%s' has no reference (xvalues)".
// diff: the slope of each step, assigned to the point that ends it (r[0] takes the first step's
//   slope). A step is taken from point i to the first later point j whose distance
//   |x[j] - x[i]| exceeds t = |x[n-1] - x[0]| / (n - 1) × DerivAcceptFactor (a share of the mean
//   spacing), or to the last point; the points skipped on the way are interpolated linearly from
//   r[i] to the new slope. Exact duplicates of x are always skipped; equal x-values at the very
//   end divide by zero and the infinite or undefined slope is kept. Unit: y unit / x unit.
//   Without x-values: first differences over the index, r[i] = y[i] - y[i-1], r[0] = r[1], in
//   the y unit, without reference.
// A complex reference serves through its real parts. Fewer points than the operation needs
// (integ 1, diff 2): "Argument out of range for function '%s'".

double real(double x) { return x; }
double real(const Complex& x) { return x.real(); }

template <class X>
void integrate(double* r, const double* y, const X* x, int64_t n, double) {
    double sum = 0;
    r[0] = 0;
    for (int64_t i = 1; i < n; ++i) {
        sum += (y[i - 1] + y[i]) * 0.5 * (real(x[i]) - real(x[i - 1]));
        r[i] = sum;
    }
}

template <class X>
void differentiate(double* r, const double* y, const X* x, int64_t n, double acceptFactor) {
    const double threshold = std::fabs(real(x[n - 1]) - real(x[0])) / static_cast<double>(n - 1) * acceptFactor;
    int64_t i = 0;
    while (i < n - 1) {
        const double xi = real(x[i]);
        int64_t j = i + 1;
        while (j < n - 1 && !(std::fabs(real(x[j]) - xi) > threshold)) ++j;
        const double dx = real(x[j]) - xi;
        const double slope = (y[j] - y[i]) / dx;
        if (i == 0) r[0] = slope;
        for (int64_t k = i + 1; k < j; ++k) r[k] = r[i] + (slope - r[i]) * (real(x[k]) - xi) / dx;
        r[j] = slope;  // the end of the step takes the slope itself, also when dx is 0
        i = j;
    }
}

void differenceOverIndex(double* r, const double* y, int64_t n) {
    for (int64_t i = 1; i < n; ++i) r[i] = y[i] - y[i - 1];
    r[0] = r[1];
}

enum class Calc { Integ, Diff, Count };

using OverRealX = void (*)(double* r, const double* y, const double* x, int64_t n, double acceptFactor);
using OverComplexX = void (*)(double* r, const double* y, const Complex* x, int64_t n, double acceptFactor);
using OverIndex = void (*)(double* r, const double* y, int64_t n);

struct Calculus {
    Calc op;
    int64_t minLength;               // shorter curves are out of range
    units::Rule2 unit;               // of the result, from the y and x units
    OverRealX overReal;
    OverComplexX overComplex;
    OverIndex overIndex = nullptr;   // null: x-values are required
    const char* option = nullptr;    // host option passed to the kernel as its factor
};

constexpr Calculus kCalculus[] = {
    {.op = Calc::Integ, .minLength = 1, .unit = units::mult, .overReal = integrate<double>,
     .overComplex = integrate<Complex>},
    {.op = Calc::Diff, .minLength = 2, .unit = units::div, .overReal = differentiate<double>,
     .overComplex = differentiate<Complex>, .overIndex = differenceOverIndex, .option = "DerivAcceptFactor"},
};

static_assert(rowsInOrder(kCalculus, &Calculus::op, [](const Calculus& c) { return c.minLength >= 1; }),
              "row i holds operation i");

FUNC_ERROR calculus(const FuncArgs& args, FuncResult* result, const FuncInfo& info, Calc op,
                    MessageHandler& messages) {
    const Calculus& c = kCalculus[static_cast<size_t>(op)];
    const int64_t n = args.length(0);
    const int64_t total = args.totalLength(0);
    const double* x = args.refData(0);
    const Complex* cx = args.complexRefData(0);
    const bool overX = x || cx;

    result->setPhysType(overX ? c.unit(args.physType(0), args.refPhysType(0)) : args.physType(0), units::NoRef);
    result->setType(VD_REAL, VD_REAL);
    if (n < c.minLength) {
        messages.error("Argument out of range for function '%s'", info.name);
        return FUNC_FAILED;
    }
    if (!overX && !c.overIndex) {
        messages.error(FuncArgs::kNoReferenceMessage, 1, info.name);
        return FUNC_FAILED;
    }
    const double* y = args.data(0);
    if (!y) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
    double* r = result->data();
    if (!overX) {
        c.overIndex(r, y, n);
        return FUNC_OK;
    }
    const double factor = c.option ? sp_GetDoubleOption(c.option) : 0;
    if (x) c.overReal(r, y, x, n, factor);
    else c.overComplex(r, y, cx, n, factor);
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0);
    return FUNC_OK;
}

template <Calc op>
FUNC_ERROR calculusHandler(WAVEX_HANDLER_PARAMS) {
    return calculus(args, result, *info, op, *messages);
}

// ---- Vector constructors ---------------------------------------------------------------------
//
// New vectors of unit "number" without reference, sized by the first value of the argument,
// made non-negative and truncated toward zero to a 32-bit count (NaN counts 0, values beyond
// the 32-bit range the largest count):
//   vector(n)          0, 1, …, n-1; n = 0 gives the single value 0
//   unitvec(n)         n ones
//   makecomplexvec(n)  n complex zeros
//   makevec(n)         n zeros; an argument of other than one element lists the lengths of the
//                      divisions of the result instead (each truncated toward zero; a negative
//                      length gives an empty division), all zeros; [] gives an empty vector
// n = 0 gives an empty vector (except for `vector`). Nothing is reported: any real argument
// makes some vector.

// v truncated toward zero and held within ±(2^31 - 1); NaN gives 0.
int64_t truncated32(double v) {
    constexpr double kMax = 2147483647.0;
    if (std::isnan(v)) return 0;
    return static_cast<int64_t>(std::trunc(std::clamp(v, -kMax, kMax)));
}

enum class Build { Vector, UnitVec, MakeVec, MakeComplexVec, Count };

struct Constructor {
    Build op;
    VDType type;
    double value = 0;             // every element, or
    bool ramp = false;            // element k is k
    bool atLeastOne = false;      // a count of 0 makes one element
    bool divisionList = false;    // an argument of other than one element lists division lengths
};

constexpr Constructor kConstructors[] = {
    {.op = Build::Vector, .type = VD_REAL, .ramp = true, .atLeastOne = true},
    {.op = Build::UnitVec, .type = VD_REAL, .value = 1},
    {.op = Build::MakeVec, .type = VD_REAL, .divisionList = true},
    {.op = Build::MakeComplexVec, .type = VD_COMPLEX},
};

static_assert(rowsInOrder(kConstructors, &Constructor::op, [](const Constructor& c) { return (c.type == VD_REAL || c.type == VD_COMPLEX) && (c.type == VD_REAL || (!c.ramp && !c.divisionList)); }),
              "row i holds constructor i, real or complex (complex forms are neither ramps nor lists of runs)");

// Writes elements [0, n) of the result's current division.
void fill(FuncResult* result, const Constructor& c, int64_t n) {
    if (c.type == VD_COMPLEX) {
        std::fill_n(result->complexData(), n, Complex(c.value, 0));
    } else if (c.ramp) {
        std::iota(result->data(), result->data() + n, 0.0);
    } else {
        std::fill_n(result->data(), n, c.value);
    }
}

// makevec's list form: one division per listed length.
FUNC_ERROR buildDivisions(const FuncArgs& args, FuncResult* result, const Constructor& c) {
    const int64_t m = args.length(0);
    const double* lengths = args.data(0);
    if (m == 0) return FUNC_OK;
    if (!lengths) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    auto lengthOf = [&](int64_t k) { return std::max<int64_t>(truncated32(lengths[k]), 0); };
    int64_t total = 0;
    for (int64_t k = 0; k < m; ++k) total += lengthOf(k);
    for (int64_t k = 0; k < m; ++k) {
        result->setCurrentDivision(static_cast<int>(k));
        if (!result->allocate(lengthOf(k), RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
    }
    for (int64_t k = 0; k < m; ++k) {
        result->setCurrentDivision(static_cast<int>(k));
        fill(result, c, lengthOf(k));
    }
    return FUNC_OK;
}

FUNC_ERROR construct(const FuncArgs& args, FuncResult* result, Build op) {
    const Constructor& c = kConstructors[static_cast<size_t>(op)];
    result->setType(c.type, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (c.divisionList && args.length(0) != 1) return buildDivisions(args, result, c);
    int64_t n = std::abs(truncated32(args.scalar(0)));
    if (c.atLeastOne) n = std::max<int64_t>(n, 1);
    if (n == 0) return FUNC_OK;
    if (!result->allocate(n, RESULT_LIKE_ARGS, 0)) return FUNC_FAILED;
    fill(result, c, n);
    return FUNC_OK;
}

template <Build op>
FUNC_ERROR constructorHandler(WAVEX_HANDLER_PARAMS) {
    return construct(args, result, op);
}

// ---- Registration ----------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"integ", {arg::Real.each()}, 1, calculusHandler<Calc::Integ>,
     {.signature = "integ(v)",
      .summary = "The running integral of v over x, by trapezoids.",
      .returns = "a real curve per run over v's x-values, in v's unit times the x unit (V·s)",
      .notes = "r[0] = 0; each step adds (y[i-1] + y[i])/2·(x[i] - x[i-1]) in the order of the points, "
               "so x-values that run back give negative steps. v needs x-values; an empty curve is out "
               "of range.",
      .example = "integ(XY([0, 2, 4, 2, 0], [0, 1, 2, 3, 4]))"}},
    {"diff", {arg::Real.each()}, 1, calculusHandler<Calc::Diff>,
     {.signature = "diff(v)",
      .summary = "The derivative of v with respect to x, as a backward difference.",
      .returns = "a real curve per run over v's x-values, in v's unit over the x unit (V/s)",
      .notes = "Backward difference: each point takes the slope of the step that ends there, and the first "
               "point the slope of the first step. Steps no longer than DerivAcceptFactor (default 1e-9) "
               "times the mean x-spacing are merged into the next one, the skipped points interpolated. "
               "Without x-values: first differences y[i] - y[i-1] over the index, r[0] = r[1]. Fewer "
               "than two points is out of range.",
      .example = "diff(XY([0, 1, 4, 9, 16], [0, 1, 2, 3, 4]))"}},
    {"vector", {arg::Real}, 1, constructorHandler<Build::Vector>,
     {.signature = "vector(n)",
      .summary = "The n numbers 0, 1, ..., n-1.",
      .returns = "a real vector of n values without x-values, unit a plain number",
      .notes = "n is truncated toward zero; n = 0 (or negative, or NaN) gives the single value 0.",
      .example = "vector(5)"}},
    {"unitvec", {arg::Real}, 1, constructorHandler<Build::UnitVec>,
     {.signature = "unitvec(n)",
      .summary = "A vector of n ones.",
      .returns = "a real vector of n values without x-values, unit a plain number",
      .notes = "n is truncated toward zero; 0, a negative n or NaN gives an empty vector.",
      .example = "unitvec(3)"}},
    {"makevec", {arg::Real}, 1, constructorHandler<Build::MakeVec>,
     {.signature = "makevec(n)",
      .summary = "A vector of n zeros, or of several runs of zeros.",
      .returns = "a real vector of zeros without x-values, unit a plain number",
      .notes = "With one value, n zeros (truncated toward zero). A list of several values gives one run "
               "(division) per value, of that many zeros; [] gives an empty vector.",
      .example = "makevec(3); NumDivisions(makevec([2, 3]))"}},
    {"makecomplexvec", {arg::Real}, 1, constructorHandler<Build::MakeComplexVec>,
     {.signature = "makecomplexvec(n)",
      .summary = "A vector of n complex zeros.",
      .returns = "a complex vector of n values without x-values, unit a plain number",
      .notes = "n is truncated toward zero; 0, a negative n or NaN gives an empty vector.",
      .example = "makecomplexvec(2)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// The gamma family and the error functions: lgamma, gamma, erf, erfc (one argument) and gammp,
// gammq, chisquare (two arguments).
//
// Each family is one worker driven by a table of operations, as for the element-wise functions:
// a handler passes its operation code, the worker checks that the arguments are real, allocates
// the result over the first argument's x-values, runs the operation's kernel and turns the
// kernel's status into the family's message.
//
// Kernel contract. An element function `Status f(in..., Out& out)` computes one element; the
// driver that loops over the data stops at the first element that is not Ok (the call fails and
// its values are dropped). It returns
//   Ok            a value was written;
//   OutOfRange    the element is outside the function's domain;
//   Overflow      the value is beyond the range of a double;
//   NotConverged  the series or the continued fraction did not converge in 10000 steps; the
//                 call fails without a message of its own.
// NaN arguments pass through as NaN results.
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace wavex {
namespace {

enum class Status { Ok = 0, OutOfRange = 3, Overflow = 4, NotConverged = 5 };

constexpr double kArgumentLimit = 2.5326997476752568e+305;  // x·ln x reaches the largest double
constexpr double kExpLimit = 709.016;                       // e^x overflows a double just above
constexpr int kMaxIterations = 10000;                       // of the series and the fraction
constexpr double kAccuracy = 1e-13;                         // relative, where they stop
constexpr double kTinyDivisor = 1e-30;                      // the fraction's floor for C and D
constexpr double kStartC = 1e30;                            // the fraction's first C
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kLnSqrtTwoPi = 0.9189385332046728;  // ln √(2π)
constexpr double kE = 2.718281828459045;             // e rounded to a double, and
constexpr double kELow = 1.4456468917292502e-16;     // e - kE
constexpr double kLn2 = 0.6931471805599453;          // ln 2 rounded, and
constexpr double kLn2Low = 2.3190468138462996e-17;   // ln 2 - kLn2
constexpr double kSqrtHalf = 0.7071067811865476;

// ---- Log-gamma -------------------------------------------------------------------------------
//
// ln|Γ(x)| with the sign of Γ(x), for every x but 0 and the negative integers:
//   x >= 8        Stirling: (x - ½)·ln x - x + ln √(2π) + S(x), S the Bernoulli series below;
//   -½ <= x < 8   ln Γ(2 + t), t = x - m the distance to the nearest integer m, from its Taylor
//                 series, then the recurrence Γ(x + 1) = x·Γ(x) over the few steps from 2 + t
//                 to x (the shifts x - k are exact);
//   x < -½        reflection: Γ(x) = π / (sin(πx)·(-x)·Γ(-x)), with sin(πx) taken after an
//                 exact reduction of x, so the sign of Γ is that of sin(πx).
// Relative error a few units in the last place, except next to the zeros of ln|Γ| for negative
// x (near -2.457, -2.747, … and ever closer to the poles further out), where the error is a few
// units of 1e-16 absolute.

// ln Γ(2 + t) = (1 - γ)·t + Σ_{k≥2} (-1)^k (ζ(k) - 1)/k · t^k, which converges for |t| < 2; for
// |t| <= ½ the terms to k = 28 reach 1e-19. The table holds (0.5 - γ) and the coefficients of
// t², t³, …, each (-1)^k (ζ(k) - 1)/k rounded to a double (mpmath, 50 digits); 1 - γ is split
// as 0.5 + (0.5 - γ) so that the leading term is exact.
constexpr double kLnGamma2Taylor[] = {
    -0.07721566490153287,    0.3224670334241132,      -0.0673523010531981,    0.020580808427784546,
    -0.007385551028673986,   0.0028905103307415234,   -0.001192753911703261,  0.0005096695247430425,
    -0.00022315475845357939, 9.945751278180853e-05,   -4.492623673813314e-05, 2.050721277567069e-05,
    -9.439488275268397e-06,  4.374866789907488e-06,   -2.039215753801366e-06, 9.55141213040742e-07,
    -4.492469198764566e-07,  2.1207184805554665e-07,  -1.0043224823968099e-07, 4.7698101693639804e-08,
    -2.2711094608943164e-08, 1.0838659214896955e-08,  -5.183475041970047e-09, 2.4836745438024785e-09,
    -1.1921401405860912e-09, 5.731367241678862e-10,   -2.7595228851242334e-10,
};

double lnGammaNear2(double t) {
    double p = 0;
    for (size_t k = std::size(kLnGamma2Taylor); k-- > 0;) p = std::fma(p, t, kLnGamma2Taylor[k]);
    return 0.5 * t + t * p;
}

// S(x) = ln Γ(x) - [(x - ½)·ln x - x + ln √(2π)] = Σ B_2k / (2k(2k-1)·x^(2k-1)); ten terms leave
// less than 2e-18 for x >= 8.
constexpr double kStirling[] = {
    1.0 / 12,         -1.0 / 360,  1.0 / 1260,          -1.0 / 1680,          1.0 / 1188,
    -691.0 / 360360,  1.0 / 156,   -3617.0 / 122400,    43867.0 / 244188,     -174611.0 / 125400,
};

double stirlingCorrection(double x) {
    const double w = 1 / (x * x);
    double p = 0;
    for (size_t k = std::size(kStirling); k-- > 0;) p = std::fma(p, w, kStirling[k]);
    return p / x;
}

// sin(πx) for x that is not an integer: x is reduced exactly to [-½, ½] first.
double sinPi(double x) {
    double r = x - 2 * std::nearbyint(0.5 * x);  // in [-1, 1]
    if (r > 0.5) r = 1 - r;
    else if (r < -0.5) r = -1 - r;
    return std::sin(kPi * r);
}

struct LogGamma {
    double value;  // ln|Γ(x)|
    double sign;   // of Γ(x): +1 or -1
};

LogGamma logGamma(double x) {
    if (x >= 8) return {(x - 0.5) * std::log(x) - x + kLnSqrtTwoPi + stirlingCorrection(x), 1};
    if (x < -0.5) {
        const double s = sinPi(x);
        return {std::log(kPi / std::fabs(x * s)) - logGamma(-x).value, s < 0 ? -1.0 : 1.0};
    }
    const double m = std::nearbyint(x);
    const double g = lnGammaNear2(x - m);
    if (m >= 3) {
        double product = x - 1;
        for (double k = 2; k <= m - 2; ++k) product *= x - k;
        return {g + std::log(product), 1};
    }
    if (m == 2) return {g, 1};
    if (m == 1) return {g - std::log(x), 1};
    return {g - std::log(std::fabs(x)) - std::log1p(x), x < 0 ? -1.0 : 1.0};  // also NaN
}

// Γ(x) itself, without going through e^(ln Γ), whose rounding near ln Γ = 700 would cost 1e-13:
//   x >= 8        √(2π/x)·(x/e)^x·e^S(x), the power taken in two halves so that it does not
//                 overflow before Γ does, and corrected for the rounding of x/e;
//   -½ <= x < 8   e^(ln Γ(2 + t)) and the recurrence;
//   x < -½        the reflection.
double gammaValue(double x) {
    if (x >= 8) {
        const double y = x / kE;
        const double xDelta = std::fma(-y, kE, x) - y * kELow;  // (x/e)^x = y^x·(1 + xDelta)
        const double half = std::pow(y, 0.5 * x);
        return half * (std::sqrt(kTwoPi / x) * std::exp(stirlingCorrection(x)) * (1 + xDelta)) * half;
    }
    if (x < -0.5) return kPi / (sinPi(x) * -x * gammaValue(-x));
    const double m = std::nearbyint(x);
    double g = std::exp(lnGammaNear2(x - m));
    if (m >= 3) {
        for (double k = 1; k <= m - 2; ++k) g *= x - k;
        return g;
    }
    if (m == 2) return g;
    if (m == 1) return g / x;
    return g / (x * (1 + x));
}

// ---- Incomplete gamma function ---------------------------------------------------------------
//
// P(a, x) = γ(a, x)/Γ(a) and Q(a, x) = 1 - P(a, x), for a > 0, x >= 0. Both are the prefactor
// x^a·e^(-x)/Γ(a) times
//   x < a + 1   the series Σ x^n / (a(a+1)…(a+n)), giving P (and Q as 1 - P);
//   otherwise   the continued fraction 1/(x+1-a- 1·(1-a)/(x+3-a- 2·(2-a)/(x+5-a- …))) by the
//               modified Lentz method, giving Q (and P as 1 - Q).
// The prefactor is e^E with E = a·ln x - x - ln Γ(a), and its relative error is the absolute
// error of E, a difference of terms up to a thousand times larger than itself. For a >= 10,
// E = a·(ln(x/a) - d) + ½·ln(a/2π) - S(a) with d = (x - a)/a: near x = a the bracket is
// ln(1 + d) - d from a series free of cancellation; further out, where |E| reaches hundreds,
// it is formed with every rounding error carried alongside (error-free sums and products and a
// logarithm in two parts), so the results keep a few units of 1e-14 down to 1e-300. For smaller a,
// e^(a·ln x - ln Γ(a))·e^(-x/2)·e^(-x/2) keeps the large -x out of a rounded sum.

// s = a + b exactly, as s + low.
struct TwoDouble {
    double hi, lo;
};
TwoDouble twoSum(double a, double b) {
    const double s = a + b, back = s - a;
    return {s, (a - (s - back)) + (b - back)};
}

// ln y in two parts, to about 1e-19 relative: y = 2^k·m with m in [√½, √2), and
// ln y = k·ln 2 + 2·atanh s, s = (m - 1)/(m + 1), |s| < 0.172. s is carried in two parts; the
// rest of the series, 2s³/3 + 2s⁵/5 + …, is under 1% of 2s and needs only one.
constexpr auto kOddReciprocals = [] {  // 1/3, 1/5, 1/7, …
    std::array<double, 30> c{};
    for (size_t k = 0; k < c.size(); ++k) c[k] = 1.0 / static_cast<double>(2 * k + 3);
    return c;
}();

double oddSeries(double w) {  // Σ w^k/(2k + 3)
    double p = 0;
    for (size_t k = kOddReciprocals.size(); k-- > 0;) p = std::fma(p, w, kOddReciprocals[k]);
    return p;
}

TwoDouble logTwoParts(double y) {
    int k;
    double m = std::frexp(y, &k);
    if (m < kSqrtHalf) {
        m *= 2;
        --k;
    }
    const double num = m - 1;  // exact
    const TwoDouble den = twoSum(m, 1);
    const double sHi = num / den.hi;
    const double sLo = (std::fma(-sHi, den.hi, num) - sHi * den.lo) / den.hi;
    const double scaled = k * kLn2;
    const TwoDouble head = twoSum(scaled, 2 * sHi);
    const double rest = std::fma(k, kLn2, -scaled) + k * kLn2Low + 2 * sLo + 2 * sHi * sHi * sHi * oddSeries(sHi * sHi);
    return twoSum(head.hi, head.lo + rest);
}

// ln(1 + d) - d for |d| <= ½ without cancellation: with u = d/(2 + d), ln(1 + d) = 2·atanh u,
// so ln(1 + d) - d = -u·d + 2u³·Σ u^(2k)/(2k + 3), and u² <= 1/9.
double log1pMinus(double d) {
    const double u = d / (2 + d), w = u * u;
    return -u * d + 2 * u * w * oddSeries(w);
}

double gammaPrefix(double a, double x) {
    if (std::isinf(a) || std::isinf(x)) return std::isinf(a) && std::isinf(x) ? kNaN : 0.0;
    if (a < 10) {
        const double half = std::exp(-0.5 * x);
        if (half == 0) return 0;
        return std::exp(a * std::log(x) - logGamma(a).value) * half * half;
    }
    const TwoDouble s = twoSum(x, -a);
    const double d = s.hi / a;
    const double dLow = (std::fma(-d, a, s.hi) + s.lo) / a;  // d + dLow = (x - a)/a
    TwoDouble bracket;                                        // ln(x/a) - (x - a)/a
    if (std::fabs(d) <= 0.5) {
        bracket = {log1pMinus(d) - dLow * d / (1 + d), 0};
    } else {
        const double q = x / a;
        if (q == 0) return 0;
        const TwoDouble lnq = logTwoParts(q);
        const TwoDouble head = twoSum(lnq.hi, -d);
        bracket = {head.hi, head.lo + lnq.lo + std::fma(-q, a, x) / x - dLow};
    }
    const double product = a * bracket.hi;
    const double productLow = std::fma(a, bracket.hi, -product) + a * bracket.lo;
    const TwoDouble e = twoSum(product, 0.5 * std::log(a / kTwoPi) - stirlingCorrection(a));
    return std::exp(e.hi) * (1 + (productLow + e.lo));
}

// Both stop as soon as a step changes the value by less than 1e-13 of it. Where they converge
// slowly (a large and x near a, the ratio of steps near 1) the part not yet added is up to 30
// times that step, so at the stop the rest is estimated as a geometric series of the last ratio
// and added: this keeps P and Q within 3e-14 for a up to 1000, where stopping alone leaves 4e-13.
bool lowerSeries(double a, double x, double* sum) {
    double ap = a, term = 1 / a, s = term;
    for (int n = 0; n < kMaxIterations; ++n) {
        ap += 1;
        term *= x / ap;
        s += term;
        if (std::fabs(term) < std::fabs(s) * kAccuracy) {
            const double ratio = x / (ap + 1);  // of the next term to this one, and falling
            *sum = s + term * ratio / (1 - ratio);
            return true;
        }
    }
    return false;
}

bool upperFraction(double a, double x, double* fraction) {
    double b = x + 1 - a, c = kStartC, d = 1 / b, h = d, step = 0;
    for (int i = 1; i <= kMaxIterations; ++i) {
        const double an = -i * (i - a);
        b += 2;
        d = an * d + b;
        if (std::fabs(d) < kTinyDivisor) d = kTinyDivisor;
        c = b + an / c;
        if (std::fabs(c) < kTinyDivisor) c = kTinyDivisor;
        d = 1 / d;
        const double delta = d * c;
        h *= delta;
        if (std::fabs(delta - 1) < kAccuracy) {
            const double ratio = step != 0 ? (delta - 1) / step : 0;  // of the last two steps
            if (std::fabs(ratio) < 1) h *= 1 + (delta - 1) * ratio / (1 - ratio);
            *fraction = h;
            return true;
        }
        step = delta - 1;
    }
    return false;
}

struct Regularised {
    double p, q;
    Status status = Status::Ok;
};

Regularised regularisedGamma(double a, double x) {
    if (std::isnan(a) || std::isnan(x)) return {kNaN, kNaN};
    if (x == 0) return {0, 1};
    const double prefix = gammaPrefix(a, x);
    const bool series = x < a + 1;
    if (std::isnan(prefix)) return {kNaN, kNaN};
    if (prefix == 0) return series ? Regularised{0, 1} : Regularised{1, 0};
    double v;
    if (series) {
        if (!lowerSeries(a, x, &v)) return {0, 0, Status::NotConverged};
        return {v * prefix, 1 - v * prefix};
    }
    if (!upperFraction(a, x, &v)) return {0, 0, Status::NotConverged};
    return {1 - v * prefix, v * prefix};
}

// ---- Kernels ---------------------------------------------------------------------------------

bool outsideGammaDomain(double x) { return x > kArgumentLimit || x == 0 || (x < 0 && x == std::floor(x)); }

// lgamma: a complex result, ln|Γ(x)| in the real part where Γ(x) > 0 and in the imaginary part
// (real part 0) where Γ(x) < 0.
Status lnGammaElement(double x, Complex& out) {
    if (outsideGammaDomain(x)) return Status::OutOfRange;
    const LogGamma g = logGamma(x);
    out = g.sign > 0 ? Complex(g.value, 0) : Complex(0, g.value);
    return Status::Ok;
}

// gamma: overflow where ln|Γ(x)| > 709.016 (x > 171.62, or |x| < 1.2e-308), tested only where
// Γ(x) comes near that bound.
Status gammaElement(double x, double& out) {
    out = 0;
    if (outsideGammaDomain(x)) return Status::OutOfRange;
    out = gammaValue(x);
    if (!(std::fabs(out) < 1e307) && logGamma(x).value > kExpLimit) return Status::Overflow;
    return Status::Ok;
}

// erf x = ±P(½, x²) and erfc x = Q(½, x²) (1 + P(½, x²) for negative x) are the C library's
// erf and erfc: the same functions to an ulp or two, and seven times faster than the series and
// the fraction, whose prefactor would also need x² carried in two parts to keep erfc's tail.
Status erfElement(double x, double& out) {
    if (std::fabs(x) > kArgumentLimit) return Status::OutOfRange;
    out = std::erf(x);
    return Status::Ok;
}

Status erfcElement(double x, double& out) {
    out = x < 0 ? 1 + std::erf(-x) : std::erfc(x);
    return Status::Ok;
}

template <bool Lower>
Status incompleteGammaElement(double a, double x, double& out) {
    if (x < 0 || a <= 0) return Status::OutOfRange;
    const Regularised r = regularisedGamma(a, x);
    out = Lower ? r.p : r.q;
    return r.status;
}

// chisquare(χ², ν) = P(⌊ν⌋/2, χ²/2), ν truncated toward zero first.
Status chiSquareElement(double chiSquare, double nu, double& out) {
    return incompleteGammaElement<true>(std::trunc(nu) / 2, chiSquare / 2, out);
}

// The loops. A two-argument kernel steps each argument by 1, or by 0 to repeat a single value.
using RealKernel = Status (*)(double* out, const double* in, int64_t n);
using RealToComplexKernel = Status (*)(Complex* out, const double* in, int64_t n);
using PairKernel = Status (*)(double* out, const double* a, int64_t aStep, const double* b, int64_t bStep,
                              int64_t n);

template <auto F, class Out>
Status map(Out* out, const double* in, int64_t n) {
    for (int64_t i = 0; i < n; ++i)
        if (Status s = F(in[i], out[i]); s != Status::Ok) return s;
    return Status::Ok;
}

template <auto F>
Status mapPairs(double* out, const double* a, int64_t aStep, const double* b, int64_t bStep, int64_t n) {
    for (int64_t i = 0; i < n; ++i)
        if (Status s = F(a[i * aStep], b[i * bStep], out[i]); s != Status::Ok) return s;
    return Status::Ok;
}

FUNC_ERROR finish(Status status, const char* name, MessageHandler& messages) {
    switch (status) {
        case Status::Ok: return FUNC_OK;
        case Status::OutOfRange: messages.error("Argument out of range for function '%s'", name); break;
        case Status::Overflow: messages.error("Overflow in function '%s'", name); break;
        case Status::NotConverged: break;
    }
    return FUNC_FAILED;
}

// ---- One argument: lgamma, gamma, erf, erfc ----------------------------------------------------
//
// Real argument only ("The function '%s' requires a real argument"); the result lies over its
// x-values, unit unknown.
//   lgamma  complex ln|Γ(x)| as above; x = 0, a negative integer or x > 2.53e305: out of range
//   gamma   Γ(x); the same domain; ln|Γ(x)| > 709.016: "Overflow in function '%s'"
//   erf     erf(x); |x| > 2.53e305: out of range
//   erfc    1 - erf(x), for every x

enum class Single { LnGamma, Gamma, Erf, Erfc, Count };

struct SingleOperation {
    Single op;
    const char* name;
    RealKernel real = nullptr;                    // real in, real out, or
    RealToComplexKernel realToComplex = nullptr;  // real in, complex out
    units::Rule1 unit;
};

constexpr SingleOperation kSingle[] = {
    {.op = Single::LnGamma, .name = "lgamma", .realToComplex = map<lnGammaElement, Complex>, .unit = units::unknown},
    {.op = Single::Gamma, .name = "gamma", .real = map<gammaElement, double>, .unit = units::unknown},
    {.op = Single::Erf, .name = "erf", .real = map<erfElement, double>, .unit = units::unknown},
    {.op = Single::Erfc, .name = "erfc", .real = map<erfcElement, double>, .unit = units::unknown},
};

static_assert(rowsInOrder(kSingle, &SingleOperation::op, [](const SingleOperation& c) { return c.name != nullptr; }),
              "row i holds operation i, with its name");

FUNC_ERROR single(const FuncArgs& args, FuncResult* result, Single op, MessageHandler& messages) {
    const SingleOperation& o = kSingle[static_cast<size_t>(op)];
    const double* x = args.data(0);
    if (args.type(0) != VD_REAL || !x) {
        messages.error("The function '%s' requires a real argument", o.name);
        return FUNC_FAILED;
    }
    const int64_t n = args.length(0), total = args.totalLength(0);
    const PhysType unit = o.unit(args.physType(0));
    result->setPhysType(unit, unit);
    Status status;
    if (o.real) {
        result->setType(VD_REAL, VD_REAL);
        if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = o.real(result->data(), x, n);
    } else {
        result->setType(VD_COMPLEX, args.refType(0));
        if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = o.realToComplex(result->complexData(), x, n);
    }
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0);
    return finish(status, o.name, messages);
}

template <Single op>
FUNC_ERROR singleHandler(WAVEX_HANDLER_PARAMS) {
    return single(args, result, op, *messages);
}

// ---- Two arguments: gammp, gammq, chisquare ------------------------------------------------------
//
// Both arguments real ("The function '%s' requires a real argument"), element by element; a
// single value is repeated against the other argument, and two other unequal lengths give an
// empty result without a message, as for the binary operators. The result lies over the
// x-values of the longer argument (the first, when both have them), unit unknown.
//   gammp(a, x)       P(a, x); x < 0 or a <= 0: "Argument out of range for function '%s'"
//   gammq(a, x)       Q(a, x) = 1 - P(a, x); the same domain
//   chisquare(χ², ν)  the chi-square distribution function P(⌊ν⌋/2, χ²/2); the same domain
// A series or fraction that does not converge (a beyond 10^7 or so) fails the call.

enum class Pair { Gammp, Gammq, ChiSquare, Count };

struct PairOperation {
    Pair op;
    const char* name;
    PairKernel kernel;
    units::Rule2 unit;
};

constexpr PairOperation kPairs[] = {
    {.op = Pair::Gammp, .name = "gammp", .kernel = mapPairs<incompleteGammaElement<true>>, .unit = units::unknown2},
    {.op = Pair::Gammq, .name = "gammq", .kernel = mapPairs<incompleteGammaElement<false>>, .unit = units::unknown2},
    {.op = Pair::ChiSquare, .name = "chisquare", .kernel = mapPairs<chiSquareElement>, .unit = units::unknown2},
};

static_assert(rowsInOrder(kPairs, &PairOperation::op, [](const PairOperation& c) { return c.name != nullptr; }),
              "row i holds operation i, with its name");

FUNC_ERROR pair(const FuncArgs& args, FuncResult* result, Pair op, MessageHandler& messages) {
    const PairOperation& o = kPairs[static_cast<size_t>(op)];
    const double* a = args.data(0);
    const double* b = args.data(1);
    if (args.type(0) != VD_REAL || args.type(1) != VD_REAL || !a || !b) {
        messages.error("The function '%s' requires a real argument", o.name);
        return FUNC_FAILED;
    }
    const PhysType unit = o.unit(args.physType(0), args.physType(1));
    result->setPhysType(unit, unit);
    result->setType(VD_REAL, VD_REAL);
    const int64_t na = args.length(0), nb = args.length(1);
    if (na != nb && na != 1 && nb != 1) return FUNC_OK;
    const int lead = na == nb || nb == 1 ? 0 : 1;  // the argument whose length the result has
    const int64_t n = lead == 0 ? na : nb;
    const int withX = args.refType(lead) == VD_NONE && na == nb && args.refType(1) != VD_NONE ? 1 : lead;
    const int64_t total = args.totalLength(lead);
    if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
    const Status status = o.kernel(result->data(), a, na == n ? 1 : 0, b, nb == n ? 1 : 0, n);
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, withX);
    return finish(status, o.name, messages);
}

template <Pair op>
FUNC_ERROR pairHandler(WAVEX_HANDLER_PARAMS) {
    return pair(args, result, op, *messages);
}

// ---- Registration ----------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    // name, argument types, min, max, handler, per-division flags, options
    {"lgamma", {arg::Numeric.each()}, 1, singleHandler<Single::LnGamma>, kPointwise,
     {.signature = "lgamma(x)",
      .summary = "The logarithm of the magnitude of Γ(x), with the sign of Γ as a complex "
                 "part.",
      .returns = "a complex curve per run over x's x-values, unit unknown",
      .notes = "ln of the magnitude of Γ(x): where Γ(x) > 0 the value is the real part; where Γ(x) < 0 it is the imaginary part "
               "(real part 0). x = 0, a negative integer or x > 2.53e305 fails with \"Argument out "
               "of range\". Real x only.",
      .example = "lgamma([3, -0.5, 100])"}},
    {"gamma", {arg::Numeric.each()}, 1, singleHandler<Single::Gamma>, kPointwise,
     {.signature = "gamma(x)",
      .summary = "The gamma function Γ(x); Γ(n) = (n - 1)!.",
      .returns = "a real curve per run over x's x-values, unit unknown",
      .notes = "x = 0 or a negative integer fails with \"Argument out of range\"; x above about "
               "171.6 with \"Overflow in function 'gamma'\". Real x only.",
      .example = "gamma([5, 0.5, -1.5])"}},
    {"erf", {arg::Numeric.each()}, 1, singleHandler<Single::Erf>, kPointwise,
     {.signature = "erf(x)",
      .summary = "The error function erf(x) = 2/√π ∫₀ˣ e^(-t²) dt.",
      .returns = "a real curve per run in [-1, 1] over x's x-values, unit unknown",
      .notes = "Real x only; |x| > 2.53e305 is out of range.",
      .example = "erf([0, 0.5, -2])"}},
    {"erfc", {arg::Numeric.each()}, 1, singleHandler<Single::Erfc>, kPointwise,
     {.signature = "erfc(x)",
      .summary = "The complementary error function 1 - erf(x).",
      .returns = "a real curve per run in [0, 2] over x's x-values, unit unknown",
      .notes = "Computed directly, so the small tail for large x keeps its precision. Real x only.",
      .example = "erfc([0, 1, 5])"}},
    {"gammp", {arg::Numeric.each(), arg::Numeric.each()}, 2, pairHandler<Pair::Gammp>, kPointwise,
     {.signature = "gammp(a, x)",
      .summary = "The regularised lower incomplete gamma function P(a, x) = γ(a, x)/Γ(a).",
      .returns = "a real curve per run in [0, 1], over the longer argument's x-values (a's when "
                 "both have them), unit unknown",
      .notes = "a <= 0 or x < 0 fails with \"Argument out of range\". A single value is repeated "
               "against a vector; two other unequal lengths give an empty result. Real arguments "
               "only; a beyond about 10^7 may fail to converge.",
      .example = "gammp(2, [0, 1, 5])"}},
    {"gammq", {arg::Numeric.each(), arg::Numeric.each()}, 2, pairHandler<Pair::Gammq>, kPointwise,
     {.signature = "gammq(a, x)",
      .summary = "The regularised upper incomplete gamma function Q(a, x) = 1 - P(a, x).",
      .returns = "a real curve per run in [0, 1], over the longer argument's x-values (a's when "
                 "both have them), unit unknown",
      .notes = "The same domain and pairing as gammp; the small tail for large x keeps its "
               "precision.",
      .example = "gammq(2, [0, 1, 5])"}},
    {"chisquare", {arg::Numeric.each(), arg::Numeric.each()}, 2, pairHandler<Pair::ChiSquare>, kPointwise,
     {.signature = "chisquare(chi2, dof)",
      .summary = "The chi-square distribution function: the probability that χ² with dof degrees "
                 "of freedom is below chi2.",
      .returns = "a real curve per run in [0, 1], over the longer argument's x-values, unit unknown",
      .notes = "Equal to gammp(floor(dof)/2, chi2/2): dof is truncated toward zero first, and dof < "
               "1 or chi2 < 0 is out of range. Pairs lengths as gammp does.",
      .example = "chisquare([3.84, 6.63], 1)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

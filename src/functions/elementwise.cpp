// Element-wise functions of one numeric argument (abs ... atanh, phase, db, norm, rnd, unary minus
// and logical not), the reductions to one value (mean, sum, maxidx, minidx), the size queries
// (length, NumElems, veclength, NumDivisions), indexing (_Index) and GroupDelay.
//
// The element-wise family is one worker, `dispatch`, driven by the table of operations below:
// each registered handler passes its operation code, and the worker picks the kernel for the
// argument's kind, allocates the result, runs the kernel, applies the unit rule, copies the
// reference and turns the kernel's status into the family's one message.
//
// Kernel contract. A kernel is `Status kernel(Out* out, const In* in, int64_t n)`: it reads n
// elements and writes n (or, for a reduction, one) and never reports anything itself. It returns
//   Ok          every element was in the domain;
//   OutOfRange  some element was outside the domain: it was written with the value the operation
//               names (0, or -1e100 for a logarithm) and the rest were still computed;
//   Overflow    an element would overflow: the kernel stopped there;
//   ZeroVector  norm found nothing to divide by.
// The worker reports "Argument out of range for function '%s'", "Overflow in function '%s'" or
// "Cannot normalise zero vector" accordingly and fails the call; the values written are dropped
// with the result.
//
// Kernels are built from scalar element functions by one driver, `map`, which owns the loop over
// the contiguous data. An element function is either pure, `Out f(In)`, or checked,
// `Status f(In, Out&)`. Where the build targets AVX2 or AVX-512 and the C library carries its
// vector maths (glibc's libmvec), sin, log10 and atan2 also come in a wide form that `map` runs
// over whole lanes before finishing the tail with the scalar function. libmvec's results differ
// from libm's by at most a few units in the last place (3 seen); special values (0, -0, inf,
// NaN, huge arguments) come out the same.
#include "support/random.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <algorithm>
#include <iterator>
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstring>
#include <type_traits>
#include <vector>

#if defined(__GLIBC__) && defined(__x86_64__) && (defined(__AVX512F__) || defined(__AVX2__))
#if __GLIBC_PREREQ(2, 35)  // the first with vector log10 and atan2
#include <immintrin.h>
#define WAVEX_LIBMVEC 1
#endif
#endif

#if defined(WAVEX_LIBMVEC)
// glibc's vector variants, named by the x86-64 vector function ABI ("e": AVX-512, "d": AVX2).
extern "C" {
#if defined(__AVX512F__)
__m512d _ZGVeN8v_sin(__m512d);
__m512d _ZGVeN8v_log10(__m512d);
__m512d _ZGVeN8vv_atan2(__m512d, __m512d);
#else
__m256d _ZGVdN4v_sin(__m256d);
__m256d _ZGVdN4v_log10(__m256d);
__m256d _ZGVdN4vv_atan2(__m256d, __m256d);
#endif
}
#endif

namespace wavex {
namespace {

// ---- Wide lanes ------------------------------------------------------------------------------

namespace wide {
#if defined(WAVEX_LIBMVEC) && defined(__AVX512F__)
constexpr int kLanes = 8;
using V = __m512d;
inline V sin(V x) { return _ZGVeN8v_sin(x); }
inline V log10(V x) { return _ZGVeN8v_log10(x); }
inline V atan2(V y, V x) { return _ZGVeN8vv_atan2(y, x); }
#elif defined(WAVEX_LIBMVEC)
constexpr int kLanes = 4;
using V = __m256d;
inline V sin(V x) { return _ZGVdN4v_sin(x); }
inline V log10(V x) { return _ZGVdN4v_log10(x); }
inline V atan2(V y, V x) { return _ZGVdN4vv_atan2(y, x); }
#else
constexpr int kLanes = 1;  // no wide forms: `map` runs the scalar functions only
#endif

#if defined(WAVEX_LIBMVEC)
inline V load(const double* p) {
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void store(double* p, V v) { std::memcpy(p, &v, sizeof v); }
// Real and imaginary parts of kLanes complex values, and whether every lane of s lies in
// [lo, hi] (false for NaN).
#if defined(__AVX512F__)
inline void split(const Complex* z, V* re, V* im) {
    const double* p = reinterpret_cast<const double*>(z);
    V a = load(p), b = load(p + 8);
    *re = _mm512_permutex2var_pd(a, _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14), b);
    *im = _mm512_permutex2var_pd(a, _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15), b);
}
inline bool allWithin(V s, double lo, double hi) {
    return (_mm512_cmp_pd_mask(s, _mm512_set1_pd(lo), _CMP_GE_OQ) &
            _mm512_cmp_pd_mask(s, _mm512_set1_pd(hi), _CMP_LE_OQ)) == 0xFF;
}
#else
inline void split(const Complex* z, V* re, V* im) {
    const double* p = reinterpret_cast<const double*>(z);
    V a = load(p), b = load(p + 4);  // re0 im0 re1 im1 | re2 im2 re3 im3
    *re = _mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), 0xD8);
    *im = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xD8);
}
inline bool allWithin(V s, double lo, double hi) {
    V in = _mm256_and_pd(_mm256_cmp_pd(s, _mm256_set1_pd(lo), _CMP_GE_OQ),
                         _mm256_cmp_pd(s, _mm256_set1_pd(hi), _CMP_LE_OQ));
    return _mm256_movemask_pd(in) == 0xF;
}
#endif
#endif
}  // namespace wide

// ---- Kernels ---------------------------------------------------------------------------------

enum class Status { Ok = 0, OutOfRange = 3, Overflow = 4, ZeroVector = 5 };

using RealKernel = Status (*)(double* out, const double* in, int64_t n);
using ComplexToRealKernel = Status (*)(double* out, const Complex* in, int64_t n);
using ComplexKernel = Status (*)(Complex* out, const Complex* in, int64_t n);

// Asks for the cache lines `kPrefetchAhead` bytes past those of [p, p + bytes). Streaming kernels
// spend much of their time waiting for input, and more so when other processes compete for the
// memory bus; a prefetch well ahead of the loads hides the wait. (A prefetch never faults, so
// running past the end of the array is harmless; the address is formed as an integer.)
constexpr size_t kPrefetchAhead = 4096;
inline void prefetch(const void* p, size_t bytes) {
    auto at = reinterpret_cast<uintptr_t>(p) + kPrefetchAhead;
    for (size_t k = 0; k < bytes; k += 64) __builtin_prefetch(reinterpret_cast<const void*>(at + k));
}

// The loop of every element kernel. `F` is the element function; `Wide`, when given, computes
// wide::kLanes elements at once from (out, in) and runs over as many whole lanes as fit first.
template <auto F, auto Wide = nullptr, class Out, class In>
Status map(Out* out, const In* in, int64_t n) {
    int64_t i = 0;
    if constexpr (!std::is_null_pointer_v<decltype(Wide)>) {
        for (; i + wide::kLanes <= n; i += wide::kLanes) {
            prefetch(in + i, sizeof(In) * wide::kLanes);
            Wide(out + i, in + i);
        }
    }
    if constexpr (std::is_invocable_r_v<Status, decltype(F), In, Out&>) {
        Status worst = Status::Ok;
        for (; i < n; ++i) {
            Status s = F(in[i], out[i]);
            if (s == Status::Overflow) return s;
            if (s != Status::Ok) worst = s;
        }
        return worst;
    } else {
        for (; i < n; ++i) out[i] = F(in[i]);
        return Status::Ok;
    }
}

constexpr double kDegPerRad = 57.29577951308232;
constexpr double kRadPerDeg = 0.017453292519943295;
// Angle scales as template arguments (a floating-point template argument is not portable yet).
enum class Scale { One, RadPerDeg, DegPerRad };
constexpr double factor(Scale s) { return s == Scale::RadPerDeg ? kRadPerDeg : s == Scale::DegPerRad ? kDegPerRad : 1.0; }
constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kExpLimit = 709.016;   // e^x overflows a double just above this
constexpr double kDbOfZero = -6160;     // db of an exact zero
constexpr double kLogOfZero = -1e100;   // a logarithm outside its domain

// Element functions that cannot fail.
constexpr auto kZero = [](auto) { return 0.0; };
constexpr auto kIdentity = [](double x) { return x; };
constexpr auto kAbs = [](auto x) { return std::abs(x); };
constexpr auto kRe = [](Complex z) { return z.real(); };
constexpr auto kIm = [](Complex z) { return z.imag(); };
constexpr auto kSign = [](double x) { return x > 0 ? 1.0 : 0.0; };  // negative numbers give 0
constexpr auto kNot = [](double x) { return x == 0 ? 1.0 : 0.0; };
constexpr auto kNegate = [](auto x) { return -x; };
constexpr auto kFloor = [](double x) { return std::floor(x); };
constexpr auto kRandom = [](double x) { return x * sp_Random(sp_RandomSeed()) / 2147483647.0; };
constexpr auto kSin = [](auto x) { return std::sin(x); };
constexpr auto kCos = [](auto x) { return std::cos(x); };
constexpr auto kTanh = [](auto x) { return std::tanh(x); };
constexpr auto kAtan = [](double x) { return std::atan(x); };
constexpr auto kAsinh = [](double x) { return std::asinh(x); };
constexpr auto kSinDeg = [](double x) { return std::sin(x * kRadPerDeg); };
constexpr auto kCosDeg = [](double x) { return std::cos(x * kRadPerDeg); };
constexpr auto kAtanDeg = [](double x) { return std::atan(x) * kDegPerRad; };
constexpr auto kSqrtComplex = [](Complex z) { return std::sqrt(z); };
constexpr auto kAsinComplex = [](Complex z) { return std::asin(z); };
constexpr auto kAcosComplex = [](Complex z) { return std::acos(z); };
constexpr auto kAsinhComplex = [](Complex z) { return std::log(z + std::sqrt(z * z + 1.0)); };
constexpr auto kAcoshComplex = [](Complex z) { return std::log(z + std::sqrt(z * z - 1.0)); };
template <Scale S>
constexpr auto kAngle = [](Complex z) { return std::atan2(z.imag(), z.real()) * factor(S); };

constexpr auto kDbReal = [](double x) { return x == 0 ? kDbOfZero : 20 * std::log10(std::fabs(x)); };
// 20·log10|z| as 10·log10|z|² while |z|² is a normal number (no square root, one rounding
// fewer), through hypot where |z|² would overflow or underflow.
constexpr auto kDbComplex = [](Complex z) {
    double s = z.real() * z.real() + z.imag() * z.imag();
    if (s >= DBL_MIN && s <= DBL_MAX) return 10 * std::log10(s);
    double m = std::hypot(z.real(), z.imag());
    return m == 0 ? kDbOfZero : 20 * std::log10(m);
};

// Element functions with a domain or an overflow bound.
constexpr auto kLog10 = [](double x, double& y) {
    y = x <= 0 ? kLogOfZero : std::log10(x);
    return x <= 0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kLn = [](double x, double& y) {
    y = x <= 0 ? kLogOfZero : std::log(x);
    return x <= 0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kLog10Complex = [](Complex z, Complex& y) {
    y = z == 0.0 ? Complex(kLogOfZero, 0) : std::log10(z);
    return z == 0.0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kLnComplex = [](Complex z, Complex& y) {
    y = z == 0.0 ? Complex(kLogOfZero, 0) : std::log(z);
    return z == 0.0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kExp = [](double x, double& y) {
    if (x > kExpLimit) return Status::Overflow;
    y = std::exp(x);
    return Status::Ok;
};
constexpr auto kExpComplex = [](Complex z, Complex& y) {
    if (z.real() > kExpLimit) return Status::Overflow;
    y = std::exp(z);
    return Status::Ok;
};
constexpr auto kSqrt = [](double x, double& y) {
    y = x < 0 ? 0 : std::sqrt(x);
    return x < 0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kTan = [](double x, double& y) {
    if (std::cos(x) == 0) return Status::Overflow;
    y = std::tan(x);
    return Status::Ok;
};
// The degree form tests the cosine of x itself, not of the converted angle.
constexpr auto kTanDeg = [](double x, double& y) {
    if (std::cos(x) == 0) return Status::Overflow;
    y = std::tan(x * kRadPerDeg);
    return Status::Ok;
};
constexpr auto kArcSine = [](double x, double& y) {
    y = std::fabs(x) > 1 ? 0 : std::asin(x);
    return std::fabs(x) > 1 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kArcCosine = [](double x, double& y) {
    y = std::fabs(x) > 1 ? 0 : std::acos(x);
    return std::fabs(x) > 1 ? Status::OutOfRange : Status::Ok;
};
// Only negative x is refused; 0 <= x < 1 gives the maths library's NaN.
constexpr auto kAcosh = [](double x, double& y) {
    y = x < 0 ? 0 : std::acosh(x);
    return x < 0 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kAtanh = [](double x, double& y) {
    y = std::fabs(x) >= 1 ? 0 : std::atanh(x);
    return std::fabs(x) >= 1 ? Status::OutOfRange : Status::Ok;
};
constexpr auto kAtanhComplex = [](Complex z, Complex& y) {
    bool pole = z == 1.0 || z == -1.0;
    y = pole ? Complex(0, 0) : 0.5 * std::log((1.0 + z) / (1.0 - z));
    return pole ? Status::OutOfRange : Status::Ok;
};
// Only large positive x is tested; large negative x gives -inf (sinh) or inf (cosh) silently.
constexpr auto kSinh = [](double x, double& y) {
    if (x >= kExpLimit) return Status::Overflow;
    y = std::sinh(x);
    return Status::Ok;
};
constexpr auto kCosh = [](double x, double& y) {
    if (x >= kExpLimit) return Status::Overflow;
    y = std::cosh(x);
    return Status::Ok;
};

// Complex sine and cosine need e^(Im z) and e^(-Im z): beyond these bounds one of them is out of
// a double's range. The complex sinh and cosh apply the same test to Im z.
inline bool imagOverflows(Complex z) { return z.imag() >= kExpLimit || std::exp(z.imag()) == 0; }
template <auto F, Scale S = Scale::One>
constexpr auto kBoundedComplex = [](Complex z, Complex& y) {
    z *= factor(S);
    if (imagOverflows(z)) return Status::Overflow;
    y = F(z);
    return Status::Ok;
};
constexpr auto kSinhComplex = [](Complex z) { return std::sinh(z); };
constexpr auto kCoshComplex = [](Complex z) { return std::cosh(z); };
// tan z has a pole only on the real axis, where cos(Re z) is zero.
template <Scale S>
constexpr auto kTanComplex = [](Complex z, Complex& y) {
    z *= factor(S);
    if (std::cos(z.real()) == 0 && z.imag() == 0) return Status::Overflow;
    y = std::tan(z);
    return Status::Ok;
};
template <Scale S>
constexpr auto kAtanComplex = [](Complex z, Complex& y) {
    if (z == Complex(0, 1) || z == Complex(0, -1)) return Status::Overflow;
    y = std::atan(z) * factor(S);
    return Status::Ok;
};

// Wide forms.
#if defined(WAVEX_LIBMVEC)
constexpr auto kSinWide = [](double* out, const double* in) { wide::store(out, wide::sin(wide::load(in))); };
constexpr auto kDbRealWide = [](double* out, const double* in) {
    wide::V x = wide::load(in);
    wide::V a = x < 0 ? -x : x;
    wide::V y = 20.0 * wide::log10(a);
    wide::store(out, a == 0 ? kDbOfZero : y);
};
constexpr auto kDbComplexWide = [](double* out, const Complex* in) {
    wide::V re, im;
    wide::split(in, &re, &im);
    wide::V s = re * re + im * im;
    if (wide::allWithin(s, DBL_MIN, DBL_MAX)) {
        wide::store(out, 10.0 * wide::log10(s));
    } else {
        for (int k = 0; k < wide::kLanes; ++k) out[k] = kDbComplex(in[k]);
    }
};
template <Scale S>
constexpr auto kAngleWide = [](double* out, const Complex* in) {
    wide::V re, im;
    wide::split(in, &re, &im);
    wide::store(out, wide::atan2(im, re) * factor(S));
};
#else
constexpr std::nullptr_t kSinWide = nullptr, kDbRealWide = nullptr, kDbComplexWide = nullptr;
template <Scale S>
constexpr std::nullptr_t kAngleWide = nullptr;
#endif

// Unwrapped phase: the angle of each element, moved by whole turns so that no step between
// neighbours exceeds half a turn. The test compares the raw angles and corrects by at most one
// turn per step; the scale (degrees) applies to the output only.
template <Scale S>
Status unwrappedPhase(double* out, const Complex* in, int64_t n) {
    map<kAngle<Scale::One>, kAngleWide<Scale::One>>(out, in, n);
    if (n == 0) return Status::Ok;
    double previous = out[0], offset = 0;
    out[0] *= factor(S);
    for (int64_t i = 1; i < n; ++i) {
        double theta = out[i], d = theta - previous;
        offset += d > kPi ? -kTwoPi : d < -kPi ? kTwoPi : 0.0;
        previous = theta;
        out[i] = (theta + offset) * factor(S);
    }
    return Status::Ok;
}

// Σ of n doubles in sixteen interleaved partial sums: vectorisable, and more accurate than one
// running sum.
double total(const double* x, int64_t n) {
    constexpr int kWays = 16;
    double part[kWays] = {};
    int64_t i = 0;
    for (; i + kWays <= n; i += kWays) {
        prefetch(x + i, sizeof(double) * kWays);
        for (int k = 0; k < kWays; ++k) part[k] += x[i + k];
    }
    double s = 0;
    for (int k = 0; k < kWays; ++k) s += part[k];
    for (; i < n; ++i) s += x[i];
    return s;
}
// A complex array is its parts interleaved; an even number of partial sums keeps them apart.
Complex total(const Complex* z, int64_t n) {
    const double* parts = reinterpret_cast<const double*>(z);
    constexpr int kWays = 16;
    double part[kWays] = {};
    int64_t i = 0;
    for (; i + kWays <= 2 * n; i += kWays) {
        prefetch(parts + i, sizeof(double) * kWays);
        for (int k = 0; k < kWays; ++k) part[k] += parts[i + k];
    }
    Complex s = 0;
    for (int k = 0; k < kWays; k += 2) s += Complex(part[k], part[k + 1]);
    for (; i < 2 * n; i += 2) s += Complex(parts[i], parts[i + 1]);
    return s;
}

template <class T>
Status sum(T* out, const T* in, int64_t n) {
    out[0] = total(in, n);
    return Status::Ok;
}
template <class T>
Status mean(T* out, const T* in, int64_t n) {
    out[0] = total(in, n) / static_cast<double>(n);  // empty: 0/0
    return Status::Ok;
}

// Index of the first largest (smallest) element, by value or, for complex input, by magnitude.
// The search starts from the far end of the double range with a strict comparison, so infinities
// at that end and NaN never move it from 0.
template <bool Largest, class T>
Status extremeIndex(double* out, const T* in, int64_t n) {
    double best = Largest ? -DBL_MAX : DBL_MAX;
    int64_t at = 0;
    for (int64_t i = 0; i < n; ++i) {
        double v = [&] {
            if constexpr (std::is_same_v<T, Complex>) return std::abs(in[i]);
            else return in[i];
        }();
        if (Largest ? v > best : v < best) {
            best = v;
            at = i;
        }
    }
    out[0] = static_cast<double>(at);
    return Status::Ok;
}

template <class T>
Status normalise(T* out, const T* in, int64_t n) {
    double peak = 0;
    for (int64_t i = 0; i < n; ++i) peak = std::max(peak, std::abs(in[i]));
    if (peak == 0) return Status::ZeroVector;
    for (int64_t i = 0; i < n; ++i) out[i] = in[i] / peak;
    return Status::Ok;
}

// ---- The table of operations -----------------------------------------------------------------
//
// Element-wise maths. Real input gives a real result; complex input gives a real result through
// the complex-to-real kernel, or a complex one through the complex kernel; an operation with
// neither refuses complex input: "The function '%s' requires a real argument". Messages name the
// operation by its display name ("mag" for abs, "-" for unary minus, "phase_b" for arg).
//   Domains (real input): log and ln need x > 0 (else -1e100), sqrt x >= 0 (else 0), asin and
//   acos |x| <= 1 (else 0), acosh x >= 0 (else 0), atanh |x| < 1 (else 0); each of these gives
//   "Argument out of range for function '%s'". Complex input: log and ln refuse 0 (-1e100 + 0i),
//   atanh ±1 (0).
//   Overflow stops the kernel: exp and sinh/cosh at x >= 709.016 (exp: x > 709.016), complex
//   exp at Re z > 709.016, the complex trigonometric and hyperbolic functions at Im z >= 709.016
//   or Im z so negative that e^(Im z) is 0, tan where cos x is exactly 0, complex atan at ±i:
//   "Overflow in function '%s'".
//   Units: `same` for magnitudes, parts, sign changes, sums and means; `none` for phases, signs,
//   indices and norm; `db` for db and every transcendental function; `sqrt` for sqrt.
// Reductions (mean, sum, maxidx, minidx) give one value per division and no reference:
//   mean Σx/n (empty: NaN), sum Σx (empty: 0), maxidx/minidx the 0-based index of the first
//   largest/smallest element (of |z| for complex input; empty: 0).
// norm divides by the largest magnitude; an empty or all-zero vector: "Cannot normalise zero
//   vector". rnd scales each x by a fresh random factor in [0, 1] from the library's one seed.

enum class Op {
    Mag, Phase, Real, Imag, Sign, Db, Log, Ln, Exp, Sin,
    Cos, Sqrt, Tan, Atan, Norm, UMinus, Rnd, Not, Mean, MaxIdx,
    MinIdx, PhaseRad, SinDeg, CosDeg, TanDeg, AtanDeg, Arg, ArgRad, Floor, Sum,
    Sinh, Cosh, Tanh, Asin, Acos, Asinh, Acosh, Atanh,
    Count
};

struct Operation {
    Op op;
    const char* name;                  // for messages
    RealKernel real;                              // every operation has one (no default)
    ComplexToRealKernel complexToReal = nullptr;  // complex in, real out; or
    ComplexKernel complex = nullptr;              // complex in, complex out; or neither
    units::Rule1 unit;                            // no default
    bool scalar = false;                          // reduces the argument to one value
};

constexpr Operation kOperations[] = {
    {.op = Op::Mag, .name = "mag", .real = map<kAbs>, .complexToReal = map<kAbs>, .unit = units::same},
    {.op = Op::Phase, .name = "phase", .real = map<kZero>, .complexToReal = unwrappedPhase<Scale::DegPerRad>,
     .unit = units::none},
    {.op = Op::Real, .name = "real", .real = map<kIdentity>, .complexToReal = map<kRe>, .unit = units::same},
    {.op = Op::Imag, .name = "imag", .real = map<kZero>, .complexToReal = map<kIm>, .unit = units::same},
    {.op = Op::Sign, .name = "sign", .real = map<kSign>, .unit = units::none},
    {.op = Op::Db, .name = "db", .real = map<kDbReal, kDbRealWide>, .complexToReal = map<kDbComplex, kDbComplexWide>,
     .unit = units::db},
    {.op = Op::Log, .name = "log", .real = map<kLog10>, .complex = map<kLog10Complex>, .unit = units::db},
    {.op = Op::Ln, .name = "ln", .real = map<kLn>, .complex = map<kLnComplex>, .unit = units::db},
    {.op = Op::Exp, .name = "exp", .real = map<kExp>, .complex = map<kExpComplex>, .unit = units::db},
    {.op = Op::Sin, .name = "sin", .real = map<kSin, kSinWide>, .complex = map<kBoundedComplex<kSin>>,
     .unit = units::db},
    {.op = Op::Cos, .name = "cos", .real = map<kCos>, .complex = map<kBoundedComplex<kCos>>, .unit = units::db},
    {.op = Op::Sqrt, .name = "sqrt", .real = map<kSqrt>, .complex = map<kSqrtComplex>, .unit = units::sqrt},
    {.op = Op::Tan, .name = "tan", .real = map<kTan>, .complex = map<kTanComplex<Scale::One>>, .unit = units::db},
    {.op = Op::Atan, .name = "atan", .real = map<kAtan>, .complex = map<kAtanComplex<Scale::One>>, .unit = units::db},
    {.op = Op::Norm, .name = "norm", .real = normalise<double>, .complex = normalise<Complex>,
     .unit = units::none},
    {.op = Op::UMinus, .name = "-", .real = map<kNegate>, .complex = map<kNegate>, .unit = units::same},
    {.op = Op::Rnd, .name = "rnd", .real = map<kRandom>, .unit = units::same},
    {.op = Op::Not, .name = "!", .real = map<kNot>, .unit = units::none},
    {.op = Op::Mean, .name = "mean", .real = mean<double>, .complex = mean<Complex>, .unit = units::same,
     .scalar = true},
    {.op = Op::MaxIdx, .name = "maxidx", .real = extremeIndex<true, double>,
     .complexToReal = extremeIndex<true, Complex>, .unit = units::none, .scalar = true},
    {.op = Op::MinIdx, .name = "minidx", .real = extremeIndex<false, double>,
     .complexToReal = extremeIndex<false, Complex>, .unit = units::none, .scalar = true},
    {.op = Op::PhaseRad, .name = "phase_rad", .real = map<kZero>, .complexToReal = unwrappedPhase<Scale::One>,
     .unit = units::none},
    {.op = Op::SinDeg, .name = "sin_deg", .real = map<kSinDeg>, .complex = map<kBoundedComplex<kSin, Scale::RadPerDeg>>,
     .unit = units::db},
    {.op = Op::CosDeg, .name = "cos_deg", .real = map<kCosDeg>, .complex = map<kBoundedComplex<kCos, Scale::RadPerDeg>>,
     .unit = units::db},
    {.op = Op::TanDeg, .name = "tan_deg", .real = map<kTanDeg>, .complex = map<kTanComplex<Scale::RadPerDeg>>,
     .unit = units::db},
    {.op = Op::AtanDeg, .name = "atan_deg", .real = map<kAtanDeg>, .complex = map<kAtanComplex<Scale::DegPerRad>>,
     .unit = units::db},
    {.op = Op::Arg, .name = "phase_b", .real = map<kZero>,
     .complexToReal = map<kAngle<Scale::DegPerRad>, kAngleWide<Scale::DegPerRad>>, .unit = units::none},
    {.op = Op::ArgRad, .name = "phase_b_rad", .real = map<kZero>, .complexToReal = map<kAngle<Scale::One>, kAngleWide<Scale::One>>,
     .unit = units::none},
    {.op = Op::Floor, .name = "floorv", .real = map<kFloor>, .unit = units::same},
    {.op = Op::Sum, .name = "sum", .real = sum<double>, .complex = sum<Complex>, .unit = units::same, .scalar = true},
    {.op = Op::Sinh, .name = "sinh", .real = map<kSinh>, .complex = map<kBoundedComplex<kSinhComplex>>,
     .unit = units::db},
    {.op = Op::Cosh, .name = "cosh", .real = map<kCosh>, .complex = map<kBoundedComplex<kCoshComplex>>,
     .unit = units::db},
    {.op = Op::Tanh, .name = "tanh", .real = map<kTanh>, .complex = map<kTanh>, .unit = units::db},
    {.op = Op::Asin, .name = "asin", .real = map<kArcSine>, .complex = map<kAsinComplex>, .unit = units::db},
    {.op = Op::Acos, .name = "acos", .real = map<kArcCosine>, .complex = map<kAcosComplex>, .unit = units::db},
    {.op = Op::Asinh, .name = "asinh", .real = map<kAsinh>, .complex = map<kAsinhComplex>, .unit = units::db},
    {.op = Op::Acosh, .name = "acosh", .real = map<kAcosh>, .complex = map<kAcoshComplex>, .unit = units::db},
    {.op = Op::Atanh, .name = "atanh", .real = map<kAtanh>, .complex = map<kAtanhComplex>, .unit = units::db},
};

// A row without its real kernel or unit rule draws -Wmissing-field-initializers. (Function
// addresses cannot be compared with null in a constant expression under the sanitizers.)
consteval bool tableIsInOrder() {
    if (std::size(kOperations) != static_cast<size_t>(Op::Count)) return false;
    for (size_t i = 0; i < std::size(kOperations); ++i)
        if (static_cast<size_t>(kOperations[i].op) != i || !kOperations[i].name) return false;
    return true;
}
static_assert(tableIsInOrder(), "row i holds operation i, with its display name");

// The worker of the element-wise family.
FUNC_ERROR dispatch(const FuncArgs& args, FuncResult* result, Op op, MessageHandler& messages) {
    const Operation& o = kOperations[static_cast<size_t>(op)];
    int64_t n = args.length(0);
    int64_t length = o.scalar ? 1 : n;
    int64_t total = args.totalLength(0);
    PhysType unit = o.unit(args.physType(0));
    result->setPhysType(unit, unit);

    Status status;
    if (args.type(0) == VD_REAL) {
        result->setType(VD_REAL, VD_REAL);
        if (!result->allocate(length, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = o.real(result->data(), args.data(0), n);
    } else if (args.type(0) == VD_COMPLEX && o.complexToReal) {
        result->setType(VD_REAL, VD_REAL);
        if (!result->allocate(length, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = o.complexToReal(result->data(), args.complexData(0), n);
    } else if (args.type(0) == VD_COMPLEX && o.complex) {
        result->setType(VD_COMPLEX, args.refType(0));
        if (!result->allocate(length, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = o.complex(result->complexData(), args.complexData(0), n);
    } else {
        messages.error("The function '%s' requires a real argument", o.name);
        return FUNC_FAILED;
    }
    if (!o.scalar) result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, 0);

    switch (status) {
        case Status::Ok: return FUNC_OK;
        case Status::OutOfRange: messages.error("Argument out of range for function '%s'", o.name); break;
        case Status::Overflow: messages.error("Overflow in function '%s'", o.name); break;
        case Status::ZeroVector: messages.error("Cannot normalise zero vector"); break;
    }
    return FUNC_FAILED;
}

template <Op op>
FUNC_ERROR elementwise(WAVEX_HANDLER_PARAMS) {
    return dispatch(args, result, op, *messages);
}

// ---- Size queries ----------------------------------------------------------------------------
//
// length and NumElems count the elements of the whole argument, all divisions together;
// veclength gives the number of divisions when there are several, else the number of elements;
// NumDivisions the number of divisions. Each is a real scalar without reference, unit "number".
// Any kind of vector is accepted (NumDivisions: numeric only); nothing can go wrong.

FUNC_ERROR elementCount(const FuncArgs& args, FuncResult* result, ResultAllocType allocType) {
    result->setPhysType(units::Number, units::NoRef);
    result->setType(VD_REAL, VD_NONE);
    if (!result->allocate(1, allocType, 1)) return FUNC_FAILED;
    result->data()[0] = static_cast<double>(args.length(0));
    return FUNC_OK;
}

FUNC_ERROR length(WAVEX_HANDLER_PARAMS) { return elementCount(args, result, RESULT_LIKE_ARGS); }
FUNC_ERROR numElems(WAVEX_HANDLER_PARAMS) { return elementCount(args, result, RESULT_OWN); }

FUNC_ERROR vecLength(WAVEX_HANDLER_PARAMS) {
    int divisions = args.numYDivisions(0);
    result->makeRealNoRef(1)[0] = divisions != 1 ? divisions : static_cast<double>(args.length(0));
    return FUNC_OK;
}

FUNC_ERROR numDivisions(WAVEX_HANDLER_PARAMS) {
    result->makeRealNoRef(1)[0] = args.numYDivisions(0);
    return FUNC_OK;
}

// ---- Indexing --------------------------------------------------------------------------------
//
// v[i]: element i (0-based) of v as a one-element vector of v's kind and unit, without reference;
// a null string element gives "". The index must be a real ("Complex index") scalar ("Index must
// be scalar"), a whole number ("Index must be an integer", NaN included) and within the vector
// ("Index out of range").

FUNC_ERROR indexElement(WAVEX_HANDLER_PARAMS) {
    if (args.type(1) == VD_COMPLEX) {
        messages->error("Complex index");
        return FUNC_FAILED;
    }
    if (args.length(1) != 1) {
        messages->error("Index must be scalar");
        return FUNC_FAILED;
    }
    const double* at = args.data(1);
    if (!at) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    double i = at[0];
    if (std::floor(i) != i) {
        messages->error("Index must be an integer");
        return FUNC_FAILED;
    }
    if (i < 0 || i >= static_cast<double>(args.length(0))) {
        messages->error("Index out of range");
        return FUNC_FAILED;
    }
    auto k = static_cast<size_t>(i);
    result->setPhysType(args.physType(0), units::NoRef);
    result->setType(args.type(0), args.refType(0));
    if (!result->allocate(1, RESULT_LIKE_ARGS, 0)) return FUNC_FAILED;
    switch (args.type(0)) {
        case VD_REAL: result->data()[0] = args.data(0)[k]; break;
        case VD_COMPLEX: result->complexData()[0] = args.complexData(0)[k]; break;
        default: result->stringData()[0] = std::string(args.string(0, k)); break;
    }
    return FUNC_OK;
}

// ---- Group delay -----------------------------------------------------------------------------
//
// τ(f) = -dφ/df / 2π for a complex response H over frequency f (its reference, or the real parts
// of a complex one), with φ the unwrapped phase in radians. The inner points take the slope of
// the parabola through each point and its two neighbours, the end points the slope of their one
// segment. Result: real, over the argument's reference, unit 1/(the reference's unit) (seconds
// over hertz). A real argument has no phase: all zeros. Fewer than two points, no reference, or
// two of the frequencies used being equal fail with a message.

FUNC_ERROR groupDelay(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    if (n < 2) {
        messages->error("Need at least two points to find group delay");
        return FUNC_FAILED;
    }
    result->setType(VD_REAL, VD_REAL);
    result->setPhysType(units::div(units::Number, args.refPhysType(0)), units::NoRef);
    double* tau = result->makeReal(n, RESULT_LIKE_ARGS, args.totalLength(0));
    if (!tau) return FUNC_FAILED;
    const Complex* h = args.complexData(0);
    if (!h) {
        std::fill(tau, tau + n, 0.0);
        result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
        return FUNC_OK;
    }
    const double* x = args.refData(0);
    const Complex* cx = args.complexRefData(0);
    if (!x && !cx) {
        messages->error(FuncArgs::kNoReferenceMessage, 1, info->name);
        return FUNC_FAILED;
    }

    std::vector<double> phi(static_cast<size_t>(n)), f(static_cast<size_t>(n));
    unwrappedPhase<Scale::One>(phi.data(), h, n);
    for (int64_t i = 0; i < n; ++i) f[i] = x ? x[i] : cx[i].real();

    bool steep = f[1] == f[0] || f[n - 1] == f[n - 2];
    if (!steep) tau[0] = -(phi[1] - phi[0]) / (f[1] - f[0]) / kTwoPi;
    for (int64_t i = 2; i < n && !steep; ++i) {
        if (f[i - 2] == f[i - 1] || f[i - 1] == f[i] || f[i] == f[i - 2]) {
            steep = true;
            break;
        }
        double a = (phi[i - 2] - phi[i - 1]) / (f[i - 2] - f[i - 1]);
        double b = ((phi[i - 1] - phi[i]) / (f[i - 1] - f[i]) - a) / (f[i] - f[i - 2]);
        double a2 = a - (f[i - 1] + f[i - 2]) * b;
        tau[i - 1] = -(2 * b * f[i - 1] + a2) / kTwoPi;
    }
    if (steep) {
        messages->error("Cannot find group delay. Argument has infinite slope");
        return FUNC_FAILED;
    }
    tau[n - 1] = -(phi[n - 1] - phi[n - 2]) / (f[n - 1] - f[n - 2]) / kTwoPi;
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

// ---- Registration ----------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"abs", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise},
    {"mag", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise},
    {"magnitude", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise},
    {"phase", {arg::Numeric.each()}, 1, elementwise<Op::Phase>},
    {"ph", {arg::Numeric.each()}, 1, elementwise<Op::Phase>},
    {"real", {arg::Numeric.each()}, 1, elementwise<Op::Real>, kPointwise},
    {"re", {arg::Numeric.each()}, 1, elementwise<Op::Real>, kPointwise},
    {"imag", {arg::Numeric.each()}, 1, elementwise<Op::Imag>, kPointwise},
    {"im", {arg::Numeric.each()}, 1, elementwise<Op::Imag>, kPointwise},
    {"sign", {arg::Real.each()}, 1, elementwise<Op::Sign>, kPointwise},
    {"db", {arg::Numeric.each()}, 1, elementwise<Op::Db>, kPointwise},
    {"log", {arg::Numeric.each()}, 1, elementwise<Op::Log>, kPointwise},
    {"log10", {arg::Numeric.each()}, 1, elementwise<Op::Log>, kPointwise},
    {"ln", {arg::Numeric.each()}, 1, elementwise<Op::Ln>, kPointwise},
    {"exp", {arg::Numeric.each()}, 1, elementwise<Op::Exp>, kPointwise},
    {"sin", {arg::Numeric.each()}, 1, elementwise<Op::Sin>, kPointwise},
    {"cos", {arg::Numeric.each()}, 1, elementwise<Op::Cos>, kPointwise},
    {"sqrt", {arg::Numeric.each()}, 1, elementwise<Op::Sqrt>, kPointwise},
    {"tan", {arg::Numeric.each()}, 1, elementwise<Op::Tan>, kPointwise},
    {"atan", {arg::Numeric.each()}, 1, elementwise<Op::Atan>, kPointwise},
    {"norm", {arg::Numeric.each()}, 1, elementwise<Op::Norm>, kPointwise},
    {"_UMinus", {arg::Numeric}, 1, elementwise<Op::UMinus>},
    {"rnd", {arg::Real.each()}, 1, elementwise<Op::Rnd>, kPointwise},
    {"_Not", {arg::Numeric}, 1, elementwise<Op::Not>},
    {"mean", {arg::Numeric.each()}, 1, elementwise<Op::Mean>},
    {"maxidx", {arg::Numeric.each()}, 1, elementwise<Op::MaxIdx>},
    {"minidx", {arg::Numeric.each()}, 1, elementwise<Op::MinIdx>},
    {"phase_rad", {arg::Numeric.each()}, 1, elementwise<Op::PhaseRad>},
    {"sin_deg", {arg::Numeric.each()}, 1, elementwise<Op::SinDeg>, kPointwise},
    {"cos_deg", {arg::Numeric.each()}, 1, elementwise<Op::CosDeg>, kPointwise},
    {"tan_deg", {arg::Numeric.each()}, 1, elementwise<Op::TanDeg>, kPointwise},
    {"atan_deg", {arg::Numeric.each()}, 1, elementwise<Op::AtanDeg>, kPointwise},
    {"arg", {arg::Numeric.each()}, 1, elementwise<Op::Arg>, kPointwise},
    {"arg_rad", {arg::Numeric.each()}, 1, elementwise<Op::ArgRad>, kPointwise},
    {"floorv", {arg::Numeric.each()}, 1, elementwise<Op::Floor>, kPointwise},
    {"sum", {arg::Numeric.each()}, 1, elementwise<Op::Sum>},
    {"sinh", {arg::Numeric.each()}, 1, elementwise<Op::Sinh>, kPointwise},
    {"cosh", {arg::Numeric.each()}, 1, elementwise<Op::Cosh>, kPointwise},
    {"tanh", {arg::Numeric.each()}, 1, elementwise<Op::Tanh>, kPointwise},
    {"asin", {arg::Numeric.each()}, 1, elementwise<Op::Asin>, kPointwise},
    {"acos", {arg::Numeric.each()}, 1, elementwise<Op::Acos>, kPointwise},
    {"asinh", {arg::Numeric.each()}, 1, elementwise<Op::Asinh>, kPointwise},
    {"acosh", {arg::Numeric.each()}, 1, elementwise<Op::Acosh>, kPointwise},
    {"atanh", {arg::Numeric.each()}, 1, elementwise<Op::Atanh>, kPointwise},
    {"length", {arg::Any.all()}, 1, length},
    {"NumElems", {arg::Any.joined()}, 1, numElems},
    {"veclength", {arg::Any.all()}, 1, vecLength, kWholeArgument},
    {"NumDivisions", {arg::Numeric.all()}, 1, numDivisions},
    {"_Index", {arg::Any, arg::Real.orKinds(VD_COMPLEX)}, 2, indexElement},  // refuses a complex index itself
    {"GroupDelay", {arg::Numeric.each()}, 1, groupDelay},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

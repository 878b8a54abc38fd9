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

// rnd: x times a fresh factor in [0, 1]. The draws of the whole call are taken from the shared
// seed in one step and made from a local copy.
Status randomScale(double* out, const double* in, int64_t n) {
    uint64_t seed = sp_ReserveRandom(static_cast<uint64_t>(n));
    for (int64_t i = 0; i < n; ++i) out[i] = in[i] * sp_Random(seed) / 2147483647.0;
    return Status::Ok;
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
    {.op = Op::Rnd, .name = "rnd", .real = randomScale, .unit = units::same},
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
static_assert(rowsInOrder(kOperations, &Operation::op, [](const Operation& c) { return c.name != nullptr; }),
              "row i holds operation i, with its display name");

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
    std::vector<double> scratch;
    const double* f = args.neededRefData(0, scratch, *info, *messages);
    if (!f) return FUNC_FAILED;

    std::vector<double> phi(static_cast<size_t>(n));
    unwrappedPhase<Scale::One>(phi.data(), h, n);

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
    {"abs", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise,
     {.signature = "abs(v)",
      .summary = "The magnitude of each element: the absolute value, or the modulus of a complex value.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "Messages name the operation \"mag\".",
      .example = "abs([-2, 3, (3, -4)])"}},
    {"mag", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise,
     {.signature = "mag(v)",
      .summary = "Same as abs: the magnitude of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .example = "mag((3, 4))"}},
    {"magnitude", {arg::Numeric.each()}, 1, elementwise<Op::Mag>, kPointwise,
     {.signature = "magnitude(v)",
      .summary = "Same as abs: the magnitude of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .example = "magnitude([-1.5, (0, 2)])"}},
    {"phase", {arg::Numeric.each()}, 1, elementwise<Op::Phase>,
     {.signature = "phase(v)",
      .summary = "The unwrapped phase of each element, in degrees.",
      .returns = "a real curve per run over v's x-values, plain numbers (degrees)",
      .notes = "Unwrapped along the run: whenever the angle jumps by more than half a turn from the "
               "previous element, whole turns are added or taken away, so the phase can run past "
               "±180. Real values have phase 0. arg gives the wrapped angle; phase_rad the same in "
               "radians.",
      .example = "f = XY([0, 100, 200, 300], [0, 100, 200, 300]); phase(exp((0, -2*pi*3e-3) * f))"}},
    {"ph", {arg::Numeric.each()}, 1, elementwise<Op::Phase>,
     {.signature = "ph(v)",
      .summary = "Same as phase: the unwrapped phase in degrees.",
      .returns = "a real curve per run over v's x-values, plain numbers (degrees)",
      .example = "ph([(1, 1), (-1, 1), (-1, -1)])"}},
    {"real", {arg::Numeric.each()}, 1, elementwise<Op::Real>, kPointwise,
     {.signature = "real(v)",
      .summary = "The real part of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "A real v is returned as it is.",
      .example = "real([(1, 2), (-3, 4)])"}},
    {"re", {arg::Numeric.each()}, 1, elementwise<Op::Real>, kPointwise,
     {.signature = "re(v)",
      .summary = "Same as real: the real part of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .example = "re((1.5, -2))"}},
    {"imag", {arg::Numeric.each()}, 1, elementwise<Op::Imag>, kPointwise,
     {.signature = "imag(v)",
      .summary = "The imaginary part of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "A real v gives zeros.",
      .example = "imag([(1, 2), (-3, 4), 5])"}},
    {"im", {arg::Numeric.each()}, 1, elementwise<Op::Imag>, kPointwise,
     {.signature = "im(v)",
      .summary = "Same as imag: the imaginary part of each element.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .example = "im((1.5, -2))"}},
    {"sign", {arg::Real.each()}, 1, elementwise<Op::Sign>, kPointwise,
     {.signature = "sign(v)",
      .summary = "1 where an element is positive, 0 elsewhere.",
      .returns = "a real curve per run over v's x-values, plain numbers",
      .notes = "Negative values and zero both give 0 (not -1). Real input only.",
      .example = "sign([-2, 0, 3])"}},
    {"db", {arg::Numeric.each()}, 1, elementwise<Op::Db>, kPointwise,
     {.signature = "db(v)",
      .summary = "Each element in decibels: 20·log10 of its magnitude.",
      .returns = "a real curve per run over v's x-values, plain numbers (dB)",
      .notes = "Takes the magnitude first, so negative and complex values are fine. An exact zero "
               "gives -6160 rather than failing.",
      .example = "db([0.1, -1, 1000, 0])"}},
    {"log", {arg::Numeric.each()}, 1, elementwise<Op::Log>, kPointwise,
     {.signature = "log(v)",
      .summary = "The base-10 logarithm of each element (log10; ln is the natural one).",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Real x <= 0 fails with \"Argument out of range for function 'log'\"; a complex v "
               "gives the complex logarithm and refuses only 0.",
      .example = "log([1, 10, 1000])"}},
    {"log10", {arg::Numeric.each()}, 1, elementwise<Op::Log>, kPointwise,
     {.signature = "log10(v)",
      .summary = "Same as log: the base-10 logarithm of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Messages name it \"log\".",
      .example = "log10([0.01, 100])"}},
    {"ln", {arg::Numeric.each()}, 1, elementwise<Op::Ln>, kPointwise,
     {.signature = "ln(v)",
      .summary = "The natural logarithm of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Real x <= 0 fails with \"Argument out of range\"; a complex v gives the principal "
               "complex logarithm and refuses only 0.",
      .example = "ln([1, exp(2), (-1, 0)])"}},
    {"exp", {arg::Numeric.each()}, 1, elementwise<Op::Exp>, kPointwise,
     {.signature = "exp(v)",
      .summary = "e raised to each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A (real part of an) argument above 709.016 fails with \"Overflow in function "
               "'exp'\".",
      .example = "exp([0, 1, -1])"}},
    {"sin", {arg::Numeric.each()}, 1, elementwise<Op::Sin>, kPointwise,
     {.signature = "sin(v)",
      .summary = "The sine of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A complex argument whose imaginary part is 709.016 or more (or below about -745) "
               "fails with \"Overflow\". sin_deg takes degrees.",
      .example = "sin([0, pi/6, pi/2])"}},
    {"cos", {arg::Numeric.each()}, 1, elementwise<Op::Cos>, kPointwise,
     {.signature = "cos(v)",
      .summary = "The cosine of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A complex argument whose imaginary part is 709.016 or more (or below about -745) "
               "fails with \"Overflow\". cos_deg takes degrees.",
      .example = "cos([0, pi/3, pi])"}},
    {"sqrt", {arg::Numeric.each()}, 1, elementwise<Op::Sqrt>, kPointwise,
     {.signature = "sqrt(v)",
      .summary = "The square root of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, in the square root of "
                 "v's unit (V²/Hz gives V/√Hz)",
      .notes = "A negative real fails with \"Argument out of range for function 'sqrt'\"; write it "
               "as a complex number, (x, 0), for the complex root.",
      .example = "sqrt([4, 2]); sqrt((-4, 0))"}},
    {"tan", {arg::Numeric.each()}, 1, elementwise<Op::Tan>, kPointwise,
     {.signature = "tan(v)",
      .summary = "The tangent of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Fails with \"Overflow in function 'tan'\" only where the cosine is exactly 0, which "
               "no double next to π/2 reaches, so values near the poles are just very large.",
      .example = "tan([0, pi/4, -pi/4])"}},
    {"atan", {arg::Numeric.each()}, 1, elementwise<Op::Atan>, kPointwise,
     {.signature = "atan(v)",
      .summary = "The arc tangent of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Real results lie in (-π/2, π/2); atan2 gives the full circle. Complex ±i overflow.",
      .example = "atan([0, 1, -1])"}},
    // Registered pointwise as scripts have always seen it, though each value depends on the largest;
    // nothing in wavex reads the flag (it is recorded for the host).
    {"norm", {arg::Numeric.each()}, 1, elementwise<Op::Norm>, kPointwise,
     {.signature = "norm(v)",
      .summary = "v divided by its largest magnitude, so the peak is 1.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "Each run is scaled by its own peak. An empty or all-zero run fails with \"Cannot "
               "normalise zero vector\".",
      .example = "norm([1, -4, 2])"}},
    {"_UMinus", {arg::Numeric}, 1, elementwise<Op::UMinus>,
     {.signature = "-a (_UMinus)",
      .summary = "The negation of each element.",
      .returns = "real or complex as a, over a's x-values, in a's unit",
      .example = "-XY([1, -2], [0, 1])"}},
    {"rnd", {arg::Real.each()}, 1, elementwise<Op::Rnd>, kPointwise,
     {.signature = "rnd(v)",
      .summary = "Each element times its own random factor between 0 and 1.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "rnd(1) is a uniform random number. All calls draw from one library-wide generator, "
               "so results differ from call to call. Real input only.",
      .example = "r = rnd([2, 2, 2]); r >= 0 && r <= 2"}},
    {"_Not", {arg::Numeric}, 1, elementwise<Op::Not>,
     {.signature = "!a (_Not)",
      .summary = "Logical not of each element: 1 where it is 0, else 0.",
      .returns = "a real vector over a's x-values, plain numbers",
      .notes = "NaN counts as true, so !NaN is 0. Real input only.",
      .example = "!([0, 2, -1])"}},
    {"mean", {arg::Numeric.each()}, 1, elementwise<Op::Mean>,
     {.signature = "mean(v)",
      .summary = "The arithmetic mean of the elements, Σx/n.",
      .returns = "one value per run, real or complex as v, in v's unit, without x-values",
      .notes = "Every sample weighs the same whatever the x spacing (Mean1 and avg integrate over "
               "x instead). An empty run gives NaN.",
      .example = "mean([1, 2, 3, 10])"}},
    {"maxidx", {arg::Numeric.each()}, 1, elementwise<Op::MaxIdx>,
     {.signature = "maxidx(v)",
      .summary = "The index (from 0) of the largest element.",
      .returns = "one real value per run, a plain number",
      .notes = "Ties give the first; complex values compare by magnitude; NaN is never chosen. An "
               "empty run gives 0.",
      .example = "maxidx([3, 9, 2, 9])"}},
    {"minidx", {arg::Numeric.each()}, 1, elementwise<Op::MinIdx>,
     {.signature = "minidx(v)",
      .summary = "The index (from 0) of the smallest element.",
      .returns = "one real value per run, a plain number",
      .notes = "Ties give the first; complex values compare by magnitude; NaN is never chosen. An "
               "empty run gives 0.",
      .example = "minidx([3, 1, 2, 1])"}},
    {"phase_rad", {arg::Numeric.each()}, 1, elementwise<Op::PhaseRad>,
     {.signature = "phase_rad(v)",
      .summary = "The unwrapped phase of each element, in radians.",
      .returns = "a real curve per run over v's x-values, plain numbers (radians)",
      .notes = "Unwrapped as phase is (steps of more than π between neighbours are taken as a turn "
               "the other way). Real values give 0.",
      .example = "phase_rad([(1, 1), (-1, 1), (-1, -1)])"}},
    {"sin_deg", {arg::Numeric.each()}, 1, elementwise<Op::SinDeg>, kPointwise,
     {.signature = "sin_deg(v)",
      .summary = "The sine of each element, in degrees.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .example = "sin_deg([0, 30, 90])"}},
    {"cos_deg", {arg::Numeric.each()}, 1, elementwise<Op::CosDeg>, kPointwise,
     {.signature = "cos_deg(v)",
      .summary = "The cosine of each element, in degrees.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .example = "cos_deg([0, 60, 180])"}},
    {"tan_deg", {arg::Numeric.each()}, 1, elementwise<Op::TanDeg>, kPointwise,
     {.signature = "tan_deg(v)",
      .summary = "The tangent of each element, in degrees.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "tan_deg(90) is a very large number, not a failure.",
      .example = "tan_deg([0, 45, -45])"}},
    {"atan_deg", {arg::Numeric.each()}, 1, elementwise<Op::AtanDeg>, kPointwise,
     {.signature = "atan_deg(v)",
      .summary = "The arc tangent of each element, in degrees.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .example = "atan_deg([0, 1, -1])"}},
    {"arg", {arg::Numeric.each()}, 1, elementwise<Op::Arg>, kPointwise,
     {.signature = "arg(v)",
      .summary = "The angle of each element in degrees, wrapped to (-180, 180].",
      .returns = "a real curve per run over v's x-values, plain numbers (degrees)",
      .notes = "Not unwrapped (phase is). Real values give 0, whatever their sign. Messages name it "
               "\"phase_b\".",
      .example = "f = XY([0, 100, 200, 300], [0, 100, 200, 300]); arg(exp((0, -2*pi*3e-3) * f))"}},
    {"arg_rad", {arg::Numeric.each()}, 1, elementwise<Op::ArgRad>, kPointwise,
     {.signature = "arg_rad(v)",
      .summary = "The angle of each element in radians, wrapped to (-π, π].",
      .returns = "a real curve per run over v's x-values, plain numbers (radians)",
      .notes = "Not unwrapped (phase_rad is). Real values give 0.",
      .example = "arg_rad([(1, 1), (-1, 0), (0, -2)])"}},
    {"floorv", {arg::Numeric.each()}, 1, elementwise<Op::Floor>, kPointwise,
     {.signature = "floorv(v)",
      .summary = "Each element rounded down to a whole number.",
      .returns = "a real curve per run over v's x-values, in v's unit",
      .notes = "Real input only. Floor takes the first element alone.",
      .example = "floorv([-1.5, 2.7, 3])"}},
    {"sum", {arg::Numeric.each()}, 1, elementwise<Op::Sum>,
     {.signature = "sum(v)",
      .summary = "The sum of the elements.",
      .returns = "one value per run, real or complex as v, in v's unit, without x-values",
      .notes = "An empty run gives 0. x spacing plays no part (area integrates).",
      .example = "sum([1, 2, 3.5])"}},
    {"sinh", {arg::Numeric.each()}, 1, elementwise<Op::Sinh>, kPointwise,
     {.signature = "sinh(v)",
      .summary = "The hyperbolic sine of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "x >= 709.016 fails with \"Overflow in function 'sinh'\"; very negative x gives -inf.",
      .example = "sinh([0, 1, -1])"}},
    {"cosh", {arg::Numeric.each()}, 1, elementwise<Op::Cosh>, kPointwise,
     {.signature = "cosh(v)",
      .summary = "The hyperbolic cosine of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "x >= 709.016 fails with \"Overflow in function 'cosh'\"; very negative x gives inf.",
      .example = "cosh([0, 1, -1])"}},
    {"tanh", {arg::Numeric.each()}, 1, elementwise<Op::Tanh>, kPointwise,
     {.signature = "tanh(v)",
      .summary = "The hyperbolic tangent of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .example = "tanh([0, 1, 100])"}},
    {"asin", {arg::Numeric.each()}, 1, elementwise<Op::Asin>, kPointwise,
     {.signature = "asin(v)",
      .summary = "The arc sine of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A real |x| > 1 fails with \"Argument out of range\"; give it as complex, (x, 0), "
               "for the complex result.",
      .example = "asin([0, 0.5, 1]); asin((2, 0))"}},
    {"acos", {arg::Numeric.each()}, 1, elementwise<Op::Acos>, kPointwise,
     {.signature = "acos(v)",
      .summary = "The arc cosine of each element, in radians.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A real |x| > 1 fails with \"Argument out of range\"; give it as complex for the "
               "complex result.",
      .example = "acos([1, 0.5, -1])"}},
    {"asinh", {arg::Numeric.each()}, 1, elementwise<Op::Asinh>, kPointwise,
     {.signature = "asinh(v)",
      .summary = "The inverse hyperbolic sine of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .example = "asinh([0, 1, -1])"}},
    {"acosh", {arg::Numeric.each()}, 1, elementwise<Op::Acosh>, kPointwise,
     {.signature = "acosh(v)",
      .summary = "The inverse hyperbolic cosine of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A negative real fails with \"Argument out of range\"; 0 <= x < 1 gives NaN.",
      .example = "acosh([1, 2, 10])"}},
    {"atanh", {arg::Numeric.each()}, 1, elementwise<Op::Atanh>, kPointwise,
     {.signature = "atanh(v)",
      .summary = "The inverse hyperbolic tangent of each element.",
      .returns = "a real or complex curve per run (as v) over v's x-values, plain numbers",
      .notes = "A real |x| >= 1 fails with \"Argument out of range\"; complex values refuse only ±1.",
      .example = "atanh([0, 0.5, -0.5])"}},
    {"length", {arg::Any.all()}, 1, length,
     {.signature = "length(v)",
      .summary = "The number of elements of v, all runs together.",
      .returns = "one real value, a plain number",
      .notes = "Works for strings too. veclength counts runs when there are several.",
      .example = "length(XY([1, 2, 3], [0, 1, 2])); length([\"a\", \"b\"])"}},
    {"NumElems", {arg::Any.joined()}, 1, numElems,
     {.signature = "NumElems(v)",
      .summary = "The number of elements of v, all runs together.",
      .returns = "one real value, a plain number",
      .notes = "Same count as length; works for any kind.",
      .example = "NumElems([\"a\", \"b\", \"c\"])"}},
    {"veclength", {arg::Any.all()}, 1, vecLength, kWholeArgument,
     {.signature = "veclength(v)",
      .summary = "The number of runs of v when it has several, else its number of elements.",
      .returns = "one real value, a plain number",
      .example = "veclength([4, 5, 6])"}},
    {"NumDivisions", {arg::Numeric.all()}, 1, numDivisions,
     {.signature = "NumDivisions(v)",
      .summary = "The number of runs (divisions) of v.",
      .returns = "one real value, a plain number",
      .notes = "Data that is not split into runs counts as one. Numeric input only.",
      .example = "NumDivisions([1, 2, 3])"}},
    {"_Index", {arg::Any, arg::Real.orKinds(VD_COMPLEX)}, 2, indexElement,  // refuses a complex index itself
     {.signature = "v[i] (_Index)",
      .summary = "Element i of v, counting from 0.",
      .returns = "one element of v's kind and unit, without x-value",
      .notes = "i must be one real whole number within v, else the call fails (\"Index must be an "
               "integer\", \"Index out of range\").",
      .example = "v = [\"a\", \"b\", \"c\"]; v[1]; [4, 7, 1][2]"}},
    {"GroupDelay", {arg::Numeric.each()}, 1, groupDelay,
     {.signature = "GroupDelay(h)",
      .summary = "The group delay -dφ/df / 2π of a frequency response h.",
      .returns = "a real curve per run over h's frequencies, in seconds (1 over the x unit)",
      .notes = "φ is the unwrapped phase in radians. Inner points take the slope of the parabola "
               "through the point and its two neighbours, the ends the slope of their segment. A "
               "real h gives zeros; h needs x-values, at least two points and no repeated "
               "frequency.",
      .example = "f = XY([0, 100, 200, 300], [0, 100, 200, 300]); GroupDelay(exp((0, -2*pi*1e-3) * f))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

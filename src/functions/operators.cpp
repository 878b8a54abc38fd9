// The binary operators of the expression language (+ - * / ^ % == != < <= > >= && || and the
// comma of a complex pair) and the two-argument functions max, min, atan2 and atan2_deg.
//
// The family is one worker, `dispatch`, driven by the table of operations below: each registered
// handler passes its operation code; the worker lines the operands up (repeating a one-element
// operand), picks the kernel for the pair of data kinds, allocates the result, runs the kernel,
// applies the unit rule, copies the reference and turns the kernel's status into the family's
// message. The comparison handlers first hand two string arguments to the string comparisons.
//
// Kernel contract. A kernel is `Status kernel(Out* out, const L* a, const R* b, int64_t n,
// Shape shape)`: it writes n elements from the left operand a and the right operand b, where
// `shape` says whether one of them is a single value used for every element. It never reports
// anything itself; it returns
//   Ok            every element was in the domain;
//   DivideByZero  a divisor was zero;
//   OutOfRange    an operand was outside the operation's domain (a power);
//   TooLarge      a modulus operand does not fit a 32-bit integer;
// the status of the first element that failed. The values written are then dropped with the
// result.
//
// Kernels are built by one driver, `zip`, from an element function F(a, b) and, for operations
// with a domain, a check C(a, b) giving the element's status. The driver computes every element
// and merges the checks in the same branch-free loop, so the common case vectorises; only when
// some element failed does it look again for the first one.
#include "functions/string_compare.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace wavex {
namespace {

// ---- Kernels ---------------------------------------------------------------------------------

enum class Status : int { Ok = 0, DivideByZero = 1, OutOfRange = 2, TooLarge = 3 };

// How the operands line up: element by element, or one of them a single repeated value.
enum class Shape { Pairs, LeftRepeated, RightRepeated };

template <class Out, class L, class R>
using Kernel = Status (*)(Out* out, const L* a, const R* b, int64_t n, Shape shape);

// Element access. Complex arrays are read and written through their parts (the layout the
// standard guarantees for std::complex), which the compiler vectorises where it leaves whole
// std::complex loads and stores scalar.
inline double load(const double* p, int64_t i) { return p[i]; }
inline Complex load(const Complex* p, int64_t i) {
    const double* part = reinterpret_cast<const double*>(p) + 2 * i;
    return {part[0], part[1]};
}
inline void store(double* p, int64_t i, double v) { p[i] = v; }
inline void store(Complex* p, int64_t i, Complex v) {
    double* part = reinterpret_cast<double*>(p) + 2 * i;
    part[0] = v.real();
    part[1] = v.imag();
}

// Runs body(i, a_i, b_i) for every element, reading a repeated operand once.
template <class L, class R, class Body>
inline void forEach(const L* __restrict a, const R* __restrict b, int64_t n, Shape shape, Body&& body) {
    switch (shape) {
        case Shape::Pairs:
            for (int64_t i = 0; i < n; ++i) body(i, load(a, i), load(b, i));
            break;
        case Shape::LeftRepeated: {
            const L x = a[0];
            for (int64_t i = 0; i < n; ++i) body(i, x, load(b, i));
            break;
        }
        case Shape::RightRepeated: {
            const R y = b[0];
            for (int64_t i = 0; i < n; ++i) body(i, load(a, i), y);
            break;
        }
    }
}

// Streaming stores. A plain store first reads the cache line it writes into ("read for
// ownership"), so writing a result far larger than the caches costs one read per line more than
// it needs; non-temporal stores write whole lines straight to memory instead. They pay only where
// the result would not stay in cache for its reader anyway, hence the threshold. The kernel then
// computes chunk by chunk into a buffer that stays in L1 and streams each chunk out whole.
#if defined(__AVX512F__)
constexpr size_t kLine = 64;
inline void streamLine(double* to, const double* from) { _mm512_stream_pd(to, _mm512_load_pd(from)); }
inline void streamFence() { _mm_sfence(); }
#elif defined(__AVX__)
constexpr size_t kLine = 32;
inline void streamLine(double* to, const double* from) { _mm256_stream_pd(to, _mm256_load_pd(from)); }
inline void streamFence() { _mm_sfence(); }
#elif defined(__SSE2__)
constexpr size_t kLine = 16;
inline void streamLine(double* to, const double* from) { _mm_stream_pd(to, _mm_load_pd(from)); }
inline void streamFence() { _mm_sfence(); }
#else
constexpr size_t kLine = 0;  // no streaming stores: every result is written with plain stores
inline void streamLine(double*, const double*) {}
inline void streamFence() {}
#endif
constexpr int64_t kStreamingBytes = int64_t{16} << 20;
constexpr size_t kChunkBytes = 4096;

// compute(to, begin, count) writes elements [begin, begin + count) to `to`.
template <class Out, class Compute>
void streamed(Out* out, int64_t n, Compute&& compute) {
    if constexpr (kLine != 0) {
        constexpr int64_t kChunk = kChunkBytes / sizeof(Out);
        alignas(kLine) Out chunk[kChunk];
        auto address = reinterpret_cast<uintptr_t>(out);
        int64_t head = std::min<int64_t>(n, static_cast<int64_t>((kLine - address % kLine) % kLine / sizeof(Out)));
        compute(out, 0, head);  // up to the first whole line
        for (int64_t i = head; i < n; i += kChunk) {
            int64_t count = std::min(kChunk, n - i);
            compute(chunk, i, count);
            auto to = reinterpret_cast<double*>(out + i);
            auto from = reinterpret_cast<const double*>(chunk);
            size_t bytes = static_cast<size_t>(count) * sizeof(Out), whole = bytes / kLine * kLine;
            for (size_t k = 0; k < whole / sizeof(double); k += kLine / sizeof(double)) streamLine(to + k, from + k);
            std::memcpy(reinterpret_cast<char*>(to) + whole, reinterpret_cast<const char*>(from) + whole, bytes - whole);
        }
        streamFence();
    } else {
        compute(out, 0, n);
    }
}

template <auto F, auto Check, class Out, class L, class R>
Status zip(Out* out, const L* a, const R* b, int64_t n, Shape shape) {
    constexpr bool kChecked = !std::is_null_pointer_v<decltype(Check)>;
    int failed = 0;
    auto compute = [&](Out* __restrict to, int64_t begin, int64_t count) {
        const L* left = shape == Shape::LeftRepeated ? a : a + begin;
        const R* right = shape == Shape::RightRepeated ? b : b + begin;
        if constexpr (kChecked) {
            int bad = 0;
            forEach(left, right, count, shape, [to, &bad](int64_t i, L x, R y) {
                store(to, i, F(x, y));
                bad |= Check(x, y);
            });
            failed |= bad;
        } else {
            forEach(left, right, count, shape, [to](int64_t i, L x, R y) { store(to, i, F(x, y)); });
        }
    };
    if (n * static_cast<int64_t>(sizeof(Out)) >= kStreamingBytes) streamed(out, n, compute);
    else compute(out, 0, n);
    if constexpr (kChecked) {
        if (failed) {  // find the first element that failed
            int first = 0;
            forEach(a, b, n, shape, [&first](int64_t, L x, R y) {
                if (!first) first = Check(x, y);
            });
            return static_cast<Status>(first);
        }
    }
    return Status::Ok;
}

// The kernels of one result kind for the four pairs of operand kinds, numbered 0 real×real,
// 1 real×complex, 2 complex×real, 3 complex×complex; null where there is none. `pairs` has bit p
// set when pair p has a kernel (a mask rather than a test of the pointers, so that the table can
// be checked at compile time in every build).
template <class Out>
struct Kernels {
    unsigned pairs = 0;
    Kernel<Out, double, double> rr = nullptr;
    Kernel<Out, double, Complex> rc = nullptr;
    Kernel<Out, Complex, double> cr = nullptr;
    Kernel<Out, Complex, Complex> cc = nullptr;

    constexpr bool has(int pair) const { return (pairs >> pair & 1u) != 0; }
};

template <class Out, auto F, auto Check = nullptr>
constexpr Kernels<Out> kAllPairs{0b1111, zip<F, Check, Out, double, double>, zip<F, Check, Out, double, Complex>,
                                 zip<F, Check, Out, Complex, double>, zip<F, Check, Out, Complex, Complex>};
template <class Out, auto F, auto Check = nullptr>
constexpr Kernels<Out> kComplexPairs{0b1110, nullptr, zip<F, Check, Out, double, Complex>,
                                     zip<F, Check, Out, Complex, double>, zip<F, Check, Out, Complex, Complex>};
template <auto F, auto Check = nullptr>
constexpr Kernels<double> kRealPair{0b0001, zip<F, Check, double, double, double>};

// Complex arithmetic on any mix of real and complex operands, written out so that no call to the
// run-time library's NaN-recovering multiply and divide sits in the loops.
inline double re(double x) { return x; }
inline double re(Complex z) { return z.real(); }
inline double im(double) { return 0; }
inline double im(Complex z) { return z.imag(); }
inline bool isZero(double x) { return x == 0; }
inline bool isZero(Complex z) { return z.real() == 0 && z.imag() == 0; }

inline double mul(double a, double b) { return a * b; }
inline Complex mul(double a, Complex b) { return {a * b.real(), a * b.imag()}; }
inline Complex mul(Complex a, double b) { return {a.real() * b, a.imag() * b}; }
inline Complex mul(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

inline double quot(double a, double b) { return a / b; }
inline Complex quot(Complex a, double b) { return {a.real() / b, a.imag() / b}; }
// Smith's method: scaled by the larger part of the divisor, so |b|² is never formed and cannot
// overflow or underflow on the way to a representable quotient. Written with selects rather than
// a branch so that the loop vectorises: x and y are a's parts in the order the larger part wants.
inline Complex quot(Complex a, Complex b) {
    bool realLarger = std::fabs(b.real()) >= std::fabs(b.imag());
    double p = realLarger ? b.real() : b.imag(), q = realLarger ? b.imag() : b.real();
    double x = realLarger ? a.real() : a.imag(), y = realLarger ? a.imag() : a.real();
    double r = q / p, t = 1 / (p + q * r);
    double f = (y - x * r) * t;
    return {(x + y * r) * t, realLarger ? f : -f};
}
inline Complex quot(double a, Complex b) { return quot(Complex(a, 0), b); }

// Whole exponents up to this size are taken by repeated squaring: (-2+0i)^2 is exactly 4, where
// exp(2·log z) would leave a rounding residue in the imaginary part.
constexpr double kLargestSquaringExponent = 1024;

inline double power(double a, double b) { return std::pow(a, b); }
inline Complex power(Complex a, Complex b) {
    if (isZero(a)) return 0;  // reached only with Re b > 0; other powers of zero are refused
    double k = b.real();
    if (b.imag() != 0 || k != std::trunc(k) || std::fabs(k) > kLargestSquaringExponent) return std::pow(a, b);
    auto m = static_cast<unsigned>(std::fabs(k));
    Complex r = 1;
    for (Complex z = a; m != 0; m >>= 1, z = mul(z, z))
        if (m & 1) r = mul(r, z);
    return k < 0 ? quot(1.0, r) : r;
}
inline Complex power(double a, Complex b) { return power(Complex(a, 0), b); }
inline Complex power(Complex a, double b) { return power(a, Complex(b, 0)); }

// Element functions.
constexpr auto kAdd = [](auto a, auto b) { return a + b; };
constexpr auto kSubtract = [](auto a, auto b) { return a - b; };
constexpr auto kMultiply = [](auto a, auto b) { return mul(a, b); };
constexpr auto kDivide = [](auto a, auto b) { return quot(a, b); };
constexpr auto kPower = [](auto a, auto b) { return power(a, b); };
constexpr auto kEqual = [](auto a, auto b) { return re(a) == re(b) && im(a) == im(b) ? 1.0 : 0.0; };
constexpr auto kNotEqual = [](auto a, auto b) { return re(a) == re(b) && im(a) == im(b) ? 0.0 : 1.0; };
constexpr auto kPair = [](auto a, auto b) { return Complex(re(a) - im(b), im(a) + re(b)); };
constexpr auto kModulus = [](double a, double b) { return std::fmod(std::floor(std::fabs(a)), std::floor(std::fabs(b))); };
constexpr auto kGreater = [](double a, double b) { return a > b ? 1.0 : 0.0; };
constexpr auto kLess = [](double a, double b) { return a < b ? 1.0 : 0.0; };
constexpr auto kGreaterEqual = [](double a, double b) { return a >= b ? 1.0 : 0.0; };
constexpr auto kLessEqual = [](double a, double b) { return a <= b ? 1.0 : 0.0; };
constexpr auto kAnd = [](double a, double b) { return a == 0 ? 0.0 : b != 0 ? 1.0 : 0.0; };
constexpr auto kOr = [](double a, double b) { return a != 0 ? 1.0 : b != 0 ? 1.0 : 0.0; };
constexpr auto kMax = [](double a, double b) { return a > b ? a : b; };
constexpr auto kMin = [](double a, double b) { return a > b ? b : a; };
constexpr auto kAtan2 = [](double a, double b) { return std::atan2(a, b); };
constexpr auto kAtan2Deg = [](double a, double b) { return std::atan2(a, b) * 180 / 3.141592653589793; };  // ·180, then /π

// Element checks: the status of one element as an int, 0 when it is in the domain.
constexpr auto kZeroDivisor = [](auto, auto b) { return isZero(b) ? int(Status::DivideByZero) : 0; };
constexpr auto kRealPowerDomain = [](double a, double b) {
    bool bad = (a == 0 && !(b >= 0)) || (a < 0 && std::floor(b) != std::ceil(b));
    return bad ? int(Status::OutOfRange) : 0;
};
constexpr auto kComplexPowerDomain = [](auto a, auto b) {
    return isZero(a) && !(re(b) > 0) ? int(Status::OutOfRange) : 0;
};
constexpr auto kModulusDomain = [](double a, double b) {
    constexpr double kLimit = 2147483647;
    if (std::floor(std::fabs(b)) == 0) return int(Status::DivideByZero);
    return std::fabs(a) >= kLimit || std::fabs(b) >= kLimit ? int(Status::TooLarge) : 0;
};

// ---- The table of operations -----------------------------------------------------------------
//
// Operands: a the left, b the right. Two vectors of equal length pair element by element; a
// one-element operand against a longer one is repeated; any other pair of lengths gives an empty
// result without a message. Real operands give a real result (the comma a complex one); a complex
// operand makes the result complex, except for == and != whose result is always real; operations
// without complex kernels refuse complex operands: "The operator '%s' requires real arguments".
// One string and one number (possible for the comparisons only) give an empty result.
//   + - * / ^: complex arithmetic; a/b with b = 0 (both parts) fails with "Divide by zero";
//   a^b is out of range for a = 0 with b not >= 0 (complex: Re b not > 0), and for real a < 0
//   with a fractional or NaN b. a % b is floor|a| mod floor|b| (never negative); floor|b| = 0 is
//   a division by zero, |a| or |b| >= 2147483647 out of range. Out of range gives
//   "Arguments out of range for '%s' operator" with the display name (- shows as "=", <= as
//   ">=", names kept as scripts have always seen them). NaN and infinities otherwise flow through
//   as IEEE arithmetic has them.
//   == != < <= > >=: 1 or 0; complex values are equal when both parts are; NaN equals nothing.
//   && ||: only an exact 0 is false (NaN is true). (a, b): the complex number a + i·b.
//   max, min: the larger, smaller (max(NaN, b) is b, min(NaN, b) is NaN). atan2(a, b): the angle
//   of the point (x = b, y = a), in radians; atan2_deg in degrees.
// Units: add for + - max min and the comma; mult for *; div for /; unknown for ^ and %; a plain
// number for the comparisons, && || and atan2. The result lies over the reference of a when a
// has a real one, else over b's (max and min have none).

enum class Op {
    Plus, Minus, Times, Divide, Power, Eq, Comma, Mod, Gt, Lt,
    Ge, Le, Ne, And, Or, Max, Min, Atan2, Atan2Deg,
    Count
};

struct Operation {
    Op op;
    const char* name;              // for messages
    Kernels<double> real = {};     // real result
    Kernels<Complex> complex = {}; // complex result
    units::Rule2 unit;             // no default: a row without one draws a warning
    bool copiesRef = true;
};

constexpr Operation kOperations[] = {
    {.op = Op::Plus, .name = "+", .real = kRealPair<kAdd>, .complex = kComplexPairs<Complex, kAdd>,
     .unit = units::add},
    {.op = Op::Minus, .name = "=", .real = kRealPair<kSubtract>, .complex = kComplexPairs<Complex, kSubtract>,
     .unit = units::add},
    {.op = Op::Times, .name = "*", .real = kRealPair<kMultiply>, .complex = kComplexPairs<Complex, kMultiply>,
     .unit = units::mult},
    {.op = Op::Divide, .name = "/", .real = kRealPair<kDivide, kZeroDivisor>,
     .complex = kComplexPairs<Complex, kDivide, kZeroDivisor>, .unit = units::div},
    {.op = Op::Power, .name = "^", .real = kRealPair<kPower, kRealPowerDomain>,
     .complex = kComplexPairs<Complex, kPower, kComplexPowerDomain>, .unit = units::unknown2},
    {.op = Op::Eq, .name = "==", .real = kAllPairs<double, kEqual>, .unit = units::none2},
    {.op = Op::Comma, .name = ",", .complex = kAllPairs<Complex, kPair>, .unit = units::add},
    {.op = Op::Mod, .name = "%", .real = kRealPair<kModulus, kModulusDomain>, .unit = units::unknown2},
    {.op = Op::Gt, .name = ">", .real = kRealPair<kGreater>, .unit = units::none2},
    {.op = Op::Lt, .name = "<", .real = kRealPair<kLess>, .unit = units::none2},
    {.op = Op::Ge, .name = ">=", .real = kRealPair<kGreaterEqual>, .unit = units::none2},
    {.op = Op::Le, .name = ">=", .real = kRealPair<kLessEqual>, .unit = units::none2},
    {.op = Op::Ne, .name = "!=", .real = kAllPairs<double, kNotEqual>, .unit = units::none2},
    {.op = Op::And, .name = "&&", .real = kRealPair<kAnd>, .unit = units::none2},
    {.op = Op::Or, .name = "||", .real = kRealPair<kOr>, .unit = units::none2},
    {.op = Op::Max, .name = "max", .real = kRealPair<kMax>, .unit = units::add, .copiesRef = false},
    {.op = Op::Min, .name = "min", .real = kRealPair<kMin>, .unit = units::add, .copiesRef = false},
    {.op = Op::Atan2, .name = "atan2", .real = kRealPair<kAtan2>, .unit = units::none2},
    {.op = Op::Atan2Deg, .name = "atan2_deg", .real = kRealPair<kAtan2Deg>, .unit = units::none2},
};

// Each row has a name, a kernel for two reals, and one result kind per pair of operand kinds.
constexpr bool kernelsComplete(const Operation& o) {
    if (!o.name || (!o.real.has(0) && !o.complex.has(0))) return false;
    for (int pair = 0; pair < 4; ++pair)
        if (o.real.has(pair) && o.complex.has(pair)) return false;
    return true;
}
static_assert(rowsInOrder(kOperations, &Operation::op, kernelsComplete), "row i holds operation i, complete");

// Runs the kernel of `pair`.
template <class Out>
Status run(const Kernels<Out>& k, int pair, Out* out, const FuncArgs& args, int64_t n, Shape shape) {
    switch (pair) {
        case 0: return k.rr(out, args.data(0), args.data(1), n, shape);
        case 1: return k.rc(out, args.data(0), args.complexData(1), n, shape);
        case 2: return k.cr(out, args.complexData(0), args.data(1), n, shape);
        default: return k.cc(out, args.complexData(0), args.complexData(1), n, shape);
    }
}

// The worker of the family.
FUNC_ERROR dispatch(const FuncArgs& args, FuncResult* result, Op op, MessageHandler& messages) {
    const Operation& o = kOperations[static_cast<size_t>(op)];
    result->setPhysType(o.unit(args.physType(0), args.physType(1)), units::NoRef);

    VDType ta = args.type(0), tb = args.type(1);
    if (ta == VD_STRING || tb == VD_STRING) return FUNC_OK;
    int pair = (ta == VD_COMPLEX ? 2 : 0) + (tb == VD_COMPLEX ? 1 : 0);
    bool complexResult = o.complex.has(pair);
    if (!complexResult && !o.real.has(pair)) {
        messages.error("The operator '%s' requires real arguments", o.name);
        return FUNC_FAILED;
    }

    int64_t na = args.length(0), nb = args.length(1), n = na;
    Shape shape = Shape::Pairs;
    if (na != nb) {
        if (na >= 2 && nb == 1) {
            shape = Shape::RightRepeated;
        } else if (nb >= 2 && na == 1) {
            shape = Shape::LeftRepeated;
            n = nb;
        } else {
            return FUNC_OK;  // lengths that do not line up: an empty result
        }
    }

    int64_t total = args.totalLength(0);
    Status status;
    if (complexResult) {
        result->setType(VD_COMPLEX, args.refType(0));
        if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = run(o.complex, pair, result->complexData(), args, n, shape);
    } else {
        result->setType(VD_REAL, VD_REAL);
        if (!result->allocate(n, RESULT_LIKE_ARGS, total)) return FUNC_FAILED;
        status = run(o.real, pair, result->data(), args, n, shape);
    }
    if (o.copiesRef) result->copyRefFromArgs(args, RESULT_LIKE_ARGS, total, args.refData(0) ? 0 : 1);

    switch (status) {
        case Status::Ok: return FUNC_OK;
        case Status::DivideByZero:
            messages.error("Divide by zero");
            result->emptyVectors();
            break;
        case Status::OutOfRange:
        case Status::TooLarge: messages.error("Arguments out of range for '%s' operator", o.name); break;
    }
    return FUNC_FAILED;
}

template <Op op>
FUNC_ERROR binary(WAVEX_HANDLER_PARAMS) {
    return dispatch(args, result, op, *messages);
}

// Two strings are compared as strings; anything else goes to the numeric comparison.
template <Op op, StringComparison strings>
FUNC_ERROR comparison(WAVEX_HANDLER_PARAMS) {
    if (args.type(0) == VD_STRING && args.type(1) == VD_STRING) return compareStrings(args, result, strings, *messages);
    return dispatch(args, result, op, *messages);
}

// ---- Registration ----------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"_Plus", {arg::Numeric, arg::Numeric}, 2, binary<Op::Plus>,
     {.signature = "a + b (_Plus)",
      .summary = "The element-wise sum.",
      .returns = "real, or complex when either operand is; over a's x-values (else b's); the "
                 "operands' common unit",
      .notes = "Equal lengths pair element by element and a single value is repeated against a "
               "vector; any other pair of lengths gives an empty result without a message. The same "
               "holds for every binary operator.",
      .example = "XY([1, 2], [0, 1]) + 10; [1, 2] + [10, 20]"}},
    {"_Minus", {arg::Numeric, arg::Numeric}, 2, binary<Op::Minus>,
     {.signature = "a - b (_Minus)",
      .summary = "The element-wise difference.",
      .returns = "real, or complex when either operand is; over a's x-values (else b's); the "
                 "operands' common unit",
      .notes = "Lengths pair as for +.",
      .example = "[5, 3] - [1, 1]; 1 - (0, 1)"}},
    {"_Times", {arg::Numeric, arg::Numeric}, 2, binary<Op::Times>,
     {.signature = "a * b (_Times)",
      .summary = "The element-wise product.",
      .returns = "real, or complex when either operand is; over a's x-values (else b's); the "
                 "product of the units (V·A is W)",
      .notes = "Lengths pair as for +.",
      .example = "[1, 2, 3] * 2; (1, 2) * (3, -1)"}},
    {"_Divide", {arg::Numeric, arg::Numeric}, 2, binary<Op::Divide>,
     {.signature = "a / b (_Divide)",
      .summary = "The element-wise quotient.",
      .returns = "real, or complex when either operand is; over a's x-values (else b's); the "
                 "quotient of the units",
      .notes = "A divisor of exactly 0 fails the call with \"Divide by zero\" (no inf). Complex "
               "division is scaled so that it does not overflow or underflow needlessly.",
      .example = "[1, 2, 3] / 2; (1, 1) / (0, 2)"}},
    {"_Power", {arg::Numeric, arg::Numeric}, 2, binary<Op::Power>,
     {.signature = "a ^ b (_Power)",
      .summary = "a raised to the power b, element by element.",
      .returns = "real, or complex when either operand is; over a's x-values (else b's); unit "
                 "unknown",
      .notes = "Fails with \"Arguments out of range for '^' operator\" for a real a < 0 with a "
               "fractional b (use a complex a for the complex root) and for 0 to a negative power. "
               "Whole complex powers up to ±1024 are exact.",
      .example = "2 ^ [0.5, 10]; (0, 1) ^ 2"}},
    {"_Eq", {arg::Any, arg::Any}, 2, comparison<Op::Eq, StringComparison::Equal>,
     {.signature = "a == b (_Eq)",
      .summary = "1 where the elements are equal, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "Complex values are equal when both parts are; NaN equals nothing. Two strings "
               "compare ignoring ASCII letter case, element by element, and must be of equal length "
               "(\"Arguments for string comparison must be the same length\"); a string against a "
               "number gives an empty result.",
      .example = "[1, 2, 3] == [1, 5, 3]; \"abc\" == \"ABC\""}},
    {"_Comma", {arg::Numeric, arg::Numeric}, 2, binary<Op::Comma>,
     {.signature = "(re, im) (_Comma)",
      .summary = "The complex number re + i·im, element by element.",
      .returns = "complex, over re's x-values (else im's); the operands' common unit",
      .notes = "How complex constants are written: (0, 1) is i. Either part may be a vector.",
      .example = "(1, -2); (2, [0, 1])"}},
    {"_Mod", {arg::Numeric, arg::Numeric}, 2, binary<Op::Mod>,
     {.signature = "a % b (_Mod)",
      .summary = "The remainder of the whole parts of the magnitudes of a and b.",
      .returns = "real, never negative, over a's x-values (else b's); unit unknown",
      .notes = "floor|a| mod floor|b|: both operands lose their sign and fraction first, so -10 % 3 "
               "is 1 and 10.9 % 4.5 is 2. floor|b| = 0 fails with \"Divide by zero\"; |a| or |b| "
               "of 2147483647 or more is out of range. Real operands only.",
      .example = "[10, -10, 10.9] % [3, 3, 4.5]"}},
    {"_Gt", {arg::Any, arg::Any}, 2, comparison<Op::Gt, StringComparison::Greater>,
     {.signature = "a > b (_Gt)",
      .summary = "1 where a is greater than b, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "Real operands (complex are refused); NaN compares false. Two strings compare as "
               "text ignoring ASCII letter case, as for ==.",
      .example = "[1, 2, 3] > 2; \"b\" > \"A\""}},
    {"_Lt", {arg::Any, arg::Any}, 2, comparison<Op::Lt, StringComparison::Less>,
     {.signature = "a < b (_Lt)",
      .summary = "1 where a is less than b, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "As for >: real operands, NaN false, strings ignoring letter case.",
      .example = "[1, 2, 3] < 2; \"apple\" < \"Banana\""}},
    {"_Ge", {arg::Any, arg::Any}, 2, comparison<Op::Ge, StringComparison::GreaterEqual>,
     {.signature = "a >= b (_Ge)",
      .summary = "1 where a is greater than or equal to b, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "As for >: real operands, NaN false, strings ignoring letter case.",
      .example = "[1, 2, 3] >= 2"}},
    {"_Le", {arg::Any, arg::Any}, 2, comparison<Op::Le, StringComparison::LessEqual>,
     {.signature = "a <= b (_Le)",
      .summary = "1 where a is less than or equal to b, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "As for >: real operands, NaN false, strings ignoring letter case.",
      .example = "[1, 2, 3] <= 2"}},
    {"_Ne", {arg::Any, arg::Any}, 2, comparison<Op::Ne, StringComparison::NotEqual>,
     {.signature = "a != b (_Ne)",
      .summary = "1 where the elements differ, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers, over a's x-values (else b's)",
      .notes = "The negation of ==: complex values compare both parts, NaN differs from "
               "everything, strings compare ignoring letter case.",
      .example = "[1, 2, 3] != 2; \"x\" != \"X\""}},
    {"_And", {arg::Numeric, arg::Numeric}, 2, binary<Op::And>,
     {.signature = "a && b (_And)",
      .summary = "Logical and, element by element: 1 where both are true, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers",
      .notes = "Only an exact 0 is false; NaN is true. Real operands only.",
      .example = "[0, 1, NaN] && 1"}},
    {"_Or", {arg::Numeric, arg::Numeric}, 2, binary<Op::Or>,
     {.signature = "a || b (_Or)",
      .summary = "Logical or, element by element: 1 where either is true, else 0.",
      .returns = "a real vector of 1 and 0, plain numbers",
      .notes = "Only an exact 0 is false; NaN is true. Real operands only.",
      .example = "[0, 0, 2] || [0, 3, 0]"}},
    {"max", {arg::Numeric, arg::Numeric}, 2, binary<Op::Max>,
     {.signature = "max(a, b)",
      .summary = "The larger of a and b, element by element.",
      .returns = "real, without x-values; the operands' common unit",
      .notes = "Two arguments only (MaxN takes up to 32). Real operands only. A single value is "
               "repeated against a vector. max(NaN, b) is b.",
      .example = "max([1, 5, NaN], [3, 2, 4]); max([1, 5], 3)"}},
    {"min", {arg::Numeric, arg::Numeric}, 2, binary<Op::Min>,
     {.signature = "min(a, b)",
      .summary = "The smaller of a and b, element by element.",
      .returns = "real, without x-values; the operands' common unit",
      .notes = "Two arguments only (MinN takes up to 32). Real operands only. A single value is "
               "repeated against a vector. Unlike max, min(NaN, b) is NaN.",
      .example = "min([1, 5], 3)"}},
    {"atan2", {arg::Real.each(), arg::Real.each()}, 2, binary<Op::Atan2>, kPointwise,
     {.signature = "atan2(y, x)",
      .summary = "The angle of the point (x, y) in radians, over the full circle.",
      .returns = "a real curve per run, in (-π, π], plain numbers, over y's x-values (else x's)",
      .notes = "Note the order: y first. Real arguments only.",
      .example = "atan2([1, 0, -1], [0, -1, 0])"}},
    {"atan2_deg", {arg::Real.each(), arg::Real.each()}, 2, binary<Op::Atan2Deg>, kPointwise,
     {.signature = "atan2_deg(y, x)",
      .summary = "The angle of the point (x, y) in degrees, over the full circle.",
      .returns = "a real curve per run, in (-180, 180], plain numbers, over y's x-values (else x's)",
      .notes = "Note the order: y first. Real arguments only.",
      .example = "atan2_deg([1, 1, -1], [1, -1, 0])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

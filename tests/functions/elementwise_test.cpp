// The element-wise family: values (through the scalar and the wide paths), units, references,
// divisions, messages and registrations.
#include "support/random.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <optional>

namespace wavex {
namespace {

using test::complexes;
using test::reals;
using test::xs;

constexpr double kNaN = NAN;
constexpr double kInf = INFINITY;
constexpr double kPi = 3.141592653589793;

// Equal, both NaN, or within 4 units in the last place (of the larger part, for complex values).
bool close(double a, double b, double scale = 0) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return a == b || std::fabs(a - b) <= 4 * DBL_EPSILON * std::max({std::fabs(a), std::fabs(b), scale});
}
bool close(Complex a, Complex b) {
    double scale = std::max(std::abs(a), std::abs(b));
    return close(a.real(), b.real(), scale) && close(a.imag(), b.imag(), scale);
}
template <class T>
::testing::AssertionResult allClose(const std::vector<T>& got, const std::vector<T>& want) {
    bool ok = got.size() == want.size();
    for (size_t i = 0; ok && i < got.size(); ++i) ok = close(got[i], want[i]);
    if (ok) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << ::testing::PrintToString(got);
}

VectorPtr withRef(VectorPtr y, Array<double> x, PhysType xPhys = units::Frequency) {
    auto v = std::make_shared<Vector>(*y);
    v->ref = Reference::fromReal(std::move(x), xPhys, "x");
    return v;
}

class Elementwise : public ::testing::Test {
protected:
    Elementwise() {
        s.set("v", makeCurve({1, 2, 3}, {1, 4, 9}, units::Voltage, units::Time));
        s.set("p", makeRealVector({4, 9}, *units::fromSymbol("V^2")));
        s.set("zc", makeComplexVector({{1, 1}}, units::Current));
        s.set("zero", makeComplexVector({0}));
        s.set("one", makeComplexVector({1}));
        s.set("i", makeComplexVector({{0, 1}}));
        s.set("big", makeComplexVector({0, 709.1}));
        s.set("steep", makeComplexVector({{0, 709.016}}));
        s.set("deep", makeComplexVector({{0, -746}}));
        s.set("two", makeComplexVector({1, {0, 1}}));
        s.set("flat", withRef(makeComplexVector({1, {0, 1}}), {5, 5}));
        s.set("kink", withRef(makeComplexVector({1, {0, 1}, -1, {0, -1}}), {1, 2, 1, 3}));
        s.set("t", makeStringVector({"a", std::nullopt}));
        auto d = std::make_shared<Vector>(*makeCurve({0, 1, 0, 1, 2, 0}, {1, 2, 3, 4, 5, -6}, units::Voltage));
        d->setDivisionLengths({2, 3, 1});
        d->labels = {"a", std::nullopt, "c"};
        s.set("d", d);
    }
    test::Session s;
};

// ---- Values ----------------------------------------------------------------------------------

const std::pair<const char*, std::vector<double>> kRealCases[] = {
    {"abs([-2.5, 0, -1e300])", {2.5, 0, 1e300}},
    {"real(-7)", {-7}},
    {"imag(5)", {0}},
    {"phase(-1)", {0}},
    {"arg([-1, 2])", {0, 0}},
    {"sign([-3, 0, 2.5, NaN])", {0, 0, 1, 0}},  // negative numbers give 0
    {"db([0, -10, 1000, 3, NaN])", {-6160, 20, 60, 9.542425094393248, kNaN}},
    {"log([1000, 100])", {3, 2}},
    {"ln(2)", {0.6931471805599453}},
    {"exp([0, 709])", {1, 8.218407461554972e307}},
    {"sqrt([16, 0])", {4, 0}},
    {"tan(0)", {0}},
    {"atan(1)", {kPi / 4}},
    {"norm([1, -4, 2])", {0.25, -1, 0.5}},
    {"norm([Inf, 1])", {kNaN, 0}},
    {"!([0, 2, NaN])", {1, 0, 0}},
    {"mean([])", {kNaN}},
    {"sum([])", {0}},
    {"maxidx([1, 3, 3])", {1}},
    {"maxidx([-Inf, -Inf])", {0}},  // nothing beats the start value
    {"minidx([2, 1, 1])", {1}},
    {"minidx([NaN, 5])", {1}},
    {"sin_deg(30)", {0.49999999999999994}},
    {"cos_deg(60)", {0.5000000000000001}},
    {"tan_deg(45)", {0.9999999999999999}},
    {"atan_deg(1)", {45}},
    {"floorv([-2.5, 2.5])", {-3, 2}},
    {"sinh([1, -800])", {1.1752011936438014, -kInf}},  // large negative x is not tested
    {"cosh(-800)", {kInf}},
    {"asin(1)", {kPi / 2}},
    {"acos(-1)", {kPi}},
    {"acosh([1, 0.5])", {0, kNaN}},  // below 1 but not negative: NaN without a message
};

TEST_F(Elementwise, RealArguments) {
    for (const auto& [expression, want] : kRealCases) {
        VectorPtr r = s(expression);
        ASSERT_TRUE(r) << expression << ": " << s.messages();
        EXPECT_EQ(r->type, VD_REAL) << expression;
        EXPECT_TRUE(allClose(reals(r), want)) << expression;
        EXPECT_EQ(s.messages(), "") << expression;
    }
    VectorPtr r = s("_UMinus([0, 1.5])");
    EXPECT_TRUE(std::signbit(r->real[0]));
    EXPECT_EQ(r->real[1], -1.5);
}

struct ComplexCase {
    const char* function;
    Complex in;
    std::optional<double> real;   // the real result, or
    std::optional<Complex> cplx;  // the complex result
};

const ComplexCase kComplexCases[] = {
    {"abs", {3, 4}, 5, {}},
    {"imag", {3, 4}, 4, {}},
    {"phase", {-1, 0}, 180, {}},
    {"arg_rad", {0, 1}, kPi / 2, {}},
    {"phase_rad", {0, -1}, -kPi / 2, {}},
    {"db", {3, 4}, 13.979400086720377, {}},
    {"db", {0, 0}, -6160, {}},
    {"db", {1e-200, 0}, -4000, {}},  // |z|² underflows
    {"db", {1e300, 0}, 6000, {}},    // |z|² overflows
    {"log", {0, 10}, {}, Complex(1, 0.6821881769209206)},
    {"ln", {-1, 0}, {}, Complex(0, kPi)},
    {"exp", {0, kPi}, {}, Complex(-1, 1.2246467991473532e-16)},
    {"sin", {0, 1}, {}, Complex(0, 1.1752011936438014)},
    {"cos", {0, 1}, {}, Complex(1.5430806348152437, 0)},
    {"sin_deg", {90, 0}, {}, Complex(1, 0)},
    {"tan_deg", {45, 0}, {}, Complex(0.9999999999999999, 0)},
    {"atan", {2, 0}, {}, Complex(1.1071487177940904, 0)},
    {"atan_deg", {2, 0}, {}, Complex(63.43494882292201, 0)},
    {"sqrt", {-4, 0}, {}, Complex(0, 2)},
    {"sinh", {0, 1}, {}, Complex(0, 0.8414709848078965)},
    {"cosh", {1, 0}, {}, Complex(1.5430806348152437, 0)},
    {"tanh", {0, 0.5}, {}, Complex(0, 0.5463024898437905)},
    {"asin", {2, 0}, {}, Complex(kPi / 2, 1.3169578969248166)},
    {"acos", {1, 0}, {}, Complex(0, 0)},
    {"asinh", {2, 0}, {}, Complex(1.4436354751788103, 0)},
    {"acosh", {2, 0}, {}, Complex(1.3169578969248166, 0)},
    {"atanh", {0.5, 0}, {}, Complex(0.5493061443340548, 0)},
    {"_UMinus", {0, -2}, {}, Complex(-0.0, 2)},
};

TEST_F(Elementwise, ComplexArguments) {
    for (const ComplexCase& c : kComplexCases) {
        s.set("z", makeComplexVector({c.in}));
        std::string expression = std::string(c.function) + "(z)";
        VectorPtr r = s(expression);
        ASSERT_TRUE(r) << expression << " of " << c.in << ": " << s.messages();
        EXPECT_EQ(r->type, c.real ? VD_REAL : VD_COMPLEX) << expression;
        if (c.real) EXPECT_TRUE(allClose(reals(r), {*c.real})) << expression << " of " << c.in;
        else EXPECT_TRUE(allClose(complexes(r), {*c.cplx})) << expression << " of " << c.in;
    }
    s.set("z", makeComplexVector({{3, 4}, -6, {0, 1}, 1}));
    EXPECT_EQ(reals(s("maxidx(z)")), std::vector<double>{1});  // by magnitude
    EXPECT_EQ(reals(s("minidx(z)")), std::vector<double>{2});  // |i| = |1|: the first wins
    EXPECT_EQ(complexes(s("sum(z)")), std::vector<Complex>{Complex(-2, 5)});
    EXPECT_EQ(complexes(s("mean(z)")), std::vector<Complex>{Complex(-0.5, 1.25)});
    EXPECT_TRUE(allClose(complexes(s("norm(z)")), {{0.5, 2.0 / 3}, -1, {0, 1.0 / 6}, 1.0 / 6}));
}

// Long enough for whole lanes of the vectorised kernels and a tail; special values inside lanes.
TEST_F(Elementwise, LongVectorsAgreeWithTheScalarFunctions) {
    std::vector<double> x, sine, dbx, phase;
    std::vector<Complex> z;
    for (int k = 0; k < 37; ++k) {
        x.push_back(std::ldexp(k % 2 ? -1.37 : 1.21, k % 9 - 4) * (k + 1));
        z.push_back(std::polar(std::ldexp(1.0, k - 18), 0.5 * k));  // turns more than once
        phase.push_back(0.5 * k);
    }
    x[3] = 0, x[4] = -0.0, x[5] = kInf, x[6] = kNaN, x[9] = 1e300;
    z[2] = 0, z[3] = {1e-200, -1e-200}, z[4] = {1e200, 1e200}, z[5] = {kNaN, 1};
    phase[2] = 0, phase[3] = -kPi / 4, phase[4] = kPi / 4, phase[5] = kNaN;  // no turn across NaN
    for (double v : x) {
        sine.push_back(std::sin(v));
        dbx.push_back(v == 0 ? -6160 : 20 * std::log10(std::fabs(v)));
    }
    s.set("x", makeRealVector(x));
    s.set("z", makeComplexVector(z));
    EXPECT_TRUE(allClose(reals(s("sin(x)")), sine));
    EXPECT_TRUE(allClose(reals(s("db(x)")), dbx));
    std::vector<double> db = reals(s("db(z)")), arg = reals(s("arg(z)")), unwrapped = reals(s("phase_rad(z)"));
    ASSERT_EQ(db.size(), z.size());
    for (size_t k = 0; k < z.size(); ++k) {
        EXPECT_TRUE(close(arg[k], std::arg(z[k]) * 57.29577951308232)) << k;
        if (k == 5) continue;
        // Through |z|², db differs from 20·log10(hypot) by a few 1e-16 near 0 dB.
        double m = std::abs(z[k]), want = m == 0 ? -6160 : 20 * std::log10(m);
        EXPECT_NEAR(db[k], want, 4e-15 * std::max(1.0, std::fabs(want))) << k;
        EXPECT_NEAR(unwrapped[k], phase[k], 1e-13) << k;
    }
    EXPECT_TRUE(std::isnan(db[5]) && std::isnan(unwrapped[5]));
}

TEST_F(Elementwise, UnwrappedPhaseCorrectsOneTurnPerStep) {
    // 0, 170, -170 (a step of -340 degrees: one turn up), -10 (a step of +160: none).
    s.set("z", makeComplexVector({1, std::polar(1.0, 170 * kPi / 180), std::polar(1.0, -170 * kPi / 180),
                                std::polar(1.0, -10 * kPi / 180)}));
    EXPECT_TRUE(allClose(reals(s("phase(z)")), {0, 170, 190, 350}));
    EXPECT_TRUE(allClose(reals(s("arg(z)")), {0, 170, -170, -10}));
}

TEST_F(Elementwise, RndDrawsFromTheLibrarySeed) {
    uint64_t seed = 0;
    EXPECT_EQ(sp_Random(seed), 1896895516);  // the top 31 bits of splitmix64's first value
    EXPECT_EQ(seed, 0x9E3779B97F4A7C15ULL);

    sp_SetRandomSeed(42);
    std::vector<double> first = reals(s("rnd([10, 10, 10, 0, -1])"));
    sp_SetRandomSeed(42);
    EXPECT_EQ(reals(s("rnd([10, 10, 10, 0, -1])")), first);
    EXPECT_NE(reals(s("rnd([10, 10, 10, 0, -1])")), first);  // the seed moved on
    ASSERT_EQ(first.size(), 5u);
    for (int k = 0; k < 3; ++k) EXPECT_TRUE(first[k] >= 0 && first[k] <= 10) << first[k];
    EXPECT_NE(first[0], first[1]);
    EXPECT_EQ(first[3], 0);
    EXPECT_LE(first[4], 0);
}

// ---- Units, references, divisions, indexing --------------------------------------------------

TEST_F(Elementwise, EachOperationAppliesItsUnitRule) {
    const std::pair<const char*, PhysType> cases[] = {
        {"abs(v)", units::Voltage},  {"real(zc)", units::Current}, {"imag(zc)", units::Current},
        {"-v", units::Voltage},      {"floorv(v)", units::Voltage}, {"rnd(v)", units::Voltage},
        {"mean(v)", units::Voltage}, {"sum(zc)", units::Current},  {"sqrt(p)", units::Voltage},
        {"phase(zc)", units::Number}, {"arg(zc)", units::Number},  {"sign(v)", units::Number},
        {"norm(v)", units::Number},  {"!v", units::Number},        {"maxidx(v)", units::Number},
        {"db(v)", units::Number},    {"sin(v)", units::Number},    {"atanh(zc)", units::Number},
        {"length(v)", units::Number}, {"v[0]", units::Voltage},
    };
    for (const auto& [expression, unit] : cases) {
        VectorPtr r = s(expression);
        ASSERT_TRUE(r) << expression << ": " << s.messages();
        EXPECT_EQ(r->phys, unit) << expression;
    }
}

TEST_F(Elementwise, ElementwiseResultsShareTheArgumentsXValues) {
    VectorPtr v = s("v");
    for (const char* expression : {"sqrt(v)", "-v", "norm(v)", "phase(v)"}) {
        VectorPtr r = s(expression);
        EXPECT_EQ(r->ref.realValues, v->ref.realValues) << expression;
        EXPECT_EQ(r->ref.phys, units::Time) << expression;
    }
    for (const char* expression : {"mean(v)", "maxidx(v)", "v[1]", "length(v)"})
        EXPECT_FALSE(s(expression)->ref.present()) << expression;
    auto h = std::make_shared<Vector>(*makeComplexVector({{1, 1}, 2}));
    h->ref = Reference::fromComplex(Array<Complex>{1, 2}, units::Frequency, "f");
    s.set("h", h);
    EXPECT_EQ(s("sqrt(h)")->ref.type, VD_COMPLEX);
    EXPECT_EQ(s("db(h)")->ref.complexValues, h->ref.complexValues);
}

TEST_F(Elementwise, ResultsKeepTheArgumentsDivisions) {
    const DivisionLabelArray labels = {"a", std::nullopt, "c"};
    for (const char* expression : {"abs(d)", "-d", "!d"}) {  // per division, and whole (-, !)
        VectorPtr r = s(expression);
        EXPECT_EQ(r->divisionStarts, (std::vector<size_t>{0, 2, 5})) << expression;
        EXPECT_EQ(r->labels, labels) << expression;
        EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 0, 1, 2, 0})) << expression;
    }
    VectorPtr m = s("mean(d)");
    EXPECT_EQ(reals(m), (std::vector<double>{1.5, 4, -6}));
    EXPECT_EQ(m->divisionStarts, (std::vector<size_t>{0, 1, 2}));
    EXPECT_EQ(m->labels, labels);
    const std::pair<const char*, std::vector<double>> cases[] = {
        {"abs(d)", {1, 2, 3, 4, 5, 6}},      {"maxidx(d)", {1, 2, 0}},  // indices within each division
        {"norm(d)", {0.5, 1, 0.6, 0.8, 1, -1}}, {"length(d)", {6}},
        {"NumElems(d)", {6}},                 {"veclength(d)", {3}},
        {"NumDivisions(d)", {3}},             {"veclength([4, 5])", {2}},
        {"NumDivisions([4, 5])", {1}},        {"length(t)", {2}},
        {"veclength([])", {0}},
    };
    for (const auto& [expression, want] : cases) EXPECT_EQ(reals(s(expression)), want) << expression;

    // One division out of the domain fails the whole call.
    EXPECT_FALSE(s("sqrt(d)"));
    EXPECT_EQ(s.messages(), "Argument out of range for function 'sqrt'");
}

TEST_F(Elementwise, IndexSelectsOneElementOfAnyKind) {
    EXPECT_EQ(reals(s("v[2]")), std::vector<double>{9});
    EXPECT_EQ(reals(s("v[-0]")), std::vector<double>{1});
    EXPECT_EQ(s("v[2]")->ref.phys, units::NoRef);
    s.set("z", makeComplexVector({{1, 2}, {3, 4}}, units::Current));
    EXPECT_EQ(complexes(s("z[1]")), std::vector<Complex>{Complex(3, 4)});
    EXPECT_EQ(s("z[1]")->phys, units::Current);
    EXPECT_EQ(test::strings(s("t[0]")), std::vector<std::string>{"a"});
    EXPECT_EQ(test::strings(s("t[1]")), std::vector<std::string>{""});  // a null element reads as ""
}

// ---- Group delay -----------------------------------------------------------------------------

VectorPtr response(Array<double> f, double (*phase)(double)) {
    std::vector<Complex> h;
    for (double x : f) h.push_back(std::polar(2.0, phase(x)));
    return withRef(makeComplexVector(std::move(h), units::Voltage), std::move(f));
}

TEST_F(Elementwise, GroupDelayIsTheSlopeOfTheUnwrappedPhase) {
    // A delay of 1 ms: the phase falls by 2π·f·1ms, wrapping (less than half a turn per step).
    s.set("h", response({0, 300, 700, 1100, 1500}, [](double f) { return -2 * kPi * f * 1e-3; }));
    VectorPtr r = s("GroupDelay(h)");
    ASSERT_TRUE(r) << s.messages();
    for (double t : reals(r)) EXPECT_NEAR(t, 1e-3, 1e-15);
    EXPECT_EQ(r->phys, units::Time);
    EXPECT_EQ(r->ref.phys, units::Frequency);
    EXPECT_EQ(xs(r), (std::vector<double>{0, 300, 700, 1100, 1500}));
    // φ = -f²/100: the inner points take the parabola's exact slope, the ends their segment's.
    s.set("q", response({1, 2, 4, 7}, [](double f) { return -f * f / 100; }));
    EXPECT_TRUE(allClose(reals(s("GroupDelay(q)")),
                         {0.03 / (2 * kPi), 0.04 / (2 * kPi), 0.08 / (2 * kPi), 0.11 / (2 * kPi)}));
    EXPECT_EQ(reals(s("GroupDelay(v)")), (std::vector<double>{0, 0, 0}));  // a real response
}

// ---- Messages --------------------------------------------------------------------------------

const std::pair<const char*, const char*> kMessages[] = {
    {"log(0)", "Argument out of range for function 'log'"},
    {"log10([1, -1])", "Argument out of range for function 'log'"},
    {"ln(zero)", "Argument out of range for function 'ln'"},
    {"sqrt(-1)", "Argument out of range for function 'sqrt'"},
    {"asin(2)", "Argument out of range for function 'asin'"},
    {"acos(-1.5)", "Argument out of range for function 'acos'"},
    {"acosh(-1)", "Argument out of range for function 'acosh'"},
    {"atanh(1)", "Argument out of range for function 'atanh'"},
    {"atanh(-one)", "Argument out of range for function 'atanh'"},
    {"exp(709.1)", "Overflow in function 'exp'"},
    {"exp(big)", "Overflow in function 'exp'"},
    {"sinh(709.016)", "Overflow in function 'sinh'"},
    {"cosh(710)", "Overflow in function 'cosh'"},
    {"sin(steep)", "Overflow in function 'sin'"},
    {"cos(deep)", "Overflow in function 'cos'"},
    {"sinh(steep)", "Overflow in function 'sinh'"},
    {"atan(i)", "Overflow in function 'atan'"},
    {"atan_deg(-i)", "Overflow in function 'atan_deg'"},
    {"floorv(i)", "The function 'floorv' requires a real argument"},
    {"!i", "The function '!' requires a real argument"},
    {"sign(i)", "Argument 1 of function 'sign' must be real, not complex"},
    {"norm([0, 0])", "Cannot normalise zero vector"},
    {"norm([])", "Cannot normalise zero vector"},
    {"norm(zero)", "Cannot normalise zero vector"},
    {"[1, 2][i]", "Complex index"},
    {"[1, 2][[0, 1]]", "Index must be scalar"},
    {"[1, 2][2.5]", "Index must be an integer"},
    {"[1, 2][NaN]", "Index must be an integer"},
    {"[1, 2][-1]", "Index out of range"},
    {"[1, 2][2]", "Index out of range"},
    {"GroupDelay(one)", "Need at least two points to find group delay"},
    {"GroupDelay(two)", "Argument 1 in function 'GroupDelay' has no reference (xvalues)"},
    {"GroupDelay(flat)", "Cannot find group delay. Argument has infinite slope"},
    {"GroupDelay(kink)", "Cannot find group delay. Argument has infinite slope"},
};

TEST_F(Elementwise, EachFailureReportsItsMessage) {
    for (const auto& [expression, message] : kMessages) {
        EXPECT_FALSE(s(expression)) << expression;
        EXPECT_EQ(s.messages(), message) << expression;
    }
}

// The second names call the same operation.
TEST_F(Elementwise, AliasesCallTheSameOperation) {
    s.set("w", makeComplexVector({{3, 4}, {-1, 0}}));
    const std::pair<const char*, const char*> aliases[] = {
        {"abs(w)", "mag(w)"}, {"abs(w)", "magnitude(w)"}, {"phase(w)", "ph(w)"},
        {"real(w)", "re(w)"}, {"imag(w)", "im(w)"},       {"log(w)", "log10(w)"}};
    for (const auto& [a, b] : aliases) EXPECT_EQ(test::show(s(a)), test::show(s(b))) << b;
}

}  // namespace
}  // namespace wavex

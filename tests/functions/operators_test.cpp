// The binary operators and max, min, atan2, atan2_deg: values for every pair of operand kinds,
// the length rules, units, references, divisions and messages.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace wavex {
namespace {

using test::complexes;
using test::reals;
using test::Session;
using test::xs;

constexpr double kNaN = NAN;
constexpr double kInf = INFINITY;
constexpr double kPi = 3.141592653589793;

// Equal (NaN to NaN), or within 4 units in the last place of the larger magnitude.
bool close(Complex a, Complex b) {
    double scale = 4 * DBL_EPSILON * std::max(std::abs(a), std::abs(b));
    auto part = [&](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)) || std::fabs(x - y) <= scale; };
    return part(a.real(), b.real()) && part(a.imag(), b.imag());
}
// The values of a real or complex result, as complex numbers, against those wanted.
::testing::AssertionResult allClose(const VectorPtr& r, const std::vector<Complex>& want) {
    if (!r) return ::testing::AssertionFailure() << "no result";
    std::vector<Complex> got = r->type == VD_COMPLEX ? complexes(r) : std::vector<Complex>(r->real.begin(), r->real.end());
    if (std::equal(got.begin(), got.end(), want.begin(), want.end(), close)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << ::testing::PrintToString(got);
}

// ---- Values ----------------------------------------------------------------------------------

struct Case {
    const char* expression;
    VDType kind;
    std::vector<Complex> want;
};

const Case kCases[] = {
    {"[1, 2, 3] + 10", VD_REAL, {11, 12, 13}},
    {"10 - [1, 2, 3]", VD_REAL, {9, 8, 7}},
    {"[1, 2] * [3, -4]", VD_REAL, {3, -8}},
    {"1 / [-Inf, Inf]", VD_REAL, {-0.0, 0}},
    {"Inf - Inf", VD_REAL, {kNaN}},
    {"2 ^ [0.5, -1, 10]", VD_REAL, {1.4142135623730951, 0.5, 1024}},
    {"(-2) ^ [3, -2, Inf]", VD_REAL, {-8, 0.25, kInf}},
    {"[0, 0, NaN] ^ [0, 2, 0]", VD_REAL, {1, 0, 1}},
    {"[-7, 7, 7.9, -0.5, 2147483646] % [3, -3, 2.5, 7, 1000]", VD_REAL, {1, 1, 1, 0, 646}},
    {"[NaN, 5] % [3, NaN]", VD_REAL, {kNaN, kNaN}},
    {"[1, 2, NaN] == [1, 3, NaN]", VD_REAL, {1, 0, 0}},
    {"[1, 2, NaN] != [1, 3, NaN]", VD_REAL, {0, 1, 1}},
    {"[1, 2, 3, NaN] > 2", VD_REAL, {0, 0, 1, 0}},
    {"[1, 2, 3, NaN] < 2", VD_REAL, {1, 0, 0, 0}},
    {"[1, 2, 3, NaN] >= 2", VD_REAL, {0, 1, 1, 0}},
    {"[1, 2, 3, NaN] <= 2", VD_REAL, {1, 1, 0, 0}},
    {"[0, 0, 2, 2, NaN] && [0, 3, 0, NaN, 0]", VD_REAL, {0, 0, 0, 1, 0}},
    {"[0, 0, 2, NaN] || [0, NaN, 0, 0]", VD_REAL, {0, 1, 1, 1}},
    {"max([1, 5, NaN, 2], [3, 2, 4, NaN])", VD_REAL, {3, 5, 4, kNaN}},
    {"min([1, 5, NaN, 2], [3, 2, 4, NaN])", VD_REAL, {1, 2, kNaN, 2}},
    {"atan2([1, -1, 0], [-1, -1, -1])", VD_REAL, {3 * kPi / 4, -3 * kPi / 4, kPi}},
    {"atan2_deg([1, 1, -1], [0, 1, 0])", VD_REAL, {90, 45, -90}},
    {"(1, 2) == [(1, 2), (1, 3)]", VD_REAL, {1, 0}},
    {"(1, 0) == 1", VD_REAL, {1}},
    {"2 == (2, 1)", VD_REAL, {0}},
    {"[(1, 2), (NaN, 0)] != [(1, 2), (NaN, 0)]", VD_REAL, {0, 1}},
    {"(1, 2)", VD_COMPLEX, {{1, 2}}},
    {"([1, 2], 3)", VD_COMPLEX, {{1, 3}, {2, 3}}},
    {"((1, 1), (2, 3))", VD_COMPLEX, {{-2, 3}}},
    {"(1, (0, 1))", VD_COMPLEX, {{0, 0}}},
    {"(1, 2) + 1", VD_COMPLEX, {{2, 2}}},
    {"1 - (1, 2)", VD_COMPLEX, {{0, -2}}},
    {"(1, 2) * (3, 4)", VD_COMPLEX, {{-5, 10}}},
    {"[1, 2] * (0, 1)", VD_COMPLEX, {{0, 1}, {0, 2}}},
    {"(0, 2) * [1, 2, 3]", VD_COMPLEX, {{0, 2}, {0, 4}, {0, 6}}},
    {"(1, 2) / (3, 4)", VD_COMPLEX, {{0.44, 0.08}}},
    {"(1, 2) / 2", VD_COMPLEX, {{0.5, 1}}},
    {"5 / (0, 1)", VD_COMPLEX, {{0, -5}}},
    {"(1e300, 1e300) / (1e300, 1e300)", VD_COMPLEX, {{1, 0}}},  // |b|² would overflow
    {"1 / (1e-300, 1e-300)", VD_COMPLEX, {{5e299, -5e299}}},   // |b|² would underflow
    {"(-2, 0) ^ [2, 3, -1]", VD_COMPLEX, {{4, 0}, {-8, 0}, {-0.5, 0}}},
    {"(1, 1) ^ (0, 0)", VD_COMPLEX, {{1, 0}}},
    {"(0, 0) ^ (2, 1)", VD_COMPLEX, {{0, 0}}},
    {"(-1, 0) ^ 0.5", VD_COMPLEX, {{6.123233995736766e-17, 1}}},
    {"2 ^ (0, 1)", VD_COMPLEX, {{0.7692389013639721, 0.6389612763136348}}},
};

TEST(OperatorValues, EveryPairOfKinds) {
    Session s;
    for (const Case& c : kCases) {
        VectorPtr r = s(c.expression);
        ASSERT_TRUE(r) << c.expression << ": " << s.messages();
        EXPECT_EQ(r->type, c.kind) << c.expression;
        EXPECT_TRUE(allClose(r, c.want)) << c.expression;
    }
    // Whole powers are taken by squaring: no rounding residue in the imaginary part.
    EXPECT_EQ(complexes(s("(-3, 0) ^ 2")), (std::vector<Complex>{{9, 0}}));
}

// Long operands run the vectorised loops and their tails, and results of 16 MB and more the
// streaming stores: each shape against a plain loop, and a failure found near the end.
TEST(OperatorValues, LongOperandsMatchElementByElement) {
    Session s;
    for (size_t n : {size_t{101}, (size_t{1} << 21) + 3}) {
        std::vector<double> a(n), b(n), pairs(n), left(n), right(n);
        std::vector<Complex> z(n / 2), quotients(n / 2);
        for (size_t i = 0; i < n; ++i) {
            a[i] = 0.5 * static_cast<double>(i % 1000) - 20;
            b[i] = 3.1 - 0.25 * static_cast<double>(i % 1000);  // never zero
            pairs[i] = a[i] / b[i], left[i] = 3 / b[i], right[i] = a[i] / 3;
            if (i < n / 2) z[i] = {a[i], b[i]}, quotients[i] = z[i] / std::conj(z[i]);
        }
        s.set("a", makeRealVector(a));
        s.set("b", makeRealVector(b));
        s.set("z", makeComplexVector(z));
        EXPECT_EQ(reals(s("a / b")), pairs) << n;
        EXPECT_EQ(reals(s("3 / b")), left) << n;
        EXPECT_EQ(reals(s("a / 3")), right) << n;
        EXPECT_TRUE(allClose(s("z / (real(z), -imag(z))"), quotients)) << n;

        b[n - 2] = 0;
        s.set("b", makeRealVector(b));
        EXPECT_FALSE(s("a / b"));
        EXPECT_EQ(s.messages(), "Divide by zero");
    }
}

// ---- Length rules ----------------------------------------------------------------------------

TEST(OperatorLengths, OperandsThatDoNotLineUpGiveAnEmptyResultSilently) {
    Session s;
    for (const char* e : {"[1, 2, 3] + [1, 2]", "[] + 1", "[1, 2] * []", "[(1, 1), (2, 2)] + [1, 2, 3]",
                          "[1, 2] == [(1, 0), (2, 0), (3, 0)]", "\"a\" == 1", "[1, 2] < \"a\"", "[] * []"}) {
        VectorPtr r = s(e);
        ASSERT_TRUE(r) << e << ": " << s.messages();
        EXPECT_EQ(r->size(), 0u) << e;
        EXPECT_EQ(s.messages(), "") << e;
    }
}

// ---- Messages --------------------------------------------------------------------------------

struct Failure {
    const char* expression;
    const char* message;
};

const Failure kFailures[] = {
    {"1 / 0", "Divide by zero"},
    {"(1, 2) / 0", "Divide by zero"},
    {"1 / (0, 0)", "Divide by zero"},
    {"5 % 0", "Divide by zero"},
    {"5 % 0.5", "Divide by zero"},  // the divisor truncates to 0
    {"3e9 % 0", "Divide by zero"},  // a zero divisor before a range
    {"[5, 3e9] % [0, 2]", "Divide by zero"},  // the first failing element decides
    {"[3e9, 5] % [2, 0]", "Arguments out of range for '%' operator"},
    {"3e9 % 2", "Arguments out of range for '%' operator"},
    {"2 % -2147483647", "Arguments out of range for '%' operator"},
    {"Inf % 2", "Arguments out of range for '%' operator"},
    {"(-8) ^ (1/3)", "Arguments out of range for '^' operator"},
    {"0 ^ -1", "Arguments out of range for '^' operator"},
    {"0 ^ NaN", "Arguments out of range for '^' operator"},
    {"(-1) ^ NaN", "Arguments out of range for '^' operator"},
    {"(0, 0) ^ 0", "Arguments out of range for '^' operator"},
    {"0 ^ (-1, 5)", "Arguments out of range for '^' operator"},
    {"(1, 2) > 1", "The operator '>' requires real arguments"},
    {"1 <= (1, 2)", "The operator '>=' requires real arguments"},
    {"(1, 2) % 2", "The operator '%' requires real arguments"},
    {"(1, 2) && 1", "The operator '&&' requires real arguments"},
    {"0 || (1, 2)", "The operator '||' requires real arguments"},
    {"max((1, 2), 1)", "The operator 'max' requires real arguments"},
    {"(1, 2) > [1, 2, 3]", "The operator '>' requires real arguments"},  // kinds before lengths
    {"atan2((1, 2), 1)", "Argument 1 of function 'atan2' must be real, not complex"},
    {"\"a\" + 1", "Argument 1 of function '_Plus' must be a number, not a string"},
    {"max(1)", "Function 'max' takes 2 arguments, not 1"},
};

TEST(OperatorMessages, EachFailureHasItsMessage) {
    Session s;
    for (const Failure& f : kFailures) {
        EXPECT_FALSE(s(f.expression)) << f.expression;
        EXPECT_EQ(s.messages(), f.message) << f.expression;
    }
}

// ---- Units, references, divisions ------------------------------------------------------------

struct UnitCase {
    const char* expression;
    const char* unit;  // its description
};

const UnitCase kUnitCases[] = {
    {"v + v", "voltage"}, {"2 - v", "voltage"}, {"v + i", "unknown"}, {"v * i", "power"},
    {"v / i", "resistance"}, {"v ^ 2", "unknown"}, {"v % 2", "unknown"}, {"(v, v)", "voltage"},
    {"v == v", "number"}, {"v != 1", "number"}, {"v > i", "number"}, {"v <= 1", "number"},
    {"v && i", "number"}, {"v || 0", "number"}, {"max(v, 0)", "voltage"}, {"min(1, v)", "voltage"},
    {"atan2(v, v)", "number"}, {"atan2_deg(i, v)", "number"},
};

struct Operands : ::testing::Test {
    Session s;
    void SetUp() override {
        s.set("v", makeCurve({0, 1, 2}, {1, 2, 3}, units::Voltage, units::Time));
        s.set("i", makeCurve({5, 6, 7}, {4, 5, 6}, units::Current, units::Frequency));
        s.set("bare", makeRealVector({7, 8, 9}));
        auto runs = std::make_shared<Vector>(*makeCurve({0, 1, 2, 0, 1}, {1, 2, 3, 10, 20}, units::Voltage, units::Time));
        runs->setDivisionLengths({3, 2});
        runs->labels = {"R=1k", "R=2k"};
        s.set("runs", runs);
    }
};

TEST_F(Operands, UnitRules) {
    for (const UnitCase& c : kUnitCases) {
        VectorPtr r = s(c.expression);
        ASSERT_TRUE(r) << c.expression << ": " << s.messages();
        EXPECT_EQ(units::description(r->phys), c.unit) << c.expression;
    }
}

TEST_F(Operands, ReferenceOfTheLeftOperandElseOfTheRight) {
    VectorPtr r = s("v * i");
    EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(xs(s("bare + i")), (std::vector<double>{5, 6, 7}));
    EXPECT_EQ(xs(s("1 - i")), (std::vector<double>{5, 6, 7}));
    EXPECT_EQ(xs(s("(i, 1)")), (std::vector<double>{5, 6, 7}));
    EXPECT_EQ(xs(s("v > 2")), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(s("bare * 2")->ref.type, VD_NONE);
    for (const char* e : {"max(v, i)", "min(1, v)"}) {
        VectorPtr m = s(e);
        EXPECT_EQ(m->ref.type, VD_NONE) << e;
        EXPECT_EQ(m->ref.phys, units::NoRef) << e;
    }
}

TEST_F(Operands, DivisionsSurviveAndAtan2RunsPerDivision) {
    VectorPtr r = s("runs * 2");
    EXPECT_EQ(reals(r), (std::vector<double>{2, 4, 6, 20, 40}));
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->label(1), "R=2k");
    VectorPtr flipped = s("1 - runs");
    EXPECT_EQ(xs(flipped), (std::vector<double>{0, 1, 2, 0, 1}));
    EXPECT_EQ(flipped->numDivisions(), 2u);

    // atan2 is called once per division; a one-division argument is repeated for each.
    VectorPtr a = s("atan2_deg(runs, runs)");
    EXPECT_TRUE(allClose(a, {45, 45, 45, 45, 45}));
    EXPECT_EQ(a->numDivisions(), 2u);
    VectorPtr b = s("atan2_deg(runs, 10)");
    EXPECT_TRUE(allClose(b, {5.710593137499642, 11.309932474020213, 16.69924423399362, 45,
                                    63.43494882292201}));
    EXPECT_EQ(xs(b), (std::vector<double>{0, 1, 2, 0, 1}));
}

}  // namespace
}  // namespace wavex

// integ, diff and the vector constructors: values, units, references, divisions and messages.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavex {
namespace {

using test::complexes;
using test::reals;
using test::Session;
using test::xs;

using Values = std::vector<double>;
constexpr double kInf = std::numeric_limits<double>::infinity();

// Two runs of a voltage over time, the second with decreasing time.
VectorPtr twoRuns() {
    auto v = std::make_shared<Vector>();
    v->real = {1, 1, 1, 2, 4, 6, 8};
    v->phys = units::Voltage;
    v->ref = Reference::fromReal({0, 1, 3, 3, 2, 1, 0}, units::Time, "time");
    v->setDivisionLengths({3, 4});
    v->labels = {"fast", "slow"};
    return v;
}

struct Calculus : ::testing::Test {
    Session wx;
    void SetUp() override {
        wx.wx.setVector("runs", twoRuns());
        wx.wx.setVector("v", makeCurve({0, 1, 2}, {0, 1, 4}, units::Voltage, units::Time));
    }
    // The host option is process-wide: leave it as found.
    void TearDown() override { findOption("DerivAcceptFactor")->reset(); }
    Values at(const char* expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        return r ? reals(r) : Values{};
    }
};

TEST_F(Calculus, IntegIsTheCumulativeTrapezoidInInputOrder) {
    VectorPtr r = wx("integ(v)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (Values{0, 0.5, 3}));
    EXPECT_EQ(units::symbol(r->phys), "V·s");
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.realValues, wx.wx.findVector("v")->ref.realValues);  // the same x-values, not a copy
    EXPECT_EQ(r->numDivisions(), 1u);
    wx.wx.setVector("flat", makeCurve({0, 1, 3}, {1, 1, 1}));
    EXPECT_EQ(at("integ(flat)"), (Values{0, 1, 3}));
    wx.wx.setVector("back", makeCurve({1, 0, -2}, {2, 2, 4}));
    EXPECT_EQ(at("integ(back)"), (Values{0, -2, -8}));  // decreasing x: negative steps
    wx.wx.setVector("one", makeCurve({5}, {7}));
    EXPECT_EQ(at("integ(one)"), (Values{0}));
    // The order of the sums is fixed: 0.1 + 0.2 + 0.3 as a running sum.
    wx.wx.setVector("steps", makeCurve({0, 1, 2, 3}, {0.1, 0.1, 0.3, 0.3}));
    EXPECT_EQ(at("integ(steps)"), (Values{0, 0.1, 0.1 + 0.2, 0.1 + 0.2 + 0.3}));
    wx.wx.setVector("holes", makeCurve({0, 1, 2}, {1, std::nan(""), 1}));
    const Values h = at("integ(holes)");
    EXPECT_EQ(h[0], 0);
    EXPECT_TRUE(std::isnan(h[1]) && std::isnan(h[2]));  // NaN flows on
}

TEST_F(Calculus, IntegAndDiffRunOncePerDivision) {
    VectorPtr r = wx("integ(runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (Values{0, 1, 3, 0, -3, -8, -15}));  // each run starts from 0
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->divisionLength(0), 3u);
    EXPECT_EQ(r->label(1), "slow");
    EXPECT_EQ(xs(r), (Values{0, 1, 3, 3, 2, 1, 0}));
    EXPECT_EQ(r->ref.realValues, wx.wx.findVector("runs")->ref.realValues);

    findOption("DerivAcceptFactor")->set("0");
    VectorPtr d = wx("diff(runs)");
    ASSERT_NE(d, nullptr) << wx.messages();
    EXPECT_EQ(reals(d), (Values{0, 0, 0, -2, -2, -2, -2}));
    EXPECT_EQ(d->numDivisions(), 2u);
}

TEST_F(Calculus, DiffTakesTheSlopeOfEachStep) {
    findOption("DerivAcceptFactor")->set("0");
    VectorPtr r = wx("diff(v)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (Values{1, 1, 3}));
    EXPECT_EQ(units::symbol(r->phys), "V/s");
    EXPECT_EQ(r->ref.realValues, wx.wx.findVector("v")->ref.realValues);

    struct Case { Values x, y, slope; };
    const Case cases[] = {
        {{0, 2, 3}, {1, 5, 2}, {2, 2, -3}},                  // uneven steps
        {{0, 1, 1, 2}, {0, 1, 5, 3}, {1, 1, 1, 2}},          // a repeated x is skipped, then interpolated
        {{0, 1, 1}, {0, 1, 2}, {1, 1, kInf}},                // ... except at the very end: kept
        {{3, 2, 0}, {0, 1, 5}, {-1, -1, -2}},                // decreasing x
    };
    for (const Case& c : cases) {
        wx.wx.setVector("c", makeCurve(c.x, c.y));
        EXPECT_EQ(at("diff(c)"), c.slope) << testing::PrintToString(c.x);
    }
}

TEST_F(Calculus, DiffWithoutXValuesDiffersOverTheIndex) {
    wx.wx.setVector("plain", makeRealVector({0, 1, 4, 9}, units::Voltage));
    VectorPtr r = wx("diff(plain)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (Values{1, 1, 3, 5}));
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_FALSE(r->ref.present());
    EXPECT_EQ(r->ref.phys, units::NoRef);
}

// A step counts once it exceeds DerivAcceptFactor × the mean spacing.
TEST_F(Calculus, DerivAcceptFactorMergesShortSteps) {
    // A near-duplicate time at 1 (as simulators write at breakpoints) and a real corner at 2.
    wx.wx.setVector("c", makeCurve({0, 1, 1 + 1e-12, 2, 3}, {0, 1, 2, 3, 3}));

    findOption("DerivAcceptFactor")->set("0");  // every distinct x: the spike is honest
    const Values every = at("diff(c)");
    EXPECT_EQ(every[0], 1);
    EXPECT_NEAR(every[2], 1e12, 1e-4 * 1e12);
    EXPECT_EQ(every[3], (3 - 2) / (2 - (1 + 1e-12)));
    EXPECT_EQ(every[4], 0);

    findOption("DerivAcceptFactor")->reset();  // the default merges the step of 1e-12 only
    const Values merged = at("diff(c)");
    EXPECT_EQ(merged[0], 1);
    EXPECT_EQ(merged[1], 1);
    EXPECT_EQ(merged[2], 1 + (2 - 1) * 1e-12 / 1.0);  // on the way from r[1] to the next slope
    EXPECT_EQ(merged[3], 2);
    EXPECT_EQ(merged[4], 0);

    findOption("DerivAcceptFactor")->set("1e300");  // nothing counts: the overall slope everywhere
    EXPECT_EQ(at("diff(c)"), (Values{1, 1, 1, 1, 1}));
    EXPECT_EQ(at("diff(v)"), (Values{2, 2, 2}));

    // Mean spacing 0.75, factor 0.6: steps must exceed 0.45. The step of 0.3 after x = 1 is
    // merged into the next one, and x = 1.3 interpolated from r = 1 towards the slope 3.
    findOption("DerivAcceptFactor")->set("0.6");
    wx.wx.setVector("w", makeCurve({0, 1, 1.3, 2, 3}, {0, 1, 4, 4, 5}));
    EXPECT_EQ(at("diff(w)"), (Values{1, 1, 1 + (3 - 1) * (1.3 - 1) / 1.0, 3, 1}));
}

TEST_F(Calculus, ComplexXValuesServeThroughTheirRealParts) {
    auto v = std::make_shared<Vector>();
    v->real = {0, 2, 8};
    v->ref = Reference::fromComplex({{0, 5}, {1, 5}, {2, 5}}, units::Frequency);
    wx.wx.setVector("ac", v);
    findOption("DerivAcceptFactor")->set("0");
    EXPECT_EQ(at("diff(ac)"), (Values{2, 2, 6}));
    VectorPtr r = wx("integ(ac)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), (Values{0, 1, 6}));
    EXPECT_EQ(r->ref.type, VD_COMPLEX);
}

TEST_F(Calculus, BadInputGetsTheMessage) {
    wx.wx.setVector("one", makeCurve({1}, {1}));
    wx.wx.setVector("none", makeCurve({}, {}));
    wx.wx.setVector("z", makeComplexVector({{1, 1}, {2, 2}}));
    struct Case { const char* expression; const char* message; };
    const Case cases[] = {
        {"diff(one)", "Argument out of range for function 'diff'"},
        {"diff(5)", "Argument out of range for function 'diff'"},
        {"integ(none)", "Argument out of range for function 'integ'"},
        {"integ([1, 2, 3])", "Argument 1 in function 'integ' has no reference (xvalues)"},
        {"integ(z)", "Argument 1 of function 'integ' must be real, not complex"},
        {"diff('a')", "Argument 1 of function 'diff' must be real, not a string"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(wx(c.expression), nullptr) << c.expression;
        EXPECT_EQ(wx.messages(), c.message) << c.expression;
    }
}

TEST_F(Calculus, ConstructorsMakeNumbersWithoutReference) {
    struct Case { const char* expression; Values values; };
    const Case cases[] = {
        {"vector(4)", {0, 1, 2, 3}},  {"vector(0)", {0}},        {"vector(-3.7)", {0, 1, 2}},
        {"vector([2, 9])", {0, 1}},   {"vector(NaN)", {0}},      {"vector([])", {0}},
        {"unitvec(3)", {1, 1, 1}},    {"unitvec(-2.9)", {1, 1}}, {"unitvec(0)", {}},
        {"makevec(2)", {0, 0}},       {"makevec(-1)", {0}},      {"makevec(0)", {}},
        {"makevec([])", {}},
    };
    for (const Case& c : cases) {
        VectorPtr r = wx(c.expression);
        ASSERT_NE(r, nullptr) << c.expression << ": " << wx.messages();
        EXPECT_EQ(r->type, VD_REAL) << c.expression;
        EXPECT_EQ(reals(r), c.values) << c.expression;
        EXPECT_EQ(r->phys, units::Number) << c.expression;
        EXPECT_FALSE(r->ref.present()) << c.expression;
        EXPECT_EQ(r->ref.phys, units::NoRef) << c.expression;
        EXPECT_EQ(r->numDivisions(), 1u) << c.expression;
        EXPECT_EQ(wx.messages(), "") << c.expression;
    }
    VectorPtr z = wx("makecomplexvec(2.5)");
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(z->type, VD_COMPLEX);
    EXPECT_EQ(complexes(z), (std::vector<Complex>{0, 0}));
    EXPECT_EQ(z->phys, units::Number);
    EXPECT_FALSE(z->ref.present());
    VectorPtr empty = wx("makecomplexvec(0)");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->size(), 0u);
}

TEST_F(Calculus, MakevecOfAListMakesOneDivisionPerLength) {
    VectorPtr r = wx("makevec([2, 3])");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (Values{0, 0, 0, 0, 0}));
    EXPECT_EQ(r->divisionStarts, (std::vector<size_t>{0, 2}));
    EXPECT_FALSE(r->ref.present());

    // Lengths are truncated toward zero; a negative one gives an empty division.
    VectorPtr t = wx("makevec([1.9, -4, 0, 2.2])");
    ASSERT_NE(t, nullptr) << wx.messages();
    EXPECT_EQ(t->divisionStarts, (std::vector<size_t>{0, 1, 1, 1}));
    EXPECT_EQ(reals(t), (Values{0, 0, 0}));

    // Each division of the result is a curve the per-division functions step through.
    VectorPtr runs = wx("diff(makevec([2, 3]))");
    ASSERT_NE(runs, nullptr) << wx.messages();
    EXPECT_EQ(runs->numDivisions(), 2u);
}

}  // namespace
}  // namespace wavex

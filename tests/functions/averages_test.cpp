// avg, Rms, area and Truncate: closed forms, units, references, divisions and bad input.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavex {
namespace {

using test::complexes;
using test::reals;
using test::xs;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Equal element by element, NaN equal to NaN, within a relative tolerance.
void expectValues(const std::vector<double>& got, const std::vector<double>& want, const std::string& what) {
    ASSERT_EQ(got.size(), want.size()) << what;
    for (size_t i = 0; i < got.size(); ++i) {
        if (std::isnan(want[i])) EXPECT_TRUE(std::isnan(got[i])) << what << " [" << i << "]";
        else EXPECT_NEAR(got[i], want[i], 1e-14 * std::max(1.0, std::fabs(want[i]))) << what << " [" << i << "]";
    }
}

class Averages : public ::testing::Test {
protected:
    test::Session wx;
    VectorPtr eval(const char* expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        return r;
    }
    // Two runs of a ramp: a = 1, 3, 5, 7 over x = 0 … 3 and b = 2, 2, 2 over x = 0, 1, 3.
    void setRuns() {
        wx.set("runs", test::runs({makeCurve({0, 1, 2, 3}, {1, 3, 5, 7}, units::Voltage, units::Time),
                                   makeCurve({0, 1, 3}, {2, 2, 2}, units::Voltage, units::Time)},
                                  {"a", "b"}));
    }
};

TEST_F(Averages, RunningAverages) {
    wx.set("ramp", makeCurve({0, 1, 2, 4}, {1, 3, 5, 9}, units::Voltage, units::Time));  // y = 1 + 2x
    wx.set("edge", makeCurve({0, 0, 1}, {0, 2, 2}));
    wx.set("back", makeCurve({0, 1, 0.5}, {0, 0, 2}));
    struct Case {
        const char* expression;
        std::vector<double> want;
    };
    const Case cases[] = {
        {"avg(ramp)", {1, 2, 3, 5}},  // the mean of 1 + 2x over [0, x] is 1 + x
        // √(((1+2x)³ - 1) / 6x): exact, the square of the straight lines is integrated exactly
        {"Rms(ramp)", {1, std::sqrt(26.0 / 6), std::sqrt(124.0 / 12), std::sqrt(728.0 / 24)}},
        {"Rms([-3, 3])", {3, std::sqrt(3.0)}},  // no x values: over the index; the line through 0
        {"avg([])", {}},
        {"avg(edge)", {0, 2, 2}},        // zero span at the start: the value there
        {"Rms(edge)", {0, 2, 2}},
        {"avg(back)", {0, 0, -1}},       // x runs back: ∫ from 0 to 0.5 of the path is -0.5
        {"Rms(back)", {0, 0, kNaN}},     // and its mean square is negative
        {"avg([1, NaN, 1, 1])", {1, kNaN, kNaN, kNaN}},
    };
    for (const Case& c : cases)
        if (VectorPtr r = eval(c.expression)) expectValues(reals(r), c.want, c.expression);

    // The result keeps the argument's x values (shared) and unit.
    VectorPtr r = eval("Rms(ramp)");
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.realValues, wx.wx.findVector("ramp")->ref.realValues);
    EXPECT_FALSE(eval("avg([1, 2])")->ref.present());

    // A complex reference serves through its real parts and stays complex.
    auto ac = std::make_shared<Vector>(*makeRealVector({1, 3}));
    ac->ref = Reference::fromComplex({{0, 0}, {2, 0}}, units::Frequency);
    wx.set("ac", ac);
    r = eval("avg(ac)");
    EXPECT_EQ(reals(r), (std::vector<double>{1, 2}));
    EXPECT_EQ(r->ref.type, VD_COMPLEX);

    // Each run on its own.
    setRuns();
    r = eval("avg(runs)");
    EXPECT_EQ(reals(r), (std::vector<double>{1, 2, 3, 4, 2, 2, 2}));
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->label(1), "b");
}

TEST_F(Averages, Area) {
    wx.set("ramp", makeCurve({0, 1, 2, 4}, {1, 3, 5, 9}, units::Current, units::Time));
    struct Case {
        const char* expression;
        double want;
    };
    const Case cases[] = {
        {"area(ramp)", 20},
        {"area(ramp, 0.5, 1.5)", 3},    // ends interpolated (quadratic: exact for a line)
        {"area(ramp, 3)", 8},
        {"area(ramp, -9, 99)", 20},     // the ends of the data
        {"area(XY([4], [1]))", 0},      // one point
    };
    for (const Case& c : cases) {
        VectorPtr r = eval(c.expression);
        ASSERT_NE(r, nullptr);
        expectValues(reals(r), {c.want}, c.expression);
        EXPECT_FALSE(r->ref.present());
    }
    EXPECT_EQ(eval("area(ramp)")->phys, units::mult(units::Current, units::Time));
    EXPECT_TRUE(std::isnan(reals(eval("area(XY([1, NaN, 1], [0, 1, 2]))"))[0]));

    setRuns();
    VectorPtr r = eval("area(runs)");
    EXPECT_EQ(reals(r), (std::vector<double>{12, 6}));
    EXPECT_EQ(r->label(0), "a");

    // Bad input as Mean1 has it (each outcome is checked there): failures with their message,
    // "out of range" with an empty result.
    wx.expectFails("area([1, 2])", "Argument 1 in function 'area' has no reference (xvalues)");
    wx.expectFails("area(ramp, 2, 1)", "Start is after end in 'area' function");
    wx.expectFails("area(XY([1, 2, 3, 4], [0, 2, 1, 3]), 1.5)", "Argument to 'area' function is non-monotonic");
    r = wx("area(ramp, 5)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->size(), 0u);
    EXPECT_EQ(wx.messages(), "The x value specified for the 'area' function is out of range");
    VectorPtr out;
    const VectorPtr args[] = {makeRealVector({1, 2})};
    EXPECT_EQ(callFunction(*functionTable().find("area"), args, wx.sink, ScpParseContext{}, &out), FUNC_FAILED_RANGE);
}

TEST_F(Averages, Truncate) {
    wx.set("v", makeCurve({0, 1, 2, 3}, {0, 10, 20, 40}, units::Voltage, units::Time));
    struct Case {
        const char* expression;
        std::vector<double> x, y;
    };
    const Case cases[] = {
        {"Truncate(v, 0.5, 2.5)", {0.5, 1, 2, 2.5}, {5, 10, 20, 30}},
        {"Truncate(v, 1, 2)", {1, 2}, {10, 20}},                 // ends on points: not repeated
        {"Truncate(v, 2.25)", {2.25, 3}, {25, 40}},              // to the last point
        {"Truncate(v, -5, 0.5)", {0, 0.5}, {0, 5}},              // cut at the data's ends
        {"Truncate(v, -Inf, Inf)", {0, 1, 2, 3}, {0, 10, 20, 40}},
        {"Truncate(v, 1.2, 1.7)", {1.2, 1.7}, {12, 17}},         // within one step
        {"Truncate(v, 1.5, 1.5)", {1.5}, {15}},
        {"Truncate(v, 2, 2)", {2}, {20}},
    };
    for (const Case& c : cases) {
        VectorPtr r = eval(c.expression);
        ASSERT_NE(r, nullptr);
        expectValues(xs(r), c.x, c.expression);
        expectValues(reals(r), c.y, c.expression);
        EXPECT_EQ(r->phys, units::Voltage);
        EXPECT_EQ(r->ref.phys, units::Time);
    }

    // Complex y and a complex reference: the added points take the start as real part.
    auto z = std::make_shared<Vector>(*makeComplexVector({{0, 0}, {2, -4}}, units::Voltage));
    z->ref = Reference::fromComplex({{0, 0}, {10, 2}}, units::Frequency, "frequency");
    wx.set("z", z);
    VectorPtr r = eval("Truncate(z, 5)");
    EXPECT_EQ(complexes(r), (std::vector<Complex>{{1, -2}, {2, -4}}));
    ASSERT_EQ(r->ref.type, VD_COMPLEX);
    EXPECT_EQ(r->ref.cplx()[0], Complex(5, 1));
    EXPECT_EQ(r->ref.name, "frequency");

    // Each run cut on its own; a run the stretch misses is reported and left empty.
    setRuns();
    r = eval("Truncate(runs, 1.5, 2.5)");
    EXPECT_EQ(reals(r), (std::vector<double>{4, 5, 6, 2, 2}));
    EXPECT_EQ(xs(r), (std::vector<double>{1.5, 2, 2.5, 1.5, 2.5}));
    EXPECT_EQ(r->divisionLength(1), 2u);
    EXPECT_EQ(r->label(1), "b");
    r = eval("Truncate(runs, 2.8)");
    EXPECT_EQ(r->divisionLength(0), 2u);
    EXPECT_EQ(r->divisionLength(1), 2u);

    wx.expectFails("Truncate(v, 2, 1)", "Start is after end in 'Truncate' function");
    wx.expectFails("Truncate([1, 2], 0)", "Argument 1 in function 'Truncate' has no reference (xvalues)");
    // Out of range: the message, and an empty result.
    for (const char* e : {"Truncate(v, 4)", "Truncate(v, -2, -1)", "Truncate(v, 1, NaN)", "Truncate(XY([], []), 0)"}) {
        r = wx(e);
        ASSERT_NE(r, nullptr) << e;
        EXPECT_EQ(r->size(), 0u) << e;
        EXPECT_EQ(wx.messages(), "The x value specified for the 'Truncate' function is out of range") << e;
    }
}

}  // namespace
}  // namespace wavex

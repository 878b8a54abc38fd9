// Mean1, RMS1, RootSumOfSquares, SumNoise, Maximum, Minimum, Locate, Ones and Zeros: closed forms,
// units, statuses, messages and divisions.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavex {
namespace {

using test::curve;
using test::reals;
using test::xs;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Reductions : public ::testing::Test {
protected:
    test::Session wx;
    double value(const char* expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        EXPECT_EQ(r ? r->size() : 0u, 1u) << expression;
        return r && r->size() == 1 ? r->real[0] : kNaN;
    }
    // The status the handler returns, called as the host calls it.
    int status(const char* name, std::vector<VectorPtr> args) {
        VectorPtr out;
        return callFunction(*functionTable().find(name), args, wx.sink, ScpParseContext{}, &out);
    }
};

TEST_F(Reductions, IntegralsAgainstClosedForms) {
    wx.set("ramp", curve({0, 0.25, 0.5, 0.75, 1}, {0, 0.25, 0.5, 0.75, 1}));
    wx.set("two", curve({0, 0.5, 2, 3}, {2, 2, 2, 2}));

    struct Case {
        const char* expression;
        double want;
        double tolerance;
    };
    const Case cases[] = {
        {"Mean1(ramp)", 0.5, 0},
        {"Mean1(ramp, 0.1, 0.3)", 0.2, 1e-15},     // end values from the quadratic: exact for a line
        {"Mean1(ramp, -5, 9)", 0.5, 0},            // a start before and an end beyond: the whole
        {"RMS1(two)", 2, 0},                       // the square-mode piece is exact
        {"RMS1(two, 0.1, 2.9)", 2, 1e-15},
        {"RMS1(ramp)", std::sqrt(1.0 / 3), 1e-15},  // and exact for lines
        {"RootSumOfSquares(two)", std::sqrt(12.0), 1e-15},
        {"SumNoise(two, 1, 2)", 2, 1e-15},
    };
    for (const Case& c : cases) EXPECT_NEAR(value(c.expression), c.want, c.tolerance) << c.expression;

    // One point: Mean1 divides 0 by a zero span, RMS1 gives 0.
    wx.set("one", curve({1}, {3}));
    EXPECT_TRUE(std::isnan(value("Mean1(one)")));
    EXPECT_EQ(value("RMS1(one)"), 0);
}

TEST_F(Reductions, IntegralUnitsAndRuns) {
    // A noise density in V/√Hz over frequency: its root sum of squares is in volts.
    const PhysType density = *units::fromSymbol("V/sqrt(Hz)");
    wx.set("noise", curve({0, 100}, {1e-9, 1e-9}, density, units::Frequency));
    VectorPtr r = wx("SumNoise(noise)");
    ASSERT_NE(r, nullptr);
    EXPECT_DOUBLE_EQ(r->real[0], 1e-8);
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::NoRef);
    EXPECT_FALSE(r->ref.present());
    EXPECT_EQ(wx("Mean1(noise)")->phys, density);
    EXPECT_EQ(wx("RMS1(noise)")->phys, density);

    // One value per run.
    wx.set("runs", test::runs({curve({0, 1}, {1, 3}), curve({0, 2}, {5, 5})}, {"a", "b"}));
    r = wx("Mean1(runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{2, 5}));
    EXPECT_EQ(r->label(1), "b");
}

TEST_F(Reductions, IntegralFailuresAndTheirStatus) {
    wx.set("ramp", curve({0, 1, 2}, {0, 1, 2}));
    wx.set("back", curve({0, 2, 1, 3}, {0, 1, 2, 3}));
    wx.expectFails("Mean1([1, 2])", "Argument 1 in function 'Mean1' has no reference (xvalues)");
    wx.expectFails("RMS1(ramp, 2, 1)", "Start is after end in 'RMS1' function");
    wx.expectFails("RootSumOfSquares(ramp, 1, 1)", "Start and end are identical in 'RootSumOfSquares' function");
    wx.expectFails("SumNoise(back, 1.5)", "Argument to 'SumNoise' function is non-monotonic");
    // These fail with status 1, not 2.
    EXPECT_EQ(status("Mean1", {makeRealVector({1, 2})}), FUNC_FAILED_RANGE);
    EXPECT_EQ(status("RMS1", {wx.wx.findVector("ramp"), makeScalar(2), makeScalar(1)}), FUNC_FAILED_RANGE);
    EXPECT_EQ(status("SumNoise", {wx.wx.findVector("back"), makeScalar(1.5)}), FUNC_FAILED_RANGE);

    // Out of range: the message stands, the call succeeds with no value.
    for (const char* e : {"Mean1(ramp, 5)", "RMS1(ramp, NaN)"}) {
        VectorPtr r = wx(e);
        ASSERT_NE(r, nullptr) << e;
        EXPECT_EQ(r->size(), 0u) << e;
        EXPECT_EQ(wx.messages(), std::string("The x value specified for the '") + (e[0] == 'M' ? "Mean1" : "RMS1") +
                                     "' function is out of range");
    }
}

TEST_F(Reductions, MaximumAndMinimum) {
    wx.set("v", curve({0, 1, 2, 3, 4}, {1, 3, 3, -2, 0}));
    struct Case {
        const char* expression;
        double value, x;
    };
    const Case cases[] = {
        {"Maximum(v)", 3, 1},         // the first of equal extremes
        {"Minimum(v)", -2, 3},
        {"Maximum(v, 2)", 3, 2},      // points before the start are passed over
        {"Minimum(v, 0, 2.5)", 1, 0}, // the walk stops past the end
        {"Maximum(v, 3, 4)", 0, 4},
    };
    for (const Case& c : cases) {
        VectorPtr r = wx(c.expression);
        ASSERT_NE(r, nullptr) << c.expression;
        EXPECT_EQ(reals(r), std::vector<double>{c.value}) << c.expression;
        EXPECT_EQ(xs(r), std::vector<double>{c.x}) << c.expression;
        EXPECT_EQ(r->phys, units::Voltage);
        EXPECT_EQ(r->ref.phys, units::Time);
    }
    // Complex values compare by magnitude; without reference there is no x to give.
    wx.set("z", makeComplexVector({{3, 4}, {0, -6}, {1, 0}}));
    VectorPtr r = wx("Maximum(z)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), std::vector<double>{6});
    EXPECT_FALSE(r->ref.present());
    // No x: no limits. NaN never wins; nothing in the stretch gives an empty result.
    wx.check({{"Minimum(z)", "[1]"}, {"Minimum([2, 1], 7)", "[1]"}, {"Maximum([NaN, 1, NaN])", "[1]"},
              {"Maximum([NaN])", "[]"}, {"Maximum([])", "[]"}, {"Minimum(v, 5)", "[]"}});
}

TEST_F(Reductions, LocateOnesZeros) {
    struct Case {
        const char* expression;
        std::vector<double> want;
    };
    // Ones and Zeros see all divisions together.
    auto v = std::make_shared<Vector>(*makeRealVector({1, 1, 1}));
    v->setDivisionLengths({1, 2});
    wx.set("runs", v);
    wx.check({
        {"Locate([1, 2, 3, 4], 2.5)", "[1]"},
        {"Locate([1, 2, 3, 4], 0.5)", "[-1]"},
        {"Locate([1, 2, 3, 4], 1)", "[0]"},
        {"Locate([1, 2, 3, 4], 4)", "[3]"},
        {"Locate([1, 2, 3, 4], 9)", "[3]"},
        {"Locate([4, 3, 2, 1], 2.5)", "[1]"},
        {"Locate([4, 3, 2, 1], 5)", "[-1]"},
        {"Locate([1, 3, 5, 7, 9, 11, 13, 15, 17], 16)", "[7]"},
        {"Locate([7], 100)", "[0]"},
        {"Locate([], 1)", "[]"},
        {"Locate([1, 2, 3, 4, 5, 6, 7, 8], NaN)", "[]"},  // halvings run out
        {"Ones([1, 1, 1])", "[1]"},
        {"Ones([1, 1, 2])", "[0]"},
        {"Ones([])", "[1]"},
        {"Ones([NaN])", "[0]"},
        {"Ones(runs)", "[1]"},
        {"Zeros([0, 0])", "[1]"},
        {"Zeros([0, 1e-300])", "[0]"},
        {"Zeros([])", "[1]"},
    });
}

}  // namespace
}  // namespace wavex

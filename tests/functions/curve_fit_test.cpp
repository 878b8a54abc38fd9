// CurveFit, CurveFitLogX, CurveFitLogY, CurveFitLog and CurveFitPlot: exact and least-squares
// coefficients (numpy.polyfit for reference), curves, units, divisions, bad data and messages.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavex {
namespace {

using test::reals;
using test::xs;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class CurveFit : public ::testing::Test {
protected:
    test::Session wx;

    // Sets `name` to the curve f(x) over the x-values.
    template <class F>
    void set(const char* name, std::vector<double> x, F f) {
        std::vector<double> y;
        for (double v : x) y.push_back(f(v));
        wx.wx.setVector(name, makeCurve(std::move(x), std::move(y), units::Voltage, units::Time));
    }
    static std::vector<double> range(int n, double step = 1, double first = 0) {
        std::vector<double> x;
        for (int i = 0; i < n; ++i) x.push_back(first + step * i);
        return x;
    }
    void expectNear(const char* expression, const std::vector<double>& want, double relative) {
        VectorPtr r = wx(expression);
        ASSERT_TRUE(r) << expression << ": " << wx.messages();
        std::vector<double> got = reals(r);
        ASSERT_EQ(got.size(), want.size()) << expression;
        double scale = 0;
        for (double w : want) scale = std::max(scale, std::fabs(w));
        for (size_t k = 0; k < want.size(); ++k)
            EXPECT_NEAR(got[k], want[k], relative * std::max(std::fabs(want[k]), 1e-3 * scale))
                << expression << " coefficient " << k;
    }
};

TEST_F(CurveFit, Coefficients) {
    set("cubic", range(10), [](double x) { return 1 + x + x * x * x; });
    set("line4", {0, 1, 2, 3}, [](double x) { return x == 0 ? 0 : x == 1 ? 1 : x == 2 ? 1 : 3; });
    set("sine", range(30), [](double x) { return std::sin(x / 3); });
    set("decay", range(40, 1e-6 / 39), [](double x) { return std::exp(-x / 3e-7); });
    set("far", range(21, 1, 1e6), [](double x) { return 2 + 0.5 * (x - 1e6); });  // far from 0: centring
    set("deg10", range(50, 1.0 / 49), [](double x) {
        double p = 0;
        for (int k = 10; k >= 0; --k) p = p * x + (k % 2 ? -k : k + 1);
        return p;
    });
    set("lnx", range(20, 1, 1), [](double x) { return 2 + 3 * std::log(x); });
    set("expo", range(20, 0.25), [](double x) { return 5 * std::exp(0.5 * x); });
    set("power", range(20, 0.5, 0.5), [](double x) { return 3 * x * x; });

    struct Case {
        const char* expression;
        std::vector<double> want;
        double relative;
    };
    const Case cases[] = {
        {"CurveFit(cubic, 3)", {1, 1, 0, 1}, 1e-11},
        {"CurveFit(line4, 1)", {-0.1, 0.9}, 1e-13},  // by the normal equations
        {"CurveFit(line4, 0)", {1.25}, 1e-15},       // the mean
        {"CurveFit(sine, 5.9)",                      // numpy.polyfit; the order truncated
         {-0.2821456782045186, 0.8803565192501294, -0.17540260620926618, 0.011130870908335835,
          -0.00025502982697780306, 1.4954355116901238e-06},
         1e-9},
        {"CurveFit(decay, 4)",
         {0.9974818375489213, -3234382.03757932, 4748959947897.327, -3.581628034395681e+18, 1.107182667314438e+24},
         1e-8},
        {"CurveFit(far, 1)", {2 - 0.5e6, 0.5}, 1e-12},
        {"CurveFit(deg10, 10)", {1, -1, 3, -3, 5, -5, 7, -7, 9, -9, 11}, 1e-6},
        {"CurveFitLogX(lnx, 1)", {2, 3}, 1e-13},
        {"CurveFitLogY(expo, 1)", {std::log(5.0), 0.5}, 1e-13},
        {"CurveFitLog(power, 1)", {std::log(3.0), 2}, 1e-13},
        {"CurveFitLog(power, 2)", {std::log(3.0), 2, 0}, 1e-12},
    };
    for (const Case& c : cases) expectNear(c.expression, c.want, c.relative);

    VectorPtr r = wx("CurveFit(cubic, 3)");
    EXPECT_EQ(r->phys, units::Number);
    EXPECT_FALSE(r->ref.present());
}

TEST_F(CurveFit, PlotsTheFitOverTheXValues) {
    set("line4", {0, 1, 2, 3}, [](double x) { return x == 0 ? 0 : x == 1 ? 1 : x == 2 ? 1 : 3; });
    set("power", range(8, 0.5, 0.5), [](double x) { return 3 * x * x; });
    set("expo", range(8, 0.25), [](double x) { return 5 * std::exp(0.5 * x); });
    expectNear("CurveFitPlot(line4, 1)", {-0.1, 0.8, 1.7, 2.6}, 1e-14);
    VectorPtr r = wx("CurveFitPlot(line4, 1)");
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 2, 3}));
    std::vector<double> power, expo;
    for (double x : range(8, 0.5, 0.5)) power.push_back(3 * x * x);
    for (double x : range(8, 0.25)) expo.push_back(5 * std::exp(0.5 * x));
    expectNear("CurveFitPlot(power, 1, 'LOG')", power, 1e-13);
    expectNear("CurveFitPlot(power, 2, 'poly')", power, 1e-13);
    expectNear("CurveFitPlot(expo, 1, 'logy')", expo, 1e-13);
    // log x: y = a + b ln x cannot follow 3x² exactly; check against its own coefficients.
    std::vector<double> c = reals(wx("CurveFitLogX(power, 1)")), logx;
    for (double x : range(8, 0.5, 0.5)) logx.push_back(c[0] + c[1] * std::log(x));
    expectNear("CurveFitPlot(power, 1, 'LogX')", logx, 1e-13);
}

TEST_F(CurveFit, NonFinitePointsAreLeftOut) {
    std::vector<double> x = {0, 1, 2, 3, 4, 5, kNaN}, y = {1, 3, 5, kNaN, 9, INFINITY, 4};
    wx.wx.setVector("gaps", makeCurve(x, y));
    expectNear("CurveFit(gaps, 1)", {1, 2}, 1e-14);
    VectorPtr plot = wx("CurveFitPlot(gaps, 1)");
    ASSERT_EQ(plot->size(), 7u);
    EXPECT_DOUBLE_EQ(plot->real[3], 7);  // a value where the data had none
    EXPECT_TRUE(std::isnan(plot->real[6]));
    // Repeated x-values cannot fix a slope: least norm gives none.
    wx.wx.setVector("same", makeCurve({2, 2, 2}, {1, 2, 6}));
    expectNear("CurveFit(same, 1)", {3, 0}, 1e-14);
}

TEST_F(CurveFit, OneFitPerDivision) {
    auto v = std::make_shared<Vector>(*makeCurve({0, 1, 0, 1, 2}, {1, 3, 5, 4, 3}));
    v->divisionStarts = {0, 2};
    wx.wx.setVector("runs", v);
    expectNear("CurveFit(runs, 1)", {1, 2, 5, -1}, 1e-14);
    EXPECT_EQ(wx("CurveFit(runs, 1)")->divisionStarts, (std::vector<size_t>{0, 2}));
    expectNear("CurveFitPlot(runs, 1)", {1, 3, 5, 4, 3}, 1e-14);
    EXPECT_EQ(wx("CurveFitPlot(runs, 1)")->divisionStarts, (std::vector<size_t>{0, 2}));
}

TEST_F(CurveFit, Messages) {
    set("v", range(4, 1, -1), [](double x) { return x + 2; });  // x from -1, y from 1
    set("neg", range(4, 1, 1), [](double x) { return 1 - x; });  // x from 1, y from 0 down
    set("nans", range(3), [](double) { return kNaN; });
    for (const char* e : {"CurveFit(v, -1)", "CurveFit(v, 51)", "CurveFit(v, NaN)"})
        wx.expectFails(e, "Order must be from 0 to 50 in function 'CurveFit'");
    wx.expectFails("CurveFit(v, 4)", "Too few points for order 4 in function 'CurveFit': 4 usable, 5 needed");
    wx.expectFails("CurveFitPlot(nans, 0)", "Too few points for order 0 in function 'CurveFitPlot': 0 usable, 1 needed");
    wx.expectFails("CurveFit([1, 2, 3], 1)", "Argument 1 in function 'CurveFit' has no reference (xvalues)");
    wx.expectFails("CurveFitLogX(v, 1)", "Argument out of range for function 'CurveFitLogX'");
    wx.expectFails("CurveFitLogY(neg, 1)", "Argument out of range for function 'CurveFitLogY'");
    wx.expectFails("CurveFitLog(v, 1)", "Argument out of range for function 'CurveFitLog'");
    wx.expectFails("CurveFitPlot(v, 1, 'cubic')", "Unknown fit kind 'cubic' in function 'CurveFitPlot'");
    EXPECT_TRUE(wx("CurveFitLogY(v, 1)")) << wx.messages();  // x <= 0 matters only for ln x
}

}  // namespace
}  // namespace wavex

// Maxima, Minima, CyclePeriod and Histogram: values and x positions, options, units, divisions
// and messages.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace wavex {
namespace {

using test::reals;
using test::xs;

class Extremes : public ::testing::Test {
protected:
    test::Session wx;
    void SetUp() override {
        // Plateaus at 3 (x 3..4) and 0 (x 11..12), a NaN at x 9.
        wx.set("v", makeCurve({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13},
                           {0, 2, 1, 3, 3, 1, 2.5, 0, 5, NAN, 4, 0, 0, 1}, units::Voltage, units::Time));
    }
    void TearDown() override {
        wx.wx.setOption("HistoCurveStyle", "Stepped");
        wx.wx.setOption("MCNumberOfBins", "0");
        wx.wx.setOption("InterpOrder", "2");
    }
    // Two runs of curves in volts over time, labelled a and b.
    static VectorPtr runs(std::vector<double> x1, std::vector<double> y1, std::vector<double> x2, std::vector<double> y2) {
        return test::runs({makeCurve(x1, y1, units::Voltage, units::Time), makeCurve(x2, y2, units::Voltage, units::Time)},
                          {"a", "b"});
    }
    // The y and x values of a curve-valued expression.
    struct Curve {
        std::vector<double> y, x;
    };
    void expectCurve(const char* expression, const Curve& want) {
        VectorPtr r = wx(expression);
        ASSERT_NE(r, nullptr) << expression << ": " << wx.messages();
        EXPECT_EQ(reals(r), want.y) << expression;
        EXPECT_EQ(xs(r), want.x) << expression;
    }
};

TEST_F(Extremes, MaximaAndMinima) {
    struct Case {
        const char* expression;
        Curve want;
    };
    const Case cases[] = {
        // 5 at x 8 has a NaN neighbour, so it is no maximum; a plateau counts once, at its middle.
        {"Maxima(v)", {{2, 3, 2.5}, {1, 3.5, 6}}},
        {"Minima(v)", {{1, 1, 0, 0}, {2, 5, 7, 11.5}}},
        {"Maxima(v, 2.5)", {{3}, {3.5}}},  // strictly above the level
        {"Minima(v, 0)", {{}, {}}},
        {"Maxima(v, NaN, 'ends')", {{2, 3, 2.5, 1}, {1, 3.5, 6, 13}}},
        {"Minima(v, [], ['ENDS'])", {{0, 1, 1, 0, 0}, {0, 2, 5, 7, 11.5}}},
        // Prominences: 1 (x 1), 3 (x 3.5, based on 0 at both sides), 1.5 (x 6, based on 1 to its
        // left); minima 1, 1.5, 3 (x 7, its right stretch ends at the NaN) and 1 (the plateau).
        {"Maxima(v, [], ['prominence', '1.5'])", {{3, 2.5}, {3.5, 6}}},
        {"Maxima(v, 2.7, ['prominence', '1.5'])", {{3}, {3.5}}},
        {"Minima(v, [], ['prominence', '1.5'])", {{1, 0}, {5, 7}}},
        {"Minima(v, [], ['prominence', '1m', 'ends'])", {{0, 1, 1, 0, 0}, {0, 2, 5, 7, 11.5}}},
        // An end minimum's prominence is its depth below its one side.
        {"Minima(v, [], ['ends', 'prominence', '4'])", {{0}, {0}}},
        // Without a reference the x values are the indices.
        {"Maxima([1, 3, 1, 2, 2, 0])", {{3, 2}, {1, 3.5}}},
        {"Minima([-1, -1])", {{}, {}}},
        {"Maxima([4, 4, 4], [], 'ends')", {{}, {}}},
        {"Maxima([7], [], 'ends')", {{}, {}}},
        {"Maxima([])", {{}, {}}},
    };
    for (const Case& c : cases) expectCurve(c.expression, c.want);

    VectorPtr r = wx("Maxima(v)");
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(wx("Minima([1, 0, 1])")->ref.phys, units::Number);

    wx.expectFails("Maxima(v, 0, 'height')", "Unknown option 'height' in function 'Maxima'");
    wx.expectFails("Minima(v, 0, 'prominence')", "Option 'prominence' in function 'Minima' needs a number");
    wx.expectFails("Minima(v, 0, ['prominence', 'high'])", "Option 'prominence' in function 'Minima' needs a number");
}

TEST_F(Extremes, ExtremaPerRun) {
    wx.set("r", runs({0, 1, 2}, {0, 1, 0}, {0, 1, 2, 3}, {2, 0, 3, 1}));
    VectorPtr m = wx("Maxima(r)");
    ASSERT_NE(m, nullptr) << wx.messages();
    EXPECT_EQ(reals(m), (std::vector<double>{1, 3}));
    EXPECT_EQ(xs(m), (std::vector<double>{1, 2}));
    EXPECT_EQ(m->numDivisions(), 2u);
    EXPECT_EQ(m->label(1), "b");
    // A run without extremes keeps its (empty) division and the x values of the others.
    m = wx("Minima(r)");
    EXPECT_EQ(reals(m), std::vector<double>{0});
    EXPECT_EQ(xs(m), std::vector<double>{1});
    EXPECT_EQ(m->numDivisions(), 2u);
}

TEST_F(Extremes, CyclePeriod) {
    // 1 kHz sine, offset by 2 V, 100 points a cycle: the default level is the midway, 2 V.
    std::vector<double> t, y;
    for (int i = 0; i <= 500; ++i) {
        t.push_back(i * 1e-5);
        y.push_back(2 + std::sin(2 * M_PI * 1e3 * t.back() + 0.3));
    }
    wx.set("s", makeCurve(t, y, units::Voltage, units::Time));
    for (const char* e : {"CyclePeriod(s)", "CyclePeriod(s, 2)", "CyclePeriod(s, NaN)"}) {
        VectorPtr r = wx(e);
        ASSERT_NE(r, nullptr) << e;
        ASSERT_EQ(r->size(), 4u) << e;  // five rising crossings
        for (size_t k = 0; k < 4; ++k) {
            EXPECT_NEAR(r->real[k], 1e-3, 1e-9) << e;
            EXPECT_NEAR(xs(r)[k], (k + 1 - 0.3 / (2 * M_PI)) * 1e-3, 1e-8) << e;
        }
        EXPECT_EQ(r->phys, units::Time);
        EXPECT_EQ(r->ref.phys, units::Time);
    }
    // Linear crossings of a triangle: exact.
    wx.wx.setOption("InterpOrder", "1");
    wx.set("tri", makeCurve({0, 1, 2, 3, 4, 5, 6, 7}, {0, 2, 0, 2, 0, 2, 0, 2}));
    expectCurve("CyclePeriod(tri, 0.5)", {{2, 2, 2}, {0.25, 2.25, 4.25}});
    expectCurve("CyclePeriod(tri, 9)", {{}, {}});
    wx.set("r", runs({0, 1, 2, 3, 4}, {0, 1, 0, 1, 0}, {0, 1, 2}, {0, 1, 0}));
    VectorPtr r = wx("CyclePeriod(r)");
    EXPECT_EQ(reals(r), std::vector<double>{2});
    EXPECT_EQ(r->numDivisions(), 2u);

    wx.expectFails("CyclePeriod([0, 1, 0, 1])", "Argument 1 in function 'CyclePeriod' has no reference (xvalues)");
}

TEST_F(Extremes, Histogram) {
    wx.wx.setOption("HistoCurveStyle", "points");
    struct Case {
        const char* expression;
        Curve want;
    };
    const Case cases[] = {
        {"Histogram([1, 2, 2, 3, 3, 3, 4], 3)", {{1, 2, 4}, {1.5, 2.5, 3.5}}},
        // Edge k is k·0.1 (edge 3 is 0.30000000000000004, so 0.3 lies below it); a value on an
        // edge goes to the bin it starts, the end to the last bin.
        {"Histogram([0, 0.1, 0.2, 0.3, 0.7, 1], 10, 0, 1)", {{1, 1, 2, 0, 0, 0, 1, 0, 0, 1}, {}}},
        {"Histogram([1, NaN, Inf, -Inf, 3, 9], 2, 0, 4)", {{1, 1}, {1, 3}}},
        {"Histogram([5, 5, 5], 2)", {{0, 3}, {4.75, 5.25}}},       // one value: widened by 0.5
        {"Histogram([1, 2, 3, 4, 5], 0)", {{2, 1, 2}, {5 / 3.0, 3, 13 / 3.0}}},  // ⌈√5⌉ bins
        {"Histogram([1, 2, 9], 2, NaN, 3)", {{1, 1}, {1.5, 2.5}}},
        {"Histogram([], 4)", {{}, {}}},
        {"Histogram([NaN], 0)", {{}, {}}},
        {"Histogram([], 2, 0, 1)", {{0, 0}, {0.25, 0.75}}},
    };
    for (const Case& c : cases) {
        VectorPtr r = wx(c.expression);
        ASSERT_NE(r, nullptr) << c.expression << ": " << wx.messages();
        EXPECT_EQ(reals(r), c.want.y) << c.expression;
        if (!c.want.x.empty()) {
            ASSERT_EQ(xs(r).size(), c.want.x.size());
            for (size_t k = 0; k < c.want.x.size(); ++k) EXPECT_DOUBLE_EQ(xs(r)[k], c.want.x[k]) << c.expression;
        }
    }

    // All runs together; counts are plain numbers over the values' unit.
    wx.set("r", runs({0, 1, 2}, {1, 2, 3}, {0, 1}, {3, 3}));
    wx.wx.setOption("HistoCurveStyle", "Stepped");
    wx.wx.setOption("MCNumberOfBins", "2");
    VectorPtr h = wx("Histogram(r, 0)");
    ASSERT_NE(h, nullptr) << wx.messages();
    EXPECT_EQ(reals(h), (std::vector<double>{1, 1, 4, 4}));
    EXPECT_EQ(xs(h), (std::vector<double>{1, 2, 2, 3}));
    EXPECT_EQ(h->numDivisions(), 1u);
    EXPECT_EQ(h->phys, units::Number);
    EXPECT_EQ(h->ref.phys, units::Voltage);

    wx.expectFails("Histogram([1, 2], -1)", "Invalid number of bins in function 'Histogram'");
    wx.expectFails("Histogram([1, 2], NaN)", "Invalid number of bins in function 'Histogram'");
    wx.expectFails("Histogram([1, 2], 1e300)", "Too many bins (1e+300) in function 'Histogram'");
    wx.expectFails("Histogram([1, 2], 3, 2, 1)", "Start is after end in 'Histogram' function");
    wx.expectFails("Histogram([1, 2], 3, 1, 1)", "Start and end are identical in 'Histogram' function");
    wx.expectFails("Histogram([1, 2], 3, 5)", "Start is after end in 'Histogram' function");  // start past the data
    wx.expectFails("Histogram([1, 2], 3, -Inf)", "Start and end of function 'Histogram' must be finite");
}

}  // namespace
}  // namespace wavex

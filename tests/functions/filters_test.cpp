// FIR, IIR and LPF against sequences worked by hand, with their history indexing, units,
// references, divisions and degenerate input.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace wavex {
namespace {

using test::curve;
using test::reals;
using test::xs;

VectorPtr evenCurve(std::vector<double> y) {
    std::vector<double> x(y.size());
    for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<double>(i);
    return curve(std::move(x), std::move(y));
}

class Filters : public ::testing::Test {
protected:
    test::Session wx;
    void SetUp() override {
        wx.set("x", evenCurve({3, 1, 4, 1, 5, 9, 2, 6}));
        wx.set("u", curve({0, 1, 4, 5}, {0, 8, 8, 8}));
    }
};

TEST_F(Filters, HandWorkedSequences) {
    wx.check({
        // FIR: y[n] = Σ c[k]·(k ≤ n ? x[n−k] : h[k−1]); h = x[0] throughout by default.
        {"FIR(x, [1])", "[3, 1, 4, 1, 5, 9, 2, 6]"},
        {"FIR(x, [0.5, 0.5])", "[3, 2, 2.5, 2.5, 3, 7, 5.5, 4]"},
        {"FIR(x, [0, 0, 1])", "[3, 3, 3, 1, 4, 1, 5, 9]"},
        {"FIR(x, [0, 0, 1], [7, 8])", "[8, 8, 3, 1, 4, 1, 5, 9]"},  // h[k−1] for every n < k
        {"FIR(x, [1, 1, 1], [5])", "[8, 4, 8, 6, 10, 15, 16, 17]"},  // history zero beyond its end
        {"FIR(x, [1, 10], [7, 8, 9])", "[73, 31, 14, 41, 15, 59, 92, 26]"},
        {"FIR(x, [1, 1], [])", "[3, 4, 5, 5, 6, 14, 11, 8]"},  // an empty history is all zero
        // IIR: y[n] = c[0]·x[n] + Σ c[k]·(k ≤ n ? y[n−k] : h[k−1]); h zero by default.
        {"IIR(x, [2])", "[6, 2, 8, 2, 10, 18, 4, 12]"},
        {"IIR(x, [1, 0.5])", "[3, 2.5, 5.25, 3.625, 6.8125, 12.40625, 8.203125, 10.1015625]"},
        {"IIR(x, [1, 0.5], [2, 100, 100])", "[4, 3, 5.5, 3.75, 6.875, 12.4375, 8.21875, 10.109375]"},
        // y0 = 3 + 0.5·4 + 0.25·8, y1 = 1 + 0.5·y0 + 0.25·8 (h[1] again), then from y itself.
        {"IIR(x, [1, 0.5, 0.25], [4, 8])", "[7, 6.5, 9, 7.125, 10.8125, 16.1875, 12.796875, 16.4453125]"},
        // LPF with unit spacing: y[i] = y[i−1] + (x[i−1] − y[i−1])/(1 + τ).
        {"LPF(x, 0)", "[3, 3, 1, 4, 1, 5, 9, 2]"},
        {"LPF(x, 1)", "[3, 3, 2, 3, 2, 3.5, 6.25, 4.125]"},
        {"LPF(x, 1, [1])", "[1, 2, 1.5, 2.75, 1.875, 3.4375, 6.21875, 4.109375]"},
        // Uneven steps of 1, 3, 1: fractions 1/2, 3/4, 1/2 with τ = 1.
        {"LPF(u, 1)", "[0, 0, 6, 7]"},
    });
}

// Long data through many taps: the impulse response is the coefficients, the step response
// their running sums, also across the blocks of eight outputs and the tail after them.
TEST_F(Filters, FirImpulseAndStepResponses) {
    std::vector<double> impulse(45, 0.0), step(45, 0.0), taps;
    impulse[13] = 1;
    for (size_t i = 13; i < step.size(); ++i) step[i] = 1;
    std::string list;
    for (int k = 0; k < 16; ++k) {
        taps.push_back(k * k - 3 * k + 1);
        list += (k ? ", " : "") + std::to_string(taps.back());
    }
    wx.set("impulse", evenCurve(impulse));
    wx.set("step", evenCurve(step));
    std::vector<double> wantImpulse(45, 0.0), wantStep(45, 0.0);
    double sum = 0;
    for (size_t n = 13; n < 45; ++n) {
        if (n - 13 < 16) {
            wantImpulse[n] = taps[n - 13];
            sum += taps[n - 13];
        }
        wantStep[n] = sum;
    }
    EXPECT_EQ(reals(wx("FIR(impulse, [" + list + "])")), wantImpulse);
    EXPECT_EQ(reals(wx("FIR(step, [" + list + "])")), wantStep);
}

TEST_F(Filters, UnitsAndReference) {
    wx.set("i", curve({0, 1, 2}, {1, 2, 3}, units::Current));
    for (const char* e : {"FIR(i, [1])", "IIR(i, [1])", "LPF(i, 1)"}) {
        VectorPtr r = wx(e);
        ASSERT_NE(r, nullptr) << e;
        EXPECT_EQ(r->type, VD_REAL);
        EXPECT_EQ(r->phys, units::Current) << e;
        EXPECT_EQ(r->ref.phys, units::Time) << e;
        EXPECT_EQ(r->ref.name, "time") << e;
        EXPECT_EQ(r->ref.realValues, wx("i")->ref.realValues) << e;  // shared, not copied
    }
    // FIR and IIR work on indices: a curve without x values keeps none.
    wx.set("bare", makeRealVector({1, 2, 3}));
    VectorPtr r = wx("FIR(bare, [1, 1])");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), (std::vector<double>{2, 3, 5}));
    EXPECT_FALSE(r->ref.present());
}

TEST_F(Filters, EachRunStartsAfresh) {
    wx.set("runs", test::runs({curve({0, 1, 2}, {1, 2, 3}), curve({0, 1, 2, 3}, {10, 20, 30, 40})}, {"a", "b"}));
    struct Case { const char* expression; std::vector<double> want; };
    const Case cases[] = {
        {"FIR(runs, [0.5, 0.5])", {1, 1.5, 2.5, 10, 15, 25, 35}},  // history x[0] of each run
        {"IIR(runs, [1, 1])", {1, 3, 6, 10, 30, 60, 100}},
        {"LPF(runs, 1)", {1, 1, 1.5, 10, 10, 15, 22.5}},
    };
    for (const Case& c : cases) {
        VectorPtr r = wx(c.expression);
        ASSERT_NE(r, nullptr) << c.expression << wx.messages();
        EXPECT_EQ(reals(r), c.want) << c.expression;
        ASSERT_EQ(r->numDivisions(), 2u) << c.expression;
        EXPECT_EQ(r->divisionLength(0), 3u);
        EXPECT_EQ(r->label(1), "b");
        EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 2, 0, 1, 2, 3}));
    }
}

TEST_F(Filters, DegenerateInputGivesEmptyOrNaNResults) {
    wx.set("none", curve({}, {}));
    wx.set("one", curve({0}, {4}));
    wx.set("bare", makeRealVector({1, 2, 3}));
    wx.set("gap", evenCurve({1, NAN, 3, 4}));
    // No coefficients, no time constant, no x values for LPF, no data: empty, no message. NaN runs
    // on through the outputs that depend on it, and no further.
    wx.check({{"FIR(x, [])", "[]"}, {"IIR(x, [])", "[]"}, {"LPF(x, [])", "[]"}, {"LPF(bare, 1)", "[]"},
              {"FIR(none, [1, 2])", "[]"}, {"IIR(none, [1, 2])", "[]"}, {"LPF(none, 1)", "[]"},
              {"FIR(one, [1, 2, 3])", "[24]"}, {"IIR(one, [1, 2, 3], [1, 1])", "[9]"}, {"LPF(one, 1)", "[4]"},
              {"FIR(gap, [1, 1])", "[2, nan, nan, 7]"}, {"IIR(gap, [1, 0.5])", "[1, nan, nan, nan]"}});
}

}  // namespace
}  // namespace wavex

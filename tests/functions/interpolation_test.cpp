// Interp, XFromY, YFromX, PropagationDelay, XY, XYOrdered, Range, Ref and Coll: values, units,
// references, divisions and messages.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace wavex {
namespace {

using test::curve;
using test::reals;
using test::runs;
using test::strings;
using test::xs;

std::vector<double> grid(double from, double step, int n) {
    std::vector<double> g;
    for (int i = 0; i < n; ++i) g.push_back(i * step + from);
    return g;
}

class Interpolation : public ::testing::Test {
protected:
    test::Session wx;
    void TearDown() override { findOption("InterpOrder")->reset(); }
};

// ---- Interp ----

TEST_F(Interpolation, InterpCountsSpacingAndEnds) {
    std::vector<double> x = grid(0, 0.1, 11), sq;
    for (double v : x) sq.push_back(v * v);
    wx.set("sq", curve(x, sq));

    // Ten points over 0 ... 1, the end excluded.
    VectorPtr r = wx("Interp(sq, 10)");
    ASSERT_NE(r, nullptr) << wx.messages();
    ASSERT_EQ(xs(r).size(), 10u);
    for (int i = 0; i < 10; ++i) EXPECT_DOUBLE_EQ(xs(r)[i], i * 0.1);
    EXPECT_NEAR(reals(r)[9], 0.81, 1e-15);
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.name, "time");
    // With the end included: 0, 1/9, ..., 1.
    r = wx("Interp(sq, 10, 2, [1])");
    ASSERT_NE(r, nullptr);
    EXPECT_DOUBLE_EQ(xs(r)[1], 1.0 / 9);
    EXPECT_DOUBLE_EQ(xs(r)[9], 1);
    EXPECT_DOUBLE_EQ(reals(r)[9], 1);
    // A span of its own: four points from 0.25 to 0.75, end excluded.
    EXPECT_EQ(xs(wx("Interp(sq, [4, 0.25, 0.75])")), grid(0.25, 0.125, 4));

    // Spacing mode: 0.3 / 0.1 is 2.9999999999999996, and the allowance still counts the end.
    wx.set("short", curve({0, 0.1, 0.2, 0.3}, {0, 1, 2, 3}));
    r = wx("Interp(short, 0.1, 1, [0, 1])");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(xs(r), grid(0, 0.1, 4));
    // 0.25 over 0 ... 1 gives 5 points; a start of its own shifts them, the end plays no part.
    EXPECT_EQ(xs(wx("Interp(sq, 0.25, 2, [0, 1])")), grid(0, 0.25, 5));
    EXPECT_EQ(xs(wx("Interp(sq, [0.25, 0.5, 0.6], 2, [0, 1])")), grid(0.5, 0.25, 5));
}

TEST_F(Interpolation, InterpOrders) {
    wx.set("v", curve({0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}));
    wx.set("d", curve({0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}, units::Digital));
    wx.set("three", curve({0, 1, 2}, {0, 1, 4}));
    wx.check({
        {"Interp(v, [2, 0.5, 2.5])", "[0.25, 2.25]"},  // default (the option InterpOrder, 2): the parabola
        {"Interp(v, [2, 0.5, 2.5], 1)", "[0.5, 2.5]"},
        {"Interp(v, [2, 0.5, 2.5], 0)", "[0.5, 2.5]"},
        {"Interp(d, [2, 0.5, 2.5], -1)", "[0.5, 2.5]"},  // -1: by type, linear for a digital signal
        {"Interp(v, [2, 0.5, 2.5], -1)", "[0.25, 2.25]"},
        {"Interp(three, [3, -1, 5], 5)", "[1, 1, 9]"},  // order 5 on three points is order 2
    });
    EXPECT_EQ(wx.wx.setOption("InterpOrder", "1"), "");
    wx.check({{"Interp(v, [2, 0.5, 2.5])", "[0.5, 2.5]"}});
}

TEST_F(Interpolation, InterpWithoutReferenceSinglePointsAndDivisions) {
    // No reference: x are the indices, and the result has none.
    VectorPtr r = wx("Interp([0, 10, 20], 4, 1)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), (std::vector<double>{0, 5, 10, 15}));
    EXPECT_FALSE(r->ref.present());

    // One point: passed through with the option (nothing else set), else held.
    wx.set("one", curve({2}, {7}));
    r = wx("Interp(one, 5, 2, [0, 0, 1])");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), std::vector<double>{7});
    EXPECT_EQ(xs(r), std::vector<double>{2});
    EXPECT_EQ(r->phys, units::Number);
    EXPECT_EQ(reals(wx("Interp(one, [3, 0, 3])")), (std::vector<double>{7, 7, 7}));
    // An empty curve gives an empty result; a falling span is filled in order.
    wx.set("empty", curve({}, {}));
    wx.set("line", curve({0, 1, 2, 3}, {0, 10, 20, 30}));
    wx.check({{"Interp(empty, 5)", "[]"}, {"Interp(line, [3, 3, 0], 1, [1])", "[30, 15, 0]"}});

    // Each run resampled on its own.
    wx.set("runs", runs({curve({0, 1, 2}, {0, 1, 2}), curve({0, 2, 4}, {5, 3, 1})}, {"a", "b"}));
    r = wx("Interp(runs, 2)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{0, 1, 5, 3}));
    EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 0, 2}));
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->label(1), "b");
}

TEST_F(Interpolation, InterpRefusals) {
    wx.set("v", curve({0, 1, 2}, {0, 1, 4}));
    const std::string fewer = "Need at least 2 points for interpolation in function 'Interp'";
    const std::string invalid = "Invalid data for 'Interp'. Data has no reference or interval<=0";
    wx.expectFails("Interp(v, 1.9)", fewer);
    wx.expectFails("Interp(v, NaN)", fewer);
    wx.expectFails("Interp(v, [])", fewer);
    wx.expectFails("Interp(v, 5, 2, [0, 1])", fewer);  // spacing 5 over a span of 2: one point
    wx.expectFails("Interp(v, 0, 2, [0, 1])", invalid);
    wx.expectFails("Interp([1, 2, 3], 0.5, 2, [0, 1])", invalid);
    wx.expectFails("Interp(v, 1e15)", "Too many points (1e+15) for interpolation in function 'Interp'");
    wx.expectFails("Interp(v, 1e-300, 2, [0, 1])",
                "Too many points (2e+300) for interpolation in function 'Interp'");
    wx.expectFails("Interp(v, Inf)", "Too many points (inf) for interpolation in function 'Interp'");
}

TEST_F(Interpolation, ComplexReferencesAreReadByTheirRealParts) {
    // A response over frequencies kept as complex numbers.
    auto v = std::make_shared<Vector>(*makeRealVector({0, 10, 20}, units::Voltage));
    v->ref = Reference::fromComplex({{100, 0}, {200, 0}, {300, 0}}, units::Frequency, "frequency");
    wx.set("ac", v);
    VectorPtr r = wx("Interp(ac, 4, 1, [1])");
    ASSERT_NE(r, nullptr) << wx.messages();
    const double want[] = {0, 20.0 / 3, 40.0 / 3, 20};
    ASSERT_EQ(r->size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(r->real[i], want[i]);
    ASSERT_EQ(r->ref.type, VD_COMPLEX);
    EXPECT_EQ(r->ref.cplx()[1], Complex(100 + 200.0 / 3, 0));
    EXPECT_EQ(r->ref.name, "frequency");
    EXPECT_EQ(reals(wx("XFromY(ac, 15, 1)")), std::vector<double>{250});
    EXPECT_EQ(reals(wx("Ref(ac)")), std::vector<double>{});
    EXPECT_EQ(test::complexes(wx("Ref(ac)")), (std::vector<Complex>{100, 200, 300}));
}

// ---- XFromY, YFromX ----

TEST_F(Interpolation, CrossingsOfASine) {
    std::vector<double> x = grid(0, 0.01, 201), y;
    for (double t : x) y.push_back(std::sin(2 * M_PI * t));
    wx.set("v", curve(x, y));
    auto near = [](const VectorPtr& r, std::vector<double> want) {
        ASSERT_NE(r, nullptr);
        ASSERT_EQ(r->size(), want.size());
        for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(r->real[i], want[i], 1e-12);
    };
    // sin(2πt) starts on 0 and ends a hair below it: two periods give four crossings.
    near(wx("XFromY(v, 0)"), {0, 0.5, 1, 1.5});
    near(wx("XFromY(v, 0, 2, 1)"), {0, 1});
    near(wx("XFromY(v, 0, 0, -7)"), {0.5, 1.5});  // any negative direction: falling
    // Quadratic interpolation finds asin(0.5) / 2π twenty times closer than the chord: the root
    // of the parabola through 0.07, 0.08, 0.09 is 1.967e-6 off, the chord's 4.10e-5.
    VectorPtr quad = wx("XFromY(v, 0.5, 2, 1)"), line = wx("XFromY(v, 0.5, 1, 1)");
    ASSERT_EQ(quad->size(), 2u);
    EXPECT_NEAR(std::fabs(quad->real[0] - 1.0 / 12), 1.967e-6, 1e-9);
    EXPECT_NEAR(std::fabs(line->real[0] - 1.0 / 12), 4.105e-5, 1e-8);
    // Units: x values in the x unit.
    EXPECT_EQ(quad->phys, units::Time);
    EXPECT_EQ(quad->ref.phys, units::Voltage);
    EXPECT_FALSE(quad->ref.present());
    // No crossing: an empty result, no message.
    VectorPtr none = wx("XFromY(v, 2)");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->size(), 0u);
    EXPECT_EQ(wx.messages(), "");

    // YFromX: the y at an x, from the parabola through 0.11, 0.12, 0.13 (1.12e-5 off) as Interp
    // picks it; on a point, its y.
    VectorPtr at = wx("YFromX(v, 0.125)");
    ASSERT_EQ(at->size(), 1u);
    EXPECT_NEAR(std::fabs(at->real[0] - std::sin(M_PI / 4)), 1.1215e-5, 1e-9);
    EXPECT_NEAR(at->real[0], wx("Interp(v, [2, 0.125, 0.135])")->real[0], 1e-15);
    near(wx("YFromX(v, 0.25)"), {1});
    EXPECT_EQ(at->phys, units::Voltage);
    EXPECT_EQ(at->ref.phys, units::Time);
    wx.check({{"YFromX(v, 3)", "[]"}});
}

TEST_F(Interpolation, CrossingSearchesPerRunAndBadInput) {
    // A triangle: exact under any order. Run a crosses 1.5 twice, run b not at all.
    wx.set("runs", runs({curve({0, 1, 2, 3, 4}, {0, 1, 2, 1, 0}), curve({0, 1}, {0, 1})}, {"a", "b"}));
    VectorPtr r = wx("XFromY(runs, 1.5, 1)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{1.5, 2.5}));
    EXPECT_EQ(r->numDivisions(), 2u);
    EXPECT_EQ(r->divisionLength(1), 0u);
    EXPECT_EQ(r->label(0), "a");
    // Levels that step with the runs.
    wx.set("levels", runs({curve({0}, {1.5}), curve({0}, {0.25})}, {}));
    EXPECT_EQ(reals(wx("XFromY(runs, levels, 1)")), (std::vector<double>{1.5, 2.5, 0.25}));

    wx.expectFails("XFromY([1, 2, 3], 2)", "Argument 1 in function 'XFromY' has no reference (xvalues)");
    wx.expectFails("YFromX([1, 2, 3], 2)", "Argument 1 in function 'YFromX' has no reference (xvalues)");
    // A one-point curve gives its one point.
    wx.set("one", curve({3}, {7}));
    wx.check({{"YFromX(one, 3)", "[7]"}});
}

// ---- PropagationDelay ----

// A clock and a copy of it a quarter earlier, both triangles between 0 and 1: their rising
// crossings of 0.5 lie at 0.5, 2.5, 4.5 and 0.25, 2.25, 4.25, their falling ones a unit later.
class Delay : public Interpolation {
protected:
    void SetUp() override {
        wx.set("clk", curve({0, 1, 2, 3, 4, 5, 6}, {0, 1, 0, 1, 0, 1, 0}));
        wx.set("early", curve({-0.25, 0.75, 1.75, 2.75, 3.75, 4.75, 5.75}, {0, 1, 0, 1, 0, 1, 0}, units::Voltage,
                           units::Time, "t2"));
    }
};

TEST_F(Delay, EachEdgePairsWithAnEarlierEdgeOfTheSecondSignal) {
    // A = 0.5, 2.5, 4.5; B = 0.25, 2.25, 4.25. The cursor stops at B[0] < 0.5 and stays there.
    VectorPtr r = wx("PropagationDelay(clk, early, 0.5, 0.5)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{-0.25, -2.25, -4.25}));
    EXPECT_EQ(xs(r), (std::vector<double>{0.5, 2.5, 4.5}));
    EXPECT_EQ(r->phys, units::Time);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.name, "time");
    // Falling edges: A = 1.5, 3.5, 5.5; B = 1.25, 3.25, 5.25.
    EXPECT_EQ(reals(wx("PropagationDelay(clk, early, 0.5, 0.5, 0)")), (std::vector<double>{-0.25, -2.25, -4.25}));
    EXPECT_EQ(xs(wx("PropagationDelay(clk, early, 0.5, 0.5, -1)")), (std::vector<double>{1.5, 3.5, 5.5}));
    // The sixth argument changes nothing.
    EXPECT_EQ(reals(wx("PropagationDelay(clk, early, 0.5, 0.5, 1, 99)")), (std::vector<double>{-0.25, -2.25, -4.25}));
    // Swapped: every B (0.5, ...) is at or after A[0] = 0.25, the cursor runs off: no pair.
    // A pair needs B strictly before a: equal crossings do not pair. Levels of their own: clk at
    // 0.25 (0.25, 2.25, 4.25), early at 0.75 (0.5, 2.5, 4.5).
    wx.check({{"PropagationDelay(early, clk, 0.5, 0.5)", "[]"}, {"PropagationDelay(clk, clk, 0.5, 0.5)", "[]"},
              {"PropagationDelay(clk, early, 0.25, 0.75)", "[]"},
              {"PropagationDelay(clk, early, 0.75, 0.25)", "[-0.75, -2.75, -4.75]"}});

    wx.expectFails("PropagationDelay([0, 1], clk, 0.5, 0.5)",
                "Argument 1 in function 'PropagationDelay' has no reference (xvalues)");
    wx.expectFails("PropagationDelay(clk, [0, 1], 0.5, 0.5)",
                "Argument 2 in function 'PropagationDelay' has no reference (xvalues)");
}

// ---- XY, XYOrdered ----

TEST_F(Interpolation, CurvesFromTwoVectors) {
    auto named = [](std::vector<double> v, PhysType p, const char* name) {
        auto r = std::make_shared<Vector>(*makeRealVector(std::move(v), p));
        r->name = name;
        return r;
    };
    wx.set("y5", named({1, 2, 3, 4, 5}, units::Voltage, "out"));
    wx.set("x3", named({0.1, 0.2, 0.3}, units::Time, "t"));
    wx.set("x4", named({3, 1, 2, 1}, units::Time, "t"));
    wx.set("y4", named({10, 20, 30, 40}, units::Voltage, "out"));

    // y keeps its length; x values it lacks are NaN, extra ones dropped.
    VectorPtr r = wx("XY(y5, x3)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{1, 2, 3, 4, 5}));
    std::vector<double> x = xs(r);
    ASSERT_EQ(x.size(), 5u);
    EXPECT_EQ(std::vector<double>(x.begin(), x.begin() + 3), (std::vector<double>{0.1, 0.2, 0.3}));
    EXPECT_TRUE(std::isnan(x[3]) && std::isnan(x[4]));
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->ref.name, "t");
    EXPECT_EQ(xs(wx("XY(x3, y5)")), (std::vector<double>{1, 2, 3}));

    // Sorted by x, equal x in their order.
    r = wx("XYOrdered(y4, x4)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), (std::vector<double>{20, 40, 30, 10}));
    EXPECT_EQ(xs(r), (std::vector<double>{1, 1, 2, 3}));
    EXPECT_EQ(r->ref.name, "t");
    r = wx("XYOrdered(y5, x4)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->size(), 0u);
    EXPECT_EQ(wx.messages(), "");
}

// ---- Range, Ref, Coll ----

TEST_F(Interpolation, RangeCutsAnyKindWithItsReference) {
    wx.set("v", curve({0, 1, 2, 3, 4}, {10, 11, 12, 13, 14}));
    for (const char* e : {"Range(v, 2, 1)", "Range(v, -1)", "Range(v, 0, 5)", "Range(v, NaN)", "Range([], 0)"})
        wx.expectFails(e, "Invalid range in 'Range()' function");

    VectorPtr r = wx("Range(v, 3, 3)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), std::vector<double>{13});
    EXPECT_EQ(xs(r), std::vector<double>{3});
    r = wx("Range(v, 1.9, 3.7)");  // truncated: 1 ... 3
    EXPECT_EQ(reals(r), (std::vector<double>{11, 12, 13}));
    EXPECT_EQ(r->ref.name, "time");
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(reals(wx("Range(v, 3)")), (std::vector<double>{13, 14}));

    // Strings (each a copy; a null stays null) and complex values; no reference: unit 24.
    wx.set("s", makeStringVector({"a", std::nullopt, "c"}));
    r = wx("Range(s, 1)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(strings(r), (std::vector<std::string>{"<null>", "c"}));
    EXPECT_EQ(r->ref.phys, units::NoRef);
    wx.set("z", makeComplexVector({{1, 2}, {3, 4}}, units::Current));
    r = wx("Range(z, 1)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(test::complexes(r), std::vector<Complex>{Complex(3, 4)});
    EXPECT_EQ(r->phys, units::Current);

    // Per run.
    wx.set("runs", runs({curve({0, 1, 2}, {1, 2, 3}), curve({5, 6}, {7, 8})}, {}));
    EXPECT_EQ(reals(wx("Range(runs, 1)")), (std::vector<double>{2, 3, 8}));
    EXPECT_EQ(xs(wx("Range(runs, 0, 0)")), (std::vector<double>{0, 5}));
}

TEST_F(Interpolation, RefAndColl) {
    wx.set("v", curve({0.5, 1.5}, {1, 2}));
    VectorPtr r = wx("Ref(v)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), (std::vector<double>{0.5, 1.5}));
    EXPECT_EQ(r->phys, units::Time);
    EXPECT_EQ(r->ref.phys, units::NoRef);
    EXPECT_FALSE(r->ref.present());
    r = wx("Ref([1, 2])");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->size(), 0u);

    // The first point of each run, over the first x of each; an empty run gives NaN.
    wx.set("runs", runs({curve({0, 1}, {1, 2}), curve({5, 6}, {7, 8}), curve({}, {})}, {"a", "b", "c"}));
    EXPECT_EQ(reals(wx("Ref(runs)")), (std::vector<double>{0, 1, 5, 6}));
    r = wx("Coll(runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    ASSERT_EQ(r->size(), 3u);
    EXPECT_EQ(reals(r)[1], 7);
    EXPECT_TRUE(std::isnan(reals(r)[2]));
    EXPECT_EQ(xs(r)[0], 0);
    EXPECT_EQ(xs(r)[1], 5);
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->numDivisions(), 1u);
    // One run: the vector itself, shared.
    EXPECT_EQ(wx("Coll(v)"), wx.wx.findVector("v"));
}

}  // namespace
}  // namespace wavex

// Interpolation, resampling, crossing searches, the sort map and the range integrator.
#include "support/interpolation.hpp"
#include "support/range_integral.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

InterpOpts order(int m, int direction = 0, bool levelSearch = false) {
    InterpOpts o{};
    o.order = m;
    o.direction = direction;
    o.levelSearch = levelSearch;
    return o;
}

// Crossings of b (as values of a) and their point indices, in the order of the curve.
struct Crossings {
    std::vector<double> values;
    std::vector<long long> indices;
};
Crossings find(const std::vector<double>& a, const std::vector<double>& b, double level, InterpOpts opts) {
    YList<double> values;
    YList<long long> indices;
    support_FindYFromX(values, indices, a.data(), b.data(), static_cast<long long>(b.size()), level, opts);
    Crossings c;
    c.values.assign(values.oldestFirst(), values.oldestFirst() + values.size());
    c.indices.assign(indices.oldestFirst(), indices.oldestFirst() + indices.size());
    return c;
}

TEST(SupportInterp, PolynomialThroughTheStencil) {
    const double x[] = {0, 1, 3, 4}, cube[] = {0, 1, 27, 64}, square[] = {0, 1, 9, 16};
    // Exact at the points, exact for polynomials of its order, extrapolating outside.
    EXPECT_EQ(support_Interp(square, x, 3, order(2)), 9);
    EXPECT_DOUBLE_EQ(support_Interp(square, x, 2, order(2)), 4);
    EXPECT_DOUBLE_EQ(support_Interp(square, x, -2, order(2)), 4);
    EXPECT_DOUBLE_EQ(support_Interp(cube, x, 2, order(3)), 8);
    EXPECT_DOUBLE_EQ(support_Interp(cube, x, 5, order(3)), 125);
    EXPECT_DOUBLE_EQ(support_Interp(square, x, 0.5, order(1)), 0.5);
    EXPECT_EQ(support_Interp(square + 2, x + 2, 0, order(0)), 9);  // order 0: the first point
    // Equal x values have no polynomial through them.
    const double twice[] = {1, 1, 2}, ys[] = {0, 5, 5};
    EXPECT_FALSE(std::isfinite(support_Interp(ys, twice, 1.5, order(2))));
}

TEST(SupportResample, ReproducesPolynomialsOfItsOrderEverywhere) {
    // Uneven x; quadratic data: order 2 is exact inside and outside the data.
    std::vector<double> x = {0, 0.3, 1, 1.2, 2.5, 3}, y;
    for (double v : x) y.push_back(3 * v * v - v + 2);
    std::vector<double> out(9), t(9);
    support_Resample(y.data(), x.data(), 6, -1, 0.5, 9, 2, out.data(), t.data());
    for (int i = 0; i < 9; ++i) {
        EXPECT_DOUBLE_EQ(t[i], -1 + 0.5 * i);
        EXPECT_NEAR(out[i], 3 * t[i] * t[i] - t[i] + 2, 1e-12) << t[i];
    }
    // A point of the grid on a data point gives its y exactly; order 1 between them, a line.
    support_Resample(y.data(), x.data(), 6, 1, 0.1, 3, 1, out.data());
    EXPECT_EQ(out[0], y[2]);
    EXPECT_DOUBLE_EQ(out[1], y[2] + (y[3] - y[2]) * 0.5);
    // A cubic through the generic path.
    std::vector<double> c;
    for (double v : x) c.push_back(v * v * v);
    support_Resample(c.data(), x.data(), 6, 0.25, 0.5, 5, 3, out.data());
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(out[i], std::pow(0.25 + 0.5 * i, 3), 1e-12);
}

TEST(SupportResample, IndicesNegativeStepsAndBadPoints) {
    const double y[] = {0, 10, 20, 30};
    std::vector<double> out(4);
    support_Resample(y, nullptr, 4, 0.5, 1, 3, 1, out.data());  // x = indices
    EXPECT_EQ(out, (std::vector<double>{5, 15, 25, 0}));
    // A falling grid is swept from its far end: the same values, not an extrapolation from the
    // first stencil the cursor met.
    const double x[] = {0, 1, 2, 3}, sq[] = {0, 1, 4, 9};
    support_Resample(sq, x, 4, 2.5, -1, 3, 1, out.data());
    EXPECT_EQ(out, (std::vector<double>{6.5, 2.5, 0.5, 0}));

    // A vertical edge (a piecewise-linear step) stays a step on both sides; NaN touches only
    // the values next to it.
    const double xe[] = {0, 1, 1, 2}, ye[] = {0, 0, 5, 5};
    support_Resample(ye, xe, 4, 0.5, 0.5, 3, 2, out.data());
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0);  // on the edge: the first of the two points
    EXPECT_EQ(out[2], 5);
    const double xn[] = {0, 1, 2, 3, 4}, yn[] = {0, kNaN, 2, 3, 4};
    std::vector<double> five(4);
    support_Resample(yn, xn, 5, 0.5, 1, 4, 2, five.data());
    EXPECT_TRUE(std::isnan(five[0]));
    EXPECT_TRUE(std::isnan(five[1]));
    EXPECT_DOUBLE_EQ(five[2], 2.5);
    EXPECT_DOUBLE_EQ(five[3], 3.5);
    // An empty curve has nothing to give.
    support_Resample(y, x, 0, 0, 1, 2, 2, out.data());
    EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
}

TEST(SupportFindYFromX, WhereTheCurveReachesTheLevel) {
    // a = the point indices, so a linear crossing's value says where it lies.
    struct Case {
        std::vector<double> b;
        int direction;
        std::vector<double> values;
        std::vector<long long> indices;
    };
    const Case cases[] = {
        {{-1, 1}, 0, {0.5}, {0}},                          // passes between points
        {{-1, 3, -1}, 1, {0.25}, {0}},                     // rising only
        {{-1, 3, -1}, -1, {1.75}, {1}},                    // falling only
        {{-1, 0, 0, 1}, 0, {1}, {1}},                      // through a run on the level: once
        {{-1, 0, -1}, 0, {1}, {1}},                        // a touch reaches it once
        {{-1, 0, -1}, 1, {1}, {1}},                        //   arriving from below: rising
        {{-1, 0, -1}, -1, {}, {}},
        {{0, 0, 1, 2}, 1, {0}, {0}},                       // starts on the level, leaves rising
        {{-2, -1, 0}, 0, {2}, {2}},                        // ends on the level
        {{0, 0}, 0, {0}, {0}},                             // never leaves: no direction
        {{0, 0}, 1, {}, {}},
        {{-1, kNaN, 1}, 0, {}, {}},                        // NaN breaks the curve
        {{-1, 1, kNaN, 0, 1}, 0, {0.5, 3}, {0, 3}},        // and the next point starts afresh
        {{1, -1, 1, -1}, 0, {0.5, 1.5, 2.5}, {0, 1, 2}},  // in the order of the curve
        {{}, 0, {}, {}},
    };
    for (const Case& c : cases) {
        std::vector<double> a(c.b.size());
        for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<double>(i);
        Crossings r = find(a, c.b, 0, order(1, c.direction, true));
        EXPECT_EQ(r.values, c.values) << ::testing::PrintToString(c.b) << " direction " << c.direction;
        EXPECT_EQ(r.indices, c.indices) << ::testing::PrintToString(c.b);
    }
}

TEST(SupportFindYFromX, ListsNewestFirst) {
    const double a[] = {0, 1, 2, 3}, b[] = {-1, 1, -1, 1};
    YList<double> values;
    YList<long long> indices;
    support_FindYFromX(values, indices, a, b, 4, 0, order(1, 0, true));
    EXPECT_EQ(std::vector<double>(values.begin(), values.end()), (std::vector<double>{2.5, 1.5, 0.5}));
    values.reverse();
    EXPECT_EQ(values.head(), 0.5);
}

TEST(SupportFindYFromX, InterpolatesWithTheOrderAsked) {
    // Level search: where y = x² (order 2, exact) or x³ (order 3) reaches the level.
    std::vector<double> x = {0, 1, 2, 3}, sq = {0, 1, 4, 9}, cube = {0, 1, 8, 27};
    EXPECT_DOUBLE_EQ(find(x, sq, 2.25, order(2, 0, true)).values.at(0), 1.5);
    EXPECT_DOUBLE_EQ(find(x, sq, 2.5, order(1, 0, true)).values.at(0), 1.5);  // linear between 1 and 2
    EXPECT_NEAR(find(x, cube, 2, order(3, 0, true)).values.at(0), std::cbrt(2.0), 1e-14);
    EXPECT_NEAR(find(x, cube, 20, order(3, 0, true)).values.at(0), std::cbrt(20.0), 1e-13);
    // A vertical edge in the y values is crossed at its x.
    EXPECT_EQ(find({0, 1, 1, 2}, {0, 0, 1, 1}, 0.5, order(2, 0, true)).values, std::vector<double>{1});

    // Value search: y at an x (a = y, b = x) with the polynomial of y over x.
    EXPECT_DOUBLE_EQ(find(sq, x, 1.5, order(2)).values.at(0), 2.25);
    EXPECT_DOUBLE_EQ(find(cube, x, 1.5, order(3)).values.at(0), 3.375);
    EXPECT_EQ(find(sq, x, 2, order(2)).values, std::vector<double>{4});  // on a point: exact
    // x values that turn back reach an x several times; equal x values fall back to the line.
    EXPECT_EQ(find({10, 20, 30}, {0, 2, 0}, 1, order(1)).values, (std::vector<double>{15, 25}));
    EXPECT_EQ(find({0, 1, 3, 4}, {0, 1, 1, 2}, 1.5, order(2)).values, std::vector<double>{3.5});
}

TEST(SortMap, StableAscendingWithNaNLast) {
    const double v[] = {3, kNaN, 1, 3, -2, 1};
    std::vector<int64_t> map;
    sp_GetSortMap(v, 6, map);
    EXPECT_EQ(map, (std::vector<int64_t>{4, 2, 5, 0, 3, 1}));
    sp_GetSortMap(v, 0, map);
    EXPECT_TRUE(map.empty());
}

TEST(RangeIntegral, ClosedForms) {
    // Start and end inside one interval of y = x: one piece between the interpolated end values.
    const double x[] = {0, 0.25, 0.5, 0.75, 1};
    RangeIntegral r = support_RangeIntegral(x, x, 5, 0.3, 0.4, IntegralMode::Square);
    EXPECT_EQ(r.outcome, RangeOutcome::Done);
    EXPECT_DOUBLE_EQ(r.integral, (0.064 - 0.027) / 3);
    EXPECT_DOUBLE_EQ(r.span, 0.1);
    // Many points, through the partial sums: the trapezoid and the squared chords of sin x are
    // within O(h²) of the closed forms.
    std::vector<double> xs(100001), ys(100001);
    for (size_t i = 0; i < xs.size(); ++i) {
        xs[i] = static_cast<double>(i) / 100000;
        ys[i] = std::sin(xs[i]);
    }
    r = support_RangeIntegral(ys.data(), xs.data(), 100001, std::nullopt, std::nullopt, IntegralMode::Mean);
    EXPECT_NEAR(r.integral, 1 - std::cos(1.0), 1e-10);
    r = support_RangeIntegral(ys.data(), xs.data(), 100001, 0.123456, 0.654321, IntegralMode::Square);
    auto sq = [](double t) { return t / 2 - std::sin(2 * t) / 4; };
    EXPECT_NEAR(r.integral, sq(0.654321) - sq(0.123456), 1e-10);
    EXPECT_DOUBLE_EQ(r.span, 0.654321 - 0.123456);
}

TEST(RangeIntegral, OutcomesAndDegenerateCurves) {
    const double x[] = {0, 1, 2, 3}, y[] = {1, 2, 3, 4}, back[] = {0, 2, 1, 3};
    struct Case {
        const double* x;
        int64_t n;
        std::optional<double> start, end;
        RangeOutcome outcome;
    };
    const Case cases[] = {
        {x, 4, 2, 1, RangeOutcome::StartAfterEnd},
        {x, 4, 2, 2, RangeOutcome::SameStartEnd},
        {x, 4, 5, std::nullopt, RangeOutcome::OutOfRange},   // starts beyond the data
        {x, 4, -5, -4, RangeOutcome::OutOfRange},            // ends before it
        {x, 4, kNaN, std::nullopt, RangeOutcome::OutOfRange},
        {x, 0, 1, std::nullopt, RangeOutcome::OutOfRange},
        {back, 4, 1.5, std::nullopt, RangeOutcome::NonMonotonic},
        {back, 4, 0.5, std::nullopt, RangeOutcome::Done},   // reached once: fine
    };
    for (const Case& c : cases)
        EXPECT_EQ(support_RangeIntegral(y, c.x, c.n, c.start, c.end, IntegralMode::Mean).outcome, c.outcome)
            << (c.start ? *c.start : -99) << " " << (c.end ? *c.end : -99);

    // One point and no points: nothing to integrate over nothing.
    RangeIntegral one = support_RangeIntegral(y, x, 1, std::nullopt, std::nullopt, IntegralMode::Mean);
    EXPECT_EQ(one.integral, 0);
    EXPECT_EQ(one.span, 0);
    EXPECT_EQ(support_RangeIntegral(y, x, 0, std::nullopt, std::nullopt, IntegralMode::Mean).outcome,
              RangeOutcome::Done);
    // An end reached twice keeps the last point's y at the end x.
    RangeIntegral twice = support_RangeIntegral(y, back, 4, 0, 1.5, IntegralMode::Mean);
    EXPECT_EQ(twice.outcome, RangeOutcome::Done);
    EXPECT_DOUBLE_EQ(twice.span, 1.5);
}

}  // namespace
}  // namespace wavex

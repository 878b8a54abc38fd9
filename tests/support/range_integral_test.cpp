// The running average agrees with the range integrator it shares its pieces with.
#include "support/range_integral.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace wavex {
namespace {

TEST(SupportRunningAverage, EachPointIsTheRangeAverageUpToIt) {
    std::mt19937_64 gen(7);
    std::uniform_real_distribution<double> step(0.1, 2), value(-3, 3);
    const int n = 3000;
    std::vector<double> x(n), y(n), avg(n), rms(n);
    for (int i = 0; i < n; ++i) {
        x[i] = i ? x[i - 1] + step(gen) : 0;
        y[i] = value(gen);
    }
    support_RunningAverage(y.data(), x.data(), n, IntegralMode::Mean, avg.data());
    support_RunningAverage(y.data(), x.data(), n, IntegralMode::Square, rms.data());
    EXPECT_EQ(avg[0], y[0]);
    EXPECT_EQ(rms[0], std::fabs(y[0]));
    for (int i : {1, 2, 17, 1000, n - 1}) {
        RangeIntegral mean = support_RangeIntegral(y.data(), x.data(), i + 1, {}, {}, IntegralMode::Mean);
        RangeIntegral square = support_RangeIntegral(y.data(), x.data(), i + 1, {}, {}, IntegralMode::Square);
        EXPECT_NEAR(avg[i], mean.integral / mean.span, 1e-13) << i;
        EXPECT_NEAR(rms[i], std::sqrt(square.integral / square.span), 1e-13) << i;
    }

    // Without x values the indices serve.
    std::vector<double> index(n), overIndex(n);
    for (int i = 0; i < n; ++i) index[i] = i;
    support_RunningAverage(y.data(), index.data(), n, IntegralMode::Square, rms.data());
    support_RunningAverage(y.data(), nullptr, n, IntegralMode::Square, overIndex.data());
    EXPECT_EQ(overIndex, rms);
    support_RunningAverage(nullptr, nullptr, 0, IntegralMode::Mean, nullptr);  // nothing to do
}

}  // namespace
}  // namespace wavex

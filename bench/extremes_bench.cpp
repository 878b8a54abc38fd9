// Local extremes, cycle periods and histograms as the host calls them (callFunction, which
// allocates the result), at 10^6 and 10^7 points to show the work is linear.
// bench/peers_extremes.py does the same work with scipy and numpy.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <numbers>
#include <random>

namespace wavex {
namespace {

// n evenly spaced points over x in [0, 1] of a 1000-period sine plus normal noise of standard
// deviation 0.1: a noisy transient, about one point in three a local maximum.
const VectorPtr& noisySine(int64_t n) {
    return bench::curveOnce(n, [n](std::vector<double>& x, std::vector<double>& y) {
        std::mt19937_64 gen(7);
        std::normal_distribution<double> noise(0, 0.1);
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = static_cast<double>(i) / static_cast<double>(n - 1);
            y[i] = std::sin(2 * std::numbers::pi * 1000 * x[i]) + noise(gen);
        }
    });
}

// n standard normal values, the spread of a large Monte Carlo run.
const VectorPtr& spread(int64_t n) {
    static std::map<int64_t, VectorPtr> made;
    VectorPtr& v = made[n];
    if (!v) {
        std::mt19937_64 gen(8);
        std::normal_distribution<double> value(0, 1);
        std::vector<double> y(static_cast<size_t>(n));
        for (double& d : y) d = value(gen);
        v = makeRealVector(std::move(y), units::Voltage);
    }
    return v;
}

void BM_Maxima(benchmark::State& state) { bench::callFunctionLoop(state, "Maxima", {noisySine(state.range(0))}); }

// Only the 1000 crests stand out by 1.5 V.
void BM_MaximaProminence(benchmark::State& state) {
    bench::callFunctionLoop(state, "Maxima",
                            {noisySine(state.range(0)), makeScalar(NAN), makeStringVector({"prominence", "1.5"})});
}

// Every rising crossing of the default (midway) level: the 1000 cycles' and the many more that
// the noise adds around each.
void BM_CyclePeriod(benchmark::State& state) {
    bench::callFunctionLoop(state, "CyclePeriod", {noisySine(state.range(0))});
}

// 100 bins over the data's own range (one pass for the range, one to count).
void BM_Histogram(benchmark::State& state) {
    bench::callFunctionLoop(state, "Histogram", {spread(state.range(0)), makeScalar(100)});
}

BENCHMARK(BM_Maxima)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MaximaProminence)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CyclePeriod)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Histogram)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

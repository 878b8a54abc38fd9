// The range reductions over whole curves as the host calls them, at 10^6 and 10^7 points to
// show the work is linear. bench/peers_reductions.py does the same work with numpy.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <random>

namespace wavex {
namespace {

using bench::callFunctionLoop;

// n points over x in [0, 1], unevenly spaced, of uniform noise in [-1, 1]. Made once per size.
const VectorPtr& noise(int64_t n) {
    static std::map<int64_t, VectorPtr> made;
    VectorPtr& v = made[n];
    if (!v) {
        std::mt19937_64 gen(4);
        std::uniform_real_distribution<double> step(0.5, 1.5), value(-1, 1);
        std::vector<double> x(static_cast<size_t>(n)), y(static_cast<size_t>(n));
        double t = 0;
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = t;
            t += step(gen);
            y[i] = value(gen);
        }
        for (double& xi : x) xi /= x.back();
        v = makeCurve(std::move(x), std::move(y), units::Voltage, units::Time);
    }
    return v;
}

void call(benchmark::State& state, const char* name) { callFunctionLoop(state, name, {noise(state.range(0))}); }

void BM_Mean1(benchmark::State& state) { call(state, "Mean1"); }
void BM_RMS1(benchmark::State& state) { call(state, "RMS1"); }

BENCHMARK(BM_Mean1)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RMS1)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

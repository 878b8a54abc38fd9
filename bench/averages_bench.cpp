// avg, Rms, area and Truncate over whole curves as the host calls them, at 10^6 and 10^7 points to
// show the work is linear. bench/peers_averages.py does the same work with numpy and scipy.
#include "bench_util.hpp"

#include <map>
#include <random>

namespace wavex {
namespace {

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

void BM_avg(benchmark::State& state) { bench::callFunctionLoop(state, "avg", {noise(state.range(0))}); }
void BM_Rms(benchmark::State& state) { bench::callFunctionLoop(state, "Rms", {noise(state.range(0))}); }
void BM_area(benchmark::State& state) { bench::callFunctionLoop(state, "area", {noise(state.range(0))}); }
// The middle half of the curve: a search for its ends and a copy of half the points.
void BM_Truncate(benchmark::State& state) {
    bench::callFunctionLoop(state, "Truncate", {noise(state.range(0)), makeScalar(0.25), makeScalar(0.75)});
}

BENCHMARK(BM_avg)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Rms)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_area)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Truncate)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

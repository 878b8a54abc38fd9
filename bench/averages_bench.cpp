// avg, Rms, area and Truncate over whole curves as the host calls them, at 10^6 and 10^7 points to
// show the work is linear. bench/peers_averages.py does the same work with numpy and scipy.
#include "bench_util.hpp"

namespace wavex {
namespace {

using bench::noise;

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

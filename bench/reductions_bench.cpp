// The range reductions over whole curves as the host calls them, at 10^6 and 10^7 points to
// show the work is linear. bench/peers_reductions.py does the same work with numpy.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>

namespace wavex {
namespace {

using bench::callFunctionLoop;
using bench::noise;

void call(benchmark::State& state, const char* name) { callFunctionLoop(state, name, {noise(state.range(0))}); }

void BM_Mean1(benchmark::State& state) { call(state, "Mean1"); }
void BM_RMS1(benchmark::State& state) { call(state, "RMS1"); }

BENCHMARK(BM_Mean1)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RMS1)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

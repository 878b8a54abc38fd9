// Resampling and crossing searches as the host calls them (callFunction, which allocates the
// result), at 10^6 and 10^7 points to show the work is linear. bench/peers_interpolation.py
// does the same work with numpy.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>

namespace wavex {
namespace {

using bench::sink;

// n points over x in [0, 1] of a sine of 1000 periods: a long transient as an adaptive-step
// simulator writes it, its step swinging smoothly between 0.5 and 1.5 times the mean every few
// thousand points.
const VectorPtr& transient(int64_t n) {
    return bench::curveOnce(n, [](std::vector<double>& x, std::vector<double>& y) {
        double t = 0;
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = t;
            t += 1 + 0.5 * std::sin(static_cast<double>(i) * 0.001);
        }
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] /= x.back();
            y[i] = std::sin(2 * std::numbers::pi * 1000 * x[i]);
        }
    });
}

void call(benchmark::State& state, const char* name, std::vector<VectorPtr> args) {
    bench::callFunctionLoop(state, name, args);
}

// n points resampled onto n evenly spaced points, quadratic.
void BM_Interp(benchmark::State& state) {
    call(state, "Interp", {transient(state.range(0)), makeScalar(static_cast<double>(state.range(0)))});
}

// Every crossing of 0 (2000 of them), quadratic.
void BM_XFromY(benchmark::State& state) { call(state, "XFromY", {transient(state.range(0)), makeScalar(0)}); }

BENCHMARK(BM_Interp)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XFromY)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

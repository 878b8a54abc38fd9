// FIR with 16 taps and IIR with 2 coefficients over 10^7 points, as the host calls them
// (callFunction, which allocates the result). bench/peers_filters.py runs scipy.signal.lfilter
// on the same data with the same coefficients.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace wavex {
namespace {

using bench::sink;

constexpr int64_t kPoints = 10'000'000;

// y_i = sin(0.001·i) + 0.25·cos(0.37·i) over x_i = i µs.
const VectorPtr& signal() {
    static const VectorPtr v = [] {
        std::vector<double> x(kPoints), y(kPoints);
        for (size_t i = 0; i < x.size(); ++i) {
            const auto t = static_cast<double>(i);
            x[i] = t * 1e-6;
            y[i] = std::sin(0.001 * t) + 0.25 * std::cos(0.37 * t);
        }
        return makeCurve(std::move(x), std::move(y), units::Voltage, units::Time);
    }();
    return v;
}

void call(benchmark::State& state, const char* name, std::vector<VectorPtr> args) {
    bench::callFunctionLoop(state, name, args);
}

// A triangular 16-tap average: c_k = (k + 1)/136.
void BM_FIR(benchmark::State& state) {
    std::vector<double> taps(16);
    for (size_t k = 0; k < taps.size(); ++k) taps[k] = static_cast<double>(k + 1) / 136;
    call(state, "FIR", {signal(), makeRealVector(taps)});
}

// y[n] = 0.25·x[n] + 0.75·y[n−1].
void BM_IIR(benchmark::State& state) { call(state, "IIR", {signal(), makeRealVector({0.25, 0.75})}); }

BENCHMARK(BM_FIR)->Arg(kPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IIR)->Arg(kPoints)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

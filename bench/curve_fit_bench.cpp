// Polynomial fits as the host calls them: CurveFit of order 5 at 10^6 and 10^7 points, and
// CurveFitPlot (the fit and its curve) at 10^6. bench/peers_curvefit.py does the same work with
// numpy.polyfit and numpy.polyval.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>

namespace wavex {
namespace {

// n points of a transient over 1 ms: a slow cosine with a little ripple.
const VectorPtr& transient(int64_t n) {
    return bench::curveOnce(n, [n](std::vector<double>& x, std::vector<double>& y) {
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = 1e-3 * static_cast<double>(i) / static_cast<double>(n - 1);
            y[i] = std::cos(2 * std::numbers::pi * 1.5e3 * x[i]) + 0.01 * std::sin(0.7 * static_cast<double>(i));
        }
    });
}

void BM_CurveFit(benchmark::State& state) {
    bench::callFunctionLoop(state, "CurveFit", {transient(state.range(0)), makeScalar(5)});
}
void BM_CurveFitPlot(benchmark::State& state) {
    bench::callFunctionLoop(state, "CurveFitPlot", {transient(state.range(0)), makeScalar(5)});
}

BENCHMARK(BM_CurveFit)->Arg(1'000'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveFitPlot)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

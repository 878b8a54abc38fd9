// integ and diff over uneven x-values, and the special functions erf and gamma, at 10^7 points,
// called as the host calls them (callFunction, which allocates the result), beside a plain copy
// loop of the same size: the memory-bandwidth bound. integ and diff read y and x and write one
// vector (one and a half copies' worth of bytes); erf and gamma are bound by their arithmetic.
// bench/peers_calculus.py gives numpy and scipy the same work on data made the same way.
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <random>
#include <string>

namespace wavex {
namespace {

constexpr int64_t kPoints = 10'000'000;

// A transient waveform as a simulator writes it: time steps uniform in [0.1, 1.9] ns (mean
// 1 ns), y a sine of those times plus noise.
VectorPtr unevenCurve(int64_t n) {
    std::mt19937_64 gen(11);
    std::uniform_real_distribution<double> step(0.1e-9, 1.9e-9), noise(-0.01, 0.01);
    std::vector<double> x(static_cast<size_t>(n)), y(static_cast<size_t>(n));
    double t = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = t;
        y[i] = std::sin(2 * 3.141592653589793 * 1e6 * t) + noise(gen);
        t += step(gen);
    }
    return makeCurve(std::move(x), std::move(y), units::Voltage, units::Time);
}

VectorPtr uniform(int64_t n, double low, double high, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(low, high);
    std::vector<double> y(static_cast<size_t>(n));
    for (double& v : y) v = u(gen);
    return makeRealVector(std::move(y));
}

void callUnary(benchmark::State& state, const char* name, const VectorPtr& argument) {
    const FuncInfo* f = functionTable().find(name);
    if (!f) {
        state.SkipWithError((std::string(name) + " is not registered").c_str());
        return;
    }
    const auto sink = std::make_shared<CollectingMessageHandler>();
    const VectorPtr args[] = {argument};
    ScpParseContext context;
    for (auto _ : state) {
        VectorPtr out;
        if (callFunction(*f, args, sink, context, &out) != FUNC_OK) {
            state.SkipWithError("the call failed");
            return;
        }
        benchmark::DoNotOptimize(out->size());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(argument->size()));
}

void BM_Integ(benchmark::State& state) {
    static const VectorPtr curve = unevenCurve(kPoints);
    callUnary(state, "integ", curve);
}

void BM_Diff(benchmark::State& state) {
    static const VectorPtr curve = unevenCurve(kPoints);
    callUnary(state, "diff", curve);
}

// Arguments where erf is neither 0 nor ±1: both the series (|x| < 1.22) and the fraction.
void BM_Erf(benchmark::State& state) {
    static const VectorPtr x = uniform(kPoints, -4, 4, 12);
    callUnary(state, "erf", x);
}

void BM_Gamma(benchmark::State& state) {
    static const VectorPtr x = uniform(kPoints, 0.01, 50, 13);
    callUnary(state, "gamma", x);
}

BENCHMARK(BM_Integ)->Arg(kPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Diff)->Arg(kPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Erf)->Arg(kPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Gamma)->Arg(kPoints)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

// The element-wise family at 10^7 points, called as the host calls it (callFunction, which
// allocates the result), beside a plain copy of the same size, the memory-bandwidth bound.
// bench/compare.py runs these next to numpy doing the same work.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <random>

namespace wavex {
namespace {

using bench::callFunctionLoop;
using bench::sink;

constexpr size_t kPoints = 10'000'000;

// Uniform in [-100, 100]; the complex vector's parts likewise (bench/compare.py uses the same).
const VectorPtr& realData() {
    static const VectorPtr v = [] {
        std::mt19937_64 gen(1);
        std::uniform_real_distribution<double> u(-100, 100);
        std::vector<double> y(kPoints);
        for (double& x : y) x = u(gen);
        return makeRealVector(std::move(y));
    }();
    return v;
}

const VectorPtr& complexData() {
    static const VectorPtr v = [] {
        std::mt19937_64 gen(2);
        std::uniform_real_distribution<double> u(-100, 100);
        std::vector<Complex> z(kPoints);
        for (Complex& c : z) c = Complex(u(gen), u(gen));
        return makeComplexVector(std::move(z));
    }();
    return v;
}

void callNamed(benchmark::State& state, const char* name, const VectorPtr& arg) {
    callFunctionLoop(state, name, {arg}, static_cast<int64_t>(arg->size()));
}

void Elementwise_DbComplex(benchmark::State& state) { callNamed(state, "db", complexData()); }
void Elementwise_SinReal(benchmark::State& state) { callNamed(state, "sin", realData()); }
void Elementwise_PhaseComplex(benchmark::State& state) { callNamed(state, "phase", complexData()); }
void Elementwise_MeanReal(benchmark::State& state) { callNamed(state, "mean", realData()); }

// The baseline of every ratio compare.py prints.
void Elementwise_CopyLoop(benchmark::State& state) { bench::copyLoop(state, realData()->real); }

// The whole host path for one scalar: parse, look up, check, call, assemble.
void Elementwise_ScalarSinEvaluate(benchmark::State& state) {
    Interpreter wx(sink());
    for (auto _ : state) benchmark::DoNotOptimize(wx.evaluate("sin(1)"));
}

// The host's call alone, with the argument already made.
void Elementwise_ScalarSinCall(benchmark::State& state) {
    const FuncInfo* f = functionTable().find("sin");
    VectorPtr arg = makeScalar(1);
    ScpParseContext context;
    for (auto _ : state) {
        VectorPtr out;
        callFunction(*f, std::span(&arg, 1), sink(), context, &out);
        benchmark::DoNotOptimize(out);
    }
}

// The evaluator on a chain of operators over a large vector.
void Elementwise_TimesPlusEvaluate(benchmark::State& state) {
    if (!functionTable().find("_Times") || !functionTable().find("_Plus")) {
        state.SkipWithError("skipped: the operators _Times and _Plus are not registered yet");
        return;
    }
    Interpreter wx(sink());
    wx.setVector("v", realData());
    for (auto _ : state) {
        VectorPtr r = wx.evaluate("v*2+1");
        if (!r) {
            state.SkipWithError("v*2+1 failed");
            return;
        }
        benchmark::DoNotOptimize(r->size());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kPoints));
}

BENCHMARK(Elementwise_DbComplex)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_SinReal)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_PhaseComplex)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_MeanReal)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_CopyLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_TimesPlusEvaluate)->Unit(benchmark::kMillisecond);
BENCHMARK(Elementwise_ScalarSinEvaluate);
BENCHMARK(Elementwise_ScalarSinCall);

}  // namespace
}  // namespace wavex

// User hash tables, templates, probe expressions and the conditional functions, called as the
// host calls them.
#include "bench_util.hpp"
#include "wavex/interpreter_scope.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <random>

namespace wavex {
namespace {

using bench::callFunctionLoop;

VectorPtr call(const char* name, std::vector<VectorPtr> args) {
    VectorPtr out;
    callFunction(*functionTable().find(name), args, bench::sink(), ScpParseContext{}, &out);
    return out;
}

std::vector<StrElem> numbered(const char* prefix, size_t n) {
    std::vector<StrElem> s(n);
    for (size_t i = 0; i < n; ++i) s[i] = prefix + std::to_string(i);
    return s;
}

// 10^5 keys into one table (101 fixed buckets: each add scans a chain of about n/101).
void BM_HashAdd(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    VectorPtr keys = makeStringVector(numbered("key", n)), values = makeStringVector(numbered("value", n));
    for (auto _ : state) {
        VectorPtr h = call("HashCreate", {});
        benchmark::DoNotOptimize(call("HashAdd", {h, keys, values}));
        call("HashDelete", {h});
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n));
}
BENCHMARK(BM_HashAdd)->Arg(100'000)->Unit(benchmark::kMillisecond);

void BM_HashSearch(benchmark::State& state) {
    auto n = static_cast<size_t>(state.range(0));
    VectorPtr keys = makeStringVector(numbered("key", n)), values = makeStringVector(numbered("value", n));
    VectorPtr h = call("HashCreate", {});
    call("HashAdd", {h, keys, values});
    VectorPtr fallback = makeStringVector({"none"});
    callFunctionLoop(state, "HashSearch", {h, keys, fallback});
    call("HashDelete", {h});
}
BENCHMARK(BM_HashSearch)->Arg(100'000)->Unit(benchmark::kMillisecond);

// A 1 MB template with a keyword every 40 bytes.
void BM_ResolveTemplate(benchmark::State& state) {
    std::string text;
    while (text.size() < 1'000'000) text += "the value of %NAME% is %VALUE% ohms; ";
    VectorPtr tmpl = makeStringVector({text});
    VectorPtr names = makeStringVector({"NAME", "VALUE"}), values = makeStringVector({"R1", "1k"});
    callFunctionLoop(state, "ResolveTemplate", {tmpl, names, values}, static_cast<int64_t>(text.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ResolveTemplate)->Unit(benchmark::kMillisecond);

// 10^4 terms: V(n1) + V(n2, n0) + I(R3) + ...
void BM_ParseProbeExpression(benchmark::State& state) {
    std::string text;
    for (int i = 0; i < state.range(0); ++i) {
        if (i) text += " + ";
        text += i % 3 == 0 ? "V(n" + std::to_string(i) + ")" : i % 3 == 1 ? "V(n" + std::to_string(i) + ", n0)"
                                                                            : "I(R" + std::to_string(i) + ")";
    }
    VectorPtr expression = makeStringVector({text});
    auto sink = std::make_shared<CollectingMessageHandler>();
    Interpreter wx(sink);  // the rewriter is the interpreter's
    InterpreterScope scope(&wx);
    callFunctionLoop(state, "ParseProbeExpression", {expression});
}
BENCHMARK(BM_ParseProbeExpression)->Arg(2'500)->Arg(10'000)->Unit(benchmark::kMillisecond);

constexpr int64_t kPoints = 10'000'000;

VectorPtr randomVector(unsigned seed, double lo, double hi) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(lo, hi);
    std::vector<double> y(static_cast<size_t>(kPoints));
    for (double& x : y) x = u(gen);
    return makeRealVector(std::move(y));
}

void BM_IffV(benchmark::State& state) {
    static const VectorPtr c = randomVector(3, -1, 1), a = randomVector(4, 0, 1), b = randomVector(5, 0, 1);
    callFunctionLoop(state, "IffV", {c, a, b}, kPoints);
}
BENCHMARK(BM_IffV)->Unit(benchmark::kMillisecond);

void BM_MaxN(benchmark::State& state) {
    static const VectorPtr a = randomVector(4, 0, 1), b = randomVector(5, 0, 1), c = randomVector(6, 0, 1);
    callFunctionLoop(state, "MaxN", {a, b, c}, kPoints);
}
BENCHMARK(BM_MaxN)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

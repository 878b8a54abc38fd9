// What the benchmark suites share: a quiet message sink and the loop that calls a function as the
// host does.
#pragma once

#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace wavex::bench {

inline YRef<MessageHandler> sink() {
    static const auto s = std::make_shared<CollectingMessageHandler>();
    return s;
}

// A curve of n points in volts over seconds, its x and y written by fill(x, y) the first time a
// size is asked for and kept for the benchmarks that follow.
template <class Fill>
const VectorPtr& curveOnce(int64_t n, Fill fill) {
    static std::map<int64_t, VectorPtr> made;
    VectorPtr& v = made[n];
    if (!v) {
        std::vector<double> x(static_cast<size_t>(n)), y(static_cast<size_t>(n));
        fill(x, y);
        v = makeCurve(std::move(x), std::move(y), units::Voltage, units::Time);
    }
    return v;
}

// n points over x in [0, 1], unevenly spaced, of uniform noise in [-1, 1].
inline const VectorPtr& noise(int64_t n) {
    return curveOnce(n, [](std::vector<double>& x, std::vector<double>& y) {
        std::mt19937_64 gen(4);
        std::uniform_real_distribution<double> step(0.5, 1.5), value(-1, 1);
        double t = 0;
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = t;
            t += step(gen);
            y[i] = value(gen);
        }
        for (double& xi : x) xi /= x.back();
    });
}

// Calls `name` on `args` through callFunction once per iteration; `items` elements an iteration
// (state.range(0) when not given).
inline void callFunctionLoop(benchmark::State& state, const char* name, const std::vector<VectorPtr>& args,
                             int64_t items = -1) {
    const FuncInfo* f = functionTable().find(name);
    if (!f) {
        state.SkipWithError((std::string(name) + " is not registered").c_str());
        return;
    }
    ScpParseContext context;
    for (auto _ : state) {
        VectorPtr out;
        if (callFunction(*f, args, sink(), context, &out) != FUNC_OK) {
            state.SkipWithError("the call failed");
            return;
        }
        benchmark::DoNotOptimize(out->size());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * (items < 0 ? state.range(0) : items));
}

// The memory-bandwidth bound: a fresh array filled by a plain loop, as a function making its
// result does. Pattern recognition is off so that the loop stays a loop, not a library copy.
template <class T>
__attribute__((optimize("no-tree-loop-distribute-patterns"))) inline void copyLoop(benchmark::State& state,
                                                                                    const Array<T>& in) {
    for (auto _ : state) {
        Array<T> out(in.size());
        const T* src = in.data();
        T* dst = out.data();
        for (size_t i = 0; i < in.size(); ++i) dst[i] = src[i];
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(in.size()));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(in.size() * 2 * sizeof(T)));
}

}  // namespace wavex::bench

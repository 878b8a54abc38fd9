// What the benchmark suites share: a quiet message sink and the loop that calls a function as the
// host does.
#pragma once

#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace wavex::bench {

inline YRef<MessageHandler> sink() {
    static const auto s = std::make_shared<CollectingMessageHandler>();
    return s;
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

}  // namespace wavex::bench

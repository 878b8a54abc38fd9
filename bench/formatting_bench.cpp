// FormatNumber of 10^6 values in each of its styles with 4 significant figures, called as the host
// calls it. The values span thirty decades, so that the engineering style uses every prefix; the
// percent style takes fractions in [0, 1). bench/peers_sorting.py formats the same values in Python.
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

constexpr int64_t kValues = 1'000'000;

// u_i uniform in [0, 1) as in sorting_bench.cpp; the other styles take v_i = 10^(30 u_i - 15),
// 1e-15 to 1e15.
VectorPtr makeValues(bool spread) {
    std::vector<double> x(kValues);
    for (int64_t i = 0; i < kValues; ++i) {
        double u = static_cast<double>((static_cast<uint64_t>(i) * 0x9E3779B97F4A7C15ull) >> 11) * 0x1p-53;
        x[i] = spread ? std::pow(10.0, 30 * u - 15) : u;
    }
    return makeRealVector(std::move(x));
}

void formatNumber(benchmark::State& state, const char* style) {
    static const VectorPtr fractions = makeValues(false), spread = makeValues(true);
    const FuncInfo* f = functionTable().find("FormatNumber");
    std::vector<VectorPtr> args = {std::string_view(style) == "%" ? fractions : spread, makeScalar(4)};
    if (*style) args.push_back(makeStringVector({style}));
    auto sink = std::make_shared<CollectingMessageHandler>();
    ScpParseContext context;
    for (auto _ : state) {
        VectorPtr out;
        if (!f || callFunction(*f, args, sink, context, &out) != FUNC_OK) {
            state.SkipWithError("FormatNumber failed");
            return;
        }
        benchmark::DoNotOptimize(out->size());
    }
    state.SetItemsProcessed(state.iterations() * kValues);
}

void BM_FormatNumber_Eng(benchmark::State& state) { formatNumber(state, ""); }
void BM_FormatNumber_NoEng(benchmark::State& state) { formatNumber(state, "noeng"); }
void BM_FormatNumber_Int(benchmark::State& state) { formatNumber(state, "int"); }
void BM_FormatNumber_Percent(benchmark::State& state) { formatNumber(state, "%"); }

BENCHMARK(BM_FormatNumber_Eng)->Name("BM_FormatNumber_Eng/1000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FormatNumber_NoEng)->Name("BM_FormatNumber_NoEng/1000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FormatNumber_Int)->Name("BM_FormatNumber_Int/1000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FormatNumber_Percent)->Name("BM_FormatNumber_Percent/1000000")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

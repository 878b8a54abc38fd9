// Tables of text data and the Monte Carlo report, as the host calls them: SelectRows and
// QueryData on a table of 10^6 rows (bench/peers_tables.py does the same with Python's csv
// module), and BuildMclogHTML of 20 measurements × 10^5 runs. Elements are rows (runs × 20).
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace wavex {
namespace {

constexpr int64_t kRows = 1'000'000;
constexpr const char* kCondition = "gain > 20 && corner == 'ss'";

// Row i of the table (bench/peers_tables.py writes the same).
std::string row(int64_t i) {
    static const char* corners[] = {"ss", "tt", "ff"};
    return "r" + std::to_string(i) + "," + std::to_string((i * 37) % 400 / 10.0) + "," + corners[i % 3] + "," +
           std::to_string(1e6 + static_cast<double>(i % 1000));
}

const VectorPtr& table() {
    static const VectorPtr t = [] {
        std::vector<StrElem> lines{std::string("name,gain,corner,bw")};
        for (int64_t i = 0; i < kRows; ++i) lines.emplace_back(row(i));
        return makeStringVector(std::move(lines));
    }();
    return t;
}

// The condition is evaluated by the interpreter: one must be alive.
Interpreter& interpreter() {
    static Interpreter wx(bench::sink());
    return wx;
}

void BM_SelectRows(benchmark::State& state) {
    interpreter();
    bench::callFunctionLoop(state, "SelectRows", {table(), makeStringVector({std::string(kCondition)})}, kRows);
}

void BM_QueryData(benchmark::State& state) {
    interpreter();
    bench::callFunctionLoop(state, "QueryData",
                            {table(), makeStringVector({std::string("bw")}), makeStringVector({std::string(kCondition)})},
                            kRows);
}

void BM_BuildMclogHTML(benchmark::State& state) {
    constexpr int kMeasurements = 20, kRuns = 100'000;
    std::vector<VectorPtr> args{makeStringVector({std::string("/tmp/wavex_bench_mclog.html")}), nullptr};
    std::vector<StrElem> names;
    for (int m = 0; m < kMeasurements; ++m) {
        names.emplace_back("m" + std::to_string(m));
        args.push_back(bench::noise(kRuns));
    }
    args[1] = makeStringVector(std::move(names));
    bench::callFunctionLoop(state, "BuildMclogHTML", args, int64_t{kMeasurements} * kRuns);
    std::remove("/tmp/wavex_bench_mclog.html");
}

BENCHMARK(BM_SelectRows)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QueryData)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildMclogHTML)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

// Sorting, search and set functions on large inputs, called as the host calls them (callFunction,
// which allocates the result): SortIdx2 of 10^7 reals, SortIdx and Sort of 10^6 strings, Search of
// 10^5 and 10^6 sought strings in as many (the two sizes show that the cost stays about linear),
// SetUnion of 10^6 strings. bench/peers_sorting.py does the same work with
// numpy and Python on the same data, made by formulas both sides share.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace wavex {
namespace {

// x_i = the top 53 bits of i * 0x9E3779B97F4A7C15 (mod 2^64) as a fraction: uniform in [0, 1).
VectorPtr uniformReals(int64_t n) {
    std::vector<double> x(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i)
        x[i] = static_cast<double>((static_cast<uint64_t>(i) * 0x9E3779B97F4A7C15ull) >> 11) * 0x1p-53;
    return makeRealVector(std::move(x));
}

// Node names as a simulator writes them, in both letter cases: "V(n<k>)" or "v(n<k>)" with
// k = (i * 2654435761 mod 2^32) mod 1000003 (so some repeat), from `offset` on.
VectorPtr nodeNames(int64_t n, int64_t offset = 0) {
    std::vector<StrElem> s;
    s.reserve(static_cast<size_t>(n));
    for (int64_t i = offset; i < offset + n; ++i) {
        uint64_t k = (static_cast<uint64_t>(i) * 2654435761u) % 4294967296u % 1000003u;
        s.emplace_back(std::string(i % 2 ? "V(n" : "v(n") + std::to_string(k) + ")");
    }
    return makeStringVector(std::move(s));
}

void call(benchmark::State& state, const char* name, std::vector<VectorPtr> args, int64_t items) {
    bench::callFunctionLoop(state, name, args, items);
}

// SortIdx2: smallest first, as numpy's argsort orders.
void BM_SortIdx2_Reals(benchmark::State& state) {
    static const VectorPtr x = uniformReals(10'000'000);
    call(state, "SortIdx2", {x}, 10'000'000);
}
void BM_SortIdx_Strings(benchmark::State& state) {
    static const VectorPtr s = nodeNames(1'000'000);
    call(state, "SortIdx", {s}, 1'000'000);
}
void BM_Sort_Strings(benchmark::State& state) {
    static const VectorPtr s = nodeNames(1'000'000);
    call(state, "Sort", {s}, 1'000'000);
}

// The haystack is nodeNames(n); the sought strings are nodeNames(n, n / 2): half of them lie in
// the haystack's second half, the other half mostly not in it at all.
void BM_Search_Strings(benchmark::State& state) {
    int64_t n = state.range(0);
    VectorPtr haystack = nodeNames(n), sought = nodeNames(n, n / 2);
    call(state, "Search", {haystack, sought}, n);
}

// 10^6 strings in all, the second half overlapping the first.
void BM_SetUnion_Strings(benchmark::State& state) {
    static const VectorPtr a = nodeNames(500'000), b = nodeNames(500'000, 250'000);
    call(state, "SetUnion", {a, b}, 1'000'000);
}

BENCHMARK(BM_SortIdx2_Reals)->Name("BM_SortIdx2_Reals/10000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortIdx_Strings)->Name("BM_SortIdx_Strings/1000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sort_Strings)->Name("BM_Sort_Strings/1000000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Search_Strings)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SetUnion_Strings)->Name("BM_SetUnion_Strings/1000000")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

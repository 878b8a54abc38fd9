// The string toolkit on large inputs, called as the host calls it (callFunction, which allocates the
// result): Parse and Scan of a 10 MB line, the splitting routines alone (no result strings made),
// RegExp over 10^5 subjects, MD5 and the two escapes of 10 MB. bench/peers_strings.py gives Python
// the same work on the same data; the data is built by formulas both sides share, not by a random
// generator.
#include "support/split.hpp"
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace wavex {
namespace {

using bench::sink;

constexpr int64_t kLineBytes = 10'000'000;
constexpr int64_t kSubjects = 100'000;

// Words w<number> between the delimiters " ", ",", "  ", ", " in turn, cut to `bytes` bytes.
std::string wordLine(int64_t bytes, const char* const* delimiters) {
    std::string line;
    line.reserve(static_cast<size_t>(bytes) + 16);
    for (int64_t i = 0; static_cast<int64_t>(line.size()) < bytes; ++i) {
        line += 'w';
        line += std::to_string(i * 7919 % 100000);
        line += delimiters[i % 4];
    }
    line.resize(static_cast<size_t>(bytes));
    return line;
}

const std::string& parseLine() {
    static const char* const delimiters[] = {" ", ",", "  ", ", "};
    static const std::string line = wordLine(kLineBytes, delimiters);
    return line;
}

const std::string& scanLine() {
    static const char* const delimiters[] = {";", ";", ";;", ";"};
    static const std::string line = wordLine(kLineBytes, delimiters);
    return line;
}

// Subject i is "R<i>=<i mod 1000>.<i mod 10>k", every tenth without "=".
const VectorPtr& regexSubjects() {
    static const VectorPtr subjects = [] {
        std::vector<StrElem> s;
        for (int64_t i = 0; i < kSubjects; ++i)
            s.emplace_back("R" + std::to_string(i) + (i % 10 ? "=" : " ") + std::to_string(i % 1000) + "." +
                           std::to_string(i % 10) + "k");
        return makeStringVector(std::move(s));
    }();
    return subjects;
}

VectorPtr text(std::string s) { return makeStringVector({std::move(s)}); }

void call(benchmark::State& state, const char* name, std::vector<VectorPtr> args, int64_t items) {
    bench::callFunctionLoop(state, name, args, items);
}

void BM_Parse_Line(benchmark::State& state) { call(state, "Parse", {text(parseLine())}, kLineBytes); }
void BM_ParseQuoted_Line(benchmark::State& state) {
    call(state, "Parse", {text(parseLine()), text(" ,"), text("quoted")}, kLineBytes);
}
void BM_Scan_Line(benchmark::State& state) { call(state, "Scan", {text(scanLine())}, kLineBytes); }

void BM_ScanLine_Line(benchmark::State& state) {
    std::vector<std::string_view> tokens;
    for (auto _ : state) benchmark::DoNotOptimize(sp_ScanLine(parseLine(), " \t,", tokens));
    state.SetItemsProcessed(state.iterations() * kLineBytes);
}
void BM_SplitLine_Line(benchmark::State& state) {
    std::vector<std::string_view> fields;
    for (auto _ : state) benchmark::DoNotOptimize(sp_SplitLine(scanLine(), ';', fields));
    state.SetItemsProcessed(state.iterations() * kLineBytes);
}

void BM_RegExp_Subjects(benchmark::State& state) {
    call(state, "RegExp", {regexSubjects(), text(R"((\w+)=([\d.]+)(\w*))")}, kSubjects);
}
void BM_GetMD5String_Line(benchmark::State& state) { call(state, "GetMD5String", {text(parseLine())}, kLineBytes); }
void BM_EscapeString_Line(benchmark::State& state) { call(state, "EscapeString", {text(parseLine())}, kLineBytes); }
void BM_EscapeStringEncode_Line(benchmark::State& state) {
    call(state, "EscapeStringEncode", {text(parseLine())}, kLineBytes);
}

#define WAVEX_STRINGS_BENCHMARK(f, n) BENCHMARK(f)->Name(#f "/" #n)->Unit(benchmark::kMillisecond)
WAVEX_STRINGS_BENCHMARK(BM_Parse_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_ParseQuoted_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_Scan_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_ScanLine_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_SplitLine_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_RegExp_Subjects, 100000);
WAVEX_STRINGS_BENCHMARK(BM_GetMD5String_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_EscapeString_Line, 10000000);
WAVEX_STRINGS_BENCHMARK(BM_EscapeStringEncode_Line, 10000000);

}  // namespace
}  // namespace wavex

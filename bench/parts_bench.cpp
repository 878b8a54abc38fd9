// The parts selector and Laplace functions on large inputs, called as the host calls them
// (callFunction): ApplyJournal over a database of 10^5 records with a journal of 10^4 edits, adds
// and deletes (files in a temporary folder, read and written each time); ExtractPartsTreeNameList
// of 10^5 selector lines; ParseLaplace of a product of 200 first-order factors (numerator order
// 200, so the call is made with room for 50, 100 … 250 coefficients), and the parser alone.
#include "support/laplace.hpp"
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace wavex {
namespace {

using bench::callFunctionLoop;

constexpr int64_t kRecords = 100'000;
constexpr int64_t kJournal = 10'000;
constexpr int kFactors = 200;

// Record i: M<i>;status;type;category;file;description;maker;;alternatives.
std::string modelLine(int64_t i) {
    static const char* const types[] = {"D", "NPN", "PNP", "NMOS", "PMOS"};
    return "M" + std::to_string(i) + ";;" + types[i % 5] + ";[" + std::to_string(i % 7) + "]Group" +
           std::to_string(i % 40) + "|Sub" + std::to_string(i % 13) + ";lib" + std::to_string(i % 100) +
           ".lib;<Device " + std::to_string(i) + "; rated " + std::to_string(i % 1000) + " V>;Maker;;A" +
           std::to_string(i) + ",B" + std::to_string(i);
}

// Journal line k names every tenth record: edits, deletes and, past the end, additions.
std::string journalLine(int64_t k) {
    int64_t i = k * 10;
    switch (k % 3) {
        case 0: return "M" + std::to_string(i) + ";;;[9]Edited|Here;;;;;;edit";
        case 1: return "M" + std::to_string(i) + ";;;;;;;;;delete";
        default: return modelLine(kRecords + k) + ";add";
    }
}

struct JournalFiles {
    std::string dir, output, database, journal;
    JournalFiles() {
        std::string pattern = (std::filesystem::temp_directory_path() / "wavex_parts_bench_XXXXXX").string();
        dir = mkdtemp(pattern.data()) ? pattern : ".";
        output = dir + "/out.txt";
        database = dir + "/models.txt";
        journal = dir + "/journal.txt";
        write(database, kRecords, modelLine);
        write(journal, kJournal, journalLine);
    }
    ~JournalFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
    static void write(const std::string& path, int64_t n, std::string (*line)(int64_t)) {
        std::FILE* f = std::fopen(path.c_str(), "w");
        if (!f) return;
        for (int64_t i = 0; i < n; ++i) std::fprintf(f, "%s\n", line(i).c_str());
        std::fclose(f);
    }
};

const JournalFiles& journalFiles() {
    static const JournalFiles files;
    return files;
}

const VectorPtr& selectorLines() {
    static const VectorPtr lines = [] {
        std::vector<StrElem> s;
        s.reserve(kRecords);
        for (int64_t i = 0; i < kRecords; ++i) {
            std::string model = modelLine(i % (kRecords * 9 / 10));  // a tenth are repeated names
            s.emplace_back("[" + std::to_string(i % 7) + "]Group" + std::to_string(i % 40) + "|[2]Sub" +
                           std::to_string(i % 13) + ";<" + model + ">;" + (i % 4 ? "ps_model" : "sym") + ";");
        }
        return makeStringVector(std::move(s));
    }();
    return lines;
}

const std::string& productExpression() {
    static const std::string text = [] {
        std::string t;
        for (int k = 1; k <= kFactors; ++k) t += (k > 1 ? "*" : "") + std::string("(1+s*") + std::to_string(k) + "u)";
        return t + "/(1+s*1m)^2";
    }();
    return text;
}

void call(benchmark::State& state, const char* name, std::vector<VectorPtr> args, int64_t items) {
    callFunctionLoop(state, name, args, items);
}

void BM_ApplyJournal_Records(benchmark::State& state) {
    const JournalFiles& f = journalFiles();
    call(state, "ApplyJournal", {makeStringVector({f.output, f.database, f.journal}), makeScalar(9)}, kRecords);
}

void BM_ExtractPartsTreeNameList_Lines(benchmark::State& state) {
    call(state, "ExtractPartsTreeNameList", {selectorLines()}, kRecords);
}

void BM_ParseLaplace_Product(benchmark::State& state) {
    call(state, "ParseLaplace", {makeStringVector({productExpression()})}, kFactors);
}

void BM_LaplaceParser_Product(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(parseLaplace(productExpression()).value.numerator.size());
    state.SetItemsProcessed(state.iterations() * kFactors);
}

BENCHMARK(BM_ApplyJournal_Records)->Name("BM_ApplyJournal_Records/100000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExtractPartsTreeNameList_Lines)->Name("BM_ExtractPartsTreeNameList_Lines/100000")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseLaplace_Product)->Name("BM_ParseLaplace_Product/200")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LaplaceParser_Product)->Name("BM_LaplaceParser_Product/200")->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace wavex

// The file and settings functions where a script leans on them: ListFiles over a directory of
// 20 000 result files (half of them matching "*.csv") and IniRead of one key in an ini file of
// 20 000 entries in 200 sections (each call reads and parses the file whole). Elements are
// directory entries and ini entries. bench/peers_files.py does the same with Python.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <stdlib.h>

namespace wavex {
namespace {

constexpr int kFiles = 20'000;
constexpr int kSections = 200, kKeysPerSection = 100;

struct Scratch {
    std::string dir;
    Scratch() {
        std::string pattern = "/tmp/wavex_bench_files_XXXXXX";
        if (!mkdtemp(pattern.data())) std::abort();
        dir = pattern;
        for (int i = 0; i < kFiles; ++i)
            std::ofstream(dir + "/run" + std::to_string(i) + (i % 2 ? ".csv" : ".log"));
        std::ofstream ini(dir + "/big.ini.txt");
        for (int s = 0; s < kSections; ++s) {
            ini << "; section " << s << "\n[section" << s << "]\n";
            for (int k = 0; k < kKeysPerSection; ++k) ini << "key" << k << " = value " << s * k << "\n";
        }
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
};

const Scratch& scratch() {
    static const Scratch s;
    return s;
}

void BM_ListFiles(benchmark::State& state) {
    bench::callFunctionLoop(state, "ListFiles", {makeStringVector({scratch().dir}), makeStringVector({"*.csv"})},
                            kFiles + 1);
}

void BM_IniRead(benchmark::State& state) {
    const Scratch& s = scratch();
    bench::callFunctionLoop(state, "IniRead",
                            {makeStringVector({s.dir + "/big.ini.txt"}), makeStringVector({"section199"}),
                             makeStringVector({"key99"})},
                            kSections * kKeysPerSection);
}

BENCHMARK(BM_ListFiles)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IniRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

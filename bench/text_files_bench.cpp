// Text files read as lines, as the host calls them: ReadFile and ReadSpiceFile of a 100 MB
// netlist-like file (about 5 million lines, a comment every tenth and a continuation every
// fourth). Elements are lines; bytes of the file are reported too. bench/peers_textfiles.py
// reads the same file with Python.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace wavex {
namespace {

constexpr size_t kBytes = 100'000'000;

// Line i of the file (bench/peers_textfiles.py writes the same).
std::string line(long i) {
    if (i % 10 == 0) return "* section " + std::to_string(i) + "\n";
    if (i % 4 == 1) return "+ tc1=" + std::to_string(i % 7) + " tc2=0\n";
    return "R" + std::to_string(i) + " n" + std::to_string(i) + " n" + std::to_string(i + 1) + " " +
           std::to_string(i % 1000) + "k\n";
}

struct TextFile {
    std::string path;
    int64_t lines = 0, bytes = 0;
    TextFile() {
        std::string pattern = "/tmp/wavex_bench_XXXXXX";
        int fd = mkstemp(pattern.data());
        path = pattern;
        std::string text;
        while (text.size() < kBytes) text += line(lines++);
        bytes = static_cast<int64_t>(text.size());
        if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
        close(fd);
    }
    ~TextFile() { std::remove(path.c_str()); }
};

const TextFile& file() {
    static const TextFile f;
    return f;
}

void read(benchmark::State& state, const char* name) {
    const TextFile& f = file();
    bench::callFunctionLoop(state, name, {makeStringVector({f.path})}, f.lines);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * f.bytes);
}

void BM_ReadFile(benchmark::State& state) { read(state, "ReadFile"); }
void BM_ReadSpiceFile(benchmark::State& state) { read(state, "ReadSpiceFile"); }

BENCHMARK(BM_ReadFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadSpiceFile)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

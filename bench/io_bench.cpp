// Loading data files, each beside the bound it is measured against in the same run:
// - a 1 GB binary raw file (10^8 doubles: 10^7 points of ten variables, as a transient of a
//   circuit with nine nodes and currents writes them), loaded with loadRaw, beside reading the
//   same file into memory with read(), each in a fresh process as the wavex command does it; the
//   loader's peak memory above what the process held before is reported as a multiple of the
//   data's size (counter peak_per_data);
// - a 100 MB CSV file (time and four columns of nine-digit values), loaded with loadCsv in a
//   fresh process.
// Throughput is bytes of the file per second. The files are made in a scratch directory that is
// removed at exit.
#include "io/csv.hpp"
#include "io/raw.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wavex {
namespace {

constexpr size_t kRawVariables = 10;
constexpr size_t kRawPoints = 10'000'000;
constexpr size_t kCsvBytes = 100'000'000;

const std::string& scratch() {
    static const struct Dir {
        std::string path;
        Dir() {
            std::string pattern = "/tmp/wavex_io_bench_XXXXXX";
            path = std::string(mkdtemp(pattern.data())) + "/";
        }
        ~Dir() { std::system(("rm -rf '" + path + "'").c_str()); }
    } dir;
    return dir.path;
}

// The raw file, written once: a damped sine per variable over time.
const std::string& rawFile() {
    static const std::string path = [] {
        std::string p = scratch() + "big.raw";
        std::FILE* f = std::fopen(p.c_str(), "wb");
        std::string header = "Title: benchmark\nDate: today\nPlotname: Transient Analysis\nFlags: real\nNo. Variables: " +
                             std::to_string(kRawVariables) + "\nNo. Points: " + std::to_string(kRawPoints) +
                             "\nVariables:\n\t0\ttime\ttime\n";
        for (size_t v = 1; v < kRawVariables; ++v) header += "\t" + std::to_string(v) + "\tv(n" + std::to_string(v) + ")\tvoltage\n";
        header += "Binary:\n";
        std::fwrite(header.data(), 1, header.size(), f);
        std::vector<double> block;
        for (size_t p0 = 0; p0 < kRawPoints; p0 += 100'000) {
            block.clear();
            for (size_t p = p0; p < p0 + 100'000; ++p) {
                const double t = static_cast<double>(p) * 1e-9;
                block.push_back(t);
                for (size_t v = 1; v < kRawVariables; ++v) block.push_back(std::exp(-t * 1e5) * std::sin(t * 1e6 * static_cast<double>(v)));
            }
            std::fwrite(block.data(), sizeof(double), block.size(), f);
        }
        std::fclose(f);
        return p;
    }();
    return path;
}

uint64_t fileSize(const std::string& path) {
    struct stat st {};
    ::stat(path.c_str(), &st);
    return static_cast<uint64_t>(st.st_size);
}

// Reads the whole file into a buffer of its size, as fast as the system can.
void readWhole(const std::string& path) {
    const uint64_t size = fileSize(path);
    std::unique_ptr<char[]> buffer(new char[size]);
    int fd = ::open(path.c_str(), O_RDONLY);
    for (uint64_t done = 0; done < size;) {
        ssize_t n = ::read(fd, buffer.get() + done, size - done);
        if (n <= 0) break;
        done += static_cast<uint64_t>(n);
    }
    ::close(fd);
    benchmark::DoNotOptimize(buffer.get());
}

// What one run of `work` in a fresh process took: seconds, and resident memory at its peak above
// what the process held before (bytes). A fresh process is what the wavex command is, with no
// block of an earlier load left in the pool to reuse; negative on failure.
struct Cost {
    double seconds = -1;
    long peakBytes = -1;
};
template <class Work>
Cost inChild(Work work) {
    int fds[2];
    if (::pipe(fds) != 0) return {};
    pid_t pid = ::fork();
    if (pid == 0) {
        auto kilobytes = [](const char* field) {
            std::ifstream status("/proc/self/status");
            std::string line;
            while (std::getline(status, line))
                if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::strlen(field));
            return 0L;
        };
        std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts again from here
        const long before = kilobytes("VmRSS:");
        auto start = std::chrono::steady_clock::now();
        const bool ok = work();
        Cost cost{std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
                  (kilobytes("VmHWM:") - before) * 1024};
        if (!ok) cost = {};
        (void)!::write(fds[1], &cost, sizeof cost);
        ::_exit(0);
    }
    Cost cost;
    (void)!::read(fds[0], &cost, sizeof cost);
    ::waitpid(pid, nullptr, 0);
    ::close(fds[0]);
    ::close(fds[1]);
    return cost;
}

void Io_RawReadIntoMemory(benchmark::State& state) {
    const std::string& path = rawFile();
    for (auto _ : state) {
        Cost cost = inChild([&] {
            readWhole(path);
            return true;
        });
        state.SetIterationTime(cost.seconds);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize(path)));
}
BENCHMARK(Io_RawReadIntoMemory)->Unit(benchmark::kMillisecond)->UseManualTime();

void Io_RawLoad(benchmark::State& state) {
    const std::string& path = rawFile();
    long peak = 0;
    for (auto _ : state) {
        Cost cost = inChild([&] {
            std::string error;
            return io::loadRaw(path, &error).has_value();
        });
        if (cost.seconds < 0) state.SkipWithError("the raw file did not load");
        state.SetIterationTime(cost.seconds);
        peak = std::max(peak, cost.peakBytes);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize(path)));
    state.counters["peak_per_data"] = static_cast<double>(peak) / static_cast<double>(kRawPoints * kRawVariables * sizeof(double));
}
BENCHMARK(Io_RawLoad)->Unit(benchmark::kMillisecond)->UseManualTime();

const std::string& csvFile() {
    static const std::string path = [] {
        std::string p = scratch() + "big.csv";
        std::string text = "time,a[V],b[V],c[A],d\n";
        text.reserve(kCsvBytes + 200);
        char line[160];
        for (size_t k = 0; text.size() < kCsvBytes; ++k) {
            const double t = static_cast<double>(k) * 1e-9;
            int n = std::snprintf(line, sizeof line, "%.9g,%.9g,%.9g,%.9g,%.9g\n", t, std::sin(t * 1e6), std::cos(t * 3e6),
                                  1e-3 * std::sin(t * 7e5), static_cast<double>(k % 1000));
            text.append(line, static_cast<size_t>(n));
        }
        std::ofstream(p, std::ios::binary) << text;
        return p;
    }();
    return path;
}

void Io_CsvLoad(benchmark::State& state) {
    const std::string& path = csvFile();
    for (auto _ : state) {
        Cost cost = inChild([&] {
            std::string error;
            return io::loadCsv(path, &error).has_value();
        });
        if (cost.seconds < 0) state.SkipWithError("the CSV file did not load");
        state.SetIterationTime(cost.seconds);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileSize(path)));
}
BENCHMARK(Io_CsvLoad)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace wavex

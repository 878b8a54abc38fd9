// The data-file codecs at realistic sizes, each beside the bound it is measured against:
// - Touchstone: a 50 MB synthetic 4-port file (points wrapped over 4 lines, 9/8/8/8 numbers, as
//   network analysers write them), parsed from memory in RI and DB form and read from a file;
// - WAV: a 100 MB 16-bit stereo file read into samples and written from two channels of doubles,
//   beside a plain copy of the same file (read and write through a 1 MB buffer) in the same run;
// - Base64: 100 MB of bytes encoded, and their 133 MB of text decoded.
// Throughput is reported as bytes of the file (or of the input) per second.
#include "support/base64.hpp"
#include "support/touchstone.hpp"
#include "support/wav.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstring>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace wavex {
namespace {

constexpr size_t kTouchstoneBytes = 50'000'000;
constexpr size_t kWavBytes = 100'000'000;
constexpr size_t kBase64Bytes = 100'000'000;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// A scratch directory removed with everything in it at exit.
const std::string& scratch() {
    static const struct Dir {
        std::string path;
        Dir() {
            std::string pattern = "/tmp/wavex_bench_XXXXXX";
            path = std::string(mkdtemp(pattern.data())) + "/";
        }
        ~Dir() { std::system(("rm -rf '" + path + "'").c_str()); }
    } dir;
    return dir.path;
}

std::string touchstoneText(TouchstoneInfo::Format format) {
    std::mt19937_64 gen(7);
    std::uniform_real_distribution<double> u(-1, 1);
    std::string text = "! synthetic 4-port\n# Hz S " + std::string(format == TouchstoneInfo::Format::DB ? "DB" : "RI") + " R 50\n";
    char buf[64];
    for (long point = 0; text.size() < kTouchstoneBytes; ++point) {
        text += std::to_string(1'000'000 + 10'000 * point);
        for (int row = 0; row < 4; ++row) {
            for (int k = 0; k < 4; ++k) {
                double a = format == TouchstoneInfo::Format::DB ? -40 + 40 * u(gen) : u(gen);
                double b = format == TouchstoneInfo::Format::DB ? 180 * u(gen) : u(gen);
                int n = std::snprintf(buf, sizeof buf, "\t%.9e\t%.9e", a, b);
                text.append(buf, static_cast<size_t>(n));
            }
            text += "\n";
        }
    }
    return text;
}

const std::string& touchstoneRI() {
    static const std::string text = touchstoneText(TouchstoneInfo::Format::RI);
    return text;
}

void parse(benchmark::State& state, const std::string& text) {
    for (auto _ : state) {
        AcTableData table("", 4);
        if (!table.buildFromText(text, nullptr)) return state.SkipWithError("the text did not parse");
        benchmark::DoNotOptimize(table.numPoints());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

void Touchstone_Parse4PortRI_50MB(benchmark::State& state) { parse(state, touchstoneRI()); }
void Touchstone_Parse4PortDB_50MB(benchmark::State& state) {
    static const std::string text = touchstoneText(TouchstoneInfo::Format::DB);
    parse(state, text);
}

// From a file, through the page cache.
void Touchstone_Load4PortRI_50MB(benchmark::State& state) {
    static const std::string path = [] {
        std::string p = scratch() + "synthetic.s4p";
        File f(std::fopen(p.c_str(), "wb"), &std::fclose);
        std::fwrite(touchstoneRI().data(), 1, touchstoneRI().size(), f.get());
        return p;
    }();
    for (auto _ : state) {
        AcTableData table(path, 4);
        if (!table.build(nullptr)) return state.SkipWithError("the file did not parse");
        benchmark::DoNotOptimize(table.numPoints());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(touchstoneRI().size()));
}

// ---- WAV ----

constexpr int64_t kFrames = kWavBytes / 4;  // 16-bit stereo

const std::vector<double>& channel(int c) {
    static const std::array<std::vector<double>, 2> channels = [] {
        std::vector<double> l(kFrames), r(kFrames);
        for (int64_t i = 0; i < kFrames; ++i) {
            l[i] = 0.9 * std::sin(0.001 * static_cast<double>(i));
            r[i] = 0.5 * std::cos(0.0013 * static_cast<double>(i));
        }
        return std::array<std::vector<double>, 2>{std::move(l), std::move(r)};
    }();
    return channels[c];
}

WavHeader stereo16() {
    WavHeader h;
    h.channels = 2;
    h.sampleRate = 48000;
    h.bitsPerSample = 16;
    h.blockAlign = 4;
    h.byteRate = 48000 * 4;
    h.dataSize = static_cast<uint32_t>(kFrames * 4);
    h.riffSize = h.dataSize + 36;
    return h;
}

bool writeWav(const std::string& path) {
    File f(std::fopen(path.c_str(), "wb"), &std::fclose);
    const double* data[2] = {channel(0).data(), channel(1).data()};
    WavHeader h = stereo16();
    return f && Wav_WriteHeader(f.get(), h) && Wav_WriteSamples(f.get(), h, 2147483647.0, data, 2, kFrames) == WAV_OK;
}

const std::string& wavFile() {
    static const std::string path = [] {
        std::string p = scratch() + "source.wav";
        writeWav(p);
        return p;
    }();
    return path;
}

void Wav_Read_100MB(benchmark::State& state) {
    const std::string& path = wavFile();
    for (auto _ : state) {
        File f(std::fopen(path.c_str(), "rb"), &std::fclose);
        WavHeader h;
        Array<WavSample> samples;
        if (!Wav_LoadHeader(f.get(), &h) || !Wav_LoadSamples(f.get(), h, samples, 0))
            return state.SkipWithError("the file did not load");
        benchmark::DoNotOptimize(samples.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kWavBytes));
}

void Wav_Write_100MB(benchmark::State& state) {
    channel(0);
    std::string path = scratch() + "written.wav";
    for (auto _ : state)
        if (!writeWav(path)) return state.SkipWithError("the file was not written");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kWavBytes));
}

// The script functions: open (load the samples into the store), then read one channel.
void Wav_OpenFileReadData_100MB(benchmark::State& state) {
    Interpreter wx(std::make_shared<CollectingMessageHandler>());
    std::string open = "WAV_OpenFile('" + wavFile() + "')";
    for (auto _ : state) {
        VectorPtr opened = wx.evaluate(open);
        if (!opened || opened->real[1] != 0) return state.SkipWithError("WAV_OpenFile failed");
        std::string handle = std::to_string(opened->real[0]);
        benchmark::DoNotOptimize(wx.evaluate("WAV_ReadData(" + handle + ", [0])"));
        wx.evaluate("WAV_CloseFile(" + handle + ")");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kWavBytes));
}

// The bound: the same file read and written again with no conversion.
void FileCopy_100MB(benchmark::State& state) {
    const std::string& from = wavFile();
    std::string to = scratch() + "copy.wav";
    std::vector<char> buffer(1 << 20);
    for (auto _ : state) {
        File in(std::fopen(from.c_str(), "rb"), &std::fclose), out(std::fopen(to.c_str(), "wb"), &std::fclose);
        size_t n;
        while ((n = std::fread(buffer.data(), 1, buffer.size(), in.get())) > 0) std::fwrite(buffer.data(), 1, n, out.get());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kWavBytes));
}

// ---- Base64 ----

const std::string& randomBytes() {
    static const std::string bytes = [] {
        std::mt19937_64 gen(3);
        std::string b(kBase64Bytes, '\0');
        for (size_t i = 0; i + 8 <= b.size(); i += 8) {
            uint64_t v = gen();
            std::memcpy(&b[i], &v, 8);
        }
        return b;
    }();
    return bytes;
}

void Base64_Encode_100MB(benchmark::State& state) {
    YBase64Converter cv;
    for (auto _ : state) benchmark::DoNotOptimize(cv.encodeString(randomBytes()).size());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kBase64Bytes));
}

void Base64_Decode_100MB(benchmark::State& state) {
    YBase64Converter cv;
    static const std::string text = cv.encodeString(randomBytes());
    for (auto _ : state) benchmark::DoNotOptimize(cv.decode(text)->size());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kBase64Bytes));
}

BENCHMARK(Touchstone_Parse4PortRI_50MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Touchstone_Parse4PortDB_50MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Touchstone_Load4PortRI_50MB)->Unit(benchmark::kMillisecond);
BENCHMARK(FileCopy_100MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Wav_Read_100MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Wav_Write_100MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Wav_OpenFileReadData_100MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Base64_Encode_100MB)->Unit(benchmark::kMillisecond);
BENCHMARK(Base64_Decode_100MB)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace wavex

// WAV_OpenFile, WAV_ReadData, WAV_WriteFile, WAV_CloseFile: every status, the headers written,
// the store's handles, the scaling and time axis of the data read, and files sox reads.
#include "support/wav.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sys/stat.h>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::xs;

std::string readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool exists(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0;
}

WavHeader headerOf(const std::string& path) {
    WavHeader h;
    std::unique_ptr<FILE, int (*)(FILE*)> f(std::fopen(path.c_str(), "rb"), &std::fclose);
    EXPECT_TRUE(f && Wav_LoadHeader(f.get(), &h)) << path;
    return h;
}

std::vector<double> ramp(size_t n, double step) {
    std::vector<double> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = -1 + step * static_cast<double>(i);
    return v;
}

struct WavFunctions : ::testing::Test {
    Session wx;
    test::ScratchDir scratch;
    const std::string dir = scratch.path();

    void SetUp() override {
        wx.set("left", makeRealVector(ramp(100, 0.02)));
        wx.set("right", makeRealVector(ramp(80, 0.025)));
        wx.set("full", makeRealVector({1, -1, 0.5}));
    }

    std::vector<double> call(const std::string& expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        EXPECT_EQ(wx.messages(), "") << expression;
        return r ? reals(r) : std::vector<double>{};
    }
    double write(const std::string& name, const std::string& rest) {
        std::vector<double> r = call("WAV_WriteFile('" + dir + name + "', " + rest + ")");
        return r.empty() ? -1 : r[0];
    }
    std::vector<double> open(const std::string& path, const std::string& option = "") {
        return call("WAV_OpenFile('" + path + "'" + (option.empty() ? "" : ", " + option) + ")");
    }
};

// The statuses of WAV_WriteFile and the sizes it writes; the sample coding of each depth is the
// converter's (tests/support/wav_test.cpp).
TEST_F(WavFunctions, WriteStatusesAndHeaders) {
    EXPECT_EQ(write("twelve.wav", "[12], left"), 2);
    EXPECT_FALSE(exists(dir + "twelve.wav"));  // refused before the file is touched
    EXPECT_EQ(write("rate0.wav", "[16, 1, 0], left"), WAV_BAD_RATE);
    EXPECT_FALSE(exists(dir + "rate0.wav"));
    EXPECT_EQ(call("WAV_WriteFile('/nonexistent/x.wav', [16], left)"), std::vector<double>{4});
    EXPECT_EQ(call("WAV_WriteFile('/dev/full', [16], left)"), std::vector<double>{5});  // the disk is full

    // Two channels of 100 and 80 values: 80 frames.
    EXPECT_EQ(write("stereo.wav", "[16], left, right"), 0);
    WavHeader h = headerOf(dir + "stereo.wav");
    EXPECT_EQ(h.dataSize, 320u);
    EXPECT_EQ(h.channels, 2);
    EXPECT_EQ(h.sampleRate, 44100u);  // by default
    EXPECT_EQ(readBytes(dir + "stereo.wav").size(), 364u);

    // 8-bit mono with an odd number of frames: the data chunk gets its pad byte.
    EXPECT_EQ(write("odd.wav", "[8, 1, 8000], full"), 0);
    h = headerOf(dir + "odd.wav");
    EXPECT_EQ(h.dataSize, 3u);
    EXPECT_EQ(h.riffSize, 40u);
    EXPECT_EQ(readBytes(dir + "odd.wav").size(), 48u);

    // A second channel given but empty is silent.
    wx.set("nothing", makeEmptyVector());
    EXPECT_EQ(write("silent.wav", "[16], full, nothing"), 0);
    std::vector<double> opened = open(dir + "silent.wav");
    EXPECT_EQ(call("WAV_ReadData(" + std::to_string(opened[0]) + ", [1])"), (std::vector<double>{0, 0, 0}));
}

TEST_F(WavFunctions, OpenReadAndClose) {
    ASSERT_EQ(write("full.wav", "[16, 1, 8000], full, full"), 0);
    std::vector<double> opened = open(dir + "full.wav");
    ASSERT_EQ(opened.size(), 2u);
    EXPECT_EQ(opened[1], 0);
    std::string h = std::to_string(opened[0]);

    // Full scale reads back as ±scale exactly; 0.5 to the nearest 16-bit step.
    VectorPtr r = wx("WAV_ReadData(" + h + ", [1, 3])");
    ASSERT_NE(r, nullptr) << wx.messages();
    std::vector<double> y = reals(r);
    ASSERT_EQ(y.size(), 3u);
    EXPECT_EQ(y[0], 3);
    EXPECT_EQ(y[1], -3);
    EXPECT_NEAR(y[2], 1.5, 3.0 / 32767);
    EXPECT_EQ(xs(r), (std::vector<double>{0, 1.0 / 8000, 1.0 / 8000 + 1.0 / 8000}));
    EXPECT_EQ(r->phys, units::Voltage);
    EXPECT_EQ(r->ref.phys, units::Time);
    std::vector<double> unscaled = call("WAV_ReadData(" + h + ", [0])");  // scale 1 by default
    ASSERT_EQ(unscaled.size(), 3u);
    EXPECT_EQ(unscaled[0], 1);
    EXPECT_EQ(unscaled[1], -1);

    for (const char* channel : {"[2]", "[-1]", "[NaN]"}) EXPECT_TRUE(call("WAV_ReadData(" + h + ", " + channel + ")").empty());
    EXPECT_EQ(call("WAV_CloseFile(" + h + ")"), std::vector<double>{1});
    EXPECT_EQ(call("WAV_CloseFile(" + h + ")"), std::vector<double>{0});
    EXPECT_TRUE(call("WAV_ReadData(" + h + ", [0])").empty());
    EXPECT_EQ(call("WAV_CloseFile(0)"), std::vector<double>{0});  // no "all" value
    EXPECT_EQ(open(dir + "full.wav")[0], opened[0] + 1);
}

TEST_F(WavFunctions, OpenStatuses) {
    EXPECT_EQ(open(dir + "missing.wav"), (std::vector<double>{-1, 10}));
    std::ofstream(dir + "text.wav") << "not a wave file";
    EXPECT_EQ(open(dir + "text.wav"), (std::vector<double>{-1, 7}));

    // A header Wav_CheckHeader refuses (each refusal: tests/support/wav_test.cpp): its status
    // passes through.
    ASSERT_EQ(write("mono.wav", "[16, 1, 8000], full"), 0);
    std::string good = readBytes(dir + "mono.wav");
    std::string noChannels = good;
    noChannels[22] = noChannels[23] = '\0';
    std::ofstream(dir + "channels.wav", std::ios::binary) << noChannels;
    EXPECT_EQ(open(dir + "channels.wav"), (std::vector<double>{-1, WAV_BAD_CHANNELS}));

    // A data chunk cut short: read leniently by default, refused by the strict option (8), which
    // still uses up a handle.
    std::string cut = dir + "cut.wav";
    std::ofstream(cut, std::ios::binary) << good.substr(0, good.size() - 2);
    std::vector<double> lenient = open(cut);
    EXPECT_EQ(lenient[1], 0);
    EXPECT_EQ(call("WAV_ReadData(" + std::to_string(lenient[0]) + ", [0])").size(), 2u);
    EXPECT_EQ(open(cut, "1"), (std::vector<double>{-1, 8}));
    EXPECT_EQ(open(cut, "0")[0], lenient[0] + 2);
}

// ---- Interoperability with sox ----

bool haveSox() { return std::system("command -v sox >/dev/null 2>&1") == 0; }

std::string run(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> p(popen(command.c_str(), "r"), &pclose);
    std::string out;
    char buf[256];
    while (p && std::fgets(buf, sizeof buf, p.get())) out += buf;
    return out;
}

// sox reads the files WAV_WriteFile makes: its view of the rate, channels, depth and length,
// and the very samples (converted to raw at the same depth) match the file's data chunk.
TEST_F(WavFunctions, SoxReadsWhatWavWriteFileWrites) {
    if (!haveSox()) GTEST_SKIP() << "sox is not installed: skipping the interoperability tests";
    for (const char* bits : {"8", "16", "24", "32"}) {
        SCOPED_TRACE(std::string(bits) + " bits");
        std::string file = dir + "ours" + bits + ".wav";
        ASSERT_EQ(write("ours" + std::string(bits) + ".wav", std::string("[") + bits + ", 0.8, 22050], left, right"), 0);
        EXPECT_EQ(run("sox --i -r " + file), "22050\n");
        EXPECT_EQ(run("sox --i -c " + file), "2\n");
        EXPECT_EQ(run("sox --i -b " + file), std::string(bits) + "\n");
        EXPECT_EQ(run("sox --i -s " + file), "80\n");
        std::string encoding = std::string(bits) == "8" ? "unsigned-integer" : "signed-integer";
        std::string raw = dir + "sox" + bits + ".raw";
        ASSERT_EQ(std::system(("sox -D " + file + " -t raw -e " + encoding + " -b " + bits + " " + raw).c_str()), 0);
        std::string ours = readBytes(file);
        EXPECT_EQ(readBytes(raw), ours.substr(44, headerOf(file).dataSize));
    }
}

}  // namespace
}  // namespace wavex

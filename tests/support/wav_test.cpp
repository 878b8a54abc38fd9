// The WAV routines: writing and reading back every bit depth, files with the chunks real tools
// write, hostile headers, and files made by sox.
#include "support/wav.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace wavex {
namespace {

using namespace std::string_literals;
using File = std::unique_ptr<FILE, int (*)(FILE*)>;

std::string le16(uint16_t v) { return {static_cast<char>(v), static_cast<char>(v >> 8)}; }
std::string le32(uint32_t v) { return le16(static_cast<uint16_t>(v)) + le16(static_cast<uint16_t>(v >> 16)); }
std::string chunk(const std::string& id, const std::string& payload, uint32_t claimed = UINT32_MAX) {
    std::string c = id + le32(claimed == UINT32_MAX ? static_cast<uint32_t>(payload.size()) : claimed) + payload;
    return payload.size() % 2 ? c + '\0' : c;
}
std::string riff(const std::string& body) { return "RIFF" + le32(static_cast<uint32_t>(4 + body.size())) + "WAVE" + body; }
std::string fmt(uint16_t format, uint16_t channels, uint32_t rate, uint16_t bits, int align = -1) {
    uint16_t a = static_cast<uint16_t>(align >= 0 ? align : channels * bits / 8);
    return chunk("fmt ", le16(format) + le16(channels) + le32(rate) + le32(rate * a) + le16(a) + le16(bits));
}
std::string extensible(uint16_t channels, uint16_t bits, uint16_t subFormat, uint8_t guidByte = 0x00) {
    uint16_t a = static_cast<uint16_t>(channels * bits / 8);
    std::string guid = le16(subFormat) + std::string("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);
    guid[2] = static_cast<char>(guidByte);
    return chunk("fmt ", le16(0xFFFE) + le16(channels) + le32(8000) + le32(8000 * a) + le16(a) + le16(bits) + le16(22) +
                             le16(bits) + le32(channels == 2 ? 3 : 4) + guid);
}
std::string s16(std::initializer_list<int16_t> codes) {
    std::string s;
    for (int16_t c : codes) s += le16(static_cast<uint16_t>(c));
    return s;
}
std::string f32(std::initializer_list<float> values) {
    std::string s(values.size() * 4, '\0');
    std::memcpy(s.data(), values.begin(), s.size());
    return s;
}
std::string f64(std::initializer_list<double> values) {
    std::string s(values.size() * 8, '\0');
    std::memcpy(s.data(), values.begin(), s.size());
    return s;
}

// What the routines make of a file's bytes.
struct Loaded {
    bool header = false;
    int check = -1;
    bool samples = false;
    WavHeader h;
    Array<WavSample> frames;
};

Loaded load(const std::string& bytes, int option = 0) {
    Loaded r;
    File f(fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "rb"), &std::fclose);
    if (!f) return r;
    r.header = Wav_LoadHeader(f.get(), &r.h);
    if (!r.header) return r;
    r.check = Wav_CheckHeader(r.h);
    if (r.check == WAV_OK) r.samples = Wav_LoadSamples(f.get(), r.h, r.frames, option);
    return r;
}

std::vector<int32_t> firsts(const Array<WavSample>& s) {
    std::vector<int32_t> v;
    for (const WavSample& x : s) v.push_back(x.first);
    return v;
}
std::vector<int32_t> seconds(const Array<WavSample>& s) {
    std::vector<int32_t> v;
    for (const WavSample& x : s) v.push_back(x.second);
    return v;
}

// Values written at factor 2³¹−1 (scale 1): the codes each depth stores (clipped, NaN as 0,
// halves to even) and the 32-bit samples they read back as.
TEST(Wav, WriteAndReadBackEveryDepth) {
    const std::vector<double> values = {0, 0.5, -0.5, 1, -1, 2, -2, NAN, 1.0 / 3};
    struct Case { uint16_t bits; std::vector<int64_t> codes; std::vector<int32_t> read; };
    const Case cases[] = {
        {8, {0, 64, -64, 127, -127, 127, -128, 0, 42},
         {0, 1082196484, -1082196484, INT32_MAX, -2147483647, INT32_MAX, INT32_MIN, 0, 710191442}},
        {16, {0, 16384, -16384, 32767, -32767, 32767, -32768, 0, 10922},
         {0, 1073774593, -1073774593, INT32_MAX, -2147483647, INT32_MAX, INT32_MIN, 0, 715806036}},
        {24, {0, 4194304, -4194304, 8388607, -8388607, 8388607, -8388608, 0, 2796202},
         {0, 1073741952, -1073741952, INT32_MAX, -2147483647, INT32_MAX, INT32_MIN, 0, 715827797}},
        {32, {0, 1073741824, -1073741824, INT32_MAX, -2147483647, INT32_MAX, INT32_MIN, 0, 715827882},
         {0, 1073741824, -1073741824, INT32_MAX, -2147483647, INT32_MAX, INT32_MIN, 0, 715827882}},
    };
    std::vector<double> negated;
    for (double v : values) negated.push_back(-v);
    for (const Case& c : cases)
        for (int channels : {1, 2}) {
            SCOPED_TRACE(std::to_string(c.bits) + " bits, " + std::to_string(channels) + " channels");
            WavHeader h;
            h.channels = static_cast<uint16_t>(channels);
            h.sampleRate = 8000;
            h.bitsPerSample = c.bits;
            h.blockAlign = static_cast<uint16_t>(channels * c.bits / 8);
            h.byteRate = 8000u * h.blockAlign;
            h.dataSize = static_cast<uint32_t>(values.size() * h.blockAlign);
            h.riffSize = h.dataSize + 36 + (h.dataSize & 1);
            char* buffer = nullptr;
            size_t size = 0;
            FILE* out = open_memstream(&buffer, &size);
            const double* data[2] = {values.data(), negated.data()};
            ASSERT_TRUE(Wav_WriteHeader(out, h));
            EXPECT_EQ(Wav_WriteSamples(out, h, 2147483647.0, data, channels, static_cast<int64_t>(values.size())), WAV_OK);
            std::fclose(out);
            std::string bytes(buffer, size);
            std::free(buffer);
            ASSERT_EQ(bytes.size(), 44 + h.dataSize + (h.dataSize & 1));

            // The codes as stored, first channel.
            const int width = c.bits / 8;
            for (size_t i = 0; i < values.size(); ++i) {
                int64_t code = 0;
                for (int k = 0; k < width; ++k)
                    code |= int64_t{static_cast<uint8_t>(bytes[44 + i * h.blockAlign + k])} << (8 * k);
                code = c.bits == 8 ? code - 128 : (code ^ (int64_t{1} << (c.bits - 1))) - (int64_t{1} << (c.bits - 1));
                EXPECT_EQ(code, c.codes[i]) << "value " << i;
            }
            Loaded r = load(bytes);
            ASSERT_TRUE(r.header && r.samples);
            EXPECT_EQ(r.check, WAV_OK);
            EXPECT_EQ(firsts(r.frames), c.read);
            std::vector<int32_t> second = seconds(r.frames);
            if (channels == 1) {
                EXPECT_EQ(second, c.read);  // a mono file's channel serves as both
            } else {
                // The negated values read back negated, except 2, whose negation clips one code lower.
                for (size_t i = 0; i < values.size(); ++i)
                    if (values[i] != 2) {
                        EXPECT_EQ(second[i], c.read[i] == INT32_MIN ? INT32_MAX : -c.read[i]) << "value " << i;
                    }
            }
        }
}

TEST(Wav, ChunksAndFormatsRealToolsWrite) {
    struct Case { const char* what; std::string bytes; std::vector<int32_t> first, second; };
    const std::string data = chunk("data", s16({1, -1, 32767, -32768}));
    const Case cases[] = {
        {"LIST, fact and an odd chunk before the data, LIST after it",
         riff(chunk("LIST", "INFOISFT" + le32(5) + "sox!\0"s) + fmt(1, 2, 8000, 16) + chunk("fact", le32(2)) +
              chunk("odd ", "abc") + data + chunk("LIST", "INFO")),
         {65538, INT32_MAX}, {-65538, INT32_MIN}},
        {"data before fmt", riff(data + fmt(1, 1, 8000, 16)), {65538, -65538, INT32_MAX, INT32_MIN}, {}},
        {"extensible 24-bit", riff(extensible(1, 24, 1) + chunk("data", std::string("\x01\0\0\xFF\xFF\x7F\0\0\x80", 9))),
         {256, INT32_MAX, INT32_MIN}, {}},
        {"float 32-bit, clipped beyond full scale", riff(fmt(3, 1, 8000, 32) + chunk("data", f32({0.5f, -1.0f, 2.0f}))),
         {1073741824, -2147483647, INT32_MAX}, {}},
        {"extensible float 64-bit", riff(extensible(2, 64, 3) + chunk("data", f64({0.25, -0.25, NAN, -4}))),
         {536870912, 0}, {-536870912, INT32_MIN}},
    };
    for (const Case& c : cases) {
        Loaded r = load(c.bytes);
        ASSERT_TRUE(r.header && r.samples) << c.what;
        EXPECT_EQ(firsts(r.frames), c.first) << c.what;
        EXPECT_EQ(seconds(r.frames), c.second.empty() ? c.first : c.second) << c.what;
    }
}

TEST(Wav, HeadersThatAreRefused) {
    const std::string samples = chunk("data", s16({1, 2}));
    struct Case { const char* what; std::string bytes; bool header; int check; };
    const Case cases[] = {
        {"empty", "", false, -1},
        {"truncated RIFF header", "RIFF\x10\0\0\0WA"s, false, -1},
        {"not WAVE", "RIFF\x04\0\0\0AVI "s, false, -1},
        {"no data chunk", riff(fmt(1, 1, 8000, 16)), false, -1},
        {"no fmt chunk", riff(samples), false, -1},
        {"fmt chunk too short", riff(chunk("fmt ", "\x01\0\x01\0"s) + samples), false, -1},
        {"chunk size past the end before the data", riff(chunk("JUNK", "xx", 0xFFFFFFF0) + fmt(1, 1, 8000, 16) + samples),
         false, -1},
        {"ADPCM", riff(fmt(2, 1, 8000, 4) + samples), true, WAV_BAD_FORMAT},
        {"extensible with an unknown sub-format", riff(extensible(1, 16, 1, 0x07) + samples), true, WAV_BAD_FORMAT},
        {"zero channels", riff(fmt(1, 0, 8000, 16, 2) + samples), true, WAV_BAD_CHANNELS},
        {"six channels", riff(fmt(1, 6, 8000, 16) + samples), true, WAV_BAD_CHANNELS},
        {"zero rate", riff(fmt(1, 1, 0, 16) + samples), true, WAV_BAD_RATE},
        {"rate past 2^31-1", riff(fmt(1, 1, 0x80000000u, 16) + samples), true, WAV_BAD_RATE},
        {"12-bit PCM", riff(fmt(1, 1, 8000, 12, 2) + samples), true, WAV_BAD_BITS},
        {"16-bit float", riff(fmt(3, 1, 8000, 16) + samples), true, WAV_BAD_BITS},
        {"block align", riff(fmt(1, 1, 8000, 16, 4) + samples), true, WAV_BAD_BLOCK_ALIGN},
    };
    for (const Case& c : cases) {
        Loaded r = load(c.bytes);
        EXPECT_EQ(r.header, c.header) << c.what;
        EXPECT_EQ(r.check, c.check) << c.what;
    }
}

// A data chunk that claims more than the file holds (4 GB, or a frame cut in half): the lenient
// loader takes the whole frames present, the strict one refuses, and neither allocates for the
// claim.
TEST(Wav, ShortDataChunks) {
    const std::string head = fmt(1, 2, 8000, 16);
    struct Case { const char* what; std::string bytes; size_t lenientFrames; };
    const Case cases[] = {
        {"4 GB claimed", riff(head + "data" + le32(0xFFFFFFFF) + s16({1, 2, 3, 4, 5, 6})), 3},
        {"half a frame at the end", riff(head + chunk("data", s16({1, 2, 3}))), 1},
        {"nothing at all", riff(head + "data" + le32(400)), 0},
    };
    for (const Case& c : cases) {
        Loaded lenient = load(c.bytes, 0);
        ASSERT_TRUE(lenient.samples) << c.what;
        EXPECT_EQ(lenient.frames.size(), c.lenientFrames) << c.what;
        EXPECT_FALSE(load(c.bytes, WAV_LOAD_STRICT).samples) << c.what;
    }
    EXPECT_TRUE(load(riff(head + chunk("data", s16({1, 2}))), WAV_LOAD_STRICT).samples);
}

// ---- Interoperability with sox ----

bool haveSox() { return std::system("command -v sox >/dev/null 2>&1") == 0; }

std::string readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Raw codes given to sox come back as the same codes from the WAV file it makes: integer
// encodings through full-scale mapping and back, floats as the value times 2³¹−1.
TEST(WavSox, FilesSoxWritesReadBackToTheSameSamples) {
    if (!haveSox()) GTEST_SKIP() << "sox is not installed: skipping the interoperability tests";
    test::ScratchDir scratch;
    const std::string& dir = scratch.path();
    struct Case { const char* encoding; int bits; int channels; std::vector<int64_t> codes; };
    const Case cases[] = {
        {"unsigned-integer", 8, 1, {128, 255, 0, 1, 200}},
        {"signed-integer", 16, 2, {0, 32767, -32768, 1, -1, 1234}},
        {"signed-integer", 24, 1, {0, 8388607, -8388608, -1, 4660}},
        {"signed-integer", 32, 2, {0, INT32_MAX, INT32_MIN, -1, 123456789, -987654321}},
        {"floating-point", 32, 1, {0, 1, -1, 2, -4}},  // value = code / 4
        {"floating-point", 64, 2, {0, 1, -1, 2, -4, 3}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.encoding) + " " + std::to_string(c.bits));
        std::string raw;
        for (int64_t code : c.codes) {
            if (c.encoding[0] == 'f' && c.bits == 32) raw += f32({static_cast<float>(code) / 4});
            else if (c.encoding[0] == 'f') raw += f64({static_cast<double>(code) / 4});
            else
                for (int k = 0; k < c.bits / 8; ++k) raw += static_cast<char>(static_cast<uint64_t>(code) >> (8 * k));
        }
        std::ofstream(dir + "in.raw", std::ios::binary) << raw;
        std::string command = "sox -t raw -r 22050 -e " + std::string(c.encoding) + " -b " + std::to_string(c.bits) +
                              " -c " + std::to_string(c.channels) + " " + dir + "in.raw " + dir + "sox.wav";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        Loaded r = load(readBytes(dir + "sox.wav"), WAV_LOAD_STRICT);
        ASSERT_TRUE(r.header && r.samples);
        EXPECT_EQ(r.h.sampleRate, 22050u);
        EXPECT_EQ(r.h.channels, c.channels);
        ASSERT_EQ(r.frames.size() * static_cast<size_t>(c.channels), c.codes.size());
        for (size_t i = 0; i < c.codes.size(); ++i) {
            const WavSample& s = r.frames[i / static_cast<size_t>(c.channels)];
            int32_t x = (i % 2 && c.channels == 2) ? s.second : s.first;
            if (c.encoding[0] == 'f') {
                double v = std::clamp(static_cast<double>(c.codes[i]) / 4, -1.0, 1.0);
                EXPECT_EQ(x, static_cast<int32_t>(std::lrint(v * 2147483647.0))) << i;
            } else {
                // Back to the file's code; the most negative code reads as one step above it.
                const int64_t least = -(int64_t{1} << (c.bits - 1));
                int64_t code = c.bits == 8 ? c.codes[i] - 128 : c.codes[i];
                EXPECT_EQ(std::lrint(x * static_cast<double>(-least - 1) / 2147483647.0),
                          code == least && c.bits < 32 ? code + 1 : code) << i;
            }
        }
    }
}

}  // namespace
}  // namespace wavex

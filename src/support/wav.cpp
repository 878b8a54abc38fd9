#include "support/wav.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <sys/types.h>
#include <type_traits>
#include <vector>

namespace wavex {
namespace {

constexpr double kFull = 2147483647.0;            // 2³¹ − 1
constexpr size_t kChunkFrames = 32768;            // frames converted per block of file I/O
constexpr size_t kEncodeBlock = 1024;             // frames quantised at a time, on the stack

// The suffix shared by the KSDATAFORMAT sub-format GUIDs of PCM and IEEE float (after the 16-bit
// format code and two zero bytes).
constexpr uint8_t kSubFormatTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                        0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

uint16_t le16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
uint32_t le32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
           static_cast<uint32_t>(p[3]) << 24;
}
uint8_t* put16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
    return p + 2;
}
uint8_t* put32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
    return p + 4;
}
uint8_t* putId(uint8_t* p, const char* id) {
    std::memcpy(p, id, 4);
    return p + 4;
}

// A value already in 32-bit full-scale units, rounded and saturated; NaN gives 0.
int32_t saturate(double y) {
    if (y >= kFull) return INT32_MAX;
    if (y <= -2147483648.0) return INT32_MIN;
    if (y != y) return 0;
    return static_cast<int32_t>(std::lrint(y));
}

// ---- Decoding: one b-bit code (or float) at p → 32-bit full scale ----

// x·(2³¹−1)/P for a b-bit code x, P = 2^(b−1)−1, rounded, in integers: with 2³¹−1 = q·P + r it
// is q·x + r·x/P, whose fraction is never exactly one half (P is odd), so rounding it either way
// is rounding to nearest. Only x = −2^(b−1) falls below the 32-bit range, and saturates.
template <int Bits>
int32_t widen(int32_t code) {
    if constexpr (Bits == 32) {
        return code;
    } else {
        constexpr int64_t p = (int64_t{1} << (Bits - 1)) - 1, q = INT32_MAX / p, r = INT32_MAX % p;
        int64_t t = 2 * r * code;
        int64_t y = q * code + (t + (t >= 0 ? p : -p)) / (2 * p);
        return y < INT32_MIN ? INT32_MIN : static_cast<int32_t>(y);
    }
}

struct Unsigned8 {
    static constexpr int bytes = 1;
    static int32_t get(const uint8_t* p) { return widen<8>(p[0] - 128); }
};
struct Signed16 {
    static constexpr int bytes = 2;
    static int32_t get(const uint8_t* p) { return widen<16>(static_cast<int16_t>(le16(p))); }
};
struct Signed24 {
    static constexpr int bytes = 3;
    static int32_t get(const uint8_t* p) {
        uint32_t u = static_cast<uint32_t>(p[0]) << 8 | static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[2]) << 24;
        return widen<24>(static_cast<int32_t>(u) >> 8);
    }
};
struct Signed32 {
    static constexpr int bytes = 4;
    static int32_t get(const uint8_t* p) { return static_cast<int32_t>(le32(p)); }
};
struct Float32 {
    static constexpr int bytes = 4;
    static int32_t get(const uint8_t* p) { return saturate(std::bit_cast<float>(le32(p)) * kFull); }
};
struct Float64 {
    static constexpr int bytes = 8;
    static int32_t get(const uint8_t* p) {
        uint64_t u = static_cast<uint64_t>(le32(p)) | static_cast<uint64_t>(le32(p + 4)) << 32;
        return saturate(std::bit_cast<double>(u) * kFull);
    }
};

using Decoder = void (*)(const uint8_t* in, size_t frames, WavSample* out);

template <class Sample, int Channels>
void decode(const uint8_t* in, size_t frames, WavSample* out) {
    for (size_t i = 0; i < frames; ++i, in += Sample::bytes * Channels) {
        int32_t a = Sample::get(in);
        out[i] = WavSample(a, Channels == 2 ? Sample::get(in + Sample::bytes) : a);
    }
}

template <class Sample>
Decoder decoderOf(int channels) {
    return channels == 2 ? decode<Sample, 2> : decode<Sample, 1>;
}

Decoder decoderFor(const WavHeader& h) {
    if (h.sampleFormat == kWavFloat) return h.bitsPerSample == 32 ? decoderOf<Float32>(h.channels) : decoderOf<Float64>(h.channels);
    switch (h.bitsPerSample) {
        case 8: return decoderOf<Unsigned8>(h.channels);
        case 16: return decoderOf<Signed16>(h.channels);
        case 24: return decoderOf<Signed24>(h.channels);
        default: return decoderOf<Signed32>(h.channels);
    }
}

// ---- Encoding: values × m → b-bit codes, clipped ----

// Rounds to the nearest integer, halves to even, for |y| < 2⁵¹: adding and taking away 1.5·2⁵²
// leaves no fraction bits. Unlike lrint it is plain arithmetic, so the loop below vectorises.
inline double roundEven(double y) {
    constexpr double kShift = 6755399441055744.0;
    return (y + kShift) - kShift;
}

// The codes of one channel: the loop is plain arithmetic on doubles and vectorises.
template <int Bytes>
void quantize(const double* src, size_t n, double m, int32_t* codes) {
    constexpr double hi = Bytes == 4 ? kFull : static_cast<double>((int64_t{1} << (8 * Bytes - 1)) - 1);
    constexpr double lo = -hi - 1;
    for (size_t i = 0; i < n; ++i) {
        double y = src[i] * m;
        y = y == y ? y : 0.0;  // NaN writes 0
        codes[i] = static_cast<int32_t>(roundEven(std::min(std::max(y, lo), hi)));
    }
}

template <int Bytes, int Channels>
void encode(const double* const* src, size_t frames, double m, uint8_t* out) {
    int32_t codes[Channels][kEncodeBlock];
    for (size_t first = 0; first < frames; first += kEncodeBlock) {
        size_t n = std::min(kEncodeBlock, frames - first);
        for (int c = 0; c < Channels; ++c) quantize<Bytes>(src[c] + first, n, m, codes[c]);
        if constexpr ((Bytes == 2 || Bytes == 4) && std::endian::native == std::endian::little) {
            using Word = std::conditional_t<Bytes == 2, int16_t, int32_t>;  // stored as it lies in memory
            for (size_t i = 0; i < n; ++i)
                for (int c = 0; c < Channels; ++c) {
                    auto w = static_cast<Word>(codes[c][i]);
                    std::memcpy(out + (i * Channels + static_cast<size_t>(c)) * Bytes, &w, Bytes);
                }
            out += n * Channels * Bytes;
        } else {
            for (size_t i = 0; i < n; ++i)
                for (int c = 0; c < Channels; ++c) {
                    auto u = static_cast<uint32_t>(codes[c][i]);
                    if constexpr (Bytes == 1) *out++ = static_cast<uint8_t>(u + 128);
                    else
                        for (int k = 0; k < Bytes; ++k) *out++ = static_cast<uint8_t>(u >> (8 * k));
                }
        }
    }
}

using Encoder = void (*)(const double* const* src, size_t frames, double m, uint8_t* out);

template <int Bytes>
Encoder encoderOf(int channels) {
    return channels == 2 ? encode<Bytes, 2> : encode<Bytes, 1>;
}

// Size of the file, or -1 when it cannot be found (a stream).
int64_t fileSize(FILE* f) {
    if (fseeko(f, 0, SEEK_END) != 0) return -1;
    return static_cast<int64_t>(ftello(f));
}

}  // namespace

bool Wav_LoadHeader(FILE* file, WavHeader* header) {
    *header = WavHeader{};
    uint8_t b[40];
    int64_t start = static_cast<int64_t>(ftello(file));
    if (start < 0 || std::fread(b, 1, 12, file) != 12) return false;
    if (std::memcmp(b, "RIFF", 4) != 0 || std::memcmp(b + 8, "WAVE", 4) != 0) return false;
    header->riffSize = le32(b + 4);

    bool haveFormat = false, haveData = false;
    uint64_t pos = static_cast<uint64_t>(start) + 12;
    while (!(haveFormat && haveData)) {
        if (fseeko(file, static_cast<off_t>(pos), SEEK_SET) != 0 || std::fread(b, 1, 8, file) != 8) break;
        uint32_t size = le32(b + 4);
        if (std::memcmp(b, "fmt ", 4) == 0 && !haveFormat) {
            size_t want = std::min<uint32_t>(size, sizeof b);
            if (size < 16 || std::fread(b, 1, want, file) != want) return false;
            header->formatChunkSize = size;
            header->format = le16(b);
            header->channels = le16(b + 2);
            header->sampleRate = le32(b + 4);
            header->byteRate = le32(b + 8);
            header->blockAlign = le16(b + 12);
            header->bitsPerSample = le16(b + 14);
            header->sampleFormat = header->format;
            if (header->format == kWavExtensible) {
                // cbSize (22), valid bits, channel mask, then the sub-format GUID.
                bool known = size >= 40 && le16(b + 16) >= 22 && std::memcmp(b + 26, kSubFormatTail, 14) == 0;
                header->sampleFormat = known ? le16(b + 24) : 0;
            }
            haveFormat = true;
        } else if (std::memcmp(b, "data", 4) == 0 && !haveData) {
            header->dataOffset = pos + 8;
            header->dataSize = size;
            haveData = true;
        }
        pos += 8 + uint64_t{size} + (size & 1);  // chunks are padded to an even size
    }
    return haveFormat && haveData;
}

WAV_Error Wav_CheckHeader(const WavHeader& h) {
    if (h.sampleFormat != kWavPcm && h.sampleFormat != kWavFloat) return WAV_BAD_FORMAT;
    if (h.channels != 1 && h.channels != 2) return WAV_BAD_CHANNELS;
    if (h.sampleRate == 0 || h.sampleRate > INT32_MAX) return WAV_BAD_RATE;
    bool bitsOk = h.sampleFormat == kWavPcm
                      ? h.bitsPerSample == 8 || h.bitsPerSample == 16 || h.bitsPerSample == 24 || h.bitsPerSample == 32
                      : h.bitsPerSample == 32 || h.bitsPerSample == 64;
    if (!bitsOk) return WAV_BAD_BITS;
    if (h.blockAlign != h.channels * h.bitsPerSample / 8) return WAV_BAD_BLOCK_ALIGN;
    return WAV_OK;
}

bool Wav_LoadSamples(FILE* file, const WavHeader& header, Array<WavSample>& samples, int option) {
    samples.clear();
    if (Wav_CheckHeader(header) != WAV_OK) return false;
    const size_t frameBytes = header.blockAlign;
    const bool strict = option & WAV_LOAD_STRICT;
    uint64_t bytes = header.dataSize;
    int64_t size = fileSize(file);
    bool sized = size >= 0;
    if (sized) bytes = std::min<uint64_t>(bytes, static_cast<uint64_t>(size) > header.dataOffset
                                                     ? static_cast<uint64_t>(size) - header.dataOffset : 0);
    if (strict && (bytes < header.dataSize || header.dataSize % frameBytes != 0)) return false;
    if (fseeko(file, static_cast<off_t>(header.dataOffset), SEEK_SET) != 0) return false;

    const uint64_t frames = bytes / frameBytes;
    const Decoder decodeFrames = decoderFor(header);
    if (sized) samples.resize(frames);
    std::vector<uint8_t> buffer(kChunkFrames * frameBytes);
    uint64_t done = 0;
    while (done < frames) {
        size_t want = static_cast<size_t>(std::min<uint64_t>(kChunkFrames, frames - done));
        size_t got = std::fread(buffer.data(), frameBytes, want, file);
        if (!sized) samples.resize(done + got);  // a stream: grow with what arrives
        decodeFrames(buffer.data(), got, samples.data() + done);
        done += got;
        if (got < want) break;
    }
    if (std::ferror(file)) return false;
    if (done < frames) {
        if (strict) return false;
        samples.resize(done);
    }
    return true;
}

bool Wav_WriteHeader(FILE* file, const WavHeader& h) {
    uint8_t b[44];
    uint8_t* p = putId(b, "RIFF");
    p = put32(p, h.riffSize);
    p = putId(p, "WAVE");
    p = putId(p, "fmt ");
    p = put32(p, 16);
    p = put16(p, h.format);
    p = put16(p, h.channels);
    p = put32(p, h.sampleRate);
    p = put32(p, h.byteRate);
    p = put16(p, h.blockAlign);
    p = put16(p, h.bitsPerSample);
    p = putId(p, "data");
    put32(p, h.dataSize);
    return std::fwrite(b, 1, sizeof b, file) == sizeof b;
}

WriteSamplesStatus Wav_WriteSamples(FILE* file, const WavHeader& header, double factor, const double* const* channels,
                                    int numChannels, int64_t numFrames) {
    const int bytes = header.bitsPerSample / 8;
    if (numFrames <= 0) return WAV_OK;
    if (numChannels < 1 || numChannels > 2 || bytes < 1 || bytes > 4) return WAV_BAD_BITS;
    // A value × factor is in 32-bit full-scale units; m maps it straight to the file's codes.
    // Written as code full scale / (the caller's scale), so that the usual factor 2³¹−1 (scale 1)
    // gives m exactly 2^(b−1)−1.
    const double m = static_cast<double>((int64_t{1} << (8 * bytes - 1)) - 1) / (kFull / factor);
    const size_t frameBytes = static_cast<size_t>(bytes * numChannels);
    const Encoder encodeFrames = bytes == 1 ? encoderOf<1>(numChannels) : bytes == 2 ? encoderOf<2>(numChannels)
                                 : bytes == 3 ? encoderOf<3>(numChannels) : encoderOf<4>(numChannels);
    std::vector<uint8_t> buffer(kChunkFrames * frameBytes);
    std::vector<double> silence(channels[0] && (numChannels == 1 || channels[1]) ? 0 : kChunkFrames, 0.0);
    for (int64_t first = 0; first < numFrames; first += static_cast<int64_t>(kChunkFrames)) {
        size_t frames = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(kChunkFrames), numFrames - first));
        const double* src[2];
        for (int c = 0; c < numChannels; ++c) src[c] = channels[c] ? channels[c] + first : silence.data();
        encodeFrames(src, frames, m, buffer.data());
        if (std::fwrite(buffer.data(), frameBytes, frames, file) != frames) return WAV_SAMPLES_NOT_WRITTEN;
    }
    if ((static_cast<uint64_t>(numFrames) * frameBytes) & 1 && std::fputc(0, file) == EOF) return WAV_SAMPLES_NOT_WRITTEN;
    return WAV_OK;
}

}  // namespace wavex

// Reading and writing RIFF WAVE audio.
//
// Reading: 8-bit unsigned and 16-, 24- and 32-bit signed PCM, 32- and 64-bit IEEE float, as plain
// or WAVE_FORMAT_EXTENSIBLE files, mono or stereo. Chunks other than "fmt " and "data" (LIST,
// fact, cue ...) may come before or after the data and are skipped, odd-sized chunks with their
// pad byte. Writing: canonical 44-byte-header PCM at 8, 16, 24 or 32 bits.
//
// Samples in memory are WavSample pairs of 32-bit integers, scaled so that the full scale of the
// file's bit depth maps to the full 32-bit range: a b-bit code x becomes x·(2³¹−1)/(2^(b−1)−1),
// rounded, so the largest positive code becomes 2147483647 and the most negative one (−2^(b−1),
// one step beyond −full scale) saturates at −2³¹. Float samples take 1.0 as full scale and clip
// at ±1. Writing is the inverse: a value v·factor (factor maps 1.0 to 2³¹−1) becomes the b-bit code
// round(v·factor·(2^(b−1)−1)/(2³¹−1)), halves to even, clipped to the code range rather than
// wrapped; NaN writes 0.
//
// Status values. The routines and the script functions built on them share one numbering, so a
// status seen by a script means one thing:
//    0  WAV_OK
//    2  WAV_BAD_BITS                bits per sample not supported: PCM 8, 16, 24, 32; float 32, 64
//    3  WAV_HEADER_NOT_WRITTEN
//    4  WAV_CANNOT_CREATE           the file could not be opened for writing
//    5  WAV_SAMPLES_NOT_WRITTEN     Wav_WriteSamples: a write failed (disk full ...)
//    6  WAV_TOO_LONG                more sample data than the 32-bit sizes of a WAV file can hold
//    7  WAV_HEADER_NOT_READ         not a RIFF WAVE file, or no "fmt " or "data" chunk
//    8  WAV_SAMPLES_NOT_READ
//   10  WAV_CANNOT_OPEN             the file could not be opened for reading
//   11  WAV_BAD_FORMAT              neither PCM nor IEEE float (also the sub-format of an
//                                   extensible file)
//   12  WAV_BAD_CHANNELS            not 1 or 2 channels
//   13  WAV_BAD_RATE                sample rate 0 or above 2³¹−1
//   14  WAV_BAD_BLOCK_ALIGN         block align is not channels × bits / 8
// Wav_CheckHeader gives 0, 2 or 11 to 14.
#pragma once

#include "wavex/array.hpp"

#include <cstdint>
#include <cstdio>

namespace wavex {

enum WavStatus : int {
    WAV_OK = 0,
    WAV_BAD_BITS = 2,
    WAV_HEADER_NOT_WRITTEN = 3,
    WAV_CANNOT_CREATE = 4,
    WAV_SAMPLES_NOT_WRITTEN = 5,
    WAV_TOO_LONG = 6,
    WAV_HEADER_NOT_READ = 7,
    WAV_SAMPLES_NOT_READ = 8,
    WAV_CANNOT_OPEN = 10,
    WAV_BAD_FORMAT = 11,
    WAV_BAD_CHANNELS = 12,
    WAV_BAD_RATE = 13,
    WAV_BAD_BLOCK_ALIGN = 14,
};
using WAV_Error = WavStatus;
using WriteSamplesStatus = WavStatus;

inline constexpr uint16_t kWavPcm = 1;
inline constexpr uint16_t kWavFloat = 3;
inline constexpr uint16_t kWavExtensible = 0xFFFE;

// Loader option bits (Wav_LoadSamples).
//   0                 lenient: a data chunk cut short by the end of the file (a recorder that was
//                     stopped, a size left unfinished by a streaming writer) gives the whole
//                     frames that are there.
//   WAV_LOAD_STRICT   the data chunk must hold every byte its size claims, in whole frames;
//                     otherwise loading fails.
// Other bits are reserved and ignored.
inline constexpr int WAV_LOAD_STRICT = 1;

struct WavHeader {
    uint32_t riffSize = 0;         // bytes after the RIFF size field: data size + 36 (+ a pad byte)
    uint32_t formatChunkSize = 16;
    uint16_t format = kWavPcm;     // as in the file: PCM, float or extensible
    uint16_t channels = 0;
    uint32_t sampleRate = 0;       // frames per second
    uint32_t byteRate = 0;         // channels × bits × sample rate / 8
    uint16_t blockAlign = 0;       // bytes per frame: channels × bits / 8
    uint16_t bitsPerSample = 0;
    uint32_t dataSize = 0;         // bytes of sample data, as the data chunk claims
    // Set by Wav_LoadHeader.
    uint16_t sampleFormat = kWavPcm;  // PCM or float: `format`, or an extensible file's sub-format
                                      // (0 when that is neither)
    uint64_t dataOffset = 0;          // file position of the first sample byte
};

// One frame: the first channel, then the second (a mono file's one channel again).
struct WavSample {
    int32_t first;
    int32_t second;
    WavSample() noexcept {}  // left uninitialised: the loader writes every frame it sizes
    constexpr WavSample(int32_t a, int32_t b) noexcept : first(a), second(b) {}
};

// Reads the RIFF header and walks the chunks to the "fmt " and "data" chunks. False when the
// file is not a RIFF WAVE file or lacks either chunk.
bool Wav_LoadHeader(FILE* file, WavHeader* header);
// Whether the header describes samples this module reads (see the status values above).
WAV_Error Wav_CheckHeader(const WavHeader& header);
// Reads the sample frames of a header that Wav_CheckHeader accepted, with the loader option bits
// above. Memory is sized by the data present, never by the size the header claims.
bool Wav_LoadSamples(FILE* file, const WavHeader& header, Array<WavSample>& samples, int option);
// Writes the canonical 44-byte PCM header.
bool Wav_WriteHeader(FILE* file, const WavHeader& header);
// Writes numFrames frames of numChannels channels (`channels[c]` holds channel c; a null channel
// writes silence), each value times `factor` being a 32-bit full-scale value (see above), at the
// header's bit depth, then the pad byte that an odd data size needs. WAV_OK, WAV_SAMPLES_NOT_WRITTEN,
// or WAV_BAD_BITS for a bit depth or channel count it does not write.
WriteSamplesStatus Wav_WriteSamples(FILE* file, const WavHeader& header, double factor, const double* const* channels,
                                    int numChannels, int64_t numFrames);

}  // namespace wavex

// Fuzzes the WAV loader from memory: header, check, and samples with both loader options.
// The samples may never outnumber the whole frames the input holds.
#include "support/wav.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    FILE* f = fmemopen(const_cast<uint8_t*>(data), size, "rb");
    if (!f) return 0;
    wavex::WavHeader h;
    if (wavex::Wav_LoadHeader(f, &h) && wavex::Wav_CheckHeader(h) == wavex::WAV_OK) {
        for (int option : {0, wavex::WAV_LOAD_STRICT}) {
            wavex::Array<wavex::WavSample> samples;
            if (wavex::Wav_LoadSamples(f, h, samples, option) && samples.size() * h.blockAlign > size) std::abort();
        }
    }
    std::fclose(f);
    return 0;
}

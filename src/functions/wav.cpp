// WAV audio files: WAV_OpenFile, WAV_ReadData, WAV_WriteFile, WAV_CloseFile.
//
// WAV_OpenFile(file [, option]) loads a whole file (support/wav.hpp: PCM 8 to 32 bits, float 32
// and 64 bits, mono or stereo) into a process-wide store and gives [handle, status]; the handle is
// -1 unless the status is 0. Handles count from 1 and are never reused; a file whose samples fail
// to load uses up its number all the same. The option is the loader's: 0 reads the whole frames
// present when a data chunk is cut short, 1 (WAV_LOAD_STRICT) refuses such a file with status 8.
//
// WAV_ReadData(handle, [channel, scale]) gives channel 0 or 1 (a mono file's one channel is
// both) as sample × scale / (2³¹−1), so full scale reads as ±scale, over a time axis that starts
// at 0 and adds 1/rate per frame; unit volts over seconds.
//
// WAV_WriteFile(file, [bits, scale, rate], left [, right]) writes 8-, 16-, 24- or 32-bit PCM at
// the rate (default 44100, truncated) with value/scale (scale default 1) as the fraction of full
// scale, clipping values beyond it. Two channels when a fourth argument is given: as many frames
// as the shorter channel, or, when the fourth argument is empty, the second channel silent.
// Gives the status.
//
// WAV_CloseFile(handle) removes the entry and gives the number removed (0 or 1).
//
// Bad input: no messages. Statuses (support/wav.hpp): 0 success; 2 bits other than 8, 16, 24,
// 32 (no file is touched); 3 header not written; 4 file not created; 5 samples not written;
// 6 more data than a WAV file holds; 13 a sample rate below 1 (these two are found before the
// file is touched); 7 no RIFF WAVE header with "fmt " and "data" chunks; 8 samples not read;
// 10 file not opened; 2 and 11 to 14 from Wav_CheckHeader for headers it does not accept. An
// unknown handle or a channel other than 0 and 1 gives no result.
#include "support/numbers.hpp"
#include "support/wav.hpp"
#include "wavex/function.hpp"

#include <list>
#include <memory>
#include <mutex>

namespace wavex {
namespace {

struct WavEntry {
    Array<WavSample> samples;
    WavHeader header;
    int32_t handle = 0;
};
using EntryRef = std::shared_ptr<WavEntry>;

// Shared by every interpreter and thread. An entry never changes once stored, so a call reads the
// one it found without holding the lock.
class WavStore {
public:
    int32_t issueHandle() {
        std::lock_guard guard(lock_);
        return nextHandle_++;
    }
    void add(EntryRef entry) {
        std::lock_guard guard(lock_);
        entries_.push_front(std::move(entry));
    }
    EntryRef find(double handle) const {
        int32_t h = truncateToInt32(handle);
        std::lock_guard guard(lock_);
        for (const EntryRef& e : entries_)
            if (e->handle == h) return e;
        return nullptr;
    }
    size_t remove(int32_t handle) {
        std::lock_guard guard(lock_);
        return entries_.remove_if([&](const EntryRef& e) { return e->handle == handle; });
    }

private:
    mutable std::mutex lock_;
    std::list<EntryRef> entries_;  // newest first
    int32_t nextHandle_ = 1;
};

WavStore& store() {
    static WavStore s;
    return s;
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

int openWav(const std::string& name, int option, int32_t* handle) {
    File file(std::fopen(name.c_str(), "rb"), &std::fclose);
    if (!file) return WAV_CANNOT_OPEN;
    WavHeader header;
    if (!Wav_LoadHeader(file.get(), &header)) return WAV_HEADER_NOT_READ;
    if (WAV_Error e = Wav_CheckHeader(header)) return e;
    auto entry = std::make_shared<WavEntry>();
    entry->handle = store().issueHandle();
    if (!Wav_LoadSamples(file.get(), header, entry->samples, option)) return WAV_SAMPLES_NOT_READ;
    entry->header = header;
    store().add(entry);
    *handle = entry->handle;
    return WAV_OK;
}

int writeWav(const std::string& name, int32_t bits, double scale, double rateArg, const double* const* channels,
             int numChannels, int64_t frames) {
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32) return WAV_BAD_BITS;
    int32_t rate = truncateToInt32(rateArg);
    if (rate < 1) return WAV_BAD_RATE;  // a header Wav_CheckHeader would refuse on reading
    uint64_t blockAlign = static_cast<uint64_t>(numChannels * bits / 8);
    uint64_t dataSize = blockAlign * static_cast<uint64_t>(frames);
    if (dataSize + 36 + 1 > UINT32_MAX) return WAV_TOO_LONG;
    WavHeader h;
    h.riffSize = static_cast<uint32_t>(dataSize + 36 + (dataSize & 1));  // with the pad byte of odd data
    h.formatChunkSize = 16;
    h.format = kWavPcm;
    h.channels = static_cast<uint16_t>(numChannels);
    h.sampleRate = static_cast<uint32_t>(rate);
    h.byteRate = static_cast<uint32_t>(static_cast<uint64_t>(numChannels) * bits * rate / 8);
    h.blockAlign = static_cast<uint16_t>(blockAlign);
    h.bitsPerSample = static_cast<uint16_t>(bits);
    h.dataSize = static_cast<uint32_t>(dataSize);

    File file(std::fopen(name.c_str(), "wb"), &std::fclose);
    if (!file) return WAV_CANNOT_CREATE;
    if (!Wav_WriteHeader(file.get(), h)) return WAV_HEADER_NOT_WRITTEN;
    int status = Wav_WriteSamples(file.get(), h, 2147483647.0 / scale, channels, numChannels, frames);
    if (std::fclose(file.release()) != 0 && status == WAV_OK) status = WAV_SAMPLES_NOT_WRITTEN;
    return status;
}

FUNC_ERROR wavOpenFile(WAVEX_HANDLER_PARAMS) {
    int option = args.count() > 1 ? truncateToInt32(args.scalar(1)) : 0;
    int32_t handle = -1;
    int status = openWav(std::string(args.string(0)), option, &handle);
    double* out = result->makeRealNoRef(2);
    if (!out) return FUNC_FAILED;
    out[0] = handle;
    out[1] = status;
    return FUNC_OK;
}

FUNC_ERROR wavReadData(WAVEX_HANDLER_PARAMS) {
    const double* control = args.data(1);
    int64_t controls = args.length(1);
    uint32_t channel = static_cast<uint32_t>(controls ? truncateToInt32(control[0]) : -1);
    double scale = controls >= 2 ? control[1] : 1.0;
    if (channel > 1) return FUNC_OK;
    EntryRef entry = store().find(args.scalar(0));
    if (!entry) return FUNC_OK;

    const Array<WavSample>& samples = entry->samples;
    auto n = static_cast<int64_t>(samples.size());
    result->setType(VD_REAL, VD_REAL);
    result->setPhysType(units::Voltage, units::Time);
    double* y = result->makeReal(n, RESULT_OWN, -1);
    double* x = result->makeRealRef(n, RESULT_OWN, -1);
    if (n && (!y || !x)) return FUNC_FAILED;
    result->setRefName("time");
    double step = 1.0 / static_cast<int32_t>(entry->header.sampleRate);
    double t = 0;
    for (int64_t i = 0; i < n; ++i) {
        y[i] = (channel ? samples[i].second : samples[i].first) * scale / 2147483647.0;
        x[i] = t;
        t += step;  // accumulated, as the time axis of the recording is
    }
    return FUNC_OK;
}

FUNC_ERROR wavWriteFile(WAVEX_HANDLER_PARAMS) {
    const double* control = args.data(1);
    int64_t controls = args.length(1);
    int32_t bits = controls ? truncateToInt32(control[0]) : 0;
    double scale = controls >= 2 ? control[1] : 1.0;
    double rate = controls > 2 ? control[2] : 44100.0;
    int numChannels = args.count() > 3 ? 2 : 1;
    int64_t frames = args.length(2);
    const double* channels[2] = {args.data(2), nullptr};
    if (numChannels == 2 && args.length(3) != 0) {
        channels[1] = args.data(3);
        frames = std::min(frames, args.length(3));
    }
    int status = writeWav(std::string(args.string(0)), bits, scale, rate, channels, numChannels, frames);
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = status;
    return FUNC_OK;
}

FUNC_ERROR wavCloseFile(WAVEX_HANDLER_PARAMS) {
    int32_t handle = truncateToInt32(args.scalar(0));
    size_t removed = store().remove(handle);
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = static_cast<double>(removed);
    return FUNC_OK;
}

constexpr FuncInfo kFunctions[] = {
    {"WAV_CloseFile", {arg::Real}, 1, wavCloseFile,
     {.signature = "WAV_CloseFile(handle)",
      .summary = "Forgets a WAV file opened by WAV_OpenFile.",
      .returns = "one real: 1 when it was open, else 0",
      .notes = "Open files are kept, samples in memory, until closed.",
      .example = "WAV_WriteFile('a.wav', [16, 1, 8000], [0, 0.5]); h = WAV_OpenFile('a.wav'); "
                 "WAV_CloseFile(h[0]); WAV_CloseFile(h[0])"}},
    {"WAV_OpenFile", {arg::String, arg::Real}, 1, wavOpenFile,
     {.signature = "WAV_OpenFile(file [, option])",
      .summary = "Loads a WAV file and gives a handle to read it with WAV_ReadData.",
      .returns = "two reals: [handle, status]; the handle is -1 unless the status is 0",
      .notes = "8-bit unsigned, 16/24/32-bit PCM and 32/64-bit float, mono or stereo. option 0 (default) "
               "reads the whole frames of a file cut short, 1 refuses it (status 8). Statuses: 0 "
               "success, 7 no RIFF/WAVE header, 8 samples not read, 10 file not opened, 11 neither PCM "
               "nor float, 12 not 1 or 2 channels, 13 bad sample rate, 14 bad block align, 2 "
               "unsupported bits per sample.",
      .example = "WAV_WriteFile('a.wav', [16, 1, 8000], [0, 0.5]); h = WAV_OpenFile('a.wav'); h[1]; "
                 "h = WAV_OpenFile('missing.wav'); h"}},
    {"WAV_ReadData", {arg::Real, arg::Real}, 2, wavReadData,
     {.signature = "WAV_ReadData(handle, [channel, scale])",
      .summary = "One channel of a WAV file opened by WAV_OpenFile, as a curve over time.",
      .returns = "a real curve in V over time in s from 0, one point per frame at 1/rate",
      .notes = "channel is 0 (left) or 1 (right; a mono file's one channel is both); full scale reads as "
               "±scale (default 1). An unknown handle, a missing channel or another one gives an empty "
               "result.",
      .example = "WAV_WriteFile('a.wav', [16, 1, 4], [0, 1, -1]); h = WAV_OpenFile('a.wav'); "
                 "WAV_ReadData(h[0], [0, 2])"}},
    FuncInfo("WAV_WriteFile", {arg::String, arg::Real, arg::Real, arg::Real}, 3, wavWriteFile,
             {.signature = "WAV_WriteFile(file, [bits, scale, rate], left [, right])",
              .summary = "Writes one or two channels of samples to a PCM WAV file.",
              .returns = "one real: the status, 0 on success",
              .notes = "bits 8, 16, 24 or 32 (else status 2); value/scale (scale default 1) is the fraction of "
                       "full scale, clipped beyond it and rounded half to even; rate defaults to 44100. With "
                       "right, two channels of the shorter length (right empty: a silent second channel). "
                       "Statuses: 3 header not written, 4 file not created, 5 samples not written, 6 too much "
                       "data, 13 a rate below 1.",
              .example = "WAV_WriteFile('a.wav', [24, 1, 8000], [0, 3, -0.25], [0, -1, -9]); "
                         "h = WAV_OpenFile('a.wav'); WAV_ReadData(h[0], [0]); WAV_ReadData(h[0], [1])"}).outsideSafeMode(),
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// Fuzzes the reader of the UTF-16 raw format. So that mutations of the header stay meaningful,
// an input is "HEADER\0DATA": the header's bytes become UTF-16LE code units (Latin-1) and the data
// follows as it is. An input starting with 0xFF is passed on whole instead (after that byte), to
// reach what Latin-1 cannot say: surrogates, odd lengths, a byte-order mark.
#include "io/raw.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes;
    if (size > 0 && data[0] == 0xFF) {
        bytes.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
    } else {
        const void* nul = std::memchr(data, 0, size);
        const size_t header = nul ? static_cast<size_t>(static_cast<const uint8_t*>(nul) - data) : size;
        for (size_t i = 0; i < header; ++i) bytes += static_cast<char>(data[i]), bytes += '\0';
        if (nul) bytes.append(reinterpret_cast<const char*>(data) + header + 1, size - header - 1);
    }
    std::string error;
    auto vectors = wavex::io::parseRaw(bytes, "fuzz.raw", &error, {"r=1k", "r=2k", "r=3k"});
    if (!vectors) {
        if (error.empty()) __builtin_trap();
        return 0;
    }
    for (const wavex::io::NamedVector& nv : *vectors) {
        const wavex::Vector& v = *nv.value;
        if (v.ref.present() && v.size() != v.ref.size()) __builtin_trap();
        size_t total = 0;
        for (size_t k = 0; k < v.numDivisions(); ++k) total += v.divisionLength(k);
        if (total != v.size()) __builtin_trap();
    }
    return 0;
}

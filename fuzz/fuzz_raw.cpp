// Fuzzes the raw-file reader from memory (both dialects), then prints whatever loads through both
// printers, checking that the loaded vectors are consistent: as long as their reference, the
// divisions adding up, every failure saying why.
#include "io/printers.hpp"
#include "io/raw.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::string error;
    auto vectors = wavex::io::parseRaw(bytes, "fuzz.raw", &error, {"a=1", "a=2"});
    if (!vectors) {
        if (error.empty()) __builtin_trap();
        return 0;
    }
    if (vectors->empty()) __builtin_trap();
    std::string out;
    for (const wavex::io::NamedVector& nv : *vectors) {
        const wavex::Vector& v = *nv.value;
        if (v.ref.present() && v.size() != v.ref.size()) __builtin_trap();
        size_t total = 0;
        for (size_t k = 0; k < v.numDivisions(); ++k) total += v.divisionLength(k);
        if (total != v.size() || (!v.labels.empty() && v.labels.size() != v.numDivisions())) __builtin_trap();
        out.clear();
        wavex::io::appendJson(out, nv.value);
        wavex::io::appendText(out, nv.value, nv.name);
    }
    return 0;
}

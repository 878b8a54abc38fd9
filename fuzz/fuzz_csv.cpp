// Fuzzes the CSV loader from memory, then prints whatever loads through both printers, checking
// that the loaded vectors are consistent: the columns over one shared x-axis, divisions adding up.
#include "io/csv.hpp"
#include "io/printers.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string error;
    auto vectors = wavex::io::parseCsv(text, "fuzz.csv", &error);
    if (!vectors) {
        if (error.empty()) __builtin_trap();  // every failure says why
        return 0;
    }
    if (vectors->empty()) __builtin_trap();
    // The first column is the x-axis itself; every other column shares one copy of it.
    const wavex::Vector& first = *vectors->front().value;
    const wavex::Vector& other = *vectors->back().value;
    std::string out;
    for (const wavex::io::NamedVector& nv : *vectors) {
        const wavex::Vector& v = *nv.value;
        bool isAxis = &v == &first;
        if (v.size() != first.size() || isAxis == v.ref.present()) __builtin_trap();
        if (!isAxis && (v.ref.size() != v.size() || v.ref.realValues != other.ref.realValues)) __builtin_trap();
        size_t total = 0;
        for (size_t k = 0; k < v.numDivisions(); ++k) {
            if (v.divisionLength(k) == 0) __builtin_trap();
            total += v.divisionLength(k);
        }
        if (total != v.size() || (!v.labels.empty() && v.labels.size() != v.numDivisions())) __builtin_trap();
        out.clear();
        wavex::io::appendJson(out, nv.value);
        wavex::io::appendText(out, nv.value, nv.name);
    }
    return 0;
}

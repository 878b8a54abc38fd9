// Fuzzes the Touchstone reader from memory. The first byte chooses the port count (1 to 4, or a
// hostile 0 or 1000); the rest is the file's text. Checks the table's invariants: n×n values per
// point, frequencies in order, at most 101 messages, and no table after a failed build.
#include "support/touchstone.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    static constexpr int kPorts[8] = {1, 2, 3, 4, 2, 1, 0, 1000};
    int ports = kPorts[data[0] % 8];
    std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    wavex::AcTableData table("", ports, wavex::DcExtractionMethod::Linear,
                             static_cast<wavex::AcTableInterpMethod>(data[0] / 8 % 3));
    std::vector<std::string> errors;
    bool ok = table.buildFromText(text, &errors);
    if (ok != errors.empty() || errors.size() > wavex::AcTableData::kMaxMessages + 1) std::abort();
    size_t nn = static_cast<size_t>(ports) * static_cast<size_t>(ports);
    if (!ok && (table.numPoints() != 0 || !table.noise().empty())) std::abort();
    if (table.values().size() != table.numPoints() * nn) std::abort();
    for (size_t i = 1; i < table.numPoints(); ++i)
        if (table.frequencies()[i] < table.frequencies()[i - 1]) std::abort();
    if (ok) {
        std::vector<std::complex<double>> out(nn);
        for (double f : {-1.0, 0.0, table.frequencies()[0], table.frequencies().back() * 0.75, 1e300})
            table.valuesAt(f, out);
    }
    return 0;
}

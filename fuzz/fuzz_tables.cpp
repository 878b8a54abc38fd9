// Fuzzes the readers of outside text behind the tables and reports: a table (delimiter detected
// from the first byte's choice), a statistical data file, and a netlist element line, and checks
// what their headers promise.
#include "fuzz_check.hpp"
#include "support/spice_element.hpp"
#include "support/stat_data.hpp"
#include "support/text_table.hpp"

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    if (size < 1) return 0;
    std::string_view in(reinterpret_cast<const char*>(data) + 1, size - 1);
    static const char kDelimiters[] = {'\0', ',', ';', '\t', ' '};
    char delimiter = kDelimiters[data[0] % 5];

    std::vector<std::string_view> lines;
    for (size_t start = 0; start <= in.size();) {
        size_t end = in.find('\n', start);
        if (end == std::string_view::npos) end = in.size();
        lines.push_back(in.substr(start, end - start));
        start = end + 1;
    }
    TextTable table(lines, delimiter);
    std::vector<size_t> all(table.ok() ? table.columns() : 0);
    std::iota(all.begin(), all.end(), size_t{0});
    if (table.ok() && table.keep(all)) {
        for (size_t r = 0; r < table.rows(); ++r)
            for (size_t c = 0; c < table.columns(); ++c) {
                std::string_view raw = table.raw(r, c), line = table.line(r);
                check(raw.data() >= line.data() && raw.data() + raw.size() <= line.data() + line.size());
                check(table.cell(r, c).size() <= raw.size());
            }
        for (size_t c = 0; c < table.columns(); ++c) check(table.column(table.name(c)).has_value());
    } else {
        check(!table.error().empty());
    }

    StatData stat;
    std::string failure = parseStatData(in, "fuzz.xml", stat);
    if (failure.empty())
        for (const auto& p : stat.perturbations) check(p.nominalValues.size() == stat.measurements.size());

    for (std::string_view line : lines) spiceElementParameters(line);
    return 0;
}

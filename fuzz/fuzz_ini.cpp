// Fuzzes the ini reader and writer: a file that parses is written back byte for byte (when its
// line ends are all "\n"), and an entry set into it reads back after a fresh parse, with every
// other entry unchanged.
#include "fuzz_check.hpp"
#include "support/ini.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string error;
    std::optional<IniFile> ini = IniFile::parse(text, &error);
    if (!ini) {
        check(error.starts_with("line "));
        return 0;
    }
    if (text.find('\r') == std::string_view::npos) check(ini->text() == text);

    std::vector<std::string> sections = ini->sections();
    std::string section = sections.empty() ? "s" : sections.back();
    std::string key = "fuzzed", value = "v = 1 ; x";
    if (!IniFile::checkEntry(section, key, value).empty()) return 0;
    ini->set(section, key, value);
    std::optional<IniFile> again = IniFile::parse(ini->text(), &error);
    check(again.has_value());
    check(again->value(section, key) == value);
    for (const std::string& s : sections) {
        std::vector<std::string> keys = ini->keys(s).value_or(std::vector<std::string>{});
        for (const std::string& k : keys) check(again->value(s, k) == ini->value(s, k));
    }
    return 0;
}

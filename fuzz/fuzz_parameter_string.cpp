// Fuzzes the parameter-string parser. The first byte chooses the reading, quoting and the count of
// unlabelled values; the rest is lines: the string, then names and values separated by '|', then
// optional delimiters, opening and closing quotes. Checks that reads give views into the string,
// and that without quoting a written string reads back to itself when no name or value given holds
// a delimiter.
#include "fuzz_check.hpp"
#include "support/parameter_string.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::vector<std::string_view> cut(std::string_view s, char at) {
    std::vector<std::string_view> parts;
    if (s.empty()) return parts;
    for (size_t k; (k = s.find(at)) != std::string_view::npos; s.remove_prefix(k + 1)) parts.push_back(s.substr(0, k));
    parts.push_back(s);
    return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    if (size < 1) return 0;
    unsigned control = data[0];
    std::vector<std::string_view> lines = cut(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1), '\n');
    lines.resize(std::max<size_t>(lines.size(), 3));
    std::string_view text = lines[0];
    std::vector<std::string_view> names = cut(lines[1], '|'), values = cut(lines[2], '|');
    ParameterSyntax syntax;
    syntax.quoted = control & 2;
    if (lines.size() > 3) syntax.delimiters = lines[3];
    if (lines.size() > 4) syntax.openQuotes = lines[4];
    if (lines.size() > 5) syntax.closeQuotes = lines[5];
    auto reading = control & 1 ? ParameterReading::Entries : ParameterReading::Tokens;
    int64_t unlabelled = static_cast<int64_t>(control >> 2) - 8;  // -8 .. 55

    ParameterString forReading(text, syntax, reading, unlabelled, ParameterString::Read);
    for (std::string_view name : names) {
        std::string_view value = forReading.read(name);
        check(value.empty() || (value.data() >= text.data() && value.data() + value.size() <= text.data() + text.size()));
    }
    ParameterString forRebuilding(text, syntax, reading, unlabelled, ParameterString::Rebuild);
    (void)forRebuilding.remove(names);
    std::string written = forRebuilding.write(names, values);

    bool plain = !syntax.quoted && syntax.delimiters.find(' ') != std::string_view::npos &&
                 syntax.delimiters.find('=') != std::string_view::npos;
    for (std::string_view s : names) plain = plain && s.find_first_of(syntax.delimiters) == std::string_view::npos;
    for (std::string_view s : values) plain = plain && s.find_first_of(syntax.delimiters) == std::string_view::npos;
    if (plain) {
        // (A deleted unlabelled value shifts the ones after it, so only writing keeps them all.)
        ParameterString again(written, syntax, reading, static_cast<int64_t>(forRebuilding.unlabelledCount()),
                              ParameterString::Rebuild);
        check(again.remove({}) == written);
    }
    return 0;
}

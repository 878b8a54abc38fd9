// Fuzzes the netlist reader from memory, in both its views. Physical lines: one per line end plus
// an unterminated last line, each the text between the line ends less a final "\r", lying inside
// the stream's copy. Logical lines: line numbers rise and stay within the file, and the lines
// together are no longer than the text (a joined "+" line trades its "+" for one blank).
#include "fuzz_check.hpp"
#include "support/spice_stream.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using wavex::NewSpiceStream;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto ends = static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    const size_t physicalLines = ends + (!text.empty() && text.back() != '\n');

    NewSpiceStream physical = NewSpiceStream::fromText(text);
    size_t count = 0, at = 0;
    for (std::string_view line; physical.getLine(&line); ++count) {
        size_t end = text.find('\n', at);
        if (end == std::string_view::npos) end = text.size();
        std::string_view want = text.substr(at, end - at);
        if (!want.empty() && want.back() == '\r') want.remove_suffix(1);
        check(line == want);
        at = end + 1;
    }
    check(count == physicalLines);

    NewSpiceStream logical = NewSpiceStream::fromText(text);
    std::string line;
    int number = 0, last = 0;
    size_t total = 0;
    while (logical.gets(&line, &number)) {
        check(number > last && static_cast<size_t>(number) <= physicalLines);
        check(line.find('\n') == std::string::npos);
        last = number;
        total += line.size();
    }
    check(total <= size);
    return 0;
}

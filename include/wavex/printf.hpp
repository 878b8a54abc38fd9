// printf-style formatting of tagged values, shared by the message sink and the script functions
// that fill user templates.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wavex {

// A tagged value for a printf directive: tag 0 a string, 1 an integer, 2 a real, 5 empty (fills
// unused positions).
struct PrintfArg {
    enum Tag : int { String = 0, Integer = 1, Real = 2, Empty = 5 };

    PrintfArg() = default;
    PrintfArg(const char* s) : tag(String), text(s ? s : "") {}
    PrintfArg(std::string s) : tag(String), text(std::move(s)) {}
    PrintfArg(std::string_view s) : tag(String), text(s) {}
    PrintfArg(int v) : tag(Integer), integer(v) {}
    PrintfArg(long v) : tag(Integer), integer(v) {}
    PrintfArg(long long v) : tag(Integer), integer(v) {}
    PrintfArg(unsigned long v) : tag(Integer), integer(static_cast<int64_t>(v)) {}
    PrintfArg(double v) : tag(Real), real(v) {}

    Tag tag = Empty;
    std::string text;
    int64_t integer = 0;
    double real = 0;
};

// Formats `format` with `args`. Each directive, %[flags][width][.precision][length]conversion,
// takes the next argument that is not empty: d i u o x X c take an integer, or a real truncated
// toward zero; e E f F g G a A take a real or an integer; s takes a string. `%%` is a percent sign.
// Flags are - + space # 0 '; length modifiers are accepted and ignored (the argument's own type
// decides); width and precision are at most 300. Anything else is refused, the result nullopt and
// *error saying why: a directive without an argument or with one of the wrong type, a real that is
// not finite or lies beyond the 64-bit range for an integer conversion, `%n`, `*` widths and
// precisions, positional `%1$d`, unknown conversions, a template ending inside a directive.
// Arguments left over are ignored, as C does.
std::optional<std::string> formatPrintf(std::string_view format, std::span<const PrintfArg> args,
                                        std::string* error = nullptr);

}  // namespace wavex

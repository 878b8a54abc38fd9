#include "wavex/printf.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace wavex {
namespace {

bool fail(std::string* error, std::string why) {
    if (error) *error = std::move(why);
    return false;
}

// Whether c is one of the characters of `set` (a NUL byte of the template never is).
bool oneOf(const char* set, char c) { return c != '\0' && std::strchr(set, c) != nullptr; }

}  // namespace

std::optional<std::string> formatPrintf(std::string_view format, std::span<const PrintfArg> args,
                                        std::string* error) {
    std::string out;
    size_t next = 0;
    auto nextArg = [&]() -> const PrintfArg* {
        while (next < args.size() && args[next].tag == PrintfArg::Empty) ++next;
        return next < args.size() ? &args[next++] : nullptr;
    };

    for (size_t i = 0; i < format.size();) {
        char c = format[i];
        if (c != '%') {
            size_t pct = format.find('%', i);
            if (pct == std::string_view::npos) pct = format.size();
            out.append(format.substr(i, pct - i));
            i = pct;
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == '%') {
            out += '%';
            i += 2;
            continue;
        }
        // %[flags][width][.precision][length]conversion
        size_t j = i + 1;
        std::string spec = "%";
        while (j < format.size() && oneOf("-+ #0'", format[j])) spec += format[j++];
        // Width and precision are bounded so that one directive fits the buffer below.
        auto digits = [&]() {
            int value = 0;
            while (j < format.size() && format[j] >= '0' && format[j] <= '9') {
                value = std::min(value * 10 + (format[j] - '0'), 100000);
                spec += format[j++];
            }
            return value;
        };
        int width = digits(), precision = 0;
        if (j < format.size() && format[j] == '.') {
            spec += format[j++];
            precision = digits();
        }
        if (width > 300 || precision > 300) {
            fail(error, "format width or precision too large");
            return std::nullopt;
        }
        while (j < format.size() && oneOf("hlLqjzt", format[j])) ++j;  // we choose the length
        if (j >= format.size()) {
            fail(error, "incomplete format directive at end of template");
            return std::nullopt;
        }
        char conv = format[j];
        if (conv == '*' || conv == 'n') {
            fail(error, std::string("format directive '%") + conv + "' is not allowed");
            return std::nullopt;
        }
        const PrintfArg* arg = nextArg();
        if (!arg) {
            fail(error, "more format directives than values");
            return std::nullopt;
        }
        // One directive gives at most some 620 bytes ("%.300f" of 1e308); the rare longer text
        // is formatted again at its full length.
        char buf[512];
        int n = -1;
        std::string directive;
        auto print = [&](auto value) {
            n = std::snprintf(buf, sizeof buf, directive.c_str(), value);
            if (n >= static_cast<int>(sizeof buf)) {
                size_t at = out.size();
                out.resize(at + static_cast<size_t>(n) + 1);
                std::snprintf(out.data() + at, static_cast<size_t>(n) + 1, directive.c_str(), value);
                out.resize(at + static_cast<size_t>(n));
                n = 0;
            }
        };
        if (oneOf("diouxXc", conv)) {
            long long v = 0;
            if (arg->tag == PrintfArg::Integer) {
                v = arg->integer;
            } else if (arg->tag == PrintfArg::Real) {
                // -2^63 <= x < 2^63: truncation toward zero fits a long long.
                if (!(arg->real >= -9223372036854775808.0 && arg->real < 9223372036854775808.0)) {
                    fail(error, std::string("format directive '%") + conv +
                                    "' needs a finite number within the 64-bit integer range");
                    return std::nullopt;
                }
                v = static_cast<long long>(arg->real);
            } else {
                fail(error, std::string("format directive '%") + conv + "' needs an integer");
                return std::nullopt;
            }
            if (conv == 'c') {
                directive = spec + "c";
                print(static_cast<int>(static_cast<unsigned char>(v)));
            } else {
                directive = spec + "ll" + conv;
                print(v);
            }
        } else if (oneOf("eEfFgGaA", conv)) {
            double v;
            if (arg->tag == PrintfArg::Real) v = arg->real;
            else if (arg->tag == PrintfArg::Integer) v = static_cast<double>(arg->integer);
            else {
                fail(error, std::string("format directive '%") + conv + "' needs a number");
                return std::nullopt;
            }
            directive = spec + conv;
            print(v);
        } else if (conv == 's') {
            if (arg->tag != PrintfArg::String) {
                fail(error, "format directive '%s' needs a string");
                return std::nullopt;
            }
            // Width and precision apply; the text itself may be longer than any buffer.
            if (spec == "%") {
                out += arg->text;
                i = j + 1;
                continue;
            }
            std::vector<char> big(arg->text.size() + 600);
            n = std::snprintf(big.data(), big.size(), (spec + "s").c_str(), arg->text.c_str());
            if (n >= 0) out.append(big.data(), std::min<size_t>(static_cast<size_t>(n), big.size() - 1));
            i = j + 1;
            continue;
        } else {
            fail(error, std::string("unknown format directive '%") + conv + "'");
            return std::nullopt;
        }
        if (n < 0) {
            fail(error, "format directive could not be applied");
            return std::nullopt;
        }
        out.append(buf, std::min<size_t>(static_cast<size_t>(n), sizeof buf - 1));
        i = j + 1;
    }
    return out;
}

}  // namespace wavex

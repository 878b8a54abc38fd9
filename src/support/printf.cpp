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

// One directive, %[flags][width][.precision][length]conversion.
struct Directive {
    std::string spec;  // "%", the flags, width and precision: the length is ours to choose
    char conv = 0;
    size_t end = 0;    // just past the conversion
};

// The directive starting at the '%' at format[i]; nothing (with *error set) when it is malformed
// or not allowed.
std::optional<Directive> parseDirective(std::string_view format, size_t i, std::string* error) {
    Directive d{"%"};
    size_t j = i + 1;
    while (j < format.size() && oneOf("-+ #0'", format[j])) d.spec += format[j++];
    // Width and precision are bounded so that one directive fits the buffer of appendFormatted.
    auto digits = [&]() {
        int value = 0;
        while (j < format.size() && format[j] >= '0' && format[j] <= '9') {
            value = std::min(value * 10 + (format[j] - '0'), 100000);
            d.spec += format[j++];
        }
        return value;
    };
    int width = digits(), precision = 0;
    if (j < format.size() && format[j] == '.') {
        d.spec += format[j++];
        precision = digits();
    }
    if (width > 300 || precision > 300) return fail(error, "format width or precision too large"), std::nullopt;
    while (j < format.size() && oneOf("hlLqjzt", format[j])) ++j;
    if (j >= format.size()) return fail(error, "incomplete format directive at end of template"), std::nullopt;
    d.conv = format[j];
    if (d.conv == '*' || d.conv == 'n')
        return fail(error, std::string("format directive '%") + d.conv + "' is not allowed"), std::nullopt;
    d.end = j + 1;
    return d;
}

// Appends snprintf(directive, value); false when the C library refuses it. One directive gives
// at most some 620 bytes ("%.300f" of 1e308); the rare longer text is formatted again at its
// full length.
template <class T>
bool appendFormatted(std::string& out, const std::string& directive, T value) {
    char buf[512];
    int n = std::snprintf(buf, sizeof buf, directive.c_str(), value);
    if (n < 0) return false;
    if (n < static_cast<int>(sizeof buf)) {
        out.append(buf, static_cast<size_t>(n));
        return true;
    }
    size_t at = out.size();
    out.resize(at + static_cast<size_t>(n) + 1);
    std::snprintf(out.data() + at, static_cast<size_t>(n) + 1, directive.c_str(), value);
    out.resize(at + static_cast<size_t>(n));
    return true;
}

// Appends one value by its directive; false (with *error set) when they do not match.
bool appendValue(const Directive& d, const PrintfArg& arg, std::string& out, std::string* error) {
    const std::string directive = std::string("format directive '%") + d.conv + "'";
    bool applied;
    if (oneOf("diouxXc", d.conv)) {
        long long v = 0;
        if (arg.tag == PrintfArg::Integer) {
            v = arg.integer;
        } else if (arg.tag == PrintfArg::Real) {
            // -2^63 <= x < 2^63: truncation toward zero fits a long long.
            if (!(arg.real >= -9223372036854775808.0 && arg.real < 9223372036854775808.0))
                return fail(error, directive + " needs a finite number within the 64-bit integer range");
            v = static_cast<long long>(arg.real);
        } else {
            return fail(error, directive + " needs an integer");
        }
        applied = d.conv == 'c' ? appendFormatted(out, d.spec + "c", static_cast<int>(static_cast<unsigned char>(v)))
                                : appendFormatted(out, d.spec + "ll" + d.conv, v);
    } else if (oneOf("eEfFgGaA", d.conv)) {
        double v;
        if (arg.tag == PrintfArg::Real) v = arg.real;
        else if (arg.tag == PrintfArg::Integer) v = static_cast<double>(arg.integer);
        else return fail(error, directive + " needs a number");
        applied = appendFormatted(out, d.spec + d.conv, v);
    } else if (d.conv == 's') {
        if (arg.tag != PrintfArg::String) return fail(error, "format directive '%s' needs a string");
        // Width and precision apply; the text itself may be longer than any buffer.
        if (d.spec == "%") {
            out += arg.text;
            return true;
        }
        std::vector<char> big(arg.text.size() + 600);
        int n = std::snprintf(big.data(), big.size(), (d.spec + "s").c_str(), arg.text.c_str());
        if (n >= 0) out.append(big.data(), std::min<size_t>(static_cast<size_t>(n), big.size() - 1));
        return true;
    } else {
        return fail(error, "unknown " + directive);
    }
    return applied || fail(error, "format directive could not be applied");
}

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
        if (format[i] != '%') {
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
        std::optional<Directive> d = parseDirective(format, i, error);
        if (!d) return std::nullopt;
        const PrintfArg* arg = nextArg();
        if (!arg) return fail(error, "more format directives than values"), std::nullopt;
        if (!appendValue(*d, *arg, out, error)) return std::nullopt;
        i = d->end;
    }
    return out;
}

}  // namespace wavex

#include "support/numbers.hpp"

#include "support/text.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace wavex {

std::optional<double> parseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    double value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size()) return std::nullopt;
    if (ec == std::errc::result_out_of_range) {
        // Out of range either way: an underflow reads as the nearest double, an overflow is refused.
        double nearest = std::strtod(std::string(text).c_str(), nullptr);
        if (std::isinf(nearest)) return std::nullopt;
        return nearest;
    }
    if (ec != std::errc()) return std::nullopt;
    return value;
}

namespace {
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
}  // namespace

size_t scanEngineeringNumber(std::string_view text, double* value) {
    size_t i = 0;
    size_t mantissaDigits = 0;
    while (i < text.size() && isDigit(text[i])) ++i, ++mantissaDigits;
    if (i < text.size() && text[i] == '.') {
        ++i;
        while (i < text.size() && isDigit(text[i])) ++i, ++mantissaDigits;
    }
    if (mantissaDigits == 0) return 0;
    std::string number(text.substr(0, i));
    long exponent = 0;
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
        if (j < text.size() && isDigit(text[j])) {
            size_t k = j;
            while (k < text.size() && isDigit(text[k])) ++k;
            std::string_view digits = text.substr(i + 1, k - i - 1);
            if (digits.front() == '+') digits.remove_prefix(1);
            std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
            if (exponent > 100000) exponent = 100000;
            if (exponent < -100000) exponent = -100000;
            i = k;
        }
    }
    // Engineering suffix, then any letters of a unit ("10mV", "1kHz").
    int scale = 0;
    if (i < text.size() && isLetter(text[i])) {
        std::string_view rest = text.substr(i);
        if (rest.size() >= 3 && iequals(rest.substr(0, 3), "meg")) scale = 6;
        else switch (asciiLower(text[i])) {
            case 'f': scale = -15; break;
            case 'p': scale = -12; break;
            case 'n': scale = -9; break;
            case 'u': scale = -6; break;
            case 'm': scale = -3; break;
            case 'k': scale = 3; break;
            case 'g': scale = 9; break;
            case 't': scale = 12; break;
            default: break;
        }
        while (i < text.size() && isLetter(text[i])) ++i;
    }
    // Scale in decimal, so that "2.2u" is exactly the double nearest 2.2e-6.
    number += 'e';
    number += std::to_string(exponent + scale);
    double v = 0;
    auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), v);
    if (ec == std::errc::result_out_of_range) v = exponent + scale > 0 ? HUGE_VAL : 0.0;
    *value = v;
    return i;
}

std::optional<double> parseEngineeringNumber(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    double value = 0;
    size_t n = scanEngineeringNumber(text, &value);
    if (n == 0 || n != text.size()) {
        auto plain = parseNumber(text);  // "inf", "nan"
        if (!plain) return std::nullopt;
        value = *plain;
    }
    return negative ? -value : value;
}

std::string formatRoundTrip(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char buf[32];
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
    return std::string(buf, end);
}

std::string formatEngineering(double value, int digits) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
    if (value == 0) return std::signbit(value) ? "-0" : "0";
    static const char* const kPrefix[] = {"f", "p", "n", "u", "m", "", "k", "Meg", "G", "T"};
    char buf[64];
    double magnitude = std::fabs(value);
    if (magnitude < 1e-15 || magnitude >= 1e15) {
        std::snprintf(buf, sizeof buf, "%.*g", digits, value);
        return buf;
    }
    int exp3 = static_cast<int>(std::floor(std::log10(magnitude) / 3)) * 3;
    for (;;) {
        double mantissa = value / std::pow(10.0, exp3);
        std::snprintf(buf, sizeof buf, "%.*g", digits, mantissa);
        double shown = std::fabs(std::strtod(buf, nullptr));
        if (shown >= 1000 && exp3 < 12) { exp3 += 3; continue; }  // rounding carried to 1000
        if (shown < 1 && exp3 > -15) { exp3 -= 3; continue; }
        break;
    }
    return std::string(buf) + kPrefix[exp3 / 3 + 5];
}

namespace {
template <class Int>
Int truncateTo(double value) {
    constexpr double lo = static_cast<double>(std::numeric_limits<Int>::min());  // exact: -2^(bits-1)
    if (std::isnan(value) || value <= lo) return std::numeric_limits<Int>::min();
    if (value >= -lo) return std::numeric_limits<Int>::max();
    return static_cast<Int>(value);
}
}  // namespace

int32_t truncateToInt32(double value) { return truncateTo<int32_t>(value); }
int64_t truncateToInt64(double value) { return truncateTo<int64_t>(value); }

}  // namespace wavex

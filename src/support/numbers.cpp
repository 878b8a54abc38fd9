#include "support/numbers.hpp"

#include "support/text.hpp"

#include <algorithm>
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

std::string formatEngineering(double value, int digits, bool keepTrailingZeros) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
    digits = std::clamp(digits, 1, 17);
    // Round once, in decimal: "-d.ddde+XX" gives the sign, the digits and the power of ten.
    char buf[40];
    char* end = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific, digits - 1).ptr;
    std::string_view text(buf, static_cast<size_t>(end - buf));
    bool negative = text.front() == '-';
    if (negative) text.remove_prefix(1);
    size_t e = text.find('e');
    std::string mantissa(1, text[0]);
    if (e > 1) mantissa.append(text.substr(2, e - 2));  // the digits after the point
    int exponent = std::atoi(std::string(text.substr(e + 1)).c_str());

    std::string out = negative ? "-" : "";
    auto appendFraction = [&](std::string_view fraction) {
        if (!keepTrailingZeros) fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
        if (!fraction.empty()) out.append(".").append(fraction);
    };
    if (exponent < -15 || exponent > 14) {
        out += mantissa[0];
        appendFraction(std::string_view(mantissa).substr(1));
        char power[16];
        std::snprintf(power, sizeof power, "e%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
        return out + power;
    }
    static const char* const kPrefix[] = {"f", "p", "n", "u", "m", "", "k", "Meg", "G", "T"};
    int shift = ((exponent % 3) + 3) % 3;  // integer digits beyond the first
    if (mantissa.size() < static_cast<size_t>(shift) + 1) mantissa.resize(static_cast<size_t>(shift) + 1, '0');
    out.append(mantissa, 0, static_cast<size_t>(shift) + 1);
    appendFraction(std::string_view(mantissa).substr(static_cast<size_t>(shift) + 1));
    return out + kPrefix[(exponent - shift) / 3 + 5];
}

int64_t atoiValue(std::string_view s) {
    size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || (s[i] >= '\t' && s[i] <= '\r'))) ++i;
    bool negative = i < s.size() && s[i] == '-';
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) ++i;
    int64_t v = 0;
    for (; i < s.size() && s[i] >= '0' && s[i] <= '9'; ++i)
        v = v > (std::numeric_limits<int64_t>::max() - 9) / 10 ? std::numeric_limits<int64_t>::max() : v * 10 + (s[i] - '0');
    return negative ? -v : v;
}

std::optional<int64_t> wholeNumber(double value) {
    constexpr double lo = -9223372036854775808.0;  // -2^63, exact
    if (std::isnan(value)) return std::nullopt;
    if (value <= lo) return std::numeric_limits<int64_t>::min();
    if (value >= -lo) return std::numeric_limits<int64_t>::max();
    return static_cast<int64_t>(value);
}

int64_t truncateToInt64(double value) { return wholeNumber(value).value_or(std::numeric_limits<int64_t>::min()); }

int32_t truncateToInt32(double value) {
    return static_cast<int32_t>(std::clamp<int64_t>(truncateToInt64(value), std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

}  // namespace wavex

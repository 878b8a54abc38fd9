// Reading and writing numbers as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wavex {

// A plain decimal number as a C program writes it ("1.5", "-2e-3", "inf", "nan"); the whole text
// must be the number. Values beyond the range of a double are refused; values too small for one
// read as the nearest double (1e-400 is 0).
std::optional<double> parseNumber(std::string_view text);

// Length of the number at the start of `text`, with an optional engineering suffix
// (f p n u m k meg g t, any case; letters after a suffix are part of it, as in "10mV" or "1kHz"),
// or 0 when `text` does not start with a number. *value receives the scaled value.
size_t scanEngineeringNumber(std::string_view text, double* value);
// The whole text as an engineering number (the support library's sp_ConvertEngToReal): an optional
// sign, then a number as scanEngineeringNumber reads it ("1.5k", "2.2u", "10meg", "1e-3", "2e3k",
// "1kHz"), or "inf", "infinity" or "nan" in any case. No white space is skipped.
std::optional<double> parseEngineeringNumber(std::string_view text);

// The shortest text that reads back to the same double ("0.1", "1e+300", "nan", "inf", "-inf").
std::string formatRoundTrip(double value);

// Engineering notation for people (the support library's sp_ConvertRealToJSEng). The value is
// rounded to `digits` significant digits (below 1 taken as 1, above 17 as 17, all a double holds),
// then written as a mantissa of one to three integer digits and the SI prefix of its power of a
// thousand: f p n u m (none) k Meg G T for 1e-15 up to 1e12 (mega is "Meg" as the language reads
// it, since "M" would read back as milli). Trailing zeros of the fraction are dropped, and then the
// point, unless `keepTrailingZeros`: 0.0015 -> "1.5m", 20 -> "20", 2e6 -> "2Meg", 999.9999 -> "1k";
// 1500 with 3 digits and the zeros kept -> "1.50k". A rounded value below 1e-15 or from 1e15 up is
// written in exponent form as C's "%e" would, without the point and zeros when they are dropped:
// "2e-18", "1.5e+15". Zero is "0" ("-0" when negative; "0.00" with 3 digits kept); NaN, Inf and
// -Inf are written so. parseEngineeringNumber (sp_ConvertEngToReal) reads every form back.
std::string formatEngineering(double value, int digits = 6, bool keepTrailingZeros = false);

// The C library's atoi without its undefined overflow: leading white space, an optional sign, then
// decimal digits as far as they go; anything else gives 0. Saturates instead of overflowing.
int64_t atoiValue(std::string_view s);

// The one rule by which a script number becomes an integer (a count, index, position, order,
// handle or code): truncated toward zero; beyond the 64-bit range, ±Inf included, saturated to
// its ends; NaN gives nothing, and each caller says what that means (usually as for an absent
// argument).
std::optional<int64_t> wholeNumber(double value);
// wholeNumber further saturated to the integer's range, with NaN as the smallest value, which no
// count, index or handle equals.
int32_t truncateToInt32(double value);
int64_t truncateToInt64(double value);

}  // namespace wavex

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
// The whole text as an engineering number.
std::optional<double> parseEngineeringNumber(std::string_view text);

// The shortest text that reads back to the same double ("0.1", "1e+300", "nan", "inf", "-inf").
std::string formatRoundTrip(double value);

// Engineering notation for people: `digits` significant digits, an SI prefix (f p n u m k Meg G T,
// mega written "Meg" as the language reads it, since "M" would read back as milli), trailing zeros
// dropped: 0.0015 -> "1.5m", 20 -> "20", 2e6 -> "2Meg".
std::string formatEngineering(double value, int digits = 6);

// A count, index, handle or code given as a script number: truncated toward zero and saturated to
// the integer's range. NaN gives the smallest value, which no count, index or handle equals.
int32_t truncateToInt32(double value);
int64_t truncateToInt64(double value);

}  // namespace wavex

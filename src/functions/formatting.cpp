// Numbers, dates and colours as display text and back: FormatNumber, SprintfNumber, the date
// conversions and the web-colour conversions. None of them reports a message or fails: input they
// cannot use gives an empty result (or, in FormatNumber, the text each style states).
#include "support/numbers.hpp"
#include "support/split.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/printf.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

// An integer read from a date field, when it fits an int as the C library's broken-down time needs.
std::optional<int> fieldInt(int64_t v) {
    if (v < std::numeric_limits<int>::min() || v > std::numeric_limits<int>::max()) return std::nullopt;
    return static_cast<int>(v);
}

// ---- FormatNumber ----------------------------------------------------------------------------------
//
// FormatNumber(values, s [, style]): one string per value; s is truncated toward zero.
//   "noeng"    C's "%.*g" with precision s (a negative s is C's default, 6)
//   "int"      the value rounded half up, floor(v + 0.5), written whole ("%.0f": no 32-bit limit)
//   "%"        percent with a carried precision p, starting at s: a value of exactly 0 is
//              "%.*f%%" of 0 with precision s - 3 (0 when s <= 3) and leaves p alone; any other
//              sets p = max(p - floor(log10 |100 v|) - 1, 0) and is "%.*f%%" of 100 v with it. The
//              precision drifts along the vector on purpose: with s = 3, 0.5 and 0.5 give 50.0% and
//              then 50%.
//   other/none engineering notation, formatEngineering(v, s) with 6 digits for a negative s:
//              "1.5k", "220n", "2Meg", "1e+15" (see support/numbers.hpp)
// The style word is compared without regard to case. NaN, Inf and -Inf are written so in every
// style (the language's own spelling) and leave the carried precision alone. A precision, given or
// carried, is capped at kMaxPrecision digits: far past what a double holds, and it bounds the text
// of one value however the percent precision drifts.

constexpr int kMaxPrecision = 350;

enum class NumberStyle { Engineering, Plain, Integer, Percent };

NumberStyle styleOf(std::string_view word) {
    if (iequals(word, "noeng")) return NumberStyle::Plain;
    if (iequals(word, "int")) return NumberStyle::Integer;
    if (word == "%") return NumberStyle::Percent;
    return NumberStyle::Engineering;
}

// Text of `value` as C's printf would write it with `format` ('g' or 'f') and `precision`
// (0..kMaxPrecision), into `buf`.
std::string_view cFormat(char (&buf)[1024], double value, std::chars_format format, int precision) {
    auto r = std::to_chars(buf, buf + sizeof buf, value, format, precision);
    return {buf, static_cast<size_t>(r.ptr - buf)};
}

const char* nonFinite(double v) { return std::isnan(v) ? "NaN" : v > 0 ? "Inf" : "-Inf"; }

FUNC_ERROR formatNumber(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    const double* v = args.data(0);
    // Beyond these bounds every s gives the same texts (below: a percent precision of 0).
    int s = static_cast<int>(std::clamp<int64_t>(truncateToInt64(args.scalar(1)), -1000, kMaxPrecision));
    NumberStyle style = styleOf(args.string(2));
    result->setType(VD_STRING, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (!result->allocate(n, RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    char buf[1024];
    int carried = s;
    for (int64_t i = 0; i < n; ++i) {
        double x = v[i];
        if (!std::isfinite(x)) {
            out[i].emplace(nonFinite(x));
            continue;
        }
        switch (style) {
            case NumberStyle::Engineering: out[i] = formatEngineering(x, s < 0 ? 6 : s); break;
            case NumberStyle::Plain: out[i].emplace(cFormat(buf, x, std::chars_format::general, s < 0 ? 6 : s)); break;
            case NumberStyle::Integer: out[i].emplace(cFormat(buf, std::floor(x + 0.5), std::chars_format::fixed, 0)); break;
            case NumberStyle::Percent: {
                double hundred = 100 * x;
                if (!std::isfinite(hundred)) {  // |v| beyond 1.8e306: as a non-finite value
                    out[i].emplace(nonFinite(hundred));
                    break;
                }
                std::string_view text;
                if (x == 0) {
                    text = cFormat(buf, 0.0, std::chars_format::fixed, std::max(s - 3, 0));
                } else {
                    double magnitude = std::floor(std::log10(std::fabs(hundred)));
                    carried = static_cast<int>(std::clamp(carried - magnitude - 1, 0.0, double(kMaxPrecision)));
                    text = cFormat(buf, hundred, std::chars_format::fixed, carried);
                }
                out[i].emplace(text).push_back('%');
                break;
            }
        }
    }
    return FUNC_OK;
}

// ---- SprintfNumber ---------------------------------------------------------------------------------
//
// SprintfNumber(template, v1 ... v7): the values become a typed list, in order: a real gives its
// first element as a number, a complex the magnitude of its first element, a string its first
// element as text (an empty vector gives NaN or ""). The template's first element is filled by
// formatPrintf (wavex/printf.hpp), which formats only directives that match their values: numbers
// go to d i u o x X c (truncated toward zero) and e f g a, text to s. A template it refuses (a
// directive without a value or with one of the wrong type, %n, * widths, positional arguments, a
// width or precision above 300, an unknown conversion) gives an empty result, as does a value of
// another kind.

FUNC_ERROR sprintfNumber(WAVEX_HANDLER_PARAMS) {
    std::vector<PrintfArg> values;
    for (int i = 1; i < args.count(); ++i) {
        switch (args.type(i)) {
            case VD_REAL: values.emplace_back(args.scalar(i)); break;
            case VD_COMPLEX: {
                double magnitude = args.length(i) ? std::abs(args.complexData(i)[0]) : std::numeric_limits<double>::quiet_NaN();
                values.emplace_back(magnitude);
                break;
            }
            case VD_STRING: values.emplace_back(args.string(i, 0)); break;
            default: return FUNC_OK;
        }
    }
    std::optional<std::string> text = formatPrintf(args.string(0), values);
    return !text || result->makeString(std::move(*text)) ? FUNC_OK : FUNC_FAILED;
}

// ---- Dates -----------------------------------------------------------------------------------------
//
// ConvertIsoTimeToUnix(date): the date is cut at every "-"; unless that gives exactly three fields
// the result is empty. Year and day are read as C's atoi reads them; the month is atoi - 1 when its
// field begins with a digit, else the position of the name among jan ... dec (the whole field
// compared without regard to case; an unknown name is January). The result is C's mktime of local
// midnight of that date read as standard time (tm_isdst 0), in seconds since 1970: out-of-range
// fields roll over as mktime rolls them (2020-13-01 is 2021-01-01). A date mktime cannot represent
// gives an empty result, as does a field beyond the range of a C int.
// ConvertUnixTimeToIso(seconds): a number of 0 or more is truncated and converted to local time
// with localtime, written "%d-%02d-%02d" as year, month and day; a negative number, NaN or a time
// localtime cannot represent give an empty result.
// Local time follows the TZ environment variable as it is at the call.

constexpr std::array<const char*, 12> kMonths = {"jan", "feb", "mar", "apr", "may", "jun",
                                                 "jul", "aug", "sep", "oct", "nov", "dec"};

std::optional<int> monthOf(std::string_view field) {
    if (!field.empty() && field[0] >= '0' && field[0] <= '9') return fieldInt(atoiValue(field) - 1);
    for (int m = 11; m >= 0; --m)
        if (iequals(field, kMonths[m])) return m;
    return 0;
}

FUNC_ERROR isoTimeToUnix(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string_view> fields;
    if (sp_SplitLine(args.string(0), '-', fields) != 3) return FUNC_OK;
    std::optional<int> year = fieldInt(atoiValue(fields[0]) - 1900), month = monthOf(fields[1]),
                       day = fieldInt(atoiValue(fields[2]));
    if (!year || !month || !day) return FUNC_OK;
    std::tm t{};
    t.tm_year = *year;
    t.tm_mon = *month;
    t.tm_mday = *day;
    t.tm_isdst = 0;
    std::time_t seconds = std::mktime(&t);
    if (seconds == static_cast<std::time_t>(-1)) return FUNC_OK;  // no local midnight is 1969-12-31 23:59:59 UTC
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = static_cast<double>(seconds);
    return FUNC_OK;
}

FUNC_ERROR unixTimeToIso(WAVEX_HANDLER_PARAMS) {
    double seconds = args.scalar(0);
    if (!(seconds >= 0)) return FUNC_OK;
    std::time_t t = static_cast<std::time_t>(truncateToInt64(seconds));
    std::tm local{};
    tzset();  // localtime_r need not read TZ itself
    if (!localtime_r(&t, &local)) return FUNC_OK;
    char text[48];
    std::snprintf(text, sizeof text, "%lld-%02d-%02d", static_cast<long long>(local.tm_year) + 1900, local.tm_mon + 1,
                  local.tm_mday);
    return result->makeString(text) ? FUNC_OK : FUNC_FAILED;
}

// ---- Colours ---------------------------------------------------------------------------------------
//
// A colour value is an integer 0xRRGGBB: red in bits 16-23, green in 8-15, blue in 0-7, so its
// hexadecimal digits are those of the web notation ("#FF8000" is 16744448).
// ConvertHTMLcolourToRGB(colour): "#RRGGBB" or the short "#RGB" (each digit doubled), hexadecimal
// digits in any case, the "#" optional, white space around ignored, or one of the sixteen HTML
// colour names in any case ("red", "navy" ...); the result is the colour value in decimal. Anything
// else gives an empty result.
// ConvertRGBcolourToHTML(value): the value, a number or text read as an engineering number
// ("16744448", "16.744448Meg"), truncated toward zero, written "#RRGGBB" with upper-case digits.
// Text that is not a number and values outside 0 ... 16777215 give an empty result.

struct NamedColour {
    const char* name;
    uint32_t rgb;
};

constexpr NamedColour kNamedColours[] = {
    {"black", 0x000000}, {"silver", 0xC0C0C0}, {"gray", 0x808080},   {"white", 0xFFFFFF},
    {"maroon", 0x800000}, {"red", 0xFF0000},   {"purple", 0x800080}, {"fuchsia", 0xFF00FF},
    {"green", 0x008000}, {"lime", 0x00FF00},   {"olive", 0x808000},  {"yellow", 0xFFFF00},
    {"navy", 0x000080},  {"blue", 0x0000FF},   {"teal", 0x008080},   {"aqua", 0x00FFFF},
};

std::optional<uint32_t> htmlColourToRGB(std::string_view text) {
    text = trim(text);
    for (const NamedColour& c : kNamedColours)
        if (iequals(text, c.name)) return c.rgb;
    if (!text.empty() && text[0] == '#') text.remove_prefix(1);
    if (text.size() != 6 && text.size() != 3) return std::nullopt;
    uint32_t rgb = 0;
    for (char c : text) {
        int digit = c >= '0' && c <= '9' ? c - '0' : asciiLower(c) >= 'a' && asciiLower(c) <= 'f' ? asciiLower(c) - 'a' + 10 : -1;
        if (digit < 0) return std::nullopt;
        rgb = text.size() == 6 ? rgb << 4 | digit : rgb << 8 | digit * 0x11;
    }
    return rgb;
}

std::optional<std::string> rgbColourToHTML(double value) {
    if (!(value > -1 && value < 0x1000000)) return std::nullopt;
    char text[8];
    std::snprintf(text, sizeof text, "#%06X", static_cast<unsigned>(value));
    return text;
}

FUNC_ERROR htmlToRGB(WAVEX_HANDLER_PARAMS) {
    std::optional<uint32_t> rgb = htmlColourToRGB(args.string(0));
    return !rgb || result->makeString(std::to_string(*rgb)) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR rgbToHTML(WAVEX_HANDLER_PARAMS) {
    std::optional<double> value = args.type(0) == VD_STRING ? parseEngineeringNumber(trim(args.string(0)))
                                                            : std::optional<double>(args.scalar(0));
    std::optional<std::string> html = value ? rgbColourToHTML(*value) : std::nullopt;
    return !html || result->makeString(std::move(*html)) ? FUNC_OK : FUNC_FAILED;
}

// ---- Registration ----------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"FormatNumber", {arg::Real, arg::Real, arg::String}, 2, formatNumber,
     {.signature = "FormatNumber(values, digits [, style])",
      .summary = "Each value as display text, in engineering notation or the style named.",
      .returns = "a string vector, one element per value, without x-values",
      .notes = "Default style: engineering notation with digits significant digits (6 when "
               "negative) and a suffix f p n u m k Meg G T (\"Meg\", since \"M\" reads as milli); "
               "exponent form outside 1e-15 … 1e15. \"noeng\": C's `%.*g` with digits; \"int\": "
               "rounded half up, digits ignored; \"%\": percent, where the decimals carry over from "
               "one value to the next and drift (0.5, 0.5 with 3 give 50.0% then 50%). An unknown "
               "style is engineering. NaN and ±Inf are written so in every style.",
      .example = "FormatNumber([1500, 2.2e-7, 2e6, 1234.5678], 4); FormatNumber(3.14159, 3, \"noeng\"); "
                 "FormatNumber(2.5, 0, \"int\")"}},
    // The first value may be text like the others.
    {"SprintfNumber", {arg::String, arg::Curve.orKinds(VD_STRING), arg::Any.upTo(6)}, 1, sprintfNumber,
     {.signature = "SprintfNumber(format [, v1 … v7])",
      .summary = "Fills a C printf format with up to seven values.",
      .returns = "one string; empty when the format and the values do not match",
      .notes = "Each value gives its first element: a real number, a complex one its magnitude, a "
               "string its text. d i u o x X c take a number (truncated toward zero), e f g a a "
               "number, s a string. A directive without its value or with a value of the wrong "
               "kind, `%n`, `*` widths, positional arguments and widths or precisions above 300 give "
               "an empty result rather than a message.",
      .example = "SprintfNumber(\"%d items at %.2f V\", 3.9, 1.5); SprintfNumber(\"%s=%g\", \"R1\", 2200)"}},
    {"ConvertIsoTimeToUnix", {arg::String}, 1, isoTimeToUnix,
     {.signature = "ConvertIsoTimeToUnix(date)",
      .summary = "A date \"YYYY-MM-DD\" as seconds since 1970 at local midnight.",
      .returns = "one real value, in seconds; empty when the date cannot be read",
      .notes = "The month may be a number or a name (jan … dec, any case; an unknown name is "
               "January). Local time follows TZ, taken as standard time (no daylight saving). "
               "Out-of-range fields roll over: 2020-13-01 is 2021-01-01. Anything but three fields "
               "separated by \"-\" gives an empty result.",
      .example = "ConvertIsoTimeToUnix(\"2024-Feb-01\") - ConvertIsoTimeToUnix(\"2024-01-01\")"}},
    {"ConvertUnixTimeToIso", {arg::Real}, 1, unixTimeToIso,
     {.signature = "ConvertUnixTimeToIso(seconds)",
      .summary = "Seconds since 1970 as the local date \"YYYY-MM-DD\".",
      .returns = "one string; empty for a negative or NaN time",
      .notes = "The time of day is dropped; local time follows TZ as it is at the call.",
      .example = "ConvertUnixTimeToIso(ConvertIsoTimeToUnix(\"2020-13-01\"))"}},
    {"ConvertHTMLcolourToRGB", {arg::String}, 1, htmlToRGB,
     {.signature = "ConvertHTMLcolourToRGB(colour)",
      .summary = "A web colour (\"#RRGGBB\", \"#RGB\" or one of the 16 HTML names) as the integer "
                 "0xRRGGBB.",
      .returns = "one real value; empty when the text is not a colour",
      .notes = "Hex digits and names in any case, the \"#\" optional, blanks around ignored. Only "
               "the first element is read.",
      .example = "ConvertHTMLcolourToRGB(\"#FF8000\"); ConvertHTMLcolourToRGB(\"navy\")"}},
    {"ConvertRGBcolourToHTML", {arg::String.orKinds(VD_REAL)}, 1, rgbToHTML,  // a colour may be a number
     {.signature = "ConvertRGBcolourToHTML(value)",
      .summary = "A colour integer 0xRRGGBB as web text \"#RRGGBB\".",
      .returns = "one string with upper-case hex digits; empty outside 0 … 16777215",
      .notes = "The value may be a number or text read as an engineering number; it is truncated "
               "toward zero.",
      .example = "ConvertRGBcolourToHTML(16744448); ConvertRGBcolourToHTML(\"255\")"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// formatPrintf: directives filled from typed values, and everything a hostile template may try.
#include "wavex/printf.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace wavex {
namespace {

using namespace std::string_literals;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Case {
    std::string format;
    std::vector<PrintfArg> args;
    std::string text;  // the formatted text, or "refused: " and the reason
};

std::string run(const Case& c) {
    std::string error;
    auto text = formatPrintf(c.format, c.args, &error);
    return text ? *text : "refused: " + error;
}

TEST(FormatPrintf, FormatsDirectivesThatMatchTheirValues) {
    const Case cases[] = {
        {"plain text", {}, "plain text"},
        {"100%% of %s", {"it"}, "100% of it"},
        {"%d|%5d|%-5d|%05d|%+d", {42, 42, 42, 42, 42}, "42|   42|42   |00042|+42"},
        {"%x %X %o %#x %u", {255, 255, 8, 255, -1}, "ff FF 10 0xff 18446744073709551615"},
        {"%ld %lld %hd %zu", {7, 8, 9, 10}, "7 8 9 10"},  // length modifiers: the value's type decides
        {"%d %i", {2.7, -2.7}, "2 -2"},                    // reals truncate toward zero
        {"%d", {9.2e18}, "9200000000000000000"},
        {"%c%c", {65, 66.9}, "AB"},
        {"%c", {0}, "\0"s},
        {"%g %e %.3f %G %f", {0.5, 1500.0, 3.14159, 1e-10, -1}, "0.5 1.500000e+03 3.142 1E-10 -1.000000"},
        {"%a", {1.0}, "0x1p+0"},
        {"%g %g %g", {kInf, -kInf, kNaN}, "inf -inf nan"},
        {"[%s] [%6s] [%-6s] [%.2s]", {"ab", "ab", "ab", "abc"}, "[ab] [    ab] [ab    ] [ab]"},
        {"%s", {"\xff\xfe\0x"s}, "\xff\xfe\0x"s},  // bytes pass through, NUL included
        {"a\0b %d"s, {1}, "a\0b 1"s},
        {"%d %s", {PrintfArg(), 3, PrintfArg(), "x"}, "3 x"},  // empty values are skipped
        {"%d", {1, 2, 3}, "1"},                                // values left over are ignored
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        EXPECT_EQ(run(c), c.text);
    }
}

TEST(FormatPrintf, WritesDirectivesLongerThanItsBuffer) {
    std::vector<PrintfArg> big = {1e308};
    std::string text = *formatPrintf("%.300f|", big);
    EXPECT_EQ(text.size(), 309u + 1 + 300 + 1);
    EXPECT_EQ(text.substr(0, 5), "10000");
    EXPECT_EQ(text.substr(text.size() - 3), "00|");
    std::vector<PrintfArg> wide = {"x"};
    EXPECT_EQ(formatPrintf("%300s", wide)->size(), 300u);
    std::string longText(100000, 'y');
    std::vector<PrintfArg> longArg = {longText};
    EXPECT_EQ(*formatPrintf("<%-5s>", longArg), "<" + longText + ">");
}

TEST(FormatPrintf, RefusesWhatDoesNotMatchOrIsNotAllowed) {
    const Case cases[] = {
        {"%n", {1}, "refused: format directive '%n' is not allowed"},
        {"%hhn", {1}, "refused: format directive '%n' is not allowed"},
        {"%*d", {5, 1}, "refused: format directive '%*' is not allowed"},
        {"%.*f", {2, 1.5}, "refused: format directive '%*' is not allowed"},
        {"%1$d", {1}, "refused: unknown format directive '%$'"},
        {"%d %d", {1}, "refused: more format directives than values"},
        {"%s", {1.5}, "refused: format directive '%s' needs a string"},
        {"%d", {"12"}, "refused: format directive '%d' needs an integer"},
        {"%f", {"1.5"}, "refused: format directive '%f' needs a number"},
        {"%d", {kNaN}, "refused: format directive '%d' needs a finite number within the 64-bit integer range"},
        {"%x", {1e19}, "refused: format directive '%x' needs a finite number within the 64-bit integer range"},
        {"%301d", {1}, "refused: format width or precision too large"},
        {"%.99999999999f", {1.0}, "refused: format width or precision too large"},
        {"%k", {1}, "refused: unknown format directive '%k'"},
        {"%5%", {1}, "refused: unknown format directive '%%'"},
        {"%\0d"s, {1}, "refused: unknown format directive '%\0'"s},
        {"abc%", {1}, "refused: incomplete format directive at end of template"},
        {"%ll", {1}, "refused: incomplete format directive at end of template"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        EXPECT_EQ(run(c), c.text);
    }
    EXPECT_EQ(formatPrintf("%n", std::vector<PrintfArg>{1}), std::nullopt);  // no reason asked for
}

}  // namespace
}  // namespace wavex

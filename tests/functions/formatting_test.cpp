// Numbers, dates and colours as text: FormatNumber's four styles and the percent style's carried
// precision (the engineering notation itself is in tests/support/numbers_test.cpp), SprintfNumber's typed values and refused
// templates, the date conversions under set time zones, the colour conversions.
#include "support/numbers.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace wavex {
namespace {

using test::show;

class Formatting : public testing::Test {
protected:
    Formatting() {
        if (const char* tz = std::getenv("TZ")) savedTZ_ = tz;
    }
    ~Formatting() override {
        if (savedTZ_) setenv("TZ", savedTZ_->c_str(), 1);
        else unsetenv("TZ");
        tzset();
    }
    static void useTimeZone(const char* tz) {
        setenv("TZ", tz, 1);
        tzset();
    }
    test::Session wx;

private:
    std::optional<std::string> savedTZ_;
};

TEST_F(Formatting, FormatNumberStyles) {
    wx.check({
        // engineering, the default style
        {"FormatNumber([1500, 0.0015, 2e6, 4.7e-12, 1.234567e9, 1e12, -0.5, 0], 3)",
         "['1.5k', '1.5m', '2Meg', '4.7p', '1.23G', '1T', '-500m', '0']"},
        {"FormatNumber([999.9999, 9.9999e14, 1e-18, 1e15], 3, 'eng')", "['1k', '1e+15', '1e-18', '1e+15']"},
        {"FormatNumber([1234567], -1)", "['1.23457Meg']"},  // a negative count gives 6 digits
        {"FormatNumber([140, 0.1], 0)", "['100', '100m']"},  // fewer than one digit is one
        // noeng: C's %.*g
        {"FormatNumber([0.1234567, 1234567], 3, 'noeng')", "['0.123', '1.23e+06']"},
        {"FormatNumber([0.1234567], 0, 'NOENG')", "['0.1']"},
        {"FormatNumber([1/3], 1e9, 'noeng')", "['0.333333333333333314829616256247390992939472198486328125']"},
        // int: rounded half up, whole
        {"FormatNumber([2.5, -2.5, -0.5, 0.49, -0.51, 1e20], 3, 'int')", "['3', '-2', '0', '0', '-1', '100000000000000000000']"},
        // percent, with the precision carried from value to value
        {"FormatNumber([0.5, 0.5], 3, '%')", "['50.0%', '50%']"},
        {"FormatNumber([0], 5, '%')", "['0.00%']"},
        {"FormatNumber([0, -0], 2, '%')", "['0%', '0%']"},
        {"FormatNumber([0.123456, 0, 0.5], 4, '%')", "['12.35%', '0.0%', '50%']"},  // 0 leaves the carry alone
        {"FormatNumber([-0.0012, 5], 3, '%')", "['-0.120%', '500%']"},
        {"FormatNumber([0.5, 0.00001], 3, '%')", "['50.0%', '0.001%']"},  // the carry also grows
        // non-finite values in every style
        {"FormatNumber([NaN, Inf, -Inf], 3)", "['NaN', 'Inf', '-Inf']"},
        {"FormatNumber([NaN, 0.5, Inf, -1e307], 3, '%')", "['NaN', '50.0%', 'Inf', '-Inf']"},
        {"FormatNumber([], 3)", "[]"},
        {"FormatNumber([1.5], NaN, 'noeng')", "['1.5']"},
    });
}

TEST_F(Formatting, PercentPrecisionDriftIsBounded) {
    // Each tiny value raises the carried precision by some 300 digits; it stops at 350.
    wx.set("tiny", makeRealVector(std::vector<double>(50, 1e-300)));
    VectorPtr texts = wx("FormatNumber(tiny, 3, '%')");
    ASSERT_TRUE(texts);
    for (const StrElem& s : texts->str) EXPECT_LE(s->size(), 2u + 350 + 1);
    EXPECT_EQ(texts->str.back()->size(), 2u + 350 + 1);  // "0." + 350 digits + "%"
}

TEST_F(Formatting, SprintfNumberFillsTypedValues) {
    wx.set("z", makeComplexVector({{3, 4}, {1, 1}}));
    wx.check({
        {"SprintfNumber('%d items', 3)", "['3 items']"},
        {"SprintfNumber('%5.1f|%-4s|%x|%c', 3.14159, 'ab', 255, 65)", "['  3.1|ab  |ff|A']"},
        {"SprintfNumber('%g', z)", "['5']"},  // the magnitude of the first element
        {"SprintfNumber('R%d=%s%s', [5, 6], ['1k', 'x'], '')", "['R5=1k']"},
        {"SprintfNumber('%g|%s|', [], Parse(''))", "['nan||']"},  // empty vectors: NaN and ""
        {"SprintfNumber('%s%s%s%s%s%s%s', 'a', 'b', 'c', 'd', 'e', 'f', 'g')", "['abcdefg']"},
    });
}

// Every refusal of formatPrintf gives an empty result (tests/support/printf_test.cpp has them all):
// one per kind of value mapping here.
TEST_F(Formatting, SprintfNumberRefusesHostileTemplates) {
    wx.check({
        {"SprintfNumber('%n', 3)", "[]"},
        {"SprintfNumber('%s', 3)", "[]"},
        {"SprintfNumber('%d %d', 1)", "[]"},
    });
    wx.expectFails("SprintfNumber('%d', 1, 2, 3, 4, 5, 6, 7, 8)", "Function 'SprintfNumber' takes 1 to 8 arguments, not 9");
}

TEST_F(Formatting, IsoDatesAreLocalMidnightReadAsStandardTime) {
    useTimeZone("UTC0");
    wx.check({
        {"ConvertIsoTimeToUnix('2020-03-05')", "[1583366400]"},
        {"ConvertIsoTimeToUnix('2020-MAR-05')", "[1583366400]"},
        {"ConvertIsoTimeToUnix('2020-3-5')", "[1583366400]"},
        {"ConvertIsoTimeToUnix('2020-13-01')", "[1609459200]"},     // mktime rolls over
        {"ConvertIsoTimeToUnix('2020-March-05')", "[1578182400]"},  // not one of the names: January
        {"ConvertIsoTimeToUnix('2020-03-05T10:00')", "[1583366400]"},
        {"ConvertIsoTimeToUnix('--')", "[-62167305600]"},            // year 0, day 0: 31 December of year -1
        {"ConvertIsoTimeToUnix('2020-03')", "[]"},
        {"ConvertIsoTimeToUnix('')", "[]"},
        {"ConvertIsoTimeToUnix('99999999999-01-01')", "[]"},
        {"ConvertIsoTimeToUnix('2020-99999999999-01')", "[]"},
        {"ConvertUnixTimeToIso(1583366400.9)", "['2020-03-05']"},
        {"ConvertUnixTimeToIso(0)", "['1970-01-01']"},
        {"ConvertUnixTimeToIso(-1)", "[]"},
        {"ConvertUnixTimeToIso(NaN)", "[]"},
        {"ConvertUnixTimeToIso(1e300)", "[]"},
    });
    useTimeZone("EST5EDT,M3.2.0,M11.1.0");
    wx.check({
        {"ConvertIsoTimeToUnix('2020-03-05')", "[1583384400]"},  // 05:00 UTC
        {"ConvertIsoTimeToUnix('2020-07-01')", "[1593579600]"},  // summer, still read as EST
        {"ConvertUnixTimeToIso(0)", "['1969-12-31']"},
    });
    useTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    wx.check({
        {"ConvertIsoTimeToUnix('2020-07-01')", "[1593558000]"},
        {"ConvertUnixTimeToIso(ConvertIsoTimeToUnix('2020-07-01'))", "['2020-07-01']"},
        {"ConvertUnixTimeToIso(1593558000 - 3601)", "['2020-06-30']"},  // 23:59:59 summer time
    });
}

TEST_F(Formatting, WebColours) {
    wx.check({
        {"ConvertHTMLcolourToRGB('#FF8000')", "['16744448']"},
        {"ConvertHTMLcolourToRGB('ff8000')", "['16744448']"},
        {"ConvertHTMLcolourToRGB(' #f80 ')", "['16746496']"},
        {"ConvertHTMLcolourToRGB('NAVY')", "['128']"},
        {"ConvertHTMLcolourToRGB('#GG0000')", "[]"},
        {"ConvertHTMLcolourToRGB('#12345')", "[]"},
        {"ConvertHTMLcolourToRGB('rgb(1,2,3)')", "[]"},
        {"ConvertRGBcolourToHTML('16744448')", "['#FF8000']"},
        {"ConvertRGBcolourToHTML('16.744448Meg')", "['#FF8000']"},
        {"ConvertRGBcolourToHTML('16777215')", "['#FFFFFF']"},
        {"ConvertRGBcolourToHTML(255.9)", "['#0000FF']"},
        {"ConvertRGBcolourToHTML(ConvertHTMLcolourToRGB('teal'))", "['#008080']"},
        {"ConvertRGBcolourToHTML('16777216')", "[]"},
        {"ConvertRGBcolourToHTML('-1')", "[]"},
        {"ConvertRGBcolourToHTML('blue')", "[]"},
    });
}

}  // namespace
}  // namespace wavex

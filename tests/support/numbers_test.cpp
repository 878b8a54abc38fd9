#include "support/numbers.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace wavex {
namespace {

TEST(Numbers, PlainNumbers) {
    EXPECT_EQ(parseNumber("1.5"), 1.5);
    EXPECT_EQ(parseNumber("+2e-3"), 2e-3);
    EXPECT_EQ(parseNumber("-1e-999"), -0.0);  // too small: the nearest double
    EXPECT_TRUE(std::isinf(*parseNumber("-inf")));
    EXPECT_TRUE(std::isnan(*parseNumber("nan")));
    for (const char* bad : {"", "1e999", "-1e400", "1.5x", " 1", "1k", "+"}) EXPECT_FALSE(parseNumber(bad)) << bad;
}

TEST(Numbers, EngineeringSuffixes) {
    struct Case { const char* text; double value; };
    const Case cases[] = {
        {"2.2u", 2.2e-6}, {"10meg", 1e7}, {"10MEG", 1e7}, {"1k", 1e3}, {"3.3nF", 3.3e-9}, {"1kHz", 1e3},
        {"10mV", 1e-2},   {"5f", 5e-15},  {"7p", 7e-12},   {"2g", 2e9}, {"1t", 1e12},       {"4x", 4},
        {"-1.5e3k", -1.5e6}, {"1e-3m", 1e-6}, {".5", 0.5}, {"inf", HUGE_VAL},
    };
    for (const Case& c : cases) EXPECT_EQ(parseEngineeringNumber(c.text), c.value) << c.text;
    EXPECT_FALSE(parseEngineeringNumber("k1"));
    EXPECT_FALSE(parseEngineeringNumber("1k 2"));
    double v = 0;
    EXPECT_EQ(scanEngineeringNumber("2.5megabytes+1", &v), 12u);  // the unit's letters belong to it
    EXPECT_EQ(v, 2.5e6);
}

TEST(Numbers, TextForPeopleAndForMachines) {
    struct Case { double value; const char* text; };
    const Case engineering[] = {
        {0, "0"}, {20, "20"}, {999.9999999, "1k"}, {1e-20, "1e-20"}, {123456789, "123.457Meg"}, {NAN, "NaN"},
        {-INFINITY, "-Inf"},
    };
    for (const Case& c : engineering) EXPECT_EQ(formatEngineering(c.value), c.text) << c.value;
    for (double x : {0.1, 1.0 / 3, 1e300, 5e-324, -2.5}) EXPECT_EQ(*parseNumber(formatRoundTrip(x)), x);
    EXPECT_EQ(formatRoundTrip(0.1), "0.1");
    EXPECT_EQ(truncateToInt32(-3.9), -3);
    EXPECT_EQ(truncateToInt32(1e20), INT32_MAX);
    EXPECT_EQ(truncateToInt32(NAN), INT32_MIN);
}

// The one rule by which a number becomes an integer.
TEST(Numbers, WholeNumbers) {
    const std::pair<double, std::optional<int64_t>> cases[] = {
        {2.9, 2},           {-2.9, -2},        {-0.5, 0},          {NAN, std::nullopt},
        {INFINITY, INT64_MAX}, {-INFINITY, INT64_MIN}, {1e19, INT64_MAX}, {-9223372036854775808.0, INT64_MIN},
        {9007199254740993.0, 9007199254740992},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(wholeNumber(value), expected) << value;
}

TEST(Numbers, EngineeringDigitsZerosAndRange) {
    struct Row { double value; int digits; bool keepZeros; const char* text; };
    const Row rows[] = {
        {1500, 3, true, "1.50k"},         {20, 3, true, "20.0"},
        {0, 3, true, "0.00"},             {-0.0, 6, false, "-0"},         {1e-18, 3, true, "1.00e-18"},
        {1.5e15, 6, false, "1.5e+15"},    {2.5e-300, 2, false, "2.5e-300"}, {1e-15, 6, false, "1f"},
        {9.9996e-16, 3, false, "1f"},      {123456, 2, false, "120k"},      {0.1, 40, false, "100.00000000000001m"},
        {-4.7e-9, 2, true, "-4.7n"},      {1e6, 1, true, "1Meg"},          {5e-324, 3, false, "4.94e-324"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(formatEngineering(r.value, r.digits, r.keepZeros), r.text);
    }
    // What it writes with 17 digits reads back exactly.
    for (double v : {0.0, 1.0, -2.2e-9, 1e-16, 1e15, 123456789012345678.0, 0.1, 1.0 / 3, 5e-324, -1.7976931348623157e308,
                     6.02214076e23, 999.99999999999989}) {
        SCOPED_TRACE(v);
        EXPECT_EQ(parseEngineeringNumber(formatEngineering(v, 17)), v);
    }
}

}  // namespace
}  // namespace wavex

// ConvertToBase64, ConvertFromBase64, ConvertNumberToBase64, ConvertNumberFromBase64,
// _ConvertIntegerToBase64 as scripts call them.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

struct Base64Functions : ::testing::Test {
    Session wx;

    std::string text(const std::string& expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        if (!r) return "<failed>";
        EXPECT_EQ(r->type, VD_STRING) << expression;
        EXPECT_EQ(r->size(), 1u) << expression;
        EXPECT_FALSE(r->ref.present()) << expression;
        return strings(r).empty() ? "<empty>" : strings(r)[0];
    }
    double number(const std::string& expression) {
        VectorPtr r = wx(expression);
        EXPECT_NE(r, nullptr) << expression << ": " << wx.messages();
        return r && r->size() == 1 ? r->real[0] : -12345;
    }
};

TEST_F(Base64Functions, Conversions) {
    const std::pair<const char*, const char*> cases[] = {
        {"ConvertToBase64('foobar')", "Zm9vYmFy"},
        {"ConvertToBase64('')", ""},
        {"ConvertToBase64(['ab', 'cd'])", "YWI="},  // the first element
        {"ConvertFromBase64('Zm9vYmE=')", "fooba"},
        {"ConvertFromBase64('Zm9v YmFy')", "foobar"},
        {"ConvertFromBase64('Zh==')", ""},          // not Base64: empty
        {"ConvertFromBase64('Zm9v!')", ""},
        {"ConvertNumberToBase64(1)", "AAAAAAAA8D8="},
        {"ConvertNumberToBase64([0.1, 7])", "mpmZmZmZuT8="},
        {"_ConvertIntegerToBase64(-2.7)", "/v////////8="},  // -2
        {"_ConvertIntegerToBase64(2.7)", "AgAAAAAAAAA="},
        {"_ConvertIntegerToBase64(1e300)", "/////////38="},  // saturated
    };
    for (auto [expression, expected] : cases) EXPECT_EQ(text(expression), expected) << expression;

    EXPECT_EQ(number("ConvertNumberFromBase64('AAAAAAAA8D8=')"), 1);
    EXPECT_TRUE(std::isnan(number("ConvertNumberFromBase64('Zm9vYmFy')")));  // 6 bytes
    EXPECT_TRUE(std::isnan(number("ConvertNumberFromBase64('%%')")));
}

TEST_F(Base64Functions, NumbersRoundTripExactly) {
    for (const char* x : {"0.1", "1e-300", "123456.789", "6.02214076e23", "Inf", "NaN", "4.9e-324"}) {
        double want = number(x);
        double got = number(std::string("ConvertNumberFromBase64(ConvertNumberToBase64(") + x + "))");
        EXPECT_EQ(std::bit_cast<uint64_t>(got), std::bit_cast<uint64_t>(want)) << x;
    }
}

TEST_F(Base64Functions, ArgumentKinds) {
    EXPECT_EQ(test::strings(wx("ConvertToBase64(1)")), std::vector<std::string>{"MQ=="});  // the text "1"
    EXPECT_EQ(wx("ConvertNumberToBase64('1')"), nullptr);
    EXPECT_EQ(wx.messages(), "Argument 1 of function 'ConvertNumberToBase64' must be real, not a string");
}

}  // namespace
}  // namespace wavex

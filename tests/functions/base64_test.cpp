// ConvertToBase64, ConvertFromBase64, ConvertNumberToBase64, ConvertNumberFromBase64,
// _ConvertIntegerToBase64 as scripts call them: what they add to the converter (tests/support)
// is the first element only, the empty text for refused input, integer truncation and saturation,
// and the argument kinds.
#include "test_util.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

TEST(Base64Functions, Conversions) {
    test::Session wx;
    wx.check({
        {"ConvertToBase64('foobar')", "['Zm9vYmFy']"},
        {"ConvertToBase64('')", "['']"},
        {"ConvertToBase64(['ab', 'cd'])", "['YWI=']"},  // the first element
        {"ConvertToBase64(1)", "['MQ==']"},             // the text "1"
        {"ConvertFromBase64('Zm9vYmE=')", "['fooba']"},
        {"ConvertFromBase64('Zh==')", "['']"},          // not Base64: empty
        {"ConvertNumberToBase64([0.1, 7])", "['mpmZmZmZuT8=']"},
        {"_ConvertIntegerToBase64(-2.7)", "['/v////////8=']"},  // -2
        {"_ConvertIntegerToBase64(2.7)", "['AgAAAAAAAAA=']"},
        {"_ConvertIntegerToBase64(1e300)", "['/////////38=']"},  // saturated
        {"ConvertNumberFromBase64('AAAAAAAA8D8=')", "[1]"},
        {"ConvertNumberFromBase64('Zm9vYmFy')", "[nan]"},  // 6 bytes
        {"ConvertNumberFromBase64('%%')", "[nan]"},
        {"ConvertNumberFromBase64(ConvertNumberToBase64(4.9e-324))", "[5e-324]"},
    });
    EXPECT_FALSE(wx("ConvertToBase64('x')")->ref.present());
    wx.expectFails("ConvertNumberToBase64('1')", "Argument 1 of function 'ConvertNumberToBase64' must be real, not a string");
}

}  // namespace
}  // namespace wavex

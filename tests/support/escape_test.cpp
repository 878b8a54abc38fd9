#include "support/escape.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace wavex {
namespace {

using namespace std::string_literals;

struct EscapeCase {
    std::string text;
    std::string escaped, escapedNoSpaces;  // sp_EscapeString without and with replaceSpaces
    std::string encoded, encodedPlus;      // sp_EscapeStringEncode without and with replaceSpaces
};

TEST(Escape, WritesEachSchemeAsDocumented) {
    const EscapeCase cases[] = {
        {"", "", "", "", ""},
        {"a b", "a b", R"(a\x20b)", "a%20b", "a+b"},
        {"tab\there", R"(tab\there)", R"(tab\there)", "tab%09here", "tab%09here"},
        {R"(q"uote\)", R"(q\"uote\\)", R"(q\"uote\\)", "q%22uote%5C", "q%22uote%5C"},
        {"\n\r\x01\x1f\x7f", R"(\n\r\x01\x1f\x7f)", R"(\n\r\x01\x1f\x7f)", "%0A%0D%01%1F%7F", "%0A%0D%01%1F%7F"},
        {"\0"s, R"(\x00)", R"(\x00)", "%00", "%00"},
        {"it's a+b~c-d.e_f", "it's a+b~c-d.e_f", R"(it's\x20a+b~c-d.e_f)", "it%27s%20a%2Bb~c-d.e_f",
         "it%27s+a%2Bb~c-d.e_f"},
        {"\xc3\xa9t\xc3\xa9", "\xc3\xa9t\xc3\xa9", "\xc3\xa9t\xc3\xa9", "%C3%A9t%C3%A9", "%C3%A9t%C3%A9"},
        {"caf\xe9", R"(caf\xe9)", R"(caf\xe9)", "caf%E9", "caf%E9"},                  // not UTF-8 (which sequences are: Utf8SequenceLengths)
        {"\xe2\x82", R"(\xe2\x82)", R"(\xe2\x82)", "%E2%82", "%E2%82"},               // truncated
    };
    for (const EscapeCase& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(sp_EscapeString(c.text, false), c.escaped);
        EXPECT_EQ(sp_EscapeString(c.text, true), c.escapedNoSpaces);
        EXPECT_EQ(sp_EscapeStringEncode(c.text, false), c.encoded);
        EXPECT_EQ(sp_EscapeStringEncode(c.text, true), c.encodedPlus);
    }
}

TEST(Escape, DecodersReadWhatIsNotAnEscapeAsItself) {
    const std::pair<std::string, std::string> unescape[] = {
        {R"(\q)", R"(\q)"}, {"\\", "\\"}, {R"(\x4)", R"(\x4)"}, {R"(\x4g)", R"(\x4g)"},
        {R"(\x41\X41)", R"(A\X41)"}, {R"(\xE9\xe9)", "\xe9\xe9"}, {R"(\\x41)", R"(\x41)"},
    };
    for (const auto& [in, out] : unescape) EXPECT_EQ(sp_UnescapeString(in), out) << in;
    const std::pair<std::string, std::string> decode[] = {
        {"%", "%"}, {"%4", "%4"}, {"%zz", "%zz"}, {"%41%62", "Ab"}, {"a+b%20c", "a b c"}, {"%2B", "+"},
    };
    for (const auto& [in, out] : decode) EXPECT_EQ(sp_EscapeStringDecode(in), out) << in;
}

TEST(Escape, EveryByteStringRoundTrips) {
    std::mt19937 random(3);
    for (int trial = 0; trial < 5000; ++trial) {
        std::string text;
        for (int k = random() % 16; k > 0; --k) text += static_cast<char>(random() % 256);
        for (bool flag : {false, true}) {
            std::string escaped = sp_EscapeString(text, flag);
            ASSERT_EQ(sp_UnescapeString(escaped), text);
            // Always well-formed UTF-8 without control characters (or spaces, with the flag).
            for (size_t i = 0; i < escaped.size(); i += utf8SequenceLength(escaped, i)) {
                ASSERT_NE(utf8SequenceLength(escaped, i), 0u);
                ASSERT_FALSE(static_cast<unsigned char>(escaped[i]) < 0x20 || escaped[i] == 0x7f);
                ASSERT_FALSE(flag && escaped[i] == ' ');
            }
            ASSERT_EQ(sp_EscapeStringDecode(sp_EscapeStringEncode(text, flag)), text);
        }
    }
}

TEST(Escape, Utf8SequenceLengths) {
    const std::pair<std::string, size_t> cases[] = {
        {"a", 1}, {"\x7f", 1}, {"\xc2\x80", 2}, {"\xc1\xbf", 0}, {"\xdf\xbf", 2}, {"\xe0\xa0\x80", 3},
        {"\xe0\x9f\xbf", 0}, {"\xed\x9f\xbf", 3}, {"\xed\xa0\x80", 0}, {"\xef\xbf\xbf", 3},
        {"\xf0\x90\x80\x80", 4}, {"\xf0\x8f\xbf\xbf", 0}, {"\xf4\x8f\xbf\xbf", 4}, {"\xf4\x90\x80\x80", 0},
        {"\xf5\x80\x80\x80", 0}, {"\x80", 0}, {"\xc3", 0}, {"\xe2\x82\x41", 0},
    };
    for (const auto& [bytes, n] : cases) EXPECT_EQ(utf8SequenceLength(bytes, 0), n) << testing::PrintToString(bytes);
}

}  // namespace
}  // namespace wavex

#include "support/split.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace wavex {
namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

Strings strings(const std::vector<std::string_view>& views) { return Strings(views.begin(), views.end()); }

struct SplitCase {
    std::string line;
    char separator;
    std::string quotes;
    unsigned flags;
    Strings fields;
};

TEST(SplitLine, CutsAtEverySeparatorOutsideQuotes) {
    const SplitCase cases[] = {
        {"a;;b;", ';', "", 0, {"a", "", "b", ""}},
        {"", ';', "", 0, {""}},
        {"a;b;", ';', "", kSplitTerminated, {"a", "b"}},
        {";", ';', "", kSplitTerminated, {""}},
        {"<a;b>;c", ';', "<>", 0, {"a;b", "c"}},
        {"<a;b>;c", ';', "<>", kSplitKeepQuotes, {"<a;b>", "c"}},
        {"x<a;b>y;c", ';', "<>", 0, {"x<a;b>y", "c"}},           // marks inside a field stay
        {"<a>b;c", ';', "<>", 0, {"<a>b", "c"}},                 // the stretch is not the whole field
        {"<a<b;c>d>;e", ';', "<>", 0, {"a<b;c>d", "e"}},         // distinct marks nest
        {"<a;b", ';', "<>", 0, {"<a;b"}},                        // never closed: runs to the end
        {"<>;", ';', "<>", 0, {"", ""}},
        {"\"a;b\";\"\"", ';', "\"", 0, {"a;b", ""}},             // one character quotes both ways
        {"'a;'b;c", ';', "'", 0, {"'a;'b", "c"}},
        {"a;b", ';', ";;", 0, {"a", "b"}},                       // the separator never quotes
        {"<a>;<b>;", ';', "<>", kSplitTerminated, {"a", "b"}},
        {"a\0b;c"s, ';', "", 0, {"a\0b"s, "c"}},
        {"\xff;\xfe<;>", ';', "<>", 0, {"\xff", "\xfe<;>"}},
        {"a,b", '\0', "", 0, {"a,b"}},
    };
    std::vector<std::string_view> fields;
    for (const SplitCase& c : cases) {
        SCOPED_TRACE(c.line);
        size_t n = c.quotes.empty() ? sp_SplitLine(c.line, c.separator, fields, c.flags)
                                    : sp_SplitLine(c.line, c.separator, c.quotes, fields, c.flags);
        EXPECT_EQ(strings(fields), c.fields);
        EXPECT_EQ(n, fields.size());
    }
}

TEST(SplitLine, KeptQuotesJoinBackToTheLine) {
    std::mt19937 random(7);
    const std::string alphabet = "ab;<>\" ";
    std::vector<std::string_view> fields;
    for (int trial = 0; trial < 2000; ++trial) {
        std::string line;
        for (int k = random() % 12; k > 0; --k) line += alphabet[random() % alphabet.size()];
        sp_SplitLine(line, ';', trial % 2 ? "<>" : "\"", fields, kSplitKeepQuotes);
        std::string joined;
        for (size_t i = 0; i < fields.size(); ++i) joined += (i ? ";" : "") + std::string(fields[i]);
        ASSERT_EQ(joined, line);
    }
}

struct ScanCase {
    std::string line;
    std::string delimiters;
    std::string open, close;
    unsigned flags;
    size_t maximum;
    Strings tokens;
};

TEST(ScanLine, CutsAtRunsOfDelimitersOutsideQuotes) {
    const std::string q = "\"'";
    const ScanCase cases[] = {
        {"  a,, b ", " ,", "", "", 0, SIZE_MAX, {"a", "b"}},
        {"a b c=1 d=2", " \t=,", "", "", 0, SIZE_MAX, {"a", "b", "c", "1", "d", "2"}},
        {"", " ", "", "", 0, SIZE_MAX, {}},
        {"a b", "", "", "", 0, SIZE_MAX, {"a b"}},
        {"a b c", " ", "", "", 0, 2, {"a", "b"}},
        {"a b c", " ", "", "", 0, 0, {}},
        {"p=\"a b\" q='x=y'", " =", q, q, 0, SIZE_MAX, {"p", "a b", "q", "x=y"}},
        {"p=\"a b\" q='x=y'", " =", q, q, kSplitKeepQuotes, SIZE_MAX, {"p", "\"a b\"", "q", "'x=y'"}},
        {"c=\"\" d=2", " =", q, q, 0, SIZE_MAX, {"c", "", "d", "2"}},   // a quoted empty value
        {"a\"b c\"d e", " ", q, q, 0, SIZE_MAX, {"a\"b c\"d", "e"}},
        {"\"it's\" x", " ", q, q, 0, SIZE_MAX, {"it's", "x"}},          // only the open pair counts
        {"f(a b) [c d]", " ", "([", ")]", 0, SIZE_MAX, {"f(a b)", "c d"}},
        {"((a b) c) d", " ", "(", ")", 0, SIZE_MAX, {"(a b) c", "d"}},
        {"|a b| (c d)", " ", "(|", ")", 0, SIZE_MAX, {"a b", "c d"}},  // no closing partner: closes itself
        {"\"a b\"", " \"", "\"", "\"", 0, SIZE_MAX, {"a", "b"}},         // a delimiter never quotes
        {"x\xe9 y\0z"s, " ", q, q, 0, SIZE_MAX, {"x\xe9", "y\0z"s}},
    };
    std::vector<std::string_view> tokens;
    for (const ScanCase& c : cases) {
        SCOPED_TRACE(c.line);
        size_t n = c.open.empty() && c.flags == 0
                       ? sp_ScanLine(c.line, c.delimiters, tokens, c.maximum)
                       : sp_ScanLine(c.line, c.delimiters, c.open, c.close, tokens, c.maximum, c.flags);
        EXPECT_EQ(strings(tokens), c.tokens);
        EXPECT_EQ(n, tokens.size());
    }
}

TEST(StrTok, TakesOneTokenAtATimeAndKeepsQuotes) {
    std::string_view cursor = "  \"a b\",c ''  'x";
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "\"a b\"");
    EXPECT_EQ(cursor, ",c ''  'x");
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "c");
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "''");  // an empty quoted text is still a token
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "'x");  // never closed
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "");
    EXPECT_TRUE(cursor.empty());
    cursor = " , ";
    EXPECT_EQ(sp_StrTok(cursor, " ,"), "");
    EXPECT_TRUE(cursor.empty());
}

TEST(StrTok, AgreesWithScanLineKeepingQuotes) {
    std::mt19937 random(11);
    const std::string alphabet = "ab ,\"'";
    std::vector<std::string_view> tokens;
    for (int trial = 0; trial < 2000; ++trial) {
        std::string line;
        for (int k = random() % 14; k > 0; --k) line += alphabet[random() % alphabet.size()];
        sp_ScanLine(line, " ,", "\"'", "\"'", tokens, SIZE_MAX, kSplitKeepQuotes);
        std::vector<std::string_view> taken;
        std::string_view cursor = line;
        for (std::string_view t; !(t = sp_StrTok(cursor, " ,")).empty();) taken.push_back(t);
        ASSERT_EQ(strings(taken), strings(tokens)) << line;
    }
}

}  // namespace
}  // namespace wavex

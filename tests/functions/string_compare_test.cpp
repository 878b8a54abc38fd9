// The element-wise string comparisons (reached through the comparison operators), `&`
// concatenation and PathEqual.
#include "test_util.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

struct StringCompare : ::testing::Test {
    Session s;
    void SetUp() override {
        s.set("nulls", makeStringVector({std::nullopt, "a", std::nullopt}));
        s.set("none", makeStringVector({}));
    }
};

struct ComparisonCase {
    const char* expression;
    std::vector<double> want;
};

// Left and right column pairs, compared as _stricmp does: ASCII letters lower-cased, then bytes
// as unsigned; so "_" (0x5f) sorts before "A" (as "a", 0x61), and "é" (first byte 0xc3) after "z".
const ComparisonCase kComparisonCases[] = {
    {R"(["abc", "abc", "ab", "b", "_", "é"] == ["ABC", "abd", "abc", "A", "A", "z"])", {1, 0, 0, 0, 0, 0}},
    {R"(["abc", "abc", "ab", "b", "_", "é"] != ["ABC", "abd", "abc", "A", "A", "z"])", {0, 1, 1, 1, 1, 1}},
    {R"(["abc", "abc", "ab", "b", "_", "é"] <  ["ABC", "abd", "abc", "A", "A", "z"])", {0, 1, 1, 0, 1, 0}},
    {R"(["abc", "abc", "ab", "b", "_", "é"] <= ["ABC", "abd", "abc", "A", "A", "z"])", {1, 1, 1, 0, 1, 0}},
    {R"(["abc", "abc", "ab", "b", "_", "é"] >  ["ABC", "abd", "abc", "A", "A", "z"])", {0, 0, 0, 1, 0, 1}},
    {R"(["abc", "abc", "ab", "b", "_", "é"] >= ["ABC", "abd", "abc", "A", "A", "z"])", {1, 0, 0, 1, 0, 1}},
    {R"(nulls == ["", "A", "x"])", {1, 1, 0}},  // a null element reads as ""
    {R"(nulls < ["", "A", "x"])", {0, 0, 1}},
    {R"(none == none)", {}},
};

TEST_F(StringCompare, ElementByElementIgnoringCase) {
    for (const ComparisonCase& c : kComparisonCases) {
        VectorPtr r = s(c.expression);
        ASSERT_TRUE(r) << c.expression << ": " << s.messages();
        EXPECT_EQ(reals(r), c.want) << c.expression;
        EXPECT_EQ(r->phys, units::Number) << c.expression;
        EXPECT_EQ(r->ref.type, VD_NONE) << c.expression;
    }
}

TEST_F(StringCompare, LengthsMustMatch) {
    for (const char* e : {R"(["a", "b"] == "a")", R"(none < "a")"})
        s.expectFails(e, "Arguments for string comparison must be the same length");
}

// ---- Concatenation ---------------------------------------------------------------------------

// The shorter side repeats its last element; two null parts stay null, one reads as ""; an
// argument without elements contributes nothing.
const std::pair<const char*, std::vector<std::string>> kConcatenations[] = {
    {R"(["a", "b", "c"] & "-")", {"a-", "b-", "c-"}},
    {R"(["a", "b"] & ["1", "2", "3"])", {"a1", "b2", "b3"}},
    {R"("x" & "y" & "z")", {"xyz"}},
    {"nulls & nulls", {"<null>", "aa", "<null>"}},
    {R"(nulls & ["1", "2", "3"])", {"1", "a2", "3"}},
    {R"(["a", "b"] & none)", {"a", "b"}},
    {"none & nulls", {"<null>", "a", "<null>"}},
    {"none & none", {}},
};

TEST_F(StringCompare, Concatenation) {
    for (const auto& [e, want] : kConcatenations) {
        VectorPtr r = s(e);
        ASSERT_TRUE(r) << e << ": " << s.messages();
        EXPECT_EQ(strings(r), want) << e;
        EXPECT_EQ(r->ref.type, VD_NONE) << e;
    }
}

// ---- PathEqual -------------------------------------------------------------------------------

TEST_F(StringCompare, PathEqualComparesNamesAsGiven) {
    // This file system tells letter case apart; separators are not normalised.
    VectorPtr r = s(R"(PathEqual(["/a/b.txt", "/a/B.txt", "a//b", "x", ""], ["/a/b.txt", "/a/b.txt", "a/b", "x", ""]))");
    EXPECT_EQ(reals(r), (std::vector<double>{1, 0, 0, 1, 1}));
    EXPECT_EQ(reals(s(R"(PathEqual(nulls, ["", "a", "b"]))")), (std::vector<double>{1, 1, 0}));
    // Different lengths, or nothing to compare: an empty result and no message.
    s.check({{R"(PathEqual(["a", "b"], "a"))", "[]"}, {"PathEqual(none, none)", "[]"}, {R"(PathEqual(none, "a"))", "[]"}});
}

}  // namespace
}  // namespace wavex

#include "support/regex.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace wavex {
namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

struct RegexCase {
    Strings subjects;
    std::string pattern;
    bool complete;
    Strings matches;
};

// Runs the routine on owned subjects and returns owned matches.
Strings run(const Strings& subjects, const std::string& pattern, bool* complete, std::string* error) {
    std::vector<std::string_view> views(subjects.begin(), subjects.end());
    std::vector<std::string_view> matches;
    *complete = sp_RegExpMatches(views, pattern, matches, error);
    return Strings(matches.begin(), matches.end());
}

TEST(RegExpMatches, WholeMatchThenGroupsForEachSubjectThatMatches) {
    const RegexCase cases[] = {
        {{"R1=10k"}, R"((\w+)=(\w+))", true, {"R1=10k", "R1", "10k"}},
        {{"x R1=10k", "none", "C2=1u"}, R"((\w+)=(\w+))", false, {"R1=10k", "R1", "10k", "C2=1u", "C2", "1u"}},
        {{"ab", "b"}, "(a)?(b)", true, {"ab", "a", "b", "b", "", "b"}},      // a group that took no part
        {{"ab"}, "(b)|(c)", true, {"b", "b", ""}},                           // a trailing unset group
        {{"Hello"}, "(?i)hello", true, {"Hello"}},
        {{"line1\nline2"}, "(?m)^line2$", true, {"line2"}},
        {{"x=1"}, R"((?<k>\w+)=(?<v>\d+))", true, {"x=1", "x", "1"}},
        {{"abc"}, "x*", true, {""}},                                         // an empty match is a match
        {{}, "a", true, {}},
        {{"\xc3\xa9"}, "^.$", true, {"\xc3\xa9"}},                           // UTF-8: one character
        {{"caf\xe9"}, "\xe9", true, {"\xe9"}},                               // byte-mode pattern
        {{"caf\xe9"}, "^caf.$", false, {}},                                  // UTF-8 mode: never matches \xe9
        {{"a\xff" "b"}, "b", true, {"b"}},                                   // the rest is still searched
        {{"a\0b"s}, R"(a\x00b)", true, {"a\0b"s}},
        {{"", "x"}, "^$", false, {""}},
    };
    for (const RegexCase& c : cases) {
        SCOPED_TRACE(c.pattern);
        bool complete = false;
        std::string error = "stale";
        EXPECT_EQ(run(c.subjects, c.pattern, &complete, &error), c.matches);
        EXPECT_EQ(complete, c.complete);
        EXPECT_EQ(error, "");
    }
}

TEST(RegExpMatches, ReportsMalformedPatternsAndRunawayMatches) {
    const std::pair<std::string, std::string> cases[] = {
        {"a(", "missing closing parenthesis at offset 2"},
        {"*", "quantifier does not follow a repeatable item at offset 0"},
        {"\\", "\\ at end of pattern at offset 1"},
        {"(a+)+[^a]", "match limit exceeded in subject 2"},  // catastrophic backtracking on 40 a's
    };
    for (const auto& [pattern, message] : cases) {
        bool complete = true;
        std::string error;
        EXPECT_EQ(run({"x", std::string(40, 'a')}, pattern, &complete, &error), Strings{}) << pattern;
        EXPECT_FALSE(complete);
        EXPECT_EQ(error, message);
    }
    // The error text is optional.
    std::vector<std::string_view> matches{"stale"};
    EXPECT_FALSE(sp_RegExpMatches({}, "(", matches));
    EXPECT_TRUE(matches.empty());
}

}  // namespace
}  // namespace wavex

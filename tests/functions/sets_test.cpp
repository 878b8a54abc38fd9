// The set functions: order of first appearance, the first spelling of case variants, repeats,
// empty and null elements, and a large input against a plain reference.
#include "support/text.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace wavex {
namespace {

using test::show;

TEST(Sets, OrderSpellingAndRepeats) {
    test::Session wx;
    const std::pair<const char*, const char*> cases[] = {
        {"SetUnion(['A', 'b', 'a'])", "['A', 'b']"},
        {"SetUnion(['x'], ['X', 'y'])", "['x', 'y']"},
        {"SetUnion(Parse(''), ['b', 'B', 'a'])", "['b', 'a']"},
        {"SetUnion(['a', 'a'], Parse(''))", "['a']"},
        {"SetIntersect(['a', 'B'], ['b', 'c', 'B'])", "['b']"},  // the second vector's spelling and order
        {"SetIntersect(['c', 'a', 'b'], ['b', 'a', 'x', 'A'])", "['b', 'a']"},
        {"SetIntersect(Parse(''), ['a'])", "[]"},
        {"SetDifference(['a', 'a', 'c'], ['C'])", "['a']"},
        {"SetDifference(Parse(''), ['a'])", "[]"},
        {"SetDifference(['b', 'a', 'B'], Parse(''))", "['b', 'a']"},
        {"SetSymmetricDifference(['a', 'b'], ['B', 'c'])", "['a', 'c']"},
        {"SetSymmetricDifference(['a', 'A', 'x'], ['y', 'Y', 'X'])", "['a', 'y']"},
        {"SetSymmetricDifference(['a'], ['A'])", "[]"},
        // Empty and null elements are the same string; the first is copied as it is.
        {"SetUnion(['', _NullString(1), 'x'])", "['', 'x']"},
        {"SetUnion([_NullString(1), ''])", "[<null>]"},
        {"SetDifference(['', 'a'], [_NullString(1)])", "['a']"},
        // Letter case is ASCII only: other bytes must match exactly.
        {"SetUnion(['\xe9', '\xc9', '\xe9'])", "['\xe9', '\xc9']"},
    };
    for (const auto& [expression, value] : cases) {
        EXPECT_EQ(show(wx(expression)), value) << expression;
        EXPECT_EQ(wx.messages(), "");
    }
    VectorPtr v = wx("SetUnion(['a'])");
    ASSERT_TRUE(v);
    EXPECT_EQ(v->type, VD_STRING);
    EXPECT_FALSE(v->ref.present());
    EXPECT_EQ(wx("SetIntersect(['a'])"), nullptr);
    EXPECT_EQ(wx.messages(), "Function 'SetIntersect' takes 2 arguments, not 1");
}

// All four on vectors long enough to make the tables grow many times, against quadratic loops
// that follow the definitions word for word.
TEST(Sets, LargeVectorsMatchTheDefinitions) {
    std::mt19937 random(11);
    auto words = [&](size_t n) {
        std::vector<StrElem> w;
        for (size_t i = 0; i < n; ++i) {
            std::string s = "w" + std::to_string(random() % 1500);
            if (random() % 2) s[0] = 'W';
            w.emplace_back(s);
        }
        return w;
    };
    std::vector<StrElem> a = words(1200), b = words(900);
    auto in = [](const std::vector<StrElem>& v, const std::string& s) {
        for (const StrElem& e : v)
            if (iequals(*e, s)) return true;
        return false;
    };
    auto unite = [&](std::vector<StrElem>& out, const StrElem& s) {
        if (!in(out, *s)) out.push_back(s);
    };
    std::vector<StrElem> uni, inter, diff, sym;
    for (const StrElem& s : a) unite(uni, s);
    for (const StrElem& s : b) unite(uni, s);
    for (const StrElem& s : b)
        if (in(a, *s)) unite(inter, s);
    for (const StrElem& s : a)
        if (!in(b, *s)) unite(diff, s);
    for (const StrElem& s : a)
        if (!in(b, *s)) unite(sym, s);
    for (const StrElem& s : b)
        if (!in(a, *s)) unite(sym, s);

    test::Session wx;
    wx.wx.setVector("a", makeStringVector(a));
    wx.wx.setVector("b", makeStringVector(b));
    const std::pair<const char*, const std::vector<StrElem>*> cases[] = {
        {"SetUnion(a, b)", &uni},
        {"SetIntersect(a, b)", &inter},
        {"SetDifference(a, b)", &diff},
        {"SetSymmetricDifference(a, b)", &sym},
    };
    for (const auto& [expression, expected] : cases) {
        VectorPtr v = wx(expression);
        ASSERT_TRUE(v) << expression;
        EXPECT_EQ(v->str, *expected) << expression;
    }
}

}  // namespace
}  // namespace wavex

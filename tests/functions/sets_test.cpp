// The set functions: order of first appearance, the first spelling of case variants, repeats,
// empty and null elements (the table's growth is checked in tests/support/hash_table_test.cpp).
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <string>

namespace wavex {
namespace {

TEST(Sets, OrderSpellingAndRepeats) {
    test::Session wx;
    wx.check({
        {"SetUnion(['A', 'b', 'a'])", "['A', 'b']"},
        {"SetUnion(['x'], ['X', 'y'])", "['x', 'y']"},
        {"SetUnion(Parse(''), ['b', 'B', 'a'])", "['b', 'a']"},
        {"SetIntersect(['a', 'B'], ['b', 'c', 'B'])", "['b']"},  // the second vector's spelling and order
        {"SetIntersect(['c', 'a', 'b'], ['b', 'a', 'x', 'A'])", "['b', 'a']"},
        {"SetIntersect(Parse(''), ['a'])", "[]"},
        {"SetDifference(['a', 'a', 'c'], ['C'])", "['a']"},
        {"SetDifference(['b', 'a', 'B'], Parse(''))", "['b', 'a']"},
        {"SetSymmetricDifference(['a', 'b'], ['B', 'c'])", "['a', 'c']"},
        {"SetSymmetricDifference(['a', 'A', 'x'], ['y', 'Y', 'X'])", "['a', 'y']"},
        // Empty and null elements are the same string; the first is copied as it is.
        {"SetUnion(['', _NullString(1), 'x'])", "['', 'x']"},
        {"SetUnion([_NullString(1), ''])", "[<null>]"},
        {"SetDifference(['', 'a'], [_NullString(1)])", "['a']"},
        // Letter case is ASCII only: other bytes must match exactly.
        {"SetUnion(['\xe9', '\xc9', '\xe9'])", "['\xe9', '\xc9']"},
    });
    wx.expectFails("SetIntersect(['a'])", "Function 'SetIntersect' takes 2 arguments, not 1");
}

}  // namespace
}  // namespace wavex

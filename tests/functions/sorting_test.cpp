// Sorting and array search: the orders (case-insensitive strings, numbers with NaN last, equal
// elements in input order), SortIdx and SortIdx2's opposite numeric defaults, Search's single,
// indexed, counting and path forms, MapArray, and large inputs against a plain reference.
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace wavex {
namespace {

using test::show;

class Sorting : public testing::Test {
protected:
    test::Session wx;
};

TEST_F(Sorting, NumbersGoOppositeWaysInSortIdxAndSortIdx2) {
    wx.set("z", makeComplexVector({{3, 4}, {4, 0}, {0, -1}}));
    wx.check({
        {"SortIdx([3, 1, 2])", "[0, 2, 1]"},
        {"SortIdx([3, 1, 2], 'reverse')", "[1, 2, 0]"},
        {"SortIdx2([3, 1, 2])", "[1, 2, 0]"},
        {"SortIdx([3, 1, 2], 'up')", "[0, 2, 1]"},  // other words are ignored
        {"SortIdx(z)", "[0, 1, 2]"},                // by magnitude: 5, 4, 1
        {"SortIdx2(z)", "[2, 1, 0]"},
        {"SortIdx2([1, 2, 1, 2], 'reverse')", "[1, 3, 0, 2]"},  // ties in input order (more: the long test)
        {"SortIdx2([NaN, 1, NaN, 2])", "[1, 3, 0, 2]"},  // NaN last (both ways: the long test)
        {"SortIdx2([Inf, -Inf, NaN, 0, -1e-300, 5e-324])", "[1, 4, 3, 5, 0, 2]"},
        {"SortIdx([])", "[]"},
        {"SortIdx2([7])", "[0]"},
    });
}

TEST_F(Sorting, StringsAscendByDefaultInBoth) {
    wx.check({
        {"SortIdx(['b', 'a', 'c'])", "[1, 0, 2]"},
        {"SortIdx2(['b', 'a', 'c'], 'REVERSE')", "[2, 0, 1]"},
        {"SortIdx(['b', 'A', 'a', 'B'])", "[1, 2, 0, 3]"},  // case ignored, ties in input order
        {"SortIdx(['b', 'A', 'a', 'B'], 'reverse')", "[0, 3, 1, 2]"},
        // _stricmp's order: letters lower-cased before comparing, bytes unsigned, prefixes first.
        {"Sort(['B', '_', 'abc', 'ab', '\xe9', 'z', ''])", "['', '_', 'ab', 'abc', 'B', 'z', '\xe9']"},
        {"Sort(['abcdefghij', 'ABCDEFGHIA', 'abcdefgh', 'abcdefghI'])",
         "['abcdefgh', 'abcdefghI', 'ABCDEFGHIA', 'abcdefghij']"},
        {"SortIdx(['x', _NullString(1), ''])", "[1, 2, 0]"},
    });
}

TEST_F(Sorting, SortAndUnique) {
    wx.check({
        {"Sort(['b', 'A', 'a'], 'UNIQUE')", "['A', 'b']"},  // the first spelling is kept
        {"Sort(['b', 'A', 'a'])", "['A', 'a', 'b']"},
        {"Sort(['b', 'A', 'a'], 'reverse')", "['A', 'a', 'b']"},  // there is no descending Sort
        {"Sort(['a', 'B', 'b', 'A', 'c', 'a'], 'unique')", "['a', 'B', 'c']"},
        {"Sort(Parse(''), 'unique')", "[]"},
        {"Sort(_NullString(2))", "[<null>, <null>]"},
        {"Sort(['x', _NullString(1), ''], 'unique')", "[<null>, 'x']"},
    });
}

TEST_F(Sorting, Search) {
    wx.check({
        {"Search(['a', 'B', 'c'], 'b')", "[1]"},
        {"Search(['a', 'B', 'c'], 'x')", "[-1]"},
        {"Search(['a', 'B', 'c'], 'x', ['COUNT'])", "[0]"},
        {"Search(['a', 'b', 'b'], ['x', 'b'])", "[-1, 1]"},
        {"Search(['a', 'b', 'B'], ['B', 'b', 'A', 'b'], 'count')", "[4]"},
        {"Search(['a', 'b', 'b'], Parse(''))", "[]"},
        {"Search(['a', 'b', 'b'], Parse(''), 'count')", "[0]"},
        {"Search(Parse(''), ['a', 'b'])", "[-1, -1]"},
        {"Search(['x', _NullString(1)], ['', 'y'])", "[1, -1]"},
        {"Search(['a', 'b'], ['B', 'a'], ['other', 'words'])", "[1, 0]"},
        // Path mode: file names as the file system compares them (case counts here).
        {"Search(['A/b', 'a/b'], ['a/b', 'A/B', 'A/b'], ['count', 'path'])", "[2]"},
        {"Search(['A/b', 'a/b'], ['a/b', 'A/B', 'A/b'], 'Path')", "[1, -1, 0]"},
        {"Search(['A/b', 'a/b'], ['a/b', 'A/B'])", "[0, 0]"},
        {"Search(['a/b'], ['a\\b', 'a//b'], 'Path')", "[-1, -1]"},  // names as given
    });
}

TEST_F(Sorting, MapArray) {
    wx.set("volts", makeRealVector({1.5, 2.5}, units::Voltage));
    wx.check({
        {"MapArray(volts, [1, 0])", "[2.5, 1.5]"},
        {"MapArray([10, 20], [2, -1])", "[-1, -1, 10]"},
        {"MapArray(['p', 'q'], [1, 1])", "['', 'q']"},
        {"MapArray([1, 2, 3], [0.9, 1.1])", "[1, 2]"},  // floor, and only the pairs
        {"MapArray([5], [-0.5])", "[-1]"},               // floor(-0.5) is -1: not written
        {"MapArray([5], [NaN, -Inf])", "[-1]"},
        {"MapArray(Parse(''), [2])", "['', '', '']"},
        {"MapArray([(1, 2)], [0])", "[]"},
        {"MapArray([_NullString(1), 'x'], [1, 0])", "['x', <null>]"},
    });
    EXPECT_EQ(wx("MapArray(volts, [1, 0])")->phys, units::Voltage);

    const std::pair<const char*, const char*> refused[] = {
        {"MapArray([1], [Inf])", "Function 'MapArray' cannot make 9223372036854775807 elements: the limit is 50000000"},
        {"MapArray([1], [50000000])", "Function 'MapArray' cannot make 50000001 elements: the limit is 50000000"},
    };
    for (const auto& [expression, message] : refused) wx.expectFails(expression, message);
}

// The radix sort (long vectors) and the string sort against std::stable_sort with the documented
// order: NaN last, -0 equal to 0, ties in input order.
TEST_F(Sorting, LongVectorsMatchAStableReference) {
    std::mt19937_64 random(7);
    std::vector<double> x(20000);
    for (double& v : x) {
        switch (random() % 8) {
            case 0: v = std::numeric_limits<double>::quiet_NaN(); break;
            case 1: v = static_cast<double>(random() % 5) - 2; break;  // many ties, -0 and 0 among them
            case 2: v = -0.0; break;
            case 3: v = (random() % 2 ? 1 : -1) * std::numeric_limits<double>::infinity(); break;
            default: v = std::ldexp(static_cast<double>(random() % 1000000) - 500000, static_cast<int>(random() % 200) - 100);
        }
    }
    wx.set("x", makeRealVector(x));
    // Positions 0..n-1 in a stable order by `before`.
    auto stableOrder = [](size_t n, auto before) {
        std::vector<double> o(n);
        std::iota(o.begin(), o.end(), 0);
        std::stable_sort(o.begin(), o.end(), [&](double a, double b) { return before(size_t(a), size_t(b)); });
        return o;
    };
    for (bool descending : {false, true}) {
        std::vector<double> expected = stableOrder(x.size(), [&](size_t a, size_t b) {
            if (std::isnan(x[b])) return !std::isnan(x[a]);
            if (std::isnan(x[a])) return false;
            return descending ? x[a] > x[b] : x[a] < x[b];
        });
        VectorPtr got = wx(descending ? "SortIdx(x)" : "SortIdx2(x)");
        ASSERT_TRUE(got);
        EXPECT_EQ(test::reals(got), expected) << descending;
    }

    std::vector<StrElem> s;
    for (int i = 0; i < 5000; ++i) {
        std::string t;
        for (int k = static_cast<int>(random() % 12); k > 0; --k) t += "aAbB_\xe9"[random() % 6];
        s.emplace_back(t);
    }
    wx.set("s", makeStringVector(s));
    for (bool descending : {false, true}) {
        std::vector<double> expected = stableOrder(s.size(), [&](size_t a, size_t b) {
            int c = stricmp(*s[a], *s[b]);
            return descending ? c > 0 : c < 0;
        });
        VectorPtr got = wx(descending ? "SortIdx(s, 'reverse')" : "SortIdx2(s)");
        ASSERT_TRUE(got);
        EXPECT_EQ(test::reals(got), expected) << descending;
    }

    // Search through the index finds every first occurrence, and nothing that is not there.
    VectorPtr found = wx("Search(s, [s, 'none'])");
    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), s.size() + 1);
    for (size_t i = 0; i < s.size(); ++i) {
        auto first = static_cast<size_t>(found->real[i]);
        ASSERT_LE(first, i);
        EXPECT_TRUE(iequals(*s[first], *s[i]));
        for (size_t k = 0; k < first; ++k) ASSERT_FALSE(iequals(*s[k], *s[i]));
    }
    EXPECT_EQ(found->real[s.size()], -1);
}

}  // namespace
}  // namespace wavex

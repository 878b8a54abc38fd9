#include "support/text.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

struct HashTables : ::testing::Test {
    Session wx;
    // Runs one command line (so "PostCli" follows) and returns its printed values as text.
    std::vector<std::string> line(const std::string& text) {
        std::vector<std::string> out;
        wx.sink->clear();
        wx.wx.runLine(text, [&](const VectorPtr& v, std::string_view) {
            for (const std::string& s : v->type == VD_STRING ? strings(v) : std::vector<std::string>{})
                out.push_back(s);
            if (v->type == VD_REAL)
                for (double d : reals(v)) out.push_back(std::to_string(static_cast<long long>(d)));
        });
        return out;
    }
    double number(const std::string& expression) { return wx(expression)->real[0]; }
};

TEST_F(HashTables, HandlesAreNeverReused) {
    double first = number("HashCreate()");
    wx.set("h", makeScalar(first));
    EXPECT_EQ(number("HashCreate()"), first + 1);
    EXPECT_EQ(number("HashDelete(h)"), 1);
    EXPECT_EQ(number("HashDelete(h)"), 0);  // deleted: unknown from now on
    EXPECT_EQ(number("HashAdd(h, ['a'], ['b'])"), 0);
    EXPECT_EQ(number("HashCreate()"), first + 2);  // takes the freed slot, under a new handle
    EXPECT_EQ(number("HashAdd(h, ['a'], ['b'])"), 0);
    EXPECT_EQ(number("HashDelete(123456)"), 0);
    EXPECT_EQ(wx("HashSearch(123456, ['a'])")->size(), 0u);
    EXPECT_EQ(wx("HashKeys(123456)")->size(), 0u);
    EXPECT_EQ(number("HashRemove(123456, ['a'])"), 0);
}

TEST_F(HashTables, OrdinaryTablesKeepOneValuePerKey) {
    wx.set("h", makeScalar(number("HashCreate(['unknown word'])")));
    EXPECT_EQ(number("HashAdd(h, ['Name', 'NAME', 'x', 'extra'], ['1', '2', '3'])"), 1);  // three pairs
    EXPECT_EQ(strings(wx("HashSearch(h, ['name'])")), std::vector<std::string>{"2"});
    EXPECT_EQ(wx("HashSearch(h, ['missing'])")->size(), 0u);
    EXPECT_EQ(strings(wx("HashSearch(h, ['x', 'missing'], ['d'])")), (std::vector<std::string>{"3", "d"}));
    EXPECT_EQ(strings(wx("HashSearch(h, ['x', 'missing'])")), (std::vector<std::string>{"3", ""}));
    EXPECT_EQ(wx("HashKeys(h)")->size(), 2u);
    EXPECT_EQ(number("HashAdd(h, [], [])"), 0);
    EXPECT_EQ(number("HashRemove(h, ['NAME', 'missing'])"), 1);
    EXPECT_EQ(strings(wx("HashKeys(h)")), std::vector<std::string>{"x"});
}

TEST_F(HashTables, MultipleTablesKeepEveryPairInTheOrderAdded) {
    wx.set("m", makeScalar(number("HashCreate(['Multiple'])")));
    number("HashAdd(m, ['a', 'b', 'A', 'a'], ['x', 'q', 'y', 'x'])");
    EXPECT_EQ(strings(wx("HashSearch(m, ['a', 'b'], ['ignored'])")), (std::vector<std::string>{"x", "y", "x"}));
    EXPECT_EQ(wx("HashSearch(m, ['none'])")->size(), 0u);
    std::vector<std::string> keys = strings(wx("HashKeys(m)"));
    EXPECT_EQ(keys.size(), 4u);
    EXPECT_EQ(std::count_if(keys.begin(), keys.end(), [](const std::string& k) { return iequals(k, "a"); }), 3);
    EXPECT_EQ(number("HashRemove(m, ['A'])"), 3);
    EXPECT_EQ(strings(wx("HashKeys(m)")), std::vector<std::string>{"b"});
    wx.set("am", makeScalar(number("HashCreate(['allowmultiple'])")));
    number("HashAdd(am, ['k', 'k'], ['1', '2'])");
    EXPECT_EQ(strings(wx("HashSearch(am, ['k'])")), (std::vector<std::string>{"1", "2"}));
}

TEST_F(HashTables, TemporaryTablesEndWithTheirCommandLine) {
    EXPECT_EQ(line("t = HashCreate(['Temporary']); HashAdd(t, ['a'], ['b'])"), std::vector<std::string>{"1"});
    EXPECT_EQ(line("HashAdd(t, ['a'], ['b'])"), std::vector<std::string>{"0"});
    EXPECT_EQ(line("p = HashCreate(); HashAdd(p, ['k'], ['v'])"), std::vector<std::string>{"1"});
    EXPECT_EQ(line("HashSearch(p, ['k'])"), std::vector<std::string>{"v"});  // ordinary tables stay
    raiseEvent("Exit");                                                      // until the host leaves
    EXPECT_EQ(line("HashSearch(p, ['k'])"), std::vector<std::string>{});
}

}  // namespace
}  // namespace wavex

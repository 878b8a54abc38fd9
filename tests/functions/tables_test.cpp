// Runs and tables of text data: picked runs, merged differences, columns, conditions, filters and
// netlist lines.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <fstream>

namespace wavex {
namespace {

using test::show;

class Tables : public ::testing::Test {
protected:
    test::Session wx;
    test::ScratchDir scratch;
    void SetUp() override {
        wx.set("t", wx("ReadFile('" + scratch.write("t.csv", "name,gain,corner\na,25,ss\nb,10,tt\n\"c,d\",30,SS\ne,x,ss\n") + "')"));
        wx.set("v", test::runs({test::curve({0, 1}, {1, 2}), test::curve({0, 1, 2}, {3, 4, 5}), test::curve({0}, {6})},
                               {"r=1", "r=2", "r=3"}));
    }
};

TEST_F(Tables, CopyDivisionDataPicksRunsInOrder) {
    VectorPtr r = wx("CopyDivisionData(v, [2, 0, 0])");
    ASSERT_TRUE(r) << wx.messages();
    EXPECT_EQ(show(r), "[6, 1, 2, 1, 2]");
    EXPECT_EQ(test::xs(r), (std::vector<double>{0, 0, 1, 0, 1}));
    EXPECT_EQ(r->numDivisions(), 3u);
    EXPECT_EQ(r->label(0).value_or(""), "r=3");
    r = wx("CopyDivisionData(v, 'R=2')");
    ASSERT_TRUE(r);
    EXPECT_EQ(show(r), "[3, 4, 5]");
    EXPECT_EQ(r->label(0).value_or(""), "r=2");
    wx.expectFails("CopyDivisionData(v, 3)",
                   "Run 3 is out of range in function 'CopyDivisionData': argument 1 has 3 runs (0 to 2)");
    wx.expectFails("CopyDivisionData(v, 0.5)",
                   "Run 0.5 is out of range in function 'CopyDivisionData': argument 1 has 3 runs (0 to 2)");
    wx.expectFails("CopyDivisionData(v, 'r=9')", "No run of argument 1 of function 'CopyDivisionData' is labelled 'r=9'");
}

TEST_F(Tables, DiffMergeVecsMatchesNumpyOnTwoTransients) {
    const std::string dir = std::string(WAVEX_SOURCE_DIR) + "/tests/data/runs/";
    auto curveOf = [&](const char* file, const char* column) {
        return "XY(QueryData(ReadFile('" + dir + file + "'), '" + column + "'), QueryData(ReadFile('" + dir + file +
               "'), 'time'))";
    };
    VectorPtr got = wx("DiffMergeVecs(" + curveOf("rc_20u.csv", "out") + ", " + curveOf("rc_7u.csv", "out") + ")");
    VectorPtr want = wx(curveOf("diff_expected.csv", "diff"));
    ASSERT_TRUE(got && want) << wx.messages();
    ASSERT_EQ(got->size(), want->size());
    for (size_t i = 0; i < got->size(); ++i) {
        EXPECT_DOUBLE_EQ(got->ref.real()[i], want->ref.real()[i]) << i;
        EXPECT_NEAR(got->real[i], want->real[i], 1e-12) << i;
    }
    wx.check({{"DiffMergeVecs(XY([0, 1, 4], [0, 1, 2]), XY([0, 0, 0], [1, 1.5, 3]), 2)", "[1, 2.25, 4]"},
              {"DiffMergeVecs(XY([1, 2], [0, 1]), XY([1, 2], [5, 6]))", "[]"}});
    EXPECT_EQ(show(wx("DiffMergeVecs(v, v * 0)")), "[1, 2, 3, 4, 5, 6]");  // run by run
    wx.expectFails("DiffMergeVecs(v, v, 0)", "The order of function 'DiffMergeVecs' must be from 1 to 16, not 0");
    wx.expectFails("DiffMergeVecs([1, 2], v)", "Argument 1 in function 'DiffMergeVecs' has no reference (xvalues)");
}

TEST_F(Tables, SelectAndQuery) {
    wx.check({
        {"SelectRows(t, \"gain > 20 && corner == 'ss'\")", "['name,gain,corner', 'a,25,ss', '\"c,d\",30,SS']"},
        {"SelectRows(t, 'gain > 100')", "['name,gain,corner']"},
        {"SelectRows(t, '')", "['name,gain,corner', 'a,25,ss', 'b,10,tt', '\"c,d\",30,SS', 'e,x,ss']"},
        {"SelectColumns(t, ['corner', 'NAME'])", "['corner,name', 'ss,a', 'tt,b', 'SS,\"c,d\"', 'ss,e']"},
        {"SelectColumns(t, 1)", "['gain', '25', '10', '30', 'x']"},
        {"QueryData(t, 'gain', 'gain >= 25')", "[25, 30]"},
        {"QueryData(t, 'gain', \"corner == 'ss'\")", "['25', '30', 'x']"},
        {"QueryData(t, 'name', 'gain < 30')", "['a', 'b']"},
        {"QueryData(['a;b', '1;2', '3;4'], 'b', 'a > 2')", "[4]"},
        {"QueryData(['a  b', ' 1  \"2 3\"'], 'b')", "['2 3']"},
    });
}

TEST_F(Tables, BadTablesAndConditions) {
    const std::pair<const char*, const char*> cases[] = {
        {"SelectRows(['a,b', '1,2', '3'], 'a')",
         "Row 2 of the table has 1 cells, the header has 2 in function 'SelectRows'"},
        {"SelectRows(['', ' '], 'a')", "The table has no header line in function 'SelectRows'"},
        {"SelectColumns(t, 'volts')", "The table has no column 'volts' in function 'SelectColumns'"},
        {"QueryData(t, 'x')", "The table has no column 'x' in function 'QueryData'"},
        {"QueryData(['a,b', '1,2'], 'b', '', ';')", "The table has no column 'b' in function 'QueryData'"},
        {"SelectRows(t, 'gain', '|')", "Unknown delimiter '|' in function 'SelectRows': use ',', ';', 'tab' or 'blank'"},
        {"SelectRows(t, 'name')", "The condition 'name' of function 'SelectRows' gives strings, not real numbers"},
        {"SelectRows(t, '[1, 2]')", "The condition '[1, 2]' of function 'SelectRows' gives 2 values for 4 rows"},
        {"SelectRows(t, 'nosuch > 1')", "Unknown vector 'nosuch'\nThe condition 'nosuch > 1' of function 'SelectRows' failed"},
    };
    for (const auto& [expression, message] : cases) wx.expectFails(expression, message);
    wx.expectFails("SelectRows(t, 'gain >')",
                   "The condition 'gain >' of function 'SelectRows' does not parse: syntax error: expected a value at the "
                   "end of the line\n  gain >\n        ^");
}

TEST_F(Tables, FilterFileWritesMatchingLines) {
    const std::string in = scratch.write("in.txt", "R1 a b 1k\nc1 b 0 1u\nR2 b 0 2k\n");
    const std::string out = scratch.path() + "out.txt";
    auto written = [&] {
        std::ifstream f(out);
        return std::string(std::istreambuf_iterator<char>(f), {});
    };
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"'^R'", "[2]", "R1 a b 1k\nR2 b 0 2k\n"},
        {"'^r', ['ignorecase', 'invert']", "[1]", "c1 b 0 1u\n"},
        {"'k$', 'count'", "[2]", "c1 b 0 1u\n"},  // counted only: the last file stays
    };
    for (const auto& [rest, count, text] : cases) {
        EXPECT_EQ(show(wx("FilterFile('" + in + "', '" + out + "', " + rest + ")")), count) << rest << wx.messages();
        EXPECT_EQ(written(), text) << rest;
    }
    wx.expectFails(("FilterFile('" + in + "', '" + out + "', '(')").c_str(),
                   "Bad pattern in function 'FilterFile': missing closing parenthesis at offset 1");
    wx.expectFails(("FilterFile('" + in + "', '" + out + "', 'a', 'fast')").c_str(),
                   "Unknown option 'fast' in function 'FilterFile': use 'invert', 'ignorecase' or 'count'");
    wx.expectFails(("FilterFile('" + in + "', '/nonexistent/dir/x', 'a')").c_str(),
                   "Cannot write file '/nonexistent/dir/x'");
    EXPECT_EQ(written(), "c1 b 0 1u\n");
}

TEST(SpiceLines, ElementLinesBecomeParameterStrings) {
    test::Session wx;
    wx.check({
        {"ParseSpiceLines(['R1 a b 1k tc = 0.01', 'q3 c b e npn area=2', 'X1 in out amp gain=10', '* note', '.tran 1n', "
         "'+ w=1', 'V1 in 0 DC 5 AC 1 ; src', 'K1 L1 L2 0.9', 'A1 x'])",
         "['inst=R1 kind=R nodes=\"a b\" value=1k tc=0.01', 'inst=q3 kind=Q nodes=\"c b e\" model=npn area=2', "
         "'inst=X1 kind=X nodes=\"in out\" model=amp gain=10', '', '', '', "
         "'inst=V1 kind=V nodes=\"in 0\" value=\"DC 5 AC 1\"', 'inst=K1 kind=K value=\"L1 L2 0.9\"', '']"},
        {"ParseParameterString2(ParseSpiceLines('M1 d g s b nch w=2u'), ['nodes', 'model', 'w'], 'read', '', 'allowquoted')",
         "['d g s b', 'nch', '2u']"},
    });
}

}  // namespace
}  // namespace wavex

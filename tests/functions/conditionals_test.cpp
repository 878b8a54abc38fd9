#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;
using test::xs;

TEST(Conditionals, FieldsAndFloor) {
    Session wx;
    wx.check({
        {"Field(240, 7, 4)", "[15]"},
        {"Field(240, 4, 7)", "[15]"},
        {"Field(-1, 31, 0)", "[4294967295]"},
        {"Field(5.9, 0, 0)", "[1]"},
        {"Field(4294967296 + 6, 2, 1)", "[3]"},  // only the low 32 bits count
        {"Field(1, 40, 32)", "[1]"},             // bit indices modulo 32
        {"Field(NaN, 3, 0)", "[0]"},
        {"FieldV([240, 240, 255], [7, 4, 3], [4, 7, 0])", "[15, -1, 15]"},
        {"FieldV([240, 3], [7], [4])", "[15]"},  // as long as the shortest
        {"Floor(-2.5)", "[-3]"},
        {"Floor([7.9, 1])", "[7]"},
    });
    wx.wx.setVector("x", makeCurve({0, 1}, {240, 15}, units::Voltage, units::Time));
    VectorPtr f = wx("FieldV(x, [3, 3], [0, 0])");
    EXPECT_EQ(reals(f), (std::vector<double>{0, 15}));
    EXPECT_EQ(xs(f), (std::vector<double>{0, 1}));
}

TEST(Conditionals, IffSelects) {
    Session wx;
    wx.wx.setVector("z", makeComplexVector({{1, 2}}));
    wx.wx.setVector("a", makeCurve({0, 1, 2}, {1, 2, 3}, units::Voltage, units::Time));
    wx.wx.setVector("b", makeRealVector({10, 20, 30}));
    EXPECT_EQ(reals(wx("Iff(NaN, 1, 2)")), std::vector<double>{1});
    EXPECT_EQ(reals(wx("Iff(0, [1, 5], [2, 6])")), std::vector<double>{2});
    EXPECT_EQ(strings(wx("Iff(-1, 'yes', 'no')")), std::vector<std::string>{"yes"});
    EXPECT_EQ(wx("Iff(1, z, z)")->cplx[0], Complex(1, 2));
    EXPECT_EQ(wx("Iff(1, 'a', 2)"), nullptr);
    EXPECT_EQ(wx.messages(), "Arguments 2 and 3 must be of the same type in function 'Iff'");

    VectorPtr v = wx("IffV([1, 0, NaN], a, b)");
    EXPECT_EQ(reals(v), (std::vector<double>{1, 20, 3}));
    EXPECT_EQ(xs(v), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(v->phys, units::Voltage);
    EXPECT_EQ(reals(wx("IffV(0, a, b)")), (std::vector<double>{10, 20, 30}));
    EXPECT_EQ(strings(wx("IffV([0, 1], ['a', 'b'], ['c', 'd'])")), (std::vector<std::string>{"c", "b"}));
    EXPECT_EQ(wx("IffV([1, 0], a, b)"), nullptr);
    EXPECT_EQ(wx.messages(), "Argument vectors must be of the same length in function 'IffV'");
    EXPECT_EQ(wx("IffV([1, 0], [1, 2], ['a'])"), nullptr);
    EXPECT_EQ(wx.messages(),
              "Argument vectors must be of the same length in function 'IffV'\n"
              "Arguments 2 and 3 must be of the same type in function 'IffV'");
}

TEST(Conditionals, ElementWiseExtremes) {
    Session wx;
    wx.wx.setVector("v1", makeRealVector({1, 5, NAN, 2}, units::Voltage));
    wx.wx.setVector("v2", makeRealVector({3, 2, 9, NAN}, units::Voltage));
    wx.wx.setVector("i", makeRealVector({0, 0, 0, 7}, units::Current));
    // NaN in the first argument stays; NaN in a later one never replaces.
    wx.check({{"MaxN(v1, v2)", "[3, 5, nan, 2]"}, {"MinN(v2, v1)", "[1, 2, 9, nan]"}});
    EXPECT_EQ(wx("MaxN(v1, v2)")->phys, units::Voltage);
    // Longer than the blocks the work is done in: every element still sees every argument.
    std::vector<double> a(5000), b(5000), c(5000);
    for (size_t k = 0; k < a.size(); ++k) a[k] = k % 3, b[k] = k % 5, c[k] = k % 7;
    wx.wx.setVector("a", makeRealVector(a)), wx.wx.setVector("b", makeRealVector(b));
    wx.wx.setVector("c", makeRealVector(c));
    std::vector<double> top = reals(wx("MaxN(a, b, c)")), bottom = reals(wx("MinN(a, b, c)"));
    ASSERT_EQ(top.size(), a.size());
    ASSERT_EQ(bottom.size(), a.size());
    for (size_t k = 0; k < a.size(); ++k) {
        EXPECT_EQ(top[k], std::max({a[k], b[k], c[k]})) << k;
        EXPECT_EQ(bottom[k], std::min({a[k], b[k], c[k]})) << k;
    }
    VectorPtr mixed = wx("MaxN(v1, i)");
    EXPECT_EQ(mixed->phys, units::Unknown);
    EXPECT_EQ(mixed->ref.phys, units::NoRef);
    VectorPtr none = wx("MaxN([1, 2], [1, 2, 3])");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->size(), 0u);
    EXPECT_EQ(wx.messages(), "");
    std::string many = "MaxN(1";
    for (int i = 0; i < 32; ++i) many += ", 1";
    EXPECT_EQ(wx(many + ")"), nullptr);
    EXPECT_EQ(wx.messages(), "Function 'MaxN' takes 1 to 32 arguments, not 33");
}

TEST(Conditionals, EvaluationHelpers) {
    Session wx;
    wx.wx.setVector("t", makeCurve({1, 2}, {4, 5}));
    EXPECT_EQ(strings(wx("ee('t[1]')")), std::vector<std::string>{"5"});
    EXPECT_EQ(strings(wx("ee('nosuch', 'fallback')")), std::vector<std::string>{"fallback"});
    EXPECT_EQ(strings(wx("ee('nosuch')")), std::vector<std::string>{"{nosuch}"});
    VectorPtr last = wx("ev(1, 'two', t)");
    EXPECT_EQ(last, wx.wx.findVector("t"));  // shared, with its x-values
    EXPECT_EQ(strings(wx("ev(1, 'two')")), std::vector<std::string>{"two"});
}

}  // namespace
}  // namespace wavex

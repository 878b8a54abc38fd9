// Laplace expressions and initial-condition files as scripts use them.
#include "support/spice_stream.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::strings;

std::string fixture(const std::string& name) { return std::string(WAVEX_SOURCE_DIR) + "/tests/data/init/" + name; }

TEST(ParseLaplace, Layout) {
    Session wx;
    wx.check({
        {"ParseLaplace('(1+s)^2/(2+s)')", "[0, 2, 1, 1, 2, 1, 2, 1]"},  // code, orders, numerator, denominator
        {"ParseLaplace('3')", "[0, 0, 0, 3, 1]"},
        {"ParseLaplace('2s')", "[6]"},  // a failure gives its code alone
    });
}

// Orders of 49 and more do not fit the first 50 coefficients: the call is repeated with room
// for 100, 150 … and the result is whole.
TEST(ParseLaplace, GrowsItsCapacity) {
    Session wx;
    for (int order : {48, 49, 99, 149, 400}) {
        SCOPED_TRACE(order);
        VectorPtr v = wx("ParseLaplace('s^" + std::to_string(order) + "/(1+s)^" + std::to_string(order / 2) + "')");
        ASSERT_TRUE(v);
        const int d = order / 2;
        ASSERT_EQ(v->size(), static_cast<size_t>(order + d + 5));
        EXPECT_EQ(v->real[1], order);
        EXPECT_EQ(v->real[2], d);
        EXPECT_EQ(v->real[3 + order], 1);       // the numerator is s^order
        EXPECT_EQ(v->real[3 + order - 1], 0);
        EXPECT_EQ(v->real[4 + order], 1);        // (1+s)^d: 1, d, …, d, 1
        EXPECT_EQ(v->real[5 + order], d);
        EXPECT_EQ(v->real[v->size() - 1], 1);
    }
}

TEST(GetLaplaceErrorMessage, Texts) {
    Session wx;
    wx.check({
        {"GetLaplaceErrorMessage(4.9)", "['Unbalanced parentheses in the Laplace expression']"},  // truncated
        {"GetLaplaceErrorMessage(0)", "['']"},
        {"GetLaplaceErrorMessage(-1)", "['']"},
        {"GetLaplaceErrorMessage(15)", "['']"},
        {"GetLaplaceErrorMessage(NaN)", "['']"},
    });
}

// CheckLaplaceExpression looks for Laplace_2.* in the devices folder that WAVEX_DEVICES names.
class CheckLaplace : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "wavex_devices_XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        devices_ = pattern;
        setenv("WAVEX_DEVICES", devices_.c_str(), 1);
    }
    void TearDown() override {
        unsetenv("WAVEX_DEVICES");
        std::filesystem::remove_all(devices_);
    }
    void install(const char* library, const std::string& name) {
        std::filesystem::copy_file(library, devices_ / name);
    }
    std::vector<double> check(const std::string& text) { return reals(wx("CheckLaplaceExpression('" + text + "')")); }

    std::filesystem::path devices_;
    Session wx;
};

TEST_F(CheckLaplace, WithoutPlugInOnlyZeroOrThree) {
    std::ofstream(devices_ / "Laplace_1.so") << "not a plug-in of this name";
    for (const char* good : {"1/(1+s*1u)", "s^1000"}) EXPECT_EQ(check(good), std::vector<double>{0}) << good;
    for (const char* bad : {"", "(s", "2s", "s^1001", "1e400"})
        EXPECT_EQ(check(bad), std::vector<double>{3}) << bad;
}

TEST_F(CheckLaplace, PlugInDecides) {
    install(WAVEX_LAPLACE_PLUGIN, "Laplace_2.so");
    EXPECT_EQ(check("1/(1+s)"), std::vector<double>{1007});  // 1000 + the length of the text
    EXPECT_EQ(check("1/(s"), std::vector<double>{1004});     // the parser is not asked
}

TEST_F(CheckLaplace, FirstPlugInByNameIsUsed) {
    install(WAVEX_LAPLACE_PLUGIN, "Laplace_2.b.so");
    install(WAVEX_LAPLACE_PLUGIN_BARE, "Laplace_2.a.so");
    wx.check({{"CheckLaplaceExpression('s')", "[]"}});  // the first lacks the entry point: no result
}

TEST_F(CheckLaplace, UnloadablePlugInGivesNoResult) {
    std::ofstream(devices_ / "Laplace_2.so") << "not a shared library";
    wx.check({{"CheckLaplaceExpression('s')", "[]"}});
}

// The reader under ParseBRENNICInit: logical lines and the number of their first physical line.
TEST(NewSpiceStream, LogicalLines) {
    NewSpiceStream in = NewSpiceStream::fromText("+ lone\n* c\na 1\n\n+ 2\n  * c\n  +3\r\nb\n+");
    std::vector<std::pair<int, std::string>> lines;
    std::string line;
    for (int number = 0; in.gets(&line, &number);) lines.emplace_back(number, line);
    EXPECT_EQ(lines, (std::vector<std::pair<int, std::string>>{{1, " lone"}, {3, "a 1  2 3"}, {8, "b "}}));
    EXPECT_FALSE(NewSpiceStream("/nonexistent/file.init").isOpen());
}

TEST(ParseBRENNICInit, Fixtures) {
    Session wx;
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"hierarchy.init",  // hierarchy prefixes and duplicates
         {"", "V(in)=0;V(out)=1.5;I(L1)=2.5m;V(vdd)=5;V(out2)=1;I(out)=2", "X1", "V(mid)=0.75;I(L2)=1e-3;V(out)=0.5",
          "x1.XU2", "V(n1)=-1"}},
        {"continuation.init", {"", "V(a)=1;V(b)=2;V(c)=3;V(d)=4;V(f)=6"}},  // continuations, comments, line ends
        {"broken.init", {"", "V(ok)=8;V(d)=11"}},                          // broken probes are skipped
    };
    for (const auto& [file, want] : cases)
        EXPECT_EQ(strings(wx("ParseBRENNICInit('" + fixture(file) + "')")), want) << file;
}

TEST(ParseBRENNICInit, UnreadableFileGivesNoResult) {
    Session wx;
    for (const std::string& file : {std::string("/nonexistent/run.init"), std::string(""), testing::TempDir()}) {
        SCOPED_TRACE(file);
        wx.check({{("ParseBRENNICInit('" + file + "')").c_str(), "[]"}});
    }
    std::string empty = testing::TempDir() + "wavex_empty.init";
    std::ofstream(empty) << "* nothing but a comment\n.IC V(a)=1\n";
    VectorPtr v = wx("ParseBRENNICInit('" + empty + "')");
    ASSERT_TRUE(v);
    EXPECT_EQ(v->type, VD_STRING);
    EXPECT_EQ(v->size(), 0u);
    std::remove(empty.c_str());
}

}  // namespace
}  // namespace wavex

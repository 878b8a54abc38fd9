#include "run_wavex.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include <stdlib.h>
#include <unistd.h>

namespace wavex {
namespace {

using test::Session;
using test::strings;

TEST(System, EnvironmentAndCommands) {
    Session wx;
    wx.check({
        {"SetEnv('WAVEX_TEST_VAR', 'a b')", "[1]"},
        {"GetEnv('WAVEX_TEST_VAR')", "['a b']"},
        {"Shell('echo $WAVEX_TEST_VAR; printf \"x\\n\\ny\"; exit 3')", "['3', 'a b', 'x', '', 'y']"},
    });
    std::vector<std::string> environment = strings(wx("_GetEnvironment()"));
    EXPECT_TRUE(std::binary_search(environment.begin(), environment.end(), "WAVEX_TEST_VAR=a b"));
    wx.check({
        {"SetEnv('WAVEX_TEST_VAR')", "[1]"},
        {"GetEnv('WAVEX_TEST_VAR', 'gone')", "['gone']"},
        {"Shell('kill -9 $$')", "['137']"},
    });
    EXPECT_EQ(getenv("WAVEX_TEST_VAR"), nullptr);
    wx.expectFails("SetEnv('A=B', 1)", "Function 'SetEnv': 'A=B' is not an environment variable name (empty, or holding '=')");
    wx.expectFails("GetEnv('')", "Function 'GetEnv': '' is not an environment variable name (empty, or holding '=')");
    wx.expectFails("Sleep(-1)", "Function 'Sleep' waits 0 to 86400 seconds, not -1");
}

TEST(System, HostFacts) {
    Session wx;
    wx.check({
        {("ProcessId() == " + std::to_string(getpid())).c_str(), "[1]"},
        {"[NumberOfProcessors() >= 1, PhysicalMemory() > 1meg, length(HostName()) > 0, length(UserName()) > 0]",
         "[1, 1, 1, 1]"},
        {"Version()", "['wavex 0.1.0']"},
        {"length(GetEthernetAddresses(1)) <= 1", "[1]"},
        {"Sleep(0.01)", "[0.01]"},
        // Unattended, the dialogs return their defaults at once (also when the tests run at a terminal).
        {"SetOption('DialogsAtTerminal', 0)", "['1']"},
        {"[InputBox('Name?', 'fallback'), InputBox('Name?')]", "['fallback', '']"},
        {"MessageBox('done', 'wavex')", "[1]"},
        {"SetOption('DialogsAtTerminal', 1)", "['0']"},
    });
    EXPECT_NEAR(wx("Now()")->real[0], static_cast<double>(time(nullptr)), 2);
    for (const std::string& a : strings(wx("GetEthernetAddresses()"))) EXPECT_EQ(a.size(), 17u) << a;
}

// At a terminal the dialogs show their text on it and read the answer; an empty answer is the
// default.
TEST(System, DialogsAtATerminal) {
    test::Outcome r = test::runOnTerminal(
        {"-e", "MessageBox('finished', 'run'); InputBox('Corner?', 'tt'); InputBox('Again?', 'ff')"}, "ss\n\n");
    EXPECT_EQ(r.status, 0) << r.out;
    EXPECT_NE(r.out.find("run: finished\r\nMessageBox('finished', 'run') = 1\r\nCorner? [tt] ss\r\nAgain? [ff] ff\r\n"), std::string::npos) << r.out;
}

TEST(System, Diagnostics) {
    Session wx;
    std::vector<std::string> entries = strings(wx("_ListDynamicFunctions()"));
    EXPECT_NE(std::find(entries.begin(), entries.end(), "dyn_GetScpInterface bound"), entries.end());
    double stack = wx("_GetAvailableStack()")->real[0];
    EXPECT_GT(stack, 4096);
    EXPECT_LT(stack, 1 << 30);
    // The fault is reported as the statement's failure and the process carries on.
    wx.expectFails("1 + _TestAccessViolation()", "*** FATAL ERROR *** Access violation in function '_TestAccessViolation'");
    wx.check({{"1 + 1", "[2]"}});
}

}  // namespace
}  // namespace wavex

#include "run_wavex.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <stdlib.h>

namespace wavex {
namespace {

using test::ScratchDir;
using test::Session;

TEST(Settings, IniFilesKeepTheirComments) {
    ScratchDir dir;
    std::string file = dir.write("run.ini", "; written by hand\n[Sim]\nsteps = 10 \n\n[Plot]\n# colour of v(out)\ncolour=red\n");
    Session wx;
    auto on = [&](const std::string& call) { return call.substr(0, call.find('(') + 1) + "'" + file + "', " + call.substr(call.find('(') + 1); };
    wx.check({
        {on("IniRead('sim', 'STEPS')").c_str(), "['10']"},
        {on("IniRead('Sim', 'missing', 'fallback')").c_str(), "['fallback']"},
        {on("IniWrite('plot', 'colour', 'blue')").c_str(), "[1]"},
        {on("IniWrite('Sim', 'stop', 2e-3)").c_str(), "[1]"},
        {on("IniWrite('Sim', 'steps')").c_str(), "[1]"},
        {on("IniWrite('Sim', 'steps')").c_str(), "[0]"},
        {on("IniWrite('New', 'k', 'v')").c_str(), "[1]"},
        {("IniSections('" + file + "')").c_str(), "['Sim', 'Plot', 'New']"},
        {on("IniKeys('sim')").c_str(), "['stop']"},
        {("IniSections('" + dir.path() + "absent.ini')").c_str(), "[]"},
    });
    EXPECT_EQ(test::readFile(file), "; written by hand\n[Sim]\nstop = 0.002\n\n[Plot]\n# colour of v(out)\ncolour=blue\n\n[New]\nk = v\n");

    dir.write("bad.ini", "[a]\nx=1\n[a]\n");
    wx.expectFails(("IniRead('" + dir.path() + "bad.ini', 'a', 'x')").c_str(),
                   "'" + dir.path() + "bad.ini' line 3: section [a] appears twice (first on line 1)");
    wx.expectFails(on("IniWrite('Sim', 'a=b', 1)").c_str(),
                   "Cannot write to '" + file + "': key 'a=b' cannot be written before '='");
}

TEST(Settings, PerUserFileAndHostOptions) {
    ScratchDir dir;
    const char* saved = getenv("XDG_CONFIG_HOME");
    std::string before = saved ? saved : "";
    setenv("XDG_CONFIG_HOME", dir.path().c_str(), 1);
    Session wx;
    wx.check({
        {"GetSetting('Plot/colour', 'red')", "['red']"},
        {"SetSetting('Plot/colour', 'blue')", "[1]"},
        {"SetSetting('Plot\\grid', 1)", "[1]"},
        {"SetSetting('top', 'x')", "[1]"},
        {"[GetSetting('plot/COLOUR'), GetSetting('top'), GetSetting('Plot/none')]", "['blue', 'x', '']"},
        {"DeleteSetting('Plot/colour')", "[1]"},
        {"DeleteSetting('Plot/colour')", "[0]"},
    });
    EXPECT_EQ(test::readFile(dir.path() + "wavex/settings.ini"), "top = x\n[Plot]\ngrid = 1\n");
    wx.expectFails("GetSetting('Plot/')", "Function 'GetSetting' needs a setting name, not 'Plot/'");
    if (saved) setenv("XDG_CONFIG_HOME", before.c_str(), 1);
    else unsetenv("XDG_CONFIG_HOME");

    wx.check({
        {"SetOption('interppts', 4096)", "['1024']"},
        {"GetOption('InterpPts')", "['4096']"},
        {"SetOption('InterpPts', 1024)", "['4096']"},
    });
    EXPECT_EQ(test::strings(wx("ListOptions()"))[0].find("DerivAcceptFactor="), 0u);
    wx.expectFails("GetOption('NoSuch')", "Unknown option 'NoSuch'");
    wx.expectFails("SetOption('InterpPts', 1.5)", "Option 'InterpPts' needs an integer, not '1.5'");
}

}  // namespace
}  // namespace wavex

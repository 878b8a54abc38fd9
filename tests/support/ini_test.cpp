#include "support/ini.hpp"
#include "support/paths.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

IniFile parsed(std::string_view text) {
    std::string error;
    std::optional<IniFile> ini = IniFile::parse(text, &error);
    EXPECT_TRUE(ini) << error;
    return ini ? *ini : *IniFile::parse("", &error);
}

// Comments, blank lines, spacing, case and line ends stay; only the lines that change do.
TEST(Ini, RewriteKeepsTheLayout) {
    IniFile ini = parsed("top=1\r\n; about the plot\r\n[Plot]\r\n  Colour =  red  \r\n\r\n# end\r\n[Run]\r\nempty=\r\n");
    EXPECT_EQ(ini.sections(), (std::vector<std::string>{"", "Plot", "Run"}));
    EXPECT_EQ(ini.value("plot", "COLOUR"), "red");
    EXPECT_EQ(ini.value("", "top"), "1");
    EXPECT_EQ(ini.value("Run", "empty"), "");
    EXPECT_EQ(ini.value("Plot", "top"), std::nullopt);

    ini.set("plot", "colour", "dark blue");
    ini.set("Plot", "width", "2");
    ini.set("Run", "empty", "x");
    ini.set("", "second", "2");
    ini.set("New", "k", "v");
    EXPECT_TRUE(ini.remove("", "top"));
    EXPECT_FALSE(ini.remove("Nowhere", "top"));
    EXPECT_EQ(ini.text(), "second = 2\r\n; about the plot\r\n[Plot]\r\n  Colour =  dark blue  \r\nwidth = 2\r\n\r\n"
                          "# end\r\n[Run]\r\nempty= x\r\n\r\n[New]\r\nk = v\r\n");
    EXPECT_EQ(ini.keys("plot"), (std::vector<std::string>{"Colour", "width"}));
    EXPECT_EQ(ini.keys("absent"), std::nullopt);

    IniFile fresh = parsed("");
    fresh.set("", "a", "1");
    fresh.set("S", "b", "2");
    EXPECT_EQ(fresh.text(), "a = 1\n\n[S]\nb = 2\n");
}

TEST(Ini, MalformedFilesAndEntriesAreNamed) {
    struct Case { const char* text; const char* error; };
    const Case cases[] = {
        {"[a]\nx=1\n[b]\n[A]\n", "line 4: section [A] appears twice (first on line 1)"},
        {"[a]\nx=1\nX = 2\n", "line 3: key 'X' appears twice in section [a] (first on line 2)"},
        {"x=1\njust words\n", "line 2: 'just words' is not key = value, a [section] or a comment"},
        {"[open\n", "line 1: a section header needs its closing ']'"},
        {"[ ]\n", "line 1: a section needs a name"},
        {" = 3\n", "line 1: an entry needs a key before '='"},
    };
    for (const Case& c : cases) {
        std::string error;
        EXPECT_FALSE(IniFile::parse(c.text, &error)) << c.text;
        EXPECT_EQ(error, c.error);
    }
    EXPECT_EQ(IniFile::checkEntry("s", "k=1", "v"), "key 'k=1' cannot be written before '='");
    EXPECT_EQ(IniFile::checkEntry("a]b", "k", "v"), "section 'a]b' cannot be written as [a]b]");
    EXPECT_EQ(IniFile::checkEntry("s", "k", "two\nlines"), "an ini entry cannot span lines");
    EXPECT_EQ(IniFile::checkEntry("s", ";k", "v"), "key ';k' cannot be written before '='");
    EXPECT_EQ(IniFile::checkEntry("s", "k", " v"), "a value cannot begin or end with blanks");
    EXPECT_EQ(IniFile::checkEntry("s", "k", "v = w ; fine"), "");
}

TEST(Paths, TextOnly) {
    struct Case { std::string (*op)(std::string_view); const char* path; const char* expected; };
    const Case cases[] = {
        {pathParent, "a/b/c", "a/b"},        {pathParent, "a/b/", "a"},
        {pathParent, "a", ""},               {pathParent, "/a", "/"},
        {pathParent, "/", "/"},              {pathParent, "a//b", "a"},
        {pathFileName, "a/b.txt", "b.txt"},  {pathFileName, "a/b/", "b"},
        {pathFileName, "/", ""},             {pathFileName, "", ""},
        {pathExtension, "d/b.tar.gz", ".gz"}, {pathExtension, ".profile", ""},
        {pathExtension, "a.", ""},           {pathExtension, "a.b/c", ""},
        {pathStem, "d/b.tar.gz", "b.tar"},   {pathStem, ".profile", ".profile"},
        {pathNormalize, "a/./b/../c/", "a/c"}, {pathNormalize, "../../a/..", "../.."},
        {pathNormalize, "/../a//b", "/a/b"}, {pathNormalize, "a/..", "."},
        {pathNormalize, "", ""},             {pathNormalize, "//", "/"},
    };
    for (const Case& c : cases) EXPECT_EQ(c.op(c.path), c.expected) << c.path;

    EXPECT_EQ(pathJoin("a/", "b"), "a/b");
    EXPECT_EQ(pathJoin("a", "/b"), "/b");
    EXPECT_EQ(pathJoin("", "b"), "b");
    EXPECT_EQ(pathJoin("a", ""), "a");
    EXPECT_EQ(pathAbsolute("x/../y", "/home/u"), "/home/u/y");
    EXPECT_EQ(pathAbsolute("/x/./y", "/home/u"), "/x/y");
    EXPECT_EQ(pathRelative("/a/b/c", "/a/d"), "../b/c");
    EXPECT_EQ(pathRelative("/a", "/a/"), ".");
    EXPECT_EQ(pathRelative("/", "/a/b"), "../..");
    EXPECT_EQ(pathRelative("/A/b", "/a"), "../A/b");  // names differing in case are different names here
}

}  // namespace
}  // namespace wavex

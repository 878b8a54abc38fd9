// ReadFile and ReadSpiceFile: line ends, continuations, comments, and files that cannot be read.
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

namespace wavex {
namespace {

using test::strings;
using Lines = std::vector<std::string>;

class TextFiles : public ::testing::Test {
protected:
    test::Session wx;
    test::ScratchDir scratch;
    const std::string dir = scratch.path();

    // The lines `function` reads from a file holding `text`.
    Lines read(const char* function, const std::string& text) {
        const std::string path = dir + "f.txt";
        std::ofstream(path, std::ios::binary) << text;
        VectorPtr r = wx(std::string(function) + "('" + path + "')");
        EXPECT_TRUE(r && r->type == VD_STRING && !r->ref.present()) << wx.messages();
        EXPECT_EQ(wx.messages(), "");
        return r ? strings(r) : Lines{"<failed>"};
    }
};

TEST_F(TextFiles, ReadFileLines) {
    const std::pair<std::string, Lines> cases[] = {
        {"", {}},
        {"\n", {""}},
        {"a\nb\n", {"a", "b"}},
        {"a\nb", {"a", "b"}},
        {"a\r\n\r\nb\r\n", {"a", "", "b"}},
        {"a\rb\r\r\n", {"a\rb\r"}},  // only the CR before LF belongs to the line end
        {"* kept\n+ kept\n", {"* kept", "+ kept"}},
        {std::string("nul\0byte\n", 9), {std::string("nul\0byte", 8)}},
    };
    for (const auto& [text, lines] : cases) EXPECT_EQ(read("ReadFile", text), lines) << text;
}

TEST_F(TextFiles, ReadSpiceFileLogicalLines) {
    const std::pair<std::string, Lines> cases[] = {
        {"title\nR1 a b 1k\n", {"title", "R1 a b 1k"}},
        {"R1 a b\n+ 1k\r\n  + tc=0\nC1 b 0 1u ; note\n", {"R1 a b  1k  tc=0", "C1 b 0 1u ; note"}},
        {"X1 a\n* comment\n\n  * indented comment\n+ sub\n", {"X1 a  sub"}},  // comments keep the line open
        {"+ first\nV1 1 0\n", {" first", "V1 1 0"}},
        {"* only\n\n", {}},
    };
    for (const auto& [text, lines] : cases) EXPECT_EQ(read("ReadSpiceFile", text), lines) << text;
}

TEST_F(TextFiles, UnreadableFilesGiveAMessageAndNoLines) {
    const std::pair<std::string, std::string> cases[] = {
        {dir + "missing.cir", "Cannot open file '" + dir + "missing.cir'"},
        {dir, "Cannot read file '" + dir + "'"},  // a directory opens but does not read
    };
    for (const char* function : {"ReadFile", "ReadSpiceFile"}) {
        for (const auto& [path, message] : cases) {
            VectorPtr r = wx(std::string(function) + "('" + path + "')");
            ASSERT_TRUE(r) << function << " " << path;  // succeeds, like the other file readers
            EXPECT_EQ(r->type, VD_STRING);
            EXPECT_EQ(r->size(), 0u);
            EXPECT_EQ(wx.messages(), message) << function;
        }
    }
}

}  // namespace
}  // namespace wavex

// The README's examples: each `$ COMMAND` in its code blocks runs (in a scratch directory that sees
// the repository's examples/) and prints what the README shows after it. A shown line "..." stands
// for the lines that follow and are not shown; a command line ending in "\\" goes on in the next.
#include "run_wavex.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

namespace {

struct Example {
    std::string command, shown;
    int line, block;
};

std::vector<Example> readmeExamples() {
    std::istringstream readme(wavex::test::readFile(WAVEX_SOURCE_DIR "/README.md"));
    std::vector<Example> out;
    bool inFence = false, plain = false;
    int number = 0, block = 0;
    for (std::string line; std::getline(readme, line);) {
        ++number;
        if (line.starts_with("```")) {
            inFence = !inFence;
            plain = inFence && line == "```";
            block += inFence;
        } else if (plain && line.starts_with("$ ")) {
            out.push_back({line.substr(2), "", number, block});
        } else if (plain && !out.empty() && out.back().shown.empty() && out.back().command.ends_with("\\")) {
            out.back().command += "\n" + line;  // a command continued on the next line
        } else if (plain && !out.empty() && out.back().block == block) {
            out.back().shown += line + "\n";
        }
    }
    return out;
}

std::string run(const std::string& dir, const std::string& command) {
    std::string bin = std::filesystem::path(WAVEX_BINARY).parent_path();
    std::string shell = "cd '" + dir + "' && PATH='" + bin + "':\"$PATH\" && { " + command + "\n} 2>&1";
    FILE* pipe = popen(shell.c_str(), "r");
    std::string out;
    char buf[4096];
    for (size_t n; (n = fread(buf, 1, sizeof buf, pipe)) > 0;) out.append(buf, n);
    pclose(pipe);
    return out;
}

TEST(Readme, ExamplesPrintWhatTheyShow) {
    wavex::test::ScratchDir dir;
    std::filesystem::create_directory_symlink(WAVEX_SOURCE_DIR "/examples", dir.path() + "examples");
    std::vector<Example> examples = readmeExamples();
    EXPECT_GT(examples.size(), 10u);
    for (const Example& e : examples) {
        std::string printed = run(dir.path(), e.command);
        size_t more = e.shown.find("...\n");
        if (more != std::string::npos && (more == 0 || e.shown[more - 1] == '\n'))
            EXPECT_EQ(printed.substr(0, more), e.shown.substr(0, more)) << "README.md:" << e.line << ": " << e.command;
        else
            EXPECT_EQ(printed, e.shown) << "README.md:" << e.line << ": " << e.command;
    }
}

}  // namespace

// End-to-end runs of the wavex command.
#include <gtest/gtest.h>

#include "run_wavex.hpp"
#include "wavex/version.hpp"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using wavex::test::Outcome;
using wavex::test::readFile;

// Per process: ctest runs the tests of this file in parallel processes.
std::string tempPath(const std::string& name) {
    return testing::TempDir() + "wavex_cli_" + std::to_string(getpid()) + "_" + name;
}

// Removes the files the tests made when the process ends.
struct TempFiles {
    std::vector<std::string> paths;
    ~TempFiles() {
        for (const std::string& p : paths) std::remove(p.c_str());
    }
} gTempFiles;

std::string writeTemp(const std::string& name, const std::string& content) {
    std::string path = tempPath(name);
    gTempFiles.paths.push_back(path);
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

// Runs the built binary with `args`, feeding `input` on standard input (not a terminal).
Outcome wavex(const std::vector<std::string>& args, const std::string& input = "") {
    std::string in = writeTemp("stdin", input), out = tempPath("stdout"), err = tempPath("stderr");
    gTempFiles.paths.push_back(out);
    gTempFiles.paths.push_back(err);
    return wavex::test::runWavex(args, in, out, err);
}

const char* const kUsageHint = "Run with --help for more information.\n";

TEST(Cli, Statements) {
    Outcome r = wavex({"-e", "db([-1, 10, 1000])"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "0\n20\n60\n");
    EXPECT_EQ(r.err, "");

    // Several -e run in order and share the workspace; ';' separates statements of one line.
    r = wavex({"-e", "a = [1, 2]; b = [\"x\", 'y z']", "-e", "a", "-e", "b; [3]"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "1\n2\nx\ny z\n[3] = 3\n");

    r = wavex({"--json", "-e", "[1.5, -2e-3]", "-e", "a = 1; []; a"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, R"({"type":"real","phys":1,"unit":"","name":"","y":[1.5,-0.002],"x":null,"divisions":null,)"
                     R"("expr":"[1.5, -2e-3]","stmt":1})" "\n"
                     R"({"type":"real","phys":1,"unit":"","name":"","y":[],"x":null,"divisions":null,)"
                     R"("expr":"[]","stmt":2})" "\n"
                     R"({"type":"real","phys":1,"unit":"","name":"","y":[1],"x":null,"divisions":null,)"
                     R"("expr":"a","stmt":2})" "\n");

    // A statement that begins with a minus sign is still a statement.
    r = wavex({"-e", "-1", "-e", "[]"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "-1 = -1\n[]: empty\n");
}

// How a failure prints and what still runs; the interpreter's messages have their own tests.
TEST(Cli, FailuresStopTheRun) {
    struct Case {
        std::vector<std::string> args;
        const char* out;
        const char* err;
    };
    const Case cases[] = {
        {{"-e", "[1]", "-e", "[2,", "-e", "[3]"}, "[1] = 1\n",
         "error: syntax error: expected a value at the end of the line\n  [2,\n     ^\n"},
        {{"-e", "[1]; zz; [2]"}, "[1] = 1\n", "error: Unknown vector 'zz'\n"},
        {{"-e", "db(1, 2)", "-e", "[1]"}, "", "error: Function 'db' takes 1 argument, not 2\n"},
        {{"-e", "db"}, "", "error: Function 'db' needs its arguments in parentheses\n"},  // tested nowhere else
    };
    for (const Case& c : cases) {
        Outcome r = wavex(c.args);
        EXPECT_EQ(r.status, 1) << c.args[1];
        EXPECT_EQ(r.out, c.out) << c.args[1];
        EXPECT_EQ(r.err, c.err) << c.args[1];
    }
}

TEST(Cli, UsageErrors) {
    struct Case {
        std::vector<std::string> args;
        std::string err;
    };
    const Case cases[] = {
        {{"--bogus"}, "error: The following argument was not expected: --bogus\n"},
        {{"-e"}, "error: -e: 1 required STATEMENT missing\n"},
        {{"a.wx", "b.wx"}, "error: The following argument was not expected: b.wx\n"},
        {{"--option", "InterpPts"}, "error: --option needs NAME=VALUE, not 'InterpPts'\n"},
        {{"--option", "=3"}, "error: --option needs NAME=VALUE, not '=3'\n"},
        {{"--option", "NoSuchOption=1"}, "error: --option NoSuchOption=1: unknown option 'NoSuchOption'\n"},
        {{"--option", "InterpPts=many"},
         "error: --option InterpPts=many: option 'InterpPts' needs an integer, not 'many'\n"},
    };
    for (const Case& c : cases) {
        Outcome r = wavex(c.args);
        EXPECT_EQ(r.status, 2) << c.args[0];
        EXPECT_EQ(r.out, "") << c.args[0];
        EXPECT_EQ(r.err, c.err + kUsageHint) << c.args[0];
    }
    Outcome r = wavex({"--option", "interppts=16", "-o", "InterpOrder=3", "-e", "[1]"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "[1] = 1\n");

    r = wavex({"--version"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "wavex " WAVEX_VERSION "\n");
}

TEST(Cli, Data) {
    std::string csv = writeTemp("data.csv",
                                "time,out[V]\n# run: R=1k\n0,1\n1e-6,2\n\n# run: R=2k\n0,3\n1e-6,4.5e-3\n");
    Outcome r = wavex({"--data", csv, "-e", "out"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "# R=1k\ntime [s]  out [V]\n0         1\n1u        2\n\n"
              "# R=2k\ntime [s]  out [V]\n0         3\n1u        4.5m\n");

    // Names that are not identifiers are reached through Vec(); a later file's columns win.
    std::string other = writeTemp("other.csv", "freq,v(out)[V]\n1,0.5\n");
    r = wavex({"-d", csv, "--data", other, "-e", "Vec('v(out)')"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "freq [Hz]  v(out) [V]\n1          500m\n");

    // A value printed under headings is set apart from its neighbours by a blank line.
    r = wavex({"--data", csv, "-e", "[1]", "-e", "time", "-e", "[2]; [3]"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "[1] = 1\n\n"
              "# R=1k\n0 s\n1u s\n\n"
              "# R=2k\n0 s\n1u s\n\n"
              "[2] = 2\n[3] = 3\n");

    // A file that cannot be loaded stops the run before any statement.
    std::string bad = writeTemp("bad.csv", "time,out\n0,1\n1,x\n");
    r = wavex({"--data", bad, "-e", "[1]"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "error: " + bad + ":3: 'x' in column 'out' is not a number\n");
}

TEST(Cli, Scripts) {
    std::string script = writeTemp("s.wx",
                                   "# a comment line\n"
                                   "a = [1, 2]\r\n"
                                   "\n"
                                   "   a   # the values\n"
                                   "zz\n"
                                   "[3]\n");
    Outcome r = wavex({script});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "1\n2\n");
    EXPECT_EQ(r.err, "error: " + script + ":5: Unknown vector 'zz'\n");

    // -e runs before the script.
    std::string good = writeTemp("good.wx", "b\n");
    r = wavex({"-e", "b = ['s']", good});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "s\n");

    r = wavex({tempPath("missing.wx")});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "error: cannot read script '" + tempPath("missing.wx") + "': No such file or directory\n");

    // Without -e or a script, standard input (not a terminal) is read like a script.
    r = wavex({}, "[1]\n# skip\n[2, \n[3]\n");
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "[1] = 1\n");
    EXPECT_EQ(r.err, "error: stdin:3: syntax error: expected a value at the end of the line\n  [2, \n      ^\n");
    r = wavex({"-"}, "[4]");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "[4] = 4\n");
    r = wavex({}, "");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out + r.err, "");
}

// A number per run says which statement and run it belongs to.
TEST(Cli, LabelledValues) {
    std::string csv = writeTemp("runs.csv", "time,out[V]\n# run: R=1k\n0,1\n1e-6,2\n\n# run: R=2k\n0,3\n1e-6,4.5e-3\n");
    Outcome r = wavex({"--data", csv, "-e", "mean(out)", "-e", "vectors"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "mean(out) = 1.5 V   # R=1k\n"
              "mean(out) = 1.50225 V   # R=2k\n"
              "out: real [V], 4 elements in 2 runs (R=1k, R=2k), x: time [s] from 0 to 1u\n"
              "time: real [s], 4 elements in 2 runs (R=1k, R=2k)\n");
    r = wavex({"--json", "--data", csv, "-e", "[1]", "-e", "x = 2; mean(out)"});
    const std::string tail = R"j("divisions":[{"length":1,"label":"R=1k"},{"length":1,"label":"R=2k"}],)j"
                             R"j("expr":"mean(out)","stmt":2})j";
    EXPECT_NE(r.out.find(tail), std::string::npos) << r.out;
}

// help, functions and the names suggested for unknown ones.
TEST(Cli, Help) {
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string outStart, err;
    };
    const Case cases[] = {
        {{"-e", "help"}, 0, "A command line holds statements", ""},
        {{"-e", "HELP xfromy"}, 0, "### XFromY\n", ""},
        {{"-e", "functions XFrom*"}, 0, "XFromY", ""},
        {{"-e", "functions zzzz"}, 0, "No function matches 'zzzz'\n", ""},
        {{"-e", "help XfromY2"}, 1, "", "error: Unknown function 'XfromY2'; did you mean 'XFromY'?\n"},
        {{"-e", "XfromY2(1)"}, 1, "", "error: Unknown function 'XfromY2'; did you mean 'XFromY'?\n"},
        {{"-e", "abc = 1; abd + 1"}, 1, "", "error: Unknown vector 'abd'; did you mean 'abc'?\n"},
        {{"-e", "vectors"}, 0, "No vectors", ""},
        {{"-e", "vectors out"}, 1, "", "error: vectors takes no argument\n"},
    };
    for (const Case& c : cases) {
        Outcome r = wavex(c.args);
        EXPECT_EQ(r.status, c.status) << c.args[1];
        EXPECT_EQ(r.out.substr(0, c.outStart.size()), c.outStart) << c.args[1] << "\n" << r.out;
        EXPECT_EQ(r.err, c.err) << c.args[1];
    }
}

// A call that reports a message and succeeds warns; --strict fails it; a failure is an error.
TEST(Cli, Warnings) {
    const std::string missing = tempPath("missing.txt");
    const std::string warned = "length(ReadFile('" + missing + "'))";
    struct Case {
        std::vector<std::string> args;
        int status;
        std::string out, err;
    };
    const Case cases[] = {
        {{"-e", warned, "-e", "[1]"}, 0, warned + " = 0\n[1] = 1\n", "warning: Cannot open file '" + missing + "'\n"},
        {{"--strict", "-e", warned, "-e", "[1]"}, 1, "", "error: Cannot open file '" + missing + "'\n"},
        {{"-e", warned + " + db(1, 2)"}, 1, "",
         "warning: Cannot open file '" + missing + "'\nerror: Function 'db' takes 1 argument, not 2\n"},
    };
    for (const Case& c : cases) {
        Outcome r = wavex(c.args);
        EXPECT_EQ(r.status, c.status) << c.args[1];
        EXPECT_EQ(r.out, c.out) << c.args[1];
        EXPECT_EQ(r.err, c.err) << c.args[1];
    }
}

TEST(Cli, Example) {
    const std::string dir = std::string(WAVEX_SOURCE_DIR) + "/examples/";
    Outcome r = wavex({"--data", dir + "step.csv", "--data", dir + "ac.csv", dir + "filter.wx"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, readFile(dir + "filter.out"));
}

// The prompt, on a pseudo-terminal: values print, a failure does not end the session, "quit"
// leaves, and the lines are kept in ~/.wavex_history.
TEST(Cli, Prompt) {
    std::string home = tempPath("home");
    std::string mkdir = "mkdir -p '" + home + "'";
    ASSERT_EQ(std::system(mkdir.c_str()), 0);
    std::remove((home + "/.wavex_history").c_str());

    Outcome r = wavex::test::runOnTerminal({}, "q = [7, 8]\nnosuch(1)\nq\nquit\n", {{"HOME", home}});
    const std::string& screen = r.out;
    EXPECT_EQ(r.status, 0) << screen;
    EXPECT_NE(screen.find("error: Unknown function 'nosuch'"), std::string::npos) << screen;
    EXPECT_NE(screen.find("7\r\n8\r\n"), std::string::npos) << screen;
    std::string history = readFile(home + "/.wavex_history");
    EXPECT_NE(history.find("nosuch(1)"), std::string::npos) << history;
    std::remove((home + "/.wavex_history").c_str());
    rmdir(home.c_str());
}

}  // namespace

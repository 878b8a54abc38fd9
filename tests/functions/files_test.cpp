#include "run_wavex.hpp"
#include "test_util.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace wavex {
namespace {

using test::ScratchDir;
using test::Session;
using test::show;
using test::strings;

// A session whose current directory is a fresh scratch directory for the length of the test.
class InScratch : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(getcwd(before_, sizeof before_));
        ASSERT_EQ(chdir(dir_.path().c_str()), 0);
    }
    void TearDown() override { EXPECT_EQ(chdir(before_), 0); }
    std::string at(const std::string& name) const { return dir_.path() + name; }

    ScratchDir dir_;
    Session wx;

private:
    char before_[4096];
};

using Files = InScratch;

TEST_F(Files, WriteCopyMoveListDelete) {
    wx.check({
        {"WriteFile('a.txt', ['one', 'two'])", "[2]"},
        {"WriteFile('a.txt', [3], 1)", "[1]"},
        {"ReadFile('a.txt')", "['one', 'two', '3']"},
        {"FileSize('a.txt')", "[10]"},
        {"MakeDirectory('sub/deeper')", "[1]"},
        {"MakeDirectory('sub')", "[0]"},
        {"CopyFile('a.txt', 'sub')", "[1]"},
        {"CopyFile('a.txt', 'sub/deeper/c.csv')", "[1]"},
        {"MoveFile('a.txt', 'b.txt')", "[1]"},
        {"WriteFile('.hidden', [''])", "[1]"},
        {"[FileExists('a.txt'), FileExists('b.txt'), FileExists('sub'), DirectoryExists('sub')]", "[0, 1, 0, 1]"},
        {"ListFiles('.')", "['b.txt']"},
        {"ListFiles('.', '*.txt', 1)", "['b.txt', 'sub/a.txt']"},
        {"ListFiles('.', '*', 1)", "['b.txt', 'sub/a.txt', 'sub/deeper/c.csv']"},
        {"ListFiles('.', '.*')", "['.hidden']"},
        {"ReadFile('sub/deeper/c.csv')", "['one', 'two', '3']"},
        {"DeleteFile('b.txt')", "[1]"},
        {"ListFiles('sub', '*.none')", "[]"},
    });
    struct stat st;
    ASSERT_EQ(stat(at("sub/a.txt").c_str(), &st), 0);
    EXPECT_DOUBLE_EQ(wx("FileTime('sub/a.txt')")->real[0], st.st_mtim.tv_sec + st.st_mtim.tv_nsec * 1e-9);
    EXPECT_EQ(strings(wx("ConvertUnixTimeToIso(FileTime('sub/a.txt'))"))[0].size(), 10u);  // the date

    VectorPtr temp = wx("TempFileName('run')");
    ASSERT_NE(temp, nullptr) << wx.messages();
    std::string path = strings(temp)[0];
    EXPECT_NE(path.find("/run"), std::string::npos);
    EXPECT_EQ(unlink(path.c_str()), 0) << "the temporary file exists";
}

TEST_F(Files, FailuresGiveTheSystemsReason) {
    dir_.write("f", "x");
    const std::pair<const char*, const char*> cases[] = {
        {"DeleteFile('missing')", "Cannot delete 'missing': No such file or directory"},
        {"DeleteFile('.')", "Cannot delete '.': Is a directory"},
        {"FileSize('.')", "Cannot read '.': Is a directory"},
        {"FileTime('missing')", "Cannot read 'missing': No such file or directory"},
        {"ListFiles('f')", "Cannot list 'f': Not a directory"},
        {"WriteFile('no/such/x', ['a'])", "Cannot write 'no/such/x': No such file or directory"},
        {"WriteFile('.', ['a'])", "Cannot write '.': Is a directory"},
        {"CopyFile('missing', 'x')", "Cannot copy 'missing': No such file or directory"},
        {"MoveFile('missing', 'x')", "Cannot move 'missing': No such file or directory"},
        {"MakeDirectory('f/g')", "Cannot make directory 'f/g': Not a directory"},
        {"ChangeDirectory('f')", "Cannot change to directory 'f': Not a directory"},
        {"FileExists('')", "Function 'FileExists' needs a path, not an empty text"},
        {"TempFileName('a/b')", "A temporary file's prefix cannot hold '/' or a NUL character"},
    };
    for (auto [expression, message] : cases) wx.expectFails(expression, message);
    if (geteuid() != 0) {
        ASSERT_EQ(chmod(dir_.path().c_str(), 0500), 0);
        wx.expectFails("WriteFile('f', ['new'])", "Cannot write 'f': Permission denied");
        EXPECT_EQ(show(wx("ReadFile('f')")), "['x']") << "the old content stays whole";
        chmod(dir_.path().c_str(), 0700);
    }
}

TEST_F(Files, DirectoriesAndPaths) {
    std::string here = dir_.path().substr(0, dir_.path().size() - 1);
    ASSERT_EQ(wx.wx.evaluate("MakeDirectory('d')")->real[0], 1);
    EXPECT_EQ(strings(wx("ChangeDirectory('d')")), (std::vector<std::string>{here}));
    EXPECT_EQ(strings(wx("CurrentDirectory()")), (std::vector<std::string>{here + "/d"}));
    EXPECT_EQ(strings(wx("PathAbsolute(['x', '../y/'])")), (std::vector<std::string>{here + "/d/x", here + "/y"}));
    EXPECT_EQ(strings(wx("PathRelative('" + here + "/e/f')")), (std::vector<std::string>{"../e/f"}));
    wx.check({
        {"PathRelative('/a/b', '/a/c')", "['../b']"},
        {"PathJoin('out', ['a', 'b/'], '', 'x.csv')", "['out/a/x.csv', 'out/b/x.csv']"},
        {"PathJoin('out', '/abs')", "['/abs']"},
        {"PathParent(['a/b/c', 'a/b/', '/'])", "['a/b', 'a', '/']"},
        {"[PathFileName('r/run.tar.gz'), PathStem('r/run.tar.gz'), PathExtension('r/run.tar.gz')]",
         "['run.tar.gz', 'run.tar', '.gz']"},
        {"PathNormalize('./a//b/../c/.')", "['a/c']"},
        {"PathEqual(PathNormalize('a/./b'), 'a/b')", "[1]"},
    });
}

// A lock held here is seen by a second wavex process, and a lock made with autoDelete goes at the
// end of its command line.
TEST_F(Files, LockFilesAcrossProcesses) {
    std::string lock = at("run.lock");
    wx.check({{("CreateLockFile('" + lock + "')").c_str(), "[1]"}, {("CreateLockFile('" + lock + "')").c_str(), "[1]"}});
    auto other = [&](const std::vector<std::string>& args) {
        return test::runWavex(args, "/dev/null", at("out"), at("err"));
    };
    test::Outcome r = other({"-e", "CreateLockFile('" + lock + "')"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "CreateLockFile('" + lock + "') = 0\n");
    EXPECT_EQ(r.err, "warning: Cannot lock '" + lock + "': it is locked by process " + std::to_string(getpid()) + "\n");

    wx.check({{("UnlockFile('" + lock + "')").c_str(), "[1]"}, {("UnlockFile('" + lock + "')").c_str(), "[0]"}});
    r = other({"-e", "CreateLockFile('" + lock + "', 1); FileExists('" + lock + "')", "-e", "FileExists('" + lock + "')"});
    EXPECT_EQ(r.out, "CreateLockFile('" + lock + "', 1) = 1\nFileExists('" + lock + "') = 1\nFileExists('" + lock +
                         "') = 0\n")
        << r.err;
    r = other({"-e", "CreateLockFile('" + lock + "')"});
    EXPECT_EQ(r.out, "CreateLockFile('" + lock + "') = 1\n") << r.err;
    EXPECT_EQ(access(lock.c_str(), F_OK), 0) << "a plain lock's file stays after the run";
}

// In safe mode every function that changes files, the environment or the options, or runs a
// command, is refused before it runs; templates evaluated on the script's behalf too.
TEST_F(Files, SafeModeRefusesChanges) {
    dir_.write("keep", "x");
    wx.wx.setSafeMode(true);
    const char* refused[] = {
        "DeleteFile('keep')", "CopyFile('keep', 'c')", "MoveFile('keep', 'm')", "MakeDirectory('d')",
        "WriteFile('w', ['x'])", "TempFileName()", "ChangeDirectory('/')", "CreateLockFile('l')",
        "UnlockFile('l')", "IniWrite('i.ini', 's', 'k', 'v')", "SetSetting('k', 'v')", "DeleteSetting('k')",
        "SetOption('InterpPts', 10)", "SetEnv('WAVEX_X', 1)", "Shell('true')",
        "WAV_WriteFile('x.wav', [0], 8000)", "ApplyJournal(['a', 'b', 'c'], 0)",
    };
    for (const char* expression : refused) {
        std::string name(expression, std::string_view(expression).find('('));
        wx.expectFails(expression, "Function '" + name + "' is not allowed in safe mode");
    }
    // Also when a newer interpreter, not in safe mode, evaluates the template's expressions.
    Session other;
    wx.check({{"ResolveTemplate('{DeleteFile(\"keep\")}', [''], [''], 'refused')", "['refused']"},
              {"[FileExists('keep'), length(ListFiles('.'))]", "[1, 1]"}});
    other.check({{"ResolveTemplate('{WriteFile(\"made\", [1])}', [''], [''], 'refused')", "['1']"}});

    test::Outcome r = test::runWavex({"--safe", "-e", "Shell('true')"}, "/dev/null", at("out"), at("err"));
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "error: Function 'Shell' is not allowed in safe mode\n");
}

}  // namespace
}  // namespace wavex

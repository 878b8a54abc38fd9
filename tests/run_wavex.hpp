// Runs the built wavex command for the end-to-end tests.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace wavex::test {

struct Outcome {
    int status;
    std::string out, err;
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// Runs `program` with `args`, standard input from `inPath`, standard output and error written to
// `outPath` and `errPath` and returned with the exit status (128 + signal when killed).
inline Outcome runProgram(const char* program, const std::vector<std::string>& args, const std::string& inPath,
                          const std::string& outPath, const std::string& errPath) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, inPath.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<char*> argv{const_cast<char*>(program)};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_t pid;
    int rc = posix_spawn(&pid, program, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return {-1, "", std::string("spawn failed: ") + std::strerror(rc)};
    int status = 0;
    waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readFile(outPath), readFile(errPath)};
}

// Runs the built wavex command
inline Outcome runWavex(const std::vector<std::string>& args, const std::string& inPath, const std::string& outPath,
                        const std::string& errPath) {
    return runProgram(WAVEX_BINARY, args, inPath, outPath, errPath);
}

}  // namespace wavex::test

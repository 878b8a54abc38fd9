// Runs the built wavex command for the end-to-end tests.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

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

// Runs the binary with `args` on a pseudo-terminal (TERM=dumb, plus the variables `env` sets),
// typing `input`; gives the exit status and everything the terminal showed (in `out`). A child
// still running after 20 s is killed.
inline Outcome runOnTerminal(const std::vector<std::string>& args, const std::string& input,
                             const std::vector<std::pair<std::string, std::string>>& env = {}) {
    int master;
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid < 0) return {-1, "", "forkpty failed"};
    if (pid == 0) {
        setenv("TERM", "dumb", 1);
        for (const auto& [name, value] : env) setenv(name.c_str(), value.c_str(), 1);
        std::vector<char*> argv{const_cast<char*>(WAVEX_BINARY)};
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(WAVEX_BINARY, argv.data());
        _exit(127);
    }
    if (write(master, input.data(), input.size()) != static_cast<ssize_t>(input.size())) kill(pid, SIGKILL);
    std::string screen;
    char buf[4096];
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
        pollfd p{master, POLLIN, 0};
        if (poll(&p, 1, 200) > 0) {
            ssize_t n = read(master, buf, sizeof buf);
            if (n <= 0) break;  // the child has gone
            screen.append(buf, static_cast<size_t>(n));
        }
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            break;
        }
    }
    close(master);
    int status = 0;
    waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), screen, ""};
}

}  // namespace wavex::test

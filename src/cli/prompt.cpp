// The interactive prompt: line editing, history kept in ~/.wavex_history, and Tab completion of
// function, command and vector names.
#include "cli/session.hpp"
#include "lang/help.hpp"

#include "support/text.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <editline/readline.h>
#include <unistd.h>

namespace wavex::cli {
namespace {

constexpr int kHistoryLines = 1000;

// The names Tab completes, gathered when a completion starts.
std::vector<std::string> gCandidates;
const Interpreter* gInterpreter = nullptr;

char* nextCandidate(const char* text, int state) {
    static size_t index;
    if (state == 0) {
        index = 0;
        gCandidates.clear();
        gCandidates = lang::functionNames();
        for (const char* command : {"help", "functions", "vectors", "quit"}) gCandidates.push_back(command);
        if (gInterpreter)
            for (std::string& name : gInterpreter->vectorNames()) gCandidates.push_back(std::move(name));
    }
    std::string_view prefix(text);
    while (index < gCandidates.size()) {
        const std::string& c = gCandidates[index++];
        if (c.size() >= prefix.size() && iequals(std::string_view(c).substr(0, prefix.size()), prefix))
            return strdup(c.c_str());  // readline frees it
    }
    return nullptr;
}

char** complete(const char* text, int, int) {
    rl_attempted_completion_over = 1;  // no file names
    return rl_completion_matches(text, nextCandidate);
}

std::string historyPath() {
    const char* home = std::getenv("HOME");
    return home && *home ? std::string(home) + "/.wavex_history" : std::string();
}

}  // namespace

bool Session::runPrompt() {
    gInterpreter = &wx_;
    rl_readline_name = "wavex";
    if (!isatty(STDOUT_FILENO)) rl_outstream = stderr;  // keep prompts out of redirected output
    rl_attempted_completion_function = complete;
    rl_basic_word_break_characters = " \t\n\"'()[],;=+-*/%^&|!<>";
    using_history();
    stifle_history(kHistoryLines);
    const std::string history = historyPath();
    if (!history.empty()) read_history(history.c_str());

    for (;;) {
        char* raw = readline("wavex> ");
        if (!raw) {  // end of input: end the prompt's line
            std::fputc('\n', isatty(STDOUT_FILENO) ? stdout : stderr);
            break;
        }
        std::string line(raw);
        std::free(raw);
        std::string_view content = trim(line);
        if (content.empty()) continue;
        add_history(line.c_str());
        if (!history.empty()) write_history(history.c_str());
        if (content == "quit" || content == "exit") break;
        runLine(line);  // a failure is reported; the session goes on
        std::fflush(stdout);
    }
    gInterpreter = nullptr;
    return true;
}

}  // namespace wavex::cli

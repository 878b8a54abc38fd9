// One run of the wavex command: an interpreter whose messages go to standard error and whose
// values are printed on standard output, fed from -e arguments, scripts or the prompt.
#pragma once

#include "cli/plot.hpp"
#include "wavex/interpreter.hpp"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::cli {

// Writes each message to standard error as "error: [WHERE]MESSAGE", or "warning: ..." when the
// call that reported it succeeded all the same, after flushing standard output so that values and
// messages appear in the order they were made. While `holding`, messages wait for flush(), since
// whether a call succeeds is known only once it returns. `strict` takes warnings as failures.
class StderrMessages : public MessageHandler {
public:
    StderrMessages(FILE* out, FILE* err, bool strict) : out_(out), err_(err), strict_(strict) {}
    std::string where;  // "FILE:LINE: " while a line of a file runs
    bool holding = false;
    void flush();

protected:
    void report(const std::string& message) override;
    bool markWarnings(size_t since) override;

private:
    struct Held {
        std::string text;  // with its "FILE:LINE: "
        size_t index;      // errorCount() after it was reported
        bool warning = false;
    };
    FILE* out_;
    FILE* err_;
    bool strict_;
    std::vector<Held> held_;
};

class Session {
public:
    enum class Format { Text, Json };
    // Values go to `out`, messages to `err`; with `strict`, a call that reports a message fails.
    explicit Session(Format format, bool strict = false, FILE* out = stdout, FILE* err = stderr);

    Interpreter& interpreter() { return wx_; }

    // Loads the vectors of a data file (CSV, raw or Touchstone); false (message reported) when it
    // cannot. A load that takes more than a second shows its progress on standard error when
    // that is a terminal.
    bool loadData(const std::string& path);
    // From now on, values that can be drawn (see plottable) go to a plot written to `path` by
    // writePlot, instead of to standard output.
    void plotTo(std::string path, PlotOptions options);
    // Writes the plot, when there is one to write; false (message reported) when it cannot.
    bool writePlot();
    // Runs one command line, counted as the next statement number; false when a statement failed.
    bool runLine(std::string_view line);
    // Runs a file ("-": standard input) one command line per line, skipping blank and comment
    // lines; stops at the first line that fails and returns false.
    bool runScript(const std::string& path);
    // The interactive prompt, with line editing and history; runs until end of input or "quit".
    bool runPrompt();
    void finish();

private:
    void print(const VectorPtr& value, std::string_view label);

    Format format_;
    FILE* out_;
    std::shared_ptr<StderrMessages> messages_;
    Interpreter wx_;
    Interpreter::Printer printer_;
    std::optional<Plot> plot_;
    std::string plotPath_;
    PlotOptions plotOptions_;
    std::string buffer_;
    size_t statement_ = 0;      // of the line running, from 1
    bool printedText_ = false;  // some value has been printed as text
    bool lastHeaded_ = false;   // and the last one under headings
};

}  // namespace wavex::cli

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

namespace wavex::cli {

// Writes each message to standard error as "error: [WHERE]MESSAGE", after flushing standard
// output so that values and messages appear in the order they were made.
class StderrMessages : public MessageHandler {
public:
    StderrMessages(FILE* out, FILE* err) : out_(out), err_(err) {}
    std::string where;  // "FILE:LINE: " while a line of a file runs

protected:
    void report(const std::string& message) override;

private:
    FILE* out_;
    FILE* err_;
};

class Session {
public:
    enum class Format { Text, Json };
    // Values go to `out`, messages to `err`.
    explicit Session(Format format, FILE* out = stdout, FILE* err = stderr);

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
    // Runs one command line; false when a statement failed.
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
    bool printedText_ = false;  // some value has been printed as text
    bool lastHeaded_ = false;   // and the last one under headings
};

}  // namespace wavex::cli

// The wavex command:
//
//   wavex [--json] [--strict] [--safe] [--data FILE]... [--option NAME=VALUE]... [--plot FILE [--logx] [--liny]]
//         [-e STATEMENT]... [SCRIPT]
//
// Options are set first, then the data files load (CSV, raw or Touchstone, each vector under its
// own name), then each -e command line runs in order, then SCRIPT (one command line per line; "-"
// reads standard input). With neither -e nor SCRIPT, command lines come from an interactive prompt
// when standard input is a terminal, else from standard input as from a script. With --plot, the
// curves among the values go to a picture written at the end (.png, .svg or .pdf) instead of to
// standard output. `wavex --reference FILE` writes the function reference instead of running
// anything.
//
// Every message goes to standard error as "error: MESSAGE", prefixed with FILE:LINE: for a line of
// a script or of standard input. A failed statement stops the run: later statements and lines do
// not run (at the prompt the session goes on). Messages of calls that still succeeded print as
// "warning: MESSAGE" and do not stop anything, unless --strict makes them failures.
//
// Values print as text (a number per run as "EXPRESSION = VALUE UNIT   # RUN", curves under a
// header) or, with --json, one JSON object per line with the statement's text ("expr") and number
// ("stmt": each -e and each script line counts one, from 1).
//
// Exit status: 0 when every statement succeeded; 1 when a statement failed, a data file or script
// could not be read or loaded, or the plot could not be written; 2 for a usage error (unknown
// flag, missing value, an --option that is unknown or whose value does not suit it, a plot file
// of another kind).
#include "cli/reference.hpp"
#include "cli/session.hpp"

#include "support/text.hpp"
#include "wavex/version.hpp"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <cstdio>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr int kUsageError = 2;

int usageError(const char* format, const std::string& a, const std::string& b = "") {
    std::fputs("error: ", stderr);
    std::fprintf(stderr, format, a.c_str(), b.c_str());
    std::fputs("\nRun with --help for more information.\n", stderr);
    return kUsageError;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace wavex::cli;

    bool json = false, strict = false, safe = false, logX = false, linY = false;
    std::vector<std::string> dataFiles, options, statements;
    std::string script, plotFile, referenceFile;

    CLI::App app{"Evaluates waveform expressions over simulation data.", "wavex"};
    app.set_version_flag("--version", wavex::kVersionText);
    auto repeated = [](CLI::Option* o) {
        return o->expected(1)->allow_extra_args(false)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    };
    app.add_flag("--json", json, "Print each value as one JSON object per line, with its statement's text and number");
    app.add_flag("--strict", strict, "Take warnings as failures: a call that reports a message fails");
    app.add_flag("--safe", safe, "Refuse functions that write, delete or move files, change the environment or run commands");
    repeated(app.add_option("-d,--data", dataFiles, "Load the vectors of a CSV, raw or Touchstone file")->type_name("FILE"));
    repeated(app.add_option("-o,--option", options, "Set a host option")->type_name("NAME=VALUE"));
    app.add_option("--plot", plotFile, "Draw the values into a picture (.png, .svg, .pdf) instead of printing them")
        ->type_name("FILE");
    app.add_flag("--logx", logX, "Logarithmic x-axis on the plot");
    app.add_flag("--liny", linY, "Linear y-axis on the plot");
    repeated(app.add_option("-e", statements, "Run a command line (several run in order)")->type_name("STATEMENT"));
    app.add_option("--reference", referenceFile, "Write the reference of every function (Markdown) to FILE")
        ->type_name("FILE");
    app.add_option("SCRIPT", script, "Run a file of command lines (- for standard input)")->type_name("FILE");
    app.footer("Without -e or SCRIPT, command lines come from a prompt (or from standard input when it is\n"
               "not a terminal).\n"
               "Inside: 'help' shows how to get around, 'help NAME' what a function does, 'functions [PATTERN]'\n"
               "lists the functions, 'vectors' the vectors loaded or bound. A value of one number per run prints\n"
               "as 'EXPRESSION = VALUE UNIT   # RUN'.\n"
               "A call that reports a message but succeeds prints 'warning: MESSAGE' and the run goes on\n"
               "(--strict stops it); a failure prints 'error: MESSAGE'.\n"
               "Exit status: 0 success, 1 a statement failed or a file could not be loaded, 2 usage error.");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        return usageError("%s", e.what());
    }

    if (!referenceFile.empty()) return wavex::cli::writeReference(referenceFile) ? 0 : 1;
    if (plotFile.empty() && (logX || linY)) return usageError("%s needs --plot", logX ? "--logx" : "--liny");
    if (!plotFile.empty()) {
        if (std::string why = checkPlotPath(plotFile); !why.empty()) return usageError("--plot: %s", why);
    }

    Session session(json ? Session::Format::Json : Session::Format::Text, strict);
    session.interpreter().setSafeMode(safe);
    if (!plotFile.empty()) session.plotTo(plotFile, {.logX = logX, .linY = linY});

    for (const std::string& option : options) {
        size_t eq = option.find('=');
        if (eq == std::string::npos || eq == 0)
            return usageError("--option needs NAME=VALUE, not '%s'", option);
        std::string why = session.interpreter().setOption(wavex::trim(option.substr(0, eq)), option.substr(eq + 1));
        if (!why.empty()) return usageError("--option %s: %s", option, why);
    }

    int status = 0;
    for (const std::string& file : dataFiles)
        if (!session.loadData(file)) {
            status = 1;
            break;
        }
    for (size_t i = 0; status == 0 && i < statements.size(); ++i)
        if (!session.runLine(statements[i])) status = 1;
    if (status == 0) {
        if (!script.empty()) status = session.runScript(script) ? 0 : 1;
        else if (statements.empty()) status = (isatty(STDIN_FILENO) ? session.runPrompt() : session.runScript("-")) ? 0 : 1;
    }
    if (status == 0 && !session.writePlot()) status = 1;
    session.finish();
    if (std::ferror(stdout)) {
        std::fprintf(stderr, "error: cannot write the output\n");
        status = 1;
    }
    return status;
}

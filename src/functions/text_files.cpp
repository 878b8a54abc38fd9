// Text files read as lines: ReadFile and ReadSpiceFile.
//
// ReadFile(path): the file's physical lines, without their line ends ("\n" or "\r\n"; a lone "\r"
// is kept as text). A final line end does not make an empty last line; an empty file gives an
// empty vector; blank lines inside are empty strings; bytes pass through as they are.
// ReadSpiceFile(path): the file's logical lines as a netlist reads: a line whose first non-blank
// character is "+" continues the line before it (the "+" dropped, joined on with one blank),
// lines whose first non-blank character is "*" are comments and blank lines are skipped; both
// are dropped without ending a logical line. The first line (a netlist's title) is a line like
// any other, and text after ";" or "$" stays: only whole-line comments go.
// Both read through support/spice_stream.hpp, the reader ParseBRENNICInit uses.
//
// Results are string vectors without reference. A file that cannot be opened or read is reported
// ("Cannot open file 'PATH'", "Cannot read file 'PATH'", as LoadTouchstone words it) and gives an
// empty vector; like the other file readers the call still succeeds, so a script can test the
// length.
#include "support/spice_stream.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

// Moves (or copies, from views) the lines into the result's elements.
template <class Line>
FUNC_ERROR put(FuncResult* result, std::vector<Line>& lines) {
    if (!result->makeStrings(static_cast<int64_t>(lines.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (Line& line : lines) (out++)->emplace(std::move(line));
    return FUNC_OK;
}

enum class Lines { Physical, Logical, Count };

struct LinesOp {
    Lines op;
    FUNC_ERROR (*read)(NewSpiceStream& in, FuncResult* result);
};

constexpr LinesOp kLines[] = {
    {Lines::Physical,
     [](NewSpiceStream& in, FuncResult* result) {
         std::vector<std::string_view> lines;  // views into the stream's text: no copy until the result
         for (std::string_view line; in.getLine(&line);) lines.push_back(line);
         return put(result, lines);
     }},
    {Lines::Logical,
     [](NewSpiceStream& in, FuncResult* result) {
         std::vector<std::string> lines;
         for (std::string line; in.gets(&line, nullptr);) lines.push_back(std::move(line));
         return put(result, lines);
     }},
};

static_assert(rowsInOrder(kLines, &LinesOp::op, [](const LinesOp& c) { return c.read != nullptr; }),
              "row i reads lines of kind i");

FUNC_ERROR readLines(const FuncArgs& args, FuncResult* result, MessageHandler& messages, Lines op) {
    NewSpiceStream in{std::string(args.string(0))};
    if (!in.isOpen()) {
        messages.error("%s", in.failure());
        return result->makeStrings(0) ? FUNC_OK : FUNC_FAILED;
    }
    return kLines[static_cast<size_t>(op)].read(in, result);
}

template <Lines op>
FUNC_ERROR linesHandler(WAVEX_HANDLER_PARAMS) {
    return readLines(args, result, *messages, op);
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"ReadFile", {arg::String}, 1, linesHandler<Lines::Physical>,
     {.signature = "ReadFile(path)",
      .summary = "The lines of a text file.",
      .returns = "a string vector, one element per line, without line ends",
      .notes = "Lines end at \"\\n\" or \"\\r\\n\" (a lone \"\\r\" stays as text); a last line end does not "
               "add an empty line; an empty file gives an empty vector. A file that cannot be opened is "
               "reported (\"Cannot open file 'PATH'\") and gives an empty vector, the call still "
               "succeeding, so a script can test the length.",
      .example = "lines = ReadFile('missing.txt'); length(lines)"}},
    {"ReadSpiceFile", {arg::String}, 1, linesHandler<Lines::Logical>,
     {.signature = "ReadSpiceFile(path)",
      .summary = "The logical lines of a netlist file.",
      .returns = "a string vector, one element per logical line",
      .notes = "A line whose first non-blank character is \"+\" is joined to the line before with one "
               "blank in place of the \"+\"; whole-line \"*\" comments and blank lines are dropped. The "
               "first (title) line and text after \";\" stay as written. A file that cannot be opened "
               "is reported and gives an empty vector, as for ReadFile.",
      .example = "length(ReadSpiceFile('missing.cir'))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

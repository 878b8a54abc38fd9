// Parameter strings: ParseParameterString and ParseParameterString2 read, delete or write values of
// a string like `a b c=1 d=2`; BuildParameterString makes one from names and values. The parsing
// and rebuilding live in support/parameter_string.hpp, which states the rules.
//
// ParseParameterString(text, names, mode [, values [, options]]):
//   mode      its first element "read", "delete" or "write" (any case); its second, when present,
//             the number U of unlabelled values, read as atoi reads it (0 by default)
//   options   first element "allowquoted" (any case) turns quoting on; the second, when present,
//             replaces the delimiters " \t=,"; the third the opening quote characters "\"'"; the
//             fourth the closing ones "\"'"
//   read      one string per name: its value, or "" (the name "$unlabelled$k" reads the k-th
//             unlabelled value)
//   delete    the string rebuilt without the named entries
//   write     the string rebuilt with the names set to the values; without values, empty
// Every token is searched for a name, values included (in `a b c=1 d=2` the name 1 reads d), and a
// last name without a value is dropped when the string is rebuilt.
// ParseParameterString2 takes the same arguments; it reads the tokens as an ordered list of
// entries and looks names up among the entries' names only, keeps a last name without a value as
// an entry with an empty value, writes a value to every entry of its name, and reads any name that
// begins with "$unlabelled$" by the number after it ("$unlabelled$02" is the second).
// An unknown mode gives an empty result; nothing reports a message.
//
// BuildParameterString(names, values [, quoteIf]): name=value items joined by one space for the
// pairs up to the shorter list, a pair with an empty value skipped, a value that holds a character
// of quoteIf (" \t" by default) enclosed in double quotes. Empty lists give an empty result.
#include "support/numbers.hpp"
#include "support/parameter_string.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

// Every element of a string argument ("" for a null one).
std::vector<std::string_view> elements(const FuncArgs& args, int i) {
    std::vector<std::string_view> out(args.has(i) ? static_cast<size_t>(args.length(i)) : 0);
    for (size_t k = 0; k < out.size(); ++k) out[k] = args.string(i, k);
    return out;
}

ParameterSyntax syntaxOf(const FuncArgs& args, int i) {
    ParameterSyntax syntax;
    int64_t n = args.has(i) ? args.length(i) : 0;
    syntax.quoted = n > 0 && iequals(args.string(i, 0), "allowquoted");
    if (n > 1) syntax.delimiters = args.string(i, 1);
    if (n > 2) syntax.openQuotes = args.string(i, 2);
    if (n > 3) syntax.closeQuotes = args.string(i, 3);
    return syntax;
}

template <ParameterReading reading>
FUNC_ERROR parseParameterString(WAVEX_HANDLER_PARAMS) {
    std::string_view mode = args.string(2, 0);
    bool read = iequals(mode, "read"), remove = iequals(mode, "delete"), write = iequals(mode, "write");
    if (!read && !remove && !write) return FUNC_OK;
    if (write && (!args.has(3) || args.length(3) == 0)) return FUNC_OK;
    int64_t unlabelled = args.length(2) > 1 ? atoiValue(args.string(2, 1)) : 0;
    ParameterString text(args.string(0), syntaxOf(args, 4), reading, unlabelled,
                         read ? ParameterString::Read : ParameterString::Rebuild);
    std::vector<std::string_view> names = elements(args, 1);
    if (remove) return result->makeString(text.remove(names)) ? FUNC_OK : FUNC_FAILED;
    if (write) return result->makeString(text.write(names, elements(args, 3))) ? FUNC_OK : FUNC_FAILED;
    if (!result->makeStrings(static_cast<int64_t>(names.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t k = 0; k < names.size(); ++k) out[k].emplace(text.read(names[k]));
    return FUNC_OK;
}

FUNC_ERROR buildParameter(WAVEX_HANDLER_PARAMS) {
    if (std::min(args.length(0), args.length(1)) < 1) return FUNC_OK;
    std::string_view quoteIf = args.has(2) ? args.string(2) : std::string_view(" \t");
    return result->makeString(buildParameterString(elements(args, 0), elements(args, 1), quoteIf))
        ? FUNC_OK : FUNC_FAILED;
}

constexpr FuncInfo kFunctions[] = {
    {"ParseParameterString", {arg::String, arg::String, arg::String, arg::String, arg::String}, 3,
     parseParameterString<ParameterReading::Tokens>,
     {.signature = "ParseParameterString(text, names, mode [, values [, options]])",
      .summary = "Reads, deletes or writes name=value entries of a parameter string like 'a b c=1 d=2'.",
      .returns = "strings: for 'read' one value per name (\"\" when absent); for 'delete' and 'write' the "
                 "rebuilt string",
      .notes = "mode[0] is 'read', 'delete' or 'write' (any case); mode[1] the number of leading "
               "unlabelled values. The name '$unlabelled$k' reads the k-th of them. Every token is "
               "searched for a name, values included, and a last name without a value is dropped when "
               "the string is rebuilt. options[0] 'allowquoted' turns quoting on; options[1..3] replace "
               "the delimiters \" \\t=,\" and the quote characters. An unknown mode gives an empty result.",
      .example = "ParseParameterString('R1 a b r=1k tc=0', ['tc', 'r'], ['read', '3']); "
                 "ParseParameterString('R1 a b r=1k tc=0', ['r'], ['write', '3'], ['2k'])"}},
    {"ParseParameterString2", {arg::String, arg::String, arg::String, arg::String, arg::String}, 3,
     parseParameterString<ParameterReading::Entries>,
     {.signature = "ParseParameterString2(text, names, mode [, values [, options]])",
      .summary = "ParseParameterString reading the text as an ordered list of name=value entries.",
      .returns = "as ParseParameterString",
      .notes = "Names are looked up among the entries' names only (never their values); a last name "
               "without a value stays as an entry with an empty value; 'write' sets every entry of the "
               "name; any name '$unlabelled$N' reads the N-th unlabelled value ('$unlabelled$02' is the "
               "second).",
      .example = "ParseParameterString2('x y w=2 l=1', ['$unlabelled$02', 'l'], ['read', '2'])"}},
    {"BuildParameterString", {arg::String, arg::String, arg::String}, 2, buildParameter,
     {.signature = "BuildParameterString(names, values [, quoteIf])",
      .summary = "A parameter string of name=value items from two lists.",
      .returns = "one string",
      .notes = "Items are joined by one blank, for the pairs up to the shorter list; a pair with an "
               "empty value is skipped; a value holding a character of quoteIf (default blank and tab) "
               "is put in double quotes.",
      .example = "BuildParameterString(['w', 'l', 'm'], ['1u', '', 'a b'])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

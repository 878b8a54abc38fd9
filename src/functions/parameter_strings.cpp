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

bool given(const FuncArgs& args, int i) { return args.count() > i; }

std::string_view first(const FuncArgs& args, int i) { return given(args, i) ? args.string(i, 0) : std::string_view(); }

// Every element of a string argument ("" for a null one).
std::vector<std::string_view> elements(const FuncArgs& args, int i) {
    std::vector<std::string_view> out(given(args, i) ? static_cast<size_t>(args.length(i)) : 0);
    for (size_t k = 0; k < out.size(); ++k) out[k] = args.string(i, k);
    return out;
}

ParameterSyntax syntaxOf(const FuncArgs& args, int i) {
    ParameterSyntax syntax;
    int64_t n = given(args, i) ? args.length(i) : 0;
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
    if (write && (!given(args, 3) || args.length(3) == 0)) return FUNC_OK;
    int64_t unlabelled = args.length(2) > 1 ? atoiValue(args.string(2, 1)) : 0;
    ParameterString text(first(args, 0), syntaxOf(args, 4), reading, unlabelled,
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
    std::string_view quoteIf = given(args, 2) ? first(args, 2) : std::string_view(" \t");
    return result->makeString(buildParameterString(elements(args, 0), elements(args, 1), quoteIf))
        ? FUNC_OK : FUNC_FAILED;
}

constexpr FuncInfo kFunctions[] = {
    {"ParseParameterString", {arg::String, arg::String, arg::String, arg::String, arg::String}, 3, parseParameterString<ParameterReading::Tokens>},
    {"ParseParameterString2", {arg::String, arg::String, arg::String, arg::String, arg::String}, 3, parseParameterString<ParameterReading::Entries>},
    {"BuildParameterString", {arg::String, arg::String, arg::String}, 2, buildParameter},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// The string toolkit: conversion between text and numbers, character access, search, counting and
// substitution, splitting and joining, escaping, regular expressions, hashes, digests and
// identifiers. (`_Concat`, `PathEqual` and the element-wise comparisons live in string_compare.cpp.)
//
// Shapes. Most functions are scalar-style: they read the first element of each string argument
// (a missing or null element reads as "") and give one element. `Str`, `Val`, `JoinStringArray`
// and `JoinVectors` work on whole vectors. Results carry no reference and no unit unless a function
// says otherwise. Counts, indices and codes are numbers truncated toward zero (NaN counts as 0,
// values beyond the 64-bit range saturate). Positions and lengths are in bytes; any byte values,
// UTF-8 or not, pass through unchanged unless a function says what it does to them.
//
// Bad input. Out-of-range indices, counts and start positions, empty and null strings give the
// neutral results each function states, silently. Three things are refused with a message and a
// failed call, because a script cannot go on sensibly after them: a count of more than
// kMaxMadeElements elements (`MakeString(1e12)`), a malformed regular expression, and a regular
// expression whose matching exceeds its limits.
#include "support/digest.hpp"
#include "support/escape.hpp"
#include "support/numbers.hpp"
#include "support/regex.hpp"
#include "support/split.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

inline unsigned char byte(char c) { return static_cast<unsigned char>(c); }

// ---- Arguments -----------------------------------------------------------------------------------

bool given(const FuncArgs& args, int i) { return args.count() > i; }

std::string_view first(const FuncArgs& args, int i) { return given(args, i) ? args.string(i, 0) : std::string_view(); }

// A number truncated toward zero, saturating at the ends of the 64-bit range; NaN gives 0.
int64_t truncated(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 9.2e18) return std::numeric_limits<int64_t>::max();
    if (x <= -9.2e18) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(x);
}

int64_t integerArg(const FuncArgs& args, int i, int64_t absent) {
    return given(args, i) ? truncated(args.scalar(i)) : absent;
}

// ---- Results -------------------------------------------------------------------------------------

FUNC_ERROR stringList(FuncResult* result, std::span<const std::string_view> items) {
    if (!result->makeStrings(static_cast<int64_t>(items.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t i = 0; i < items.size(); ++i) out[i].emplace(items[i]);
    return FUNC_OK;
}

FUNC_ERROR oneReal(FuncResult* result, double x) {
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = x;
    return FUNC_OK;
}

// ---- Conversion --------------------------------------------------------------------------------
//
// Str: a copy of a string vector. A numeric vector, which the host passes here as it is, is
// written element by element in the shortest form that reads back to the same value ("0.1",
// "1e+300", "nan"; complex as "1.5-2j"), keeping its reference and divisions.
// Val: a copy of a numeric vector (values, reference, units). Text is read element by element as
// a number with an optional engineering suffix ("2.2k", "10mV", "-1e-3"; spaces around it
// allowed); text that is not a number gives NaN.

std::string numberText(double x) { return formatRoundTrip(x); }
std::string numberText(Complex z) {
    std::string s = formatRoundTrip(z.real());
    s += std::signbit(z.imag()) && !std::isnan(z.imag()) ? '-' : '+';
    return s + formatRoundTrip(std::fabs(z.imag())) + 'j';
}

template <class T>
void writeNumbers(StrElem* out, const T* in, int64_t n) {
    for (int64_t i = 0; i < n; ++i) out[i] = numberText(in[i]);
}

FUNC_ERROR str(WAVEX_HANDLER_PARAMS) {
    if (args.type(0) == VD_STRING) {
        result->copyVector(args.vector(0));
        return FUNC_OK;
    }
    int64_t n = args.length(0);
    result->setType(VD_STRING, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    if (!result->allocate(n, RESULT_LIKE_ARGS, args.totalLength(0))) return FUNC_FAILED;
    if (const double* x = args.data(0)) writeNumbers(result->stringData(), x, n);
    else writeNumbers(result->stringData(), args.complexData(0), n);
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

FUNC_ERROR val(WAVEX_HANDLER_PARAMS) {
    if (args.type(0) != VD_STRING) {
        result->copyVector(args.vector(0));
        return FUNC_OK;
    }
    int64_t n = args.length(0);
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    if (!result->allocate(n, RESULT_LIKE_ARGS, args.totalLength(0))) return FUNC_FAILED;
    double* out = result->data();
    for (int64_t i = 0; i < n; ++i)
        out[i] = parseEngineeringNumber(trim(args.string(0, i))).value_or(std::numeric_limits<double>::quiet_NaN());
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

// ---- Characters ----------------------------------------------------------------------------------
//
// Ascii: the first byte read as a signed 8-bit number (0xE9 gives -23, kept on purpose); "" gives 0.
// Chr: the code rounded down, truncated and clamped to 0..255, as a one-byte string; code 0 gives "".
// Char: the byte at an index, a negative index counting from the end once; out of range gives "".
// Mid: bytes [start, start + count) with start clamped to 0..L and the end (start + count formed in
// floating point, then truncated; L without a count) clamped to start..L.
// StringLength: the length in bytes.

FUNC_ERROR ascii(WAVEX_HANDLER_PARAMS) {
    std::string_view s = first(args, 0);
    return oneReal(result, s.empty() ? 0 : static_cast<signed char>(s[0]));
}

FUNC_ERROR chr(WAVEX_HANDLER_PARAMS) {
    int64_t code = std::clamp<int64_t>(truncated(std::floor(args.scalar(0))), 0, 255);
    return result->makeString(code == 0 ? std::string() : std::string(1, static_cast<char>(code)))
        ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR charAt(WAVEX_HANDLER_PARAMS) {
    std::string_view s = first(args, 0);
    auto length = static_cast<int64_t>(s.size());
    int64_t i = truncated(args.scalar(1));
    if (i < 0) i += length;
    return result->makeString(i >= 0 && i < length ? std::string(1, s[i]) : std::string()) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR mid(WAVEX_HANDLER_PARAMS) {
    std::string_view s = first(args, 0);
    auto length = static_cast<int64_t>(s.size());
    int64_t start = truncated(args.scalar(1));
    int64_t end = given(args, 2) ? truncated(static_cast<double>(start) + args.scalar(2)) : length;
    start = std::clamp<int64_t>(start, 0, length);
    end = std::clamp<int64_t>(end, start, length);
    return result->makeString(std::string(s.substr(start, end - start))) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR stringLength(WAVEX_HANDLER_PARAMS) { return oneReal(result, static_cast<double>(first(args, 0).size())); }

// ---- Text transforms -----------------------------------------------------------------------------
//
// One worker for the functions that turn the first element into one string, each by its kernel:
//   ToLower, ToUpper       ASCII letters only, byte by byte (other bytes unchanged)
//   MkVec                  the name as an expression: wrapped as Vec('name') when it holds a double
//                          quote or one of & + - * / ^ < > ' space @ { } [ ] % ! ( ), or begins with
//                          a decimal digit; otherwise unchanged
//   EscapeString           backslash escapes (see support/escape.hpp)
//   EscapeStringEncode     percent-encoding (see support/escape.hpp)
//   GetMD5String           MD5 of the bytes, 32 lower-case hexadecimal digits
//   Hash                   hashValue (32-bit FNV-1a of the lower-cased bytes) in decimal
// The escapes read "replaceSpaces" (any letter case) in their second argument as their flag; any
// other word, or none, clears it.

enum class TextOp { Lower, Upper, MkVec, Escape, Encode, MD5, Hash, Count };

using TextKernel = std::string (*)(std::string_view text, bool replaceSpaces);

std::string mkVec(std::string_view name) {
    bool plain = name.find_first_of("\"&+-*/^<>' @{}[]%!()") == std::string_view::npos &&
                 !(!name.empty() && name[0] >= '0' && name[0] <= '9');
    return plain ? std::string(name) : "Vec('" + std::string(name) + "')";
}

std::string upper(std::string_view t) {
    std::string r(t);
    for (char& c : r) c = asciiUpper(c);
    return r;
}

struct TextRow {
    TextOp op;
    TextKernel kernel;
};

constexpr TextRow kTextOps[] = {
    {TextOp::Lower, [](std::string_view t, bool) { return toLower(t); }},
    {TextOp::Upper, [](std::string_view t, bool) { return upper(t); }},
    {TextOp::MkVec, [](std::string_view t, bool) { return mkVec(t); }},
    {TextOp::Escape, [](std::string_view t, bool spaces) { return sp_EscapeString(t, spaces); }},
    {TextOp::Encode, [](std::string_view t, bool spaces) { return sp_EscapeStringEncode(t, spaces); }},
    {TextOp::MD5, [](std::string_view t, bool) { return sp_GetMD5(t); }},
    {TextOp::Hash, [](std::string_view t, bool) { return std::to_string(hashValue(t)); }},
};

consteval bool rowsInOrder() {
    for (size_t i = 0; i < std::size(kTextOps); ++i)
        if (static_cast<size_t>(kTextOps[i].op) != i || !kTextOps[i].kernel) return false;
    return std::size(kTextOps) == static_cast<size_t>(TextOp::Count);
}
static_assert(rowsInOrder(), "kTextOps: row i must hold operation i");

template <TextOp op>
FUNC_ERROR transform(WAVEX_HANDLER_PARAMS) {
    bool replaceSpaces = iequals(first(args, 1), "replaceSpaces");
    return result->makeString(kTextOps[static_cast<size_t>(op)].kernel(first(args, 0), replaceSpaces))
        ? FUNC_OK : FUNC_FAILED;
}

// ---- Search, counting, substitution --------------------------------------------------------------
//
// StrStr: the first occurrence of the sought text, ignoring ASCII case, at or after the start
// (clamped to 0..L); the answer counts from the start, not from the beginning of the string
// (abcabc, c, start 3 gives 2: kept on purpose), or -1.
// CountChars: for each byte of the second string, how often it occurs in the first (byte-exact).
// StringStartsWith: the string "1" or "0", case-sensitive.
// SubstChar: every byte of the first string that is in the set becomes the first byte of the
// replacement; an empty replacement writes a NUL byte, so the result ends before the first such byte.
// SubstString: replaces occurrences of old by new, case-sensitive, left to right, each search
// resuming after the text just inserted: once by default, all with "all" (any case), otherwise the
// count read as atoi reads it (0, negative or not a number: none). An empty old text is never found.

FUNC_ERROR strStr(WAVEX_HANDLER_PARAMS) {
    std::string_view s = first(args, 0);
    auto length = static_cast<int64_t>(s.size());
    int64_t start = std::clamp<int64_t>(integerArg(args, 2, 0), 0, length);
    size_t at = toLower(s.substr(start)).find(toLower(first(args, 1)));
    return oneReal(result, at == std::string::npos ? -1.0 : static_cast<double>(at));
}

FUNC_ERROR countChars(WAVEX_HANDLER_PARAMS) {
    std::string_view s = first(args, 0), wanted = first(args, 1);
    std::array<double, 256> counts{};
    for (char c : s) ++counts[byte(c)];
    double* out = result->makeRealNoRef(static_cast<int64_t>(wanted.size()));
    for (size_t i = 0; i < wanted.size(); ++i) out[i] = counts[byte(wanted[i])];
    return FUNC_OK;
}

FUNC_ERROR startsWith(WAVEX_HANDLER_PARAMS) {
    return result->makeString(beginsWith(first(args, 0), first(args, 1)) ? "1" : "0") ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR substChar(WAVEX_HANDLER_PARAMS) {
    std::string s(first(args, 0));
    std::string_view set = first(args, 1), replacement = first(args, 2);
    std::array<bool, 256> inSet{};
    for (char c : set) inSet[byte(c)] = true;
    if (replacement.empty()) {
        auto cut = std::find_if(s.begin(), s.end(), [&](char c) { return inSet[byte(c)]; });
        s.erase(cut, s.end());
    } else {
        for (char& c : s)
            if (inSet[byte(c)]) c = replacement[0];
    }
    return result->makeString(std::move(s)) ? FUNC_OK : FUNC_FAILED;
}

// s with the first `count` occurrences of `old` replaced by `replacement`, searching on after each.
std::string substitute(std::string_view s, std::string_view old, std::string_view replacement, int64_t count) {
    if (old.empty()) return std::string(s);
    std::string out;
    size_t from = 0;
    for (int64_t done = 0; done < count; ++done) {
        size_t at = s.find(old, from);
        if (at == std::string_view::npos) break;
        out.append(s.substr(from, at - from));
        out.append(replacement);
        from = at + old.size();
    }
    out.append(s.substr(from));
    return out;
}

FUNC_ERROR substString(WAVEX_HANDLER_PARAMS) {
    int64_t count = 1;
    if (std::string_view word = first(args, 3); iequals(word, "all")) count = std::numeric_limits<int64_t>::max();
    else if (!word.empty()) count = atoiValue(word);
    return result->makeString(substitute(first(args, 0), first(args, 1), first(args, 2), count))
        ? FUNC_OK : FUNC_FAILED;
}

// ---- Splitting and making ------------------------------------------------------------------------
//
// Scan: cuts the first element at every separator (";" by default, else the first byte of the
// second argument) with sp_SplitLine, so empty fields count. When the second argument has at least
// three bytes and its second and third differ, they quote: a field enclosed in them keeps its
// separators and loses the marks (Scan('<a;b>;c', ';<>') gives a;b and c). The result is padded with
// empty strings to the minimum count of the third argument.
// Parse: tokens separated by runs of the delimiters (" \t," by default; a set with a space but no
// tab also gets a tab), no empty token ever. With "quoted" (any case) in the third argument, text
// in double quotes or apostrophes stays one token, marks kept (sp_StrTok).
// MakeString: n elements, the first copied from the second argument, the rest ""; n < 1 gives none.
// _NullString: n null elements (distinct from ""), to be filled later.
// JoinStringArray: the elements of the first, then of the second (null elements stay null).
// JoinVectors: the same for any kind when both arguments have it; when the kinds differ the empty
// one gives way, and two non-empty vectors of different kinds give an empty result. No reference
// and no unit are carried.

FUNC_ERROR scan(WAVEX_HANDLER_PARAMS) {
    char separator = ';';
    std::string_view quotes;
    if (given(args, 1)) {
        std::string_view cut = first(args, 1);
        separator = cut.empty() ? '\0' : cut[0];
        if (cut.size() >= 3 && cut[1] != cut[2]) quotes = cut.substr(1, 2);
    }
    int64_t minimum = integerArg(args, 2, 0);
    if (!withinMadeElementLimit(minimum, info, *messages)) return FUNC_FAILED;
    std::vector<std::string_view> fields;
    sp_SplitLine(first(args, 0), separator, quotes, fields);
    if (minimum > static_cast<int64_t>(fields.size())) fields.resize(minimum);
    return stringList(result, fields);
}

FUNC_ERROR parse(WAVEX_HANDLER_PARAMS) {
    std::string delimiters = given(args, 1) ? std::string(first(args, 1)) : " \t,";
    if (delimiters.find(' ') != std::string::npos && delimiters.find('\t') == std::string::npos) delimiters += '\t';
    std::string_view line = first(args, 0);
    std::vector<std::string_view> tokens;
    if (iequals(first(args, 2), "quoted")) {
        for (std::string_view t; !(t = sp_StrTok(line, delimiters)).empty();) tokens.push_back(t);
    } else {
        sp_ScanLine(line, delimiters, tokens);
    }
    return stringList(result, tokens);
}

FUNC_ERROR makeString(WAVEX_HANDLER_PARAMS) {
    int64_t n = truncated(args.scalar(0));
    if (n < 1) return FUNC_OK;
    if (!withinMadeElementLimit(n, info, *messages)) return FUNC_FAILED;
    if (!result->makeStrings(n)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    int64_t copied = given(args, 1) ? std::min(n, args.length(1)) : 0;
    if (copied > 0) std::copy_n(args.stringData(1), copied, out);
    std::fill(out + copied, out + n, std::string());
    return FUNC_OK;
}

FUNC_ERROR nullString(WAVEX_HANDLER_PARAMS) {
    int64_t n = truncated(args.scalar(0));
    if (n < 1) return FUNC_OK;
    if (!withinMadeElementLimit(n, info, *messages)) return FUNC_FAILED;
    return result->makeStrings(n) ? FUNC_OK : FUNC_FAILED;  // the elements are null as made
}

FUNC_ERROR joinStringArray(WAVEX_HANDLER_PARAMS) {
    int64_t a = args.length(0), b = args.length(1);
    if (!result->makeStrings(a + b)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    std::copy_n(args.stringData(0), a, out);
    std::copy_n(args.stringData(1), b, out + a);
    return FUNC_OK;
}

template <class T>
void joinInto(T* out, const T* a, int64_t na, const T* b, int64_t nb) {
    if (na > 0) std::copy_n(a, na, out);
    if (nb > 0) std::copy_n(b, nb, out + na);
}

FUNC_ERROR joinVectors(WAVEX_HANDLER_PARAMS) {
    int64_t na = args.length(0), nb = args.length(1);
    VDType kind = args.type(0);
    if (args.type(1) != kind) {
        if (na == 0) kind = args.type(1);
        else if (nb != 0) return FUNC_OK;  // non-empty vectors of different kinds: nothing
    }
    // An argument of another kind than the result's is empty here and adds nothing.
    if (args.type(0) != kind) na = 0;
    if (args.type(1) != kind) nb = 0;
    result->setType(kind, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (!result->allocate(na + nb, RESULT_OWN, -1)) return FUNC_FAILED;
    switch (kind) {
        case VD_REAL: joinInto(result->data(), args.data(0), na, args.data(1), nb); break;
        case VD_COMPLEX: joinInto(result->complexData(), args.complexData(0), na, args.complexData(1), nb); break;
        case VD_STRING: joinInto(result->stringData(), args.stringData(0), na, args.stringData(1), nb); break;
        default: result->emptyVectors(); break;
    }
    return FUNC_OK;
}

// ---- Regular expressions, digests, identifiers ---------------------------------------------------
//
// RegExp: the subjects (every element of the first argument) are searched with the pattern by
// sp_RegExpMatches (PCRE2; see support/regex.hpp): the result is "CompleteMatch" when every
// subject matched and "IncompleteMatch" otherwise, followed, for each subject that matched, by the
// whole match and then each capturing group. No subjects give an empty result whatever the pattern.
// A malformed pattern or a match beyond the limits fails with the reason.
// GetMD5: MD5 of the file's bytes; a file that cannot be opened or read gives an empty result.
// GetGUID (also CvUUID): a new random UUID, lower case, hyphenated.

FUNC_ERROR regExp(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    if (n == 0) return FUNC_OK;
    std::vector<std::string_view> subjects(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i) subjects[i] = args.string(0, i);
    std::string_view pattern = first(args, 1);
    std::vector<std::string_view> matches;
    std::string error;
    bool complete = sp_RegExpMatches(subjects, pattern, matches, &error);
    if (!error.empty()) {
        messages->error("Regular expression '%s' in function '%s': %s", pattern, info->name, error);
        return FUNC_FAILED;
    }
    matches.insert(matches.begin(), complete ? "CompleteMatch" : "IncompleteMatch");
    return stringList(result, matches);
}

FUNC_ERROR getMD5(WAVEX_HANDLER_PARAMS) {
    std::string name(first(args, 0));
    if (name.find('\0') != std::string::npos) return FUNC_OK;  // no file has such a name
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file) return FUNC_OK;
    std::optional<std::string> digest = sp_GetMD5(file);
    std::fclose(file);
    return !digest || result->makeString(std::move(*digest)) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR getGUID(WAVEX_HANDLER_PARAMS) { return result->makeString(sp_GetGUID()) ? FUNC_OK : FUNC_FAILED; }

// ---- Registration --------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Str", {arg::String.orKinds(VD_REAL, VD_COMPLEX)}, 1, str},  // numbers as text
    {"Val", {arg::Numeric.orKinds(VD_STRING)}, 1, val},  // text as numbers
    {"Ascii", {arg::String}, 1, ascii},
    {"Chr", {arg::Real}, 1, chr},
    {"Char", {arg::String, arg::Real}, 2, charAt},
    {"Mid", {arg::String, arg::Real, arg::Real}, 2, mid},
    {"StringLength", {arg::String}, 1, stringLength},
    {"ToLower", {arg::String}, 1, transform<TextOp::Lower>},
    {"ToUpper", {arg::String}, 1, transform<TextOp::Upper>},
    {"StrStr", {arg::String, arg::String, arg::Real}, 2, strStr},
    {"CountChars", {arg::String, arg::String}, 2, countChars},
    {"StringStartsWith", {arg::String, arg::String}, 2, startsWith},
    {"SubstChar", {arg::String, arg::String, arg::String}, 3, substChar},
    {"SubstString", {arg::String, arg::String, arg::String, arg::String}, 3, substString},
    {"Scan", {arg::String, arg::String, arg::Real}, 1, scan},
    {"Parse", {arg::String, arg::String, arg::String}, 1, parse},
    {"MakeString", {arg::Real, arg::String}, 1, makeString},
    {"_NullString", {arg::Real}, 1, nullString},
    {"JoinStringArray", {arg::String, arg::String}, 2, joinStringArray, kWholeArgument},
    {"JoinVectors", {arg::Any, arg::Any}, 2, joinVectors, kWholeArgument},
    {"MkVec", {arg::String}, 1, transform<TextOp::MkVec>},
    {"EscapeString", {arg::String, arg::String}, 1, transform<TextOp::Escape>},
    {"EscapeStringEncode", {arg::String, arg::String}, 1, transform<TextOp::Encode>},
    {"RegExp", {arg::String, arg::String}, 2, regExp},
    {"Hash", {arg::String}, 1, transform<TextOp::Hash>},
    {"GetMD5", {arg::String}, 1, getMD5},
    {"GetMD5String", {arg::String}, 1, transform<TextOp::MD5>},
    {"GetGUID", {}, 0, getGUID},
};

const FuncFamily family(kFunctions);
const FuncAlias cvUUID("GetGUID", "CvUUID");

}  // namespace
}  // namespace wavex

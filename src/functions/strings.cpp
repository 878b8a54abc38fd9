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
    std::string_view s = args.string(0);
    return oneReal(result, s.empty() ? 0 : static_cast<signed char>(s[0]));
}

FUNC_ERROR chr(WAVEX_HANDLER_PARAMS) {
    int64_t code = std::clamp<int64_t>(wholeNumber(std::floor(args.scalar(0))).value_or(0), 0, 255);
    return result->makeString(code == 0 ? std::string() : std::string(1, static_cast<char>(code)))
        ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR charAt(WAVEX_HANDLER_PARAMS) {
    std::string_view s = args.string(0);
    auto length = static_cast<int64_t>(s.size());
    int64_t i = args.integer(1).value_or(0);
    if (i < 0) i += length;
    return result->makeString(i >= 0 && i < length ? std::string(1, s[i]) : std::string()) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR mid(WAVEX_HANDLER_PARAMS) {
    std::string_view s = args.string(0);
    auto length = static_cast<int64_t>(s.size());
    int64_t start = args.integer(1).value_or(0);
    int64_t end = args.has(2) ? wholeNumber(static_cast<double>(start) + args.scalar(2)).value_or(0) : length;
    start = std::clamp<int64_t>(start, 0, length);
    end = std::clamp<int64_t>(end, start, length);
    return result->makeString(std::string(s.substr(start, end - start))) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR stringLength(WAVEX_HANDLER_PARAMS) { return oneReal(result, static_cast<double>(args.string(0).size())); }

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

static_assert(rowsInOrder(kTextOps, &TextRow::op, [](const TextRow& c) { return c.kernel != nullptr; }),
              "row i holds operation i");

template <TextOp op>
FUNC_ERROR transform(WAVEX_HANDLER_PARAMS) {
    bool replaceSpaces = iequals(args.string(1), "replaceSpaces");
    return result->makeString(kTextOps[static_cast<size_t>(op)].kernel(args.string(0), replaceSpaces))
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
    std::string_view s = args.string(0);
    auto length = static_cast<int64_t>(s.size());
    int64_t start = std::clamp<int64_t>(args.integer(2).value_or(0), 0, length);
    size_t at = toLower(s.substr(start)).find(toLower(args.string(1)));
    return oneReal(result, at == std::string::npos ? -1.0 : static_cast<double>(at));
}

FUNC_ERROR countChars(WAVEX_HANDLER_PARAMS) {
    std::string_view s = args.string(0), wanted = args.string(1);
    std::array<double, 256> counts{};
    for (char c : s) ++counts[byte(c)];
    double* out = result->makeRealNoRef(static_cast<int64_t>(wanted.size()));
    for (size_t i = 0; i < wanted.size(); ++i) out[i] = counts[byte(wanted[i])];
    return FUNC_OK;
}

FUNC_ERROR startsWith(WAVEX_HANDLER_PARAMS) {
    return result->makeString(beginsWith(args.string(0), args.string(1)) ? "1" : "0") ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR substChar(WAVEX_HANDLER_PARAMS) {
    std::string s(args.string(0));
    std::string_view set = args.string(1), replacement = args.string(2);
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
    if (std::string_view word = args.string(3); iequals(word, "all")) count = std::numeric_limits<int64_t>::max();
    else if (!word.empty()) count = atoiValue(word);
    return result->makeString(substitute(args.string(0), args.string(1), args.string(2), count))
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
    if (args.has(1)) {
        std::string_view cut = args.string(1);
        separator = cut.empty() ? '\0' : cut[0];
        if (cut.size() >= 3 && cut[1] != cut[2]) quotes = cut.substr(1, 2);
    }
    int64_t minimum = args.integer(2).value_or(0);
    if (!withinMadeElementLimit(minimum, info, *messages)) return FUNC_FAILED;
    std::vector<std::string_view> fields;
    sp_SplitLine(args.string(0), separator, quotes, fields);
    if (minimum > static_cast<int64_t>(fields.size())) fields.resize(minimum);
    return stringList(result, fields);
}

FUNC_ERROR parse(WAVEX_HANDLER_PARAMS) {
    std::string delimiters = args.has(1) ? std::string(args.string(1)) : " \t,";
    if (delimiters.find(' ') != std::string::npos && delimiters.find('\t') == std::string::npos) delimiters += '\t';
    std::string_view line = args.string(0);
    std::vector<std::string_view> tokens;
    if (iequals(args.string(2), "quoted")) {
        for (std::string_view t; !(t = sp_StrTok(line, delimiters)).empty();) tokens.push_back(t);
    } else {
        sp_ScanLine(line, delimiters, tokens);
    }
    return stringList(result, tokens);
}

FUNC_ERROR makeString(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.integer(0).value_or(0);
    if (n < 1) return FUNC_OK;
    if (!withinMadeElementLimit(n, info, *messages)) return FUNC_FAILED;
    if (!result->makeStrings(n)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    int64_t copied = args.has(1) ? std::min(n, args.length(1)) : 0;
    if (copied > 0) std::copy_n(args.stringData(1), copied, out);
    std::fill(out + copied, out + n, std::string());
    return FUNC_OK;
}

FUNC_ERROR nullString(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.integer(0).value_or(0);
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
    std::string_view pattern = args.string(1);
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
    std::string name(args.string(0));
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
    {"Str", {arg::String.orKinds(VD_REAL, VD_COMPLEX)}, 1, str,  // numbers as text
     {.signature = "Str(v)",
      .summary = "Numbers as text, element by element.",
      .returns = "a string vector as long as v, keeping v's x-values and runs",
      .notes = "Each number in the shortest form that reads back to the same value (\"0.1\", "
               "\"1e+300\", \"nan\"); complex as \"1.5-2j\". A string vector is returned as it is. "
               "FormatNumber gives display forms.",
      .example = "Str([0.1, 1e300]); Str((1.5, -2))"}},
    {"Val", {arg::Numeric.orKinds(VD_STRING)}, 1, val,  // text as numbers
     {.signature = "Val(v)",
      .summary = "Text as numbers, element by element.",
      .returns = "a real vector as long as v; a numeric v is returned as it is",
      .notes = "Reads an optional engineering suffix (\"2.2k\", \"10mV\" is 0.01) with blanks "
               "around allowed. Text that is not a number gives NaN, not a message.",
      .example = "Val([\"2.2k\", \"10mV\", \" -1e-3 \", \"abc\"])"}},
    {"Ascii", {arg::String}, 1, ascii,
     {.signature = "Ascii(s)",
      .summary = "The code of the first byte of s.",
      .returns = "one real value",
      .notes = "The byte is read as a signed 8-bit number, so bytes above 127 (UTF-8 letters such "
               "as é) give negative codes. \"\" gives 0.",
      .example = "Ascii(\"A\"); Ascii(\"\")"}},
    {"Chr", {arg::Real}, 1, chr,
     {.signature = "Chr(code)",
      .summary = "The one-byte string of a character code.",
      .returns = "one string",
      .notes = "The first element of code is rounded down and clamped to 0 … 255; code 0 gives \"\".",
      .example = "Chr(65) & Chr(98.7) & Chr(99)"}},
    {"Char", {arg::String, arg::Real}, 2, charAt,
     {.signature = "Char(s, index)",
      .summary = "The character (byte) of s at index, from 0.",
      .returns = "one string of one byte; \"\" when index is out of range",
      .notes = "A negative index counts from the end (-1 is the last byte).",
      .example = "Char(\"hello\", 1); Char(\"hello\", -1)"}},
    {"Mid", {arg::String, arg::Real, arg::Real}, 2, mid,
     {.signature = "Mid(s, start [, count])",
      .summary = "Part of s: count bytes from position start (from 0).",
      .returns = "one string",
      .notes = "Without count: to the end. start and the end are clamped to the string, so "
               "out-of-range values give a shorter or empty string, never a message.",
      .example = "Mid(\"abcdef\", 2, 3); Mid(\"abcdef\", 4)"}},
    {"StringLength", {arg::String}, 1, stringLength,
     {.signature = "StringLength(s)",
      .summary = "The length of s in bytes.",
      .returns = "one real value",
      .notes = "Bytes, not characters: a UTF-8 letter such as é counts 2.",
      .example = "StringLength(\"hello\"); StringLength(\"héllo\")"}},
    {"ToLower", {arg::String}, 1, transform<TextOp::Lower>,
     {.signature = "ToLower(s)",
      .summary = "s with ASCII letters in lower case.",
      .returns = "one string (from the first element of s)",
      .notes = "Other bytes, accented letters included, are left as they are.",
      .example = "ToLower(\"MiXeD 1\")"}},
    {"ToUpper", {arg::String}, 1, transform<TextOp::Upper>,
     {.signature = "ToUpper(s)",
      .summary = "s with ASCII letters in upper case.",
      .returns = "one string (from the first element of s)",
      .notes = "Other bytes, accented letters included, are left as they are.",
      .example = "ToUpper(\"MiXeD 1\")"}},
    {"StrStr", {arg::String, arg::String, arg::Real}, 2, strStr,
     {.signature = "StrStr(s, sought [, start])",
      .summary = "Where sought first occurs in s, ignoring ASCII letter case.",
      .returns = "one real value: a byte position, or -1 when not found",
      .notes = "The search begins at start (default 0). Beware: the position is counted from "
               "start, not from the beginning of s (StrStr(\"abcabc\", \"c\", 3) is 2).",
      .example = "StrStr(\"abcabc\", \"C\"); StrStr(\"abcabc\", \"c\", 3); StrStr(\"abc\", \"x\")"}},
    {"CountChars", {arg::String, arg::String}, 2, countChars,
     {.signature = "CountChars(s, chars)",
      .summary = "How often each byte of chars occurs in s.",
      .returns = "a real vector, one count per byte of chars",
      .notes = "Case counts (\"A\" and \"a\" differ).",
      .example = "CountChars(\"banana\", \"an\")"}},
    {"StringStartsWith", {arg::String, arg::String}, 2, startsWith,
     {.signature = "StringStartsWith(s, prefix)",
      .summary = "Whether s begins with prefix, letter case counting.",
      .returns = "one string: \"1\" or \"0\" (text, not a number)",
      .example = "StringStartsWith(\"filename.txt\", \"file\"); StringStartsWith(\"filename.txt\", \"File\")"}},
    {"SubstChar", {arg::String, arg::String, arg::String}, 3, substChar,
     {.signature = "SubstChar(s, chars, replacement)",
      .summary = "s with every byte that is in chars replaced by the first byte of replacement.",
      .returns = "one string",
      .notes = "An empty replacement cuts s at the first byte found (what is left is the text "
               "before it); use SubstString to delete.",
      .example = "SubstChar(\"a-b_c\", \"-_\", \" \")"}},
    {"SubstString", {arg::String, arg::String, arg::String, arg::String}, 3, substString,
     {.signature = "SubstString(s, old, new [, count])",
      .summary = "s with occurrences of old replaced by new.",
      .returns = "one string",
      .notes = "Once by default; all with \"all\"; else count as a number (0 or text that is not a "
               "number: none). Case-sensitive, left to right, never searching the text just "
               "inserted. An empty old is never found.",
      .example = "SubstString(\"a.b.c\", \".\", \"/\"); SubstString(\"a.b.c\", \".\", \"/\", \"all\")"}},
    {"Scan", {arg::String, arg::String, arg::Real}, 1, scan,
     {.signature = "Scan(s [, separator [, minCount]])",
      .summary = "s cut into fields at a separator; empty fields count.",
      .returns = "a string vector, padded with \"\" to at least minCount elements",
      .notes = "The separator is \";\" by default, else the first byte of separator. Its second and "
               "third bytes, when given and different, are quote marks: a field enclosed in them "
               "keeps its separators and loses the marks. Parse splits at runs of blanks instead.",
      .example = "Scan(\"a;b;;c\"); Scan(\"<a;b>;c\", \";<>\")"}},
    {"Parse", {arg::String, arg::String, arg::String}, 1, parse,
     {.signature = "Parse(s [, delimiters [, \"quoted\"]])",
      .summary = "s split into tokens at runs of delimiters; no empty token.",
      .returns = "a string vector",
      .notes = "Delimiters default to space, tab and comma; a set with a space but no tab also "
               "splits at tabs. With \"quoted\", text in double quotes or apostrophes stays one "
               "token, marks kept.",
      .example = "Parse(\"R1  10k, 2\"); Parse('say \"hi there\" now', ' ', 'quoted')"}},
    {"MakeString", {arg::Real, arg::String}, 1, makeString,
     {.signature = "MakeString(n [, first])",
      .summary = "A string vector of n elements: first, then empty strings.",
      .returns = "a string vector of n elements; none when n < 1",
      .notes = "More than 50,000,000 elements fail with a message.",
      .example = "MakeString(3, \"x\")"}},
    {"_NullString", {arg::Real}, 1, nullString,
     {.signature = "_NullString(n)",
      .summary = "A string vector of n null elements, to be filled later.",
      .returns = "a string vector of n elements",
      .notes = "Null elements read as \"\" wherever they are used. More than 50,000,000 elements "
               "fail with a message.",
      .example = "x = _NullString(2); length(x); x == [\"\", \"\"]"}},
    {"JoinStringArray", {arg::String, arg::String}, 2, joinStringArray, kWholeArgument,
     {.signature = "JoinStringArray(a, b)",
      .summary = "The strings of a followed by those of b.",
      .returns = "a string vector without x-values",
      .example = "JoinStringArray([\"a\", \"b\"], [\"c\"])"}},
    {"JoinVectors", {arg::Any, arg::Any}, 2, joinVectors, kWholeArgument,
     {.signature = "JoinVectors(a, b)",
      .summary = "The elements of a followed by those of b, of any one kind.",
      .returns = "a vector of a's and b's kind, without x-values and unit",
      .notes = "An empty argument gives way to the other's kind; two non-empty vectors of different "
               "kinds give an empty result.",
      .example = "JoinVectors([1, 2], [3]); JoinVectors([\"a\"], [])"}},
    {"MkVec", {arg::String}, 1, transform<TextOp::MkVec>,
     {.signature = "MkVec(name)",
      .summary = "A vector name written so that an expression can use it.",
      .returns = "one string",
      .notes = "A name holding a blank, a quote or one of `& + - * / ^ < > ' @ { } [ ] % ! ( )`, or "
               "beginning with a digit, becomes Vec('name'); any other is returned unchanged.",
      .example = "MkVec(\"out\"); MkVec(\"1st-node\")"}},
    {"EscapeString", {arg::String, arg::String}, 1, transform<TextOp::Escape>,
     {.signature = "EscapeString(s [, \"replaceSpaces\"])",
      .summary = "s with backslash escapes for quotes, backslashes and control bytes.",
      .returns = "one string",
      .notes = "Writes `\\\\`, `\\\"`, `\\n`, `\\r`, `\\t`, and `\\xHH` for other control bytes and invalid "
               "UTF-8; with \"replaceSpaces\" (any case) blanks become `\\x20` too. The escaping is "
               "reversible.",
      .example = "EscapeString(\"a\" & Chr(9) & \"b\" & Chr(34)); EscapeString(\"a b\", \"replaceSpaces\")"}},
    {"EscapeStringEncode", {arg::String, arg::String}, 1, transform<TextOp::Encode>,
     {.signature = "EscapeStringEncode(s [, \"replaceSpaces\"])",
      .summary = "s percent-encoded as in URLs (RFC 3986).",
      .returns = "one string",
      .notes = "Every byte but letters, digits and `- . _ ~` becomes %HH; with \"replaceSpaces\" (any "
               "case) a blank becomes + instead.",
      .example = "EscapeStringEncode(\"a b/c?d=1\"); EscapeStringEncode(\"a b\", \"replaceSpaces\")"}},
    {"RegExp", {arg::String, arg::String}, 2, regExp,
     {.signature = "RegExp(subjects, pattern)",
      .summary = "Matches a regular expression (Perl syntax) against each subject.",
      .returns = "a string vector: \"CompleteMatch\" or \"IncompleteMatch\", then for each subject "
                 "that matched its whole first match and each group",
      .notes = "\"CompleteMatch\" when every subject matched. UTF-8 when the pattern is. No subjects "
               "give an empty result; a malformed pattern fails with the reason.",
      .example = "RegExp([\"R12\", \"C3\", \"x\"], \"([A-Z])([0-9]+)\")"}},
    {"Hash", {arg::String}, 1, transform<TextOp::Hash>,
     {.signature = "Hash(s)",
      .summary = "A 32-bit hash of s, ignoring ASCII letter case.",
      .returns = "one string: the hash in decimal",
      .notes = "FNV-1a of the lower-cased bytes: the same on every machine and run.",
      .example = "Hash(\"abc\"); Hash(\"ABC\")"}},
    {"GetMD5", {arg::String}, 1, getMD5,
     {.signature = "GetMD5(file)",
      .summary = "The MD5 digest of a file's contents.",
      .returns = "one string of 32 lower-case hex digits; empty when the file cannot be read",
      .example = "GetMD5(\"/dev/null\"); length(GetMD5(\"missing.txt\"))"}},
    {"GetMD5String", {arg::String}, 1, transform<TextOp::MD5>,
     {.signature = "GetMD5String(s)",
      .summary = "The MD5 digest of the bytes of s.",
      .returns = "one string of 32 lower-case hex digits",
      .example = "GetMD5String(\"abc\")"}},
    {"GetGUID", {}, 0, getGUID,
     {.signature = "GetGUID()",
      .summary = "A new random identifier (UUID).",
      .returns = "one string, 36 characters: lower-case hex, hyphenated",
      .notes = "Different on every call.",
      .example = "g = GetGUID(); StringLength(g); Mid(g, 8, 1); g == GetGUID()"}},
};

const FuncFamily family(kFunctions);
const FuncAlias cvUUID("GetGUID", "CvUUID");

}  // namespace
}  // namespace wavex

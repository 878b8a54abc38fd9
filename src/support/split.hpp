// Cutting a line of text into fields and tokens. Three routines share one set of quoting rules:
//
//   sp_SplitLine  cuts at every occurrence of one separator character, so n separators make n + 1
//                 fields, empty ones included: "a;;b;" gives a, "", b, "" (and "" gives one empty
//                 field). The shape of a CSV record or of a semicolon-separated database line.
//   sp_ScanLine   cuts at runs of the characters of a delimiter set; no empty token is made between
//                 adjacent delimiters or at either end: "  a,, b " with " ," gives a, b. The C
//                 library's strtok, with quoting. The shape of a parameter string or netlist line.
//   sp_StrTok     takes the next token from a cursor as sp_ScanLine would, with the double quote and
//                 the apostrophe quoting and the quote marks kept; for callers that go token by token.
//
// Quoting. A quote pair is an opening and a closing character. Outside a quoted stretch, an opening
// character starts one, which runs to its closing character, or to the end of the line when there is
// none; separators and delimiters inside it do not cut. When the two characters of a pair differ,
// stretches nest ("<a<b;c>d>" is one stretch); when they are the same, the next occurrence closes.
// Inside a stretch only its own pair's characters count. A separator or delimiter character never
// opens or closes a stretch (a pair that involves one is ignored). A stretch may sit anywhere in a
// field: a"b c"d is one field.
//
// Quote marks. By default a field or token that is exactly one quoted stretch (it begins with an
// opening mark whose stretch closes at its last byte) loses those two enclosing marks: <a;b> gives
// a;b and "" the empty field. Marks anywhere else are kept, and so is an opening mark that is never
// closed. With kSplitKeepQuotes every mark is kept and each field is exactly the text of the line
// between its separators, so that joining the fields with the separator gives the line back.
//
// Fields and tokens are views into `line` (after enclosing marks are dropped a field is still a
// contiguous part of the line): they are valid as long as the text they view. Any byte values are
// handled, NUL and bytes that are not UTF-8 included; no routine allocates per field beyond the
// output vector.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace wavex {

enum SplitFlags : unsigned {
    kSplitKeepQuotes = 1u << 0,  // keep the enclosing quote marks of a quoted field or token
    kSplitTerminated = 1u << 1,  // sp_SplitLine: a separator at the very end of the line ends the
                                 // last field instead of starting an empty one ("a;b;" gives a, b)
};

// Cuts `line` at every `separator` into `fields` (cleared first); returns the number of fields,
// at least 1. The second form quotes with quotes[0] as the opening and quotes[1] as the closing
// character (quotes[0] for both when only one is given; no quoting when `quotes` is empty).
size_t sp_SplitLine(std::string_view line, char separator, std::vector<std::string_view>& fields,
                    unsigned flags = 0);
size_t sp_SplitLine(std::string_view line, char separator, std::string_view quotes,
                    std::vector<std::string_view>& fields, unsigned flags = 0);

// Cuts `line` at runs of the characters of `delimiters` into `tokens` (cleared first) and returns
// their number. At most `maximum` tokens are taken; the rest of the line is then not read. The
// second form quotes: openQuotes[k] opens a stretch that closeQuotes[k] closes (openQuotes[k]
// itself when closeQuotes has no k-th character), so "\"'" and "\"'" quote with either mark.
// Without quoting no token is ever empty; with it, a quoted empty stretch ("") is an empty token.
size_t sp_ScanLine(std::string_view line, std::string_view delimiters, std::vector<std::string_view>& tokens,
                   size_t maximum = SIZE_MAX);
size_t sp_ScanLine(std::string_view line, std::string_view delimiters, std::string_view openQuotes,
                   std::string_view closeQuotes, std::vector<std::string_view>& tokens,
                   size_t maximum = SIZE_MAX, unsigned flags = 0);

// The next token of `cursor`: delimiters before it are skipped, the token runs to the next delimiter
// outside a stretch quoted by '"' or '\'' (marks kept), and `cursor` is left just after the token.
// Returns the empty view, with `cursor` empty, when only delimiters remain; since quote marks are
// kept no token is ever empty, so an empty token means the end. A loop of sp_StrTok gives the
// tokens of sp_ScanLine(line, delimiters, "\"'", "\"'", tokens, SIZE_MAX, kSplitKeepQuotes).
std::string_view sp_StrTok(std::string_view& cursor, std::string_view delimiters);

}  // namespace wavex

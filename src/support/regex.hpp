// Regular-expression matching on PCRE2.
//
// Dialect: PCRE2's, which is Perl 5's: character classes, greedy, lazy (*?) and possessive (*+)
// quantifiers, numbered and named groups, back-references, lookahead and lookbehind, atomic groups,
// and inline options such as (?i) (case), (?m) (^ and $ at line ends), (?s) (. matches a newline)
// and (?x) (spacing and comments). Matching is case-sensitive unless (?i) says otherwise; ^ and $
// anchor at the ends of each subject ($ also before a final newline). \d \w \s and the POSIX
// classes are ASCII-only.
//
// Text: a pattern that is well-formed UTF-8 is compiled in UTF-8 mode, where . and classes match
// whole characters; a byte sequence in a subject that is not well-formed UTF-8 is then never part
// of a match, but the rest of the subject is searched as usual. A pattern that is not well-formed
// UTF-8 is compiled in byte mode, where every byte is one character (for text in a one-byte code
// page). Bytes of any value, NUL included, may appear in patterns and subjects.
//
// Several subjects: each is searched on its own, in order, for the first (leftmost) match. A
// subject that matches adds to `matches` the whole match followed by every capturing group of the
// pattern in number order (a group that took no part in the match adds an empty string), so each
// matching subject adds the same number of strings; a subject that does not match adds nothing.
// The answer is true when every subject matched ("complete") and false when some did not. To
// require that a whole subject matches, anchor the pattern with ^ and $ (or \A and \z).
//
// Failure: a malformed pattern, or a match that exceeds the limits (10,000,000 backtracking steps
// or 64 MiB of backtracking memory per subject, which catastrophic patterns such as (a+)+[^a] reach on
// long subjects), makes the routine return false with `matches` empty and *error set to PCRE2's
// reason: "missing closing parenthesis at offset 2", "match limit exceeded in subject 3".
// Otherwise *error is cleared. Nothing is thrown.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// `matches` receives views into `subjects`, valid as long as the subjects' text.
bool sp_RegExpMatches(std::span<const std::string_view> subjects, std::string_view pattern,
                      std::vector<std::string_view>& matches, std::string* error = nullptr);

// A pattern compiled once for testing many subjects (lines of a file) with the same dialect, text
// rules and limits.
class RegexSearch {
public:
    RegexSearch(std::string_view pattern, bool ignoreCase);
    ~RegexSearch();
    // Why the pattern did not compile ("missing closing parenthesis at offset 2"); "" when it did.
    const std::string& error() const { return error_; }
    // Whether `subject` holds a match; false with *error set when a limit was exceeded.
    bool search(std::string_view subject, std::string* error) const;

private:
    std::string error_;  // before impl_: the compiler writes it
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace wavex

// Parameter strings: one-line lists of settings such as a device's instance parameters, a few
// leading values without names followed by name and value pairs: `10k 2 w=1u l="0.5 u"`.
//
// The string is cut into tokens by sp_ScanLine at runs of the delimiters (" \t=," by default: the
// equals sign is only a delimiter), with quoting when asked for, so that a quoted stretch stays one
// token. The first U tokens are the unlabelled values, U being the caller's count clamped to the
// number of tokens; the k-th (from 1) is addressed by the name "$unlabelled$k". The tokens after
// them are taken two at a time as name and value. Names are matched without regard to ASCII case.
//
// Two readings of the same tokens:
//   Tokens   every token is searched for a name, values included, and the occurrence nearest the
//            end wins: in `a b c=1 d=2` the name 1 reads d. A last name without a value is dropped
//            when the string is rebuilt.
//   Entries  the tokens first become an ordered list of entries: "$unlabelled$k" for the k-th
//            unlabelled value, then one entry per pair, a last name without a value becoming an
//            entry with an empty value. Names are looked up among the entries' names only, the one
//            nearest the end winning, and any name that begins with "$unlabelled$" (any case) is
//            read as "$unlabelled$" followed by the atoi of the rest, so "$UNLABELLED$02" is the
//            second unlabelled value. A write reaches every entry of the name.
//
// Rebuilding (delete, write) writes the unlabelled values bare and each pair as name=value, one
// space between items, in the order of the string; values are written as the tokenizer returned
// them, quote marks included, and no quotes are added. Written values replace the value of the
// first pair of their name (Tokens) or of every entry of it (Entries); settings that match nothing
// are appended in the order of a chained hash table of 101 buckets (support/hash_table.hpp) keyed
// by name. An entry without a value is written last as its bare name, so that the rebuilt string
// reads back to the same entries.
//
// Quote marks: reading removes the two marks that enclose a whole token (`l="0.5 u"` reads 0.5 u);
// rebuilding keeps them, so that an untouched value is written back as it was.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

struct ParameterSyntax {
    std::string_view delimiters = " \t=,";
    bool quoted = false;                    // quote stretches stay one token
    std::string_view openQuotes = "\"'";    // openQuotes[k] opens a stretch that closeQuotes[k] closes
    std::string_view closeQuotes = "\"'";
};

enum class ParameterReading { Tokens, Entries };

// The most tokens a parameter string is cut into; the rest of the line is not read.
inline constexpr size_t kMaxParameterTokens = 2147483647;

class ParameterString {
public:
    // Cuts `text`, which must outlive the object, for reading (enclosing quote marks removed) or
    // for rebuilding (marks kept).
    enum Purpose { Read, Rebuild };
    ParameterString(std::string_view text, const ParameterSyntax& syntax, ParameterReading reading,
                    int64_t unlabelled, Purpose purpose);

    // The value of `name`, or "" when there is none.
    std::string_view read(std::string_view name) const;
    // The string without the entries of the given names.
    std::string remove(std::span<const std::string_view> names) const;
    // The string with the names set to the values, paired by position up to the shorter list; a
    // pair whose name or value is empty or only spaces and tabs is skipped.
    std::string write(std::span<const std::string_view> names, std::span<const std::string_view> values) const;

    // U: the count of unlabelled values, clamped to the tokens.
    size_t unlabelledCount() const { return unlabelled_; }

private:
    struct Item {
        std::string_view name;  // empty for an unlabelled value
        std::string_view value;
        size_t unlabelled;      // k for the k-th unlabelled value, else 0
        bool valueless;         // Entries: a last name without a value
    };
    // The name an item is looked up by: "$unlabelled$k", the name as written (Tokens), or its
    // canonical form (Entries).
    std::string key(const Item& item) const;
    std::string key(std::string_view name) const;
    void append(std::string& out, const Item& item, std::string_view name, std::string_view value) const;

    ParameterReading reading_;
    std::vector<std::string_view> tokens_;
    size_t unlabelled_;
    std::vector<Item> items_;
};

// A new parameter string from names and values paired by position up to the shorter list:
// name=value items joined by one space, a pair with an empty value skipped, a value that holds any
// character of `quoteIf` enclosed in double quotes.
std::string buildParameterString(std::span<const std::string_view> names, std::span<const std::string_view> values,
                                 std::string_view quoteIf = " \t");

}  // namespace wavex

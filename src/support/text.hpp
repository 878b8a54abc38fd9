// Small text helpers used across the layers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace wavex {

inline char asciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
inline char asciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

// Compares as the C library's _stricmp: byte by byte after lower-casing ASCII letters, bytes
// taken as unsigned; negative, zero or positive.
int stricmp(std::string_view a, std::string_view b);
inline bool iequals(std::string_view a, std::string_view b) { return a.size() == b.size() && stricmp(a, b) == 0; }
std::string toLower(std::string_view s);

// Whether two file names are the same name as the file system compares them: byte for byte where
// it tells letter case apart (every one but those of Windows and macOS), ignoring ASCII case
// elsewhere. Names are compared as given: no separator is normalised, no path resolved.
inline bool pathEquals(std::string_view a, std::string_view b) {
#if defined(_WIN32) || defined(__APPLE__)
    return iequals(a, b);
#else
    return a == b;
#endif
}
bool beginsWith(std::string_view s, std::string_view prefix);
std::string_view trim(std::string_view s);

// The hash of a string as the hash tables use it: 32-bit FNV-1a over the bytes with ASCII letters
// lower-cased, so keys that differ only in letter case hash alike.
uint32_t hashValue(std::string_view s);

// Hash and equality that ignore ASCII case, for unordered containers keyed by names.
struct CaseInsensitiveHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const;
};
struct CaseInsensitiveEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const { return iequals(a, b); }
};

// Reads the whole file at `path` into `text`: a regular file at its size in one read, anything
// else (a pipe) in pieces, up to `maxStreamBytes`. Returns "" when it was read, else the message:
// "Cannot open file 'PATH'", "Cannot read file 'PATH'" or "File 'PATH' is too large to read"
// (`text` is then empty).
std::string readWholeFile(const std::string& path, std::string& text, size_t maxStreamBytes = SIZE_MAX);

// Writes `text` as the file at `path`: into a temporary file beside it, renamed over the path once
// complete, so that a failure never leaves a half-written file. Returns "" when written, else
// "Cannot write file 'PATH'".
std::string writeWholeFile(const std::string& path, std::string_view text);

}  // namespace wavex

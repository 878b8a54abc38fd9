// Fuzzes the line cutters: sp_SplitLine (both forms), sp_ScanLine (both forms) and sp_StrTok, and
// checks what their header promises. The first byte chooses the flags and the maximum token count,
// the next three are the separator and the quote pair (used as one separator set for sp_ScanLine),
// the rest is the line.
#include "fuzz_check.hpp"
#include "support/split.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Every piece lies inside the line.
void inside(const std::vector<std::string_view>& pieces, std::string_view line) {
    for (std::string_view p : pieces)
        check(p.data() >= line.data() && p.data() + p.size() <= line.data() + line.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace wavex;
    if (size < 4) return 0;
    std::string_view in(reinterpret_cast<const char*>(data), size);
    unsigned flags = static_cast<unsigned char>(in[0]) & 3;
    size_t maximum = static_cast<unsigned char>(in[0]) >> 2;  // 0..63
    char separator = in[1];
    std::string_view quotes = in.substr(2, 2);
    std::string_view delimiters = in.substr(1, 1 + (static_cast<unsigned char>(in[0]) & 1));
    std::string_view line = in.substr(4);
    std::vector<std::string_view> pieces;

    // Splitting keeps every field; with the quote marks kept the fields join back to the line.
    size_t n = sp_SplitLine(line, separator, pieces, flags);
    check(n == pieces.size() && n >= 1);
    inside(pieces, line);
    n = sp_SplitLine(line, separator, quotes, pieces, flags | kSplitKeepQuotes);
    inside(pieces, line);
    std::string joined;
    for (size_t i = 0; i < n; ++i) joined.append(i ? 1 : 0, separator).append(pieces[i]);
    if (flags & kSplitTerminated && !line.empty() && line.back() == separator && joined.size() + 1 == line.size())
        joined += separator;
    check(joined == line);
    sp_SplitLine(line, separator, quotes, pieces, flags);
    inside(pieces, line);

    // Scanning without quotes: no empty token, none holding a delimiter, at most `maximum`.
    n = sp_ScanLine(line, delimiters, pieces, maximum);
    check(n == pieces.size() && n <= maximum);
    inside(pieces, line);
    for (std::string_view p : pieces) check(!p.empty() && p.find_first_of(delimiters) == std::string_view::npos);
    sp_ScanLine(line, delimiters, quotes, quotes.substr(1), pieces, maximum, flags);
    check(pieces.size() <= maximum);
    inside(pieces, line);

    // sp_StrTok gives the tokens of sp_ScanLine with the default quotes, kept.
    sp_ScanLine(line, delimiters, "\"'", "\"'", pieces, SIZE_MAX, kSplitKeepQuotes);
    std::string_view cursor = line;
    size_t k = 0;
    for (std::string_view t; !(t = sp_StrTok(cursor, delimiters)).empty(); ++k) check(k < pieces.size() && t == pieces[k]);
    check(k == pieces.size() && cursor.empty());
    return 0;
}

#include "support/split.hpp"

#include <algorithm>
#include <array>

namespace wavex {
namespace {

constexpr size_t npos = std::string_view::npos;

inline unsigned char byte(char c) { return static_cast<unsigned char>(c); }

// The character classes of one cut: which bytes delimit, and which open a quoted stretch with
// which closing byte. Built once per call of a routine.
class Cutter {
public:
    Cutter(std::string_view delimiters, std::string_view open, std::string_view close) {
        delimiter_.fill(false);
        closer_.fill(-1);
        for (char c : delimiters) delimiter_[byte(c)] = true;
        for (size_t k = 0; k < open.size(); ++k) {
            unsigned char o = byte(open[k]);
            unsigned char c = k < close.size() ? byte(close[k]) : o;
            if (delimiter_[o] || delimiter_[c] || closer_[o] >= 0) continue;  // the first pairing wins
            closer_[o] = c;
            quoting_ = true;
        }
    }

    bool isDelimiter(char c) const { return delimiter_[byte(c)]; }

    // End of the field that starts at `begin`: the first delimiter outside quoted stretches, or the
    // end of the line. *enclosed tells whether the field is exactly one quoted stretch.
    size_t fieldEnd(std::string_view line, size_t begin, bool* enclosed) const {
        *enclosed = false;
        size_t n = line.size();
        size_t i = begin;
        if (!quoting_) {
            while (i < n && !delimiter_[byte(line[i])]) ++i;
            return i;
        }
        size_t firstStretchEnd = npos;
        while (i < n) {
            unsigned char c = byte(line[i]);
            if (delimiter_[c]) break;
            if (closer_[c] < 0) {
                ++i;
                continue;
            }
            size_t end = stretchEnd(line, i, static_cast<char>(c), static_cast<char>(closer_[c]));
            if (i == begin) firstStretchEnd = end;
            i = end == npos ? n : end;
        }
        *enclosed = firstStretchEnd == i;
        return i;
    }

private:
    // Index just past the closing mark of the stretch that opens at line[i], or npos when the
    // stretch is never closed.
    static size_t stretchEnd(std::string_view line, size_t i, char open, char close) {
        if (open == close) {
            size_t j = line.find(close, i + 1);
            return j == npos ? npos : j + 1;
        }
        size_t depth = 1;
        for (size_t j = i + 1; j < line.size(); ++j) {
            if (line[j] == close) {
                if (--depth == 0) return j + 1;
            } else if (line[j] == open) {
                ++depth;
            }
        }
        return npos;
    }

    std::array<bool, 256> delimiter_;
    std::array<int16_t, 256> closer_;  // closing byte of a stretch opened by this byte, or -1
    bool quoting_ = false;
};

std::string_view piece(std::string_view line, size_t begin, size_t end, bool enclosed, unsigned flags) {
    if (enclosed && !(flags & kSplitKeepQuotes)) {
        ++begin;
        --end;
    }
    return line.substr(begin, end - begin);
}

}  // namespace

size_t sp_SplitLine(std::string_view line, char separator, std::string_view quotes,
                    std::vector<std::string_view>& fields, unsigned flags) {
    fields.clear();
    // Room for every field at once (a separator inside quotes only makes this an upper bound), so
    // that a long line is not copied as the vector grows.
    fields.reserve(static_cast<size_t>(std::count(line.begin(), line.end(), separator)) + 1);
    Cutter cut(std::string_view(&separator, 1), quotes.substr(0, 1), quotes.substr(quotes.size() > 1 ? 1 : 0, 1));
    size_t begin = 0;
    for (;;) {
        bool enclosed = false;
        // Without quoting, the separator is found by the C library's memchr.
        size_t end = quotes.empty() ? line.find(separator, begin) : cut.fieldEnd(line, begin, &enclosed);
        if (end == npos) end = line.size();
        fields.push_back(piece(line, begin, end, enclosed, flags));
        if (end == line.size()) break;
        begin = end + 1;
        if (begin == line.size() && (flags & kSplitTerminated)) break;
    }
    return fields.size();
}

size_t sp_SplitLine(std::string_view line, char separator, std::vector<std::string_view>& fields, unsigned flags) {
    return sp_SplitLine(line, separator, {}, fields, flags);
}

size_t sp_ScanLine(std::string_view line, std::string_view delimiters, std::string_view openQuotes,
                   std::string_view closeQuotes, std::vector<std::string_view>& tokens, size_t maximum,
                   unsigned flags) {
    tokens.clear();
    tokens.reserve(std::min(maximum, line.size() / 2 + 1));  // a token and its delimiter take 2 bytes
    Cutter cut(delimiters, openQuotes, closeQuotes);
    size_t i = 0;
    while (tokens.size() < maximum) {
        while (i < line.size() && cut.isDelimiter(line[i])) ++i;
        if (i == line.size()) break;
        bool enclosed = false;
        size_t end = cut.fieldEnd(line, i, &enclosed);
        tokens.push_back(piece(line, i, end, enclosed, flags));
        i = end;
    }
    return tokens.size();
}

size_t sp_ScanLine(std::string_view line, std::string_view delimiters, std::vector<std::string_view>& tokens,
                   size_t maximum) {
    return sp_ScanLine(line, delimiters, {}, {}, tokens, maximum, 0);
}

std::string_view sp_StrTok(std::string_view& cursor, std::string_view delimiters) {
    Cutter cut(delimiters, "\"'", "\"'");
    size_t i = 0;
    while (i < cursor.size() && cut.isDelimiter(cursor[i])) ++i;
    bool enclosed = false;
    size_t end = cut.fieldEnd(cursor, i, &enclosed);
    std::string_view token = cursor.substr(i, end - i);
    cursor.remove_prefix(end);
    return token;
}

}  // namespace wavex

#include "support/text.hpp"

namespace wavex {

int stricmp(std::string_view a, std::string_view b) {
    size_t n = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < n; ++i) {
        int ca = static_cast<unsigned char>(asciiLower(a[i]));
        int cb = static_cast<unsigned char>(asciiLower(b[i]));
        if (ca != cb) return ca - cb;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -static_cast<unsigned char>(asciiLower(b[n]))
                               : static_cast<unsigned char>(asciiLower(a[n]));
}

std::string toLower(std::string_view s) {
    std::string r(s);
    for (char& c : r) c = asciiLower(c);
    return r;
}

bool beginsWith(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && s.substr(0, prefix.size()) == prefix;
}

std::string_view trim(std::string_view s) {
    const char* ws = " \t\r\n\f\v";
    size_t b = s.find_first_not_of(ws);
    if (b == std::string_view::npos) return {};
    size_t e = s.find_last_not_of(ws);
    return s.substr(b, e - b + 1);
}

uint32_t hashValue(std::string_view s) {
    uint32_t h = 2166136261u;
    for (char c : s) {
        h ^= static_cast<unsigned char>(asciiLower(c));
        h *= 16777619u;
    }
    return h;
}

size_t CaseInsensitiveHash::operator()(std::string_view s) const {
    size_t h = 14695981039346656037ull;  // FNV-1a over lower-cased bytes
    for (char c : s) {
        h ^= static_cast<unsigned char>(asciiLower(c));
        h *= 1099511628211ull;
    }
    return h;
}

}  // namespace wavex

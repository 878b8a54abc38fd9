#include "support/escape.hpp"

namespace wavex {
namespace {

inline unsigned char byte(char c) { return static_cast<unsigned char>(c); }

void appendHex(std::string& out, const char* prefix, unsigned char b, const char* digits) {
    out += prefix;
    out += digits[b >> 4];
    out += digits[b & 15];
}

// Value of a hexadecimal digit, or -1.
int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The byte written as two hexadecimal digits at text[i], or -1.
int hexByte(std::string_view text, size_t i) {
    if (i + 2 > text.size()) return -1;
    int hi = hexValue(text[i]), lo = hexValue(text[i + 1]);
    return hi < 0 || lo < 0 ? -1 : hi * 16 + lo;
}

bool unreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

}  // namespace

size_t utf8SequenceLength(std::string_view text, size_t i) {
    unsigned char b0 = byte(text[i]);
    if (b0 < 0x80) return 1;
    size_t n;
    unsigned char lo = 0x80, hi = 0xBF;  // allowed range of the second byte
    if (b0 >= 0xC2 && b0 <= 0xDF) n = 2;
    else if (b0 >= 0xE0 && b0 <= 0xEF) {
        n = 3;
        if (b0 == 0xE0) lo = 0xA0;        // overlong
        else if (b0 == 0xED) hi = 0x9F;   // surrogates
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        n = 4;
        if (b0 == 0xF0) lo = 0x90;        // overlong
        else if (b0 == 0xF4) hi = 0x8F;   // above U+10FFFF
    } else {
        return 0;
    }
    if (i + n > text.size()) return 0;
    unsigned char b1 = byte(text[i + 1]);
    if (b1 < lo || b1 > hi) return 0;
    for (size_t k = 2; k < n; ++k)
        if ((byte(text[i + k]) & 0xC0) != 0x80) return 0;
    return n;
}

std::string sp_EscapeString(std::string_view text, bool replaceSpaces) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    for (size_t i = 0; i < text.size();) {
        unsigned char c = byte(text[i]);
        if (c >= 0x80) {
            size_t n = utf8SequenceLength(text, i);
            if (n == 0) {
                appendHex(out, "\\x", c, digits);
                ++i;
            } else {
                out.append(text.substr(i, n));
                i += n;
            }
            continue;
        }
        switch (c) {
            case '\\': out += "\\\\"; break;
            case '"': out += "\\\""; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (c < 0x20 || c == 0x7F || (c == ' ' && replaceSpaces)) appendHex(out, "\\x", c, digits);
                else out += static_cast<char>(c);
        }
        ++i;
    }
    return out;
}

std::string sp_UnescapeString(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c != '\\' || i + 1 == text.size()) {
            out += c;
            continue;
        }
        switch (text[i + 1]) {
            case '\\': out += '\\'; ++i; break;
            case '"': out += '"'; ++i; break;
            case 'n': out += '\n'; ++i; break;
            case 'r': out += '\r'; ++i; break;
            case 't': out += '\t'; ++i; break;
            case 'x':
                if (int b = hexByte(text, i + 2); b >= 0) {
                    out += static_cast<char>(b);
                    i += 3;
                    break;
                }
                [[fallthrough]];
            default: out += c; break;  // not an escape: the backslash stands for itself
        }
    }
    return out;
}

std::string sp_EscapeStringEncode(std::string_view text, bool replaceSpaces) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size() + text.size() / 4);
    for (char ch : text) {
        unsigned char c = byte(ch);
        if (unreserved(c)) out += ch;
        else if (c == ' ' && replaceSpaces) out += '+';
        else appendHex(out, "%", c, digits);
    }
    return out;
}

std::string sp_EscapeStringDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '+') {
            out += ' ';
        } else if (int b = c == '%' ? hexByte(text, i + 1) : -1; b >= 0) {
            out += static_cast<char>(b);
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace wavex

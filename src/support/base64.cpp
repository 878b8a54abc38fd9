#include "support/base64.hpp"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace wavex {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kInvalid = 0x80;  // any decode-table entry with this bit is not a digit
constexpr uint8_t kSpace = 0xC0;

// Two Base64 digits for every 12-bit value: the encoder emits a character pair per lookup.
constexpr auto kPairs = [] {
    std::array<char, 2 * 4096> t{};
    for (int v = 0; v < 4096; ++v) {
        t[2 * v] = kAlphabet[v >> 6];
        t[2 * v + 1] = kAlphabet[v & 63];
    }
    return t;
}();

constexpr auto kDigits = [] {
    std::array<uint8_t, 256> t{};
    t.fill(kInvalid);
    for (int i = 0; i < 64; ++i) t[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
    for (char c : {' ', '\t', '\r', '\n'}) t[static_cast<unsigned char>(c)] = kSpace;
    return t;
}();

std::array<unsigned char, 8> littleEndian(uint64_t v) {
    std::array<unsigned char, 8> b;
    for (int i = 0; i < 8; ++i) b[i] = static_cast<unsigned char>(v >> (8 * i));
    return b;
}

std::optional<uint64_t> word(const YBase64Converter& cv, std::string_view text) {
    std::optional<std::string> bytes = cv.decode(text);
    if (!bytes || bytes->size() != 8) return std::nullopt;
    uint64_t v = 0;
    for (int i = 0; i < 8; ++i) v |= static_cast<uint64_t>(static_cast<unsigned char>((*bytes)[i])) << (8 * i);
    return v;
}

// Decodes text free of white space. False when it is refused.
bool decodeCompact(std::string_view in, std::string& out) {
    size_t n = in.size();
    size_t pads = 0;
    while (pads < 2 && pads < n && in[n - 1 - pads] == '=') ++pads;
    if (pads && n % 4 != 0) return false;
    size_t body = n - pads;
    size_t tail = body % 4;  // digits of the last, short group
    if (tail == 1) return false;
    out.resize(body / 4 * 3 + (tail ? tail - 1 : 0));

    const unsigned char* p = reinterpret_cast<const unsigned char*>(in.data());
    unsigned char* o = reinterpret_cast<unsigned char*>(out.data());
    uint8_t bad = 0;
    for (size_t g = 0; g < body / 4; ++g, p += 4, o += 3) {
        uint8_t a = kDigits[p[0]], b = kDigits[p[1]], c = kDigits[p[2]], d = kDigits[p[3]];
        bad |= a | b | c | d;
        uint32_t v = uint32_t{a} << 18 | uint32_t{b} << 12 | uint32_t{c} << 6 | d;
        o[0] = static_cast<unsigned char>(v >> 16);
        o[1] = static_cast<unsigned char>(v >> 8);
        o[2] = static_cast<unsigned char>(v);
    }
    if (bad & kInvalid) return false;
    if (tail) {
        uint8_t a = kDigits[p[0]], b = kDigits[p[1]], c = tail == 3 ? kDigits[p[2]] : 0;
        if ((a | b | c) & kInvalid) return false;
        uint32_t v = uint32_t{a} << 18 | uint32_t{b} << 12 | uint32_t{c} << 6;
        if (v & (tail == 2 ? 0xFFFF : 0xFF)) return false;  // pad bits must be zero
        o[0] = static_cast<unsigned char>(v >> 16);
        if (tail == 3) o[1] = static_cast<unsigned char>(v >> 8);
    }
    return true;
}

}  // namespace

std::string YBase64Converter::encode(std::span<const unsigned char> in) const {
    std::string out((in.size() + 2) / 3 * 4, '=');
    const unsigned char* p = in.data();
    char* o = out.data();
    size_t whole = in.size() / 3;
    for (size_t g = 0; g < whole; ++g, p += 3, o += 4) {
        uint32_t v = uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2];
        std::memcpy(o, &kPairs[2 * (v >> 12)], 2);
        std::memcpy(o + 2, &kPairs[2 * (v & 0xFFF)], 2);
    }
    size_t rest = in.size() - 3 * whole;
    if (rest) {
        uint32_t v = uint32_t{p[0]} << 16 | (rest == 2 ? uint32_t{p[1]} << 8 : 0);
        o[0] = kAlphabet[v >> 18];
        o[1] = kAlphabet[(v >> 12) & 63];
        if (rest == 2) o[2] = kAlphabet[(v >> 6) & 63];
    }
    return out;
}

std::string YBase64Converter::encodeString(std::string_view text) const {
    return encode({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

std::string YBase64Converter::encodeDouble(double value) const {
    return encode(littleEndian(std::bit_cast<uint64_t>(value)));
}

std::string YBase64Converter::encodeInt64(int64_t value) const {
    return encode(littleEndian(static_cast<uint64_t>(value)));
}

std::optional<std::string> YBase64Converter::decode(std::string_view text) const {
    std::string out;
    if (decodeCompact(text, out)) return out;
    // Refused as it stands: try again without white space, if it has any.
    std::string compact;
    compact.reserve(text.size());
    for (char c : text)
        if (kDigits[static_cast<unsigned char>(c)] != kSpace) compact += c;
    if (compact.size() == text.size() || !decodeCompact(compact, out)) return std::nullopt;
    return out;
}

std::string YBase64Converter::decodeString(std::string_view text) const { return decode(text).value_or(""); }

double YBase64Converter::decodeDouble(std::string_view text) const {
    std::optional<uint64_t> v = word(*this, text);
    return v ? std::bit_cast<double>(*v) : std::nan("");
}

std::optional<int64_t> YBase64Converter::decodeInt64(std::string_view text) const {
    std::optional<uint64_t> v = word(*this, text);
    if (!v) return std::nullopt;
    return static_cast<int64_t>(*v);
}

}  // namespace wavex

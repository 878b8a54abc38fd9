// Base64 (RFC 4648, standard alphabet A–Z a–z 0–9 + /, padded with '=').
//
// Encoding writes one line, no line breaks. Numbers are encoded as their 8 bytes in little-endian
// order: a double as its IEEE 754 bits (so -0, infinities and every NaN payload come back
// exactly), a 64-bit integer in two's complement; both give 12 characters ending in '='.
//
// Decoding ignores white space (space, tab, CR, LF: text wrapped by mail or PEM tools) and
// accepts the padding or its absence. It refuses anything else: characters outside the alphabet,
// '=' other than one or two at the end, a length that cannot come from an encoder (one
// character left over), and pad bits that are not zero (only the canonical encoding of each
// byte string is accepted, so every accepted text has exactly one meaning). Refused text decodes
// to nullopt here; the string decoder gives "" and the number decoders NaN or nullopt.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wavex {

class YBase64Converter {
public:
    std::string encode(std::span<const unsigned char> bytes) const;
    std::string encodeString(std::string_view text) const;
    std::string encodeDouble(double value) const;
    std::string encodeInt64(int64_t value) const;

    std::optional<std::string> decode(std::string_view base64) const;
    // "" when the text is refused.
    std::string decodeString(std::string_view base64) const;
    // NaN when the text is refused or does not hold exactly 8 bytes.
    double decodeDouble(std::string_view base64) const;
    // nullopt when the text is refused or does not hold exactly 8 bytes.
    std::optional<int64_t> decodeInt64(std::string_view base64) const;
};

}  // namespace wavex

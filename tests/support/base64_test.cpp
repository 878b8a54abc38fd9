// The Base64 converter: RFC 4648 vectors, every byte value, numbers as 8 little-endian bytes, and
// the text it refuses.
#include "support/base64.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace wavex {
namespace {

const YBase64Converter cv;

TEST(Base64, Rfc4648Vectors) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},         {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (auto [text, base64] : cases) {
        EXPECT_EQ(cv.encodeString(text), base64);
        EXPECT_EQ(cv.decode(base64), text) << base64;
    }
}

TEST(Base64, EveryByteValueAndNulBytes) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    const std::string encoded = cv.encodeString(all);
    EXPECT_EQ(encoded.substr(0, 24), "AAECAwQFBgcICQoLDA0ODxAR");
    EXPECT_EQ(encoded.substr(encoded.size() - 16), "9vf4+fr7/P3+/w==");
    EXPECT_EQ(cv.decode(encoded), all);
    for (size_t n = 0; n < 12; ++n) EXPECT_EQ(cv.decode(cv.encodeString(all.substr(250 - n, n))), all.substr(250 - n, n));
}

TEST(Base64, AcceptedSpellings) {
    const std::pair<const char*, const char*> cases[] = {
        {"Zg", "f"},                        // padding left out
        {"Zm8", "fo"},
        {" Zm9v\r\nYmE= \n", "fooba"},      // wrapped lines, spaces
        {"\t", ""},
    };
    for (auto [base64, text] : cases) EXPECT_EQ(cv.decode(base64), text) << base64;
}

TEST(Base64, RefusedText) {
    const char* cases[] = {
        "Z",         // one character left over
        "Zm9vY",
        "Zg=",       // padding that does not complete a group
        "Zm8==",
        "Zg===",
        "=",
        "Zh==",      // pad bits not zero
        "Zm9=",
        "Zg==Zg==",  // '=' inside
        "Zm9v!",     // outside the alphabet
        "Zm-_",      // the URL-safe alphabet is another encoding
        "Zm9v\xC3\xA9",
    };
    for (const char* base64 : cases) {
        EXPECT_EQ(cv.decode(base64), std::nullopt) << base64;
        EXPECT_EQ(cv.decodeString(base64), "") << base64;
        EXPECT_TRUE(std::isnan(cv.decodeDouble(base64))) << base64;
    }
}

TEST(Base64, NumbersAsEightLittleEndianBytes) {
    const std::pair<double, const char*> doubles[] = {
        {1.0, "AAAAAAAA8D8="}, {-0.0, "AAAAAAAAAIA="}, {0.1, "mpmZmZmZuT8="},
        {std::numeric_limits<double>::infinity(), "AAAAAAAA8H8="},
    };
    for (auto [value, base64] : doubles) {
        EXPECT_EQ(cv.encodeDouble(value), base64);
        EXPECT_EQ(std::bit_cast<uint64_t>(cv.decodeDouble(base64)), std::bit_cast<uint64_t>(value)) << base64;
    }
    // A NaN payload comes back bit for bit.
    double payload = std::bit_cast<double>(uint64_t{0x7FF8'0000'DEAD'BEEF});
    EXPECT_EQ(std::bit_cast<uint64_t>(cv.decodeDouble(cv.encodeDouble(payload))), 0x7FF8'0000'DEAD'BEEFu);

    const std::pair<int64_t, const char*> integers[] = {
        {-2, "/v////////8="}, {INT64_MAX, "/////////38="}, {INT64_MIN, "AAAAAAAAAIA="},
    };
    for (auto [value, base64] : integers) {
        EXPECT_EQ(cv.encodeInt64(value), base64);
        EXPECT_EQ(cv.decodeInt64(base64), value);
    }
    // Valid Base64 of other than 8 bytes is no number.
    EXPECT_TRUE(std::isnan(cv.decodeDouble("Zm9vYmFy")));
    EXPECT_EQ(cv.decodeInt64(""), std::nullopt);
}

}  // namespace
}  // namespace wavex

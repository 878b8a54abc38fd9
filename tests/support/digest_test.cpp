#include "support/digest.hpp"
#include "support/regex.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace wavex {
namespace {

TEST(MD5, MatchesTheReferenceSuite) {
    // The test suite of RFC 1321, appendix A.5.
    const std::pair<std::string, std::string> cases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& [text, digest] : cases) EXPECT_EQ(sp_GetMD5(text), digest) << text;
}

TEST(MD5, OfAFileIsThatOfItsBytesFromTheCurrentPosition) {
    std::string bytes;
    for (int i = 0; i < 200000; ++i) bytes += static_cast<char>(i * 7 % 256);  // several read blocks
    std::string path = testing::TempDir() + "digest_test.bin";
    std::FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);

    f = std::fopen(path.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(sp_GetMD5(f), sp_GetMD5(bytes));
    std::fseek(f, 100, SEEK_SET);
    EXPECT_EQ(sp_GetMD5(f), sp_GetMD5(std::string_view(bytes).substr(100)));
    std::fclose(f);
    std::remove(path.c_str());

    f = std::fopen(testing::TempDir().c_str(), "rb");  // a directory opens but cannot be read
    if (f) {
        EXPECT_EQ(sp_GetMD5(f), std::nullopt);
        std::fclose(f);
    }
}

TEST(GUID, IsARandomVersion4UuidInLowerCase) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        std::string id = sp_GetGUID();
        std::string_view subject = id;
        std::vector<std::string_view> matches;
        ASSERT_TRUE(sp_RegExpMatches({&subject, 1}, "^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$",
                                     matches))
            << id;
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

}  // namespace
}  // namespace wavex

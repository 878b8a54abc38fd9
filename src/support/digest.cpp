#include "support/digest.hpp"

#include <md5.h>
#include <uuid/uuid.h>

#include <vector>

namespace wavex {
namespace {

std::string hexDigest(MD5_CTX& context) {
    char text[MD5_DIGEST_STRING_LENGTH];
    MD5End(&context, text);  // lower-case hexadecimal
    return std::string(text, MD5_DIGEST_LENGTH * 2);
}

}  // namespace

std::string sp_GetMD5(std::string_view bytes) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return hexDigest(context);
}

std::optional<std::string> sp_GetMD5(std::FILE* file) {
    MD5_CTX context;
    MD5Init(&context);
    std::vector<uint8_t> buffer(size_t{1} << 16);
    size_t n;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), file)) > 0) MD5Update(&context, buffer.data(), n);
    if (std::ferror(file)) return std::nullopt;
    return hexDigest(context);
}

std::string sp_GetGUID() {
    uuid_t id;
    uuid_generate_random(id);
    char text[37];
    uuid_unparse_lower(id, text);
    return std::string(text, 36);
}

}  // namespace wavex

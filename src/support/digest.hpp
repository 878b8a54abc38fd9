// Message digests and unique identifiers.
//
// MD5 (RFC 1321, computed by libmd) is written as 32 lower-case hexadecimal digits:
// sp_GetMD5("abc") is "900150983cd24fb0d6963f7d28e17f72". A GUID is a random (version 4, RFC 4122
// variant) UUID from libuuid, written in lower case as 36 characters in five hyphenated groups:
// "1b4e28ba-2fa1-41d2-883f-0016d3cca427".
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace wavex {

// The digest of these bytes.
std::string sp_GetMD5(std::string_view bytes);
// The digest of the bytes of `file` from its current position to its end; nullopt when reading
// fails (a directory, an I/O error). The file stays open.
std::optional<std::string> sp_GetMD5(std::FILE* file);

// A new identifier, from the system's random source.
std::string sp_GetGUID();

}  // namespace wavex

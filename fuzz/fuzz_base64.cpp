// Fuzzes the Base64 decoder. Whatever it accepts must encode back to text that decodes to the
// same bytes; and any bytes must survive encoding and decoding.
#include "support/base64.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    wavex::YBase64Converter cv;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    if (auto bytes = cv.decode(text)) {
        if (cv.decode(cv.encodeString(*bytes)) != bytes) std::abort();
    }
    if (cv.decode(cv.encodeString(text)) != std::string(text)) std::abort();
    (void)cv.decodeDouble(text);
    return 0;
}

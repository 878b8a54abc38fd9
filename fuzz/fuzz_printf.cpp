// Fuzzes the printf template formatter with the values a script can give it. The first two bytes
// choose up to seven values, two bits each (empty, integer, number, text); the next bytes give
// their contents; the rest is the template. Checks that a refused template says why and that a
// formatted one is no longer than its directives can make it.
#include "fuzz_check.hpp"
#include "wavex/printf.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using wavex::PrintfArg;
    if (size < 2) return 0;
    std::string_view in(reinterpret_cast<const char*>(data), size);
    unsigned kinds = static_cast<unsigned char>(in[0]) | static_cast<unsigned char>(in[1]) << 8;
    in.remove_prefix(2);
    std::vector<PrintfArg> args;
    size_t textBytes = 0;
    for (int k = 0; k < 7; ++k) {
        switch (kinds >> (2 * k) & 3) {
            case 2: {  // a double from eight bytes (any bit pattern: NaN, infinities, subnormals)
                double v = 0;
                std::memcpy(&v, in.data(), std::min<size_t>(in.size(), sizeof v));
                in.remove_prefix(std::min<size_t>(in.size(), sizeof v));
                args.emplace_back(v);
                break;
            }
            case 1: {  // an integer from eight bytes
                int64_t v = 0;
                std::memcpy(&v, in.data(), std::min<size_t>(in.size(), sizeof v));
                in.remove_prefix(std::min<size_t>(in.size(), sizeof v));
                args.emplace_back(static_cast<long long>(v));
                break;
            }
            case 3: {  // text up to the next NUL byte
                size_t end = std::min(in.find('\0'), in.size());
                args.emplace_back(in.substr(0, end));
                textBytes += end;
                in.remove_prefix(std::min(end + 1, in.size()));
                break;
            }
            default: args.emplace_back(); break;  // empty: skipped by the directives
        }
    }
    std::string error;
    auto text = wavex::formatPrintf(in, args, &error);
    if (!text) {
        check(!error.empty());
        return 0;
    }
    // Each directive takes at least two template bytes and writes at most some 700 bytes beyond the
    // text of its value.
    check(text->size() <= in.size() + 7 * 700 + textBytes);
    return 0;
}

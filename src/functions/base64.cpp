// Base64 conversion: ConvertToBase64, ConvertFromBase64, ConvertNumberToBase64,
// ConvertNumberFromBase64, _ConvertIntegerToBase64.
//
// Each takes one argument and gives one value, through the RFC 4648 converter of
// support/base64.hpp: text to and from its bytes' encoding; a number (the first element of a real
// vector) to and from the encoding of its 8 little-endian IEEE 754 bytes, so it comes back bit
// for bit; _ConvertIntegerToBase64 truncates the number toward zero to a 64-bit integer first
// (saturating; NaN gives the smallest integer) and encodes its 8 little-endian bytes. An empty
// vector's first element is taken as NaN.
//
// Bad input: no messages. Text that is not Base64 (characters outside the alphabet, misplaced
// '=', a stray last character, non-zero pad bits) decodes to "" for ConvertFromBase64 and to NaN
// for ConvertNumberFromBase64, which also gives NaN for valid Base64 of other than 8 bytes.
#include "support/base64.hpp"
#include "support/numbers.hpp"
#include "wavex/function.hpp"

namespace wavex {
namespace {

enum class Op { EncodeString, DecodeString, EncodeNumber, DecodeNumber, EncodeInteger };

template <Op op>
FUNC_ERROR convert(WAVEX_HANDLER_PARAMS) {
    YBase64Converter cv;
    if constexpr (op == Op::DecodeNumber) {
        double* out = result->makeRealNoRef(1);
        if (!out) return FUNC_FAILED;
        out[0] = cv.decodeDouble(args.string(0));
        return FUNC_OK;
    } else {
        std::string text;
        if constexpr (op == Op::EncodeString) text = cv.encodeString(args.string(0));
        if constexpr (op == Op::DecodeString) text = cv.decodeString(args.string(0));
        if constexpr (op == Op::EncodeNumber) text = cv.encodeDouble(args.scalar(0));
        if constexpr (op == Op::EncodeInteger) text = cv.encodeInt64(truncateToInt64(args.scalar(0)));
        result->setType(VD_STRING, VD_NONE);
        if (!result->allocate(1, RESULT_OWN, -1)) return FUNC_FAILED;
        result->stringData()[0] = std::move(text);
        return FUNC_OK;
    }
}

constexpr FuncInfo kFunctions[] = {
    {"ConvertFromBase64", {arg::String}, 1, convert<Op::DecodeString>},
    {"ConvertNumberFromBase64", {arg::String}, 1, convert<Op::DecodeNumber>},
    {"ConvertNumberToBase64", {arg::Real}, 1, convert<Op::EncodeNumber>},
    {"ConvertToBase64", {arg::String}, 1, convert<Op::EncodeString>},
    {"_ConvertIntegerToBase64", {arg::Real}, 1, convert<Op::EncodeInteger>},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

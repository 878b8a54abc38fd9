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
    {"ConvertFromBase64", {arg::String}, 1, convert<Op::DecodeString>,
     {.signature = "ConvertFromBase64(text)",
      .summary = "The text whose bytes a Base64 string encodes.",
      .returns = "one string",
      .notes = "RFC 4648 with padding. Text that is not valid Base64 (characters outside the alphabet, "
               "misplaced '=', non-zero pad bits) gives \"\".",
      .example = "ConvertFromBase64('aGVsbG8=')"}},
    {"ConvertNumberFromBase64", {arg::String}, 1, convert<Op::DecodeNumber>,
     {.signature = "ConvertNumberFromBase64(text)",
      .summary = "The number whose 8 bytes a Base64 string encodes, as ConvertNumberToBase64 wrote them.",
      .returns = "one real",
      .notes = "The bytes are an IEEE 754 double, little-endian, so a number comes back bit for bit. "
               "Malformed Base64, or other than 8 bytes, gives NaN.",
      .example = "ConvertNumberFromBase64(ConvertNumberToBase64(0.1)) == 0.1"}},
    {"ConvertNumberToBase64", {arg::Real}, 1, convert<Op::EncodeNumber>,
     {.signature = "ConvertNumberToBase64(x)",
      .summary = "The Base64 encoding of a number's 8 bytes.",
      .returns = "one string of 12 characters",
      .notes = "The IEEE 754 double, little-endian; the first element of x is taken (NaN for []).",
      .example = "ConvertNumberToBase64(1)"}},
    {"ConvertToBase64", {arg::String}, 1, convert<Op::EncodeString>,
     {.signature = "ConvertToBase64(text)",
      .summary = "The Base64 encoding of a text's bytes.",
      .returns = "one string",
      .notes = "RFC 4648 with '=' padding.",
      .example = "ConvertToBase64('hello')"}},
    {"_ConvertIntegerToBase64", {arg::Real}, 1, convert<Op::EncodeInteger>,
     {.signature = "_ConvertIntegerToBase64(x)",
      .summary = "The Base64 encoding of a number as a 64-bit integer's 8 bytes.",
      .returns = "one string of 12 characters",
      .notes = "x is truncated toward zero to a signed 64-bit integer (saturating; NaN gives the smallest "
               "integer), written little-endian.",
      .example = "_ConvertIntegerToBase64(1.9)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// Two reversible ways of writing any string with a restricted set of characters.
//
// sp_EscapeString: backslash escapes, for text that goes between double quotes or onto one line.
//   \  -> \\        "  -> \"
//   newline -> \n   carriage return -> \r   tab -> \t
//   every other byte below 0x20, and 0x7F        -> \xHH (two lower-case hexadecimal digits)
//   a byte of 0x80 or above that is not part of a well-formed UTF-8 sequence -> \xHH
//   with replaceSpaces, every space (0x20)       -> \x20
// Everything else, well-formed UTF-8 sequences included, is kept as it is, so the result is always
// well-formed UTF-8 and holds no control character (and, with replaceSpaces, no space). Exactly two
// digits follow \x, as Python and JavaScript read them.
//
// sp_EscapeStringEncode: percent-encoding of a URI component (RFC 3986). The unreserved bytes
// A-Z a-z 0-9 - . _ ~ are kept; a space becomes %20, or + with replaceSpaces (the form encoding of
// HTML forms); every other byte becomes %HH with two upper-case hexadecimal digits.
//
// Each has its inverse. sp_UnescapeString reads \\ \" \n \r \t and \xHH (either letter case) and
// keeps any other backslash as it is; sp_EscapeStringDecode reads %HH (either case) and + as a space
// and keeps a % that does not start two hexadecimal digits. So for every string s
//   sp_UnescapeString(sp_EscapeString(s, flag)) == s   and
//   sp_EscapeStringDecode(sp_EscapeStringEncode(s, flag)) == s, with either flag.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wavex {

std::string sp_EscapeString(std::string_view text, bool replaceSpaces);
std::string sp_UnescapeString(std::string_view text);

std::string sp_EscapeStringEncode(std::string_view text, bool replaceSpaces);
std::string sp_EscapeStringDecode(std::string_view text);

// Length (1 to 4) of the well-formed UTF-8 sequence that starts at text[i], or 0 when the bytes
// there are not one (a stray continuation byte, a truncated sequence, an overlong form, a surrogate
// or a code point above U+10FFFF).
size_t utf8SequenceLength(std::string_view text, size_t i);

}  // namespace wavex

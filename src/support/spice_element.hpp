// One element line of a netlist as a parameter string (support/parameter_string.hpp):
//
//   R1 a b 1k tc=0.01          inst=R1 kind=R nodes="a b" value=1k tc=0.01
//   Q3 c b e npn area=2        inst=Q3 kind=Q nodes="c b e" model=npn area=2
//   X1 in out amp gain=10      inst=X1 kind=X nodes="in out" model=amp gain=10
//
// The element kind is the instance name's first letter, upper-cased; it fixes how many nodes
// follow (X: every token before the last one without "="). Kinds with a model (D Q M J S W Z O U
// X) take the next token as `model`; the other tokens before the first name=value form `value`
// (several joined by one blank: `value="DC 5 AC 1"`). Blanks around "=" are allowed; quotes,
// braces and parentheses hold blanks (SIN(0 1 1k) is one token); text after a ";" ends the line.
// Blank, comment ("*"), control (".") and continuation ("+") lines, and unknown kinds, give "".
#pragma once

#include <string>
#include <string_view>

namespace wavex {

std::string spiceElementParameters(std::string_view line);

}  // namespace wavex

// The element-wise string comparisons, which the comparison operators hand two string arguments
// to (`"abc" == "ABC"`). They are not script functions of their own.
#pragma once

#include "wavex/function.hpp"

namespace wavex {

// The six comparisons, each a predicate on the case-insensitive comparison r of two strings.
enum class StringComparison {
    Equal,         // r = 0
    NotEqual,      // r != 0
    Less,          // r < 0
    LessEqual,     // r <= 0
    Greater,       // r > 0
    GreaterEqual,  // r >= 0
    Count
};

// Compares arguments 0 and 1, two string vectors of equal length, element by element as the C
// library's _stricmp does (null elements read as ""). The result is real, 1 where the comparison
// holds and 0 elsewhere, without reference. Different lengths fail with "Arguments for string
// comparison must be the same length".
FUNC_ERROR compareStrings(const FuncArgs& args, FuncResult* result, StringComparison comparison,
                          MessageHandler& messages);

}  // namespace wavex

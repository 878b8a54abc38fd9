// Laplace transfer functions written as expressions in s, and the optional validation plug-in.
//
// Grammar (blanks between tokens are ignored):
//   expression := term { ("+" | "-") term }
//   term       := unary { ("*" | "/") unary }
//   unary      := ("+" | "-") unary | power
//   power      := primary [ "^" unary ]            right-associative: s^2^3 is s^8
//   primary    := number | "s" | "pi" | "(" expression ")"
// A number is decimal with an optional exponent and at most one engineering suffix
// (f p n u m k meg g t, any case): 1k, 2.2u, 10meg, 1e-3. Nothing else may follow a number, so
// "2s" is refused rather than read as 2 (write 2*s). "s" and "pi" may be written in any case.
// As in mathematics, -s^2 is -(s^2). A power must be a constant non-negative integer.
//
// The value is a rational function N(s)/D(s), expanded into its two polynomials with their
// coefficients in ascending powers of s: 1/(1+s*1u) gives N = [1], D = [1, 1e-6]. The expansion
// follows the text, with three rules that keep it as a person would write it:
// - constants live in the numerator: a denominator that comes out constant is divided into it,
//   so (1 + s/1k)/(1 + s/10k)^2 gives N = [1, 1e-3], D = [1, 2e-4, 1e-8] (while 2/(4+s) stays
//   N = [2], D = [4, 1]);
// - terms over the same denominator share it (1/(1+s) + 2/(1+s) is 3/(1+s)); other sums are
//   brought to the product of the denominators (1/(1+s) + s/2 is (1 + 0.5s + 0.5s^2)/(1 + s));
// - a common factor s^k of N and D is cancelled (s/s is 1/1), and exact zero coefficients of the
//   highest powers are dropped (s - s is 0/1).
// No other factor is cancelled.
//
// Limits: no polynomial may exceed order kLaplaceMaxOrder (checked before expanding, so
// (1+s)^1e9 is refused at once), parentheses, signs and powers nest at most kLaplaceMaxDepth
// deep, and every coefficient must be finite.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

inline constexpr int kLaplaceMaxOrder = 1000;
inline constexpr int kLaplaceMaxDepth = 256;

// The parser's codes; 0 is success. Texts: sp_GetLaplaceErrMessage.
enum LaplaceError : int32_t {
    kLaplaceOk = 0,
    kLaplaceEmpty = 1,              // nothing but blanks
    kLaplaceInvalidCharacter = 2,   // a character that starts no token
    kLaplaceUnknownName = 3,        // a name other than s and pi
    kLaplaceUnbalanced = 4,         // "(" without ")" or ")" without "("
    kLaplaceOperandMissing = 5,     // "1+", "*s", "()"
    kLaplaceInvalidNumber = 6,      // "2s", "1e", "1mil"
    kLaplacePowerNotConstant = 7,   // "s^s"
    kLaplacePowerNotInteger = 8,    // "s^0.5"
    kLaplacePowerNegative = 9,      // "s^-1"
    kLaplaceDivisionByZero = 10,    // "1/0", "1/(s-s)"
    kLaplaceTrailingText = 11,      // "1 2", "(1+s)(1-s)"
    kLaplaceOrderTooHigh = 12,      // an order above kLaplaceMaxOrder
    kLaplaceOutOfRange = 13,        // a coefficient that overflows ("1e400", "1e200*1e200")
    kLaplaceTooDeep = 14,           // nesting deeper than kLaplaceMaxDepth
};
inline constexpr int32_t kLaplaceLastError = kLaplaceTooDeep;

struct LaplaceFunction {
    std::vector<double> numerator;    // ascending powers of s; at least one coefficient
    std::vector<double> denominator;  // the same
};

// Parses `text`: the function, or the error code.
struct LaplaceParse {
    int32_t code = kLaplaceOk;
    LaplaceFunction value;
};
LaplaceParse parseLaplace(std::string_view text);

// The support library's record. The caller sets the expression, the two arrays with their
// capacities in the size fields, the error code to -1 and reserved to 0.
struct XSpiceParseLaplaceArgs {
    const char* expression;
    double* numerator;
    int32_t numeratorSize;    // in: capacity; out: order of the numerator
    double* denominator;
    int32_t denominatorSize;  // in: capacity; out: order of the denominator
    int32_t errorCode;        // out: 0, or the LaplaceError
    int32_t reserved;
};

// Parses args->expression. On success returns non-zero, sets the error code to 0, the size
// fields to the orders, and writes as many coefficients as the capacities hold (the caller sees
// from the orders whether they all fitted). On failure returns 0 with the error code set and the
// rest untouched.
int sp_ParseLaplaceExpression(XSpiceParseLaplaceArgs* args);

// The text of an error code: true with *text set, or false (and *text null) for a code that has
// none (0 and unknown codes).
bool sp_GetLaplaceErrMessage(int code, const char** text);

// ---- The validation plug-in ----------------------------------------------------------------------
//
// A plug-in is a shared library whose file name matches "Laplace_2.*" in the devices folder and
// that exports `int laplace_CheckLaplaceExpression(const char* expression)`. The folder is the
// one named by the environment variable WAVEX_DEVICES, else "devices" beside the program.

std::string laplacePluginFolder();

// The files of `folder` whose names match the shell pattern `pattern` (fnmatch), sorted by name.
std::vector<std::string> sp_SearchDLLs(const std::string& folder, const std::string& pattern);

// The plug-in's verdict on `expression`: empty when no plug-in is found (*found false), or when
// the first one found cannot be loaded or lacks the entry point (*found true).
std::optional<int> checkWithLaplacePlugin(const std::string& expression, bool* found);

}  // namespace wavex

// String concatenation (the `&` operator), file-name equality and the element-wise string
// comparisons that the comparison operators use for two string arguments.
#include "functions/string_compare.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace wavex {
namespace {

std::string_view text(const StrElem& s) { return s ? std::string_view(*s) : std::string_view(); }

// The result of a comparison: n plain numbers without reference (null when n is 0).
double* makeFlags(FuncResult* result, int64_t n) {
    result->setPhysType(units::Number, units::NoRef);
    result->setType(VD_REAL, VD_NONE);
    return result->allocate(n, RESULT_OWN, -1) ? result->data() : nullptr;
}

// ---- Element-wise comparisons ----------------------------------------------------------------
//
// Element i of the real result is 1 when the predicate holds for r = _stricmp(left i, right i)
// (bytes compared as unsigned after lower-casing ASCII letters; a null element reads as ""), and
// 0 otherwise. No reference, unit "number". The two arguments must be equal in length: "Arguments
// for string comparison must be the same length" fails the call.

struct Comparison {
    StringComparison which;
    bool (*holds)(int r);
};

constexpr Comparison kComparisons[] = {
    {StringComparison::Equal, [](int r) { return r == 0; }},
    {StringComparison::NotEqual, [](int r) { return r != 0; }},
    {StringComparison::Less, [](int r) { return r < 0; }},
    {StringComparison::LessEqual, [](int r) { return r <= 0; }},
    {StringComparison::Greater, [](int r) { return r > 0; }},
    {StringComparison::GreaterEqual, [](int r) { return r >= 0; }},
};

static_assert(rowsInOrder(kComparisons, &Comparison::which, [](const Comparison& c) { return c.holds != nullptr; }),
              "row i holds comparison i, each with its predicate");

}  // namespace

FUNC_ERROR compareStrings(const FuncArgs& args, FuncResult* result, StringComparison comparison,
                          MessageHandler& messages) {
    int64_t n = args.length(0);
    if (args.length(1) != n) {
        messages.error("Arguments for string comparison must be the same length");
        return FUNC_FAILED;
    }
    const StrElem* a = args.stringData(0);
    const StrElem* b = args.stringData(1);
    if (n > 0 && (!a || !b)) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    auto holds = kComparisons[static_cast<size_t>(comparison)].holds;
    double* out = makeFlags(result, n);
    if (!out && n > 0) return FUNC_FAILED;
    for (int64_t i = 0; i < n; ++i) out[i] = holds(stricmp(text(a[i]), text(b[i]))) ? 1 : 0;
    return FUNC_OK;
}

namespace {

// ---- Concatenation ---------------------------------------------------------------------------
//
// a & b: element i is a's element i followed by b's element i, where an argument shorter than
// the other repeats its last element; the result is as long as the longer argument. A null part
// counts as "", and two null parts give a null element. An argument without elements contributes
// nothing (a & an empty vector is a). String result, no reference.

FUNC_ERROR concat(WAVEX_HANDLER_PARAMS) {
    int64_t na = args.length(0), nb = args.length(1);
    int64_t n = std::max(na, nb);
    const StrElem* a = args.stringData(0);
    const StrElem* b = args.stringData(1);
    if ((na > 0 && !a) || (nb > 0 && !b)) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    result->setType(VD_STRING, VD_NONE);
    if (!result->allocate(n, RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    static const StrElem kAbsent;
    for (int64_t i = 0; i < n; ++i) {
        const StrElem& left = na > 0 ? a[std::min(i, na - 1)] : kAbsent;
        const StrElem& right = nb > 0 ? b[std::min(i, nb - 1)] : kAbsent;
        if (!left && !right) {
            out[i].reset();
            continue;
        }
        std::string joined;
        joined.reserve(text(left).size() + text(right).size());
        joined.append(text(left)).append(text(right));
        out[i] = std::move(joined);
    }
    return FUNC_OK;
}

// ---- File-name equality ----------------------------------------------------------------------
//
// PathEqual(a, b): element i of the real result is 1 when the two names are the same file name
// (pathEquals: byte for byte where the file system tells letter case apart) and 0 otherwise.
// Different lengths or an empty first argument give an empty result without a message.

FUNC_ERROR pathEqual(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    if (n == 0 || args.length(1) != n) return FUNC_OK;
    const StrElem* a = args.stringData(0);
    const StrElem* b = args.stringData(1);
    if (!a || !b) {
        internal_error("Error found in module %s, line %d", WAVEX_MODULE, __LINE__);
        return FUNC_FAILED;
    }
    double* out = makeFlags(result, n);
    if (!out) return FUNC_FAILED;
    for (int64_t i = 0; i < n; ++i) {
        out[i] = pathEquals(text(a[i]), text(b[i])) ? 1 : 0;
    }
    return FUNC_OK;
}

// ---- Registration ----------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"_Concat", {arg::String, arg::String}, 2, concat,
     {.signature = "a & b (_Concat)",
      .summary = "Joins strings element by element.",
      .returns = "a string vector as long as the longer operand, without x-values",
      .notes = "The shorter operand repeats its last element; an empty operand adds nothing. "
               "Numbers are written as text first (\"R\" & 1 is R1).",
      .example = "\"R\" & [1, 2]; [\"in\", \"out\"] & \"_v\""}},
    {"PathEqual", {arg::String, arg::String}, 2, pathEqual,
     {.signature = "PathEqual(a, b)",
      .summary = "1 where two file names name the same file, else 0, element by element.",
      .returns = "a real vector of 1 and 0, plain numbers",
      .notes = "Compares the names as written (no path is resolved): byte for byte, except on "
               "Windows and macOS, where ASCII letter case is ignored. Different lengths, or an "
               "empty a, give an empty result.",
      .example = "PathEqual([\"a.txt\", \"b.txt\"], [\"a.txt\", \"B.TXT\"])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

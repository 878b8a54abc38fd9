// Conditional and field functions.
//
// Iff(c, a, b): the first element of a when c[0] is true (not 0; NaN is true), else that of b;
//   a and b must be of one kind ("Arguments 2 and 3 must be of the same type in function '%s'").
// IffV(c, a, b): element-wise selection with a's kind, length and x-values; c of one element
//   selects a whole vector. Lengths must agree ("Argument vectors must be of the same length in
//   function '%s'"); both messages are reported when both checks fail.
// Field(x, a, b): bits lo … hi of the low 32 bits of trunc(x), the bounds in either order.
// FieldV(x, hi, lo): the same element-wise over the shortest of the three, with x's x-values; a
//   reversed pair (hi < lo) gives -1 on purpose.
// Floor(x): the largest integer not above x[0].
// MaxN, MinN(a1 … ak), 1 ≤ k ≤ 32: element-wise extremes; a later argument replaces only when
//   strictly greater (less), so ties keep the earlier value and NaN in a later argument never
//   replaces. Arguments of different lengths give no result and no message. The unit is the
//   arguments' common one, else unknown.
// ee(text [, fallback]): "{" text "}" resolved as a template (so the text is evaluated as an
//   expression); on failure the fallback when given.
// ev(a1 … ak): the last argument (the others were evaluated for their effects).
#include "support/numbers.hpp"
#include "wavex/function.hpp"
#include "wavex/template.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace wavex {
namespace {

bool isTrue(double c) { return c != 0; }  // NaN != 0: true

// Copies element `k` of argument `i` to element `out` of the result (of the same kind).
void copyElement(const FuncArgs& args, int i, int64_t k, FuncResult* result, int64_t out) {
    switch (args.type(i)) {
        case VD_REAL: result->data()[out] = args.data(i)[k]; break;
        case VD_COMPLEX: result->complexData()[out] = args.complexData(i)[k]; break;
        default: result->stringData()[out] = args.stringData(i)[k]; break;
    }
}

FUNC_ERROR iff(WAVEX_HANDLER_PARAMS) {
    if (args.type(1) != args.type(2)) {
        messages->error("Arguments 2 and 3 must be of the same type in function '%s'", info->name);
        return FUNC_FAILED;
    }
    int chosen = isTrue(args.scalar(0)) ? 1 : 2;
    result->setType(args.type(chosen), VD_NONE);
    result->setPhysType(args.physType(chosen), units::NoRef);
    if (args.length(chosen) == 0) return FUNC_OK;  // nothing to take the first element of
    result->allocate(1, RESULT_OWN, 0);
    copyElement(args, chosen, 0, result, 0);
    return FUNC_OK;
}

FUNC_ERROR iffV(WAVEX_HANDLER_PARAMS) {
    int64_t nc = args.length(0), n = args.length(1);
    bool lengthsAgree = (nc <= 1 || nc == n) && n == args.length(2);
    bool kindsAgree = args.type(1) == args.type(2);
    if (!lengthsAgree) messages->error("Argument vectors must be of the same length in function '%s'", info->name);
    if (!kindsAgree) messages->error("Arguments 2 and 3 must be of the same type in function '%s'", info->name);
    if (!lengthsAgree || !kindsAgree) return FUNC_FAILED;
    if (nc == 1) {  // one condition selects a whole vector
        result->copyVector(args.vector(isTrue(args.scalar(0)) ? 1 : 2));
        return FUNC_OK;
    }
    result->setType(args.type(1), args.refType(1));
    result->setPhysType(args.physType(1), args.refPhysType(1));
    result->allocate(n, RESULT_LIKE_ARGS, args.totalLength(1));
    const double* c = args.data(0);
    VDType kind = args.type(1);
    if (kind == VD_REAL) {
        const double *a = args.data(1), *b = args.data(2);
        double* r = result->data();
        for (int64_t i = 0; i < n; ++i) {
            const double x = a[i], y = b[i];  // both read, so that the loop is a plain blend
            r[i] = isTrue(c[i]) ? x : y;
        }
    } else if (kind == VD_COMPLEX) {
        const Complex *a = args.complexData(1), *b = args.complexData(2);
        Complex* r = result->complexData();
        for (int64_t i = 0; i < n; ++i) r[i] = isTrue(c[i]) ? a[i] : b[i];
    } else {
        for (int64_t i = 0; i < n; ++i) copyElement(args, isTrue(c[i]) ? 1 : 2, i, result, i);
    }
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(1), 1);
    return FUNC_OK;
}

// Bits lo … hi of the low 32 bits of n, shifted down to bit 0; shift counts taken modulo 32.
double bitField(double x, int64_t hi, int64_t lo) {
    auto n = static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(x)));
    auto h = static_cast<uint32_t>(hi), l = static_cast<uint32_t>(lo);  // modulo 2^32, then 32
    uint32_t up = (31u - h) & 31;
    uint32_t down = (31u - h + l) & 31;
    return static_cast<double>(static_cast<uint32_t>(n << up) >> down);
}

FUNC_ERROR field(WAVEX_HANDLER_PARAMS) {
    int64_t a = args.integer(1).value_or(0), b = args.integer(2).value_or(0);
    result->makeRealNoRef(1)[0] = bitField(std::isfinite(args.scalar(0)) ? args.scalar(0) : 0, std::max(a, b), std::min(a, b));
    return FUNC_OK;
}

FUNC_ERROR fieldV(WAVEX_HANDLER_PARAMS) {
    int64_t n = std::min({args.length(0), args.length(1), args.length(2)});
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(units::Number, args.refPhysType(0));
    double* r = result->makeReal(n, RESULT_LIKE_ARGS, args.totalLength(0));
    const double *x = args.data(0), *hi = args.data(1), *lo = args.data(2);
    for (int64_t i = 0; i < n; ++i) {
        int64_t h = wholeNumber(hi[i]).value_or(0), l = wholeNumber(lo[i]).value_or(0);
        r[i] = h >= l ? bitField(std::isfinite(x[i]) ? x[i] : 0, h, l) : -1;
    }
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

FUNC_ERROR floorScalar(WAVEX_HANDLER_PARAMS) {
    result->makeRealNoRef(1)[0] = std::floor(args.scalar(0));
    return FUNC_OK;
}

template <bool Max>
FUNC_ERROR extremes(const FuncArgs& args, FuncResult* result) {
    int64_t n = args.length(0);
    PhysType phys = args.physType(0);
    for (int i = 1; i < args.count(); ++i) {
        if (args.length(i) != n) return FUNC_OK;  // no result, no message
        if (args.physType(i) != phys) phys = units::Unknown;
    }
    result->setPhysType(phys, units::NoRef);
    double* r = result->makeReal(n, RESULT_OWN, 0);
    const double* first = args.data(0);
    // Block by block, so that the block of r stays in the first-level cache while each argument
    // passes over it: one trip through memory for each array.
    constexpr int64_t kBlock = 2048;
    for (int64_t start = 0; start < n; start += kBlock) {
        const int64_t end = std::min(n, start + kBlock);
        std::copy(first + start, first + end, r + start);
        for (int i = 1; i < args.count(); ++i) {
            const double* a = args.data(i);
            for (int64_t k = start; k < end; ++k) {
                const double v = a[k], best = r[k];
                r[k] = (Max ? v > best : v < best) ? v : best;
            }
        }
    }
    return FUNC_OK;
}

FUNC_ERROR maxN(WAVEX_HANDLER_PARAMS) { return extremes<true>(args, result); }
FUNC_ERROR minN(WAVEX_HANDLER_PARAMS) { return extremes<false>(args, result); }

FUNC_ERROR ee(WAVEX_HANDLER_PARAMS) {
    TemplateObject resolver;
    bool failed = false;
    std::string text = resolver.resolveTemplate("{" + std::string(args.string(0)) + "}", "", &failed);
    if (failed && args.count() > 1) text = args.string(1);
    result->setType(VD_STRING, VD_NONE);
    result->allocate(1, RESULT_OWN, 0);
    result->stringData()[0] = std::move(text);
    return FUNC_OK;
}

FUNC_ERROR ev(WAVEX_HANDLER_PARAMS) {
    result->copyVector(args.vector(args.count() - 1));
    return FUNC_OK;
}

constexpr FuncInfo kConditionalFunctions[] = {
    {"Field", {arg::Real, arg::Real, arg::Real}, 3, field,
     {.signature = "Field(x, bit1, bit2)",
      .summary = "The bits bit1 … bit2 of the whole number x, shifted down to bit 0.",
      .returns = "one real value, a plain number, without x-value",
      .notes = "Reads the first element of each argument. x is truncated toward zero and its low 32 "
               "bits used (NaN and inf read as 0); the bit numbers may come in either order and "
               "count from 0 at the least significant bit.",
      .example = "Field(240, 4, 7); Field(240, 7, 4); Field(6, 1, 1)"}},
    {"FieldV", {arg::Real.each(), arg::Real.each(), arg::Real.each()}, 3, fieldV, kPointwise,
     {.signature = "FieldV(x, hi, lo)",
      .summary = "Bits lo … hi of each element of x, element by element.",
      .returns = "a real curve per run over x's x-values, plain numbers",
      .notes = "Unlike Field, hi and lo are vectors taken element by element (a single value is "
               "not repeated: the result is as long as the shortest argument), and hi < lo gives -1.",
      .example = "FieldV([240, 15, 15], [7, 3, 0], [4, 0, 3])"}},
    {"Floor", {arg::Real}, 1, floorScalar,
     {.signature = "Floor(x)",
      .summary = "The first element of x rounded down to a whole number.",
      .returns = "one real value, a plain number, without x-value",
      .notes = "Only the first element is used; floorv rounds every element.",
      .example = "Floor(-2.5); Floor([7.9, 1])"}},
    {"Iff", {arg::Real, arg::Any, arg::Any}, 3, iff,
     {.signature = "Iff(cond, a, b)",
      .summary = "The first element of a when cond is true, else the first element of b.",
      .returns = "one element of a's kind and unit (b's when b is chosen), without x-value",
      .notes = "Only cond's first element counts; anything but 0 is true, NaN included. a and b "
               "must be of one kind (\"Arguments 2 and 3 must be of the same type\"). IffV selects "
               "element by element.",
      .example = "Iff(2 > 1, \"yes\", \"no\"); Iff(0, [1, 2], [8, 9])"}},
    {"IffV", {arg::Real, arg::Any, arg::Any}, 3, iffV, kPointwise,
     {.signature = "IffV(cond, a, b)",
      .summary = "Element by element: a's element where cond is true, else b's.",
      .returns = "a vector of a's kind, length, unit and x-values",
      .notes = "Anything but 0 is true, NaN included. a and b must be of one kind and length, and "
               "cond as long as them or a single value, which then picks a or b whole.",
      .example = "IffV([1, 0, 1], [1, 2, 3], [10, 20, 30]); IffV(0, [1, 2], [8, 9])"}},
    {"MaxN", {arg::Real.upTo(32)}, 1, maxN,
     {.signature = "MaxN(a1 [, a2 … a32])",
      .summary = "The largest of the arguments, element by element.",
      .returns = "a real vector as long as the arguments, without x-values; their common unit, "
                 "else unknown",
      .notes = "The arguments must all have one length: otherwise the result is empty, without a "
               "message (a single value is not repeated). NaN in a later argument never wins.",
      .example = "MaxN([1, 5], [3, 2], [0, 9])"}},
    {"MinN", {arg::Real.upTo(32)}, 1, minN,
     {.signature = "MinN(a1 [, a2 … a32])",
      .summary = "The smallest of the arguments, element by element.",
      .returns = "a real vector as long as the arguments, without x-values; their common unit, "
                 "else unknown",
      .notes = "The arguments must all have one length: otherwise the result is empty, without a "
               "message. NaN in a later argument never wins.",
      .example = "MinN([1, 5], [3, 2], [0, 9])"}},
    {"ee", {arg::String, arg::String}, 1, ee,
     {.signature = "ee(text [, fallback])",
      .summary = "Evaluates text as an expression and gives the result as text.",
      .returns = "one string",
      .notes = "The text is resolved as the template \"{text}\" (see ResolveTemplate): numbers in "
               "their shortest exact form, several elements joined by \", \". When evaluation fails "
               "the result is fallback if given, else the text in braces as written (\"{1 +}\").",
      .example = "ee(\"1+2\"); ee(\"[1, 2] * 2\"); ee(\"nosuch(\", \"fallback\")"}},
    {"ev", {arg::Curve.orKinds(VD_STRING).upTo(8)}, 1, ev,  // copies strings too
     {.signature = "ev(a1 [, a2 … a8])",
      .summary = "The last argument, as it is.",
      .returns = "a copy of the last argument: kind, unit and x-values",
      .notes = "All the arguments are evaluated, in order, so the others serve for what they do "
               "(assignments, files written).",
      .example = "ev(1, 2, \"three\")"}},
};
const FuncFamily conditionalFamily(kConditionalFunctions);

}  // namespace
}  // namespace wavex

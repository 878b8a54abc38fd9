// Set functions: string vectors taken as sets. Strings are equal when they differ at most in ASCII
// letter case; each result holds every string once, in the spelling of its first occurrence in the
// order the function walks its arguments, and keeps that order:
//   SetUnion(a [, b])             the strings of a, then those of b not yet seen (with a alone:
//                                 a without repeats)
//   SetIntersect(a, b)            the strings of b that occur in a, in b's order and spelling
//   SetDifference(a, b)           the strings of a that do not occur in b
//   SetSymmetricDifference(a, b)  the strings of a not in b, then the strings of b not in a
// Membership is kept in chained hash tables of 101 buckets that grow past two entries a bucket
// (support/hash_table.hpp), keyed by views of the arguments' strings, so nothing is copied until
// the result is made. A null element reads as "" and is copied as it is. The result is a string
// vector without reference, empty when nothing is left; no input gives a message.
#include "support/hash_table.hpp"
#include "wavex/function.hpp"

#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

enum class SetOp { Union, Intersect, Difference, SymmetricDifference, Count };

// Which strings of one walk go to the output, besides not being there yet.
enum class Keep { All, InOther, NotInOther };

struct Walk {
    int argument;  // 0 or 1; a walk over an argument that was not given is skipped
    Keep keep;     // membership in the other argument
};

struct SetRow {
    SetOp op;
    Walk walks[2];
    int count;
};

constexpr SetRow kSetOps[] = {
    {SetOp::Union, {{0, Keep::All}, {1, Keep::All}}, 2},
    {SetOp::Intersect, {{1, Keep::InOther}}, 1},
    {SetOp::Difference, {{0, Keep::NotInOther}}, 1},
    {SetOp::SymmetricDifference, {{0, Keep::NotInOther}, {1, Keep::NotInOther}}, 2},
};

static_assert(rowsInOrder(kSetOps, &SetRow::op), "row i holds operation i");

using StringSet = ChainedHashTable<bool, std::string_view>;

std::string_view text(const StrElem& s) { return s ? std::string_view(*s) : std::string_view(); }

FUNC_ERROR setWorker(const FuncArgs& args, FuncResult* result, const SetRow& row) {
    // The members of each argument that another walk tests against.
    StringSet members[2] = {StringSet(101, 2), StringSet(101, 2)};
    for (int w = 0; w < row.count; ++w) {
        if (row.walks[w].keep == Keep::All) continue;
        int other = 1 - row.walks[w].argument;
        const StrElem* s = args.stringData(other);
        for (int64_t i = 0; i < args.length(other); ++i) members[other].insert(text(s[i]), true);
    }

    StringSet seen(101, 2);
    std::vector<const StrElem*> out;
    out.reserve(static_cast<size_t>(args.length(0) + (args.count() > 1 ? args.length(1) : 0)));
    for (int w = 0; w < row.count; ++w) {
        const Walk& walk = row.walks[w];
        if (walk.argument >= args.count()) continue;
        const StrElem* s = args.stringData(walk.argument);
        for (int64_t i = 0; i < args.length(walk.argument); ++i) {
            std::string_view key = text(s[i]);
            if (walk.keep != Keep::All && (members[1 - walk.argument].find(key) != nullptr) != (walk.keep == Keep::InOther))
                continue;
            if (seen.find(key)) continue;
            seen.insert(key, true);
            out.push_back(&s[i]);
        }
    }

    result->setType(VD_STRING, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (!result->allocate(static_cast<int64_t>(out.size()), RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* r = result->stringData();
    for (size_t i = 0; i < out.size(); ++i) r[i] = *out[i];
    return FUNC_OK;
}

template <SetOp op>
FUNC_ERROR setFunction(WAVEX_HANDLER_PARAMS) {
    return setWorker(args, result, kSetOps[static_cast<size_t>(op)]);
}

constexpr FuncInfo kFunctions[] = {
    {"SetUnion", {arg::String, arg::String}, 1, setFunction<SetOp::Union>, kWholeArgument,
     {.signature = "SetUnion(a [, b])",
      .summary = "The strings of a, then those of b not yet seen, each once.",
      .returns = "a string vector without x-values; empty when both are",
      .notes = "Strings that differ only in ASCII letter case count as one, kept in the spelling "
               "met first. With a alone: a without its repeats.",
      .example = "SetUnion([\"a\", \"B\", \"b\"], [\"c\", \"A\"])"}},
    {"SetIntersect", {arg::String, arg::String}, 2, setFunction<SetOp::Intersect>, kWholeArgument,
     {.signature = "SetIntersect(a, b)",
      .summary = "The strings of b that also occur in a, each once.",
      .returns = "a string vector without x-values; empty when none are shared",
      .notes = "In b's order and b's spelling; letter case (ASCII) is ignored.",
      .example = "SetIntersect([\"a\", \"b\", \"c\"], [\"C\", \"d\", \"A\"])"}},
    {"SetDifference", {arg::String, arg::String}, 2, setFunction<SetOp::Difference>, kWholeArgument,
     {.signature = "SetDifference(a, b)",
      .summary = "The strings of a that do not occur in b, each once.",
      .returns = "a string vector without x-values; empty when nothing is left",
      .notes = "In a's order; letter case (ASCII) is ignored.",
      .example = "SetDifference([\"a\", \"b\", \"c\", \"a\"], [\"B\"])"}},
    {"SetSymmetricDifference", {arg::String, arg::String}, 2, setFunction<SetOp::SymmetricDifference>, kWholeArgument,
     {.signature = "SetSymmetricDifference(a, b)",
      .summary = "The strings in exactly one of a and b, each once.",
      .returns = "a string vector without x-values; empty when a and b hold the same strings",
      .notes = "Those of a first, then those of b; letter case (ASCII) is ignored.",
      .example = "SetSymmetricDifference([\"a\", \"b\"], [\"B\", \"c\"])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// Resampling, crossing searches and curve building: Interp, XFromY, YFromX, PropagationDelay, XY,
// XYOrdered, Range, Ref and Coll.
//
// A curve is y values over x values (its reference). Numeric scalar arguments are the first real
// value of their vector; counts and orders are truncated toward zero. Where a function needs x
// values it takes a real reference as it is and a complex one by its real parts; a curve with no
// reference fails with "Argument %d in function '%s' has no reference (xvalues)".
// Interpolation, the stencils and the crossing rules are those of support/interpolation.hpp.
#include "support/interpolation.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace wavex {
namespace {

int defaultOrder() { return sp_GetIntOption("InterpOrder", 2); }

// ---- Interp ----------------------------------------------------------------------------------
//
// Interp(data, points [, order [, options]]) resamples data onto evenly spaced x values.
//   points = [count or spacing, first x, last x]; first and last default to the data's own.
//   options = [include end, points[0] is a spacing, pass one point through]: flags, non-zero set.
//   Count mode: n = points[0] output points from s = first over (e - s) / m, m = n - 1 with
//   include end, else n (the end itself is then not an output point). Spacing mode: step h =
//   points[0], n = floor((x[last] - x[0]) / h + 1e-14) + 1 over the data's own span, from s.
//   Order (default the option InterpOrder, 2): -1 means 1 for a digital signal, else 2; below 1
//   is 1; capped at the data's points - 1 (and kMaxInterpOrder).
// The result has n points of the data's kind and units, over x = i h + s with the data's
// reference kind and name; without a reference the x values are the point indices and the
// result has none. An empty curve gives an empty result.
// Messages: "Need at least 2 points for interpolation in function '%s'" (n < 2 or NaN),
// "Invalid data for '%s'. Data has no reference or interval<=0" (spacing mode), and "Too many
// points (%.15g) for interpolation in function '%s'" when the result would take more than half
// of the machine's memory.

int interpOrder(const FuncArgs& args) {
    int64_t order = args.integer(2).value_or(defaultOrder());
    if (order == -1) return args.physType(0) == units::Digital ? 1 : 2;
    return static_cast<int>(std::clamp<int64_t>(order, 1, kMaxInterpOrder));
}

FUNC_ERROR interp(WAVEX_HANDLER_PARAMS) {
    const int64_t length = args.length(0);
    const double* y = args.data(0);
    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    const double* points = args.data(1);
    const int64_t pointCount = args.length(1);
    const double* flags = args.count() > 3 ? args.data(3) : nullptr;
    const int64_t flagCount = flags ? args.length(3) : 0;
    auto flag = [&](int k) { return k < flagCount && flags[k] != 0; };
    const bool includeEnd = flag(0), spacingMode = flag(1);

    if (flag(2) && length == 1) {  // one point passed through, nothing else set
        result->setType(VD_REAL, x ? VD_REAL : VD_NONE);
        result->makeReal(1, RESULT_OWN, -1)[0] = y[0];
        if (x) result->makeRealRef(1, RESULT_OWN, -1)[0] = x[0];
        return FUNC_OK;
    }

    const double first = pointCount > 0 ? points[0] : std::numeric_limits<double>::quiet_NaN();
    double count = first;
    if (spacingMode) {
        if (!x || !(first > 0)) {
            messages->error("Invalid data for '%s'. Data has no reference or interval<=0", info->name);
            return FUNC_FAILED;
        }
        count = length > 0 ? std::floor((x[length - 1] - x[0]) / first + 1e-14) + 1 : 2;
    }
    if (!(count >= 2)) {
        messages->error("Need at least 2 points for interpolation in function '%s'", info->name);
        return FUNC_FAILED;
    }
    if (count > static_cast<double>(support_MaxResamplePoints())) {
        messages->error("Too many points (%.15g) for interpolation in function '%s'", std::trunc(count), info->name);
        return FUNC_FAILED;
    }
    const auto n = static_cast<int64_t>(count);

    const VDType refType = x ? args.refType(0) : VD_NONE;
    result->setPhysType(args.physType(0), args.refPhysType(0));
    result->setType(VD_REAL, refType);
    if (length == 0) {
        result->makeReal(0, RESULT_OWN, -1);
        return FUNC_OK;
    }

    const double s = pointCount >= 2 ? points[1] : x ? x[0] : 0.0;
    const double e = pointCount >= 3 ? points[2] : x ? x[length - 1] : static_cast<double>(length - 1);
    const double h = spacingMode ? first : (e - s) / static_cast<double>(includeEnd ? n - 1 : n);

    double* out = result->makeReal(n, RESULT_OWN, -1);
    double* xs = refType == VD_REAL ? result->makeRealRef(n, RESULT_LIKE_ARGS, n) : nullptr;
    support_Resample(y, x, length, s, h, n, interpOrder(args), out, xs);
    if (refType == VD_COMPLEX) {
        Complex* zs = result->makeComplexRef(n, RESULT_LIKE_ARGS, n);
        for (int64_t i = 0; i < n; ++i) zs[i] = static_cast<double>(i) * h + s;
    }
    if (refType != VD_NONE) result->setRefName(args.refName(0));
    return FUNC_OK;
}

// ---- XFromY, YFromX ----------------------------------------------------------------------------
//
// XFromY(data, level [, order [, direction]]): the x values where data reaches the level, in the
// order of the curve; direction > 0 keeps rising crossings, < 0 falling ones, 0 (default) all.
// YFromX(data, x [, order]): the y values where the x values reach x (one for monotonic x).
// Order: default the option InterpOrder (2); 0 or less gives the default. XFromY solves the
// interpolating polynomial of y for the level; YFromX evaluates that of y at x.
// The result is real, one value per crossing (none: empty, success), without reference; XFromY's
// unit is the data's x unit (its reference unit the data's y unit), YFromX's the reverse.

enum class Search { XFromY, YFromX, Count };

struct SearchOp {
    Search op;
    bool levelSearch;  // search the y values for the level and report x
};

constexpr SearchOp kSearches[] = {
    {Search::XFromY, true},
    {Search::YFromX, false},
};

static_assert(rowsInOrder(kSearches, &SearchOp::op), "row i holds search i");

FUNC_ERROR search(const FuncArgs& args, FuncResult* result, const FuncInfo* info, MessageHandler& messages,
                  Search op) {
    const SearchOp& o = kSearches[static_cast<size_t>(op)];
    const int64_t n = args.length(0);
    std::vector<double> scratch;
    const double* x = args.neededRefData(0, scratch, *info, messages);
    if (!x) return FUNC_FAILED;
    const double* y = args.data(0);
    int64_t order = args.integer(2).value_or(0);
    InterpOpts opts{};
    opts.levelSearch = o.levelSearch;
    opts.order = order > 0 ? static_cast<int>(std::min<int64_t>(order, kMaxInterpOrder))
                 : defaultOrder() > 0 ? defaultOrder() : 2;
    if (o.levelSearch) {
        int64_t direction = args.integer(3).value_or(0);
        opts.direction = (direction > 0) - (direction < 0);
    }

    YList<double> values;
    YList<long long> indices;
    if (o.levelSearch) support_FindYFromX(values, indices, x, y, n, args.scalar(1), opts);
    else support_FindYFromX(values, indices, y, x, n, args.scalar(1), opts);

    if (o.levelSearch) result->setPhysType(args.refPhysType(0), args.physType(0));
    else result->setPhysType(args.physType(0), args.refPhysType(0));
    result->setType(VD_REAL, VD_NONE);
    double* out = result->makeReal(static_cast<int64_t>(values.size()), RESULT_RESHAPED, -1);
    std::copy(values.oldestFirst(), values.oldestFirst() + values.size(), out);  // the head goes last
    return FUNC_OK;
}

template <Search op>
FUNC_ERROR searchHandler(WAVEX_HANDLER_PARAMS) {
    return search(args, result, info, *messages, op);
}

// ---- PropagationDelay ------------------------------------------------------------------------
//
// PropagationDelay(signal1, signal2, level1, level2 [, edge [, ignored]]) pairs edges of signal1
// with edges of signal2 and gives their delays. The edges are the linear crossings of each
// signal's level, rising when edge is positive or absent, falling otherwise. With A the crossings
// of signal1 and B those of signal2, each in the order of its curve, one cursor j into B (starting
// at 0, never reset) pairs them: for each a of A in turn, j moves past the B[j] >= a, and if B[j]
// remains, (a, B[j]) is a pair. So a crossing of signal2 pairs only with later crossings of
// signal1, and may pair with several: the delays B[j] - a are negative. This is the rule scripts
// were written against and is kept as it is.
// Result: the delays over x = the crossings a, in signal1's x unit and name; no pair gives an
// empty result. The sixth argument is accepted and ignored. A signal without reference fails
// (the message names argument 1 for either signal).

FUNC_ERROR propagationDelay(WAVEX_HANDLER_PARAMS) {
    std::vector<double> scratch1, scratch2;
    const double* x1 = args.neededRefData(0, scratch1, *info, *messages);
    const double* x2 = x1 ? args.neededRefData(1, scratch2, *info, *messages) : nullptr;
    if (!x2) return FUNC_FAILED;
    InterpOpts opts{};
    opts.levelSearch = 1;
    opts.order = 1;
    opts.direction = args.count() <= 4 || args.scalar(4) > 0 ? 1 : -1;

    YList<double> listB, listA;
    YList<long long> indices;
    support_FindYFromX(listB, indices, x2, args.data(1), args.length(1), args.scalar(3), opts);
    const double* B = listB.oldestFirst();  // filled from the end: the head in the last slot
    const size_t nB = listB.size();
    support_FindYFromX(listA, indices, x1, args.data(0), args.length(0), args.scalar(2), opts);
    listA.reverse();  // walked from the head, A now runs as B is laid out

    std::vector<double> delays, at;
    size_t j = 0;
    for (double a : listA) {
        while (j < nB && B[j] >= a) ++j;
        if (j < nB) {
            delays.push_back(B[j] - a);
            at.push_back(a);
        }
    }

    result->setPhysType(args.refPhysType(0), args.refPhysType(0));
    result->setType(VD_REAL, VD_REAL);
    const auto p = static_cast<int64_t>(delays.size());
    std::copy(delays.begin(), delays.end(), result->makeReal(p, RESULT_LIKE_ARGS, p));
    if (p > 0) {
        std::copy(at.begin(), at.end(), result->makeRealRef(p, RESULT_LIKE_ARGS, p));
        result->setRefName(args.refName(0));
    }
    return FUNC_OK;
}

// ---- XY, XYOrdered -----------------------------------------------------------------------------
//
// XY(y, x): the curve of y's values over x's values; y unit from y, x unit and name from x's
// y unit and name. The curve has y's length; where x is shorter its missing x values are NaN,
// where it is longer its extra values are dropped: a reference is as long as its data in the
// vector model (every reader walks the two in step), so x cannot keep a length of its own.
// XYOrdered(y, x): the same with the pairs sorted by ascending x (stable: equal x keep their
// order; NaN x last). Lengths that differ give an empty result, without a message.

enum class Pairing { AsGiven, Ordered };

FUNC_ERROR pairs(const FuncArgs& args, FuncResult* result, Pairing pairing) {
    const int64_t ly = args.length(0), lx = args.length(1);
    const double* y = args.data(0);
    const double* x = args.data(1);
    result->setPhysType(args.physType(0), args.physType(1));
    result->setType(VD_REAL, VD_REAL);
    if (pairing == Pairing::Ordered && ly != lx) {
        result->makeReal(0, RESULT_RESHAPED, -1);
        return FUNC_OK;
    }
    double* outY = result->makeReal(ly, RESULT_LIKE_ARGS, args.totalLength(0));
    double* outX = result->makeRealRef(ly, RESULT_LIKE_ARGS, args.totalLength(1));
    if (pairing == Pairing::AsGiven) {
        std::copy(y, y + ly, outY);
        const int64_t common = std::min(ly, lx);
        std::copy(x, x + common, outX);
        std::fill(outX + common, outX + ly, std::numeric_limits<double>::quiet_NaN());
    } else {
        std::vector<int64_t> map;
        sp_GetSortMap(x, lx, map);
        for (int64_t i = 0; i < ly; ++i) {
            outY[i] = y[map[i]];
            outX[i] = x[map[i]];
        }
    }
    result->setRefName(args.yName(1));
    return FUNC_OK;
}

FUNC_ERROR xy(WAVEX_HANDLER_PARAMS) { return pairs(args, result, Pairing::AsGiven); }
FUNC_ERROR xyOrdered(WAVEX_HANDLER_PARAMS) { return pairs(args, result, Pairing::Ordered); }

// ---- Range, Ref, Coll --------------------------------------------------------------------------
//
// Range(vector [, first [, last]]): elements first (default 0) to last (default length - 1), both
// included, of a real, complex or string vector, with the same stretch of its reference, its
// units and its reference name. last < first, first < 0 or last >= length (or a NaN index) fail
// with "Invalid range in 'Range()' function".
// Ref(vector): the x values as y values (unit: the x unit), without reference; none: empty.
// Coll(vector): the first point of each division as one curve, over the first x of each division
// when the divisions have x values; an empty division gives NaN. A vector of one division is
// returned as it is.

template <class T>
void copyStretch(const T* from, int64_t first, int64_t n, T* to) {
    std::copy(from + first, from + first + n, to);
}

FUNC_ERROR range(WAVEX_HANDLER_PARAMS) {
    const int64_t length = args.length(0);
    const double first = args.count() > 1 ? std::trunc(args.scalar(1)) : 0.0;
    const double last = args.count() > 2 ? std::trunc(args.scalar(2)) : static_cast<double>(length - 1);
    if (!(first >= 0) || !(last < static_cast<double>(length)) || !(last >= first)) {
        messages->error("Invalid range in 'Range()' function");
        return FUNC_FAILED;
    }
    const auto from = static_cast<int64_t>(first);
    const int64_t n = static_cast<int64_t>(last) - from + 1;

    result->setType(args.type(0), args.refType(0));
    if (const double* y = args.data(0)) {
        copyStretch(y, from, n, result->makeReal(n, RESULT_OWN, -1));
    } else if (const Complex* z = args.complexData(0)) {
        copyStretch(z, from, n, result->makeComplex(n, RESULT_OWN, -1));
    } else {
        result->allocate(n, RESULT_OWN, -1);
        copyStretch(args.stringData(0), from, n, result->stringData());
    }
    if (const double* x = args.refData(0)) {
        copyStretch(x, from, n, result->makeRealRef(n, RESULT_OWN, -1));
    } else if (const Complex* x = args.complexRefData(0)) {
        copyStretch(x, from, n, result->makeComplexRef(n, RESULT_OWN, -1));
    } else {
        result->setPhysType(args.physType(0), units::NoRef);
        return FUNC_OK;
    }
    result->setPhysType(args.physType(0), args.refPhysType(0));
    result->setRefName(args.refName(0));
    return FUNC_OK;
}

FUNC_ERROR ref(WAVEX_HANDLER_PARAMS) {
    const int64_t n = args.length(0), total = args.totalLength(0);
    result->setPhysType(args.refPhysType(0), units::NoRef);
    if (const double* x = args.refData(0)) {
        result->setType(VD_REAL, VD_NONE);
        std::copy(x, x + n, result->makeReal(n, RESULT_LIKE_ARGS, total));
    } else if (const Complex* z = args.complexRefData(0)) {
        result->setType(VD_COMPLEX, VD_NONE);
        std::copy(z, z + n, result->makeComplex(n, RESULT_LIKE_ARGS, total));
    } else {
        result->setType(VD_REAL, VD_NONE);
        result->makeReal(0, RESULT_LIKE_ARGS, total);
    }
    return FUNC_OK;
}

// The first value of each division of argument 0, read through get(division); NaN for an empty
// division.
template <class T, class Get>
void firstOfEachDivision(const FuncArgs& args, int divisions, Get get, T* out) {
    for (int d = 0; d < divisions; ++d)
        out[d] = args.divisionLength(0, d) > 0 ? get(d)[0] : T(std::numeric_limits<double>::quiet_NaN());
}

FUNC_ERROR coll(WAVEX_HANDLER_PARAMS) {
    const int divisions = args.numYDivisions(0);
    if (divisions < 2) {
        result->copyVector(args.vector(0));  // shared, not copied
        return FUNC_OK;
    }
    const bool withRef = args.numXDivisions(0) == divisions;
    result->setType(args.type(0), withRef ? args.refType(0) : VD_NONE);
    result->setPhysType(args.physType(0), args.refPhysType(0));
    if (args.type(0) == VD_REAL)
        firstOfEachDivision(args, divisions, [&](int d) { return args.data(0, d); },
                            result->makeReal(divisions, RESULT_OWN, -1));
    else
        firstOfEachDivision(args, divisions, [&](int d) { return args.complexData(0, d); },
                            result->makeComplex(divisions, RESULT_OWN, -1));
    if (withRef && args.refType(0) == VD_REAL)
        firstOfEachDivision(args, divisions, [&](int d) { return args.refData(0, d); },
                            result->makeRealRef(divisions, RESULT_OWN, -1));
    else if (withRef)
        firstOfEachDivision(args, divisions, [&](int d) { return args.complexRefData(0, d); },
                            result->makeComplexRef(divisions, RESULT_OWN, -1));
    if (withRef) result->setRefName(args.refName(0));
    return FUNC_OK;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Coll", {arg::Numeric.all()}, 1, coll,
     {.signature = "Coll(v)",
      .summary = "The first point of each run of v, collected into one curve.",
      .returns = "one curve of one value per run, real or complex as v, over the first x-value of each run "
                 "(none when v has no x-values)",
      .notes = "An empty run gives NaN. A vector of one run is returned as it is.",
      .example = "m = makevec([2, 3]); NumDivisions(m); Coll(m)"}},
    {"Interp", {arg::Real.each(), arg::Real, arg::Real, arg::Real}, 2, interp,
     {.signature = "Interp(data, points [, order [, options]])",
      .summary = "data resampled onto evenly spaced x-values.",
      .returns = "a real curve per run over the new x-values, in data's units",
      .notes = "points = [count (or spacing), first x, last x]; first and last default to the data's own. "
               "options = [include end, points[0] is a spacing, ...], flags that count when not 0. By "
               "default the count points run from first in steps of (last - first)/count, so last itself "
               "is not one of them; set the first option to end on it. order defaults to the option "
               "InterpOrder (2: quadratic); 1 is linear. Fewer than 2 points is an error.",
      .example = "v = XY([0, 1, 4, 9, 16], [0, 1, 2, 3, 4]); Interp(v, [2, 0, 4], 1); Interp(v, [3, 0, 4], 1, [1])"}},
    {"PropagationDelay", {arg::Real.upTo(6)}, 4, propagationDelay,
     {.signature = "PropagationDelay(signal1, signal2, level1, level2 [, edge])",
      .summary = "Delays between edges of two signals, each edge found where its signal crosses its level.",
      .returns = "a real curve of delays in signal1's x unit, over the x-values of the signal1 edges that "
                 "were paired; empty when none pairs",
      .notes = "Edges are linear crossings, rising when edge is absent or above 0, else falling. Each "
               "signal is searched whole, all its runs as one curve. Pairing: with a cursor into "
               "signal2's edges that never moves back, each signal1 edge a in turn skips the signal2 edges "
               "at or after a and pairs with the next one left, giving its (negative) delay; so signal2 "
               "must lead. A sixth argument is accepted and ignored.",
      .example = "clk = XY([0, 1, 0, 1, 0, 1, 0], vector(7)); early = XY(clk, vector(7) - 0.25); "
                 "PropagationDelay(clk, early, 0.5, 0.5)"}},
    {"Range", {arg::Curve.each().orKinds(VD_STRING), arg::Real, arg::Real}, 1, range,
     {.signature = "Range(v [, first [, last]])",
      .summary = "The elements of v from index first to index last, both included.",
      .returns = "a vector per run, real, complex or string as v, with the same stretch of its x-values and "
                 "its units",
      .notes = "Indices count from 0; first defaults to 0, last to the last element. A last before first, "
               "or an index outside v, fails with \"Invalid range in 'Range()' function\".",
      .example = "Range(XY([10, 11, 12, 13], [0, 1, 2, 3]), 1, 2)"}},
    {"Ref", {arg::Numeric.each()}, 1, ref,
     {.signature = "Ref(v)",
      .summary = "The x-values of v as a vector.",
      .returns = "a vector per run, real or complex as the x-values, in v's x unit, without x-values",
      .notes = "v without x-values gives an empty result.",
      .example = "Ref(XY([5, 6, 7], [0.1, 0.2, 0.4]))"}},
    {"XFromY", {arg::Real.each(), arg::Real.each(), arg::Real, arg::Real}, 2, searchHandler<Search::XFromY>,
     {.signature = "XFromY(data, level [, order [, direction]])",
      .summary = "The x-values where data crosses a level.",
      .returns = "real values per run in data's x unit, one per crossing in the order of the curve, without "
                 "x-values; no crossing gives an empty result",
      .notes = "Between points the crossing is found on the interpolating polynomial of order order, "
               "default the option InterpOrder (2, quadratic; 0 or less also means it); order 1 is "
               "straight-line interpolation. direction > 0 keeps rising crossings, < 0 falling ones, 0 "
               "(default) all. A point exactly on the level counts once; a NaN breaks the curve.",
      .example = "v = XY([0, 1, 4, 9, 16], [0, 1, 2, 3, 4]); XFromY(v, 6); XFromY(v, 6, 1)"}},
    {"XY", {arg::Real.each(), arg::Real.each()}, 2, xy,
     {.signature = "XY(y, x)",
      .summary = "The curve of y's values over x's values.",
      .returns = "a real curve per run with y's length and unit; x unit and name from x",
      .notes = "Where x is shorter than y the missing x-values are NaN; where longer, its extra values are "
               "dropped. x is not sorted (see XYOrdered).",
      .example = "XY([1, 4, 9], [1, 2, 3])"}},
    {"XYOrdered", {arg::Real.each(), arg::Real.each()}, 2, xyOrdered,
     {.signature = "XYOrdered(y, x)",
      .summary = "The curve of y over x with the pairs sorted by ascending x.",
      .returns = "a real curve per run, units as XY",
      .notes = "The sort is stable (equal x keep their order) and puts NaN x last. y and x of different "
               "lengths give an empty result, without a message.",
      .example = "XYOrdered([30, 10, 20], [3, 1, 2])"}},
    {"YFromX", {arg::Real.each(), arg::Real.each(), arg::Real}, 2, searchHandler<Search::YFromX>,
     {.signature = "YFromX(data, x [, order])",
      .summary = "The y-values of data at an x-value.",
      .returns = "real values per run in data's unit, one for each place the x-values reach x (one for "
                 "monotonic x), without x-values; x outside the data gives an empty result",
      .notes = "The value comes from the interpolating polynomial of order order, default the option "
               "InterpOrder (2, quadratic; 0 or less also means it); order 1 is straight-line "
               "interpolation. No extrapolation.",
      .example = "v = XY([0, 1, 4, 9, 16], [0, 1, 2, 3, 4]); YFromX(v, 2.5); YFromX(v, 2.5, 1)"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

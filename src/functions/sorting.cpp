// Sorting and array search: Sort, SortIdx, SortIdx2, Search and MapArray.
//
// Orders. Strings are ordered as the C library's _stricmp orders them: byte by byte after
// lower-casing ASCII letters, bytes unsigned, a string before its extensions. Numbers are ordered
// by value, complex numbers by magnitude; -0 equals 0, and NaN comes last in either direction.
// Elements that compare equal keep their input order, so every result is reproducible.
//
// Sort(strings [, "unique"]): the strings in ascending order; with "unique" (any case) only the
// first of the strings that are equal ignoring case is kept, in that spelling. Any other option
// word is ignored; there is no descending Sort.
// SortIdx(v [, "reverse"]), SortIdx2(v [, "reverse"]): the 0-based positions that put v (real,
// complex or string) in order, as reals. Strings ascend by default and descend with "reverse" (any
// case) in both. Numbers deliberately go the other way round in the two: SortIdx puts the largest
// first by default and the smallest first with "reverse"; SortIdx2 the smallest first by default
// and the largest first with "reverse".
// Search(haystack, sought [, options]): options (any case) "count" and "Path". Strings are equal
// when _stricmp finds them so, or in path mode when they are the same file name (pathEquals in
// support/text.hpp). One sought string: its first position in the haystack, or -1 (with "count": 1
// or 0). Several: the first position of each, or -1, found through a hash index of the haystack
// (with "count": one value, how many of them were found). None: an empty result (with "count": 0).
// MapArray(values, positions): a vector as long as the largest position rounded down, plus one (at
// least 1), where value i is written at position i (floor, truncated) for the pairs up to the
// shorter list; a negative or NaN position writes nothing and a later value replaces an earlier
// one. Unwritten elements are -1 (real values) or "" (strings); values of another kind give an
// empty result. A result of more than kMaxMadeElements elements is refused with a message, rather than
// left to exhaust memory.
//
// Nothing else reports a message: unusable input gives the results stated.
#include "support/hash_table.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wavex {
namespace {

std::string_view text(const StrElem& s) { return s ? std::string_view(*s) : std::string_view(); }

// ---- Radix sort ------------------------------------------------------------------------------------
//
// A least-significant-digit radix sort of positions by 64-bit keys whose unsigned order is the order
// wanted (numbers, or the heads of strings): stable, so equal keys keep their input order, and
// linear in the length.

struct Keyed {
    uint64_t key;
    uint32_t position;
};

// The key of x: the IEEE bits made to order as unsigned numbers, complemented for a descending
// order; NaN gets the largest key, which no number reaches in either direction.
uint64_t orderKey(double x, bool descending) {
    if (std::isnan(x)) return std::numeric_limits<uint64_t>::max();
    uint64_t u = std::bit_cast<uint64_t>(x + 0.0);  // + 0.0 turns -0 into 0
    u = u >> 63 ? ~u : u | uint64_t(1) << 63;
    return descending ? ~u : u;
}

void radixSort(std::vector<Keyed>& items) {
    constexpr unsigned kBits = 11, kPasses = 6;  // 66 bits
    constexpr size_t kRadix = size_t(1) << kBits;
    size_t n = items.size();
    if (n < 256) {
        std::stable_sort(items.begin(), items.end(), [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
        return;
    }
    std::vector<size_t> counts(kPasses * kRadix);
    for (const Keyed& item : items)
        for (unsigned p = 0; p < kPasses; ++p) ++counts[p * kRadix + (item.key >> (p * kBits) & (kRadix - 1))];
    std::vector<Keyed> other(n);
    for (unsigned p = 0; p < kPasses; ++p) {
        size_t* count = &counts[p * kRadix];
        unsigned shift = p * kBits;
        if (count[items[0].key >> shift & (kRadix - 1)] == n) continue;  // one digit for all: nothing moves
        size_t sum = 0;
        for (size_t d = 0; d < kRadix; ++d) sum += std::exchange(count[d], sum);
        for (const Keyed& item : items) other[count[item.key >> shift & (kRadix - 1)]++] = item;
        items.swap(other);
    }
}

template <class T, class Magnitude>
std::vector<Keyed> numberKeys(const T* v, size_t n, bool descending, Magnitude magnitude) {
    std::vector<Keyed> items(n);
    for (size_t i = 0; i < n; ++i) items[i] = {orderKey(magnitude(v[i]), descending), static_cast<uint32_t>(i)};
    return items;
}

// ---- Strings in order ------------------------------------------------------------------------------
//
// Every string lower-cased into one buffer, so that comparing two is a memcmp; the first eight
// lowered bytes of each, as a big-endian number (zeros after a shorter string), order the strings
// as far as they go.

class StringKeys {
public:
    StringKeys(const StrElem* s, size_t n) : starts_(n + 1) {
        size_t bytes = 0;
        for (size_t i = 0; i < n; ++i) bytes += text(s[i]).size();
        lowered_.resize(bytes);
        char* out = lowered_.data();
        for (size_t i = 0; i < n; ++i) {
            starts_[i] = static_cast<size_t>(out - lowered_.data());
            for (char c : text(s[i])) *out++ = asciiLower(c);
        }
        starts_[n] = bytes;
    }
    std::string_view operator[](size_t i) const {
        return std::string_view(lowered_).substr(starts_[i], starts_[i + 1] - starts_[i]);
    }
    uint64_t prefix(size_t i) const {
        unsigned char head[8] = {};
        std::string_view s = (*this)[i];
        std::memcpy(head, s.data(), std::min<size_t>(s.size(), 8));
        uint64_t v = 0;
        for (unsigned char c : head) v = v << 8 | c;
        return v;
    }

private:
    std::string lowered_;
    std::vector<size_t> starts_;
};

// Radix-sorted by the eight-byte heads, then each run of equal heads by the rest of its strings:
// the runs are short unless many strings share their first eight bytes.
std::vector<Keyed> stringOrder(const StringKeys& keys, size_t n, bool descending) {
    std::vector<Keyed> items(n);
    for (size_t i = 0; i < n; ++i) items[i] = {descending ? ~keys.prefix(i) : keys.prefix(i), static_cast<uint32_t>(i)};
    radixSort(items);
    auto before = [&](const Keyed& a, const Keyed& b) {
        int c = keys[a.position].compare(keys[b.position]);
        return descending ? c > 0 : c < 0;
    };
    for (auto run = items.begin(); run != items.end();) {
        auto end = std::find_if(run + 1, items.end(), [&](const Keyed& k) { return k.key != run->key; });
        if (end - run > 1) std::stable_sort(run, end, before);
        run = end;
    }
    return items;
}

// ---- Results ---------------------------------------------------------------------------------------

bool makeReals(FuncResult* result, int64_t n) {
    result->setType(VD_REAL, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    return result->allocate(n, RESULT_OWN, -1);
}

FUNC_ERROR oneReal(FuncResult* result, double x) {
    if (!makeReals(result, 1)) return FUNC_FAILED;
    result->data()[0] = x;
    return FUNC_OK;
}

FUNC_ERROR positions(FuncResult* result, const std::vector<Keyed>& order) {
    if (!makeReals(result, static_cast<int64_t>(order.size()))) return FUNC_FAILED;
    double* out = result->data();
    for (size_t i = 0; i < order.size(); ++i) out[i] = order[i].position;
    return FUNC_OK;
}

// ---- Sort, SortIdx, SortIdx2 -----------------------------------------------------------------------

// Positions are 32-bit; no vector that fits in memory holds more elements than that.
bool tooManyToSort(int64_t n, const FuncInfo* info, MessageHandler& messages) {
    if (n <= int64_t(std::numeric_limits<uint32_t>::max())) return false;
    messages.error("Function '%s' cannot sort %d elements", info->name, n);
    return true;
}

FUNC_ERROR sort(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    if (tooManyToSort(n, info, *messages)) return FUNC_FAILED;
    const StrElem* s = args.stringData(0);
    StringKeys keys(s, static_cast<size_t>(n));
    std::vector<Keyed> order = stringOrder(keys, static_cast<size_t>(n), false);
    if (iequals(args.string(1), "unique")) {
        // Equal strings are adjacent, the first occurrence leading its run.
        auto last = std::unique(order.begin(), order.end(), [&](const Keyed& a, const Keyed& b) {
            return a.key == b.key && keys[a.position] == keys[b.position];
        });
        order.erase(last, order.end());
    }
    if (!result->makeStrings(static_cast<int64_t>(order.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t i = 0; i < order.size(); ++i) out[i] = s[order[i].position];
    return FUNC_OK;
}

// `largestFirst`: the default order of numbers (SortIdx true, SortIdx2 false).
template <bool largestFirst>
FUNC_ERROR sortIdx(WAVEX_HANDLER_PARAMS) {
    bool reverse = iequals(args.string(1), "reverse");
    auto n = static_cast<size_t>(args.length(0));
    if (tooManyToSort(args.length(0), info, *messages)) return FUNC_FAILED;
    bool numbersDescending = reverse != largestFirst;
    switch (args.type(0)) {
        case VD_STRING: return positions(result, stringOrder(StringKeys(args.stringData(0), n), n, reverse));
        case VD_REAL: {
            std::vector<Keyed> items = numberKeys(args.data(0), n, numbersDescending, [](double x) { return x; });
            radixSort(items);
            return positions(result, items);
        }
        case VD_COMPLEX: {
            std::vector<Keyed> items =
                numberKeys(args.complexData(0), n, numbersDescending, [](Complex z) { return std::abs(z); });
            radixSort(items);
            return positions(result, items);
        }
        default: return FUNC_OK;
    }
}

// ---- Search ----------------------------------------------------------------------------------------

FUNC_ERROR search(WAVEX_HANDLER_PARAMS) {
    bool path = false, count = false;
    for (int64_t k = args.has(2) ? args.length(2) : 0; k-- > 0;) {
        std::string_view word = args.string(2, static_cast<size_t>(k));
        if (iequals(word, "Path")) path = true;
        else if (iequals(word, "count")) count = true;
    }
    auto same = [path](std::string_view a, std::string_view b) { return path ? pathEquals(a, b) : iequals(a, b); };
    int64_t haystack = args.length(0), sought = args.length(1);

    if (sought == 0) {
        return count ? oneReal(result, 0) : FUNC_OK;
    }
    if (sought == 1) {
        std::string_view wanted = args.string(1, 0);
        int64_t at = -1;
        for (int64_t i = 0; i < haystack && at < 0; ++i)
            if (same(args.string(0, static_cast<size_t>(i)), wanted)) at = i;
        return oneReal(result, count ? (at >= 0 ? 1 : 0) : static_cast<double>(at));
    }

    // The position of the first occurrence of each distinct string. The buckets ignore case, so in
    // a case-sensitive path mode strings that differ only in case share a chain: the lookup walks
    // the chain's case-insensitive matches for the one that is the same.
    ChainedHashTable<int64_t, std::string_view> index(101, 2);
    auto lookup = [&](std::string_view key) -> const int64_t* {
        if (!path) return index.find(key);
        const int64_t* found = nullptr;
        index.forEachMatch(key, [&](const auto& e) {
            if (!found && same(e.key, key)) found = &e.value;
        });
        return found;
    };
    for (int64_t i = 0; i < haystack; ++i) {
        std::string_view s = args.string(0, static_cast<size_t>(i));
        if (!lookup(s)) index.insert(s, i);
    }
    if (!makeReals(result, count ? 1 : sought)) return FUNC_FAILED;
    double* out = result->data();
    int64_t found = 0;
    for (int64_t k = 0; k < sought; ++k) {
        const int64_t* at = lookup(args.string(1, static_cast<size_t>(k)));
        if (count) found += at != nullptr;
        else out[k] = at ? static_cast<double>(*at) : -1.0;
    }
    if (count) out[0] = static_cast<double>(found);
    return FUNC_OK;
}

// ---- MapArray --------------------------------------------------------------------------------------

FUNC_ERROR mapArray(WAVEX_HANDLER_PARAMS) {
    VDType kind = args.type(0);
    if (kind != VD_REAL && kind != VD_STRING) return FUNC_OK;
    const double* where = args.data(1);
    int64_t pairs = std::min(args.length(0), args.length(1));
    int64_t largest = 0;
    for (int64_t i = 0; i < args.length(1); ++i) largest = std::max(largest, truncateToInt64(std::floor(where[i])));
    if (!withinMadeElementLimit(largest == std::numeric_limits<int64_t>::max() ? largest : largest + 1, info, *messages))
        return FUNC_FAILED;
    int64_t n = largest + 1;
    auto positionOf = [&](int64_t i) { return truncateToInt64(std::floor(where[i])); };
    if (kind == VD_REAL) {
        result->setType(VD_REAL, VD_NONE);
        result->setPhysType(args.physType(0), units::NoRef);
        if (!result->allocate(n, RESULT_OWN, -1)) return FUNC_FAILED;
        double* out = result->data();
        std::fill_n(out, n, -1.0);
        const double* v = args.data(0);
        for (int64_t i = 0; i < pairs; ++i)
            if (int64_t p = positionOf(i); p >= 0) out[p] = v[i];
    } else {
        if (!result->makeStrings(n)) return FUNC_FAILED;
        StrElem* out = result->stringData();
        std::fill_n(out, n, std::string());
        const StrElem* v = args.stringData(0);
        for (int64_t i = 0; i < pairs; ++i)
            if (int64_t p = positionOf(i); p >= 0) out[p] = v[i];
    }
    return FUNC_OK;
}

// ---- Registration ----------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Sort", {arg::String, arg::String}, 1, sort,
     {.signature = "Sort(strings [, 'unique'])",
      .summary = "The strings in ascending order, ignoring the case of ASCII letters.",
      .returns = "a string vector",
      .notes = "Byte by byte after lower-casing, a string before its extensions; the sort is stable. With "
               "'unique' (any case) only the first of strings equal but for case is kept. There is no "
               "descending order; other option words are ignored.",
      .example = "Sort(['b', 'A', 'a', 'ab']); Sort(['b', 'A', 'a', 'ab'], 'unique')"}},
    {"SortIdx", {arg::Any, arg::String}, 1, sortIdx<true>,
     {.signature = "SortIdx(v [, 'reverse'])",
      .summary = "The 0-based positions that put v in order: numbers largest first, strings ascending.",
      .returns = "real positions, as many as v has elements",
      .notes = "Numbers go largest first by default and smallest first with 'reverse' (the opposite of "
               "SortIdx2); strings ascend ignoring case, and descend with 'reverse'. Complex values "
               "compare by magnitude; NaN comes last either way; ties keep their input order.",
      .example = "SortIdx([3, 1, 2]); SortIdx([3, 1, 2], 'reverse')"}},
    {"SortIdx2", {arg::Any, arg::String}, 1, sortIdx<false>,
     {.signature = "SortIdx2(v [, 'reverse'])",
      .summary = "The 0-based positions that put v in ascending order.",
      .returns = "real positions, as many as v has elements",
      .notes = "Numbers and strings ascend by default and descend with 'reverse'. As SortIdx otherwise.",
      .example = "SortIdx2([3, 1, 2]); SortIdx2(['b', 'C', 'a'])"}},
    {"Search", {arg::String, arg::String, arg::String}, 2, search,
     {.signature = "Search(haystack, sought [, options])",
      .summary = "The position of each sought string in a string vector, ignoring case.",
      .returns = "real values: for one sought string its first position or -1; for several the first "
                 "position of each, or -1",
      .notes = "options (any case): 'count' gives instead how many of the sought strings were found; "
               "'path' compares strings as file names.",
      .example = "Search(['R1', 'C1', 'L1'], ['c1', 'Q1']); Search(['R1', 'C1', 'L1'], ['c1', 'Q1'], 'count')"}},
    {"MapArray", {arg::Any, arg::Real}, 2, mapArray,
     {.signature = "MapArray(values, positions)",
      .summary = "A vector with each value written at its position.",
      .returns = "a vector as long as the largest position plus one, real or string as values",
      .notes = "Positions are truncated; a negative or NaN one writes nothing, and a later value replaces "
               "an earlier one. Elements not written are -1 (numbers) or \"\" (strings).",
      .example = "MapArray([10, 20, 30], [2, 0, 4])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

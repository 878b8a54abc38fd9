// User hash tables: string-to-string dictionaries that live outside any script variable, addressed
// by a numeric handle, kept across command lines until deleted.
//
// Tables have exactly 101 buckets and never grow (a lookup costs size/101 comparisons: part of the
// design). A new entry goes to the head of its bucket's chain; keys are matched ignoring case.
// An ordinary table keeps one value per key (a later HashAdd replaces it); a "multiple" table keeps
// every pair added.
//
// Handles: a process-wide counter, never reset, numbers the tables from 1; no handle is issued
// twice. The registry is a list of slots (handle, table, flags), made on first use; HashDelete
// empties a slot's table and a later HashCreate reuses the slot under a new handle. A slot whose
// table was deleted behaves as an unknown handle. Temporary tables go at the end of the command
// line that made them ("PostCli"); all tables go at "Exit".
//
// No function reports a message: an unknown handle or an empty key list gives 0 or an empty
// array; unknown option words are ignored.
#include "support/hash_table.hpp"
#include "wavex/events.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <vector>

namespace wavex {
namespace {

using UserTable = ChainedHashTable<StrElem>;

struct Slot {
    std::shared_ptr<UserTable> table;  // empty once deleted
    uint32_t handle = 0;
    bool temporary = false;
    bool multiple = false;
};

// The registry and the counter are shared by every interpreter and thread: each function holds
// the lock for its whole call, so a table is never read while another call changes it.
std::mutex registryLock;
std::unique_ptr<std::vector<Slot>> registry;
uint32_t handleCounter = 0;  // never reset: handles are unique in the process

// The slot of a live table with this handle, or null.
Slot* findSlot(double handle) {
    if (!registry || !std::isfinite(handle)) return nullptr;
    auto wanted = static_cast<int64_t>(std::trunc(handle));
    for (Slot& s : *registry)
        if (s.handle == wanted) return s.table ? &s : nullptr;
    return nullptr;
}

void deleteUserHashTables(void*) {
    std::lock_guard guard(registryLock);
    registry.reset();
}

void deleteTemporaryUserHashTables(void*) {
    std::lock_guard guard(registryLock);
    if (!registry) return;
    bool anyLeft = false;
    for (Slot& s : *registry) {
        if (s.temporary) s.table.reset();
        anyLeft |= s.table != nullptr;
    }
    if (!anyLeft) registry.reset();
}

const AutoFunc onExit("Exit", deleteUserHashTables, "deleteUserHashTables");
const AutoFunc onPostCli("PostCli", deleteTemporaryUserHashTables, "deleteTemporaryUserHashTables");

std::string keyOf(const FuncArgs& args, int i, int64_t k) { return std::string(args.string(i, static_cast<size_t>(k))); }

FUNC_ERROR scalarResult(FuncResult* result, double value) {
    result->makeRealNoRef(1)[0] = value;
    return FUNC_OK;
}

FUNC_ERROR stringResult(FuncResult* result, std::vector<StrElem> values) {
    result->setType(VD_STRING, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    result->allocate(static_cast<int64_t>(values.size()), RESULT_OWN, 0);
    std::move(values.begin(), values.end(), result->stringData());
    return FUNC_OK;
}

FUNC_ERROR hashCreate(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    if (!registry) {
        registry = std::make_unique<std::vector<Slot>>();
        registry->reserve(10);
    }
    Slot fresh{std::make_shared<UserTable>(101, 0), ++handleCounter, false, false};
    for (int64_t k = args.count() > 0 ? args.length(0) - 1 : -1; k >= 0; --k) {
        std::string_view word = args.string(0, static_cast<size_t>(k));
        if (iequals(word, "temporary")) fresh.temporary = true;
        else if (iequals(word, "allowmultiple") || iequals(word, "multiple")) fresh.multiple = true;
    }
    auto reusable = std::find_if(registry->begin(), registry->end(), [](const Slot& s) { return !s.table; });
    if (reusable != registry->end()) *reusable = fresh;
    else registry->push_back(fresh);
    return scalarResult(result, fresh.handle);
}

FUNC_ERROR hashAdd(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    Slot* slot = findSlot(args.scalar(0));
    int64_t pairs = std::min(args.length(1), args.length(2));
    if (!slot || pairs == 0) return scalarResult(result, 0);
    const StrElem* values = args.stringData(2);
    for (int64_t k = 0; k < pairs; ++k) {
        std::string key = keyOf(args, 1, k);
        if (!slot->multiple) slot->table->removeAll(key);
        slot->table->insert(std::move(key), values[k]);
    }
    return scalarResult(result, 1);
}

FUNC_ERROR hashSearch(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    Slot* slot = findSlot(args.scalar(0));
    int64_t keys = args.length(1);
    if (!slot || keys == 0) return stringResult(result, {});
    const UserTable& table = *slot->table;
    std::vector<StrElem> found;
    if (slot->multiple) {
        // Every value of the first key, the first added first (the chain holds the newest first).
        table.forEachMatch(args.string(1, 0), [&](const UserTable::Entry& e) { found.push_back(e.value); });
        std::reverse(found.begin(), found.end());
        return stringResult(result, std::move(found));
    }
    bool hasDefault = args.count() > 2;
    if (keys == 1 && !hasDefault) {
        if (const StrElem* v = table.find(args.string(1, 0))) found.push_back(*v);
        return stringResult(result, std::move(found));
    }
    StrElem fallback = hasDefault && args.length(2) > 0 ? args.stringData(2)[0] : StrElem("");
    for (int64_t k = 0; k < keys; ++k) {
        const StrElem* v = table.find(args.string(1, static_cast<size_t>(k)));
        found.push_back(v ? *v : fallback);
    }
    return stringResult(result, std::move(found));
}

FUNC_ERROR hashKeys(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    std::vector<StrElem> keys;
    if (Slot* slot = findSlot(args.scalar(0)))
        slot->table->forEach([&](const UserTable::Entry& e) { keys.emplace_back(e.key); });
    return stringResult(result, std::move(keys));
}

FUNC_ERROR hashRemove(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    Slot* slot = findSlot(args.scalar(0));
    if (!slot) return scalarResult(result, 0);
    size_t removed = 0;
    for (int64_t k = 0; k < args.length(1); ++k) removed += slot->table->removeAll(args.string(1, static_cast<size_t>(k)));
    return scalarResult(result, static_cast<double>(removed));
}

FUNC_ERROR hashDelete(WAVEX_HANDLER_PARAMS) {
    std::lock_guard guard(registryLock);
    Slot* slot = findSlot(args.scalar(0));
    if (!slot) return scalarResult(result, 0);
    slot->table.reset();
    return scalarResult(result, 1);
}

constexpr FuncInfo kHashFunctions[] = {
    {"HashAdd", {arg::Real, arg::String, arg::String}, 3, hashAdd,
     {.signature = "HashAdd(table, keys, values)",
      .summary = "Adds key/value pairs to a hash table made by HashCreate.",
      .returns = "1 when pairs were added, 0 for an unknown table or no pairs",
      .notes = "Pairs up to the shorter list are added; keys match ignoring case. An ordinary table keeps "
               "one value per key (a later one replaces it), a 'multiple' table every pair.",
      .example = "h = HashCreate(); HashAdd(h, ['R1', 'C1'], ['1k', '1u']); HashSearch(h, 'r1')"}},
    {"HashCreate", {arg::String}, 0, hashCreate,
     {.signature = "HashCreate([options])",
      .summary = "Makes a string-to-string hash table and gives its handle.",
      .returns = "one real: the new table's handle",
      .notes = "The table lives outside any variable until HashDelete. Options (any case): 'multiple' "
               "(or 'allowmultiple') keeps every value added under a key; 'temporary' deletes the table "
               "at the end of the command line. Handles count from 1 and are never reused. A table has "
               "a fixed 101 buckets.",
      .example = "h = HashCreate(['multiple']); HashAdd(h, ['n', 'n'], ['a', 'b']); HashSearch(h, 'n')"}},
    {"HashDelete", {arg::Real}, 1, hashDelete,
     {.signature = "HashDelete(table)",
      .summary = "Deletes a hash table.",
      .returns = "1 when the table was deleted, 0 for an unknown handle",
      .notes = "The handle then behaves as an unknown one.",
      .example = "h = HashCreate(); HashDelete(h); HashDelete(h)"}},
    {"HashKeys", {arg::Real}, 1, hashKeys,
     {.signature = "HashKeys(table)",
      .summary = "The keys of a hash table.",
      .returns = "a string vector, in the table's bucket order; empty for an unknown handle",
      .notes = "Keys come as they were added (case kept); a 'multiple' table lists a key once per pair.",
      .example = "h = HashCreate(); HashAdd(h, ['a', 'b', 'a'], ['1', '2', '3']); Sort(HashKeys(h))"}},
    {"HashRemove", {arg::Real, arg::String}, 2, hashRemove,
     {.signature = "HashRemove(table, keys)",
      .summary = "Removes every pair under the given keys from a hash table.",
      .returns = "one real: how many pairs were removed (0 for an unknown handle)",
      .notes = "Keys match ignoring case.",
      .example = "h = HashCreate(); HashAdd(h, ['a', 'b'], ['1', '2']); HashRemove(h, ['A', 'z']); HashKeys(h)"}},
    {"HashSearch", {arg::Real, arg::String, arg::String}, 2, hashSearch,
     {.signature = "HashSearch(table, keys [, default])",
      .summary = "The values of keys in a hash table.",
      .returns = "a string vector",
      .notes = "One key without a default: its value, or an empty vector when absent. Several keys, or a "
               "default: one value per key, the default (or \"\") for a key not found. On a 'multiple' "
               "table: every value of the first key, in the order added.",
      .example = "h = HashCreate(); HashAdd(h, ['a', 'b'], ['1', '2']); HashSearch(h, ['b', 'x'], '?')"}},
};
const FuncFamily hashFamily(kHashFunctions);

}  // namespace
}  // namespace wavex

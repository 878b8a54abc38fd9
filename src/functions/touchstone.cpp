// Touchstone network-parameter files: LoadTouchstone, ReadTouchstone, ParseTouchstone,
// GetTouchstoneErrors, DeleteTouchstone.
//
// LoadTouchstone(file, ports) reads a file once through the table reader (AcTableData, which
// owns the grammar and the messages) and keeps it in a process-wide store under a handle:
// [handle, 1 if the table was built else 0]. Handles count from 1 and are never reused, not even
// after the store was emptied; the store lists the newest entry first; an entry is shared, so a
// call that found it keeps it alive to its end. A file that failed to build is kept all the same,
// so that GetTouchstoneErrors(handle) can say why (one string per message, in file order).
//
// ReadTouchstone(handle, row, column) gives the parameter at the flat index n·row + column of the
// row-major n×n matrix, and ParseTouchstone(file, ports, index) does the same from a file in one
// shot with the flat index given directly, keeping nothing. Both give 3·P real numbers for the P
// frequency points, triples (frequency in Hz, real part, imaginary part), with no unit and no
// x-reference: the frequency is part of the data. Row and column are not checked one by one: any
// pair whose flat index lies in 0 … n²−1 is accepted (row 0, column n+1 is row 1, column 1).
//
// DeleteTouchstone(handle) removes that entry, or every entry for a handle below 1, and gives the
// number removed. The store is emptied only by DeleteTouchstone, never by a host event.
//
// Bad input: these functions report nothing themselves. An unknown handle, a flat index outside
// the matrix, or a file ParseTouchstone cannot build, give no result (an empty vector);
// problems in a file are the reader's messages.
#include "support/numbers.hpp"
#include "support/touchstone.hpp"
#include "wavex/function.hpp"

#include <cmath>
#include <forward_list>
#include <memory>
#include <mutex>

namespace wavex {
namespace {

struct TouchstoneEntry {
    TouchstoneEntry(std::string file, int32_t ports, int32_t handle_)
        : table(std::move(file), ports, DcExtractionMethod::Hold, AcTableInterpMethod::Linear), numPorts(ports),
          handle(handle_) {}
    AcTableData table;
    std::vector<std::string> errors;
    int32_t numPorts;
    bool built = false;
    int32_t handle;
};
using EntryRef = std::shared_ptr<TouchstoneEntry>;

// Shared by every interpreter and thread. An entry never changes once stored, so a call reads the
// one it found without holding the lock.
class TouchstoneStore {
public:
    int32_t issueHandle() {
        std::lock_guard guard(lock_);
        return ++lastHandle_;
    }
    void add(EntryRef entry) {
        std::lock_guard guard(lock_);
        entries_.push_front(std::move(entry));
        ++count_;
    }
    EntryRef find(double handle) const {
        int32_t h = truncateToInt32(handle);
        std::lock_guard guard(lock_);
        for (const EntryRef& e : entries_)
            if (e->handle == h) return e;
        return nullptr;
    }
    // Removes the entry with this handle; every entry for a handle below 1.
    size_t remove(int32_t handle) {
        std::lock_guard guard(lock_);
        size_t removed = count_;
        if (handle < 1) entries_.clear();
        else removed = entries_.remove_if([&](const EntryRef& e) { return e->handle == handle; });
        count_ -= removed;
        return removed;
    }

private:
    mutable std::mutex lock_;
    std::forward_list<EntryRef> entries_;  // newest first
    size_t count_ = 0;
    int32_t lastHandle_ = 0;
};

TouchstoneStore& store() {
    static TouchstoneStore s;
    return s;
}

// The triples of parameter k of every point; nothing when k lies outside the n×n matrix.
FUNC_ERROR writeTriples(FuncResult* result, const AcTableData& table, int64_t ports, int64_t k) {
    if (k < 0 || k >= ports * ports) return FUNC_OK;
    size_t points = table.numPoints();
    double* out = result->makeRealNoRef(static_cast<int64_t>(3 * points));
    if (points && !out) return FUNC_FAILED;
    for (size_t i = 0; i < points; ++i, out += 3) {
        AcTableFrequencyPoint p = table.get(i);
        std::complex<double> z = p.value(static_cast<size_t>(k));
        out[0] = p.frequency;
        out[1] = z.real();
        out[2] = z.imag();
    }
    return FUNC_OK;
}

FUNC_ERROR loadTouchstone(WAVEX_HANDLER_PARAMS) {
    auto entry = std::make_shared<TouchstoneEntry>(std::string(args.string(0)), truncateToInt32(args.scalar(1)),
                                                   store().issueHandle());
    entry->built = entry->table.build(&entry->errors);
    store().add(entry);
    double* out = result->makeRealNoRef(2);
    if (!out) return FUNC_FAILED;
    out[0] = entry->handle;
    out[1] = entry->built ? 1.0 : 0.0;
    return FUNC_OK;
}

FUNC_ERROR readTouchstone(WAVEX_HANDLER_PARAMS) {
    EntryRef entry = store().find(args.scalar(0));
    if (!entry) return FUNC_OK;
    int64_t n = entry->numPorts;
    int64_t k = n * truncateToInt32(args.scalar(1)) + truncateToInt32(args.scalar(2));
    return writeTriples(result, entry->table, n, k);
}

FUNC_ERROR parseTouchstone(WAVEX_HANDLER_PARAMS) {
    int32_t n = truncateToInt32(args.scalar(1));
    int64_t k = truncateToInt32(args.scalar(2));
    if (k < 0 || k >= int64_t{n} * n) return FUNC_OK;
    AcTableData table(std::string(args.string(0)), n, DcExtractionMethod::Hold, AcTableInterpMethod::Linear);
    std::vector<std::string> errors;  // not kept: ParseTouchstone has no way to show them
    if (!table.build(&errors)) return FUNC_OK;
    return writeTriples(result, table, n, k);
}

FUNC_ERROR getTouchstoneErrors(WAVEX_HANDLER_PARAMS) {
    EntryRef entry = store().find(args.scalar(0));
    if (!entry) return FUNC_OK;
    result->setType(VD_STRING, VD_NONE);
    if (!result->allocate(static_cast<int64_t>(entry->errors.size()), RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t i = 0; i < entry->errors.size(); ++i) out[i] = entry->errors[i];
    return FUNC_OK;
}

FUNC_ERROR deleteTouchstone(WAVEX_HANDLER_PARAMS) {
    // NaN is no handle and removes nothing; any other handle below 1 removes every entry.
    double h = args.scalar(0);
    size_t removed = std::isnan(h) ? 0 : store().remove(h < 1 ? 0 : truncateToInt32(h));
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = static_cast<double>(removed);
    return FUNC_OK;
}

constexpr FuncInfo kFunctions[] = {
    {"DeleteTouchstone", {arg::Real}, 1, deleteTouchstone,
     {.signature = "DeleteTouchstone(handle)",
      .summary = "Forgets a Touchstone file loaded by LoadTouchstone.",
      .returns = "one real: the number of tables removed",
      .notes = "A handle below 1 removes every loaded table. Loaded tables stay until deleted.",
      .example = "h = LoadTouchstone('missing.s2p', 2); DeleteTouchstone(h[0]); DeleteTouchstone(h[0])"}},
    {"GetTouchstoneErrors", {arg::Real}, 1, getTouchstoneErrors,
     {.signature = "GetTouchstoneErrors(handle)",
      .summary = "The problems found in a Touchstone file loaded by LoadTouchstone.",
      .returns = "a string vector, one message per problem in file order (\"Line N: ...\", at most 100); "
                 "empty for a good file or an unknown handle",
      .notes = "A file that failed to build is kept under its handle so that its messages can be read.",
      .example = "h = LoadTouchstone('missing.s2p', 2); GetTouchstoneErrors(h[0])"}},
    {"LoadTouchstone", {arg::String, arg::Real}, 2, loadTouchstone,
     {.signature = "LoadTouchstone(file, ports)",
      .summary = "Reads a Touchstone network-parameter file of ports ports and keeps it under a handle.",
      .returns = "two reals: [handle, 1 when the table was built else 0]",
      .notes = "Versions 1.x and 2.0; frequencies are converted to Hz. Read the parameters with "
               "ReadTouchstone, the problems with GetTouchstoneErrors; free it with DeleteTouchstone. "
               "Handles count from 1 and are never reused.",
      .example = "h = LoadTouchstone('missing.s2p', 2); h[1]"}},
    {"ParseTouchstone", {arg::String, arg::Real, arg::Real}, 3, parseTouchstone,
     {.signature = "ParseTouchstone(file, ports, index)",
      .summary = "One parameter of a Touchstone file, read in one call without keeping the file.",
      .returns = "3·P reals for P frequency points: triples (frequency in Hz, real part, imaginary part), "
                 "without unit or x-values",
      .notes = "index is the flat row-major position n·row + column in the n×n matrix (S21 of a 2-port "
               "is 2). A file that does not build, or an index outside the matrix, gives an empty "
               "result; use LoadTouchstone to see why.",
      .example = "length(ParseTouchstone('missing.s2p', 2, 2))"}},
    {"ReadTouchstone", {arg::Real, arg::Real, arg::Real}, 3, readTouchstone,
     {.signature = "ReadTouchstone(handle, row, column)",
      .summary = "One parameter of a Touchstone file loaded by LoadTouchstone.",
      .returns = "3·P reals for P frequency points: triples (frequency in Hz, real part, imaginary part), "
                 "without unit or x-values",
      .notes = "Row and column count from 0 and only their flat index n·row + column is checked "
               "against the n×n matrix. An unknown handle or an index outside gives an empty result.",
      .example = "h = LoadTouchstone('missing.s2p', 2); length(ReadTouchstone(h[0], 1, 0))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// The parts selector's databases: semicolon-separated text files of records, one record a line.
//
// A line is cut into fields at ";"; a field enclosed in "<" and ">" may hold ";" (the enclosing
// marks are dropped, and they nest: "<a<b;c>d>" is one field). A ";" at the very end of a line
// ends its last field, so "a;b;" has the two fields a and b and the line written for a record
// reads back with the same fields. Field 0 is the record's key. Blank lines are skipped.
//
// The records of a file are kept in the project's ChainedHashTable: 101 buckets, the bucket of a
// key being hashValue(key) modulo the bucket count, a new record at the head of its bucket, keys
// compared ignoring ASCII case, the table growing when records / 2 exceed the buckets. Records
// with the same key are all kept; a lookup finds the one read last. Walking the table (writing
// it, applying a journal) goes bucket by bucket, each chain from its head.
//
// Writing a field rebuilds the record's line as every field followed by ";" (so it ends with
// ";"), each written bare: a field holding ";" loses its "<" ">" and reads back from the written
// file as several fields (the record itself keeps its fields as they were).
//
// A journal is a database whose records name the record to change in field 0 and carry an
// action word in a column the caller chooses: "edit", "add" or "delete" (any case).
#pragma once

#include "support/hash_table.hpp"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// Cuts a database line into fields as described above; returns their number (at least 1).
// The fields view `line`.
size_t splitPartsLine(std::string_view line, std::vector<std::string_view>& fields);

// Whether a line holds nothing but blanks (space, tab, carriage return).
bool isBlankLine(std::string_view line);

// One record: its line (as read, or as rebuilt after a field was written) and where each field
// lies in it. Fields are views into the line, so a record costs two allocations however many
// fields it has.
class PartsRecord {
public:
    PartsRecord() = default;
    explicit PartsRecord(std::string_view line);

    const std::string& line() const { return line_; }
    size_t fieldCount() const { return spans_.size(); }
    // Field i, or "" beyond the last field (and for a negative index).
    std::string_view field(int64_t i) const;
    std::string_view key() const { return field(0); }

    // Writes field i (adding empty fields up to it) and rebuilds the line.
    void setField(size_t i, std::string_view value);
    // Lets edit(fields) change a copy of the fields, then rebuilds the line from them if it
    // returns true (it changed something).
    template <class F>
    void editFields(F edit) {
        std::vector<std::string> fields = copyFields();
        if (edit(fields)) rebuild(fields);
    }

private:
    struct Span {
        size_t begin;
        size_t size;
    };
    std::vector<std::string> copyFields() const;
    void rebuild(const std::vector<std::string>& fields);

    std::string line_;
    std::vector<Span> spans_;
};

// A list of names matched ignoring case: the category filter of a read.
class NameFilter {
public:
    NameFilter() = default;
    // The entries of `text` separated by "|", blanks around each dropped; empty entries ignored.
    explicit NameFilter(std::string_view text);
    bool empty() const { return names_.size() == 0; }
    bool contains(std::string_view name) const { return names_.find(name) != nullptr; }

private:
    ChainedHashTable<bool> names_{101, 2};
};

class PartsDatabase {
public:
    PartsDatabase() : table_(101, 2) {}

    size_t size() const { return table_.size(); }
    size_t bucketCount() const { return table_.bucketCount(); }
    void insert(PartsRecord record);
    // The record with this key read last, or null.
    const PartsRecord* find(std::string_view key) const { return table_.find(key); }
    // Calls f(record) for every record, in table order.
    template <class F>
    void forEach(F f) const {
        table_.forEach([&](const auto& entry) { f(entry.value); });
    }

    // Reads the lines of a file into the table. With a filter, a line whose field 2 is not empty
    // is kept only when the filter holds field 2. Returns false, leaving the table as it was,
    // when the file cannot be opened.
    bool read(const std::string& path, const NameFilter* filter = nullptr);
    // The same for text in memory.
    void readText(std::string_view text, const NameFilter* filter = nullptr);
    // Writes every record's line followed by a newline, in table order; false on a write error.
    bool write(std::FILE* out) const;

private:
    ChainedHashTable<PartsRecord> table_;
};

// Applies `journal` to `database` with the action word in column `actionColumn`:
// - a record whose key the journal does not hold is copied unchanged;
// - a record whose key's journal record (the one read last) says "edit" is copied with every
//   non-empty journal field written over it, for the columns 0 < i < min(field counts) other
//   than the action column (empty journal fields leave the value as it was);
// - a record whose journal record says anything else ("add", "delete", an unknown word) is
//   dropped;
// then every journal record that says "add" is entered with its action column emptied (so an
// "add" of an existing key replaces it).
PartsDatabase applyJournal(const PartsDatabase& database, const PartsDatabase& journal, int64_t actionColumn);

}  // namespace wavex

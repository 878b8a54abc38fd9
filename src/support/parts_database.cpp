#include "support/parts_database.hpp"

#include "support/split.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <memory>

namespace wavex {

size_t splitPartsLine(std::string_view line, std::vector<std::string_view>& fields) {
    return sp_SplitLine(line, ';', "<>", fields, kSplitTerminated);
}

bool isBlankLine(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

// ---- Records -------------------------------------------------------------------------------------

PartsRecord::PartsRecord(std::string_view line) : line_(line) {
    std::vector<std::string_view> fields;
    splitPartsLine(line_, fields);
    spans_.reserve(fields.size());
    for (std::string_view f : fields) spans_.push_back({static_cast<size_t>(f.data() - line_.data()), f.size()});
}

std::string_view PartsRecord::field(int64_t i) const {
    if (i < 0 || static_cast<uint64_t>(i) >= spans_.size()) return {};
    return std::string_view(line_).substr(spans_[i].begin, spans_[i].size);
}

std::vector<std::string> PartsRecord::copyFields() const {
    std::vector<std::string> fields;
    fields.reserve(spans_.size());
    for (size_t i = 0; i < spans_.size(); ++i) fields.emplace_back(field(static_cast<int64_t>(i)));
    return fields;
}

void PartsRecord::setField(size_t i, std::string_view value) {
    std::vector<std::string> fields = copyFields();
    if (i >= fields.size()) fields.resize(i + 1);
    fields[i] = value;
    rebuild(fields);
}

void PartsRecord::rebuild(const std::vector<std::string>& fields) {
    size_t length = 0;
    for (const std::string& f : fields) length += f.size() + 1;
    line_.clear();
    line_.reserve(length);
    spans_.clear();
    for (const std::string& f : fields) {
        spans_.push_back({line_.size(), f.size()});
        line_ += f;
        line_ += ';';
    }
}

// ---- Filter --------------------------------------------------------------------------------------

NameFilter::NameFilter(std::string_view text) {
    std::vector<std::string_view> entries;
    sp_SplitLine(text, '|', entries);
    for (std::string_view e : entries)
        if (!(e = trim(e)).empty()) names_.insert(std::string(e), true);
}

// ---- Tables --------------------------------------------------------------------------------------

void PartsDatabase::insert(PartsRecord record) {
    std::string key(record.key());
    table_.insert(std::move(key), std::move(record));
}

bool PartsDatabase::read(const std::string& path, const NameFilter* filter) {
    std::string text;
    if (path.empty() || !readWholeFile(path, text).empty()) return false;
    readText(text, filter);
    return true;
}

void PartsDatabase::readText(std::string_view text, const NameFilter* filter) {
    if (filter && filter->empty()) filter = nullptr;
    std::vector<std::string_view> fields;
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (isBlankLine(line)) continue;
        if (filter) {
            splitPartsLine(line, fields);
            if (fields.size() > 2 && !fields[2].empty() && !filter->contains(fields[2])) continue;
        }
        insert(PartsRecord(line));
    }
}

bool PartsDatabase::write(std::FILE* out) const {
    bool ok = true;
    forEach([&](const PartsRecord& r) {
        ok = ok && std::fwrite(r.line().data(), 1, r.line().size(), out) == r.line().size() && std::fputc('\n', out) != EOF;
    });
    return ok;
}

// ---- Journals ------------------------------------------------------------------------------------

PartsDatabase applyJournal(const PartsDatabase& database, const PartsDatabase& journal, int64_t actionColumn) {
    PartsDatabase result;
    database.forEach([&](const PartsRecord& d) {
        const PartsRecord* j = journal.find(d.key());
        if (!j) {
            result.insert(d);
            return;
        }
        if (!iequals(j->field(actionColumn), "edit")) return;  // add, delete, any other word
        PartsRecord edited = d;
        edited.editFields([&](std::vector<std::string>& fields) {
            size_t columns = std::min(fields.size(), j->fieldCount());
            bool written = false;
            for (size_t i = 1; i < columns; ++i)
                if (static_cast<int64_t>(i) != actionColumn && !j->field(i).empty()) {
                    fields[i] = j->field(i);
                    written = true;
                }
            return written;
        });
        result.insert(std::move(edited));
    });
    if (actionColumn >= 0)
        journal.forEach([&](const PartsRecord& j) {
            if (!iequals(j.field(actionColumn), "add")) return;
            PartsRecord added = j;
            added.setField(static_cast<size_t>(actionColumn), "");
            result.insert(std::move(added));
        });
    return result;
}

}  // namespace wavex

#include "support/text_table.hpp"

#include "support/split.hpp"
#include "support/text.hpp"

#include <charconv>

namespace wavex {
namespace {

bool blankLine(std::string_view s) { return s.find_first_not_of(" \t\r") == std::string_view::npos; }

// The most frequent of ',' ';' '\t' outside double quotes; ' ' (blanks) when none occurs.
char detectDelimiter(std::string_view header) {
    size_t comma = 0, semicolon = 0, tab = 0;
    bool quoted = false;
    for (char c : header) {
        if (c == '"') quoted = !quoted;
        else if (!quoted) comma += c == ',', semicolon += c == ';', tab += c == '\t';
    }
    if (tab && tab >= semicolon && tab >= comma) return '\t';
    if (semicolon && semicolon >= comma) return ';';
    return comma ? ',' : ' ';
}

}  // namespace

char TextTable::delimiterNamed(std::string_view name) {
    if (name == "," || name == ";" || name == "\t") return name[0];
    if (name == " " || iequals(name, "blank") || iequals(name, "space")) return ' ';
    if (iequals(name, "tab")) return '\t';
    return '\0';
}

std::string_view TextTable::text(std::string_view raw) {
    if (raw.size() >= 2 && raw.front() == '"' && raw.back() == '"') return raw.substr(1, raw.size() - 2);
    return raw;
}

void TextTable::cut(std::string_view line, std::vector<std::string_view>& out) const {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (delimiter_ == ' ')
        sp_ScanLine(line, " \t", "\"", "\"", out, SIZE_MAX, kSplitKeepQuotes);
    else
        sp_SplitLine(line, delimiter_, "\"", out, kSplitKeepQuotes);
}

TextTable::TextTable(std::span<const std::string_view> lines, char delimiter) {
    size_t first = 0;
    while (first < lines.size() && blankLine(lines[first])) ++first;
    if (first == lines.size()) {
        error_ = "The table has no header line";
        return;
    }
    headerLine_ = lines[first];
    delimiter_ = delimiter ? delimiter : detectDelimiter(headerLine_);
    cut(headerLine_, header_);
    columns_ = header_.size();
    if (columns_ == 0) {
        error_ = "The table's header names no columns";
        return;
    }
    rowLines_.reserve(lines.size() - first - 1);
    for (size_t i = first + 1; i < lines.size(); ++i)
        if (!blankLine(lines[i])) rowLines_.push_back(lines[i]);
}

bool TextTable::keep(std::vector<size_t> columns) {
    kept_ = std::move(columns);
    cells_.clear();
    cells_.reserve(rowLines_.size() * kept_.size());
    std::vector<std::string_view> fields;
    for (size_t r = 0; r < rowLines_.size(); ++r) {
        cut(rowLines_[r], fields);
        if (fields.size() != columns_) {
            error_ = "Row " + std::to_string(r + 1) + " of the table has " + std::to_string(fields.size()) +
                     " cells, the header has " + std::to_string(columns_);
            return false;
        }
        if (rowLines_[r].size() > UINT32_MAX) {
            error_ = "Row " + std::to_string(r + 1) + " of the table is longer than 4 GB";
            return false;
        }
        for (size_t c : kept_)
            cells_.push_back({static_cast<uint32_t>(fields[c].data() - rowLines_[r].data()),
                              static_cast<uint32_t>(fields[c].size())});
    }
    return true;
}

std::optional<size_t> TextTable::column(std::string_view nameOrIndex) const {
    for (size_t c = 0; c < columns_; ++c)
        if (iequals(name(c), nameOrIndex)) return c;
    size_t index = 0;
    auto [end, ec] = std::from_chars(nameOrIndex.data(), nameOrIndex.data() + nameOrIndex.size(), index);
    if (ec == std::errc() && end == nameOrIndex.data() + nameOrIndex.size() && !nameOrIndex.empty() && index < columns_)
        return index;
    return std::nullopt;
}

}  // namespace wavex

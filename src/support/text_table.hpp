// Tables of text data: lines whose first line names the columns, cells cut at a delimiter.
//
// The delimiter is a comma, a semicolon, a tab or runs of blanks (spaces and tabs). Unless the
// caller names one, it is the one of ',', ';' and '\t' found most often outside double quotes in
// the header (a tie goes to the tab, then the semicolon), or blanks when the header holds none.
// A cell quoted in double quotes keeps its delimiters ("a,b" is one cell); cells are kept as
// written, quote marks included, so that a row rebuilt from its cells is the line again, and
// read without their enclosing marks (text()). Blank lines are skipped.
//
// The table is read in two steps: the constructor cuts the header and finds the rows; keep()
// cuts every row and keeps the cells of the columns a caller reads, so that a table of millions
// of rows holds only those. Every row must have as many cells as the header: a ragged row fails
// keep() with "Row N of the table has K cells, the header has M" (N counting data rows from 1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

class TextTable {
public:
    // The delimiter a name gives: ",", ";", "\t" (or "tab"), " " (or "blank", "space"; runs of
    // blanks); '\0' for anything else.
    static char delimiterNamed(std::string_view name);

    // Cuts the header of the lines (views that must outlive the table) and finds the rows;
    // `delimiter` '\0' detects it. On failure ok() is false and error() tells why.
    TextTable(std::span<const std::string_view> lines, char delimiter);
    // Cuts the rows, keeping the cells of `columns` (numbers from column()); false (error() set)
    // for a ragged row.
    bool keep(std::vector<size_t> columns);

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    char delimiter() const { return delimiter_; }  // ' ' for runs of blanks
    size_t columns() const { return columns_; }
    size_t rows() const { return rowLines_.size(); }  // data rows, header not counted

    // The column a name (case ignored, matched against the header's cell texts) or a 0-based
    // number written as digits stands for; nullopt when none.
    std::optional<size_t> column(std::string_view nameOrIndex) const;
    std::string_view name(size_t column) const { return text(header_[column]); }

    // Row r's line, and its cell in kept column k (the k-th of those given to keep()) as written
    // and without its enclosing quotes.
    std::string_view line(size_t r) const { return rowLines_[r]; }
    std::string_view header() const { return headerLine_; }
    std::string_view raw(size_t r, size_t k) const {
        const Cell& c = cells_[r * kept_.size() + k];
        return rowLines_[r].substr(c.offset, c.length);
    }
    std::string_view cell(size_t r, size_t k) const { return text(raw(r, k)); }
    std::string_view headerRaw(size_t c) const { return header_[c]; }
    static std::string_view text(std::string_view raw);

private:
    void cut(std::string_view line, std::vector<std::string_view>& out) const;

    char delimiter_ = ',';
    size_t columns_ = 0;
    std::string_view headerLine_;
    std::vector<std::string_view> header_;
    std::vector<std::string_view> rowLines_;
    std::vector<size_t> kept_;
    struct Cell {
        uint32_t offset, length;  // within the row's line: half the size of a view
    };
    std::vector<Cell> cells_;  // row-major, kept_.size() per row
    std::string error_;
};

}  // namespace wavex

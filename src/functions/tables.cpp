// Tables of text data (support/text_table.hpp: a string vector of lines, the first naming the
// columns) and the line filters beside them.
//
// SelectColumns(table, columns [, delimiter]): the header and every row cut down to the columns
// named (case ignored) or numbered from 0, in the order asked, cells as written, joined by the
// table's delimiter (one blank for a blank-separated table).
// SelectRows(table, condition [, delimiter]): the header and the rows (lines as written) that meet
// the condition. QueryData(table, column [, condition [, delimiter]]): one column's cells of the
// rows that meet the condition, real when every one is a number, else strings.
//
// A condition is an expression of the language in which each column name stands for the row's
// cell: a number where the cell is one (plain decimal, as parseNumber reads), else its text. It
// is parsed once and run element-wise over many rows at a time: rows are grouped by the text of
// the non-numeric cells the condition reads, and each group is evaluated once with every numeric
// column bound as the vector of the group's cells and every text cell as one string. A table
// whose condition reads only numbers is one group, a million rows in one evaluation. A row meets
// the condition when its element is a number other than 0 (NaN does not); a condition must give
// real numbers, one for every row of the group or one for all; one that gives nothing for a group
// (a text cell compared with a number) leaves its rows out. An empty condition takes every row.
//
// FilterFile(inPath, outPath, pattern [, options]): the lines of a text file that hold a match of
// the PCRE2 pattern (as RegExp), written to outPath (a temporary file renamed over it); option
// words "invert" (lines without a match), "ignorecase", "count" (count only, nothing written).
// Returns the number of lines taken.
// ParseSpiceLines(lines): each element line as a parameter string (support/spice_element.hpp);
// comment, control and continuation lines give empty strings.
#include "support/numbers.hpp"
#include "support/regex.hpp"
#include "support/spice_element.hpp"
#include "support/spice_stream.hpp"
#include "support/text.hpp"
#include "support/text_table.hpp"
#include "wavex/dynexport.hpp"
#include "wavex/function.hpp"
#include "wavex/interpreter.hpp"

#include <cmath>
#include <unordered_map>

namespace wavex {
namespace {

// The table of argument 0, cut at the delimiter that argument `delimiterArg` names (when given).
std::optional<TextTable> readTable(const FuncArgs& args, int delimiterArg, const FuncInfo* info,
                                   MessageHandler& messages, std::vector<std::string_view>& lines) {
    lines.resize(static_cast<size_t>(args.length(0)));
    for (size_t i = 0; i < lines.size(); ++i) lines[i] = args.string(0, i);
    char delimiter = '\0';
    if (args.count() > delimiterArg) {
        delimiter = TextTable::delimiterNamed(args.string(delimiterArg));
        if (!delimiter) {
            messages.error("Unknown delimiter '%s' in function '%s': use ',', ';', 'tab' or 'blank'",
                           std::string(args.string(delimiterArg)), info->name);
            return std::nullopt;
        }
    }
    std::optional<TextTable> table(std::in_place, lines, delimiter);
    if (!table->ok()) {
        messages.error("%s in function '%s'", table->error(), info->name);
        return std::nullopt;
    }
    return table;
}

// Cuts the table's rows keeping the columns given; false (reported) for a ragged table.
bool keepColumns(TextTable& table, std::vector<size_t> columns, const FuncInfo* info, MessageHandler& messages) {
    if (table.keep(std::move(columns))) return true;
    messages.error("%s in function '%s'", table.error(), info->name);
    return false;
}

// The identifiers of an expression, each once.
class NameCollector : public VecSubstExpressionObject {
public:
    std::vector<std::string> names;
    std::string substituteName(const std::string& name) override {
        for (const std::string& n : names)
            if (iequals(n, name)) return name;
        names.push_back(name);
        return name;
    }
    std::string substituteCall(const std::string& f, const std::vector<std::string>&) override { return f; }
    bool substitutesNames() const override { return true; }
    bool replacesWholeCall() const override { return false; }
    bool probeNodesAreNames() const override { return false; }
};

// A column the condition reads: its cells as numbers (NaN where a cell is not one).
struct ReadColumn {
    std::string name;
    size_t index;  // among the kept columns
    std::vector<double> values;
    std::vector<uint8_t> numeric;
    bool allNumeric = true;
};

// Which rows of the table meet `condition`; nullopt (reported) when it cannot be evaluated. Cuts
// the rows keeping the columns `wanted` (kept columns 0, 1, … for the caller) and those the
// condition reads.
std::optional<std::vector<uint8_t>> rowsMeeting(TextTable& table, std::vector<size_t> wanted, std::string_view condition,
                                                const FuncInfo* info, const YRef<MessageHandler>& messages) {
    const size_t rows = table.rows();
    if (trim(condition).empty()) {
        if (!keepColumns(table, std::move(wanted), info, *messages)) return std::nullopt;
        return std::vector<uint8_t>(rows, 1);
    }
    ScpInterface* host = dyn_GetScpInterface();
    NameCollector collector;
    std::string syntax;
    if (!host->substituteExpression(condition, collector, &syntax)) {
        messages->error("The condition '%s' of function '%s' does not parse: %s", std::string(condition), info->name, syntax);
        return std::nullopt;
    }
    std::vector<ReadColumn> read;
    for (const std::string& name : collector.names)
        if (auto c = table.column(name)) {
            read.push_back({name, wanted.size(), {}, {}});
            wanted.push_back(*c);
        }
    if (!keepColumns(table, std::move(wanted), info, *messages)) return std::nullopt;
    for (ReadColumn& col : read) {
        col.values.resize(rows);
        col.numeric.resize(rows);
        for (size_t r = 0; r < rows; ++r) {
            auto v = parseNumber(table.cell(r, col.index));
            col.values[r] = v.value_or(NAN);
            col.numeric[r] = v.has_value();
            col.allNumeric = col.allNumeric && v.has_value();
        }
    }

    // Groups of rows alike in the text cells read: the key lists, per mixed column, the text of a
    // text cell or a mark for a number.
    std::vector<std::vector<size_t>> groups;
    bool mixed = false;
    for (const ReadColumn& col : read) mixed = mixed || !col.allNumeric;
    if (!mixed) {
        groups.emplace_back();  // one group: every row, columns bound whole
    } else {
        std::unordered_map<std::string, size_t> index;
        std::string key;
        for (size_t r = 0; r < rows; ++r) {
            key.clear();
            for (const ReadColumn& col : read) {
                if (col.allNumeric) continue;
                if (col.numeric[r]) key += '\1';
                else key.append(1, '\2').append(table.cell(r, col.index)).append(1, '\0');
            }
            auto [it, added] = index.try_emplace(key, groups.size());
            if (added) groups.emplace_back();
            groups[it->second].push_back(r);
        }
    }

    std::vector<uint8_t> meets(rows, 0);
    std::vector<std::pair<std::string, VectorPtr>> bindings(read.size());
    for (const std::vector<size_t>& group : groups) {
        const bool whole = !mixed;
        const size_t n = whole ? rows : group.size();
        if (n == 0) continue;
        for (size_t k = 0; k < read.size(); ++k) {
            const ReadColumn& col = read[k];
            bindings[k].first = col.name;
            if (whole) {
                bindings[k].second = makeRealVector(std::move(read[k].values));  // bound once: no longer needed
            } else if (!col.numeric[group[0]]) {
                bindings[k].second = makeStringVector({std::string(table.cell(group[0], col.index))});
            } else {
                std::vector<double> v(n);
                for (size_t i = 0; i < n; ++i) v[i] = col.values[group[i]];
                bindings[k].second = makeRealVector(std::move(v));
            }
        }
        VectorPtr value = host->evaluateWith(condition, bindings, messages);
        if (!value) {
            messages->error("The condition '%s' of function '%s' failed", std::string(condition), info->name);
            return std::nullopt;
        }
        if (value->type != VD_REAL) {
            messages->error("The condition '%s' of function '%s' gives %s, not real numbers", std::string(condition),
                            info->name, value->type == VD_STRING ? "strings" : "complex numbers");
            return std::nullopt;
        }
        if (value->size() == 0) continue;  // nothing to test (a text cell compared with a number): not met
        if (value->size() != 1 && value->size() != n) {
            messages->error("The condition '%s' of function '%s' gives %d values for %d rows", std::string(condition),
                            info->name, static_cast<int64_t>(value->size()), static_cast<int64_t>(n));
            return std::nullopt;
        }
        const double* y = nonNullData(value->real);
        const size_t step = value->size() == 1 ? 0 : 1;
        for (size_t i = 0; i < n; ++i) {
            double c = y[i * step];
            meets[whole ? i : group[i]] = c != 0 && !std::isnan(c);
        }
    }
    return meets;
}

FUNC_ERROR putLines(FuncResult* result, const std::vector<std::string_view>& lines) {
    if (!result->makeStrings(static_cast<int64_t>(lines.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (std::string_view line : lines) (out++)->emplace(line);
    return FUNC_OK;
}

FUNC_ERROR selectColumns(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string_view> lines;
    auto table = readTable(args, 2, info, *messages, lines);
    if (!table) return FUNC_FAILED;
    std::vector<size_t> picked;
    for (int64_t k = 0; k < args.length(1); ++k) {
        std::string asked = args.type(1) == VD_STRING ? std::string(args.string(1, k)) : elementText(*args.vector(1), k);
        auto c = table->column(asked);
        if (!c) {
            messages->error("The table has no column '%s' in function '%s'", asked, info->name);
            return FUNC_FAILED;
        }
        picked.push_back(*c);
    }
    const size_t n = picked.size();
    const char delimiter = table->delimiter();
    auto join = [&](auto cellOf) {
        std::string line;
        for (size_t k = 0; k < n; ++k) {
            if (k) line += delimiter;
            line += cellOf(k);
        }
        return line;
    };
    std::string header = join([&](size_t k) { return table->headerRaw(picked[k]); });
    if (!keepColumns(*table, std::move(picked), info, *messages)) return FUNC_FAILED;
    if (!result->makeStrings(static_cast<int64_t>(table->rows() + 1))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    out[0] = std::move(header);
    for (size_t r = 0; r < table->rows(); ++r) out[r + 1] = join([&](size_t k) { return table->raw(r, k); });
    return FUNC_OK;
}

FUNC_ERROR selectRows(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string_view> lines;
    auto table = readTable(args, 2, info, *messages, lines);
    if (!table) return FUNC_FAILED;
    auto meets = rowsMeeting(*table, {}, args.string(1), info, messages);
    if (!meets) return FUNC_FAILED;
    std::vector<std::string_view> kept{table->header()};
    for (size_t r = 0; r < table->rows(); ++r)
        if ((*meets)[r]) kept.push_back(table->line(r));
    return putLines(result, kept);
}

FUNC_ERROR queryData(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string_view> lines;
    auto table = readTable(args, 3, info, *messages, lines);
    if (!table) return FUNC_FAILED;
    auto column = table->column(args.string(1));
    if (!column) {
        messages->error("The table has no column '%s' in function '%s'", std::string(args.string(1)), info->name);
        return FUNC_FAILED;
    }
    auto meets = rowsMeeting(*table, {*column}, args.count() > 2 ? args.string(2) : "", info, messages);
    if (!meets) return FUNC_FAILED;
    std::vector<std::string_view> cells;
    for (size_t r = 0; r < table->rows(); ++r)
        if ((*meets)[r]) cells.push_back(table->cell(r, 0));
    std::vector<double> numbers(cells.size());
    for (size_t i = 0; i < cells.size(); ++i) {
        auto v = parseNumber(cells[i]);
        if (!v) return putLines(result, cells);
        numbers[i] = *v;
    }
    double* out = result->makeRealNoRef(static_cast<int64_t>(numbers.size()));
    if (!out && !numbers.empty()) return FUNC_FAILED;
    std::copy(numbers.begin(), numbers.end(), out);
    return FUNC_OK;
}

FUNC_ERROR filterFile(WAVEX_HANDLER_PARAMS) {
    bool invert = false, ignoreCase = false, countOnly = false;
    for (int64_t k = 0; args.count() > 3 && k < args.length(3); ++k) {
        std::string_view word = args.string(3, k);
        if (iequals(word, "invert")) invert = true;
        else if (iequals(word, "ignorecase")) ignoreCase = true;
        else if (iequals(word, "count")) countOnly = true;
        else {
            messages->error("Unknown option '%s' in function '%s': use 'invert', 'ignorecase' or 'count'",
                            std::string(word), info->name);
            return FUNC_FAILED;
        }
    }
    RegexSearch pattern(args.string(2), ignoreCase);
    if (!pattern.error().empty()) {
        messages->error("Bad pattern in function '%s': %s", info->name, pattern.error());
        return FUNC_FAILED;
    }
    NewSpiceStream in{std::string(args.string(0))};
    if (!in.isOpen()) {
        messages->error("%s", in.failure());
        return FUNC_FAILED;
    }
    std::string kept, error;
    int64_t count = 0;
    for (std::string_view line; in.getLine(&line);) {
        bool found = pattern.search(line, &error);
        if (!error.empty()) {
            messages->error("Function '%s' stopped: %s", info->name, error);
            return FUNC_FAILED;
        }
        if (found == invert) continue;
        ++count;
        if (!countOnly) kept.append(line).append(1, '\n');
    }
    if (!countOnly) {
        std::string failure = writeWholeFile(std::string(args.string(1)), kept);
        if (!failure.empty()) {
            messages->error("%s", failure);
            return FUNC_FAILED;
        }
    }
    result->makeRealNoRef(1)[0] = static_cast<double>(count);
    return FUNC_OK;
}

FUNC_ERROR parseSpiceLines(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    if (!result->makeStrings(n)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (int64_t i = 0; i < n; ++i) out[i] = spiceElementParameters(args.string(0, i));
    return FUNC_OK;
}


constexpr FuncInfo kFunctions[] = {
    {"SelectColumns", {arg::String, arg::Any, arg::String}, 2, selectColumns,
     {.signature = "SelectColumns(table, columns [, delimiter])",
      .summary = "The named or numbered columns of a table of text lines, header included.",
      .returns = "strings: the header and each row cut down to the columns, in the order asked",
      .notes = "The delimiter (',', ';', tab or blanks) is detected from the header unless given ("
               "',', ';', 'tab', 'blank'); quoted cells keep their delimiters and their quotes. Columns "
               "are names (case ignored) or 0-based numbers. A ragged row or an unknown column fails.",
      .example = "SelectColumns(['name,gain,corner', 'a,25,ss', 'b,10,tt'], ['corner', 'name'])"}},
    {"SelectRows", {arg::String, arg::String, arg::String}, 2, selectRows,
     {.signature = "SelectRows(table, condition [, delimiter])",
      .summary = "The header and the rows of a table that meet a condition.",
      .returns = "strings: the header and the matching rows as written",
      .notes = "condition is an expression in which each column name stands for the row's cell (a "
               "number where the cell is one, else its text), evaluated element-wise over groups of "
               "rows; a row meets it where it gives a number other than 0. Empty takes every row. A "
               "condition that fails to parse or gives strings fails the call.",
      .example = "SelectRows(['name,gain,corner', 'a,25,ss', 'b,10,tt', 'c,30,SS'], \"gain > 20 && corner == 'ss'\")"}},
    {"QueryData", {arg::String, arg::String, arg::String, arg::String}, 2, queryData,
     {.signature = "QueryData(table, column [, condition [, delimiter]])",
      .summary = "One column of the rows of a table that meet a condition.",
      .returns = "reals when every cell is a plain decimal number, else strings; no x-values",
      .notes = "condition as in SelectRows (empty or absent: every row).",
      .example = "QueryData(['name;gain', 'a;25', 'b;10', 'c;30'], 'gain', 'gain >= 25')"}},
    FuncInfo("FilterFile", {arg::String, arg::String, arg::String, arg::String}, 3, filterFile,
     {.signature = "FilterFile(inPath, outPath, pattern [, options])",
      .summary = "Writes the lines of a text file that hold a match of a regular expression.",
      .returns = "a number: the lines taken",
      .notes = "pattern is PCRE2, as RegExp. Option words: 'invert' (lines without a match), "
               "'ignorecase', 'count' (count only, nothing written). outPath is written to a temporary "
               "file and renamed.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); "
                 "FilterFile('s.xml', 'values.txt', '<value ')"}).outsideSafeMode(),
    {"ParseSpiceLines", {arg::String}, 1, parseSpiceLines,
     {.signature = "ParseSpiceLines(lines)",
      .summary = "Each element line of a netlist as a parameter string.",
      .returns = "strings, one per line: inst, kind, nodes, model or value, then every name=value",
      .notes = "The kind is the first letter and fixes the node count (X: every token before the "
               "subcircuit name); blanks around '=' are allowed; text after ';' is dropped. Comment, "
               "control and continuation lines, and unknown kinds, give empty strings.",
      .example = "ParseSpiceLines(['R1 in out 1k tc1=0.001', '* note', 'X1 in out amp gain=10'])"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

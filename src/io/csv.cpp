#include "io/csv.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <system_error>
#include <unordered_map>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wavex::io {
namespace {

// Thrown inside the parser, turned into the one message parseCsv returns.
struct CsvError {
    size_t line;  // 0: the whole file
    std::string what;
};

// User text quoted in a message, cut short when long.
std::string shown(std::string_view text) {
    constexpr size_t kMax = 40;
    if (text.size() <= kMax) return std::string(text);
    return std::string(text.substr(0, kMax)) + "...";
}

// The cells of one line: split at commas outside double quotes, each trimmed. The quotes stay on
// the cell (see unquote).
void splitCells(std::string_view line, std::vector<std::string_view>* cells) {
    cells->clear();
    size_t start = 0;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (c == '"') quoted = !quoted;  // "" inside quotes toggles twice: stays quoted
        else if (c == ',' && !quoted) {
            cells->push_back(trim(line.substr(start, i - start)));
            start = i + 1;
        }
    }
    cells->push_back(trim(line.substr(start)));
}

bool isQuoted(std::string_view cell) { return cell.size() >= 2 && cell.front() == '"' && cell.back() == '"'; }

// A header cell without its quotes, "" inside read as one quote. Throws when a quote is not closed.
std::string unquote(std::string_view cell, size_t line) {
    if (cell.empty() || cell.front() != '"') {
        if (cell.find('"') != std::string_view::npos)
            throw CsvError{line, "a quote inside the name " + shown(cell) + " (quote the whole name)"};
        return std::string(cell);
    }
    std::string out;
    size_t i = 1;
    for (; i < cell.size(); ++i) {
        if (cell[i] != '"') {
            out += cell[i];
        } else if (i + 1 < cell.size() && cell[i + 1] == '"') {
            out += '"';
            ++i;
        } else {
            break;
        }
    }
    if (i != cell.size() - 1) {
        if (i >= cell.size()) throw CsvError{line, "a quote is not closed in " + shown(cell)};
        throw CsvError{line, "text after the closing quote in " + shown(cell)};
    }
    return out;
}

// One column of the header.
struct Column {
    std::string header;  // as written, for messages
    std::string name;    // without unit and .re/.im
    std::optional<PhysType> unit;
    int part = 0;        // 0 real column, 1 the .re of a pair, 2 its .im
};

bool endsWithNoCase(std::string_view s, std::string_view suffix) {
    return s.size() > suffix.size() && iequals(s.substr(s.size() - suffix.size()), suffix);
}

Column readColumn(std::string_view cell, size_t index, size_t line) {
    Column col;
    col.header = unquote(cell, line);
    std::string_view name = col.header;
    size_t open = name.find('[');
    if (open != std::string_view::npos) {
        if (name.back() != ']' || name.find(']') != name.size() - 1 || name.find('[', open + 1) != std::string_view::npos)
            throw CsvError{line, "column '" + shown(col.header) + "': the unit in brackets must end the name, as in out[V]"};
        std::string_view symbol = trim(name.substr(open + 1, name.size() - open - 2));
        col.unit = units::fromSymbol(symbol);
        if (!col.unit)
            throw CsvError{line, "unknown unit '" + shown(symbol) + "' in column '" + shown(col.header) + "'"};
        name = trim(name.substr(0, open));
    }
    if (endsWithNoCase(name, ".re")) col.part = 1;
    else if (endsWithNoCase(name, ".im")) col.part = 2;
    if (col.part) name.remove_suffix(3);
    if (name.empty()) throw CsvError{line, "column " + std::to_string(index + 1) + " has no name"};
    col.name = std::string(name);
    return col;
}

// A vector to be made from one column, or from a .re/.im pair.
struct Output {
    std::string name;
    PhysType phys;
    size_t re;                    // column index of the values (of the real parts)
    std::optional<size_t> im;     // column index of the imaginary parts
};

struct Division {
    size_t length;
    std::optional<std::string> label;
};

class Parser {
public:
    Parser(std::string_view text, const Progress* progress) : text_(text), progress_(progress) {
        if (text_.substr(0, 3) == "\xEF\xBB\xBF") text_.remove_prefix(3);  // byte-order mark
    }

    std::vector<NamedVector> run() {
        if (text_.empty()) throw CsvError{0, "the file is empty"};
        std::vector<std::string_view> cells;
        while (nextLine()) {
            if (!columns_.empty() && fastRow()) continue;
            if (isBlank()) {
                endDivision();
                continue;
            }
            if (isComment()) {
                runLabel();
                continue;
            }
            splitCells(line_, &cells);
            if (columns_.empty()) header(cells);
            else row(cells);
        }
        if (columns_.empty()) throw CsvError{0, "no header line naming the columns"};
        endDivision();
        if (pendingLabel_) throw noRows();
        if (divisions_.empty()) throw CsvError{headerLine_, "no rows after the header"};
        return build();
    }

private:
    bool nextLine() {
        if (pos_ >= text_.size()) return false;
        if (progress_ && pos_ >= nextReport_) {
            (*progress_)(pos_, text_.size());
            nextReport_ = pos_ + kReportEvery;
        }
        size_t end = text_.find('\n', pos_);
        if (end == std::string_view::npos) end = text_.size();
        line_ = text_.substr(pos_, end - pos_);
        if (!line_.empty() && line_.back() == '\r') line_.remove_suffix(1);
        pos_ = end + 1;
        ++lineNo_;
        return true;
    }
    bool isBlank() const { return trim(line_).empty(); }
    bool isComment() const { return trim(line_).front() == '#'; }

    // `# run: LABEL` names the next division (and ends the current one); other comments are skipped.
    void runLabel() {
        std::string_view body = trim(trim(line_).substr(1));
        if (body.size() < 4 || !iequals(body.substr(0, 4), "run:")) return;
        endDivision();
        if (pendingLabel_) throw noRows();
        pendingLabel_ = std::string(trim(body.substr(4)));
        labelLine_ = lineNo_;
    }
    CsvError noRows() const { return {labelLine_, "run '" + shown(*pendingLabel_) + "' has no rows"}; }

    void endDivision() {
        if (rows_ == 0) return;
        divisions_.push_back({rows_, std::move(currentLabel_)});
        currentLabel_.reset();
        rows_ = 0;
    }

    void header(const std::vector<std::string_view>& cells) {
        headerLine_ = lineNo_;
        bool allNumbers = true;
        for (std::string_view c : cells) allNumbers = allNumbers && parseNumber(c).has_value();
        if (allNumbers)
            throw CsvError{lineNo_, "the first line must name the columns, but it holds only numbers"};
        for (size_t i = 0; i < cells.size(); ++i) columns_.push_back(readColumn(cells[i], i, lineNo_));
        pairColumns();
        values_.resize(columns_.size());
        // Room for a value per line that follows, so that the columns never move as they grow.
        // (After a last line without a newline, pos_ is one past the end.)
        const std::string_view rest = text_.substr(std::min(pos_, text_.size()));
        const size_t lines = static_cast<size_t>(std::count(rest.begin(), rest.end(), '\n')) + 1;
        for (Array<double>& column : values_) column.reserve(lines);
    }

    void pairColumns() {
        Column& first = columns_[0];
        if (first.part)
            throw CsvError{lineNo_, "the first column '" + shown(first.header) +
                                        "' is the reference of the others and must be real, not part of a complex pair"};
        PhysType refPhys = first.unit.value_or(units::Number);
        if (!first.unit) {
            if (iequals(first.name, "time")) refPhys = units::Time;
            else if (iequals(first.name, "frequency") || iequals(first.name, "freq")) refPhys = units::Frequency;
        }
        outputs_.push_back({first.name, refPhys, 0, std::nullopt});

        std::unordered_map<std::string, size_t, CaseInsensitiveHash, CaseInsensitiveEqual> seen;  // name -> output
        seen[first.name] = 0;
        std::unordered_map<std::string, size_t, CaseInsensitiveHash, CaseInsensitiveEqual> parts;  // header -> column
        for (size_t i = 1; i < columns_.size(); ++i) {
            const Column& c = columns_[i];
            if (c.part && !parts.emplace(c.name + (c.part == 1 ? ".re" : ".im"), i).second)
                throw CsvError{lineNo_, "two columns are called '" + shown(c.name) + (c.part == 1 ? ".re'" : ".im'")};
        }
        for (size_t i = 1; i < columns_.size(); ++i) {
            const Column& c = columns_[i];
            if (c.part == 2) {
                if (!parts.count(c.name + ".re"))
                    throw CsvError{lineNo_, "column '" + shown(c.header) + "' has no matching '" + shown(c.name) + ".re'"};
                continue;  // taken with its .re
            }
            auto [it, fresh] = seen.emplace(c.name, outputs_.size());
            if (!fresh) throw CsvError{lineNo_, "two columns are called '" + shown(c.name) + "'"};
            if (c.part == 0) {
                outputs_.push_back({c.name, c.unit.value_or(units::Number), i, std::nullopt});
                continue;
            }
            auto im = parts.find(c.name + ".im");
            if (im == parts.end())
                throw CsvError{lineNo_, "column '" + shown(c.header) + "' has no matching '" + shown(c.name) + ".im'"};
            const Column& ic = columns_[im->second];
            if (c.unit && ic.unit && *c.unit != *ic.unit)
                throw CsvError{lineNo_, "columns '" + shown(c.header) + "' and '" + shown(ic.header) + "' have different units"};
            outputs_.push_back({c.name, c.unit.value_or(ic.unit.value_or(units::Number)), i, im->second});
        }
    }

    void row(const std::vector<std::string_view>& cells) {
        if (cells.size() != columns_.size())
            throw CsvError{lineNo_, std::to_string(cells.size()) + (cells.size() == 1 ? " value" : " values") +
                                        ", but the header names " + std::to_string(columns_.size()) + " columns"};
        if (rows_ == 0) currentLabel_ = std::exchange(pendingLabel_, std::nullopt);
        for (size_t i = 0; i < cells.size(); ++i) values_[i].push_back(number(cells[i], i));
        ++rows_;
    }

    // The common row, unquoted numbers separated by commas, read in one pass over the line with
    // nothing made on the way. False, with nothing stored, for any other line, which the general
    // path then reads (and reports when wrong): a value taken here is the value it would take.
    bool fastRow() {
        const char* p = line_.data();
        const char* const end = p + line_.size();
        const size_t n = columns_.size();
        rowValues_.resize(n);
        for (size_t i = 0; i < n; ++i) {
            while (p < end && (*p == ' ' || *p == '\t')) ++p;
            if (p < end && *p == '+') ++p;
            auto [next, ec] = std::from_chars(p, end, rowValues_[i]);
            if (ec != std::errc() || next == p) return false;
            p = next;
            while (p < end && (*p == ' ' || *p == '\t')) ++p;
            if (i + 1 < n) {
                if (p == end || *p != ',') return false;
                ++p;
            }
        }
        if (p != end || !std::isfinite(rowValues_[0])) return false;
        if (rows_ == 0) currentLabel_ = std::exchange(pendingLabel_, std::nullopt);
        for (size_t i = 0; i < n; ++i) values_[i].push_back(rowValues_[i]);
        ++rows_;
        return true;
    }

    double number(std::string_view cell, size_t column) const {
        if (isQuoted(cell)) cell = cell.substr(1, cell.size() - 2);
        const std::string& name = columns_[column].header;
        if (cell.empty()) throw CsvError{lineNo_, "no value in column '" + shown(name) + "'"};
        std::optional<double> v = parseNumber(cell);
        if (!v) {
            std::string_view digits = cell.front() == '+' || cell.front() == '-' ? cell.substr(1) : cell;
            double ignored;
            auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), ignored);
            if (ec == std::errc::result_out_of_range && end == digits.data() + digits.size())
                throw CsvError{lineNo_, "'" + shown(cell) + "' in column '" + shown(name) + "' is beyond the range of a double"};
            throw CsvError{lineNo_, "'" + shown(cell) + "' in column '" + shown(name) + "' is not a number"};
        }
        if (column == 0 && !std::isfinite(*v))
            throw CsvError{lineNo_, "the reference '" + shown(name) + "' must be a finite number, not '" + shown(cell) + "'"};
        return *v;
    }

    std::vector<NamedVector> build() {
        std::vector<size_t> lengths;
        DivisionLabelArray labels;
        bool anyLabel = false;
        for (const Division& d : divisions_) {
            lengths.push_back(d.length);
            labels.push_back(d.label);
            anyLabel = anyLabel || d.label.has_value();
        }
        if (!anyLabel) labels.clear();

        // The reference column's vector owns the x-values; the others' reference shares them.
        Reference ref;
        std::vector<NamedVector> out;
        for (const Output& o : outputs_) {
            auto v = std::make_shared<Vector>();
            if (o.im) {
                const Array<double>& re = values_[o.re];
                const Array<double>& im = values_[*o.im];
                v->type = VD_COMPLEX;
                v->cplx.resize(re.size());
                for (size_t k = 0; k < re.size(); ++k) v->cplx[k] = Complex(re[k], im[k]);
            } else {
                v->real = std::move(values_[o.re]);
            }
            v->phys = o.phys;
            v->name = o.name;
            if (&o == &outputs_[0]) {
                ref.type = VD_REAL;
                ref.realValues = std::shared_ptr<const Array<double>>(v, &v->real);
                ref.length = v->real.size();
                ref.phys = o.phys;
                ref.name = o.name;
            } else {
                v->ref = ref;
            }
            v->setDivisionLengths(lengths);
            v->labels = labels;
            out.push_back({o.name, std::move(v)});
        }
        return out;
    }

    static constexpr size_t kReportEvery = size_t(8) << 20;

    std::string_view text_;
    const Progress* progress_;
    size_t nextReport_ = 0;
    size_t pos_ = 0;
    std::string_view line_;
    size_t lineNo_ = 0;

    size_t headerLine_ = 0;
    std::vector<Column> columns_;
    std::vector<Output> outputs_;
    std::vector<Array<double>> values_;  // one per header column
    std::vector<double> rowValues_;      // of the row fastRow reads

    size_t rows_ = 0;  // rows of the current division
    std::optional<std::string> currentLabel_;
    std::optional<std::string> pendingLabel_;  // for the division that starts with the next row
    size_t labelLine_ = 0;
    std::vector<Division> divisions_;
};

// The vectors of CSV text, telling `progress` how far parsing has come.
std::optional<std::vector<NamedVector>> parse(std::string_view text, std::string_view fileName, std::string* error,
                                              const Progress* progress) {
    try {
        return Parser(text, progress).run();
    } catch (const CsvError& e) {
        if (error)
            *error = std::string(fileName) + (e.line ? ":" + std::to_string(e.line) : std::string()) + ": " + e.what;
        return std::nullopt;
    }
}

}  // namespace

std::optional<std::vector<NamedVector>> parseCsv(std::string_view text, std::string_view fileName, std::string* error) {
    return parse(text, fileName, error, nullptr);
}

std::optional<std::vector<NamedVector>> loadCsv(const std::string& path, std::string* error, const Progress& progress) {
    auto fail = [&](int err) -> std::optional<std::vector<NamedVector>> {
        if (error) *error = "cannot read '" + path + "': " + std::strerror(err);
        return std::nullopt;
    };
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return fail(errno);
    struct stat st {};
    if (::fstat(fd, &st) != 0) {
        int err = errno;
        ::close(fd);
        return fail(err);
    }
    // A file is parsed where it lies, mapped: no copy of its text, nor pages to clear for one.
    if (S_ISREG(st.st_mode) && st.st_size > 0) {
        const size_t size = static_cast<size_t>(st.st_size);
        void* map = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        int err = errno;
        ::close(fd);
        if (map == MAP_FAILED) return fail(err);
        ::madvise(map, size, MADV_SEQUENTIAL);
        auto result = parse(std::string_view(static_cast<const char*>(map), size), path, error, progress ? &progress : nullptr);
        ::munmap(map, size);
        return result;
    }
    std::string text;
    char buffer[1 << 16];
    ssize_t n;
    while ((n = ::read(fd, buffer, sizeof buffer)) != 0) {
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            int err = errno;
            ::close(fd);
            return fail(err);
        }
        text.append(buffer, static_cast<size_t>(n));
    }
    ::close(fd);
    return parse(text, path, error, nullptr);
}

}  // namespace wavex::io

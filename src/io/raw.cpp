#include "io/raw.hpp"

#include "support/escape.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wavex::io {
namespace {

// Thrown inside the reader, turned into the one message parseRaw returns.
struct RawError {
    size_t line;  // 0: the whole file
    std::string what;
};

// File text quoted in a message: escaped (a garbage byte shows as \xHH) and cut short when long.
std::string shown(std::string_view text) {
    constexpr size_t kMax = 40;
    std::string s = sp_EscapeString(text.substr(0, kMax), false);
    return text.size() > kMax ? s + "..." : s;
}

std::string plural(uint64_t n, const char* word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

// ---- Input ----------------------------------------------------------------------------------

// The bytes of a raw file, a window at a time: all of them for bytes held in memory, a buffer's
// worth for a file, so that the data of a large file is in memory once, in its vectors.
class Input {
public:
    virtual ~Input() = default;
    // Makes at least min(n, left()) bytes available at data().
    virtual void require(size_t n) = 0;

    const char* data() const { return cur_; }
    size_t available() const { return static_cast<size_t>(end_ - cur_); }
    void skip(size_t n) { cur_ += n; }
    uint64_t position() const { return base_ + static_cast<uint64_t>(cur_ - start_); }
    uint64_t left() const { return size_ - position(); }

protected:
    const char* start_ = nullptr;  // the window's first byte, at position base_ of the file
    const char* cur_ = nullptr;
    const char* end_ = nullptr;
    uint64_t base_ = 0;
    uint64_t size_ = 0;
};

class MemoryInput final : public Input {
public:
    explicit MemoryInput(std::string_view bytes) {
        start_ = cur_ = bytes.data();
        end_ = start_ + bytes.size();
        size_ = bytes.size();
    }
    void require(size_t) override {}
};

class FileInput final : public Input {
public:
    static constexpr size_t kChunk = size_t(1) << 20;

    FileInput(int fd, uint64_t size, const Progress& progress) : fd_(fd), progress_(progress) { size_ = size; }

    void require(size_t n) override {
        if (available() >= n || available() == left()) return;
        // Keep what is left of the window, at the front of a buffer large enough for n.
        const size_t keep = available();
        const size_t want = std::max(n, kChunk);
        if (want > capacity_) {
            std::unique_ptr<char[]> bigger(new char[want]);
            if (keep) std::memcpy(bigger.get(), cur_, keep);
            buffer_ = std::move(bigger);
            capacity_ = want;
        } else if (keep) {
            std::memmove(buffer_.get(), cur_, keep);
        }
        base_ = position();
        start_ = cur_ = buffer_.get();
        end_ = cur_ + keep;
        char* const limit = buffer_.get() + capacity_;
        while (end_ < limit && base_ + available() < size_) {
            ssize_t got = ::read(fd_, const_cast<char*>(end_), static_cast<size_t>(limit - end_));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) throw RawError{0, std::string("cannot read the file: ") + std::strerror(errno)};
            if (got == 0) {  // the file shrank while we read it
                size_ = base_ + available();
                break;
            }
            end_ += got;
        }
        if (progress_) progress_(base_ + available(), size_);
    }

private:
    int fd_;
    const Progress& progress_;
    std::unique_ptr<char[]> buffer_;
    size_t capacity_ = 0;
};

// ---- Header ---------------------------------------------------------------------------------

// How one value is stored in binary data.
enum class Elem : uint8_t { F64, F32, C128 };
size_t elemSize(Elem e) { return e == Elem::F32 ? 4 : e == Elem::F64 ? 8 : 16; }

struct Variable {
    std::string name;
    PhysType phys;
    bool isTime;
};

struct Header {
    std::string title, plotName;
    bool complex = false, doubles = false, fastAccess = false, stepped = false;
    bool binary = false;
    std::optional<uint64_t> points, declaredVariables;
    std::vector<Variable> vars;
    std::vector<Elem> elems;  // binary layout, one per variable
    size_t pointSize = 0;     // bytes
};

// Units of the variable types that ngspice and the UTF-16 format's simulator write.
struct TypeUnit {
    std::string_view type;
    std::string_view symbol;  // "" a plain number
};
constexpr TypeUnit kTypeUnits[] = {
    {"time", "s"},
    {"frequency", "Hz"},
    {"voltage", "V"},
    {"current", "A"},
    {"device_current", "A"},
    {"subckt_current", "A"},
    {"voltage-density", "V/rtHz"},
    {"current-density", "A/rtHz"},
    {"sqr-voltage-density", "V^2/Hz"},
    {"sqr-current-density", "A^2/Hz"},
    {"sqr-voltage", "V^2"},
    {"sqr-current", "A^2"},
    {"res-sweep", "ohm"},
    {"impedance", "ohm"},
    {"admittance", "S"},
    {"power", "W"},
    {"capacitance", "F"},
    {"charge", "C"},
};

PhysType unitOfType(std::string_view type) {
    for (const TypeUnit& t : kTypeUnits)
        if (iequals(t.type, type))
            return t.symbol.empty() ? units::Number : units::fromSymbol(t.symbol).value_or(units::Number);
    return units::Number;  // notype, decibel, phase, temp-sweep, and types we do not know
}

// The names by which ngspice calls its plots (tran1, ac2 ...), from the start of the plot name.
struct AnalysisPrefix {
    std::string_view plotName;
    std::string_view prefix;
};
constexpr AnalysisPrefix kAnalyses[] = {
    {"Transient", "tran"},  {"AC", "ac"},          {"DC", "dc"},
    {"Operating Point", "op"}, {"Noise", "noise"}, {"Integrated Noise", "noise"},
    {"Transfer Function", "tf"}, {"Sensitivity", "sens"}, {"Pole-Zero", "pz"},
    {"Distortion", "disto"}, {"S-Parameter", "sp"},
};

std::string_view analysisPrefix(std::string_view plotName) {
    for (const AnalysisPrefix& a : kAnalyses) {
        if (plotName.size() < a.plotName.size() || !iequals(plotName.substr(0, a.plotName.size()), a.plotName)) continue;
        if (plotName.size() == a.plotName.size() || plotName[a.plotName.size()] == ' ') return a.prefix;
    }
    return "plot";
}

// Plots without a sweep: the UTF-16 format stores all their values alike.
bool hasNoSweep(std::string_view plotName) {
    return iequals(plotName, "Operating Point") || iequals(plotName, "Transfer Function");
}

bool isUtf16Title(const char* p, size_t n) {
    static constexpr char kTitle[] = {'T', 0, 'i', 0, 't', 0, 'l', 0, 'e', 0, ':', 0};
    return n >= sizeof kTitle && std::memcmp(p, kTitle, sizeof kTitle) == 0;
}
bool isTitle(std::string_view s) { return s.size() >= 6 && iequals(s.substr(0, 6), "Title:"); }

// UTF-8 of UTF-16LE text; nullopt when a surrogate is unpaired.
std::optional<std::string> fromUtf16(std::string_view units) {
    std::string out;
    out.reserve(units.size() / 2);
    auto unitAt = [&](size_t i) {
        return static_cast<uint32_t>(static_cast<unsigned char>(units[i])) |
               static_cast<uint32_t>(static_cast<unsigned char>(units[i + 1])) << 8;
    };
    for (size_t i = 0; i + 1 < units.size(); i += 2) {
        uint32_t c = unitAt(i);
        if (c >= 0xDC00 && c <= 0xDFFF) return std::nullopt;
        if (c >= 0xD800 && c <= 0xDBFF) {
            if (i + 3 >= units.size()) return std::nullopt;
            uint32_t low = unitAt(i + 2);
            if (low < 0xDC00 || low > 0xDFFF) return std::nullopt;
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
            i += 2;
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | c >> 12);
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | c >> 18);
            out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

bool isUtf8(std::string_view s) {
    for (size_t i = 0; i < s.size();) {
        size_t n = utf8SequenceLength(s, i);
        if (n == 0) return false;
        i += n;
    }
    return true;
}

std::optional<uint64_t> parseCount(std::string_view text) {
    uint64_t n = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return n;
}

// Variable names met so far, letter case ignored as the language ignores it.
using NameSet = std::unordered_set<std::string, CaseInsensitiveHash, CaseInsensitiveEqual>;

// ---- The plots ------------------------------------------------------------------------------

// One plot's data, or the first plot with the runs that joined it.
struct PlotData {
    Header header;
    bool utf16 = false;
    std::string qualifier;                     // "tran2." or "" for the plain names
    std::vector<Array<double>> real;           // one per variable, in a real plot
    std::vector<Array<Complex>> cplx;          // in a complex plot
    size_t rows = 0;
    std::vector<size_t> runStarts;             // row where each joined plot begins
    std::vector<std::string> runTitles;
};

// Whether `next` is one more run of the plot `first`: the same analysis with the same variables.
bool sameAnalysis(const Header& first, const Header& next) {
    if (!iequals(first.plotName, next.plotName) || first.complex != next.complex || first.vars.size() != next.vars.size())
        return false;
    for (size_t k = 0; k < first.vars.size(); ++k)
        if (first.vars[k].name != next.vars[k].name || first.vars[k].phys != next.vars[k].phys) return false;
    return true;
}

class Reader {
public:
    Reader(Input& in, const std::vector<std::string>& stepLabels) : in_(&in), stepLabels_(stepLabels) {}

    // Whether a message may name the line it is about: no binary data, which has no lines, came
    // before it.
    bool linesCounted() const { return linesCounted_; }

    std::vector<NamedVector> run() {
        in_->require(64);
        std::string_view head(in_->data(), in_->available());
        if (head.substr(0, 2) == "\xFF\xFE") {
            utf16_ = true;
            in_->skip(2);
        } else if (isUtf16Title(head.data(), head.size())) {
            utf16_ = true;
        } else if (head.substr(0, 3) == "\xEF\xBB\xBF") {
            in_->skip(3);
        }
        if (!startsPlot()) {
            if (in_->left() == 0) throw RawError{0, "the file is empty"};
            throw RawError{0, "not a raw file: it does not begin with 'Title:'"};
        }
        bool joining = true;  // plots of the same analysis still join the first
        std::unordered_map<std::string_view, int> counts;
        while (startsPlot()) {
            Header h = readHeader();
            ++counts[analysisPrefix(h.plotName)];
            if (!plots_.empty() && joining && sameAnalysis(plots_[0].header, h)) {
                appendData(plots_[0], h);
                continue;
            }
            if (!plots_.empty()) joining = false;
            PlotData& d = plots_.emplace_back();
            d.utf16 = utf16_;
            if (plots_.size() > 1) {
                std::string_view prefix = analysisPrefix(h.plotName);
                d.qualifier = std::string(prefix) + std::to_string(counts[prefix]) + ".";
            }
            const size_t nv = h.vars.size();
            if (h.complex) d.cplx.resize(nv);
            else d.real.resize(nv);
            d.header = std::move(h);
            appendData(d, d.header);
        }
        if (in_->left() > 0) throw trailing();
        std::vector<NamedVector> out;
        for (PlotData& d : plots_) build(d, &out);
        return out;
    }

private:
    // ---- Lines of the header

    // Whether the next bytes begin a plot ("Title:").
    bool startsPlot() {
        in_->require(12);
        return utf16_ ? isUtf16Title(in_->data(), in_->available())
                      : isTitle(std::string_view(in_->data(), std::min<size_t>(in_->available(), 6)));
    }

    // The next line of the header without its line end, as UTF-8; nullopt at the end of the file.
    // The view is valid until the input moves on.
    std::optional<std::string_view> nextLine() {
        if (in_->left() == 0) return std::nullopt;
        const size_t unit = utf16_ ? 2 : 1;
        size_t scanned = 0, length = 0;
        for (;;) {
            const char* p = in_->data();
            const size_t n = in_->available() - in_->available() % unit;
            size_t i = scanned;
            while (i < n && !(p[i] == '\n' && (unit == 1 || p[i + 1] == 0))) i += unit;
            if (i < n) {
                length = i;
                break;
            }
            if (in_->available() == in_->left()) {  // the last line, without a line end
                length = in_->available();
                break;
            }
            scanned = n;
            in_->require(in_->available() * 2 + 4096);
        }
        ++line_;
        std::string_view raw(in_->data(), length);
        in_->skip(std::min(length + unit, in_->available()));
        if (utf16_) {
            auto text = fromUtf16(raw);
            if (!text) throw RawError{line_, "the header is not valid UTF-16 text"};
            decoded_ = std::move(*text);
            raw = decoded_;
        }
        if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
        return raw;
    }

    Header readHeader() {
        Header h;
        for (;;) {
            auto line = nextLine();
            if (!line)
                throw RawError{0, "the header of " + plotWords(h) + " ends before its data (no 'Binary:' or 'Values:' line)"};
            std::string_view text = trim(*line);
            if (text.empty()) continue;
            size_t colon = text.find(':');
            if (colon == std::string_view::npos)
                throw RawError{line_, "'" + shown(text) + "' is not a header line ('Name: value')"};
            std::string_view key = trim(text.substr(0, colon)), value = trim(text.substr(colon + 1));
            if (iequals(key, "Title")) h.title = std::string(value);
            else if (iequals(key, "Plotname")) h.plotName = std::string(value);
            else if (iequals(key, "Flags")) readFlags(value, &h);
            else if (iequals(key, "No. Variables")) h.declaredVariables = count(key, value);
            else if (iequals(key, "No. Points")) h.points = count(key, value);
            else if (iequals(key, "Variables")) readVariables(value, &h);
            else if (iequals(key, "Binary") || iequals(key, "Values")) {
                h.binary = iequals(key, "Binary");
                break;
            }
            // Date, Command, Option, Offset, Dimensions, Backannotation and what other writers
            // add say nothing about the data.
        }
        if (!h.declaredVariables) throw RawError{0, "the header of " + plotWords(h) + " has no 'No. Variables'"};
        if (h.vars.empty()) throw RawError{0, "the header of " + plotWords(h) + " has no 'Variables:' list"};
        if (!h.points) throw RawError{0, "the header of " + plotWords(h) + " has no 'No. Points'"};
        layout(&h);
        return h;
    }

    uint64_t count(std::string_view key, std::string_view value) {
        auto n = parseCount(value);
        if (!n) throw RawError{line_, "'" + std::string(key) + "' must be a whole number, not '" + shown(value) + "'"};
        return *n;
    }

    void readFlags(std::string_view value, Header* h) {
        bool real = false;
        size_t i = 0;
        while (i < value.size()) {
            size_t end = value.find_first_of(" \t", i);
            if (end == std::string_view::npos) end = value.size();
            std::string_view flag = value.substr(i, end - i);
            i = value.find_first_not_of(" \t", end);
            if (i == std::string_view::npos) i = value.size();
            if (iequals(flag, "real")) real = true;
            else if (iequals(flag, "complex")) h->complex = true;
            else if (iequals(flag, "double")) h->doubles = true;
            else if (iequals(flag, "fastaccess")) h->fastAccess = true;
            else if (iequals(flag, "stepped")) h->stepped = true;
            else if (!iequals(flag, "forward") && !iequals(flag, "log") && !iequals(flag, "padded"))
                throw RawError{line_, "unknown flag '" + shown(flag) +
                                          "' (known: real, complex, double, fastaccess, stepped, forward, log, padded)"};
        }
        if (real && h->complex) throw RawError{line_, "the flags real and complex exclude each other"};
    }

    // The variables: one line each, "INDEX NAME TYPE [PARAMETERS]", the first maybe on the
    // "Variables:" line itself.
    void readVariables(std::string_view first, Header* h) {
        if (!h->declaredVariables) throw RawError{line_, "'No. Variables' must come before 'Variables:'"};
        if (*h->declaredVariables == 0) throw RawError{line_, "the plot has no variables"};
        NameSet names;
        std::string pending(first);
        while (h->vars.size() < *h->declaredVariables) {
            std::string_view text;
            if (!pending.empty()) {
                text = pending;
            } else {
                auto line = nextLine();
                if (!line) throw RawError{0, "the file ends in the list of variables"};
                text = trim(*line);
                if (text.empty()) continue;
            }
            readVariable(text, h, &names);
            pending.clear();
        }
    }

    void readVariable(std::string_view text, Header* h, NameSet* names) {
        const size_t k = h->vars.size();
        std::string_view fields[3];
        size_t n = 0, i = 0;
        while (n < 3) {
            i = text.find_first_not_of(" \t", i);
            if (i == std::string_view::npos) break;
            size_t end = text.find_first_of(" \t", i);
            if (end == std::string_view::npos) end = text.size();
            fields[n++] = text.substr(i, end - i);
            i = end;
        }
        auto index = n > 0 ? parseCount(fields[0]) : std::nullopt;
        if (!index && text.find(':') != std::string_view::npos)  // the next header line
            throw RawError{line_, "the header announces " + plural(*h->declaredVariables, "variable") + " but lists " +
                                      std::to_string(k)};
        if (!index || n < 3)
            throw RawError{line_, "variable " + std::to_string(k) + ": '" + shown(text) +
                                      "' is not a line 'INDEX NAME TYPE'"};
        if (*index != k) throw RawError{line_, "variable " + std::to_string(k) + " has the index " + shown(fields[0])};
        std::string_view name = fields[1];
        const std::string which = "the name of variable " + std::to_string(k);
        if (!isUtf8(name)) throw RawError{line_, which + " is not valid UTF-8: '" + shown(name) + "'"};
        for (char c : name)
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
                throw RawError{line_, which + " holds a control character: '" + shown(name) + "'"};
        if (!names->emplace(name).second) throw RawError{line_, "two variables are called '" + shown(name) + "'"};
        h->vars.push_back({std::string(name), unitOfType(fields[2]), iequals(fields[2], "time")});
    }

    // How the values lie in binary data.
    void layout(Header* h) const {
        const size_t nv = h->vars.size();
        Elem rest = h->complex ? Elem::C128 : (!utf16_ || h->doubles) ? Elem::F64 : Elem::F32;
        Elem first = h->complex ? Elem::C128 : (!utf16_ || h->doubles || !hasNoSweep(h->plotName)) ? Elem::F64 : Elem::F32;
        h->elems.assign(nv, rest);
        h->elems[0] = first;
        h->pointSize = 0;
        for (Elem e : h->elems) h->pointSize += elemSize(e);
    }

    static std::string plotWords(const Header& h) {
        return h.plotName.empty() ? "the plot" : "the plot '" + shown(h.plotName) + "'";
    }

    // ---- Data

    void appendData(PlotData& d, const Header& h) {
        last_ = {plotWords(h), *h.points, h.binary ? h.pointSize : 0};
        d.runStarts.push_back(d.rows);
        d.runTitles.push_back(h.title);
        if (h.binary) {
            readBinary(d, h);
            linesCounted_ = false;  // binary data has no lines
        } else {
            readText(d, h);
        }
    }

    void resize(PlotData& d, size_t rows) {
        for (Array<double>& a : d.real) a.resize(rows);
        for (Array<Complex>& a : d.cplx) a.resize(rows);
    }

    void readBinary(PlotData& d, const Header& h) {
        const uint64_t points = *h.points;
        const size_t ps = h.pointSize;
        uint64_t bytes;
        if (__builtin_mul_overflow(points, ps, &bytes) || bytes > in_->left()) {
            const uint64_t whole = in_->left() / ps;
            throw RawError{0, "the data of " + plotWords(h) + " ends after " + std::to_string(whole) + " of the " +
                                  plural(points, "point") + " that its header announces"};
        }
        const size_t row = d.rows;
        resize(d, row + points);
        d.rows = row + points;
        if (h.fastAccess) {
            for (size_t v = 0; v < h.vars.size(); ++v) {
                const size_t size = elemSize(h.elems[v]);
                for (size_t done = 0; done < points;) {
                    in_->require(std::min<uint64_t>((points - done) * size, FileInput::kChunk));
                    size_t n = std::min<size_t>(points - done, in_->available() / size);
                    convert(h.elems[v], in_->data(), size, n, d, v, row + done);
                    in_->skip(n * size);
                    done += n;
                }
            }
        } else {
            for (size_t done = 0; done < points;) {
                in_->require(std::max<size_t>(ps, std::min<uint64_t>((points - done) * ps, FileInput::kChunk)));
                size_t n = std::min<size_t>(points - done, in_->available() / ps);
                scatter(h, in_->data(), n, d, row + done);
                in_->skip(n * ps);
                done += n;
            }
        }
    }

    // Converts n values of variable v, `stride` bytes apart, into its array from `row` on.
    static void convert(Elem e, const char* src, size_t stride, size_t n, PlotData& d, size_t v, size_t row) {
        switch (e) {
        case Elem::F64: {
            double* dst = d.real[v].data() + row;
            for (size_t p = 0; p < n; ++p) std::memcpy(dst + p, src + p * stride, 8);
            break;
        }
        case Elem::F32: {
            double* dst = d.real[v].data() + row;
            for (size_t p = 0; p < n; ++p) {
                float f;
                std::memcpy(&f, src + p * stride, 4);
                dst[p] = f;
            }
            break;
        }
        case Elem::C128: {
            Complex* dst = d.cplx[v].data() + row;
            for (size_t p = 0; p < n; ++p) std::memcpy(static_cast<void*>(dst + p), src + p * stride, 16);
            break;
        }
        }
    }

    // Points of interleaved values into the variables' arrays, a block of points at a time so that
    // the block stays in the cache while each variable takes its values.
    static void scatter(const Header& h, const char* src, size_t n, PlotData& d, size_t row) {
        const size_t ps = h.pointSize;
        const size_t block = std::max<size_t>(1, (size_t(64) << 10) / ps);
        for (size_t p0 = 0; p0 < n; p0 += block) {
            const size_t m = std::min(block, n - p0);
            size_t offset = 0;
            for (size_t v = 0; v < h.elems.size(); ++v) {
                convert(h.elems[v], src + p0 * ps + offset, ps, m, d, v, row + p0);
                offset += elemSize(h.elems[v]);
            }
        }
    }

    // The next token of text data (bytes up to white space) and its line; nullopt at the end.
    std::optional<std::string_view> token() {
        static constexpr size_t kLongest = 256;
        for (;;) {
            in_->require(kLongest + 1);
            const char* p = in_->data();
            const size_t n = in_->available();
            size_t i = 0;
            while (i < n && (p[i] == ' ' || p[i] == '\t' || p[i] == '\r' || p[i] == '\n')) line_ += p[i++] == '\n';
            in_->skip(i);
            if (i < n) break;
            if (in_->left() == 0) return std::nullopt;
        }
        in_->require(kLongest + 1);
        const char* p = in_->data();
        const size_t n = in_->available();
        size_t i = 0;
        while (i < n && i <= kLongest && p[i] != ' ' && p[i] != '\t' && p[i] != '\r' && p[i] != '\n') ++i;
        return std::string_view(p, i);
    }

    void readText(PlotData& d, const Header& h) {
        if (utf16_) switchToDecodedText();
        const uint64_t points = *h.points;
        const size_t nv = h.vars.size();
        // Each value takes two bytes at least (a digit and a separator), which bounds what the
        // header's word may reserve.
        const uint64_t room = d.rows + std::min<uint64_t>(points, in_->left() / (2 * (nv + 1)) + 1);
        for (Array<double>& a : d.real) a.reserve(room);
        for (Array<Complex>& a : d.cplx) a.reserve(room);
        ++line_;  // the values start on the line after "Values:"
        for (uint64_t p = 0; p < points; ++p) {
            auto index = token();
            if (!index) throw endedEarly(h, p);
            if (parseCount(*index) != p)
                throw RawError{line_, "point " + std::to_string(p) + " begins with '" + shown(*index) + "', not its index"};
            in_->skip(index->size());
            for (size_t v = 0; v < nv; ++v) {
                auto text = token();
                if (!text) throw endedEarly(h, p);
                if (h.complex) d.cplx[v].push_back(complexValue(*text, h, v));
                else d.real[v].push_back(realValue(*text, h, v));
                in_->skip(text->size());
            }
        }
        d.rows += points;
        // What follows is a new plot or nothing.
        auto next = token();
        if (next && !isTitle(*next)) {
            if (parseCount(*next)) throw RawError{line_, "the data of " + plotWords(h) + " holds more than the " +
                                                             plural(points, "point") + " that its header announces"};
            throw RawError{line_, "'" + shown(*next) + "' after the data of " + plotWords(h) + " does not begin a plot"};
        }
        --line_;  // the header's reader counts the Title's line itself
    }

    RawError endedEarly(const Header& h, uint64_t points) const {
        return {0, "the data of " + plotWords(h) + " ends after " + std::to_string(points) + " of the " +
                       plural(*h.points, "point") + " that its header announces"};
    }

    double realValue(std::string_view text, const Header& h, size_t v) const {
        auto x = parseNumber(text);
        if (!x) throw RawError{line_, "'" + shown(text) + "' is not a number (variable '" + shown(h.vars[v].name) + "')"};
        return *x;
    }
    Complex complexValue(std::string_view text, const Header& h, size_t v) const {
        size_t comma = text.find(',');
        auto re = comma == std::string_view::npos ? std::nullopt : parseNumber(text.substr(0, comma));
        auto im = comma == std::string_view::npos ? std::nullopt : parseNumber(text.substr(comma + 1));
        if (!re || !im)
            throw RawError{line_, "'" + shown(text) + "' is not a complex value 're,im' (variable '" +
                                      shown(h.vars[v].name) + "')"};
        return {*re, *im};
    }

    // Text data in a UTF-16 file: the rest of the file as 8-bit text, read from then on.
    void switchToDecodedText() {
        std::string units;
        while (in_->left() > 0) {
            in_->require(FileInput::kChunk);
            units.append(in_->data(), in_->available());
            in_->skip(in_->available());
        }
        auto text = fromUtf16(units);
        if (!text) throw RawError{line_ + 1, "the values are not valid UTF-16 text"};
        decodedText_ = std::move(*text);
        decodedInput_ = std::make_unique<MemoryInput>(decodedText_);
        in_ = decodedInput_.get();
        utf16_ = false;
    }

    // Bytes after the last plot that do not begin another.
    RawError trailing() const {
        const uint64_t left = in_->left();
        if (last_.pointSize && left % last_.pointSize == 0)
            return {0, "the header of " + last_.words + " announces " + plural(last_.points, "point") +
                           ", but its data holds " + std::to_string(last_.points + left / last_.pointSize)};
        return {0, "the data of " + last_.words + " is followed by " + plural(left, "byte") +
                       " that do not begin a plot (is the header's number of points wrong?)"};
    }

    // ---- Vectors

    void build(PlotData& d, std::vector<NamedVector>* out) {
        const Header& h = d.header;
        const size_t nv = h.vars.size();
        auto refVector = std::make_shared<Vector>();
        // The reference: real unless some value has an imaginary part.
        bool realRef = !h.complex;
        if (h.complex) {
            realRef = std::all_of(d.cplx[0].begin(), d.cplx[0].end(), [](const Complex& c) { return c.imag() == 0; });
            if (realRef) {
                d.real.resize(1);
                d.real[0].resize(d.rows);
                for (size_t i = 0; i < d.rows; ++i) d.real[0][i] = d.cplx[0][i].real();
            }
        }
        if (realRef) {
            Array<double>& x = d.real[0];
            if (d.utf16 && h.vars[0].isTime)
                for (double& t : x) t = std::fabs(t);
            for (size_t i = 0; i < d.rows; ++i)
                if (!std::isfinite(x[i]))
                    throw RawError{0, "the reference '" + shown(h.vars[0].name) + "' of " + plotWords(h) +
                                          " is not a finite number at point " + std::to_string(i)};
        }

        std::vector<size_t> lengths = runLengths(d, realRef);
        DivisionLabelArray labels = runLabels(d, lengths.size());

        auto finish = [&](const std::shared_ptr<Vector>& v, size_t k) {
            v->phys = h.vars[k].phys;
            v->name = d.qualifier + h.vars[k].name;
            v->setDivisionLengths(lengths);
            v->labels = labels;
            out->push_back({v->name, v});
        };
        Reference ref;
        ref.length = d.rows;
        ref.phys = h.vars[0].phys;
        ref.name = h.vars[0].name;
        if (realRef) {
            refVector->type = VD_REAL;
            refVector->real = std::move(d.real[0]);
            ref.type = VD_REAL;
            ref.realValues = std::shared_ptr<const Array<double>>(refVector, &refVector->real);  // shares, no copy
        } else {
            refVector->type = VD_COMPLEX;
            refVector->cplx = std::move(d.cplx[0]);
            ref.type = VD_COMPLEX;
            ref.complexValues = std::shared_ptr<const Array<Complex>>(refVector, &refVector->cplx);
        }
        finish(refVector, 0);
        for (size_t k = 1; k < nv; ++k) {
            auto v = std::make_shared<Vector>();
            if (h.complex) {
                v->type = VD_COMPLEX;
                v->cplx = std::move(d.cplx[k]);
            } else {
                v->type = VD_REAL;
                v->real = std::move(d.real[k]);
            }
            v->ref = ref;
            finish(v, k);
        }
    }

    // Division lengths: each joined run, split further where the reference goes back to its
    // first value (a stepped or nested sweep).
    static std::vector<size_t> runLengths(const PlotData& d, bool realRef) {
        std::vector<size_t> lengths;
        for (size_t r = 0; r < d.runStarts.size(); ++r) {
            const size_t begin = d.runStarts[r];
            const size_t end = r + 1 < d.runStarts.size() ? d.runStarts[r + 1] : d.rows;
            size_t start = begin;
            if (realRef) {
                const double* x = d.real[0].data();
                for (size_t i = begin + 1; i < end; ++i)
                    if (x[i] == x[begin] && x[i - 1] != x[begin]) {
                        lengths.push_back(i - start);
                        start = i;
                    }
            }
            if (end > start || lengths.empty()) lengths.push_back(end - start);
        }
        if (lengths.size() > 1) lengths.erase(std::remove(lengths.begin(), lengths.end(), size_t(0)), lengths.end());
        return lengths;
    }

    DivisionLabelArray runLabels(const PlotData& d, size_t divisions) const {
        DivisionLabelArray labels;
        if (d.header.stepped && divisions > 1 && stepLabels_.size() == divisions) {
            labels.assign(stepLabels_.begin(), stepLabels_.end());
        } else if (d.runTitles.size() == divisions && divisions > 1 &&
                   std::any_of(d.runTitles.begin(), d.runTitles.end(),
                               [&](const std::string& t) { return t != d.runTitles[0]; })) {
            labels.assign(d.runTitles.begin(), d.runTitles.end());
        }
        return labels;
    }

    Input* in_;
    const std::vector<std::string>& stepLabels_;
    bool utf16_ = false;
    size_t line_ = 0;
    std::string decoded_;  // the current header line, from UTF-16
    std::string decodedText_;
    std::unique_ptr<MemoryInput> decodedInput_;
    std::vector<PlotData> plots_;
    bool linesCounted_ = true;
    struct {
        std::string words;      // "the plot 'AC Analysis'"
        uint64_t points;
        size_t pointSize;       // 0: text data
    } last_;                    // the last plot read
};

std::optional<std::vector<NamedVector>> readRaw(Input& in, std::string_view fileName, std::string* error,
                                                const std::vector<std::string>& stepLabels) {
    Reader reader(in, stepLabels);
    try {
        return reader.run();
    } catch (const RawError& e) {
        const bool line = e.line && reader.linesCounted();
        if (error) *error = std::string(fileName) + (line ? ":" + std::to_string(e.line) : std::string()) + ": " + e.what;
        return std::nullopt;
    }
}

std::string readWhole(const std::string& path) {
    std::string text;
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return text;
    char buffer[1 << 16];
    ssize_t n;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0 && text.size() < (size_t(1) << 24))
        text.append(buffer, static_cast<size_t>(n));
    ::close(fd);
    return text;
}

}  // namespace

std::optional<std::vector<NamedVector>> parseRaw(std::string_view bytes, std::string_view fileName, std::string* error,
                                                 const std::vector<std::string>& stepLabels) {
    MemoryInput in(bytes);
    return readRaw(in, fileName, error, stepLabels);
}

std::optional<std::vector<NamedVector>> loadRaw(const std::string& path, std::string* error, const Progress& progress) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st {};
    if (fd < 0 || ::fstat(fd, &st) != 0) {
        if (error) *error = "cannot read '" + path + "': " + std::strerror(errno);
        if (fd >= 0) ::close(fd);
        return std::nullopt;
    }
    std::vector<std::string> labels;
    size_t dot = path.find_last_of("./");
    if (dot != std::string::npos && path[dot] == '.') labels = readStepLabels(readWhole(path.substr(0, dot) + ".log"));
    FileInput in(fd, static_cast<uint64_t>(st.st_size), progress);
    auto result = readRaw(in, path, error, labels);
    ::close(fd);
    return result;
}

std::vector<std::string> readStepLabels(std::string_view log) {
    std::string text;
    bool utf16 = log.substr(0, 2) == "\xFF\xFE" || (log.size() >= 2 && log[0] != 0 && log[1] == 0);
    if (utf16) {
        if (log.substr(0, 2) == "\xFF\xFE") log.remove_prefix(2);
        // A stray surrogate in a log should not cost the labels: keep the ASCII that matters.
        for (size_t i = 0; i + 1 < log.size(); i += 2) text += log[i + 1] == 0 ? log[i] : '?';
        log = text;
    }
    std::vector<std::string> labels;
    size_t pos = 0;
    while (pos < log.size()) {
        size_t end = log.find('\n', pos);
        if (end == std::string_view::npos) end = log.size();
        std::string_view line = trim(log.substr(pos, end - pos));
        pos = end + 1;
        if (line.size() > 6 && iequals(line.substr(0, 5), ".step") && (line[5] == ' ' || line[5] == '\t'))
            labels.emplace_back(trim(line.substr(6)));
    }
    return labels;
}

}  // namespace wavex::io

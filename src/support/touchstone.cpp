#include "support/touchstone.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace wavex {
namespace {

using Cplx = std::complex<double>;

constexpr double kPi = 3.141592653589793;
constexpr double kDefaultReference = 50;
constexpr size_t kMaxStreamBytes = size_t{256} << 20;  // cap for files that are not regular files

// magnitude ∠ degrees, exact at multiples of 90°: the angle is reduced to within 45° of a
// quadrant before the radians conversion, so 180° gives (-m, 0) and not (-m, 1.2e-16·m).
Cplx polarDegrees(double magnitude, double degrees) {
    if (!std::isfinite(degrees)) return {std::nan(""), std::nan("")};
    double r = std::fmod(degrees, 360.0);
    double q = std::nearbyint(r / 90.0);
    double x = (r - 90.0 * q) * (kPi / 180.0);
    double s = magnitude * std::sin(x), c = magnitude * std::cos(x);
    switch ((static_cast<int>(q) % 4 + 4) % 4) {
        case 0: return {c, s};
        case 1: return {-s, c};
        case 2: return {-c, -s};
        default: return {s, -c};
    }
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// Whole non-negative number, as in [Number of Ports] 4.
bool parseCount(std::string_view s, long* out) {
    if (s.empty()) return false;
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), *out);
    return ec == std::errc() && ptr == s.data() + s.size() && *out >= 0;
}

std::string num(double v) { return formatRoundTrip(v); }

// The N of a file name NAME.sNp (any case), or 0.
long portsInFileName(std::string_view name) {
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return 0;
    std::string_view ext = name.substr(dot + 1);
    if (ext.size() < 3 || asciiLower(ext.front()) != 's' || asciiLower(ext.back()) != 'p') return 0;
    long n = 0;
    return parseCount(ext.substr(1, ext.size() - 2), &n) ? n : 0;
}

}  // namespace

// One pass over the text, line by line. Network data are a stream of numbers: a frequency point
// is 1 + 2·pairs values that may be spread over several lines, but it must end where a line ends;
// a line that would run past the end of the point being built means that point was short, and
// the line starts the next one. That keeps one mistake to one message.
class TouchstoneParser {
public:
    TouchstoneParser(AcTableData& table, std::vector<std::string>* errors)
        : t_(table), errors_(errors), n_(table.numPorts_) {
        t_.info_ = TouchstoneInfo{};
        t_.info_.references.assign(static_cast<size_t>(n_), kDefaultReference);
    }

    bool run(std::string_view text) {
        const char* p = text.data();
        const char* end = p + text.size();
        if (text.substr(0, 3) == "\xEF\xBB\xBF") p += 3;  // UTF-8 byte-order mark
        textBegin_ = p;
        textSize_ = static_cast<size_t>(end - p);
        while (p < end && !stopped_ && section_ != Section::End) {
            const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p)));
            const char* lineEnd = nl ? nl : end;
            ++line_;
            lineBegin_ = p;
            handleLine(p, lineEnd);
            p = nl ? nl + 1 : end;
        }
        if (!stopped_) finish();
        return messages_ == 0;
    }

    // A problem of line `line` (0: of the file as a whole).
    void problem(size_t line, const std::string& text) {
        if (stopped_) return;
        if (messages_ == AcTableData::kMaxMessages) {
            add("Too many problems; reading stopped at line " + std::to_string(line_));
            stopped_ = true;
            return;
        }
        add(line ? "Line " + std::to_string(line) + ": " + text : text);
    }
    void stop(size_t line, const std::string& text) {
        problem(line, text);
        stopped_ = true;
    }

private:
    enum class Section { Header, Network, Noise, Information, End };

    void add(std::string message) {
        ++messages_;
        if (errors_) errors_->push_back(std::move(message));
    }

    void handleLine(const char* b, const char* e) {
        if (const void* bang = std::memchr(b, '!', static_cast<size_t>(e - b))) e = static_cast<const char*>(bang);
        while (b < e && isBlank(*b)) ++b;
        while (e > b && isBlank(e[-1])) --e;
        if (b == e) return;
        if (section_ == Section::Information) {
            if (*b == '[') keyword(b, e);
            return;
        }
        if (*b == '#') optionLine(std::string_view(b + 1, static_cast<size_t>(e - b - 1)));
        else if (*b == '[') keyword(b, e);
        else if (referenceNeeded_ > 0) referenceValues(b, e);
        else if (section_ == Section::Noise) noiseLine(b, e);
        else if (t_.info_.version == 2 && section_ != Section::Network) problem(line_, "values outside [Network Data]");
        else networkLine(b, e);
        sawContent_ = true;
    }

    // Appends the numbers of [b, e) to `into`. A token that is not a number is reported and
    // stands as NaN, so that the count of values, and the alignment of what follows, is kept.
    void numbers(const char* b, const char* e, std::vector<double>& into) {
        while (b < e) {
            while (b < e && isBlank(*b)) ++b;
            if (b == e) break;
            const char* q = b;
            if (*q == '+' && q + 1 < e && q[1] != '-' && q[1] != '+') ++q;  // from_chars takes no '+'
            double v = 0;
            auto [ptr, ec] = std::from_chars(q, e, v);
            bool ok = ptr != q && (ptr == e || isBlank(*ptr));
            if (ok && ec == std::errc::result_out_of_range) v = std::strtod(std::string(q, ptr).c_str(), nullptr);
            else if (ec != std::errc()) ok = false;
            if (!ok) {
                const char* t = b;
                while (t < e && !isBlank(*t)) ++t;
                problem(line_, "'" + std::string(b, t) + "' is not a number");
                badValues_ = true;
                v = std::nan("");
                ptr = t;
            }
            into.push_back(v);
            b = ptr;
        }
    }

    // ---- Option line and keywords ----

    void optionLine(std::string_view rest) {
        if (sawOptionLine_) {
            if (t_.info_.version == 2) problem(line_, "a second option line");
            return;  // version 1: later option lines are ignored
        }
        sawOptionLine_ = true;
        if (dataStarted()) problem(line_, "the option line must come before the data");
        std::vector<std::string_view> tokens;
        for (size_t i = 0; i < rest.size();) {
            while (i < rest.size() && isBlank(rest[i])) ++i;
            size_t j = i;
            while (j < rest.size() && !isBlank(rest[j])) ++j;
            if (j > i) tokens.push_back(rest.substr(i, j - i));
            i = j;
        }
        TouchstoneInfo& info = t_.info_;
        for (size_t i = 0; i < tokens.size(); ++i) {
            std::string t = toLower(tokens[i]);
            if (t == "hz") freqScale_ = 1;
            else if (t == "khz") freqScale_ = 1e3;
            else if (t == "mhz") freqScale_ = 1e6;
            else if (t == "ghz") freqScale_ = 1e9;
            else if (t.size() == 1 && std::strchr("syzhg", t[0])) info.parameter = asciiUpper(t[0]);
            else if (t == "db") info.format = TouchstoneInfo::Format::DB;
            else if (t == "ma") info.format = TouchstoneInfo::Format::MA;
            else if (t == "ri") info.format = TouchstoneInfo::Format::RI;
            else if (t == "r") {
                auto r = i + 1 < tokens.size() ? parseNumber(tokens[i + 1]) : std::nullopt;
                if (!r || !(*r > 0) || std::isinf(*r)) {
                    problem(line_, "'R' must be followed by a positive resistance");
                    continue;
                }
                info.references.assign(static_cast<size_t>(n_), *r);
                ++i;
            } else {
                problem(line_, "unknown option '" + std::string(tokens[i]) + "'");
            }
        }
        if ((info.parameter == 'H' || info.parameter == 'G') && n_ != 2)
            problem(line_, std::string(1, info.parameter) + " parameters are for 2-port files only");
    }

    void keyword(const char* b, const char* e) {
        const char* close = static_cast<const char*>(std::memchr(b, ']', static_cast<size_t>(e - b)));
        std::string_view whole(b, static_cast<size_t>(e - b));
        if (!close) {
            problem(line_, "unknown keyword '" + std::string(whole) + "'");
            return;
        }
        std::string_view name = trim(std::string_view(b + 1, static_cast<size_t>(close - b - 1)));
        std::string_view rest = trim(std::string_view(close + 1, static_cast<size_t>(e - close - 1)));
        std::string shown = "[" + std::string(name) + "]";
        if (section_ == Section::Information) {
            if (iequals(name, "End Information")) section_ = Section::Header;
            return;
        }
        if (referenceNeeded_ > 0) shortReference();
        if (iequals(name, "Version")) {
            if (sawContent_) problem(line_, "[Version] must come first");
            if (rest != "2.0" && rest != "2.1") return stop(line_, "unsupported version '" + std::string(rest) + "'");
            t_.info_.version = 2;
            return;
        }
        if (t_.info_.version != 2) return problem(line_, "keyword " + shown + " before [Version]");
        long count = 0;
        if (iequals(name, "Number of Ports")) {
            if (!parseCount(rest, &count)) return problem(line_, "'" + std::string(rest) + "' is not a port count");
            if (count != n_)
                return stop(line_, "the file has " + std::to_string(count) + " ports, not " + std::to_string(n_));
            sawPorts_ = true;
        } else if (iequals(name, "Two-Port Data Order")) {
            if (rest == "12_21") twoPortOrder_ = 12;
            else if (rest == "21_12") twoPortOrder_ = 21;
            else problem(line_, "unknown two-port data order '" + std::string(rest) + "'");
        } else if (iequals(name, "Number of Frequencies") || iequals(name, "Number of Noise Frequencies")) {
            if (!parseCount(rest, &count)) return problem(line_, "'" + std::string(rest) + "' is not a count");
            Declared& d = iequals(name, "Number of Frequencies") ? declaredPoints_ : declaredNoise_;
            d = {count, line_};
        } else if (iequals(name, "Reference")) {
            referenceCount_ = 0;
            referenceNeeded_ = static_cast<size_t>(n_);
            referenceLine_ = line_;
            referenceValues(rest.data(), rest.data() + rest.size());
        } else if (iequals(name, "Matrix Format")) {
            if (iequals(rest, "Full")) t_.info_.matrix = TouchstoneInfo::Matrix::Full;
            else if (iequals(rest, "Lower")) t_.info_.matrix = TouchstoneInfo::Matrix::Lower;
            else if (iequals(rest, "Upper")) t_.info_.matrix = TouchstoneInfo::Matrix::Upper;
            else problem(line_, "unknown matrix format '" + std::string(rest) + "'");
        } else if (iequals(name, "Mixed-Mode Order")) {
            t_.info_.mixedModeOrder = std::string(rest);
        } else if (iequals(name, "Begin Information")) {
            section_ = Section::Information;
        } else if (iequals(name, "Network Data")) {
            if (!sawPorts_) problem(line_, "[Network Data] before [Number of Ports]");
            if (declaredPoints_.line == 0) problem(line_, "[Network Data] before [Number of Frequencies]");
            if (n_ == 2 && t_.info_.matrix == TouchstoneInfo::Matrix::Full && twoPortOrder_ == 0)
                problem(line_, "a 2-port file needs [Two-Port Data Order] before [Network Data]");
            section_ = Section::Network;
            sawNetworkData_ = true;
            prepareLayout();
        } else if (iequals(name, "Noise Data")) {
            endPoint();
            if (n_ != 2) problem(line_, "noise data are for 2-port files only");
            if (declaredNoise_.line == 0) problem(line_, "[Noise Data] before [Number of Noise Frequencies]");
            section_ = Section::Noise;
        } else if (iequals(name, "End")) {
            endPoint();
            section_ = Section::End;
        } else {
            problem(line_, "unknown keyword '" + shown + "'");
        }
    }

    void shortReference() {
        problem(referenceLine_, "[Reference] needs " + std::to_string(n_) + " values, found " +
                                    std::to_string(n_ - referenceNeeded_));
        referenceNeeded_ = 0;
    }

    void referenceValues(const char* b, const char* e) {
        scratch_.clear();
        numbers(b, e, scratch_);
        for (double r : scratch_) {
            if (referenceNeeded_ == 0) return problem(line_, "[Reference] needs " + std::to_string(n_) + " values, found more");
            if (!(r > 0) || std::isinf(r)) problem(line_, "reference resistance " + num(r) + " is not positive");
            t_.info_.references[referenceCount_++] = r;
            --referenceNeeded_;
        }
    }

    // ---- Network data ----

    bool dataStarted() const { return !pending_.empty() || !t_.frequencies_.empty(); }

    // How the value pairs of a point fill the row-major n×n matrix: the whole matrix row by row,
    // one triangle row by row (mirrored into the other), or a 2-port's 11, 21, 12, 22.
    void prepareLayout() {
        if (layoutReady_) return;
        layoutReady_ = true;
        using Matrix = TouchstoneInfo::Matrix;
        matrix_ = t_.info_.version == 2 ? t_.info_.matrix : Matrix::Full;
        columnOrder_ = n_ == 2 && matrix_ == Matrix::Full && (t_.info_.version == 1 || twoPortOrder_ != 12);
        size_t n = static_cast<size_t>(n_);
        need_ = 1 + 2 * (matrix_ == Matrix::Full ? n * n : n * (n + 1) / 2);
        pending_.reserve(std::min<size_t>(need_, 4096));
    }

    void networkLine(const char* b, const char* e) {
        prepareLayout();
        section_ = Section::Network;
        size_t before = pending_.size();
        if (before == 0) {
            pointLine_ = line_;
            pointBegin_ = lineBegin_;
        }
        numbers(b, e, pending_);
        // Version 1 two-port files: noise parameters follow the network data, and begin where a
        // line of five values drops back to or below the last frequency (a longer line that does
        // is network data out of order).
        if (before == 0 && n_ == 2 && t_.info_.version == 1 && !t_.frequencies_.empty() && pending_.size() == 5 &&
            pending_[0] <= lastFrequency_) {
            section_ = Section::Noise;
            scratch_.swap(pending_);
            pending_.clear();
            return noisePoint(scratch_);
        }
        size_t count = pending_.size();
        if (count < need_) return;
        if (count > need_ && before > 0) {
            problem(pointLine_, "expected " + std::to_string(need_) + " values for a frequency point, found " +
                                    std::to_string(before));
            pending_.erase(pending_.begin(), pending_.begin() + static_cast<ptrdiff_t>(before));
            pointLine_ = line_;
            pointBegin_ = lineBegin_;
            badValues_ = false;
            count -= before;
            if (count < need_) return;
        }
        if (count > need_) {
            problem(line_, "expected " + std::to_string(need_) + " values for a frequency point, found " +
                               std::to_string(count));
            pending_.clear();
            badValues_ = false;
            return;
        }
        addPoint();
    }

    // A point left unfinished by a keyword or the end of the file.
    void endPoint() {
        if (pending_.empty()) return;
        problem(pointLine_, "expected " + std::to_string(need_) + " values for a frequency point, found " +
                                std::to_string(pending_.size()));
        pending_.clear();
        badValues_ = false;
    }

    template <TouchstoneInfo::Format F>
    static Cplx toComplex(double a, double b) {
        if constexpr (F == TouchstoneInfo::Format::RI) return {a, b};
        else if constexpr (F == TouchstoneInfo::Format::MA) return polarDegrees(a, b);
        else return polarDegrees(std::pow(10.0, a / 20), b);
    }

    template <TouchstoneInfo::Format F>
    void placeValues(Cplx* dst) const {
        using Matrix = TouchstoneInfo::Matrix;
        const double* v = pending_.data() + 1;
        const size_t n = static_cast<size_t>(n_);
        if (columnOrder_) {
            constexpr size_t kOrder[4] = {0, 2, 1, 3};
            for (size_t j = 0; j < 4; ++j, v += 2) dst[kOrder[j]] = toComplex<F>(v[0], v[1]);
            return;
        }
        if (matrix_ == Matrix::Full) {
            for (size_t k = 0; k < n * n; ++k, v += 2) dst[k] = toComplex<F>(v[0], v[1]);
            return;
        }
        for (size_t r = 0; r < n; ++r)
            for (size_t c = (matrix_ == Matrix::Upper ? r : 0); c < (matrix_ == Matrix::Lower ? r + 1 : n); ++c, v += 2)
                dst[n * r + c] = dst[n * c + r] = toComplex<F>(v[0], v[1]);
    }

    void addPoint() {
        double raw = pending_[0];
        bool bad = badValues_;
        badValues_ = false;
        if (!bad && (!(raw >= 0) || std::isinf(raw))) {
            problem(pointLine_, "frequency " + num(raw) + " is not valid");
            bad = true;
        } else if (!bad && !t_.frequencies_.empty() && raw < lastFrequency_) {
            problem(pointLine_, "frequency " + num(raw) + " is below the previous one, " + num(lastFrequency_));
            bad = true;
        }
        if (bad) {
            pending_.clear();
            return;
        }
        if (t_.frequencies_.empty()) {
            // Size the table from the first point's share of the text, so that it grows once.
            size_t bytes = std::max<size_t>(1, static_cast<size_t>(lineEnd() - pointBegin_));
            size_t points = std::min(textSize_ / bytes + 1, textSize_ / (need_ * 2) + 1);
            t_.frequencies_.reserve(points);
            t_.values_.reserve(points * static_cast<size_t>(n_) * static_cast<size_t>(n_));
        }
        size_t base = t_.values_.size();
        t_.values_.resize(base + static_cast<size_t>(n_) * static_cast<size_t>(n_));
        Cplx* dst = t_.values_.data() + base;
        switch (t_.info_.format) {
            case TouchstoneInfo::Format::RI: placeValues<TouchstoneInfo::Format::RI>(dst); break;
            case TouchstoneInfo::Format::MA: placeValues<TouchstoneInfo::Format::MA>(dst); break;
            case TouchstoneInfo::Format::DB: placeValues<TouchstoneInfo::Format::DB>(dst); break;
        }
        t_.frequencies_.push_back(raw * freqScale_);
        lastFrequency_ = raw;
        pending_.clear();
    }

    const char* lineEnd() const {
        const char* e = static_cast<const char*>(
            std::memchr(lineBegin_, '\n', static_cast<size_t>(textBegin_ + textSize_ - lineBegin_)));
        return e ? e : textBegin_ + textSize_;
    }

    // ---- Noise data: frequency, minimum noise figure (dB), |Γopt|, ∠Γopt (degrees), Rn ----

    void noiseLine(const char* b, const char* e) {
        scratch_.clear();
        numbers(b, e, scratch_);
        noisePoint(scratch_);
    }

    void noisePoint(const std::vector<double>& v) {
        bool bad = badValues_;
        badValues_ = false;
        if (v.size() != 5) return problem(line_, "expected 5 values for a noise point, found " + std::to_string(v.size()));
        if (bad) return;
        if (!(v[0] >= 0) || std::isinf(v[0])) return problem(line_, "frequency " + num(v[0]) + " is not valid");
        if (!t_.noise_.empty() && v[0] < lastNoiseFrequency_)
            return problem(line_, "frequency " + num(v[0]) + " is below the previous one, " + num(lastNoiseFrequency_));
        lastNoiseFrequency_ = v[0];
        // Version 1 gives Rn normalised to the reference resistance, version 2 in ohms.
        double rn = t_.info_.version == 1 ? v[4] * t_.info_.references[0] : v[4];
        t_.noise_.push_back({v[0] * freqScale_, v[1], polarDegrees(v[2], v[3]), rn});
    }

    // ---- End of the text ----

    void finish() {
        endPoint();
        if (referenceNeeded_ > 0) shortReference();
        if (section_ == Section::Information) problem(0, "[Begin Information] without [End Information]");
        if (t_.info_.version == 2 && !sawNetworkData_) problem(0, "[Network Data] is missing");
        if (messages_ > 0) return;
        size_t points = t_.frequencies_.size();
        if (declaredPoints_.line && static_cast<size_t>(declaredPoints_.count) != points)
            problem(declaredPoints_.line, "[Number of Frequencies] is " + std::to_string(declaredPoints_.count) +
                                              ", but the file has " + std::to_string(points));
        if (declaredNoise_.line && static_cast<size_t>(declaredNoise_.count) != t_.noise_.size())
            problem(declaredNoise_.line, "[Number of Noise Frequencies] is " + std::to_string(declaredNoise_.count) +
                                             ", but the file has " + std::to_string(t_.noise_.size()));
        if (points == 0 && messages_ == 0) problem(0, "The file has no frequency points");
    }

    struct Declared {
        long count = 0;
        size_t line = 0;  // 0: not declared
    };

    AcTableData& t_;
    std::vector<std::string>* errors_;
    const int n_;
    size_t messages_ = 0;
    bool stopped_ = false;
    size_t line_ = 0;
    const char* textBegin_ = nullptr;
    size_t textSize_ = 0;
    const char* lineBegin_ = nullptr;

    Section section_ = Section::Header;
    bool sawContent_ = false;
    bool sawOptionLine_ = false;
    bool sawPorts_ = false;
    bool sawNetworkData_ = false;
    double freqScale_ = 1e9;  // GHz unless the option line says otherwise
    int twoPortOrder_ = 0;    // 12 or 21 from [Two-Port Data Order]; 0 when not given
    Declared declaredPoints_, declaredNoise_;
    size_t referenceNeeded_ = 0, referenceCount_ = 0, referenceLine_ = 0;

    bool layoutReady_ = false;
    TouchstoneInfo::Matrix matrix_ = TouchstoneInfo::Matrix::Full;
    bool columnOrder_ = false;
    size_t need_ = 0;                 // values per frequency point
    std::vector<double> pending_;     // the values of the point being read
    size_t pointLine_ = 0;            // the line where it began
    const char* pointBegin_ = nullptr;
    bool badValues_ = false;          // a value of it was not a number (already reported)
    double lastFrequency_ = 0, lastNoiseFrequency_ = 0;  // in the file's unit
    std::vector<double> scratch_;
};

AcTableData::AcTableData(std::string fileName, int numPorts, DcExtractionMethod dc, AcTableInterpMethod interp)
    : fileName_(std::move(fileName)), numPorts_(numPorts), dc_(dc), interp_(interp) {}

void AcTableData::clear() {
    frequencies_ = {};
    values_ = {};
    noise_ = {};
}

bool AcTableData::build(std::vector<std::string>* errors) {
    clear();
    auto fail = [&](std::string message) {
        if (errors) errors->push_back(std::move(message));
        return false;
    };
    if (numPorts_ < 1 || numPorts_ > kMaxPorts)
        return fail("Number of ports must be from 1 to " + std::to_string(kMaxPorts) + ", not " +
                    std::to_string(numPorts_));
    if (long named = portsInFileName(fileName_); named && named != numPorts_)
        return fail("File '" + fileName_ + "' is named for " + std::to_string(named) + " ports, not " +
                    std::to_string(numPorts_));
    std::string text;
    if (std::string message = readWholeFile(fileName_, text, kMaxStreamBytes); !message.empty()) return fail(std::move(message));
    return buildFromText(text, errors);
}

bool AcTableData::buildFromText(std::string_view text, std::vector<std::string>* errors) {
    clear();
    if (numPorts_ < 1 || numPorts_ > kMaxPorts) {
        if (errors)
            errors->push_back("Number of ports must be from 1 to " + std::to_string(kMaxPorts) + ", not " +
                              std::to_string(numPorts_));
        return false;
    }
    bool ok = TouchstoneParser(*this, errors).run(text);
    if (!ok) clear();
    return ok;
}

AcTableFrequencyPoint AcTableData::get(size_t i) const {
    if (i >= frequencies_.size()) return {};
    size_t nn = static_cast<size_t>(numPorts_) * static_cast<size_t>(numPorts_);
    return {frequencies_[i], std::span(values_).subspan(i * nn, nn)};
}

void AcTableData::valuesAt(double frequency, std::span<std::complex<double>> out) const {
    size_t nn = std::min(out.size(), static_cast<size_t>(numPorts_) * static_cast<size_t>(numPorts_));
    size_t points = frequencies_.size();
    std::fill(out.begin(), out.end(), Cplx{});
    if (points == 0) return;
    auto copyPoint = [&](size_t i) { std::copy_n(get(i).values.begin(), nn, out.begin()); };
    // Straight line through points i and i + 1 (also beyond them).
    auto line = [&](size_t i, double f) {
        double w = (f - frequencies_[i]) / (frequencies_[i + 1] - frequencies_[i]);
        const Cplx* a = get(i).values.data();
        const Cplx* b = get(i + 1).values.data();
        for (size_t k = 0; k < nn; ++k) out[k] = a[k] + w * (b[k] - a[k]);
    };
    if (frequency < frequencies_.front()) {
        if (dc_ == DcExtractionMethod::Linear && points > 1 && frequencies_[1] > frequencies_[0]) line(0, frequency);
        else copyPoint(0);
        return;
    }
    size_t hi = static_cast<size_t>(std::upper_bound(frequencies_.begin(), frequencies_.end(), frequency) -
                                    frequencies_.begin());
    if (hi >= points || std::isnan(frequency)) return copyPoint(points - 1);
    size_t i = hi - 1;  // frequencies_[i] <= frequency < frequencies_[hi]
    switch (interp_) {
        case AcTableInterpMethod::Step: copyPoint(i); break;
        case AcTableInterpMethod::Linear: line(i, frequency); break;
        case AcTableInterpMethod::Polar: {
            double w = (frequency - frequencies_[i]) / (frequencies_[hi] - frequencies_[i]);
            const Cplx* a = get(i).values.data();
            const Cplx* b = get(hi).values.data();
            for (size_t k = 0; k < nn; ++k) {
                double turn = std::remainder(std::arg(b[k]) - std::arg(a[k]), 2 * kPi);
                double magnitude = std::abs(a[k]) + w * (std::abs(b[k]) - std::abs(a[k]));
                out[k] = std::polar(magnitude, std::arg(a[k]) + w * turn);
            }
            break;
        }
    }
}

}  // namespace wavex

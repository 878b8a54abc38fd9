#include "io/load.hpp"

#include "io/csv.hpp"
#include "io/raw.hpp"
#include "support/text.hpp"
#include "support/touchstone.hpp"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>

namespace wavex::io {
namespace {

std::string_view extensionOf(std::string_view path) {
    size_t slash = path.find_last_of('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    size_t dot = name.find_last_of('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

// The N of an extension sNp (any case), or 0.
int portsOfExtension(std::string_view ext) {
    if (ext.size() < 3 || asciiLower(ext.front()) != 's' || asciiLower(ext.back()) != 'p') return 0;
    int n = 0;
    std::string_view digits = ext.substr(1, ext.size() - 2);
    auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), n);
    return ec == std::errc() && end == digits.data() + digits.size() ? n : 0;
}

// The first line of `text` that is not blank, trimmed.
std::string_view firstLine(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    size_t pos = 0;
    while (pos < text.size()) {
        size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = trim(text.substr(pos, end - pos));
        if (!line.empty()) return line;
        pos = end + 1;
    }
    return {};
}

// The value of a version 2 file's [Number of Ports], or 0.
int declaredPorts(std::string_view text) {
    static constexpr std::string_view kKeyword = "[number of ports]";
    for (size_t pos = 0; pos < text.size();) {
        size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = trim(text.substr(pos, end - pos));
        pos = end + 1;
        if (line.size() > kKeyword.size() && iequals(line.substr(0, kKeyword.size()), kKeyword)) {
            std::string_view rest = trim(line.substr(kKeyword.size()));
            int n = 0;
            auto [p, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), n);
            return ec == std::errc() && p == rest.data() + rest.size() ? n : 0;
        }
    }
    return 0;
}

std::optional<std::string> readFile(const std::string& path, std::string* error) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    auto fail = [&] {
        *error = "cannot read '" + path + "': " + std::strerror(errno);
        return std::nullopt;
    };
    if (!file) return fail();
    std::string text;
    char buffer[1 << 16];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) text.append(buffer, n);
    if (std::ferror(file.get())) return fail();
    return text;
}

// The name of parameter (r, c) of an n-port: S21, or S1_12 from ten ports on.
std::string parameterName(char letter, int n, int r, int c) {
    std::string name(1, letter);
    name += std::to_string(r + 1);
    if (n >= 10) name += '_';
    name += std::to_string(c + 1);
    return name;
}

}  // namespace

DataFormat detectFormat(std::string_view head, std::string_view path) {
    std::string_view text = head.substr(0, 3) == "\xEF\xBB\xBF" ? head.substr(3) : head;
    const std::string_view ext = extensionOf(path);
    if ((text.size() >= 6 && iequals(text.substr(0, 6), "Title:")) || head.substr(0, 2) == "\xFF\xFE" ||
        head.substr(0, 4) == std::string_view("T\0i\0", 4) || iequals(ext, "raw"))
        return DataFormat::Raw;
    if (portsOfExtension(ext) > 0 || iequals(ext, "ts")) return DataFormat::Touchstone;
    std::string_view line = firstLine(head);
    if (!line.empty() && (line.front() == '!' || (line.size() >= 9 && iequals(line.substr(0, 9), "[Version]"))))
        return DataFormat::Touchstone;
    return DataFormat::Csv;
}

std::optional<std::vector<NamedVector>> loadData(const std::string& path, std::string* error, const Progress& progress) {
    char head[512];
    size_t got = 0;
    {
        std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
        if (!file) {
            *error = "cannot read '" + path + "': " + std::strerror(errno);
            return std::nullopt;
        }
        got = std::fread(head, 1, sizeof head, file.get());
    }
    switch (detectFormat(std::string_view(head, got), path)) {
    case DataFormat::Raw:
        return loadRaw(path, error, progress);
    case DataFormat::Touchstone: {
        auto text = readFile(path, error);
        if (!text) return std::nullopt;
        return parseTouchstone(*text, path, error);
    }
    case DataFormat::Csv:
        break;
    }
    return loadCsv(path, error, progress);
}

std::optional<std::vector<NamedVector>> parseTouchstone(std::string_view text, std::string_view fileName,
                                                        std::string* error) {
    const std::string name(fileName);
    int ports = portsOfExtension(extensionOf(fileName));
    if (ports == 0) ports = declaredPorts(text);
    if (ports == 0) {
        *error = name + ": the number of ports is not known: name the file NAME.sNp or give [Number of Ports]";
        return std::nullopt;
    }
    AcTableData table(name, ports);
    std::vector<std::string> problems;
    if (!table.buildFromText(text, &problems)) {
        // "Line 12: what" reads as "FILE:12: what", as the other readers say it.
        std::string what = problems.empty() ? "no frequency points" : problems.front();
        std::string where = ": ";
        if (size_t colon = what.find(':'); beginsWith(what, "Line ") && colon != std::string::npos) {
            where = ":" + what.substr(5, colon - 5) + ": ";
            what = std::string(trim(std::string_view(what).substr(colon + 1)));
        }
        *error = name + where + what;
        if (problems.size() > 1) *error += " (and " + std::to_string(problems.size() - 1) + " more problems)";
        return std::nullopt;
    }

    const TouchstoneInfo& info = table.info();
    PhysType phys = units::Number;
    if (info.version == 2 && info.parameter == 'Z') phys = units::fromSymbol("ohm").value_or(units::Number);
    if (info.version == 2 && info.parameter == 'Y') phys = units::fromSymbol("S").value_or(units::Number);

    std::vector<NamedVector> out;
    const size_t points = table.numPoints();
    auto freq = std::make_shared<Vector>();
    freq->real = Array<double>(table.frequencies().data(), points);
    freq->phys = units::Frequency;
    freq->name = "frequency";
    Reference ref;
    ref.type = VD_REAL;
    ref.realValues = std::shared_ptr<const Array<double>>(freq, &freq->real);
    ref.length = points;
    ref.phys = units::Frequency;
    ref.name = "frequency";
    out.push_back({freq->name, freq});

    const size_t nn = static_cast<size_t>(ports) * static_cast<size_t>(ports);
    const std::complex<double>* values = table.values().data();
    for (size_t k = 0; k < nn; ++k) {
        auto v = std::make_shared<Vector>();
        v->type = VD_COMPLEX;
        v->cplx.resize(points);
        for (size_t i = 0; i < points; ++i) v->cplx[i] = values[i * nn + k];
        v->phys = phys;
        v->name = parameterName(info.parameter, ports, static_cast<int>(k) / ports, static_cast<int>(k) % ports);
        v->ref = ref;
        out.push_back({v->name, v});
    }

    auto noise = table.noise();
    if (!noise.empty()) {
        Array<double> nf(noise.size()), rn(noise.size()), f(noise.size());
        Array<Complex> gamma(noise.size());
        for (size_t i = 0; i < noise.size(); ++i) {
            f[i] = noise[i].frequency;
            nf[i] = noise[i].minNoiseFigure;
            gamma[i] = noise[i].gammaOpt;
            rn[i] = noise[i].noiseResistance;
        }
        Reference noiseRef = Reference::fromReal(std::move(f), units::Frequency, "frequency");
        auto add = [&](const char* vname, PhysType p, auto&& fill) {
            auto v = std::make_shared<Vector>();
            fill(*v);
            v->phys = p;
            v->name = vname;
            v->ref = noiseRef;
            out.push_back({v->name, v});
        };
        add("NFmin", units::Number, [&](Vector& v) { v.real = std::move(nf); });
        add("GammaOpt", units::Number, [&](Vector& v) {
            v.type = VD_COMPLEX;
            v.cplx = std::move(gamma);
        });
        add("Rn", units::fromSymbol("ohm").value_or(units::Number), [&](Vector& v) { v.real = std::move(rn); });
    }
    return out;
}

}  // namespace wavex::io

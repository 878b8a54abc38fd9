// Statistical reports of Monte Carlo, sensitivity and worst-case runs, and the data files they
// read (support/stat_data.hpp; schema share/schema/statdata.xsd).
//
// AppendSensitivityData(file, parameter, nominal, perturbed, names, nominalValues, perturbedValues)
// appends one perturbation record to a sensitivity data file, making the file when it is missing;
// returns the number of records now in it. MSWReadHeader(file): the header as a parameter string,
// `analysis=sensitivity parameters="R1 R2" measurements="gain bw" runs=2` (runs: perturbation
// records or runs). XmlValidate(file, schema): the problems of an XML file against an XSD as
// "line N: message", empty when valid; "%SHAREPATH%" in either path is the shipped data directory
// (the schema of the data files is %SHAREPATH%/schema/statdata.xsd).
//
// BuildMclogHTML(outFile, names, m1 [, m2 ...] [, limits]) writes an XHTML page with one section
// per measurement m_i (one value per run; x-values, when present, label the runs): count, mean,
// sample standard deviation, minimum, maximum, percentiles 1/5/50/95/99 (linear, as numpy), and
// with limits the yield and Cpk; a histogram as inline SVG (MCNumberOfBins bins, or √count up to
// 50) with the limits drawn; and the table of runs, failures marked. limits, after the
// measurements, holds a pair [low, high] per measurement (NaN: no limit). BuildMclogHTML(outFile,
// dataFile [, limits]) reads the runs of a data file instead (a one-element `names` naming a file
// that ends in ".xml"). Returns the number of measurements reported.
//
// BuildSensitivityHTML(outFile, dataFile) and BuildSensitivityCsv(outFile, dataFile): for each
// measurement m and perturbed parameter p the absolute sensitivity Δm/Δp and the normalised one
// (Δm/m)/(Δp/p) at the nominal values, sorted by the magnitude of the normalised one (largest
// first), with bar charts in the page; the CSV has the columns measurement, parameter, absolute,
// normalised. BuildSensitivityPerturbCsv(outFile, dataFile): the raw records, one line per
// perturbation and measurement. Each returns the number of table rows written.
// BuildWorstCaseHTML(outFile, dataFile) or (outFile, names, m1 [, m2 ...]): per measurement the
// minimum and maximum over the runs, the run that gave each and that run's parameter settings
// (data file) or x-value. Returns the number of measurements reported.
//
// Pages are self-contained: the style sheet of the option MonteCarloCss (SensitivityCss,
// WorstCaseCss), "%SHAREPATH%" meaning the shipped data directory, is inlined. Every file is
// written to a temporary file and renamed, so a failure leaves no half-written report.
#include "support/numbers.hpp"
#include "support/parameter_string.hpp"
#include "support/stat_data.hpp"
#include "support/statistics.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <filesystem>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The shipped data directory: the installed one, or the source tree's share/ when wavex runs from
// its build.
const std::string& shareDirectory() {
    static const std::string dir = std::filesystem::is_directory(WAVEX_INSTALLED_SHARE_DIR)
                                       ? WAVEX_INSTALLED_SHARE_DIR
                                       : WAVEX_SOURCE_SHARE_DIR;
    return dir;
}

// A path with "%SHAREPATH%" standing for the shipped data directory.
std::string sharePath(std::string_view path) {
    std::string p(path);
    if (size_t at = p.find("%SHAREPATH%"); at != std::string::npos) p.replace(at, 11, shareDirectory());
    return p;
}

// The style sheet an option names, read; nullopt (reported) when it cannot be.
std::optional<std::string> styleSheet(const char* option, MessageHandler& messages) {
    std::string path = sharePath(sp_GetStringOption(option, "%SHAREPATH%/html/css/msw.css"));
    std::string css;
    if (std::string failure = readWholeFile(path, css); !failure.empty()) {
        messages.error("%s (the style sheet of option %s)", failure, option);
        return std::nullopt;
    }
    return css;
}

std::string pageStart(std::string_view title, std::string_view css) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
           "<head><meta charset=\"UTF-8\"/><title>" + xmlEscaped(title) + "</title>\n<style>/*<![CDATA[*/\n" +
           std::string(css) + "\n/*]]>*/</style></head>\n<body>\n<h1>" + xmlEscaped(title) + "</h1>\n";
}

std::string shown(double v) { return std::isnan(v) ? "–" : xmlEscaped(formatEngineering(v, 6)); }

// One measurement over the runs.
struct Measurement {
    std::string name;
    const double* values;
    size_t n;
    const double* x = nullptr;                // x-values naming the runs, or
    const std::vector<std::string>* labels = nullptr;  // the runs' labels; neither: numbered from 1
    double low = kNaN, high = kNaN;

    void appendLabel(std::string& out, size_t i) const {
        if (x) out += formatEngineering(x[i], 6);
        else if (labels) out += xmlEscaped((*labels)[i]);
        else out += std::to_string(i + 1);
    }
};

void histogramSvg(std::string& out, const Measurement& m, const Summary& s) {
    double lo = s.minimum, hi = s.maximum;
    if (!std::isnan(m.low)) lo = std::min(lo, m.low);
    if (!std::isnan(m.high)) hi = std::max(hi, m.high);
    if (!(hi > lo)) lo -= 0.5, hi += 0.5;
    int32_t wanted = sp_GetIntOption("MCNumberOfBins", 0);
    size_t bins = wanted > 0 ? static_cast<size_t>(wanted)
                             : std::clamp<size_t>(static_cast<size_t>(std::ceil(std::sqrt(double(s.count)))), 1, 50);
    std::vector<size_t> counts = histogram(m.values, m.n, lo, hi, bins);
    size_t top = std::max<size_t>(1, *std::max_element(counts.begin(), counts.end()));
    constexpr double W = 600, H = 200, left = 10, plotW = 580, plotH = 170;
    out += "<svg class=\"histogram\" xmlns=\"http://www.w3.org/2000/svg\" width=\"600\" height=\"220\" viewBox=\"0 0 600 220\">\n";
    const double barW = plotW / static_cast<double>(bins);
    for (size_t b = 0; b < bins; ++b) {
        double h = plotH * static_cast<double>(counts[b]) / static_cast<double>(top);
        out += "<rect class=\"bar\" x=\"" + formatRoundTrip(left + barW * b) + "\" y=\"" + formatRoundTrip(plotH - h + 10) +
               "\" width=\"" + formatRoundTrip(std::max(barW - 1, 0.5)) + "\" height=\"" + formatRoundTrip(h) + "\"/>\n";
    }
    for (double limit : {m.low, m.high}) {
        if (std::isnan(limit)) continue;
        double x = left + plotW * (limit - lo) / (hi - lo);
        out += "<line class=\"limit\" x1=\"" + formatRoundTrip(x) + "\" y1=\"5\" x2=\"" + formatRoundTrip(x) + "\" y2=\"" +
               formatRoundTrip(plotH + 10) + "\"/>\n";
    }
    out += "<text x=\"" + formatRoundTrip(left) + "\" y=\"" + formatRoundTrip(H + 15) + "\">" + shown(lo) +
           "</text><text x=\"" + formatRoundTrip(W - 10) + "\" y=\"" + formatRoundTrip(H + 15) +
           "\" text-anchor=\"end\">" + shown(hi) + "</text>\n</svg>\n";
}

void mclogSection(std::string& out, const Measurement& m) {
    Summary s = summarize(m.values, m.n);
    out += "<h2>" + xmlEscaped(m.name) + "</h2>\n<table class=\"summary\">\n<tr>";
    const std::pair<const char*, double> cells[] = {
        {"count", double(s.count)}, {"mean", s.mean}, {"std dev", s.stddev}, {"min", s.minimum}, {"max", s.maximum},
        {"1%", s.p1}, {"5%", s.p5}, {"50%", s.p50}, {"95%", s.p95}, {"99%", s.p99}};
    for (auto& c : cells) out += std::string("<th>") + c.first + "</th>";
    bool limited = !std::isnan(m.low) || !std::isnan(m.high);
    if (limited) out += "<th>low</th><th>high</th><th>yield</th><th>Cpk</th>";
    out += "</tr>\n<tr>";
    for (auto& c : cells) out += "<td>" + shown(c.second) + "</td>";
    if (limited)
        out += "<td>" + shown(m.low) + "</td><td>" + shown(m.high) + "</td><td>" +
               xmlEscaped(formatEngineering(100 * yieldWithin(m.values, m.n, m.low, m.high), 4)) + " %</td><td>" +
               shown(processCapability(s, m.low, m.high)) + "</td>";
    out += "</tr>\n</table>\n";
    if (s.count > 0) histogramSvg(out, m, s);
    out += "<div class=\"runs\"><table>\n<tr><th>run</th><th>" + xmlEscaped(m.name) + "</th></tr>\n";
    for (size_t i = 0; i < m.n; ++i) {
        double v = m.values[i];
        bool fail = std::isnan(v) || v < m.low || v > m.high;
        out += fail ? "<tr class=\"fail\"><td>" : "<tr><td>";
        m.appendLabel(out, i);
        out += "</td><td>";
        out += std::isnan(v) ? "–" : formatEngineering(v, 6);  // engineering text needs no escaping
        out += "</td></tr>\n";
    }
    out += "</table></div>\n";
}

// Writes a report and gives the call's result, the count of what it reported.
FUNC_ERROR finish(FuncResult* result, const std::string& path, const std::string& text, size_t count,
                  MessageHandler& messages) {
    if (std::string failure = writeWholeFile(path, text); !failure.empty()) {
        messages.error("%s", failure);
        return FUNC_FAILED;
    }
    result->makeRealNoRef(1)[0] = static_cast<double>(count);
    return FUNC_OK;
}

bool isDataFileName(std::string_view s) { return s.size() > 4 && iequals(s.substr(s.size() - 4), ".xml"); }

// The measurements of a data file's runs, their values gathered into `columns` and their labels
// into `labels`.
void measurementsOfRuns(const StatData& data, std::vector<std::vector<double>>& columns, std::vector<std::string>& labels,
                        std::vector<Measurement>& out) {
    columns.assign(data.measurements.size(), {});
    for (const auto& r : data.runs) {
        labels.push_back(r.label);
        for (size_t m = 0; m < columns.size(); ++m) columns[m].push_back(r.values[m]);
    }
    for (size_t m = 0; m < columns.size(); ++m)
        out.push_back({data.measurements[m], columns[m].data(), columns[m].size(), nullptr, &labels});
}

// The measurements named by argument 1 and given as arguments 2, 3, …, one value per run each;
// false (reported) when they do not fit.
bool measurementVectors(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages, std::vector<Measurement>& out) {
    const int64_t names = args.length(1);
    if (args.count() < 2 + names) {
        messages.error("Function '%s' has %d measurement names but %d measurement vectors", info->name, names,
                       static_cast<int64_t>(args.count() - 2));
        return false;
    }
    for (int64_t k = 0; k < names; ++k) {
        const int i = static_cast<int>(k) + 2;
        if (args.type(i) != VD_REAL) {
            messages.error("Measurement '%s' of function '%s' must be real", std::string(args.string(1, k)), info->name);
            return false;
        }
        Measurement m{std::string(args.string(1, k)), args.data(i), static_cast<size_t>(args.totalLength(i)),
                      args.vector(i)->ref.real(), nullptr};
        if (k > 0 && m.n != out[0].n) {
            messages.error("Measurements %s of function '%s' have different run counts (%d and %d)",
                           "'" + out[0].name + "' and '" + m.name + "'", info->name, static_cast<int64_t>(out[0].n),
                           static_cast<int64_t>(m.n));
            return false;
        }
        out.push_back(std::move(m));
    }
    return true;
}

FUNC_ERROR buildMclogHTML(WAVEX_HANDLER_PARAMS) {
    std::vector<Measurement> measurements;
    std::vector<std::vector<double>> columns;
    std::vector<std::string> labels;
    int next = 2;  // the argument after the measurements
    if (args.length(1) == 1 && isDataFileName(args.string(1))) {
        StatData data;
        if (std::string failure = readStatData(std::string(args.string(1)), data); !failure.empty()) {
            messages->error("%s", failure);
            return FUNC_FAILED;
        }
        measurementsOfRuns(data, columns, labels, measurements);
    } else {
        if (!measurementVectors(args, info, *messages, measurements)) return FUNC_FAILED;
        next += static_cast<int>(measurements.size());
        if (args.count() > next + 1) {
            messages->error("Function '%s' has %d measurement names but %d measurement vectors", info->name,
                            static_cast<int64_t>(measurements.size()), static_cast<int64_t>(args.count() - 3));
            return FUNC_FAILED;
        }
    }
    if (args.count() > next) {  // limits
        if (args.type(next) != VD_REAL) {
            messages->error("The limits of function '%s' must be real: [low, high] per measurement", info->name);
            return FUNC_FAILED;
        }
        const double* l = args.data(next);
        for (size_t m = 0; m < measurements.size() && 2 * m + 1 < size_t(args.length(next)); ++m)
            measurements[m].low = l[2 * m], measurements[m].high = l[2 * m + 1];
    }
    auto css = styleSheet("MonteCarloCss", *messages);
    if (!css) return FUNC_FAILED;
    std::string page = pageStart("Monte Carlo analysis", *css);
    size_t runs = 0;
    for (const Measurement& m : measurements) runs += m.n;
    page.reserve(page.size() + 64 * runs + 16384 * measurements.size());  // one allocation for the rows
    for (const Measurement& m : measurements) mclogSection(page, m);
    page += "</body>\n</html>\n";
    return finish(result, std::string(args.string(0)), page, measurements.size(), *messages);
}

// The data file argument i names, read; nullopt (reported) when it cannot be.
std::optional<StatData> dataFileOf(const FuncArgs& args, int i, MessageHandler& messages) {
    StatData data;
    if (std::string failure = readStatData(std::string(args.string(i)), data); !failure.empty()) {
        messages.error("%s", failure);
        return std::nullopt;
    }
    return data;
}

struct Sensitivity {
    std::string measurement, parameter;
    double absolute, normalised;
};

// Every (measurement, perturbation) pair, by measurement, largest normalised magnitude first.
std::vector<Sensitivity> sensitivities(const StatData& data) {
    std::vector<Sensitivity> rows;
    for (size_t m = 0; m < data.measurements.size(); ++m) {
        size_t first = rows.size();
        for (const auto& p : data.perturbations) {
            double dm = p.perturbedValues[m] - p.nominalValues[m], dp = p.perturbed - p.nominal;
            rows.push_back({data.measurements[m], p.parameter, dm / dp, (dm / p.nominalValues[m]) / (dp / p.nominal)});
        }
        auto magnitude = [](const Sensitivity& s) { return std::isnan(s.normalised) ? -1.0 : std::fabs(s.normalised); };
        std::stable_sort(rows.begin() + first, rows.end(),
                         [&](const Sensitivity& a, const Sensitivity& b) { return magnitude(a) > magnitude(b); });
    }
    return rows;
}

std::string csvCell(std::string_view s) {
    if (s.find_first_of(",\"\n") == std::string_view::npos) return std::string(s);
    std::string q = "\"";
    for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
}

FUNC_ERROR buildSensitivityCsv(WAVEX_HANDLER_PARAMS) {
    auto data = dataFileOf(args, 1, *messages);
    if (!data) return FUNC_FAILED;
    std::vector<Sensitivity> rows = sensitivities(*data);
    std::string csv = "measurement,parameter,absolute,normalised\n";
    for (const auto& r : rows)
        csv += csvCell(r.measurement) + "," + csvCell(r.parameter) + "," + formatRoundTrip(r.absolute) + "," +
               formatRoundTrip(r.normalised) + "\n";
    return finish(result, std::string(args.string(0)), csv, rows.size(), *messages);
}

FUNC_ERROR buildSensitivityPerturbCsv(WAVEX_HANDLER_PARAMS) {
    auto data = dataFileOf(args, 1, *messages);
    if (!data) return FUNC_FAILED;
    std::string csv = "parameter,nominal,perturbed,measurement,nominal value,perturbed value\n";
    size_t count = 0;
    for (const auto& p : data->perturbations)
        for (size_t m = 0; m < data->measurements.size(); ++m, ++count)
            csv += csvCell(p.parameter) + "," + formatRoundTrip(p.nominal) + "," + formatRoundTrip(p.perturbed) + "," +
                   csvCell(data->measurements[m]) + "," + formatRoundTrip(p.nominalValues[m]) + "," +
                   formatRoundTrip(p.perturbedValues[m]) + "\n";
    return finish(result, std::string(args.string(0)), csv, count, *messages);
}

// A horizontal bar chart of the normalised sensitivities of one measurement.
void sensitivityBars(std::string& out, const Sensitivity* rows, size_t n) {
    double top = 0;
    for (size_t i = 0; i < n; ++i)
        if (std::isfinite(rows[i].normalised)) top = std::max(top, std::fabs(rows[i].normalised));
    if (top == 0) top = 1;
    const double rowH = 22, mid = 300, half = 180;
    out += "<svg class=\"bars\" xmlns=\"http://www.w3.org/2000/svg\" width=\"600\" height=\"" +
           formatRoundTrip(rowH * static_cast<double>(n) + 10) + "\">\n";
    for (size_t i = 0; i < n; ++i) {
        double v = std::isfinite(rows[i].normalised) ? rows[i].normalised : 0;
        double w = half * std::fabs(v) / top, y = 5 + rowH * static_cast<double>(i);
        out += "<rect class=\"bar" + std::string(v < 0 ? " negative" : "") + "\" x=\"" + formatRoundTrip(v < 0 ? mid - w : mid) +
               "\" y=\"" + formatRoundTrip(y) + "\" width=\"" + formatRoundTrip(w) + "\" height=\"" + formatRoundTrip(rowH - 6) +
               "\"/><text x=\"5\" y=\"" + formatRoundTrip(y + rowH - 9) + "\">" + xmlEscaped(rows[i].parameter) + "</text>\n";
    }
    out += "<line x1=\"300\" y1=\"0\" x2=\"300\" y2=\"" + formatRoundTrip(rowH * static_cast<double>(n) + 10) +
           "\" stroke=\"#444\"/>\n</svg>\n";
}

FUNC_ERROR buildSensitivityHTML(WAVEX_HANDLER_PARAMS) {
    auto data = dataFileOf(args, 1, *messages);
    if (!data) return FUNC_FAILED;
    auto css = styleSheet("SensitivityCss", *messages);
    if (!css) return FUNC_FAILED;
    std::vector<Sensitivity> rows = sensitivities(*data);
    std::string page = pageStart("Sensitivity analysis", *css);
    const size_t per = data->perturbations.size();
    for (size_t m = 0; m < data->measurements.size(); ++m) {
        const Sensitivity* first = rows.data() + m * per;
        page += "<h2>" + xmlEscaped(data->measurements[m]) + "</h2>\n<table>\n<tr><th class=\"name\">parameter</th>"
                "<th>absolute</th><th>normalised</th></tr>\n";
        for (size_t i = 0; i < per; ++i)
            page += "<tr><td class=\"name\">" + xmlEscaped(first[i].parameter) + "</td><td>" + shown(first[i].absolute) +
                    "</td><td>" + shown(first[i].normalised) + "</td></tr>\n";
        page += "</table>\n";
        if (per > 0) sensitivityBars(page, first, per);
    }
    page += "</body>\n</html>\n";
    return finish(result, std::string(args.string(0)), page, rows.size(), *messages);
}

FUNC_ERROR buildWorstCaseHTML(WAVEX_HANDLER_PARAMS) {
    std::vector<Measurement> measurements;
    std::vector<std::vector<double>> columns;
    std::vector<std::string> labels;
    std::optional<StatData> data;
    if (args.count() == 2) {
        data = dataFileOf(args, 1, *messages);
        if (!data) return FUNC_FAILED;
        measurementsOfRuns(*data, columns, labels, measurements);
    } else if (!measurementVectors(args, info, *messages, measurements)) {
        return FUNC_FAILED;
    } else if (args.count() != 2 + static_cast<int>(measurements.size())) {
        messages->error("Function '%s' has %d measurement names but %d measurement vectors", info->name,
                        static_cast<int64_t>(measurements.size()), static_cast<int64_t>(args.count() - 2));
        return FUNC_FAILED;
    }
    auto css = styleSheet("WorstCaseCss", *messages);
    if (!css) return FUNC_FAILED;
    std::string page = pageStart("Worst-case analysis", *css);
    const size_t settings = data ? data->parameters.size() : 0;
    for (const Measurement& m : measurements) {
        page += "<h2>" + xmlEscaped(m.name) + "</h2>\n<table>\n<tr><th class=\"name\"></th><th>value</th>"
                "<th class=\"name\">run</th>";
        for (size_t p = 0; p < settings; ++p) page += "<th>" + xmlEscaped(data->parameters[p]) + "</th>";
        page += "</tr>\n";
        size_t lo = m.n, hi = m.n;
        for (size_t i = 0; i < m.n; ++i) {
            if (std::isnan(m.values[i])) continue;
            if (lo == m.n || m.values[i] < m.values[lo]) lo = i;
            if (hi == m.n || m.values[i] > m.values[hi]) hi = i;
        }
        for (auto [what, i] : {std::pair{"minimum", lo}, std::pair{"maximum", hi}}) {
            page += std::string("<tr><td class=\"name\">") + what + "</td>";
            if (i == m.n) {
                page += "<td>–</td><td class=\"name\">–</td>";
                for (size_t p = 0; p < settings; ++p) page += "<td>–</td>";
            } else {
                page += "<td>" + shown(m.values[i]) + "</td><td class=\"name\">";
                m.appendLabel(page, i);
                page += "</td>";
                for (size_t p = 0; p < settings; ++p) page += "<td>" + shown(data->runs[i].settings[p]) + "</td>";
            }
            page += "</tr>\n";
        }
        page += "</table>\n";
    }
    page += "</body>\n</html>\n";
    return finish(result, std::string(args.string(0)), page, measurements.size(), *messages);
}

// A data file to add to: read when it exists, else new of the given analysis.
std::optional<StatData> openData(const std::string& path, const char* analysis, MessageHandler& messages) {
    StatData data;
    std::string text;
    if (!readWholeFile(path, text).empty()) {
        data.analysis = analysis;
        return data;
    }
    if (std::string failure = parseStatData(text, path, data); !failure.empty()) {
        messages.error("%s", failure);
        return std::nullopt;
    }
    return data;
}

FUNC_ERROR appendSensitivityData(WAVEX_HANDLER_PARAMS) {
    const std::string path(args.string(0));
    const int64_t names = args.length(4);
    if (args.length(5) != names || args.length(6) != names) {
        messages->error("Function '%s' has %d measurement names but %d nominal and %d perturbed values", info->name, names,
                        args.length(5), args.length(6));
        return FUNC_FAILED;
    }
    auto data = openData(path, "sensitivity", *messages);
    if (!data) return FUNC_FAILED;
    StatData::Perturbation p{std::string(args.string(1)), args.scalar(2), args.scalar(3), {}, {}};
    data->parameter(p.parameter);
    for (int64_t k = 0; k < names; ++k) data->measurement(args.string(4, k));
    for (auto& old : data->perturbations) {
        old.nominalValues.resize(data->measurements.size(), kNaN);
        old.perturbedValues.resize(data->measurements.size(), kNaN);
    }
    p.nominalValues.assign(data->measurements.size(), kNaN);
    p.perturbedValues.assign(data->measurements.size(), kNaN);
    for (int64_t k = 0; k < names; ++k) {
        size_t m = data->measurement(args.string(4, k));
        p.nominalValues[m] = args.data(5)[k];
        p.perturbedValues[m] = args.data(6)[k];
    }
    data->perturbations.push_back(std::move(p));
    if (std::string failure = writeStatData(path, *data); !failure.empty()) {
        messages->error("%s", failure);
        return FUNC_FAILED;
    }
    result->makeRealNoRef(1)[0] = static_cast<double>(data->perturbations.size());
    return FUNC_OK;
}

FUNC_ERROR mswReadHeader(WAVEX_HANDLER_PARAMS) {
    StatData data;
    if (std::string failure = readStatData(std::string(args.string(0)), data); !failure.empty()) {
        messages->error("%s", failure);
        return FUNC_FAILED;
    }
    auto joined = [](const std::vector<std::string>& names) {
        std::string s;
        for (const auto& n : names) s += (s.empty() ? "" : " ") + n;
        return s;
    };
    std::vector<std::string> values{data.analysis, joined(data.parameters), joined(data.measurements),
                                    std::to_string(data.perturbations.size() + data.runs.size())};
    const std::array<std::string_view, 4> keys{"analysis", "parameters", "measurements", "runs"};
    std::vector<std::string_view> v(values.begin(), values.end());
    return result->makeString(buildParameterString(keys, v)) ? FUNC_OK : FUNC_FAILED;
}

FUNC_ERROR xmlValidate(WAVEX_HANDLER_PARAMS) {
    std::string failure;
    std::vector<std::string> problems = validateXml(sharePath(args.string(0)), sharePath(args.string(1)), &failure);
    if (!failure.empty()) {
        messages->error("%s", failure);
        return FUNC_FAILED;
    }
    if (!result->makeStrings(static_cast<int64_t>(problems.size()))) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (auto& p : problems) (out++)->emplace(std::move(p));
    return FUNC_OK;
}


constexpr FuncInfo kFunctions[] = {
    FuncInfo("BuildMclogHTML", {arg::String, arg::String, arg::Any.upTo(kMaxArgs - 2)}, 2, buildMclogHTML,
     {.signature = "BuildMclogHTML(outFile, names, m1 [, m2 ...] [, limits])  or  (outFile, dataFile [, limits])",
      .summary = "An XHTML report of Monte Carlo measurements: statistics, histograms, runs.",
      .returns = "a number: the measurements reported",
      .notes = "Each measurement has one value per run (x-values label the runs). Count, mean, sample "
               "standard deviation, min, max, percentiles 1/5/50/95/99 (linear); with limits ([low, "
               "high] per measurement, NaN for none) yield and Cpk. Histogram of MCNumberOfBins bins "
               "(else sqrt(count), at most 50). Style sheet from MonteCarloCss. A one-element names "
               "ending in .xml reads a data file's runs.",
      .example = "BuildMclogHTML('mc.html', ['gain'], 20 + sin(vector(100)), [19.5, 20.5])"}).outsideSafeMode(),
    FuncInfo("BuildSensitivityHTML", {arg::String, arg::String}, 2, buildSensitivityHTML,
     {.signature = "BuildSensitivityHTML(outFile, dataFile)",
      .summary = "An XHTML report of the sensitivities in a data file, with bar charts.",
      .returns = "a number: the table rows (measurements x perturbations)",
      .notes = "Absolute dm/dp and normalised (dm/m)/(dp/p), largest normalised magnitude first. Style "
               "sheet from SensitivityCss.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); BuildSensitivityHTML('s.html', 's.xml')"}).outsideSafeMode(),
    FuncInfo("BuildSensitivityCsv", {arg::String, arg::String}, 2, buildSensitivityCsv,
     {.signature = "BuildSensitivityCsv(outFile, dataFile)",
      .summary = "The sensitivities of a data file as CSV: measurement, parameter, absolute, normalised.",
      .returns = "a number: the rows written",
      .notes = "Ordered as in BuildSensitivityHTML.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); "
                 "BuildSensitivityCsv('s.csv', 's.xml'); QueryData(ReadFile('s.csv'), 'parameter')"}).outsideSafeMode(),
    FuncInfo("BuildSensitivityPerturbCsv", {arg::String, arg::String}, 2, buildSensitivityPerturbCsv,
     {.signature = "BuildSensitivityPerturbCsv(outFile, dataFile)",
      .summary = "The raw perturbation records of a data file as CSV.",
      .returns = "a number: the rows written (records x measurements)",
      .notes = "Columns: parameter, nominal, perturbed, measurement, nominal value, perturbed value.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); "
                 "BuildSensitivityPerturbCsv('p.csv', 's.xml'); ReadFile('p.csv')"}).outsideSafeMode(),
    FuncInfo("BuildWorstCaseHTML", {arg::String, arg::String, arg::Any.upTo(kMaxArgs - 2)}, 2, buildWorstCaseHTML,
     {.signature = "BuildWorstCaseHTML(outFile, dataFile)  or  (outFile, names, m1 [, m2 ...])",
      .summary = "An XHTML report of the minimum and maximum of each measurement over the runs.",
      .returns = "a number: the measurements reported",
      .notes = "With each extreme the run that gave it and that run's parameter settings (data file) "
               "or x-value. Style sheet from WorstCaseCss.",
      .example = "BuildWorstCaseHTML('wc.html', ['gain', 'bw'], [20, 21, 19], [1e6, 2e6, 3e6])"}).outsideSafeMode(),
    FuncInfo("AppendSensitivityData", {arg::String, arg::String, arg::Real, arg::Real, arg::String, arg::Real, arg::Real}, 7,
     appendSensitivityData,
     {.signature = "AppendSensitivityData(file, parameter, nominal, perturbed, names, nominalValues, perturbedValues)",
      .summary = "Appends one perturbation record to a sensitivity data file.",
      .returns = "a number: the records now in the file",
      .notes = "Makes the file when missing; names, nominalValues and perturbedValues pair by position "
               "and must be equally long. Written to a temporary file and renamed.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, ['gain', 'bw'], [20, 1e6], [20.2, 0.99e6])"}).outsideSafeMode(),
    {"MSWReadHeader", {arg::String}, 1, mswReadHeader,
     {.signature = "MSWReadHeader(file)",
      .summary = "The header of a statistical data file as a parameter string.",
      .returns = "a string: analysis, parameters, measurements and runs",
      .notes = "runs counts perturbation records and runs. A missing or malformed file fails.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); MSWReadHeader('s.xml')"}},
    {"XmlValidate", {arg::String, arg::String}, 2, xmlValidate,
     {.signature = "XmlValidate(file, schema)",
      .summary = "The problems of an XML file against an XSD schema.",
      .returns = "strings 'line N: message', empty when valid",
      .notes = "%SHAREPATH% in a path is the shipped data directory; the data files' schema is "
               "%SHAREPATH%/schema/statdata.xsd. A schema that is not XSD or a missing file fails.",
      .example = "AppendSensitivityData('s.xml', 'R1', 1000, 1010, 'gain', 20, 20.2); "
                 "length(XmlValidate('s.xml', '%SHAREPATH%/schema/statdata.xsd'))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

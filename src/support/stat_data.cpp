#include "support/stat_data.hpp"

#include "support/numbers.hpp"
#include "support/text.hpp"

#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <cmath>
#include <limits>
#include <memory>

namespace wavex {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

struct DocFree {
    void operator()(xmlDoc* d) const { xmlFreeDoc(d); }
};
using Doc = std::unique_ptr<xmlDoc, DocFree>;

// Collects libxml2's structured errors as "line N: message".
void collect(void* sink, const xmlError* error) {
    std::string message(trim(error->message ? error->message : "error"));
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
    if (error->line > 0) message = "line " + std::to_string(error->line) + ": " + message;
    static_cast<std::vector<std::string>*>(sink)->push_back(std::move(message));
}
void collectError(void* sink, xmlError* error) { collect(sink, error); }

bool named(const xmlNode* n, const char* name) {
    return n->type == XML_ELEMENT_NODE && xmlStrcmp(n->name, reinterpret_cast<const xmlChar*>(name)) == 0;
}
std::string attribute(const xmlNode* n, const char* name) {
    xmlChar* v = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
    std::string s = v ? reinterpret_cast<const char*>(v) : "";
    xmlFree(v);
    return s;
}
double number(const xmlNode* n, const char* name) { return parseNumber(attribute(n, name)).value_or(kNaN); }

std::string fromDoc(xmlDoc* doc, const std::vector<std::string>& errors, const std::string& name, StatData& data) {
    xmlNode* root = doc ? xmlDocGetRootElement(doc) : nullptr;
    if (!root || !named(root, "statdata"))
        return "File '" + name + "' is not a statistical data file" + (errors.empty() ? "" : ": " + errors.front());
    data = StatData{};
    data.analysis = attribute(root, "analysis");
    for (xmlNode* n = root->children; n; n = n->next) {
        if (named(n, "parameters") || named(n, "measurements"))
            for (xmlNode* c = n->children; c; c = c->next) {
                if (named(c, "parameter")) data.parameter(attribute(c, "name"));
                if (named(c, "measurement")) data.measurement(attribute(c, "name"));
            }
    }
    for (xmlNode* n = root->children; n; n = n->next) {
        if (named(n, "perturbation")) {
            StatData::Perturbation p{attribute(n, "parameter"), number(n, "nominal"), number(n, "perturbed"), {}, {}};
            data.parameter(p.parameter);
            for (xmlNode* c = n->children; c; c = c->next) {
                if (!named(c, "value")) continue;
                size_t m = data.measurement(attribute(c, "measurement"));
                p.nominalValues.resize(std::max(p.nominalValues.size(), m + 1), kNaN);
                p.perturbedValues.resize(p.nominalValues.size(), kNaN);
                p.nominalValues[m] = number(c, "nominal");
                p.perturbedValues[m] = number(c, "perturbed");
            }
            data.perturbations.push_back(std::move(p));
        } else if (named(n, "run")) {
            StatData::Run r{attribute(n, "label"), {}, {}};
            for (xmlNode* c = n->children; c; c = c->next) {
                if (named(c, "value")) {
                    size_t m = data.measurement(attribute(c, "measurement"));
                    r.values.resize(std::max(r.values.size(), m + 1), kNaN);
                    r.values[m] = number(c, "value");
                } else if (named(c, "setting")) {
                    size_t p = data.parameter(attribute(c, "parameter"));
                    r.settings.resize(std::max(r.settings.size(), p + 1), kNaN);
                    r.settings[p] = number(c, "value");
                }
            }
            data.runs.push_back(std::move(r));
        }
    }
    for (auto& p : data.perturbations) {
        p.nominalValues.resize(data.measurements.size(), kNaN);
        p.perturbedValues.resize(data.measurements.size(), kNaN);
    }
    for (auto& r : data.runs) {
        r.values.resize(data.measurements.size(), kNaN);
        r.settings.resize(data.parameters.size(), kNaN);
    }
    return {};
}

size_t indexOf(std::vector<std::string>& names, std::string_view name) {
    for (size_t i = 0; i < names.size(); ++i)
        if (names[i] == name) return i;
    names.emplace_back(name);
    return names.size() - 1;
}

}  // namespace

size_t StatData::measurement(std::string_view name) { return indexOf(measurements, name); }
size_t StatData::parameter(std::string_view name) { return indexOf(parameters, name); }

std::string parseStatData(std::string_view text, const std::string& name, StatData& data) {
    std::vector<std::string> errors;
    xmlSetStructuredErrorFunc(&errors, collectError);
    Doc doc(xmlReadMemory(text.data(), static_cast<int>(std::min<size_t>(text.size(), INT32_MAX)), name.c_str(), nullptr,
                          kParseOptions));
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    return fromDoc(doc.get(), errors, name, data);
}

std::string readStatData(const std::string& path, StatData& data) {
    std::string text;
    std::string failure = readWholeFile(path, text);
    return failure.empty() ? parseStatData(text, path, data) : failure;
}

std::string xmlEscaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\'': out += "&#39;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string writeStatData(const std::string& path, const StatData& data) {
    auto q = [](std::string_view s) { return "\"" + xmlEscaped(s) + "\""; };
    auto num = [](double v) { return "\"" + formatRoundTrip(v) + "\""; };
    std::string x = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<statdata analysis=" + q(data.analysis) + ">\n";
    x += "  <parameters>\n";
    for (const auto& p : data.parameters) x += "    <parameter name=" + q(p) + "/>\n";
    x += "  </parameters>\n  <measurements>\n";
    for (const auto& m : data.measurements) x += "    <measurement name=" + q(m) + "/>\n";
    x += "  </measurements>\n";
    for (const auto& p : data.perturbations) {
        x += "  <perturbation parameter=" + q(p.parameter) + " nominal=" + num(p.nominal) + " perturbed=" + num(p.perturbed) + ">\n";
        for (size_t m = 0; m < data.measurements.size(); ++m)
            x += "    <value measurement=" + q(data.measurements[m]) + " nominal=" + num(p.nominalValues[m]) +
                 " perturbed=" + num(p.perturbedValues[m]) + "/>\n";
        x += "  </perturbation>\n";
    }
    for (const auto& r : data.runs) {
        x += "  <run label=" + q(r.label) + ">\n";
        for (size_t m = 0; m < data.measurements.size(); ++m)
            x += "    <value measurement=" + q(data.measurements[m]) + " value=" + num(r.values[m]) + "/>\n";
        for (size_t p = 0; p < data.parameters.size(); ++p)
            x += "    <setting parameter=" + q(data.parameters[p]) + " value=" + num(r.settings[p]) + "/>\n";
        x += "  </run>\n";
    }
    return writeWholeFile(path, x + "</statdata>\n");
}

std::vector<std::string> validateXml(const std::string& path, const std::string& schemaPath, std::string* failure) {
    std::vector<std::string> problems;
    failure->clear();
    std::string schemaText, text;
    if (std::string why = readWholeFile(schemaPath, schemaText); !why.empty()) return *failure = why, problems;
    if (std::string why = readWholeFile(path, text); !why.empty()) return *failure = why, problems;
    std::vector<std::string> schemaErrors;
    xmlSetStructuredErrorFunc(&schemaErrors, collectError);
    Doc schemaDoc(xmlReadMemory(schemaText.data(), static_cast<int>(schemaText.size()), schemaPath.c_str(), nullptr, kParseOptions));
    xmlSchemaParserCtxt* parser = schemaDoc ? xmlSchemaNewDocParserCtxt(schemaDoc.get()) : nullptr;
    xmlSchema* schema = parser ? xmlSchemaParse(parser) : nullptr;
    if (parser) xmlSchemaFreeParserCtxt(parser);
    if (!schema) {
        xmlSetStructuredErrorFunc(nullptr, nullptr);
        *failure = "File '" + schemaPath + "' is not an XML schema" + (schemaErrors.empty() ? "" : ": " + schemaErrors.front());
        return problems;
    }
    xmlSetStructuredErrorFunc(&problems, collectError);
    Doc doc(xmlReadMemory(text.data(), static_cast<int>(text.size()), path.c_str(), nullptr, kParseOptions));
    if (doc) {
        xmlSchemaValidCtxt* valid = xmlSchemaNewValidCtxt(schema);
        xmlSchemaSetValidStructuredErrors(valid, collectError, &problems);
        xmlSchemaValidateDoc(valid, doc.get());
        xmlSchemaFreeValidCtxt(valid);
    }
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    xmlSchemaFree(schema);
    return problems;
}

}  // namespace wavex

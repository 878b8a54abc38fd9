// Statistical data files: what the report builders read, kept as XML (schema in
// share/schema/statdata.xsd):
//
//   <statdata analysis="sensitivity">
//     <parameters><parameter name="R1"/></parameters>
//     <measurements><measurement name="gain"/></measurements>
//     <perturbation parameter="R1" nominal="1000" perturbed="1010">
//       <value measurement="gain" nominal="20" perturbed="20.2"/>
//     </perturbation>
//     <run label="1"><value measurement="gain" value="20.1"/><setting parameter="R1" value="990"/></run>
//   </statdata>
//
// Numbers are written in their shortest round-trip form. Reading uses libxml2 without network
// access or entity expansion.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wavex {

struct StatData {
    struct Perturbation {
        std::string parameter;
        double nominal = 0, perturbed = 0;
        std::vector<double> nominalValues, perturbedValues;  // one per measurement (NaN when absent)
    };
    struct Run {
        std::string label;
        std::vector<double> values;    // one per measurement (NaN when absent)
        std::vector<double> settings;  // one per parameter (NaN when absent)
    };
    std::string analysis;  // "sensitivity", "montecarlo" or "worstcase"
    std::vector<std::string> parameters, measurements;
    std::vector<Perturbation> perturbations;
    std::vector<Run> runs;

    // Index of a measurement or parameter, added when new.
    size_t measurement(std::string_view name);
    size_t parameter(std::string_view name);
};

// Reads a data file (from a path, or from text in memory); "" when read, else why not
// ("Cannot open file 'P'", "File 'P' is not a statistical data file: line 3: ...").
std::string readStatData(const std::string& path, StatData& data);
std::string parseStatData(std::string_view text, const std::string& name, StatData& data);
// Writes it (through writeWholeFile); "" or the message.
std::string writeStatData(const std::string& path, const StatData& data);

// Validates an XML file against an XSD schema: the problems as "line N: message", empty when
// valid; *failure set (and nothing validated) when the schema or the file cannot be read.
std::vector<std::string> validateXml(const std::string& path, const std::string& schemaPath, std::string* failure);

// Text escaped for XML character data and attribute values.
std::string xmlEscaped(std::string_view text);

}  // namespace wavex

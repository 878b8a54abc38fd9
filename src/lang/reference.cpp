#include "lang/reference.hpp"

#include "support/text.hpp"

#include <string>
#include <utility>

namespace wavex::lang {
namespace {

// Families by the stem of their source file, in the order the reference lists them.
constexpr std::pair<const char*, const char*> kFamilies[] = {
    {"operators", "Operators"},
    {"elementwise", "Element-wise maths"},
    {"special", "Special functions"},
    {"calculus", "Calculus and vector construction"},
    {"averages", "Running averages, area and truncation"},
    {"curve_fit", "Curve fits"},
    {"interpolation", "Interpolation and crossings"},
    {"fourier", "Fourier analysis"},
    {"filters", "Digital filters"},
    {"reductions", "Reductions over a range"},
    {"extremes", "Extremes and periods"},
    {"histogram", "Histograms"},
    {"measurements", "Measurements"},
    {"runs", "Runs"},
    {"sets", "Sets"},
    {"strings", "Strings"},
    {"string_compare", "String comparison"},
    {"formatting", "Number, time and colour formatting"},
    {"parameter_strings", "Parameter strings"},
    {"sorting", "Sorting and search"},
    {"hash_tables", "Hash tables"},
    {"tables", "Tables of text data"},
    {"text_files", "Text files"},
    {"files", "Files and paths"},
    {"settings", "Settings and options"},
    {"system", "System"},
    {"touchstone", "Touchstone files"},
    {"wav", "WAV files"},
    {"base64", "Base64"},
    {"reports", "Statistical reports"},
    {"templates", "Templates and expressions"},
    {"conditionals", "Conditionals and fields"},
    {"parts_selector", "Parts selector"},
    {"switching", "Laplace expressions and initial conditions"},
};

std::string_view fileStem(const FuncInfo& f) {
    std::string_view file = f.file ? f.file : "";
    if (size_t slash = file.find_last_of('/'); slash != std::string_view::npos) file.remove_prefix(slash + 1);
    return file.substr(0, file.find('.'));
}

}  // namespace

std::string familyTitle(const FuncInfo& f) {
    std::string_view stem = fileStem(f);
    for (auto [file, title] : kFamilies)
        if (stem == file) return title;
    return std::string(stem);
}

int familyRank(const FuncInfo& f) {
    std::string_view stem = fileStem(f);
    int rank = 0;
    for (auto [file, title] : kFamilies) {
        if (stem == file) return rank;
        ++rank;
    }
    return rank;
}

bool hasReference(const FuncInfo& f) {
    const FuncDoc& d = f.doc;
    return d.signature && *d.signature && d.summary && *d.summary && d.returns && *d.returns && d.example &&
           *d.example;
}

std::string referenceEntry(const FuncInfo& f, std::string_view exampleOutput) {
    const FuncDoc& d = f.doc;
    std::string s = "### " + std::string(f.name) + "\n\n";
    if (!hasReference(f)) return s + "No reference entry yet.\n";
    s += "`" + std::string(d.signature) + "`\n\n" + d.summary + "\n\n";
    s += "Returns: " + std::string(d.returns) + "\n\n";
    if (d.notes && *d.notes) s += std::string(d.notes) + "\n\n";
    std::string aliases;
    for (auto& [alias, target] : functionTable().aliases())
        if (iequals(target, f.name)) aliases += (aliases.empty() ? "`" : ", `") + alias + "`";
    if (!aliases.empty()) s += "Also called " + aliases + ".\n\n";
    if (f.refusedInSafeMode) s += "Refused in safe mode (`--safe`).\n\n";
    s += "```\n> " + std::string(d.example) + "\n";
    s += exampleOutput;
    if (!exampleOutput.empty() && exampleOutput.back() != '\n') s += '\n';
    return s + "```\n";
}

}  // namespace wavex::lang

#include "lang/help.hpp"

#include "lang/reference.hpp"
#include "support/numbers.hpp"
#include "support/text.hpp"
#include "wavex/units.hpp"

#include <algorithm>

#include <fnmatch.h>

namespace wavex::lang {
namespace {

constexpr std::string_view kHelp[] = {
    "A command line holds statements separated by ';':",
    "  NAME = EXPRESSION      binds the value to NAME",
    "  EXPRESSION             prints the value",
    "Values are vectors of numbers or strings, often with x-values (a curve) and several runs.",
    "Operators: + - * / % ^ & == != < <= > >= && || !, v[i] indexes; numbers take suffixes",
    "(1k, 2.2u), strings are quoted ('a' or \"a\"), '#' starts a comment.",
    "Commands:",
    "  help                   this text",
    "  help NAME              what function NAME does, its arguments and an example",
    "  functions [PATTERN]    the functions and what they do; PATTERN is a glob ('X*') or part of a name",
    "  vectors                the vectors bound or loaded: kind, unit, length, runs and x-axis",
};

// Optimal string alignment distance, case ignored.
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> before(b.size() + 1), prev(b.size() + 1), cur(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) prev[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        cur[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            bool same = asciiLower(a[i - 1]) == asciiLower(b[j - 1]);
            cur[j] = std::min({prev[j] + 1, cur[j - 1] + 1, prev[j - 1] + (same ? 0 : 1)});
            if (i > 1 && j > 1 && asciiLower(a[i - 1]) == asciiLower(b[j - 2]) &&
                asciiLower(a[i - 2]) == asciiLower(b[j - 1]))
                cur[j] = std::min(cur[j], before[j - 2] + 1);
        }
        std::swap(before, prev);
        std::swap(prev, cur);
    }
    return prev[b.size()];
}

bool matches(std::string_view pattern, const std::string& name) {
    if (pattern.find_first_of("*?[") != std::string_view::npos)
        return fnmatch(std::string(pattern).c_str(), name.c_str(), FNM_CASEFOLD) == 0;
    return toLower(name).find(toLower(pattern)) != std::string::npos;
}

VectorPtr help(std::string_view name, MessageHandler& messages) {
    if (name.empty()) return makeStringVector(std::vector<StrElem>(std::begin(kHelp), std::end(kHelp)));
    const FuncInfo* f = functionTable().find(name);
    if (!f || f->name[0] == '_') {
        messages.error("Unknown function '%s'%s", name, didYouMean(name, functionNames()));
        return nullptr;
    }
    std::string entry = referenceEntry(*f);
    std::vector<StrElem> out;
    for (std::string_view rest = entry; !rest.empty();) {
        size_t eol = std::min(rest.find('\n'), rest.size());
        out.emplace_back(std::string(rest.substr(0, eol)));
        rest.remove_prefix(std::min(eol + 1, rest.size()));
    }
    return makeStringVector(std::move(out));
}

VectorPtr functions(std::string_view pattern) {
    std::vector<std::pair<std::string, const char*>> rows;
    size_t width = 0;
    for (const FuncInfo* f : functionTable().all())
        if (f->name[0] != '_' && (pattern.empty() || matches(pattern, f->name))) {
            rows.emplace_back(f->name, f->doc.summary ? f->doc.summary : "");
            width = std::max(width, rows.back().first.size());
        }
    if (rows.empty()) return makeStringVector({"No function matches '" + std::string(pattern) + "'"});
    std::vector<StrElem> out;
    for (auto& [name, summary] : rows)
        out.emplace_back(*summary ? name + std::string(width + 2 - name.size(), ' ') + summary : name);
    return makeStringVector(std::move(out));
}

// "time [s] from 0 to 1m"
std::string axis(const Reference& ref) {
    std::string s = ref.name.empty() ? "x" : ref.name;
    if (std::string_view unit = units::symbol(ref.phys); !unit.empty()) s += " [" + std::string(unit) + "]";
    if (ref.size() == 0 || ref.type == VD_COMPLEX) return s;
    auto [lo, hi] = std::minmax_element(ref.real(), ref.real() + ref.size());
    return s + " from " + formatEngineering(*lo) + " to " + formatEngineering(*hi);
}

// "out: real [V], 3000 points in 3 runs (R=1k, R=2k, R=3k), x: time [s] from 0 to 1m"
VectorPtr vectors(const Interpreter& wx) {
    std::vector<StrElem> out;
    for (const std::string& name : wx.vectorNames()) {
        VectorPtr v = wx.findVector(name);
        if (!v) continue;
        std::string s = name + ": " + (v->type == VD_COMPLEX ? "complex" : v->type == VD_STRING ? "string" : "real");
        if (std::string_view unit = units::symbol(v->phys); !unit.empty() && v->type != VD_STRING)
            s += " [" + std::string(unit) + "]";
        s += ", " + std::to_string(v->size()) + (v->size() == 1 ? " element" : " elements");
        if (v->numDivisions() > 1 || v->label(0)) {
            s += " in " + std::to_string(v->numDivisions()) + (v->numDivisions() == 1 ? " run" : " runs");
            std::string labels;
            for (size_t k = 0; k < v->numDivisions(); ++k)
                if (auto label = v->label(k)) labels += (labels.empty() ? "" : ", ") + *label;
            if (!labels.empty()) s += " (" + labels + ")";
        }
        if (v->ref.present()) s += ", x: " + axis(v->ref);
        out.emplace_back(std::move(s));
    }
    if (out.empty()) out.emplace_back("No vectors: load a file with --data FILE or bind one with NAME = EXPRESSION");
    return makeStringVector(std::move(out));
}

}  // namespace

VectorPtr runCommand(std::string_view command, std::string_view argument, const Interpreter& wx,
                     MessageHandler& messages) {
    if (command == "help") return help(argument, messages);
    if (command == "functions") return functions(argument);
    if (!argument.empty()) {
        messages.error("%s", "vectors takes no argument");
        return nullptr;
    }
    return vectors(wx);
}

std::vector<std::string> functionNames() {
    std::vector<std::string> names;
    for (const FuncInfo* f : functionTable().all())
        if (f->name[0] != '_') names.emplace_back(f->name);
    for (auto& [alias, target] : functionTable().aliases()) names.push_back(alias);
    return names;
}

std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates) {
    // Close: at most a third of the name's letters wrong (one for short names).
    size_t best = std::max<size_t>(1, name.size() / 3);
    std::vector<std::string_view> closest;
    for (const std::string& c : candidates) {
        size_t d = distance(name, c);
        if (d > best) continue;
        if (d < best) closest.clear();
        best = d;
        closest.push_back(c);
    }
    if (closest.empty() || closest.size() > 3) return "";
    std::string s = "; did you mean ";
    for (size_t i = 0; i < closest.size(); ++i)
        s += std::string(i == 0 ? "" : i + 1 == closest.size() ? " or " : ", ") + "'" + std::string(closest[i]) + "'";
    return s + "?";
}

}  // namespace wavex::lang

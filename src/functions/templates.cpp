// Templates and probe expressions: text rewritten with the host's template resolver and
// expression rewriter (see wavex/template.hpp for the template language and the canonical form).
//
// ResolveTemplate(template, names, values [, failText]) resolves %NAME% keywords against the
// pairs (names[i], values[i]) (as many as the shorter vector holds; a name given twice means its
// later value) and {expressions}; when something could not be resolved and a fourth argument was
// given, the result is that text. `rt` is the same function under a second registration.
//
// ParseProbeExpression(expr) rewrites V(n) to (n), V(a, b) to (a-b) and I(d) to d#p, and lists
// the nets and device pins it met, in order of first appearance, each once (ignoring case): the
// result is [rewritten, N, D, net1 … netN, pin1 … pinD]. Other calls, and V or I with an
// unexpected number of arguments, are written generically as F(a1, a2).
//
// SubstProbeExpression(expr, names, values) replaces every identifier that the pairs name by its
// value; function names and everything else stay.
//
// None reports a message of its own; a text that does not parse comes back as written, with the
// language's syntax message.
#include "support/hash_table.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"
#include "wavex/template.hpp"

#include <memory>
#include <unordered_set>

namespace wavex {
namespace {

using KeywordTable = ChainedHashTable<std::string>;

// The pairs (names[i], values[i]) of arguments 1 and 2, newest at the head of each chain.
void fillKeywords(const FuncArgs& args, KeywordTable& table) {
    int64_t pairs = std::min(args.length(1), args.length(2));
    for (int64_t i = 0; i < pairs; ++i)
        table.insert(std::string(args.string(1, static_cast<size_t>(i))), std::string(args.string(2, static_cast<size_t>(i))));
}

class GenTemplateObject : public TemplateObject {
public:
    explicit GenTemplateObject(std::shared_ptr<const KeywordTable> table) : table_(std::move(table)) {}
    std::string lookup(std::string_view key, bool* found) override {
        const std::string* value = table_->find(key);
        *found = value != nullptr;
        return value ? *value : std::string();
    }

private:
    std::shared_ptr<const KeywordTable> table_;
};

// Names in order of first appearance, each once, ignoring case.
class FirstAppearances {
public:
    void add(const std::string& name) {
        if (seen_.insert(name).second) names_.push_back(name);
    }
    const std::vector<std::string>& names() const { return names_; }

private:
    std::vector<std::string> names_;
    std::unordered_set<std::string, CaseInsensitiveHash, CaseInsensitiveEqual> seen_;
};

std::string genericCall(const std::string& f, const std::vector<std::string>& args) {
    std::string out = f + "(";
    for (size_t i = 0; i < args.size(); ++i) out += (i ? ", " : "") + args[i];
    return out + ")";
}

class ParseProbeSubstExpressionObject : public VecSubstExpressionObject {
public:
    FirstAppearances nets, pins;
    int unexpectedArguments = 0;  // set when V or I has an argument count it does not take

    std::string substituteName(const std::string& name) override { return name; }
    std::string substituteCall(const std::string& f, const std::vector<std::string>& args) override {
        if (iequals(f, "V") && args.size() == 1) {
            nets.add(args[0]);
            return "(" + args[0] + ")";
        }
        if (iequals(f, "V") && args.size() == 2) {
            nets.add(args[0]);
            nets.add(args[1]);
            return "(" + args[0] + "-" + args[1] + ")";
        }
        if (iequals(f, "I") && args.size() == 1) {
            pins.add(args[0]);
            return args[0] + "#p";
        }
        if (iequals(f, "V") || iequals(f, "I")) unexpectedArguments = 1;
        return genericCall(f, args);
    }
    bool substitutesNames() const override { return true; }
    bool replacesWholeCall() const override { return true; }
    bool probeNodesAreNames() const override { return false; }
};

class MapProbeSubstExpressionObject : public VecSubstExpressionObject {
public:
    explicit MapProbeSubstExpressionObject(const KeywordTable& table) : table_(table) {}
    std::string substituteName(const std::string& name) override {
        const std::string* value = table_.find(name);
        return value ? *value : name;
    }
    std::string substituteCall(const std::string& f, const std::vector<std::string>&) override { return f; }
    bool substitutesNames() const override { return true; }
    bool replacesWholeCall() const override { return false; }
    bool probeNodesAreNames() const override { return false; }

private:
    const KeywordTable& table_;
};

FUNC_ERROR stringsResult(FuncResult* result, std::vector<std::string> values) {
    result->setType(VD_STRING, VD_NONE);
    result->allocate(static_cast<int64_t>(values.size()), RESULT_OWN, 0);
    StrElem* out = result->stringData();
    for (size_t i = 0; i < values.size(); ++i) out[i] = std::move(values[i]);
    return FUNC_OK;
}

FUNC_ERROR resolveTemplate(WAVEX_HANDLER_PARAMS) {
    auto table = std::make_shared<KeywordTable>(101, 0);
    fillKeywords(args, *table);
    GenTemplateObject resolver(table);
    bool failed = false;
    std::string text = resolver.resolveTemplate(std::string(args.string(0)), "", &failed);
    if (failed && args.count() > 3) text = args.string(3);
    return stringsResult(result, {std::move(text)});
}

FUNC_ERROR parseProbeExpression(WAVEX_HANDLER_PARAMS) {
    ParseProbeSubstExpressionObject probes;
    std::string rewritten = vec_SubstituteExpression(std::string(args.string(0)), &probes);
    const std::vector<std::string>& nets = probes.nets.names();
    const std::vector<std::string>& pins = probes.pins.names();
    std::vector<std::string> out{std::move(rewritten), std::to_string(nets.size()), std::to_string(pins.size())};
    out.insert(out.end(), nets.begin(), nets.end());
    out.insert(out.end(), pins.begin(), pins.end());
    return stringsResult(result, std::move(out));
}

FUNC_ERROR substProbeExpression(WAVEX_HANDLER_PARAMS) {
    // Built in a small growing table, then copied into the rewriter's 101 buckets; copying from
    // the oldest entry keeps the newest of a repeated name first.
    KeywordTable pairs(31, 2);
    fillKeywords(args, pairs);
    std::vector<const KeywordTable::Entry*> entries;
    pairs.forEach([&](const KeywordTable::Entry& e) { entries.push_back(&e); });
    KeywordTable table(101, 0);
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) table.insert((*it)->key, (*it)->value);
    MapProbeSubstExpressionObject map(table);
    return stringsResult(result, {vec_SubstituteExpression(std::string(args.string(0)), &map)});
}

constexpr FuncInfo kTemplateFunctions[] = {
    {"ParseProbeExpression", {arg::String}, 1, parseProbeExpression,
     {.signature = "ParseProbeExpression(expr)",
      .summary = "A probe expression rewritten in canonical form, with the nets and pins it uses.",
      .returns = "strings: [rewritten, N, D, net1 ... netN, pin1 ... pinD]",
      .notes = "V(n) becomes (n), V(a, b) (a-b) and I(d) d#p; nets and pins are listed in order of "
               "first appearance, each once (ignoring case). Operators get a blank on each side and "
               "parentheses stay only where precedence needs them. A text that does not parse comes "
               "back as written, with the syntax message.",
      .example = "ParseProbeExpression('V(out)-V(a,b)+I(R1)')"}},
    {"ResolveTemplate", {arg::String, arg::String, arg::String, arg::String}, 3, resolveTemplate,
     {.signature = "ResolveTemplate(template, names, values [, failText])",
      .summary = "A template's %NAME% keywords replaced by values and its {expressions} evaluated.",
      .returns = "one string",
      .notes = "Keywords are looked up in the pairs (names[i], values[i]) ignoring case, a name given "
               "twice taking its later value; %% is a percent sign. Expressions are evaluated by the "
               "interpreter as written (keywords inside braces are not replaced), numbers written in "
               "their shortest round-trip form. An unknown keyword or a failing expression stays as "
               "written, or, when failText is given, the whole result is failText.",
      .example = "x = 3; ResolveTemplate('%NAME% = {x*2}', ['NAME'], ['R1']); "
                 "ResolveTemplate('%OTHER%', ['NAME'], ['R1'], 'failed')"}},
    {"SubstProbeExpression", {arg::String, arg::String, arg::String}, 3, substProbeExpression,
     {.signature = "SubstProbeExpression(expr, names, values)",
      .summary = "An expression with the identifiers the pairs name replaced by their values.",
      .returns = "one string, the expression in canonical form",
      .notes = "Only identifiers are replaced (function names and everything else stay); the result is "
               "printed as ParseProbeExpression prints it.",
      .example = "SubstProbeExpression('gain*V(out)+offs', ['gain', 'offs'], ['2', 'v0'])"}},
    {"rt", {arg::String, arg::String, arg::String, arg::String}, 3, resolveTemplate,
     {.signature = "rt(template, names, values [, failText])",
      .summary = "Same as ResolveTemplate.",
      .returns = "one string",
      .notes = "A short name for ResolveTemplate.",
      .example = "rt('%A%+%B% = {1+2}', ['A', 'B'], ['1', '2'])"}},
};
const FuncFamily templateFamily(kTemplateFunctions);

}  // namespace
}  // namespace wavex

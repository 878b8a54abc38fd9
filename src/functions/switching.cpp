// Support for the switching simulator: Laplace transfer functions and initial-condition files.
//
// ParseLaplace(text) parses a rational function of s (grammar, expansion and error codes in
// support/laplace.hpp) into [code, n, d, N0 … Nn, D0 … Dd]: the code (0), the orders n and d of
// the numerator and denominator, then their coefficients in ascending powers of s
// (ParseLaplace('1/(1+s*1u)') gives [0, 0, 1, 1, 1, 1e-6]). It asks the parser with room for 50
// coefficients each, and again with 100, 150 … while an order + 1 reaches the room given. A text
// that does not parse gives its error code alone.
// CheckLaplaceExpression(text) asks the validation plug-in (Laplace_2.* in the devices folder,
// see support/laplace.hpp) when there is one and gives its answer; a plug-in that cannot be
// loaded or lacks its entry point gives no result. Without a plug-in it gives 3 for a text that
// does not parse, else 0.
// GetLaplaceErrorMessage(code) gives the text of an error code, "" for 0 and unknown codes.
//
// ParseBRENNICInit(file) reads an initial-condition file as logical lines (support/
// spice_stream.hpp: "+" continues a line, "*" starts a comment line). A line whose first token
// is ".INIT" (any case) holds pairs "probe value" or "probe=value" after it, tokens being cut at
// blanks and "=". A probe is V(node) or I(device) (kind letter in any case); a name X1.X2.n is the
// local name n in the subcircuit instance X1.X2, and in each level text up to a "$" is a prefix
// that is dropped (X1.$N$out reads as X1.out). The result is a string vector of two elements
// per instance, in the order instances first appear: the instance path ("" at the top level,
// levels joined by "."), then its entries "V(n)=value" or "I(d)=value" joined by ";", each in
// the order first met, the kind letter upper-case, the value as written. A probe met again (its
// kind and name compared ignoring case, as are instance paths) keeps its first value.
// Bad input gets no message: a probe that is not of that form (no or unknown kind letter,
// unbalanced parentheses, an empty name or level, a "," in it) is skipped with its value; a
// last probe without a value is ignored; a file that cannot be read gives no result.
#include "support/hash_table.hpp"
#include "support/laplace.hpp"
#include "support/numbers.hpp"
#include "support/spice_stream.hpp"
#include "support/split.hpp"
#include "support/text.hpp"
#include "wavex/function.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

FUNC_ERROR oneReal(FuncResult* result, double x) {
    double* out = result->makeRealNoRef(1);
    if (!out) return FUNC_FAILED;
    out[0] = x;
    return FUNC_OK;
}

FUNC_ERROR strings(FuncResult* result, std::vector<std::string> values) {
    result->setType(VD_STRING, VD_NONE);
    result->setPhysType(units::Number, units::NoRef);
    if (!result->allocate(static_cast<int64_t>(values.size()), RESULT_OWN, -1)) return FUNC_FAILED;
    StrElem* out = result->stringData();
    for (size_t i = 0; i < values.size(); ++i) out[i] = std::move(values[i]);
    return FUNC_OK;
}

// ---- Laplace expressions -------------------------------------------------------------------------

constexpr int32_t kCapacityStep = 50;

FUNC_ERROR parseLaplaceFn(WAVEX_HANDLER_PARAMS) {
    const std::string expression(args.string(0));
    for (int32_t capacity = kCapacityStep;; capacity += kCapacityStep) {
        std::vector<double> num(capacity), den(capacity);
        XSpiceParseLaplaceArgs call{expression.c_str(), num.data(), capacity, den.data(), capacity, -1, 0};
        if (!sp_ParseLaplaceExpression(&call)) return oneReal(result, call.errorCode);
        const int32_t n = call.numeratorSize, d = call.denominatorSize;
        if (n + 1 >= capacity || d + 1 >= capacity) continue;
        double* out = result->makeRealNoRef(n + d + 5);
        if (!out) return FUNC_FAILED;
        out[0] = call.errorCode;
        out[1] = n;
        out[2] = d;
        std::copy_n(num.begin(), n + 1, out + 3);
        std::copy_n(den.begin(), d + 1, out + 4 + n);
        return FUNC_OK;
    }
}

FUNC_ERROR checkLaplaceExpression(WAVEX_HANDLER_PARAMS) {
    const std::string expression(args.string(0));
    bool pluginFound = false;
    std::optional<int> verdict = checkWithLaplacePlugin(expression, &pluginFound);
    if (pluginFound) return verdict ? oneReal(result, *verdict) : FUNC_OK;
    std::array<double, kCapacityStep> num{}, den{};
    XSpiceParseLaplaceArgs call{expression.c_str(), num.data(), 0, den.data(), 0, -1, 0};
    sp_ParseLaplaceExpression(&call);
    return oneReal(result, call.errorCode > 0 ? 3 : 0);
}

FUNC_ERROR getLaplaceErrorMessage(WAVEX_HANDLER_PARAMS) {
    const char* text = nullptr;
    sp_GetLaplaceErrMessage(truncateToInt32(args.scalar(0)), &text);
    return strings(result, {text ? text : ""});
}

// ---- Initial-condition files ---------------------------------------------------------------------

struct Probe {
    char kind;                  // 'V' or 'I'
    std::string instance;       // levels joined by "."; "" at the top level
    std::string name;           // the local name
};

// A level with its "$" prefix dropped: the last non-empty "$"-separated part.
std::string_view withoutPrefix(std::string_view level) {
    while (!level.empty() && level.back() == '$') level.remove_suffix(1);
    size_t dollar = level.rfind('$');
    return dollar == std::string_view::npos ? level : level.substr(dollar + 1);
}

std::optional<Probe> parseProbe(std::string_view text) {
    size_t open = text.find('(');
    if (open != 1 || text.size() < 4 || text.back() != ')') return std::nullopt;
    char kind = asciiUpper(text[0]);
    std::string_view inside = text.substr(2, text.size() - 3);
    if ((kind != 'V' && kind != 'I') || inside.find_first_of("(),") != std::string_view::npos) return std::nullopt;
    Probe p{kind, {}, {}};
    std::vector<std::string_view> levels;
    sp_SplitLine(inside, '.', levels);
    for (size_t i = 0; i < levels.size(); ++i) {
        std::string_view level = withoutPrefix(levels[i]);
        if (level.empty()) return std::nullopt;
        if (i + 1 == levels.size()) p.name = level;
        else p.instance.append(p.instance.empty() ? "" : ".").append(level);
    }
    return p;
}

class InitialConditions {
public:
    void add(const Probe& p, std::string_view value) {
        size_t* index = instanceIndex_.find(p.instance);
        if (!index) {
            instanceIndex_.insert(p.instance, instances_.size());
            instances_.push_back({p.instance, {}, ChainedHashTable<bool>(101, 2)});
            index = instanceIndex_.find(p.instance);
        }
        Instance& in = instances_[*index];
        std::string entry = std::string(1, p.kind) + "(" + p.name + ")";
        if (in.seen.find(entry)) return;
        in.seen.insert(entry, true);
        in.entries.append(in.entries.empty() ? "" : ";").append(entry).append("=").append(value);
    }

    std::vector<std::string> result() {
        std::vector<std::string> out;
        for (Instance& in : instances_) {
            out.push_back(std::move(in.path));
            out.push_back(std::move(in.entries));
        }
        return out;
    }

private:
    struct Instance {
        std::string path;
        std::string entries;
        ChainedHashTable<bool> seen;
    };
    std::vector<Instance> instances_;
    ChainedHashTable<size_t> instanceIndex_{101, 2};
};

FUNC_ERROR parseBRENNICInit(WAVEX_HANDLER_PARAMS) {
    NewSpiceStream in{std::string(args.string(0))};
    if (!in.isOpen()) return FUNC_OK;
    InitialConditions conditions;
    std::string line;
    std::vector<std::string_view> tokens;
    while (in.gets(&line, nullptr)) {
        sp_ScanLine(line, " \t\r\n=", tokens);
        if (tokens.size() <= 2 || !iequals(tokens[0], ".INIT")) continue;
        for (size_t i = 1; i + 1 < tokens.size(); i += 2)
            if (std::optional<Probe> p = parseProbe(tokens[i])) conditions.add(*p, tokens[i + 1]);
    }
    return strings(result, conditions.result());
}

// ---- Registration --------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"ParseLaplace", {arg::String}, 1, parseLaplaceFn,
     {.signature = "ParseLaplace(text)",
      .summary = "A rational function of s expanded into numerator and denominator coefficients.",
      .returns = "reals [0, n, d, N0 ... Nn, D0 ... Dd]: the orders n and d, then the coefficients in "
                 "ascending powers of s; a text that does not parse gives its error code alone",
      .notes = "Error codes 1 to 14 (read them with GetLaplaceErrorMessage): empty, invalid character, "
               "unknown name, unbalanced parentheses, missing operand, invalid number, non-constant, "
               "non-integer or negative power, zero denominator, trailing text, order above 1000, "
               "coefficient out of range, nesting above 256.",
      .example = "ParseLaplace('1/(1+s*1u)'); ParseLaplace('1/(1+s')"}},
    {"CheckLaplaceExpression", {arg::String}, 1, checkLaplaceExpression,
     {.signature = "CheckLaplaceExpression(text)",
      .summary = "Whether a Laplace expression is valid: 0 when it is, 3 when it is not.",
      .returns = "one real",
      .notes = "A validation plug-in in the devices folder, when one is installed, gives the answer "
               "instead (no result when it cannot be loaded); without one the text is parsed as "
               "ParseLaplace does.",
      .example = "CheckLaplaceExpression('s/(s+1)'); CheckLaplaceExpression('s/(s+')"}},
    {"GetLaplaceErrorMessage", {arg::Real}, 1, getLaplaceErrorMessage,
     {.signature = "GetLaplaceErrorMessage(code)",
      .summary = "The text of a ParseLaplace error code.",
      .returns = "one string; \"\" for 0 and unknown codes",
      .notes = "Codes are those ParseLaplace returns for a text that does not parse.",
      .example = "GetLaplaceErrorMessage(ParseLaplace('1/(1+s'))"}},
    {"ParseBRENNICInit", {arg::String}, 1, parseBRENNICInit,
     {.signature = "ParseBRENNICInit(file)",
      .summary = "The initial conditions of an initial-condition file, grouped by subcircuit instance.",
      .returns = "strings, two per instance in order of first appearance: the instance path (\"\" at the "
                 "top level), then its entries \"V(n)=value;I(d)=value...\"; no result when the file "
                 "cannot be read",
      .notes = "Lines starting \".INIT\" (any case) hold pairs \"probe value\" or \"probe=value\"; \"+\" "
               "continues a line, \"*\" starts a comment line. X1.X2.n is node n of instance X1.X2; a "
               "\"$\" prefix in a level is dropped. A probe met again keeps its first value; malformed "
               "probes are skipped.",
      .example = "length(ParseBRENNICInit('missing.ic'))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

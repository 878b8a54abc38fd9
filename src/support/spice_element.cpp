#include "support/spice_element.hpp"

#include "support/parameter_string.hpp"
#include "support/split.hpp"
#include "support/text.hpp"

#include <vector>

namespace wavex {
namespace {

struct ElementKind {
    char letter;
    int nodes;  // -1: every positional token but the last
    bool model;
};

constexpr ElementKind kKinds[] = {
    {'B', 2, false}, {'C', 2, false}, {'D', 2, true},  {'E', 4, false}, {'F', 2, false}, {'G', 4, false},
    {'H', 2, false}, {'I', 2, false}, {'J', 3, true},  {'K', 0, false}, {'L', 2, false}, {'M', 4, true},
    {'O', 4, true},  {'Q', 3, true},  {'R', 2, false}, {'S', 4, true},  {'T', 4, false}, {'U', 3, true},
    {'V', 2, false}, {'W', 2, true},  {'X', -1, true}, {'Z', 3, true},
};

const ElementKind* kindOf(char letter) {
    for (const ElementKind& k : kKinds)
        if (k.letter == asciiUpper(letter)) return &k;
    return nullptr;
}

// The line up to a ";" outside quotes and brackets, with the blanks around each "=" there removed.
std::string normalised(std::string_view line) {
    std::string out;
    int depth = 0;
    char quote = 0;
    for (char c : line) {
        if (quote) quote = c == quote ? 0 : quote;
        else if (c == '"' || c == '\'') quote = c;
        else if (c == '(' || c == '{') ++depth;
        else if ((c == ')' || c == '}') && depth > 0) --depth;
        else if (c == ';' && depth == 0) break;
        if (!quote && depth == 0 && c == '=') {
            while (!out.empty() && (out.back() == ' ' || out.back() == '\t')) out.pop_back();
        } else if (!quote && depth == 0 && (c == ' ' || c == '\t') && !out.empty() && out.back() == '=') {
            continue;
        }
        out += c;
    }
    return out;
}

}  // namespace

std::string spiceElementParameters(std::string_view line) {
    std::string text = normalised(trim(line));
    const ElementKind* kind = text.empty() ? nullptr : kindOf(text[0]);
    if (!kind) return {};
    std::vector<std::string_view> tokens;
    sp_ScanLine(text, " \t", "\"'({", "\"')}", tokens, SIZE_MAX, kSplitKeepQuotes);
    size_t positional = 0;
    while (positional < tokens.size() && tokens[positional].find('=') == std::string_view::npos) ++positional;

    std::vector<std::string> names{"inst", "kind"}, values{std::string(tokens[0]), std::string(1, kind->letter)};
    size_t nodes = kind->nodes >= 0 ? static_cast<size_t>(kind->nodes) : (positional > 2 ? positional - 2 : 0);
    size_t next = 1;
    auto joined = [&](size_t count) {
        std::string s;
        for (size_t i = 0; i < count && next < positional; ++i, ++next) s += (s.empty() ? "" : " ") + std::string(tokens[next]);
        return s;
    };
    names.push_back("nodes"), values.push_back(joined(nodes));
    if (kind->model) names.push_back("model"), values.push_back(joined(1));
    names.push_back("value"), values.push_back(joined(SIZE_MAX));
    for (size_t i = positional; i < tokens.size(); ++i) {
        size_t eq = tokens[i].find('=');
        if (eq == std::string_view::npos || eq == 0) continue;
        names.emplace_back(tokens[i].substr(0, eq));
        values.emplace_back(tokens[i].substr(eq + 1));
    }
    std::vector<std::string_view> n(names.begin(), names.end()), v(values.begin(), values.end());
    return buildParameterString(n, v);
}

}  // namespace wavex

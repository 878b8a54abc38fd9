// The expression rewriter behind vec_SubstituteExpression. It parses the text with the language's
// parser, then prints the tree in canonical form, replacing names and calls as the caller's
// substitution object says. The canonical form:
//   binary operators with one blank on each side (a + b, x ^ 2, p && q); unary - and ! without
//   one (-a, !b); calls and vector literals with ", " between their elements (f(a, b), [1, 2]);
//   the complex pair as (re, im); indexing as v[i]; numbers and strings as written; parentheses
//   only where the operators' precedence needs them; statements joined by "; ".
// Names and calls are visited left to right, arguments before their call.
#include "lang/parser.hpp"
#include "support/text.hpp"
#include "wavex/interpreter.hpp"

namespace wavex::lang {
namespace {

struct OperatorForm {
    std::string_view function;
    std::string_view symbol;
    int level;  // as in the grammar, lowest first
};

constexpr int kUnaryLevel = 7, kPostfixLevel = 8, kPrimaryLevel = 9, kPowerLevel = 6;

constexpr OperatorForm kOperators[] = {
    {"_Or", "||", 0},    {"_And", "&&", 1},    {"_Eq", "==", 2},     {"_Ne", "!=", 2},     {"_Lt", "<", 3},
    {"_Le", "<=", 3},    {"_Gt", ">", 3},      {"_Ge", ">=", 3},     {"_Plus", "+", 4},    {"_Minus", "-", 4},
    {"_Concat", "&", 4}, {"_Times", "*", 5},   {"_Divide", "/", 5},  {"_Mod", "%", 5},     {"_Power", "^", kPowerLevel},
    {"_UMinus", "-", kUnaryLevel}, {"_Not", "!", kUnaryLevel}, {"_Index", "[]", kPostfixLevel},
    {"_Comma", ",", kPrimaryLevel},  // always written in its own parentheses
};

const OperatorForm* operatorOf(const Node& n) {
    if (n.kind != Node::Kind::Call || !n.fromOperator) return nullptr;
    for (const OperatorForm& op : kOperators)
        if (op.function == n.text) return &op;
    return nullptr;
}

int levelOf(const Node& n) {
    const OperatorForm* op = operatorOf(n);
    return op ? op->level : kPrimaryLevel;
}

std::string joined(const std::vector<std::string>& items) {
    std::string out;
    for (size_t i = 0; i < items.size(); ++i) {
        if (i) out += ", ";
        out += items[i];
    }
    return out;
}

class Printer {
public:
    Printer(std::string_view source, VecSubstExpressionObject& subst) : src_(source), subst_(subst) {}

    std::string print(const Node& n) {
        switch (n.kind) {
            case Node::Kind::Name: return subst_.substitutesNames() ? subst_.substituteName(n.text) : n.text;
            case Node::Kind::Constant: return constant(n);
            case Node::Kind::List: {
                std::vector<std::string> items;
                for (const auto& c : n.children) items.push_back(print(*c));
                return "[" + joined(items) + "]";
            }
            case Node::Kind::Probe: {
                std::vector<std::string> args;
                bool rename = subst_.probeNodesAreNames() && subst_.substitutesNames();
                for (const std::string& node : n.nodes) args.push_back(rename ? subst_.substituteName(node) : node);
                return call(n.text, args);
            }
            case Node::Kind::Call: {
                if (const OperatorForm* op = operatorOf(n)) return operation(n, *op);
                std::vector<std::string> args;
                for (const auto& c : n.children) args.push_back(print(*c));
                return call(n.text, args);
            }
        }
        return {};
    }

private:
    std::string call(const std::string& name, const std::vector<std::string>& args) {
        std::string replaced = subst_.substituteCall(name, args);
        return subst_.replacesWholeCall() ? replaced : replaced + "(" + joined(args) + ")";
    }

    // A number as written (a folded negative literal as "-" and the number), a string in its quotes.
    std::string constant(const Node& n) {
        std::string_view text = trim(src_.substr(n.begin, n.end - n.begin));
        if (!text.empty() && text.front() == '-') return "-" + std::string(trim(text.substr(1)));
        return std::string(text);
    }

    std::string operand(const Node& child, bool parenthesise) {
        std::string text = print(child);
        return parenthesise ? "(" + text + ")" : text;
    }

    std::string operation(const Node& n, const OperatorForm& op) {
        const Node& a = *n.children[0];
        if (op.function == "_Comma") return "(" + print(a) + ", " + print(*n.children[1]) + ")";
        if (op.level == kUnaryLevel) return std::string(op.symbol) + operand(a, levelOf(a) < kUnaryLevel);
        if (op.level == kPostfixLevel)
            return operand(a, levelOf(a) < kPostfixLevel) + "[" + print(*n.children[1]) + "]";
        const Node& b = *n.children[1];
        bool rightAssociative = op.level == kPowerLevel;
        std::string left = operand(a, rightAssociative ? levelOf(a) <= op.level : levelOf(a) < op.level);
        std::string right = operand(b, rightAssociative ? levelOf(b) < op.level : levelOf(b) <= op.level);
        return left + " " + std::string(op.symbol) + " " + right;
    }

    std::string_view src_;
    VecSubstExpressionObject& subst_;
};

}  // namespace

std::optional<std::string> substitute(std::string_view text, VecSubstExpressionObject& subst, std::string* error) {
    auto statements = parseLine(text, error);
    if (!statements) return std::nullopt;
    Printer printer(text, subst);
    std::string out;
    for (const Statement& s : *statements) {
        if (!out.empty()) out += "; ";
        if (s.target) out += *s.target + " = ";
        out += printer.print(*s.expression);
    }
    return out;
}

}  // namespace wavex::lang

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

// Prints into one growing text, so that a long chain of operators costs linear time.
class Printer {
public:
    Printer(std::string_view source, VecSubstExpressionObject& subst) : src_(source), subst_(subst) {}

    // Appends the canonical text of n to out.
    void print(const Node& n, std::string& out) {
        switch (n.kind) {
            case Node::Kind::Name: out += subst_.substitutesNames() ? subst_.substituteName(n.text) : n.text; return;
            case Node::Kind::Constant: appendConstant(n, out); return;
            case Node::Kind::List:
                out += '[';
                for (size_t i = 0; i < n.children.size(); ++i) {
                    if (i) out += ", ";
                    print(*n.children[i], out);
                }
                out += ']';
                return;
            case Node::Kind::Probe: {
                std::vector<std::string> args;
                bool rename = subst_.probeNodesAreNames() && subst_.substitutesNames();
                for (const std::string& node : n.nodes) args.push_back(rename ? subst_.substituteName(node) : node);
                appendCall(n.text, args, out);
                return;
            }
            case Node::Kind::Call: {
                if (const OperatorForm* op = operatorOf(n)) return operation(n, *op, out);
                std::vector<std::string> args;
                for (const auto& c : n.children) {
                    args.emplace_back();
                    print(*c, args.back());
                }
                appendCall(n.text, args, out);
                return;
            }
        }
    }

private:
    void appendCall(const std::string& name, const std::vector<std::string>& args, std::string& out) {
        out += subst_.substituteCall(name, args);
        if (!subst_.replacesWholeCall()) out += "(" + joined(args) + ")";
    }

    // A number as written (a folded negative literal as "-" and the number), a string in its quotes.
    void appendConstant(const Node& n, std::string& out) {
        std::string_view text = trim(src_.substr(n.begin, n.end - n.begin));
        if (!text.empty() && text.front() == '-') {
            out += '-';
            text = trim(text.substr(1));
        }
        out += text;
    }

    void operand(const Node& child, bool parenthesise, std::string& out) {
        if (parenthesise) out += '(';
        print(child, out);
        if (parenthesise) out += ')';
    }

    void operation(const Node& n, const OperatorForm& op, std::string& out) {
        const Node& a = *n.children[0];
        if (op.function == "_Comma") {
            out += '(';
            print(a, out);
            out += ", ";
            print(*n.children[1], out);
            out += ')';
            return;
        }
        if (op.level == kUnaryLevel) {
            out += op.symbol;
            return operand(a, levelOf(a) < kUnaryLevel, out);
        }
        if (op.level == kPostfixLevel) {
            operand(a, levelOf(a) < kPostfixLevel, out);
            out += '[';
            print(*n.children[1], out);
            out += ']';
            return;
        }
        const Node& b = *n.children[1];
        bool rightAssociative = op.level == kPowerLevel;
        operand(a, rightAssociative ? levelOf(a) <= op.level : levelOf(a) < op.level, out);
        out += ' ';
        out += op.symbol;
        out += ' ';
        operand(b, rightAssociative ? levelOf(b) < op.level : levelOf(b) <= op.level, out);
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
        if (s.expression) printer.print(*s.expression, out);
        else out += s.text;  // a command: nothing to rewrite
    }
    return out;
}

}  // namespace wavex::lang

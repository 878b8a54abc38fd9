// The expression rewriter behind vec_SubstituteExpression: names and calls are replaced as the
// caller's substitution object says, everything else is copied from the source text.
#include "lang/parser.hpp"
#include "wavex/interpreter.hpp"

namespace wavex::lang {
namespace {

class Rewriter {
public:
    Rewriter(std::string_view source, VecSubstExpressionObject& subst) : src_(source), subst_(subst) {}

    std::string rewrite(const Node& n) {
        switch (n.kind) {
            case Node::Kind::Name:
                return subst_.substitutesNames() ? subst_.substituteName(n.text) : std::string(span(n));
            case Node::Kind::Constant: return std::string(span(n));
            case Node::Kind::List: return withChildren(n, n.begin, n.end);
            case Node::Kind::Probe: {
                std::vector<std::string> args;
                for (const std::string& node : n.nodes)
                    args.push_back(subst_.probeNodesAreNames() && subst_.substitutesNames() ? subst_.substituteName(node)
                                                                                           : node);
                std::string replaced = subst_.substituteCall(n.text, args);
                if (subst_.replacesWholeCall()) return replaced;
                // Only the name is replaced; the node list follows as written (or renamed).
                if (!(subst_.probeNodesAreNames() && subst_.substitutesNames()))
                    return replaced + std::string(src_.substr(n.begin + n.text.size(), n.end - n.begin - n.text.size()));
                std::string out = replaced + "(";
                for (size_t i = 0; i < args.size(); ++i) out += (i ? ", " : "") + args[i];
                return out + ")";
            }
            case Node::Kind::Call:
                if (n.fromOperator) return withChildren(n, n.begin, n.end);
                return call(n);
        }
        return {};
    }

private:
    std::string_view span(const Node& n) const { return src_.substr(n.begin, n.end - n.begin); }

    // The source text from `begin` to `end` with each child's text replaced by its rewrite.
    std::string withChildren(const Node& n, size_t begin, size_t end) {
        std::string out;
        size_t at = begin;
        for (const auto& child : n.children) {
            out.append(src_.substr(at, child->begin - at));
            out += rewrite(*child);
            at = child->end;
        }
        out.append(src_.substr(at, end - at));
        return out;
    }

    std::string call(const Node& n) {
        std::vector<std::string> args;
        if (subst_.replacesWholeCall()) {
            for (const auto& child : n.children) args.push_back(rewrite(*child));
            return subst_.substituteCall(n.text, args);
        }
        std::string name = subst_.substituteCall(n.text, args);
        return name + withChildren(n, n.begin + n.text.size(), n.end);
    }

    std::string_view src_;
    VecSubstExpressionObject& subst_;
};

}  // namespace

std::optional<std::string> substitute(std::string_view text, VecSubstExpressionObject& subst, std::string* error) {
    auto statements = parseLine(text, error);
    if (!statements) return std::nullopt;
    // Rewrite statement by statement, copying what lies between them (assignments, ';').
    std::string out;
    size_t at = 0;
    Rewriter rewriter(text, subst);
    for (const Statement& s : *statements) {
        const Node& e = *s.expression;
        out.append(text.substr(at, e.begin - at));
        out += rewriter.rewrite(e);
        at = e.end;
    }
    out.append(text.substr(at));
    return out;
}

}  // namespace wavex::lang

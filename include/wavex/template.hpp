// Text services of the host that functions use: the template resolver and the expression
// rewriter.
//
// Templates. Literal text is copied, with two kinds of markers:
//   %NAME%        a keyword, replaced by its value (lookup); %% is a literal percent sign
//   {EXPRESSION}  an expression of the language, evaluated by the host's interpreter and replaced
//                 by its value as text; braces may nest, and braces inside quotes do not count
// A keyword is a run of letters, digits and the characters _ . : - between two percent signs; a
// percent sign that does not start one is copied as it stands. A value is inserted as it is, not
// resolved again. With a context, a keyword is looked up as CONTEXT.NAME first, then as NAME.
// resolveTemplate sets its flag when a keyword is unknown, an expression fails, or a brace is
// left open; what it could not resolve stays in the text as written.
//
// Expression values as text: a string is itself, a number its shortest round-trip form ("0.001",
// "1e+300"), a complex number "(re,im)"; several elements are separated by ", ".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wavex {

class TemplateObject {
public:
    TemplateObject() = default;
    virtual ~TemplateObject() = default;

    // The value of a keyword; *found tells whether there is one. The plain resolver knows none.
    virtual std::string lookup(std::string_view key, bool* found);
    // %NAME%: the keyword's value (scoped by the context, see above); sets *failed if unknown.
    virtual std::string resolveKeyword(std::string_view key, std::string_view context, bool* failed);
    // Literal text between markers.
    virtual std::string processLiteral(std::string_view text);
    // {EXPRESSION}: its value as text, through the host's interpreter; sets *failed if it fails.
    virtual std::string evaluateExpression(std::string_view expression, bool* failed);

    std::string resolveTemplate(const std::string& text, const std::string& context, bool* flag);
};

// What the expression rewriter asks of its caller for each name and each call it meets.
class VecSubstExpressionObject {
public:
    virtual ~VecSubstExpressionObject() = default;
    // The text for an identifier (a vector name).
    virtual std::string substituteName(const std::string& name) = 0;
    // The text for a call of `function` whose arguments have already been rewritten. The probes
    // V(...) and I(...) are calls too, their node names the arguments.
    virtual std::string substituteCall(const std::string& function, const std::vector<std::string>& args) = 0;
    // Whether identifiers go through substituteName (otherwise they stay as written).
    virtual bool substitutesNames() const = 0;
    // Whether substituteCall's text replaces the whole call (otherwise only the function's name,
    // the rewritten arguments following as written).
    virtual bool replacesWholeCall() const = 0;
    // Whether the node names of probes go through substituteName before the call is rewritten.
    virtual bool probeNodesAreNames() const = 0;
};

// Rewrites an expression of the language: it is parsed, every name and call is visited left to
// right, arguments before their call, and replaced as `subst` says, and the result is printed in
// canonical form: binary operators with one blank on each side (a + b), unary operators without
// (-a), ", " between arguments and elements (f(a, b), [1, 2], (re, im)), v[i], numbers and strings
// as written, parentheses only where precedence needs them, statements joined by "; ". A text
// that does not parse is returned unchanged and the syntax error reported through the host's
// default message sink.
std::string vec_SubstituteExpression(const std::string& expression, VecSubstExpressionObject* subst);

// The text form of a value used in templates (see above).
struct Vector;
std::string templateText(const Vector& value);

}  // namespace wavex

#include "wavex/template.hpp"

#include "wavex/dynexport.hpp"
#include "wavex/scp_interface.hpp"

namespace wavex {
namespace {

bool isKeywordChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' ||
           c == ':' || c == '-';
}

// End of the expression that starts after the '{' at `open`: the matching '}', skipping quoted
// text; npos when it is never closed.
size_t closingBrace(const std::string& text, size_t open) {
    int depth = 1;
    for (size_t i = open + 1; i < text.size(); ++i) {
        char c = text[i];
        if (c == '"' || c == '\'') {
            size_t close = text.find(c, i + 1);
            if (close == std::string::npos) return std::string::npos;
            i = close;
        } else if (c == '{') {
            ++depth;
        } else if (c == '}' && --depth == 0) {
            return i;
        }
    }
    return std::string::npos;
}

}  // namespace

std::string templateText(const Vector& value) {
    std::string out;
    for (size_t i = 0; i < value.size(); ++i) {
        if (i) out += ", ";
        out += elementText(value, i);
    }
    return out;
}

std::string TemplateObject::lookup(std::string_view, bool* found) {
    *found = false;
    return {};
}

std::string TemplateObject::resolveKeyword(std::string_view key, std::string_view context, bool* failed) {
    bool found = false;
    std::string value;
    if (!context.empty()) value = lookup(std::string(context) + "." + std::string(key), &found);
    if (!found) value = lookup(key, &found);
    if (!found) *failed = true;
    return value;
}

std::string TemplateObject::processLiteral(std::string_view text) { return std::string(text); }

std::string TemplateObject::evaluateExpression(std::string_view expression, bool* failed) {
    // The interpreter's messages would be reported as the caller's errors; a failed expression is
    // only the template's failure.
    auto quiet = std::make_shared<CollectingMessageHandler>();
    VectorPtr value = dyn_GetScpInterface()->evaluateExpression(expression, quiet);
    if (!value) {
        *failed = true;
        return {};
    }
    return templateText(*value);
}

std::string TemplateObject::resolveTemplate(const std::string& text, const std::string& context, bool* flag) {
    bool failed = false;
    std::string out;
    size_t literal = 0;  // start of the literal text not yet copied
    auto flush = [&](size_t end) {
        if (end > literal) out += processLiteral(std::string_view(text).substr(literal, end - literal));
    };
    for (size_t i = 0; i < text.size();) {
        char c = text[i];
        if (c == '%') {
            if (i + 1 < text.size() && text[i + 1] == '%') {
                flush(i);
                out += '%';
                literal = i += 2;
                continue;
            }
            size_t j = i + 1;
            while (j < text.size() && isKeywordChar(text[j])) ++j;
            if (j < text.size() && text[j] == '%' && j > i + 1) {
                flush(i);
                bool unknown = false;
                std::string value = resolveKeyword(std::string_view(text).substr(i + 1, j - i - 1), context, &unknown);
                if (unknown) {
                    failed = true;
                    out.append(text, i, j + 1 - i);  // left as written
                } else {
                    out += value;
                }
                literal = i = j + 1;
                continue;
            }
        } else if (c == '{') {
            size_t close = closingBrace(text, i);
            if (close == std::string::npos) {
                failed = true;
                break;  // the rest is copied as literal text
            }
            flush(i);
            bool bad = false;
            std::string value = evaluateExpression(std::string_view(text).substr(i + 1, close - i - 1), &bad);
            if (bad) {
                failed = true;
                out.append(text, i, close + 1 - i);
            } else {
                out += value;
            }
            literal = i = close + 1;
            continue;
        }
        ++i;
    }
    flush(text.size());
    if (flag) *flag = failed;
    return out;
}

std::string vec_SubstituteExpression(const std::string& expression, VecSubstExpressionObject* subst) {
    std::string error;
    auto rewritten = dyn_GetScpInterface()->substituteExpression(expression, *subst, &error);
    if (rewritten) return *rewritten;
    dyn_GetDefaultMessageHandler()->error("%s", error);
    return expression;
}

}  // namespace wavex

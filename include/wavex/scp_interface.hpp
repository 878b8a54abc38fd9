// What the functions may ask of the interpreter running them, reached through the late-bound
// entry point dyn_GetScpInterface. The interpreter implements it; core and the functions see only
// this interface.
#pragma once

#include "wavex/messages.hpp"
#include "wavex/template.hpp"
#include "wavex/vector.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace wavex {

class ScpInterface {
public:
    virtual ~ScpInterface() = default;
    // Evaluates an expression in the workspace; null (with the reason reported to `messages`)
    // when it fails.
    virtual VectorPtr evaluateExpression(std::string_view text, const YRef<MessageHandler>& messages) = 0;
    // The vector bound to `name` (case ignored), or null.
    virtual VectorPtr findVector(std::string_view name) const = 0;
    // Rewrites an expression (see vec_SubstituteExpression); nullopt with *error set when it
    // does not parse.
    virtual std::optional<std::string> substituteExpression(std::string_view expression,
                                                            VecSubstExpressionObject& subst, std::string* error) = 0;
};

}  // namespace wavex

// The interpreter the late-bound entry points answer for on the current thread. Each evaluation
// sets it for its own duration; a program that calls the template or expression-rewriting API
// (TemplateObject, vec_SubstituteExpression) outside an evaluation sets it with a scope:
//
//     wavex::InterpreterScope scope(wx);
//     std::string text = keywords.resolveTemplate("gain {gain}", "", &failed);
#pragma once

namespace wavex {

class Interpreter;

class InterpreterScope {
public:
    // Makes `interpreter` the current one on this thread until the scope ends, when the previous
    // one (or none) is current again.
    explicit InterpreterScope(Interpreter* interpreter);
    ~InterpreterScope();
    InterpreterScope(const InterpreterScope&) = delete;
    InterpreterScope& operator=(const InterpreterScope&) = delete;

private:
    Interpreter* saved_;
};

}  // namespace wavex

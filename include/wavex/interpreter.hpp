// The expression language's interpreter: a workspace of named vectors, the evaluator, and the
// command-line events. This is the embedding API's entry point:
//
//     auto sink = std::make_shared<wavex::CollectingMessageHandler>();
//     wavex::Interpreter wx(sink);
//     wx.setVector("v", wavex::makeCurve({0, 1, 2}, {1, 4, 9}));
//     wavex::VectorPtr r = wx.evaluate("sqrt(v)");   // null on failure, messages in `sink`
#pragma once

#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/scp_interface.hpp"
#include "wavex/template.hpp"
#include "wavex/vector.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

class Interpreter : public ScpInterface {
public:
    // `messages` receives every error: syntax errors, unknown names, the functions' messages.
    explicit Interpreter(YRef<MessageHandler> messages);
    ~Interpreter() override;  // leaves as finish() does, if that was not called
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;

    // Receives the value of each expression statement with the statement's text as its label.
    using Printer = std::function<void(const VectorPtr& value, std::string_view label)>;

    // Runs one command line: statements separated by ';', each `name = expression` (binds the
    // value) or an expression (passes its value to `print`). Stops at the first statement that
    // fails and returns false; the line is parsed whole first, so a syntax error runs nothing.
    // Raises "PostCli" afterwards.
    bool runLine(std::string_view line, const Printer& print);

    // Evaluates one expression; null when it fails (the reason reported).
    VectorPtr evaluate(std::string_view expression);
    VectorPtr evaluateExpression(std::string_view text, const YRef<MessageHandler>& messages) override;
    VectorPtr evaluateWith(std::string_view text, Bindings bindings, const YRef<MessageHandler>& messages) override;

    void setVector(std::string_view name, VectorPtr value);
    VectorPtr findVector(std::string_view name) const override;
    std::optional<std::string> substituteExpression(std::string_view expression, VecSubstExpressionObject& subst,
                                                    std::string* error) override;
    std::vector<std::string> vectorNames() const;

    // Sets a host option; returns "" or the reason it could not be set.
    std::string setOption(std::string_view name, std::string_view value);

    // Safe mode, for scripts from elsewhere: functions that write, delete or move files, change
    // the environment or run commands are refused ("Function 'DeleteFile' is not allowed in safe
    // mode"), in templates and expressions evaluated on the script's behalf as well.
    void setSafeMode(bool on);
    bool safeMode() const;

    // Leaves the command-line mode: raises "ExitCli" then "Exit" (once).
    void finish();

    const YRef<MessageHandler>& messages() const { return messages_; }

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    YRef<MessageHandler> messages_;
};

}  // namespace wavex

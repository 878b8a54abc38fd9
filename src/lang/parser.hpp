// The expression language's syntax: a command line is statements separated by ';', each
// `name = expression` or an expression.
//
// Grammar, lowest precedence first:
//   or      := and { "||" and }
//   and     := equal { "&&" equal }
//   equal   := compare { ("==" | "!=") compare }
//   compare := sum { ("<" | "<=" | ">" | ">=") sum }
//   sum     := product { ("+" | "-" | "&") product }
//   product := power { ("*" | "/" | "%") power }
//   power   := unary [ "^" power ]                       right-associative
//   unary   := ("-" | "!") unary | postfix
//   postfix := primary { "[" or "]" }
//   primary := number | string | "[" [ or { "," or } ] "]" | "(" or [ "," or ] ")"
//            | name "(" [ or { "," or } ] ")" | name
//            | ("V" | "I") "(" node { "," node } ")"     probes, node names taken as written
//                                                      (how many a probe takes is checked when it
//                                                      is evaluated, so rewriters see any form)
// A statement may instead be a command: `help [NAME]`, `functions [PATTERN]` or `vectors`, with
// its argument taken as written up to ';'.
// Operators become calls of the underscore functions (a+b is _Plus(a, b), v[2] is _Index(v, 2),
// (1, 2) is _Comma(1, 2)). `#` starts a comment outside strings.
#pragma once

#include "wavex/function.hpp"
#include "wavex/template.hpp"
#include "wavex/vector.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::lang {

struct Node {
    enum class Kind {
        Constant,  // number or string literal: `value`
        List,      // vector literal [a, b, ...]: `children`
        Name,      // vector or constant named `text`
        Call,      // function `text` applied to `children`
        Probe,     // V(...) or I(...): `text` is "V" or "I", `nodes` the node names
    };
    Kind kind;
    size_t position = 0;  // offset of the node's text in the line, for messages
    size_t begin = 0;     // the node's text is line[begin, end)
    size_t end = 0;
    bool fromOperator = false;  // a Call the parser made for an operator, not one written as f(...)
    std::string text;
    std::vector<std::unique_ptr<Node>> children;
    std::vector<std::string> nodes;
    VectorPtr value;
    mutable const FuncInfo* function = nullptr;  // resolved at the first call
};

struct Statement {
    std::optional<std::string> target;  // set for `name = expression`
    std::unique_ptr<Node> expression;   // null for a command
    std::string text;                   // the expression (or command) as written
    std::string command;                // "help", "functions" or "vectors" for those commands
    std::string argument;               // the command's argument, unquoted
};

// Parses a command line. On a syntax error returns nullopt and sets *error to a message that
// shows the line and marks where it went wrong.
std::optional<std::vector<Statement>> parseLine(std::string_view line, std::string* error);

// Rewrites the names and calls of a command line as `subst` says (see vec_SubstituteExpression);
// nullopt with *error set when it does not parse.
std::optional<std::string> substitute(std::string_view text, VecSubstExpressionObject& subst, std::string* error);

}  // namespace wavex::lang

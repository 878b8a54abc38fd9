// The commands that help a user find their way: `help`, `help NAME`, `functions [PATTERN]` and
// `vectors`, and the suggestions of close names that messages about unknown names make.
#pragma once

#include "wavex/interpreter.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace wavex::lang {

// Runs a command statement (see parser.hpp): its text as a string vector, one line per element;
// null, with the reason reported, when it cannot (help of an unknown name).
VectorPtr runCommand(std::string_view command, std::string_view argument, const Interpreter& wx,
                     MessageHandler& messages);

// "; did you mean 'XFromY'?" naming the closest of `candidates` to `name` (case ignored), or ""
// when none is close.
std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates);

// The names of the functions a user can call, aliases included.
std::vector<std::string> functionNames();

}  // namespace wavex::lang

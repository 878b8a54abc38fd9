// Printing values: JSON Lines for programs, aligned text for people.
#pragma once

#include "wavex/vector.hpp"

#include <string>
#include <string_view>

namespace wavex::io {

// Appends `value` as one JSON object and a newline:
//   {"type":"real"|"complex"|"string","phys":CODE,"unit":"V","name":"...","y":[...],
//    "x":null|{"type":"real"|"complex","phys":CODE,"unit":"s","name":"...","values":[...]},
//    "divisions":null|[{"length":N,"label":"..."|null},...],"expr":"...","stmt":N}
// Complex numbers are [re, im]; null string elements are null; NaN and infinities are the strings
// "NaN", "Infinity", "-Infinity"; every other number reads back to the same double. The values of
// all divisions follow one another; "divisions" is null for a vector of one unlabelled division.
// A null value prints as an empty real vector. "expr" (the statement's text) and "stmt" (its
// number) are written when `stmt` is not 0.
void appendJson(std::string& out, const VectorPtr& value, std::string_view expr = {}, size_t stmt = 0);

// Appends `text` as a JSON string. Valid UTF-8 passes through; a byte that is not part of a
// valid UTF-8 sequence is read as Latin-1 and escaped (\u00e9), so any byte string gives valid
// JSON.
void appendJsonString(std::string& out, std::string_view text);

// Appends `value` for people, in engineering notation with units:
// - one number per run (or nothing) under a `label` (the statement's text): one line per run,
//   "LABEL = VALUE UNIT" or "LABEL: empty", followed by "   # RUN" when the value has runs;
// - other values without x-values: one element per line ("20", "1.5m V", "3 + j4");
// - a curve: a header naming the x and y columns with their units, then one row per point;
// - several divisions (or a labelled one): one block per division headed by its label (or
//   "division N"), blocks separated by a blank line;
// - strings as they are, a null element as an empty line.
// `label` also names the y column of a curve whose vector has no name. Without a label, an empty
// or null value prints nothing.
void appendText(std::string& out, const VectorPtr& value, std::string_view label);

// Whether appendText prints `value` as headed blocks (a curve, several divisions or a labelled
// one) rather than as bare values; a printer of several values separates such blocks from their
// neighbours with a blank line.
bool textHasHeadings(const VectorPtr& value);

}  // namespace wavex::io

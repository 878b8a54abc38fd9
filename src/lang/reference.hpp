// The function reference: what `help NAME` shows and docs/functions.md collects, rendered from the
// reference entry each function carries in its registration row.
#pragma once

#include "wavex/function.hpp"

#include <string>
#include <string_view>

namespace wavex::lang {

// The heading a function is filed under in the reference: its family, named after the source
// file that registers it ("Interpolation and crossings").
std::string familyTitle(const FuncInfo& f);
// Where that family stands in the reference: families sort by this, then by title.
int familyRank(const FuncInfo& f);

// One function's entry as Markdown: heading, signature, summary, what it returns, notes, other
// names, and its example followed by `exampleOutput` (what the example prints) when that is given.
std::string referenceEntry(const FuncInfo& f, std::string_view exampleOutput = {});

// Whether a function's entry is complete: signature, summary, what it returns and an example.
bool hasReference(const FuncInfo& f);

}  // namespace wavex::lang

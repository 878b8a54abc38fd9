// `wavex --reference FILE`: the function reference as one Markdown file.
#pragma once

#include <string>

namespace wavex::cli {

// Writes the reference of every registered function to `path`, grouped by family after an index
// of names and summaries, each entry with what its example prints (every example runs in a fresh
// session, in an empty scratch directory). Returns false, naming them on standard error, when a
// function has no complete entry or its example fails; the file is written either way.
bool writeReference(const std::string& path);

}  // namespace wavex::cli

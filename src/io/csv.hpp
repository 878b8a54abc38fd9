// Loading curves from CSV files.
//
// The first line that is neither blank nor a comment is the header; it names the columns. A name
// may carry its unit in brackets (`time[s]`, `out[V]`, `psd[V^2/Hz]`, `gain[]` for a plain
// number). Without brackets the first column gets s when it is called time and Hz when it is
// called frequency or freq (any case); every other column is a plain number. Names may be quoted
// ("v(a,b)"), with "" for a quote inside.
//
// The first column is the reference (x-values) of all others and is loaded as a vector too; every
// vector of a file shares one copy of the x-values. A pair of columns NAME.re and NAME.im makes one
// complex vector NAME. The reference must be real and finite.
//
// A blank line ends a division (one per run of a stepped analysis): the next row starts the next
// one. A comment line `# run: LABEL` names the division that follows; after rows it also starts a
// new division. Other lines beginning with `#` are comments.
//
// Every problem is one message "FILE:LINE: what" (or "FILE: what" for the whole file), and nothing
// is loaded.
#pragma once

#include "io/load.hpp"
#include "wavex/vector.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::io {

// The vectors of CSV text, in column order (the reference first); `fileName` is used in messages.
// On failure returns nullopt and sets *error.
std::optional<std::vector<NamedVector>> parseCsv(std::string_view text, std::string_view fileName,
                                                 std::string* error);

// The vectors of a CSV file; `progress` hears how far parsing has come.
std::optional<std::vector<NamedVector>> loadCsv(const std::string& path, std::string* error,
                                                const Progress& progress = {});

}  // namespace wavex::io

// Loading data files as named vectors: CSV, SPICE raw files (both dialects, see raw.hpp) and
// Touchstone files.
//
// loadData picks the reader by the file's first bytes, then by its name:
//   - "Title:" at the start, in 8-bit text or in UTF-16LE, or a name ending in .raw: a raw file
//     (which the raw reader refuses when it does not begin so);
//   - a name ending in .sNp (N ports, any N) or .ts, or text whose first line that is not blank
//     starts with '!' (a Touchstone comment) or "[Version]": a Touchstone file;
//   - everything else: CSV.
//
// A Touchstone file becomes one complex vector per parameter, S11 ... Snn (or Y, Z, H, G; with ten
// ports or more the indices are separated, S1_10), over the frequency in Hz, plus the vector
// `frequency` itself. Two-port noise data becomes NFmin (dB), GammaOpt (complex) and Rn (ohm)
// over their own frequencies. Version 2 Z and Y parameters are in ohm and siemens; version 1 Y and
// Z data are normalised to the reference resistance (as the file writes them) and plain numbers,
// like S, H and G parameters.
#pragma once

#include "wavex/vector.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::io {

struct NamedVector {
    std::string name;
    VectorPtr value;
};

// Told now and then how far a load has come, in bytes of the file.
using Progress = std::function<void(uint64_t done, uint64_t total)>;

enum class DataFormat { Csv, Raw, Touchstone };

// The reader for a file whose first bytes are `head` (a few hundred are enough) and whose name is
// `path`.
DataFormat detectFormat(std::string_view head, std::string_view path);

// The vectors of a data file. On failure returns nullopt and sets *error to one message naming
// the file and what is wrong.
std::optional<std::vector<NamedVector>> loadData(const std::string& path, std::string* error,
                                                 const Progress& progress = {});

// The vectors of Touchstone text; `fileName` gives the port count (.sNp) when the text has no
// [Number of Ports], and names the file in messages.
std::optional<std::vector<NamedVector>> parseTouchstone(std::string_view text, std::string_view fileName,
                                                        std::string* error);

}  // namespace wavex::io

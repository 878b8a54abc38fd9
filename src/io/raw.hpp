// Loading SPICE raw files: a simulator's record of its analyses, in two dialects.
//
// The SPICE3 format (ngspice writes it). A plain-text header,
//     Title: rc filter            Date: ...            Plotname: Transient Analysis
//     Flags: real                 No. Variables: 3     No. Points: 630
//     Variables:
//         0  time    time
//         1  v(in)   voltage
//         2  i(v1)   current
//     Binary:                     (or Values:)
// then the data, point after point, each point holding every variable's value in order: doubles
// after "Binary:" (under the flag complex, two doubles each: real then imaginary part), text after
// "Values:" (each point its index, then the values, "re,im" when complex). A file may hold several
// plots one after another, each with its own header.
//
// The UTF-16 raw format: the same header in UTF-16LE. Its binary data stores, in a real plot, the
// first variable as a double and the others as float32 (all as doubles under the flag double; all
// as float32 in an operating point or transfer function, which have no sweep), in a complex plot
// every value as two doubles. Under the flag fastaccess the values come variable after variable
// instead of point after point. The format marks some time values by setting their sign bit, so
// times are read as their absolute values. Its text variant ("Values:") is read like the SPICE3 one.
//
// What the vectors are:
//   - every variable is a vector named as the simulator wrote it (v(out), i(r1)), with its unit
//     from the variable's type (time s, frequency Hz, voltage V, current A, ...; an unknown type
//     is a plain number);
//   - the first variable of a plot is the reference (x-values) of the others, shared by them and
//     loaded as a vector too; a complex reference whose imaginary parts are all zero (the
//     frequency of an AC analysis) is real;
//   - a reference that goes back to its first value starts a new run: each run is a division (a
//     stepped or nested sweep). The UTF-16 format's stepped runs are labelled with the step
//     values of its log when those are given and as many as the runs;
//   - the first plot is loaded under the plain names; plots right after it of the same analysis
//     with the same variables (runs of a control loop) join it as further divisions, labelled
//     with their titles when those differ. Every other plot's vectors are loaded as PLOT.NAME,
//     the plot named as the simulator names it (tran1, ac2, dc1, op3, noise1 ...: the analysis
//     and its count in the file).
//
// Bad input is one message "FILE: what" (or "FILE:LINE: what" for a line of a header), and nothing
// is loaded: a missing header or field, an unknown flag, two variables of one name (letter case
// ignored), a name that is not UTF-8, data that ends before the points the header announces or
// that holds more. Nothing is allocated on a header's word alone: the data present bounds it.
#pragma once

#include "io/load.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavex::io {

// The vectors of a raw file held in memory; `stepLabels` are the labels of stepped runs (see
// readStepLabels). On failure returns nullopt and sets *error.
std::optional<std::vector<NamedVector>> parseRaw(std::string_view bytes, std::string_view fileName,
                                                 std::string* error,
                                                 const std::vector<std::string>& stepLabels = {});

// The vectors of a raw file, read a buffer at a time so that the data is in memory once. Stepped
// runs of the UTF-16 format take their labels from the simulator's log beside the file (the same
// name ending in .log), when there is one.
std::optional<std::vector<NamedVector>> loadRaw(const std::string& path, std::string* error,
                                                const Progress& progress = {});

// The step values of a simulator's log, one per ".step" line ("r=1k c=10n" from ".step r=1k
// c=10n"), in order. The log may be UTF-16LE (as the UTF-16 format's simulator writes it) or
// 8-bit text.
std::vector<std::string> readStepLabels(std::string_view log);

}  // namespace wavex::io

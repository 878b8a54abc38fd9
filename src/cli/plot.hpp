// Pictures of values: `wavex --plot FILE`, drawn with PLplot's cairo driver.
//
// Every value added is drawn on one plot, each division of it as its own curve in its own colour:
//   - x: the values' reference, the axis titled with its name and unit ("time (s)"). All values
//     must share the kind of x-axis (its unit), or nothing is drawn;
//   - y: real values as they are, complex values as their magnitude (the axis says so), titled
//     with the quantity and unit ("voltage (V)", "magnitude (V)");
//   - the x-axis is logarithmic for a frequency reference spanning more than two decades, the
//     y-axis for magnitudes of complex values spanning more than two decades (a Bode plot);
//     PlotOptions override both;
//   - a legend names the curves when there are several: the statement, the division's label (or
//     "division N"), or both; it sits in a corner of the plot that no curve crosses, else beside
//     the plot, and lists twelve curves at most ("... and N more"); the title is the statements;
//   - tick labels in engineering notation (200µ, 1.5k, 10M); a gap in the data (NaN, or a value a
//     logarithmic axis cannot show) breaks its curve;
//   - a curve of many more points than the picture has pixel columns is reduced to the first,
//     lowest, highest and last point of each column, which draws the same picture.
// The picture's kind follows the file's extension: .png (1200 x 800 pixels), .svg or .pdf.
#pragma once

#include "wavex/vector.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace wavex::cli {

struct PlotOptions {
    bool logX = false;  // a logarithmic x-axis even where it would be linear
    bool linY = false;  // a linear y-axis even where it would be logarithmic
};

// Whether `value` is drawn rather than printed: a curve, that is numbers (real or complex) over
// real x-values, of more than one point in some division. Single values, lists without x-values
// (crossings, say) and strings are printed.
bool plottable(const VectorPtr& value);

// "" when `path` ends in an extension the plot writes, else the reason it does not.
std::string checkPlotPath(std::string_view path);

class Plot {
public:
    // Adds the value of the statement `label`.
    void add(VectorPtr value, std::string label);
    bool empty() const { return values_.empty(); }

    // Draws the values into `path`; "" on success, else the reason it could not.
    std::string write(const std::string& path, const PlotOptions& options) const;

private:
    struct Entry {
        VectorPtr value;
        std::string label;
    };
    std::vector<Entry> values_;
};

}  // namespace wavex::cli

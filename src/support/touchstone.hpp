// AcTableData: the reader of Touchstone network-parameter files (S, Y, Z, H or G parameters of an
// n-port against frequency), versions 1.x and 2.0/2.1.
//
// What it gives: the frequency points in file order, frequencies in Hz, each with its n×n complex
// parameters in row-major order (row r, column c at index n·r + c), whatever the file's layout:
// version 1 two-port data in the order 11, 21, 12, 22, version 2 [Two-Port Data Order] 12_21 or
// 21_12, and [Matrix Format] Lower or Upper (the other triangle mirrored) all come out the same.
// DB and MA values are converted to complex numbers (angles in degrees; multiples of 90° exact).
// The values are those of the file: version 1 Y, Z, H and G data stay normalised to the reference
// resistance as written there (see info().references). Two-port noise parameters come apart from
// the network data: in version 1 they follow it and are recognised by their frequency dropping
// back, in version 2 they follow [Noise Data]; their Rn is given in ohms in both versions.
//
// The port count is the caller's, from 1 to kMaxPorts. A [Number of Ports] that disagrees with
// it, or a file name of the form NAME.sNp whose N does, is one message and stops the reading.
// Memory grows with the values actually read, never with what the port count or the file claims.
//
// Problems: each becomes one message, "Line L: ..." where a line is to blame; reading goes on
// after a problem where it can, and stops after 100 messages. build() succeeds only when the
// whole file was read without a problem and gave at least one frequency point; otherwise the
// table is left empty, so a half-read file is never used by mistake.
#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// Below the lowest frequency of the table: the lowest point's values (Hold), or the line through
// the two lowest points, in real and imaginary parts (Linear).
enum class DcExtractionMethod : int { Hold = 0, Linear = 1 };
// Between two points: the lower point's values (Step), real and imaginary parts linear in
// frequency (Linear), or magnitude and phase linear in frequency, the phase taking the shorter
// way round (Polar). Above the highest frequency the highest point's values hold.
enum class AcTableInterpMethod : int { Step = 0, Linear = 1, Polar = 2 };

// One frequency point: a view into the table, valid while the table lives.
struct AcTableFrequencyPoint {
    double frequency = 0;                         // Hz
    std::span<const std::complex<double>> values; // n×n, row-major

    // Value k, or complex zero past the end.
    std::complex<double> value(size_t k) const { return k < values.size() ? values[k] : std::complex<double>{}; }
};

// Two-port noise parameters at one frequency.
struct TouchstoneNoisePoint {
    double frequency;                // Hz
    double minNoiseFigure;           // dB
    std::complex<double> gammaOpt;   // optimum source reflection coefficient
    double noiseResistance;          // effective noise resistance Rn, ohms
};

// What the file says about its data.
struct TouchstoneInfo {
    enum class Format { DB, MA, RI };
    enum class Matrix { Full, Lower, Upper };
    int version = 1;                 // 1, or 2 for [Version] 2.0 and 2.1
    char parameter = 'S';            // S, Y, Z, H or G
    Format format = Format::MA;
    Matrix matrix = Matrix::Full;
    std::vector<double> references;  // reference resistance of each port, ohms
    std::string mixedModeOrder;      // [Mixed-Mode Order] as written, or empty
};

class AcTableData {
public:
    static constexpr int kMaxPorts = 10000;
    static constexpr size_t kMaxMessages = 100;

    AcTableData(std::string fileName, int numPorts, DcExtractionMethod dc = DcExtractionMethod::Hold,
                AcTableInterpMethod interp = AcTableInterpMethod::Linear);

    // Reads and parses the file; appends a message for each problem to *errors (which may be
    // null). True when a usable table resulted.
    bool build(std::vector<std::string>* errors);
    // The same for Touchstone text held in memory (the file name is not used).
    bool buildFromText(std::string_view text, std::vector<std::string>* errors);

    const std::string& fileName() const { return fileName_; }
    int numPorts() const { return numPorts_; }
    size_t numPoints() const { return frequencies_.size(); }
    AcTableFrequencyPoint get(size_t i) const;
    std::span<const double> frequencies() const { return frequencies_; }
    // Every point's n×n values, one point after another.
    std::span<const std::complex<double>> values() const { return values_; }
    std::span<const TouchstoneNoisePoint> noise() const { return noise_; }
    const TouchstoneInfo& info() const { return info_; }

    // The n×n parameters at `frequency` (Hz) by the table's interpolation and DC extraction
    // methods; `out` must hold n×n values. An empty table gives zeros.
    void valuesAt(double frequency, std::span<std::complex<double>> out) const;

private:
    friend class TouchstoneParser;
    void clear();

    std::string fileName_;
    int numPorts_;
    DcExtractionMethod dc_;
    AcTableInterpMethod interp_;
    TouchstoneInfo info_;
    std::vector<double> frequencies_;
    std::vector<std::complex<double>> values_;
    std::vector<TouchstoneNoisePoint> noise_;
};

}  // namespace wavex

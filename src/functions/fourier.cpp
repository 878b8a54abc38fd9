// Fourier analysis: fft, FourierWindow, Fourier and SpectrumUniv.
//
// Sign convention of every transform here: X[k] = Σ x_j·e^(+2πi·jk/N). A component A·cos(ωx + φ)
// therefore reads as A·e^(−iφ): the imaginary parts have the opposite sign of the e^(−…)
// convention. Amplitudes are scaled so that a component of amplitude A reads A, and the DC term
// reads the mean (its real part is halved after the scaling by 2/N).
//
// Each function works on one curve at a time (a multi-division argument is taken a division at a
// time). x values are the curve's reference, a complex reference by its real parts. The spectra
// lie over a complex reference of frequencies (k·Δf, 0) whose unit is 1 / (the x unit) and whose
// name is that unit's name ("Hz" for a curve over time).
#include "support/fft.hpp"
#include "support/interpolation.hpp"
#include "support/text.hpp"
#include "support/numbers.hpp"
#include "wavex/function.hpp"
#include "wavex/messages.hpp"
#include "wavex/options.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

namespace wavex {
namespace {

constexpr double kTwoPi = 6.283185307179586476925286766559;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Argument i's values, or none when the argument is absent.
std::span<const double> optionalValues(const FuncArgs& args, int i) {
    if (args.count() <= i || !args.data(i)) return {};
    return {args.data(i), static_cast<size_t>(args.length(i))};
}

// Units of a spectrum of argument 0: its y unit over 1 / (its x unit), named after that unit.
void setSpectrumUnits(const FuncArgs& args, FuncResult* result) {
    PhysType frequency = units::div(units::Number, args.refPhysType(0));
    result->setPhysType(args.physType(0), frequency);
    std::string_view name = sp_GetPhysTypeName(frequency);
    if (!name.empty()) result->setRefName(std::string(name));
}

// The result of fft and SpectrumUniv: the first N/2 terms of the windowed transform of the n
// samples y (zero-padded to N), scaled by 2/N with the DC term halved, over frequencies k·df.
void writeSpectrum(const FuncArgs& args, FuncResult* result, const double* y, size_t n, size_t N,
                   CosineWindow window, double df) {
    const auto half = static_cast<int64_t>(N / 2);
    result->setType(VD_COMPLEX, VD_COMPLEX);
    Complex* out = result->makeComplex(half, RESULT_RESHAPED, -1);
    Complex* f = result->makeComplexRef(half, RESULT_RESHAPED, -1);
    realSpectrum(y, n, N, window, 2.0 / static_cast<double>(N), out);
    out[0].real(out[0].real() / 2);
    for (int64_t k = 0; k < half; ++k) f[k] = Complex(static_cast<double>(k) * df, 0);
    setSpectrumUnits(args, result);
}

// ---- fft ---------------------------------------------------------------------------------------
//
// fft(data [, window]): the one-sided spectrum of a real curve. N is the smallest power of two
// not less than the length L; the curve is zero-padded to N points and multiplied, padding
// included, by the window named by the second argument (case ignored):
//   "hamming"  1.08 − 0.92·cos(2πi/N)
//   "none"     1
//   any other name, or none: 1 − cos(2πi/N) (a Hann window scaled by 2 to a mean of 1, so that
//              a component on a bin reads its amplitude).
// Result: N/2 complex values X[k]/(N/2), k < N/2, the real part of the DC term halved, over the
// frequencies k·Δf with Δf = 1/((x[1] − x[0])·N): the step comes from the first interval alone.
// Unit of y kept. Messages: "FFT function for complex data not yet implemented." (complex data),
// "Need at least two points for FFT" (L < 2), "Argument %d in function '%s' has no reference
// (xvalues)". NaN in the data makes every value NaN; equal first x values make Δf infinite.

CosineWindow fftWindow(const FuncArgs& args) {
    std::string_view name = args.count() > 1 ? args.string(1) : std::string_view();
    if (iequals(name, "hamming")) return {1.08, 0.92};
    if (iequals(name, "none")) return {1, 0};
    return {1, 1};
}

// The x-values of the curve a transform takes, or null after saying why there are none: fewer
// than two points, or no reference.
const double* transformAbscissa(const FuncArgs& args, const FuncInfo* info, MessageHandler& messages,
                                std::vector<double>& scratch) {
    if (args.length(0) < 2) {
        messages.error("Need at least two points for FFT");
        return nullptr;
    }
    return args.neededRefData(0, scratch, *info, messages);
}

FUNC_ERROR fft(WAVEX_HANDLER_PARAMS) {
    if (args.type(0) != VD_REAL) {
        messages->error("FFT function for complex data not yet implemented.");
        return FUNC_FAILED;
    }
    const int64_t length = args.length(0);
    std::vector<double> scratch;
    const double* x = transformAbscissa(args, info, *messages, scratch);
    if (!x) return FUNC_FAILED;
    const size_t n = static_cast<size_t>(length);
    const size_t N = fftSize(n);
    const double df = 1 / ((x[1] - x[0]) * static_cast<double>(N));
    writeSpectrum(args, result, args.data(0), n, N, fftWindow(args), df);
    return FUNC_OK;
}

// ---- FourierWindow -----------------------------------------------------------------------------
//
// FourierWindow(data [, name [, period]]): the data multiplied by an amplitude-corrected window
// over its own x values, u_i = (x_i − x_0)/T, T = period or x[L−1] − x[0]. Names (case ignored):
//   "hanning" (default)  1 − cos 2πu
//   "blackman"           1 − 1.1904761904761905·cos 2πu + 0.1904761904761905·cos 4πu
//                        (the 0.42/0.5/0.08 window divided by 0.42)
//   "hamming"            1 − 0.8518518518518519·cos(2π(x_i − y_0)/T): the phase takes the first
//                        data value y_0 where the others take x_0, as scripts rely on
//   "rectangular"        the window itself, 1 at every point, not the windowed data
//   any other name       NaN at every point.
// Result: real, L points over the data's x values, units of the data. Never reports: no x values,
// a period not above 0, or a span that is zero or not finite give success with no result.

enum class Window { Hanning, Blackman, Hamming, Rectangular, Count };

struct WindowShape {
    Window id;
    const char* name;
    double a0, a1, a2;     // w(u) = a0 − a1·cos 2πu + a2·cos 4πu
    bool phaseFromFirstY;  // u = (x_i − y_0)/T
    bool windowOnly;       // the result is w itself
};

constexpr WindowShape kWindows[] = {
    {Window::Hanning, "hanning", 1, 1, 0, false, false},
    {Window::Blackman, "blackman", 1, 1.1904761904761905, 0.1904761904761905, false, false},
    {Window::Hamming, "hamming", 1, 0.8518518518518519, 0, true, false},
    {Window::Rectangular, "rectangular", 1, 0, 0, false, true},
};

static_assert(rowsInOrder(kWindows, &WindowShape::id, [](const WindowShape& c) { return c.name != nullptr; }),
              "row i holds window i, with its name");

const WindowShape* findWindow(std::string_view name) {
    for (const WindowShape& w : kWindows)
        if (iequals(name, w.name)) return &w;
    return nullptr;
}

FUNC_ERROR fourierWindow(WAVEX_HANDLER_PARAMS) {
    const int64_t length = args.length(0);
    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    const bool periodGiven = args.count() > 2;
    if (!x || length == 0 || (periodGiven && !(args.scalar(2) > 0))) return FUNC_OK;
    const double period = periodGiven ? args.scalar(2) : x[length - 1] - x[0];
    if (period == 0 || !std::isfinite(period)) return FUNC_OK;

    const double* y = args.data(0);
    const WindowShape* shape = findWindow(args.count() > 1 ? args.string(1) : "hanning");
    result->setType(VD_REAL, args.refType(0));
    result->setPhysType(args.physType(0), args.refPhysType(0));
    double* out = result->makeReal(length, RESULT_LIKE_ARGS, args.totalLength(0));
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    if (!shape) {
        std::fill(out, out + length, kNaN);
        return FUNC_OK;
    }
    const double origin = shape->phaseFromFirstY ? y[0] : x[0];
    for (int64_t i = 0; i < length; ++i) {
        const double u = (x[i] - origin) / period;
        double w = shape->a0 - shape->a1 * std::cos(kTwoPi * u);
        if (shape->a2 != 0) w += shape->a2 * std::cos(2 * kTwoPi * u);
        out[i] = shape->windowOnly ? w : w * y[i];
    }
    return FUNC_OK;
}

// ---- Fourier -----------------------------------------------------------------------------------
//
// Fourier(data, f0, n [, options]): harmonics 0 … n−1 of the fundamental f0 over the last whole
// period of the data, [x_end − 1/f0, x_end]:
//   c_k = (2/T)·∫ y(t)·e^(+2πi·k·f0·t) dt,  c_0 = (1/T)·∫ y(t) dt (the mean),
// so a component A·cos(2πk·f0·t + φ) gives c_k = A·e^(−iφ), its phase referred to x = 0 (to the
// time origin, not to the start of the period analysed), in the sign convention of fft.
// options = [mode, order]:
//   mode 0 (default; any value but 1): the period is resampled at P evenly spaced points with the
//     interpolation of the given order (1 linear or 2 quadratic; default 2; above 2 is 2, below 1
//     is 1), P = the option "InterpPts" (1024) rounded up to a power of two and to at least 2n
//     (within what memory allows), and the integral is the sum over them (exact for harmonics
//     below P/2 of a band-limited curve).
//   mode 1: the integral of the curve taken as straight lines between its own points, in closed
//     form over each interval, no resampling: for curves with edges sharper than the resampling
//     grid (switching waveforms); the order plays no part.
// Result: n complex values over the complex frequencies (k·f0, 0); unit of y; the reference unit
// and name as fft's. Never reports: fewer than 3 points, no x values, f0 not above 0, n below 1,
// data shorter than one period (to 1e-9 of it), n beyond what memory allows, or (mode 1) more than
// 10^10 harmonics × pieces of work give success with no result.

constexpr int kIntegrateMode = 1;
constexpr double kMaxIntegrationTerms = 1e10;  // harmonics × pieces: some seconds of work

// e^(+2πi·k·q) for a real number of cycles q, reduced to the fraction of a cycle first so that
// a large q (a late start time at a high frequency) keeps its accuracy.
Complex cycles(double q) {
    const double f = q - std::round(q);
    return {std::cos(kTwoPi * f), std::sin(kTwoPi * f)};
}

// Σ_j y_j·e^(+2πi·k·f0·t_j)·2/P over P points resampled from start, k < n.
void harmonicsResampled(const double* y, const double* x, int64_t length, double f0, double start, int order,
                        Complex* out, int64_t n) {
    const int64_t requested = std::max<int64_t>(sp_GetIntOption("InterpPts", 1024), 2 * n);
    const size_t P = std::min(fftSize(static_cast<size_t>(requested)),
                              std::bit_floor(static_cast<size_t>(support_MaxResamplePoints())));
    Array<double> samples(P);
    support_Resample(y, x, length, start, 1 / (f0 * static_cast<double>(P)), static_cast<int64_t>(P), order,
                     samples.data());
    Array<Complex> spectrum(P / 2);
    realSpectrum(samples.data(), P, P, {1, 0}, 2.0 / static_cast<double>(P), spectrum.data());
    spectrum[0].real(spectrum[0].real() / 2);
    // The sum ran over j from the start of the period: refer the phases to x = 0.
    const double q = f0 * start;
    for (int64_t k = 0; k < n; ++k) out[k] = spectrum[k] * cycles(static_cast<double>(k) * (q - std::round(q)));
}

// ∫_0^1 (1 − s)·e^(iθs) ds and ∫_0^1 s·e^(iθs) ds: the weights of the two end values of a
// straight piece. Near θ = 0 the closed forms cancel, so the series is summed there instead.
void pieceWeights(double theta, Complex* first, Complex* second) {
    if (std::fabs(theta) < 0.5) {
        Complex term = 1, a = 0, b = 0;  // term = (iθ)^m / m!
        for (int m = 0; m < 18 && std::abs(term) > 1e-18; ++m) {
            a += term / double((m + 1) * (m + 2));
            b += term / double(m + 2);
            term *= Complex(0, theta / (m + 1));
        }
        *first = a;
        *second = b;
        return;
    }
    const Complex e(std::cos(theta), std::sin(theta));
    const Complex whole = (e - 1.0) / Complex(0, theta);          // ∫ e^(iθs) ds
    *second = (e * Complex(1, -theta) - 1.0) / (theta * theta);  // ∫ s·e^(iθs) ds
    *first = whole - *second;
}

// The first piece (x[i], x[i+1]) that reaches past `start`.
int64_t firstPiece(const double* x, int64_t length, double start) {
    int64_t i = 0;
    while (i + 1 < length && !(x[i + 1] > start)) ++i;
    return i;
}

// The integral of the straight-line curve over [start, end], piece by piece, times 2/T.
void harmonicsIntegrated(const double* y, const double* x, int64_t length, double f0, double start, double end,
                         Complex* out, int64_t n) {
    std::fill(out, out + n, Complex(0));
    const double T = end - start;
    for (int64_t i = firstPiece(x, length, start); i + 1 < length; ++i) {
        double a = x[i], b = x[i + 1], ya = y[i], yb = y[i + 1];
        if (a < start && b > a) {  // clip the piece to the period
            ya += (yb - ya) * (start - a) / (b - a);
            a = start;
        }
        const double h = b - a;
        if (h == 0) continue;
        const Complex step = cycles(f0 * a);  // e^(2πi·f0·a), raised to the power k below
        Complex rotation = 1;
        for (int64_t k = 0; k < n; ++k) {
            Complex wa, wb;
            pieceWeights(kTwoPi * static_cast<double>(k) * f0 * h, &wa, &wb);
            out[k] += h * rotation * (ya * wa + yb * wb);
            rotation *= step;
        }
    }
    for (int64_t k = 0; k < n; ++k) out[k] *= (k == 0 ? 1 : 2) / T;
}

FUNC_ERROR fourier(WAVEX_HANDLER_PARAMS) {
    const int64_t length = args.length(0);
    std::vector<double> scratch;
    const double* x = args.realRefData(0, scratch);
    const double f0 = args.scalar(1);
    const double count = std::floor(args.scalar(2));
    const std::span<const double> options = optionalValues(args, 3);
    const int64_t mode = options.empty() ? 0 : wholeNumber(options[0]).value_or(0);
    const int order = options.size() < 2 ? 2 : static_cast<int>(std::clamp<int64_t>(wholeNumber(options[1]).value_or(2), 1, 2));

    if (length < 3 || !x || !(f0 > 0) || !(count >= 1)) return FUNC_OK;
    if (count > static_cast<double>(support_MaxResamplePoints()) / 4) return FUNC_OK;
    const double end = x[length - 1];
    const double period = 1 / f0;
    if (!(end - x[0] >= period * (1 - 1e-9))) return FUNC_OK;
    const auto n = static_cast<int64_t>(count);
    const double pieces = static_cast<double>(length - 1 - firstPiece(x, length, end - period));
    if (mode == kIntegrateMode && static_cast<double>(n) * pieces > kMaxIntegrationTerms) return FUNC_OK;

    result->setType(VD_COMPLEX, VD_COMPLEX);
    Complex* out = result->makeComplex(n, RESULT_RESHAPED, -1);
    Complex* f = result->makeComplexRef(n, RESULT_RESHAPED, -1);
    const double* y = args.data(0);
    if (mode == kIntegrateMode)
        harmonicsIntegrated(y, x, length, f0, end - period, end, out, n);
    else
        harmonicsResampled(y, x, length, f0, end - period, order, out, n);
    for (int64_t k = 0; k < n; ++k) f[k] = Complex(static_cast<double>(k) * f0, 0);
    setSpectrumUnits(args, result);
    return FUNC_OK;
}

// ---- SpectrumUniv ------------------------------------------------------------------------------
//
// SpectrumUniv(data, points): the spectrum of an unevenly sampled curve. The curve is resampled
// at N evenly spaced points from its first x to its last, both included, N = points rounded up to
// a power of two, with the interpolation order of the option "InterpOrder" (2), and transformed
// as fft does with its default window: N/2 values over Δf = 1/(h·N), h = (x[L−1] − x[0])/(N − 1).
// So on an evenly sampled curve of N points SpectrumUniv(data, N) equals fft(data).
// Messages: "Need at least two points for FFT" (L < 2), "Argument %d in function '%s' has no
// reference (xvalues)", "Invalid data for '%s'. Data has no reference or interval<=0" (the last x
// not above the first), "Need at least 2 points for interpolation in function '%s'" (points < 2
// or NaN), "Too many points (%.15g) for interpolation in function '%s'" (more than memory allows).

FUNC_ERROR spectrumUniv(WAVEX_HANDLER_PARAMS) {
    const int64_t length = args.length(0);
    std::vector<double> scratch;
    const double* x = transformAbscissa(args, info, *messages, scratch);
    if (!x) return FUNC_FAILED;
    const double span = x[length - 1] - x[0];
    if (!(span > 0)) {
        messages->error("Invalid data for '%s'. Data has no reference or interval<=0", info->name);
        return FUNC_FAILED;
    }
    const double points = std::trunc(args.scalar(1));
    if (!(points >= 2)) {
        messages->error("Need at least 2 points for interpolation in function '%s'", info->name);
        return FUNC_FAILED;
    }
    const double limit = static_cast<double>(support_MaxResamplePoints());
    if (points > limit || static_cast<double>(fftSize(static_cast<size_t>(points))) > limit) {
        messages->error("Too many points (%.15g) for interpolation in function '%s'", points, info->name);
        return FUNC_FAILED;
    }
    const size_t N = fftSize(static_cast<size_t>(points));
    const double h = span / static_cast<double>(N - 1);
    Array<double> samples(N);
    const int order = std::max(sp_GetIntOption("InterpOrder", 2), 1);
    support_Resample(args.data(0), x, length, x[0], h, static_cast<int64_t>(N), order, samples.data());
    writeSpectrum(args, result, samples.data(), N, N, {1, 1}, 1 / (h * static_cast<double>(N)));
    return FUNC_OK;
}

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    {"Fourier", {arg::Real.each(), arg::Real, arg::Real, arg::Real}, 3, fourier,
     {.signature = "Fourier(data, f0, n [, [mode, order]])",
      .summary = "Harmonics 0 ... n-1 of the fundamental f0 over the last whole period of data.",
      .returns = "n complex values per run in data's unit, over the complex frequencies (k·f0, 0) in 1/(x "
                 "unit) (Hz over time)",
      .notes = "c_k = (2/T)·∫y·e^(+2πi·k·f0·t) dt over [x_end - 1/f0, x_end], c_0 the mean: A·cos(2πk·f0·t + "
               "φ) reads A·e^(-iφ), the phase referred to x = 0. Mode 0 (default) resamples the period at "
               "a power of two >= max(InterpPts, 2n) points with order 1 or 2 (default 2); mode 1 "
               "integrates the straight lines between the data's points exactly (for sharp edges). Data "
               "shorter than a period, f0 <= 0 or n < 1 give an empty result, without a message.",
      .example = "Fourier(XY([0, 1, 0], [0, 0.5, 1]), 1, 2, [1])"}},
    {"FourierWindow", {arg::Real.each(), arg::String, arg::Real}, 1, fourierWindow,
     {.signature = "FourierWindow(data [, name [, period]])",
      .summary = "data multiplied by an amplitude-corrected window over its own x-values.",
      .returns = "a real curve per run over data's x-values, in data's unit",
      .notes = "With u = (x - x0)/T, T = period or the data's x span. Names (any case): 'hanning' "
               "(default) 1 - cos 2πu; 'blackman' the 0.42/0.5/0.08 window divided by 0.42; 'hamming' "
               "1 - 0.852·cos(2π(x - y0)/T), its phase taken from the first y-value; 'rectangular' the "
               "window itself (all ones), not the windowed data. Any other name gives NaN everywhere.",
      .example = "FourierWindow(XY(unitvec(5), vector(5)))"}},
    {"SpectrumUniv", {arg::Real.each(), arg::Real}, 2, spectrumUniv,
     {.signature = "SpectrumUniv(data, points)",
      .summary = "The spectrum of unevenly sampled data, resampled onto evenly spaced points.",
      .returns = "N/2 complex values per run in data's unit, over the complex frequencies (k·Δf, 0) in 1/(x "
                 "unit), as fft",
      .notes = "data is resampled from its first x to its last at N points, points rounded up to a power "
               "of two, with the interpolation order of the option InterpOrder (2), then transformed as "
               "fft does with its default Hann window: Δf = 1/(h·N), h = span/(N - 1). On evenly "
               "sampled data of N points it equals fft(data).",
      .example = "v = XY([0, 1, 0, -1, 0, 1, 0, -1], [0, 1, 2, 3, 4, 5, 6, 7]); mag(SpectrumUniv(v, 8))"}},
    // Complex data is accepted here so that fft can refuse it with its own message.
    {"fft", {arg::Real.each().orKinds(VD_COMPLEX), arg::String}, 1, fft,
     {.signature = "fft(data [, window])",
      .summary = "The single-sided amplitude spectrum of real, evenly sampled data.",
      .returns = "N/2 complex values per run in data's unit, over the complex frequencies (k·Δf, 0), k < N/2, "
                 "in 1/(x unit) (Hz over time)",
      .notes = "data is zero-padded to N, the next power of two, and multiplied (padding included) by a "
               "window: Hann scaled to a mean of 1 unless window is 'hamming' or 'none' (any case); an "
               "unknown name means Hann. Scaled by 2/N so a component on a bin reads its amplitude, the "
               "DC term the mean; no Nyquist bin. Δf = 1/(N·(x[1] - x[0])): the step comes from the "
               "first interval alone. The sign convention is e^(+2πi·jk/N). Complex data is refused.",
      .example = "v = XY([0, 1, 0, -1, 0, 1, 0, -1], [0, 1, 2, 3, 4, 5, 6, 7]); mag(fft(v)); mag(fft(v, 'none'))"}},
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex

// The discrete Fourier transform of real samples.
//
// realSpectrum computes the first half of the transform of n real samples, zero-padded to a
// power of two N and multiplied by a raised-cosine window:
//
//     out[k] = scale · Σ_{i<N} w_i·x_i·e^(+2πi·ik/N),  k = 0 … N/2 − 1,
//     w_i = a − b·cos(2πi/N),  x_i = 0 for i ≥ n.
//
// The sign of the exponent is +: the imaginary parts are those of the conjugate of the e^(−…)
// convention. The window spans the padding (a padded sample is 0 whatever its weight).
//
// How: the N real samples are packed as N/2 complex ones (even samples real, odd imaginary), the
// complex transform of N/2 points runs as radix-4 decimation in frequency on separate real and
// imaginary arrays (one radix-2 step first when log2(N/2) is odd), depth first so that every block
// below the cache size is finished while it is in cache; then one pass puts the bit-reversed
// result in order, in tiles that use whole cache lines, and one splits it into the spectrum of the
// real samples. Twiddle factors and window weights are products of two tables of about √N exact
// sines and cosines each, accurate to a few units in the last place, so the result agrees with
// the direct sum to about 1e-15 of its largest magnitude.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>

namespace wavex {

// The smallest power of two not less than n (1 for n ≤ 1).
size_t fftSize(size_t n);

// w_i = a − b·cos(2πi/N); {1, 0} is no window.
struct CosineWindow {
    double a = 1;
    double b = 0;
};

// Writes out[0 … N/2 − 1] as above. N is a power of two, at least 2 and at least n; out has room
// for N/2 values. Working memory: about 4N/3 doubles, freed before returning (also when an
// allocation throws).
void realSpectrum(const double* x, size_t n, size_t N, CosineWindow window, double scale,
                  std::complex<double>* out);

// e^(+2πi·q) for a real number of cycles q, reduced to the fraction of a cycle first so that a
// large q (a late start time at a high frequency) keeps its accuracy.
std::complex<double> support_Cycles(double q);

// The points a period is resampled at for its harmonics: `requested` rounded up to a power of two,
// within what memory allows for resampled curves.
size_t support_HarmonicPoints(int64_t requested);

// Harmonics 0 … n−1 of the fundamental f0 over the one period [start, start + 1/f0] of the curve
// (x[i], y[i]), i < length: the period resampled at P evenly spaced points (a power of two, at
// least 2n) with the interpolation of `order`, c_k = (2/P)·Σ_j y_j·e^(+2πi·k·f0·t_j), c_0 the mean,
// phases referred to x = 0 (not to the start of the period).
void support_Harmonics(const double* y, const double* x, int64_t length, double f0, double start, int order,
                       size_t P, std::complex<double>* out, int64_t n);

}  // namespace wavex

// The real-input transform against the sum it stands for, evaluated directly in long double.
#include "support/fft.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

namespace wavex {
namespace {

using Complex = std::complex<double>;

// scale · Σ_{i<n} w_i·x_i·e^(+2πi·ik/N) at bin k, the angle reduced exactly (ik mod N).
struct DirectSum {
    size_t N;
    std::vector<long double> c, s;
    explicit DirectSum(size_t size) : N(size), c(size), s(size) {
        const long double twoPi = 6.283185307179586476925286766559L;
        for (size_t j = 0; j < N; ++j) {
            c[j] = std::cos(twoPi * j / N);
            s[j] = std::sin(twoPi * j / N);
        }
    }
    Complex at(const std::vector<double>& x, CosineWindow w, double scale, size_t k) const {
        long double re = 0, im = 0;
        for (size_t i = 0; i < x.size(); ++i) {
            long double v = x[i] * (w.a - w.b * c[i]);
            re += v * c[i * k % N];
            im += v * s[i * k % N];
        }
        return {static_cast<double>(re * scale), static_cast<double>(im * scale)};
    }
};

std::vector<double> noise(size_t n, unsigned seed) {
    std::mt19937_64 gen(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<double> x(n);
    for (double& v : x) v = u(gen);
    return x;
}

// The largest deviation from the direct sum over `bins`, relative to the largest magnitude.
double relativeError(const std::vector<double>& x, size_t N, CosineWindow w, double scale,
                     const std::vector<size_t>& bins) {
    std::vector<Complex> out(N / 2);
    realSpectrum(x.data(), x.size(), N, w, scale, out.data());
    DirectSum direct(N);
    double largest = 0, worst = 0;
    for (size_t k : bins) {
        Complex want = direct.at(x, w, scale, k);
        largest = std::max(largest, std::abs(want));
        worst = std::max(worst, std::abs(out[k] - want));
    }
    return worst / largest;
}

std::vector<size_t> allBins(size_t N) {
    std::vector<size_t> k(N / 2);
    for (size_t i = 0; i < k.size(); ++i) k[i] = i;
    return k;
}

TEST(Fft, SizeIsTheNextPowerOfTwo) {
    const size_t cases[][2] = {{0, 1}, {1, 1}, {2, 2}, {3, 4}, {4, 4}, {5, 8}, {1000, 1024}, {1025, 2048}};
    for (auto [n, N] : cases) EXPECT_EQ(fftSize(n), N) << n;
}

// Every N up to 4096 whole, with and without padding, in each window: covers the radix-2 first
// step (odd log2 N/2), the small and the tiled reordering, and the split of the packed transform.
TEST(Fft, EqualsTheDirectSum) {
    const CosineWindow windows[] = {{1, 0}, {1, 1}, {1.08, 0.92}};
    unsigned seed = 1;
    for (size_t N = 2; N <= 4096; N *= 2) {
        for (size_t n : {N, N / 2 + 1, size_t{1}}) {
            if (n > N || (N > 2 && n == 1)) continue;
            for (CosineWindow w : windows) {
                if (n == 1 && w.b != 0) continue;  // the window's first weight is 0
                EXPECT_LT(relativeError(noise(n, seed++), N, w, 1.0, allBins(N)), 1e-12)
                    << "N=" << N << " n=" << n << " window " << w.a << "," << w.b;
            }
        }
    }
}

// Sizes whose blocks do not fit the cache take the depth-first path: checked on a spread of bins.
TEST(Fft, LargeSizesEqualTheDirectSumOnSampledBins) {
    for (size_t N : {size_t{1} << 15, size_t{1} << 16, size_t{1} << 17}) {
        std::vector<size_t> bins = {0, 1, 2, 3, N / 4 - 1, N / 4, N / 4 + 1, N / 2 - 1};
        std::mt19937_64 gen(N);
        for (int i = 0; i < 24; ++i) bins.push_back(gen() % (N / 2));
        EXPECT_LT(relativeError(noise(N - 17, 7), N, {1, 1}, 2.0 / N, bins), 1e-12) << N;
    }
}

TEST(Fft, KnownValues) {
    // x = 1, 2, 3, 4: X[0] = 10, X[1] = 1 + 2i − 3 − 4i with the + sign (the − sign gives −2 + 2i).
    std::vector<double> x = {1, 2, 3, 4};
    std::vector<Complex> out(2);
    realSpectrum(x.data(), 4, 4, {1, 0}, 1.0, out.data());
    EXPECT_EQ(out[0], Complex(10, 0));
    EXPECT_EQ(out[1], Complex(-2, -2));
}

TEST(Fft, NaNSpreadsToEveryBin) {
    std::vector<double> x = noise(256, 3);
    x[100] = NAN;
    std::vector<Complex> out(128);
    realSpectrum(x.data(), x.size(), 256, {1, 1}, 1.0, out.data());
    for (const Complex& v : out) EXPECT_TRUE(std::isnan(v.real()) || std::isnan(v.imag()));
}

}  // namespace
}  // namespace wavex

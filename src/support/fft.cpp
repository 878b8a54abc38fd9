#include "support/fft.hpp"

#include "support/interpolation.hpp"
#include "support/clones.hpp"
#include "wavex/array.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

namespace wavex {
namespace {

using Complex = std::complex<double>;

constexpr double kTwoPi = 6.283185307179586476925286766559;

// Blocks of this many complex points (64 KB of real and imaginary parts) are finished in cache.
constexpr size_t kCacheBlock = size_t{1} << 12;

int log2Of(size_t powerOfTwo) { return std::countr_zero(powerOfTwo); }

size_t reverseBits(size_t v, int bits) {
    size_t r = 0;
    for (int b = 0; b < bits; ++b, v >>= 1) r = (r << 1) | (v & 1);
    return r;
}

// e^(+2πik/N) for 0 ≤ k < N as the product of a coarse and a fine root, k = hi·F + lo, with
// F = 2^shift ≈ √N: two short tables of exact values replace N/2 calls of sin and cos.
class Roots {
public:
    explicit Roots(size_t N)
        : shift_((log2Of(N) + 1) / 2), fine_(size_t{1} << shift_), coarse_(std::max<size_t>(N >> shift_, 1)),
          hiCos_(coarse_), hiSin_(coarse_), loCos_(fine_), loSin_(fine_) {
        double n = static_cast<double>(N);
        for (size_t a = 0; a < coarse_; ++a) {
            double angle = kTwoPi * static_cast<double>(a << shift_) / n;
            hiCos_[a] = std::cos(angle);
            hiSin_[a] = std::sin(angle);
        }
        for (size_t b = 0; b < fine_; ++b) {
            double angle = kTwoPi * static_cast<double>(b) / n;
            loCos_[b] = std::cos(angle);
            loSin_[b] = std::sin(angle);
        }
    }

    size_t fine() const { return fine_; }
    double hiCos(size_t k) const { return hiCos_[k >> shift_]; }
    double hiSin(size_t k) const { return hiSin_[k >> shift_]; }
    const double* loCos() const { return loCos_.data(); }
    const double* loSin() const { return loSin_.data(); }

    double cos(size_t k) const {
        size_t lo = k & (fine_ - 1);
        return hiCos(k) * loCos_[lo] - hiSin(k) * loSin_[lo];
    }
    double sin(size_t k) const {
        size_t lo = k & (fine_ - 1);
        return hiSin(k) * loCos_[lo] + hiCos(k) * loSin_[lo];
    }

private:
    int shift_;
    size_t fine_, coarse_;
    std::vector<double> hiCos_, hiSin_, loCos_, loSin_;
};

// The twiddles e^(+2πij/B), j < B/4, of every radix-4 block length B from `top` down to 16, each
// level contiguous (block length 4 needs none).
class Twiddles {
public:
    Twiddles(size_t top, size_t N, const Roots& roots) : top_(top) {
        size_t total = 0;
        for (size_t b = top; b >= 16; b /= 4) total += b / 2;
        values_.resize(total);
        if (top < 16) return;
        double* c = values_.data();
        double* s = c + top / 4;
        size_t stride = N / top;
        for (size_t j = 0; j < top / 4; ++j) {
            c[j] = roots.cos(j * stride);
            s[j] = roots.sin(j * stride);
        }
        size_t offset = top / 2;
        for (size_t b = top / 4; b >= 16; b /= 4) {
            double* lc = values_.data() + offset;
            double* ls = lc + b / 4;
            size_t step = top / b;
            for (size_t j = 0; j < b / 4; ++j) {
                lc[j] = c[j * step];
                ls[j] = s[j * step];
            }
            offset += b / 2;
        }
    }

    const double* cos(size_t b) const { return values_.data() + offsetOf(b); }
    const double* sin(size_t b) const { return values_.data() + offsetOf(b) + b / 4; }

private:
    // Level b follows the levels above it: top/2 + top/8 + … + 2b = 2(top − b)/3 values.
    size_t offsetOf(size_t b) const { return 2 * (top_ - b) / 3; }

    size_t top_;
    Array<double> values_;
};

// One radix-4 decimation-in-frequency step on q points of each quarter of a block: r0 … r3 and
// i0 … i3 are the real and imaginary parts of the quarters, (c[j], s[j]) the twiddle w^j of the
// block length. With a0 … a3 the points j of the quarters:
//   a0 ← (a0+a2) + (a1+a3),  a1 ← ((a0+a2) − (a1+a3))·w^2j,
//   a2 ← ((a0−a2) + i(a1−a3))·w^j,  a3 ← ((a0−a2) − i(a1−a3))·w^3j,
// which leaves the quarters holding the sub-transforms of the outputs ≡ 0, 2, 1, 3 (mod 4):
// bit-reversed order, as two radix-2 steps would. The pointers are parameters so that the
// compiler may take them as not aliasing and vectorise the loop.
WAVEX_CLONES void radix4Step(double* __restrict r0, double* __restrict r1, double* __restrict r2, double* __restrict r3,
                double* __restrict i0, double* __restrict i1, double* __restrict i2, double* __restrict i3,
                const double* __restrict c, const double* __restrict s, size_t q) {
    for (size_t j = 0; j < q; ++j) {
        double sr = r0[j] + r2[j], si = i0[j] + i2[j];
        double dr = r0[j] - r2[j], di = i0[j] - i2[j];
        double tr = r1[j] + r3[j], ti = i1[j] + i3[j];
        double ur = r1[j] - r3[j], ui = i1[j] - i3[j];
        double c1 = c[j], s1 = s[j];
        double c2 = c1 * c1 - s1 * s1, s2 = 2 * c1 * s1;
        double c3 = c1 * c2 - s1 * s2, s3 = c1 * s2 + s1 * c2;
        r0[j] = sr + tr;
        i0[j] = si + ti;
        double xr = sr - tr, xi = si - ti;
        r1[j] = xr * c2 - xi * s2;
        i1[j] = xr * s2 + xi * c2;
        double pr = dr - ui, pi = di + ur;
        r2[j] = pr * c1 - pi * s1;
        i2[j] = pr * s1 + pi * c1;
        double mr = dr + ui, mi = di - ur;
        r3[j] = mr * c3 - mi * s3;
        i3[j] = mr * s3 + mi * c3;
    }
}

void radix4(double* re, double* im, size_t q, const double* c, const double* s) {
    radix4Step(re, re + q, re + 2 * q, re + 3 * q, im, im + q, im + 2 * q, im + 3 * q, c, s, q);
}

// The radix-4 step of block length 4 (all twiddles 1) on every block of [0, n).
WAVEX_CLONES void radix4Unit(double* __restrict re, double* __restrict im, size_t n) {
    for (size_t b = 0; b < n; b += 4) {
        double sr = re[b] + re[b + 2], si = im[b] + im[b + 2];
        double dr = re[b] - re[b + 2], di = im[b] - im[b + 2];
        double tr = re[b + 1] + re[b + 3], ti = im[b + 1] + im[b + 3];
        double ur = re[b + 1] - re[b + 3], ui = im[b + 1] - im[b + 3];
        re[b] = sr + tr;
        im[b] = si + ti;
        re[b + 1] = sr - tr;
        im[b + 1] = si - ti;
        re[b + 2] = dr - ui;
        im[b + 2] = di + ur;
        re[b + 3] = dr + ui;
        im[b + 3] = di - ur;
    }
}

// The whole decimation-in-frequency transform of a block of n = 4^k points: one step over the
// block, then its quarters depth first, so that blocks up to kCacheBlock run all their steps
// while they are in cache.
WAVEX_CLONES void transformBlock(double* re, double* im, size_t n, const Twiddles& tw) {
    if (n > kCacheBlock) {
        size_t q = n / 4;
        radix4(re, im, q, tw.cos(n), tw.sin(n));
        for (size_t k = 0; k < 4; ++k) transformBlock(re + k * q, im + k * q, q, tw);
        return;
    }
    for (size_t b = n; b >= 16; b /= 4)
        for (size_t at = 0; at < n; at += b) radix4(re + at, im + at, b / 4, tw.cos(b), tw.sin(b));
    if (n >= 4) radix4Unit(re, im, n);
}

// The radix-2 step j ← a0 + a1, j + h ← (a0 − a1)·w_j over one chunk of j, the twiddles w_j the
// products of one coarse root (hc, hs) and the fine roots (lc[2j], ls[2j]).
void radix2Step(double* __restrict r0, double* __restrict r1, double* __restrict i0, double* __restrict i1,
                const double* __restrict lc, const double* __restrict ls, double hc, double hs, size_t len) {
    for (size_t j = 0; j < len; ++j) {
        const double c = hc * lc[2 * j] - hs * ls[2 * j], s = hs * lc[2 * j] + hc * ls[2 * j];
        const double dr = r0[j] - r1[j], di = i0[j] - i1[j];
        r0[j] += r1[j];
        i0[j] += i1[j];
        r1[j] = dr * c - di * s;
        i1[j] = dr * s + di * c;
    }
}

// The complex transform of M points with the + sign, in bit-reversed order. When log2 M is odd a
// radix-2 step over the whole array comes first, with twiddles e^(2πij/M) = e^(2πi·2j/N).
void transform(double* re, double* im, size_t M, size_t N, const Roots& roots) {
    if (M < 2) return;
    if (log2Of(M) % 2 == 0) {
        transformBlock(re, im, M, Twiddles(M, N, roots));
        return;
    }
    const size_t h = M / 2;
    const size_t chunk = roots.fine() / 2;  // j whose 2j share one coarse root
    for (size_t start = 0; start < h; start += chunk)
        radix2Step(re + start, re + h + start, im + start, im + h + start, roots.loCos(), roots.loSin(),
                   roots.hiCos(2 * start), roots.hiSin(2 * start), std::min(chunk, h - start));
    const Twiddles tw(h, N, roots);
    transformBlock(re, im, h, tw);
    transformBlock(re + h, im + h, h, tw);
}

// out[k] = (re[rev k], im[rev k]) with rev reversing the log2 M bits of k. Large arrays go in
// tiles of T × T points, T = 2^t: with k = (h, c, l), h and l of t bits each,
// rev k = (rev l, rev c, rev h), so a tile reads T runs of T points and writes T runs of T points.
// The tile passes through a small buffer, so that each cache line, read or written, is used whole
// at once: the runs lie a large power of two apart and would evict one another from the cache.
void reorder(const double* re, const double* im, size_t M, Complex* out) {
    constexpr int t = 3;
    constexpr size_t T = size_t{1} << t;
    int m = log2Of(M);
    if (m < 2 * t) {
        for (size_t k = 0; k < M; ++k) {
            size_t r = reverseBits(k, m);
            out[k] = Complex(re[r], im[r]);
        }
        return;
    }
    size_t rev[T];
    for (size_t i = 0; i < T; ++i) rev[i] = reverseBits(i, t);
    int mid = m - 2 * t;
    size_t top = size_t{1} << (m - t);
    double bufRe[T][T], bufIm[T][T];  // [h][l]
    constexpr size_t ahead = 4;  // tiles whose runs are fetched in advance
    size_t tiles = size_t{1} << mid;
    for (size_t c = 0; c < tiles; ++c) {
        size_t from = reverseBits(c, mid) << t;
        if (c + ahead < tiles) {
            size_t next = reverseBits(c + ahead, mid) << t;
            for (size_t l = 0; l < T; ++l) {
                __builtin_prefetch(re + rev[l] * top + next);
                __builtin_prefetch(im + rev[l] * top + next);
            }
        }
        for (size_t l = 0; l < T; ++l) {
            const double* r = re + rev[l] * top + from;
            for (size_t h = 0; h < T; ++h) bufRe[rev[h]][l] = r[h];
        }
        for (size_t l = 0; l < T; ++l) {
            const double* i = im + rev[l] * top + from;
            for (size_t h = 0; h < T; ++h) bufIm[rev[h]][l] = i[h];
        }
        Complex* to = out + (c << t);
        for (size_t h = 0; h < T; ++h)
            for (size_t l = 0; l < T; ++l) to[h * top + l] = Complex(bufRe[h][l], bufIm[h][l]);
    }
}

// Turns Z, the transform of the packed samples z_j = x_2j + i·x_2j+1, into the spectrum of the
// real samples, scaled, in place. With A = Z[k], B = Z[M−k], w = e^(2πik/N):
//   E = (A + B*)/2 (transform of the even samples), D = (A − B*)/2 = i × (that of the odd ones),
//   X[k] = E − i·w·D,  X[M−k] = (E + i·w·D)*,  X[0] = Re A + Im A,  X[M/2] = A.
// One chunk: a runs forward from Z[k], b backward from Z[M−k], the twiddles the products of one
// coarse root (hc, hs) and the fine roots (lc, ls); `half` is scale/2.
void splitStep(double* __restrict a, double* __restrict b, const double* __restrict lc, const double* __restrict ls,
               double hc, double hs, double half, size_t len) {
    for (size_t j = 0; j < len; ++j) {
        const double wr = hc * lc[j] - hs * ls[j], wi = hs * lc[j] + hc * ls[j];
        const double ar = a[2 * j], ai = a[2 * j + 1];
        const double br = b[-2 * static_cast<ptrdiff_t>(j)], bi = b[1 - 2 * static_cast<ptrdiff_t>(j)];
        const double er = (ar + br) * half, ei = (ai - bi) * half;
        const double dr = (ar - br) * half, di = (ai + bi) * half;
        const double pr = -(wr * di + wi * dr), pi = wr * dr - wi * di;  // i·w·D
        a[2 * j] = er - pr;
        a[2 * j + 1] = ei - pi;
        b[-2 * static_cast<ptrdiff_t>(j)] = er + pr;
        b[1 - 2 * static_cast<ptrdiff_t>(j)] = -(ei + pi);
    }
}

WAVEX_CLONES void splitReal(Complex* z, size_t M, const Roots& roots, double scale) {
    double* v = reinterpret_cast<double*>(z);
    v[0] = (v[0] + v[1]) * scale;
    v[1] = 0;
    if (M < 2) return;
    v[M] *= scale;
    v[M + 1] *= scale;
    const size_t fine = roots.fine();
    for (size_t start = 0; start < M / 2; start += fine) {
        const size_t from = std::max<size_t>(start, 1);  // k = 0 is done
        const size_t end = std::min(M / 2, start + fine);
        if (from >= end) continue;
        splitStep(v + 2 * from, v + 2 * (M - from), roots.loCos() + (from - start), roots.loSin() + (from - start),
                  roots.hiCos(start), roots.hiSin(start), scale / 2, end - from);
    }
}

// re[p] = w[2p]·x[2p], im[p] = w[2p+1]·x[2p+1] for p < len/2.
void packStep(double* __restrict re, double* __restrict im, const double* __restrict x, const double* __restrict w,
              size_t len) {
    for (size_t p = 0; p < len / 2; ++p) {
        re[p] = x[2 * p] * w[2 * p];
        im[p] = x[2 * p + 1] * w[2 * p + 1];
    }
}

// re[j] = w_2j·x_2j, im[j] = w_2j+1·x_2j+1 for j < N/2, with x_i = 0 for i ≥ n. The weights are
// made a chunk of samples at a time, one coarse root per chunk.
WAVEX_CLONES void pack(const double* x, size_t n, size_t N, CosineWindow window, const Roots& roots, double* re, double* im) {
    const size_t M = N / 2;
    const size_t pairs = n / 2;  // packed points wholly inside the data
    const size_t fine = roots.fine();
    const double* lc = roots.loCos();
    const double* ls = roots.loSin();
    std::vector<double> w(fine);
    for (size_t start = 0; start < 2 * pairs; start += fine) {
        const double hc = roots.hiCos(start), hs = roots.hiSin(start);
        const size_t len = std::min(fine, 2 * pairs - start);
        for (size_t lo = 0; lo < len; ++lo) w[lo] = window.a - window.b * (hc * lc[lo] - hs * ls[lo]);
        packStep(re + start / 2, im + start / 2, x + start, w.data(), len);
    }
    size_t j = pairs;
    if (n % 2 == 1) {
        re[j] = x[n - 1] * (window.a - window.b * roots.cos(n - 1));
        im[j] = 0;
        ++j;
    }
    std::fill(re + j, re + M, 0.0);
    std::fill(im + j, im + M, 0.0);
}

}  // namespace

size_t fftSize(size_t n) { return n <= 1 ? 1 : std::bit_ceil(n); }

void realSpectrum(const double* x, size_t n, size_t N, CosineWindow window, double scale, Complex* out) {
    size_t M = N / 2;
    Roots roots(N);
    Array<double> work(N);
    double* re = work.data();
    double* im = re + M;
    pack(x, n, N, window, roots, re, im);
    transform(re, im, M, N, roots);
    reorder(re, im, M, out);
    splitReal(out, M, roots, scale);
}

}  // namespace wavex

namespace wavex {

Complex support_Cycles(double q) {
    const double f = q - std::round(q);
    return {std::cos(kTwoPi * f), std::sin(kTwoPi * f)};
}

size_t support_HarmonicPoints(int64_t requested) {
    return std::min(fftSize(static_cast<size_t>(std::max<int64_t>(requested, 2))),
                    std::bit_floor(static_cast<size_t>(support_MaxResamplePoints())));
}

void support_Harmonics(const double* y, const double* x, int64_t length, double f0, double start, int order,
                       size_t P, Complex* out, int64_t n) {
    Array<double> samples(P);
    support_Resample(y, x, length, start, 1 / (f0 * static_cast<double>(P)), static_cast<int64_t>(P), order,
                     samples.data());
    Array<Complex> spectrum(P / 2);
    realSpectrum(samples.data(), P, P, {1, 0}, 2.0 / static_cast<double>(P), spectrum.data());
    spectrum[0].real(spectrum[0].real() / 2);
    // The sum ran over j from the start of the period: refer the phases to x = 0.
    const double q = f0 * start;
    for (int64_t k = 0; k < n; ++k) out[k] = spectrum[k] * support_Cycles(static_cast<double>(k) * (q - std::round(q)));
}

}  // namespace wavex

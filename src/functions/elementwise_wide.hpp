// The wide forms of sin, db and the angle over glibc's vector maths (libmvec), for elementwise.cpp
// only. It includes this file once per instruction set, each time inside a namespace of its own and
// a `#pragma GCC target` region; WAVEX_WIDE_512 selects AVX-512, else AVX2 (the pragma does not
// define __AVX512F__ and friends). Each loop runs over as many whole lanes as fit and returns how
// many elements it did; `map` finishes the tail with the scalar function.

// glibc's vector variants, named by the x86-64 vector function ABI ("e": AVX-512, "d": AVX2).
#if defined(WAVEX_WIDE_512)
extern "C" {
__m512d _ZGVeN8v_sin(__m512d);
__m512d _ZGVeN8v_log10(__m512d);
__m512d _ZGVeN8vv_atan2(__m512d, __m512d);
}
constexpr int kLanes = 8;
using V = __m512d;
inline V sin(V x) { return _ZGVeN8v_sin(x); }
inline V log10(V x) { return _ZGVeN8v_log10(x); }
inline V atan2(V y, V x) { return _ZGVeN8vv_atan2(y, x); }
#else
extern "C" {
__m256d _ZGVdN4v_sin(__m256d);
__m256d _ZGVdN4v_log10(__m256d);
__m256d _ZGVdN4vv_atan2(__m256d, __m256d);
}
constexpr int kLanes = 4;
using V = __m256d;
inline V sin(V x) { return _ZGVdN4v_sin(x); }
inline V log10(V x) { return _ZGVdN4v_log10(x); }
inline V atan2(V y, V x) { return _ZGVdN4vv_atan2(y, x); }
#endif

inline V load(const double* p) {
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void store(double* p, V v) { std::memcpy(p, &v, sizeof v); }

// Real and imaginary parts of kLanes complex values, and whether every lane of s lies in
// [lo, hi] (false for NaN).
#if defined(WAVEX_WIDE_512)
inline void split(const Complex* z, V* re, V* im) {
    const double* p = reinterpret_cast<const double*>(z);
    V a = load(p), b = load(p + 8);
    *re = _mm512_permutex2var_pd(a, _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14), b);
    *im = _mm512_permutex2var_pd(a, _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15), b);
}
inline bool allWithin(V s, double lo, double hi) {
    return (_mm512_cmp_pd_mask(s, _mm512_set1_pd(lo), _CMP_GE_OQ) &
            _mm512_cmp_pd_mask(s, _mm512_set1_pd(hi), _CMP_LE_OQ)) == 0xFF;
}
#else
inline void split(const Complex* z, V* re, V* im) {
    const double* p = reinterpret_cast<const double*>(z);
    V a = load(p), b = load(p + 4);  // re0 im0 re1 im1 | re2 im2 re3 im3
    *re = _mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), 0xD8);
    *im = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xD8);
}
inline bool allWithin(V s, double lo, double hi) {
    V in = _mm256_and_pd(_mm256_cmp_pd(s, _mm256_set1_pd(lo), _CMP_GE_OQ),
                         _mm256_cmp_pd(s, _mm256_set1_pd(hi), _CMP_LE_OQ));
    return _mm256_movemask_pd(in) == 0xF;
}
#endif

int64_t sinLanes(double* out, const double* in, int64_t n) {
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        prefetch(in + i, sizeof(double) * kLanes);
        store(out + i, sin(load(in + i)));
    }
    return i;
}

int64_t dbRealLanes(double* out, const double* in, int64_t n) {
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        prefetch(in + i, sizeof(double) * kLanes);
        V x = load(in + i);
        V a = x < 0 ? -x : x;
        V y = 20.0 * log10(a);
        store(out + i, a == 0 ? kDbOfZero : y);
    }
    return i;
}

int64_t dbComplexLanes(double* out, const Complex* in, int64_t n) {
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        prefetch(in + i, sizeof(Complex) * kLanes);
        V re, im;
        split(in + i, &re, &im);
        V s = re * re + im * im;
        if (allWithin(s, DBL_MIN, DBL_MAX)) {
            store(out + i, 10.0 * log10(s));
        } else {
            for (int k = 0; k < kLanes; ++k) out[i + k] = kDbComplex(in[i + k]);
        }
    }
    return i;
}

int64_t angleLanes(double* out, const Complex* in, int64_t n, double scale) {
    int64_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        prefetch(in + i, sizeof(Complex) * kLanes);
        V re, im;
        split(in + i, &re, &im);
        store(out + i, atan2(im, re) * scale);
    }
    return i;
}

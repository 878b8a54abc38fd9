// fft at 2^20 and 2^22 points as the host calls it (callFunction: the windowed transform, the
// result and its frequency reference), beside FFTW's real-to-complex transform of the same size
// with an ESTIMATE plan when FFTW is installed (it is linked into this benchmark only).
// bench/peers_fourier.py runs numpy's rfft on the same data, windowed beforehand.
#include "bench_util.hpp"
#include "wavex/wavex.hpp"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#if defined(WAVEX_HAVE_FFTW)
#include <fftw3.h>
#endif

namespace wavex {
namespace {

using bench::sink;

// y_i = sin(0.001·i) + 0.25·cos(0.37·i) over x_i = i µs.
const VectorPtr& signal(int64_t n) {
    return bench::curveOnce(n, [](std::vector<double>& x, std::vector<double>& y) {
        for (size_t i = 0; i < x.size(); ++i) {
            const auto t = static_cast<double>(i);
            x[i] = t * 1e-6;
            y[i] = std::sin(0.001 * t) + 0.25 * std::cos(0.37 * t);
        }
    });
}

// fft with its default window (the scaled Hann window).
void BM_fft(benchmark::State& state) { bench::callFunctionLoop(state, "fft", {signal(state.range(0))}); }
BENCHMARK(BM_fft)->Arg(1 << 20)->Arg(1 << 22)->Unit(benchmark::kMillisecond);

#if defined(WAVEX_HAVE_FFTW)
// The transform alone, on the data windowed beforehand, as numpy's side does it.
void BM_fftw_r2c(benchmark::State& state) {
    const auto n = static_cast<size_t>(state.range(0));
    double* in = fftw_alloc_real(n);
    fftw_complex* out = fftw_alloc_complex(n / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(static_cast<int>(n), in, out, FFTW_ESTIMATE);
    const double* y = signal(state.range(0))->real.data();
    for (size_t i = 0; i < n; ++i) in[i] = y[i] * (1 - std::cos(2 * M_PI * static_cast<double>(i) / static_cast<double>(n)));
    for (auto _ : state) {
        fftw_execute(plan);
        benchmark::DoNotOptimize(out[1][0]);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}
BENCHMARK(BM_fftw_r2c)->Arg(1 << 20)->Arg(1 << 22)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace wavex

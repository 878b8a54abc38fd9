"""numpy doing the work of bench/fourier_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable) for each
benchmark: np.fft.rfft of the data multiplied beforehand by fft's default window, 1 - cos(2 pi i/N).
"""
import numpy as np

SIZES = (1 << 20, 1 << 22)


def signal(n):
    """y_i = sin(0.001 i) + 0.25 cos(0.37 i), as the C++ side makes it."""
    i = np.arange(n, dtype=float)
    return np.sin(0.001 * i) + 0.25 * np.cos(0.37 * i)


def peers():
    cases = []
    for n in SIZES:
        windowed = signal(n) * (1 - np.cos(2 * np.pi * np.arange(n) / n))
        cases.append((f"BM_fft/{n}", n, lambda d=windowed: np.fft.rfft(d)))
    return cases

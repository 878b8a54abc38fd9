"""scipy and numpy doing the work of bench/extremes_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable):
scipy.signal.find_peaks for Maxima (with its prominence filter for MaximaProminence) and
numpy.histogram with 100 bins for Histogram. CyclePeriod has no single-call peer.
"""
import numpy as np
from scipy.signal import find_peaks

SIZES = (1_000_000, 10_000_000)


def noisy_sine(n):
    """n evenly spaced points over x in [0, 1] of a 1000-period sine plus normal noise (sd 0.1)."""
    x = np.linspace(0.0, 1.0, n)
    return x, np.sin(2 * np.pi * 1000 * x) + np.random.default_rng(7).normal(0, 0.1, n)


def maxima(x, y, **options):
    """The local maxima as a curve: values and x, as Maxima gives them."""
    peaks, _ = find_peaks(y, **options)
    return y[peaks], x[peaks]


def peers():
    cases = []
    for n in SIZES:
        x, y = noisy_sine(n)
        spread = np.random.default_rng(8).normal(0, 1, n)
        cases.append((f"BM_Maxima/{n}", n, lambda x=x, y=y: maxima(x, y)))
        cases.append((f"BM_MaximaProminence/{n}", n, lambda x=x, y=y: maxima(x, y, prominence=1.5)))
        cases.append((f"BM_Histogram/{n}", n, lambda v=spread: np.histogram(v, 100)))
    return cases

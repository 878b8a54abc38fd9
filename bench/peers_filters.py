"""scipy.signal.lfilter doing the work of bench/filters_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): FIR as
lfilter(taps, [1]) and IIR's y[n] = 0.25 x[n] + 0.75 y[n-1] as lfilter([0.25], [1, -0.75]) (IIR adds
its feedback terms, lfilter subtracts them).
"""
import numpy as np
from scipy import signal as sp_signal

POINTS = 10_000_000


def signal(n):
    """y_i = sin(0.001 i) + 0.25 cos(0.37 i), as the C++ side makes it."""
    i = np.arange(n, dtype=float)
    return np.sin(0.001 * i) + 0.25 * np.cos(0.37 * i)


def peers():
    x = signal(POINTS)
    taps = np.arange(1, 17) / 136
    return [
        (f"BM_FIR/{POINTS}", POINTS, lambda: sp_signal.lfilter(taps, [1.0], x)),
        (f"BM_IIR/{POINTS}", POINTS, lambda: sp_signal.lfilter([0.25], [1.0, -0.75], x)),
    ]

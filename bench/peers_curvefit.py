"""numpy doing the work of bench/curve_fit_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable[, wanted
speed-up]): np.polyfit of order 5 for CurveFit, and np.polyval of that fit over the same x for
CurveFitPlot.
"""
import numpy as np

SIZES = (1_000_000, 10_000_000)


def transient(n):
    """n points over 1 ms: a slow cosine with a little ripple."""
    i = np.arange(n, dtype=float)
    x = 1e-3 * i / (n - 1)
    return x, np.cos(2 * np.pi * 1.5e3 * x) + 0.01 * np.sin(0.7 * i)


def peers():
    cases = []
    for n in SIZES:
        x, y = transient(n)
        cases.append((f"BM_CurveFit/{n}", n, lambda x=x, y=y: np.polyfit(x, y, 5), 1.0))
        if n == SIZES[0]:
            cases.append((f"BM_CurveFitPlot/{n}", n, lambda x=x, y=y: np.polyval(np.polyfit(x, y, 5), x)))
    return cases

"""numpy doing the work of bench/interpolation_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable) for each
benchmark: np.interp for Interp, a sign-change search with linear interpolation for XFromY.
"""
import numpy as np

SIZES = (1_000_000, 10_000_000)


def transient(n):
    """n points over x in [0, 1] of a 1000-period sine, the step swinging smoothly between 0.5 and
    1.5 times the mean as an adaptive-step simulator's does."""
    x = np.concatenate(([0.0], np.cumsum(1 + 0.5 * np.sin(np.arange(n - 1) * 0.001))))
    x /= x[-1]
    return x, np.sin(2 * np.pi * 1000 * x)


def crossings(x, y, level):
    """The x values where y crosses the level, by linear interpolation."""
    above = y > level
    i = np.nonzero(above[1:] != above[:-1])[0]
    x0, x1, y0, y1 = x[i], x[i + 1], y[i], y[i + 1]
    return x0 + (level - y0) * (x1 - x0) / (y1 - y0)


def peers():
    cases = []
    for n in SIZES:
        x, y = transient(n)
        grid = np.linspace(x[0], x[-1], n, endpoint=False)
        cases.append((f"BM_Interp/{n}", n, lambda g=grid, x=x, y=y: np.interp(g, x, y)))
        cases.append((f"BM_XFromY/{n}", n, lambda x=x, y=y: crossings(x, y, 0.0)))
    return cases

"""numpy doing the work of bench/reductions_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): the mean
and RMS over x as np.trapz of y and of y² divided by the span.
"""
import numpy as np

SIZES = (1_000_000, 10_000_000)


def noise(n):
    """n points over x in [0, 1], each step 0.5 to 1.5 times the mean, of uniform noise in [-1, 1]."""
    rng = np.random.default_rng(4)
    x = np.concatenate(([0.0], np.cumsum(rng.uniform(0.5, 1.5, n - 1))))
    x /= x[-1]
    return x, rng.uniform(-1, 1, n)


def peers():
    cases = []
    for n in SIZES:
        x, y = noise(n)
        span = x[-1] - x[0]
        cases.append((f"BM_Mean1/{n}", n, lambda x=x, y=y, s=span: np.trapz(y, x) / s))
        cases.append((f"BM_RMS1/{n}", n, lambda x=x, y=y, s=span: np.sqrt(np.trapz(y * y, x) / s)))
    return cases

"""numpy and scipy doing the work of bench/calculus_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable):
integ is scipy's cumulative_trapezoid over the same uneven x-values; diff is the slope of each
step, numpy's diff(y)/diff(x) (it skips no short steps and makes two temporaries); erf and gamma
are scipy.special's; the copy loop is numpy's copy.
"""
import numpy as np
from scipy import integrate, special

N = 10_000_000


def peers():
    rng = np.random.default_rng(11)
    x = np.concatenate(([0.0], np.cumsum(rng.uniform(0.1e-9, 1.9e-9, N - 1))))
    y = np.sin(2 * np.pi * 1e6 * x) + rng.uniform(-0.01, 0.01, N)
    e = rng.uniform(-4, 4, N)
    g = rng.uniform(0.01, 50, N)
    return [
        (f"BM_Integ/{N}", N, lambda: integrate.cumulative_trapezoid(y, x, initial=0)),
        (f"BM_Diff/{N}", N, lambda: np.diff(y) / np.diff(x)),
        (f"BM_Erf/{N}", N, lambda: special.erf(e)),
        (f"BM_Gamma/{N}", N, lambda: special.gamma(g)),
    ]

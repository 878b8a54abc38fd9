"""numpy and scipy doing the work of bench/averages_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): the running
mean as scipy's cumulative_trapezoid over the x distance covered, the running RMS the same way on
y², the area as np.trapz, and Truncate as a boolean mask with the two interpolated ends added.
"""
import numpy as np
from scipy.integrate import cumulative_trapezoid

from peers_reductions import noise  # the same data as the range reductions

SIZES = (1_000_000, 10_000_000)



def running_mean(x, y):
    r = np.empty_like(y)
    r[0] = y[0]
    r[1:] = cumulative_trapezoid(y, x) / (x[1:] - x[0])
    return r


def running_rms(x, y):
    r = np.empty_like(y)
    r[0] = abs(y[0])
    r[1:] = np.sqrt(cumulative_trapezoid(y * y, x) / (x[1:] - x[0]))
    return r


def truncate(x, y, start, end):
    keep = (x >= start) & (x <= end)
    return (np.concatenate(([start], x[keep], [end])),
            np.concatenate(([np.interp(start, x, y)], y[keep], [np.interp(end, x, y)])))


def peers():
    cases = []
    for n in SIZES:
        x, y = noise(n)
        cases.append((f"BM_avg/{n}", n, lambda x=x, y=y: running_mean(x, y)))
        cases.append((f"BM_Rms/{n}", n, lambda x=x, y=y: running_rms(x, y)))
        cases.append((f"BM_area/{n}", n, lambda x=x, y=y: np.trapz(y, x)))
        cases.append((f"BM_Truncate/{n}", n, lambda x=x, y=y: truncate(x, y, 0.25, 0.75)))
    return cases

"""numpy doing the work of bench/measurements_bench.cpp, on data made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable). The numpy
way: crossings from sign changes, interpolated linearly; transitions paired with searchsorted;
state levels from numpy.histogram; THD from numpy.interp of the last period and numpy.fft.rfft;
the sine fits by numpy.linalg.lstsq; SFDR from rfft of the windowed record; gains and phases
from abs, angle and unwrap. On 1000 runs, a Python loop over views of the runs. Frequency's peer
leaves out the hysteresis (the data have no noise for it to remove).
"""
import numpy as np

POINTS = 10_000_000
RUNS = 1000
STEP = 1e-6


def pulse(t):
    return 0.5 + 0.5 * np.tanh(8 * np.sin(2 * np.pi * 1e3 * t))


def times(runs):
    return np.tile(np.arange(POINTS // runs) * STEP, runs)


def sine(t):
    noise = np.random.default_rng(5).uniform(-1e-3, 1e-3, t.size)
    return np.sin(2 * np.pi * 1e3 * t) + 0.01 * np.sin(2 * np.pi * 2e3 * t) + noise


def loop_gain(runs):
    f = np.tile(10 ** (8 * np.arange(POINTS // runs) / (POINTS // runs - 1)), runs)
    return f, 100 / ((1 + 1j * f / 1e3) * (1 + 1j * f / 1e5))


def crossings(x, y, level, edge):
    """Indices i and x-values of the crossings of level between points i and i + 1."""
    above = y >= level
    if edge > 0:
        i = np.flatnonzero(~above[:-1] & above[1:])
    elif edge < 0:
        i = np.flatnonzero(above[:-1] & ~above[1:])
    else:
        i = np.flatnonzero(above[:-1] != above[1:])
    return i, x[i] + (level - y[i]) / (y[i + 1] - y[i]) * (x[i + 1] - x[i])


def state_levels(y, bins=100):
    counts, edges = np.histogram(y, bins)
    centres = (edges[:-1] + edges[1:]) / 2
    half = bins // 2
    return centres[np.argmax(counts[:half])], centres[bins - 1 - np.argmax(counts[::-1][:half])]


def transitions(x, y, low, high, edge):
    """(start x, end x, start index, end index) of each rising (edge 1) or falling transition."""
    si, st = crossings(x, y, low if edge > 0 else high, edge)
    ei, et = crossings(x, y, high if edge > 0 else low, edge)
    k = np.searchsorted(si, ei, side="right") - 1
    first = (k >= 0) & np.r_[True, k[1:] != k[:-1]]
    return st[k[first]], et[first], si[k[first]], ei[first]


def references(y):
    low, high = state_levels(y)
    return low, high, low + 0.1 * (high - low), low + 0.9 * (high - low)


def both_edges(x, y, low_ref, high_ref):
    r, f = transitions(x, y, low_ref, high_ref, 1), transitions(x, y, low_ref, high_ref, -1)
    edge = np.r_[np.ones(r[0].size), -np.ones(f[0].size)]
    order = np.argsort(np.r_[r[0], f[0]], kind="stable")
    return [np.r_[a, b][order] for a, b in zip(r, f)], edge[order]


def rise_time(x, y, edge=1):
    _, _, lo, hi = references(y)
    s, e, _, _ = transitions(x, y, lo, hi, edge)
    return e - s, s


def slew_rate(x, y):
    _, _, lo, hi = references(y)
    (s, e, _, _), edge = both_edges(x, y, lo, hi)
    return edge * (hi - lo) / (e - s), s


def overshoot(x, y):
    low, high, lo, hi = references(y)
    (s, _, _, ei), edge = both_edges(x, y, lo, hi)
    peak = np.maximum.reduceat(y, ei + 1)
    dip = np.minimum.reduceat(y, ei + 1)
    return np.maximum(np.where(edge > 0, peak - high, low - dip), 0) / (high - low) * 100, s


def settling_time(x, y, tolerance=2):
    low, high, lo, hi = references(y)
    (s, _, si, _), edge = both_edges(x, y, lo, hi)
    mid = low + (high - low) / 2
    mr, mf = crossings(x, y, mid, 1), crossings(x, y, mid, -1)
    until = np.r_[si[1:], y.size - 1]
    half = tolerance / 100 * (high - low)
    out = np.empty(s.size)
    for final, sign, (mi, mt) in ((high, 1, mr), (low, -1, mf)):
        k = np.flatnonzero(edge == sign)
        m = np.searchsorted(mt, s[k])
        inside = np.abs(y - final) <= half
        ins, outs = np.flatnonzero(inside), np.flatnonzero(~inside)
        e = ins[np.searchsorted(ins, until[k], side="right") - 1]
        a = outs[np.searchsorted(outs, e) - 1]
        level = np.where(y[a] > final, final + half, final - half)
        out[k] = x[a] + (level - y[a]) / (y[a + 1] - y[a]) * (x[a + 1] - x[a]) - mt[m]
    return out, s


def delay(x, y, target):
    _, t = crossings(x, y, 0.5, 1)
    _, g = crossings(x, target, 0.5, 1)
    j = np.searchsorted(g, t)
    return np.where(j < g.size, g[np.minimum(j, g.size - 1)] - t, np.nan), t


def cycles(x, y):
    low, high = state_levels(y)
    level = low + (high - low) / 2
    _, r = crossings(x, y, level, 1)
    _, f = crossings(x, y, level, -1)
    return r, f[np.minimum(np.searchsorted(f, r), f.size - 1)]


def pulse_width(x, y):
    r, f = cycles(x, y)
    return f - r, r


def duty_cycle(x, y):
    r, f = cycles(x, y)
    return (f[:-1] - r[:-1]) / np.diff(r), r[:-1]


def frequency(x, y):
    _, r = crossings(x, y, 0.5, 1)
    return 1 / np.diff(r), r[:-1]


def thd(x, y, f0=1e3, harmonics=10):
    period = 1 / f0
    grid = x[-1] - period + np.arange(1024) * (period / 1024)
    c = np.abs(np.fft.rfft(np.interp(grid, x, y)))
    return np.sqrt(np.sum(c[2:harmonics + 1] ** 2)) / c[1] * 100


def sine_fit(x, y, f0=1e3, harmonics=1):
    wt = 2 * np.pi * f0 * (x - x[0])
    columns = [np.ones_like(x)]
    for k in range(1, harmonics + 1):
        columns += [np.cos(k * wt), np.sin(k * wt)]
    a = np.column_stack(columns)
    coef, residual, _, _ = np.linalg.lstsq(a, y, rcond=None)
    return 10 * np.log10((coef[1] ** 2 + coef[2] ** 2) / 2 / (residual[0] / y.size))


def enob(x, y):
    return (sine_fit(x, y) - 1.76) / 6.02


def sfdr(x, y, f0=1e3):
    n = 1 << (y.size - 1).bit_length()
    window = 1 - np.cos(2 * np.pi * np.arange(y.size) / n)
    m = np.abs(np.fft.rfft(y * window, n))[: n // 2]
    fundamental_bin = int(round(f0 * (x[1] - x[0]) * n))
    fundamental = m[max(fundamental_bin - 3, 1): fundamental_bin + 4].max()
    k = np.arange(1, n // 2 - 1)
    peaks = k[(m[k] > m[k - 1]) & (m[k] >= m[k + 1]) & (np.abs(k - fundamental_bin) > 3)]
    return 20 * np.log10(fundamental / m[peaks].max())


def first_fall(f, values, level):
    i = np.flatnonzero((values[:-1] >= level) & (values[1:] < level))[0]
    s = (level - values[i]) / (values[i + 1] - values[i])
    return i, s, 10 ** (np.log10(f[i]) + s * (np.log10(f[i + 1]) - np.log10(f[i])))


def gain_phase(h):
    return 20 * np.log10(np.abs(h)), np.degrees(np.unwrap(np.angle(h)))


def bandwidth(f, h):
    g = 20 * np.log10(np.abs(h))
    return first_fall(f, g, g[0] - 3)[2]


def unity_gain(f, h):
    return first_fall(f, 20 * np.log10(np.abs(h)), 0)[2]


def phase_margin(f, h):
    g, p = gain_phase(h)
    i, s, _ = first_fall(f, g, 0)
    return 180 + p[i] + s * (p[i + 1] - p[i])


def gain_margin(f, h):
    g, p = gain_phase(h)
    hits = np.flatnonzero((p[:-1] >= -180) & (p[1:] < -180))
    if hits.size == 0:
        return np.nan
    i = hits[0]
    s = (-180 - p[i]) / (p[i + 1] - p[i])
    return -(g[i] + s * (g[i + 1] - g[i]))


PULSE = {
    "StateLevels": lambda x, y: state_levels(y),
    "RiseTime": rise_time,
    "FallTime": lambda x, y: rise_time(x, y, -1),
    "SlewRate": slew_rate,
    "Overshoot": overshoot,
    "SettlingTime": settling_time,
    "PulseWidth": pulse_width,
    "DutyCycle": duty_cycle,
    "Frequency": frequency,
}
SINE = {
    "THD": thd,
    "SINAD": sine_fit,
    "SNR": lambda x, y: sine_fit(x, y, harmonics=10),
    "ENOB": enob,
    "SFDR": sfdr,
}
RESPONSE = {
    "Bandwidth": bandwidth,
    "UnityGainFrequency": unity_gain,
    "PhaseMargin": phase_margin,
    "GainMargin": gain_margin,
}


def each_run(fn, runs, *arrays):
    parts = [np.split(a, runs) for a in arrays]
    return lambda: [fn(*run) for run in zip(*parts)]


def peers():
    cases = []
    for runs, suffix in ((1, f"/{POINTS}"), (RUNS, f"_runs/{RUNS}")):
        t = times(runs)
        p, late, s = pulse(t), pulse(t - 50e-6), sine(t)
        f, h = loop_gain(runs)
        for name, fn in PULSE.items():
            cases.append((f"BM_{name}{suffix}", POINTS, each_run(fn, runs, t, p)))
        cases.append((f"BM_Delay{suffix}", POINTS, each_run(delay, runs, t, p, late)))
        for name, fn in SINE.items():
            cases.append((f"BM_{name}{suffix}", POINTS, each_run(fn, runs, t, s)))
        for name, fn in RESPONSE.items():
            cases.append((f"BM_{name}{suffix}", POINTS, each_run(fn, runs, f, h)))
    return cases

"""Writes N binary raw files of a Monte Carlo run: the step response of an RC low-pass whose R and C
vary by 10 % (uniform), as a simulator writes them, one file per run.

    /usr/bin/python3 make_runs.py DIR [N]
"""
import os
import sys

import numpy as np

HEADER = """Title: rc monte carlo run {run}
Date: Tue Nov 24 12:00:00  2026
Plotname: Transient Analysis
Flags: real
No. Variables: 3
No. Points: {points}
Variables:
\t0\ttime\ttime
\t1\tv(in)\tvoltage
\t2\tv(out)\tvoltage
Binary:
"""


def write_runs(directory, count, points=2000, seed=1):
    os.makedirs(directory, exist_ok=True)
    rng = np.random.default_rng(seed)
    t = np.linspace(0, 5e-3, points)
    paths = []
    for run in range(count):
        tau = 1e3 * 1e-6 * rng.uniform(0.9, 1.1) * rng.uniform(0.9, 1.1)  # R·C around 1 ms
        v_in = np.where(t > 0, 1.0, 0.0)
        v_out = 1 - np.exp(-t / tau)
        path = os.path.join(directory, f"run{run:04d}.raw")
        with open(path, "wb") as f:
            f.write(HEADER.format(run=run, points=points).encode())
            f.write(np.column_stack([t, v_in, v_out]).astype("<f8").tobytes())
        paths.append(path)
    return paths


if __name__ == "__main__":
    write_runs(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 500)

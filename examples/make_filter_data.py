#!/usr/bin/python3
"""Writes the example data of a second-order RLC low-pass filter.

Series R and L from the source, C to ground, output across C:

    H(s) = 1 / (L C s^2 + R C s + 1),   f0 = 1 / (2 pi sqrt(L C)),   Q = sqrt(L / C) / R

R is stepped over three runs (under-, near-critically and over-damped). step.csv holds the
response to a 1 V step at t = 0 (output voltage and inductor current), ac.csv the complex
transfer function over frequency. Both are computed from the poles of H, not simulated.

Run from anywhere: python3 examples/make_filter_data.py
"""
import os

import numpy as np

L = 10e-3    # H
C = 100e-9   # F
RUNS = [100.0, 300.0, 1000.0]  # ohm
HERE = os.path.dirname(os.path.abspath(__file__))


def label(r):
    return "R=%g" % r


def step_response(r, t):
    """Output voltage and inductor current after a 1 V step, from the two poles of H."""
    p1, p2 = np.roots([L * C, r * C, 1.0]).astype(complex)
    e1, e2 = np.exp(p1 * t), np.exp(p2 * t)
    v = 1.0 + (p2 * e1 - p1 * e2) / (p1 - p2)
    i = C * p1 * p2 * (e1 - e2) / (p1 - p2)  # C dv/dt
    return v.real, i.real


def write(name, header, blocks):
    with open(os.path.join(HERE, name), "w") as f:
        f.write(header + "\n")
        for k, (r, rows) in enumerate(blocks):
            if k:
                f.write("\n")
            f.write("# run: %s\n" % label(r))
            for row in rows:
                f.write(",".join("%.10g" % x for x in row) + "\n")


def main():
    t = np.arange(151) * 5e-6  # 0 .. 750 us
    write("step.csv", "time[s],out[V],i(L)[A]",
          [(r, zip(t, *step_response(r, t))) for r in RUNS])

    f = np.logspace(2, 5, 101)  # 100 Hz .. 100 kHz
    s = 2j * np.pi * f
    blocks = []
    for r in RUNS:
        h = 1.0 / (L * C * s**2 + r * C * s + 1.0)
        blocks.append((r, zip(f, h.real, h.imag)))
    write("ac.csv", "frequency,h.re[V],h.im[V]", blocks)


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Reference values of the special functions for tests/functions/special_test.cpp.

Each argument is a double; the value is computed from that exact double with mpmath at 60
significant digits and rounded once to the nearest double, so the table is as exact as a table
of doubles can be. Writes special_reference.txt beside this script, one case a line:
FUNCTION A B RE IM (B is "-" for the one-argument functions; IM is the imaginary part of lgamma).

    /usr/bin/python3 tests/functions/special_reference.py

Points next to a zero of ln|Γ| for negative x are left out: there ln|Γ| is small while its terms
are not, and a double-precision method is accurate in absolute terms only. Results that would
be subnormal are left out too (they carry fewer than 53 bits).
"""
import os

from mpmath import mp, mpf

mp.dps = 60
TINY = mpf(2) ** -1022


def row(name, a, b, re, im=0):
    fb = "-" if b is None else repr(float(b))
    return f"{name} {float(a)!r} {fb} {float(re)!r} {float(im)!r}"


def log_gamma(x):
    """ln|Γ(x)| and the sign of Γ(x)."""
    x = mpf(x)
    value = mp.re(mp.loggamma(x))
    sign = 1 if x > 0 or int(mp.floor(x)) % 2 == 0 else -1
    return value, sign


def well_conditioned(x):
    """False next to a zero of ln|Γ| at negative x (see the module comment)."""
    value, _ = log_gamma(x)
    if x > 0:
        return True
    # The reflection subtracts ln Γ(-x) from ln(π/|x sin πx|): compare the result with them.
    parts = abs(log_gamma(-x)[0]) + abs(mp.log(mp.pi / abs(x * mp.sinpi(x))))
    return abs(value) > parts * 1e-3


GAMMA_X = [
    1e-300, 1e-100, 1e-10, 1e-5, 0.001, 0.1, 0.25, 0.5, 0.75, 0.9, 0.999, 1.0, 1.0000001, 1.25,
    1.5, 1.75, 1.9999999, 2.0, 2.0000001, 2.25, 2.5, 3.0, 3.3, 4.75, 5.0, 6.5, 7.49, 7.5, 7.99,
    8.0, 8.01, 9.5, 10.0, 12.25, 20.0, 33.3, 50.5, 64.0, 100.1, 127.75, 150.0, 170.5, 171.5,
    171.62, -1e-300, -1e-10, -0.001, -0.3, -0.5, -0.75, -0.999, -1.0000001, -1.5, -1.9, -2.5,
    -3.7, -4.5, -7.25, -10.3, -20.5, -33.75, -50.5, -99.9, -100.5, -150.25, -160.5,
]
LGAMMA_EXTRA_X = [
    1e3, 12345.678, 1e10, 1e20, 1e100, 1e200, 1e305, 2.5326997476752568e+305, -1000.5,
    -123456.789, -1e10 - 0.5, -4503599627370495.5,
]
ERF_X = [
    0.0, 1e-300, 1e-170, 1e-100, 1e-10, 1e-5, 0.001, 0.1, 0.3, 0.5, 0.75, 1.0, 1.2, 1.2247, 1.2248,
    1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 5.9, 6.5, 30.0, 1e10, 1e300, -1e-200, -0.25, -1.0, -1.3, -3.5, -7.0,
]
ERFC_X = [
    0.0, 1e-300, 1e-10, 0.001, 0.1, 0.5, 1.0, 1.2, 1.2247, 1.2248, 1.5, 2.0, 3.0, 4.5, 6.0, 8.0,
    10.0, 15.0, 20.0, 24.0, 26.0, 26.5, -1e-10, -0.5, -1.0, -2.0, -5.0, -10.0, -1e300,
]
GAMMP_A = [0.1, 0.25, 0.5, 1.0, 1.5, 2.5, 4.0, 9.9, 10.0, 15.5, 30.5, 100.0, 250.25, 500.0, 999.5, 1000.0]
GAMMP_X_OVER_A = [1e-6, 0.01, 0.1, 0.3, 0.5, 0.8, 0.9, 0.99, 1.0, 1.01, 1.1, 1.25, 1.5, 2.0, 3.0, 5.0, 10.0, 30.0]
CHISQUARE = [
    (3.84, 1.9), (3.84, 1.0), (0.5, 2.0), (2.0, 2.0), (10.0, 5.0), (10.0, 5.99), (7.815, 3.0),
    (100.0, 90.0), (67.5, 80.0), (1e-8, 1.0), (400.0, 300.0), (0.0, 4.0), (1e3, 1e3),
]


def main():
    rows = []
    for x in GAMMA_X:
        if well_conditioned(x):
            value, sign = log_gamma(x)
            rows.append(row("lgamma", x, None, *((value, 0) if sign > 0 else (0, value))))
        g = mp.gamma(mpf(x))
        if TINY <= abs(g) <= mpf("8e307"):
            rows.append(row("gamma", x, None, g))
    for x in LGAMMA_EXTRA_X:
        if well_conditioned(x):
            value, sign = log_gamma(x)
            rows.append(row("lgamma", x, None, *((value, 0) if sign > 0 else (0, value))))
    for x in ERF_X:
        rows.append(row("erf", x, None, mp.erf(mpf(x))))
    for x in ERFC_X:
        value = mp.erfc(mpf(x))
        if value >= TINY:
            rows.append(row("erfc", x, None, value))
    for a in GAMMP_A:
        xs = sorted({float(mpf(a) * r) for r in GAMMP_X_OVER_A} | {a + 1.0, (a + 1.0) * (1 - 2**-52)})
        for x in xs:
            p = mp.gammainc(mpf(a), 0, mpf(x), regularized=True)
            q = mp.gammainc(mpf(a), mpf(x), mp.inf, regularized=True)
            if p >= TINY:
                rows.append(row("gammp", a, x, p))
            if q >= TINY:
                rows.append(row("gammq", a, x, q))
    for chi, nu in CHISQUARE:
        a = mp.floor(mpf(nu)) / 2
        rows.append(row("chisquare", chi, nu, mp.gammainc(a, 0, mpf(chi) / 2, regularized=True)))
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "special_reference.txt")
    with open(path, "w") as out:
        out.write("# Made by special_reference.py (mpmath, 60 digits): FUNCTION A B RE IM\n")
        out.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    main()

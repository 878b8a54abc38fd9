#!/usr/bin/python3
"""numpy and Python doing the work of bench/sorting_bench.cpp and bench/formatting_bench.cpp.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable) on data made
by the same formulas as the benchmarks:
  SortIdx2 of 10^7 reals       np.argsort (its default introsort: not stable, which SortIdx2 is)
  SortIdx of 10^6 strings      np.argsort of the lower-cased strings, stable (the lower-casing is
                               part of the work: the order ignores case)
  Sort of 10^6 strings         sorted(key=str.lower)
  Search, 10^5 and 10^6        a dict of first positions by lower-cased string, then lookups
  SetUnion of 10^6 strings     a dict keyed by the lower-cased string keeping the first spelling
  FormatNumber noeng/int/%     the same C formats through Python's % operator, the percent style's
                               carried precision included
Run as a script, it runs the benchmarks (wavex_bench from the path given, $WAVEX_BENCH_BINARY or
build/wavex_bench) and the peers side by side and prints the best of three of each, in processor
time (the machine may be busy), and the ratios:

    /usr/bin/python3 bench/peers_sorting.py [path/to/wavex_bench]
"""
import math

import numpy as np

REALS = 10_000_000
STRINGS = 1_000_000
VALUES = 1_000_000


def uniform(n):
    """The top 53 bits of i * 0x9E3779B97F4A7C15 (mod 2^64) as fractions in [0, 1)."""
    i = np.arange(n, dtype=np.uint64)
    with np.errstate(over="ignore"):
        return ((i * np.uint64(0x9E3779B97F4A7C15)) >> np.uint64(11)).astype(np.float64) * 2.0**-53


def node_names(n, offset=0):
    """"V(n<k>)" for odd i, "v(n<k>)" for even i, k = (i * 2654435761 mod 2^32) mod 1000003."""
    return ["%s%d)" % ("V(n" if i % 2 else "v(n", (i * 2654435761) % 4294967296 % 1000003)
            for i in range(offset, offset + n)]


def search(haystack, sought):
    first = {}
    for i, s in enumerate(haystack):
        first.setdefault(s.lower(), i)
    return [first.get(s.lower(), -1) for s in sought]


def set_union(a, b):
    seen = {}
    for s in a:
        seen.setdefault(s.lower(), s)
    for s in b:
        seen.setdefault(s.lower(), s)
    return list(seen.values())


def percent(values, s):
    """FormatNumber's percent style: the precision carried from value to value."""
    out = []
    p = s
    for v in values:
        if v == 0:
            out.append("%.*f%%" % (max(s - 3, 0), 0.0))
        else:
            p = min(max(p - math.floor(math.log10(abs(100 * v))) - 1, 0), 350)
            out.append("%.*f%%" % (p, 100 * v))
    return out


def peers():
    x = uniform(REALS)
    names = node_names(STRINGS)
    names_array = np.array(names)
    half_a, half_b = node_names(STRINGS // 2), node_names(STRINGS // 2, STRINGS // 4)
    searches = {n: (node_names(n), node_names(n, n // 2)) for n in (100_000, 1_000_000)}
    fractions = [float(u) for u in uniform(VALUES)]
    spread = [10.0 ** (30 * u - 15) for u in fractions]
    return [
        ("BM_SortIdx2_Reals/10000000", REALS, lambda: np.argsort(x)),
        ("BM_SortIdx_Strings/1000000", STRINGS, lambda: np.argsort(np.char.lower(names_array), kind="stable")),
        ("BM_Sort_Strings/1000000", STRINGS, lambda: sorted(names, key=str.lower)),
        ("BM_Search_Strings/100000", 100_000, lambda: search(*searches[100_000])),
        ("BM_Search_Strings/1000000", 1_000_000, lambda: search(*searches[1_000_000])),
        ("BM_SetUnion_Strings/1000000", STRINGS, lambda: set_union(half_a, half_b)),
        ("BM_FormatNumber_NoEng/1000000", VALUES, lambda: ["%.4g" % v for v in spread]),
        ("BM_FormatNumber_Int/1000000", VALUES, lambda: ["%.0f" % math.floor(v + 0.5) for v in spread]),
        ("BM_FormatNumber_Percent/1000000", VALUES, lambda: percent(fractions, 4)),
    ]


def run_benchmarks(binary, names):
    """Best processor time in seconds of each named benchmark."""
    import json
    import subprocess
    import tempfile

    pattern = "^(" + "|".join(sorted({n.split("/")[0] for n in names})) + ")/"
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        subprocess.run([binary, "--benchmark_filter=" + pattern, "--benchmark_repetitions=3",
                        "--benchmark_out=" + out.name, "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL)
        report = json.load(open(out.name))
    scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    best = {}
    for b in report["benchmarks"]:
        if b.get("run_type") == "aggregate" or b.get("error_occurred"):
            continue
        name = b.get("run_name", b["name"])
        t = b["cpu_time"] * scale[b["time_unit"]]
        best[name] = min(t, best.get(name, t))
    return best


def main():
    import os
    import sys
    import time

    here = os.path.dirname(os.path.abspath(__file__))
    binary = (sys.argv[1] if len(sys.argv) > 1 else
              os.environ.get("WAVEX_BENCH_BINARY", os.path.join(here, "..", "build", "wavex_bench")))
    cases = peers()
    ours = run_benchmarks(binary, [name for name, _, _ in cases] + ["BM_FormatNumber_Eng/1000000"])
    print("%-34s %12s %12s %9s" % ("benchmark", "wavex ms", "peer ms", "peer/wavex"))
    for name, items, fn in cases:
        fn()
        best = float("inf")
        for _ in range(3):
            start = time.process_time()
            fn()
            best = min(best, time.process_time() - start)
        mine = ours.get(name)
        ratio = "%9.1f" % (best / mine) if mine else "%9s" % "-"
        print("%-34s %12s %12.1f %s" % (name, "%.1f" % (mine * 1e3) if mine else "-", best * 1e3, ratio))
    if "BM_FormatNumber_Eng/1000000" in ours:
        print("%-34s %12.1f %12s %9s" % ("BM_FormatNumber_Eng/1000000", ours["BM_FormatNumber_Eng/1000000"] * 1e3,
                                         "-", "-"))


if __name__ == "__main__":
    main()

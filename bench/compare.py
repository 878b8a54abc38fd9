#!/usr/bin/python3
"""The element-wise family beside numpy and beside the machine's memory bandwidth.

Runs the Elementwise_* Google Benchmarks (JSON output) and numpy doing the same work on data of
the same size and distribution, and prints for each: nanoseconds per element, the ratio to a plain
copy loop of the same size (how many copies' worth of time it takes) and the speed-up over numpy.

    /usr/bin/python3 bench/compare.py [path/to/wavex_bench]

Without a path it uses $WAVEX_BENCH_BINARY, else build/wavex_bench under the repository.
Times are CPU times (best of several runs), so that other processes competing for the processor
sway the figures less; they still compete for the memory bus.
"""
import json
import os
import subprocess
import sys
import tempfile
import time

import numpy as np

N = 10_000_000
REPETITIONS = 5

# (label, benchmark, numpy equivalent, wanted speed-up over numpy or None)
CASES = [
    ("db of complex", "Elementwise_DbComplex", lambda x, z: 20 * np.log10(np.abs(z)), 3.0),
    ("sin of real", "Elementwise_SinReal", lambda x, z: np.sin(x), 1.0),
    ("phase of complex", "Elementwise_PhaseComplex", lambda x, z: np.unwrap(np.angle(z)), 5.0),
    ("mean", "Elementwise_MeanReal", lambda x, z: np.mean(x), 1.0),
    ("v*2+1 (evaluator)", "Elementwise_TimesPlusEvaluate", lambda x, z: x * 2 + 1, None),
    ("copy loop", "Elementwise_CopyLoop", lambda x, z: x.copy(), None),
]
SCALAR_CASES = [
    ("sin(1) via evaluate", "Elementwise_ScalarSinEvaluate"),
    ("sin(1) via callFunction", "Elementwise_ScalarSinCall"),
]


def bench_binary():
    if len(sys.argv) > 1:
        return sys.argv[1]
    if os.environ.get("WAVEX_BENCH_BINARY"):
        return os.environ["WAVEX_BENCH_BINARY"]
    return os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "wavex_bench")


def run_benchmark(binary, name):
    """Best CPU time of one benchmark in ns, or the reason it gave none. Each runs in a process
    of its own, so one that fails cannot take the others with it."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        run = subprocess.run(
            [binary, f"--benchmark_filter=^{name}$", f"--benchmark_repetitions={REPETITIONS}",
             f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if run.returncode != 0:
            return f"the benchmark exited with status {run.returncode}"
        report = json.load(open(out.name))
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    best = None
    for b in report["benchmarks"]:
        if b.get("error_occurred"):
            return b.get("error_message", "error")
        if b.get("run_type") != "aggregate":
            t = b["cpu_time"] * scale[b["time_unit"]]
            best = t if best is None else min(best, t)
    return best if best is not None else "not run"


def numpy_time(fn, *args):
    """Best of REPETITIONS calls, after one warm-up call, in ns."""
    fn(*args)
    best = float("inf")
    for _ in range(REPETITIONS):
        start = time.process_time()
        fn(*args)
        best = min(best, time.process_time() - start)
    return best * 1e9


def main():
    binary = bench_binary()
    if not os.path.exists(binary):
        sys.exit(f"no benchmark binary at {binary}: build with -DWAVEX_BENCH=ON or pass its path")
    wavex = {name: run_benchmark(binary, name) for _, name, *_ in CASES + SCALAR_CASES}

    # The same distributions as the benchmarks: uniform in [-100, 100].
    rng = np.random.default_rng(1)
    x = rng.uniform(-100, 100, N)
    z = rng.uniform(-100, 100, N) + 1j * rng.uniform(-100, 100, N)

    copy = wavex.get("Elementwise_CopyLoop")
    copy_ns = copy / N if isinstance(copy, float) else None
    print(f"{N:,} points; CPU times, the best of {REPETITIONS} runs\n")
    print(f"{'operation':<22}{'wavex ns/elem':>14}{'x copy loop':>13}{'numpy ns/elem':>15}"
          f"{'speed-up':>10}  target")
    missed = 0
    for label, name, fn, wanted in CASES:
        np_ns = numpy_time(fn, x, z) / N
        t = wavex.get(name, "not run")
        if not isinstance(t, float):
            print(f"{label:<22}{'-':>14}{'-':>13}{np_ns:>15.3f}{'-':>10}  ({t})")
            continue
        ns = t / N
        ratio_copy = f"{ns / copy_ns:.2f}" if copy_ns else "-"
        speedup = np_ns / ns
        verdict = ""
        if wanted is not None:
            ok = speedup >= wanted
            missed += not ok
            verdict = f">= {wanted:g}x {'ok' if ok else 'MISSED'}"
        print(f"{label:<22}{ns:>14.3f}{ratio_copy:>13}{np_ns:>15.3f}{speedup:>9.2f}x  {verdict}")

    print(f"\n{'scalar call':<26}{'wavex ns/call':>14}")
    for label, name in SCALAR_CASES:
        t = wavex.get(name, "not run")
        print(f"{label:<26}{t:>14.1f}" if isinstance(t, float) else f"{label:<26}{'-':>14}  ({t})")
    one = np.float64(1.0)
    print(f"{'numpy: np.sin(1.0)':<26}{numpy_time(lambda: [np.sin(one) for _ in range(1000)]) / 1000:>14.1f}")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())

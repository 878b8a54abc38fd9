#!/usr/bin/python3
"""wavex beside its peers (numpy, scipy) and beside the machine's memory bandwidth, in one run.

Every bench/peers_*.py module has a function peers() that returns entries
    (Google Benchmark name, elements per iteration, zero-argument callable[, wanted speed-up])
where the callable does with numpy/scipy the work the named benchmark does with wavex, on data
prepared beforehand. This script runs each named benchmark of the wavex_bench binary (JSON output)
and the peer's callable, and prints nanoseconds per element, the ratio to a plain copy loop of
10^7 doubles (the memory-bandwidth bound: how many copies' worth of time the work takes) and the
speed-up over the peer. Benchmarks without a peer are listed after, in ns per element.

    /usr/bin/python3 bench/compare.py [path/to/wavex_bench] [--filter REGEX]

Without a path it uses $WAVEX_BENCH_BINARY, else build/wavex_bench. Times are CPU times, the best
of several runs, so that other processes competing for the processor sway the figures less.
"""
import argparse
import gc
import glob
import importlib.util
import json
import os
import re
import subprocess
import sys
import tempfile
import time

REPETITIONS = 5
HERE = os.path.dirname(os.path.abspath(__file__))
BASELINE = ("Elementwise_CopyLoop", 10_000_000)


def run_benchmarks(binary, pattern):
    """{name: best CPU time in ns or the reason there is none} for the benchmarks matching."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        run = subprocess.run([binary, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={REPETITIONS}",
                              f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            report = json.load(open(out.name))
        except ValueError:
            return {}
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}
    times = {}
    for b in report.get("benchmarks", []):
        name = b.get("run_name", b["name"])
        if b.get("error_occurred"):
            times[name] = b.get("error_message", "error")
        elif b.get("run_type") != "aggregate":
            t = b["cpu_time"] * scale[b["time_unit"]]
            old = times.get(name)
            times[name] = t if not isinstance(old, float) else min(old, t)
    if run.returncode != 0:
        for name in times:
            times.setdefault(name, f"exited with status {run.returncode}")
    return times


def best_time(fn):
    """Best of REPETITIONS calls after a warm-up, in ns of CPU time."""
    fn()
    best = float("inf")
    for _ in range(REPETITIONS):
        start = time.process_time()
        fn()
        best = min(best, time.process_time() - start)
    return best * 1e9


def load_peer_modules():
    for path in sorted(glob.glob(os.path.join(HERE, "peers_*.py"))):
        spec = importlib.util.spec_from_file_location(os.path.basename(path)[:-3], path)
        module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(module)
        yield os.path.basename(path)[6:-3], module


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binary", nargs="?", default=os.environ.get(
        "WAVEX_BENCH_BINARY", os.path.join(HERE, "..", "build", "wavex_bench")))
    parser.add_argument("--filter", default=".", help="only benchmarks whose name matches")
    args = parser.parse_args()
    if not os.path.exists(args.binary):
        sys.exit(f"no benchmark binary at {args.binary}: build with -DWAVEX_BENCH=ON or pass its path")
    wanted = re.compile(args.filter)

    # Only the benchmarks asked for, and the baseline the ratios need.
    pattern = f"({args.filter})|^{BASELINE[0]}$"
    wavex = run_benchmarks(args.binary, pattern)
    if not wavex:  # one benchmark brought the run down: run them one by one
        listing = subprocess.run([args.binary, "--benchmark_list_tests"], capture_output=True, text=True).stdout
        for name in filter(re.compile(pattern).search, listing.split()):
            wavex.update(run_benchmarks(args.binary, "^" + re.escape(name) + "$") or {name: "crashed"})
    base = wavex.get(BASELINE[0])
    copy_ns = base / BASELINE[1] if isinstance(base, float) else None
    print(f"CPU times, the best of {REPETITIONS} runs; copy loop {copy_ns:.3f} ns per double\n" if copy_ns
          else f"CPU times, the best of {REPETITIONS} runs; no copy-loop baseline\n")
    print(f"{'benchmark':<40}{'ns/elem':>10}{'x copy':>8}{'peer ns/elem':>14}{'speed-up':>10}  target")
    missed, seen = 0, set()
    for family, module in load_peer_modules():
        entries = [e for e in module.peers() if wanted.search(e[0])]
        if not entries:
            continue
        print(f"-- {family}")
        for name, elements, fn, *target in entries:
            seen.add(name)
            peer_ns = best_time(fn) / elements
            t = wavex.get(name, "not run")
            if not isinstance(t, float):
                print(f"{name:<40}{'-':>10}{'-':>8}{peer_ns:>14.3f}{'-':>10}  ({t})")
                continue
            ns = t / elements
            ratio = f"{ns / copy_ns:.2f}" if copy_ns else "-"
            speedup = peer_ns / ns
            verdict = ""
            if target:
                ok = speedup >= target[0]
                missed += not ok
                verdict = f">= {target[0]:g}x {'ok' if ok else 'MISSED'}"
            print(f"{name:<40}{ns:>10.3f}{ratio:>8}{peer_ns:>14.3f}{speedup:>9.2f}x  {verdict}")
        del entries, module
        gc.collect()

    others = sorted(n for n in wavex if n not in seen and wanted.search(n))
    if others:
        print("\n-- without a peer (ns per iteration)")
        for name in others:
            t = wavex[name]
            print(f"{name:<40}{t:>14.1f}" if isinstance(t, float) else f"{name:<40}{'-':>14}  ({t})")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())

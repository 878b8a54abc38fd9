#!/usr/bin/python3
"""Two builds of wavex_bench side by side in one run: each benchmark runs in one binary, then at once
in the other, so that both see the same load. Prints the CPU times and their ratio a/b.

    /usr/bin/python3 bench/compare_builds.py build/wavex_bench build-native/wavex_bench \\
        [--filter REGEX] [--repetitions N]
"""
import argparse
import re
import subprocess

import compare
from compare import run_benchmarks


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("a")
    parser.add_argument("b")
    parser.add_argument("--filter", default=".")
    parser.add_argument("--repetitions", type=int, default=compare.REPETITIONS)
    args = parser.parse_args()
    compare.REPETITIONS = args.repetitions
    names = subprocess.run([args.a, "--benchmark_list_tests", f"--benchmark_filter={args.filter}"],
                           capture_output=True, text=True, check=True).stdout.split()
    print(f"{'benchmark':40} {'a ns':>12} {'b ns':>12} {'a/b':>6}")
    ratios = []
    for name in names:
        pattern = f"^{re.escape(name)}$"
        a, b = run_benchmarks(args.a, pattern).get(name), run_benchmarks(args.b, pattern).get(name)
        if isinstance(a, float) and isinstance(b, float):
            ratios.append(a / b)
            print(f"{name:40} {a:12.0f} {b:12.0f} {a / b:6.2f}", flush=True)
        else:
            print(f"{name:40} {a!s:>12} {b!s:>12}", flush=True)
    if ratios:
        print(f"{'worst':40} {'':12} {'':12} {max(ratios):6.2f}")


if __name__ == "__main__":
    main()

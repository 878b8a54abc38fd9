#!/usr/bin/python3
"""Two builds of wavex_bench side by side in one run, family by family (each family's benchmarks
run in one binary, then in the other, before the next family), so that both see the same load.
Prints each benchmark's CPU time in both and their ratio, and each family's worst ratio.

    /usr/bin/python3 bench/compare_builds.py build/wavex_bench build-native/wavex_bench [--filter REGEX]
"""
import argparse
import subprocess

from compare import run_benchmarks


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("a")
    parser.add_argument("b")
    parser.add_argument("--filter", default=".")
    args = parser.parse_args()
    names = subprocess.run([args.a, "--benchmark_list_tests", f"--benchmark_filter={args.filter}"],
                           capture_output=True, text=True, check=True).stdout.split()
    families = sorted({n.split("_")[0] for n in names})
    print(f"{'benchmark':48} {'a ns':>12} {'b ns':>12} {'a/b':>6}")
    for family in families:
        wanted = "|".join(f"^{n}$" for n in names if n.startswith(family + "_"))
        a, b = run_benchmarks(args.a, wanted), run_benchmarks(args.b, wanted)
        ratios = []
        for name in sorted(a):
            if isinstance(a[name], float) and isinstance(b.get(name), float):
                ratios.append(a[name] / b[name])
                print(f"{name:48} {a[name]:12.0f} {b[name]:12.0f} {ratios[-1]:6.2f}")
        if ratios:
            print(f"{family + ' worst':48} {'':12} {'':12} {max(ratios):6.2f}")


if __name__ == "__main__":
    main()

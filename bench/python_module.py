#!/usr/bin/python3
"""db of a 10^7-point complex numpy array through the Python module beside the same call in C++
(the Elementwise_DbComplex benchmark), and the peak memory the call adds over its input.

    PYTHONPATH=build/python /usr/bin/python3 bench/python_module.py [path/to/wavex_bench]
"""
import os
import resource
import subprocess
import sys
import time

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from compare import run_benchmarks  # noqa: E402

N = 10_000_000


def peak_mb():
    return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024


def memory_run():
    """Peak memory added by wrapping the array and evaluating db, in MB (run in a fresh process)."""
    import wavex
    z = np.empty(2 * N)
    np.random.default_rng(1).standard_normal(out=z)  # in place: no temporary raises the peak
    z = z.view(np.complex128)
    before = peak_mb()
    wx = wavex.Interpreter()
    wx["z"] = wavex.Vector(z)
    r = wx.eval("db(z)")
    print(peak_mb() - before, z.nbytes / 2**20, r.y.nbytes / 2**20)


def main():
    if sys.argv[1:] == ["--memory"]:
        return memory_run()
    import wavex
    binary = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "build", "wavex_bench")
    cpp_ns = run_benchmarks(binary, "^Elementwise_DbComplex$")["Elementwise_DbComplex"]
    z = np.random.default_rng(1).standard_normal(2 * N).view(np.complex128)
    wx = wavex.Interpreter()
    best_eval, best_all = float("inf"), float("inf")
    for _ in range(5):
        start = time.process_time()
        wx["z"] = wavex.Vector(z)
        middle = time.process_time()
        wx.eval("db(z)")
        end = time.process_time()
        best_eval, best_all = min(best_eval, end - middle), min(best_all, end - start)
    added, input_mb, output_mb = map(float, subprocess.check_output([sys.executable, __file__, "--memory"]).split())
    print(f"C++ call          {cpp_ns / N:6.3f} ns/element")
    print(f"module eval       {best_eval * 1e9 / N:6.3f} ns/element  ({best_eval * 1e9 / cpp_ns:.2f}x the C++ call)")
    print(f"Vector() + eval   {best_all * 1e9 / N:6.3f} ns/element  ({best_all * 1e9 / cpp_ns:.2f}x the C++ call)")
    print(f"peak memory added {added:.0f} MB for a {input_mb:.0f} MB input and a {output_mb:.0f} MB result")


if __name__ == "__main__":
    main()

"""Python doing the work of bench/text_files_bench.cpp, on a file made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): the lines
of a 100 MB netlist-like file by open().read().splitlines(), elements being lines.
"""
import atexit
import os
import tempfile

BYTES = 100_000_000


def line(i):
    """Line i of the file, as bench/text_files_bench.cpp writes it."""
    if i % 10 == 0:
        return f"* section {i}\n"
    if i % 4 == 1:
        return f"+ tc1={i % 7} tc2=0\n"
    return f"R{i} n{i} n{i + 1} {i % 1000}k\n"


def text_file():
    """(path, number of lines) of the file, removed at exit."""
    parts, size, i = [], 0, 0
    while size < BYTES:
        s = line(i)
        parts.append(s)
        size += len(s)
        i += 1
    fd, path = tempfile.mkstemp(prefix="wavex_peer_")
    with os.fdopen(fd, "w") as f:
        f.write("".join(parts))
    atexit.register(os.remove, path)
    return path, i


def read_lines(path):
    with open(path) as f:
        return f.read().splitlines()


def peers():
    path, lines = text_file()
    return [("BM_ReadFile", lines, lambda: read_lines(path))]

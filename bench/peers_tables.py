"""Python doing the work of bench/tables_bench.cpp on the same table of 10^6 rows.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): the rows
meeting gain > 20 and corner 'ss' (any case) found with the csv module, and their bw column as
floats for QueryData; elements are rows.
"""
import csv

ROWS = 1_000_000
CORNERS = ("ss", "tt", "ff")


def row(i):
    """Row i, as bench/tables_bench.cpp writes it (std::to_string gives six decimals)."""
    return f"r{i},{(i * 37) % 400 / 10.0:.6f},{CORNERS[i % 3]},{1e6 + i % 1000:.6f}"


def select_rows(lines):
    reader = csv.reader(lines)
    header = next(reader)
    gain, corner = header.index("gain"), header.index("corner")
    return [lines[0]] + [lines[k + 1] for k, r in enumerate(reader) if float(r[gain]) > 20 and r[corner].lower() == "ss"]


def query_data(lines):
    reader = csv.reader(lines)
    header = next(reader)
    gain, corner, bw = header.index("gain"), header.index("corner"), header.index("bw")
    return [float(r[bw]) for r in reader if float(r[gain]) > 20 and r[corner].lower() == "ss"]


def peers():
    lines = ["name,gain,corner,bw"] + [row(i) for i in range(ROWS)]
    return [("BM_SelectRows", ROWS, lambda: select_rows(lines)),
            ("BM_QueryData", ROWS, lambda: query_data(lines))]

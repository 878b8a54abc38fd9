"""Python doing the work of bench/files_bench.cpp, on a directory made the same way.

peers() gives (Google Benchmark name, elements per iteration, zero-argument callable): the sorted
"*.csv" names of a directory of 20 000 files (os.scandir and fnmatch), and one value read from
an ini file of 20 000 entries by configparser (the file parsed on each call, as IniRead does).
"""
import atexit
import configparser
import fnmatch
import os
import shutil
import tempfile

FILES = 20_000
SECTIONS, KEYS = 200, 100


def scratch():
    d = tempfile.mkdtemp(prefix="wavex_peer_files_")
    atexit.register(shutil.rmtree, d, True)
    for i in range(FILES):
        open(os.path.join(d, f"run{i}" + (".csv" if i % 2 else ".log")), "w").close()
    with open(os.path.join(d, "big.ini.txt"), "w") as f:
        for s in range(SECTIONS):
            f.write(f"; section {s}\n[section{s}]\n")
            f.writelines(f"key{k} = value {s * k}\n" for k in range(KEYS))
    return d


def list_files(d):
    with os.scandir(d) as entries:
        return sorted(e.name for e in entries if e.is_file() and fnmatch.fnmatchcase(e.name, "*.csv"))


def ini_read(path):
    parser = configparser.ConfigParser(interpolation=None)
    parser.read(path)
    return parser.get("section199", "key99")


def peers():
    d = scratch()
    ini = os.path.join(d, "big.ini.txt")
    return [("BM_ListFiles", FILES + 1, lambda: list_files(d)),
            ("BM_IniRead", SECTIONS * KEYS, lambda: ini_read(ini))]

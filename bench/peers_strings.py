"""Python doing the work of bench/strings_bench.cpp on the same data.

peers() returns (Google Benchmark name, elements per iteration, callable) for each benchmark that
has a peer: Parse as str.split after turning commas into spaces (the same tokens), Scan as
str.split(';'), RegExp as re.search with the whole match and groups gathered per subject, MD5 with
hashlib, the percent-encoding with urllib.parse.quote.
"""
import hashlib
import re
import urllib.parse

LINE_BYTES = 10_000_000
SUBJECTS = 100_000


def word_line(size, delimiters):
    """Words w<number> between the delimiters in turn, cut to `size` bytes (as strings_bench.cpp)."""
    parts = []
    length = 0
    i = 0
    while length < size:
        word = "w%d%s" % (i * 7919 % 100000, delimiters[i % 4])
        parts.append(word)
        length += len(word)
        i += 1
    return "".join(parts)[:size]


def regex_subjects():
    return ["R%d%s%d.%dk" % (i, "=" if i % 10 else " ", i % 1000, i % 10) for i in range(SUBJECTS)]


def peers():
    parse_line = word_line(LINE_BYTES, [" ", ",", "  ", ", "])
    scan_line = word_line(LINE_BYTES, [";", ";", ";;", ";"])
    parse_bytes = parse_line.encode()
    subjects = regex_subjects()
    pattern = re.compile(r"(\w+)=([\d.]+)(\w*)")

    def regexp():
        out = []
        for s in subjects:
            m = pattern.search(s)
            if m:
                out.append(m.group(0))
                out.extend(g or "" for g in m.groups())
        return out

    return [
        ("BM_Parse_Line/10000000", LINE_BYTES, lambda: parse_line.replace(",", " ").split()),
        ("BM_Scan_Line/10000000", LINE_BYTES, lambda: scan_line.split(";")),
        ("BM_RegExp_Subjects/100000", SUBJECTS, regexp),
        ("BM_GetMD5String_Line/10000000", LINE_BYTES, lambda: hashlib.md5(parse_bytes).hexdigest()),
        ("BM_EscapeStringEncode_Line/10000000", LINE_BYTES, lambda: urllib.parse.quote(parse_line, safe="-._~")),
    ]


if __name__ == "__main__":
    # A quick look without bench/compare.py: best of five, in processor time (the machine may be busy).
    import time

    for name, items, fn in peers():
        fn()
        best = float("inf")
        for _ in range(5):
            start = time.process_time()
            fn()
            best = min(best, time.process_time() - start)
        print("%-40s %9.1f ms %9.1f M items/s" % (name, best * 1e3, items / best / 1e6))

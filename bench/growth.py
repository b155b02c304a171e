#!/usr/bin/env python3
"""Measures how the program's time grows with hostile files: time(2n) / time(n) for each family.

usage: growth.py [--program PATH] [--scale FACTOR] [FAMILY...]

Linear growth gives 2; every family must stay at or below 2.5. The exit status is 1 when one does
not. Times are the smallest of several runs of the whole process.
"""
import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

LIMIT = 2.5
RUNS = 5
# With the header, without which the converter would not find the data.
ROOT = (b"<TEST_EQ_TABLE><HEADER><PRODUCTION_DATE/></HEADER><SPECIFIC_HEADER><APPLICABILITY_DATE/>"
        b"<APPLICABILITY_END_DATE/></SPECIFIC_HEADER>")
END = b"</TEST_EQ_TABLE>"
DATA = ROOT + b"<DATA><COEFFICIENTS_LIST tdi_config='A'>"
VECTOR = (DATA + b"<COEFFICIENTS detector_id='1'><NB_OF_PIXELS>1</NB_OF_PIXELS>"
          b"<ON_BOARD_EQUALIZATION><APPLICABILITY_DATE/><COEFF_A1>")
DATA_END = b"</COEFFICIENTS_LIST></DATA>" + END
VECTOR_END = b"</COEFF_A1></ON_BOARD_EQUALIZATION></COEFFICIENTS>" + DATA_END

# Family: its text for size n, and the n that takes a good part of a second.
FAMILIES = {
    "nested unended tags": (lambda n: ROOT + b"<aaaa>" * n, 1_000_000),
    "n open and n lone end tags": (lambda n: ROOT + b"<a>" * n + b"</b>" * n, 500_000),
    "n open tags, n ends of the outermost": (lambda n: ROOT + b"<a><b>" * n + b"</a>" * n, 300_000),
    "names of =": (lambda n: ROOT + b"<a" + b"=" * n + b"></a=>" * 20, 4_000_000),
    "attributes in one tag": (
        lambda n: DATA + b"<COEFFICIENTS " + b"".join(b"a%d='1' " % i for i in range(n)) +
        b"detector_id='1'></COEFFICIENTS>" + DATA_END, 1_000_000),
    "siblings": (lambda n: DATA + b"<COEFFICIENTS/>" * n + DATA_END, 1_000_000),
    "siblings that are not sought": (lambda n: ROOT + b"<a/>" * n + END, 2_000_000),
    "one vector": (lambda n: VECTOR + b"1.5 " * n + VECTOR_END, 8_000_000),
    "references": (lambda n: VECTOR + b"&#49;&amp" * n + VECTOR_END, 1_000_000),
    "text between comments": (lambda n: VECTOR + b"1<!---->" * n + VECTOR_END, 1_000_000),
    "only <": (lambda n: b"<" * n, 4_000_000),
    "only <!": (lambda n: b"<!" * n, 2_000_000),
    "only &": (lambda n: VECTOR + b"&" * n + VECTOR_END, 8_000_000),
    "NUL bytes": (lambda n: ROOT + b"\0a" * n, 8_000_000),
    "invalid UTF-8": (lambda n: ROOT + b"\xff" * n, 8_000_000),
    "quotes": (lambda n: ROOT + b"<a '" + b"'\"" * n, 8_000_000),
    "declarations in a document type": (
        lambda n: b"<!DOCTYPE a [" + b"<!ENTITY a '>'><!--'-->" * n, 1_000_000),
    "a stateful encoding": (
        lambda n: b"<?xml encoding='ISO-2022-JP'?>" + ROOT + b"\x1b$B0!\x1b(Ba" * n, 500_000),
}


def seconds(program, path):
    best = float("inf")
    for _ in range(RUNS):
        start = time.perf_counter()
        subprocess.run([program, path], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        best = min(best, time.perf_counter() - start)
    return best


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", default=str(here.parent / "build/release/eqconvert"))
    parser.add_argument("--scale", type=float, default=1.0, help="factor on the sizes")
    parser.add_argument("families", nargs="*", metavar="FAMILY")
    options = parser.parse_args()
    failed = False
    print(f"{'family':40} {'MB':>6} {'time(n)':>9} {'time(2n)':>9} {'ratio':>6}")
    with tempfile.TemporaryDirectory() as folder:
        path = str(pathlib.Path(folder) / "hostile.xml")
        for name, (text, size) in FAMILIES.items():
            if options.families and name not in options.families:
                continue
            times = []
            for factor in (1, 2):
                pathlib.Path(path).write_bytes(text(int(size * options.scale) * factor))
                times.append(seconds(options.program, path))
            ratio = times[1] / times[0]
            failed |= ratio > LIMIT
            size_mb = pathlib.Path(path).stat().st_size / 1e6
            print(f"{name:40} {size_mb:6.1f} {times[0]:8.3f}s {times[1]:8.3f}s {ratio:6.2f}"
                  f"{'  above the limit' if ratio > LIMIT else ''}", flush=True)
    sys.exit(failed)


main()

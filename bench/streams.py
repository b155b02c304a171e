#!/usr/bin/env python3
"""Times the stream library against plain stdio: a file of 1 GB read in pieces of 2 KB.

usage: streams.py [--build DIR] [--size BYTES] [--runs N]

The programs run in turn (A B A B ...); the table shows the median and the least of the whole
processes' times, the ratio of the medians to fread, and the peak memory. All must print the same sum.
"""
import argparse
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

WAYS = ["fread", "basic", "buffer", "buffer:64", "bmulti"]
LIMIT = 1.5  # of "buffer" to "fread"


def run(program, way, path):
    start = time.perf_counter()
    output = subprocess.run([program, way, path], capture_output=True, check=True, text=True).stdout
    total, peak = output.splitlines()
    return time.perf_counter() - start, peak, total


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default=str(here.parent / "build/release"))
    parser.add_argument("--size", type=int, default=1 << 30)
    parser.add_argument("--runs", type=int, default=7)
    options = parser.parse_args()
    program = str(pathlib.Path(options.build) / "stream_read")
    with tempfile.NamedTemporaryFile() as file:
        block = bytes(range(256)) * 4096
        for _ in range(options.size // len(block)):
            file.write(block)
        file.flush()
        results = {way: [] for way in WAYS}
        for _ in range(options.runs):
            for way in WAYS:
                results[way].append(run(program, way, file.name))
    if len({output for runs in results.values() for _, _, output in runs}) != 1:
        sys.exit("the sums differ")
    plain = statistics.median(seconds for seconds, _, _ in results["fread"])
    print(f"{'way':10} {'median':>9} {'least':>9} {'ratio':>6} {'peak':>9}")
    for way, runs in results.items():
        median = statistics.median(seconds for seconds, _, _ in runs)
        print(f"{way:10} {median:8.3f}s {min(r[0] for r in runs):8.3f}s {median / plain:6.2f} "
              f"{max(r[1] for r in runs):>9}")
        if way == "buffer" and median / plain > LIMIT:
            sys.exit("above the limit")


main()

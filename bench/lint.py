#!/usr/bin/env python3
"""Times eqlint against eqconvert on the same files, both in turn, bound to one processor.

usage: lint.py [--build DIR] [--data DIR] [--runs N]

Prints the medians, the most memory, and the ratios; ends with 1 where one is above its bound: 5 times
the time and 2.5 times the memory on clean files, 10 times the time on 30 MB with a million findings.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import sys

import workloads

ROOT = pathlib.Path(__file__).resolve().parents[1]
SAMPLE = (ROOT / "samples/EQ_B4.xml").read_text()
FINDINGS = 1_000_000


def one_vector():
    """A vector of a million values with a comma."""
    values = " ".join(["1,500000000000000000000000001"] * FINDINGS)
    return SAMPLE.replace(">1 2 3<", f">{values}<", 1)


def many_vectors():
    """Vectors of three values, each with a comma behind it."""
    kinds = "".join(f"<COEFF_{kind}>1, 2, 3,</COEFF_{kind}>\n" for kind in ("A1", "A2", "ZS", "D"))
    detectors = "".join(
        f'<COEFFICIENTS detector_id="{number}"><NB_OF_PIXELS>3</NB_OF_PIXELS><ON_BOARD_EQUALIZATION>'
        f"<APPLICABILITY_DATE/>\n{kinds}</ON_BOARD_EQUALIZATION></COEFFICIENTS>\n" for number in range(1, 13))
    count = FINDINGS // (12 * 4 * 3)
    lists = "".join(f'<COEFFICIENTS_LIST tdi_config="{i}">{detectors}</COEFFICIENTS_LIST>\n' for i in range(count))
    return SAMPLE.partition("<COEFFICIENTS_LIST")[0] + lists + "</DATA></TEST_EQ_TABLE>"


def run(build, program, path, output):
    """Milliseconds from start to end, and the most memory in MB."""
    done = subprocess.run([build / "launch", output, build / program, path], check=True, capture_output=True)
    nanoseconds, kilobytes, *_ = map(int, done.stdout.split())
    return nanoseconds / 1e6, kilobytes * 1024 / 1e6


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--data", type=pathlib.Path, default=ROOT / "build/bench-data")
    parser.add_argument("--runs", type=int, default=21)
    options = parser.parse_args()
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    band = workloads.made(options.data, "band", "mix")[0]
    inputs = [("band", next(iter(sorted(band.glob("*.xml")))), options.runs, 5, 2.5)]
    for make in (one_vector, many_vectors):
        path = options.data / f"findings-{make.__name__}.xml"
        path.write_text(make())
        inputs.append((make.__name__, path, 3, 10, None))
    missed, output = [], options.data / "output"
    print(f"{'input':14}{'MB':>6}{'eqlint ms':>12}{'eqconvert ms':>14}{'ratio':>7}{'eqlint MB':>11}{'eqconvert MB':>14}")
    for name, path, runs, most_time, most_memory in inputs:
        results = {program: [] for program in ("eqlint", "eqconvert")}
        for _ in range(runs):
            for program, row in results.items():
                row.append(run(options.build, program, path, output))
        times, memory = ([statistics.median(row[i] for row in results[p]) for p in results] for i in (0, 1))
        ratio = times[0] / times[1]
        print(f"{name:14}{path.stat().st_size / 1e6:6.1f}{times[0]:12.2f}{times[1]:14.2f}{ratio:7.2f}"
              f"{memory[0]:11.1f}{memory[1]:14.1f}")
        output.unlink()
        missed += [f"{name} time"] * (ratio > most_time)
        missed += [f"{name} memory"] * (most_memory is not None and memory[0] > most_memory * memory[1])
    print("missed: " + ", ".join(missed) if missed else "all bounds are kept")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())

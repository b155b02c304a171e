#!/usr/bin/env python3
"""Times eqrecord on large records, bound to one processor.

usage: record.py [--build DIR] [--data DIR] [--runs N]

Prints the medians, the most memory, and how much of the record is worked through in a second; ends with 1
where a bound is missed: 50 ms and 8 MB for info, 100 MB/s and 16 MB for what reads or writes all values, 1,000
MB/s of each record for what compares them.
"""
import argparse
import array
import os
import pathlib
import random
import shutil
import statistics
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PIXELS = 2592
BLOCK_MB = 48 * 8 * PIXELS / 1e6  # of one configuration
# Records by their digits of a value and their size in MB.
RECORDS = {"typical": (10, 200), "full": (17, 200), "large": (10, 1000), "other": (17, 1000)}
# What is run on which record: arguments, the exit status, ms, MB/s, MB. "JSON" is that of the record;
# OTHER is another record of the size of "large", and COPY a copy of that.
MEASURES = [
    ("info", "large", ["info", "RECORD"], 0, 50, None, 8),
    ("dump json", "typical", ["dump", "--format", "json", "RECORD"], 0, None, 100, 16),
    ("dump json", "full", ["dump", "--format", "json", "RECORD"], 0, None, 100, 16),
    ("build", "typical", ["build", "JSON"], 0, None, 100, 16),
    ("build", "full", ["build", "JSON"], 0, None, 100, 16),
    ("diff, same", "large", ["diff", "RECORD", "COPY"], 0, None, 1000, 16),
    ("diff, other", "large", ["diff", "RECORD", "OTHER"], 1, None, 1000, 16),
]


def make_record(path, digits, megabytes):
    """Writes a record of one file. Its vectors are pieces of one list of values, with all their bytes in use."""
    rng = random.Random(1)
    values = array.array("d", (round(rng.uniform(0.5, 2), digits - 1) for _ in range(100 * PIXELS)))
    configurations = round(megabytes / BLOCK_MB)
    with open(path, "wb") as file:
        file.write(b"ZEDA14VORN/_EQ_TABLE" + b"2015-06-23T10:00:00" * 3 + b" 1" + struct.pack("<hB", 7, 4)
                   + b"09EQ_B4.xml" + bytes([configurations % 256]))
        for number in range(configurations):
            file.write(b"06" + b"TDI%03d" % (number % 1000) + struct.pack("<dh", 0.5, PIXELS))
            for _ in range(48):
                start = rng.randrange(len(values) - PIXELS)
                file.write(values[start:start + PIXELS].tobytes())


def made(options, name):
    """The record of a name and, unless only info is asked of it, its JSON; made once."""
    record, text = (options.data / f"record-{name}.{kind}" for kind in ("record", "json"))
    if not record.exists():
        make_record(record.with_suffix(".part"), *RECORDS[name])
        record.with_suffix(".part").rename(record)
    if name != "large":
        if not text.exists():
            subprocess.run([options.build / "eqrecord", "dump", "--format", "json", "-o", text, record], check=True)
        return {"RECORD": record, "JSON": text}
    other, copy = (options.data / f"record-{kind}.record" for kind in ("other", "copy"))
    if not other.exists():
        make_record(other, *RECORDS["other"])
    if not copy.exists():
        shutil.copyfile(record, copy)
    return {"RECORD": record, "OTHER": other, "COPY": copy}


def run(options, arguments, wanted):
    """Milliseconds from start to end, and the most memory in MB."""
    command = [options.build / "launch", "/dev/null", options.build / "eqrecord", *arguments]
    done = subprocess.run(command, check=True, capture_output=True)
    nanoseconds, kilobytes, status, _ = map(int, done.stdout.split())
    assert status == wanted, (status, command)
    return nanoseconds / 1e6, kilobytes * 1024 / 1e6


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--data", type=pathlib.Path, default=ROOT / "build/bench-data")
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    options.data.mkdir(parents=True, exist_ok=True)
    missed = []
    print(f"{'verb':12}{'record':10}{'MB':>7}{'ms':>10}{'MB/s':>9}{'memory MB':>11}")
    for verb, name, arguments, status, most_time, least_speed, most_memory in MEASURES:
        paths = made(options, name)
        arguments = [paths.get(argument, argument) for argument in arguments]
        time, memory = map(statistics.median, zip(*(run(options, arguments, status) for _ in range(options.runs))))
        size = paths["RECORD"].stat().st_size / 1e6
        speed = "" if least_speed is None else f"{size / time * 1e3:.0f}"
        print(f"{verb:12}{name:10}{size:7.0f}{time:10.1f}{speed:>9}{memory:11.1f}")
        missed += [f"{verb} {name} time"] * (most_time is not None and time > most_time)
        missed += [f"{verb} {name} speed"] * (least_speed is not None and size / time * 1e3 < least_speed)
        missed += [f"{verb} {name} memory"] * (memory > most_memory)
    print("missed: " + ", ".join(missed) if missed else "all bounds are kept")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())

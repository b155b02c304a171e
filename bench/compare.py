#!/usr/bin/env python3
"""Times eqconvert against peers that do the same job with RapidXML or pugixml and std::from_chars.

usage: compare.py [--build DIR] [--data DIR] [--scratch DIR] [--runs N] [WORKLOAD[:FORMAT]...]

  tiny      one file, 2 detectors x 3 pixels       many      2,000 files of 20 KB
  band      one file, 3 configurations, 12 x 2592  manyelem  one file, 5,000 configurations x 12 x 1
  set13     13 files, 2 configurations each        big       one file of 1 GB, mixed formats only
  real13    13 files of 1.7 to 30 MB, mixed only   growth    30 MB against 1 GB: the same MB/s?
                                                   (default: all)

FORMAT is that of the numbers: short (6 digits), sci9 (10 digits with exponent), full17, or mix
(another one for each vector); default: all of them. First each program converts the workload once,
and all records and all messages have to be equal. Then the programs run in turn (A B C A B C ...);
the table shows the median and, in parentheses, the least wall time of the whole process, from its
start to its end. MB are 10^6 bytes; "ratio" is eqconvert's median to the RapidXML peer's. Every
number that misses its bound is marked with a *, and the exit status is 1 then.

Everything runs on one processor. Input comes from the page cache. The record goes to a file in memory, which each run writes over in
place; messages go to /dev/null, one write each.
"""
import argparse
import hashlib
import os
import pathlib
import platform
import statistics
import subprocess
import sys
import tempfile

import workloads

PROGRAMS = ["eqconvert", "peer_rapidxml", "peer_pugixml"]
RUNS = {"tiny": 201}
MOST_RUNS = 21  # of every other workload
# Most of eqconvert's time to the RapidXML peer's.
RATIOS = {
    ("tiny", "mix"): 0.70, ("band", "mix"): 0.50, ("band", "full17"): 0.52, ("set13", "mix"): 0.55,
    ("real13", "mix"): 0.55, ("many", "mix"): 0.95, ("manyelem", "mix"): 1.05, ("big", "mix"): 0.60,
}
SPARE_MEMORY = 6_000_000  # above a file and 32 bytes for each of its elements
MEMORY_FACTORS = {"big": 1.05}
LEAST_GROWTH = 0.9  # MB/s on 1 GB to MB/s on 30 MB
COLUMNS = "{:<8} {:<6} {:>7}  {:>18} {:>6}  {:>18}  {:>18}  {:>6} {:>5}  {:>9} {:>6}"


class Bench:
    def __init__(self, options, scratch):
        self.build = pathlib.Path(options.build).resolve()
        self.data = pathlib.Path(options.data).resolve()
        self.scratch = scratch
        self.messages = scratch / "messages"
        self.most_runs = options.runs
        self.missed = []

    def made(self, name, form):
        return workloads.made(self.data, name, form)

    def digests(self, program, folder, files, record):
        """Hashes of the record and the messages of one run, and the record's size."""
        record.unlink(missing_ok=True)
        with record.open("wb") as out, self.messages.open("wb") as log:
            subprocess.run([self.build / program, *files], cwd=folder, stdout=out, stderr=log,
                           check=True)
        hashes = []
        for path in (record, self.messages):
            with path.open("rb") as file:
                hashes.append(hashlib.file_digest(file, "sha256").hexdigest())
        return *hashes, record.stat().st_size

    def check_equal(self, folder, files, record):
        """Ends the program unless all programs give the same; returns the record's size."""
        found = {program: self.digests(program, folder, files, record) for program in PROGRAMS}
        if len(set(found.values())) != 1:
            lines = [f"{program}: record {digest}, messages {messages}"
                     for program, (digest, messages, _) in found.items()]
            sys.exit("\n".join([f"{folder.name}: the outputs differ", *lines]))
        return found["eqconvert"][2]

    def run(self, program, folder, files, record, size):
        """Wall time in ms and peak memory in bytes of one run; the record has to get `size`."""
        command = [self.build / "launch", record, self.build / program, *files]
        output = subprocess.run(command, cwd=folder, check=True, capture_output=True).stdout
        nanoseconds, kilobytes, status, written = map(int, output.split())
        if status != 0 or written != size:
            sys.exit(f"{folder.name}: {program} ended with {status} after {written} bytes")
        return nanoseconds / 1e6, kilobytes * 1024

    def runs_of(self, name):
        runs = RUNS.get(name, MOST_RUNS)
        return min(runs, self.most_runs) if self.most_runs else runs

    def miss(self, text, missed, what):
        """Returns `text`, marked when its bound is missed, which is then kept for the end."""
        if missed:
            self.missed.append(what)
        return text + ("*" if missed else " ")

    def compare(self, name, form):
        folder, manifest = self.made(name, form)
        files = manifest["files"]
        record = self.scratch / "record"
        size = self.check_equal(folder, files, record)
        samples = {program: [] for program in PROGRAMS}
        for _ in range(self.runs_of(name)):
            for program in PROGRAMS:
                samples[program].append(self.run(program, folder, files, record, size))
        times = {program: [ms for ms, _ in runs] for program, runs in samples.items()}
        medians = {program: statistics.median(ms) for program, ms in times.items()}
        shown = {program: f"{medians[program]:.2f} ({min(ms):.2f})"
                 for program, ms in times.items()}
        ratio = medians["eqconvert"] / medians["peer_rapidxml"]
        bound = RATIOS.get((name, form))
        peak = max(memory for _, memory in samples["eqconvert"])
        room = (manifest["memory"] + SPARE_MEMORY) * MEMORY_FACTORS.get(name, 1)
        case = f"{name}:{form}"
        print(COLUMNS.format(
            name, form, f"{manifest['bytes'] / 1e6:.2f}", shown["eqconvert"],
            f"{manifest['bytes'] / 1e3 / medians['eqconvert']:.0f}", shown["peer_rapidxml"],
            shown["peer_pugixml"],
            self.miss(f"{ratio:.2f}", bound is not None and ratio > bound, f"{case} ratio"),
            "" if bound is None else f"{bound:.2f}",
            self.miss(f"{peak / 1e6:.1f}", peak > room, f"{case} memory"),
            f"{room / 1e6:.1f}"), flush=True)

    def growth(self):
        cases = {}
        for name in ("big30", "big"):
            folder, manifest = self.made(name, "mix")
            files, record = manifest["files"], self.scratch / name
            *_, size = self.digests("eqconvert", folder, files, record)
            cases[name] = manifest["bytes"], ("eqconvert", folder, files, record, size)
        rates = {name: [] for name in cases}
        for _ in range(self.runs_of("big")):
            for name, (size, arguments) in cases.items():
                rates[name].append(size / 1e3 / self.run(*arguments)[0])
        small, large = (statistics.median(rates[name]) for name in ("big30", "big"))
        ratio = large / small
        shown = self.miss(f"{ratio:.2f}", ratio < LEAST_GROWTH, "growth")
        print(f"growth: {small:.0f} MB/s on 30 MB, {large:.0f} MB/s on 1 GB, ratio {shown}"
              f"(at least {LEAST_GROWTH:.2f})", flush=True)


def cases_of(words):
    """The (workload, format) pairs that the words of the command line ask for."""
    names = [name for name in workloads.WORKLOADS if name != "big30"]
    for word in words or [*names, "growth"]:
        name, _, form = word.partition(":")
        if name == "growth" and not form:
            yield name, ""
        elif name not in names or form not in ("", *workloads.FORMATS):
            sys.exit(f"no such workload: {word}")
        elif form or name in ("real13", "big"):
            yield name, form or "mix"
        else:
            yield from ((name, each) for each in workloads.FORMATS)


def machine():
    """The processor and the kernel, for whoever reads the table elsewhere."""
    lines = pathlib.Path("/proc/cpuinfo").read_text().splitlines()
    model = next((line.partition(": ")[2] for line in lines if line.startswith("model name")), "?")
    return f"{model}, {platform.system()} {platform.release()} {platform.machine()}"


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", default=root / "build/release", help="folder of the programs")
    parser.add_argument("--data", default=root / "build/bench-data", help="folder of the inputs")
    parser.add_argument("--scratch", default="/dev/shm", help="folder for the records")
    parser.add_argument("--runs", type=int, help="at most so many runs (default: 201 of tiny, 21 "
                                                 "of the others)")
    parser.add_argument("workloads", nargs="*", metavar="WORKLOAD[:FORMAT]")
    options = parser.parse_args()
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})
    cases = list(cases_of(options.workloads))
    with tempfile.TemporaryDirectory(dir=options.scratch) as scratch:
        bench = Bench(options, pathlib.Path(scratch))
        print(f"on {machine()}", flush=True)
        if any(name != "growth" for name, _ in cases):
            print(COLUMNS.format("workload", "format", "MB", "eqconvert ms", "MB/s", "RapidXML ms",
                                 "pugixml ms", "ratio ", "bound", "peak MB ", "bound"), flush=True)
        for name, form in cases:
            if name == "growth":
                bench.growth()
            else:
                bench.compare(name, form)
    if bench.missed:
        print("missed: " + ", ".join(bench.missed))
    sys.exit(bool(bench.missed))


main()

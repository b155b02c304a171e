#!/usr/bin/env python3
"""Measures how time grows with hostile files: time(2n) / time(n) for each family.

usage: growth.py [--folder PATH] [--scale FACTOR | --size MB] [FAMILY...]

Linear growth gives 2; every family must stay at or below 2.5. The exit status is 1 when one does
not. Times are processor time, the least of several runs of the whole process: of eqconvert, or of
navigate where eqconvert does not do what is to be timed. The two files take turns, so that a
machine that is slower for a while is so for both. A virtual machine may also be slow with the
memory that one of them happens to lie in: a family above the limit is measured again with files
written anew. With --size the larger file of each family has that size.
"""
import argparse
import math
import pathlib
import resource
import subprocess
import sys
import tempfile

LIMIT = 2.5
RUNS = 9
TRIES = 3  # with new files, until one keeps to the limit
ENOUGH = 20  # seconds in all runs of both files, after which there is no further one
# With the header, without which the converter would not find the data.
ROOT = (b"<TEST_EQ_TABLE><HEADER><PRODUCTION_DATE/></HEADER><SPECIFIC_HEADER><APPLICABILITY_DATE/>"
        b"<APPLICABILITY_END_DATE/></SPECIFIC_HEADER>")
END = b"</TEST_EQ_TABLE>"
DATA = ROOT + b"<DATA><COEFFICIENTS_LIST tdi_config='A'>"
VECTOR = (DATA + b"<COEFFICIENTS detector_id='1'><NB_OF_PIXELS>1</NB_OF_PIXELS>"
          b"<ON_BOARD_EQUALIZATION><APPLICABILITY_DATE/><COEFF_A1>")
EMPTY_LIST = b"<COEFFICIENTS_LIST><COEFFICIENTS/></COEFFICIENTS_LIST>"
DATA_END = b"</COEFFICIENTS_LIST></DATA>" + END
VECTOR_END = b"</COEFF_A1></ON_BOARD_EQUALIZATION></COEFFICIENTS>" + DATA_END
# A thousand at a time: distinct names by the million would take longer to make than to read.
ATTRIBUTES = b"".join(b"a%d='1' " % i for i in range(1000))


def growing_names(n):
    """Nested tags with names of "=" and "[" of all lengths, ended in the wrong order, then again."""
    names = [b"a" + b"=[" * i for i in range(math.isqrt(n))]
    return b"".join([b"<%s>" % name for name in names] + [b"</%s>" % name for name in names] * 2)


# Family: its text for size n, the n that takes a good part of a second, and the operation of
# navigate that is timed instead of eqconvert.
FAMILIES = {
    "nested unended tags": (lambda n: ROOT + b"<aaaa>" * n, 1_000_000),
    "n open and n lone end tags": (lambda n: ROOT + b"<a>" * n + b"</b>" * n, 500_000),
    "n open tags, n ends of the outermost": (lambda n: ROOT + b"<a><b>" * n + b"</a>" * n, 300_000),
    "a long name of =, and ends of it": (
        lambda n: ROOT + b"<a" + b"=" * n + b"></a=>" * 20, 4_000_000),
    "names of = and [": (lambda n: ROOT + growing_names(n), 4_000_000),
    "attributes, the last one sought": (
        lambda n: DATA + b"<COEFFICIENTS " + ATTRIBUTES * n + b"detector_id='1'></COEFFICIENTS>" +
        DATA_END, 1_000),
    "attributes, read one after another": (
        lambda n: b"<a " + ATTRIBUTES * n + b"/>", 1_000, "attributes"),
    "siblings": (lambda n: DATA + b"<COEFFICIENTS/>" * n + DATA_END, 1_000_000),
    "siblings that are not sought": (lambda n: ROOT + b"<a/>" * n + END, 2_000_000),
    "lists that leave one level too many": (
        lambda n: b"<ROOT>" + EMPTY_LIST + b"</ROOT>" + EMPTY_LIST * n, 500_000),
    "siblings sought by name": (
        lambda n: b"<a>" + b"<b/><sought/><soughtnot/>" * n + b"</a>", 500_000, "siblings"),
    "children sought by name": (
        lambda n: b"<a>" + b"<b/><sought/><soughtnot/>" * n + b"</a>", 500_000, "children"),
    "one vector": (lambda n: VECTOR + b"1.5 " * n + VECTOR_END, 8_000_000),
    "references": (lambda n: VECTOR + b"&#49;&amp" * n + VECTOR_END, 1_000_000),
    "references, valid": (lambda n: b"<a>" + b"&lt;&#x41;&AMP;" * n + b"</a>", 1_000_000, "data"),
    "references, not valid": (
        lambda n: b"<a>" + b"&none;&#;&#-1;&longername;" * n + b"</a>", 1_000_000, "data"),
    "text between comments": (lambda n: VECTOR + b"1<!---->" * n + VECTOR_END, 1_000_000),
    "text between comments, node by node": (
        lambda n: b"<a>" + b"1<!---->" * n + b"</a>", 1_000_000, "nodes"),
    "only <": (lambda n: b"<" * n, 4_000_000),
    "only <!": (lambda n: b"<!" * n, 2_000_000),
    "only &": (lambda n: b"&" * n, 8_000_000),
    "only & in a vector": (lambda n: VECTOR + b"&" * n + VECTOR_END, 8_000_000),
    "only & in a leaf": (lambda n: b"<a>" + b"&" * n + b"</a>", 8_000_000, "data"),
    "NUL bytes": (lambda n: ROOT + b"\0a" * n, 8_000_000),
    "only NUL bytes": (lambda n: b"\0" * n, 16_000_000),
    "invalid UTF-8": (lambda n: ROOT + b"\xff" * n, 8_000_000),
    "quotes": (lambda n: ROOT + b"<a '" + b"'\"" * n, 8_000_000),
    "only quotes": (lambda n: b"<a " + b"'" * n, 16_000_000),
    "declarations in a document type": (
        lambda n: b"<!DOCTYPE a [" + b"<!ENTITY a '>'><!--'-->" * n, 1_000_000),
    "document types, one in another": (
        lambda n: b"<!DOCTYPE a [" * n + b"]>" * n, 1_000_000),
    "bad declarations in document types": (lambda n: b"<!DOCTYPE a [<!X" * n, 1_000_000),
    "a stateful encoding": (
        lambda n: b"<?xml encoding='ISO-2022-JP'?>" + ROOT + b"\x1b$B0!\x1b(Ba" * n, 500_000),
    "a stateful encoding, not valid": (
        lambda n: b"<?xml encoding='ISO-2022-JP'?>" + ROOT + b"\x1b$B\xff\x1b" * n, 500_000),
}


def cpu_time():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def seconds(command):
    start = cpu_time()
    subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return cpu_time() - start


def least_times(program, paths):
    """The least time for each of the files."""
    rounds = []
    while len(rounds) < RUNS and sum(map(sum, rounds)) < ENOUGH:
        rounds.append([seconds([*program, path]) for path in paths])
    return [min(times) for times in zip(*rounds)]


def size_for(text, length):
    """The n for which the text is about `length` bytes long."""
    probe = 10_000
    return max(1, round(probe * length / len(text(probe))))


def main():
    here = pathlib.Path(__file__).resolve().parent
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--folder", type=pathlib.Path, default=here.parent / "build/release",
                        help="where eqconvert and navigate are")
    parser.add_argument("--scale", type=float, default=1.0, help="factor on the sizes")
    parser.add_argument("--size", type=float, help="size of the larger files in MB")
    parser.add_argument("families", nargs="*", metavar="FAMILY")
    options = parser.parse_args()
    failed = False
    print(f"{'family':40} {'MB':>6} {'time(n)':>9} {'time(2n)':>9} {'ratio':>6}")
    with tempfile.TemporaryDirectory() as folder:
        paths = [pathlib.Path(folder) / name for name in ("hostile.xml", "twice.xml")]
        for name, (text, size, *operation) in FAMILIES.items():
            if options.families and name not in options.families:
                continue
            if options.size:
                size = size_for(text, options.size * 1e6 / 2)
            program = [options.folder / ("navigate" if operation else "eqconvert"), *operation]
            for _ in range(TRIES):
                for factor, path in enumerate(paths, 1):
                    path.write_bytes(text(int(size * options.scale) * factor))
                times = least_times(program, paths)
                ratio = times[1] / times[0]
                if ratio <= LIMIT:
                    break
            failed |= ratio > LIMIT
            print(f"{name:40} {path.stat().st_size / 1e6:6.1f} {times[0]:8.3f}s {times[1]:8.3f}s"
                  f" {ratio:6.2f}{'  above the limit' if ratio > LIMIT else ''}", flush=True)
    sys.exit(failed)


main()

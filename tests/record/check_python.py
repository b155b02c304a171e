#!/usr/bin/env python3
"""Opens made records with python/eqrecord.py and compares every bit with what they were made of, and with
what eqrecord dump tells. usage: check_python.py EQRECORD"""
import json, os, pathlib, struct, subprocess, sys, tempfile

import numpy

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "python"))
import eqrecord
from nasty_records import BITS, DATES, NASTY, configuration, file, record

EQRECORD = os.path.abspath(sys.argv[1])
QUARTER = struct.pack("<dh", 0.25, 0)
# Two ways to read it: a label of 10 bytes, then one of 91; or one of 100, then one of none.
AMBIGUOUS = record(b"\7\0\1" + b"01A" + b"\2" + b"100" + b"x" * 9 + QUARTER + b"91" + b"y" * 79 + QUARTER + b"00" + QUARTER)


def opened(content, path="the.record", **options):
    with open(path, "wb") as out:
        out.write(content)
    return eqrecord.open(path, EQRECORD, **options)


def refused(content, message, **options):
    try:
        opened(content, **options)
    except eqrecord.Error as error:
        assert message in str(error), error
    else:
        raise AssertionError(f"not refused: {message}")


def bits_of(array):
    return array.astype("=f8").view("=u8")


# The same as eqrecord dump: values, where it has no null for a vector of fill.
def check_dump(path, blocks):
    dumped = json.loads(subprocess.run([EQRECORD, "dump", "--format", "json", path], capture_output=True, check=True).stdout)
    configurations = [each for file in dumped["files"] for each in file["configurations"]]
    assert len(configurations) == len(blocks)
    for block, told in zip(blocks, configurations):
        for kind, vectors in zip(eqrecord.KINDS, block.values):
            wanted = [[eqrecord._real(value) for value in vector or [None] * block.pixels] for vector in told[kind]]
            assert block.pixels == 0 or (bits_of(numpy.array(wanted)) == bits_of(vectors)).all(), (path, kind)


def check_values():
    for order in "<>":
        parts = [(b"ALL", 5, BITS[2], 0), (NASTY, 1, BITS[2], 3), (b"", 0, BITS[0], 0)]
        made = [configuration(label, pixels, bits, start, order=order) for label, pixels, bits, start in parts]
        content = record(file(*made[:2], nuc=-3, name=b"\xff", order=order), file(nuc=7, order=order), file(made[2]))
        read = opened(content)
        assert (read.state, read.byte_order, read.bytes) == ("complete", {"<": "little", ">": "big"}[order], len(content))
        assert (read.creation_date, read.applicability_start, read.applicability_end) == DATES and read.files_counted == 3
        assert [(f.number, f.name, f.nuc_table_id, len(f.blocks)) for f in read.files] == [
            (1, "\udcff", -3, 2), (2, "EQ_B4.xml", 7, 0), (3, "EQ_B4.xml", 7, 1)]
        for block, (label, pixels, bits, start) in zip(read.blocks, parts):
            wanted = [BITS[(start + i) % len(BITS)] for i in range(48 * pixels)]
            assert os.fsencode(block.label) == label and bits_of(numpy.array([block.epsilon])) == bits
            assert block.values.shape == (4, 12, pixels) and bits_of(block.values).ravel().tolist() == wanted, label
            assert isinstance(block.values, numpy.memmap) == (pixels > 0) and not block.values.flags.writeable
            dataset = block.to_xarray()
            assert (bits_of(dataset.coeff_zs.values) == bits_of(block.values[2])).all() and dataset.sizes["pixel"] == pixels
            assert dataset.detector.values.tolist() == [*eqrecord.DETECTORS] and dataset.attrs["band"] == 4
        if " dump " in subprocess.run([EQRECORD, "--help"], capture_output=True, text=True).stdout:
            check_dump("the.record", read.blocks)


def check_states():
    made = configuration(start=5)
    two = record(file(made, made, nuc=7))
    assert [len(opened(content, partial=True).blocks) for content in (two, two[:-1], two + b"x", two[:70])] == [2, 1, 2, 0]
    refused(two[:-1], "the.record: incomplete")
    refused(two + b"x", "the.record: trailing")
    assert opened(record(file(made, nuc=7, count=2))).state == "short"
    refused(AMBIGUOUS, "can be read in 2 ways: choose with reading=N")
    assert [len(opened(AMBIGUOUS, reading=reading).files[0].blocks[0].label) for reading in (1, 2)] in ([10, 100], [100, 10])
    refused(AMBIGUOUS, "there is no reading 3", reading=3)
    assert opened(record(file(configuration(pixels=0), nuc=7)), byte_order="big").byte_order == "big"
    refused(b"<TEST_EQ_TABLE/>", "the.record: no record: expected")
    refused(b"", "the.record: no record: empty")


def check_paths():
    content = record(file(configuration(), nuc=7))
    for path in ("--help", b"\xff\n", pathlib.Path("./-")):
        assert os.path.basename(opened(content, path).path) == os.fsdecode(path)
    os.mkfifo("pipe")
    for path in ("-", "pipe", "."):
        try:
            eqrecord.open(path, EQRECORD)
        except eqrecord.Error as error:
            assert "mapped into memory" in str(error), error
        else:
            raise AssertionError(path)
    try:
        eqrecord.open("missing", EQRECORD)
    except FileNotFoundError:
        pass
    try:
        eqrecord.open("./-", "./no-such-program")
    except eqrecord.Error as error:
        assert str(error).startswith("./no-such-program: "), error


with tempfile.TemporaryDirectory() as scratch:
    os.chdir(scratch)
    check_values()
    check_states()
    check_paths()

#!/usr/bin/env python3
"""Holds what the parser that Kaitai Struct makes of docs/eqrecord.ksy reads in records against what eqrecord
dumps of them. usage: check_description.py EQCONVERT EQRECORD

The parser, eqrecord.py, is made by the compiler 0.10 (kaitai-struct-compiler -t python docs/eqrecord.ksy) and
gets the first line that this expects."""
import hashlib, pathlib, struct, sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path += [str(HERE), str(HERE.parent / "record")]
import eqrecord
from check_dump import KINDS, SAMPLE, bits_of, dumped, loaded
from check_reader import ROOT, SETS, fields_of

# What is not plain: other counts than there are, and numbers of three digits.
BEYOND = {"123 files", "long names", "300 alone", "300 first", "256", "lost early", "lost late", "300 lost"}


def bits(values):
    return list(struct.unpack(f"<{len(values)}Q", struct.pack(f"<{len(values)}d", *values)))


def plain(thing, *names):
    return {name: getattr(thing, name) for name in names if hasattr(thing, name)}


def read(content):
    record = eqrecord.Eqrecord.from_bytes(content)
    return {**plain(record, "file_type", "creation_date", "applicability_start", "applicability_end", "files_counted"), "files": [
        {**plain(file, "nuc_table_id", "band", "name", "configurations_counted"), "configurations": [
            {**plain(configuration, "label", "epsilon", "pixels"), **{
                kind: [bits(vector.values) for vector in part.detectors] for kind, part in zip(KINDS, configuration.kinds)}}
            for configuration in file.configurations]} for file in record.files]}


def told(content):
    value = loaded(dumped(content, "--byte-order", "little", "--format", "json", "--all"))
    for configuration in (configuration for file in value["files"] for configuration in file["configurations"]):
        for kind in KINDS:
            configuration[kind] = [[bits_of(real) for real in vector] for vector in configuration[kind]]
    return {key: part for key, part in value.items() if key not in ("schema", "byte_order")}


digest = hashlib.sha256((ROOT / "docs/eqrecord.ksy").read_bytes()).hexdigest()
assert digest in (HERE / "eqrecord.py").open().readline(), "docs/eqrecord.ksy has changed: make eqrecord.py again"
records = {"sample": SAMPLE, **{name: b"".join(field[1] for field in fields_of(files)) for name, files in SETS.items()}}
refused = {"cut": SAMPLE[:-1], "more": SAMPLE + b"!"}
for name, content in records.items():
    if name in BEYOND:
        refused[name] = content
    else:
        assert read(content) == told(content), name
for name, content in refused.items():
    try:
        raise AssertionError(f"{name}: {read(content)}")
    except (EOFError, ValueError, eqrecord.kaitaistruct.ValidationFailedError):
        pass
print(f"{len(records) - len(BEYOND)} records, {len(refused)} refused")

"""Records of equalisation coefficients, which eqconvert writes, as numpy arrays.

    import eqrecord
    record = eqrecord.open("EQ_B4.record")
    for block in record.blocks:
        a1 = block.values[eqrecord.KINDS.index("COEFF_A1")]    # 12 detectors, P pixels
        print(block.band, block.label, a1[0].mean())

What a record consists of is found by the program eqrecord, which has to be installed; the values are
those of the file itself, mapped into memory: nothing is read before it is used, nothing is copied, and
nothing can be written. A file that is made shorter while it is mapped ends the process.
"""
import json
import os
import stat
import struct
import subprocess
from dataclasses import dataclass, fields

import numpy

__all__ = ["KINDS", "DETECTORS", "Block", "Error", "File", "Record", "open"]

#: What the first axis of the values stands for.
KINDS = ("COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D")
#: What the second axis stands for.
DETECTORS = tuple(range(1, 13))


class Error(Exception):
    """A record that can't be had, with the message of eqrecord."""


@dataclass(frozen=True, eq=False)
class Block:
    """One configuration of a file."""

    file: int  #: the file's number, from 1
    band: int
    file_name: str
    nuc_table_id: int
    label: str
    epsilon: float
    values: numpy.ndarray  #: of shape (4, 12, P) and the record's byte order, can't be written

    @property
    def pixels(self):
        """P, the number of values of a vector; those that a detector lacks are NaN."""
        return self.values.shape[2]

    def to_xarray(self):
        """The block as an xarray.Dataset, with the names that the export to netCDF has."""
        import xarray

        names = [kind.lower() for kind in KINDS]
        variables = {name: (("detector", "pixel"), array) for name, array in zip(names, self.values)}
        coordinates = {"detector": list(DETECTORS), "pixel": range(1, self.pixels + 1)}
        attributes = {"file": self.file, "band": self.band, "file_name": self.file_name, "epsilon": self.epsilon,
                      "nuc_table_id": self.nuc_table_id, "tdi_configuration": self.label}
        return xarray.Dataset(variables, coordinates, attributes)


@dataclass(frozen=True, eq=False)
class File:
    """One file of a record."""

    number: int  #: from 1
    band: int
    name: str
    nuc_table_id: int
    configurations_counted: int  #: modulo 256; a short record has fewer blocks
    blocks: list


@dataclass(frozen=True, eq=False)
class Record:
    """A record. What one that is cut does not have is None."""

    path: str
    bytes: int
    state: str  #: "complete", "short", "ambiguous", "trailing" or "incomplete"
    byte_order: str  #: "little" or "big"
    byte_order_certain: bool
    file_type: str
    creation_date: str
    applicability_start: str
    applicability_end: str
    files_counted: int
    files: list

    @property
    def blocks(self):
        """The configurations of all files, in their order."""
        return [block for file in self.files for block in file.blocks]


def open(path, program="eqrecord", *, partial=False, reading=None, byte_order="auto"):
    """Opens a record, a regular file, and returns a Record.

    One with fewer blocks than counted is taken, and its state is "short". One that is cut, or has other
    bytes behind its end, is only with partial=True, and then as much of it as is whole. One that can be
    read in several ways needs reading=N, the number of that way, from 1. byte_order is "little" or "big"
    where it is known and can't be told from the record.

    Raises Error, and OSError when the file can't be opened.
    """
    name = os.fsdecode(path)
    if path in ("-", b"-"):
        raise Error("-: standard input can't be mapped into memory; a file of this name is ./-")
    name = "./-" if name == "-" else name  # of a pathlib.Path
    if not stat.S_ISREG(os.stat(path).st_mode):
        raise Error(f"{name}: is no regular file, and only those can be mapped into memory")
    told = _info(program, name, reading, byte_order)
    state = told["state"]
    if state == "ambiguous" and reading is None:
        raise Error(f"{name}: can be read in {1 + len(told['other_readings'])} ways: choose with reading=N")
    if state in ("trailing", "incomplete") and not partial:
        raise Error(f"{name}: {state}, see eqrecord info; partial=True takes what is whole")
    mapped = numpy.memmap(name, numpy.uint8, "r")
    if len(mapped) != told["bytes"]:
        raise Error(f"{name}: has changed while it was opened")
    plain = {field.name: _text(told.get(field.name)) for field in fields(Record)}
    plain |= {"path": name, "byte_order_certain": told.get("byte_order_certain", True), "files": _files(told, mapped)}
    return Record(**plain)


def _info(program, name, reading, byte_order):
    options = ["--byte-order", byte_order] + ([] if reading is None else ["--reading", str(reading)])
    try:
        done = subprocess.run([program, "info", "--format", "json", *options, "--", name],
                              stdin=subprocess.DEVNULL, capture_output=True)
    except OSError as error:
        raise Error(f"{program}: can't be run: {error.strerror}") from error
    if done.returncode not in (0, 1):
        message = done.stderr.decode(errors="replace").strip().removeprefix("eqrecord: ")
        raise Error(message or f"{program} ended with status {done.returncode}")
    return json.loads(done.stdout)


def _files(told, mapped):
    files, nuc_table_id = [], None
    for number, file in enumerate(told["files"], 1):
        # A file without an identifier of its own has that of the one before.
        nuc_table_id = file.get("nuc_table_id", nuc_table_id)
        common = number, file["band"], _text(file["name"]), nuc_table_id
        blocks = [Block(*common, _text(configuration["label"]), _real(configuration["epsilon"]),
                        _values(configuration["vectors"], mapped)) for configuration in file["configurations"]]
        files.append(File(*common, file["configurations_counted"], blocks))
    return files


def _values(vectors, mapped):
    dtype, shape = numpy.dtype(vectors["dtype"]), vectors["shape"]
    length = dtype.itemsize * shape[0] * shape[1] * shape[2]
    return mapped[vectors["offset"]:vectors["offset"] + length].view(dtype).reshape(shape)


def _text(value):
    """Bytes that are no UTF-8 are those that surrogateescape gives."""
    return bytes.fromhex(value["hex"]).decode(errors="surrogateescape") if isinstance(value, dict) else value


def _real(value):
    if isinstance(value, str) and value.startswith("0x"):
        return struct.unpack("<d", struct.pack("<Q", int(value, 16)))[0]
    return float("nan" if value is None else value)

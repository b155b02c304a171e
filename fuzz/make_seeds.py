#!/usr/bin/env python3
"""Writes the seeds of the fuzzers, one folder each, made from the samples and the data of the tests.

usage: make_seeds.py FOLDER

The layout of each fuzzer's input is told above its LLVMFuzzerTestOneInput.
"""

import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
letters = {"n": b"\n", "t": b"\t", "r": b"\r", "0": b"\0"}


def unescape(text):
    """The bytes that an argument of a test script stands for."""
    def meaning(match):
        code = match.group(1)
        if code[0] == b"x"[0]:
            return bytes([int(code[1:], 16)])
        return letters.get(code.decode(), code)
    return re.sub(rb"\\(x[0-9A-Fa-f]{2}|[ -~])", meaning, text.encode())


def calls(script, *operations):
    """The arguments of each call of the operations in a test script."""
    for line in (root / "tests/data" / script).read_text(encoding="utf-8").splitlines():
        operation, _, arguments = line.partition(" =>")[0].partition(" ")
        if operation in operations:
            yield [unescape(argument) for argument in arguments.split("|")]


def samples():
    """The samples with two or three numbers in each vector."""
    for path in sorted((root / "samples").glob("*.xml")):
        text = path.read_text(encoding="utf-8")
        text = re.sub(r"(<COEFF_\w+>\S+ \S+) [^<]*", r"\1", text)
        text = re.sub(r"(<NB_OF_PIXELS>)\d+", r"\g<1>2", text)
        first, *configurations = text.split("<COEFFICIENTS_LIST")
        tail = configurations[-1].partition("</COEFFICIENTS_LIST>")[2]
        detectors = configurations[0].split("<COEFFICIENTS ")[:3]
        yield (first + "<COEFFICIENTS_LIST" + "<COEFFICIENTS ".join(detectors)
               + ("" if "</COEFFICIENTS_LIST>" in detectors[-1] else "</COEFFICIENTS_LIST>")
               + tail).encode()


def encoded():
    """A document in every encoding of the round trips that Python knows."""
    for encoding, text in calls("roundtrip.txt", "roundtrip"):
        name, text = encoding.decode(), text.decode("utf-8")
        document = f"<?xml version='1.0' encoding='{name}'?><a>{text}</a>"
        mark = {"UTF-16LE": b"\xff\xfe", "UTF-16BE": b"\xfe\xff"}.get(name, b"")
        try:
            yield mark + document.encode(name)
        except (LookupError, UnicodeError):
            pass


def documents():
    yield from samples()
    yield from encoded()
    for script, operation in (("parse.txt", "doc"), ("navigate.txt", "doc"), ("load.txt", "file")):
        for arguments in calls(script, operation):
            yield arguments[0]


def short(text):
    """A text behind its length."""
    return bytes([min(len(text), 255)]) + text[:255]


def load():
    moves = bytes(range(8)) * 3 + bytes([0, 1, 2, 1, 0, 0, 4, 255, 255, 5, 1, 0, 0, 3])
    for document in documents():
        yield b"\0\0" + short(moves) + document


def save():
    yield from documents()


def convert():
    all_samples = list(samples())
    yield from all_samples
    yield b"\xff".join(all_samples * 2)


def escape():
    for arguments in calls("escaping.txt", "unescape", "escape", "cdata"):
        yield arguments[-1]


def encoding():
    for source, target, text in calls("encodings.txt", "convert", "placed"):
        yield short(source) + short(target) + b"\0" + text
    for source, text in calls("encodings.txt", "ragged"):
        yield short(source) + short(b"UTF-8") + b"\0" + text
    table = (root / "markup/text/EncodingNameTable.cpp").read_text(encoding="utf-8")
    for name in re.findall(r'\{\d+, "([^"]+)"\}', table):
        text = b"<a b='c'>\xC3\xA9\xE2\x82\xAC\xA4\xF7\x1B$B0!\x1B(B</a>"
        yield short(name.encode()) + short(b"UTF-8") + b"\0" + text
        yield short(b"UTF-8") + short(name.encode()) + b"\0" + text


def base():
    for arguments in calls("date.txt", "init"):
        yield b"\0" + bytes(11) + arguments[0]
    for pattern, text, *flags in calls("pattern.txt", "fnmatch"):
        yield b"\1" + bytes([int((flags or [b"0"])[0]) & 7]) + short(pattern) + text
    for arguments in calls("string.txt", "replace", "insert"):
        yield b"\2" + b"".join(bytes([place]) + short(arguments[place % 2]) for place in range(8))


def streams():
    for driver in range(13):
        for place in range(4):
            start = bytes([place, driver, place & 1, 40, driver, driver])
            yield start + bytes(i * (driver + 3) * 7 % 256 for i in range(800))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for make in (base, convert, encoding, escape, load, save, streams):
        folder = pathlib.Path(sys.argv[1]) / make.__name__
        folder.mkdir(parents=True, exist_ok=True)
        for number, seed in enumerate(make()):
            (folder / f"{number:03}").write_bytes(seed)


if __name__ == "__main__":
    main()

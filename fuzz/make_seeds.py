#!/usr/bin/env python3
# Writes the seeds of the fuzzers, one folder each, made from the data of the tests:
#   make_seeds.py FOLDER
# The layout of each fuzzer's input is told above its LLVMFuzzerTestOneInput.
import contextlib, json, pathlib, re, sys

root = pathlib.Path(__file__).resolve().parent.parent
sys.path.append(str(root / "tests/program"))
import run_cases


# The arguments, as bytes, of each call of the operations in a script of the tests.
def calls(script, *operations):
    for line in (root / "tests/data" / script).read_text(encoding="utf-8").splitlines():
        operation, _, arguments = line.partition(" =>")[0].partition(" ")
        if operation in operations:
            plain = arguments.encode().decode("unicode_escape")
            yield [argument.encode("latin-1") for argument in plain.split("|")]


# A text behind its length.
def short(text):
    return bytes([min(len(text), 255)]) + text[:255]


# The files of each case of the program, one behind another.
def convert():
    for case in run_cases.read_cases(root / "tests/program/cases.txt"):
        yield b"\xff".join(content for content, size in case["files"].values())


def lint():
    yield from convert()
    for case in run_cases.read_cases(root / "tests/lint/cases.txt"):
        yield b"\xff".join(content for content, size in case["files"].values() if not size)


# Parameter files, the texts of scripts, and a document in each encoding of the round trips that
# Python knows.
def save():
    yield from convert()
    for script in ("parse.txt", "navigate.txt", "load.txt"):
        for text, *_ in calls(script, "doc", "file"):
            yield text
    for encoding, text in calls("roundtrip.txt", "roundtrip"):
        name = encoding.decode()
        mark = {"UTF-16LE": b"\xff\xfe", "UTF-16BE": b"\xfe\xff"}.get(name, b"")
        with contextlib.suppress(LookupError, UnicodeError):
            yield mark + f"<?xml version='1.0' encoding='{name}'?><a>{text.decode()}</a>".encode(name)


def load():
    moves = bytes(range(8)) * 3 + bytes([0, 1, 2, 1, 0, 0, 4, 255, 255, 5, 1, 0, 0, 3])
    for document in save():
        yield b"\0\0" + short(moves) + document


def escape():
    for *_, text in calls("escaping.txt", "unescape", "escape", "cdata"):
        yield text


def encoding():
    for source, target, text in calls("encodings.txt", "convert", "placed"):
        yield short(source) + short(target) + b"\0" + text
    for source, text in calls("encodings.txt", "ragged"):
        yield short(source) + short(b"UTF-8") + b"\0" + text
    text = b"\0<a b='c'>\xC3\xA9\xE2\x82\xAC\xA4\xF7\x1B$B0!\x1B(B</a>"
    for name in re.findall(r'\{\d+, "([^"]+)"\}', (root / "markup/text/EncodingNameTable.cpp").read_text()):
        yield short(name.encode()) + short(b"UTF-8") + text
        yield short(b"UTF-8") + short(name.encode()) + text


def base():
    for text, *_ in calls("date.txt", "init"):
        yield bytes(12) + text
    for pattern, text, *flags in calls("pattern.txt", "fnmatch"):
        yield bytes([1, int(*flags or [b"0"]) & 7]) + short(pattern) + text
    for arguments in calls("string.txt", "replace", "insert"):
        yield b"\2" + b"".join(bytes([place]) + short(arguments[place % 2]) for place in range(8))


def streams():
    for driver in range(13):
        for place in range(4):
            yield bytes([place, driver, 40, driver, place & 1, driver]) + bytes(
                i * (driver + 3) * 7 % 256 for i in range(800))


# The sample, and records without pixels, of which several fit into an input: with more files, more
# configurations, lengths that can be read in two ways, and a second one behind.
def record():
    sample = (root / "samples/EQ_B4.record").read_bytes()
    prologue, file, block = sample[:77], sample[81:94], sample[94:107] + b"\0\0"
    digits = b"100123456789" + block[5:]
    yield sample
    yield prologue + b" 1\7\0" + file + block
    yield prologue + b" 2\7\0" + (file + block) * 2
    yield prologue + b" 2\7\x80" + file + block + b"\7\0" + file + block
    yield prologue + b"12\x32\0" + (file + digits) * 12
    yield prologue + b" 1\0\7" + file[:-1] + b"\x2c" + digits * 300
    yield (prologue + b" 1\7\0" + file + block) * 2


# JSON of records: with all kinds of values, and without pixels but with all that headers may hold.
def build():
    vectors = [[1, -0.0, 1.5e-300], ["inf", None, "0xfff8000000000123"]] + [None] * 10
    block = {"label": "ALL", "epsilon": 0.5, "pixels": 3, **{f"COEFF_{kind}": vectors for kind in ("A1", "A2", "ZS", "D")}}
    empty = {"pixels": 0, "epsilon": "-inf", **{f"COEFF_{kind}": [[]] * 12 for kind in ("D", "ZS", "A2", "A1")}, "label": {"hex": "ff"}}
    file = {"nuc_table_id": 7, "band": 4, "name": "EQ_B4.xml", "configurations_counted": 1, "configurations": [block]}
    files = [{"nuc_table_id": -7, "band": 255, "configurations": [empty] * 3, "name": {"hex": "e9"}, "configurations_counted": 44}] * 2
    for order, these, indent in (("little", [file], None), ("big", files, None), ("little", files, 1)):
        dates = {key: "2015-06-23T10:00:00" for key in ("creation_date", "applicability_start", "applicability_end")}
        yield json.dumps({"schema": "eqrecord-1", "byte_order": order, "file_type": "VORN/_EQ", **dates, "files_counted": len(these),
                          "files": these}, indent=indent).encode()


for make in (base, build, convert, encoding, escape, lint, load, record, save, streams):
    folder = pathlib.Path(sys.argv[1]) / make.__name__
    folder.mkdir(parents=True, exist_ok=True)
    for number, seed in enumerate(make()):
        (folder / f"{number:03}").write_bytes(seed)

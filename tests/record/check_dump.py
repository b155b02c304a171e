#!/usr/bin/env python3
"""Holds what eqrecord dumps of records against their bytes, and has eqrecord build make the records again: of
made and of generated ones, of values that are hard to write, of what is left of cut ones, and of JSON that
is no record. usage: check_dump.py EQCONVERT EQRECORD [CASES]"""
import csv, io, itertools, json, jsonschema, multiprocessing, os, pathlib, random, re, struct, subprocess, sys, tempfile

import check_reader as reader, records
from check_reader import EQCONVERT, EQRECORD, ROOT, SETS, cases, fields_of

SCHEMA = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/eqrecord-1.schema.json").read_text()))
SAMPLE = (ROOT / "samples/EQ_B4.record").read_bytes()
KINDS = ["COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"]
# NaN of both signs and kinds, the fill with its sign turned, infinities, zeros, the least and greatest numbers.
HARD = [0x7FF8000000000000, 0xFFF8000000000000, 0x7FF0000000000001, 0x7FF8000000000123, 0xFFFFFFFFFFFFFFFF,
        0x7FF0000000000000, 0xFFF0000000000000, 0, 1 << 63, 1, 0x000FFFFFFFFFFFFF, 0x0010000000000000,
        0x7FEFFFFFFFFFFFFF, 0xFFEFFFFFFFFFFFFF, 0x3FB999999999999A, 0x4340000000000001, 0x44B52D02C7E14AF6]
# Where a record has other bytes than the converter writes: fields 4, 5 and 11, and a label.
STRANGE = [(b"2015-06-23", b"12015-06-23"), (b"2015-07-01", b"-0001-07-01"), (b"03ALL", b"03\xe9\0\n"),
           (b"EQ_B4.xml", b"\xff\1x\x1b\n\xc3\"\\,")]


def run(*args, **how):
    done = subprocess.run([EQRECORD, *args], **{"capture_output": True, "timeout": 300, **how})
    return done.returncode, done.stdout, done.stderr


def dumped(content, *options):
    status, out, err = run("dump", *options, "-", input=content)
    assert status == 0 and not err, (status, err)
    return out


def loaded(text):
    value = json.loads(text)
    SCHEMA.validate(value)
    return value


def built(text, wanted, what):
    status, out, err = run("build", "-", input=text)
    assert (status, out) == (0, wanted), (what, status, err, len(out), len(wanted))
    return err


# The bits of a real as JSON has it, or of a value of a table: a decimal, bits, or nothing.
def bits_of(real):
    if real is None or real == "":
        return records.NAN
    if isinstance(real, str) and real.startswith("0x"):
        return int(real, 16)
    return struct.unpack("<Q", struct.pack("<d", float(real)))[0]


# The record that JSON tells of, or as much of one as it does, written without any help.
def encoded(value):
    order = {"little": "<", "big": ">"}[value["byte_order"]]
    parts = []

    def text(key, of=value):
        content = of.get(key, "")
        return content.encode() if isinstance(content, str) else bytes.fromhex(content["hex"])

    def add(of, **formats):
        parts.extend(struct.pack(order + form, of[key]) for key, form in formats.items() if key in of)

    if "file_type" in value:
        parts += [b"ZEDA", records.numbered(text("file_type"), " "), text("file_type")]
    parts += [text(key) for key in ("creation_date", "applicability_start", "applicability_end")]
    parts += [records.numbered(value["files_counted"], " ")] if "files_counted" in value else []
    for file in value["files"]:
        add(file, nuc_table_id="h", band="B")
        parts += [records.numbered(text("name", file), "0"), text("name", file)]
        add(file, configurations_counted="B")
        for configuration in file["configurations"]:
            parts += [records.numbered(text("label", configuration), "0"), text("label", configuration)]
            if "epsilon" in configuration:
                parts.append(struct.pack(order + "Q", bits_of(configuration["epsilon"])))
            add(configuration, pixels="h")
            for vector in itertools.chain.from_iterable(configuration.get(kind, []) for kind in KINDS):
                vector = [None] * configuration["pixels"] if vector is None else vector
                parts.append(struct.pack(f"{order}{len(vector)}Q", *map(bits_of, vector)))
    return b"".join(parts)


# Dumps in all ways that keep every bit, and builds again what comes of it.
def check_whole(name, content, *options):
    text = dumped(content, "--format", "json", *options)
    value = loaded(text)
    assert encoded(value) == content, name
    built(text, content, name)
    built(json.dumps(value, indent=1, sort_keys=True).encode(), content, name)
    for more in ("--hex", "--all"):
        other = dumped(content, "--format", "json", more, *options)
        assert encoded(loaded(other)) == content, (name, more)
        built(other, content, (name, more))
    listing = dumped(content, "--all", *options).decode().splitlines()[1:]
    column = max(8, len(f"{len(content):x}") + 2)
    assert bytes.fromhex("".join(row[column:column + 47] for row in listing)) == content, name
    check_table(name, content, value, *options)


def check_table(name, content, value, *options):
    rows = list(csv.reader(io.StringIO(dumped(content, "--format", "csv", "--hex", *options).decode())))
    wanted = []
    for f, file in enumerate(value["files"], 1):
        for configuration in file["configurations"]:
            fill = [None] * configuration["pixels"]
            vectors = [[vector or fill for vector in configuration[kind]] for kind in KINDS]
            for d, p in itertools.product(range(12), range(configuration["pixels"])):
                row = [bits_of(vectors[kind][d][p]) for kind in range(4)]
                if row != [records.NAN] * 4:
                    wanted.append([str(f), str(file["band"]), str(d + 1), str(p + 1), *row])
    assert rows[0] == "file,band,name,configuration,detector,pixel,a1,a2,zs,d".split(","), rows[0]
    assert [row[:2] + row[4:6] + [bits_of(real) for real in row[6:]] for row in rows[1:]] == wanted, name


# The sample with other values, whose bits are random or hard.
def hard_record(rng, order):
    count, epsilon = 144, rng.choice(HARD)
    values = [rng.choice(HARD) if rng.random() < 0.3 else rng.getrandbits(64) for _ in range(count)]
    head = SAMPLE[:99] + struct.pack("<Q", epsilon) + SAMPLE[107:109]
    if order == ">":
        head = head[:79] + head[79:81][::-1] + head[81:99] + head[99:107][::-1] + head[107:109][::-1]
    return head + struct.pack(f"{order}{count}Q", *values)


def check_made():
    for name, files in SETS.items():
        for order in "<>":
            content = b"".join(field[1] for field in fields_of(files, order))
            if len(content) < 100_000 or order == ">":
                check_whole(name, content, "--byte-order", {"<": "little", ">": "big"}[order])
    rng = random.Random(1)
    for order, index in itertools.product("<>", range(10)):
        check_whole(f"hard {index}", hard_record(rng, order), "--byte-order", {"<": "little", ">": "big"}[order])
    for old, new in STRANGE:
        assert old in SAMPLE
        check_whole(new, SAMPLE.replace(old, new, 1))
    ambiguous = next(content for content, found in reader.faulty_records() if "RC106" in found)
    for number in ("1", "2"):
        check_whole("ambiguous", ambiguous, "--reading", number)
    assert run("dump", "-", input=ambiguous)[0] == 2


# What is whole of a record is in the JSON of its beginning, and nothing else is.
def check_cuts():
    fields = fields_of(SETS["plain"])
    whole = b"".join(field[1] for field in fields)
    table = dumped(whole, "--all", "--format", "csv").splitlines()
    ends, offset = [0], 0
    for number, content, _, _ in fields:
        ends += range(offset, offset + len(content), max(len(content) // 48, 1)) if number == 17 else []
        offset += len(content)
        ends += [offset] if number in (3, 4, 5, 6, 7, 12, 14, 15, 16, 17) else []
    for size in sorted({1, 2, *range(7, len(whole), 61), *(end + step for end in ends for step in (0, 1))}):
        if not 0 < size <= len(whole):
            continue
        value = loaded(dumped(whole[:size], "--partial", "--format", "json"))
        assert encoded(value) == whole[:max(end for end in ends if end <= size)], size
        # A detector is in the table when its last vector is there.
        rows, count = dumped(whole[:size], "--partial", "--all", "--format", "csv").splitlines(), sum(
            len(c.get("COEFF_D", [])) * c["pixels"] for f in value["files"] for c in f["configurations"] if "pixels" in c)
        assert rows == table[:count + 1], size
        if "incomplete" in value:
            assert run("dump", "-", input=whole[:size])[0] == 2, size
            status, _, err = run("build", "-", input=json.dumps(value).encode())
            assert status == 2 and b": /incomplete: " in err, err
        listing = dumped(whole[:size], "--partial", "--all").decode().splitlines()
        assert ("ends at" in listing[-1]) == ("incomplete" in value), listing[-1]
    two = loaded(dumped(whole * 2, "--partial", "--format", "json"))
    assert encoded(two) == whole


def check_selections():
    content = b"".join(field[1] for field in fields_of(SETS["plain"]))
    whole = loaded(dumped(content, "--format", "json", "--all"))
    both, every = ["ALL", "UPPER"], range(1, 13)
    for options, files, labels, kinds, detectors, pixels in (
            ("--file 2", [2], ["ALL"], KINDS, every, (1, 9)), ("--band 1", [1], both, KINDS, every, (1, 9)),
            ("--configuration UPPER --kind ZS,A1", [1], ["UPPER"], ["COEFF_A1", "COEFF_ZS"], every, (1, 9)),
            ("--detector 1,11-12 --pixel 2-3", [1, 2], both, KINDS, [1, 11, 12], (2, 3)),
            ("--pixel 3", [1, 2], both, KINDS, every, (3, 3))):
        text = dumped(content, "--format", "json", "--all", *options.split())
        value = loaded(text)
        assert value.pop("selection") == {"detectors": list(detectors), "first_pixel": pixels[0]}, options
        wanted = {**whole, "files": [{"number": number, **file, "configurations": [
            {"number": c, **{
                key: [part[d - 1][pixels[0] - 1:pixels[1]] for d in detectors] if key in KINDS else part
                for key, part in configuration.items() if key not in set(KINDS) - set(kinds)}}
            for c, configuration in enumerate(file["configurations"], 1) if configuration["label"] in labels]}
            for number, file in enumerate(whole["files"], 1) if number in files]}
        assert value == wanted, (options, value)
        status, out, err = run("build", "-", input=text)
        assert status == 2 and not out and b"a part of a record" in err, err
        rows = dumped(content, "--format", "csv", "--all", *options.split()).splitlines()[1:]
        assert len(rows) == sum(len(c[kinds[0]]) * len(c[kinds[0]][0])
                                for f in wanted["files"] for c in f["configurations"]), options
        for row in dumped(content, *options.split()).decode().splitlines()[1:]:
            there = bytes.fromhex(row[8:55].partition("(")[0].replace(".", "")) if row[0] != " " else b""
            assert content[int(row[:4], 16):].startswith(there) if there else True, row


# The table's edits, and those that are too long for it or no UTF-8.
def refusals():
    for line in (ROOT / "tests/data/build_refusals.txt").read_text().splitlines():
        if not line.startswith("#"):
            old, new, wanted = re.fullmatch("(.*?) ->(?: (.*?))? => ?(.*)", line).groups()
            yield old, new or "", wanted.replace("~", "/files/0/configurations/0")
    yield "[1, 2, 3]", f"[{'1,' * 32767}1]", "/files/0/configurations/0/COEFF_A1/0/32767: is one more"
    yield "[1, 2, 3]", "[0." + "1" * 5000 + "]", "/files/0/configurations/0/COEFF_A1/0/0: must be a number"
    yield "EQ_B4.xml", "\udcff", "line 2, column "
    yield "]}]}]}", "]}]}]}\n\0", "line 12, column 1: syntax error"  # which the library takes for the end
    yield '"band"', f'"{"b" * 10**6}"', f"/files/0/{'b' * 40}...: is unknown here\n"


def check_refusals():
    text = dumped(SAMPLE, "--format", "json").decode()
    for old, new, wanted in refusals():
        assert old in text, old
        status, out, err = run("build", "-", input=text.replace(old, new, 1).encode(errors="surrogateescape"))
        assert status == 2 and out == b"" and err.decode().startswith("eqrecord: -: " + wanted), (new[:99], wanted, err)
    two = dumped(b"".join(field[1] for field in fields_of(SETS["plain"])), "--format", "json").decode()
    for old, new, wanted in (('"band": 2', '"nuc_table_id": 7, "band": 2', "/files/1/nuc_table_id: must not be there"),
                             ('"epsilon": 0.25', '"epsilon": -0.0', "/files/0/configurations/1/epsilon: is not that")):
        err = run("build", "-", input=two.replace(old, new, 1).encode())[2].decode()
        assert err.startswith("eqrecord: -: " + wanted), err
    # What is no slip for sure is told, and built.
    counted = text.replace('"configurations_counted": 1', '"configurations_counted": 3')
    note = built(counted.encode(), SAMPLE[:93] + b"\3" + SAMPLE[94:], "counted")
    assert b"configurations_counted: note: is 3, and the list has 1" in note, note
    built(text.replace("0.5", "-0").encode(), SAMPLE[:99] + bytes(7) + b"\x80" + SAMPLE[107:], "-0")
    # Blanks and numbers that lie across the pieces in which the text is read.
    for blanks in (4095, 262_141, 300_000):
        built(text.replace("2, 3]", " " * blanks + "2.000,\n\t3e0 ]", 1).encode(), SAMPLE, blanks)


def check_generated(index):
    files, arguments = cases.make_case(2, index)
    with tempfile.TemporaryDirectory() as folder:
        cases.write_case(files, folder)
        done = subprocess.run([EQCONVERT, *arguments], cwd=folder, capture_output=True, timeout=600)
    if done.returncode == 0:
        text = dumped(done.stdout, "--format", "json")
        assert encoded(loaded(text)) == done.stdout, index
        built(text, done.stdout, index)
    return done.returncode == 0


def check_manners():
    page = re.search(r"```\n(offset .*?)```", (ROOT / "docs/record.md").read_text(), re.DOTALL)[1]
    assert dumped(SAMPLE).decode() == page, "docs/record.md shows another listing"
    rows = dumped(SAMPLE, "--format", "csv").decode()
    assert rows == "file,band,name,configuration,detector,pixel,a1,a2,zs,d\n" + "".join(
        f"1,4,EQ_B4.xml,ALL,{detector},{pixel},{pixel},0,5,1.5\n" for detector in (1, 2) for pixel in (1, 2, 3)), rows
    # A NaN with another payload has no other form in CSV, and a text is quoted.
    content = SAMPLE.replace(struct.pack("<d", 5), struct.pack("<Q", HARD[3]))
    rows = dumped(content, "--format", "csv", "--nan", 'a "b"').decode()
    assert rows.splitlines()[1] == '1,4,EQ_B4.xml,ALL,1,1,1,0,"a ""b""",1.5', rows
    pathlib.Path("r").write_bytes(SAMPLE)
    pathlib.Path("j").write_bytes(dumped(SAMPLE, "--format", "json"))
    for arguments in ("build -o new j", "build -o new --overwrite j", "dump --pixel 9 r"):
        assert run(*arguments.split())[::2] == (0, b""), arguments
    for arguments in ("build", "build j j", "build missing", "build .", "build r", "build -o new j",
                      "build \x1b", "build -o no/\x1b j", "build -o /dev/full j",
                      "dump", "dump r r", "dump j", "dump --nan x r", "dump --file 2 r", "dump --configuration x r",
                      "dump -o new r", "dump --format json -o /dev/full r"):
        status, _, err = run(*arguments.split())
        assert status == 2 and err.startswith(b"eqrecord: ") and b"\x1b" not in err, (arguments, err)
    assert pathlib.Path("new").read_bytes() == SAMPLE and sorted(os.listdir()) == ["j", "new", "r"], os.listdir()
    master, slave = os.openpty()
    assert run("build", "j", capture_output=False, stdout=slave, stderr=subprocess.DEVNULL)[0] == 2


def main():
    check_made()
    check_cuts()
    check_selections()
    check_refusals()
    check_manners()
    with multiprocessing.Pool(2) as pool:
        done = pool.map(check_generated, range(1, int(sys.argv[3]) + 1), chunksize=10)
    assert sum(done) > len(done) / 4, sum(done)
    print(f"{sum(done)} of {len(done)} generated sets")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as place:
        os.chdir(place)
        main()

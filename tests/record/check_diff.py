#!/usr/bin/env python3
"""Compares made records and holds verdict, counts and figures against a slow model, and what is told of A and B
against what is told of B and A. usage: check_diff.py EQRECORD --cases N"""
import copy, json, jsonschema, math, multiprocessing.pool, os, pathlib, random, struct, subprocess, sys, tempfile
from fractions import Fraction

import records

ROOT = pathlib.Path(__file__).resolve().parents[2]
EQRECORD, CASES = os.path.abspath(sys.argv[1]), int(sys.argv[3])
SCHEMA = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/eqrecord-diff-1.schema.json").read_text()))
KINDS = "COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"
PLAIN = "file_type", "creation_date", "applicability_start", "applicability_end", "files_counted"
SIGN, INF = 1 << 63, 0x7FF << 52
NAMES = {"A.xml": "a", "B.xml": "b", "C.xml": "c"}


def real(bits):
    return struct.unpack("<d", struct.pack("<Q", bits))[0]


def bits_of(value):
    return struct.unpack("<Q", struct.pack("<d", value))[0]


BITS = [records.NAN, records.NAN, records.NAN | SIGN, records.NAN | 0x123, INF | 1, INF, INF | SIGN, 0, SIGN, 1, 2, 1 | SIGN, 1 << 52,
        INF - 1, INF - 1 | SIGN, *map(bits_of, (1, -1, 1.5, 0.1, -0.1, 1e300, 1e-300, 3, 100.25))]


# What a record has that is worth comparing, and what becomes of it.
def make_record(rng):
    files = []
    for _ in range(rng.choice((1, 1, 2, 3))):
        epsilon = rng.choice((0.5, 0.25, 1e-9))
        parts = [{"label": rng.choice(("ALL", "UP", "LOW", "\u00e9")), "epsilon": epsilon, "pixels": (p := rng.choice((0, 1, 1, 2, 3))),
                  "bits": [rng.choice(BITS) if rng.random() < 0.3 else bits_of(rng.gauss(1, 1)) for _ in range(48 * p)]}
                 for _ in range(rng.choice((0, 1, 1, 2, 3)))]
        files.append({"band": rng.choice((4, 5, 6)), "name": rng.choice(list(NAMES)), "configurations": parts})
    files[0]["nuc_table_id"] = 7
    return {"files": files}


def changed_bits(rng, bits, much):
    if rng.random() > much:
        return bits
    way = rng.randrange(4)
    if way == 0:
        return rng.choice(BITS)
    if way == 1:
        return min(max(bits % SIGN + rng.choice((-3, -1, 1, 2)), 0), SIGN - 1) | bits & SIGN
    value = real(bits)
    return bits_of(value * (1 + rng.choice((1e-15, 1e-9, -1e-3))) if way == 2 else value + rng.choice((1e-12, 0.125, 1e308)))


def change(rng, record):
    record = copy.deepcopy(record)
    files, much = record["files"], rng.choice((0, 0, 0.02, 0.5))
    for file in files:
        for part in file["configurations"]:
            part["bits"] = [changed_bits(rng, bits, much) for bits in part["bits"]]
            if rng.random() < 0.1:
                part["label"] = rng.choice(("ALL", "UP"))
            if rng.random() < 0.1:
                pixels = rng.randrange(4)
                rows = [part["bits"][i * part["pixels"]:(i + 1) * part["pixels"]] for i in range(48)]
                part["bits"] = [bits for row in rows for bits in (row + [rng.choice(BITS)] * pixels)[:pixels]]
                part["pixels"] = pixels
        if rng.random() < 0.1:
            rng.shuffle(file["configurations"])
        if rng.random() < 0.1:
            file["configurations"] = file["configurations"][1:]
        if rng.random() < 0.1 and any(part["pixels"] for part in file["configurations"]):
            epsilon = changed_bits(rng, bits_of(0.5), 1)
            file["configurations"] = [{**part, "epsilon": real(epsilon)} for part in file["configurations"]]
        if rng.random() < 0.1:
            file |= {"band": rng.choice((4, 5)), "name": rng.choice(list(NAMES))}
        if rng.random() < 0.05:
            file["configurations_counted"] = len(file["configurations"]) + 1
    if rng.random() < 0.1:
        files.append(copy.deepcopy(rng.choice(files)))
    if rng.random() < 0.1 and len(files) > 1:
        del files[rng.randrange(len(files))]
    rng.shuffle(files) if rng.random() < 0.1 else None
    last = -1
    for file in files:
        file.pop("nuc_table_id", None)
        if last < 0:
            last = file["nuc_table_id"] = rng.choice((7, 7, 7, 7, 8, -25536))
    if rng.random() < 0.1:
        record |= {"file_type": "VORN/_B", "creation_date": "2016-01-01T00:00:00"}
    return record


# The test of equality, in exact numbers.
def are_equal(x, y, tolerance):
    if x == y:
        return True
    a, b = real(x), real(y)
    if math.isnan(a) or math.isnan(b):
        return math.isnan(a) and math.isnan(b) and not tolerance["nan_differs"]
    if math.isinf(a) or math.isinf(b):
        return False
    rank = [bits if bits < SIGN else SIGN - bits for bits in (x, y)]
    if "ulp" in tolerance and abs(rank[0] - rank[1]) <= tolerance["ulp"]:
        return True
    a, b = Fraction(a), Fraction(b)
    limit = Fraction(tolerance.get("abs", 0)) + Fraction(tolerance.get("rel", 0)) * max(abs(a), abs(b))
    return ("abs" in tolerance or "rel" in tolerance) and abs(a - b) <= limit


def relative(a, b):
    larger = max(abs(a), abs(b))
    if larger in (0, math.inf):
        return larger
    return abs(a - b) / larger if abs(a - b) < math.inf else abs(a / 4 - b / 4) / (larger / 4)


# A value as JSON has it.
def shown(bits):
    value = real(bits)
    if math.isnan(value):
        return None if bits == records.NAN else f"{bits:#x}"
    return value if math.isfinite(value) else "inf" if value > 0 else "-inf"


def compare_values(kind, one, other, options):
    found = dict.fromkeys(("compared", "differing", "nan_only_in_a", "nan_only_in_b", "nan_of_other_bits"), 0)
    found |= {"max_abs": None, "max_rel": None, "values": []}
    first, last = options["pixel"]
    greatest = {"max_abs": -1, "max_rel": -1}
    for detector in range(1, 13):
        for pixel in range(first, min(last, one["pixels"], other["pixels"]) + 1):
            x, y = (part["bits"][(12 * kind + detector - 1) * part["pixels"] + pixel - 1] for part in (one, other))
            if detector not in options["detector"] or x == y == records.NAN:
                continue
            found["compared"] += 1
            if are_equal(x, y, options["tolerance"]):
                continue
            found["differing"] += 1
            pair = {"detector": detector, "pixel": pixel, "a": shown(x), "b": shown(y)}
            found["values"] += [pair] if len(found["values"]) < options["lines"] else []
            a, b = real(x), real(y)
            if math.isnan(a) or math.isnan(b):
                key = "nan_of_other_bits" if a != a and b != b else "nan_only_in_a" if a != a else "nan_only_in_b"
                found[key] += 1
                continue
            for key, distance in (("max_abs", abs(a - b)), ("max_rel", relative(a, b))):
                if distance > greatest[key]:
                    greatest[key] = distance
                    found[key] = {"distance": distance if distance < math.inf else "inf", **pair}
    return found


# Files and configurations by what they are matched by, each with its place.
def blocks_of(record, options):
    blocks = {}
    for f, file in enumerate(record["files"], 1):
        if f not in options["file"] or file["band"] not in options["band"]:
            continue
        place = {"file": f, "band": file["band"], "name": file["name"]}
        key = {"band": file["band"], "position": f, "name": file["name"]}[options["match"]]
        blocks.setdefault((key,), []).append((place, file))
        for c, part in enumerate(file["configurations"], 1):
            if part["label"] in options["configuration"]:
                label = c if options["match"] == "position" else part["label"]
                blocks.setdefault((key, label), []).append(({**place, "configuration": c, "label": part["label"]}, part))
    return blocks


def compare(one, other, options):
    variables, fields, missing = [], [], []

    def compare_field(name, x, y, places={}):
        is_same = are_equal(bits_of(x), bits_of(y), options["tolerance"]) if name == "epsilon" else x == y
        if not is_same and name not in options["ignore"]:
            x, y = (shown(bits_of(value)) if name == "epsilon" else value for value in (x, y))
            fields.append({"field": name, "value_in_a": x, "value_in_b": y, **places})

    for name in PLAIN:
        default = {"file_type": "VORN/_EQ_TABLE", **records.DATES}
        compare_field(name, *(record.get(name, default.get(name, len(record["files"]))) for record in (one, other)))
    compare_field("nuc_table_id", *([file["nuc_table_id"] for file in record["files"] if "nuc_table_id" in file]
                                    for record in (one, other)))
    ours, theirs = blocks_of(one, options), blocks_of(other, options)
    if not any(len(key) == 2 for key in [*ours, *theirs]) and options["chooses"]:
        return None
    pixels = [part["pixels"] for blocks in (ours, theirs) for key, rows in blocks.items() if len(key) == 2 for _, part in rows]
    if pixels and 0 < max(pixels) < options["pixel"][0]:
        return None
    kinds = [kind for kind in options["kind"] if KINDS[kind] not in options["ignore"]]
    for key in {**ours, **theirs}:
        ofA, ofB = ours.get(key, []), theirs.get(key, [])
        for i in range(max(len(ofA), len(ofB))):
            (a, x), (b, y) = (row[i] if i < len(row) else (None, None) for row in (ofA, ofB))
            places = {"a": a, "b": b}
            if x is None or y is None:
                lack = {"missing_in": "b" if x else "a", **places}
                missing.append(lack)
                nothing = {"pixels": 0}
                variables += [{"variable": KINDS[kind], **lack, **compare_values(kind, nothing, nothing, options)}
                              for kind in kinds if len(key) == 2]
                continue
            names = ["label", "epsilon", "pixels"] if len(key) == 2 else ["band", "name", "configurations_counted"]
            for name in names:
                compare_field(name, *(block.get(name, len(block.get("configurations", ()))) for block in (x, y)), places)
            variables += [{"variable": KINDS[kind], **places, **compare_values(kind, x, y, options)}
                          for kind in kinds if len(key) == 2]
    totals = {"fields": len(fields), "compared": sum(part["compared"] for part in variables),
              "differing": sum(part["differing"] for part in variables), "missing": len(missing)}
    return {"variables": variables, "fields": fields, "missing": missing, "totals": totals,
            "same": not (fields or missing or totals["differing"])}


def make_options(rng):
    words, tolerance = [], {"nan_differs": rng.random() < 0.3}
    options = {"tolerance": tolerance, "ignore": [], "match": "band", "lines": 20, "chooses": False, "pixel": (1, 9), "kind": range(4),
               "detector": range(1, 13), "file": range(1, 9), "band": range(9), "configuration": ("ALL", "UP", "LOW", "\u00e9")}
    words += ["--nan-differs"] if tolerance["nan_differs"] else []
    # None is just what values are changed by, where a bound is kept or not by how it is rounded.
    for name, values in (("abs", (0, 2e-12, 0.2, 1.7e308)), ("rel", (0, 2e-9, 2e-3, 1.5)), ("ulp", (0, 1, 5))):
        if rng.random() < 0.25:
            tolerance[name] = rng.choice(values)
            words += [f"--{name}", repr(tolerance[name])]

    def choose(name, text, value, often=0.1):
        if rng.random() < often:
            words.extend([f"--{name}", text])
            options[name] = value
            options["chooses"] |= name in ("file", "band", "configuration")

    options["ignore"] = rng.sample([*PLAIN, "nuc_table_id", "band", "name", "configurations_counted", "epsilon", "pixels", "COEFF_A2", "byte_order"],
                                   rng.choice((0, 0, 0, 3, 13)))
    words += ["--ignore", ",".join(options["ignore"])] if options["ignore"] else []
    match = rng.choice(("band", "position", "name"))
    choose("match", match, match, 0.5)
    choose("file", "1,3", (1, 3))
    choose("band", "4,6", (4, 6))
    choose("configuration", "ALL", ("ALL",))
    choose("detector", "1,3-5", (1, 3, 4, 5))
    choose("kind", "A1,D", (0, 3))
    choose("pixel", "2-3", (2, 3))
    if rng.random() < 0.2:
        options["lines"] = rng.choice((0, 1, 1000))
        words += ["--max-lines", str(options["lines"])]
    return words, options


def run(*words):
    return subprocess.run([EQRECORD, "diff", *words], capture_output=True, timeout=60)


# Without order, where it is of no matter, and with numbers that are all of one kind.
def plain(value):
    if isinstance(value, dict):
        return sorted((key, plain(part)) for key, part in value.items())
    if isinstance(value, list):
        return sorted(map(plain, value), key=repr)
    return float(value) if isinstance(value, int) else value


def exchanged(value):
    if isinstance(value, dict):
        other = {"a": "b", "b": "a"}
        renamed = {key[:-1] + other[key[-1]] if key in other or key[-2:] in ("_a", "_b") else key: exchanged(part) for key, part in value.items()}
        return renamed | ({"missing_in": other[value["missing_in"]]} if "missing_in" in value else {})
    return [exchanged(part) for part in value] if isinstance(value, list) else value


def check_pair(seed):
    rng = random.Random(seed)
    one = make_record(rng)
    other = change(rng, one) if rng.random() < 0.9 else make_record(rng)
    words, options = make_options(rng)
    paths = [f"{seed}.a", f"{seed}.b"]
    for path, record in zip(paths, (one, other)):
        # Where no configuration has pixels the byte order is a guess.
        order = "<>"[rng.random() < 0.2 and any(part["pixels"] for file in record["files"] for part in file["configurations"])]
        pathlib.Path(path).write_bytes(records.bytes_of(record, order))
    try:
        wanted = compare(one, other, options)
        status = 2 if wanted is None else not wanted["same"]
        done, back, quiet = run("--format", "json", *words, *paths), run("--format", "json", *words, *paths[::-1]), run("--quiet", *words, *paths)
        assert [done.returncode, back.returncode, quiet.returncode] == [status] * 3 and not quiet.stdout, (words, done, back, quiet)
        if wanted is not None:
            found = json.loads(done.stdout)
            assert plain({key: found[key] for key in wanted}) == plain(wanted), (words, found, wanted)
            assert json.loads(back.stdout) == exchanged(found), (words, found, back)
            SCHEMA.validate(found)
        for path in paths:
            os.remove(path)
    except AssertionError as error:
        return f"pair {seed}: {error}"
    return status


# What people see.
def check_text():
    def made(*files, **fields):
        return {"files": [{"band": band, "name": name, "configurations": [
            {"label": label, "epsilon": 0.5, "pixels": len(values), "bits": [*values, *[records.NAN] * 47 * len(values)]}
            for label, values in parts]} | ({"nuc_table_id": 7} if i == 0 else {}) for i, (band, name, parts) in enumerate(files)], **fields}

    one, two, inf = bits_of(1), bits_of(2), INF
    base = made((4, "A.xml", [("ALL", [one, two])]))
    sample = bytearray((ROOT / "samples/EQ_B4.record").read_bytes())
    pathlib.Path("sample").write_bytes(sample)
    sample[0x4F] = 8
    for detector in range(2):
        struct.pack_into("<d", sample, 0x3CD + 24 * detector + 8, 1.500001)
    pathlib.Path("new").write_bytes(sample)
    assert run("sample", "new").stdout.decode() == """\
NUC table: 7 | 8
band 4, ALL, COEFF_D: 2 of 6 values differ, greatest |a-b| 1e-06 and relative 6.67e-07 at detector 1, pixel 2 (1.5 | 1.500001)
  detector 1, pixel 2: 1.5 | 1.500001
  detector 2, pixel 2: 1.5 | 1.500001
1 field and 2 of 24 values differ
"""
    assert run("--rel", "1e-5", "--ignore", "nuc_table_id", "--quiet", "sample", "new").returncode == 0
    cases = [
        (base, [], ""),
        (made((4, "B\n.xml", [("ALL", [one])]), file_type="VORN/", files_counted=1), [],
         "file type: VORN/_EQ_TABLE | VORN/\nband 4, file name: A.xml | B\\n.xml\nband 4, ALL, pixels: 2 | 1, compared are the first 1\n"
         "3 fields differ, none of 1 value\n"),
        (made((4, "A.xml", [("ALL", [records.NAN, one])])), ["--max-lines", "1"],
         "band 4, ALL, COEFF_A1: 2 of 2 values differ, greatest |a-b| 1 and relative 0.5 at detector 1, pixel 2 (2 | 1), NaN only in B: 1\n"
         "  detector 1, pixel 1: 1 | nan\n  and 1 more\n2 of 2 values differ\n"),
        (made((4, "A.xml", [("ALL", [inf, records.NAN | 1])])), ["--max-lines", "0"],
         "band 4, ALL, COEFF_A1: 2 of 2 values differ, greatest |a-b| inf and relative inf at detector 1, pixel 1 (1 | inf), NaN only in B: 1\n"
         "2 of 2 values differ\n"),
        (made((4, "A.xml", [("ALL", [two, bits_of(9)]), ("UP", [])])), ["--detector", "1", "--pixel", "1-9", "--kind", "A1", "--abs", "1"],
         "band 4, configurations counted: 1 | 2\n"
         "band 4, ALL, COEFF_A1: 1 of 2 values differs, greatest |a-b| 7 and relative 0.778 at detector 1, pixel 2 (2 | 9)\n"
         "  detector 1, pixel 2: 2 | 9\nband 4, UP: only in B\n1 field and 1 of 2 values differ; only in B: 1 configuration\n"),
        (made((5, "A.xml", [("ALL", [one, two])])), [],
         "band 4: only in A (A.xml)\nband 5: only in B (A.xml)\nband 4, ALL: only in A\nband 5, ALL: only in B\n"
         "none of 0 values differs; only in A: 1 file and 1 configuration; only in B: 1 file and 1 configuration\n"),
        (made((5, "A.xml", [("UP", [one, two])])), ["--match", "position"],
         "file 1, band: 4 | 5\nfile 1, configuration 1, label: ALL | UP\n2 fields differ, none of 2 values\n"),
        (made((4, "A.xml", [("ALL", [one, two]), ("ALL", [two])])), ["--match", "name", "--ignore", "configurations_counted"],
         "A.xml, ALL, occurrence 2: only in B\nnone of 2 values differs; only in B: 1 configuration\n"),
    ]
    pathlib.Path("base").write_bytes(records.bytes_of(base))
    for other, words, text in cases:
        pathlib.Path("other").write_bytes(records.bytes_of(other))
        done = run(*words, "base", "other")
        assert done.returncode == bool(text) and done.stdout.decode() == text, done
    tiny = [records.bytes_of(made((4, "A.xml", [("ALL", [bits])]))) for bits in (1, SIGN | 1)]
    [pathlib.Path(path).write_bytes(content) for path, content in zip(("one", "other"), tiny)]
    assert run("--rel", "1.5", "one", "other").returncode == 1 and run("--rel", "2", "one", "other").returncode == 0
    whole = records.bytes_of(base)
    pathlib.Path("other").write_bytes(records.bytes_of(base, ">"))
    pathlib.Path("cut").write_bytes(whole[:-8])
    for words, status, text in (
            (["base", "other"], 0, "note: byte order: little | big\n"), (["--ignore", "byte_order", "base", "other"], 0, ""),
            (["--partial", "cut", "base"], 1, "only in B: 1 configuration"), (["cut", "base"], 2, "--partial takes"),
            (["--quiet", "base", "missing"], 2, "No such file"), (["-", "-"], 2, "standard input"), (["base"], 2, "two records"),
            (["--abs", "inf", "base", "base"], 2, "--abs"), (["--ulp", "-1", "base", "base"], 2, "--ulp"),
            (["--ignore", "label,x", "base", "base"], 2, '"x" is no field')):
        done = run(*words)
        assert done.returncode == status and text in (done.stdout + done.stderr).decode(), done
    done = subprocess.run([EQRECORD, "diff", "base", "-"], input=whole, capture_output=True, timeout=60)
    assert done.returncode == 0 and not done.stdout, done


def main():
    check_text()
    with multiprocessing.pool.ThreadPool(2) as pool:
        results = pool.map(check_pair, range(CASES), chunksize=1)
    failures = [result for result in results if isinstance(result, str)]
    print(*failures[:3], sep="\n")
    print(f"{CASES} pairs, {len(failures)} disagreements, status 0, 1, 2: {[results.count(status) for status in range(3)]}")
    sys.exit(bool(failures))


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()

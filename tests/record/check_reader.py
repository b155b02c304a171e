#!/usr/bin/env python3
"""Makes records from descriptions, here and with the converter, and holds what eqrecord tells of them, of
all that is left of them when they are cut, and of what a wrong byte makes of them, against how they were
made. usage: check_reader.py EQCONVERT EQRECORD"""
import itertools, json, jsonschema, os, pathlib, struct, subprocess, sys, tempfile, xml.sax.saxutils

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/model"))
import cases, records

EQCONVERT, EQRECORD = map(os.path.abspath, sys.argv[1:3])
SCHEMA = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/eqrecord-info-1.schema.json").read_text()))
DATES = list(records.DATES.values())


# A file: (name, NUC table, [(label, P)]), and how many configurations after which its blocks are lost.
# Its epsilon and values follow from its place in the set.
def description(*files):
    return [(file + (None,))[:4] for file in files]


ALL = [("ALL", 3)]
SETS = {
    "plain": description(("EQ_B4.xml", 7, [("ALL", 3), ("UPPER", 2)]), ("EQ_B5.xml", 7, ALL)),
    "large": description(*((f"EQ_B{f}.xml", 7, [(label, 300) for label in ("ALL", "UPPER")]) for f in range(2))),
    "12 files": description(*((f"{i:02}", 50, [("A", 1)]) for i in range(12))),
    "123 files": description(*((f"B{i:03}.xml", 7, [("A", 1)]) for i in range(123))),
    "digits": description(("20150623_B00.xml", 7, [("0123456789", 3), ("2015 config", 3)]),
                          ("20150623_B01.xml", 7, [("0123456789", 3), ("2015 config", 0)])),
    "long names": description(("n" * 120, 7, [("l" * 100, 2), ("l" * 1000, 2)]), ("0123456789" * 12, 7, ALL)),
    "300 alone": description(("many.xml", 7, [(f"STEP_{i}", 1) for i in range(300)])),
    "300 first": description(("many.xml", 7, [(f"STEP_{i}", i % 3) for i in range(300)]), ("next.xml", 7, ALL)),
    "256": description(("many.xml", 7, [("A", 1)] * 256), ("next.xml", 7, ALL)),
    "negative": description(*((f"EQ_{nuc}", nuc, ALL) for nuc in (40000, 40001, 7, 7))),
    "no pixels": description(("none.xml", 7, [("A", 0), ("B", 0)]), ("empty.xml", 7, []), ("A", 7, [("12", 0)])),
    "labels": description(("\u00e9.xml", 7, [("\u00e9/\u4e2d", 1), ("", 1), ('"a" & <b>', 257)])),
    "lost early": description(("EQ_B4.xml", 7, [("ALL", 3), ("LOST", 0), ("GONE", 3)], 2), ("EQ_B5.xml", 7, ALL)),
    "lost late": description(("EQ_B5.xml", 7, ALL), ("EQ_B4.xml", 7, [("LOST", 0), ("GONE", 3)], 1)),
    "300 lost": description(("many.xml", 7, [("A", 0)] * 300, 100), ("next.xml", 7, ALL)),
}


# The fields as (number, bytes, file, configuration), in either byte order.
def fields_of(files, order="<"):
    made, last = [], -1
    for f, (name, nuc, configurations, lost) in enumerate(files, 1):
        file = {"band": f, "name": name, "configurations_counted": len(configurations) % 256, "configurations": []}
        if last < 0:
            last = file["nuc_table_id"] = (nuc + 32768) % 65536 - 32768
        for label, pixels in configurations[:lost]:
            values = [f + kind / 8 + p / 1024 for kind in range(4) for d in range(12) for p in range(pixels)]
            bits = struct.unpack(f"<{len(values)}Q", struct.pack(f"<{len(values)}d", *values))
            bits = [b if i // max(pixels, 1) % 12 == 0 else records.NAN for i, b in enumerate(bits)]
            file["configurations"].append({"label": label, "epsilon": f / 4, "pixels": pixels, "bits": bits})
        made.append(file)
    return records.fields_of({"files": made}, order)


# The same as a parameter file for the converter.
def xml_of(number, file):
    name, nuc, configurations, lost = file
    text = (f"<TEST_EQ_TABLE><HEADER><PRODUCTION_DATE>{DATES[0]}</PRODUCTION_DATE></HEADER><SPECIFIC_HEADER>"
            f"<APPLICABILITY_DATE>{DATES[1]}</APPLICABILITY_DATE><APPLICABILITY_END_DATE>{DATES[2]}"
            f"</APPLICABILITY_END_DATE></SPECIFIC_HEADER><DATA><BAND_ID>{number}</BAND_ID><EPSILON>{number / 4}</EPSILON>"
            f"<NUC_TABLE_ID>{nuc}</NUC_TABLE_ID>")
    for c, (label, pixels) in enumerate(configurations, 1):
        text += f"<COEFFICIENTS_LIST tdi_config={xml.sax.saxutils.quoteattr(label)}>"
        if pixels > 0:
            text += (f'<COEFFICIENTS detector_id="1"><NB_OF_PIXELS>{pixels}</NB_OF_PIXELS><ON_BOARD_EQUALIZATION>'
                     "<APPLICABILITY_DATE/>")
            for kind, element in enumerate(("COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D")):
                vector = " ".join(str(number + kind / 8 + p / 1024) for p in range(pixels))
                text += f"<{element}>{vector}</{element}>"
            text += "</ON_BOARD_EQUALIZATION></COEFFICIENTS>"
        text += '<COEFFICIENTS detector_id="1"/>' if c == lost else ""
        text += "</COEFFICIENTS_LIST>"
    return text + "</DATA></TEST_EQ_TABLE>"


# What info tells of the fields before one, whose index is `end`; the last file's configurations are whole.
def told(path, fields, end, order):
    placed = list(zip(fields, itertools.accumulate((len(field[1]) for field in fields), initial=0)))
    value = {"schema": "eqrecord-info-1", "path": path, "byte_order": {"<": "little", ">": "big"}[order], "files": []}
    plain = {3: "file_type", 4: "creation_date", 5: "applicability_start", 6: "applicability_end"}
    file, configuration = {}, {}
    for (number, content, _, _), offset in placed[:end]:
        if number in plain:
            value[plain[number]] = content.decode()
        elif number == 7:
            value["files_counted"] = int(content)
        elif number == 8:
            file = {"nuc_table_id": struct.unpack(order + "h", content)[0], "offset": offset}
        elif number == 9:
            file = {"offset": offset, **(file if "band" not in file else {}), "band": content[0], "configurations": []}
        elif number == 11:
            file["name"] = content.decode()
        elif number == 12:
            file["configurations_counted"] = content[0]
            value["files"].append(file)
        elif number == 13:
            configuration = {"offset": offset}
        elif number == 14:
            configuration["label"] = content.decode()
        elif number == 15:
            configuration["epsilon"] = struct.unpack(order + "d", content)[0]
        elif number == 16:
            configuration["pixels"] = struct.unpack(order + "h", content)[0]
        elif number == 17:
            configuration["vectors"] = {"offset": offset, "dtype": order + "f8", "shape": [4, 12, configuration["pixels"]]}
            file["configurations"].append(configuration)
    return value, file


def told_of_cut(path, files, fields, size, order="<"):
    offsets = list(itertools.accumulate((len(field[1]) for field in fields), initial=0))
    end = next((i for i, field in enumerate(fields) if offsets[i] <= size < offsets[i + 1]), len(fields))
    value, file = told(path, fields, end, order)
    value["bytes"] = size
    number, content, f, c = fields[end] if end < len(fields) else (0, b"", 0, 0)
    if end == len(fields) or (number == 13 and f == len(files) and size == offsets[end]):
        kept = all(len(other["configurations"]) % 256 == other["configurations_counted"] and
                   len(other["configurations"]) >= other["configurations_counted"] for other in value["files"])
        return {**value, "state": "complete" if kept else "short"}
    ends = {"field": number, "offset": offsets[end], "bytes": size - offsets[end]}
    ends |= {"file": f} if f else {}
    ends |= {"configuration": c} if c else {}
    if number >= 15:
        ends["label"] = next(field[1] for field in reversed(fields[:end]) if field[0] == 14).decode()
    if number == 17:
        ends["vectors_whole"] = ends["bytes"] * 48 // len(content)
    if size == offsets[end] and (number == 16 or (number == 9 and f > 1 and fields[end - 1][0] != 8)):
        ends["cause"] = "stopped_in_configuration" if number == 16 else "nuc_table_mismatch"
    return {**value, "state": "incomplete", "ends": ends}


# Runs info on many records, of which no other byte than the given ones is written; what it tells of each by
# its path.
def info(records, *options):
    for path, content in records.items():
        pathlib.Path(path).write_bytes(content)
    result = {}
    paths = list(records)
    for start in range(0, len(paths), 10_000):
        done = subprocess.run([EQRECORD, "info", "--format", "json", *options, *paths[start:start + 10_000]],
                              capture_output=True, timeout=600)
        result |= {line["path"]: line for line in map(json.loads, done.stdout.splitlines())}
        refused = [line.split(": ")[1] for line in done.stderr.decode().splitlines()]
        worst = 2 if refused else max((line["state"] != "complete" for line in result.values()), default=0)
        assert done.returncode == worst or start > 0, (done.returncode, done.stderr)
        assert sorted([*refused, *result]) == sorted(paths[:start + 10_000]) or start > 0, refused
    for path in paths:
        os.remove(path)
    return result


def check(found, wanted, what):
    assert found == wanted, f"{what}: \n{json.dumps(found)}\nfor\n{json.dumps(wanted)}"
    if found["bytes"] % 16 == 0:
        SCHEMA.validate(found)


def made(files):
    paths = []
    for number, file in enumerate(files, 1):
        os.makedirs(f"set/{number}", exist_ok=True)
        paths.append(f"set/{number}/{file[0]}")
        pathlib.Path(paths[-1]).write_text(xml_of(number, file), encoding="utf-8")
    return subprocess.run([EQCONVERT, *paths], capture_output=True, timeout=600)


def check_whole(name, files):
    fields = fields_of(files)
    plain, big = (b"".join(field[1] for field in fields_of(files, order)) for order in "<>")
    assert made(files).stdout == plain, f"{name}: the converter makes another record"
    found = info({"plain": plain, "big": big, "two": plain + plain})
    check(found["plain"], told_of_cut("plain", files, fields, len(plain)), name)
    check(found["big"], told_of_cut("big", files, fields_of(files, ">"), len(plain), ">"), f"{name}, big-endian")
    trailing = {"offset": len(plain), "bytes": len(plain), "second_record": True}
    wanted = {**told("two", fields, len(fields), "<")[0], "bytes": 2 * len(plain), "state": "trailing", "trailing": trailing}
    check(found["two"], wanted, f"{name}, twice")


# Where a cut leaves what could have begun otherwise: behind two digits of a number that has more, until the next
# thing that can be held against another; in a configuration behind those that are counted, until its epsilon; and
# where blocks are lost.
def open_since(files, fields, size):
    offset, since = 0, None
    for number, content, f, c in fields:
        since = None if number in (4, 10, 16) or (number == 13 and c > 1) else since
        if number in (2, 7, 10, 13) and len(content) > 2:
            since = offset + 2
        counted = len(files[f - 1][2]) % 256 if f else 0
        if number == 13 and c == counted + 1 and len(files[f - 1][2]) > 255:
            since = offset
        if number == 9 and f > 1 and files[f - 2][3]:
            since = offset
        offset += len(content)
        if size < offset:
            break
    return since if since is not None and size >= since else None


def check_cuts(name, files, fields, sizes):
    whole = b"".join(field[1] for field in fields)
    found = info({str(size): whole[:size] for size in sizes if size > 0})
    for path, value in found.items():
        value.pop("byte_order_certain", None)
        since = open_since(files, fields, int(path))
        if since is not None:
            # Just behind the configurations that are counted nothing is missing.
            assert value["state"] != "complete" or since == int(path), (name, path, value)
            continue
        check(value, told_of_cut(path, files, fields, int(path)), f"{name}, {path} bytes")


def leaves(value, path=""):
    if isinstance(value, (dict, list)):
        for key, part in value.items() if isinstance(value, dict) else enumerate(value):
            yield from leaves(part, f"{path}/{key}")
    else:
        yield path, value


# Another byte in a header may be another value of its field, and nothing else without being told.
def check_flips(name, fields):
    whole = b"".join(field[1] for field in fields)
    offsets = itertools.accumulate((len(field[1]) for field in fields), initial=0)
    header = [at for field, start in zip(fields, offsets) if field[0] != 17 for at in range(start, start + len(field[1]))]
    records = {"whole": whole}
    records |= {f"{at}.{byte}": whole[:at] + bytes([byte]) + whole[at + 1:]
                for at in header for byte in range(256) if byte != whole[at]}
    found = info(records)
    wanted = dict(leaves(found["whole"]))
    for path, value in found.items():
        if value["state"] == "complete":
            # Bytes that are no UTF-8 are told otherwise than text.
            different = [key for key, part in leaves(value) if wanted.get(key.removesuffix("/hex")) != part and key != "/path"]
            assert len(different) <= 1 and "offset" not in "".join(different), (name, path, different)
    return len(records) - 1


def check_stops():
    (name, nuc, configurations, lost), second = SETS["plain"]
    stops = {"nuc": made([SETS["plain"][0], ("EQ_B5.xml", 8, *second[2:])]),
             "pixels": made([SETS["plain"][0], ("EQ_B5.xml", 7, [("ALL", 40000)], None)])}
    assert all(stop.returncode == 255 for stop in stops.values()), stops
    found = info({path: stop.stdout for path, stop in stops.items()})
    assert [value["ends"]["cause"] for value in found.values()] == ["nuc_table_mismatch", "stopped_in_configuration"], found


def check_inputs():
    sample = (ROOT / "samples/EQ_B4.record").read_bytes()
    pathlib.Path("record").write_bytes(sample)
    pathlib.Path("empty").touch()
    pathlib.Path("text").write_text("hello\n")
    with open("zeros", "wb") as zeros:
        zeros.truncate(1 << 30)
    for path, message in (("empty", "empty"), ("text", "no record"), ("zeros", "no record"), (".", "Is a directory"),
                          ("missing", "No such file")):
        done = subprocess.run([EQRECORD, "info", path, "record"], capture_output=True, text=True, timeout=60)
        assert done.returncode == 2 and message in done.stderr and done.stderr.startswith(f"eqrecord: {path}: "), done
        assert done.stdout.startswith("record: complete, 1261 bytes"), done
    done = subprocess.run([EQRECORD, "info", "-"], input=sample, capture_output=True, timeout=60)
    assert done.returncode == 0 and done.stdout.startswith(b"-: complete, 1261 bytes, little-endian\n"), done


# A record of 1 GB whose end is missing, of which nearly all is left out of the file: what may be names there is
# long, and must not be taken for too much to look at.
def check_large():
    with open("large", "wb") as large:
        large.write(b"".join(field[1] for field in fields_of(SETS["12 files"])[:8]))
        for number in range(12):
            large.write(b"%c1620150623_B%02d.xml\7" % (number, number))
            for configuration in range(7):
                large.write(b"03ALL" + struct.pack("<dh", 0.5, 32767))
                large.seek(48 * 8 * 32767, os.SEEK_CUR)
        large.truncate(large.tell() - 1)
    value = json.loads(subprocess.run([EQRECORD, "info", "--format", "json", "large"], capture_output=True).stdout)
    assert value["state"] == "incomplete" and value["ends"]["file"] == 12 and value["ends"]["field"] == 17, value


# What the converter leaves of generated files, broken ones among them: a run that came to its end has a reading,
# and one that stopped ends before a field, nearly always one at which runs stop.
def check_generated(count):
    records, statuses = {}, {}
    for index in range(1, count):
        files, arguments = cases.make_case(1, index)
        with tempfile.TemporaryDirectory() as folder:
            cases.write_case(files, folder)
            done = subprocess.run([EQCONVERT, *arguments], cwd=folder, capture_output=True, timeout=600)
        if done.stdout:
            records[f"g{index}"], statuses[f"g{index}"] = done.stdout, done.returncode
    found = info(records)
    for path, status in statuses.items():
        value = found[path]
        assert value["state"] in (["complete", "short"] if status == 0 else ["incomplete"]), (path, status, value)
        assert status == 0 or (value["ends"]["bytes"] == 0 and value["ends"]["field"] in (9, 13, 16)), (path, value)


# Records with something wrong, and the findings: identifier and offset.
def faulty_records():
    one, two = (b"".join(field[1] for field in fields_of(SETS[name])) for name in ("plain", "no pixels"))
    offsets = list(itertools.accumulate((len(field[1]) for field in fields_of(SETS["plain"])), initial=0))
    where = {(number, f, c): offset for (number, _, f, c), offset in zip(fields_of(SETS["plain"]), offsets)}
    vectors = where[17, 1, 1]
    nan, infinite = (struct.pack("<d", float(text)) for text in ("nan", "-inf"))
    quarter = struct.pack("<d", 0.25)
    start = one[:77] + b" 1\7\0\1" + b"01A"
    # 10 and a label that begins with 0, then one of 91 bytes; or 100 and a label of as many, then an empty one.
    ends = b"91" + b"y" * 79 + quarter + b"\0\0" + b"00" + quarter + b"\0\0"

    def edit(offset, content):
        return one[:offset] + content + one[offset + len(content):]

    yield one, ""
    yield b"", "RC101@0"
    yield b"<TEST_EQ_TABLE/>", "RC101@0"
    yield edit(where[13, 1, 1], b"?"), f"RC102@{where[13, 1, 1]}"
    yield edit(where[15, 1, 1], b"\1"), f"RC102@{where[15, 1, 2]}"
    yield one[:vectors + 5], f"RC103@{vectors + 5}"
    yield one[:where[13, 1, 1]], f"RC103@{where[13, 1, 1]} RC107@0"
    yield one[:where[13, 2, 1]], f"RC104@{where[9, 2, 0]}"
    yield one + b"!", f"RC105@{len(one)}"
    # Two of these can also be read as one with a label of 112 bytes.
    short = b"ZEDA 7VORN/_E" + one[20:77] + b" 1\7\0\1" + b"01A\1" + b"112015 config" + quarter + b"\0\0"
    yield short + short, f"RC105@{len(short)}"
    yield start + b"\2" + b"100" + b"x" * 9 + quarter + b"\0\0" + ends, "RC106@0"
    yield start + b"\3" + b"100" + b"x" * 9 + quarter + b"\0\0" + ends, "RC106@0 RC104@79"
    yield start + b"\1" + b"01A" + bytes(10), "RC107@0"
    yield start + b"\0" + (b"01A" + quarter + b"\0\0") * 256, "RC108@79 RC205@99"
    yield edit(vectors, nan), f"RC201@{vectors}"
    yield edit(vectors + 288, nan * 3), f"RC202@{vectors}"
    yield edit(vectors + 8, infinite), f"RC203@{vectors + 8}"
    yield edit(where[9, 2, 0], b"\1"), f"RC204@{where[9, 2, 0]}"
    yield edit(where[5, 0, 0], b"2015-02-29"), f"RC206@{where[5, 0, 0]}"
    yield edit(where[5, 0, 0], b"2031-01-01"), f"RC207@{where[5, 0, 0]}"
    yield edit(where[15, 2, 1], infinite), f"RC208@{where[13, 2, 1]}"
    yield edit(where[4, 0, 0], b"1" + one[where[4, 0, 0]:]), f"RC209@{where[4, 0, 0]}"


def check_findings():
    schema = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/eqrecord-check-1.schema.json").read_text()))
    for content, wanted in faulty_records():
        pathlib.Path("faulty").write_bytes(content)
        text, report, strict = (subprocess.run([EQRECORD, "check", *options, "faulty"], capture_output=True, text=True)
                                for options in ([], ["--format", "json"], ["--strict"]))
        report = json.loads(report.stdout)
        schema.validate(report)
        findings = report["findings"]
        assert " ".join(f"{found['id']}@{found['offset']}" for found in findings) == wanted, (wanted, report)
        assert text.stdout == "".join("faulty:{offset:#x}: {severity}: {message} [{id}]\n".format_map(found)
                                      for found in findings), text
        assert text.returncode == any(found["severity"] == "error" for found in findings), text
        assert strict.returncode == (wanted != "") and not text.stderr, strict
        for value in info({"faulty": content}).values():
            SCHEMA.validate(value)
            assert (value["state"] == "ambiguous") == ("RC106" in wanted) == ("other_readings" in value), value
            if "RC106" in wanted:
                check_choice(content, [value, *value["other_readings"]])


# Of a record with several readings the chosen one is all there is, for info and for check.
def check_choice(content, readings):
    pathlib.Path("ambiguous").write_bytes(content)
    for number, reading in enumerate(readings, 1):
        value, report = (json.loads(subprocess.run([EQRECORD, verb, "--format", "json", f"--reading={number}", "ambiguous"],
                                                   capture_output=True).stdout) for verb in ("info", "check"))
        is_short = any(len(file["configurations"]) < file["configurations_counted"] for file in reading["files"])
        assert value["files"] == reading["files"] and value["state"] == report["state"] == ["complete", "short"][is_short]
        assert [finding["id"] for finding in report["findings"]] == ["RC104"] * is_short, report
    done = subprocess.run([EQRECORD, "check", f"--reading={number + 1}", "ambiguous", "empty"], capture_output=True)
    assert done.stderr == b"eqrecord: ambiguous: there is no reading %d\n" % (number + 1) and done.stdout, done


def main():
    for name, files in SETS.items():
        check_whole(name, files)
        fields = fields_of(files)
        offsets = list(itertools.accumulate((len(field[1]) for field in fields), initial=0))
        borders = {offset + step for offset in offsets for step in (-1, 0, 1)}
        borders = [size for size in sorted(borders) if 0 < size <= offsets[-1]]
        check_cuts(name, files, fields, borders if len(borders) < 500 else borders[:200] + borders[200:-200:7] + borders[-200:])
    sample = (ROOT / "samples/EQ_B4.record").read_bytes()
    files = description(("EQ_B4.xml", 7, [("ALL", 3)]))
    check_stops()
    check_inputs()
    check_large()
    check_findings()
    check_generated(1000)
    fields = [field for field in fields_of(files) if field[0] != 17]
    fields = [field if field[0] not in (9, 15) else (field[0], {9: b"\4", 15: struct.pack("<d", 0.5)}[field[0]], *field[2:])
              for field in fields] + [(17, sample[109:], 1, 1)]
    assert b"".join(field[1] for field in fields) == sample
    check_cuts("sample", files, fields, range(len(sample) + 1))
    flips = check_flips("sample", fields) + check_flips("plain", fields_of(SETS["plain"]))
    print(f"{len(SETS)} sets, {len(sample)} cuts of the sample, {flips} wrong bytes")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        main()

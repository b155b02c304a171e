#!/usr/bin/env python3
"""Exports records as parameter files and converts those back: records of generated sets, and made ones with
all that is hard to express; what can't be expressed is refused and leaves nothing.
usage: check_export.py EQCONVERT EQRECORD --cases N"""
import collections, functools, multiprocessing.pool, os, pathlib, subprocess, sys, tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/model"))
import cases
from nasty_records import BITS, DATES, NASTY, configuration, file, record

EQCONVERT, EQRECORD = map(os.path.abspath, sys.argv[1:3])


def dated(*dates):
    return record(file(nuc=7), dates=[*dates, *DATES][:3])


ONE = file(configuration(), nuc=7)
EXPRESSED = {
    "values": record(file(*(configuration(b"%d" % i, 5, start=i) for i in range(12)), nuc=7)),
    **{f"epsilon {bits:x}": record(file(configuration(epsilon=bits), configuration(epsilon=bits), nuc=7)) for bits in BITS},
    "no pixels": record(file(configuration(pixels=0), configuration(pixels=2), nuc=7), file(), file(configuration(pixels=0))),
    "widest": record(file(configuration(pixels=32767), nuc=-1, band=255)),
    "300": record(file(*[configuration(b"S%d" % i, i % 2) for i in range(300)], nuc=7), file(configuration())),
    "identifiers": record(*(file(name=b"a", nuc=nuc) for nuc in (-1, -25536, -32768, 32767)), file(name=b"a")),
    "dates": dated("0000-01-01T00:00:00", "0099-12-31T23:59:59", "-0005-02-28T00:00:01"),
    "far dates": dated("9999-12-31T23:59:59", "12345-06-07T01:02:03", "-290000-01-01T00:00:00"),
    "labels": record(file(configuration(NASTY), configuration(b""), configuration(NASTY.decode(errors="ignore").encode()),
                          configuration(b"\xc3\xa9" * 999), nuc=7)),
    "names": record(file(name=b"\xff\n -\xc3\xa9", nuc=7), file(name=b"-"), file(name=b"..."), file(name=b"n" * 255)),
    "types": record(ONE, kind=b"[1]:.-{\xc3\xa9}\xff"), "no type": record(ONE, kind=b""), "long type": record(ONE, kind=b"t" * 5000),
    "1001 files": record(ONE, *[file(name=b"%d" % i) for i in range(1000)]),
}
REFUSED = {  # with what the message has
    "signalling": (record(file(configuration(last=0x7FF0000000000001), nuc=7)), "COEFF_D of detector 12, pixel 3 of file 1, "),
    "signalling epsilon": (record(ONE, file(configuration(epsilon=0xFFF4000000000000))), "the epsilon of file 2 "),
    "date": (dated(DATES[0], "2015-02-29T00:00:00"), 'field 5 (applicability start)'),
    "time": (dated("2015-02-28T23:59:60"), "field 4 (creation date)"),
    "NUL": (record(file(configuration(b"a\0b"), nuc=7)), 'configuration 1 "a\\x00b" holds a NUL'),
    "type": (record(ONE, kind=b"><DATA>"), 'field 3 (file type), "VORN/><DATA>"'),
    **{f"name {name}": (record(ONE, file(name=name)), "field 11 (file name) of file 2") for name in (b"", b".", b"..", b"n" * 256)},
    "short": (record(file(configuration(), nuc=7, count=3)), "file 1 counts 3 configurations, 1 is there"),
    "big": (record(file(configuration(order=">"), nuc=7, order=">")), "it is big-endian"),
    "cut": (record(ONE)[:-1], "--partial takes what is whole"),
}


def run(*arguments, **options):
    return subprocess.run(arguments, capture_output=True, timeout=600, **options)


def converted(folder):
    paths = sorted(os.fsencode(path) for path in pathlib.Path(folder).glob("*/*"))
    return run(EQCONVERT, *paths).stdout


def export(content, *options):
    pathlib.Path("the.record").write_bytes(content)
    done = run(EQRECORD, "export", "--format", "xml", "-o", "out", *options, "the.record")
    assert done.returncode == 0 or not os.path.exists("out"), done
    return done


def exported(content, *options):
    done = export(content, *options)
    assert done.returncode == 0 and not done.stdout, done
    result = converted("out")
    run("rm", "-r", "out")
    return result


def check_made():
    for name, content in EXPRESSED.items():
        assert exported(content) == content, name
    for name, (content, message) in REFUSED.items():
        done = export(content)
        assert done.returncode == 2 and message in done.stderr.decode() and done.stderr.count(b"\n") == 1, (name, done)
    assert b'"...", begins with a dot' in export(EXPRESSED["names"]).stderr
    run("rm", "-r", "out")


# What is left of a record, and chosen of it, makes a record of its own.
def check_parts():
    first, second = ([configuration(label, 2, start=start) for label in (b"A", b"B")] for start in (1, 5))
    whole = record(file(*first, nuc=-3, band=1), file(*second, nuc=7, band=2, count=4), file(name=b"none", band=3))
    named = file(name=b"none", band=3, nuc=7)
    for options, wanted in {
            ("--file", "1"): record(file(*first, nuc=-3, band=1)), ("--band", "3"): record(named),
            ("--partial",): record(file(*first, nuc=-3, band=1), file(*second, nuc=7, band=2), file(name=b"none", band=3)),
            ("--partial", "--file", "2-3"): record(file(*second, nuc=7, band=2), file(name=b"none", band=3)),
            ("--configuration", "B", "--partial"): record(file(first[1], nuc=-3, band=1), file(second[1], nuc=7, band=2)),
    }.items():
        assert exported(whole, *options) == wanted, options
    broken = record(file(*first, nuc=-3, band=1), file(*second, nuc=7, band=2))[:-9]
    assert exported(broken, "--partial") == record(file(*first, nuc=-3, band=1), file(second[0], nuc=7, band=2))
    assert exported(record(ONE) + b"more", "--partial") == record(ONE)
    assert export(record(ONE)[:60], "--partial").returncode == 2


# Nothing but the new folder is touched, whatever is there.
def check_folders():
    good, bad = record(ONE), REFUSED["date"][0]
    pathlib.Path("kept").mkdir()
    os.symlink("nowhere", "link")
    before = sorted(os.listdir())
    for folder in ("kept", "kept/", "link", "the.record", "missing/out", "/", ".", "-", "/dev/full", "/proc/out"):
        assert export(good, "-o", folder).returncode == 2, folder
    for options in (["--overwrite"], ["--kind", "A1"], ["--pixel", "1"], ["--detector", "1"], ["--file", "2"]):
        assert export(good, *options).returncode == 2, options
    assert export(bad).returncode == 2 and sorted(os.listdir()) == sorted([*before]), os.listdir()
    done = run("/bin/sh", "-c", 'ulimit -f 1; exec "$@"', "sh", EQRECORD, *"export --format xml -o out the.record".split())
    assert done.returncode == 2 and sorted(os.listdir()) == before, done
    assert exported(good, "-o", "out///") == good and sorted(os.listdir()) == before


# How the record of a set fares: what refuses it, "" when it comes back, None when the set gives none.
def check_set(index):
    files, arguments = cases.make_case(7, index)
    with tempfile.TemporaryDirectory() as folder:
        cases.write_case(files, folder)
        made = run(EQCONVERT, *arguments, cwd=folder)
        if made.returncode != 0 or not arguments:
            return None
        paths = functools.partial(os.path.join, folder)
        pathlib.Path(paths("record")).write_bytes(made.stdout)
        done = run(EQRECORD, "export", "--format", "xml", "-o", paths("out"), paths("record"))
        if done.returncode == 0:
            assert converted(paths("out")) == made.stdout, f"set {index}"
            return ""
        assert done.returncode == 2 and not [name for name in os.listdir(folder) if name[:5] in ("out", ".part")], done
        return next((cause for cause in ("counts ", "no file can have this name", "ways") if cause in done.stderr.decode()), done)


def check_sets(count):
    with multiprocessing.pool.ThreadPool(2) as pool:
        found = collections.Counter(map(str, pool.map(check_set, range(count))))
    records = count - found.pop("None")
    refused = records - found.pop("")
    assert set(found) <= {"counts ", "no file can have this name", "ways"} and refused < records / 50, found
    print(f"{records} records of {count} sets, {refused} refused: {dict(found)}")


with tempfile.TemporaryDirectory() as scratch:
    os.chdir(scratch)
    check_made()
    check_parts()
    check_folders()
    check_sets(int(sys.argv[4]))

#!/usr/bin/env python3
"""Runs eqlint on samples and on made files, also with hostile names; holds what it writes against the
schemas and what code hosts refuse, and its manners against its help. usage: check_formats.py EQLINT"""
import json, jsonschema, os, pathlib, pty, re, signal, subprocess, sys, tempfile, urllib.parse

EQLINT = os.path.abspath(sys.argv[1])
HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
SAMPLE = (ROOT / "samples/EQ_B4.xml").read_bytes()
HOSTILE = b"a b\n\x1b[31m#?%\xc2\x9b\xff\xe2\x80\xae:{}.xml"
FAULTY = SAMPLE.replace(b"1 2 3", b"1  3", 1)
FILES = {
    b"clean.xml": SAMPLE, b"-x.xml": SAMPLE, b"[a,b]": SAMPLE, b"faulty.xml": FAULTY, HOSTILE: FAULTY,
    b"moved.xml": FAULTY.replace(b"<DATA>", b"\n\n<DATA>"), b"note.xml": SAMPLE.replace(b"1 2 3", b"1 2 3 ", 1),
    b"other.xml": SAMPLE.replace(b">7<", b">8<"), b"many.xml": SAMPLE.replace(b"1 2 3", b"1" + b"  0" * 6_000, 1),
    b"latin.xml": SAMPLE.replace(b'"ALL"', b'"\xff\x1b\xc2\x9b"').replace(b"</COEFFICIENTS_LIST>", b"""
        </COEFFICIENTS_LIST><COEFFICIENTS_LIST tdi_config="\xff\x1b\xc2\x9b"></COEFFICIENTS_LIST>"""),
    b"bands.json": b'{"bands": [4, 5]}', b"key.json": b'{"bandz": [4]}', b"type.json": b'{"bands": [4, "x"]}',
    b"pixels.json": b'{"pixels": {"four": 3}}', b"broken.json": b'{"bands": [4,}',
}
SETS = [[b"clean.xml"], [b"faulty.xml"], [HOSTILE], [b"latin.xml"], [b"missing \xff.xml"], [b"./many.xml"], [b"[a,b]"],
        [b"clean.xml", b"other.xml", b"faulty.xml", b"note.xml"], [os.fsencode(p) for p in ROOT.glob("samples/*.xml")]]
# Arguments, the status, and what has to be on standard output or, for 2, on standard error.
MANNERS = [
    ("", 2, "^eqlint: no FILE"), ("--format xml clean.xml", 2, "^eqlint: --format"), ("--nonsense clean.xml", 2, "nonsense"),
    ("--only EQ999 clean.xml", 2, "EQ999"), ("--max-per-vector 0 clean.xml", 2, "max-per-vector"),
    ("--list-rules --format sarif", 2, "sarif"), ("--explain EQ701 clean.xml", 2, "FILE"),
    ("--version", 0, r"^eqlint \d+\.\d+\.\d+ \(with"), ("--help", 0, "(?s)--expect.*Examples"), ("--list-rules", 0, "EQ701"),
    ("--list-rules --format json", 0, r'(?s)\A\[.*"EQ701".*\]\n\Z'), ("--explain EQ701", 0, "EQ701"), ("-- -x.xml", 0, "complete"),
    ("faulty.xml", 1, r"(?s)^faulty.xml:19:23: warning: .* \[EQ701\]\n   <COEFF_A1>1  3</COEFF_A1>\n {15}\^.*\n1 warning\. "),
    ("--no-context faulty.xml", 1, r"\A.*\[EQ701\]\n1 warning\. eqconvert would end with status 0; .*complete\n\Z"),
    ("--only EQ705 faulty.xml", 0, "^no findings"), ("--only EQ705,EQ701 faulty.xml", 1, "EQ701"),
    ("--disable EQ701 faulty.xml", 0, "^no findings"), ("--only EQ701 --disable EQ701 faulty.xml", 0, "^no findings"),
    ("--fail-on error faulty.xml", 0, "1 warning"), ("--fail-on never clean.xml other.xml", 0, "1 error"),
    ("--fail-on error clean.xml other.xml", 1, "with status 255; .*incomplete"), ("--fail-on note note.xml", 1, "1 note"),
    ("note.xml", 0, "EQ705"), ("--fail-on never missing.xml", 0, r"would abort \(status 134\)"), ("--color=always faulty.xml", 1, "\x1b"),
    ("--expect bands.json clean.xml", 1, "EQ812"), ("--expect key.json clean.xml", 2, "^eqlint: key.json: /bandz: "),
    ("--expect type.json clean.xml", 2, "type.json: /bands/1: "), ("--expect pixels.json clean.xml", 2, "/pixels/four: "),
    ("--expect broken.json clean.xml", 2, "line 1"), ("--expect missing.json clean.xml", 2, "No such file"),
    ("-o taken faulty.xml", 2, "taken"), ("-o none/out faulty.xml", 2, "No such file"), ("-o /dev/full faulty.xml", 2, "/dev/full: No space"),
    ("-o new faulty.xml", 1, "^$"), ("-o - faulty.xml", 1, "EQ701"), ("-o taken --overwrite faulty.xml", 1, "^$"),
]


def run(*args, **how):
    done = subprocess.run([EQLINT, *args], **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "timeout": 300, **how})
    return done.returncode, done.stdout, done.stderr


def check_set(paths, schemas):
    options = ["--max-per-vector", "50000", "--fail-on", "note"]
    text, report, sarif = (run(*options, "--format", form, *paths) for form in ("text", "json", "sarif"))
    report, sarif, lines = json.loads(report[1]), json.loads(sarif[1]), text[1].decode().splitlines()
    assert not re.search("[\0-\x09\x0b-\x1f\x7f-\x9f\u202e]", text[1].decode()), text
    for value, schema in ((report, schemas[0]), (sarif, schemas[1])):
        schema.validate(value)
    (sarif,), findings = sarif["runs"], report["findings"]
    results, counts = sarif["results"], report["counts"]
    assert text[0] == sarif["invocations"][0]["exitCode"] == (sum(counts.values()) > 0), counts
    for severity in ("error", "warning", "note"):
        assert counts[severity + "s"] == sum(f.get("count", 1) for f in findings if f["severity"] == severity)
    assert sum(bool(re.search(r" \[EQ\d{3}\]$", line)) for line in lines) == len(findings)
    worst = sorted(findings, key=lambda f: ("error", "warning", "note").index(f["severity"]))[:5000]
    assert [r["ruleId"] for r in results] == [f["id"] for f in worst]
    assert (len(findings) > 5000) == ("toolExecutionNotifications" in sarif["invocations"][0])
    for result, finding in zip(results, worst):
        place = result["locations"][0]["physicalLocation"]
        path = urllib.parse.unquote_to_bytes(place["artifactLocation"]["uri"].removeprefix("file://"))
        assert path in paths and finding["path"] == path.decode(errors="replace"), path
        assert place["region"]["startColumn"] == finding["column"] and finding["message"] in result["message"]["text"]
        assert sarif["tool"]["driver"]["rules"][result["ruleIndex"]]["id"] == finding["id"]
    return len(findings), [r["partialFingerprints"] for r in results]


def check_manners():
    for args, status, pattern in MANNERS:
        got = run(*args.split())
        assert got[0] == status and re.search(pattern, got[2 if status == 2 else 1].decode(), re.M), (args, got)
        assert (got[1] == b"") if status == 2 else (got[2] == b""), (args, got)
        assert args.startswith("-o taken --over") or pathlib.Path("taken").read_bytes() == b"mine"
    assert b"EQ701" in pathlib.Path("new").read_bytes() == pathlib.Path("taken").read_bytes()
    for form in ("text", "json", "sarif"):
        full = run("--format", form, "many.xml", stdout=open("/dev/full", "wb"))
        assert full[0] == 2 and full[2] == b"eqlint: cannot write the output: No space left on device\n", full
        for restores, status in ((True, -signal.SIGPIPE), (False, 2)):
            reader, writer = os.pipe()
            os.close(reader)
            gone = run("--format", form, "many.xml", stdout=writer, restore_signals=restores)
            assert gone == (status, None, b""), gone
    closed = subprocess.run(["/bin/sh", "-c", 'exec "$0" "$@" >&-', EQLINT, "many.xml"], stderr=subprocess.PIPE)
    assert closed.returncode == 2 and closed.stderr.startswith(b"eqlint: "), closed
    for environment, is_coloured in (({}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)):
        terminal, end = pty.openpty()
        run("faulty.xml", stdout=end, env={"TERM": "xterm", **environment})
        assert (b"\x1b[" in os.read(terminal, 4096)) == is_coloured, environment


# What the README shows is what comes out.
def check_readme():
    shown = (ROOT / "README.md").read_text().partition("    $ eqlint EQ_B4.xml EQ_B5.xml\n")[2].partition("\n\n")[0]
    pathlib.Path("EQ_B4.xml").write_bytes(SAMPLE)
    pathlib.Path("EQ_B5.xml").write_bytes(
        FAULTY.replace(b"<BAND_ID>4", b"<BAND_ID>5").replace(b">0.5<", b">0,5<"))
    output = run("EQ_B4.xml", "EQ_B5.xml")[1].decode()
    assert "".join("    " + line for line in output.splitlines(True)) == shown + "\n", output
    os.remove("EQ_B4.xml")
    os.remove("EQ_B5.xml")


schemas = [jsonschema.validators.validator_for(schema)(schema) for schema in map(json.loads, (
    (ROOT / "docs/eqlint-1.schema.json").read_text(), (HERE / "sarif-2.1.0.schema.json").read_text()))]
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for name, text in {**FILES, b"taken": b"mine"}.items():
        pathlib.Path(os.fsdecode(name)).write_bytes(text)
    found = [check_set(paths, schemas)[0] for paths in SETS + [[os.fsencode(folder) + b"/" + HOSTILE]]]
    assert min(found[1:6] + found[7:8]) > 0 and max(found) > 5_000, found
    assert check_set([b"faulty.xml"], schemas)[1] == check_set([b"moved.xml"], schemas)[1] != []
    check_manners()
    check_readme()
    assert {os.fsencode(name) for name in os.listdir()} == {*FILES, b"taken", b"new"}, "something is left behind"
print(found, "findings")

#!/usr/bin/env python3
"""Holds the data of plots against a model of what has to be left of a record, and pictures against hostile
names, surroundings and gnuplots. usage: check_plot.py EQRECORD"""
import math, os, pathlib, pty, random, re, struct, subprocess, sys, tempfile, time, xml.etree.ElementTree

EQRECORD = os.path.abspath(sys.argv[1])
ROOT = pathlib.Path(__file__).resolve().parents[2]
KINDS = ["COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D"]
NAN, INF = math.nan, math.inf
HOSTILE = "a'b\"`touch no1`@x$(touch no2)%d\\&<b>]]>{x}^2_#\n\";system('touch no3')#\u4e2d\u202e\uffff".encode() + b"\xff"
SVG = "{http://www.w3.org/2000/svg}"


# Files are (band, name, [(label, P, values by kind and detector)]).
def record_of(*files):
    out = b"ZEDA14VORN/_EQ_TABLE2015-06-23T10:00:002015-07-01T00:00:002030-12-31T23:59:59" + b"%2d\7\0" % len(files)
    for band, name, configurations in files:
        out += bytes([band]) + b"%02d" % len(name) + name + bytes([len(configurations)])
        for label, pixels, values in configurations:
            out += b"%02d" % len(label) + label + struct.pack("<dh", 0.5, pixels)
            for place in ((kind, detector) for kind in range(4) for detector in range(12)):
                out += struct.pack(f"<{pixels}d", *(values.get(place, []) + [NAN] * pixels)[:pixels])
    return out


def values_of(rng, pixels):
    special = [NAN] * 3 + [INF, -INF]
    return {(kind, detector): [rng.choice(special) if rng.random() < detector / 40 else round(rng.gauss(0, 10.0 ** rng.choice([0, kind])), 1)
                               for _ in range(pixels)] for kind in range(4) for detector in range(12) if detector != 3}


def run(*arguments, **how):
    done = subprocess.run([EQRECORD, "plot", *arguments], capture_output=True, timeout=300, **how)
    return done.returncode, done.stdout, done.stderr


# The panels of a script, each with its data blocks as lists of lines.
def panels_of(script):
    for panel in script.split("\n# COEFF_")[1:]:
        yield {name: lines.split("\n")[:-1] for name, lines in re.findall(r"^\$(\w+) << END\n(.*?)END$", panel, re.M | re.S)}


# What has to be in the data of a panel: runs of points without anything missing between them, and the rest.
def wanted_of(vectors, first):
    runs, missing, infinite = [], [], [[], []]
    pixels, share = len(vectors[0]), 1200 // len(vectors)
    columns = share if pixels > 2 * share else pixels
    for slot, vector in enumerate(vectors):
        last = None
        for column in range(columns):
            part = range(column * pixels // columns, (column + 1) * pixels // columns)
            finite = [i for i in part if math.isfinite(vector[i])]
            x = slot * pixels + first
            for i in sorted({min(finite, key=vector.__getitem__), max(finite, key=vector.__getitem__)} if finite else ()):
                if last is None or not all(map(math.isfinite, vector[last:i])):
                    runs.append((slot % 2, []))
                runs[-1][1].append((x + i, vector[i]))
                last = i
            missing += [(x + part[0] - 0.5, x + part[-1] + 0.5)] if any(math.isnan(vector[i]) for i in part) else []
            for sign, value in enumerate((-INF, INF)):
                infinite[sign] += [x + (part[0] + part[-1]) // 2] if any(vector[i] == value for i in part) else []
    return runs, missing, infinite


def check_data(rng, pixels, detectors, first=1, last=None):
    values = values_of(rng, pixels)
    pathlib.Path("r").write_bytes(record_of((4, b"f", [(b"A", pixels, values)])))
    last = last or pixels
    chosen = ["--detector", ",".join(map(str, detectors)), "--pixel", f"{first}-{last}"]
    status, script, errors = run("--format", "gnuplot", "-o", "-", *chosen, "r")
    assert status == 0 and not errors, errors
    panels = list(panels_of(script.decode()))
    assert len(panels) == 4
    for kind, panel in enumerate(panels):
        vectors = [values.get((kind, detector - 1), [NAN] * pixels)[first - 1:last] for detector in detectors]
        runs, missing, infinite = wanted_of(vectors, first)
        count = sum(map(len, vectors))
        for parity in (0, 1):
            found = [[tuple(map(float, line.split())) for line in lines.split("\n") if line]
                     for lines in "\n".join(panel.get(f"line{parity + 1}", [])).split("\n\n")]
            mine = [points for side, points in runs if side == parity]
            assert [points for points in found if points] == [points for points in mine if len(points) > 1], (kind, parity)
            dots = [tuple(map(float, line.split())) for line in panel.get(f"dots{parity + 1}", [])]
            assert dots in ([p[0] for p in mine if len(p) == 1], sum(mine, [])) and (count > 12 or dots == sum(mine, [])), dots
            assert panel.get(("low", "high")[parity], []) == [str(x) for x in infinite[parity]]
        spans = [tuple(map(float, line.split())) for line in panel.get("missing", [])]
        slots = {(first + i * len(vectors[0])) - 0.5 for i in range(len(vectors))}
        merged = []
        for start, end in missing:
            if merged and merged[-1][1] == start and start not in slots:
                start = merged.pop()[0]
            merged.append((start, end))
        assert spans == merged, (kind, spans, merged)


# Values on which gnuplot itself fails: they have to spread over their panel, and nobody complains.
def check_extremes():
    shapes = [lambda i: (-1) ** i * 1.7e308, lambda i: i * 5e-324, lambda i: 1 + i * 2.0 ** -45, lambda i: 1e300 if i % 2 else 1e-300]
    values = {(kind, detector): [shape(i) for i in range(60)] for kind, shape in enumerate(shapes) for detector in range(12)}
    pathlib.Path("r").write_bytes(record_of((4, b"f", [(b"A", 60, values)])))
    status, picture, errors = run("--format", "svg", "r")
    assert status == 0 and not errors, errors
    heights = []
    for path in xml.etree.ElementTree.fromstring(picture).iter(SVG + "path"):
        ys = [float(y) for y in re.findall(r",([\d.]+)", path.get("d"))]
        heights += [max(ys) - min(ys)] if len(ys) > 300 else []
    assert len(heights) == 8 and min(heights) > 100, heights
    for pixels, constant in ((0, 0), (1, 1.5), (300, NAN), (300, 0.0), (300, -1e-320)):
        pathlib.Path("r").write_bytes(record_of((4, b"f", [(b"A", pixels, {(0, 0): [constant] * pixels})])))
        status, picture, errors = run("--format", "svg", "--outliers", "r")
        text = [element.text for element in xml.etree.ElementTree.fromstring(picture).iter(SVG + "text")]
        assert status == 0 and not errors and text.count("no values") == 4 - (pixels > 0 and constant == constant), (errors, text)


# The same bytes in every surrounding, and of every kind.
def check_bytes():
    pathlib.Path(".gnuplot").write_text("system 'touch no4'\nset label 'no' at 0,0\n")
    pathlib.Path("r").write_bytes(record_of((4, b"f", [(b"A", 99, values_of(random.Random(1), 99))])))
    other = {"PATH": os.environ["PATH"], "HOME": os.getcwd(), "GNUPLOT_LIB": ".", "GNUTERM": "dumb", "LC_ALL": "de_DE.UTF-8",
             "TZ": "Asia/Tokyo", "COLUMNS": "200", "GNUPLOT_DEFAULT_GDFONT": "mono", "XDG_CONFIG_HOME": "."}
    magics = {"svg": b"<?xml", "png": b"\x89PNG\r\n", "pdf": b"%PDF-", "text": b"f, band 4", "gnuplot": b"# A plot"}
    made = {form: run("--format", form, "--outliers", "r") for form in magics}
    time.sleep(1.1)
    for form, magic in magics.items():
        status, picture, errors = made[form]
        assert status == 0 and not errors and picture.startswith(magic), (form, made)
        assert run("-o", "x." + {"text": "txt"}.get(form, form), "--outliers", "r", env=other) == (0, b"", b"")
        assert pathlib.Path("x." + {"text": "txt"}.get(form, form)).read_bytes() == picture, form
    svg = subprocess.run(["gnuplot", "-d", "-"], input=made["gnuplot"][1], capture_output=True).stdout
    assert svg == made["svg"][1]


def check_hostile():
    path = b"';touch no5;`touch no6`\".record"
    pathlib.Path(os.fsdecode(path)).write_bytes(record_of((4, HOSTILE, [(b"\x1b[31m]]>`touch no7`=64!1", 9, values_of(random.Random(2), 9))])))
    status, picture, errors = run("--format", "svg", path)
    texts = [element.text for element in xml.etree.ElementTree.fromstring(picture).iter(SVG + "text")]
    # Of what is longer than 59 cells the middle is left out.
    shown = ["a'b\"`touch no1`@x$(touch no2)%d\\&<b>]]…)#\u4e2d\\u202e\\uffff\\xff, band 4, configuration \\x1b[31m]]\\x3e`touch no7`=64!1",
             "';touch no5;`touch no6`\".record, created 2015-06-23T10:00:00, NUC table 7, epsilon 0.5"]
    assert status == 0 and not errors and [text for text in texts if "touch" in text] == shown, texts
    for form in ("png", "pdf", "text", "gnuplot"):
        assert run("--format", form, path)[::2] == (0, b"")
    assert not [name for name in os.listdir() if name.startswith("no")], os.listdir()


# Stubs of gnuplot, and what is told of them; none leaves a file.
STUBS = [("echo 'line 0: no such thing' >&2; exit 3", "gnuplot failed: line 0: no such thing"), ("kill -9 $$", "ended by signal 9"),
         ("exit 0", "has drawn nothing"), ("yes x | head -c 1000000 >&2; head -c 1000000 /dev/zero; exit 1", "gnuplot failed: x"),
         ("exec <&-; exit 1", "gnuplot failed"), (None, "plots need gnuplot (package gnuplot-nox)")]


def check_failures():
    os.mkdir("bin")
    for text, message in STUBS:
        pathlib.Path("bin/gnuplot").write_text(f"#!/bin/sh\nPATH=/usr/bin:/bin\n{text}\n")
        os.chmod("bin/gnuplot", 0o755)
        # A folder that isn't absolute is no place to run anything from.
        folder = os.path.abspath("bin") if text else "bin:"
        assert_told(run("-o", "failed.svg", "r", env={"PATH": folder}), 2, message)
        assert not [name for name in os.listdir() if "failed" in name or name.startswith(".part")]


def assert_told(result, status, message):
    assert result[0] == status and re.search(message if "|" in message else re.escape(message), (result[2] or result[1]).decode()), \
        (result, message)


MANNERS = [
    ("", 2, "no RECORD"), ("-o x.what r", 2, "--format"), ("--format jpeg r", 2, "--format"), ("-o x.svg r", 2, "--overwrite"),
    ("-o /dev/full --format svg r", 2, "No space left"), ("-o /dev/full --format text r", 2, "No space left"),
    ("-o none/x.svg r", 2, "No such file"), ("--pixel 10-20 r", 2, "9 is the last"), ("--band 9 r", 2, "no configuration"),
    ("missing", 2, "No such file"), ("--against - -", 2, "standard input"), ("--against missing r", 2, "No such file"),
    ("-o x.svg --overwrite r", 0, ""), ("-o new.png many", 2, "\n  --band 4 --configuration 'it'\\''s'\n  --band 5 --configuration A\n"),
    ("-o new.png --configuration A many", 2, "2 configurations"), ("-o new.png --band 5 many", 0, ""),
    ("-o two.pdf many", 0, ""), ("--against r --band 5 many", 2, "no counterpart of f, band 5, configuration A"),
    ("--against r -o three.pdf many", 1, "counterpart of f, band 5"), ("--against many r", 0, "Differences: r minus many"),
    ("--against ./r r", 0, "Differences: r minus ./r\n"),
    ("--kind A1 --against r r", 0, "COEFF_A1: 0, no value: 9"), ("--kind D --against r less", 0, "COEFF_D: -7 to 0, no value: 78"),
    ("--kind D --against less r", 0, "COEFF_D: 0 to 7, no value: 102"), ("--detector 1 --kind D r", 0, "COEFF_D: 7 to 8, infinite: 1"),
    ("--kind A1 r", 0, "COEFF_A1: 1 to 1.000000000000001, no value: 9"), ("cut", 2, "--partial"), ("--partial cut", 0, "COEFF_D"),
]


def check_manners():
    pathlib.Path("x.svg").write_text("taken")
    values = {(kind, detector): [kind + 1.0] * 9 for kind in range(3) for detector in range(11)}
    values |= {(0, 1): [1 + 5 * 2.0 ** -52] * 9, (3, 0): [7.0] * 5 + [INF] + [8.0] * 3}
    one, two = (4, b"f", [(b"it's", 9, values)]), (5, b"f", [(b"A", 9, values)])
    pathlib.Path("r").write_bytes(record_of(one))
    pathlib.Path("less").write_bytes(record_of((4, b"g", [(b"it's", 7, {(3, 0): [0.0] * 5 + [INF]})])))
    pathlib.Path("many").write_bytes(record_of((4, b"f", [*two[2], *one[2]]), two))
    pathlib.Path("cut").write_bytes(record_of((4, b"f", one[2] * 2))[:-100])
    for arguments, status, message in MANNERS:
        assert_told(run(*arguments.split(), stdin=subprocess.DEVNULL), status, message)
    assert len(re.findall(rb"/Type /Page\b", pathlib.Path("two.pdf").read_bytes())) == 3
    assert not pathlib.Path("new.svg").exists()
    terminal, side = pty.openpty()
    assert subprocess.run([EQRECORD, "plot", "--format", "svg", "r"], stdout=side, stderr=subprocess.DEVNULL).returncode == 2
    subprocess.run([EQRECORD, "plot", "--kind", "A1", "r"], stdout=side, env={"COLUMNS": "120"}, check=True)
    os.close(side)
    assert 100 < len(os.read(terminal, 100_000).decode().splitlines()[6]) <= 120


# Pictures for terminals, as they have been looked at.
def check_text():
    status, text, _ = run(ROOT / "samples/EQ_B4.record")
    rng = random.Random(3)
    wave = [math.sin(i / 20) * 3 + rng.random() for i in range(240)]
    vectors = {(0, 0): wave, (0, 1): [x + (i == 77) * 9 for i, x in enumerate(wave)], (0, 2): wave[:99] + [NAN] * 50 + wave[99:190],
               (0, 3): [INF, -INF] + wave[2:], (2, 4): [1e300, -1e300]}
    pathlib.Path("wave").write_bytes(record_of((1, b"wave", [(b"ALL", 240, vectors)])))
    more = run("--outliers", "--kind", "A1,A2,ZS", "--detector", "1-5", "wave")
    assert status == more[0] == 0
    expected = pathlib.Path(ROOT / "tests/data/plots.txt")
    if "REWRITE_SCRIPTS" in os.environ:
        expected.write_bytes(text + b"\n" + more[1])
    assert text + b"\n" + more[1] == expected.read_bytes(), (text + more[1]).decode()


def main():
    rng = random.Random(5)
    for pixels, detectors in ((1, [1]), (3, range(1, 13)), (200, range(1, 13)), (201, range(1, 13)), (2401, [5, 9]), (2592, [1, 2, 7])):
        check_data(rng, pixels, detectors)
    check_data(rng, 3000, [2], 301, 2900)
    check_extremes()
    check_bytes()
    check_hostile()
    check_failures()
    check_text()
    os.remove("r")
    check_manners()


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()

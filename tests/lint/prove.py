#!/usr/bin/env python3
# Shows on generated sets of files that eqlint can't disagree with eqconvert:
#   prove.py EQCONVERT EQLINT [--seed N] [--cases N] [--keep DIR]
# What it foretells is what happens; where it finds nothing, a strict reader of the files comes to the same
# record; where it warns, that one doesn't; where there are only notes, a lenient one does. Half of the sets
# are those of the comparison with the model, mostly damaged; the others are plain but for a few changes.
# Prints what disagreed, smallest input first, keeps the input in DIR, and ends with 1 if there was any.
import argparse, collections, functools, json, multiprocessing, os, random, re, shutil, subprocess, sys, tempfile
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "../model"))
import cases, strict_reader

SHOWN = 5  # disagreements that are printed
RAREST = 0.15  # share of the nearly plain sets that each class of findings must have at least
FORMS = ("{:.4g}", "{:.2f}", "{:.3e}", "{:.0f}")  # of coefficients
with open(os.path.join(HERE, "../data/lint_sets.txt"), encoding="utf-8") as table:
    SECTIONS = dict(part.split("\n", 1) for part in table.read().split("\n== ")[1:])
# Slips in vectors by their rules, as a pattern and what takes its place, and how they are mended.
SLIPS = {"EQ701": (r"(?<=\d) (?=[-\d])", "  ", lambda piece: ""), "EQ705": (r"(?=</)", " ", lambda piece: ""),
         "EQ702": (r"(?<=\d)\.(?=\d)", ",", lambda piece: piece.replace(",", "."))}


# A plain file, each element on a line of its own.
def plain_text(rng, band, labels, detectors, pixels):
    def part(name, **fields):
        return SECTIONS[name].format(**fields) + "\n"

    def vector():
        return " ".join(rng.choice(FORMS).format(rng.uniform(-9, 9)) for _ in range(pixels))

    return part("file", band=band, epsilon=rng.choice(("0.5", "1e-3")), configurations="".join(
        part("configuration", label=label, detectors="".join(
            part("detector", number=number, pixels=pixels, vectors=[vector() for _ in range(4)])
            for number in detectors)) for label in labels))


# The text after one change from a section of the table, at one of the places that it fits.
def changed(rng, text, section):
    pattern, _, replacement = rng.choice(SECTIONS[section].splitlines()).partition(" =>")
    place = rng.choice(list(re.finditer(pattern, text)) or [None])
    return text if place is None else text[:place.start()] + place.expand(replacement[1:]) + text[place.end():]


# (files, arguments) of a set that is plain but for up to two changes.
def nearly_plain(seed, index):
    rng = random.Random(f"near:{seed}:{index}")
    severity = rng.choice(("plain", "harmless", "lossy"))
    bands, files = rng.sample(range(13), rng.choice((1, 1, 2, 3))), {}
    shape = rng.sample(("A", "ALL", "TDI"), rng.choice((0, 1, 1, 2))), rng.sample(range(1, 13), rng.randint(1, 3))
    texts = [plain_text(rng, band, *shape, 2 + index % 3) for band in bands]
    for section in rng.choices((severity, "plain"), (3, 1), k=rng.randint(0 if severity == "plain" else 1, 2)):
        at = rng.randrange(len(texts))
        texts[at] = changed(rng, texts[at], section)
    for band, text in zip(bands, texts):
        rows = SECTIONS[(severity if rng.random() < 0.1 else "plain") + "_encodings"].splitlines()
        declared, codec, *mark = rng.choice(rows).split(" ")
        text = text.replace('encoding="UTF-8"', f'encoding="{declared}"')
        name = rng.choice(cases.FILE_NAMES) if severity != "plain" and rng.random() < 0.1 else b"EQ_B%d.xml" % band
        files[name] = bytes.fromhex("".join(mark)) + text.encode(codec, "replace")
    arguments = list(files)
    if severity == "lossy" and rng.random() < 0.1:
        arguments.insert(rng.randint(0, 2), rng.choice((arguments[0], b"missing.xml", b".")))
    return files, arguments


def run(program, *arguments):
    done = subprocess.run([program, *arguments], capture_output=True, timeout=60)
    return done.returncode, done.stdout, done.stderr


def lint(eqlint, arguments):
    return json.loads(run(eqlint, "--format", "json", "--max-per-vector", "1000", "--", *arguments)[1])


# Whether the record is what somebody reads who knows nothing of the converter.
def is_read(arguments, record, lenient):
    try:
        return strict_reader.read(arguments, lenient) == record
    except strict_reader.Refused:
        return False


# (class of the findings, what disagrees) of the set in the current folder.
def judge(arguments, eqconvert, eqlint):
    def shown(messages):  # invalid UTF-8 has no one form in JSON
        return re.sub("\uFFFD+", "?", messages).rstrip("\n")

    status, record, messages = run(eqconvert, *arguments)
    messages = messages.decode(errors="replace")
    report = lint(eqlint, arguments)
    foretold, ids = report["conversion"], sorted({finding["id"] for finding in report["findings"]})
    worst = {finding["severity"] for finding in report["findings"]}
    kind = next((severity for severity in ("error", "warning", "note") if severity in worst), "silent")
    strict, lenient = (status == 0 and is_read(arguments, record, lenient) for lenient in (False, True))
    return kind, [text for text, fails in (
        (f"status {status} foretold as {foretold['status']}", foretold["status"] != (134 if status == -6 else status)),
        (f"{len(record)} bytes foretold as {foretold['record_bytes']}", foretold["record_bytes"] != len(record)),
        (f"messages {messages!r} foretold as {foretold['messages']}",
         shown("\n".join(foretold["messages"])) != shown(messages)),
        ("no finding, but a strict reader reads something else", kind == "silent" and not strict),
        (f"{ids}, but a strict reader reads the same", kind in ("error", "warning") and strict),
        (f"only notes {ids}, but a lenient reader reads something else", kind == "note" and not lenient)) if fails]


# The same for a plain file with slips in its vectors: mended where and how the findings say, it is as before.
def judge_mended(rng, eqconvert, eqlint):
    text = plain_text(rng, 4, ["A"], [1, 2], rng.randint(2, 6))
    lines, slips = text.splitlines(), []
    for at in rng.sample([at for at, line in enumerate(lines) if line.startswith("<COEFF_")], 2):
        rule = rng.choice(list(SLIPS))
        lines[at], count = re.subn(*SLIPS[rule][:2], lines[at], rng.randint(1, 3))
        slips += [(rule, at + 1)] * count
    cases.write_case({b"a.xml": "\n".join(lines).encode()}, ".")
    findings = [finding for finding in lint(eqlint, ["a.xml"])["findings"] if finding["id"] in SLIPS]
    for finding in sorted(findings, key=lambda finding: -finding["column"]):
        at, begin, end = finding["line"] - 1, finding["column"] - 1, finding["end_column"] - 1
        lines[at] = lines[at][:begin] + SLIPS[finding["id"]][2](lines[at][begin:end]) + lines[at][end:]
    cases.write_case({b"mended.xml": "\n".join(lines).encode(), b"meant_.xml": text.encode()}, ".")
    found = sorted((finding["id"], finding["line"]) for finding in findings)
    mended, meant = (run(eqconvert, name)[1].replace(name.encode(), b"") for name in ("mended.xml", "meant_.xml"))
    return "slips", [text for text, fails in (
        (f"slips {sorted(slips)} found as {found}", sorted(slips) != found),
        ("the mended file has findings", lint(eqlint, ["mended.xml"])["findings"]),
        ("the mended file has other values", mended != meant)) if fails]


# (size of the input, where it is kept, what disagrees, kind of the case, class of its findings).
def prove(case, options):
    name, index = case
    folder, arguments = os.path.join(options.keep, f"{name}-{options.seed}-{index}"), []
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    os.chdir(folder)
    if name == "mend":
        kind, texts = judge_mended(random.Random(f"{options.seed}:{index}"), options.eqconvert, options.eqlint)
    else:
        files, arguments = (nearly_plain if name == "near" else cases.make_case)(options.seed, index)
        cases.write_case(files, folder)
        kind, texts = judge(arguments, options.eqconvert, options.eqlint)
    size = sum(entry.stat().st_size for entry in os.scandir(folder) if entry.is_file())
    if not texts:
        shutil.rmtree(folder)
    return size, f"{folder} {arguments}", texts, name, kind


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("eqconvert", type=os.path.abspath)
    parser.add_argument("eqlint", type=os.path.abspath)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=600, help="of each kind; a tenth of that is mended")
    parser.add_argument("--keep", type=os.path.abspath, default=tempfile.gettempdir() + "/eqlint-proof")
    options = parser.parse_args()
    jobs = [(name, index) for name in ("near", "model") for index in range(1, options.cases + 1)]
    jobs += [("mend", index) for index in range(options.cases // 10)]
    with multiprocessing.Pool(2) as pool:
        results = pool.map(functools.partial(prove, options=options), jobs, chunksize=20)
    failed = sorted(result for result in results if result[2])
    for size, where, texts, _, kind in failed[:SHOWN]:
        print(f"{where}, {size} bytes, {kind}:", *texts, sep="\n  ")
    counts = collections.Counter(result[3:] for result in results)
    print(f"{len(results)} cases, {len(failed)} disagree;", {" ".join(key): counts[key] for key in sorted(counts)})
    loud = counts["near", "error"] + counts["near", "warning"]
    isRare = min(counts["near", "silent"], counts["near", "note"], loud) < RAREST * options.cases
    print("too few sets of a class to prove anything" if isRare else "")
    return 1 if failed or isRare else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Loads every .xml file of a folder tree and compares what navigation finds with what expat finds.

usage: compare_trees.py TREE_DUMP FOLDER [EXPECTED]
"""
# TREE_DUMP, best built with sanitizers, loads one file in a process of its own. Of the files that
# it accepts, those without a document type are compared with what Python's expat reports: the
# element tree, the attributes, the text between any two tags as FindNode gives it, and the text of
# elements without children as GetData gives it. (A document type may define entities and default
# attributes, which the document class leaves alone.) The report has a table, the reasons of the
# differences, and each difference.
#
# The exit status is 1 after a sanitizer's report, a crash or a timeout, and when a file differs, or
# is not accepted although expat accepts it, without a known reason. With EXPECTED it tells instead
# whether the report is the text of that file.
import collections
import concurrent.futures
import itertools
import os
import pathlib
import re
import subprocess
import sys
import xml.parsers.expat as expat

ACCEPTED, NOT_ACCEPTED = 0, 2
TIMEOUT = 60
DECLARED = re.compile(rb"<\?xml\s[^>]*?\bencoding\s*=\s*[\"']([\w.:-]+)")
VERSION_1_1 = re.compile(rb"<\?xml\s+version\s*=\s*.1\.1")
OWN_ENCODINGS = ("utf-8", "utf-16", "iso-8859-1", "us-ascii")  # which expat reads by itself
LONG_REFERENCE = re.compile(r"&#(?=[^;]{9})(?:x([0-9a-fA-F]{1,99})|([0-9]{1,99}));")

# What the document class does on purpose: the items concerned, and a rule that makes both alike. To
# it a run of white space is one, since what was written is not told from what was referred to.
KNOWN_REASONS = {
    "white space in an attribute is kept": ("@", lambda item: re.sub(r"[ \t\r\n]+", " ", item)),
    "line ends are kept": ("~#", lambda item: re.sub(r"[\r\n]+", "\n", item)),
    "a reference of more than 9 characters is none": ("@~#", lambda item: LONG_REFERENCE.sub(
        lambda found: chr(min(int(found[1] or found[2], 16 if found[1] else 10), 0x10FFFF)), item)),
}
WHITE_PIECES = "white space beside comments or sections in a leaf is dropped"
CONVERSION = "the C library and Python convert the encoding differently"
UNMARKED_UTF16 = "UTF-16 without a byte-order mark is read as bytes"
UNKNOWN = "NOT EXPLAINED"


def foreign_encoding(data):
    """The declared encoding when Python has to convert it for expat, else None."""
    declared = DECLARED.match(data)
    name = declared[1].decode().lower() if declared else OWN_ENCODINGS[0]
    return None if name in OWN_ENCODINGS else name


def reference(data):
    """Returns what expat makes of a file, as items of tree_dump, or None and why it refuses it."""
    items, is_leaf, foreign = [], [], foreign_encoding(data)

    def begin(name, attributes):
        is_leaf[-1:] = [False, True] if is_leaf else [True]
        items.append("<" + name)
        items.extend(map("@{}={}".format, attributes[::2], attributes[1::2]))

    def text(piece):
        items[-1:] = [items[-1] + piece] if items[-1][0] == "~" else [items[-1], "~" + piece]

    def end(_):
        if is_leaf.pop():
            items.append("#" + (items[-1][1:] if items[-1][0] == "~" else ""))
        items.append(">")

    try:
        parser = expat.ParserCreate("utf-8" if foreign else None)
        parser.ordered_attributes = True
        parser.StartElementHandler, parser.EndElementHandler = begin, end
        parser.CharacterDataHandler = text
        parser.Parse(data.decode(foreign).encode() if foreign else data, True)
        return items, None
    except expat.ExpatError as error:
        version = "XML 1.1, " if VERSION_1_1.match(data) else ""
        return None, f"{version}not well-formed for expat: {expat.ErrorString(error.code)}"
    except (LookupError, ValueError):
        return None, "not of the encoding that it declares, or of one that is not known here"


def merged(items):
    """Joins the pieces of text between two tags: a comment ends a piece, but no text."""
    result = []
    for item in items:
        if item[0] not in "~_":
            result.append(item)
        elif result[-1][0] == "~":
            result[-1] += item[1:]
        elif len(item) > 1:
            result.append("~" + item[1:])
    return result


def solid_data(items):
    """For each leaf in order, what its data is without its pieces of white space."""
    data = ""
    for item in items:
        if item[0] == "<":
            data = "#"
        elif item[0] == "~":
            data += item[1:]
        elif item[0] == "#":
            yield data


def reasons_of(ours, theirs, solid, foreign):
    """Why two items differ: the rules that it takes, all of them, to make them alike."""
    rules = {reason: rule for reason, (kinds, rule) in KNOWN_REASONS.items() if ours[:1] in kinds}
    if foreign:
        rules[CONVERSION] = lambda item: re.sub(r"[^\0-\x7f]+", "?", item)

    def alike(chosen):
        one, other = ours, theirs
        for reason in chosen:
            one, other = rules[reason](one), rules[reason](other)
        return one == other

    if alike(rules):
        return [reason for reason in rules if not alike(rules.keys() - {reason})] or list(rules)
    dropped_white = ours == solid and "".join(ours.split()) == "".join(theirs.split())
    return [WHITE_PIECES] if dropped_white else []


def differences(items, theirs, foreign, otherwise):
    """Yields (reason, text) for what differs, once for each reason."""
    solid, told = solid_data(items), set()
    for one, other in itertools.zip_longest(merged(items), theirs, fillvalue=" "):
        leaf = next(solid) if one[0] == "#" else None
        if one == other:
            continue
        same_kind = one[0] == other[0]
        known = same_kind and reasons_of(one, other, leaf, foreign)
        for reason in known or [otherwise]:
            if reason not in told:
                told.add(reason)
                yield reason, f"{ascii(one[:60])} is {ascii(other[:60])} for expat"
        if not same_kind:
            return  # from here on nothing stands against its like


def examine(program, path):
    """Returns the class of a file and a list of (reason, text) for what is to be told of it."""
    try:
        run = subprocess.run([program, path], capture_output=True, timeout=TIMEOUT)
    except subprocess.TimeoutExpired:
        return "report", [("no end", f"within {TIMEOUT} s")]
    if run.returncode not in (ACCEPTED, NOT_ACCEPTED):
        errors = run.stderr.decode("utf-8", "replace").splitlines() or [""]
        telling = next((line for line in errors if re.search("ERROR|error:", line)), errors[0])
        return "report", [(f"status {run.returncode}", telling)]
    message, *items = run.stdout.decode("utf-8", "replace").split("\0")[:-1]
    data = path.read_bytes()
    theirs, refusal = reference(data)
    otherwise = UNMARKED_UTF16 if data[:2] in (b"<\0", b"\0<") else UNKNOWN
    if run.returncode == NOT_ACCEPTED:
        return "rejected", [] if refusal else [(otherwise, "expat accepts it: " + message[1:])]
    if "!" in items:
        return "doctype", []
    if refusal:
        return "refused", [(refusal, "")]
    found = list(differences(items, theirs, foreign_encoding(data), otherwise))
    return "differs" if found else "same", found


ROWS = {
    "ended without a sanitizer's report": ("rejected", "doctype", "same", "differs", "refused"),
    "  not accepted": ("rejected",),
    "  accepted, with a document type": ("doctype",),
    "  accepted, without a document type": ("same", "differs", "refused"),
    "    same tree, attributes and text as for expat": ("same",),
    "    something differs": ("differs",),
    "    refused by expat, so nothing to compare": ("refused",),
}


def report(program, folder):
    paths = sorted(path for path in folder.rglob("*.xml") if path.is_file())
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        results = list(pool.map(lambda path: examine(program, path), paths))
    count = collections.Counter(kind for kind, _ in results)
    told = [(path.relative_to(folder), *entry)
            for path, (_, found) in zip(paths, results) for entry in found]
    reasons = collections.Counter(reason for _, reason, _ in told)
    yield f"{'files':50} {len(paths):6}"
    for text, kinds in ROWS.items():
        yield f"{text:50} {sum(count[kind] for kind in kinds):6}"
    yield from ("", "Reasons, and how many files have them:")
    yield from (f"{number:6}  {reason}" for reason, number in sorted(reasons.items()))
    yield from ("", "Differences:")
    yield from (f"{path}: {reason}{text and ': '}{text}" for path, reason, text in told)
    yield f"{len(paths)} files, {count['report']} reports, {reasons[UNKNOWN]} not explained"


def main():
    program, folder, *expected = sys.argv[1:]
    sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
    lines = list(report(program, pathlib.Path(folder)))
    print(*lines, sep="\n", flush=True)
    if expected:
        if lines != pathlib.Path(*expected).read_text(encoding="utf-8").splitlines():
            sys.exit(f"not what {expected[0]} says")
    elif lines[0].endswith(" 0") or not lines[-1].endswith(" 0 reports, 0 not explained"):
        sys.exit(1)


main()

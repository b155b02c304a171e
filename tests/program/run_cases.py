#!/usr/bin/env python3
"""Runs the program on the cases of a script and compares record, messages and exit status.

usage: run_cases.py PROGRAM SCRIPT

A case begins with "== case TITLE"; its other parts also begin with a "==" line:

    == file NAME              the lines up to the next part are the file's text
    == file NAME from BASE    each line "OLD => NEW" is an edit of an earlier file of the script
    == args NAME...           the arguments, separated by spaces
    == stdin                  what standard input, a pipe, holds
    == stdout full|closed|pipe  where the record goes instead of being compared
    == stderr full|closed|pipe  where the messages go instead of being compared
    == status N               the exit status; -6 for an abort; 0 when the part is missing
    == messages               what standard error must hold
    == record                 what standard output must hold, piece by piece: "text WORDS",
                              "hex BYTES", "f64 NUMBERS", "nan COUNT"
"""
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

NAN = bytes.fromhex("000000000000f87f")
PIECES = {
    "text": lambda rest: rest.encode(),
    "hex": bytes.fromhex,
    "f64": lambda rest: b"".join(struct.pack("<d", float(n)) for n in rest.split()),
    "nan": lambda rest: NAN * int(rest),
}


def read_cases(script):
    cases = []
    for part in script.read_text().split("\n== ")[1:]:
        head, _, body = part.rstrip("\n").partition("\n")
        kind, _, rest = head.partition(" ")
        if kind == "case":
            cases.append({"case": rest, "file": {}, "args": "", "status": "0"})
        elif kind == "file":
            cases[-1]["file"][rest] = body + "\n"
        else:
            cases[-1][kind] = rest or body + "\n"
    return cases


def write_files(case, bases):
    for head, body in case["file"].items():
        name, _, base = head.partition(" from ")
        text = bases[base] if base else body
        for edit in body.splitlines() if base else []:
            old, _, new = edit.partition(" => ")
            assert old in text, f"nothing to edit: {edit}"
            text = text.replace(old, new)
        bases[name] = text
        pathlib.Path(name).parent.mkdir(parents=True, exist_ok=True)
        pathlib.Path(name).write_text(text)


# Runs the command with its streams open, full, closed, or a pipe that nobody reads.
def run(program, case):
    streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
    closing, opened = "", []
    for number, (stream, _) in enumerate(list(streams.items()), start=1):
        where = case.get(stream)
        if where == "closed":
            closing += f" {number}>&-"
        elif where == "pipe":
            reader, writer = os.pipe()
            os.close(reader)
            opened.append(writer)
        elif where == "full":
            opened.append(os.open("/dev/full", os.O_WRONLY))
        if where in ("pipe", "full"):
            streams[stream] = opened[-1]
    result = subprocess.run(["/bin/sh", "-c", f'exec "$0" "$@"{closing}', program, *case["args"].split()],
                            input=case.get("stdin", "").encode(), **streams)
    for descriptor in opened:
        os.close(descriptor)
    return result


def failures(program, case):
    result = run(program, case)
    pieces = [line.partition(" ") for line in case.get("record", "").splitlines() if line]
    wanted = {"status": int(case["status"]), "messages": case.get("messages", "").encode(),
              "record": b"".join(PIECES[kind](rest) for kind, _, rest in pieces)}
    got = {"status": result.returncode, "messages": b"" if "stderr" in case else result.stderr,
           "record": b"" if "stdout" in case else result.stdout}
    return [f"{case['case']}: {part} is {got[part]!r}, not {wanted[part]!r}"
            for part in wanted if got[part] != wanted[part]]


def main():
    program, script = (pathlib.Path(path).resolve() for path in sys.argv[1:])
    cases, bases, failed = read_cases(script), {}, 0
    assert cases, "no cases"
    for case in cases:
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            write_files(case, bases)
            found = failures(str(program), case)
            print(*found, sep="\n", end="\n" if found else "")
            failed += bool(found)
            os.chdir("/")
    print(f"{len(cases) - failed} passed, {failed} failed")
    sys.exit(failed != 0)


main()

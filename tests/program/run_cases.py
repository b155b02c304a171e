#!/usr/bin/env python3
# Runs a program on the cases of a script and compares record, messages and exit status:
#   run_cases.py PROGRAM SCRIPT
# A case begins with "== case TITLE"; its other parts also begin with a "==" line:
#
#   == file NAME              the lines up to the next part are the file's text
#   == file NAME from BASE    each line "OLD => NEW" is an edit of an earlier file of the script;
#                             \n, \r, \t and \0 stand for their characters
#   == file NAME ... as ENC   the same, written in another encoding than UTF-8; "bytes" takes each
#                             character for a byte, and knows escapes such as \xff
#   == file NAME size N       so many zero bytes, which take no place on the disk
#   == args NAME...           the arguments, separated by spaces
#   == stdin                  what standard input, a pipe, holds
#   == stdout full|closed|pipe  where the record goes instead of being compared
#   == stderr full|closed|pipe  where the messages go instead of being compared
#   == status N               the exit status; -6 for an abort; 0 when the part is missing
#   == messages               what standard error must hold
#   == record                 what standard output must hold, piece by piece: "text WORDS",
#                             "hex BYTES", "f64 NUMBERS", "nan COUNT"
#   == findings               the lines "PLACE: SEVERITY: MESSAGE [ID]" on standard output, without
#                             their messages, in any order
#   == output                 what standard output must hold, as text
#   == left NAME              what a file must hold in the end, piece by piece as for a record; all
#                             others have to be as they were, and there must be no new ones
import os, pathlib, re, struct, subprocess, sys, tempfile

PIECES = {
    "text": lambda rest: rest.encode(),
    "hex": bytes.fromhex,
    "f64": lambda rest: b"".join(struct.pack("<d", float(n)) for n in rest.split()),
    "nan": lambda rest: bytes.fromhex("000000000000f87f") * int(rest),
}
FINDING = re.compile(r"^(\S+:\d+:\d+: \w+): .* (\[EQ\d+\])$", re.MULTILINE)
ESCAPES = {r"\n": "\n", r"\r": "\r", r"\t": "\t", r"\0": "\0"}


def unescaped(text):
    for escape, character in ESCAPES.items():
        text = text.replace(escape, character)
    return text


def encoded(text, codec):
    if codec == "bytes":
        return text.encode("latin-1").decode("unicode_escape").encode("latin-1")
    return text.encode(codec)


def edited(text, edits):
    for edit in edits.splitlines():
        old, _, new = map(unescaped, edit.partition(" => "))
        assert old in text, f"nothing to edit: {edit}"
        text = text.replace(old, new)
    return text


# The cases, each a dictionary of its parts; "files" has the texts by name.
def read_cases(script):
    cases, bases = [], {}
    for part in script.read_text().split("\n== ")[1:]:
        head, _, body = part.rstrip("\n").partition("\n")
        kind, _, rest = head.partition(" ")
        if kind == "case":
            cases.append({"case": rest, "files": {}, "left": {}, "args": "", "status": "0"})
        elif kind == "file":
            name, *options = rest.split()
            option = dict(zip(options[::2], options[1::2]))
            bases[name] = edited(bases[option["from"]], body) if "from" in option else body + "\n"
            cases[-1]["files"][name] = encoded(bases[name], option.get("as", "utf-8")), option.get("size")
        elif kind == "left":
            cases[-1]["left"][rest] = joined(body)
        else:
            cases[-1][kind] = rest or body + "\n"
    return cases


def joined(pieces):
    parts = [line.partition(" ") for line in pieces.splitlines() if line]
    return b"".join(PIECES[kind](rest) for kind, _, rest in parts)


# What a stream is to the program: a full disk, a pipe that nobody reads, or what is compared.
def opened(where):
    if where == "full":
        return os.open("/dev/full", os.O_WRONLY)
    if where == "pipe":
        reader, writer = os.pipe()
        os.close(reader)
        return writer
    return subprocess.PIPE


def run(program, case):
    closing = "".join(f" {number}>&-" for number, stream in enumerate(("stdout", "stderr"), start=1)
                      if case.get(stream) == "closed")
    return subprocess.run(["/bin/sh", "-c", f'exec "$0" "$@"{closing}', program, *case["args"].split()],
                          input=case.get("stdin", "").encode(), stdout=opened(case.get("stdout")),
                          stderr=opened(case.get("stderr")))


def failures(program, case):
    for name, (content, size) in case["files"].items():
        pathlib.Path(name).parent.mkdir(parents=True, exist_ok=True)
        pathlib.Path(name).write_bytes(b"" if size else content)
        os.truncate(name, int(size or len(content)))
    result = run(program, case)
    wanted = {"status": int(case["status"]), "messages": case.get("messages", "").encode(),
              "record": joined(case.get("record", ""))}
    got = {"status": result.returncode, "messages": b"" if "stderr" in case else result.stderr,
           "record": b"" if {"stdout", "findings", "output"} & case.keys() else result.stdout}
    sparse = {name for name, (_, size) in case["files"].items() if size}
    wanted["left"] = {name: content for name, (content, _) in case["files"].items()} | case["left"]
    got["left"] = {str(path): wanted["left"][str(path)] if str(path) in sparse else path.read_bytes()
                   for path in pathlib.Path().rglob("*") if path.is_file()}
    if "findings" in case:
        wanted["findings"] = sorted(filter(None, case["findings"].split("\n")))
        found = FINDING.findall(result.stdout.decode(errors="replace"))
        got["findings"] = sorted(" ".join(parts) for parts in found)
    if "output" in case:
        wanted["output"], got["output"] = case["output"], result.stdout.decode(errors="replace")
    return [f"{case['case']}: {part} is {got[part]!r}, not {wanted[part]!r}"
            for part in wanted if got[part] != wanted[part]]


def main():
    program, script = (pathlib.Path(path).resolve() for path in sys.argv[1:])
    cases, failed = read_cases(script), 0
    assert cases, "no cases"
    for case in cases:
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            found = failures(str(program), case)
            os.chdir("/")
        print(*found, sep="\n", end="\n" if found else "")
        failed += bool(found)
    print(f"{len(cases) - failed} passed, {failed} failed")
    sys.exit(failed != 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Has eqrecode write what an encoding can hold in each encoding that the document layer names, and read it
back; Python's codecs judge what was written. Then what becomes of a file that is replaced.
usage: check_encodings.py EQRECODE"""
import os, pathlib, re, stat, subprocess, sys, tempfile

EQRECODE = os.path.abspath(sys.argv[1])
TABLE = pathlib.Path(__file__).resolve().parents[2] / "markup/text/EncodingNameTable.cpp"
NAMES = re.findall(r'\{\d+, "(.*?)"\}', TABLE.read_text())
SAMPLE = "Déjà “5 €” Příliš žluťoučký kůň ½ Ελληνικά Широкая Чуєш דג סקרן صِف เป็น いろは 日本 ｶﾅ 다람쥐 天地玄黄 😀 ợ"
TEXT = '<?xml version="1.0" encoding="UTF-8"?>\n<a>%s</a>\n'


def run(*arguments):
    done = subprocess.run([EQRECODE, *arguments], capture_output=True, timeout=60)
    return done.returncode, done.stderr.decode()


# What a codec of Python's gives back, one character by one.
def held(sample, codec):
    def holds(character):
        try:
            return character.encode(codec).decode(codec) == character
        except UnicodeError:
            return False
    return "".join(filter(holds, sample))


def decoded(content, codec):
    try:
        return content.decode(codec)
    except UnicodeError as error:
        return str(error)


def complaints(name):
    try:
        text = TEXT % held(SAMPLE, name)
    except LookupError:
        text = TEXT % "plain"
    pathlib.Path("in").write_text(text)
    status, messages = run("in", "out", name)
    if status != 0:
        if os.path.exists("out") or len(messages.splitlines()) < 2:
            yield f"status {status}, {messages!r}"
        return
    yield "written"
    content = pathlib.Path("out").read_bytes()
    if text != TEXT % "plain" and decoded(content, "utf-16" if content[:2] in (b"\xff\xfe", b"\xfe\xff") else name) \
            != text.replace("UTF-8", name):
        yield f"wrote {content!r}"
    for arguments in ("out", "out"), ("out", "out", "UTF-8"):
        status, messages = run(*arguments)
        if status != 0:
            yield f"{arguments}: status {status}, {messages!r}"
    if pathlib.Path("out").read_text() != text:
        yield "does not come back"
    os.remove("out")


def check_replacing():
    pathlib.Path("file").write_text("<a/>")
    os.chmod("file", 0o640)
    os.symlink("file", "link")
    assert run("link", "link", "UTF-8")[0] == 0
    assert os.path.islink("link") and pathlib.Path("file").read_text() == TEXT.splitlines()[0] + "\n<a/>"
    assert stat.S_IMODE(os.stat("file").st_mode) == 0o640
    os.symlink("nowhere", "dangling")
    os.symlink("/proc/self/fd/1", "stdout")
    for name, line in (("-", 'exec "$0" - file <&-'), ("file", 'ulimit -f 0; exec "$0" file file'),
                       ("file", 'exec "$0" file dangling'), ("file", 'exec > new; rm new; exec "$0" file stdout')):
        done = subprocess.run(["/bin/sh", "-c", line, EQRECODE], capture_output=True, timeout=60)
        assert done.returncode == 2 and done.stderr.startswith(b"eqrecode: %s: " % name.encode()), (line, done)
    assert os.path.islink("dangling") and os.path.islink("stdout") and os.stat("file").st_size != 0
    assert run("--help")[0] == run("--version")[0] == 0 and run("--nonsense", "file", "file")[0] == 2


def main():
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        found = {name: list(complaints(name)) for name in NAMES}
        check_replacing()
        os.chdir("/")
    written = sum(texts[:1] == ["written"] for texts in found.values())
    wrong = [f"{name}: {text}" for name, texts in found.items() for text in texts if text != "written"]
    print(*wrong, f"{written} of {len(NAMES)} encodings written, {len(wrong)} complaints", sep="\n")
    sys.exit(bool(wrong) or written < 200)


main()

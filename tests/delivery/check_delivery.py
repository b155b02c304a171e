#!/usr/bin/env python3
"""Holds what comes with the programs against them: the pages of the manual, the completion, the version.
usage: check_delivery.py BUILD VERSION"""
import pathlib, re, subprocess, sys

BUILD, VERSION = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPLETE = """
source "$1"; shift; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _eqconvert; printf '%s\\n' "${COMPREPLY[@]}"
"""
# What stands on the line, and what its last word can become.
COMPLETIONS = [
    (["eqrecord", ""], "build check diff dump export info plot stats"),
    (["eqrecord", "dump", "--format", ""], "csv json text"),
    (["eqrecord", "dump", "RECORD", "--band", ""], "4"),
    (["eqrecord", "dump", "RECORD", "--configuration", "A"], "ALL"),
    (["eqrecord", "stats", "--kind", "A1,Z"], "A1,ZS"),
    (["eqlint", "--only", "EQ101,EQ10"], "EQ101,EQ101 EQ101,EQ102 EQ101,EQ103 EQ101,EQ104 EQ101,EQ105"),
    (["eqlint", "--color", "a"], "always auto"),
]
MEMBERS_ZSH = """
source <(sed '$d' "$1"); _eqconvert_command=("$2"); words=("$2" info "$3"); CURRENT=4
_eqconvert_members $4; print -l -- $reply
"""
ASK_ZSH = """
source <(sed '$d' "$1"); shift; _eqconvert_specs "$@"; print -l -- $reply
"""


def run(*command):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True)
    assert done.returncode == 0 and not done.stderr, (command, done)
    return done.stdout


def told_by_help(text):
    return set(re.findall(r"^  (-[^ ,]+)", text, re.M))


# The options of a page: what follows Fl, up to the next macro.
def told_by_page(page):
    text = page.read_text()
    return {"-" + name for names in re.findall(r"\bFl ((?:[a-z0-9-]+(?: [|,] )?)+)", text) for name in re.split(" [|,] ", names)}


# A page tells all options of the program and its verbs, completion those of what stands on the line.
def check_program(program, verbs):
    known = set()
    for command in [[program]] + [[program, verb] for verb in verbs]:
        options = told_by_help(run(*command, "--help"))
        known |= options
        completed = run("bash", "-c", COMPLETE, "bash", ROOT / "completion/eqconvert.bash", *command, "--")
        assert set(completed.split()) == {name for name in options if name.startswith("--")}, (command, completed)
        specs = run("zsh", "-fc", ASK_ZSH, "zsh", ROOT / "completion/_eqconvert", *command)
        assert set(re.findall(r"^(-[^[]+)\[", specs, re.M)) == options, (command, specs)
    page = told_by_page(ROOT / f"man/{program.name}.1")
    assert page == known, (program.name, page ^ known)


def check_values():
    record = ROOT / "samples/EQ_B4.record"
    for words, expected in COMPLETIONS:
        line = [BUILD / words[0]] + [record if word == "RECORD" else word for word in words[1:]]
        completed = run("bash", "-c", COMPLETE, "bash", ROOT / "completion/eqconvert.bash", *line)
        assert sorted(completed.split()) == expected.split(), (words, completed)
    for member, expected in (("band", "4"), ("label", "ALL")):
        told = run("zsh", "-fc", MEMBERS_ZSH, "zsh", ROOT / "completion/_eqconvert", BUILD / "eqrecord", record, member)
        assert told.split() == [expected], (member, told)


def main():
    programs = [BUILD / name for name in ("eqlint", "eqrecode", "eqrecord", "eqrecord-netcdf", "vekcat")]
    for program in filter(pathlib.Path.exists, programs):
        help_text = run(program, "--help")
        verbs = re.findall(r"^  ([a-z]+) ", help_text.partition("Subcommands:\n")[2].partition("\n\n")[0], re.M)
        check_program(program, verbs)
        assert run(program, "--version").split()[:2] == [program.name, VERSION]
    if (BUILD / "eqrecord").exists():
        check_values()
    for page in (ROOT / "man").glob("*.[15]"):
        assert not run("mandoc", "-T", "lint", "-W", "warning", page), page
    for path, pattern in (("CHANGES.md", r"^## (\S+)"), ("debian/changelog", r"^eqconvert \((\S+)\)")):
        newest = re.search(pattern, (ROOT / path).read_text(), re.M)[1]
        assert newest == VERSION, (path, newest)


main()

#!/usr/bin/env python3
"""Holds what comes with the programs against them: the pages of the manual, the completion, the version.
usage: check_delivery.py BUILD VERSION"""
import json, pathlib, re, subprocess, sys, tempfile

BUILD, VERSION = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
ROOT = pathlib.Path(__file__).resolve().parents[2]
COMPLETE = """
source "$1"; shift; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _eqconvert; printf '%s\\n' "${COMPREPLY[@]}"
"""
# As what stands for eqconvert does, without a function.
COMPLETE_FILE = """
source "$1"; eval "$(complete -p eqconvert | sed 's/^complete/compgen/; s/eqconvert$//')" '"$2"'
"""
# What stands on the line, and what its last word can become.
COMPLETIONS = [
    (["eqrecord", ""], "build check diff dump export info plot stats"),
    (["eqrecord", "dump", "--format", ""], "csv json text"),
    (["eqrecord", "dump", "RECORD", "--band", ""], "4"),
    (["eqrecord", "dump", "RECORD", "--configuration", "A"], "ALL"),
    (["eqrecord", "diff", "--match", ""], "band name position"),
    (["eqrecord", "plot", "--format", "p"], "pdf png"),
    (["eqrecord", "export", "--netcdf-kind", ""], "4 64"),
    (["eqrecord", "stats", "--kind", "A1,Z"], "A1,ZS"),
    (["eqlint", "--only", "EQ101,EQ10"], "EQ101,EQ101 EQ101,EQ102 EQ101,EQ103 EQ101,EQ104 EQ101,EQ105"),
    (["eqlint", "--explain", "EQ101,EQ10"], ""),
    (["eqlint", "--color", "a"], "always auto"),
]
# The same for a label whose characters mean something to the shell, in a file with a blank in its name.
LABEL = "A $(B)"
QUOTED = [
    ('"%s"', "'A ", "A $(B)"),
    ("'%s'", '"A ', "A \\$(B)"),
    ("'%s'", "A\\ ", "A\\ \\$\\(B\\)"),
]
MEMBERS_ZSH = """
source <(sed '$d' "$1"); _eqconvert_command=("$2"); words=("$2" info "${(q)3}"); CURRENT=4
_eqconvert_members $4; print -l -- $reply
"""
CHOICES_ZSH = """
source <(sed '$d' "$1"); _eqconvert_command=("$2" "$3"); _eqconvert_choices "$4"; print -l -- $reply
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


# The options of a page, or a part: what follows Fl, up to the next macro.
def told_by_page(text):
    return {"-" + name for names in re.findall(r"\bFl ((?:[a-z0-9-]+(?: [|,] )?)+)", text) for name in re.split(" [|,] ", names)}


# A page tells all options of the program and its verbs, completion those of what stands on the line.
def check_program(program, verbs):
    known = set()
    for command in [[program]] + [[program, verb] for verb in verbs]:
        options = told_by_help(run(*command, "--help"))
        known |= options
        completed = complete_bash(*command, "--")
        assert set(completed) == {name for name in options if name.startswith("--")}, (command, completed)
        specs = "\n".join(zsh(ASK_ZSH, *command))
        assert set(re.findall(r"^\*?(-[^[]+)\[", specs, re.M)) == options, (command, specs)
    page = (ROOT / f"man/{program.name}.1").read_text()
    for text in (page, "\n".join(re.findall(r"^\.It .*", page, re.M))):
        assert told_by_page(text) == known, (program.name, told_by_page(text) ^ known)


def complete_bash(*line):
    return run("bash", "-c", COMPLETE, "bash", ROOT / "completion/eqconvert.bash", *line).splitlines()


def zsh(script, *arguments):
    return run("zsh", "-fc", script, "zsh", ROOT / "completion/_eqconvert", *arguments).splitlines()


def check_values(program, record):
    for words, expected in COMPLETIONS:
        line = [BUILD / words[0]] + [record if word == "RECORD" else word for word in words[1:]]
        assert sorted(filter(None, complete_bash(*line))) == expected.split(), words
        if len(words) == 4 and not words[3]:
            assert sorted(zsh(CHOICES_ZSH, program, *words[1:3])) == expected.split(), words


def check_files():
    told = run("bash", "-c", COMPLETE_FILE, "bash", ROOT / "completion/eqconvert.bash", ROOT / "samples/EQ_B4")
    assert told.split() == [str(ROOT / "samples/EQ_B4.xml")], told


def check_labels(program, record, folder):
    description = run(program, "dump", "--format", "json", record).replace('"ALL"', json.dumps(LABEL))
    (folder / "json").write_text(description)
    spaced = folder / "a b.record"
    run(program, "build", "-o", spaced, folder / "json")
    for name, current, expected in QUOTED:
        assert complete_bash(program, "dump", name % spaced, "--configuration", current) == [expected], current
    for member, expected in (("band", "4"), ("label", LABEL)):
        assert zsh(MEMBERS_ZSH, program, spaced, member) == [expected], member


def main():
    programs = [BUILD / name for name in ("eqlint", "eqrecode", "eqrecord", "eqrecord-netcdf", "vekcat")]
    for program in filter(pathlib.Path.exists, programs):
        help_text = run(program, "--help")
        verbs = re.findall(r"^  ([a-z]+) ", help_text.partition("Subcommands:\n")[2].partition("\n\n")[0], re.M)
        check_program(program, verbs)
        assert run(program, "--version").split()[:2] == [program.name, VERSION]
    check_files()
    if (BUILD / "eqrecord").exists():
        with tempfile.TemporaryDirectory() as folder:
            check_values(BUILD / "eqrecord", ROOT / "samples/EQ_B4.record")
            check_labels(BUILD / "eqrecord", ROOT / "samples/EQ_B4.record", pathlib.Path(folder))
    for page in (ROOT / "man").glob("*.[15]"):
        assert not run("mandoc", "-T", "lint", "-W", "warning", page), page
    for path, pattern in (("CHANGES.md", r"^## (\S+)"), ("debian/changelog", r"^eqconvert \((\S+)\)")):
        newest = re.search(pattern, (ROOT / path).read_text(), re.M)[1]
        assert newest == VERSION, (path, newest)


main()

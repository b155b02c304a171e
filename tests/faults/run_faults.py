#!/usr/bin/env python3
# Disturbs small runs of the programs call by call, and runs eqconvert with little memory:
#   run_faults.py FOLDER INJECTOR     the programs' folder, and the library made of inject.cpp
# Of each kind of call the n-th fails - alone, or with those that follow - for n = 1 and on, until a run
# has no such call any more. A run has to end by itself, with status 0 only when it has written what it
# writes undisturbed, else with a message, and must leave nothing open or allocated, nor a file that was
# there harmed.
import errno, os, pathlib, struct, subprocess, sys, tempfile

MB, ALL = 1 << 20, 1 << 40
REPORT = "4l"  # calls, blocks and descriptors left, whether the run has ended by itself
ABORTED, STOPPED, OUT_OF_MEMORY = -6, 255, b"out of memory"
HERE = pathlib.Path(__file__).resolve().parent
SAMPLE = (HERE.parents[1] / "samples/EQ_B4.xml").read_text()
START = SAMPLE.partition("<COEFFICIENTS_LIST")[0].encode()
# The label is more than a pipe holds at once, and has to be converted.
SMALL = SAMPLE.replace('tdi_config="', 'tdi_config="\u00e9' + "x" * 70_000)
LARGE = SAMPLE.replace("<NUC", ("<NOTE>" + "\u00e9 " * 500 + "</NOTE>") * 15_000 + "<NUC")


def encoded(text, name, codec):
    return text.replace("UTF-8", name).encode(codec)


FILES = {
    "small.xml": SAMPLE.encode(), "utf8.xml": SMALL.encode(), "latin.xml": encoded(SMALL, "ISO-8859-1", "latin-1"),
    "utf16.xml": b"\xff\xfe" + encoded(SMALL, "UTF-16", "utf-16-le"),
    "the.record": (HERE.parents[1] / "samples/EQ_B4.record").read_bytes(),
    "d/1": b"one" * 1000, "d/2@": b"", "d/3": b"", "d/4": b"four" * 1000,
}
OLD = FILES["latin.xml"]  # what the file "out" holds before each run
# What is run, where standard output goes, and the kinds of call that have to be reached.
RUNS = [line.split(" | ") for line in (HERE / "runs.txt").read_text().splitlines()]
# How many calls of a kind fail, and with what.
ATTACKS = {"alloc": [(1, errno.ENOMEM), (3, errno.ENOMEM), (ALL, errno.ENOMEM)],
           "write": [(1, errno.ENOSPC), (ALL, errno.EIO), (1, errno.EINTR)]}
USUAL_ATTACKS = [(1, errno.EIO), (ALL, errno.EIO)]
# Calls that come short or are interrupted, which must make no difference.
HARMLESS = [f"read 1 {ALL} 0", f"read 1 {ALL} {errno.EINTR}", f"write 1 {ALL} 0"]
# A file's text, and how much memory beyond its size the program is given, in MB.
LIMITS = [
    (LARGE.encode(), (1, 16, 64)), (encoded(LARGE, "ISO-8859-1", "latin-1"), (1, 16, 64)),
    (b"\xff\xfe" + encoded(LARGE, "UTF-16", "utf-16-le"), (1, 64)), (LARGE.encode()[:-20], (64,)),
    (START + b"<a>" * 1_000_000, (4, 16, 32, 64)), (START + b"<a/>" * 3_000_000, (64,)),
    (START + b"<a>" * 700_000 + b"</b>" * 700_000, (16, 64)),
    (SAMPLE.replace("1 2 3", "1 " * 8_000_000).encode(), (1, 64)),
    (START + b"<COEFFICIENTS_LIST " + b"a='\xff' " * 900_000 + b"/>", (2, 64)),
    (b"<" + b"a" * 16_000_000 + b">", (8, 32, 40, 48, 64)),
]


def ran_out(status, messages):
    return status == STOPPED and messages[messages[:-1].rfind(b"\n") + 1:].startswith(OUT_OF_MEMORY)


class Run:
    def __init__(self, folder, injector, command, stdout):
        self.command, self.stdout = [*f"{folder}/{command}".split(" ")], stdout
        self.is_converter = command.startswith("eqconvert") and stdout == "kept"
        self.environment = {"LD_PRELOAD": injector, "FAULT_REPORT": "report"}
        self.wanted, _, self.usually_left = self.disturbed("none 0 0 0")

    # (status, messages, outputs), the number of calls, and what was left behind.
    def disturbed(self, fault):
        pathlib.Path("report").write_bytes(bytes(struct.calcsize(REPORT)))
        pathlib.Path("out").write_bytes(OLD)
        done = subprocess.run(self.command, input=FILES["d/4"], timeout=300, stderr=subprocess.PIPE,
                              stdout=subprocess.PIPE if self.stdout == "kept" else open(self.stdout, "wb"),
                              env={**self.environment, "FAULT": fault})
        calls, *left, ended = struct.unpack(REPORT, pathlib.Path("report").read_bytes())
        outputs = done.stdout, pathlib.Path("out").read_bytes()
        return (done.returncode, done.stderr, outputs), calls, left if ended else [0, 0]

    def complaint(self, kind, got, left):
        status, messages, outputs = got
        if any(blocks > usual for blocks, usual in zip(left, self.usually_left)):
            return f"leaves {left} instead of {self.usually_left} blocks and files"
        if status == 0:
            return "" if outputs == self.wanted[2] else "succeeds with another output"
        if status == 1 and self.command[0].endswith("/eqlint"):  # what can't be read is a finding
            return "" if kind != "alloc" or outputs == self.wanted[2] else "finds something else"
        if outputs[1] != OLD or list(pathlib.Path().glob(".part-*")):
            return "harms what was there, or leaves more"
        if kind == "alloc" and self.is_converter:
            return "" if ran_out(status, messages) else f"status {status}"
        if status == ABORTED and b"std::out_of_range" in messages and not outputs[0]:
            return ""  # the first file can't be read
        news = set(messages.splitlines()) - set(self.wanted[1].splitlines())
        return f"status {status}" if status < 0 else "" if news or self.wanted[0] else "says nothing"

    def complaints(self, kind):
        for width, error in ATTACKS.get(kind, USUAL_ATTACKS):
            call = calls = 1
            while calls >= call:
                fault = f"{kind} {call} {call + width - 1} {error}"
                got, calls, left = self.disturbed(fault)
                found = self.complaint(kind, got, left) if calls >= call else \
                    "never called" if call == 1 else "" if got == self.wanted else "differs"
                yield from [f"{fault}: {found}: {got[1][-200:]!r}"] if found else []
                call += 1
        for fault in HARMLESS:
            got, *_ = self.disturbed(fault)
            yield from [f"{fault}: {got[0]}, {got[1][-200:]!r}"] if got != self.wanted else []


def limited(program, limit, *paths):
    limit = limit if limit == "unlimited" else str(limit // 1024)
    done = subprocess.run(["sh", "-c", 'ulimit -v $0 && exec "$@"', limit, program, *paths],
                          capture_output=True, timeout=600)
    return done.returncode, done.stderr, done.stdout


def memory_complaints(program):
    cases = [(text, [len(text) + size * MB for size in sizes]) for text, sizes in LIMITS]
    # From where a file that needs no converter is converted: one that takes much does not fit there.
    least = next(size for size in range(MB, 64 * MB, MB // 32)
                 if limited(program, size, "utf8.xml")[0] == 0)
    cases.append((encoded(SMALL, "EUC-JP", "euc-jp"), range(least, least + MB, MB // 128)))
    for number, (text, limits) in enumerate(cases):
        pathlib.Path("limited.xml").write_bytes(text)
        wanted = limited(program, "unlimited", "limited.xml")
        for limit in limits:
            got = limited(program, limit, "limited.xml")
            if got != wanted and not ran_out(*got[:2]):
                yield f"file {number} in {limit} bytes: status {got[0]}, {got[1][-200:]!r}"
    # Where a large file just fits, many others don't make it run out.
    pathlib.Path("limited.xml").write_bytes(SMALL.encode() + b" " * 30_000_000)
    least = next(size for size in range(32 * MB, 128 * MB, MB) if limited(program, size, "limited.xml")[0] == 0)
    paths = (["small.xml"] * 500 + ["limited.xml"]) * 3
    wanted = limited(program, "unlimited", *paths)
    for limit in (least + MB, least + 4 * MB, 112 * MB):
        got = limited(program, limit, *paths)
        if got != wanted:
            yield f"many files in {limit} bytes: status {got[0]}, {got[1][-200:]!r}"


def main():
    folder, injector = map(os.path.abspath, sys.argv[1:])
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        os.mkdir("d")
        for name, text in FILES.items():
            pathlib.Path(name).write_bytes(text)
        found = [f"{command}: {text}" for command, stdout, kinds in RUNS for kind in kinds.split()
                 for text in Run(folder, injector, command, stdout).complaints(kind)]
        found += memory_complaints(f"{folder}/eqconvert")
        os.chdir("/")
    print(*found, f"{len(found)} complaints", sep="\n")
    sys.exit(bool(found))


main()

#!/usr/bin/env python3
"""Runs the program with one processor, where it starts no threads, and with all; both must give the same.

usage: compare_threads.py PROGRAM
"""
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

SAMPLE = (pathlib.Path(__file__).resolve().parents[2] / "samples/EQ_B4.xml").read_text()
LIST = re.search("(?s)    <COEFFICIENTS_LIST.*</COEFFICIENTS_LIST>\n", SAMPLE)[0]
GAP = ("<COEFFICIENTS detector_id='3'><NB_OF_PIXELS>30000</NB_OF_PIXELS><ON_BOARD_EQUALIZATION>"
       "<APPLICABILITY_DATE/></ON_BOARD_EQUALIZATION></COEFFICIENTS>")  # megabytes of missing values
# A hundred thousand elements, each with little text: lines of progress by a thread.
DENSE = SAMPLE.replace(LIST, re.sub("(?<=>)(1|0|5|1.5) .*?<", r"\1<", LIST.replace(">3<", ">1<")) * 8000)
FILES = {
    "good.xml": SAMPLE, "ill.xml": SAMPLE.replace("<EPS", "</X><EPS"), "short.xml": SAMPLE.replace(">1 2 3<", ">1 2<"),
    "large.xml": SAMPLE.replace("<DATA>", "<DATA>" + "<X/>" * 20_000), "other.xml": SAMPLE.replace(">7<", ">8<"),
    "gap.xml": SAMPLE.replace("</COEFFICIENTS_LIST>", GAP + "</COEFFICIENTS_LIST>"), "empty.xml": "",
    "marked.xml": "\ufeff" + SAMPLE, "table.xml": SAMPLE.replace("TEST_EQ", "REST_EQ"),
    "dense.xml": DENSE, "wrong.xml": "<COEFF_D>1 ".join(DENSE.rsplit("<COEFF_D>", 1)),
    "long.xml": DENSE.replace("COEFFICIENTS_LIST", "COEFFICIENTS_LIST tdi_config='" + "x" * 50 + "'", 1),
}
FILES["wide.xml"] = re.sub("(?<=>)(1|0|5|1.5) .*?<", lambda m: " ".join([m[1]] * 50) + "<", SAMPLE.replace(">3<", ">50<"))
FILES["label.xml"] = SAMPLE.replace('tdi_config="', 'tdi_config="' + "x" * 20_000)
GOOD = ["good.xml"] * 15
MANY = GOOD + ["marked.xml", "large.xml", "wide.xml", "ill.xml"] * 9 + ["gap.xml"]
# Arguments, the least number of lines of progress, and the exit status.
CASES = [
    (["dense.xml"], 64_000, 0), (["wrong.xml"], 63_000, 255), (["long.xml", "dense.xml"], 128_000, 0),
    (MANY, 400, 0), (MANY + ["table.xml"] + GOOD, 530, 0), (MANY + ["other.xml"] + GOOD, 400, 255),
    (MANY + ["short.xml"] + GOOD, 400, 255), (GOOD + ["missing.xml"] + GOOD, 120, 255),
    (GOOD + ["empty.xml"] + GOOD, 120, 255), (["missing.xml"] + MANY, 0, -6),
    (MANY * 8 + ["dense.xml"] + MANY, 67_000, 0), (["label.xml"] * 20, 160, 0),
]


# Status and messages, then the record: where both have a pipe of their own, in one, and on a short file.
def run(program, arguments, processors):
    def limits():
        os.sched_setaffinity(0, processors)
        resource.setrlimit(resource.RLIMIT_FSIZE, (300_000, 300_000))

    done = subprocess.run([program, *arguments], capture_output=True, timeout=60, preexec_fn=limits)
    both = subprocess.run([program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                          preexec_fn=limits)
    with open("record", "wb") as file:
        short = subprocess.run([program, *arguments], stdout=file, stderr=subprocess.PIPE, timeout=60, preexec_fn=limits)
    return done.returncode, done.stderr, done.stdout, both.stdout, short.stderr, pathlib.Path("record").read_bytes()


def main():
    program = os.path.abspath(sys.argv[1])
    processors = os.sched_getaffinity(0)
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for name, text in FILES.items():
            pathlib.Path(name).write_text(text)
        for number, (arguments, least, status) in enumerate(CASES):
            wanted = run(program, arguments, {min(processors)})
            got = [run(program, arguments, processors) for _ in range(3)]
            lines = wanted[1].count(b" values\n")
            if wanted[0] != status or lines < least or any(each != wanted for each in got):
                failed += 1
                print(f"case {number}: status {wanted[0]} and {[each[0] for each in got]}, {lines} lines and "
                      f"{[each[1].count(b' values') for each in got]}, {wanted[1][-200:]!r}")
        os.chdir("/")
    print(f"{len(CASES)} cases, {failed} failed, {len(processors)} processors")
    sys.exit(failed != 0)


main()

#!/usr/bin/env python3
"""Makes the picture of the documentation again and compares bytes. Another gnuplot draws otherwise: then it ends
with 77, for skipped. usage: check_picture.py EQCONVERT EQRECORD"""
import os, pathlib, re, subprocess, sys, tempfile

EQCONVERT, EQRECORD = map(os.path.abspath, sys.argv[1:])
ROOT = pathlib.Path(__file__).resolve().parents[2]
MAKE = [ROOT / "tools/make_samples.py", "--bands", "B05", "--pixels", "96", "--configs", "1", "--defects", "--out", "."]

picture = (ROOT / "docs/plot.svg").read_bytes()
assert len(picture) < 60_000, len(picture)
drawn_by = re.search(rb"Produced by GNUPLOT (.*?) *</desc>", picture)[1].decode()
present = subprocess.run(["gnuplot", "--version"], capture_output=True, text=True, check=True).stdout.split(maxsplit=1)[1].strip()
if present != drawn_by:
    print(f"skipped: drawn by gnuplot {drawn_by}, here is {present}")
    sys.exit(77)
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    subprocess.run([sys.executable, *MAKE], check=True)
    with open("EQ_B05.record", "wb") as record:
        subprocess.run([EQCONVERT, "EQ_B05.xml"], stdout=record, stderr=subprocess.DEVNULL, check=True)
    subprocess.run([EQRECORD, "plot", "--outliers", "--kind", "A1,D", "-o", "plot.svg", "EQ_B05.record"], check=True)
    assert pathlib.Path("plot.svg").read_bytes() == picture, "docs/plot.svg is another picture"

#!/usr/bin/env python3
"""Exports made records to netCDF and compares what Python's netCDF4 and ncdump read with what they were made
of, to the bit. usage: check_netcdf.py EQRECORD"""
import hashlib, os, pathlib, resource, shutil, subprocess, sys, tempfile, time

import netCDF4, numpy

from nasty_records import BITS, NASTY, configuration, file, record

ROOT = pathlib.Path(__file__).resolve().parents[2]
EQRECORD = os.path.abspath(sys.argv[1])
KINDS = "coeff_a1", "coeff_a2", "coeff_zs", "coeff_d"
FILL, SIGNALLING = BITS[0], 0x7FF0000000000001
PARTS = [(b"ALL", 5, 0, SIGNALLING), (NASTY, 2, 7, None), (b"", 0, 0, None)]  # label, P, where in BITS, last value


def made(order):
    parts = [configuration(label, pixels, BITS[2], start, last, order) for label, pixels, start, last in PARTS]
    return record(file(*parts[:2], nuc=-3, name=b"\xff", band=255, order=order), file(nuc=7, order=order), file(parts[2]))


def wanted_of(pixels, start, last):
    bits = [BITS[(start + i) % len(BITS)] for i in range(48 * pixels)]
    return numpy.array(bits[:-1] + [last] if last else bits, "u8").reshape(4, 12, pixels)


def run(*arguments, **options):
    return subprocess.run([EQRECORD, "export", "--format", "netcdf", *arguments], capture_output=True, timeout=600, **options)


# The file that export makes of a record, opened.
def exported(content, *options, path="the.record"):
    with open(path, "wb") as out:
        out.write(content)
    done = run("--overwrite", "-o", "out.nc", *options, "--", path)
    assert done.returncode == 0 and not done.stdout + done.stderr, done
    dataset = netCDF4.Dataset("out.nc")
    dataset.set_auto_maskandscale(False)
    dataset.set_auto_chartostring(False)
    return dataset


# numpy drops the NUL that fill them up.
def texts(variable):
    return [b"".join(row) for row in variable[:].tolist()]


def check_values():
    for order, kind in (("<", "4"), ("<", "64"), (">", "4"), (">", "64")):
        content = made(order)
        with exported(content, "--netcdf-kind", kind) as data:
            assert data.data_model == {"4": "NETCDF4_CLASSIC", "64": "NETCDF3_64BIT_DATA"}[kind], data.data_model
            assert {name: len(size) for name, size in data.dimensions.items()} == {
                "configuration": 3, "detector": 12, "pixel": 5, "label_length": len(NASTY), "name_length": 9}
            for index, (label, pixels, start, last) in enumerate(PARTS):
                for each, values in zip(KINDS, wanted_of(pixels, start, last)):
                    bits = data[each][index].view("u8")
                    assert (bits[:, :pixels] == values).all() and (bits[:, pixels:] == FILL).all(), (each, label)
            assert texts(data["tdi_configuration"]) == [part[0] for part in PARTS]
            assert texts(data["file_name"]) == [b"\xff", b"\xff", b"EQ_B4.xml"]
            found = {name: data[name][:].tolist() for name in ("file", "band", "nuc_table_id", "pixels")}
            assert found == {"file": [1, 1, 3], "band": [255, 255, 4], "nuc_table_id": [-3, -3, 7], "pixels": [5, 2, 0]}, found
            assert data["epsilon"][:].view("u8").tolist() == [BITS[2]] * 3
            assert data.source == "the.record, SHA-256 " + hashlib.sha256(content).hexdigest() and data.state == "complete"
            assert (data.byte_order, data.record_bytes) == ({"<": "little", ">": "big"}[order], len(content))
            assert numpy.array(data["coeff_d"]._FillValue).view("u8") == FILL and "incomplete" not in data.ncattrs()


def check_parts():
    content = made("<")
    with exported(content, "--file", "1", "--detector", "2,11-12", "--kind", "D", "--pixel", "2-4") as data:
        assert data["coeff_d"].shape == (2, 3, 3) and "coeff_a1" not in data.variables
        assert (data["detector"][:].tolist(), data["pixel"][:].tolist()) == ([2, 11, 12], [2, 3, 4])
        for index, (_, pixels, start, last) in enumerate(PARTS[:2]):
            values = numpy.full((12, 9), FILL, "u8")
            values[:, :pixels] = wanted_of(pixels, start, last)[3]
            assert (data["coeff_d"][index].view("u8") == values[[1, 10, 11], 1:4]).all()
    for kind in ("4", "64"):
        with exported(record(file(configuration(b"A", 0), nuc=7)), "--netcdf-kind", kind) as data:
            assert data["coeff_a1"][:].view("u8").ravel().tolist() == [FILL] * 12 and data["pixels"][:].tolist() == [0]
        with exported(record(file(nuc=7)), "--netcdf-kind", kind) as data:
            assert data["coeff_a1"].shape == (0, 12, 1) and data.dimensions["configuration"].isunlimited()
    with exported(content[:-40], "--partial") as data:
        assert (data.state, data.incomplete, data.dimensions["configuration"].size) == ("incomplete", 1, 2)
    with exported(content, path="-a b'c") as data:
        assert data.history == r"eqrecord-netcdf --format netcdf --overwrite -o out.nc -- '-a b'\''c'", data.history


def check_same_bytes():
    contents = []
    for kind in ("4", "64", "4", "64"):
        exported(made("<"), "--netcdf-kind", kind).close()
        contents.append(pathlib.Path("out.nc").read_bytes())
        time.sleep(0.6)  # so that the clock shows another second
    assert contents[:2] == contents[2:]


# What the page shows is what ncdump shows.
def check_page():
    shutil.copy(ROOT / "samples/EQ_B4.record", ".")
    assert run("-o", "EQ_B4.nc", "EQ_B4.record").returncode == 0
    header = subprocess.run(["ncdump", "-h", "EQ_B4.nc"], capture_output=True, text=True, check=True).stdout
    assert header in (ROOT / "docs/netcdf.md").read_text(), header


# What fails ends with 2, a message and nothing new.
def check_failures():
    pathlib.Path("the.record").write_bytes(made("<"))
    before = sorted(os.listdir())
    for message, *arguments in (("-o FILE is needed", "the.record"), ("only be written to a file", "-o", "/dev/full", "the.record"),
                                ("--overwrite", "-o", "EQ_B4.nc", "the.record"), ("No such file", "-o", "no/out", "the.record"),
                                ("no configuration", "-o", "out", "--band", "9", "the.record"), ("no RECORD", "-o", "out"),
                                ("no selected", "-o", "out", "--pixel", "9", "the.record"), ("no record", "-o", "out", "EQ_B4.nc"),
                                ("3 not in", "-o", "out", "--netcdf-kind", "3", "the.record")):
        done = run(*arguments)
        assert done.returncode == 2 and message in done.stderr.decode() and sorted(os.listdir()) == before, done
    for limit in [*range(0, 4000, 160), *range(4000, 32000, 4000)]:
        for kind in ("4", "64")[:1 if limit >= 4000 else 2]:
            done = run("-o", "out", "--netcdf-kind", kind, "the.record",
                       preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            assert done.returncode == 2 and done.stderr.count(b"\n") == 1 and sorted(os.listdir()) == before, (limit, kind, done)


# The program is taken from beside eqrecord, else from PATH.
def check_program():
    os.mkdir("alone")
    shutil.copy(EQRECORD, "alone/eqrecord")
    command = ["alone/eqrecord", "export", "--format", "netcdf", "-o", "alone.nc", "the.record"]
    for path, status in (("/nowhere", 2), (os.path.dirname(EQRECORD), 0)):
        done = subprocess.run(command, capture_output=True, env={**os.environ, "PATH": path})
        assert done.returncode == status, done
        assert (done.stderr == b"eqrecord: netCDF needs eqrecord-netcdf (package eqconvert-netcdf)\n") == (status == 2), done


with tempfile.TemporaryDirectory() as scratch:
    os.chdir(scratch)
    check_values()
    check_parts()
    check_same_bytes()
    check_page()
    check_failures()
    check_program()

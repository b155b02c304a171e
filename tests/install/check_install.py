#!/usr/bin/env python3
"""Installs a build, then makes programs with the installed libraries as others do, by CMake and by
pkg-config, and looks how the installed programs are protected.
usage: check_install.py BUILD CXX FLAGS, where FLAGS are what the build is instrumented with"""
import os, pathlib, re, subprocess, sys, tempfile

BUILD, CXX, FLAGS = sys.argv[1:]
HERE = pathlib.Path(__file__).resolve().parent


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    assert done.returncode == 0, f"{command}: {done.stdout}{done.stderr}"
    return done.stdout


def check_cmake(prefix, work):
    run("cmake", "-S", HERE, "-B", work, f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={CXX}",
        f"-DCMAKE_EXE_LINKER_FLAGS={FLAGS}")
    run("cmake", "--build", work)
    run(work / "consumer")
    run(work / "vek_consumer")


def check_pkg_config(prefix, work):
    folder = next(prefix.glob("lib*/**/pkgconfig"))
    libraries = [f"eqconvert-{name}" for name in ("vek", "markup", "record")]
    flags = run("pkg-config", "--cflags", "--libs", *libraries, env=os.environ | {"PKG_CONFIG_PATH": str(folder)}).split()
    run(CXX, HERE / "main.cpp", *flags, *FLAGS.split(), "-o", work / "by_pkg_config")
    run(work / "by_pkg_config")


# Position-independent, nothing left writable that needn't be, stacks and buffers watched.
def check_hardening(program):
    header, segments, dynamic, symbols = (run("readelf", "-W", option, program) for option in ("-h", "-l", "-d", "--dyn-syms"))
    assert re.search(r"Type:\s+DYN", header) and "GNU_RELRO" in segments, program
    assert re.search(r"GNU_STACK.* RW ", segments), program
    assert re.search(r"FLAGS.*BIND_NOW", dynamic) and re.search(r"FLAGS_1.*NOW.*PIE", dynamic), dynamic
    checked = re.findall(r"__\w+_chk(?:_fail)?(?=@)", symbols)
    assert "__stack_chk_fail" in checked and len(checked) > 1, (program, checked)


with tempfile.TemporaryDirectory() as folder:
    work = pathlib.Path(folder)
    prefix = work / "installed"
    run("cmake", "--install", BUILD, "--prefix", prefix)
    (work / "consumer").mkdir()
    check_cmake(prefix, work / "consumer")
    check_pkg_config(prefix, work)
    programs = list((prefix / "bin").iterdir())
    assert len(programs) >= 3, programs
    # What comes with a program comes with those that are there.
    for folder, ending in (("share/man/man1", ".1"), ("share/bash-completion/completions", "")):
        assert {path.name for path in (prefix / folder).iterdir()} == {program.name + ending for program in programs}, folder
    if not FLAGS:
        for program in programs:
            check_hardening(program)
    print(f"{len(programs)} programs")

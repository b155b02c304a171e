#!/usr/bin/env python3
"""Holds the SPDX documents of installed packages against what is installed and what it was built with.
usage: check_sbom.py ROOT PACKAGE...     ROOT: of the system in which the packages are"""
import hashlib, json, pathlib, subprocess, sys

ROOT = pathlib.Path(sys.argv[1])
# What a program holds in its bytes when it is made with a library.
TRACES = {"libcli11-dev": b"3CLI5Error", "nlohmann-json3-dev": b"8nlohmann"}


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def version_of(package, *where):
    return output("dpkg-query", *where, "-W", "-f", "${Version}", package)


def installed_files(package, document):
    listed = output("dpkg-query", f"--admindir={ROOT}/var/lib/dpkg", "-L", package).splitlines()
    files = {ROOT / name[1:] for name in listed} - {document}
    return {path for path in files if path.is_file() and not path.is_symlink()}


# The one file that is not told is excepted from the code of the others.
def check_code(code, files, own):
    sums = sorted(sum["checksumValue"] for file in files for sum in file["checksums"] if sum["algorithm"] == "SHA1")
    assert code["packageVerificationCodeValue"] == hashlib.sha1("".join(sums).encode()).hexdigest(), own
    assert code["packageVerificationCodeExcludedFiles"] == [f"./{own.relative_to(ROOT)}"], code


def check_files(files, paths):
    told = {ROOT / file["fileName"][2:]: {sum["algorithm"]: sum["checksumValue"] for sum in file["checksums"]}
            for file in files}
    assert told.keys() == paths, told.keys() ^ paths
    for path, sums in told.items():
        assert sums["SHA256"] == hashlib.sha256(path.read_bytes()).hexdigest(), path


# The libraries that a program is told to hold are those that it does hold.
def check_program(path, held):
    needed = output("readelf", "-d", str(path))
    assert ("libstdc++-12-dev" in held) == ("libgcc-12-dev" in held) == ("libstdc++.so" not in needed), (path, held)
    for library, trace in TRACES.items():
        assert (library in held) == (trace in path.read_bytes()), (path, library)


def check(package):
    path = ROOT / f"usr/share/doc/{package}/{package}.spdx.json"
    document = json.loads(path.read_text())
    assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
    own, *parts = document["packages"]
    assert own["versionInfo"] == version_of(package, f"--admindir={ROOT}/var/lib/dpkg"), own
    for part in parts:
        assert part["versionInfo"] == version_of(part["name"]), part
    check_code(own["packageVerificationCode"], document["files"], path)
    check_files(document["files"], installed_files(package, path))
    names = {thing["SPDXID"]: thing.get("name") or thing["fileName"] for thing in document["packages"] + document["files"]}
    assert len(names) == len(document["packages"] + document["files"])
    held = {name: set() for name in names.values() if name.startswith("./usr/bin/")}
    for relation in document["relationships"]:
        one, kind, other = relation["spdxElementId"], relation["relationshipType"], relation["relatedSpdxElement"]
        assert other in names and (one in names or kind == "DESCRIBES"), relation
        if kind == "STATIC_LINK":
            held[names[one]].add(names[other])
    for program, libraries in held.items():
        check_program(ROOT / program[2:], libraries)


for name in sys.argv[2:]:
    check(name)

#!/usr/bin/env python3
# Shows on generated files that what the schema accepts, eqlint has no warning for, on the file alone:
#   check_schema.py EQLINT SCHEMA [--seed N] [--cases N]
import argparse, json, os, re, subprocess, sys, tempfile
import xml.etree.ElementTree as ElementTree
import prove, strict_reader

# What a schema can't know: what repeats or has to be counted, and what a parser hides from it.
UNSAID = {"EQ408", "EQ502", "EQ603", "EQ703", "EQ505", "EQ707"}
FEWEST = 0.2  # share of the files that the schema has to accept for this to show anything


# The files of the cases whose encoding is no question and that are well-formed.
def write_files(seed, count):
    for index in range(count):
        for data in prove.nearly_plain(seed, index)[0].values():
            try:
                ElementTree.fromstring(data)
            except (ValueError, LookupError, ElementTree.ParseError, strict_reader.Refused):
                continue
            path = f"{index}-{len(data)}.xml"
            with open(path, "wb") as file:
                file.write(data)
            yield path


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("eqlint", type=os.path.abspath)
    parser.add_argument("schema", type=os.path.abspath)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=300)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        paths = list(write_files(options.seed, options.cases))
        verdicts = subprocess.run(["xmllint", "--noout", "--relaxng", options.schema, *paths],
                                  capture_output=True, text=True, errors="replace").stderr
        accepted = re.findall(r"(?m)^(\S+) validates$", verdicts)
        failed = 0
        for path in accepted:
            found = {f["id"] for f in prove.lint(options.eqlint, [path])["findings"] if f["severity"] != "note"}
            for rule in sorted(found - UNSAID):
                if rule[:3] in ("EQ2", "EQ3", "EQ4", "EQ5", "EQ6", "EQ7"):
                    failed += 1
                    with open(path, encoding="utf-8") as file:
                        print(f"{rule} in what the schema accepts, seed {options.seed}:", file.read())
        os.chdir("/")
    print(f"{len(paths)} files, {len(accepted)} accepted by the schema, {failed} of them wrongly")
    return 1 if failed or len(accepted) < FEWEST * len(paths) else 0


if __name__ == "__main__":
    sys.exit(main())

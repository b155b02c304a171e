#!/usr/bin/env python3
# Compares a program with the model on generated cases, byte for byte:
#   compare.py PROGRAM [--seed N] [--cases N] [--keep DIR]
# Prints the first differences, keeps their input in DIR, and ends with 1 if there was any.
import argparse, functools, multiprocessing, os, shutil, subprocess, sys, tempfile
import cases, eqmodel

SHOWN = 5  # differing cases that are printed and kept
AROUND = 32  # bytes shown from before and from behind the first differing one


# Tells where two outputs differ; None when they are equal.
def difference(name, got, wanted):
    if got == wanted:
        return None
    at = len(os.path.commonprefix([got, wanted]))
    lines = [f"  {name} differs at byte {at} (program {len(got)}, model {len(wanted)} bytes)"]
    for who, data in (("program", got), ("model", wanted)):
        lines.append(f"    {who:8}{data[max(0, at - AROUND):at]!r} | {data[at:at + AROUND]!r}")
    return "\n".join(lines)


# Runs one case; gives what differs as text, empty when nothing does.
def check(index, program, seed):
    files, arguments = cases.make_case(seed, index)
    with tempfile.TemporaryDirectory() as folder:
        cases.write_case(files, folder)
        os.chdir(folder)
        try:
            wanted = eqmodel.run(arguments)
            done = subprocess.run([program, *arguments], capture_output=True, timeout=600)
            got = done.stdout, done.stderr, done.returncode
        except subprocess.TimeoutExpired as late:
            got = late.stdout or b"", late.stderr or b"", "timeout"
        finally:
            os.chdir("/")
    found = [difference("standard output", got[0], wanted[0]),
             difference("standard error", got[1], wanted[1])]
    if got[2] != wanted[2]:
        found.append(f"  exit status: program {got[2]}, model {wanted[2]}")
    return index, "\n".join(filter(None, found))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=os.path.abspath)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--keep", type=os.path.abspath)
    options = parser.parse_args()
    failed = []
    work = functools.partial(check, program=options.program, seed=options.seed)
    with multiprocessing.Pool() as pool:
        for index, found in pool.imap(work, range(options.cases), chunksize=20):
            if not found:
                continue
            failed.append(index)
            if len(failed) <= SHOWN:
                files, arguments = cases.make_case(options.seed, index)
                print(f"case {index} of seed {options.seed}, arguments {arguments}:\n{found}")
                if options.keep:
                    kept = os.path.join(options.keep, f"case-{options.seed}-{index}")
                    shutil.rmtree(kept, ignore_errors=True)
                    cases.write_case(files, kept)
                    print(f"  input kept in {kept}")
    print(f"{options.cases} cases, {len(failed)} differ")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

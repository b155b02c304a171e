#!/usr/bin/env python3
# Compares a program with the model on generated cases, byte for byte:
#   compare.py PROGRAM [--seed N] [--cases N] [--keep DIR]
# Prints the first differences, keeps their input in DIR, and ends with 1 if there was any.
import argparse, functools, multiprocessing, os, subprocess, sys, tempfile
import cases, eqmodel

SHOWN = 5  # differing cases that are printed and kept
AROUND = 32  # bytes shown from before and from behind the first differing one


# Tells where two outputs differ.
def difference(what, got, wanted):
    at = len(os.path.commonprefix([got, wanted]))
    program, model = (f"{len(data)} bytes, {data[max(0, at - AROUND):at]!r} | {data[at:at + AROUND]!r}"
                      for data in (got, wanted))
    return f"  {what} differs at byte {at}\n    program {program}\n    model   {model}\n"


# Runs one case; gives its number, and what differs as text, empty when nothing does.
def check(index, program, seed):
    files, arguments = cases.make_case(seed, index)
    with tempfile.TemporaryDirectory() as folder:
        cases.write_case(files, folder)
        os.chdir(folder)
        wanted = eqmodel.run(arguments)
        done = subprocess.run([program, *arguments], capture_output=True, timeout=600)
        os.chdir("/")
    outputs = zip(("standard output", "standard error"), (done.stdout, done.stderr), wanted)
    found = "".join(difference(*output) for output in outputs if output[1] != output[2])
    if done.returncode != wanted[2]:
        found += f"  exit status: program {done.returncode}, model {wanted[2]}\n"
    return index, found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program", type=os.path.abspath)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--cases", type=int, default=1000)
    parser.add_argument("--keep", type=os.path.abspath)
    options = parser.parse_args()
    work = functools.partial(check, program=options.program, seed=options.seed)
    with multiprocessing.Pool() as pool:
        results = pool.imap(work, range(options.cases), chunksize=20)
        failed = [(index, found) for index, found in results if found]
    for index, found in failed[:SHOWN]:
        files, arguments = cases.make_case(options.seed, index)
        print(f"case {index} of seed {options.seed}, arguments {arguments}:\n{found}")
        if options.keep:
            cases.write_case(files, os.path.join(options.keep, f"case-{options.seed}-{index}"))
    print(f"{options.cases} cases, {len(failed)} differ")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Counts the instructions of the groups that come from the firmware's table, on a recorded machine.

The count does not depend on how busy or how fast a machine is, so that a change that makes a scan a
tenth slower is seen. What starting and reading the recording cost is left out: it is in a run of one
scan as in one of eleven.
"""
import argparse
import re
import shutil
import subprocess
import sys

SKIP = 77
BOUND = 2_360_000  # instructions of one scan: what was counted with gcc 12, and a tenth
SCANS = 10


def instructions(options, scans):
    run = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                          options.program, options.machine, str(scans)],
                         check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", run.stderr).group(1))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--machine", required=True)
    parser.add_argument("--optimised", default="1")
    parser.add_argument("--sanitizer", default="")
    options = parser.parse_args()
    if options.optimised == "0" or options.sanitizer:
        print("the bound holds for what is shipped, not for this build")
        return SKIP
    if shutil.which("valgrind") is None:
        print("valgrind is not installed")
        return SKIP
    one = instructions(options, 1)
    each = (instructions(options, SCANS + 1) - one) // SCANS
    print(f"a scan: {each} instructions, at most {BOUND}")
    return 0 if each <= BOUND else 1


if __name__ == "__main__":
    sys.exit(main())

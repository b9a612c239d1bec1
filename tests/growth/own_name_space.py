"""What the tests of growth have in common: their options, and running in name spaces of their own."""

import argparse
import os
import subprocess
import sys

SKIP = 77
INSIDE = "--inside"


def run(script, measure, kinds, probe, refusal, **counts):
    """Exit status of `measure`, called with the options in new name spaces of these kinds, or 77 where they
    can't be made, which is tried with the command `probe`. `counts`: further options, whole numbers."""
    if INSIDE in sys.argv:
        return measure(read_options(**counts))
    unshare = ["unshare"] + [f"--{kind}" for kind in kinds]
    if os.geteuid() != 0:
        unshare += ["--map-root-user"]
    if subprocess.run(unshare + probe, stderr=subprocess.DEVNULL).returncode != 0:
        print(refusal)
        return SKIP
    return subprocess.run(unshare + [sys.executable, "-IS", os.path.abspath(script), INSIDE]
                          + sys.argv[1:]).returncode


def read_options(**counts):
    parser = argparse.ArgumentParser()
    parser.add_argument(INSIDE, action="store_true", help="the name spaces are there")
    parser.add_argument("--quenlor", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--optimised", default="1")
    parser.add_argument("--sanitizer", default="")
    for name in counts:
        parser.add_argument(f"--{name}", type=int, required=True)
    return parser.parse_args()


def is_measured(options):
    """False for builds of which nobody expects speed."""
    return options.optimised != "0" and not options.sanitizer

#!/usr/bin/env python3
"""Where the shipped program looks for quenlor.conf, in roots of its own.

Every file there is malformed, so the one that the program reads names itself in the message.

Usage: configuration_places_test.py <build directory> <tests/machines>
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

PROGRAM = "/opt/bin/quenlor"
BESIDE = "/opt/bin/quenlor.conf"
INSTALLED = "/opt/bin/../etc/quenlor/quenlor.conf"
SYSTEM = "/etc/quenlor/quenlor.conf"
ANYBODYS = "/quenlor.conf"  # also the current directory's
MALFORMED = 21
SKIPPED = 77  # what ctest is told to count as skipped


# Ways to start the program: the name that it gets, and what the kernel is asked to execute.
def by_path(_root):
    return PROGRAM, PROGRAM


def by_name(_root):
    """As a shell starts what it found in the search path."""
    return "quenlor", PROGRAM


def by_descriptor(root):
    """From an open file, which has no name that leads to it."""
    return "quenlor", os.open(root + PROGRAM, os.O_RDONLY)


# No root has a /proc that would tell the program's own place.
CASES = [
    ("beside the program", by_path, [BESIDE, INSTALLED, SYSTEM, ANYBODYS], BESIDE),
    ("of the program's installation", by_path, [INSTALLED, SYSTEM, ANYBODYS], INSTALLED),
    ("of the system", by_path, [SYSTEM, ANYBODYS], SYSTEM),
    ("beside the program that was started by name", by_name, [BESIDE, SYSTEM, ANYBODYS], BESIDE),
    ("of the system for a program without a place", by_descriptor,
     [BESIDE, INSTALLED, SYSTEM, ANYBODYS], SYSTEM),
    ("nowhere else", by_path, [ANYBODYS], None),
    ("nowhere else for a program without a place", by_descriptor,
     [BESIDE, INSTALLED, ANYBODYS], None),
]


def message_of(start, files, quenlor, copy_program):
    """Exit status and standard error of `quenlor -h` where these files are all that there are."""
    with tempfile.TemporaryDirectory(prefix="places-") as root:
        copy_program(quenlor, Path(root), Path(root + PROGRAM))
        os.makedirs(root + "/opt/etc/quenlor")
        for file in files:
            os.makedirs(os.path.dirname(root + file), exist_ok=True)
            Path(root + file).write_text("no setting\n")
        name, program = start(root)
        read_end, write_end = os.pipe()
        child = os.fork()
        if child == 0:
            try:
                os.dup2(write_end, 2)
                os.chroot(root)
                os.chdir("/")
                os.execve(program, [name, "-h"], {})
            finally:
                os._exit(99)
        os.close(write_end)
        with os.fdopen(read_end) as errors:
            text = errors.read()
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), text


def may_change_root():
    """Whether the kernel lets this process enter a root directory of its own."""
    child = os.fork()
    if child == 0:
        try:
            os.chroot("/")
            os._exit(0)
        finally:
            os._exit(1)
    return os.waitpid(child, 0)[1] == 0


def main():
    if not may_change_root():
        # As root of a user namespace, once; where that is refused too, the test cannot run.
        inside = "QUENLOR_INSIDE"
        maps = subprocess.run(["unshare", "-r", "true"], stderr=subprocess.DEVNULL)
        if maps.returncode != 0 or inside in os.environ:
            print("skipped: no root directory of its own: chroot: Operation not permitted")
            return SKIPPED
        command = ["unshare", "-r", sys.executable, *sys.argv]
        return subprocess.run(command, env={**os.environ, inside: "1"}).returncode
    build, machines = sys.argv[1:3]
    sys.dont_write_bytecode = True
    sys.path.insert(0, machines)
    from harness.programs import copy_program  # noqa: E402

    wrong = 0
    for what, start, files, expected in CASES:
        status, text = message_of(start, files, f"{build}/bin/quenlor", copy_program)
        found = status == MALFORMED and text.startswith(f"quenlor: {expected}:1: ")
        none = status == 0 and text.startswith("Usage:")
        if not (none if expected is None else found):
            print(f"FAILED: configuration {what}: status {status}, {text!r}")
            wrong += 1
    if not wrong:
        print("quenlor.conf is found where it belongs, and nowhere else")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

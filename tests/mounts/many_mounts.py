#!/usr/bin/env python3
"""Ten thousand mounts: the scanner beside df, in one run and one mount namespace of their own.

Usage: many_mounts.py <quenlor>

The median of five scans of the Partition group may take twice the median of five `df -a`.
Ends with 77 where mount namespaces cannot be made.
"""

import ctypes
import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

MOUNTS = 10000
RUNS = 5
FACTOR = 2.0
SKIPPED = 77

_libc = ctypes.CDLL(None, use_errno=True)
_NEWNS, _NEWUSER = 0x20000, 0x10000000
_MS_REC, _MS_PRIVATE, _MS_BIND = 1 << 14, 1 << 18, 1 << 12


def call(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def mount(source, target, kind=None, flags=0):
    encoded = [None if text is None else os.fsencode(text) for text in (source, target, kind)]
    call(_libc.mount(*encoded, ctypes.c_ulong(flags), None), f"mount on {target}")


def enter_namespace():
    call(_libc.unshare(_NEWNS | (0 if os.geteuid() == 0 else _NEWUSER)), "unshare")
    mount("none", "/", None, _MS_REC | _MS_PRIVATE)


def make_mounts(work):
    """Half of them file systems of their own, half the same one once more."""
    mount("many", work, "tmpfs")
    for i in range(MOUNTS):
        directory = work / f"{i:05d}"
        directory.mkdir()
        if i % 2 == 0:
            mount("many", directory, "tmpfs")
        else:
            mount(work / f"{i - 1:05d}", directory, None, _MS_BIND)


def seconds(command):
    start = time.perf_counter()
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return time.perf_counter() - start, result


def main():
    quenlor = sys.argv[1]
    try:
        enter_namespace()
    except OSError as error:
        print(f"skipped: {error}")
        return SKIPPED
    with tempfile.TemporaryDirectory() as directory:
        work = Path(directory)
        configuration = work.with_name(work.name + ".xml")
        configuration.write_text('<Hardware><Group Name="Partition"/></Hardware>')
        try:
            make_mounts(work)
            return compare([quenlor, "-c", str(configuration)])
        finally:
            configuration.unlink()
            _libc.umount2(os.fsencode(work), 2)


def compare(scan):
    times = {"df": [], "scan": []}
    for _ in range(RUNS):
        times["df"].append(seconds(["df", "-a"])[0])
        taken, result = seconds(scan)
        times["scan"].append(taken)
        rows = result.stdout.count(b"\t<Partition ")
        if result.returncode != 0 or result.stderr or rows < MOUNTS:
            print(f"status {result.returncode}, {rows} rows, {result.stderr[:500]}")
            return 1
    df, own = (statistics.median(times[name]) for name in ("df", "scan"))
    print(f"{MOUNTS} mounts: df -a {df:.3f} s, the scanner {own:.3f} s, {own / df:.2f} times as long")
    return 0 if own <= FACTOR * df else 1


sys.exit(main())

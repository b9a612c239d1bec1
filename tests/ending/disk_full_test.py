#!/usr/bin/env python3
"""A document on a disk that becomes full at every page and around the end of every table: it is whole, or the
status says that it is not.

disk_full_test.py ... quick   tries one alignment of the tables to the pages instead of all.
"""

import re
import subprocess
import sys
from contextlib import suppress

import scene
from harness import namespace

PAGE = 4096
NOT_WRITTEN = (4, 11)
ROWS = 12


def mount_table(padding):
    """Names in the first row shift everything behind it."""
    names = [f"/data{row:02}" for row in range(ROWS)]
    names[0] += "x" * padding
    return "".join(f"tmpfs {name} tmpfs rw 0 0\n" for name in names)


class DiskFull:
    ends = {(): rb"\t</\w+>\n", ("-m",): rb"End (Group|Table)\n"}

    def __init__(self, tools):
        self.scene = scene.Scene(tools, groups=["Partition", "Regional", "Operating System",
                                                "UnixCpuMeter"])
        self._disk = self.scene.root / "disk"
        self._disk.mkdir()
        self.complaints = []
        self.scans = 0

    def close(self):
        self.scene.close()

    def _scan(self, options, name="/disk/out"):
        self.scans += 1
        scan = self.scene.start(*options, "-o", name, stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)
        return scan.wait(timeout=60)

    def document(self, options, padding):
        (self.scene.root / "etc/mtab").write_text(mount_table(padding))
        if self._scan(options, "/tmp/out") != 0:
            self.complaints.append("no document even with room for it")
        return (self.scene.root / "tmp/out").read_bytes()

    def sweep(self, options, padding=0, at=None):
        """Disks of every number of pages up to the whole document, or of those around `at` alone."""
        whole = self.document(options, padding)
        if at is not None and at not in ends_of_tables(whole, self.ends[options]):
            self.complaints.append(f"{options}: no table ends at {at}")
        needed = -(-len(whole) // PAGE)
        sizes = range(1, needed + 2) if at is None else {max(at // PAGE, 1), -(-at // PAGE)}
        for size in sizes:
            self._check(options, padding, whole, size, size >= needed)

    def _check(self, options, padding, whole, pages, fits):
        namespace.mount("tmpfs", self._disk, "tmpfs", 0, f"size={pages * PAGE}")
        status = self._scan(options)
        written = b""
        with suppress(FileNotFoundError):
            written = (self._disk / "out").read_bytes()
        namespace.unmount(self._disk)
        where = f"{options} shifted by {padding} on {pages} pages: status {status}, "
        if fits and (status, written) != (0, whole):
            self.complaints.append(where + "though it fits")
        if not fits and status not in NOT_WRITTEN:
            self.complaints.append(where + f"{len(written)} of {len(whole)} bytes written")


def ends_of_tables(document, end):
    return [match.end() for match in re.finditer(end, document)]


def shifts(disk, options):
    """Shifts that bring the end of a table one byte before, onto and one byte behind a page's end, and where
    it then lies. The name that shifts stands in the document once, behind the end of a MIF's first group."""
    ends, shifted = (ends_of_tables(disk.document(options, by), disk.ends[options]) for by in (0, 1))
    for end in (one for one, other in zip(ends, shifted) if one != other):
        for beyond in (-1, 0, 1):
            padding = (beyond - end) % PAGE
            if padding < 4000:  # longer names are none
                yield padding, end + padding


def run(tools, arguments):
    disk = DiskFull(tools)
    for options in disk.ends:
        disk.sweep(options)
        for padding, at in list(shifts(disk, options)) if "quick" not in arguments else ():
            disk.sweep(options, padding, at)
    disk.close()
    print("\n".join(disk.complaints) or f"{disk.scans} documents are whole or said not to be")
    return 1 if disk.complaints else 0


if __name__ == "__main__":
    sys.exit(scene.run_tests(run))

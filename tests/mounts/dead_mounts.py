#!/usr/bin/env python3
"""File systems whose server never answers, answers late, or is stopped: what a scan of the
Partition group says of them, and how long it takes.

Usage: dead_mounts.py <quenlor>

Ends with 77 where nobody may mount.
"""

import ctypes
import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.dont_write_bytecode = True
TESTS = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "ending"), str(TESTS / "machines")]

from fuse import STATFS, Server  # noqa: E402
from harness import namespace  # noqa: E402

SKIPPED = 77
LIMIT = 5.0  # seconds that a mount has without a configuration
SLACK = 2.0
BLOCKS_KB = 32  # what the servers' file systems say of themselves

_libc = ctypes.CDLL(None, use_errno=True)
_NEWNS, _NEWUSER = 0x20000, 0x10000000
_MS_REC, _MS_PRIVATE = 1 << 14, 1 << 18


def enter_namespace():
    flags = _NEWNS | (0 if os.geteuid() == 0 else _NEWUSER)
    if _libc.unshare(flags) != 0 or _libc.mount(b"none", b"/", None, _MS_REC | _MS_PRIVATE, None):
        raise OSError(ctypes.get_errno(), "a mount namespace")


class Scan:
    """A scan that has ended, also where the kernel does not let go of whoever asked a server."""

    def __init__(self, program, work):
        configuration, document = work / "scan.xml", work / "document.xml"
        configuration.write_text('<Hardware><Group Name="Partition"/></Hardware>')
        start = time.monotonic()
        ended = subprocess.run([program, "-c", configuration, "-o", document], timeout=60,
                               stderr=subprocess.PIPE, text=True, check=False)
        self.seconds = time.monotonic() - start
        self.status, self.messages = ended.returncode, ended.stderr
        self.text = document.read_text()

    def kilobytes(self, directory):
        row = re.search(rf'<FSMountPoint IsKey="1">{re.escape(str(directory))}</FSMountPoint>'
                        r"\s*<FSTotalSize>(\d+)</FSTotalSize>", self.text)
        return int(row[1]) if row else None


def check(name, program, count, answers, least, silent=(), delay=0.0, stopped=False):
    with tempfile.TemporaryDirectory() as directory:
        work = Path(directory)
        directories = [work / f"mount{i}" for i in range(count)]
        servers = [Server(one, silent, delay=delay) for one in directories]
        try:
            for server in servers if stopped else ():
                server.stop()
            scan = Scan(program, work)
        finally:
            for server, mounted in zip(servers, directories):
                server.end()
                namespace.unmount(mounted)
        complaints = list(judge(scan, directories, answers, least))
    print(f"{'FAILED' if complaints else 'ok'}: {name}: {scan.seconds:.2f} s {'; '.join(complaints)}")
    return not complaints


def judge(scan, directories, answers, least):
    if scan.status != 0:
        yield f"status {scan.status}"
    if not scan.text.endswith("</Hardware>\n"):
        yield "the document has no end"
    if not least <= scan.seconds < least + SLACK:
        yield f"not {least} to {least + SLACK} s"
    for directory in directories:
        if scan.kilobytes(directory) != (BLOCKS_KB if answers else 0):
            yield f"{directory}: {scan.kilobytes(directory)} KB"
        line = f"quenlor: {directory} did not answer within 5000 ms, its sizes are 0\n"
        if (line in scan.messages) == answers:
            yield f"said: {scan.messages!r}"


def main():
    program = sys.argv[1]
    try:
        enter_namespace()
        os.close(os.open("/dev/fuse", os.O_RDWR))
    except OSError as error:
        print(f"skipped: {error}")
        return SKIPPED
    good = [
        check("one answers", program, 1, True, 0.0),
        check("twenty never answer", program, 20, False, LIMIT, silent=[STATFS]),
        check("twenty answer after 3 s", program, 20, True, 3.0, delay=3.0),
        check("one is stopped", program, 1, False, LIMIT, stopped=True),
    ]
    return 0 if all(good) else 1


sys.exit(main())

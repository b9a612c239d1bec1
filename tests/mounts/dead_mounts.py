#!/usr/bin/env python3
"""File systems whose server never answers, answers late, or is stopped: what a scan of the
Partition group says of them, and how long it takes.

Usage: dead_mounts.py <quenlor> <fuse_server>

Ends with 77 where nobody may mount.
"""

import ctypes
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SKIPPED = 77
LIMIT = 5.0  # seconds that a mount has without a configuration
SLACK = 2.0
BLOCKS_KB = 65536  # what fuse_server's file systems say of themselves

_libc = ctypes.CDLL(None, use_errno=True)
_NEWNS, _NEWUSER = 0x20000, 0x10000000
_MS_REC, _MS_PRIVATE = 1 << 14, 1 << 18


def enter_namespace():
    flags = _NEWNS | (0 if os.geteuid() == 0 else _NEWUSER)
    if _libc.unshare(flags) != 0 or _libc.mount(b"none", b"/", None, _MS_REC | _MS_PRIVATE, None):
        raise OSError(ctypes.get_errno(), "a mount namespace")


class Server:
    """fuse_server on so many directories."""

    def __init__(self, program, behaviour, work, count):
        self.directories = [work / f"{behaviour}{i}" for i in range(count)]
        for directory in self.directories:
            directory.mkdir()
        self._process = subprocess.Popen([program, behaviour, *map(str, self.directories)],
                                         stdout=subprocess.PIPE, text=True)
        if self._process.stdout.readline() != "ready\n":
            raise OSError("the server did not start")

    def stop(self):
        self._process.send_signal(signal.SIGSTOP)

    def end(self):
        self._process.send_signal(signal.SIGCONT)
        self._process.terminate()
        self._process.wait()


class Scan:
    """A scan, until its document is complete. A worker that the kernel does not let go keeps the
    process from ending, so its end is waited for when the servers are gone."""

    def __init__(self, program, work):
        configuration, document = work / "scan.xml", work / "document.xml"
        configuration.write_text('<Hardware><Group Name="Partition"/></Hardware>')
        document.unlink(missing_ok=True)
        start = time.monotonic()
        with open(work / "messages", "w", encoding="utf-8") as messages:
            self._process = subprocess.Popen([program, "-c", configuration, "-o", document],
                                             stderr=messages)
        self.text = ""
        while not self.text.endswith("</Hardware>\n") and time.monotonic() < start + 60:
            time.sleep(0.01)
            self.text = document.read_text() if document.exists() else ""
        self.seconds = time.monotonic() - start
        self.messages = (work / "messages").read_text()

    def end(self):
        return self._process.wait(30)

    def kilobytes(self, directory):
        row = re.search(rf'<FSMountPoint IsKey="1">{re.escape(str(directory))}</FSMountPoint>'
                        r"\s*<FSTotalSize>(\d+)</FSTotalSize>", self.text)
        return int(row[1]) if row else None


def check(name, program, server_program, behaviour, count, answers, least, stopped=False):
    with tempfile.TemporaryDirectory() as directory:
        work = Path(directory)
        server = Server(server_program, behaviour, work, count)
        try:
            if stopped:
                server.stop()
            scan = Scan(program, work)
        finally:
            server.end()
        complaints = list(judge(scan, server.directories, answers, least))
    print(f"{'FAILED' if complaints else 'ok'}: {name}: {scan.seconds:.2f} s {'; '.join(complaints)}")
    return not complaints


def judge(scan, directories, answers, least):
    if scan.end() != 0:
        yield f"status {scan.end()}"
    if not least <= scan.seconds < least + SLACK:
        yield f"not {least} to {least + SLACK} s"
    for directory in directories:
        if scan.kilobytes(directory) != (BLOCKS_KB if answers else 0):
            yield f"{directory}: {scan.kilobytes(directory)} KB"
        line = f"quenlor: {directory} did not answer within 5000 ms, its sizes are 0\n"
        if (line in scan.messages) == answers:
            yield f"said: {scan.messages!r}"


def main():
    program, server = sys.argv[1:]
    try:
        enter_namespace()
        os.close(os.open("/dev/fuse", os.O_RDWR))
    except OSError as error:
        print(f"skipped: {error}")
        return SKIPPED
    good = [
        check("one answers", program, server, "answer", 1, True, 0.0),
        check("twenty never answer", program, server, "never", 20, False, LIMIT),
        check("twenty answer after 3 s", program, server, "3000", 20, True, 3.0),
        check("one is stopped", program, server, "answer", 1, False, LIMIT, stopped=True),
    ]
    return 0 if all(good) else 1


sys.exit(main())

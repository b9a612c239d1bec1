#!/usr/bin/env python3
"""Scans of a machine with a mount whose server never answers: whoever waits for them is not kept waiting."""

import os
import sys
import time
import unittest
from contextlib import suppress
from pathlib import Path

import scene
from fuse import FLUSH, STATFS, Server

LIMIT = 0.4  # of one mount, seconds
TRACED = "trace.level = MAX\ntrace.file = /dead/trace\n"


def require_fuse():
    try:
        os.close(os.open("/dev/fuse", os.O_RDWR))
    except OSError as reason:
        raise unittest.SkipTest(f"no /dev/fuse: {reason}") from reason


class DeadMountCase(unittest.TestCase):
    """A scene, and servers of mounts in it."""

    def setUp(self):
        require_fuse()
        self.slack = 10 if self.tools.sanitizer else 1
        self.scene = scene.Scene(
            self.tools, groups=["Partition", "UnixCpuMeter"],
            settings={"hwscanner.timeout": str(int(LIMIT * 1e6))},
            mtab="server:/share /dead nfs rw 0 0\n")
        self.servers = []

    def tearDown(self):
        for server in self.servers:
            server.end()
        scene.kill_strangers()
        self.scene.close()

    def mount(self, silent=(STATFS,), afterwards=()):
        self.servers.append(Server(self.scene.root / "dead", silent, afterwards))

    def scan(self, *options, **keywords):
        """Status, document and complaints of a scan that is waited for as agents do: to the end of its
        output first."""
        start = time.monotonic()
        scan = self.scene.start(*options, **keywords)
        stuck = scene.children_of(scan.pid)
        document, complaints = scan.communicate(timeout=60)
        self.assertLess(time.monotonic() - start, LIMIT + 1 * self.slack)
        return scan.returncode, document.decode(), complaints.decode(), stuck

    def assert_stuck(self, processes):
        """They are there, in the kernel, and hold nothing."""
        self.assertEqual(len(processes), 1)
        task = Path(f"/proc/{processes[0]}/task")
        tasks = [one for one in task.iterdir() if one.name != str(processes[0])]
        self.assertEqual(len(tasks), 1)
        self.assertIn("D (disk sleep)", (tasks[0] / "status").read_text())
        held = {os.readlink(one).split(":")[0] for one in (tasks[0] / "fd").iterdir()}
        self.assertEqual(held, {"pipe"}, "only the pipe to the parent that is gone")
        self.assertEqual(os.readlink(tasks[0] / "cwd"), str(self.scene.root))

    def assert_whole(self, document):
        self.assertTrue(document.startswith("<?xml"))
        self.assertIn(">/dead</FSMountPoint>", document)
        self.assertTrue(document.endswith("\n</Hardware>\n"))

    def end_of_mount(self):
        content = self.servers.pop().end()
        self.assertEqual(self.scene.left_behind(), [])
        return content


class DeadMounts(DeadMountCase):
    def test_reader_of_a_pipe_has_its_end_of_file_and_the_parent_its_status(self):
        self.mount()
        status, document, _, stuck = self.scan()
        self.assertEqual(status, 0)
        self.assert_whole(document)
        self.assert_stuck(stuck)
        self.end_of_mount()

    def test_second_scan_ends_beside_the_first_ones_stuck_process(self):
        self.mount()
        first, second = self.scan(), self.scan()
        self.assertEqual(first[:2], second[:2])
        self.assert_stuck(first[3])
        self.assert_stuck(second[3])
        self.end_of_mount()

    def test_output_file_on_that_mount_is_complete(self):
        self.mount()
        status, document, complaints, stuck = self.scan("-o", "/dead/out")
        self.assertEqual((status, document), (0, ""), complaints)
        self.assert_stuck(stuck)
        self.assert_whole(self.end_of_mount().decode())

    def test_standard_output_on_that_mount_that_cannot_even_be_closed_costs_a_second(self):
        self.mount(afterwards=[FLUSH])
        out = os.open(self.scene.root / "dead/out", os.O_WRONLY | os.O_CREAT)
        start = time.monotonic()
        scan = self.scene.start(stdout=out)
        complaints = scan.stderr.read()
        self.assertEqual(scan.wait(timeout=60), 0, complaints)
        self.assertLess(time.monotonic() - start, LIMIT + 2 * self.slack)
        self.assert_whole(self.end_of_mount().decode())
        with suppress(OSError):  # its server is gone
            os.close(out)

    def test_trace_on_that_mount_is_given_up_too(self):
        self.mount()
        (self.scene.root / scene.INSTALL / "DovTrace.properties").write_text(TRACED)
        status, document, _, stuck = self.scan()
        self.assertEqual(status, 0)
        self.assert_whole(document)
        self.assert_stuck(stuck)
        self.end_of_mount()

    def test_mount_that_answers_leaves_no_process(self):
        self.mount(silent=())
        status, document, _, _ = self.scan()
        self.assertEqual(status, 0)
        self.assert_whole(document)
        self.assertIn("<FSTotalSize>32</FSTotalSize>", document)
        self.assertEqual(self.scene.left_behind(), [])


class ModernDeadMounts(DeadMountCase):
    """The modern sources leave such mounts alone while an earlier scan still waits for one."""

    def setUp(self):
        require_fuse()
        self.slack = 10 if self.tools.sanitizer else 1
        self.scene = scene.Scene(self.tools, groups=["Partition"],
                                 settings={"hwscanner.sources": "modern",
                                           "hwscanner.mount_limit_ms": str(int(LIMIT * 1e3))})
        process = self.scene.root / "proc/self"
        process.mkdir(parents=True, exist_ok=True)
        (process / "mountinfo").write_text("36 1 0:40 / /dead rw - fuse.sshfs server:/share rw\n")
        (process / "exe").symlink_to(scene.PROGRAM)
        self.servers = []

    def test_second_scan_ends_beside_the_first_ones_stuck_process(self):
        self.mount()
        first, second = self.scan(), self.scan()
        self.assert_stuck(first[3])
        self.assertIn("sizes: file systems without an answer in time", first[1])
        self.assertIn("not measured: an earlier scan still waits", second[1])
        self.assertEqual([one for one in second[3] if scene.state_of(one) not in ("Z", "")], [])
        self.end_of_mount()
        self.assertNotIn("an earlier scan", self.scan()[1])

    def assert_stuck(self, processes):
        """It keeps its mark beside the pipe."""
        self.assertEqual(len(processes), 1)
        self.assertEqual(scene.state_of(processes[0]), "Z")


def run(tools, names):
    if names == ["modern"]:
        return scene.run_cases(ModernDeadMounts, tools, [])
    return scene.run_cases(DeadMounts, tools, names)


if __name__ == "__main__":
    sys.exit(scene.run_tests(run))

#!/usr/bin/env python3
"""Scans that make no progress for a quarter of an hour, which passes in seconds here (fast_clock.cpp)."""

import sys
import time
import unittest

import scene
from dead_mounts_test import require_fuse
from fuse import OPEN, STATFS, Server
from harness.programs import copy_program

GIVEN_UP = 71
QUARTER_OF_AN_HOUR = 900 / 300


class Deadlines(unittest.TestCase):
    clock = ""

    def setUp(self):
        if self.tools.sanitizer:
            self.skipTest("a sanitizer's runtime must be loaded first")

    def tearDown(self):
        scene.kill_strangers()
        self.scene.close()

    def scan(self, *options):
        copy_program(self.clock, self.scene.root, self.scene.root / "fast_clock.so")
        start = time.monotonic()
        scan = self.scene.start(*options, environment={"LD_PRELOAD": "/fast_clock.so"})
        output, said = scan.communicate(timeout=60)
        self.assertEqual(output, b"")
        return scan.returncode, said.decode(), time.monotonic() - start

    def test_command_without_end_is_killed_and_the_module_unloaded(self):
        self.scene = scene.Scene(self.tools, mount_seconds=3600)
        status, said, took = self.scan("-o", "/tmp/out")
        self.assertEqual(said, "quenlor: Storage does not end; the scan is given up\n")
        self.assertEqual(status, GIVEN_UP)
        self.assertGreater(took, QUARTER_OF_AN_HOUR)
        self.assertLess(took, QUARTER_OF_AN_HOUR + 10)
        self.assertNotIn("</Hardware>", (self.scene.root / "tmp/out").read_text())
        self.assertEqual(self.scene.left_behind(), [])

    def test_output_file_whose_server_dies_keeps_neither_the_parent_nor_its_reader(self):
        require_fuse()
        self.scene = scene.Scene(self.tools, groups=["Partition"],
                                 settings={"hwscanner.timeout": "100000"},
                                 mtab="server:/share /dead nfs rw 0 0\n")
        server = Server(self.scene.root / "dead", afterwards=[OPEN])
        status, said, took = self.scan("-o", "/dead/out")
        content = server.end()
        self.assertEqual(said, "quenlor: /dead did not answer within 100 ms, its sizes are 0\n"
                               "quenlor: Partition does not end; the scan is given up\n")
        self.assertEqual(status, GIVEN_UP)
        self.assertLess(took, QUARTER_OF_AN_HOUR + 10)
        self.assertTrue(content.startswith(b"<?xml"))
        self.assertNotIn(b"</Hardware>", content)
        self.assertEqual(self.scene.left_behind(), [])


def run(tools, arguments):
    Deadlines.clock = arguments[0]
    return scene.run_cases(Deadlines, tools, arguments[1:])


if __name__ == "__main__":
    sys.exit(scene.run_tests(run))

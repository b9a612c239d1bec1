#!/usr/bin/env python3
"""Two scans of one machine at once: the module that one has loaded is there as long as the other needs it."""

import signal
import sys
import time
import unittest

import scene

LOAD, UNLOAD = "--first-time sg", "--first-time -r sg"
# Takes its time over a question that only drives behind the module can answer.
MOUNT = """#!/bin/sh
sleep 0.6
[ -e /sys/module/sg ] || echo lost >> /tmp/lost
"""


class TwoScans(unittest.TestCase):
    def setUp(self):
        self.scene = scene.Scene(self.tools)
        self.scene.command("bin/mount", MOUNT)

    def tearDown(self):
        scene.kill_strangers()
        self.scene.close()

    def start_both(self):
        """The scan that loads the module, and one that finds it loaded; both need it."""
        first = self.scene.start()
        self.wait_until(self.scene.is_module_loaded)
        time.sleep(0.3)
        second = self.scene.start()
        self.wait_until(lambda: self.scene.modprobes() == [LOAD, LOAD])
        time.sleep(0.1)
        return first, second

    def wait_until(self, condition):
        end = time.monotonic() + 20
        while time.monotonic() < end:
            if condition():
                return
            time.sleep(0.001)
        self.fail("it did not come to that")

    def assert_whole(self, scan):
        document, complaints = scan.communicate(timeout=60)
        self.assertEqual((scan.returncode, complaints), (0, b""))
        self.assertTrue(document.endswith(b"\n</Hardware>\n"))

    def assert_module_was_there(self):
        self.assertFalse((self.scene.root / "tmp/lost").exists())
        self.assertEqual(self.scene.modprobes(), [LOAD, LOAD, UNLOAD])
        self.assertEqual(self.scene.left_behind(), [])

    def test_module_is_unloaded_by_the_scan_that_loaded_it_once_both_are_through(self):
        first, second = self.start_both()
        self.assert_whole(second)
        self.assert_whole(first)
        self.assert_module_was_there()

    def test_scan_that_is_ended_takes_its_module_along_once_the_other_is_through(self):
        first, second = self.start_both()
        first.terminate()
        self.assert_whole(second)
        self.assertEqual(first.wait(timeout=60), -signal.SIGTERM)
        first.communicate()
        self.assert_module_was_there()

    def test_module_that_was_loaded_before_stays(self):
        (self.scene.root / "sys/module/sg").mkdir()
        first, second = self.scene.start(), self.scene.start()
        second.terminate()
        self.assert_whole(first)
        self.assertEqual(second.wait(timeout=60), -signal.SIGTERM)
        second.communicate()
        self.assertNotIn(UNLOAD, self.scene.modprobes())
        self.assertTrue(self.scene.is_module_loaded())


if __name__ == "__main__":
    sys.exit(scene.run_tests(lambda tools, names: scene.run_cases(TwoScans, tools, names)))

#!/usr/bin/env python3
"""Callers of every kind, and what else ends or stops a scan than a signal to end."""

import ctypes
import os
import resource
import signal
import subprocess
import sys
import time
import unittest
from contextlib import suppress

import scene

NOBODY = 65534
CRASHED = 70
NEWPID = 0x20000000
# A sanitizer's leak checker finds its process by number, and needs a process and descriptors of its own.
WITHOUT_LEAK_CHECK = {"ASAN_OPTIONS": "detect_leaks=0"}


class Callers(unittest.TestCase):
    def setUp(self):
        self.scene = scene.Scene(self.tools, groups=["Storage", "UnixCpuMeter"], mount_seconds=1)
        os.mkfifo(self.scene.root / "tmp/fifo")

    def tearDown(self):
        scene.kill_strangers()
        self.scene.close()

    def start(self, **keywords):
        """A scan whose process is there already."""
        scan = self.scene.start(**keywords)
        self.addCleanup(scan.communicate)
        return scan, scene.children_of(scan.pid)[0]

    def assert_whole(self, scan):
        document, complaints = scan.communicate(timeout=60)
        self.assertEqual((scan.returncode, complaints), (0, b""))
        self.assertTrue(document.endswith(b"\n</Hardware>\n"))
        self.assertEqual(self.scene.left_behind(), [])

    def assert_ended(self, scan, status, complaints):
        document, said = scan.communicate(timeout=60)
        self.assertEqual((scan.returncode, said.decode()), (status, complaints))
        self.assertNotIn(b"</Hardware>", document)
        self.assertEqual(self.scene.left_behind(), [])

    def wait_for_module(self):
        """Until the scan knows that it has loaded the module."""
        for _ in range(5000):
            messages = self.scene.root / "tmp/modprobe.error"
            if self.scene.is_module_loaded() and not messages.exists():
                time.sleep(0.05)
                return
            time.sleep(0.001)
        self.fail("the module was not loaded")

    def test_scan_that_crashes_is_a_status_and_a_message_that_names_the_group(self):
        scan, child = self.start()
        self.wait_for_module()
        os.kill(child, signal.SIGABRT)
        self.assert_ended(scan, CRASHED, "quenlor: the scan crashed in Storage (signal 6)\n")
        self.assertEqual(self.scene.modprobes()[-1], "--first-time -r sg")

    def test_scan_that_is_killed_is_a_crash(self):
        scan, child = self.start()
        self.wait_for_module()
        os.kill(child, signal.SIGKILL)
        self.assert_ended(scan, CRASHED, "quenlor: the scan crashed in Storage (signal 9)\n")

    def test_parent_that_is_killed_takes_the_scan_with_it(self):
        scan, child = self.start()
        self.wait_for_module()
        scan.kill()
        scan.wait()
        for _ in range(100):
            if scene.state_of(child) in ("Z", ""):
                break
            time.sleep(0.01)
        self.assertIn(scene.state_of(child), ("Z", ""))

    def test_module_that_cannot_be_unloaded_is_said(self):
        scan, child = self.start()
        self.wait_for_module()
        (self.scene.root / "sys/module/sg/used").touch()
        os.kill(child, signal.SIGTERM)
        complaints = scan.communicate(timeout=60)[1].decode()
        self.assertEqual(scan.returncode, -signal.SIGTERM)
        self.assertEqual(complaints, "quenlor: the module sg, which was loaded for the scan, "
                                     "could not be unloaded\n")

    def test_second_signal_ends_the_parent_at_once(self):
        self.scene.command("sbin/modprobe", scene.MODPROBE.replace("rmdir", "sleep 60; rmdir"))
        scan, _ = self.start()
        self.wait_for_module()
        start = time.monotonic()
        scan.terminate()
        time.sleep(0.5)
        self.assertIsNone(scan.poll(), "it waits for the module to be unloaded")
        scan.send_signal(signal.SIGINT)
        self.assertEqual(scan.wait(timeout=60), -signal.SIGINT)
        self.assertLess(time.monotonic() - start, 5)
        scene.kill_strangers()

    def test_signal_to_the_program_and_then_to_its_group_is_one(self):
        self.scene.command("sbin/modprobe", scene.MODPROBE.replace("rmdir", "sleep 0.3; rmdir"))
        scan, _ = self.start()  # as timeout(1) ends a program
        self.wait_for_module()
        scan.terminate()
        time.sleep(0.01)
        os.killpg(scan.pid, signal.SIGTERM)
        self.assert_ended(scan, -signal.SIGTERM, "")

    def test_reader_that_goes_away_ends_the_scan_as_it_ends_any_program(self):
        scan, _ = self.start()
        scan.stdout.close()
        self.assertEqual(scan.wait(timeout=60), -signal.SIGPIPE)
        self.assertEqual(scan.stderr.read(), b"")
        self.assertEqual(self.scene.left_behind(), [])

    def test_hang_up_that_the_caller_ignores_is_ignored(self):
        scan, _ = self.start(before=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        self.wait_for_module()
        os.killpg(scan.pid, signal.SIGHUP)
        self.assert_whole(scan)

    def test_signal_that_the_caller_has_blocked_stays_blocked(self):
        scan, child = self.start(
            before=lambda: signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGTERM]))
        self.wait_for_module()
        os.kill(child, signal.SIGTERM)
        scan.terminate()
        self.assert_whole(scan)

    def test_caller_that_ignores_its_children_gets_the_document(self):
        scan, _ = self.start(before=lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN))
        self.assert_whole(scan)

    def test_scan_that_was_stopped_goes_on(self):
        scan, child = self.start()
        self.wait_for_module()
        os.killpg(scan.pid, signal.SIGTSTP)
        time.sleep(1)
        self.assertEqual([scene.state_of(one) for one in (scan.pid, child)], ["T", "T"])
        os.killpg(scan.pid, signal.SIGCONT)
        self.assert_whole(scan)

    def test_scan_ends_while_its_parent_is_stopped(self):
        scan, child = self.start()
        self.wait_for_module()
        os.kill(scan.pid, signal.SIGSTOP)
        self.assertTrue(scan.stdout.read().endswith(b"\n</Hardware>\n"))
        for _ in range(1000):
            if scene.state_of(child) == "Z":
                break
            time.sleep(0.01)
        os.kill(scan.pid, signal.SIGCONT)
        self.assertEqual(scan.wait(timeout=60), 0)

    def scan_alone(self, before):
        """A scan that can make no process, seen while it waits for somebody to read its document."""
        scan = self.scene.start("-o", "/tmp/fifo", before=before, environment=WITHOUT_LEAK_CHECK)
        for _ in range(200):
            with suppress(FileNotFoundError):
                if "fifo" in open(f"/proc/{scan.pid}/wchan").read():
                    break
            if scan.poll() is not None:
                self.fail(f"status {scan.returncode}: {scan.communicate()[1].decode()}")
            time.sleep(0.01)
        self.assertEqual(open(f"/proc/{scan.pid}/task/{scan.pid}/children").read(), "")
        with open(self.scene.root / "tmp/fifo", "rb") as fifo:
            first = fifo.read()
        scan.kill()
        scan.communicate()
        return first

    def test_user_without_processes_left_gets_a_scan_all_the_same(self):
        if os.geteuid() != 0 or open("/proc/self/uid_map").read().split()[2] == "1":
            self.skipTest("root is exempt from the limit, and there is nobody else here")

        def become_nobody():
            os.setgid(NOBODY)
            os.setuid(NOBODY)
            resource.setrlimit(resource.RLIMIT_NPROC, (1, 1))
        (self.scene.root / "tmp/fifo").chmod(0o666)
        self.assertTrue(self.scan_alone(become_nobody).startswith(b"<?xml"))

    def test_scan_with_hardly_a_descriptor_runs_alone(self):
        if self.tools.sanitizer:
            self.skipTest("a sanitizer tells good memory by means of a pipe")
        self.assertTrue(self.scan_alone(
            lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (5, 5))).startswith(b"<?xml"))

    def start_as_process_one(self):
        """Its caller, whose only child it is."""
        def enter():
            if ctypes.CDLL(None).unshare(NEWPID) != 0:
                os._exit(1)
            child = os.fork()
            if child != 0:
                os.closerange(0, 1024)  # whoever started this waits for the program to be there
                os._exit(abs(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])))
        caller = self.scene.start(before=enter, environment=WITHOUT_LEAK_CHECK)
        self.addCleanup(caller.communicate)
        return caller, scene.children_of(caller.pid)[0]

    def test_process_one_of_a_container_scans(self):
        caller, _ = self.start_as_process_one()
        self.assert_whole(caller)

    def test_process_one_of_a_container_ends_when_it_is_told_to(self):
        caller, _ = self.start_as_process_one()
        self.wait_for_module()
        first = scene.children_of(caller.pid)[0]
        os.kill(first, signal.SIGTERM)
        self.assert_ended(caller, 128 + signal.SIGTERM, "")

    def test_children_that_the_caller_had_before_are_left_alone(self):
        sleeper = []

        def enter():
            sleeper.append(os.fork())
            if sleeper[0] == 0:
                os.execv("/bin/sleep", ["sleep", "30"])
        scan, _ = self.start(before=enter, stdin=subprocess.PIPE)
        scan.terminate()
        self.assertEqual(scan.wait(timeout=5), -signal.SIGTERM)
        self.assertEqual(list(scene.strangers().values()), ["sleep"])


if __name__ == "__main__":
    sys.exit(scene.run_tests(lambda tools, names: scene.run_cases(Callers, tools, names)))

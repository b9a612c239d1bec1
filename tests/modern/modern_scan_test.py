#!/usr/bin/env python3
"""The shipped program with the modern sources on this very machine: what it promises of every machine.

Usage: modern_scan_test.py <quenlor> <data directory> <schema>
"""
import collections
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from two_scans import BOOT_TIMES, volatile_elements, without  # noqa: E402

PROGRAM, DATA, SCHEMA = (pathlib.Path(argument) for argument in sys.argv[1:4])

# Texts that stay the environment's.
ENVIRONMENT = {("Regional", "Local"), ("Regional", "TimeZoneName"), ("Regional", "TimeZoneDaylightName"),
               ("OperatingSystem", "OSMessagesLocale")}


class ModernScan(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.directory)
        self.directory.chmod(0o755)
        self.program = self.directory / "quenlor"
        shutil.copy2(PROGRAM, self.program)
        shutil.copy2(DATA / "DovHWConfig.xml", self.directory)
        self.configure("hwscanner.sources = modern\n")

    def configure(self, text):
        (self.directory / "quenlor.conf").write_text(text)

    def scan(self, *options, **changes):
        environment = {"PATH": os.environ["PATH"], **changes}
        return subprocess.run([self.program, *options], env=environment, capture_output=True, check=False)

    def document(self, *options, **changes):
        result = self.scan(*options, **changes)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def status_of(self, document, group):
        for row in ElementTree.fromstring(document).iter("ScanResult"):
            if row.findtext("Group") == group:
                return row.findtext("Status"), row.findtext("Reason") or ""
        return None

    def test_the_document_is_valid_and_ends_with_a_result_for_each_group(self):
        document = self.document()
        path = self.directory / "document.xml"
        path.write_bytes(document)
        subprocess.run(["xmllint", "--noout", "--schema", SCHEMA, path], check=True, capture_output=True)
        rows = list(ElementTree.fromstring(document))
        self.assertEqual(rows[-1].tag, "ScanResult")
        results = [row.findtext("Group") for row in rows if row.tag == "ScanResult"]
        self.assertEqual(len(results), 27)
        self.assertEqual(len(set(results)), 27)
        for row in rows:
            if row.tag == "ScanResult":
                self.assertNotIn(row.findtext("Status"), ("failed", "timed out"), row.findtext("Group"))

    def test_two_scans_differ_in_volatile_attributes_only(self):
        left_out = volatile_elements(DATA / "fields.tsv") | BOOT_TIMES
        self.assertGreater(len(left_out), 20)
        self.assertEqual(without(self.document(), left_out), without(self.document(), left_out))

    def test_every_locale_gives_the_same_bytes(self):
        left_out = volatile_elements(DATA / "fields.tsv") | ENVIRONMENT | BOOT_TIMES
        plain = without(self.document(LC_ALL="C"), left_out)
        self.assertEqual(plain, without(self.document(LC_ALL="C.UTF-8"), left_out))
        latin = self.directory / "locales"
        latin.mkdir()
        made = subprocess.run(["localedef", "-c", "-i", "de_DE", "-f", "ISO-8859-1", latin / "de_DE"],
                              capture_output=True, check=False)
        if (latin / "de_DE").exists():
            self.assertEqual(plain, without(self.document(LOCPATH=str(latin), LC_ALL="de_DE"), left_out))
        else:
            print("no Latin-1 locale could be made:", made.stderr.decode(), file=sys.stderr)

    def test_nobody_in_particular_gets_the_same_groups(self):
        if os.geteuid() != 0:
            self.skipTest("only root can become nobody")
        result = subprocess.run(["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", self.program],
                                capture_output=True, check=False)
        self.assertEqual(result.returncode, 0, result.stderr)
        groups = lambda text: [row.findtext("Group") for row in ElementTree.fromstring(text).iter("ScanResult")]
        self.assertEqual(groups(result.stdout), groups(self.document()))
        self.assertEqual(ElementTree.fromstring(result.stdout).findtext("ScanInfo/User"), "65534")

    def test_names_that_are_no_groups_are_told_and_the_others_scanned_once(self):
        groups = self.directory / "groups.xml"
        groups.write_text('<Hardware><Group Name="Machine"/><Group Name="Fan&#x85;"/>'
                          '<Group Name="Machine"/></Hardware>')
        result = self.scan("-c", str(groups))
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stderr.decode(), 'quenlor: "Fan\ufffd": no such group\n')
        self.assertEqual([row.tag for row in ElementTree.fromstring(result.stdout)], ["Machine", "ScanResult"])

    def test_a_scan_without_time_is_whole_and_says_so(self):
        self.configure("hwscanner.sources = modern\nhwscanner.scan_limit_ms = 1\n")
        document = self.document()
        status, _ = self.status_of(document, "UnixCpuMeter")
        self.assertEqual(status, "timed out")
        subprocess.run(["xmllint", "--noout", "--schema", SCHEMA, "-"], input=document, check=True,
                       capture_output=True)

    def test_other_values_of_the_keys_are_malformed(self):
        for text in ("hwscanner.sources = new\n", "hwscanner.sources = modern\nhwscanner.mount_limit_ms = 0\n",
                     "hwscanner.group_limit_ms = ten\n"):
            self.configure(text)
            result = self.scan()
            self.assertEqual(result.returncode, 21, text)
            self.assertEqual(result.stdout, b"")
            self.assertEqual(result.stderr.count(b"\n"), 1, result.stderr)

    def test_standard_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            result = subprocess.run([self.program], stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual(result.returncode, 4)
        self.configure("")
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run([self.program], stdout=full, stderr=subprocess.PIPE,
                                            check=False).returncode, 0)

    def test_mif_and_list_are_utf8_in_every_locale(self):
        for option in ("-m", "-l"):
            self.assertTrue(self.document(option, LC_ALL="C").decode("utf-8"))

    # --- what the kernel sees of it ---

    def trace(self):
        """Lines of the system calls of one scan that start something or open a file."""
        if shutil.which("strace") is None:
            self.skipTest("no strace")
        path = self.directory / "trace"
        traced = subprocess.run(
            ["strace", "-f", "-qq", "-o", path, "-e",
             "trace=execve,execveat,fork,vfork,clone,clone3,open,openat,openat2,init_module,finit_module",
             self.program], capture_output=True, check=False)
        if b"ptrace" in traced.stderr:
            self.skipTest("nobody may trace here")
        self.assertEqual(traced.returncode, 0, traced.stderr)
        return path.read_text(errors="replace").splitlines()

    def test_one_fork_one_execve_and_no_module(self):
        lines = self.trace()
        calls = collections.Counter(match[1] for line in lines if (match := re.search(r"\b(\w+)\(", line)))
        self.assertEqual(calls["execve"], 1)
        self.assertEqual(calls["execveat"] + calls["init_module"] + calls["finit_module"], 0)
        forks = [line for line in lines if re.search(r"\b(fork|vfork|clone|clone3)\(", line)
                 and "CLONE_THREAD" not in line]
        self.assertEqual(len(forks), 1, forks)

    def test_no_device_is_opened_and_every_file_once(self):
        opened = [match[1] for line in self.trace()
                  if (match := re.search(r'\bopen\w*\((?:AT_FDCWD, )?"([^"]*)"', line))]
        self.assertIn("/proc/self/mountinfo", opened)
        nodes = [path for path in opened if path.startswith("/dev/") and path != "/dev/null"
                 and not path.startswith("/dev/disk")]
        self.assertEqual(nodes, [])
        machine = [path for path in opened if path.startswith(("/sys/", "/proc/", "/etc/", "/run/", "/usr/lib/os"))
                   and not path.startswith("/etc/ld.so")]
        # A sanitizer's runtime looks at the map of its memory; the scanner has no use for it.
        twice = {path: count for path, count in collections.Counter(machine).items()
                 if count > 1 and path != "/proc/self/maps"}
        self.assertEqual(twice, {})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

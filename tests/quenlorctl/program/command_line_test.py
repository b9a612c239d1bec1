#!/usr/bin/env python3
"""quenlorctl as people call it: options, statuses, messages, files.

Usage: command_line_test.py <quenlorctl program> <source directory>
"""
import json
import os
import pathlib
import signal
import stat
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
import documents  # noqa: E402

PROGRAM, SOURCE = sys.argv[1:]
del sys.argv[1:]
DOCUMENTS = documents.goldens(SOURCE)
FULL = DOCUMENTS["machines/full-server"]


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.write("a.xml", FULL)
        self.write("b.xml", FULL.replace("<PageSize>4096", "<PageSize>8192"))
        self.write("bad.xml", "<Hardware>\n <Memory></Storage>")
        self.write("invalid.xml", FULL.replace(" IsKey=\"1\"", "", 1))

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")

    def run_program(self, *arguments, status=0, stdin=""):
        run = subprocess.run([PROGRAM, *arguments], input=stdin.encode(), capture_output=True, cwd=self.folder,
                             timeout=60)
        self.assertEqual(status, run.returncode, (arguments, run.stderr))
        return run.stdout.decode(), run.stderr.decode()


class Options(Program):
    def test_help_is_status_0_on_standard_output(self):
        for arguments in (["--help"], ["json", "--help"], ["diff", "-h"]):
            out, err = self.run_program(*arguments)
            self.assertIn("Usage: quenlorctl", out)
            self.assertEqual("", err)

    def test_version(self):
        out, err = self.run_program("--version")
        self.assertRegex(out, r"^quenlorctl \d+\.\d+\.\d+\n$")

    def test_usage_errors_are_status_2_on_standard_error(self):
        for arguments in ([], ["nothing"], ["--bogus"], ["json", "--bogus"], ["diff", "a.xml"], ["diff"],
                          ["diff", "a.xml", "b.xml", "a.xml"], ["diff", "--accept", "a.xml", "b.xml"],
                          ["diff", "--baseline", "a.xml", "a.xml", "b.xml"], ["rows", "--format", "xml", "a.xml"],
                          ["rows", "--group", "Nothing", "a.xml"], ["diff", "--group", "Nothing", "a.xml", "b.xml"],
                          ["rows", "--format", "csv", "a.xml"],
                          ["rows", "--format", "csv", "--group", "storage", "--group", "memory", "a.xml"]):
            out, err = self.run_program(*arguments, status=2)
            self.assertEqual("", out, arguments)
            self.assertTrue(err.startswith("quenlorctl: "), err)

    def test_minus_and_no_file_are_standard_input(self):
        for arguments in (["json"], ["json", "-"], ["validate"], ["rows"]):
            out, _ = self.run_program(*arguments, stdin=FULL)
            self.assertTrue(out)
        self.run_program("diff", "a.xml", "-", stdin=FULL)

    def test_end_of_options(self):
        self.write("-x.xml", FULL)
        self.run_program("json", "--", "-x.xml")

    def test_group_takes_one_name_and_leaves_the_files(self):
        out, _ = self.run_program("rows", "--group", "Memory Modules", "--group", "memory", "a.xml")
        self.assertEqual({"memory_modules", "memory"}, {json.loads(line)["group"] for line in out.splitlines()})


class Statuses(Program):
    def test_validate(self):
        self.assertEqual("a.xml: valid\n", self.run_program("validate", "a.xml")[0])
        out, _ = self.run_program("validate", "a.xml", "invalid.xml", status=1)
        self.assertIn("a.xml: valid\ninvalid.xml:14:", out)
        self.assertEqual(("", ""), self.run_program("validate", "--quiet", "invalid.xml", status=1))

    def test_worst_wins_and_the_others_are_done(self):
        out, err = self.run_program("validate", "invalid.xml", "bad.xml", "missing.xml", "a.xml", status=2)
        self.assertIn("a.xml: valid", out)
        self.assertEqual("quenlorctl: bad.xml:2:12: not XML: mismatched tag\n"
                         "quenlorctl: missing.xml: No such file or directory\n", err)

    def test_diff(self):
        self.assertEqual(("", ""), self.run_program("diff", "a.xml", "a.xml"))
        self.assertEqual("Memory\n  ~ Page Size: 4096 bytes to 8192 bytes\n",
                         self.run_program("diff", "a.xml", "b.xml", status=1)[0])
        self.assertEqual(("", ""), self.run_program("diff", "--quiet", "a.xml", "b.xml", status=1))
        self.assertEqual([{"group": "Memory", "identity": "", "kind": "changed", "attribute": "Page Size",
                           "old": 4096, "new": 8192}],
                         json.loads(self.run_program("diff", "--json", "a.xml", "b.xml", status=1)[0]))
        self.run_program("diff", "--group", "storage", "a.xml", "b.xml")

    def test_diff_needs_one_document_on_each_side(self):
        self.write("two.xml", FULL + FULL)
        for other in ("two.xml", "bad.xml", "missing.xml"):
            self.assertEqual("", self.run_program("diff", "a.xml", other, status=2)[0])
            self.assertEqual("", self.run_program("diff", other, "a.xml", status=2)[0])

    def test_full_output_is_trouble(self):
        with open("/dev/full", "w") as full:
            run = subprocess.run([PROGRAM, "json", "a.xml"], stdout=full, stderr=subprocess.PIPE, cwd=self.folder)
        self.assertEqual((2, b"quenlorctl: standard output: No space left on device\n"), (run.returncode, run.stderr))

    def test_reader_that_goes_away_ends_it_quietly(self):
        self.write("many.xml", FULL * 200)
        run = subprocess.Popen([PROGRAM, "json", "many.xml"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               cwd=self.folder)
        run.stdout.read(10)
        run.stdout.close()
        self.assertEqual(b"", run.stderr.read())
        run.stderr.close()
        self.assertEqual(-signal.SIGPIPE, run.wait())


class Baseline(Program):
    def mode(self, name):
        return stat.S_IMODE(os.stat(self.folder / name).st_mode)

    def test_first_time_there_is_nothing_to_compare_with(self):
        self.run_program("diff", "--baseline", "base.xml", "a.xml", status=2)
        self.assertEqual(("", ""), self.run_program("diff", "--baseline", "base.xml", "--accept", "a.xml"))
        self.assertEqual(FULL, (self.folder / "base.xml").read_text())
        self.assertEqual(0o600, self.mode("base.xml"))

    def test_differences_stay_until_they_are_accepted(self):
        self.run_program("diff", "--baseline", "base.xml", "--accept", "a.xml")
        os.chmod(self.folder / "base.xml", 0o640)
        for _ in range(2):
            self.assertIn("8192", self.run_program("diff", "--baseline", "base.xml", "b.xml", status=1)[0])
        self.assertIn("8192", self.run_program("diff", "--baseline", "base.xml", "--accept", "b.xml", status=1)[0])
        self.run_program("diff", "--baseline", "base.xml", "b.xml")
        self.assertEqual(0o640, self.mode("base.xml"))

    def test_packed_document_is_accepted_as_it_reads(self):
        subprocess.run(["gzip", "a.xml"], cwd=self.folder, check=True)
        self.run_program("diff", "--baseline", "base.xml", "--accept", "a.xml.gz")
        self.assertEqual(FULL, (self.folder / "base.xml").read_text())

    def test_damaged_document_is_never_accepted(self):
        self.run_program("diff", "--baseline", "base.xml", "--accept", "a.xml")
        self.run_program("diff", "--baseline", "base.xml", "--accept", "bad.xml", status=2)
        self.assertEqual(FULL, (self.folder / "base.xml").read_text())

    def test_file_behind_a_link_is_replaced_and_the_link_stays(self):
        self.write("real.xml", FULL)
        os.symlink("real.xml", self.folder / "base.xml")
        self.run_program("diff", "--baseline", "base.xml", "--accept", "b.xml", status=1)
        self.assertTrue((self.folder / "base.xml").is_symlink())
        self.assertIn("8192", (self.folder / "real.xml").read_text())

    def test_nothing_is_left_beside_what_cannot_be_written(self):
        self.run_program("diff", "--baseline", "nowhere/base.xml", "--accept", "a.xml", status=2)


class Split(Program):
    def test_each_group_has_a_file(self):
        self.assertEqual(("", ""), self.run_program("rows", "--split", "out", "a.xml", "b.xml"))
        names = sorted(path.name for path in (self.folder / "out").iterdir())
        self.assertIn("storage.ndjson", names)
        self.assertTrue(all(name.endswith(".ndjson") for name in names), names)
        together = "".join((self.folder / "out" / name).read_text() for name in names)
        self.assertEqual(sorted(self.run_program("rows", "a.xml", "b.xml")[0].splitlines()), sorted(together.splitlines()))

    def test_csv_has_a_header_in_each_file(self):
        self.run_program("rows", "--format", "csv", "--split", "out", "--group", "memory", "--group", "storage", "a.xml")
        for name in ("memory.csv", "storage.csv"):
            self.assertTrue((self.folder / "out" / name).read_text().startswith("host,host_rank,scan,group,row,"))

    def test_folder_that_cannot_be_made_is_trouble(self):
        self.run_program("rows", "--split", "a.xml/out", "a.xml", status=2)


class Hostile(Program):
    def test_file_names_and_texts_steer_no_terminal(self):
        self.write("\x1b]0;x\x07.xml", FULL.replace("6L020J1", "\u009b2J\u202e").replace(" IsKey=\"1\"", "", 1))
        for arguments in (["validate"], ["json"], ["rows"], ["diff", "a.xml"]):
            out, err = self.run_program(*arguments, "\x1b]0;x\x07.xml", status=1 if arguments[0] in ("validate", "diff") else 0)
            for character in "\x1b\x07\u009b\u202e":
                self.assertNotIn(character, out + err)
        out, err = self.run_program("json", "\x1b[31m", status=2)
        self.assertEqual("quenlorctl: \ufffd[31m: No such file or directory\n", err)

    def test_every_document_of_the_goldens_is_valid(self):
        for name, text in DOCUMENTS.items():
            with self.subTest(name):
                self.run_program("validate", stdin=text)


if __name__ == "__main__":
    unittest.main()

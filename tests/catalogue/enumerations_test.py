#!/usr/bin/env python3
"""Tests of data/enumerations.py: what it refuses would end up in every machine's inventory."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

GENERATOR = pathlib.Path(__file__).parents[2] / "data" / "enumerations.py"


class EnumerationsTest(unittest.TestCase):
    def generate(self, content):
        """Exit status, error text and generated text for one list."""
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder)
            (path / "list.tsv").write_bytes(content)
            run = subprocess.run(
                [sys.executable, GENERATOR, path / "out.cpp", f"LIST={path / 'list.tsv'}"],
                capture_output=True, text=True, check=False)
            out = path / "out.cpp"
            return run.returncode, run.stderr, out.read_text() if out.exists() else ""

    def assert_refused(self, content, reason):
        status, error, output = self.generate(content)
        self.assertNotEqual(status, 0)
        self.assertIn(reason, error)
        self.assertEqual(output, "")

    def test_keeps_order_and_trailing_blanks_and_adds_the_end(self):
        status, error, output = self.generate(b"# comment\n7\tSeven \n1\tOne\n")
        self.assertEqual((status, error), (0, ""))
        self.assertIn('LIST[] = {\n    {7, "Seven "},\n    {1, "One"},\n    {kCatalogueEnd, nullptr},\n};',
                      output)

    def test_last_line_may_lack_its_newline(self):
        self.assertIn('{2, "Two"}', self.generate(b"2\tTwo")[2])

    def test_refuses_texts_that_documents_would_have_to_escape(self):
        for text in (b"a<b", b"a&b", b'a"b', b"a\\b", b"a\tb", b"a\r"):
            self.assert_refused(b"1\t" + text + b"\n", "list.tsv:1: the text holds")

    def test_refuses_rows_that_are_not_value_tab_text(self):
        for row in (b"1 One", b"", b"x\tOne", b"-1\tOne", b"4294967295\tEnd"):
            self.assert_refused(b"1\tOne\n" + row + b"\n", "list.tsv:2: not a value")

    def test_refuses_a_value_that_appears_twice(self):
        self.assert_refused(b"1\tOne\n1\tUno\n", "appears twice")

    def test_lists_joined_by_a_plus_follow_each_other_and_share_no_value(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder)
            (path / "a.tsv").write_text("2\tTwo\n1\tOne\n")
            (path / "b.tsv").write_text("# later\n3\tThree\n")
            command = [sys.executable, GENERATOR, path / "out.cpp"]
            subprocess.run(command + [f"LIST={path / 'a.tsv'}+{path / 'b.tsv'}"], check=True)
            self.assertIn('{2, "Two"},\n    {1, "One"},\n    {3, "Three"},\n    {kCatalogueEnd',
                          (path / "out.cpp").read_text())
            run = subprocess.run(command + [f"LIST={path / 'a.tsv'}+{path / 'a.tsv'}"],
                                 capture_output=True, text=True, check=False)
            self.assertIn("appears twice", run.stderr)

    def test_refuses_an_empty_list(self):
        self.assert_refused(b"# nothing\n", "empty")

    def test_refuses_other_characters_than_ascii(self):
        self.assert_refused("1\té\n".encode(), "ascii")

    def test_refuses_a_missing_list(self):
        run = subprocess.run([sys.executable, GENERATOR, "/dev/null", "LIST=/nonexistent"],
                             capture_output=True, text=True, check=False)
        self.assertNotEqual(run.returncode, 0)
        self.assertIn("/nonexistent", run.stderr)


if __name__ == "__main__":
    unittest.main()

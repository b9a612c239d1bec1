#!/usr/bin/env python3
"""Tests of the generator of the flags' tables. Usage: field_rows_test.py <tools directory>"""
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv.pop(1))

import field_rows  # noqa: E402

SIZE = "Storage\tSize 1\tMB\tsource\talways\tstable/volatile\tnone\t1,2/-\t1048576\tsize_1\n"


class FieldRows(unittest.TestCase):
    def rows(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "fields.tsv")
            path.write_text("Storage" + "\t" * 9 + "storage\n" + text)
            return field_rows.read_rows(path)

    def test_row_has_both_words_and_a_bit_for_each_rank(self):
        groups, fields = self.rows(SIZE)
        self.assertEqual(['    {"Storage", "Storage", "storage"},\n'], groups)
        self.assertEqual(['    {"Storage", "Size 1", "Size1", "MB", {Change::kStable, Change::kVolatile}, '
                          '{Privacy::kNone, Privacy::kNone}, {3, 0}, 1048576, "size_1", "", false},\n'], fields)

    def test_unit_that_says_more_than_a_unit_stands_behind_no_number(self):
        self.assertIn('"Size1", "", ', self.rows(SIZE.replace("MB", "MB, or so"))[1][0])
        self.assertIn('"Size1", "MB", ', self.rows(SIZE.replace("MB", "MB; or so"))[1][0])

    def test_line_that_cannot_be_a_row_is_named(self):
        for bad in (SIZE.replace("stable/volatile", "a/b/c"), SIZE.replace("size_1", 'si"ze'),
                    SIZE.replace("1,2/-", "first")):
            with self.assertRaisesRegex(ValueError, "fields.tsv:2: "):
                self.rows(bad)

    def test_element_names_are_what_xml_allows(self):
        for name, element in (("36-bit Page", "_36-bitPage"), ("MMX(tm) T", "MMXtmT"), ("a/b", "ab"),
                              (" -x", "x")):
            self.assertEqual(element, field_rows.element_name(name))


if __name__ == "__main__":
    unittest.main()

#!/usr/bin/env python3
"""Reads the JSON and the rows of every golden document back with another library, and compares them with the
document as a third one reads it. Types come from the schema.

Usage: json_test.py <quenlorctl program> <source directory> <schema>
"""
import csv
import io
import json
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

sys.dont_write_bytecode = True
import documents  # noqa: E402

PROGRAM, SOURCE, SCHEMA = sys.argv[1:]
del sys.argv[1:]
XS = "{http://www.w3.org/2001/XMLSchema}"


def run(document, *arguments):
    done = subprocess.run([PROGRAM, *arguments], input=document.encode(), capture_output=True, timeout=60)
    if done.returncode or done.stderr:
        raise AssertionError(done.stderr)
    return done.stdout.decode("ascii" if "csv" not in arguments else "utf-8")


def types():
    """{(group, attribute): name of the type}"""
    found = {}
    for group in ElementTree.parse(SCHEMA).getroot().iter(XS + "element"):
        for element in group.findall(f"./{XS}complexType/{XS}all/{XS}element"):
            extension = element.find(f".//{XS}extension")
            found[group.get("name"), element.get("name")] = element.get("type") or extension.get("base")
    return found


def flags():
    """{(group, attribute): (column name, whether it says yes or no)}"""
    found = {}
    for line in open(SOURCE + "/data/fields.tsv", encoding="utf-8"):
        columns = line.rstrip("\n").split("\t")
        if not line.startswith("#") and columns[1]:
            found[columns[0], columns[1]] = columns[9], columns[2] == "Y or N"
    return found


def element_name(name):
    element = "".join(c for c in name if c.isascii() and (c.isalnum() or c in "_:.-"))
    return "_" + element if element[0].isdigit() else element


TYPES = types()
FLAGS = {tuple(map(element_name, names)): flag for names, flag in flags().items()}
SINGLE = {"ComponentID", "Memory", "OperatingSystem", "Regional", "UNIXSystemParams", "ScanInfo", "SMBIOS", "Lpar",
          "HostComponentID", "CpuMeter", "UnixCpuMeter", "Machine"}


def value(group, element):
    text = element.text or ""
    kind = TYPES[group, element.tag]
    if kind in ("number", "xs:long"):
        return int(text)
    if kind == "float":
        return float(text)
    if kind == "dateTime":
        return f"{text[:10]}T{text[11:13]}:{text[14:16]}:{text[17:19]}"
    if FLAGS[group, element.tag][1]:
        return {"Y": True, "N": False}[text]
    return text


def is_unknown(group, element):
    """A time, or a yes or no, that stands there empty."""
    return not element.text and (TYPES[group, element.tag] == "dateTime" or FLAGS[group, element.tag][1])


def expected(document, convert):
    groups = {}
    for row in ElementTree.fromstring(document.encode()):
        found = {element.tag: convert(row.tag, element) for element in row
                 if convert is not value or not is_unknown(row.tag, element)}
        if row.tag in SINGLE:
            groups[row.tag] = found
        else:
            groups.setdefault(row.tag, []).append(found)
    return groups


class Json(unittest.TestCase):
    def test_documents_are_what_another_reader_sees(self):
        for name, document in documents.goldens(SOURCE).items():
            sources = "modern" if "<Sources>modern</Sources>" in document else "classic"
            whole = {"format": 1, "sources": sources, "file": "-", "groups": expected(document, value)}
            with self.subTest(name):
                self.assertEqual(whole, json.loads(run(document, "json")))
                self.assertEqual(whole, json.loads(run(document, "json", "--pretty")))

    def test_raw_values_are_texts(self):
        for name, document in documents.goldens(SOURCE).items():
            with self.subTest(name):
                self.assertEqual(expected(document, lambda _, element: element.text or ""),
                                 json.loads(run(document, "json", "--raw"))["groups"])

    def test_rows_are_the_rows_of_the_documents(self):
        for name, document in documents.goldens(SOURCE).items():
            rows = [json.loads(line) for line in run(document, "rows").splitlines()]
            elements = [row for row in ElementTree.fromstring(document.encode())]
            with self.subTest(name):
                self.assertEqual(len(elements), len(rows))
                for row, element in zip(rows, elements):
                    for head in ("host", "host_rank", "scan", "group", "row"):
                        row.pop(head, None)
                    wanted = {FLAGS[element.tag, attribute.tag][0]: value(element.tag, attribute)
                              for attribute in element if not is_unknown(element.tag, attribute)}
                    self.assertEqual(wanted, row)

    def test_csv_has_as_many_columns_in_every_row(self):
        for name, document in documents.goldens(SOURCE).items():
            rows = list(csv.reader(io.StringIO(run(document, "rows", "--format", "csv", "--group", "Partition"), newline="")))
            with self.subTest(name):
                self.assertEqual(document.count("<Partition "), max(0, len(rows) - 1))
                self.assertLessEqual(len({len(row) for row in rows}), 1)


if __name__ == "__main__":
    unittest.main()

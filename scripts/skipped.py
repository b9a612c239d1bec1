#!/usr/bin/env python3
"""Says how many tests of a ctest run were skipped, and why. Usage: skipped.py <JUnit file of ctest>"""
import collections
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

# A program that tells why, as the fixture machines do; and GoogleTest, with the reason in the next line.
TOLD = re.compile(r"^skipped: (.+)$", re.MULTILINE)
GTEST = re.compile(r"^\S+:\d+: Skipped\n(.+)$", re.MULTILINE)

# How ctest notes that the test itself said so; it also notes what lacks its program or its fixture.
BY_ITSELF = "SKIP_"


def skips_of(case):
    """Reasons, one for each test that this ctest test left out."""
    output = case.findtext("system-out") or ""
    reasons = GTEST.findall(output)
    noted = case.find("skipped")
    if not reasons and noted is not None and noted.get("message", "").startswith(BY_ITSELF):
        reasons = TOLD.findall(output)[-1:] or ["no reason told"]
    return [reason.strip() for reason in reasons]


def report(cases, name):
    """Lines: the number of all, then a line per reason with the tests that it kept from running."""
    by_reason = collections.defaultdict(list)
    for case in cases:
        for reason in skips_of(case):
            by_reason[reason].append(case.get("name"))
    count = sum(map(len, by_reason.values()))
    lines = [f"{name}: {count} tests were skipped"] if count else []
    for reason, tests in sorted(by_reason.items(), key=lambda item: -len(item[1])):
        kinds = collections.Counter(test.split(".")[0] for test in tests)
        told = ", ".join(f"{number} {kind}" for kind, number in kinds.items())
        lines.append(f"  {reason} ({told})")
    return lines


def main():
    path = pathlib.Path(sys.argv[1])
    for line in report(ElementTree.parse(path).iter("testcase"), path.stem):
        print(line)


if __name__ == "__main__":
    main()

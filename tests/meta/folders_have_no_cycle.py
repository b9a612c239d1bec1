#!/usr/bin/env python3
"""Fails when folders include each other's headers in a circle.

Usage: folders_have_no_cycle.py <source directory>
"""
import collections
import graphlib
import pathlib
import re
import sys

FOLDERS = ("base", "log", "config", "xmltree", "host", "vtcmd", "com", "SMBIOS", "linux",
           "scanengine")
INCLUDE = re.compile(r'^#include "([^"]+)/[^"/]+"', re.MULTILINE)


def uses_of(source):
    """{folder: folders whose headers its files include}"""
    uses = collections.defaultdict(set)
    for top in FOLDERS:
        for path in (source / top).rglob("*"):
            if path.suffix in (".h", ".cpp"):
                folder = str(path.parent.relative_to(source))
                uses[folder] |= set(INCLUDE.findall(path.read_text())) - {folder}
    return uses


def main():
    uses = uses_of(pathlib.Path(sys.argv[1]))
    try:
        order = list(graphlib.TopologicalSorter(uses).static_order())
    except graphlib.CycleError as error:
        print("a circle: " + " -> ".join(reversed(error.args[1])))
        return 1
    print("from the bottom to the top: " + ", ".join(order))
    return 0 if len(order) > len(FOLDERS) else 1


if __name__ == "__main__":
    sys.exit(main())

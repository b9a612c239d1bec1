#!/usr/bin/env python3
"""Fails when a room of the program uses one above it, or folders use each other in a circle.

The order of the rooms is that of src/CMakeLists.txt. Usage: folders_have_no_cycle.py <source directory>
"""
import collections
import graphlib
import pathlib
import re
import sys

ROOM = re.compile(r"^add_subdirectory\((\w+)\)", re.MULTILINE)
INCLUDE = re.compile(r'^#include "([^"]+)/[^"/]+"', re.MULTILINE)


def uses_of(source):
    """{folder: folders whose headers its files include}"""
    uses = collections.defaultdict(set)
    for path in source.rglob("*"):
        if path.suffix in (".h", ".cpp"):
            folder = str(path.parent.relative_to(source))
            uses[folder] |= set(INCLUDE.findall(path.read_text())) - {folder}
    return uses


def upward_uses(uses, rooms):
    """Texts of the uses that a room makes of one above it, or of none that is listed."""
    height = {room: place for place, room in enumerate(rooms)}
    top = lambda folder: folder.split("/")[0]
    return [f"{folder} uses {used}" for folder in sorted(uses) for used in sorted(uses[folder])
            if height.get(top(used), len(rooms)) > height.get(top(folder), -1)]


def main():
    source = pathlib.Path(sys.argv[1]) / "src"
    uses = uses_of(source)
    rooms = ROOM.findall((source / "CMakeLists.txt").read_text())
    try:
        order = list(graphlib.TopologicalSorter(uses).static_order())
    except graphlib.CycleError as error:
        print("a circle: " + " -> ".join(reversed(error.args[1])))
        return 1
    upward = upward_uses(uses, rooms)
    print("\n".join(upward) or "from the bottom to the top: " + ", ".join(order))
    return 1 if upward or len(order) <= len(rooms) else 0


if __name__ == "__main__":
    sys.exit(main())

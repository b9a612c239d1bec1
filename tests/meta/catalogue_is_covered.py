#!/usr/bin/env python3
"""Fails when a group of the catalogue lacks its collector, its unit test, or a document that is compared, or
when no recorded machine has an attribute of the modern sources.

Usage: catalogue_is_covered.py <source directory> <describe_catalogue program>
"""
import pathlib
import re
import subprocess
import sys


def groups_of(program):
    """[(id, catalogue name, element name)] in catalogue order."""
    listing = subprocess.run([program, "groups"], check=True, capture_output=True, text=True).stdout
    return [line.split("\t") for line in listing.splitlines()]


def sources_of(source):
    """{identifier in namespace group: (classic class or "nullptr", modern collector)} of the factory's table."""
    text = (source / "src/groups/createGroup.cpp").read_text()
    return {group: (classic, modern) for group, classic, modern in
            re.findall(r"\{group::(k\w+), (?:create<)?(\w+)>?, (\w+)\}", text)}


def identifiers_of(source):
    """{group id: identifier in namespace group}"""
    text = (source / "src/catalogue/Catalogue.h").read_text()
    return {number: name for name, number in
            re.findall(r"inline constexpr uint32_t (k\w+) = (\d+);", text)}


def modern_attributes(source):
    """(group, attribute) of what the modern sources add to the catalogue."""
    group = ""
    for line in (source / "tests/catalogue/modern-catalogue.txt").read_text().splitlines():
        kind, name = re.match(r'(group|\d+) (?:\d+ )?"([^"]*)"', line).groups()
        if kind == "group":
            group = name
        else:
            yield group, name


def element_name(name):
    return re.sub(r"[^A-Za-z0-9_.:-]", "", name)


def recorded_elements(source):
    """{(row element, attribute element)} of all golden documents of recorded machines."""
    found = set()
    for path in (source / "tests/recorded").rglob("golden.xml"):
        row = ""
        for tabs, element in re.findall(r"^(\t+)<([^ />]+)", path.read_text(), re.MULTILINE):
            row = element if tabs == "\t" else row
            found.add((row, element))
    return found


def main():
    source, program = pathlib.Path(sys.argv[1]), sys.argv[2]
    sources, identifiers = sources_of(source), identifiers_of(source)
    tests = "".join(path.read_text() for path in (source / "tests").rglob("*.cpp"))
    goldens = "".join(path.read_text() for path in (source / "tests/machines").rglob("golden.xml"))
    # A VMware guest can only be had as a virtual machine.
    guest = "".join(path.read_text() for path in (source / "tests/vm").glob("*.py"))
    missing = []
    for number, name, element in groups_of(program):
        classic, modern = sources.get(identifiers.get(number), ("nullptr", None))
        if modern in (None, "nullptr"):
            missing.append(f"{name}: no line with a modern source in src/groups/createGroup.cpp")
        for collector in {classic, modern} - {"nullptr", None}:
            if not re.search(rf"\b{collector}\b", tests):
                missing.append(f"{name}: no unit test uses {collector}")
        if classic == "nullptr":
            continue  # fixture machines with goldens are scanned with the classic sources
        if f"<{element} version=" not in goldens and f'row("{element}")' not in guest:
            missing.append(f"{name}: in no golden document and not compared in the virtual machine")
    recorded = recorded_elements(source)
    for group, attribute in modern_attributes(source):
        if (element_name(group), element_name(attribute)) not in recorded:
            missing.append(f"{group}: {attribute}: no recorded machine has it")
    print("\n".join(missing) or "every group has a collector, a unit test and a golden document")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())

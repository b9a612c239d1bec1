#!/usr/bin/env python3
"""Writes the C++ source of PciVenTable and PciDevTable.

Usage: pci-generate.py pci-vendors.tsv pci-devices.tsv output.cpp
"""
import sys
from pathlib import Path


def rows(path):
    """The columns of each row; the numbers of the first columns are checked by the compiler."""
    lines = Path(path).read_text(encoding="ascii").splitlines()
    return [line.split("\t") for line in lines if not line.startswith("#")]


def literal(text):
    """The tables hold nothing that a C string literal would need to escape."""
    assert '"' not in text and "\\" not in text and "??" not in text, text
    return f'"{text}"'


def main():
    vendors, devices, output = sys.argv[1:]
    # The arrays have one and two rows more than are searched; those stay zero.
    lines = ['#include "readers/pci/PciLookup.h"', "", "namespace quenlor {", ""]
    lines.append("const PciVendor PciVenTable[kPciVendorStorage] = {")
    for vendor, short, long in rows(vendors):
        lines.append(f"    {{0x{vendor}, {literal(short)}, {literal(long)}}},")
    lines += ["};", "", "const PciDevice PciDevTable[kPciDeviceStorage] = {"]
    for vendor, device, chip, description in rows(devices):
        lines.append(f"    {{0x{vendor}, 0x{device}, {literal(chip)}, {literal(description)}}},")
    lines += ["};", "", "}  // namespace quenlor", ""]
    Path(output).write_text("\n".join(lines), encoding="ascii")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Writes the fuzz targets' seed inputs from the firmware images.

usage: make_seeds.py <make_firmware> <corpus-folder>
"""
import pathlib
import struct
import subprocess
import sys
import tempfile

ENTRY_POINT_SIZE = 32
SEGMENT = 0xF0000


def dump_of(make_firmware, name):
    with tempfile.NamedTemporaryFile() as out:
        subprocess.run([make_firmware, "--dump", name, out.name], check=True)
        return pathlib.Path(out.name).read_bytes()


def table_seed(dump):
    count, = struct.unpack_from("<H", dump, 28)
    return bytes([dump[7], dump[6]]) + struct.pack("<H", count) + dump[ENTRY_POINT_SIZE:]


def segment_seed(dump):
    """Entry point and table side by side; the target puts the checksums right."""
    segment = bytearray(dump)
    struct.pack_into("<I", segment, 24, SEGMENT + ENTRY_POINT_SIZE)
    return b"\x01" + bytes(segment)


def main():
    make_firmware, corpus = sys.argv[1], pathlib.Path(sys.argv[2])
    names = subprocess.run([make_firmware, "--list"], check=True, capture_output=True, text=True)
    for kind, seed in (("smbios_table", table_seed), ("smbios_segment", segment_seed)):
        folder = corpus / kind
        folder.mkdir(parents=True, exist_ok=True)
        for name in names.stdout.split():
            (folder / name).write_bytes(seed(dump_of(make_firmware, name)))
    false_anchor = b"\x01_DMI_\x90" + struct.pack("<HIH", 64, 0x1000, 7) + b"\x24" + bytes(16)
    real = segment_seed(dump_of(make_firmware, "server-2.4"))[1:]
    padding = bytes(48 - (len(false_anchor) - 1))
    moved = bytearray(real)
    struct.pack_into("<I", moved, 24, SEGMENT + 48 + ENTRY_POINT_SIZE)
    (corpus / "smbios_segment" / "two-anchors").write_bytes(false_anchor + padding + moved)


if __name__ == "__main__":
    main()

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


def modern_seed(dump):
    """The length of the entry point, the entry point, the table, as the kernel shows them."""
    entry_point = dump[: ENTRY_POINT_SIZE - 1]
    return bytes([len(entry_point)]) + entry_point + dump[ENTRY_POINT_SIZE:]


def entry_point_64(version, size):
    bytes_ = bytearray(b"_SM3_\0\x18" + bytes(version) + b"\0\x01\0" + struct.pack("<IQ", size, 0))
    bytes_[5] = -sum(bytes_) & 0xFF
    return bytes(bytes_)


def structure(kind, fields, strings=()):
    head = struct.pack("<BBH", kind, 4 + len(fields), 0)
    texts = b"".join(text + b"\0" for text in strings) or b"\0"
    return head + fields + texts + b"\0"


def modern_seeds():
    """A table of today; every type at full length of FF bytes, that send readers to other fields."""
    today = b"".join((
        structure(0, b"\1\2\0\xe0\3\xff" + bytes(9) + b"\x08\5\x1b\xff\xff\x20\0",
                  (b"Maker", b"1.2", b"02/29/2024")),
        structure(1, b"\1\2\0\3" + bytes(range(16)) + b"\6\4\5",
                  (b"Maker", b"Product", b"S1", b"SKU", b"Family")),
        structure(2, b"\1\2\0\0\0\x09\0\3\0\x0a\0", (b"Maker", b"Board")),
        structure(3, b"\1\x97\0\0\0\3\3\3\3" + bytes(4) + b"\2\2\1\3abc\2",
                  (b"Maker", b"SKU")),
        structure(4, b"\1\3\xfe\2" + bytes(8) + b"\3\x90\x64\0\xa0\x0f\x34\x08\x41\x3f"
                  + b"\xff" * 6 + b"\0\0\0\xff\xff\xff\xfc\0\xb3\0\2\1\2\1\4\2\4\2\0",
                  (b"CPU 1", b"Intel", b"Brand")),
        structure(7, b"\1\x82\1\xff\xff\xff\xff\2\0\2\0\0\5\5\x08"
                  + b"\0\0\0\x80\0\4\0\0", (b"L3",)),
        structure(9, b"\1\xb6\x0d\4\4\1\0\x0c\1\0\0\x3b\x02\x10\1" + bytes(5), (b"PCIe",)),
        structure(16, b"\3\3\6\0\0\0\x80\xfe\xff\2\0" + struct.pack("<Q", 1 << 40)),
        structure(17, b"\0\0\xfe\xff\x50\0\x40\0\xff\x7f\x09\0\1\2\x22\x80\0\xff\xff\3\4\0\5"
                  + b"\2\0\0\1\0\xff\xff" + bytes(6) + b"\3" + bytes(43)
                  + struct.pack("<II", 70000, 66000),
                  (b"DIMM", b"Bank", b"Maker", b"Serial", b"Part")),
        structure(24, b"\x40"),
        structure(38, b"\1\x20\x20\xff" + struct.pack("<Q", 0xCA3) + b"\0\0"),
        structure(39, b"\1\1\2\0\0\0\0\0\x4c\x04\xa2\x11" + b"\xff" * 6, (b"Bay", b"PSU")),
        structure(43, b"INTC\2\0" + bytes(8) + b"\0" + bytes(12)),
        structure(127, b"")))
    kinds = (0, 1, 2, 3, 4, 5, 6, 7, 9, 16, 17, 24, 34, 38, 39, 43, 126, 127)
    ones = b"".join(structure(kind, b"\xff" * 120, (b"text",)) for kind in kinds)
    for name, table in (("today-3.7", today), ("all-ones", ones), ("cut", today[:-90]),
                        ("one-zero", today.replace(b"\0\0\x18", b"\0\x18"))):
        entry_point = entry_point_64((3, 7), len(table))
        yield name, bytes([len(entry_point)]) + entry_point + table


def main():
    make_firmware, corpus = sys.argv[1], pathlib.Path(sys.argv[2])
    names = subprocess.run([make_firmware, "--list"], check=True, capture_output=True, text=True)
    for kind, seed in (("smbios_table", table_seed), ("smbios_segment", segment_seed),
                       ("dmi_table", modern_seed)):
        folder = corpus / kind
        folder.mkdir(parents=True, exist_ok=True)
        for name in names.stdout.split():
            (folder / name).write_bytes(seed(dump_of(make_firmware, name)))
    for name, seed in modern_seeds():
        (corpus / "dmi_table" / name).write_bytes(seed)
    false_anchor = b"\x01_DMI_\x90" + struct.pack("<HIH", 64, 0x1000, 7) + b"\x24" + bytes(16)
    real = segment_seed(dump_of(make_firmware, "server-2.4"))[1:]
    padding = bytes(48 - (len(false_anchor) - 1))
    moved = bytearray(real)
    struct.pack_into("<I", moved, 24, SEGMENT + 48 + ENTRY_POINT_SIZE)
    (corpus / "smbios_segment" / "two-anchors").write_bytes(false_anchor + padding + moved)


if __name__ == "__main__":
    main()

"""SMBIOS structures (DMTF DSP0134 3.4) for QEMU's -smbios file=: of these types QEMU has no own
options, or too few fields."""

import struct

NO_HANDLE = 0xFFFF
ENCLOSURE, ARRAY, FLASH_ARRAY = 0x0300, 0x1000, 0x1001  # QEMU's board and modules name the first two


class Structure:
    """Fields in the order of the standard; a text in a field becomes its number."""

    def __init__(self, kind, handle):
        self._kind, self._handle, self._fields, self._texts = kind, handle, b"", []

    def add(self, layout, *values):
        """`layout`: letters of the struct module; the letter s is the number of a text."""
        for letter, value in zip(layout, values, strict=True):
            self._fields += struct.pack("<" + letter.replace("s", "B"),
                                        self._number(value) if letter == "s" else value)
        return self

    def _number(self, text):
        if not text:
            return 0
        self._texts.append(text)
        return len(self._texts)

    def bytes(self):
        head = struct.pack("<BBH", self._kind, 4 + len(self._fields), self._handle)
        texts = b"".join(text.encode() + b"\0" for text in self._texts)
        return head + self._fields + (texts or b"\0") + b"\0"


def bios():
    """24 MiB of flash, which only the extended size can say; UEFI, no virtual machine."""
    return Structure(0, 0x0000).add("ssHsBQBBBBBBH", "ACME Firmware", "9.1c", 0, "02/29/2024", 0xFF,
                                    0x08, 0x01, 0x08, 9, 1, 3, 14, 24)


def enclosure():
    """A rack-mount enclosure of two units with two power cords; the lock bit is set."""
    return Structure(3, ENCLOSURE).add(
        "sBsssBBBBIBBBBs", "ACME Chassis", 0x80 | 0x17, "C3", "CSN-77", "CA-77", 3, 3, 3, 3, 0, 2, 2, 0, 0,
        "CHASSIS-SKU")


def processor(number):
    """A package of two cores whose counts stand in the words of 3.0."""
    return Structure(4, 0x0400 + number).add(
        "sBBsQsBHHHBBHHHsssBBBHHHHHH", f"CPU{number}", 3, 0xFE, "ACME Silicon", 0x1F8BFBFF000306C1,
        "ACME Xeonlike 9000", 0x80 | 11, 100, 3900, 2600, 0x41, 0x36, 0x0701, 0x0702, 0x0703,
        f"PSN-{number}", f"PA-{number}", f"PP-{number}", 2, 2, 2, 0xFC, 0x0101, 2, 2, 2, 2)


def cache(level, kibibytes, kind):
    """Sizes from 2^15 KiB on are counted in 64 KiB; all ones send to the 3.1 fields."""
    small = kibibytes if kibibytes < 0x8000 else 0x8000 | kibibytes // 64
    word = small if kibibytes < 0x7FFF * 64 else 0xFFFF
    double = kibibytes if kibibytes < 0x80000000 else 0
    return Structure(7, 0x0700 + level).add("sHHHHHBBBBII", f"L{level}-Cache", 0x0180 | (level - 1), word, word,
                                            0x20, 0x20, 1, 5, kind, 7, double, double)


def slots():
    """PCI Express with a card, NVMe without, one that is not on a PCI bus, one of an older standard."""
    return [
        Structure(9, 0x0900).add("sBBBBHBBHBB", "PCIE1", 0xB6, 0x0D, 4, 4, 1, 0x0C, 1, 0, 0, 0x10),
        Structure(9, 0x0901).add("sBBBBHBBHBB", "M.2 Slot", 0x17, 0x0A, 3, 1, 2, 0x04, 1, 0, 1, 0xA3),
        Structure(9, 0x0902).add("sBBBBHBBHBB", "ISA9", 0x03, 0x04, 2, 2, 3, 0x04, 0, 0xFFFF, 0xFF, 0xFF),
        Structure(9, 0x0903).add("sBBBBHBB", "PCIX2", 0x12, 0x06, 5, 3, 4, 0x04, 1),
    ]


def arrays():
    """System memory of 4 TiB with correction, and a flash array."""
    return [Structure(16, ARRAY).add("BBBIHHQ", 3, 3, 6, 0x80000000, NO_HANDLE, 4, 4 << 40),
            Structure(16, FLASH_ARRAY).add("BBBIHHQ", 3, 5, 3, 32 * 1024, NO_HANDLE, 1, 0)]


def modules():
    """64 GiB (extended size), 16 GiB, an empty slot, a persistent module, and flash."""
    flash = Structure(17, 0x1104).add("HHHHHBBssBHHssssB", FLASH_ARRAY, NO_HANDLE, 8, 8, 0x8000 | 16384,
                                      5, 0, "FLASH0", "", 9, 0x1000, 0, "", "", "", "", 0)
    return [
        _module(0, 72, 64, 0x7FFF, 64 * 1024, 0x22, 0x2080, 4800, 4400, 2, 3, ("ACME Memory", "MS-0", "MA-0",
                                                                              "MP-DDR5-64G")),
        _module(1, 64, 64, 16384, 0, 0x1A, 0x4080, 3200, 2933, 1, 3, ("WIDGET", "MS-1", "MA-1", "MP-DDR4-16G")),
        _module(2, 0xFFFF, 0xFFFF, 0, 0, 0x02, 0x0004, 0, 0, 0, 2, ("", "", "", "")),
        _module(3, 72, 64, 0x7FFF, 128 * 1024, 0x1F, 0x1080, 2666, 2666, 0, 7, ("ACME Memory", "MS-3", "MA-3",
                                                                               "MP-PMEM-128G")),
        flash,
    ]


def _module(number, total, data, size, extended, kind, detail, speed, configured, rank, technology, texts):
    maker, serial, asset, part = texts
    millivolts = 1100 if size else 0
    return Structure(17, 0x1100 + number).add(
        "HHHHHBBssBHHssssBIHHHHBHsHHHHQQQQII", ARRAY, NO_HANDLE, total, data, size, 9, 0, f"DIMM_A{number}",
        f"NODE 0 CHANNEL {number}", kind, detail, speed, maker, serial, asset, part, rank, extended,
        configured, millivolts, millivolts, millivolts, technology, 0x0008, "", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)


def power_supplies():
    """One that works, one that is there but unplugged, one whose wattage is unknown."""
    return [_supply(0, "PSU bay 1", 800, 1 << 1 | 1 << 0 | 3 << 7 | 4 << 10, "PSUSN-0"),
            _supply(1, "PSU bay 2", 1600, 1 << 1 | 1 << 2 | 5 << 7, "PSUSN-1"),
            _supply(2, "PSU bay 3", 0x8000, 1 << 1 | 4 << 7, "")]


def _supply(number, location, watts, bits, serial):
    return Structure(39, 0x2700 + number).add(
        "BsssssssHHHHH", number + 1, location, "Titanium supply", "ACME Power", serial, f"PSA-{number}",
        f"PSP-{number}", f"R{number}", watts, bits, NO_HANDLE, NO_HANDLE, NO_HANDLE)


def bmc():
    """A KCS interface; nothing answers there, and nobody is to ask."""
    return Structure(38, 0x2600).add("BBBBQBB", 1, 0x20, 0x20, 0xFF, 0xCA3, 0, 0)


def structures():
    return [bios(), enclosure(), processor(0), processor(1), cache(1, 64, 5), cache(2, 2048, 5),
            cache(3, 36 * 1024, 5), *slots(), *arrays(), *modules(), *power_supplies(), bmc()]


def arguments(directory):
    """Writes a file per structure, as QEMU wants them, and returns what hands them over."""
    given = []
    for number, structure in enumerate(structures()):
        path = directory / f"structure-{number}.bin"
        path.write_bytes(structure.bytes())
        given += ["-smbios", f"file={path}"]
    return given

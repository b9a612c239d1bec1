#!/usr/bin/env python3
"""Derives pci-vendors.tsv and pci-devices.tsv from the PCI ID list (pci.ids).

Rules and origin: pci.md. The two tables beside this script come from the file of Debian's package
pci.ids 0.0~2023.04.11-1; with another version of the list the numbers of rows stay the same.

Usage: pci-derive.py [--list FILE] [--output DIRECTORY]
       pci-derive.py --check     compares with the tables beside this script instead of writing:
                                 0 the same, 1 different, 77 the list of that version is not here
"""
import argparse
import hashlib
import re
import sys
import unicodedata
from pathlib import Path

HERE = Path(__file__).resolve().parent
PERIOD_IDS = HERE / "pci-period-ids.txt"
PERIOD_VENDORS = HERE / "pci-period-vendors.tsv"
LIST = Path("/usr/share/misc/pci.ids")
LIST_SHA256 = "61a0d7cbc6fbc4f615a48e4bdc4810975db15191aabdfcbfb8d4c7c2d3973cda"
NOT_HERE = 77

VENDOR_ROWS = 1591
DEVICE_ROWS = 3710

# Rows with texts of their own; they replace or complete what the list says.
FIXED_VENDORS = {
    0x0000: ("Gammagraphx", "Gammagraphx, Inc."),
    0x0033: ("", "Paradyne Corp."),
    0x003D: ("Lockheed Martin", "Lockheed Martin Corp"),
    0xFFFE: ("VMware", "VMware Inc."),
    0xFFFF: ("BAD!", "ILLEGITIMATE VENDOR ID"),
}
FIXED_DEVICES = {
    (0x003D, 0x00D1): ("", "i740 PCI"),
    (0x0675, 0x1700): ("IS64PH", "ISDN Adapter"),
    (0xFFFF, 0xFFFF): ("NO-DEVICE", "No device on PCI bus"),
}

HEADER = """\
# Derived by pci-derive.py from the PCI ID list, version 2023.04.10, as Debian's package pci.ids
# 0.0~2023.04.11-1 has it. Ids in hexadecimal, columns split by tabs. Rules: pci.md.
# Copyright Martin Mares and Albert Pool, 3-clause BSD licence: pci.LICENSE.
"""
VENDOR_COLUMNS = "# vendor<TAB>short name (may be empty)<TAB>long name\n"
DEVICE_COLUMNS = "# vendor<TAB>device<TAB>chip name (may be empty)<TAB>description (may be empty)\n"


# --- the list -----------------------------------------------------------------------------------


def clean(name):
    """The name as it can stand in a C string literal: ASCII, single blanks, no trigraphs."""
    name = unicodedata.normalize("NFKD", name).encode("ascii", "ignore").decode()
    name = name.replace('"', "'").replace("\\", "/")
    return " ".join(re.sub(r"\?+", "?", name).split())


def read_list(path):
    """({vendor: name}, {(vendor, device): name}), cleaned, in the order of the file."""
    vendors, devices, vendor = {}, {}, None
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("C "):  # the classes follow
            break
        hit = re.match(r"(\t?)([0-9a-f]{4})\s+(\S.*)", line)
        if not hit:  # comments and subsystems
            continue
        number, name = int(hit[2], 16), clean(hit[3])
        if hit[1]:
            devices[vendor, number] = name
        else:
            vendor = number
            vendors[vendor] = name
    return vendors, devices


# --- which rows ---------------------------------------------------------------------------------


class Ranges:
    """Ids and spans of ids: '0001 0010-0014'."""

    def __init__(self, words=()):
        self.spans = []
        self.add(words)

    def add(self, words):
        for word in words:
            low, _, high = word.partition("-")
            self.spans.append((int(low, 16), int(high or low, 16)))

    def __contains__(self, number):
        return any(low <= number <= high for low, high in self.spans)


class Period:
    """The ids of the time that the tables show."""

    def __init__(self, path):
        self.core, self.vendors, self.whole, self.devices = [], Ranges(), set(), {}
        for line in path.read_text(encoding="ascii").splitlines():
            label, _, words = line.partition("#")[0].partition(":")
            words = words.split()
            if label == "core":
                self.core += [int(word, 16) for word in words]
            elif label == "vendors":
                self.vendors.add(words)
            elif label == "all":
                self.whole.update(int(word, 16) for word in words)
            elif label:
                self.devices.setdefault(int(label, 16), Ranges()).add(words)

    def has_device(self, vendor, device):
        return vendor in self.whole or device in self.devices.get(vendor, ())

    def rank(self, vendor):
        """0 for the most important vendor."""
        return self.core.index(vendor) if vendor in self.core else len(self.core)


def adjust(chosen, wanted, by_importance, needed):
    """Leaves out the least important or adds the most important until the count is right."""
    for key in reversed(by_importance):
        if len(chosen) <= wanted:
            break
        if key not in needed:
            chosen.discard(key)
    for key in by_importance:
        if len(chosen) >= wanted:
            break
        chosen.add(key)


def choose(vendors, devices, period):
    """(vendor ids, device keys) out of the list."""
    needed = FIXED_DEVICES.keys() & devices.keys()
    keys = {key for key in devices if period.has_device(*key)} | needed
    adjust(keys, DEVICE_ROWS - len(FIXED_DEVICES.keys() - devices.keys()),
           sorted(devices, key=lambda key: (period.rank(key[0]), key)), needed)

    needed = {vendor for vendor, _ in keys} | (FIXED_VENDORS.keys() & vendors.keys())
    ids = {vendor for vendor in vendors if vendor in period.vendors} | needed
    adjust(ids, VENDOR_ROWS - len(FIXED_VENDORS.keys() - vendors.keys()), sorted(vendors), needed)
    return ids, keys


# --- vendor names -------------------------------------------------------------------------------

LEGAL_FORM = re.compile(
    r"(?:,?\s+|,\s*)(?:and Subsidiaries"
    r"|Co\.?,?\s*Ltd\.?|Co\.?,?\s*Inc\.?|Co\.?|Company|Corporation|Corp\.?|Incorporated|Inc\.?"
    r"|Limited|Ltd\.?|L\.?L\.?C\.?|P\.?L\.?C\.?|Pty\.?(?:\s*Ltd\.?)?|Pte\.?|P/L|Int'?l\.?|USA"
    r"|GmbH(?:\s*&\s*Co\.?(?:\s*KG)?)?|AG|A/S|AS|AB|Oy|e\.?V\.?|B\.?V\.?|N\.?V\.?|K\.?K\.?|Kft\.?"
    r"|S\.?A\.?(?:R\.?L\.?|S\.?)?|S\.?p\.?A\.?|S\.?r\.?l\.?|C\.?V\.?)$",
    re.IGNORECASE,
)
REMARK = re.compile(r"\s*\((?:wrong ID|temporary ID|formerly [^)]*|was:? [^)]*)\)", re.IGNORECASE)


def without_legal_form(name):
    while True:
        shorter = LEGAL_FORM.sub("", name).rstrip(" ,.;&")
        if shorter == name or len(shorter) < 2:
            return name
        name = shorter


def vendor_names(name):
    """(short, long); the short one is empty when it would be the same."""
    alias = re.match(r"(.+?)\s*\[([^\]]+)\]\s*(.*)$", name)
    if alias:
        return alias[2].strip(), f"{alias[1]} {alias[3]}".strip()
    short = without_legal_form(REMARK.sub("", name))
    return ("" if short == name else short), name


# --- device names -------------------------------------------------------------------------------

# Words with a digit that name a quantity, a standard or a product line, and so no chip.
NOT_A_PART = re.compile(
    r"""\d{1,2}(?:st|nd|rd|th)?                                        # 2, 3rd
    | \d+(?:\.\d+)?[- ]?(?:port|bit|channel|ch|wire|in|lane|slot|way)  # 4-port, 64-bit
    | \d{1,4}(?:\.\d+)?(?:/\d+(?:\.\d+)?)*                             # 66MHz, 1.5/3Gbps
      (?:[kmg]hz|[kmgt]b(?:/s|ps|it)?|[mg]bps|[mg]bit|gbe|v|w|x|d|k)
    | \d{1,4}(?:/\d{1,4})*                                             # 4000, 220/420
    | 10+/\d+(?:/\d+)*(?:base.*|t|tx|mbps)?                            # 10/100BaseTX
    | \d+base.* | (?:ieee-?)?1394.* | 802\.\d+.* | usb(?:\d.*)? | ddr\d?
    | v\.?\d+.* | rev\.?\d* | ultra\d+.* | agp\d.* | u\d{2,3}(?:/m)?
    | (?:i?486|P[234]|x\d+)
    | (?:PRO/\d|PIIX|AC'?97|Sentry5|NetFlex|ATM\d|ICH\d|Mode[lm]|Ver|Gen\d).*
    """,
    re.IGNORECASE | re.VERBOSE,
)
# Letters that belong to the number behind them: "MGA 2064W".
MAKERS_PREFIX = set(
    "MGA GD CL AIC AHA ASC AHA- ISP QLA NCR SST MPC DAC PDC HPT SYM DP BT RTL VT SiI KT KM KN PM PLX"
    " FLI SAA TDA ES CX".split()
)
PRODUCT_LINE = {"NetXtreme", "NetLink", "Gigabit", "EtherExpress"}


def is_part(word):
    """True for a word that looks like a part number."""
    core = word.strip("(),;:")
    return bool(re.search(r"\d", core)) and word[0] not in "[{" and not NOT_A_PART.fullmatch(core)


def part_number_first(words):
    """A product line in front of a part number changes places with it."""
    line = 2 if words[:2] == ["NetXtreme", "II"] else 1
    if (words[0] in PRODUCT_LINE and len(words) > line and is_part(words[line])
            and re.match(r"[A-Z]{2,}", words[line])):
        return [words[line]] + words[:line] + words[line + 1:]
    return words


def count_chip_words(words):
    """How many words the chip name at the front has."""
    if len(words) > 1 and words[0] in MAKERS_PREFIX and re.search(r"\d", words[1]):
        count = 2
    elif is_part(words[0]):
        count = 1
    else:
        return 0
    while count < len(words):
        if is_part(words[count]) or re.fullmatch(r"\([A-Z]+\d*[A-Z0-9/-]*\)", words[count]):
            count += 1  # also "(ICH4-M)"
        elif words[count] in ("-", "/", "&") and count + 1 < len(words) and is_part(words[count + 1]):
            count += 2
        else:
            break
    return count


def join_product(description, product):
    """The description with the product's name, unless it holds that already."""
    if not product or product.lower() in description.lower():
        return description
    return f"{description} {product}".strip()


def device_names(name):
    """(chip, description)."""
    bracket = re.match(r"([^\[\]]+?)\s*\[([^\[\]]+)\]$", name)
    product = bracket[2].strip() if bracket else ""
    name = bracket[1].strip() if bracket else name
    words = part_number_first(name.split(" "))
    count = count_chip_words(words)
    chip = " ".join(words[:count]).rstrip(" ,:;-/")
    description = " ".join(words[count:]).lstrip(" ,:;-/")
    code_name = re.fullmatch(r"[A-Z][A-Za-z]*(?: [A-Z][A-Za-z0-9]*)?", name)
    if product and not chip and code_name and len(name) <= 16:
        chip, description = name, ""
    return chip, re.sub(r"[\[\]]", "", join_product(description, product))


# --- the tables ---------------------------------------------------------------------------------


def read_period_vendors(path):
    names = {}
    for line in path.read_text(encoding="ascii").splitlines():
        if not line.startswith("#"):
            vendor, short, long = line.split("\t")
            names[int(vendor, 16)] = (short, long)
    return names


def make_tables(list_path):
    """{file name: content}."""
    vendors, devices = read_list(list_path)
    ids, keys = choose(vendors, devices, Period(PERIOD_IDS))
    of_the_period = read_period_vendors(PERIOD_VENDORS)
    vendor_rows = {v: of_the_period.get(v) or vendor_names(vendors[v]) for v in ids} | FIXED_VENDORS
    device_rows = {key: device_names(devices[key]) for key in keys} | FIXED_DEVICES
    assert len(vendor_rows) == VENDOR_ROWS and len(device_rows) == DEVICE_ROWS
    assert all(vendor in vendor_rows for vendor, _ in device_rows)

    vendor_lines = ("%04X\t%s\t%s\n" % (v, *vendor_rows[v]) for v in sorted(vendor_rows))
    device_lines = ("%04X\t%04X\t%s\t%s\n" % (*key, *device_rows[key]) for key in sorted(device_rows))
    return {
        "pci-vendors.tsv": HEADER + VENDOR_COLUMNS + "".join(vendor_lines),
        "pci-devices.tsv": HEADER + DEVICE_COLUMNS + "".join(device_lines),
    }


def is_list_of_the_tables(path):
    return path.exists() and hashlib.sha256(path.read_bytes()).hexdigest() == LIST_SHA256


def check(list_path):
    if not is_list_of_the_tables(list_path):
        print(f"{list_path}: not the list that the tables were derived from; nothing compared")
        return NOT_HERE
    different = [name for name, content in make_tables(list_path).items()
                 if (HERE / name).read_text(encoding="ascii") != content]
    for name in different:
        print(f"{HERE / name}: differs from what {list_path} gives")
    return 1 if different else 0


def main():
    parser = argparse.ArgumentParser(description="Derives the PCI tables from pci.ids.")
    parser.add_argument("--list", type=Path, default=LIST)
    parser.add_argument("--output", type=Path, default=HERE)
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    if arguments.check:
        return check(arguments.list)
    for name, content in make_tables(arguments.list).items():
        (arguments.output / name).write_text(content, encoding="ascii", newline="\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())

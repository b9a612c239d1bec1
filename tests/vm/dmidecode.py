"""dmidecode's output, and its texts as values."""

import re

UNITS = {"bytes": 1, "kB": 1 << 10, "MB": 1 << 20, "GB": 1 << 30, "TB": 1 << 40}
UNKNOWN = ("Not Specified", "Not Provided", "Unknown", "<OUT OF SPEC>", "None")


class Dmi:
    """dmidecode's output: structures of a type as dicts of label to text."""

    def __init__(self, listing):
        self._structures = []
        for block in listing.split("\n\n"):
            if match := re.search(r"Handle (\w+), DMI type (\d+),", block):
                fields = {"Handle": match[1]} | dict(re.findall(r"^\t([^\t:]+): (.*)$", block, re.MULTILINE))
                self._structures.append((int(match[2]), fields))

    def all(self, kind):
        return [fields for number, fields in self._structures if number == kind]

    def first(self, kind):
        return self.all(kind)[0]


def known(text):
    """None for what dmidecode prints where a structure has no value."""
    return None if text is None or text in UNKNOWN else text


def size(text, unit):
    """"4 TB" in that unit; None where there is no number."""
    number, _, name = (text or "").partition(" ")
    return int(number) * UNITS[name] // UNITS[unit] if number.isdigit() and name in UNITS else None


def number(text, unit=""):
    """The number in front of that unit."""
    text = known(text)
    return int(text.removesuffix(unit)) if text else None

"""What two modern scans of an unchanged machine may differ in, by the catalogue's own flags."""

import re
import xml.etree.ElementTree as ElementTree

# Boot times jitter by a second, as the kernel's clocks do.
BOOT_TIMES = {("OperatingSystem", "LastBootUpTime"), ("UNIXSystemParams", "BootTime")}


def element_name(name):
    return re.sub(r"[^A-Za-z0-9_.:-]", "", name)


def volatile_elements(fields):
    """{(group element, attribute element)} that may differ; `fields` is the path of fields.tsv."""
    elements = set()
    for line in fields.read_text().splitlines():
        columns = line.split("\t")
        if line.startswith("#") or not columns[1]:
            continue
        if columns[5].split("/")[-1] == "volatile":
            elements.add((element_name(columns[0]), element_name(columns[1])))
    return elements


def without(document, left_out):
    """The document's bytes without these elements."""
    root = ElementTree.fromstring(document)
    for row in root:
        for attribute in list(row):
            if (row.tag, attribute.tag) in left_out:
                row.remove(attribute)
    return ElementTree.tostring(root)

"""The golden documents of fixture machines and recorded ones, for tests."""
import pathlib
import re

# What differs from scan to scan stands in goldens as a marker.
SCAN_DATE = "2026-11-22-01.02.03.000000"


def filled(text):
    """The document with a value of its kind in the place of each marker."""
    text = text.replace("@CPU_64BIT@", "Y")
    text = re.sub("InCores>@[A-Z0-9_]+@", "InCores>7.000000", text.replace("@SCAN_DATE@", SCAN_DATE))
    return re.sub("@[A-Z0-9_]+@", "7", text)


def goldens(source):
    """{"machines/<name>" or "recorded/<name>": document}, in the order of the names"""
    paths = sorted(pathlib.Path(source, "tests").glob("machines/*/golden.xml"))
    paths += sorted(pathlib.Path(source, "tests").glob("recorded/*/golden.xml"))
    return {f"{path.parts[-3]}/{path.parts[-2]}": filled(path.read_text(encoding="utf-8")) for path in paths}

#!/usr/bin/env python3
"""Fails when a text that the program can trace is neither in a golden trace, with its kind and source
path, nor in a unit test.

Usage: traces_are_covered.py <source directory>
"""
import pathlib
import re
import sys

FOLDERS = ("src",)
KINDS = {"traceMIN": "MIN", "traceMAX": "MAX", "traceMidEntry": "MID entry",
         "traceMidExit": "MID exit"}
CALL = re.compile(r"\b(trace(?:MIN|MAX|MidEntry|MidExit))\(")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
CONVERSION = re.compile(r"%[-+ #0]*(?:\*|\d+)?(?:\.(?:\*|\d+))?[hlz]*[a-zA-Z]")


def arguments_of(text, start):
    """The text between the parenthesis that opens just before `start` and the one that closes it."""
    depth, at = 1, start
    while depth:
        if literal := LITERAL.match(text, at):
            at = literal.end()
            continue
        depth += {"(": 1, ")": -1}.get(text[at], 0)
        at += 1
    return text[start:at - 1]


def fragments_of(arguments):
    """The constant pieces of what a call traces; none where all of it is computed."""
    joined = re.sub(r'"\s*"', "", arguments)  # adjacent literals are one
    pieces = [piece.strip() for literal in LITERAL.findall(joined)
              for piece in CONVERSION.split(literal.replace("\\n", "\n").replace('\\"', '"'))]
    pieces = [re.sub(r"^hardware\b\s*", "", piece) for piece in pieces]
    return [piece for piece in pieces if re.search(r"\w{2}", piece) and "\n" not in piece]


def traces_of(path):
    """(line, kind, constant pieces) of each call that traces."""
    text = path.read_text()
    for call in CALL.finditer(text):
        yield (text.count("\n", 0, call.start()) + 1, KINDS[call[1]],
               fragments_of(arguments_of(text, call.end())))


def is_golden(kind, path, pieces, goldens):
    start = f"{kind} {path} " if path else f"{kind} "
    return any(line.startswith(start) and all(piece in line for piece in pieces)
               for line in goldens)


def main():
    source = pathlib.Path(sys.argv[1])
    goldens = {line for path in (source / "tests/machines").glob("*/golden.trace")
               for line in path.read_text().splitlines()}
    # Literals that the formatter has split are one text again.
    tests = re.sub(r'"\s*"', "", "".join(path.read_text()
                                         for path in (source / "tests").rglob("*Test.cpp")))
    count, missing = 0, []
    for folder in FOLDERS:
        for path in sorted((source / folder).rglob("*.cpp")):
            name = re.search(r'kSourcePath(?:\[\])? = "([^"]*)"', path.read_text())
            for line, kind, pieces in traces_of(path):
                count += 1
                if not is_golden(kind, name and name[1], pieces, goldens) and not (
                        pieces and all(piece in tests for piece in pieces)):
                    missing.append(f"{path.relative_to(source)}:{line}: {kind} {pieces}")
    print("\n".join(missing) or f"{count} traces are covered")
    return 1 if missing or not count else 0


if __name__ == "__main__":
    sys.exit(main())

"""Finds single values in the three kinds of document and puts placeholders in their stead.

A rule names a value by group and attribute, knows from an independent source what it has to be, and
gives the placeholder that stands for it in golden documents. A value that does not hold stays as it
is, so the comparison shows it.
"""

import re
from dataclasses import dataclass
from typing import Callable

LIST = "list mode"  # the group of rules about entries of list mode; the attribute is the entry id
TRACE = "trace"  # the group of rules about values that stand in no document


@dataclass(frozen=True)
class Rule:
    group: str
    attribute: str
    placeholder: str
    holds: Callable[[str], bool]  # of the value as written, unquoted
    traced: str = ""  # pattern of a trace record that tells the value, as its first group

    def apply(self, value):
        return f"@{self.placeholder}@" if self.holds(value) else value


def with_placeholders(kind, text, rules):
    return {"xml": _xml, "mif": _mif, "list": _list}[kind](text, rules)


def _find(rules, group, attribute):
    return next((r for r in rules if (r.group, r.attribute) == (group, attribute)), None)


def element_name(name):
    """Catalogue name to XML name, for names that begin with a letter."""
    return re.sub(r"[^A-Za-z0-9_.:-]", "", name)


def _xml(text, rules):
    by_element = [Rule(element_name(r.group), element_name(r.attribute), r.placeholder, r.holds)
                  for r in rules]
    group = ""
    lines = text.split("\n")
    for i, line in enumerate(lines):
        if match := re.fullmatch(r'\t<(\S+) version="\d+">', line):
            group = match[1]
        elif match := re.fullmatch(r'(\t\t<(\S+?)(?: IsKey="1")?>)(.*)(</\2>)', line):
            if rule := _find(by_element, group, match[2]):
                lines[i] = match[1] + rule.apply(match[3]) + match[4]
    return "\n".join(lines)


class _MifReader:
    """Walks a MIF document line by line, replacing values in group blocks and table rows."""

    _CELL = re.compile(r'"(?:[^"\\]|\\.)*"|[^,"]+')

    def __init__(self, rules):
        self._rules = rules
        self._group = self._attribute = self._block = ""
        self._columns = []

    def line(self, line):
        word = line.strip()
        if word == "Type = Start ENUM":
            self._block = "Start ENUM"  # its Name line is no attribute's
        elif word.startswith("Start "):
            self._start(word)
        elif match := re.fullmatch(r'Name = "(.*)"', word):
            self._name(match[1])
        elif match := re.fullmatch(r"(\s*Value = )(.*)", line):
            return match[1] + self._value(self._attribute, match[2])
        elif self._block == "Start Table" and line.startswith("{"):
            return self._row(line)
        elif word == "End ENUM":
            self._block = "Start Attribute"
        return line

    def _start(self, word):
        if word == "Start Group":
            self._columns = []
        self._block = word

    def _name(self, name):
        if self._block == "Start Group":
            self._group = name
        elif self._block == "Start Attribute":
            self._attribute = name
            self._columns.append(name)

    def _value(self, attribute, written):
        rule = _find(self._rules, self._group, attribute)
        if not rule:
            return written
        if written.startswith('"'):
            return f'"{rule.apply(written[1:-1])}"'
        return rule.apply(written)

    def _row(self, line):
        cells = self._CELL.findall(line[1:-1])
        if len(cells) != len(self._columns) or "{" + ",".join(cells) + "}" != line:
            return line
        return "{" + ",".join(map(self._value, self._columns, cells)) + "}"


def _mif(text, rules):
    reader = _MifReader(rules)
    return "\n".join(reader.line(line) for line in text.split("\n"))


def _list(text, rules):
    def line(written):
        if match := re.fullmatch(r"(\S+):\t(.*) ", written):
            if rule := _find(rules, LIST, match[1]):
                return f"{match[1]}:\t{rule.apply(match[2])} "
        return written

    return "\n".join(line(written) for written in text.split("\n"))

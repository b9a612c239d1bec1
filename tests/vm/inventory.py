"""The scanner's documents as rows of named values."""

import re
import xml.etree.ElementTree as ElementTree


class Inventory:
    def __init__(self, document):
        self._root = ElementTree.fromstring(document)

    def rows(self, group):
        """Dicts of attribute name (as in the document) to text, in document order."""
        return [{child.tag: child.text or "" for child in element}
                for element in self._root if element.tag == group]

    def row(self, group):
        rows = self.rows(group)
        return rows[0] if len(rows) == 1 else {}


def mif_tables(document):
    """Rows of the keyed groups of a MIF document: group name to list of lists of bare values."""
    tables = {}
    for name, body in re.findall(r'Start Table\n\tName = "(.*?) Table"\n(.*?)\nEnd Table', document,
                                 re.DOTALL):
        cells = [re.findall(r'"(?:[^"\\]|\\.)*"|[^,"{}]+', line[1:-1])
                 for line in body.split("\n") if line.startswith("{")]
        tables[name] = [[cell.strip('"') for cell in row] for row in cells]
    return tables


def list_entries(document):
    entries = {}
    for line in document.splitlines():
        name, _, values = line.partition(":\t")
        entries[name] = values[:-1]
    return entries

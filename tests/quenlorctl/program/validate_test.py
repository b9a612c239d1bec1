#!/usr/bin/env python3
"""`quenlorctl validate` and `xmllint --schema` agree on documents that were changed at random.

Usage: validate_test.py <quenlorctl program> <source directory> <schema> <number of documents> [seed]
"""
import collections
import pathlib
import random
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
import documents  # noqa: E402

VALUES = ["", "0", "1", "-1", "+1", "007", " 7 ", "7 ", "4294967296", "18446744073709551615", "18446744073709551616",
          "9223372036854775807", "9223372036854775808", "-9223372036854775808", "1.000000", "-1.5", "nan", "-inf",
          "Y", "N", "text", "2026-11-22-01.02.03.000000", "2026-11-22-01.02.03.000001", "2026-99-99-99.99.99.000000",
          "Hard Disk", "LINUX", "complete", "ssd", "&amp;", "&#65;", "&#xD7FF;", "<![CDATA[5]]>", "<!-- c -->5",
          "5<?p q?>", "\u00e9\u202e", "x" * 300, "\n", "&#10;"]
BROKEN = ["&", "&#0;", "&nope;", "<", "]]>", "\x01", "<!-- -- -->"]
ATTRIBUTES = ['a="1"', 'IsKey="1"', 'IsKey="2"', 'IsKey=" 1"', 'version="1"', 'version="x"', 'version=""',
              'xmlns:p="urn:x"', 'xmlns=""', 'xmlns="urn:x"']
NAMES = ["Storage", "Memory", "Model", "Index", "Unknown", "Size", "Hardware", "SerialNumber", "_x", "a.b-c"]


class Mutator:
    def __init__(self, seed, texts):
        self.random = random.Random(seed)
        self.texts = texts
        self.pieces = [value for text in texts for value in re.findall(r"\t\t<[^\n]*", text)]
        self.rows = [row for text in texts for row in re.findall(r"\n\n\t<.*?\n\t</\w+>", text, re.DOTALL)]

    def document(self):
        """A document with none to three changes."""
        text = self.random.choice(self.texts)
        for _ in range(self.random.randrange(4)):
            text = self.random.choice([
                self.value, self.value, self.value, self.broken_value, self.attribute, self.no_attribute, self.name,
                self.drop_line, self.double_line, self.foreign_line, self.drop_row, self.foreign_row, self.stray_text,
                self.cut, self.byte, self.nested, self.version])(text)
        return text

    def at(self, pattern, text, change):
        """Changes one place where the pattern is found, if there is one."""
        found = list(re.finditer(pattern, text))
        if not found:
            return text
        place = self.random.choice(found)
        return text[:place.start()] + change(place) + text[place.end():]

    def value(self, text):
        return self.at(r">[^<>\n]*</", text, lambda _: ">" + self.random.choice(VALUES) + "</")

    def broken_value(self, text):
        return self.at(r">[^<>\n]*</", text, lambda _: ">" + self.random.choice(BROKEN) + "</")

    def attribute(self, text):
        return self.at(r"<(\w+)", text, lambda place: place[0] + " " + self.random.choice(ATTRIBUTES))

    def no_attribute(self, text):
        return self.at(r' (IsKey|version)="1"', text, lambda _: "")

    def version(self, text):
        version = self.random.choice(["0", "-5", "+5", " 1", "2147483647", "2147483648", "1.0", "01"])
        return self.at(r'version="1"', text, lambda _: f'version="{version}"')

    def name(self, text):
        name = self.random.choice(NAMES)
        return self.at(r"<(\w[^ >/]*)([^>]*)>([^<]*)</\1>", text,
                       lambda place: f"<{name}{place[2]}>{place[3]}</{name}>")

    def drop_line(self, text):
        return self.at(r"\n[^\n]*", text, lambda _: "")

    def double_line(self, text):
        return self.at(r"\n\t\t[^\n]*", text, lambda place: place[0] * 2)

    def foreign_line(self, text):
        piece = self.random.choice(self.pieces)
        return self.at(r"\n\t\t[^\n]*", text, lambda place: place[0] + "\n" + piece)

    def drop_row(self, text):
        return self.at(r"(?s)\n\n\t<.*?\n\t</\w+>", text, lambda _: "")

    def foreign_row(self, text):
        row = self.random.choice(self.rows)
        return self.at(r"\n\n\t<", text, lambda place: row + place[0])

    def stray_text(self, text):
        stray = self.random.choice([" ", "\n\n", "x", "&#32;", "<!-- x -->", "<?x y?>", "<![CDATA[ ]]>", "0"])
        return self.at(r">\n", text, lambda _: ">" + stray + "\n")

    def nested(self, text):
        return self.at(r"</", text, lambda _: "<Sub>1</Sub></")

    def cut(self, text):
        return text[:self.random.randrange(len(text))] if self.random.random() < 0.3 else text

    def byte(self, text):
        place = self.random.randrange(len(text))
        return text[:place] + self.random.choice("<>&\"'/ x0=!?\t") + text[place + 1:]


def xmllint_verdicts(folder, names, schema):
    """{name: "valid", "invalid" or "broken"}"""
    run = subprocess.run(["xmllint", "--noout", "--schema", schema, *names], cwd=folder, capture_output=True)
    verdicts = dict.fromkeys(names, "broken")
    for line in run.stderr.decode("utf-8", "replace").splitlines():
        for ending, verdict in ((" validates", "valid"), (" fails to validate", "invalid")):
            if line.endswith(ending) and line[:-len(ending)] in verdicts:
                verdicts[line[:-len(ending)]] = verdict
    return verdicts


def own_verdicts(program, folder, names):
    run = subprocess.run([program, "validate", *names], cwd=folder, capture_output=True)
    verdicts = {}
    for line in run.stdout.decode().splitlines():
        verdicts.setdefault(line.split(":")[0], "valid" if line.endswith(": valid") else "invalid")
    for line in run.stderr.decode().splitlines():
        verdicts[line.split(":")[1].strip()] = "broken"
    return verdicts


def main():
    program, source, schema, count = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4])
    seed = int(sys.argv[5]) if len(sys.argv) > 5 else 1
    mutator = Mutator(seed, list(documents.goldens(source).values()))
    with tempfile.TemporaryDirectory() as folder:
        names = [f"{number}.xml" for number in range(count)]
        for name in names:
            pathlib.Path(folder, name).write_text(mutator.document(), encoding="utf-8")
        theirs, ours = xmllint_verdicts(folder, names, schema), own_verdicts(program, folder, names)
        different = [name for name in names if theirs[name] != ours.get(name)]
        for name in different[:10]:
            print(f"{name}: xmllint says {theirs[name]}, quenlorctl {ours.get(name)}")
            subprocess.run(["xmllint", "--noout", "--schema", schema, name], cwd=folder)
            subprocess.run([program, "validate", name], cwd=folder)
    counts = collections.Counter(theirs.values())
    print(f"seed {seed}: {len(different)} of {count} verdicts differ; {dict(counts)}")
    # A mutator that makes nothing but one kind tests nothing.
    return 1 if different or min(counts[kind] for kind in ("valid", "invalid", "broken")) < count // 20 else 0


if __name__ == "__main__":
    sys.exit(main())

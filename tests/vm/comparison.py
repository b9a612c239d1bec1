"""Collects comparisons of the scanner's values with a tool's, and prints them all."""


class Comparison:
    def __init__(self):
        self.failures = 0
        self.made = 0

    def equal(self, what, scanner, tool):
        self.made += 1
        same = str(scanner) == str(tool)
        self.failures += not same
        verdict = "=" if same else "DIFFERS FROM"
        print(f"  {'ok  ' if same else 'FAIL'} {what}: scanner {str(scanner)!r} {verdict} {str(tool)!r}")

    def row(self, what, scanner, expected):
        """Every expected value of one row; `scanner` is the row as a dict."""
        for name, value in expected.items():
            self.equal(f"{what} {name}", scanner.get(name, "(absent)"), value)

    def whole_row(self, what, scanner, expected, unchecked=()):
        """Every value that either side has; expected None is a value that must not be there."""
        for name in [*expected, *(name for name in scanner if name not in expected)]:
            if name in unchecked:
                continue
            wanted = expected.get(name)
            self.equal(f"{what} {name}", scanner.get(name, "(absent)"), "(absent)" if wanted is None else wanted)

    def whole_rows(self, what, scanner, expected, unchecked=()):
        self.equal(f"{what}: rows", len(scanner), len(expected))
        for i, (found, wanted) in enumerate(zip(scanner, expected), 1):
            self.whole_row(f"{what} {i}", found, {"Index": i, **wanted}, unchecked)

    def rows(self, what, scanner, expected):
        self.equal(f"{what}: rows", len(scanner), len(expected))
        for i, (found, wanted) in enumerate(zip(scanner, expected), 1):
            self.row(f"{what} {i}", found, wanted)

    def scans_ended_well(self, results, stderr):
        """`stderr`: the text on standard error by name of scan."""
        for name, text in stderr.items():
            self.equal(f"exit status of scan '{name}'", results[f"{name}.status"].strip(), "0")
            self.equal(f"standard error of scan '{name}'", results[f"{name}.err"], text)

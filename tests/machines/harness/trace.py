"""The trace of a scan as a golden text: kind, source, function and text of every record.

Times and line numbers are checked and taken out, repetitions are told once.
"""

import re

_RECORD = re.compile(
    r"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)\.\d{3} (MAX|MID entry|MID exit|MIN) (\S+):[1-9]\d* (.*)")


def golden_trace(text, is_during, rules):
    """`is_during` says whether a record's time lies within the run; `rules` are those of
    `facts.rules_of`. A record that breaks the form stays as it is, so the comparison shows it."""
    records = []
    for line in text.removesuffix("\n").split("\n"):
        match = _RECORD.fullmatch(line)
        if match and is_during(match[1]):
            records.append(" ".join(match.group(2, 3, 4)))
        elif match or not records:
            records.append(line)
        else:  # a traced text with a newline in it
            records[-1] += "\n" + line
    told = _fold([_masked(record, rules) for record in records])
    return "".join(f"{_printable(record)}\n" for record in told)


def _masked(record, rules):
    for rule in rules:
        if rule.traced and (match := re.search(rule.traced, record)):
            start, end = match.span(1)
            return record[:start] + rule.apply(match[1]) + record[end:]
    return record


def _fold(records):
    """A record, or two records in turn, that come three times and more: once, with the number."""
    told, at = [], 0
    while at < len(records):
        for length, both in ((1, ""), (2, "both ")):
            if (times := _times(records, at, length)) >= 3:
                told += [*records[at:at + length], f"... {both}{times} times"]
                at += length * times
                break
        else:
            told.append(records[at])
            at += 1
    return told


def _times(records, at, length):
    cycle = records[at:at + length]
    times = 1
    while records[at + times * length:at + (times + 1) * length] == cycle:
        times += 1
    return times


def _printable(record):
    """Rubbish of a machine as escapes: a golden can be shown on any terminal."""
    text = record.encode("utf-8", "surrogateescape").decode("utf-8", "backslashreplace")
    return re.sub(r"[\x00-\x08\x0b-\x1f\x7f-\x9f]", lambda found: f"\\x{ord(found[0]):02x}", text)

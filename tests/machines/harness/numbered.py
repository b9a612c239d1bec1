"""Texts that differ by a number only."""

import re

_FIELD = re.compile(r"\{i(?://(\d+))?(?:%(\d+))?(?::(\w+))?\}")


def numbered(text, i):
    """`text` with {i}, {i//8}, {i%8}, {i//8%2} computed; {i:02x} and so on as Python formats it."""

    def field(match):
        divisor, modulus, form = match.groups()
        value = i // int(divisor or 1)
        return format(value % int(modulus) if modulus else value, form or "d")

    return _FIELD.sub(field, text)

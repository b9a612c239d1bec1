#!/usr/bin/env python3
"""Fails when an attribute of the catalogue lacks a flag that readers of inventories go by, or has one that
means nothing.

Usage: flags_are_complete.py <source directory>
"""
import collections
import pathlib
import re
import sys

CHANGES = {"stable", "boot", "volatile", "order"}
PRIVATE = {"none", "serial", "uuid", "mac", "ip", "host", "path", "text", "derived"}
IDENTITY = re.compile(r"(-|[1-9](,[1-9])*)")
SCALE = re.compile(r"[0-9]+(\.[0-9]+)?")
SQL_NAME = re.compile(r"[a-z][a-z0-9_]*")

# Words that SQLite, PostgreSQL 15 or ClickHouse do not take as a plain column name.
RESERVED = set("""
abort action add after all alter always analyse analyze and any array as asc asymmetric attach
authorization autoincrement before begin between binary both by cascade case cast check collate collation
column commit concurrently conflict constraint create cross current current_catalog current_date
current_role current_schema current_time current_timestamp current_user database default deferrable
deferred delete desc detach distinct do drop each else end escape except exclude exclusive exists explain
fail false fetch filter final first following for foreign format freeze from full function generated glob
global grant group groups having if ignore ilike immediate in index indexed initially inner insert instead
intersect into is isnull join key last lateral leading left like limit localtime localtimestamp match
materialized natural no not nothing notnull null nulls of offset on only or order others outer over
overlaps partition placing plan pragma preceding prewhere primary query raise range recursive references
regexp reindex release rename replace restrict returning right rollback row rows sample savepoint select
session_user set settings similar some symmetric system_user table tablesample temp temporary then ties to
trailing transaction trigger true unbounded union unique update user using vacuum values variadic verbose
view virtual when where window with without
""".split())


def problems_of_pair(value, allowed, what):
    """A flag may hold two words, classic and modern."""
    return [f"{what} {word!r}" for word in value.split("/") if not allowed(word)] or (
        [f"{what} {value!r}"] if value.count("/") > 1 else [])


def problems_of(columns):
    change, private, identity, scale, sql = columns[5:10]
    found = problems_of_pair(change, CHANGES.__contains__, "change")
    found += problems_of_pair(private, PRIVATE.__contains__, "private")
    if identity:
        found += problems_of_pair(identity, IDENTITY.fullmatch, "identity")
    if scale and not SCALE.fullmatch(scale):
        found.append(f"scale {scale!r}")
    if not SQL_NAME.fullmatch(sql) or sql in RESERVED:
        found.append(f"sql {sql!r}")
    return found


def main():
    path = pathlib.Path(sys.argv[1]) / "data/fields.tsv"
    lines = [line.split("\t") for line in path.read_text().splitlines() if not line.startswith("#")]
    bad, names = [], collections.Counter()
    for columns in lines:
        columns += [""] * (11 - len(columns))
        group, attribute, sql = columns[0], columns[1], columns[9]
        if not attribute:
            if not SQL_NAME.fullmatch(sql):
                bad.append(f"{group}: sql {sql!r}")
            names["", sql] += 1
            continue
        bad += [f"{group}: {attribute}: {problem}" for problem in problems_of(columns)]
        names[group, sql] += 1
    bad += [f"{group}: {sql} stands for two attributes" for (group, sql), count in names.items() if count > 1]
    print("\n".join(bad) or f"{len(names)} attributes have their flags")
    return 1 if bad or not names else 0


if __name__ == "__main__":
    sys.exit(main())

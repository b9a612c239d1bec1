#!/usr/bin/env python3
"""Names the sources that clang-tidy has to see. Usage: tidy_files.py all|changed

"changed": the sources that differ from the merge base, and those that name a header that differs; all of
them where most include that header, directly or not.
"""
import pathlib
import re
import subprocess
import sys

FOLDERS = ("src", "tools")
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)
# This changes how every source is judged.
ABOUT_ALL = re.compile(r"\.clang-tidy")
# How far back to look where no branch and no release says what is old.
RECENT = 10


def git(*arguments):
    """Output, or None where git or what it is asked for is missing."""
    try:
        run = subprocess.run(["git", *arguments], capture_output=True, text=True)
    except OSError:
        return None
    return run.stdout.strip() if run.returncode == 0 else None


def merge_base():
    """Where this branch left the main one; on the main one itself the last release, else some commits back.
    None where history does not reach that far, as in a shallow clone."""
    head = git("rev-parse", "HEAD")
    for main in ("origin/main", "main"):
        base = git("merge-base", "HEAD", main)
        if base and base != head:
            return base
    release = git("describe", "--tags", "--abbrev=0", "HEAD^")
    return release or git("rev-parse", "--verify", "--quiet", f"HEAD~{RECENT}")


def changed_since(base):
    """Paths that differ from `base`, committed or not."""
    differing = git("diff", "--name-only", "--no-renames", base) or ""
    untracked = git("ls-files", "--others", "--exclude-standard") or ""
    return set(differing.splitlines()) | set(untracked.splitlines())


def includes_of(path):
    """Paths of the program's own headers that a source includes; includes are relative to src or the top."""
    for name in INCLUDE.findall(path.read_text()):
        for root in ("src", "."):
            if (found := pathlib.Path(root, name)).exists():
                yield str(found)


def includers(files):
    """{header: the files that name it}"""
    included_by = {}
    for path in files:
        for header in includes_of(path):
            included_by.setdefault(header, set()).add(str(path))
    return included_by


def reached_from(header, included_by):
    """The files that include a header, directly or not."""
    reached, waiting = set(), [header]
    while waiting:
        for path in included_by.get(waiting.pop(), set()) - reached:
            reached.add(path)
            waiting.append(path)
    return reached


def concerned(changed, files):
    """The sources that a change concerns."""
    sources = {str(path) for path in files if path.suffix == ".cpp"}
    included_by = includers(files)
    found = set(changed)
    for header in (path for path in changed if path.endswith(".h")):
        if 2 * len(reached_from(header, included_by) & sources) > len(sources):
            return sources
        found |= included_by.get(header, set())
    return sources & found


def main():
    files = sorted(path for folder in FOLDERS for path in pathlib.Path(folder).rglob("*")
                   if path.suffix in (".h", ".cpp"))
    sources = [str(path) for path in files if path.suffix == ".cpp"]
    base = merge_base() if sys.argv[1] == "changed" else None
    if base:
        changed = changed_since(base)
        if not any(map(ABOUT_ALL.fullmatch, changed)):
            sources = sorted(concerned(changed, files))
    print(f"clang-tidy: {len(sources)} sources, {'since ' + base if base else 'all'}", file=sys.stderr)
    print("\n".join(sources))


if __name__ == "__main__":
    main()

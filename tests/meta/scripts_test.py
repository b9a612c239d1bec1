#!/usr/bin/env python3
"""Tests of the scripts that choose what is checked and tell what was not.

Usage: scripts_test.py <source directory>
"""
import contextlib
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

sys.dont_write_bytecode = True
sys.path.insert(0, sys.argv.pop(1) + "/scripts")

import skipped  # noqa: E402
import tidy_files  # noqa: E402


def case(name, output, skipped_for=None):
    element = ElementTree.Element("testcase", name=name)
    if skipped_for:
        ElementTree.SubElement(element, "skipped", message=skipped_for)
    ElementTree.SubElement(element, "system-out").text = output
    return element


class Skipped(unittest.TestCase):
    REFUSED = "skipped: no namespaces of its own: unshare: Operation not permitted\n"

    def test_reason_is_told_once_with_the_number_of_tests(self):
        cases = [case(f"machines.m{i}", self.REFUSED, "SKIP_RETURN_CODE=77") for i in range(3)]
        self.assertEqual(["release: 3 tests were skipped",
                          "  no namespaces of its own: unshare: Operation not permitted (3 machines)"],
                         skipped.report(cases, "release"))

    def test_every_skipped_test_of_a_whole_program_counts(self):
        output = "a/FooTest.cpp:12: Skipped\nno ip command\n\n[ RUN ]\na/FooTest.cpp:20: Skipped\nno ip command\n"
        self.assertEqual("asan: 2 tests were skipped",
                         skipped.report([case("network", output)], "asan")[0])

    def test_skip_without_a_reason_is_told_too(self):
        self.assertEqual(["no reason told"], skipped.skips_of(case("x", "", "SKIP_REGULAR_EXPRESSION_MATCHED")))

    def test_tests_that_ran_are_not_told(self):
        self.assertEqual([], skipped.report([case("x", "fine\n"), case("y", "bad\n")], "z"))

    def test_test_without_its_program_is_missing_not_skipped(self):
        self.assertEqual([], skipped.skips_of(case("x", "", "Unable to find executable")))


class Tree(unittest.TestCase):
    """A repository of three headers and four sources."""

    FILES = {
        "src/base/Text.h": "",
        "src/host/Host.h": '#include "base/Text.h"\n',
        "src/host/Host.cpp": '#include "host/Host.h"\n',
        "src/scan/main.cpp": '#include <string>\n\n#include "host/Host.h"\n',
        "src/scan/Options.h": "",
        "src/scan/Options.cpp": '#include "scan/Options.h"\n',
        "src/scan/other.cpp": "#include <string>\n",
    }

    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.enterContext(contextlib.chdir(folder))
        self.git("init", "--quiet", "--initial-branch=main")
        for name, text in self.FILES.items():
            pathlib.Path(name).parent.mkdir(parents=True, exist_ok=True)
            pathlib.Path(name).write_text(text)
        self.first = self.commit("first")

    def git(self, *arguments):
        identity = {"GIT_CONFIG_GLOBAL": "/dev/null", "GIT_CONFIG_SYSTEM": "/dev/null"}
        for role in ("AUTHOR", "COMMITTER"):
            identity |= {f"GIT_{role}_NAME": "nobody", f"GIT_{role}_EMAIL": "nobody@invalid"}
        return subprocess.run(["git", *arguments], check=True, capture_output=True, text=True,
                              env={**os.environ, **identity}).stdout.strip()

    def commit(self, message):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--allow-empty", "--message", message)
        return self.git("rev-parse", "HEAD")

    def concerned(self, *changed):
        return tidy_files.concerned(set(changed), [pathlib.Path(name) for name in self.FILES])


class MergeBase(Tree):
    def test_branch_counts_from_where_it_left_main(self):
        self.git("checkout", "--quiet", "-b", "work")
        self.commit("work")
        self.assertEqual(self.first, tidy_files.merge_base())

    def test_main_counts_from_the_last_release(self):
        self.git("tag", "v1")
        self.commit("second")
        self.assertEqual("v1", tidy_files.merge_base())

    def test_release_itself_counts_from_the_one_before(self):
        self.git("tag", "v1")
        self.commit("second")
        self.git("tag", "v2")
        self.assertEqual("v1", tidy_files.merge_base())

    def test_main_without_a_release_counts_from_some_commits_back(self):
        for i in range(tidy_files.RECENT):
            self.commit(f"more {i}")
        self.assertEqual(self.first, tidy_files.merge_base())

    def test_short_history_has_no_base_so_all_is_checked(self):
        self.assertIsNone(tidy_files.merge_base())


class Concerned(Tree):
    SOURCES = {name for name in Tree.FILES if name.endswith(".cpp")}

    def test_header_concerns_the_sources_that_name_it(self):
        self.assertEqual({"src/scan/Options.cpp"}, self.concerned("src/scan/Options.h"))

    def test_header_concerns_all_where_more_than_half_include_it_however_indirectly(self):
        pathlib.Path("src/scan/other.cpp").write_text('#include "host/Host.h"\n')
        self.assertEqual(self.SOURCES, self.concerned("src/base/Text.h"))

    def test_half_of_the_sources_is_not_most(self):
        self.assertEqual({"src/host/Host.cpp", "src/scan/main.cpp"}, self.concerned("src/host/Host.h"))

    def test_source_concerns_itself_alone(self):
        self.assertEqual({"src/scan/other.cpp"}, self.concerned("src/scan/other.cpp"))

    def test_uncommitted_and_untracked_files_are_changed(self):
        pathlib.Path("src/base/Text.h").write_text("// new\n")
        pathlib.Path("src/base/New.cpp").write_text("")
        self.assertEqual({"src/base/Text.h", "src/base/New.cpp"},
                         tidy_files.changed_since(self.first))


if __name__ == "__main__":
    unittest.main()

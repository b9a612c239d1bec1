#!/usr/bin/env python3
"""Tests of the fixture-machine harness itself: a comparison that cannot fail proves nothing."""

import errno
import json
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from harness import facts, namespace  # noqa: E402
from harness.documents import LIST, Rule, with_placeholders  # noqa: E402
from harness.machine import load_machine  # noqa: E402
from harness.numbered import numbered  # noqa: E402
from harness.scan import difference, well_formed  # noqa: E402
from harness.stage import changes, scan_configuration, snapshot  # noqa: E402
from harness.trace import golden_trace  # noqa: E402
from harness.utmp import utmp_record  # noqa: E402

ARCH = Rule("Operating System", "OS Arch", "ARCH", lambda value: value == "x86_64")
FREE = Rule("Partition", "FS Free Size", "FREE", str.isdecimal)
DATE = Rule(LIST, "scandate", "SCAN_DATE", lambda value: value.startswith("20"))


class Documents(unittest.TestCase):
    def test_xml_value_that_holds_becomes_a_placeholder(self):
        text = '\t<OperatingSystem version="1">\n\t\t<OSArch>x86_64</OSArch>\n\t</OperatingSystem>'
        self.assertIn("<OSArch>@ARCH@</OSArch>", with_placeholders("xml", text, [ARCH]))

    def test_xml_value_that_does_not_hold_stays(self):
        text = '\t<OperatingSystem version="1">\n\t\t<OSArch>i686</OSArch>\n\t</OperatingSystem>'
        self.assertEqual(text, with_placeholders("xml", text, [ARCH]))

    def test_same_attribute_of_another_group_stays(self):
        text = '\t<Other version="1">\n\t\t<OSArch>x86_64</OSArch>\n\t</Other>'
        self.assertEqual(text, with_placeholders("xml", text, [ARCH]))

    def test_mif_value_of_a_keyless_group(self):
        text = ('Start Group\n\tName = "Operating System"\n\tStart Attribute\n\t\tName = "OS Arch"\n'
                '\t\tID = 10\n\t\tType = String(24)\n\t\tValue = "x86_64"\n\tEnd Attribute')
        self.assertIn('Value = "@ARCH@"', with_placeholders("mif", text, [ARCH]))

    def test_mif_row_of_a_keyed_group(self):
        text = ('Start Group\n\tName = "Partition"\n'
                '\tStart Attribute\n\t\tName = "Index"\n\t\tType = Integer\n\t\tValue = -1\n'
                '\tStart Attribute\n\t\tName = "FS Type"\n\t\tType = Start ENUM\n'
                '\t\tName = "Partition-FS Type"\n\t\t0 = "Empty"\n\t\tEnd ENUM\n\t\tValue = -1\n'
                '\tStart Attribute\n\t\tName = "FS Free Size"\n\t\tValue = -1\n'
                'End Group\n\nStart Table\n\tName = "Partition Table"\n{1,131,4711}\n{2,131,x}')
        found = with_placeholders("mif", text, [FREE])
        self.assertIn("{1,131,@FREE@}\n{2,131,x}", found)
        self.assertIn("Value = -1", found)

    def test_list_entry(self):
        self.assertEqual("scandate:\t@SCAN_DATE@ \nguid:\t20 ",
                         with_placeholders("list", "scandate:\t2024 \nguid:\t20 ", [DATE]))

    def test_bytes_that_are_no_text_survive(self):
        text = b"a\xff\xfe".decode("utf-8", "surrogateescape")
        found = with_placeholders("xml", text, [ARCH])
        self.assertEqual(b"a\xff\xfe", found.encode("utf-8", "surrogateescape"))


class Facts(unittest.TestCase):
    def rules(self, boot=None, zone="UTC0"):
        return {r.placeholder: r for r in facts._clock(facts.Moment(1000.9, 1002.1, zone, boot))}

    def test_scan_date_lies_within_the_run(self):
        holds = self.rules()["SCAN_DATE"].holds
        self.assertTrue(holds("1970-01-01-00.16.40.000000"))
        self.assertTrue(holds("1970-01-01-00.16.42.000000"))
        self.assertFalse(holds("1970-01-01-00.16.39.000000"))
        self.assertFalse(holds("1970-01-01-00.16.43.000000"))

    def test_scan_date_follows_the_machine_s_zone(self):
        holds = self.rules(zone="CET-1")["SCAN_DATE"].holds
        self.assertTrue(holds("1970-01-01-01.16.41.000000"))
        self.assertFalse(holds("1970-01-01-00.16.41.000000"))

    def test_up_time_counts_from_the_run_level_record(self):
        holds = self.rules(boot=900)["UPTIME"].holds
        self.assertTrue(holds("100") and holds("102"))
        self.assertFalse(holds("99") or holds("103") or holds("") or holds("-100"))

    def test_build_stamp_is_a_date(self):
        self.assertTrue(facts._is_build_stamp("2007-06-18-16.35.21.000000"))
        self.assertFalse(facts._is_build_stamp("2007-06-18 16:35:21"))


class Traces(unittest.TestCase):
    BRAND = Rule("PhysicalProcessor", "Brandname", "CPU_BRAND", "Xeon".__eq__, r" Brand: (.*)")

    def golden(self, *texts, time="2026-01-02 03:04:05", number="17"):
        lines = [f"{time}.678 MAX a.cpp:{number} f() {text}" for text in texts]
        return golden_trace("\n".join([*lines, ""]), "2026-01-02 03:04:05".__eq__, [self.BRAND])

    def test_time_and_line_number_are_taken_out(self):
        self.assertEqual("MAX a.cpp f() hardware x\n", self.golden("hardware x"))

    def test_record_of_another_time_stays(self):
        self.assertIn("2026-01-02 03:04:06.678", self.golden("hardware x", time="2026-01-02 03:04:06"))

    def test_record_without_a_line_number_stays(self):
        self.assertIn("a.cpp:0 ", self.golden("hardware x", number="0"))

    def test_real_value_becomes_a_placeholder_only_if_it_holds(self):
        self.assertIn("hardware Brand: @CPU_BRAND@", self.golden("hardware Brand: Xeon"))
        self.assertIn("hardware Brand: Opteron", self.golden("hardware Brand: Opteron"))

    def test_three_equal_records_are_told_once_and_two_twice(self):
        x = "MAX a.cpp f() x\n"
        self.assertEqual(x + "... 3 times\n", self.golden("x", "x", "x"))
        self.assertEqual(x + x, self.golden("x", "x"))

    def test_two_records_in_turn_are_told_once(self):
        x, y = "MAX a.cpp f() x\n", "MAX a.cpp f() y\n"
        self.assertEqual(x + y + "... both 3 times\n" + x, self.golden(*"xyxyxyx"))

    def test_text_of_several_lines_is_one_record(self):
        self.assertEqual("MAX a.cpp f() x\ny\n... 3 times\n",
                         self.golden("x\ny", "x\ny", "x\ny"))

    def test_bytes_that_are_no_text_are_escaped(self):
        text = b"x\xff\x1b".decode("utf-8", "surrogateescape")
        self.assertEqual("MAX a.cpp f() x\\xff\\x1b\n", self.golden(text))


class Stage(unittest.TestCase):
    def test_created_changed_and_removed_files_are_told(self):
        with tempfile.TemporaryDirectory() as directory:
            root = Path(directory)
            (root / "kept").write_text("1")
            (root / "changed").write_text("1")
            (root / "removed").write_text("1")
            before = snapshot(root)
            (root / "changed").write_text("22")
            (root / "removed").unlink()
            (root / "created").mkdir()
            self.assertEqual(["the scan changed /changed", "the scan created /created",
                              "the scan removed /removed"], changes(before, snapshot(root), []))

    def test_expected_file_must_be_there(self):
        self.assertEqual([], changes({}, {"/a": 1}, ["/a"]))
        self.assertEqual(["the scan did not leave /a"], changes({}, {}, ["/a"]))

    def test_scan_configuration_lists_groups_in_order(self):
        self.assertIn('<Group Name="Memory"/>\n  <Group Name="IP Address"/>\n</Hardware>',
                      scan_configuration(["Memory", "IP Address"]))

    def test_utmp_record_has_the_time_where_glibc_reads_it(self):
        record = utmp_record(1, 0x01020304)
        self.assertEqual(384, len(record))
        self.assertEqual(b"\x01\x00", record[:2])
        self.assertEqual(bytes([4, 3, 2, 1]), record[340:344])


class Numbered(unittest.TestCase):
    def test_fields(self):
        self.assertEqual("13 1 5 1 0d {x}", numbered("{i} {i//8} {i%8} {i//4%2} {i:02x} {x}", 13))


class Machines(unittest.TestCase):
    def load(self, keys):
        with tempfile.TemporaryDirectory() as directory:
            (Path(directory) / "machine.json").write_text(json.dumps(keys))
            return load_machine(directory)

    def test_misspelled_key_is_refused(self):
        with self.assertRaisesRegex(ValueError, "hostnam"):
            self.load({"about": "x", "hostnam": "y"})

    def test_trace_of_a_document_that_is_not_scanned_is_refused(self):
        with self.assertRaisesRegex(ValueError, "traced"):
            self.load({"about": "x", "documents": ["xml"], "traced": "mif"})

    def test_machine_without_documents_is_refused(self):
        with self.assertRaisesRegex(ValueError, "documents"):
            self.load({"about": "x", "documents": []})


class PrivateMachine(unittest.TestCase):
    """What becomes of a machine where the kernel refuses namespaces; an ordinary failure stays one."""

    def status_of(self, unshare, body=lambda: 0):
        with mock.patch.object(namespace, "_unshare", unshare), \
             mock.patch("builtins.print") as told:
            return namespace.in_private_machine(body), told.call_args

    def test_refused_namespaces_skip_the_machine_and_say_why(self):
        def refuse(_flags):
            raise OSError(errno.EPERM, "unshare namespaces: Operation not permitted")
        status, told = self.status_of(refuse, self.fail)
        self.assertEqual(namespace.SKIPPED, status)
        self.assertIn("unshare namespaces: Operation not permitted", told.args[0])

    def test_root_that_is_no_mount_point_skips_the_machine(self):
        with mock.patch.object(namespace, "mount", side_effect=OSError(errno.EINVAL, "mount on /")):
            status, told = self.status_of(lambda _flags: None, self.fail)
        self.assertEqual(namespace.SKIPPED, status)
        self.assertIn("mount on /", told.args[0])

    def test_failure_of_the_machine_itself_is_no_skip(self):
        def broken():
            raise OSError(errno.EPERM, "a file of the machine")
        with mock.patch.object(namespace, "mount"), mock.patch("traceback.print_exc"):
            status, _ = self.status_of(lambda _flags: None, broken)
        self.assertEqual(1, status)


class Judging(unittest.TestCase):
    def test_missing_final_newline_is_a_difference(self):
        self.assertTrue(difference("a\n", "a", "golden.xml"))

    def test_broken_document_is_not_well_formed(self):
        self.assertEqual([], well_formed(b"<Hardware>\n</Hardware>\n"))
        self.assertTrue(well_formed(b"<Hardware>\n<>x</>\n</Hardware>\n"))


if __name__ == "__main__":
    unittest.main()

"""What the real kernel, clock and processor answer under a fixture machine, read independently.

The kernel's name and the clocks shine through always; a machine names in "real" what else does.
"""

import os
import re
import time
from dataclasses import dataclass

from harness.documents import LIST, Rule
from harness.utmp import RUN_LVL


@dataclass
class Moment:
    """When a scan ran, in seconds since the epoch, and under which time zone."""

    start: float
    end: float
    timezone: str
    boot: int | None  # of the machine's own run-level record


def rules_of(machine, moment):
    rules = [*_kernel(), *_clock(moment)]
    for name in machine.real:
        rules += REAL[name]()
    return rules


def boot_time(machine):
    return next((r["time"] for r in machine.utmp if r["type"] == RUN_LVL), None)


def _equals(expected):
    return lambda value: value == str(expected)


def _kernel():
    release, arch = os.uname().release, os.uname().machine
    major, minor, *rest = release.split(".", 2)
    group = "Operating System"
    return [
        Rule(group, "Major Version", "RELEASE_MAJOR", _equals(major)),
        Rule(group, "Minor Version", "RELEASE_MINOR", _equals(re.match(r"\d*", minor)[0] or 0)),
        Rule(group, "Sub Version", "RELEASE_SUB", _equals("".join(rest))),
        Rule(group, "OS Arch", "ARCH", _equals(arch)),
        Rule(LIST, "osVersion", "RELEASE_MAJOR@.@RELEASE_MINOR", _equals(f"{major}.{minor}")),
    ]


def _clock(moment):
    during = _date_between(moment.start, moment.end, moment.timezone)
    rules = [
        Rule("Scan Info", "Scan Date", "SCAN_DATE", during),
        Rule("Scan Info", "Build", "BUILD", _is_build_stamp),
        Rule(LIST, "scandate", "SCAN_DATE", during),
    ]
    if moment.boot is not None:
        since_boot = _between(int(moment.start) - moment.boot, int(moment.end) - moment.boot)
        rules.append(Rule("Scan Info", "Uptime", "UPTIME", since_boot))
    return rules


def _between(low, high):
    return lambda value: value.isdecimal() and low <= int(value) <= high


_DATE = "%Y-%m-%d-%H.%M.%S.000000"


def _date_between(start, end, timezone):
    def holds(value):
        # Every second of the run, written as the machine's zone has it: no parsing, no ambiguity.
        seconds = range(int(start), int(end) + 1)
        return value in {_local_text(second, timezone) for second in seconds}

    return holds


def _local_text(second, timezone):
    before = os.environ.get("TZ")
    os.environ["TZ"] = timezone or "UTC0"
    time.tzset()
    try:
        return time.strftime(_DATE, time.localtime(second))
    finally:
        os.environ.pop("TZ") if before is None else os.environ.update(TZ=before)
        time.tzset()


def _is_build_stamp(value):
    try:
        time.strptime(value, _DATE)
    except ValueError:
        return False
    return True


def _read_kilobytes(name):
    with open("/proc/meminfo", encoding="ascii") as stream:
        return int(re.search(rf"^{name}:\s+(\d+) kB", stream.read(), re.MULTILINE)[1])


def _memory():
    """For a machine without /proc/meminfo, where sysinfo(2) answers."""
    total, swap = _read_kilobytes("MemTotal"), _read_kilobytes("SwapTotal")
    page = os.sysconf("SC_PAGE_SIZE")
    return [
        Rule("Memory", "Total Physical", "MEMTOTAL_KB", _equals(total)),
        Rule("Memory", "Free Physical", "MEMFREE_KB", _between(1, total)),
        Rule("Memory", "Total Virtual", "MEM_AND_SWAP_TOTAL_KB", _equals(total + swap)),
        Rule("Memory", "Free Virtual", "MEM_AND_SWAP_FREE_KB", _between(1, total + swap)),
        Rule("Memory", "Total Page", "MEMTOTAL_KB_PER_PAGE", _equals(total // page)),
        Rule("Memory", "Free Page", "MEMFREE_KB_PER_PAGE", _between(1, total // page)),
        Rule(LIST, "ram_mbytes", "MEMTOTAL_MB", _equals(total // 1024)),
    ]


REAL = {"memory": _memory}

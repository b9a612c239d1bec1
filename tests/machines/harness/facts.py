"""What the real kernel, clock and processor answer under a fixture machine, read independently.

The kernel's name and the clocks shine through always; a machine names in "real" what else does.
"""

import os
import re
import time
from dataclasses import dataclass

from harness.documents import LIST, TRACE, Rule
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
    release, version, arch = os.uname().release, os.uname().version, os.uname().machine
    major, minor, *rest = release.split(".", 2)
    group = "Operating System"
    return [
        Rule(group, "Major Version", "RELEASE_MAJOR", _equals(major)),
        Rule(group, "Minor Version", "RELEASE_MINOR", _equals(re.match(r"\d*", minor)[0] or 0)),
        Rule(group, "Sub Version", "RELEASE_SUB", _equals("".join(rest))),
        Rule(group, "OS Arch", "ARCH", _equals(arch), r" Arch retrieved= (.*)"),
        Rule(TRACE, "machine", "ARCH", _equals(arch), r" mach= (.*)"),
        Rule(TRACE, "release", "RELEASE", _equals(release), r" rel= (.*)"),
        Rule(TRACE, "version", "VERSION", _equals(version), r" ver= (.*)"),
        Rule(LIST, "osVersion", "RELEASE_MAJOR@.@RELEASE_MINOR", _equals(f"{major}.{minor}")),
    ]


def _clock(moment):
    during = time_within(moment, _DATE)
    rules = [
        Rule("Scan Info", "Scan Date", "SCAN_DATE", during),
        Rule("Scan Info", "Build", "BUILD", _is_build_stamp),
        Rule(LIST, "scandate", "SCAN_DATE", during),
        Rule(TRACE, "step of the storage group", "NOW", time_within(moment, "%a %b %e %H:%M:%S %Y"),
             r" generateTable\(\) hardware (.*) (?:call|exit) "),
    ]
    if moment.boot is not None:
        since_boot = _between(int(moment.start) - moment.boot, int(moment.end) - moment.boot)
        rules.append(Rule("Scan Info", "Uptime", "UPTIME", since_boot))
    return rules


def _between(low, high):
    return lambda value: value.isdecimal() and low <= int(value) <= high


_DATE = "%Y-%m-%d-%H.%M.%S.000000"


def time_within(moment, form):
    """Tells whether a text is a time of the run, in the machine's zone and the given form."""
    # Every second of the run: no parsing, no ambiguity.
    seconds = range(int(moment.start), int(moment.end) + 1)
    return {_local_text(second, moment.timezone, form) for second in seconds}.__contains__


def _local_text(second, timezone, form):
    before = os.environ.get("TZ")
    os.environ["TZ"] = timezone or "UTC0"
    time.tzset()
    try:
        return time.strftime(form, time.localtime(second))
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


def _processor():
    """What the CPUID instruction says under any /proc/cpuinfo: identity, clock and cache."""
    cpu = _first_processor()
    group = "PhysicalProcessor"
    maker = {"GenuineIntel": "Intel", "AuthenticAMD": "AMD"}.get(cpu["vendor_id"], cpu["vendor_id"])
    types = {"Original OEM Processor", "OverDrive Processor", "Dual Processor", "Reserved"}
    return [
        Rule(group, "Manufacturer", "CPU_MAKER", _equals(maker), " Adding Manufacturer: (.*)"),
        Rule(group, "Family", "CPU_FAMILY",
             lambda value: value != "" and value in f"{cpu['model name']} Family {cpu['cpu family']}",
             " Adding Family: (.*)"),
        Rule(group, "Type", "CPU_TYPE", types.__contains__, " Adding Type: (.*)"),
        Rule(group, "CpuFreq", "CPU_MHZ", str.isdecimal),
        Rule(group, "L2 Cache Size", "CPU_L2_KB", _is_second_level_cache),
        Rule(group, "Brandname", "CPU_BRAND", _equals(cpu["model name"]), " Adding Brand: (.*)"),
        Rule(group, "Signature", "CPU_SIGNATURE", _is_signature_of(cpu),
             " Adding Signature: (.*)"),
        Rule(group, "Is64BitSupported", "CPU_64BIT", _equals("Y")),
    ]


def _core_counts():
    """For a machine where neither /sys nor /proc/cpuinfo shows a topology: CPUID's own counts."""
    positive = re.compile(r"[1-9]\d*(\.0{6})?").fullmatch
    return [
        Rule("PhysicalProcessor", "Core Per Package Count", "CPU_CORES", positive),
        Rule("PhysicalProcessor", "Logical Proc Per Core", "CPU_THREADS", positive),
        Rule("Lpar", "Node Capacity In Cores", "CPU_CORES", positive, " node capacity= (.*)"),
    ]


def _first_processor():
    with open("/proc/cpuinfo", encoding="utf-8") as stream:
        lines = stream.read().split("\n\n")[0].splitlines()
    return {key.strip(): value.strip() for key, _, value in (line.partition(":") for line in lines)}


def _is_second_level_cache(value):
    try:
        with open("/sys/devices/system/cpu/cpu0/cache/index2/size", encoding="ascii") as stream:
            return value == stream.read().strip().removesuffix("K")
    except OSError:
        return value.isdecimal()


def _is_signature_of(cpu):
    def holds(value):
        if not re.fullmatch("[0-9A-F]{8}", value):
            return False
        word = int(value, 16)
        family, model = word >> 8 & 15, word >> 4 & 15
        if family in (6, 15):
            model |= word >> 12 & 0xF0
        if family == 15:
            family += word >> 20 & 255
        found = (family, model, word & 15)
        return found == tuple(int(cpu[key]) for key in ("cpu family", "model", "stepping"))

    return holds


REAL = {"memory": _memory, "processor": _processor, "core counts": _core_counts}

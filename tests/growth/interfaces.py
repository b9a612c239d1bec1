#!/usr/bin/env python3
"""Scans a network name space with many interfaces, and times it beside "ip -j addr".

Every interface and every address has to be in the document. In an optimised build the scan may take
twice the processor time of ip at most (neither waits for anything but the kernel, and a loaded machine
changes it less than the time on the wall); the best of several runs counts on both sides.
"""
import os
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import own_name_space  # noqa: E402
from timed_scan import install, seconds  # noqa: E402

RUNS = 7
LIMIT = 2.0
KINDS = ("dummy", "bridge", "ifb")  # whatever the kernel has
GROUPS = ("Network Adapter", "IP Address")


def kind_of_this_kernel():
    for kind in KINDS:
        add = subprocess.run(["ip", "link", "add", "first", "type", kind], stderr=subprocess.DEVNULL)
        if add.returncode == 0:
            subprocess.run(["ip", "link", "del", "first"], check=True)
            return kind
    return None


def existing():
    """Interfaces that every new name space has in this kernel."""
    return len(subprocess.run(["ip", "-o", "link"], check=True, capture_output=True).stdout.splitlines())


def make_interfaces(kind, count):
    lines = []
    for i in range(count):
        lines.append(f"link add x{i} type {kind}")
        lines.append(f"addr add 10.{i >> 16}.{i >> 8 & 255}.{i & 255}/32 dev x{i}")
    subprocess.run(["ip", "-batch", "-"], input="\n".join(lines), text=True, check=True,
                   stdout=subprocess.DEVNULL)


def best(commands):
    """The shortest time of each command, and its last output; the commands take turns."""
    times = [float("inf")] * len(commands)
    outputs = [b""] * len(commands)
    for _ in range(RUNS):
        for i, command in enumerate(commands):
            spent, outputs[i] = seconds(command)
            times[i] = min(times[i], spent)
    return times, outputs


def check(what, found, expected):
    print(f"{what}: {found} of {expected}")
    return found == expected


def measure(options):
    # The old /sys tells of the name space in which it was mounted.
    subprocess.run(["mount", "-t", "sysfs", "sysfs", "/sys"], check=True)
    kind = kind_of_this_kernel()
    if kind is None:
        print("this kernel has none of " + ", ".join(KINDS))
        return own_name_space.SKIP
    before = existing()
    make_interfaces(kind, options.count)
    with tempfile.TemporaryDirectory() as directory:
        scan = install(options, directory, GROUPS)
        (of_ip, of_scan), (_, document) = best([["ip", "-j", "addr"], scan])
    rows = lambda name: len(re.findall(rb"<" + name + rb"\b", document))
    is_right = check("adapters", rows(b"NetworkAdapter"), before + options.count)
    is_right &= check("addresses", rows(b"IPAddress"), options.count)
    ratio = of_scan / of_ip
    print(f"ip {of_ip * 1000:.1f} ms, scan {of_scan * 1000:.1f} ms, ratio {ratio:.2f}")
    is_quick = ratio <= LIMIT or not own_name_space.is_measured(options)
    return 0 if is_right and is_quick else 1


if __name__ == "__main__":
    sys.exit(own_name_space.run(__file__, measure, ["net", "mount"], ["true"],
                                "no network name space can be made here", count=int))

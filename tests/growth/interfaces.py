#!/usr/bin/env python3
"""Scans a network name space with many interfaces, and times it beside "ip -j addr".

Every interface and every address has to be in the document. In an optimised build the scan may take
twice the processor time of ip at most (neither waits for anything but the kernel, and a loaded machine
changes it less than the time on the wall); the best of several runs counts on both sides.
"""
import argparse
import os
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from timed_scan import install, seconds  # noqa: E402

SKIP = 77
RUNS = 7
LIMIT = 2.0
KINDS = ("dummy", "bridge", "ifb")  # whatever the kernel has
INSIDE = "--inside"
GROUPS = ("Network Adapter", "IP Address")


def enter_name_space():
    """Runs this script again with a network, and a /sys that shows it, of its own."""
    unshare = ["unshare", "--net", "--mount"]
    if os.geteuid() != 0:
        unshare += ["--map-root-user"]
    if subprocess.run(unshare + ["true"], stderr=subprocess.DEVNULL).returncode != 0:
        print("no network name space can be made here")
        return SKIP
    command = unshare + [sys.executable, "-IS", os.path.abspath(__file__), INSIDE] + sys.argv[1:]
    return subprocess.run(command).returncode


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
        return SKIP
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
    is_quick = ratio <= LIMIT or options.optimised == "0" or options.sanitizer != ""
    return 0 if is_right and is_quick else 1


def main():
    if INSIDE not in sys.argv:
        return enter_name_space()
    parser = argparse.ArgumentParser()
    parser.add_argument(INSIDE, action="store_true")
    parser.add_argument("--quenlor", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--count", type=int, required=True)
    parser.add_argument("--optimised", default="1")
    parser.add_argument("--sanitizer", default="")
    return measure(parser.parse_args())


if __name__ == "__main__":
    sys.exit(main())

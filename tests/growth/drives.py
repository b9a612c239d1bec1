#!/usr/bin/env python3
"""Scans machines of 1 to 10,000 drives with a partition each, whose kernel files stand in a tmpfs.

Every drive has to be reported. In an optimised build what a further drive costs may not grow with their
number; the best of several runs counts.
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

RUNS = 5
GROWTH = 1.5   # a square law would make a drive of 10,000 cost ten times that of one of 1,000
COUNTS = (1, 100, 1000, 10000)
BAR = 60       # characters of the longest
GROUPS = ("Storage", "Partition", "Volume")
ADAPTER = "devices/pci0000:00/0000:00:1f.2/host0"


def name_of(number):
    letters = ""
    number += 1
    while number:
        number, rest = divmod(number - 1, 26)
        letters = chr(ord("a") + rest) + letters
    return "sd" + letters


def write_all(directory, texts):
    os.makedirs(directory, exist_ok=True)
    for name, text in texts.items():
        with open(os.path.join(directory, name), "w") as file:
            file.write(text + "\n")


def make_drive(root, number):
    unit = f"0:0:{number}:0"
    name = name_of(number)
    device = f"{root}/{ADAPTER}/target0:0:{number}/{unit}"
    disk = f"{device}/block/{name}"
    write_all(device, {"type": "0", "vendor": "MAKER   ", "model": "DRIVE 18TB", "rev": "E004",
                       "state": "running", "wwid": f"naa.5000c500{number:08x}"})
    write_all(disk, {"dev": f"{8 + number // 16}:{number % 16 * 16}", "size": "35156656128", "ro": "0",
                     "removable": "0"})
    write_all(f"{disk}/queue", {"rotational": "1", "logical_block_size": "512",
                                "physical_block_size": "4096"})
    write_all(f"{disk}/{name}1", {"dev": f"{8 + number // 16}:{number % 16 * 16 + 1}", "partition": "1",
                                  "start": "2048", "size": "35156652032", "ro": "0"})
    os.symlink(os.path.relpath(device, disk), f"{disk}/device")
    os.symlink(os.path.relpath(disk, f"{root}/block"), f"{root}/block/{name}")
    os.symlink(os.path.relpath(device, f"{root}/bus/scsi/devices"), f"{root}/bus/scsi/devices/{unit}")


def make_machine(count):
    """In place of /sys."""
    subprocess.run(["mount", "-t", "tmpfs", "none", "/sys"], check=True)
    for directory in ("block", "bus/scsi/devices"):
        os.makedirs(f"/sys/{directory}")
    for number in range(count):
        make_drive("/sys", number)


def is_right(document, count):
    names = re.findall(rb"<DeviceName>/dev/(sd[a-z]+)</DeviceName>", document.split(b"<Partition")[0])
    print(f"{count} drives: {len(set(names))} reported")
    return len(names) == count and len(set(names)) == count


def plot(times):
    longest = max(times.values())
    for count, time in times.items():
        print(f"{count:6} drives {time * 1000:8.1f} ms {time / count * 1e6:8.1f} us each "
              + "#" * max(1, round(BAR * time / longest)))


def measure(options):
    times = {}
    right = True
    with tempfile.TemporaryDirectory() as directory:
        scan = install(options, directory, GROUPS)
        for count in COUNTS:
            make_machine(count)
            runs = [seconds(scan) for _ in range(RUNS)]
            times[count] = min(time for time, _ in runs)
            right &= is_right(runs[0][1], count)
            subprocess.run(["umount", "/sys"], check=True)
    plot(times)
    each = {count: (times[count] - times[100]) / (count - 100) for count in (1000, 10000)}
    print(f"a further drive: {each[1000] * 1e6:.1f} us of 1,000, {each[10000] * 1e6:.1f} us of 10,000")
    is_linear = each[10000] <= GROWTH * each[1000]
    return 0 if right and (is_linear or not own_name_space.is_measured(options)) else 1


if __name__ == "__main__":
    sys.exit(own_name_space.run(__file__, measure, ["mount"], ["mount", "-t", "tmpfs", "none", "/sys"],
                                "no mount name space can be made here"))

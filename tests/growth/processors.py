#!/usr/bin/env python3
"""Scans machines of up to 1,024 processors, whose kernel files stand in a tmpfs.

Every processor has to be counted. In an optimised build the scan of the largest may take 30 ms of
processor time, and what a processor costs may not grow with their number; the best of several runs
counts.
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

RUNS = 9
LIMIT = 0.030  # seconds
GROWTH = 1.5   # a square law would make a processor of 1,024 cost twice that of one of 512
COUNTS = (128, 256, 512, 1024)
CORES_PER_PACKAGE = 64
GROUPS = ("Processor", "PhysicalProcessor", "Cache")
CPUS = "/sys/devices/system/cpu"
CACHES = (("1", "Data", "32K", 2), ("1", "Instruction", "32K", 2), ("2", "Unified", "1024K", 2),
          ("3", "Unified", "65536K", 0))  # level, type, size, sharing threads (0: the package's)


def write(directory, name, text):
    with open(os.path.join(directory, name), "w") as file:
        file.write(text + "\n")


def make_processor(root, cpu, core_list, package_list, package):
    topology = f"{root}/cpu{cpu}/topology"
    os.makedirs(topology)
    write(topology, "physical_package_id", str(package))
    write(topology, "die_id", "0")
    write(topology, "core_id", str(cpu // 2))
    for name in ("core_cpus_list", "thread_siblings_list"):
        write(topology, name, core_list)
    for name in ("package_cpus_list", "core_siblings_list", "die_cpus_list"):
        write(topology, name, package_list)
    for index, (level, kind, size, sharing) in enumerate(CACHES):
        cache = f"{root}/cpu{cpu}/cache/index{index}"
        os.makedirs(cache)
        for name, text in (("level", level), ("type", kind), ("size", size),
                           ("ways_of_associativity", "8"), ("coherency_line_size", "64"),
                           ("shared_cpu_list", core_list if sharing else package_list)):
            write(cache, name, text)


def make_machine(root, count):
    """Two threads a core, numbered one after the other."""
    blocks = []
    threads = CORES_PER_PACKAGE * 2
    for cpu in range(count):
        package = cpu // threads
        first = cpu // 2 * 2
        make_processor(root, cpu, f"{first}-{first + 1}",
                       f"{package * threads}-{package * threads + threads - 1}", package)
        blocks.append(f"processor\t: {cpu}\nvendor_id\t: GenuineIntel\ncpu family\t: 6\nmodel\t\t: 143\n"
                      f"model name\t: A Processor @ 2.00GHz\nstepping\t: 8\ncpu MHz\t\t: 2000.000\n"
                      f"physical id\t: {package}\nsiblings\t: {threads}\ncore id\t\t: {cpu // 2}\n"
                      f"cpu cores\t: {CORES_PER_PACKAGE}\nflags\t\t: fpu de ht lm {'flag ' * 150}\n")
    for name in ("online", "present", "possible"):
        write(root, name, f"0-{count - 1}")
    write(os.path.dirname(root), "cpuinfo", "\n".join(blocks))


def mount_machine(directory, count):
    root = os.path.join(directory, str(count), "cpu")
    os.makedirs(root)
    make_machine(root, count)
    subprocess.run(["mount", "--bind", root, CPUS], check=True)
    subprocess.run(["mount", "--bind", os.path.join(directory, str(count), "cpuinfo"), "/proc/cpuinfo"],
                   check=True)


def is_right(document, count):
    threads = [int(text) for text in re.findall(rb"<OnlineThreads>(\d+)", document)]
    packages = count // (CORES_PER_PACKAGE * 2)
    print(f"{count} processors: {sum(threads)} in {len(threads)} packages")
    return sum(threads) == count and len(threads) == packages


def measure(options):
    times = {}
    right = True
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run(["mount", "-t", "tmpfs", "none", directory], check=True)
        scan = install(options, directory, GROUPS)
        for count in COUNTS:
            mount_machine(directory, count)
            runs = [seconds(scan) for _ in range(RUNS)]
            times[count] = min(time for time, _ in runs)
            right &= is_right(runs[0][1], count)
            subprocess.run(["umount", CPUS, "/proc/cpuinfo"], check=True)
        subprocess.run(["umount", "--lazy", directory], check=True)
    for count, time in times.items():
        print(f"{count} processors: {time * 1000:.1f} ms")
    each = {count: (times[count] - times[128]) / (count - 128) for count in (512, 1024)}
    print(f"a further processor: {each[512] * 1e6:.1f} us of 512, {each[1024] * 1e6:.1f} us of 1024")
    is_quick = times[1024] <= LIMIT and each[1024] <= GROWTH * each[512]
    return 0 if right and (is_quick or not own_name_space.is_measured(options)) else 1


if __name__ == "__main__":
    sys.exit(own_name_space.run(__file__, measure, ["mount"], ["mount", "-t", "tmpfs", "none", "/mnt"],
                                "no mount name space can be made here"))

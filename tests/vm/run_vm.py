#!/usr/bin/env python3
"""Builds the virtual machine's image, or boots one scenario and compares what the scanner said there.

    run_vm.py --work DIR image --build DIR --helpers DIR KIT...
    run_vm.py --work DIR devices|modern|network|nodes|processors|pvscsi|storage|topology-NAME|vmware
"""

import argparse
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "machines"), str(HERE.parent / "modern")]

import compare_devices  # noqa: E402
import compare_modern  # noqa: E402
import compare_network  # noqa: E402
import compare_nodes  # noqa: E402
import compare_processors  # noqa: E402
import compare_pvscsi  # noqa: E402
import compare_storage  # noqa: E402
import compare_topology  # noqa: E402
import compare_vmware  # noqa: E402
import image  # noqa: E402
import qemu  # noqa: E402
from comparison import Comparison  # noqa: E402
from kits import KITS  # noqa: E402

COMPARE = {"devices": compare_devices.compare, "processors": compare_processors.compare,
           "pvscsi": compare_pvscsi.compare, "nodes": compare_nodes.compare,
           "modern": compare_modern.compare, "topology": compare_topology.compare,
           "storage": compare_storage.compare, "network": compare_network.compare,
           "vmware": compare_vmware.compare}
BOOT_LIMIT = 400  # seconds; a boot takes 20 to 40 on an idle machine, many times that on a busy one


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--work", type=Path, required=True, help="directory for everything built")
    commands = parser.add_subparsers(dest="command", required=True)
    build = commands.add_parser("image")
    build.add_argument("--build", type=Path, required=True, help="build tree to install from")
    build.add_argument("--helpers", type=Path, required=True, help="programs of this folder")
    build.add_argument("kits", nargs="+", choices=KITS, metavar="KIT", help="image to build")
    for scenario in qemu.SCENARIOS:
        commands.add_parser(scenario)
    return parser.parse_args()


def compare_scenario(name, work):
    kernel = image.fetch_kernel(work / "cache")
    start = time.monotonic()
    results = qemu.run_scenario(name, work / name, kernel, work, BOOT_LIMIT)
    keep_results(results, work / name / "results")
    comparison = Comparison()
    COMPARE[name.partition("-")[0]](results, comparison)
    print(f"{comparison.made} comparisons, {comparison.failures} failed, "
          f"{time.monotonic() - start:.0f} s")
    return comparison.failures == 0


def keep_results(results, directory):
    """For whoever has to find out why a comparison failed."""
    directory.mkdir(exist_ok=True)
    for name, text in results.items():
        (directory / name).write_text(text)


def main():
    arguments = parse_arguments()
    try:
        if arguments.command == "image":
            kernel = image.fetch_kernel(arguments.work / "cache")
            for kit in arguments.kits:
                image.build_initramfs(arguments.work, kernel, arguments.build, arguments.helpers, kit)
            return 0
        return 0 if compare_scenario(arguments.command, arguments.work) else 1
    except image.Unavailable as reason:
        print(f"The virtual machine test cannot run, and so has failed: {reason}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())

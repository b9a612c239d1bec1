#!/usr/bin/env python3
"""Scans one fixture machine with the shipped binary and compares every document with its golden.

QUENLOR_UPDATE_GOLDEN=1 rewrites the goldens; review them like code. Exit status: 0 as expected, 1 not,
77 where nobody may make the namespaces that a machine lives in.
"""

import argparse
import os
import sys
import tempfile
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from harness import namespace  # noqa: E402
from harness.machine import load_machine  # noqa: E402
from harness.scan import Scan  # noqa: E402
from harness.stage import Stage  # noqa: E402


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("machine", help="directory of the machine")
    parser.add_argument("--quenlor", required=True, help="the scanner")
    parser.add_argument("--data", required=True, help="directory of its configuration files")
    parser.add_argument("--make-firmware", help="program that writes firmware images")
    parser.add_argument("--sanitizer", default="", help="sanitizers the scanner was built with")
    return parser.parse_args()


def scan_machine(arguments):
    machine = load_machine(arguments.machine)
    namespace.set_host_name(machine.hostname)
    network = namespace.Network()
    if machine.loopback:
        network.bring_up_loopback()
    network.add(machine.interfaces)
    try:
        with tempfile.TemporaryDirectory(prefix="machine-") as root:
            Stage(machine, root, arguments).build()
            scan = Scan(machine, root, arguments.sanitizer)
            update = os.environ.get("QUENLOR_UPDATE_GOLDEN") == "1"
            complaints = [line for kind in machine.documents for line in scan.check(kind, update)]
            if machine.traced:
                complaints += scan.check_traced(update)
            namespace.unmount(root)
    finally:
        network.close()
    return complaints


def main():
    arguments = parse_arguments()

    def judge():
        complaints = scan_machine(arguments)
        print("\n".join(complaints) if complaints else "as expected")
        return 1 if complaints else 0

    return namespace.in_private_machine(judge)


if __name__ == "__main__":
    sys.exit(main())

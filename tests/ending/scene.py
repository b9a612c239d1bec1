"""A machine on which scans are ended in every way there is: files, commands, a module that is loaded.

The shipped program runs unchanged; the machine is one of the fixture machines' kind (tests/machines).
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from contextlib import suppress
from pathlib import Path

MACHINES = Path(__file__).resolve().parent.parent / "machines"
sys.dont_write_bytecode = True
sys.path.insert(0, str(MACHINES))

from harness import namespace  # noqa: E402
from harness.machine import Machine  # noqa: E402
from harness.scan import PATH, SANITIZER_OPTIONS, show_own_processes  # noqa: E402
from harness.stage import INSTALL, SCAN_CONFIGURATION, Stage  # noqa: E402

PROGRAM = f"/{INSTALL}/quenlor"
COMMANDS = ["cat", "rm", "sleep", "mkdir", "rmdir", "kill", "dd"]

# Knows whether the module is loaded by a directory where the kernel has one.
MODPROBE = """#!/bin/sh
echo "$*" >> /tmp/modprobe.log
case "$*" in
  "--first-time sg")
    mkdir /sys/module/sg 2>/dev/null && exit 0
    echo "modprobe: ERROR: could not insert 'sg': Module already in kernel" >&2
    exit 1 ;;
  "--first-time -r sg")
    rmdir /sys/module/sg 2>/dev/null ;;
esac
"""


class Scene:
    """A machine and the scans on it. To be used within namespaces of its own: see run_tests()."""

    def __init__(self, tools, groups=("Storage",), settings=None, mount_seconds=0.3, mtab=""):
        self._sanitizer = tools.sanitizer
        self._directory = tempfile.TemporaryDirectory(prefix="ending-")
        self.root = Path(self._directory.name)
        machine = Machine(path=MACHINES / "none", groups=list(groups), settings=settings or {},
                          commands=COMMANDS)
        Stage(machine, self.root, tools).build()
        (self.root / "sys/module").mkdir()
        self.command("sbin/modprobe", MODPROBE)
        self.command("bin/mount", f"#!/bin/sh\nsleep {mount_seconds}\n")
        (self.root / "etc/mtab").write_text(mtab)

    def command(self, path, text):
        path = self.root / path
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)

    def start(self, *options, before=None, **keywords):
        """A scan in a process group of its own. `before` runs in its process before the program does."""
        def enter():
            for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
                signal.signal(number, signal.SIG_DFL)  # whatever the test was started with
            os.chroot(self.root)
            os.chdir("/")
            if self._sanitizer:
                show_own_processes(os.getpid())
            if before:
                before()
        keywords = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE,
                    "stderr": subprocess.PIPE, **keywords}
        environment = {"PATH": PATH, "TZ": "UTC0", **(SANITIZER_OPTIONS if self._sanitizer else {}),
                       **keywords.pop("environment", {})}
        return subprocess.Popen([PROGRAM, "-c", f"/{SCAN_CONFIGURATION}", *options],
                                preexec_fn=enter, env=environment, process_group=0,
                                **keywords)

    def close(self):
        namespace.unmount(self.root)
        self._directory.cleanup()

    def is_module_loaded(self):
        return (self.root / "sys/module/sg").exists()

    def forget_module(self):
        with suppress(FileNotFoundError):
            (self.root / "sys/module/sg").rmdir()

    def modprobes(self):
        log = self.root / "tmp/modprobe.log"
        return log.read_text().splitlines() if log.exists() else []

    def left_behind(self):
        """What a scan has left on the machine, as texts."""
        left = ["the module"] if self.is_module_loaded() else []
        if (self.root / "tmp/modprobe.error").exists():
            left.append("modprobe's message file")
        return left + [f"process {one}" for one in wait_for_processes_to_end()]


def children_of(process):
    """Process numbers of the children, once there are any; none when the process has ended."""
    for _ in range(2000):
        try:
            text = Path(f"/proc/{process}/task/{process}/children").read_text()
        except (FileNotFoundError, ProcessLookupError):
            return []
        if text:
            return [int(number) for number in text.split()]
        if state_of(process) in ("Z", ""):
            return []
        time.sleep(0.001)
    return []


def state_of(process):
    """One letter as ps shows it; empty when there is no such process."""
    try:
        return Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return ""


def strangers():
    """Living processes of this namespace that are no test's: {number: name}."""
    found = {}
    for number in (int(name) for name in os.listdir("/proc") if name.isdecimal()):
        with suppress(FileNotFoundError, ProcessLookupError):
            name = Path(f"/proc/{number}/comm").read_text().strip()
            if not re.match("python", name) and state_of(number) not in ("Z", ""):
                found[number] = name
    return found


def wait_for_processes_to_end(seconds=1.0):
    """The processes that are still there after that time."""
    end = time.monotonic() + seconds
    while strangers() and time.monotonic() < end:
        time.sleep(0.01)
    left = strangers()
    with suppress(ChildProcessError):  # what has come to us, process 1 of the namespace
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass
    return [f"{number} {name}" for number, name in left.items()]


def kill_strangers():
    for number in strangers():
        with suppress(ProcessLookupError):
            os.kill(number, signal.SIGKILL)


def tools_of(arguments):
    return argparse.Namespace(quenlor=arguments.quenlor, data=arguments.data, make_firmware=None,
                     sanitizer=arguments.sanitizer)


def run_tests(run):
    """Runs `run(tools)`, which gives an exit status, in namespaces of its own."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--quenlor", required=True, help="the scanner")
    parser.add_argument("--data", required=True, help="directory of its configuration files")
    parser.add_argument("--sanitizer", default="", help="sanitizers the scanner was built with")
    parser.add_argument("rest", nargs="*")
    arguments = parser.parse_args()
    return namespace.in_private_machine(lambda: run(tools_of(arguments), arguments.rest))


def run_cases(case, tools, names):
    """Runs the test case, or those of its tests that are named; its class gets the tools."""
    case.tools = tools
    loader = unittest.defaultTestLoader
    suite = (loader.loadTestsFromNames(names, case) if names
             else loader.loadTestsFromTestCase(case))
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    if not result.wasSuccessful():
        return 1
    return namespace.SKIPPED if result.testsRun and len(result.skipped) == result.testsRun else 0

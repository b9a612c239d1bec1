"""Lays a machine out in a directory that a scan then takes for the whole world."""

import os
import shutil
import stat
import subprocess
from pathlib import Path

from harness import namespace
from harness.numbered import numbered
from harness.programs import copy_program
from harness.utmp import utmp_record

INSTALL = "opt/quenlor"
# Where sanitizer runtimes find the kernel's own /proc, out of the scanner's sight.
KERNEL = ".kernel"
# What the thread sanitizer reports of code that is not the scanner's.
SUPPRESSIONS = ".suppressions"
SUPPRESSED = (Path(__file__).resolve().parents[2] / "support/tsan.suppressions").read_text()
SCAN_CONFIGURATION = "etc/scan-groups.xml"
# The shell that popen starts. Not busybox: its shell would run its own applets (mount, ifconfig,
# ps ...) in place of the machine's commands, or of their absence.
SHELL = "/bin/dash"
BUSYBOX = "/bin/busybox"


class Stage:
    """The root directory of one machine, on a file system that ends with the mount namespace."""

    def __init__(self, machine, root, tools):
        self._machine = machine
        self._root = Path(root)
        self._tools = tools

    def build(self):
        namespace.mount_ramfs(self._root)
        for directory in ("dev", "etc", "proc", "sys", "tmp", "var/run", "var/tmp", "bin",
                          INSTALL):
            (self._root / directory).mkdir(parents=True)
        (self._root / "tmp").chmod(0o1777)
        self._add_dev_null()
        for layer in self._machine.roots():
            copy_in_order(layer, self._root)
        self._generate()
        self._add_shell()
        self._add_scanner()
        self._add_locales()
        self._add_utmp()
        self._add_firmware()
        for name in self._machine.host_files:
            copy_program(name, self._root)
        self._mount_file_systems()
        if self._tools.sanitizer:
            self._add_kernel()

    def _add_kernel(self):
        """A sanitizer's runtime reads /proc/self of its own process; the scanner never does."""
        (self._root / KERNEL).mkdir()
        namespace.mount("proc", self._root / KERNEL, "proc")
        (self._root / "proc/self").symlink_to(f"/{KERNEL}/self")
        (self._root / SUPPRESSIONS).write_text(SUPPRESSED)

    def _add_dev_null(self):
        # A bind mount, since mknod is refused in a user namespace.
        null = self._root / "dev/null"
        null.touch()
        namespace.bind("/dev/null", null)

    def _generate(self):
        """Files too repetitive to be kept: `text` `count` times, with {i} counting from 0; one file
        each where the path counts too."""
        for item in reversed(self._machine.generate):
            pieces = [numbered(item["text"], i) for i in range(item["count"])]
            if "{i" in item["path"]:
                for i in reversed(range(item["count"])):
                    self._write(numbered(item["path"], i), pieces[i])
            else:
                self._write(item["path"],
                            item.get("before", "") + "".join(pieces) + item.get("after", ""))

        for path, size in self._machine.sparse.items():
            self._write(path, "")
            os.truncate(self._root / path, size)

    def _write(self, path, text):
        path = self._root / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def _add_shell(self):
        copy_program(SHELL, self._root)
        (self._root / "bin/sh").symlink_to("dash")
        shutil.copy2(BUSYBOX, self._root / "bin/busybox")
        for command in self._machine.commands:
            (self._root / "bin" / command).symlink_to("busybox")

    def _add_scanner(self):
        install = self._root / INSTALL
        copy_program(self._tools.quenlor, self._root, install / "quenlor")
        for name in ("quenlor.conf", "DovHWConfig.xml"):
            shutil.copy2(Path(self._tools.data) / name, install / name)
        # A machine is scanned with the classic sources unless its settings say otherwise.
        settings = {"hwscanner.sources": "classic"} | self._machine.settings
        with open(install / "quenlor.conf", "a", encoding="utf-8") as stream:
            stream.writelines(f"{key} = {text}\n" for key, text in settings.items())
        if self._machine.groups is not None:
            (self._root / SCAN_CONFIGURATION).write_text(scan_configuration(self._machine.groups))

    def _add_locales(self):
        for name in self._machine.locales:
            directory = f"usr/lib/locale/{name}"
            shutil.copytree(f"/{directory}", self._root / directory)

    def _add_utmp(self):
        if self._machine.utmp:
            records = b"".join(utmp_record(**record) for record in self._machine.utmp)
            (self._root / "var/run/utmp").write_bytes(records)

    def _add_firmware(self):
        if self._machine.firmware:
            image = self._root / "dev/mem"
            subprocess.run([self._tools.make_firmware, self._machine.firmware, image], check=True)

    def _mount_file_systems(self):
        for item in self._machine.mounts:
            for i in range(item.get("count", 1)):
                target = self._root / numbered(item["at"], i).lstrip("/")
                target.mkdir(parents=True, exist_ok=True)
                namespace.mount_tmpfs(target, item["size"])
        for at in self._machine.dead_mounts:
            target = self._root / at.lstrip("/")
            target.mkdir(parents=True)
            namespace.mount_dead(target)  # the server's side stays open as long as this process


def copy_in_order(source, target):
    """Copies a tree so that each directory, listed newest entry first, comes in order of names."""
    for entry in sorted(os.scandir(source), key=lambda entry: entry.name, reverse=True):
        path = target / entry.name
        if entry.is_symlink():
            path.symlink_to(os.readlink(entry.path))
        elif entry.is_dir():
            path.mkdir(exist_ok=True)
            copy_in_order(entry.path, path)
        else:
            shutil.copy2(entry.path, path)


def scan_configuration(groups):
    lines = "".join(f'  <Group Name="{name}"/>\n' for name in groups)
    return f'<?xml version="1.0" encoding="UTF-8"?>\n<Hardware>\n{lines}</Hardware>\n'


def snapshot(root, untouched=()):
    """Every path with what tells a change of it. Other file systems are not entered, and the
    `untouched` paths not even looked at."""
    root = Path(root)
    device = root.stat().st_dev
    found = {}
    for directory, names, files in os.walk(root):
        inside = Path("/", Path(directory).relative_to(root))
        names[:] = [name for name in names if str(inside / name) not in untouched
                    and Path(directory, name).lstat().st_dev == device]
        for name in [*names, *files]:
            status = Path(directory, name).lstat()
            shape = (status.st_mode,)
            if not stat.S_ISDIR(status.st_mode):
                shape += (status.st_size, status.st_mtime_ns)
            found[str(inside / name)] = shape
    return found


def changes(before, after, expected):
    """Texts that name what a run created, changed or removed beyond the expected paths."""
    told = []
    for path in sorted(set(before) | set(after)):
        if path in expected or before.get(path) == after.get(path):
            continue
        verb = "created" if path not in before else "removed" if path not in after else "changed"
        told.append(f"the scan {verb} {path}")
    missing = [path for path in expected if path not in after]
    return told + [f"the scan did not leave {path}" for path in missing]

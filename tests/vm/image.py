"""The virtual machine's kernel and initramfs: Debian's kernel package, the installed scanner and the
tools its values are compared with."""

import glob
import os
import re
import shutil
import subprocess
from pathlib import Path

from harness.programs import copy_program
from kits import KITS

# Shell for popen as on Debian; busybox would put its own applets in place of the real commands.
SHELL = "/bin/dash"
BUSYBOX = "/bin/busybox"
HELPERS = ("port_access", "drive_geometry", "hold_node", "router_advertisement")


class Unavailable(Exception):
    """Something that the test needs from outside cannot be had."""


def need_program(name, package):
    if not shutil.which(name):
        raise Unavailable(f"{name} is missing; install the Debian package {package}")


def fetch_kernel(cache):
    """Unpacks the newest kernel package once; returns its directory."""
    cache = Path(cache)
    unpacked = cache / "kernel"
    if (unpacked / "complete").exists():
        return unpacked
    cache.mkdir(parents=True, exist_ok=True)
    package = _download_kernel(cache)
    shutil.rmtree(unpacked, ignore_errors=True)
    subprocess.run(["dpkg-deb", "-x", package, unpacked], check=True)
    (unpacked / "complete").touch()
    Path(package).unlink()
    return unpacked


def _download_kernel(cache):
    found = glob.glob(str(cache / "linux-image-*.deb"))
    if found:
        return found[0]
    name = _newest_kernel_package()
    fetched = subprocess.run(["apt-get", "download", name], cwd=cache, capture_output=True, text=True)
    found = glob.glob(str(cache / "linux-image-*.deb"))
    if fetched.returncode != 0 or not found:
        raise Unavailable(f"cannot download the kernel package {name}:\n{fetched.stderr}")
    return found[0]


def _newest_kernel_package():
    pattern = r"Depends: (linux-image-\S+-amd64)"
    for _ in range(2):
        listed = subprocess.run(["apt-cache", "depends", "linux-image-amd64"],
                                capture_output=True, text=True)
        if match := re.search(pattern, listed.stdout):
            return match[1]
        subprocess.run(["apt-get", "update", "-qq"], capture_output=True)
    raise Unavailable("apt knows no linux-image-amd64; are its package lists there?")


def kernel_file(kernel):
    return next((kernel / "boot").glob("vmlinuz-*"))


def initramfs_file(work, kit):
    return work / f"initramfs-{kit}"


def build_initramfs(work, kernel, build_directory, helpers, kit):
    """Writes the image of that kit; the scanner is installed from the CMake tree `build_directory`,
    the programs of this folder lie in the directory `helpers`."""
    root = work / f"root-{kit}"
    shutil.rmtree(root, ignore_errors=True)
    for directory in ("proc", "sys", "dev", "tmp", "run", "results", "mnt", "etc", "bin", "sbin",
                      "var/run", "opt/busybox"):
        (root / directory).mkdir(parents=True)
    _add_commands(root, KITS[kit])
    _add_modules(root, kernel, KITS[kit].modules)
    _install_scanner(root, build_directory)
    for name in HELPERS:
        copy_program(helpers / name, root, root / "opt" / name)
    guest = Path(__file__).parent / "guest"
    shutil.copytree(guest, root, dirs_exist_ok=True)
    with open(initramfs_file(work, kit), "wb") as stream:
        names = subprocess.run(["find", ".", "-print0"], cwd=root, capture_output=True, check=True)
        subprocess.run(["cpio", "--null", "--create", "--format=newc", "--quiet", "--owner=0:0"],
                       cwd=root, input=names.stdout, stdout=stream, check=True)


def _add_commands(root, kit):
    need_program(BUSYBOX, "busybox-static")
    copy_program(SHELL, root)
    (root / "bin/sh").symlink_to("dash")
    shutil.copy2(BUSYBOX, root / "opt/busybox/busybox")
    for applet in kit.applets:
        (root / "opt/busybox" / applet).symlink_to("busybox")
    for applet in ("cat", "rm"):
        (root / "bin" / applet).symlink_to("../opt/busybox/busybox")
    for tool, package in kit.tools.items():
        need_program(tool, package)
        copy_program(os.path.realpath(tool), root, root / tool.lstrip("/"))
    for link, tool in kit.links.items():
        (root / link).parent.mkdir(parents=True, exist_ok=True)
        (root / link).symlink_to(tool)
    for path in kit.files:
        (root / path.lstrip("/")).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(path, root / path.lstrip("/"))


def _add_modules(root, kernel, names):
    source = next((kernel / "lib/modules").iterdir())
    target = root / "lib/modules" / source.name
    files = {path.name.split(".")[0].replace("-", "_"): path for path in source.rglob("*.ko*")}
    for name in _with_dependencies(files, names):
        copy = target / files[name].relative_to(source)
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_bytes(_without_signature(files[name].read_bytes()))
    for listing in source.glob("modules.builtin*"):
        shutil.copy2(listing, target)
    need_program("depmod", "kmod")
    subprocess.run(["depmod", "-b", root, source.name], check=True, capture_output=True)


def _without_signature(module):
    """To check one takes an emulated processor longer than all else that loading does; the kernel wants none.
    Behind the module stand the signature, 12 bytes that end with its length, and a line of text."""
    mark = b"~Module signature appended~\n"
    if not module.endswith(mark):
        return module
    length = int.from_bytes(module[-len(mark) - 4:-len(mark)], "big")
    return module[:-len(mark) - 12 - length]


def _with_dependencies(files, names):
    """Those names and what their modules' own headers say they depend on; built-in ones drop out."""
    wanted, todo = [], [name.replace("-", "_") for name in names]
    while todo:
        name = todo.pop()
        if name in wanted or name not in files:
            continue
        wanted.append(name)
        info = subprocess.run(["modinfo", "-F", "depends", files[name]], capture_output=True,
                              text=True, check=True)
        todo += [other.replace("-", "_") for other in info.stdout.strip().split(",")]
    return wanted


def _install_scanner(root, build_directory):
    # Stripped as the package's: with its debugging information the program would be most of the image.
    subprocess.run(["cmake", "--install", build_directory, "--prefix", "/usr", "--strip"], check=True,
                   stdout=subprocess.DEVNULL, env={**os.environ, "DESTDIR": str(root)})
    scanner = next(root.glob("usr/*bin/quenlor"))
    copy_program(scanner, root, scanner)

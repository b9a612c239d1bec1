"""The virtual machine's kernel and initramfs: Debian's kernel package, the installed scanner and the
tools its values are compared with."""

import glob
import os
import re
import shutil
import subprocess
from pathlib import Path

from harness.programs import copy_program

# Shell for popen as on Debian; busybox would put its own applets in place of the real commands.
SHELL = "/bin/dash"
BUSYBOX = "/bin/busybox"
# What /init uses from busybox. The scanner's own commands are never among them, except cat and rm.
APPLETS = ("cat", "chmod", "cut", "grep", "head", "ln", "ls", "mkdir", "mkfifo", "mv", "poweroff", "rm",
           "sed", "sleep", "swapon", "tar", "tr", "uname")
# Programs of the guest and the Debian package each comes from.
TOOLS = {
    "/usr/sbin/dmidecode": "dmidecode", "/usr/bin/sg_inq": "sg3-utils",
    "/usr/bin/sg_map": "sg3-utils", "/usr/bin/lsblk": "util-linux", "/usr/bin/lscpu": "util-linux",
    "/usr/bin/lspci": "pciutils", "/usr/sbin/fdisk": "fdisk", "/usr/sbin/ifconfig": "net-tools",
    "/usr/bin/ps": "procps", "/usr/bin/kmod": "kmod", "/usr/bin/df": "coreutils",
    "/usr/bin/mount": "mount", "/usr/bin/hostname": "hostname", "/usr/sbin/ip": "iproute2",
}
# Names by which the scanner calls some of them.
LINKS = {"sbin/modprobe": "kmod", "sbin/fdisk": "fdisk", "sbin/lspci": "lspci",
         "sbin/ifconfig": "ifconfig", "sbin/ip": "ip", "bin/mount": "mount", "bin/ps": "ps"}
HELPERS = ("port_access", "drive_geometry", "hold_node")
MODULES = (
    "sym53c8xx", "ata_piix", "sd_mod", "sr_mod", "sg", "floppy", "e1000", "virtio_pci",
    "virtio_console", "crc32c_generic", "ext4", "vfat", "nls_cp437", "nls_ascii", "nls_iso8859-1",
    "vmw_pvscsi", "scsi_debug",
)


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


def build_initramfs(work, kernel, build_directory, helpers):
    """Writes work/initramfs; the scanner is installed from the CMake tree `build_directory`, the
    programs of this folder lie in the directory `helpers`."""
    root = work / "root"
    shutil.rmtree(root, ignore_errors=True)
    for directory in ("proc", "sys", "dev", "tmp", "run", "results", "mnt", "etc", "bin", "sbin",
                      "var/run", "opt/busybox"):
        (root / directory).mkdir(parents=True)
    _add_commands(root)
    _add_modules(root, kernel)
    _install_scanner(root, build_directory)
    for name in HELPERS:
        copy_program(helpers / name, root, root / "opt" / name)
    guest = Path(__file__).parent / "guest"
    shutil.copytree(guest, root, dirs_exist_ok=True)
    image = work / "initramfs"
    with open(image, "wb") as stream:
        names = subprocess.run(["find", ".", "-print0"], cwd=root, capture_output=True, check=True)
        subprocess.run(["cpio", "--null", "--create", "--format=newc", "--quiet", "--owner=0:0"],
                       cwd=root, input=names.stdout, stdout=stream, check=True)
    return image


def _add_commands(root):
    need_program(BUSYBOX, "busybox-static")
    copy_program(SHELL, root)
    (root / "bin/sh").symlink_to("dash")
    shutil.copy2(BUSYBOX, root / "opt/busybox/busybox")
    for applet in APPLETS:
        (root / "opt/busybox" / applet).symlink_to("busybox")
    for applet in ("cat", "rm"):
        (root / "bin" / applet).symlink_to("../opt/busybox/busybox")
    for tool, package in TOOLS.items():
        need_program(tool, package)
        copy_program(os.path.realpath(tool), root, root / tool.lstrip("/"))
    for link, name in LINKS.items():
        tool = next(path for path in TOOLS if path.endswith("/" + name))
        (root / link).symlink_to(tool)
    (root / "usr/share/misc").mkdir(parents=True)
    shutil.copy2("/usr/share/misc/pci.ids", root / "usr/share/misc/pci.ids")


def _add_modules(root, kernel):
    source = next((kernel / "lib/modules").iterdir())
    target = root / "lib/modules" / source.name
    files = {path.name.split(".")[0].replace("-", "_"): path for path in source.rglob("*.ko*")}
    for name in _with_dependencies(files, MODULES):
        copy = target / files[name].relative_to(source)
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(files[name], copy)
    for listing in source.glob("modules.builtin*"):
        shutil.copy2(listing, target)
    need_program("depmod", "kmod")
    subprocess.run(["depmod", "-b", root, source.name], check=True, capture_output=True)


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
    subprocess.run(["cmake", "--install", build_directory, "--prefix", "/usr"], check=True,
                   stdout=subprocess.DEVNULL, env={**os.environ, "DESTDIR": str(root)})
    scanner = next(root.glob("usr/*bin/quenlor"))
    copy_program(scanner, root, scanner)

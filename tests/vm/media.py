"""Files that the virtual machine has as drives: partition tables and file systems of the real tools."""

import subprocess
from dataclasses import dataclass

MEBIBYTE = 1 << 20
MAKERS = {
    "ext2": lambda path, label: ["/sbin/mke2fs", "-q", "-t", "ext2", "-L", label, path],
    "ext4": lambda path, label: ["/sbin/mke2fs", "-q", "-t", "ext4", "-L", label, path],
    "swap": lambda path, label: ["/sbin/mkswap", "-L", label, path],
    "vfat": lambda path, label: ["busybox", "mkdosfs", "-n", label, path],
    "xfs": lambda path, label: ["/sbin/mkfs.xfs", "-q", "-L", label, path],
    "dos": lambda path, label: ["busybox", "mkdosfs", path],
}


@dataclass(frozen=True)
class Medium:
    """A drive's contents; `table` (gpt, dos) with `parts`, or `content` on the whole of it."""
    name: str
    mebibytes: float
    content: str = ""
    label: str = ""
    table: str = ""
    parts: tuple = ()

    def make(self, directory):
        path = directory / f"{self.name}.img"
        _sparse(path, int(self.mebibytes * 1024))
        if self.table:
            _partition(path, self.table, self.parts)
        elif self.content == "iso":
            _write(path, 0, iso_volume(self.label))
        elif self.content:
            make_content(path, self.content, self.label)
        return path


def drive_arguments(directory, drives):
    """QEMU's arguments for pairs of a medium and the device that holds it."""
    arguments = []
    for medium, device in drives:
        kind = "cdrom,readonly=on" if "-cd," in device else "disk"
        arguments += ["-drive", f"if=none,id={medium.name},file={medium.make(directory)},format=raw,media={kind}",
                      "-device", f"{device},drive={medium.name}"]
    return arguments


def make_content(path, kind, label=""):
    subprocess.run(MAKERS[kind](path, label), check=True, capture_output=True)


def _sparse(path, kibibytes):
    path.unlink(missing_ok=True)
    with open(path, "wb") as stream:
        stream.truncate(kibibytes * 1024)


def _write(path, offset, data):
    with open(path, "r+b") as stream:
        stream.seek(offset)
        stream.write(data)


def _partition(path, table, parts):
    """Logical partitions follow an extended one (type 5), which has no contents."""
    lines, start, starts = [f"label: {table}"], 1, []
    for part in parts:
        size = part["mebibytes"] * MEBIBYTE // 512
        name = f', name="{part["name"]}"' if part.get("name") else ""
        lines.append(f'start={start * 2048}, size={size}, type={part["type"]}{name}')
        starts.append(start)
        start += 1 if part["type"] == "5" else part["mebibytes"] + 1
    subprocess.run(["/sbin/sfdisk", "-q", path], input="\n".join(lines).encode(), check=True, capture_output=True)
    for part, first in zip(parts, starts):
        if "content" in part:
            _fill(path, first, part)


def _fill(path, first, part):
    content = path.with_suffix(".part")
    _sparse(content, part["mebibytes"] * 1024)
    make_content(content, part["content"], part["label"])
    _copy_written(content, path, first * MEBIBYTE)
    content.unlink()


def _copy_written(source, target, offset):
    """Blocks of zeros stay holes."""
    with open(source, "rb") as content, open(target, "r+b") as stream:
        while block := content.read(MEBIBYTE):
            if block.strip(b"\0"):
                stream.seek(offset)
                stream.write(block)
            offset += MEBIBYTE


def iso_volume(label):
    """As much of ISO 9660 as names a volume: 16 empty sectors, its descriptor, and the end of those."""
    descriptor = bytearray(2048)
    descriptor[0:7] = b"\x01CD001\x01"
    descriptor[40:72] = label.encode().ljust(32)
    descriptor[813:830] = b"2024022912000000\0"
    return bytes(16 * 2048) + bytes(descriptor) + b"\xffCD001\x01".ljust(2048, b"\0")

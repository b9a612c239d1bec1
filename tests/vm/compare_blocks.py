"""Drives, partitions, file systems and volumes against lsblk, findmnt, df and the kernel's swap table."""

import json
import re

# lsblk's transport where the scanner has a word of its own, and the bus of what has no transport.
BUSES = {"sata": "sata", "usb": "usb", "nvme": "nvme", "sas": "sas", "ata": "ata"}
SUBSYSTEM_BUSES = (("virtio", "virtio"), ("mmc", "mmc"), ("scsi", "scsi"))
DRIVE_TYPES = {"disk": "Hard Disk", "rom": "CD-ROM"}
FILE_SYSTEM_TYPES = {"vfat": "32-bit FAT", "tmpfs": "267", "swap": "Linux Swap | Prime"}
MEMORY = ("rootfs", "tmpfs", "ramfs")


class Blocks:
    """lsblk's devices; a device of several parents stands there once for each."""

    def __init__(self, listing):
        self.devices = {}
        for device in _flat(json.loads(listing)["blockdevices"]):
            self.devices.setdefault(device["name"], device)

    def of_type(self, *types):
        return sorted((device for device in self.devices.values() if device["type"] in types),
                      key=lambda device: natural(device["name"]))


def _flat(devices):
    for device in devices:
        yield device
        yield from _flat(device.get("children", []))


def natural(name):
    """sda, sdb, sdaa; nvme0n1, nvme10n1: letters behind these drivers' names count as digits do."""
    driver, letters, rest = re.match(r"(sd|vd|xvd|)([a-z]*)(.*)", name).groups()
    key = [(driver or letters, len(letters), letters)]
    return key + [("", int(part), "") if part.isdigit() else (part, 0, "") for part in re.findall(r"\d+|\D+", rest)]


def compare_drives(results, inventory, comparison, told):
    """`told`: by kernel name what lsblk does not say, or what the scanner says otherwise, with reasons where
    it is made."""
    blocks = Blocks(results["lsblk"])
    expected = [expected_drive(device) | told.get(device["name"], {}) for device in blocks.of_type("disk", "rom")]
    rows = inventory.rows("Storage")
    comparison.whole_rows("Storage", rows, expected, unchecked=("ID",))
    comparison.equal("Storage IDs differ", len({row["ID"] for row in rows}), len(rows))
    comparison.equal("Storage IDs are digests", all(re.fullmatch("[0-9a-f]{32}", row["ID"]) for row in rows), True)


def expected_drive(device):
    vendor = (device["vendor"] or "").strip()
    return {
        "Type": DRIVE_TYPES[device["type"]], "Model": device["model"] or "", "Manufacturer": vendor,
        "SerialNumber": device["serial"] or "", "Cylinders": 0, "Heads": 0, "Sectors": 0,
        "TotalSize": device["size"] >> 20, "SizeBytes": device["size"], "SecurityEnabled": "Unsupported",
        "DeviceName": device["path"], "Bus": bus_of(device), "Medium": medium_of(device),
        "Firmware": device["rev"], "WorldWideName": wide_name(device["wwn"]),
        "LogicalSectorBytes": device["log-sec"], "PhysicalSectorBytes": device["phy-sec"],
        "Removable": yes(device["rm"]), "ReadOnly": yes(device["ro"]), "State": device["state"],
    }


def bus_of(device):
    if device["tran"]:
        return BUSES[device["tran"]]
    return next(bus for part, bus in SUBSYSTEM_BUSES if part in device["subsystems"].split(":"))


def medium_of(device):
    """The kernel calls everything a spinning disk of which nobody says otherwise, as behind USB and from
    hypervisors."""
    if device["type"] == "rom":
        return "optical"
    if device["tran"] in ("sata", "nvme") or "mmc" in device["subsystems"]:
        return "disk" if device["rota"] else "ssd"
    return None


def wide_name(name):
    """lsblk has the digits of an NAA name; "nvme." is what the kernel makes up of other identities."""
    if not name or name.startswith("nvme."):
        return None
    return "naa." + name.removeprefix("0x") if name.startswith("0x") else name


def yes(flag):
    return "Y" if flag else "N"


def compare_partitions(results, inventory, comparison, swap_files=()):
    """`swap_files`: rows of what lsblk does not know."""
    blocks = Blocks(results["lsblk"])
    mounts = stored_mounts(json.loads(results["findmnt"])["filesystems"])
    sizes = df_sizes(results["df"])
    expected = [expected_partition(device, blocks, mounts, sizes, results["swaps"])
                for device in sorted(blocks.devices.values(), key=lambda device: natural(device["kname"]))
                if is_partition(device, mounts, results["swaps"])]
    expected += swap_files
    expected += [expected_memory(mount, sizes) for mount in mounts if mount["fstype"] in MEMORY]
    comparison.whole_rows("Partition", inventory.rows("Partition"), expected,
                          unchecked=("FSFreeSize", "InodesFree"))
    compare_free(inventory.rows("Partition"), sizes, comparison)


def stored_mounts(mounts):
    """First mounts of what stores something, with the number of further ones; a runtime's own memory in /run
    is none of the machine's."""
    first = {}
    for mount in mounts:
        kernels = mount["fstype"] in ("proc", "sysfs", "devtmpfs", "devpts", "efivarfs")
        if kernels or (mount["fstype"] == "tmpfs" and mount["target"] == "/run"):
            continue
        known = first.setdefault(mount["maj:min"], {**mount, "further": -1})
        known["further"] += 1
    return list(first.values())


def is_partition(device, mounts, swaps):
    return mount_of(device, mounts) is not None or device["type"] == "part" or is_swap(device, swaps)


def mount_of(device, mounts):
    """btrfs has a number of its own and names one of its devices."""
    return next((mount for mount in mounts if mount["maj:min"] == device["maj:min"]
                 or (mount["fstype"] == "btrfs" and mount["source"] == device["path"])), None)


def is_swap(device, swaps):
    return any(line.split()[0] == device["path"] for line in swaps.splitlines()[1:])


def df_sizes(listing):
    """(bytes, available, inodes, free inodes) by mount point."""
    sizes = {}
    for line in listing.splitlines()[1:]:
        target, *numbers = line.rsplit(maxsplit=4)
        sizes[target] = tuple(int(number) if number.isdigit() else 0 for number in numbers)
    return sizes


def expected_partition(device, blocks, mounts, sizes, swaps):
    mount = mount_of(device, mounts)
    is_part = device["type"] == "part"
    parent = blocks.devices.get(device["pkname"]) if is_part else None
    row = {
        "Type": "Logical Drive", "MediaType": "Local Disk", "DeviceName": device["path"],
        "FSAccessPoint": device["path"], "FSMountPoint": "", "FSTotalSize": 0,
        "PhysicalSize": device["size"] >> 10, "SizeBytes": device["size"],
        "FSType": FILE_SYSTEM_TYPES.get(device["fstype"], "65535"), "FileSystem": device["fstype"],
        "Label": device["label"], "UUID": device["uuid"], "PartitionUUID": device["partuuid"],
        "PartitionLabel": device["partlabel"], "Disk": parent and parent["path"],
        "PartitionNumber": int(re.search(r"\d+$", device["name"])[0]) if is_part else None,
        "StartSector": device["start"], "ReadOnly": yes(device["ro"]), "Encrypted": yes(device["type"] == "crypt"),
    }
    if mount:
        return row | expected_mount(mount, sizes)
    return row | expected_swap(device, swaps) if is_swap(device, swaps) else row


def expected_mount(mount, sizes):
    total, _, inodes, _ = sizes[mount["target"]]
    options = mount["vfs-options"]
    return {"FSMountPoint": mount["target"], "FSTotalSize": total >> 10, "FileSystem": mount["fstype"],
            "MountOptions": options, "ReadOnly": yes("ro" in options.split(",")), "InodesTotal": inodes or None,
            "FurtherMounts": mount["further"] or None}


def expected_swap(device, swaps):
    line = next(line for line in swaps.splitlines()[1:] if line.split()[0] == device["path"])
    # Whether one can write there is the kernel's own business.
    return {"FSMountPoint": "swap", "FSTotalSize": line.split()[2], "ReadOnly": None}


def expected_memory(mount, sizes):
    total = sizes[mount["target"]][0]
    return {"Type": "Logical Drive", "MediaType": "RAM Disk" if mount["fstype"] == "rootfs" else "Local Disk",
            "DeviceName": mount["source"], "FSAccessPoint": mount["source"],
            "FSType": FILE_SYSTEM_TYPES.get(mount["fstype"], "65535"), "SizeBytes": total,
            "PhysicalSize": total >> 10, **expected_mount(mount, sizes)}


def compare_free(rows, sizes, comparison):
    """Nothing is written to drives between the scan and df; memory grows fuller meanwhile."""
    for row in rows:
        if row["FSMountPoint"] not in sizes or not row["DeviceName"].startswith("/dev/"):
            continue
        _, available, _, inodes = sizes[row["FSMountPoint"]]
        comparison.equal(f"free space of {row['FSMountPoint']}", row["FSFreeSize"], available >> 10)
        comparison.equal(f"free inodes of {row['FSMountPoint']}", row.get("InodesFree", "0"), inodes)

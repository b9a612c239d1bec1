"""Scenario "storage": drives, partitions and volumes against lsblk, nvme, findmnt, df, mdadm and dmsetup; and
documents of scans beside drives and mounts that go away."""

import json
import re
import subprocess
import tempfile
from pathlib import Path

import compare_blocks
import compare_buses
from compare_calls import compare_calls
from image import need_program
from inventory import Inventory

ROUNDS = ("round1", "round2", "round3", "round4", "last")
# By driver and what is behind it; lsblk says nothing of these, or something else for a reason given here.
NVME = {"Manufacturer": "QEMU", "Firmware": "7.2.22", "Driver": "nvme", "NamespaceOf": "nvme0"}
# The card's own register says so, which lsblk does not read.
CARD = {"Model": "QEMU!", "Firmware": "0x1", "Driver": "mmcblk"}


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(("first", "traced", *ROUNDS), ""))
    compare_calls(results["calls"], comparison)
    inventory = Inventory(results["first.out"])
    compare_blocks.compare_drives(results, inventory, comparison, told_drives(results))
    compare_nvme(results, inventory, comparison)
    compare_blocks.compare_partitions(results, inventory, comparison, [swap_file(results)])
    compare_volumes(results, inventory, comparison)
    for scan in ("first", *ROUNDS):
        compare_document(scan, results, comparison)
    compare_removal(results, comparison)


def told_drives(results):
    devices = compare_buses.pci_devices(results["lspci"])
    places = {device["Driver"]: device["Slot"] for device in devices if "Driver" in device}
    virtio = iter(device["Slot"] for device in devices if device["Device"] == "Virtio block device")
    hba = next(device["Slot"] for device in devices if device["Device"] == "Virtio SCSI")
    told = {}
    for name, device in compare_blocks.Blocks(results["lsblk"]).devices.items():
        if name.startswith("nvme"):
            told[name] = {**NVME, "Location": f"{places['nvme']}/{name[-1]}"}
        elif name.startswith("mmc"):
            told[name] = {**CARD, "Location": places["sdhci-pci"]}
        elif device["hctl"]:
            # The host's number is that of the order of discovery.
            unit = device["hctl"].split(":", 1)[1]
            told[name] = {"Driver": "virtio_scsi", "Bus": "virtio", "Location": f"{hba}/{unit}"}
        elif device["type"] == "disk":
            # The kernel has the PCI device's number as a virtio disk's maker.
            told[name] = {"Manufacturer": "", "Driver": "virtio_blk", "Location": next(virtio)}
    return told


def compare_nvme(results, inventory, comparison):
    rows = {row["DeviceName"]: row for row in inventory.rows("Storage")}
    listed = json.loads(results["nvme"])["Devices"]
    comparison.equal("NVMe drives", len(listed), 2)
    for device in listed:
        comparison.row(f"nvme {device['DevicePath']}", rows[device["DevicePath"]], {
            "Model": device["ModelNumber"].strip(), "SerialNumber": device["SerialNumber"].strip(),
            "Firmware": device["Firmware"].strip(), "SizeBytes": device["PhysicalSize"],
            "LogicalSectorBytes": device["SectorSize"]})


def swap_file(results):
    path, _, kibibytes = next(line.split()[:3] for line in results["swaps"].splitlines() if " file" in line)
    return {"Type": "Logical Drive", "MediaType": "Local Disk", "DeviceName": path, "FSAccessPoint": path,
            "FSMountPoint": "swap", "FSType": "Linux Swap | Prime", "FileSystem": "swap",
            "FSTotalSize": kibibytes, "PhysicalSize": kibibytes, "SizeBytes": int(kibibytes) * 1024}


# --- volumes ---

def compare_volumes(results, inventory, comparison):
    blocks = compare_blocks.Blocks(results["lsblk"])
    members = members_of(json.loads(results["lsblk"])["blockdevices"])
    mapped = dict(line.split("|")[:2] for line in results["dmsetup"].splitlines())
    expected = [expected_array(blocks.devices[name], results[name], members) for name in ("md0", "md1")]
    expected += [expected_mapping(blocks.devices[name], uuid, members) for name, uuid in mapped.items()]
    expected.append(expected_pool(blocks))
    expected.sort(key=lambda row: row["Name"])
    comparison.whole_rows("Volume", inventory.rows("Volume"), expected)


def members_of(devices, parent=None, found=None):
    """Paths of what each device is made of, by name."""
    found = {} if found is None else found
    for device in devices:
        if parent and parent["path"] not in found.setdefault(device["name"], []):
            found[device["name"]].append(parent["path"])
        members_of(device.get("children", []), device, found)
    return found


def expected_volume(device, members):
    return {"Name": device["name"], "DeviceName": device["path"], "SizeBytes": device["size"],
            "Members": ",".join(members[device["name"]]), "MountPoint": device["mountpoint"]}


def expected_array(device, detail, members):
    facts = dict(line.split("=", 1) for line in detail.splitlines())
    there = len(re.findall(r"_ROLE=\d", detail))
    digits = facts["MD_UUID"].replace(":", "")
    return expected_volume(device, members) | {
        "Kind": "raid", "Level": facts["MD_LEVEL"], "State": "clean", "Degraded": int(facts["MD_DEVICES"]) - there,
        "UUID": "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))}


def expected_mapping(device, uuid, members):
    """Of a mapping whose maker left no mark in its UUID only the control node could tell the kind."""
    row = expected_volume(device, members) | {"Kind": "other", "State": "active"}
    if uuid.startswith("CRYPT-"):
        return row | {"Kind": "crypt"}
    if not uuid.startswith("LVM-"):
        return row
    digits, group = uuid.removeprefix("LVM-")[32:], device["name"].replace("--", "\0").split("-")[0]
    cuts = (0, 6, 10, 14, 18, 22, 26, 32)
    return row | {"Kind": "lvm", "Level": "linear", "VolumeGroup": group.replace("\0", "-"),
                  "UUID": "-".join(digits[first:last] for first, last in zip(cuts, cuts[1:]))}


def expected_pool(blocks):
    devices = [device for device in blocks.of_type("disk") if device["fstype"] == "btrfs"]
    mount_point = next(device["mountpoint"] for device in devices if device["mountpoint"])
    return {"Name": devices[0]["label"], "Kind": "btrfs", "SizeBytes": sum(device["size"] for device in devices),
            "UUID": devices[0]["uuid"], "Members": ",".join(device["path"] for device in devices), "Degraded": 0,
            "MountPoint": mount_point}


# --- what goes away ---

def compare_document(scan, results, comparison):
    need_program("xmllint", "libxml2-utils")
    with tempfile.TemporaryDirectory() as directory:
        schema = Path(directory) / "quenlor.xsd"
        schema.write_text(results["schema"])
        checked = subprocess.run(["xmllint", "--noout", "--schema", schema, "-"], input=results[f"{scan}.out"],
                                 capture_output=True, text=True, check=False)
    comparison.equal(f"document of scan '{scan}' is valid", checked.stderr.strip(), "- validates")
    told = Inventory(results[f"{scan}.out"]).rows("ScanResult")
    comparison.equal(f"groups of scan '{scan}'", len(told), 27)
    bad = [row["Group"] for row in told if row["Status"] in ("failed", "timed out")]
    comparison.equal(f"groups of scan '{scan}' that failed", bad, [])


def compare_removal(results, comparison):
    before, after = (Inventory(results[f"{scan}.out"]) for scan in ("first", "last"))
    models = [row["Model"] for row in after.rows("Storage")]
    comparison.equal("the removed drive is gone", models, [
        row["Model"] for row in before.rows("Storage") if row["Model"] != "REMOVED"])
    points = [row["FSMountPoint"] for row in after.rows("Partition")]
    comparison.equal("unmounted file systems are gone", points, [
        row["FSMountPoint"] for row in before.rows("Partition")
        if row["FSMountPoint"] not in ("/mnt/xfs", "/mnt/scsi")])

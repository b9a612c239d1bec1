"""Scenario "modern": a machine of today, every table of the modern sources against the machine's own tools."""

import re
from pathlib import Path

import compare_blocks
import compare_buses
import compare_cpus
import compare_firmware
import compare_links
import dmidecode
from compare_calls import compare_calls
from inventory import Inventory, list_entries, mif_tables
from two_scans import BOOT_TIMES, volatile_elements, without

FIELDS = Path(__file__).resolve().parents[2] / "data" / "fields.tsv"
SCANS = ("classic", "first", "second", "list", "mif", "traced")
RESOLVER = {"Hostname": "vm-node", "Domain": "example.com", "PrimaryDNS": "192.0.2.53",
            "SecondaryDNS": "2001:db8::53"}
# By kernel name what lsblk does not say, or says otherwise.
DRIVES = {
    "nvme0n1": {"Manufacturer": "QEMU", "Firmware": "7.2.22", "Location": "/1", "Driver": "nvme",
                "NamespaceOf": "nvme0"},
    "nvme0n2": {"Manufacturer": "QEMU", "Firmware": "7.2.22", "Location": "/7", "Driver": "nvme",
                "NamespaceOf": "nvme0"},
    # Every ATA drive's maker is "ATA" to the kernel; the model begins with the real one.
    "sda": {"Manufacturer": "ACME", "Location": "/1", "Driver": "ahci", "SecurityEnabled": "Unsupported"},
    "sdb": {"Location": "/2", "Driver": "usb-storage"},
    # An optical drive's own INQUIRY has maker and model; lsblk shows the ATA model, which holds both.
    "sr0": {"Model": "QEMU DVD-ROM", "Location": "/2", "Driver": "ahci"},
    # The kernel has the PCI device's number as a virtio disk's maker.
    "vda": {"Manufacturer": "", "Location": "", "Driver": "virtio_blk"},
    "vdb": {"Manufacturer": "", "Location": "", "Driver": "virtio_blk"},
}


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(SCANS, ""))
    inventory = Inventory(results["first.out"])
    compare_scans(results, inventory, comparison)
    compare_calls(results["calls"], comparison)
    compare_firmware.compare(results, inventory, comparison)
    compare_cpus.compare(compare_cpus.Cpus(results), dmidecode.Dmi(results["dmidecode"]), inventory, comparison)
    compare_storage(results, inventory, comparison)
    compare_network(results, inventory, comparison)
    compare_buses.compare_pci(results, inventory, comparison)
    compare_buses.compare_usb(results, inventory, comparison)
    compare_buses.compare_with_lsusb(results, inventory, comparison)
    compare_buses.compare_display(results, inventory, comparison)
    compare_system(results, inventory, comparison)
    compare_forms(results, inventory, comparison)
    compare_classic(results, inventory, comparison)


# --- the scans ---

def compare_scans(results, inventory, comparison):
    told = inventory.rows("ScanResult")
    comparison.equal("groups", len(told), 27)
    for row in told:
        comparison.equal(f"{row['Group']} Status", row["Status"], "complete")
        comparison.equal(f"{row['Group']} Rows", row["Rows"],
                         len(inventory.rows(re.sub(r"[^A-Za-z0-9]", "", row["Group"]))))
    left_out = volatile_elements(FIELDS) | BOOT_TIMES
    first, second = (without(results[f"{scan}.out"], left_out) for scan in ("first", "second"))
    comparison.equal("volatile attributes are known", len(left_out) > 20, True)
    comparison.equal("two scans are the same", first == second, True)


# --- the machine ---

def compare_storage(results, inventory, comparison):
    places = {device["Driver"]: device["Slot"] for device in compare_buses.pci_devices(results["lspci"])
              if device.get("Driver") in ("nvme", "ahci", "xhci_hcd")}
    places["usb-storage"] = places.pop("xhci_hcd")
    told = {}
    virtio = iter(device["Slot"] for device in compare_buses.pci_devices(results["lspci"])
                  if device["Device"] == "Virtio block device")
    for name, facts in DRIVES.items():
        place = places[facts["Driver"]] if facts["Driver"] in places else next(virtio)
        told[name] = {**facts, "Location": place + facts["Location"]}
    compare_blocks.compare_drives(results, inventory, comparison, told)
    compare_blocks.compare_partitions(results, inventory, comparison)
    comparison.equal("Volume", inventory.rows("Volume"), [])
    comparison.equal("Battery", inventory.rows("Battery"), [])


def compare_network(results, inventory, comparison):
    devices = {device.get("Driver"): compare_links.told_by_device(device)
               for device in compare_buses.pci_devices(results["lspci"])
               if device["Class"] == "Ethernet controller"}
    told = {
        "eth0": devices["virtio-pci"] | {"Driver": "virtio_net"},
        "eth1": devices["e1000e"] | {"Driver": "e1000e", "Firmware": "2.1-0", "SpeedMbs": 1000, "Duplex": "full",
                                     "ConnectorType": "Twisted Pair"},
    }
    compare_links.compare_addresses(results, inventory, comparison, RESOLVER)
    compare_links.compare_adapters(results, inventory, comparison, told)
    gateways = {row["Address"]: row.get("Gateway") for row in inventory.rows("IPAddress")}
    comparison.equal("gateway of the lower metric", gateways["192.0.2.11"], "192.0.2.2")


def compare_system(results, inventory, comparison):
    release, build = results["uname.release"].strip(), results["uname.version"].strip()
    major, minor, rest = release.split(".", 2)
    comparison.row("OperatingSystem", inventory.row("OperatingSystem"), {
        "Name": "Linux", "Type": "LINUX", "MajorVersion": major, "MinorVersion": minor, "SubVersion": rest,
        "OSArch": "x86_64", "KernelRelease": release, "KernelBuild": build, "InitSystem": "init"})
    comparison.row("UNIXSystemParams", inventory.row("UNIXSystemParams"), {
        "Hostname": "vm-node.example.com", "ComputerAlias": "vm-node", "Domain": "example.com",
        "BootID": results["boot"].strip()})
    comparison.row("ScanInfo", inventory.row("ScanInfo"), {"Sources": "modern", "User": "root"})


# --- the other forms ---

def compare_forms(results, inventory, comparison):
    """MIF and list hold what the document holds."""
    tables = mif_tables(results["mif.out"])
    for row in inventory.rows("ScanResult"):
        element = re.sub(r"[^A-Za-z0-9]", "", row["Group"])
        if row["Group"] in tables:
            comparison.equal(f"MIF rows of {row['Group']}", len(tables[row["Group"]]), len(inventory.rows(element)))
    entries = list_entries(results["list.out"])
    adapters = [row for row in inventory.rows("NetworkAdapter") if row["Kind"] == "physical"]
    comparison.row("list", entries, {
        "guid": " ".join(row["PermanentAddress"] for row in adapters), "osType": "LINUX",
        "hostname": " ".join("vm-node" for _ in adapters),
        "cpu_mhertz": " ".join(row["MaxClockSpeed"] for row in inventory.rows("Processor")),
        "ram_mbytes": int(inventory.row("Memory")["TotalPhysical"]) // 1024,
        "hdd_gbytes": sum(int(row["SizeBytes"]) for row in inventory.rows("Storage")
                          if row["Removable"] == "N" and row.get("Medium") in ("ssd", "disk")) >> 30})


def compare_classic(results, inventory, comparison):
    """The classic sources search below 1 MiB, where such firmware has nothing, and know no new group."""
    classic = Inventory(results["classic.out"])
    comparison.row("classic ComponentID", classic.row("ComponentID"), {"Manufacturer": "Linux", "Product": "Linux"})
    comparison.equal("classic SMBIOS", classic.rows("SMBIOS"), [])
    for group in ("Machine", "Cache", "Slot", "ScanResult"):
        comparison.equal(f"classic {group}", classic.rows(group), [])
    known = {row["Address"] for row in inventory.rows("IPAddress") if row["Family"] == "ipv4"}
    comparison.equal("classic addresses", {row["Address"] for row in classic.rows("IPAddress")}, known)
    comparison.equal("classic Memory TotalPhysical", classic.row("Memory")["TotalPhysical"],
                     inventory.row("Memory")["TotalPhysical"])

"""Scenario "devices": every row against sg_inq, lsblk, dmidecode, ip, lspci and the kernel."""

import hashlib
import json
import re
import uuid

from dmidecode import Dmi
from inventory import Inventory, list_entries, mif_tables

HARD_DISK, CD_ROM, FLOPPY = "Hard Disk", "CD-ROM", "Floppy/Diskette"


def compare(results, comparison):
    comparison.scans_ended_well(results, dict.fromkeys(("xml", "mif", "list", "mapped"), ""))
    inventory = Inventory(results["xml.out"])
    dmi = Dmi(results["dmidecode"])
    compare_storage(results, inventory, comparison)
    compare_sg_module(results, comparison)
    compare_mapped_nodes(results, comparison)
    compare_partitions(results, inventory, comparison)
    compare_network(results, inventory, comparison)
    compare_pci(results, inventory, comparison)
    compare_firmware(inventory, dmi, comparison)
    compare_memory(results, inventory, dmi, comparison)
    compare_system(results, inventory, comparison)
    compare_mif(results, inventory, comparison)
    compare_list(results, inventory, comparison)
    print(f"  scans took {[results[f'{n}.milliseconds'].strip() for n in ('xml', 'mif', 'list')]} ms")


# --- drives ---

def compare_storage(results, inventory, comparison):
    sizes = {device["name"]: device["size"] for device in flat(json.loads(results["lsblk"]))}
    expected = [expected_drive(results, node, sizes) for node in sg_nodes(results)]
    expected.append(expected_floppy(results, sizes))
    for i, row in enumerate(expected, 1):
        row["Index"] = i
    comparison.rows("Storage", inventory.rows("Storage"), expected)


def flat(listing):
    for device in listing["blockdevices"]:
        yield device
        yield from flat({"blockdevices": device.get("children", [])})


def sg_nodes(results):
    numbers = [int(m[1]) for name in results if (m := re.fullmatch(r"sg(\d+)\.inquiry", name))]
    return [f"sg{number}" for number in sorted(numbers)]


def expected_drive(results, node, sizes):
    inquiry = results[f"{node}.inquiry"]
    disk = results[f"{node}.block"].strip()
    row = {
        "Manufacturer": inquiry_text(inquiry, "Vendor identification"),
        "Model": inquiry_text(inquiry, "Product identification"),
        "SerialNumber": inquiry_text(results[f"{node}.serial"], "Unit serial number"),
        "SecurityEnabled": "Unsupported",
    }
    if "Peripheral device type: disk" in inquiry:
        cylinders, heads, sectors = map(int, results[f"{disk}.geometry"].split())
        row |= {"Type": HARD_DISK, "Heads": heads, "Sectors": sectors, "Cylinders": cylinders,
                "TotalSize": sizes[disk] >> 20}
    else:
        row |= {"Type": CD_ROM, "Heads": 0, "Sectors": 0, "Cylinders": 0, "TotalSize": 0}
    row["ID"] = md5("{Cylinders}{Sectors}{Heads}{TotalSize}".format(**row))
    return row


def inquiry_text(inquiry, label):
    match = re.search(rf"{label}: *(.*)", inquiry)
    return match[1].strip() if match else ""


def expected_floppy(results, sizes):
    *numbers, model = results["fd0.geometry"].split()
    cylinders, heads, sectors = map(int, numbers)
    kilobytes = sizes["fd0"] // 1024
    return {"Type": FLOPPY, "Model": model, "Manufacturer": "", "SerialNumber": "",
            "Cylinders": cylinders, "Heads": heads, "Sectors": sectors,
            "TotalSize": kilobytes >> 10, "SecurityEnabled": "Unsupported",
            "ID": md5(f"{cylinders}{sectors}{heads}{kilobytes}")}


def md5(text):
    return hashlib.md5(text.encode()).hexdigest()


def compare_sg_module(results, comparison):
    """The scanner loads the sg driver for its own use and takes it away again."""
    for moment in ("before", "after"):
        loaded = bool(re.search(r"^sg ", results[f"modules.{moment}"], re.MULTILINE))
        comparison.equal(f"sg driver loaded {moment} the scan", loaded, False)
    comparison.equal("files left in /tmp", results["tmp.after"], "")


def compare_mapped_nodes(results, comparison):
    """Nodes that sg_map knows under another name are left out; the floppy drive stays."""
    mapped = len(re.findall(r"^/dev/sg.* /dev/", results["sg_map"], re.MULTILINE))
    comparison.equal("nodes mapped by sg_map", mapped, len(sg_nodes(results)))
    types = [row["Type"] for row in Inventory(results["mapped.out"]).rows("Storage")]
    comparison.equal("Storage with every node mapped", types, [FLOPPY])


# --- file systems ---

FILE_SYSTEM_CODES = {"ext2": "131", "vfat": "11", "tmpfs": "267"}
LOCAL_TYPES = {"ext2", "vfat", "tmpfs"}


def compare_partitions(results, inventory, comparison):
    sizes = df_sizes(results["df"])
    expected = [expected_partition(*entry, sizes) for entry in mount_entries(results["mtab"])]
    for line in results["swaps"].splitlines()[1:]:
        name, _, size, used = line.split()[:4]
        expected.append({"DeviceName": name, "FSMountPoint": "swap", "FSTotalSize": size,
                         "FSFreeSize": int(size) - int(used), "PhysicalSize": size})
    for i, row in enumerate(expected, 1):
        row["Index"] = i
    comparison.rows("Partition", inventory.rows("Partition"), expected)


def mount_entries(mtab):
    for line in mtab.splitlines():
        device, directory, kind = (re.sub(r"\\(\d{3})", lambda m: chr(int(m[1], 8)), field)
                                   for field in line.split()[:3])
        left_out = directory.startswith("/proc") or "proc" in kind or kind in ("sysfs", "devpts")
        if not left_out:
            yield device, directory, kind


def df_sizes(listing):
    """Kilobytes by mount point, rounded down as the scanner does; df itself would round up."""
    sizes = {}
    for line in listing.splitlines()[1:]:
        target, size, available = line.rsplit(maxsplit=2)
        sizes[target] = (int(size) // 2, int(available) // 2)
    return sizes


def expected_partition(device, directory, kind, sizes):
    media = "Removable Disk" if "/dev/fd" in device else (
        "Local Disk" if kind in LOCAL_TYPES else "Unknown")
    row = {"DeviceName": device, "FSAccessPoint": device, "FSMountPoint": directory,
           "MediaType": media, "Type": "Logical Drive",
           "FSTotalSize": sizes[directory][0], "PhysicalSize": sizes[directory][0]}
    if device.startswith("/dev/"):  # nothing writes there between the scan and df
        row["FSFreeSize"] = sizes[directory][1]
    return row


# --- network and PCI ---

def compare_network(results, inventory, comparison):
    addresses, adapters = [], []
    for interface in json.loads(results["addresses"]):
        name, mac = interface["ifname"], interface["address"].upper()
        for address in interface["addr_info"]:
            if address["family"] == "inet" and name != "lo":
                addresses.append({
                    "Index": len(addresses) + 1, "Address": address["local"],
                    "Subnet": subnet_mask(address["prefixlen"]), "PermanentMacAddress": mac,
                    "Hostname": "vm-node.example.com", "Domain": "", "IPV6Address": ""})
        if name != "lo":
            comparison.equal(f"{name}: ip and /sys agree", interface["address"],
                             results[f"{name}.address"].strip())
            adapters.append({"Index": len(adapters) + 1, "PermanentAddress": mac,
                             "CurrentAddress": mac, "Model": name, "Type": "Ethernet Adapter",
                             "ID": md5(mac + name)})
    comparison.rows("IPAddress", inventory.rows("IPAddress"), addresses)
    comparison.rows("NetworkAdapter", inventory.rows("NetworkAdapter"), adapters)


def subnet_mask(length):
    bits = (0xFFFFFFFF << (32 - length)) & 0xFFFFFFFF
    return ".".join(str(bits >> shift & 255) for shift in (24, 16, 8, 0))


def compare_pci(results, inventory, comparison):
    expected = []
    for line in results["lspci"].splitlines():
        _kind, vendor, device = re.findall(r'"(.*?)"', line)[:3]
        revision = re.search(r" -r(\S+)", line)
        expected.append({"Index": len(expected) + 1, "Name": f"{vendor} {device}",
                         "Revision": f"0x{revision[1]}" if revision else ""})
    comparison.rows("PCIDevice", inventory.rows("PCIDevice"), expected)


# --- firmware ---

def compare_firmware(inventory, dmi, comparison):
    bios, system, board, enclosure = (dmi.first(kind) for kind in range(4))
    month, day, year = bios["Release Date"].split("/")
    expected = {
        "BIOSVendor": bios["Vendor"], "BIOSVersion": bios["Version"],
        "BIOSDate": f"{year}-{month}-{day}", "BIOSSize": bios["ROM Size"].replace(" kB", "K"),
        "SystemManufacturer": system["Manufacturer"],
        "SystemProductName": system["Product Name"], "SystemVersion": system["Version"],
        "SystemSerialNumber": system["Serial Number"],
        "SystemUUID": uuid.UUID(system["UUID"]).bytes_le.hex().upper(),
        "BoardManufacturer": board["Manufacturer"], "BoardProduct": board["Product Name"],
        "BoardVersion": board["Version"], "BoardSerialNumber": board["Serial Number"],
        "EnclosureManufacturer": enclosure["Manufacturer"], "EnclosureType": enclosure["Type"],
        "EnclosureVersion": enclosure["Version"],
        "EnclosureSerialNumber": enclosure["Serial Number"],
        "EnclosureAssetTag": enclosure["Asset Tag"], "PowerOnPassword": "Unknown",
    }
    identity = [expected[name] for name in (
        "BIOSVendor", "BIOSVersion", "BIOSSize", "SystemManufacturer", "SystemProductName",
        "SystemVersion", "BoardManufacturer", "BoardProduct", "BoardVersion",
        "EnclosureManufacturer")]
    identity += ["1", expected["EnclosureVersion"]]  # the enclosure type enters as its number
    expected["ID"] = md5("".join(identity))
    comparison.equal("enclosure type as a number", enclosure["Type"], "Other")
    comparison.row("SMBIOS", inventory.row("SMBIOS"), expected)
    comparison.row("ComponentID", inventory.row("ComponentID"), {
        "Manufacturer": system["Manufacturer"], "Product": system["Product Name"],
        "SerialNumber": system["Serial Number"], "Version": system["Version"],
        "Type": system["Version"]})
    compare_processors(inventory, dmi, comparison)


def compare_processors(inventory, dmi, comparison):
    sockets = dmi.all(4)
    speed = sockets[0]["Current Speed"].replace(" MHz", "")
    comparison.rows("Processor", inventory.rows("Processor"),
                    [{"Index": i, "CurrentClockSpeed": speed} for i in range(1, len(sockets) + 1)])
    comparison.row("Lpar", inventory.row("Lpar"), {
        "NodeCapacity": "2.000000", "NodeCapacityInCores": "4.000000",
        "LparCapacity": "-1.000000", "LparCapacityInCores": "-1.000000",
        "SerialNumber": dmi.first(1)["Serial Number"]})


def compare_memory(results, inventory, dmi, comparison):
    devices = dmi.all(17)
    modules = [{
        "Index": i, "ModuleSizeMB": megabytes(device["Size"]),
        "SocketName": f"{device['Locator']}/{device['Bank Locator']}",
        "Packaging": device["Form Factor"], "MemoryType": device["Type"],
        "MaxModuleSizeMB": megabytes(dmi.first(16)["Maximum Capacity"]) // len(devices),
    } for i, device in enumerate(devices, 1)]
    comparison.rows("MemoryModules", inventory.rows("MemoryModules"), modules)
    total, swap = (meminfo(results["meminfo"], name) for name in ("MemTotal", "SwapTotal"))
    comparison.row("Memory", inventory.row("Memory"), {
        "TotalPhysical": total, "TotalVirtual": total + swap, "TotalPage": total // 4096,
        "PageSize": 4096, "NumSlotsSupported": len(devices),
        "MaxMemoryMB": megabytes(dmi.first(16)["Maximum Capacity"])})


def megabytes(text):
    number, unit = text.split()
    return int(number) * {"MB": 1, "GB": 1024}[unit]


def meminfo(text, name):
    return int(re.search(rf"^{name}: +(\d+) kB", text, re.MULTILINE)[1])


# --- the rest ---

def compare_system(results, inventory, comparison):
    _, node, release, *_ = results["uname"].split()
    major, minor, rest = release.split(".", 2)
    comparison.row("OperatingSystem", inventory.row("OperatingSystem"), {
        "Name": "Linux", "Type": "LINUX", "MajorVersion": major, "MinorVersion": minor,
        "SubVersion": rest, "OSArch": "x86_64"})
    comparison.row("UNIXSystemParams", inventory.row("UNIXSystemParams"),
                   {"Hostname": node, "ComputerAlias": node})


def compare_mif(results, inventory, comparison):
    """The MIF tables hold the texts of the XML rows; enumerations stand there as numbers."""
    tables = mif_tables(results["mif.out"])
    for name, element, texts in (("Storage", "Storage", {3: "Model", 4: "Manufacturer",
                                                         5: "SerialNumber", 9: "TotalSize"}),
                                 ("Partition", "Partition", {3: "DeviceName", 7: "FSMountPoint"}),
                                 ("Network Adapter", "NetworkAdapter", {2: "PermanentAddress"}),
                                 ("PCI Device", "PCIDevice", {1: "Name", 2: "Revision"})):
        rows, table = inventory.rows(element), tables.get(name, [])
        found = [[row[column] for column in texts] for row in table]
        wanted = [[row[attribute] for attribute in texts.values()] for row in rows]
        comparison.equal(f"MIF table {name}", found, wanted)


def compare_list(results, inventory, comparison):
    entries = list_entries(results["list.out"])
    macs = " ".join(row["PermanentMacAddress"] for row in inventory.rows("IPAddress"))
    comparison.equal("list guid", entries.get("guid"), macs)
    comparison.equal("list osType", entries.get("osType"), "LINUX")
    comparison.equal("list hwPlatform", entries.get("hwPlatform"), "IA32")
    comparison.equal("list ram_mbytes", entries.get("ram_mbytes"),
                     meminfo(results["meminfo"], "MemTotal") // 1024)

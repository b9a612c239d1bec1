"""What the firmware tells: every value of SMBIOS types 0 to 4, 9, 16, 17, 38 and 39 against dmidecode."""

import hashlib
import re
import uuid

import dmidecode
from dmidecode import known, number

# Words that dmidecode has differently.
CORRECTION = {"None": "none", "Parity": "parity", "Single-bit ECC": "single-bit", "Multi-bit ECC": "multi-bit",
              "CRC": "crc"}
TECHNOLOGY = {"DRAM": "dram", "Intel Optane DC persistent memory": "optane"}
# What the classic form of a memory type says for what dmidecode calls so.
MEMORY_DETAIL = {"Registered (Buffered)": "", "Unbuffered (Unregistered)": "", "Non-Volatile": "Non-volatile"}
ENUMERATIONS = {"Flash": "FLASH"}


def compare(results, inventory, comparison):
    dmi = dmidecode.Dmi(results["dmidecode"])
    version = re.search(r"^SMBIOS (\d+\.\d+)\.\d+ present", results["dmidecode"], re.MULTILINE)[1]
    comparison.equal("the entry point is a 64-bit one", version.split(".")[0], "3")
    compare_identity(dmi, version, inventory, comparison)
    compare_memory(results, dmi, inventory, comparison)
    compare_modules(dmi, inventory, comparison)
    compare_slots(dmi, inventory, comparison)
    compare_power_supplies(dmi, inventory, comparison)
    compare_machine(results, dmi, inventory, comparison)


def compare_identity(dmi, version, inventory, comparison):
    bios, system, board, enclosure = (dmi.first(kind) for kind in range(4))
    kibibytes = dmidecode.size(bios["ROM Size"], "kB")
    month, day, year = bios["Release Date"].split("/")
    expected = {
        "BIOSVendor": bios["Vendor"], "BIOSVersion": bios["Version"], "BIOSDate": f"{year}-{month}-{day}",
        "BIOSSize": f"{kibibytes}K", "BIOSSizeKB": kibibytes, "BIOSRevision": bios["BIOS Revision"],
        "EmbeddedControllerRevision": bios["Firmware Revision"], "SMBIOSVersion": version,
        "SystemManufacturer": system["Manufacturer"], "SystemProductName": system["Product Name"],
        "SystemVersion": system["Version"], "SystemSerialNumber": system["Serial Number"],
        "SystemUUID": uuid.UUID(system["UUID"]).bytes_le.hex().upper(), "SystemUUIDText": system["UUID"],
        "SystemSKU": system["SKU Number"], "SystemFamily": system["Family"],
        "BoardManufacturer": board["Manufacturer"], "BoardProduct": board["Product Name"],
        "BoardVersion": board["Version"], "BoardSerialNumber": board["Serial Number"],
        "BoardAssetTag": board["Asset Tag"], "BoardLocation": board["Location In Chassis"],
        "EnclosureManufacturer": enclosure["Manufacturer"], "EnclosureType": enclosure["Type"],
        "EnclosureVersion": enclosure["Version"], "EnclosureSerialNumber": enclosure["Serial Number"],
        "EnclosureAssetTag": enclosure["Asset Tag"], "EnclosureSKU": enclosure["SKU Number"],
        "EnclosureHeightU": enclosure["Height"].removesuffix(" U"), "PowerOnPassword": "Unknown",
    }
    comparison.equal("enclosure type as a number", enclosure["Type"], "Rack Mount Chassis")
    # The digest is older than the extended size: 16 MiB is the largest that it counts.
    expected["ID"] = digest(bios["Vendor"], bios["Version"], f"{min(kibibytes, 16384)}K", *(expected[name] for name in (
        "SystemManufacturer", "SystemProductName", "SystemVersion",
        "BoardManufacturer", "BoardProduct", "BoardVersion", "EnclosureManufacturer")), "23",
        expected["EnclosureVersion"])
    comparison.whole_row("SMBIOS", inventory.row("SMBIOS"), expected)
    comparison.whole_row("ComponentID", inventory.row("ComponentID"), {
        "Manufacturer": system["Manufacturer"], "Product": system["Product Name"],
        "Version": system["Version"], "SerialNumber": system["Serial Number"], "Type": system["Version"]})


def digest(*texts):
    return hashlib.md5("".join(texts).encode()).hexdigest()


def compare_memory(results, dmi, inventory, comparison):
    kilobytes = {name: int(value) for name, value in re.findall(r"^(\w+): +(\d+) kB", results["meminfo"], re.MULTILINE)}
    arrays = {array["Handle"]: array for array in dmi.all(16) if array["Use"] == "System Memory"}
    installed = sum(dmidecode.size(module["Size"], "MB") or 0
                    for module in dmi.all(17) if module["Array Handle"] in arrays)
    total, swap = kilobytes["MemTotal"], kilobytes["SwapTotal"]
    comparison.whole_row("Memory", inventory.row("Memory"), {
        "TotalPhysical": total, "TotalVirtual": total + swap, "TotalPage": total // 4096, "PageSize": 4096,
        "TotalPhysicalBytes": total * 1024, "SwapTotalKB": swap, "InstalledMB": installed,
        "MaxMemoryMB": sum(dmidecode.size(array["Maximum Capacity"], "MB") for array in arrays.values()),
        "NumSlotsSupported": sum(int(array["Number Of Devices"]) for array in arrays.values()),
        "ErrorCorrection": CORRECTION[next(iter(arrays.values()))["Error Correction Type"]],
    }, unchecked=("FreePhysical", "FreeVirtual", "FreePage", "Available"))
    free = inventory.row("Memory")
    comparison.equal("free and available memory is within the whole",
                     all(0 < int(free[name]) <= total for name in ("FreePhysical", "Available")), True)


def compare_modules(dmi, inventory, comparison):
    arrays = dmi.all(16)
    expected = [expected_module(module, arrays) for module in dmi.all(17)]
    comparison.whole_rows("MemoryModules", inventory.rows("MemoryModules"), expected)


def expected_module(module, arrays):
    array = next(i for i, array in enumerate(arrays, 1) if array["Handle"] == module["Array Handle"])
    locators = [text for name in ("Locator", "Bank Locator") if (text := known(module[name]))]
    row = {"ModuleSizeMB": dmidecode.size(module["Size"], "MB") or 0, "SocketName": "/".join(locators),
           "MaxModuleSizeMB": dmidecode.size(arrays[0]["Maximum Capacity"], "MB")
           // int(arrays[0]["Number Of Devices"]),
           "Packaging": module["Form Factor"], "MemoryType": "", "Locator": module["Locator"],
           "BankLocator": known(module["Bank Locator"]), "Array": array}
    return row if module["Size"] == "No Module Installed" else row | expected_contents(module)


def expected_contents(module):
    kind = ENUMERATIONS.get(module["Type"], module["Type"])
    volts = known(module.get("Configured Voltage"))
    return {
        "MemoryType": f"{memory_detail(module['Type Detail'])} {kind}", "Generation": kind,
        "Manufacturer": known(module["Manufacturer"]), "SerialNumber": known(module["Serial Number"]),
        "PartNumber": known(module["Part Number"]), "AssetTag": known(module["Asset Tag"]),
        "Technology": TECHNOLOGY.get(module.get("Memory Technology")), "Rank": known(module["Rank"]),
        "SpeedMTs": number(module["Speed"], " MT/s"),
        "ConfiguredSpeedMTs": number(module.get("Configured Memory Speed"), " MT/s"),
        "DataWidth": number(module["Data Width"], " bits"), "TotalWidth": number(module["Total Width"], " bits"),
        "ConfiguredVoltagemV": volts and round(float(volts.removesuffix(" V")) * 1000),
    }


def memory_detail(text):
    for label, word in MEMORY_DETAIL.items():
        text = text.replace(label, word)
    return text.strip()


def compare_slots(dmi, inventory, comparison):
    expected = []
    for slot in dmi.all(9):
        width, kind = re.match(r"(x\d+|\d+-bit) (.*)", slot["Type"]).groups()
        kind = kind.lower().replace("pci express ", "pci express gen ")
        expected.append({
            "Designation": slot["Designation"], "Type": kind, "Width": width.replace("-", " "),
            "Usage": lower(slot["Current Usage"]), "Length": lower(slot["Length"]),
            "Address": slot.get("Bus Address")})
    comparison.whole_rows("Slot", inventory.rows("Slot"), expected)


def lower(text):
    return known(text) and text.lower()


def compare_power_supplies(dmi, inventory, comparison):
    expected = []
    for supply in dmi.all(39):
        state, _, status = supply["Status"].partition(", ")
        comparison.equal(f"{supply['Location']} is there", state, "Present")
        expected.append({
            "Location": supply["Location"], "Name": known(supply["Name"]),
            "Manufacturer": known(supply["Manufacturer"]), "PartNumber": known(supply["Model Part Number"]),
            "SerialNumber": known(supply["Serial Number"]), "MaxWatts": number(supply["Max Power Capacity"], " W"),
            # One without a cord is in no other state that anybody could do something about.
            "Status": "unplugged" if supply["Plugged"] == "No" else status.lower()})
    comparison.whole_rows("PowerSupply", inventory.rows("PowerSupply"), expected)


def compare_machine(results, dmi, inventory, comparison):
    system, management = dmi.first(1), dmi.first(38)
    setup, secure = (int(results[f"efi.{name}"].split()[-1]) for name in ("SetupMode", "SecureBoot"))
    comparison.whole_row("Machine", inventory.row("Machine"), {
        "TPMVersion": f"{results['tpm'].strip()}.0",
        "UUID": system["UUID"], "SerialNumber": system["Serial Number"],
        # The enclosure is a rack's, but CPUID tells of the hypervisor.
        "Chassis": "vm", "BootMode": "uefi", "SecureBoot": "Y" if secure and not setup else "N",
        "Virtualization": "vm", "Hypervisor": "qemu", "Evidence": "cpuid:TCGTCGTCGTCG", "IOMMU": "N",
        "BMC": management["Interface Type"].split()[0].lower()})

"""Devices of PCI and USB and displays against lspci, the kernel's files and edid-decode."""

import re
import subprocess

from image import need_program

# Words for the classes of USB devices and interfaces that are there.
USB_CLASSES = {"03": "hid", "08": "storage", "09": "hub"}
# Where edid-decode has the values of a display's row.
EDID = {
    "Manufacturer": r"Manufacturer: (\w+)", "Model": r"Display Product Name: '(.*)'",
    "SerialNumber": r"Serial Number: '?([^'\n]*)", "Week": r"Made in: week (\d+)", "Year": r"Made in: .*?(\d{4})",
    "Widthmm": r"DTD 1:.*\(\D*(\d+) mm x", "Heightmm": r"DTD 1:.*mm x (\d+) mm\)",
    "PreferredMode": r"DTD 1: +(\d+x\d+)",
}
ROOT_HUB_VENDOR = "1d6b"  # of hubs that the kernel plays
USB_DRIVERS = {"03": "usbhid", "08": "usb-storage"}


def pci_devices(listing):
    """Dicts of lspci's label to text, the numbers in brackets apart as VendorId and so on."""
    devices = []
    for block in listing.strip().split("\n\n"):
        device = dict(line.split(":\t", 1) for line in block.splitlines())
        for name in ("Class", "Vendor", "Device", "SVendor", "SDevice"):
            if match := re.fullmatch(r"(.*) \[([0-9a-f]{4})\]", device.get(name, "")):
                device[name], device[f"{name}Id"] = match.groups()
        devices.append(device)
    return devices


def compare_pci(results, inventory, comparison):
    expected = []
    for device in pci_devices(results["lspci"]):
        expected.append({
            "Name": pci_name(device), "Revision": f"0x{device.get('Rev', '00')}", "Address": device["Slot"],
            "Class": device["ClassId"] + device.get("ProgIf", "00"), "ClassName": device["Class"],
            "VendorId": device["VendorId"], "DeviceId": device["DeviceId"],
            # 0000 is a place that the maker left empty.
            "SubsystemVendorId": unless_zero(device.get("SVendorId")),
            "SubsystemId": unless_zero(device.get("SDeviceId")), "Driver": device.get("Driver"),
            "NUMANode": device.get("NUMANode"), "IOMMUGroup": device.get("IOMMUGroup"),
            "Slot": device.get("PhySlot")})
    comparison.whole_rows("PCIDevice", inventory.rows("PCIDevice"), expected)


def pci_name(device):
    """Of what the id list does not know lspci says its number, here in brackets."""
    texts = [f"{name} {device[f'{name}Id']}" if device[name] == name else device[name] for name in ("Vendor", "Device")]
    return " ".join(texts)


def unless_zero(number):
    return None if number == "0000" else number


def compare_usb(results, inventory, comparison):
    files = {}
    for directory, name, value in re.findall(r"devices/([^/]+)/(\w+):(.*)", results["usb"]):
        files.setdefault(directory, {})[name] = value.strip()
    expected = [expected_usb(directory, device, files) for directory, device in sorted(files.items())
                if "idVendor" in device and not directory.startswith("usb")]
    comparison.whole_rows("USBDevice", inventory.rows("USBDevice"), expected)


def expected_usb(directory, device, files):
    bus, _, path = directory.partition("-")
    interface = files[f"{directory}:1.0"]["bInterfaceClass"]
    kind = device["bDeviceClass"] if device["bDeviceClass"] != "00" else interface
    return {
        # A root hub's serial number is its controller's address.
        "Location": f"{files[f'usb{bus}']['serial']}-{path}", "Name": device["product"],
        "Manufacturer": device["manufacturer"], "SerialNumber": device.get("serial"),
        "VendorId": device["idVendor"], "ProductId": device["idProduct"], "Class": USB_CLASSES[kind],
        "SpeedKbs": int(device["speed"]) * 1000, "Driver": USB_DRIVERS[interface], "Version": device["version"],
        "Removable": device["removable"] if device["removable"] != "unknown" else None}


def compare_with_lsusb(results, inventory, comparison):
    """What the devices themselves say when they are asked again."""
    expected = [row for row in map(lsusb_row, re.split(r"^Bus ", results["lsusb"], flags=re.MULTILINE)[1:])
                if row["VendorId"] != ROOT_HUB_VENDOR]
    told = [{name: row.get(name) for name in expected[0]} for row in inventory.rows("USBDevice")]
    in_order = lambda rows: sorted(rows, key=lambda row: (row["VendorId"], row["ProductId"]))
    comparison.equal("USBDevice as lsusb has it", in_order(told), in_order(expected))


def lsusb_row(listing):
    """The values behind the numbers of the strings, and of the device descriptor's fields."""
    # A device of several speeds has a further descriptor behind the first, with some of the same fields.
    fields = dict(reversed(re.findall(r"^  (\w+) +(?:0x)?(.*)$", listing, re.MULTILINE)))
    text = lambda name: fields[name].partition(" ")[2].strip()
    version = fields["bcdUSB"].strip()
    return {"VendorId": fields["idVendor"][:4], "ProductId": fields["idProduct"][:4], "Name": text("iProduct"),
            "Manufacturer": text("iManufacturer"), "SerialNumber": text("iSerial"), "Version": version}


def compare_display(results, inventory, comparison):
    edid = decoded_edid(bytes.fromhex(results["edid"]))
    outputs = [name.partition("-")[2] for name in results["connectors"].split() if "-" in name]
    adapter = next(device["Slot"] for device in pci_devices(results["lspci"]) if device.get("Driver") == "bochs-drm")
    comparison.equal("outputs", len(outputs), 1)
    comparison.whole_rows("Display", inventory.rows("Display"),
                          [{"Connector": outputs[0], "Adapter": adapter, **edid}])


def decoded_edid(data):
    """edid-decode's words for the values of a row."""
    need_program("edid-decode", "edid-decode")
    text = subprocess.run(["edid-decode"], input=data, capture_output=True, check=False).stdout.decode()
    return {name: found[1] if (found := re.search(pattern, text)) else None for name, pattern in EDID.items()}

"""The machine of scenario "modern": q35 with UEFI, a 64-bit SMBIOS entry point, and what today's machines
have in and on them."""

import shutil
from pathlib import Path

import firmware_tables
import tpm
from image import Unavailable
from media import Medium, drive_arguments

OVMF = Path("/usr/share/OVMF")
SYSTEM = {
    1: {"manufacturer": "ACME Corp", "product": "RackServer X", "version": "2.0", "serial": "SN-24680",
        "uuid": "12345678-9abc-def0-1234-56789abcdef0", "sku": "SKU-X", "family": "Racks"},
    2: {"manufacturer": "ACME Boards", "product": "Board X2", "version": "B5", "serial": "BSN-5",
        "asset": "BA-5", "location": "Left tray"},
}
MACS = ("52:54:00:12:34:01", "52:54:00:12:34:02")


def modern_arguments(work):
    return [
        "-machine", "q35,smbios-entry-point-type=64,vmport=off", "-m", "1024", "-cpu", "max,la57=off",
        "-smp", "sockets=2,cores=1,threads=2",
        *_uefi_arguments(work), *_firmware_arguments(work),
        "-device", "nvme,id=nvme,serial=NVME-SN-1",
        "-device", "qemu-xhci,id=usb", "-device", "usb-kbd,bus=usb.0,port=1", *drive_arguments(work, DRIVES),
        "-device", "bochs-display,edid=on,xres=1280,yres=800",
        "-netdev", "hubport,id=net0,hubid=0", "-device", f"virtio-net-pci,romfile=,netdev=net0,mac={MACS[0]}",
        "-netdev", "hubport,id=net1,hubid=1", "-device", f"e1000e,romfile=,netdev=net1,mac={MACS[1]}",
        *tpm.arguments(work),
    ]


def _uefi_arguments(work):
    if not (OVMF / "OVMF_CODE_4M.fd").exists():
        raise Unavailable("UEFI firmware is missing; install the Debian package ovmf")
    shutil.copyfile(OVMF / "OVMF_VARS_4M.fd", work / "variables.fd")
    return ["-drive", f"if=pflash,format=raw,readonly=on,file={OVMF / 'OVMF_CODE_4M.fd'}",
            "-drive", f"if=pflash,format=raw,file={work / 'variables.fd'}"]


def _firmware_arguments(work):
    arguments = []
    for number, values in SYSTEM.items():
        texts = ",".join(f"{key}={value}" for key, value in values.items())
        arguments += ["-smbios", f"type={number},{texts}"]
    return arguments + firmware_tables.arguments(work)


DRIVES = (
    (Medium("system", 256, table="gpt", parts=(
        {"mebibytes": 40, "type": "U", "name": "EFI System", "content": "vfat", "label": "ESP"},
        {"mebibytes": 128, "type": "L", "name": "Root of \N{GREEK SMALL LETTER OMEGA}", "content": "ext4",
         "label": "data disk"},
        {"mebibytes": 32, "type": "S", "name": "", "content": "swap", "label": "swapping"})),
     "nvme-ns,bus=nvme,nsid=1"),
    (Medium("plain", 64),
     "nvme-ns,bus=nvme,nsid=7,logical_block_size=4096,physical_block_size=4096"),
    (Medium("virtio", 96, content="ext4", label="whole"), "virtio-blk-pci,serial=VIRTIO-SN-1"),
    (Medium("nameless", 48, content="swap"), "virtio-blk-pci"),
    (Medium("sata", 200, table="dos", parts=(
        {"mebibytes": 64, "type": "83", "content": "ext4", "label": ""},
        {"mebibytes": 100, "type": "5"},
        {"mebibytes": 20, "type": "c", "content": "vfat", "label": "LOGICAL"})),
     "ide-hd,bus=ide.0,model=ACME SATA DISK,serial=SATA-SN-1,wwn=0x5000c500a1b2c3d4,rotation_rate=7200"),
    (Medium("disc", 4, content="iso", label="INSTALL DISC"), "ide-cd,bus=ide.1,model=ACME DVD,serial=DVD-SN-1"),
    (Medium("stick", 32, content="vfat", label="STICK"),
     "usb-storage,bus=usb.0,port=2,serial=STICK-SN-1,removable=on"),
)

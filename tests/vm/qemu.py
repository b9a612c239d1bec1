"""Starts the virtual machine of a scenario and brings its results home."""

import contextlib
import io
import os
import subprocess
import tarfile
from pathlib import Path

import tpm
from image import Unavailable, initramfs_file, kernel_file, need_program
from media import Medium, drive_arguments
from modern_machine import modern_arguments
from storage_machine import storage_arguments
from topology_machines import TOPOLOGIES
from vmware_machine import renamed_qemu, vmware_arguments

FIRMWARE = {
    0: {"vendor": "ACME Firmware", "version": "7.3b", "date": "04/18/2009", "release": "4.6"},
    1: {"manufacturer": "ACME Corp", "product": "RackServer 9000", "version": "1.2",
        "serial": "SN-12345", "uuid": "12345678-9abc-def0-1234-56789abcdef0", "sku": "S1",
        "family": "F1"},
    2: {"manufacturer": "ACME Boards", "product": "Board X1", "version": "B2", "serial": "BSN-1",
        "asset": "BA-1"},
    3: {"manufacturer": "ACME Chassis", "version": "C3", "serial": "CSN-1", "asset": "CA-1"},
    4: {"sock_pfx": "SOCKET", "manufacturer": "Intel", "version": "Xeon", "max-speed": "3000",
        "current-speed": "2500"},
    17: {"loc_pfx": "DIMM", "bank": "BANK A", "manufacturer": "ACME", "serial": "M1",
         "asset": "MA1", "part": "MP1", "speed": "1333"},
}
MACS = ("52:54:00:12:34:01", "52:54:00:12:34:02")
DRIVES = (
    (Medium("scsi0", 300),
     "scsi-hd,bus=hba.0,scsi-id=0,vendor=ACME,product=BIG DISK 9000XL,serial=SCSI-SN-0001"),
    (Medium("scsi1", 1500, content="ext2"),
     "scsi-hd,bus=hba.0,scsi-id=1,vendor=WIDGET,product=FASTDISK,serial=W0002"),
    (Medium("scsi3", 4), "scsi-cd,bus=hba.0,scsi-id=3,vendor=ACME,product=SCSI CDROM,serial=CD-SN-3"),
    (Medium("ide0", 64, content="swap"), "ide-hd,bus=ide.0,unit=0,model=ACME ATA DISK,serial=ATA-0001"),
    (Medium("ide1", 2), "ide-cd,bus=ide.1,unit=0,model=ACME DVD,serial=DVD-1"),
)
PARAVIRTUAL_DRIVES = (
    (Medium("pv0", 16), "scsi-hd,bus=hba.0,scsi-id=0,vendor=ACME,product=PV DISK,serial=PV-SN-0"),
    (Medium("pv1", 16), "scsi-hd,bus=hba.0,scsi-id=1,vendor=ACME,product=PV DISK,serial=PV-SN-1"),
    (Medium("pv2", 4), "scsi-cd,bus=hba.0,scsi-id=2,vendor=ACME,product=PV CDROM,serial=PV-SN-2"),
)
QEMU = "qemu-system-x86_64"
FLOPPY = Medium("floppy", 1440 / 1024, content="dos")


def devices_arguments(work):
    """Every kind of device on a machine of two packages with two cores."""
    arguments = ["-m", "2048", "-smp", "sockets=2,cores=2,threads=1", "-device", "lsi,id=hba"]
    for number, values in FIRMWARE.items():
        texts = ",".join(f"{key}={value}" for key, value in values.items())
        arguments += ["-smbios", f"type={number},{texts}"]
    arguments += drive_arguments(work, DRIVES)
    arguments += ["-drive", f"if=floppy,file={FLOPPY.make(work)},format=raw"]
    for i, mac in enumerate(MACS):
        arguments += ["-netdev", f"hubport,id=net{i},hubid={i}",
                      "-device", f"e1000,netdev=net{i},mac={mac}"]
    return arguments


def processors_arguments(_work):
    """Two packages with two cores with two threads each, and little else."""
    return ["-m", "512", "-smp", "sockets=2,cores=2,threads=2"]


def pvscsi_arguments(work):
    """Two disks and a CD behind the paravirtual adapter."""
    return ["-m", "512", "-device", "pvscsi,id=hba", *drive_arguments(work, PARAVIRTUAL_DRIVES)]


def nodes_arguments(_work):
    """The guest makes its drives itself."""
    return ["-m", "1024"]


def network_arguments(_work):
    """Two cards of one kind for a bond, and a third; an option ROM would only start from the network."""
    cards = (("e1000e", "52:54:00:12:34:01"), ("e1000e", "52:54:00:12:34:02"), ("virtio-net-pci", "52:54:00:12:34:03"))
    arguments = ["-machine", "q35", "-m", "512"]
    for number, (device, mac) in enumerate(cards):
        arguments += ["-netdev", f"hubport,id=net{number},hubid={number}",
                      "-device", f"{device},romfile=,netdev=net{number},mac={mac}"]
    return arguments


# The machine of each scenario, and the image that it boots.
SCENARIOS = {"devices": (devices_arguments, "classic"), "processors": (processors_arguments, "classic"),
             "pvscsi": (pvscsi_arguments, "classic"), "nodes": (nodes_arguments, "classic"),
             "modern": (modern_arguments, "modern"), "storage": (storage_arguments, "long"),
             "network": (network_arguments, "long"), "vmware": (vmware_arguments, "modern"),
             **{f"topology-{name}": (machine, "modern") for name, machine in TOPOLOGIES.items()}}


def run_scenario(name, work, kernel, images, seconds):
    """Boots an image of the directory `images`, waits for the end, and returns the guest's result
    files by name."""
    need_program(QEMU, "qemu-system-x86")
    work.mkdir(parents=True, exist_ok=True)
    results = work / "results.tar"
    results.unlink(missing_ok=True)
    console = work / "console.log"
    arguments, kit = SCENARIOS[name]
    command = [
        renamed_qemu(QEMU, work) if name == "vmware" else QEMU, "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
        # Emulation by default: KVM in a machine that is itself virtual is often there but broken.
        "-accel", os.environ.get("QUENLOR_VM_ACCEL", "tcg"), "-cpu", "Nehalem",
        "-machine", "pc,smbios-entry-point-type=32,vmport=on",
        "-kernel", kernel_file(kernel), "-initrd", initramfs_file(images, kit),
        "-append", "console=ttyS0 quiet loglevel=4 panic=-1 net.ifnames=0 mitigations=off "
                   f"scenario={name}",
        "-serial", "stdio", "-device", "virtio-serial-pci",
        "-chardev", f"file,id=results,path={results}",
        "-device", "virtserialport,chardev=results,name=results",
        *arguments(work),
    ]
    with open(console, "wb") as stream, tpm.running(work) if name == "modern" else contextlib.nullcontext():
        try:
            subprocess.run(command, stdin=subprocess.DEVNULL, stdout=stream,
                           stderr=subprocess.STDOUT, timeout=seconds)
        except subprocess.TimeoutExpired:
            raise Unavailable(f"the virtual machine did not end within {seconds} s:\n"
                              + console.read_text(errors="replace")[-4000:]) from None
    return _read_results(results, console)


def _read_results(results, console):
    try:
        with tarfile.open(fileobj=io.BytesIO(results.read_bytes())) as archive:
            return {Path(member.name).name: archive.extractfile(member).read().decode(errors="replace")
                    for member in archive if member.isfile()}
    except (OSError, tarfile.TarError):
        raise Unavailable("the virtual machine gave no results:\n"
                          + console.read_text(errors="replace")[-4000:]) from None

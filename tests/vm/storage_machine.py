"""The machine of scenario "storage": every kind of drive, and media for arrays, volumes and file systems."""

from media import Medium, drive_arguments

# Serial numbers tell the guest's script what a disk is for.
DRIVES = (
    (Medium("first", 64), "nvme-ns,bus=nvme,nsid=1"),
    (Medium("second", 32), "nvme-ns,bus=nvme,nsid=2,logical_block_size=4096,physical_block_size=4096"),
    (Medium("scsi", 128, content="ext4", label="scsi"),
     "scsi-hd,bus=hba.0,scsi-id=0,lun=0,vendor=ACME,product=VIRTIO DISK,serial=SCSI-SN-0,wwn=0x5000c500a1b2c300"),
    (Medium("removed", 16), "scsi-hd,bus=hba.0,scsi-id=1,lun=3,vendor=ACME,product=REMOVED,serial=SCSI-SN-1"),
    (Medium("disc", 4, content="iso", label="DISC"),
     "scsi-cd,bus=hba.0,scsi-id=2,vendor=ACME,product=DVD,serial=CD-SN"),
    (Medium("card", 64, content="vfat", label="CARD"), "sd-card"),
    (Medium("mirror0", 32), "virtio-blk-pci,serial=mirror0"),
    (Medium("mirror1", 32), "virtio-blk-pci,serial=mirror1"),
    (Medium("half", 32), "virtio-blk-pci,serial=half"),
    (Medium("linear", 64), "virtio-blk-pci,serial=linear"),
    (Medium("crypt", 32), "virtio-blk-pci,serial=crypt"),
    (Medium("xfs", 400, content="xfs", label="xfsdata"), "virtio-blk-pci,serial=xfs"),
    (Medium("btrfs0", 160), "virtio-blk-pci,serial=btrfs0"),
    (Medium("btrfs1", 160), "virtio-blk-pci,serial=btrfs1"),
    (Medium("swap", 64, table="gpt", parts=(
        {"mebibytes": 40, "type": "S", "name": "swap space", "content": "swap", "label": "swapping"},)),
     "virtio-blk-pci,serial=swap"),
)


def storage_arguments(work):
    return ["-machine", "q35", "-m", "768", "-device", "nvme,id=nvme,serial=NVME-SN-1",
            "-device", "virtio-scsi-pci,id=hba", "-device", "sdhci-pci", *drive_arguments(work, DRIVES)]

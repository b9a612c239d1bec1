"""What the images hold beside the scanner: programs of the building machine, kernel modules, files."""

from dataclasses import dataclass, field


@dataclass(frozen=True)
class Kit:
    tools: dict = field(default_factory=dict)  # program: the Debian package it comes from
    links: dict = field(default_factory=dict)  # further name in the guest: path of a tool
    applets: tuple = ()                        # what the guest's scripts use from busybox
    modules: tuple = ()                        # with what they depend on
    files: tuple = ()                          # copied to the same path

    def __add__(self, other):
        return Kit({**self.tools, **other.tools}, {**self.links, **other.links},
                   self.applets + other.applets, self.modules + other.modules, self.files + other.files)


# The classic sources' own commands and what their values are compared with. The scanner's commands are
# never busybox applets, except cat and rm.
CLASSIC = Kit(
    tools={
        "/usr/sbin/dmidecode": "dmidecode", "/usr/bin/sg_inq": "sg3-utils",
        "/usr/bin/sg_map": "sg3-utils", "/usr/bin/lsblk": "util-linux", "/usr/bin/lscpu": "util-linux",
        "/usr/bin/lspci": "pciutils", "/usr/sbin/fdisk": "fdisk", "/usr/sbin/ifconfig": "net-tools",
        "/usr/bin/ps": "procps", "/usr/bin/kmod": "kmod", "/usr/bin/df": "coreutils",
        "/usr/bin/mount": "mount", "/usr/bin/hostname": "hostname", "/usr/sbin/ip": "iproute2",
    },
    links={"sbin/modprobe": "/usr/bin/kmod", "sbin/fdisk": "/usr/sbin/fdisk",
           "sbin/lspci": "/usr/bin/lspci", "sbin/ifconfig": "/usr/sbin/ifconfig",
           "sbin/ip": "/usr/sbin/ip", "bin/mount": "/usr/bin/mount", "bin/ps": "/usr/bin/ps"},
    applets=("cat", "chmod", "cut", "grep", "head", "ln", "ls", "mkdir", "mkfifo", "mv", "poweroff", "rm",
             "sed", "sleep", "swapon", "tar", "tr", "uname"),
    modules=("sym53c8xx", "ata_piix", "sd_mod", "sr_mod", "sg", "floppy", "e1000", "virtio_pci",
             "virtio_console", "crc32c_generic", "ext4", "vfat", "nls_cp437", "nls_ascii",
             "nls_iso8859-1", "vmw_pvscsi", "scsi_debug"),
    files=("/usr/share/misc/pci.ids",),
)

# A machine of today: its drivers, and the device manager whose database the modern sources read.
MODERN = CLASSIC + Kit(
    tools={"/usr/bin/findmnt": "util-linux", "/usr/bin/strace": "strace", "/usr/bin/udevadm": "udev",
           "/usr/bin/lsusb": "usbutils",
           "/lib/udev/ata_id": "udev", "/lib/udev/cdrom_id": "udev",
           "/lib/udev/scsi_id": "udev"},
    links={"lib/systemd/systemd-udevd": "/usr/bin/udevadm", "bin/udevadm": "/usr/bin/udevadm"},
    applets=("hexdump",),
    modules=("ahci", "nvme", "virtio_blk", "virtio_net", "e1000e", "xhci_pci", "usb_storage", "uas",
             "usbhid", "hid_generic", "bochs", "efivarfs"),
    files=("/lib/udev/rules.d/50-udev-default.rules", "/lib/udev/rules.d/60-block.rules",
           "/lib/udev/rules.d/60-cdrom_id.rules", "/lib/udev/rules.d/60-persistent-storage.rules"),
)

# Arrays, mapped devices and the file systems beyond the first; network interfaces made of others.
LONG = MODERN + Kit(
    tools={"/usr/sbin/mdadm": "mdadm", "/usr/sbin/nvme": "nvme-cli", "/usr/sbin/dmsetup": "dmsetup",
           "/usr/sbin/mke2fs": "e2fsprogs", "/usr/sbin/mkfs.btrfs": "btrfs-progs", "/usr/sbin/ethtool": "ethtool"},
    links={"sbin/dmsetup": "/usr/sbin/dmsetup", "sbin/mdadm": "/usr/sbin/mdadm"},
    applets=("dd", "mkswap", "umount", "printf", "seq"),
    modules=("virtio_scsi", "sdhci_pci", "mmc_block", "md_mod", "raid1", "dm_mod", "dm_crypt", "xts", "ecb",
             "aes_generic", "xfs", "btrfs", "blake2b_generic", "xxhash_generic", "libcrc32c", "bonding", "8021q",
             "bridge", "veth", "macvlan", "dummy"),
    files=("/lib/udev/rules.d/55-dm.rules", "/lib/udev/rules.d/60-persistent-storage-dm.rules",
           "/lib/udev/rules.d/63-md-raid-arrays.rules", "/lib/udev/rules.d/64-btrfs.rules"),
)

KITS = {"classic": CLASSIC, "modern": MODERN, "long": LONG}

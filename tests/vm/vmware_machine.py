"""A guest of VMware, as its processors' CPUID tells it: the name that QEMU's emulation puts there is changed in
a copy of QEMU. The three registers of CPUID leaf 0x40000000 are constants in its code."""

import shutil
from pathlib import Path

from image import Unavailable

EMULATION, VMWARE = b"TCGTCGTCGTCG", b"VMwareVMware"


def vmware_arguments(_work):
    return ["-m", "512", "-smp", "sockets=1,cores=4,threads=1",
            "-smbios", "type=1,manufacturer=VMware,, Inc.,product=VMware Virtual Platform,"
                       "serial=VMware-56 4d 12 34 56 78 9a bc-de f0 12 34 56 78 9a bc"]


def renamed_qemu(program, work):
    """Path of the copy."""
    code = Path(shutil.which(program)).read_bytes()
    for at in range(0, len(EMULATION), 4):
        word = EMULATION[at:at + 4]
        if code.count(word) != 1:
            raise Unavailable(f"{program} does not hold {word.decode()} once, so its CPUID can't be changed")
        code = code.replace(word, VMWARE[at:at + 4])
    copy = work / "usr/bin" / program
    copy.parent.mkdir(parents=True, exist_ok=True)
    copy.write_bytes(code)
    copy.chmod(0o755)
    for name in ("lib", "share"):  # its modules and its firmware are sought beside it
        link = work / "usr" / name
        if not link.is_symlink():
            link.symlink_to(f"/usr/{name}")
    return str(copy)

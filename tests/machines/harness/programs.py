"""Carries programs of the building machine into another root directory."""

import re
import shutil
import subprocess
from pathlib import Path


LOADER = "/lib64/ld-linux-x86-64.so.2"


def copy_program(program, root, target=None):
    """Copies a program, by default to the same path, and what the dynamic loader needs for it."""
    target = target or root / str(program).lstrip("/")
    target.parent.mkdir(parents=True, exist_ok=True)
    if Path(program) != target:
        shutil.copy2(program, target)
    for library in needed_libraries(program):
        inside = root / library.lstrip("/")
        if not inside.exists():
            inside.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(library, inside)


def needed_libraries(program):
    """What ldd prints, without its shell: paths of the libraries, and of the loader itself."""
    listing = subprocess.run([LOADER, "--list", program], capture_output=True, text=True)
    if "not found" in listing.stdout:
        raise RuntimeError(f"{program} lacks libraries:\n{listing.stdout}")
    found = re.findall(r"(/\S+) \(0x", listing.stdout)
    return [*found, LOADER] if found else []

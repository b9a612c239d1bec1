"""An installed scanner and the processor time that a command takes."""

import os
import resource
import shutil
import subprocess


def install(options, directory, groups):
    """The command that scans these groups with the modern sources; the program lies in `directory`."""
    program = shutil.copy(options.quenlor, os.path.join(directory, "quenlor"))
    with open(os.path.join(directory, "quenlor.conf"), "w") as file:
        file.write(f"hwscanner.sources = modern\nconfig_dir = {options.data}\n")
    config = os.path.join(directory, "scan.xml")
    with open(config, "w") as file:
        names = "".join(f'<Group Name="{name}"/>' for name in groups)
        file.write(f"<Hardware>{names}</Hardware>")
    return [program, "-c", config]


def children_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def seconds(command):
    """Processor time of a command and its children, and its output."""
    start = children_seconds()
    output = subprocess.run(command, check=True, capture_output=True).stdout
    return children_seconds() - start, output

"""What strace says of a scan with the modern sources."""

import collections
import re


def compare_calls(calls, comparison):
    """System calls of a scan: nothing is started, no module loaded, no node opened, every file read once."""
    names = collections.Counter(re.findall(r"^\d+ +(\w+)\(", calls, re.MULTILINE))
    comparison.equal("programs started", names["execve"] + names["execveat"], 1)
    comparison.equal("modules loaded", names["init_module"] + names["finit_module"], 0)
    forks = [line for line in calls.splitlines()
             if re.search(r"\b(fork|vfork|clone|clone3)\(", line) and "CLONE_THREAD" not in line]
    comparison.equal("processes made", len(forks), 1)
    opened = re.findall(r'\bopen\w*\((?:AT_FDCWD, )?"([^"]*)"', calls)
    comparison.equal("the trace holds the scan", "/proc/self/mountinfo" in opened, True)
    nodes = [path for path in opened if path.startswith("/dev/") and path != "/dev/null"
             and not path.startswith("/dev/disk")]
    comparison.equal("nodes opened", nodes, [])
    machine = collections.Counter(path for path in opened if path.startswith(("/sys/", "/proc/", "/run/")))
    comparison.equal("files opened more than once", [path for path, count in machine.items() if count > 1], [])

"""A private machine: own mounts, host name, network and process ids.

Works as root and, through a user namespace, without.
"""

import ctypes
import json
import os
import shutil
import socket
import subprocess
import sys
import time

from harness.numbered import numbered

_libc = ctypes.CDLL(None, use_errno=True)
_MS_BIND, _MS_REC, _MNT_DETACH = 0x1000, 0x4000, 2


def enter_private_machine(argv):
    """Replaces this process by `argv` (arguments of this same script) in fresh namespaces."""
    unshare = ["unshare", "--mount", "--uts", "--ipc", "--net", "--pid", "--mount-proc",
               "--fork", "--kill-child"]
    if os.geteuid() != 0:
        unshare += ["--user", "--map-root-user"]
    if not shutil.which("unshare"):
        sys.exit("fixture machines need unshare(1) of util-linux")
    os.execvp("unshare", [*unshare, sys.executable, "-I", *argv])


def mount(source, target, kind=None, flags=0, options=""):
    encoded = [None if text is None else os.fsencode(text) for text in (source, target, kind)]
    if _libc.mount(*encoded, ctypes.c_ulong(flags), options.encode()) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"mount {kind or 'bind'} on {target}: {os.strerror(error)}")


def mount_tmpfs(target, size, inodes=""):
    mount("tmpfs", target, "tmpfs", 0,
          f"size={size},mode=755" + (f",nr_inodes={inodes}" if inodes else ""))


def mount_ramfs(target):
    """A file system that lists a directory newest entry first on every kernel (tmpfs has changed
    its mind about that) and whose statvfs says 0 blocks on every machine."""
    mount("ramfs", target, "ramfs", 0, "mode=755")


def unmount(target):
    """Takes the mount out of sight at once, whatever still uses it."""
    if _libc.umount2(os.fsencode(target), _MNT_DETACH) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"unmount {target}: {os.strerror(error)}")


def bind(source, target):
    mount(source, target, None, _MS_BIND | _MS_REC)


def set_host_name(name):
    socket.sethostname(name)


class Network:
    """Interfaces of the machine. Ethernet ones are `dummy` devices, or where the kernel lacks those,
    one end of a veth pair whose other end lies out of sight in a network namespace of its own."""

    def __init__(self):
        self._elsewhere = None

    def bring_up_loopback(self):
        _ip_batch(["link set lo up"])

    def add(self, interfaces):
        """Each is a dict: name, mac, addresses (texts such as "10.0.0.1/24" or
        "10.0.0.2/24 label eth0:1"), up (default true); with "count" as many of them, texts
        expanded as in "generate"."""
        interfaces = [one for interface in interfaces for one in _expand(interface)]
        if not interfaces:
            return
        kind = self._kind()
        lines = []
        for interface in interfaces:
            name = interface["name"]
            lines.append(f"link add {name} address {interface['mac']} {kind}")
            lines += [f"addr add {address} dev {name}" for address in interface.get("addresses", [])]
            if interface.get("up", True):
                lines.append(f"link set {name} up")
        _ip_batch(lines)

    def close(self):
        if self._elsewhere:
            self._elsewhere.kill()
            self._elsewhere.wait()
            self._elsewhere = None

    def _kind(self):
        probe = ["ip", "link", "add", "probe", "type", "dummy"]
        if subprocess.run(probe, stderr=subprocess.DEVNULL).returncode == 0:
            _ip_batch(["link del probe"])
            return "type dummy"
        return f"type veth peer netns {self._far_side()}"

    def _far_side(self):
        self._elsewhere = subprocess.Popen(["unshare", "--net", "sleep", "3600"])
        own = os.readlink("/proc/self/ns/net")
        for _ in range(1000):
            if os.readlink(f"/proc/{self._elsewhere.pid}/ns/net") != own:
                return self._elsewhere.pid
            time.sleep(0.001)
        raise RuntimeError("no second network namespace")


def _expand(interface):
    if "count" not in interface:
        return [interface]
    return [json.loads(numbered(json.dumps(interface), i)) for i in range(interface["count"])]


def _ip_batch(lines):
    subprocess.run(["ip", "-batch", "-"], input="\n".join(lines), text=True, check=True)

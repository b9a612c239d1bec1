"""A private machine: own mounts, host name, network and process ids.

Works as root and, through a user namespace, without.
"""

import ctypes
import json
import os
import signal
import socket
import subprocess
import sys
import traceback
from contextlib import contextmanager, suppress

from harness.numbered import numbered

_libc = ctypes.CDLL(None, use_errno=True)
_NEWNS, _NEWUTS, _NEWIPC, _NEWUSER = 0x00020000, 0x04000000, 0x08000000, 0x10000000
_NEWPID, _NEWNET = 0x20000000, 0x40000000
_MS_BIND, _MS_REC, _MS_PRIVATE, _MNT_DETACH = 0x1000, 0x4000, 0x40000, 2
_PR_SET_PDEATHSIG = 1

SKIPPED = 77  # what ctest is told to count as skipped


class Refused(OSError):
    """Namespaces cannot be had here: a container without the right to make them, a chroot whose root is
    no mount point, a kernel that keeps them from ordinary users."""


def in_private_machine(body):
    """Runs body() in fresh namespaces, as process 1 of its own: whatever it leaves running ends
    with it. Returns its exit status, SKIPPED where such a machine cannot be had."""
    return _status_of(lambda: _in_namespaces(body))


def _in_namespaces(body):
    with _refusable():
        _unshare(_NEWNS | _NEWUTS | _NEWIPC | _NEWNET | _NEWPID)
        mount(None, "/", None, _MS_REC | _MS_PRIVATE)
    child = os.fork()
    if child == 0:
        _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)
        os._exit(_status_of(lambda: _with_own_processes(body)))
    return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])


def _with_own_processes(body):
    with _refusable():
        mount("proc", "/proc", "proc")
    return body()


@contextmanager
def _refusable():
    try:
        yield
    except OSError as reason:
        raise Refused(reason.errno, reason.strerror) from reason


def _status_of(body):
    try:
        return body()
    except Refused as reason:
        print(f"skipped: no namespaces of its own: {reason.strerror}")
        return SKIPPED
    except Exception:  # as the interpreter would, but without returning into the parent's code
        traceback.print_exc()
        return 1
    finally:
        with suppress(OSError):
            sys.stdout.flush()
            sys.stderr.flush()


def _unshare(flags):
    user, group = os.geteuid(), os.getegid()
    if user != 0:
        flags |= _NEWUSER
    _checked(_libc.unshare(flags), "unshare namespaces")
    if user != 0:
        _write("/proc/self/setgroups", "deny")
        _write("/proc/self/uid_map", f"0 {user} 1")
        _write("/proc/self/gid_map", f"0 {group} 1")


def _write(path, text):
    with open(path, "w", encoding="ascii") as stream:
        stream.write(text)


def _checked(result, what):
    if result != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"{what}: {os.strerror(error)}")


def mount(source, target, kind=None, flags=0, options=""):
    encoded = [None if text is None else os.fsencode(text) for text in (source, target, kind)]
    _checked(_libc.mount(*encoded, ctypes.c_ulong(flags), options.encode()),
             f"mount {kind or source or 'private'} on {target}")


def mount_tmpfs(target, size):
    mount("tmpfs", target, "tmpfs", 0, f"size={size},mode=755")


def mount_ramfs(target):
    """A file system that lists a directory newest entry first on every kernel (tmpfs has changed
    its mind about that) and whose statvfs says 0 blocks on every machine."""
    mount("ramfs", target, "ramfs", 0, "mode=755")


def mount_dead(target):
    """A file system whose server never answers: whoever asks it something waits until killed.
    Returns the descriptor of the server's side; closing it ends the wait."""
    server = os.open("/dev/fuse", os.O_RDWR)
    mount("dead", target, "fuse", 0, f"fd={server},rootmode=40000,user_id=0,group_id=0")
    return server


def unmount(target):
    """Takes the mount out of sight at once, whatever still uses it."""
    _checked(_libc.umount2(os.fsencode(target), _MNT_DETACH), f"unmount {target}")


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
            os.kill(self._elsewhere, signal.SIGKILL)
            os.waitpid(self._elsewhere, 0)
            self._elsewhere = None

    def _kind(self):
        probe = ["ip", "link", "add", "probe", "type", "dummy"]
        if subprocess.run(probe, stderr=subprocess.DEVNULL).returncode == 0:
            _ip_batch(["link del probe"])
            return "type dummy"
        return f"type veth peer netns {self._far_side()}"

    def _far_side(self):
        """Process id of a child that sleeps in a network namespace of its own."""
        ready, tell = os.pipe()
        self._elsewhere = os.fork()
        if self._elsewhere == 0:
            _libc.unshare(_NEWNET)
            os.write(tell, b"!")
            while True:
                signal.pause()
        os.read(ready, 1)
        os.close(ready)
        os.close(tell)
        return self._elsewhere


def _expand(interface):
    if "count" not in interface:
        return [interface]
    return [json.loads(numbered(json.dumps(interface), i)) for i in range(interface["count"])]


def _ip_batch(lines):
    subprocess.run(["ip", "-batch", "-"], input="\n".join(lines), text=True, check=True)

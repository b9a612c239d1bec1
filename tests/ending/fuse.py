"""File systems whose server takes what it is asked and never answers, or does not answer some of it.

Speaks the kernel's protocol (linux/fuse.h) by itself. What a server has taken cannot be interrupted
any more, not even by SIGKILL: that is how a dead sshfs holds whoever asked it.
"""

import os
import signal
import struct
import time

from harness import namespace

LOOKUP, FORGET, GETATTR, SETATTR, OPEN, READ, WRITE = 1, 2, 3, 4, 14, 15, 16
STATFS, RELEASE, FSYNC, FLUSH, INIT, ACCESS, CREATE = 17, 18, 20, 25, 26, 34, 35
INTERRUPT, BATCH_FORGET = 36, 42
_UNANSWERED = (FORGET, BATCH_FORGET, INTERRUPT)  # the kernel expects no answer to these
_ROOT, _FILE = 1, 2
_ENOENT, _ENOSYS = 2, 38
_SIZE_GIVEN = 1 << 3
_LONGEST_WRITE = 65536


class Server:
    """A mount with one file in it, whatever its name, served by a process of its own."""

    def __init__(self, target, silent=(STATFS,), afterwards=(), delay=0.0):
        """Operations in `silent` are taken and never answered; once one was, those in `afterwards` too.
        Sizes are told after `delay` seconds."""
        target.mkdir(parents=True, exist_ok=True)
        device = os.open("/dev/fuse", os.O_RDWR)
        namespace.mount("dead", str(target), "fuse", 0,
                        f"fd={device},rootmode=40000,user_id=0,group_id=0,allow_other")
        self._content, told = os.pipe()
        self._server = os.fork()
        if self._server == 0:
            _Serving(device, set(silent), afterwards, delay, told).run()
        os.close(device)
        os.close(told)

    def stop(self):
        """From now on nothing is taken."""
        os.kill(self._server, signal.SIGSTOP)

    def end(self):
        """Ends the server, and with it the wait of everybody who had asked. Gives what was written to
        the file by then."""
        os.kill(self._server, signal.SIGTERM)
        os.kill(self._server, signal.SIGCONT)
        with os.fdopen(self._content, "rb") as stream:
            content = stream.read()
        os.waitpid(self._server, 0)
        return content


class _Serving:
    def __init__(self, device, silent, afterwards, delay, told):
        self._device = device
        self._silent = silent
        self._afterwards = afterwards
        self._delay = delay
        self._told = told
        self._content = bytearray()
        self._answers = {INIT: self._init, GETATTR: self._getattr, LOOKUP: self._lookup,
                         SETATTR: self._setattr, OPEN: self._open, CREATE: self._create,
                         WRITE: self._write, FLUSH: self._nothing, RELEASE: self._nothing,
                         ACCESS: self._nothing, FSYNC: self._nothing, STATFS: self._statfs}
        self._exists = False

    def run(self):
        signal.signal(signal.SIGTERM, self._end)
        try:
            while True:
                self._serve(os.read(self._device, _LONGEST_WRITE + 4096))
        except OSError:  # unmounted
            self._end()

    def _end(self, *_):
        os.write(self._told, bytes(self._content[:60000]))
        os._exit(0)

    def _serve(self, request):
        _, operation, unique, node = struct.unpack_from("<IIQQ", request)
        if operation in _UNANSWERED:
            return
        if operation in self._silent:
            self._silent.update(self._afterwards)
            return
        answer = self._answers.get(operation)
        body = answer(node, request[40:]) if answer else _ENOSYS
        error, body = (-body, b"") if isinstance(body, int) else (0, body)
        os.write(self._device, struct.pack("<IiQ", 16 + len(body), error, unique) + body)

    def _init(self, _node, body):
        read_ahead = struct.unpack_from("<III", body)[2]
        return struct.pack("<IIIIHHIIHHII6I", 7, 31, read_ahead, 0, 12, 9, _LONGEST_WRITE, 1, 16, 0,
                           0, 0, *[0] * 6)

    def _attributes(self, node):
        mode, size = (0o100644, len(self._content)) if node == _FILE else (0o040755, 0)
        return struct.pack("<QQQQQQIIIIIIIIII", node, size, 8, 0, 0, 0, 0, 0, 0, mode, 1, 0, 0, 0,
                           4096, 0)

    def _entry(self):
        return struct.pack("<QQQQII", _FILE, 0, 0, 0, 0, 0) + self._attributes(_FILE)

    def _getattr(self, node, _body):
        return struct.pack("<QII", 0, 0, 0) + self._attributes(node)

    def _lookup(self, _node, _body):
        return self._entry() if self._exists else _ENOENT

    def _setattr(self, node, body):
        valid, size = struct.unpack_from("<I", body)[0], struct.unpack_from("<Q", body, 16)[0]
        if valid & _SIZE_GIVEN:
            del self._content[size:]
        return self._getattr(node, body)

    def _open(self, _node, _body):
        return struct.pack("<QII", 1, 1, 0)  # direct I/O: what is written arrives here at once

    def _create(self, node, body):
        self._exists = True
        return self._entry() + self._open(node, body)

    def _write(self, _node, body):
        offset, size = struct.unpack_from("<QI", body, 8)
        self._content[offset:offset + size] = body[40:40 + size]
        return struct.pack("<II", size, 0)

    def _nothing(self, _node, _body):
        return b""

    def _statfs(self, _node, _body):
        time.sleep(self._delay)
        return struct.pack("<QQQQQIIII6I", 8, 4, 2, 0, 0, 4096, 255, 4096, 0, *[0] * 6)

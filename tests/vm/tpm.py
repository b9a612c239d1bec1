"""A TPM 2.0 for a virtual machine, played by swtpm."""

import contextlib
import subprocess
import time

from image import Unavailable, need_program

START_LIMIT = 30  # seconds


def arguments(work):
    return ["-chardev", f"socket,id=tpm,path={_socket(work)}", "-tpmdev", "emulator,id=tpm0,chardev=tpm",
            "-device", "tpm-tis,tpmdev=tpm0"]


@contextlib.contextmanager
def running(work):
    need_program("swtpm", "swtpm")
    state = work / "tpm"
    state.mkdir(exist_ok=True)
    _socket(work).unlink(missing_ok=True)
    process = subprocess.Popen(["swtpm", "socket", "--tpm2", "--tpmstate", f"dir={state}",
                                "--ctrl", f"type=unixio,path={_socket(work)}"], stdin=subprocess.DEVNULL)
    try:
        _wait_for(_socket(work))
        yield
    finally:
        process.kill()
        process.wait()


def _socket(work):
    return work / "tpm.socket"


def _wait_for(path):
    end = time.monotonic() + START_LIMIT
    while not path.exists():
        if time.monotonic() > end:
            raise Unavailable("swtpm does not start")
        time.sleep(0.05)

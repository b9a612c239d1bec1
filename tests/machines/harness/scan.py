"""Runs the scanner inside a laid-out machine and judges what comes back."""

import difflib
import os
import resource
import subprocess
import time
from contextlib import suppress
from pathlib import Path

from harness import facts, namespace
from harness.documents import with_placeholders
from harness.machine import DOCUMENT_OPTIONS
from harness.stage import (
    INSTALL, KERNEL, SCAN_CONFIGURATION, SUPPRESSIONS, changes, snapshot)
from harness.trace import golden_trace

PATH = "/usr/sbin:/usr/bin:/sbin:/bin"
SANITIZED_SLOWDOWN = 10
TRACE = "/tmp/trace"
TRACE_TIME = "%Y-%m-%d %H:%M:%S"
SANITIZER_OPTIONS = {"ASAN_OPTIONS": "detect_leaks=1",
                     "TSAN_OPTIONS": f"halt_on_error=1:suppressions=/{SUPPRESSIONS}"}


class Scan:
    def __init__(self, machine, root, sanitizer):
        self._machine = machine
        self._root = Path(root)
        self._sanitizer = sanitizer

    def check(self, kind, update):
        """One run; returns what is wrong with it, as texts."""
        masked, _, complaints = self._scan(kind)
        if masked is not None:
            complaints += self._compare(kind, masked, update)
        return [f"{kind}: {line}" for line in complaints]

    def check_traced(self, update):
        """With full tracing the document is the same, and the trace is the golden one."""
        settings = self._root / INSTALL / "DovTrace.properties"
        trace = self._root / TRACE.lstrip("/")
        settings.write_text(f"trace.level = MAX\ntrace.file = {TRACE}\ntrace.size = 100000000\n")
        masked, moment, complaints = self._scan(self._machine.traced, leaves=[TRACE])
        if masked is not None:
            complaints += self._compare(self._machine.traced, masked, update=False)
        if trace.exists():
            text = trace.read_bytes().decode("utf-8", "surrogateescape")
            masked = golden_trace(text, facts.time_within(moment, TRACE_TIME),
                                  facts.rules_of(self._machine, moment))
            complaints += self._compare("trace", masked, update)
        settings.unlink()
        trace.unlink(missing_ok=True)
        return [f"traced {line}" for line in complaints]

    def _scan(self, kind, leaves=()):
        """The document with its placeholders, when the run was, and what is wrong with the run."""
        untouched = self._machine.dead_mounts
        before = snapshot(self._root, untouched)
        start = time.time()
        result = self._run(kind)
        end = time.time()
        moment = facts.Moment(start, end, self._machine.environment.get("TZ", ""),
                              facts.boot_time(self._machine))
        if result is None:
            return None, moment, ["the scan did not end"]
        self._forget_processes()
        document, complaints = self._collect(result, kind)
        complaints += changes(before, snapshot(self._root, untouched),
                              [*self._machine.leaves, *leaves])
        complaints += self._check_time(end - start)
        if kind == "xml":
            complaints += well_formed(document)
        text = document.decode("utf-8", "surrogateescape")
        rules = facts.rules_of(self._machine, moment)
        return with_placeholders(kind, text, rules), moment, complaints

    def _run(self, kind):
        """The finished process; none when it had to be killed."""
        try:
            return subprocess.run(
                self._command(kind), env=self._environment(), stdin=subprocess.DEVNULL,
                capture_output=True, preexec_fn=self._enter, timeout=self._limit() + 30)
        except subprocess.TimeoutExpired:
            return None

    def _command(self, kind):
        command = [f"/{INSTALL}/quenlor", *DOCUMENT_OPTIONS[kind]]
        if self._machine.groups is not None:
            command += ["-c", f"/{SCAN_CONFIGURATION}"]
        if self._machine.output:
            command += ["-o", self._machine.output]
        return command

    def _environment(self):
        environment = {"PATH": PATH, **self._machine.environment}
        return {**environment, **SANITIZER_OPTIONS} if self._sanitizer else environment

    def _enter(self):
        os.chroot(self._root)
        os.chdir("/")
        if self._sanitizer:
            show_own_processes(os.getpid())
        if self._machine.cpus:
            os.sched_setaffinity(0, sorted(os.sched_getaffinity(0))[: self._machine.cpus])
        if not self._sanitizer:
            for name, limit in self._machine.limits.items():
                resource.setrlimit(getattr(resource, name), (limit, limit))

    def _forget_processes(self):
        for name in os.listdir(self._root / "proc"):
            if name.isdecimal():
                (self._root / "proc" / name).unlink()

    def _collect(self, result, kind):
        """The document and what is wrong with the run around it."""
        complaints = []
        if result.returncode != self._machine.status:
            complaints.append(f"exit status {result.returncode}, not {self._machine.status}")
        complaints += difference(self._machine.expected_stderr(kind),
                                 result.stderr.decode(errors="replace"), "standard error")
        if not self._machine.output:
            return result.stdout, complaints
        if result.stdout:
            complaints.append(f"standard output holds {result.stdout!r}")
        written = self._root / self._machine.output.lstrip("/")
        document = written.read_bytes() if written.exists() else b""
        written.unlink(missing_ok=True)
        return document, complaints

    def _limit(self):
        return self._machine.seconds * (SANITIZED_SLOWDOWN if self._sanitizer else 1)

    def _check_time(self, seconds):
        limit = self._limit()
        return [f"took {seconds:.2f} s, more than {limit} s"] if seconds > limit else []

    def _compare(self, kind, masked, update):
        golden = self._machine.golden(kind)
        if update:
            golden.write_bytes(masked.encode("utf-8", "surrogateescape"))
            return []
        if not golden.exists():
            return [f"{golden.name} is missing; QUENLOR_UPDATE_GOLDEN=1 writes it"]
        expected = golden.read_bytes().decode("utf-8", "surrogateescape")
        return difference(expected, masked, golden.name)


def show_own_processes(first):
    """The leak checker looks its process up by number, the parent's and that of the scan, its child: one of
    the next in this namespace, where other scans may start at the same time."""
    for number in range(first, first + 32):
        with suppress(FileExistsError):
            os.symlink(f"/{KERNEL}/{number}", f"/proc/{number}")


def difference(expected, found, name):
    lines = difflib.unified_diff(expected.split("\n"), found.split("\n"),
                                 f"{name} (expected)", f"{name} (found)", lineterm="")
    return list(lines)


def well_formed(document):
    lint = subprocess.run(["xmllint", "--noout", "-"], input=document, capture_output=True)
    return [] if lint.returncode == 0 else lint.stderr.decode(errors="replace").splitlines()

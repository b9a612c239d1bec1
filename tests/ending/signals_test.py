#!/usr/bin/env python3
"""Scans that are told to end, at every moment of their lives: they die by that signal and leave nothing.

signals_test.py ... TERM parent 200   strikes at that many moments; without arguments every signal at a few.
"""

import os
import signal
import subprocess
import sys
import time

import scene

SIGNALS = ("TERM", "INT", "HUP")
TARGETS = ("parent", "group", "child")
QUICK_MOMENTS = 5


def strike(scan, number, target):
    """False when there is nobody any more, or not yet."""
    if target == "group":
        os.killpg(scan.pid, number)
        return True
    victims = [scan.pid] if target == "parent" else scene.children_of(scan.pid)
    for victim in victims[:1]:
        try:
            os.kill(victim, number)
        except ProcessLookupError:
            return False
    return bool(victims)


def scan_with_strike(machine, number, target, delay):
    """The scan's status, and what is wrong with its end."""
    scan = machine.start(stdout=subprocess.DEVNULL)
    time.sleep(delay)
    strike(scan, number, target)
    complaints = scan.communicate(timeout=30)[1].decode()
    wrong = machine.left_behind()
    machine.forget_module()
    if complaints:
        wrong.append(f"said {complaints!r}")
    if scan.returncode not in (0, -number):
        wrong.append(f"status {scan.returncode}")
    return scan.returncode, wrong


def length_of_scan(machine):
    start = time.monotonic()
    machine.start(stdout=subprocess.DEVNULL).communicate(timeout=30)
    return time.monotonic() - start


def check(machine, name, target, moments):
    """What is wrong, as texts."""
    number = getattr(signal, f"SIG{name}")
    length = length_of_scan(machine)
    ended, complaints = 0, []
    for moment in range(moments):
        delay = length * moment / moments
        status, wrong = scan_with_strike(machine, number, target, delay)
        ended += status == -number
        complaints += [f"{name} to the {target} after {delay:.4f} s: {text}" for text in wrong]
    if ended < moments / 2:
        complaints.append(f"{name} to the {target}: only {ended} of {moments} scans were hit")
    return complaints


def run(tools, arguments):
    machine = scene.Scene(tools, groups=["Storage", "UnixCpuMeter"], mount_seconds=0.1)
    complaints = []
    if arguments:
        complaints += check(machine, arguments[0], arguments[1], int(arguments[2]))
    else:
        for name in SIGNALS:
            for target in TARGETS:
                complaints += check(machine, name, target, QUICK_MOMENTS)
    scene.kill_strangers()
    machine.close()
    print("\n".join(complaints) or "every scan ended by its signal and left nothing")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(scene.run_tests(run))

#!/usr/bin/env python3
"""Ends orloview by each signal that it can catch, at random moments of writing a picture, a turntable and --info: what stays
are whole pictures, old or new, and no process. Usage: signals.py ORLOVIEW SECONDS"""

import os
import random
import resource
import signal
import subprocess
import sys
import tempfile
import time

SECONDS = float(sys.argv.pop(2))
TREE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
sys.path.insert(0, os.path.join(TREE, "tests", "viewer"))
from viewer_program import ORLOVIEW, refuse_nameless_files

MODEL = os.path.join(TREE, "samples", "showcase.glb")
ROADS = {
    "picture": ("-o", "a.png", "--size", "320x240"),
    "turntable": ("-o", "t.tga", "--turntable", "3", "--size", "160x120"),
    "info": ("--info",),
}
HARMLESS = {signal.SIGCHLD, signal.SIGCONT, signal.SIGURG, signal.SIGWINCH, signal.SIGPIPE, signal.SIGXFSZ}
STOPPING = {signal.SIGTSTP, signal.SIGTTIN, signal.SIGTTOU}
DRIVER_FAULTS = {signal.SIGSEGV, signal.SIGBUS, signal.SIGABRT, signal.SIGILL, signal.SIGFPE}
NO_GL = 4  # what these end with while OpenGL starts


def start(road, folder, names_files):
    def prepare():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if names_files:
            refuse_nameless_files()

    return subprocess.Popen([ORLOVIEW, MODEL, *ROADS[road]], cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=prepare)


def contents(folder):
    found = {}
    for name in os.listdir(folder):
        with open(os.path.join(folder, name), "rb") as file:
            found[name] = file.read()
    return found


def lives(session):
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.getsid(int(process)) == session:
                return True
        except ProcessLookupError:
            pass
    return False


def fault_of(road, sent, viewer, folder, whole):
    """What stayed or came that should not; empty: nothing."""
    code = viewer.wait(120)
    found = contents(folder)
    for name, data in found.items():
        if data not in (b"old", whole.get(name)):
            return f"{name} is neither old nor whole"
    if any(name not in found for name in whole) or (code == 0 and found != whole):
        return f"{sorted(found)} with exit code {code}"
    if code not in (0, -sent, NO_GL if sent in DRIVER_FAULTS else 0) or (code != 0 and sent in HARMLESS | STOPPING):
        return f"exit code {code}"
    patience = time.monotonic() + 5
    while lives(viewer.pid):
        if time.monotonic() > patience:
            return "a process of it is left"
        time.sleep(0.01)
    return ""


def main():
    wholes, durations = {}, {}
    for road in ROADS:
        with tempfile.TemporaryDirectory() as folder:
            before = time.monotonic()
            if start(road, folder, False).wait(120) != 0:
                sys.exit(f"{road}: orloview fails by itself")
            durations[road], wholes[road] = time.monotonic() - before, contents(folder)
    signals = sorted(signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP})
    end, runs, ended, faults = time.monotonic() + SECONDS, 0, 0, 0
    while time.monotonic() < end:
        road, sent, names_files = random.choice(list(ROADS)), signals[runs % len(signals)], random.random() < 0.5
        with tempfile.TemporaryDirectory() as folder:
            for name in wholes[road]:
                with open(os.path.join(folder, name), "wb") as file:
                    file.write(b"old")
            viewer = start(road, folder, names_files)
            time.sleep(random.uniform(0, 1.1 * durations[road]))
            viewer.send_signal(sent)
            fault = fault_of(road, sent, viewer, folder, wholes[road])
        runs += 1
        ended += viewer.returncode != 0
        if fault:
            faults += 1
            print(f"{road}, signal {int(sent)}: {fault}")
    print(f"signals: {runs} runs, {ended} ended by theirs, {faults} left something wrong")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

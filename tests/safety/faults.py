"""Runs a program with planned crashes, failures and interference, and tells what it did to the files.

The library that carries the plan out is fault_injector.c; its head describes the plan.
"""

import os
import signal
import subprocess
from dataclasses import dataclass
from pathlib import Path

ERRORS = ("ENOSPC", "EIO", "EACCES", "EROFS", "EDQUOT", "EINTR")
CRASHES = ("kill-before", "kill-after")
DEADLINE_SECONDS = 30
# Where the tests make their folders: in memory where the system has a disk there. What counts is which calls are made;
# waiting for a real disk at each of thousands of them takes minutes.
SCRATCH = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


@dataclass(frozen=True)
class Call:
    """One counted call: its number, its name ("open", "exchange", ...) and the names of the files it was about."""

    number: int
    name: str
    path: str
    second: str

    @staticmethod
    def parse(line):
        number, name, path, second = line.rstrip("\n").split(" ")
        return Call(int(number), name, path, second)


@dataclass(frozen=True)
class Outcome:
    output: str
    was_killed: bool
    calls: tuple


class Injector:
    """The preloaded library, watching one folder."""

    def __init__(self, library, folder, log):
        self.library = library
        self.folder = os.path.realpath(folder)
        self.log = Path(log)

    def run(self, command, *, plan="", target="", without="", environment=None, text=""):
        self.log.unlink(missing_ok=True)
        variables = dict(os.environ, **(environment or {}))
        variables.update(
            LD_PRELOAD=str(self.library),
            FAULT_FOLDER=self.folder,
            FAULT_LOG=str(self.log),
            FAULT_PLAN=plan,
            FAULT_TARGET=str(target),
            FAULT_WITHOUT=without,
        )
        done = subprocess.run(
            command, input=text, capture_output=True, text=True, env=variables, timeout=DEADLINE_SECONDS
        )
        if done.stderr:
            raise AssertionError(f"{command} said on standard error: {done.stderr}")
        was_killed = done.returncode == -signal.SIGKILL
        if done.returncode != 0 and not was_killed:
            raise AssertionError(f"{command} ended with {done.returncode}")
        lines = self.log.read_text().splitlines() if self.log.exists() else []
        return Outcome(done.stdout, was_killed, tuple(map(Call.parse, lines)))


def single_faults(calls):
    """Every plan with one fault in it, for a run that makes these calls."""
    for call in calls:
        for action in CRASHES + ERRORS:
            yield call, action
        if call.name == "write":
            yield call, "short"


def is_temporary(path):
    name = os.path.basename(path)
    return name.startswith(".") and name.endswith(".tmp")


def visible_items(folder):
    """What a calendar program reads there: the text of each item by its path below the folder."""
    items = {}
    for parent, folders, names in os.walk(folder, followlinks=True):
        folders[:] = [name for name in folders if not name.startswith(".")]
        for name in names:
            path = os.path.join(parent, name)
            if name.endswith(".ics") and not name.startswith(".") and os.path.exists(path):
                items[os.path.relpath(path, folder)] = Path(path).read_bytes().decode()
    return items


def hidden_texts(folder):
    """The texts of the temporary files that are left, by path."""
    return {
        os.path.join(parent, name): Path(parent, name).read_bytes().decode()
        for parent, _, names in os.walk(folder)
        for name in names
        if is_temporary(name)
    }


def order_mistakes(calls):
    """Why a power failure could have broken the change that made these calls. Empty when it could not."""
    mistakes = []
    placed = [c for c in calls if c.name in ("rename", "exchange", "link") and not is_temporary(c.second)]
    taken = [c for c in calls if c.name in ("rename", "unlink") and not is_temporary(c.path)]
    for call in placed:
        before = [c for c in calls if c.number < call.number and c.path == call.path]
        last_write = max((c.number for c in before if c.name in ("open", "write", "pwrite", "ftruncate")), default=0)
        if not any(c.name in ("fsync", "fdatasync") and c.number > last_write for c in before):
            mistakes.append(f"{call} puts a file in place that was not synced")
    for call in placed + taken:
        folder = os.path.dirname(call.second or call.path)
        if not any(c.name == "fsync" and c.path == folder and c.number > call.number for c in calls):
            mistakes.append(f"{call} is answered before its folder was synced")
    if not placed and not taken:
        mistakes.append("nothing was put in place or taken away")
    return mistakes

"""What the examples share: the bridge at the other end of two pipes, over a scratch copy of the sample calendars."""

import contextlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILT_BRIDGE = ROOT / "build/release/tidemark-cal"
COLORFUL = sys.stdout.isatty() and not os.environ.get("NO_COLOR")


class Bridge:
    """The process at the other end of two pipes, and a record of every line that crossed them.

    It writes a request a line, reads an answer a line and matches them by "id".
    """

    def __init__(self, program, data_home):
        environment = {**os.environ, "XDG_DATA_HOME": str(data_home), "TIDEMARK_DESKTOP": "1"}
        self.process = subprocess.Popen(
            [program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environment, encoding="utf-8")
        self.lines = []
        self.last_id = 0
        self.ready = self.receive()

    def receive(self):
        line = self.process.stdout.readline().rstrip("\n")
        if not line:
            sys.exit("the bridge ended early")
        self.lines.append(("<", line))
        return json.loads(line)

    def ask(self, command, **fields):
        self.last_id += 1
        line = json.dumps({"id": self.last_id, "cmd": command, **fields}, ensure_ascii=False)
        self.lines.append((">", line))
        print(line, file=self.process.stdin, flush=True)
        # A notice or a late answer to another request may come first.
        while (answer := self.receive()).get("id") != self.last_id:
            pass
        if "error" in answer:
            sys.exit(f"{command}: {answer['error']}")
        return answer

    @property
    def last_request(self):
        return [line for direction, line in self.lines if direction == ">"][-1]

    def close(self):
        self.process.stdin.close()
        self.process.wait()


@contextlib.contextmanager
def sample_calendars():
    """The directory of a copy that goes again. Your own calendars are neither shown nor touched."""
    # One place, so that the page is the same on every machine.
    os.environ["TZ"] = "Europe/Berlin"
    time.tzset()
    with tempfile.TemporaryDirectory() as data_home:
        calendars = pathlib.Path(data_home) / "calendars"
        shutil.copytree(ROOT / "examples/calendars", calendars)
        yield calendars


def paint(text, color=None, dim=False):
    if not COLORFUL or not (color or dim):
        return text
    if dim:
        return f"\033[2m{text}\033[0m"
    red, green, blue = bytes.fromhex(color[1:])
    return f"\033[38;2;{red};{green};{blue}m{text}\033[0m"

"""What the examples share: a scratch copy of the sample calendars, and colours."""

import contextlib
import os
import pathlib
import shutil
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
COLORFUL = sys.stdout.isatty() and not os.environ.get("NO_COLOR")


def default_bridge():
    """The one that was built here, else the one that is installed."""
    built = ROOT / "build/release/tidemark-cal"
    return str(built) if built.exists() else "tidemark-cal"


@contextlib.contextmanager
def sample_calendars():
    """The directory of a copy that goes again. Your own calendars are neither shown nor touched."""
    # One place, so that the page is the same on every machine.
    os.environ["TZ"] = "Europe/Berlin"
    time.tzset()
    with tempfile.TemporaryDirectory() as data_home:
        calendars = pathlib.Path(data_home) / "calendars"
        shutil.copytree(ROOT / "examples/calendars", calendars)
        os.environ["XDG_DATA_HOME"] = data_home
        yield calendars


def paint(text, color=None, dim=False):
    if not COLORFUL or not (color or dim):
        return text
    if dim:
        return f"\033[2m{text}\033[0m"
    red, green, blue = bytes.fromhex(color[1:])
    return f"\033[38;2;{red};{green};{blue}m{text}\033[0m"

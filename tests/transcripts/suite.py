"""What the byte-exact tests share: the program under test, and scenarios in a scratch file."""

import contextlib
import json
import pathlib
import sys
import tempfile
import unittest

import bridge

PROGRAM = ""


@contextlib.contextmanager
def scenario_file(scenario):
    """A file with that scenario: an object, the name of a file of scenarios/, or bytes."""
    if isinstance(scenario, str):
        yield str(pathlib.Path(__file__).resolve().parent / "scenarios" / scenario)
        return
    with tempfile.TemporaryDirectory(prefix="tidemark-scenario-") as scratch:
        path = pathlib.Path(scratch, "scenario.json")
        content = scenario if isinstance(scenario, bytes) else json.dumps(scenario).encode()
        path.write_bytes(content)
        yield str(path)


@contextlib.contextmanager
def simulator(scenario=None, **options):
    """The simulator over that scenario; the options are those of Bridge."""
    with scenario_file({} if scenario is None else scenario) as path:
        with bridge.Bridge([PROGRAM, path], **options) as process:
            yield process


def main():
    """To be called by each suite: the first argument is the program, the rest unittest's own."""
    global PROGRAM
    if len(sys.argv) < 2:
        raise SystemExit(f"usage: {sys.argv[0]} PROGRAM [TEST...]")
    PROGRAM = sys.argv.pop(1)
    unittest.main(module="__main__")

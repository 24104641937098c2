"""Runs tools/check_mac over the stand-in, so that it is whole when somebody sits before a Mac.

    test_check_mac.py CHECK_MAC BRIDGE
"""

import datetime
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK_MAC, BRIDGE = sys.argv.pop(1), sys.argv.pop(1)
DEADLINE = 240
CALENDARS = [("one", "tidemark check", 0), ("two", "tidemark check 2", 0), ("list", "tidemark check", 1)]


def daily(days):
    """What the user is asked to make in Calendar."""
    first = datetime.datetime(2032, 1, 5, 10)
    for number in range(days):
        start = first + datetime.timedelta(days=number)
        begin, end = (f"{at:%Y-%m-%dT%H:%M:%SZ}" for at in (start, start + datetime.timedelta(hours=1)))
        yield {"id": "daily", "title": "daily", "calendar": "one", "recurring": True,
               "start": begin, "end": end, "occurrence": begin}


SCENARIO = {
    "sources": [{"id": "s", "title": "S"}],
    "calendars": [{"id": id, "title": title, "type": type, "source": "s"} for id, title, type in CALENDARS],
    "events": list(daily(3650)),
    # For as long as the script may ask for a change in Calendar.
    "changes": [{"afterMs": 100 * number} for number in range(1000)],
}


def check(scenario):
    with tempfile.TemporaryDirectory() as scratch:
        file, program = pathlib.Path(scratch, "scenario.json"), pathlib.Path(scratch, "bridge")
        file.write_text(json.dumps(scenario), "utf-8")
        program.write_text(f"#!/bin/sh\nexec '{BRIDGE}' '{file}'\n", "utf-8")
        program.chmod(0o755)
        return subprocess.run(
            [sys.executable, CHECK_MAC, str(program)], input="\n\n", capture_output=True, text=True,
            timeout=DEADLINE, env={"TZ": "UTC", "PATH": "/usr/bin:/bin"})


class CheckMac(unittest.TestCase):
    def test_finds_nothing_wrong_with_the_stand_in(self):
        run = check(SCENARIO)
        self.assertNotIn("FAILED", run.stdout)
        self.assertIn("\n0 failed\n", run.stdout)
        self.assertIn("a changed occurrence keeps its occurrence date: True", run.stdout)
        self.assertEqual((run.returncode, run.stderr), (0, ""))

    def test_stops_where_access_is_refused(self):
        run = check({**SCENARIO, "access": {"events": {"granted": False, "status": 2}}})
        self.assertIn("FAILED  auth is granted", run.stdout)
        self.assertEqual(run.returncode, 1)

    def test_touches_nothing_without_its_calendars(self):
        run = check({**SCENARIO, "calendars": [{"id": "one", "title": "Work", "source": "s"}]})
        self.assertIn("FAILED  there is one calendar named “tidemark check”", run.stdout)
        self.assertEqual(run.returncode, 1)


unittest.main(argv=[sys.argv[0]])

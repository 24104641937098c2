"""Runs the agenda example against the built bridge. Usage: agenda_test.py PATH_OF_TIDEMARK_CAL"""

import os
import pathlib
import pty
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
AGENDA = [sys.executable, HERE.parent.parent / "examples/python/agenda.py", "--bridge", sys.argv[1]]
PIPE_HEADING = "What went over the pipe"


def environment(**changes):
    inherited = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    return {**inherited, "COLUMNS": "100", "LC_ALL": "C.UTF-8", "TZ": "Asia/Tokyo", **changes}


def run_in_terminal(**changes):
    """The text that the example writes to a terminal."""
    master, slave = pty.openpty()
    process = subprocess.Popen(AGENDA, stdout=slave, env=environment(**changes))
    os.close(slave)
    text = b""
    try:
        while chunk := os.read(master, 65536):
            text += chunk
    except OSError:  # how Linux reports that the other end was closed
        pass
    os.close(master)
    assert process.wait() == 0
    return text.decode()


class Agenda(unittest.TestCase):
    def setUp(self):
        self.maxDiff = None

    def test_shows_the_week_and_the_pipe(self):
        result = subprocess.run(AGENDA, capture_output=True, env=environment(), encoding="utf-8")
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 0)
        week, pipe = result.stdout.split(PIPE_HEADING)
        self.assertEqual(week, (HERE / "agenda.txt").read_text(encoding="utf-8"))

        lines = pipe.splitlines()[1:]
        self.assertIn("ready", lines[0])
        self.assertEqual(
            [line for line in lines if line.startswith("> ")],
            ['> {"id": 1, "cmd": "calendars"}',
             '> {"id": 2, "cmd": "events", "from": "2026-03-16", "to": "2026-04-06"}',
             '> {"id": 3, "cmd": "reminders", "from": "2026-03-23", "to": "2026-03-30", "overdue": true}'])
        self.assertEqual(len([line for line in lines if line.startswith("< ")]), 4)
        self.assertLessEqual(max(map(len, lines)), 100)

    def test_paints_on_a_terminal_unless_asked_not_to(self):
        self.assertIn("\033[38;2;", run_in_terminal())
        self.assertNotIn("\033[", run_in_terminal(NO_COLOR="1"))


unittest.main(argv=[sys.argv[0]])

"""Two writers of ours and another program change one file at the same time: no answered change is lost.

A program that renames blindly destroys what came between its reading and its renaming, so ours may go then; but we
never destroy one of its changes. (For an instant ours can stand in the place of one that came at the same time, until the
exchange is undone; who reads just then reads again.) With a program that takes our lock for its change, nothing of anybody is lost. Takes
the item_file_tool as argument.
"""

import fcntl
import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

CHANGES = 150
DEADLINE_SECONDS = 120
START = "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:1\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n"
ALL = list(range(1, CHANGES + 1))


def properties(text, name):
    """The numbers of the lines name:1, name:2, ... in the order of the file."""
    return [int(line[len(name) + 1 :]) for line in text.split("\r\n") if line.startswith(name + ":")]


class ConcurrentChanges(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="concurrent-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.file = self.folder / "a.ics"
        self.file.write_bytes(START.encode())
        self.writers = {name: self.start_writer(name) for name in ("X-ONE", "X-TWO")}

    def start_writer(self, name):
        command = ["timeout", str(DEADLINE_SECONDS), TOOL, "add-many", str(self.folder), "a.ics", name, str(CHANGES)]
        return subprocess.Popen(command, stdout=subprocess.PIPE, text=True)

    def tearDown(self):
        for writer in self.writers.values():
            with writer.stdout as rest:
                self.assertEqual(set(rest.read().splitlines()) - {"ok"}, set())
            self.assertEqual(writer.wait(), 0)
        text = self.text()
        self.assertTrue(text.startswith(START[:36]) and text.endswith("END:VEVENT\r\nEND:VCALENDAR\r\n"), text)
        self.assertEqual([entry.name for entry in self.folder.iterdir()], ["a.ics"])

    def text(self):
        return self.file.read_bytes().decode()

    def rename_into_place(self, number, text):
        """What the other program does when it has read: adds a property, renames."""
        temporary = self.folder / "their-temporary-file"
        temporary.write_bytes(text.replace("END:VEVENT", f"X-THEIRS:{number}\r\nEND:VEVENT").encode())
        os.rename(temporary, self.file)

    def wait_for_an_answer(self):
        """Keeps the other program at our pace, and in the middle of our changes."""
        self.assertEqual(self.writers["X-ONE"].stdout.readline(), "ok\n")

    def text_with_theirs(self, numbers):
        deadline = time.monotonic() + 10
        while (found := properties(text := self.text(), "X-THEIRS")) != numbers:
            self.assertLess(time.monotonic(), deadline, f"{found} instead of {numbers}")
        return text

    def wait_for_all_answers(self):
        for writer in self.writers.values():
            writer.wait()

    def test_two_writers_lose_nothing(self):
        self.wait_for_all_answers()
        for name in self.writers:
            self.assertEqual(properties(self.text(), name), ALL)

    def test_with_a_program_that_takes_the_lock_nothing_is_lost(self):
        directory = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, directory)
        for number in ALL:
            self.wait_for_an_answer()
            fcntl.flock(directory, fcntl.LOCK_EX)
            self.rename_into_place(number, self.text())
            fcntl.flock(directory, fcntl.LOCK_UN)
        self.wait_for_all_answers()
        for name in (*self.writers, "X-THEIRS"):
            self.assertEqual(properties(self.text(), name), ALL)

    def test_a_program_that_renames_blindly_finds_all_its_changes(self):
        for number in ALL:
            self.wait_for_an_answer()
            self.rename_into_place(number, self.text_with_theirs(list(range(1, number))))
        self.wait_for_all_answers()
        self.assertEqual(properties(self.text(), "X-THEIRS"), ALL)


if __name__ == "__main__":
    TOOL = sys.argv[1]
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])

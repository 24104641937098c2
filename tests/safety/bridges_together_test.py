"""Bridges that work on the same files at the same time, beside a program that renames into place; and bridges that are
killed at random instants of a busy day. Every change that was answered is there at the end, and every file is whole.

Takes the program and calendar_complaints as arguments.
"""

import fcntl
import json
import os
import queue
import random
import shutil
import signal
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

TESTS = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "transcripts"), str(TESTS / "support")]
import bridge  # noqa: E402
import written_files  # noqa: E402

SERIES = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk 1.0//EN
BEGIN:VEVENT
UID:daily
DTSTAMP:20250101T000000Z
SUMMARY:Daily
DTSTART:20250101T120000Z
DTEND:20250101T130000Z
RRULE:FREQ=DAILY
X-DESK-COLOUR;X-SHADE="dark;er":teal
END:VEVENT
END:VCALENDAR
"""
CHANGES = 80  # of each writer
KILLS = 25
LONGEST_LIFE_SECONDS = 0.15


def day(number):
    return time.strftime("%Y-%m-%dT12:00:00Z", time.gmtime(1735732800 + number * 86400))


def a_year_of_events():
    return {"id": "all", "cmd": "events", "from": "2025-01-01T00:00:00Z", "to": "2026-01-01T00:00:00Z"}


class BusyFolder(unittest.TestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp(prefix="bridges-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.root = self.home / "data" / "calendars"
        self.work = self.root / "work"
        self.work.mkdir(parents=True)
        self.file = self.work / "daily.ics"
        self.file.write_bytes(SERIES.replace("\n", "\r\n").encode())

    def start(self):
        environment = {"TZ": "UTC", "TIDEMARK_DESKTOP": "1", "XDG_DATA_HOME": str(self.home / "data")}
        return bridge.Bridge([PROGRAM], environment)

    def answers(self, requests):
        """The replies of a bridge that is sent all of them at once, as they come."""
        with self.start() as served:
            served.send("\n".join(map(json.dumps, requests)))
            for _ in requests:
                yield json.loads(served.read_reply())

    def events(self):
        (reply,) = self.answers([a_year_of_events()])
        return reply["events"]

    def expect_whole_files(self):
        with written_files.Reader(CALENDAR_COMPLAINTS) as reader:
            self.assertEqual(reader.complaints(self.root), [])
        text = self.file.read_bytes().decode()
        self.assertIn('X-DESK-COLOUR;X-SHADE="dark;er":teal\r\n', text)
        self.assertTrue(text.endswith("END:VCALENDAR\r\n"))


class TwoBridgesAndAnotherProgram(BusyFolder):
    def test_lose_no_answered_change(self):
        replies = queue.Queue()

        def work(first):
            for reply in self.answers([self.request(number) for number in range(first, first + CHANGES)]):
                replies.put(reply)

        writers = [threading.Thread(target=work, args=(first,)) for first in (0, CHANGES)]
        for writer in writers:
            writer.start()
        for theirs in range(2 * CHANGES):
            # At their pace, and in the middle of their changes.
            self.assertNotIn("error", replies.get(timeout=bridge.DEADLINE))
            self.rename_into_place(theirs)
        for writer in writers:
            writer.join()

        self.expect_whole_files()
        lines = self.file.read_bytes().decode().split("\r\n")
        titles = {event["occurrence"]: event["title"] for event in self.events()}
        for number in range(2 * CHANGES):
            self.assertIn(f"X-THEIRS:{number}", lines)
            self.assertEqual(titles.get(day(number)), self.request(number).get("title"))

    def request(self, number):
        """Changes and deletions of occurrences, in turn."""
        named = {"id": number, "eventId": "work:daily", "occurrence": day(number)}
        if number % 2:
            return {"cmd": "delete", **named}
        return {"cmd": "update", "title": f"Number {number}", **named}

    def rename_into_place(self, number):
        """Under the lock that is taken for changes; without it a renaming program destroys what it did not read."""
        directory = os.open(self.work, os.O_RDONLY)
        try:
            fcntl.flock(directory, fcntl.LOCK_EX)
            text = self.file.read_bytes().decode()
            temporary = self.work / "their-temporary-file"
            temporary.write_bytes(text.replace("RRULE", f"X-THEIRS:{number}\r\nRRULE", 1).encode())
            os.rename(temporary, self.file)
        finally:
            os.close(directory)


class KilledAtRandomInstants(BusyFolder):
    def test_keeps_what_was_answered(self):
        seed = random.SystemRandom().randrange(10**6)
        print(f"seed {seed}", flush=True)
        instants = random.Random(seed)
        made, deleted, renamed = set(), set(), -1
        for life in range(KILLS):
            first = life * 30
            requests = []
            for number in range(first, first + 10):
                requests += [
                    {"id": number, "cmd": "create", "title": f"New {number}", "start": day(300), "end": day(301)},
                    {"id": number, "cmd": "update", "eventId": "work:daily", "occurrence": day(350),
                     "title": f"Renamed {number}"},
                    {"id": number, "cmd": "delete", "eventId": "work:daily", "occurrence": day(number % 290)},
                ]
            for request, reply in self.answered_before_the_kill(requests, instants):
                if request["cmd"] == "create":
                    made.add(reply["event"]["title"])
                elif request["cmd"] == "update":
                    renamed = max(renamed, request["id"])
                elif "ok" in reply:
                    deleted.add(request["occurrence"])
            self.expect_whole_files()
        self.assertGreater(len(made), 0)
        events = self.events()
        self.assertLessEqual(made, {event["title"] for event in events})
        self.assertTrue(deleted.isdisjoint(event["occurrence"] for event in events))
        (title,) = [event["title"] for event in events if event["occurrence"] == day(350)]
        self.assertGreaterEqual(int(title.removeprefix("Renamed ")), renamed)

    def answered_before_the_kill(self, requests, instants):
        with self.start() as served:
            served.read_line()  # ready
            served.send("\n".join(map(json.dumps, requests)))
            time.sleep(instants.uniform(0, LONGEST_LIFE_SECONDS))
            served.interrupt(signal.SIGKILL)
            served.wait()
            lines = iter(served.read_line, None)
            whole = [line for line in lines if line.endswith(b"\n") and not line.startswith(b'{"event":"')]
        return zip(requests, map(json.loads, whole))


if __name__ == "__main__":
    PROGRAM, CALENDAR_COMPLAINTS = map(os.path.abspath, sys.argv[1:3])
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])

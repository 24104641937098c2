"""What is left of people's calendars when the bridge is killed or the disk fails during each command that writes.

Like item_file_safety_test.py, but from outside: each command is sent to the built program, with every fault at every
call by which it changes a file. Takes the program, the fault injector and calendar_complaints as arguments.
"""

import json
import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import faults

sys.path.append(str(Path(__file__).resolve().parent.parent / "support"))
import written_files  # noqa: E402

EVENT = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk 1.0//EN
BEGIN:VEVENT
UID:lunch
DTSTAMP:20250101T000000Z
SUMMARY:Lunch
DTSTART:20250602T120000Z
DTEND:20250602T130000Z
X-DESK-COLOUR;X-SHADE="dark;er":teal
END:VEVENT
END:VCALENDAR
"""
SERIES = EVENT.replace("UID:lunch", "UID:series").replace("SUMMARY:Lunch", "SUMMARY:Lunch\nRRULE:FREQ=DAILY;COUNT=5")
TODO = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk 1.0//EN
BEGIN:VTODO
UID:milk
DTSTAMP:20250101T000000Z
SUMMARY:Milk
DUE;VALUE=DATE:20250602
X-DESK-NOTE:keep me
END:VTODO
END:VCALENDAR
"""
REPEATING = TODO.replace("UID:milk", "UID:plants").replace("SUMMARY:Milk", "SUMMARY:Plants\nRRULE:FREQ=WEEKLY;COUNT=5")

OLD = {
    "work/lunch.ics": EVENT,
    "work/series.ics": SERIES,
    "tasks/milk.ics": TODO,
    "tasks/plants.ics": REPEATING,
}
OLD = {path: text.replace("\n", "\r\n") for path, text in OLD.items()}


class Command:
    """A request, and what the files hold once it was carried out: the file that it changes, and a claim about them.

    `between` says what a crash may leave on the way, where a command takes two steps.
    """

    def __init__(self, request, changed, is_new, between=lambda items: False):
        self.request = dict(request, id=1)
        self.name = request["cmd"] + (" one occurrence" if "occurrence" in request else "")
        self.changed = changed
        self.is_new = is_new
        self.between = between

    def is_done(self, items):
        others = {path: text for path, text in OLD.items() if path != self.changed}
        return all(items.get(path) == text for path, text in others.items()) and self.is_new(items)


def only_new(items, folder):
    """The one file of the folder that was not there before."""
    new = [text for path, text in items.items() if path not in OLD and path.startswith(folder + "/")]
    return new[0] if len(new) == 1 and len(items) == len(OLD) + 1 else ""


def has(path, *lines):
    """The files are those of before, and this one has all the lines."""
    return lambda items: items.keys() == OLD.keys() and all(line + "\r\n" in items[path] for line in lines)


def lacks(path):
    return lambda items: items.keys() == OLD.keys() - {path}


def has_moved(items):
    return "work/lunch.ics" not in items and "UID:lunch\r\n" in only_moved(items)


def is_in_both(items):
    return items.get("work/lunch.ics") == OLD["work/lunch.ics"] and "UID:lunch\r\n" in only_moved(items)


def only_moved(items):
    there = [text for path, text in items.items() if path.startswith("home/")]
    return there[0] if len(there) == 1 else ""


def is_completed_once(items):
    completed = "STATUS:COMPLETED\r\n" in items["tasks/plants.ics"] and "RRULE" not in items["tasks/plants.ics"]
    return completed and "COUNT=4" in only_new(items, "tasks")


def has_only_a_successor(items):
    return items["tasks/plants.ics"] == OLD["tasks/plants.ics"] and "COUNT=4" in only_new(items, "tasks")


KEPT = 'X-DESK-COLOUR;X-SHADE="dark;er":teal'
LUNCH = {"eventId": "work:lunch"}
SECOND = {"eventId": "work:series", "occurrence": "2025-06-03T12:00:00Z"}
MILK = {"reminderId": "tasks:milk"}
QUERY = {"id": "query", "cmd": "events", "from": "2025-01-01T00:00:00Z", "to": "2026-01-01T00:00:00Z"}
START = {"start": "2025-07-01T10:00:00Z", "end": "2025-07-01T11:00:00Z"}

COMMANDS = (
    Command({"cmd": "create", "calendarId": "work", "title": "New", **START}, None,
            lambda items: "SUMMARY:New\r\n" in only_new(items, "work")),
    Command({"cmd": "update", "title": "New", **LUNCH}, "work/lunch.ics", has("work/lunch.ics", "SUMMARY:New", KEPT)),
    Command({"cmd": "update", "title": "New", **SECOND}, "work/series.ics",
            has("work/series.ics", "SUMMARY:New", "SUMMARY:Lunch", KEPT)),
    Command({"cmd": "update", "calendarId": "home", **LUNCH}, "work/lunch.ics", has_moved, between=is_in_both),
    Command({"cmd": "delete", **LUNCH}, "work/lunch.ics", lacks("work/lunch.ics")),
    Command({"cmd": "delete", **SECOND}, "work/series.ics",
            lambda items: items.keys() == OLD.keys() and "EXDATE" in items["work/series.ics"]),
    Command({"cmd": "reminder-create", "listId": "tasks", "title": "New"}, None,
            lambda items: "SUMMARY:New\r\n" in only_new(items, "tasks")),
    Command({"cmd": "reminder-update", "title": "New", **MILK}, "tasks/milk.ics",
            has("tasks/milk.ics", "SUMMARY:New", "X-DESK-NOTE:keep me")),
    Command({"cmd": "reminder-complete", "completed": True, **MILK}, "tasks/milk.ics",
            has("tasks/milk.ics", "STATUS:COMPLETED", "X-DESK-NOTE:keep me")),
    Command({"cmd": "reminder-complete", "completed": True, "reminderId": "tasks:plants"}, "tasks/plants.ics",
            is_completed_once, between=has_only_a_successor),
    Command({"cmd": "reminder-delete", **MILK}, "tasks/milk.ics", lacks("tasks/milk.ics")),
)


class Bench:
    """A home folder with two calendars and a list, and the bridge over it."""

    def __init__(self):
        self.root = Path(tempfile.mkdtemp(prefix="bridge-safety-", dir=faults.SCRATCH))
        self.calendars = self.root / "data" / "calendars"
        self.injector = faults.Injector(LIBRARY, self.calendars, self.root / "log")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root)

    def prepare(self):
        shutil.rmtree(self.calendars, ignore_errors=True)
        for collection, kind in (("work", "VEVENT"), ("home", "VEVENT"), ("tasks", "VTODO")):
            folder = self.calendars / collection
            folder.mkdir(parents=True)
            (folder / "supported-calendar-component-set").write_text(kind)
        for path, text in OLD.items():
            (self.calendars / path).write_bytes(text.encode())

    def ask(self, request, plan=""):
        """Sends the request to a new process, and a query after it, which must work.

        Returns how that went, and the reply if there was one.
        """
        environment = {
            "HOME": str(self.root),
            "XDG_DATA_HOME": str(self.root / "data"),
            "TZ": "Europe/Berlin",
            "TIDEMARK_DESKTOP": "1",
        }
        text = json.dumps(request) + "\n" + json.dumps(QUERY) + "\n"
        outcome = self.injector.run([PROGRAM], plan=plan, environment=environment, text=text)
        if READER.complaints(self.calendars):
            raise AssertionError(f"libical cannot read what {request} left behind")
        replies = [json.loads(text) for text in outcome.output.splitlines()]
        replies = [reply for reply in replies if "event" not in reply or "id" in reply]
        after = [reply for reply in replies if reply["id"] == QUERY["id"]]
        if not outcome.was_killed and (not after or "error" in after[0]):
            raise AssertionError(f"the query after {request} failed: {replies}")
        return outcome, next((reply for reply in replies if reply["id"] != QUERY["id"]), None)

    def items(self):
        return faults.visible_items(self.calendars)


class EveryFaultInEveryCommand(unittest.TestCase):
    def test_leaves_the_old_or_the_new_and_tells_which(self):
        for command in COMMANDS:
            with Bench() as bench:
                bench.prepare()
                outcome, reply = bench.ask(command.request)
                self.assertNotIn("error", reply, command.name)
                self.assertTrue(command.is_done(bench.items()), command.name)
                self.assertEqual(faults.order_mistakes(outcome.calls), [], command.name)
                for call, action in faults.single_faults(outcome.calls):
                    with self.subTest(command=command.name, call=call, action=action):
                        bench.prepare()
                        self.check(bench, command, f"{call.number}:{action}")

    def check(self, bench, command, plan):
        outcome, reply = bench.ask(command.request, plan)
        items = bench.items()
        if outcome.was_killed:
            self.assertTrue(items == OLD or command.between(items) or command.is_done(items), items)
        elif "error" in reply:
            self.assertEqual(items, OLD)
        else:
            self.assertTrue(command.is_done(items), items)
        if items == OLD or command.between(items):
            _, reply = bench.ask(command.request)
            self.assertNotIn("error", reply)
            self.assertTrue(command.is_done(bench.items()), bench.items())
        else:
            _, reply = bench.ask({"id": 2, "cmd": "create", "calendarId": "home", "title": "Next", **START})
            self.assertNotIn("error", reply)


if __name__ == "__main__":
    PROGRAM, LIBRARY, CALENDAR_COMPLAINTS = map(os.path.abspath, sys.argv[1:4])
    with written_files.Reader(CALENDAR_COMPLAINTS) as READER:
        unittest.main(argv=sys.argv[:1] + sys.argv[4:])

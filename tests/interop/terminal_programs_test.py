"""khal and todoman beside the bridge, over one tree. Usage: terminal_programs_test.py PATH_OF_TIDEMARK_CAL"""

import datetime
import json
import sys
import unittest
import zoneinfo

from people import DEADLINE, homes, skip_without

KHAL_FORMAT = "{start-long}|{end-long}|{title}"
BERLIN = zoneinfo.ZoneInfo("Europe/Berlin")
FIRST, LAST = "2026-03-20", "2026-04-10"


def local_text(event):
    """One line for an event, as KHAL_FORMAT has it, in the tests' own zone."""
    start, end = (datetime.datetime.strptime(event[key], "%Y-%m-%dT%H:%M:%S%z").astimezone(BERLIN) for key in ("start", "end"))
    form = "%Y-%m-%d" if event["isAllDay"] else "%Y-%m-%d %H:%M"
    return f"{start:{form}}|{end:{form}}|{event['title']}"


class TerminalPrograms(unittest.TestCase):
    def setUp(self):
        context = homes("home")
        [self.home] = context.__enter__()
        self.addCleanup(context.__exit__, None, None, None)
        for name, component in (("kids", "VEVENT"), ("tasks", "VTODO")):
            directory = self.home.calendars / "family" / name
            directory.mkdir(parents=True)
            (directory / "supported-calendar-component-set").write_text(component)
        self.bridge = self.home.bridge()
        self.addCleanup(self.bridge.close)

    def khal_list(self):
        # Once a day on which it takes place; each counts once.
        listed = self.home.run("khal", "list", "--day-format", "", "--format", KHAL_FORMAT, FIRST, LAST)
        return sorted({line for line in listed.splitlines() if "|" in line})

    def bridge_list(self):
        events = self.bridge.ask("events", from_=FIRST, to="2026-04-11")["events"]
        return sorted(map(local_text, events))

    def todoman(self, *command):
        return json.loads(self.home.run("todoman", "--porcelain", *command) or "[]")

    def reminders(self):
        return self.bridge.ask("reminders", from_="2000-01-01", to="2100-01-01")["reminders"]

    def told(self):
        self.assertTrue(self.bridge.wait_for_change(DEADLINE), "no change line")

    def test_khal_lists_what_the_bridge_wrote(self):
        make = {"calendarId": "family/kids"}
        self.bridge.ask("create", title="Lunch with Inês", start="2026-03-24T12:00:00+01:00", **make)
        self.bridge.ask("create", title="Trip, with bags", start="2026-03-26", end="2026-03-28", isAllDay=True, **make)
        # Across the change to summer time, in the night of 29 March.
        self.bridge.ask("create", title="Night train", start="2026-03-28T21:10:00+01:00", end="2026-03-29T06:45:00+02:00", **make)
        with self.home.bridge(TZ="America/New_York") as far_away:
            far_away.ask("create", title="Call", start="2026-03-25T15:00:00-04:00", **make)
        expected = [
            "2026-03-24 12:00|2026-03-24 12:30|Lunch with Inês",
            "2026-03-25 20:00|2026-03-25 20:30|Call",
            "2026-03-26|2026-03-27|Trip, with bags",
            "2026-03-28 21:10|2026-03-29 06:45|Night train",
        ]
        self.assertEqual(self.khal_list(), expected)
        self.assertEqual(self.bridge_list(), expected)

        lunch = next(event for event in self.bridge.ask("events", from_=FIRST, to=LAST)["events"] if "Lunch" in event["title"])
        self.bridge.ask("update", eventId=lunch["id"], title="Lunch", end="2026-03-24T14:00:00+01:00")
        self.assertEqual(self.khal_list()[0], "2026-03-24 12:00|2026-03-24 14:00|Lunch")
        self.bridge.ask("delete", eventId=lunch["id"])
        self.assertEqual(self.khal_list(), expected[1:])

    def test_occurrences_of_a_series_that_khal_made(self):
        self.home.run("khal", "new", "-a", "kids", "2026-03-23 10:00", "2026-03-23 11:00", "Piano", "--repeat", "weekly")
        self.told()
        occurrences = self.bridge.ask("events", from_=FIRST, to="2026-04-14")["events"]
        self.assertEqual([event["start"] for event in occurrences],
                         ["2026-03-23T09:00:00Z", "2026-03-30T08:00:00Z", "2026-04-06T08:00:00Z", "2026-04-13T08:00:00Z"])
        self.assertTrue(all(event["isRecurring"] for event in occurrences))
        first, moved, gone, _ = occurrences
        self.bridge.ask("update", eventId=moved["id"], occurrence=moved["occurrence"], title="Piano, later",
                        start="2026-03-31T14:00:00Z", end="2026-03-31T15:00:00Z")
        self.bridge.ask("delete", eventId=gone["id"], occurrence=gone["occurrence"])
        expected = ["2026-03-23 10:00|2026-03-23 11:00|Piano", "2026-03-31 16:00|2026-03-31 17:00|Piano, later"]
        self.assertEqual(self.khal_list(), expected)
        self.assertEqual(self.bridge_list(), expected)

    def test_todoman_lists_and_completes_what_the_bridge_wrote(self):
        self.bridge.ask("reminder-create", title="Milk & bread", dueDate="2026-03-24T17:30:00+01:00", notes="two\nof each")
        self.bridge.ask("reminder-create", title="Rent", dueDate="2026-03-31", hasDueTime=False)
        listed = {todo["summary"]: todo for todo in self.todoman("list")}
        self.assertEqual(listed.keys(), {"Milk & bread", "Rent"})
        milk = listed["Milk & bread"]
        due = datetime.datetime(2026, 3, 24, 17, 30, tzinfo=BERLIN).timestamp()
        self.assertEqual((milk["due"], milk["description"], milk["completed"]), (due, "two\nof each", False))

        self.bridge.wait_for_change(0)
        self.todoman("done", str(milk["id"]))
        self.told()
        self.assertEqual({reminder["title"]: reminder["isCompleted"] for reminder in self.reminders()},
                         {"Milk & bread": True, "Rent": False})
        # Opened again by the bridge, and completed by it.
        by_title = {reminder["title"]: reminder["id"] for reminder in self.reminders()}
        self.bridge.ask("reminder-complete", reminderId=by_title["Milk & bread"], completed=False)
        self.bridge.ask("reminder-complete", reminderId=by_title["Rent"])
        self.assertEqual([todo["summary"] for todo in self.todoman("list")], ["Milk & bread"])

    def test_the_bridge_shows_what_todoman_wrote(self):
        self.home.run("todoman", "new", "--list", "tasks", "--due", "2026-03-25 09:00", "--priority", "high", "Dentist")
        self.told()
        [dentist] = self.reminders()
        self.assertEqual((dentist["title"], dentist["dueDate"], dentist["hasDueTime"], dentist["priority"]),
                         ("Dentist", "2026-03-25T08:00:00Z", True, 4))
        self.bridge.ask("reminder-update", reminderId=dentist["id"], title="Dentist, upper left", dueDate="2026-03-26T10:00:00Z")
        [todo] = self.todoman("list")
        self.assertEqual((todo["summary"], todo["due"]), (
            "Dentist, upper left", datetime.datetime(2026, 3, 26, 11, tzinfo=BERLIN).timestamp()))


skip_without("khal", "todoman")
unittest.main(argv=[sys.argv[0]])

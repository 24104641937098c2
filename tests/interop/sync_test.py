"""Two machines sync through a CalDAV server while their bridges write and answer. Usage: sync_test.py PATH_OF_TIDEMARK_CAL"""

import concurrent.futures
import contextlib
import sys
import threading
import unittest

from people import DEADLINE, caldav_server, homes, make_calendar, skip_without

RANGE = {"from_": "2026-03-01", "to": "2026-04-01"}
SERIES = """\
BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//example.net//a phone//EN
BEGIN:VEVENT
UID:swimming@phone.example
DTSTAMP:20260101T090000Z
DTSTART;TZID=Europe/Berlin:20260303T160000
DTEND;TZID=Europe/Berlin:20260303T170000
RRULE:FREQ=WEEKLY
SUMMARY:Swimming
END:VEVENT
END:VCALENDAR
"""


def titles(bridge):
    return sorted(event["title"] for event in bridge.ask("events", **RANGE)["events"])


def everything(bridge):
    events = bridge.ask("events", **RANGE)["events"]
    reminders = bridge.ask("reminders", from_="2000-01-01", to="2100-01-01")["reminders"]
    return events, sorted(reminders, key=lambda reminder: reminder["id"])


@contextlib.contextmanager
def being_asked(bridge):
    """Somebody asks all the time, and every answer has to be one."""
    stop = threading.Event()

    def ask():
        count = 0
        while not stop.is_set():
            bridge.ask("events", **RANGE)
            count += 1
        return count

    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        asking = pool.submit(ask)
        try:
            yield
        finally:
            stop.set()
        assert asking.result(DEADLINE) > 0


class Sync(unittest.TestCase):
    def setUp(self):
        stack = contextlib.ExitStack()
        self.addCleanup(stack.close)
        url = stack.enter_context(caldav_server())
        self.homes = stack.enter_context(homes("one", "two", server_url=url))
        make_calendar(url, "kids", "Kids")
        make_calendar(url, "tasks", "Tasks", component="VTODO")
        for home in self.homes:
            home.set_up()
            (home.calendars / "family/tasks/supported-calendar-component-set").write_text("VTODO\n")
        self.bridges = [stack.enter_context(home.bridge()) for home in self.homes]

    def assert_told(self, bridge):
        self.assertTrue(bridge.wait_for_change(DEADLINE), "no change line")

    def assert_nothing_lost_or_doubled(self):
        one, two = map(everything, self.bridges)
        self.assertEqual(one, two)
        first, second = ([file.relative_to(home.calendars) for file in home.files()] for home in self.homes)
        self.assertEqual(len(first), len(second))

    def test_both_directions(self):
        (home, other_home), (bridge, other) = self.homes, self.bridges
        (home.calendars / "family/kids/swimming.ics").write_text(SERIES)
        with being_asked(bridge), being_asked(other):
            zoo = bridge.ask("create", title="Zoo", start="2026-03-25", isAllDay=True, calendarId="family/kids")["event"]
            bridge.ask("create", title="Café 🦁", start="2026-03-26T09:00:00Z", calendarId="family/kids", notes="a\nb, c; d")
            bridge.ask("reminder-create", title="Boots", dueDate="2026-03-24T08:00:00Z")
            home.sync()
            other_home.sync()
        self.assert_told(other)
        self.assertEqual(titles(other), ["Café 🦁", *["Swimming"] * 5, "Zoo"])
        self.assert_nothing_lost_or_doubled()

        bridge.wait_for_change(0)
        with being_asked(bridge), being_asked(other):
            swimming = [event for event in other.ask("events", **RANGE)["events"] if event["title"] == "Swimming"]
            other.ask("update", eventId=swimming[1]["id"], occurrence=swimming[1]["occurrence"],
                      start="2026-03-10T17:00:00Z", end="2026-03-10T18:00:00Z")
            other.ask("delete", eventId=swimming[2]["id"], occurrence=swimming[2]["occurrence"])
            [boots] = everything(other)[1]
            other.ask("reminder-complete", reminderId=boots["id"])
            other.ask("delete", eventId=zoo["id"])
            other_home.sync()
            home.sync()
        self.assert_told(bridge)
        self.assertEqual(titles(bridge), ["Café 🦁", *["Swimming"] * 4])
        events, [boots] = everything(bridge)
        self.assertIn("2026-03-10T17:00:00Z", [event["start"] for event in events])
        self.assertTrue(boots["isCompleted"])
        self.assert_nothing_lost_or_doubled()

    def test_changes_in_the_midst_of_syncs(self):
        def write(bridge, name):
            for number in range(12):
                made = bridge.ask("create", title=f"{name} {number}", start="2026-03-10T09:00:00Z", calendarId="family/kids")
                bridge.ask("update", eventId=made["event"]["id"], title=f"{name} {number}, changed")

        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            writing = [pool.submit(write, bridge, name) for bridge, name in zip(self.bridges, ("one", "two"))]
            while not all(work.done() for work in writing):
                for home in self.homes:
                    # A sync that meets an item in its change may say so; the next one makes up for it.
                    home.run("vdirsyncer sync || true")
            for work in writing:
                work.result()
        for home in self.homes * 2:
            home.sync()
        expected = sorted(f"{name} {number}, changed" for name in ("one", "two") for number in range(12))
        for bridge in self.bridges:
            self.assertEqual(titles(bridge), expected)
        self.assert_nothing_lost_or_doubled()

    def test_a_conflict_leaves_both(self):
        (home, other_home), (bridge, other) = self.homes, self.bridges
        event = bridge.ask("create", title="Tea", start="2026-03-10T09:00:00Z", calendarId="family/kids")["event"]
        home.sync()
        other_home.sync()
        bridge.ask("update", eventId=event["id"], title="Green tea")
        other.ask("update", eventId=event["id"], title="Black tea")
        home.sync()
        other_home.sync(succeeds=False)
        self.assertEqual((titles(bridge), titles(other)), (["Green tea"], ["Black tea"]))

        config = other_home.path / ".config/vdirsyncer/config"
        config.write_text(config.read_text().replace("[pair family]", '[pair family]\nconflict_resolution = "b wins"'))
        other_home.sync()
        self.assertEqual((titles(bridge), titles(other)), (["Green tea"], ["Green tea"]))


skip_without("vdirsyncer", "radicale")
unittest.main(argv=[sys.argv[0]])

"""Other programs open what the bridge wrote and must see what it meant.

    other_programs_test.py BRIDGE khal|icalendar|todoman

Exits with 77, and says so, when the program is not installed.
"""

import datetime
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zoneinfo

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "transcripts"))
import bridge  # noqa: E402

SKIPPED = 77
# One with DST in the north, one in the south, one of half an hour, one without; khal itself runs in KHAL_ZONE.
ZONES = ("Europe/Berlin", "America/Santiago", "Australia/Lord_Howe", "Asia/Kolkata", "UTC")
KHAL_ZONE = "Asia/Tokyo"

SERIES = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk//EN
BEGIN:VTIMEZONE
TZID:Europe/Berlin
BEGIN:STANDARD
DTSTART:19961027T030000
RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU
TZOFFSETFROM:+0200
TZOFFSETTO:+0100
END:STANDARD
BEGIN:DAYLIGHT
DTSTART:19810329T020000
RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU
TZOFFSETFROM:+0100
TZOFFSETTO:+0200
END:DAYLIGHT
END:VTIMEZONE
BEGIN:VEVENT
UID:standup
DTSTAMP:20250101T000000Z
DTSTART;TZID=Europe/Berlin:20250317T093000
DTEND;TZID=Europe/Berlin:20250317T100000
RRULE:FREQ=WEEKLY;COUNT=5
SUMMARY:Standup
END:VEVENT
END:VCALENDAR
"""
DAYS = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk//EN
BEGIN:VEVENT
UID:bins
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20250503
DTEND;VALUE=DATE:20250504
RRULE:FREQ=DAILY;COUNT=3
SUMMARY:Bins
END:VEVENT
END:VCALENDAR
"""
PLANTS = """BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Example//Desk//EN
BEGIN:VTODO
UID:plants
DTSTAMP:20250101T000000Z
DTSTART;VALUE=DATE:20250601
DUE;VALUE=DATE:20250602
RRULE:FREQ=WEEKLY;COUNT=3
SUMMARY:Plants
END:VTODO
END:VCALENDAR
"""


def midnight(day, zone):
    return datetime.datetime.fromisoformat(day).replace(tzinfo=zoneinfo.ZoneInfo(zone))


def written(instant):
    return instant.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


class WrittenFiles(unittest.TestCase):
    """A home folder in which the bridge has made every kind of change."""

    def write(self, zone):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="acceptance-"))
        self.addCleanup(shutil.rmtree, self.home)
        self.calendars = self.home / "data" / "calendars"
        for path, text in {"work/standup.ics": SERIES, "work/bins.ics": DAYS, "tasks/plants.ics": PLANTS,
                           "work/supported-calendar-component-set": "VEVENT",
                           "tasks/supported-calendar-component-set": "VTODO"}.items():
            (self.calendars / path).parent.mkdir(parents=True, exist_ok=True)
            (self.calendars / path).write_bytes(text.replace("\n", "\r\n").encode())
        requests = [
            {"cmd": "create", "title": "Winter", "start": "2025-01-15T09:00:00Z", "end": "2025-01-15T10:00:00Z"},
            {"cmd": "create", "title": "Summer; a, b", "start": "2031-07-15T09:00:00Z", "end": "2031-07-15T10:00:00Z"},
            {"cmd": "create", "title": "Fair", "isAllDay": True, "start": written(midnight("2025-08-04", zone)),
             "end": written(midnight("2025-08-07", zone))},
            {"cmd": "update", "eventId": "work:standup", "occurrence": "2025-03-31T07:30:00Z", "title": "Late standup",
             "start": "2025-03-31T10:00:00Z", "end": "2025-03-31T10:30:00Z"},
            {"cmd": "delete", "eventId": "work:standup", "occurrence": "2025-04-07T07:30:00Z"},
            {"cmd": "delete", "eventId": "work:bins", "occurrence": written(midnight("2025-05-04", zone))},
            {"cmd": "reminder-complete", "reminderId": "tasks:plants"},
            {"cmd": "reminder-create", "title": "Passport", "dueDate": written(midnight("2025-09-01", zone))},
        ]
        environment = {"TZ": zone, "TIDEMARK_DESKTOP": "1", "XDG_DATA_HOME": str(self.home / "data")}
        with bridge.Bridge([BRIDGE], environment) as served:
            for number, request in enumerate(requests):
                reply = json.loads(served.ask(json.dumps({"id": number, **request})))
                self.assertNotIn("error", reply, request)
            served.finish()

    def run_program(self, *command, zone):
        environment = bridge.clean_environment(str(self.home), TZ=zone, LC_ALL="C.UTF-8")
        done = subprocess.run(command, env=environment, capture_output=True, text=True, timeout=bridge.DEADLINE)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout


class Khal(WrittenFiles):
    def test_lists_each_occurrence_where_it_is(self):
        for zone in ZONES:
            with self.subTest(zone=zone):
                self.write(zone)
                # In Tokyo, nine hours ahead of UTC all the year.
                self.assertEqual(self.listing(), {
                    "2025-01-15 18:00|2025-01-15 19:00|Winter",
                    "2031-07-15 18:00|2031-07-15 19:00|Summer; a, b",
                    "2025-08-04 00:00|2025-08-06 00:00|Fair",
                    "2025-03-17 17:30|2025-03-17 18:00|Standup",
                    "2025-03-24 17:30|2025-03-24 18:00|Standup",
                    "2025-03-31 19:00|2025-03-31 19:30|Late standup",
                    "2025-04-14 16:30|2025-04-14 17:00|Standup",
                    "2025-05-03 00:00|2025-05-03 00:00|Bins",
                    "2025-05-05 00:00|2025-05-05 00:00|Bins",
                })

    def listing(self):
        config = self.home / "khal.conf"
        config.write_text(
            f"[calendars]\n[[work]]\npath = {self.calendars / 'work'}\n"
            f"[sqlite]\npath = {self.home / 'khal.db'}\n"
            f"[locale]\nlocal_timezone = {KHAL_ZONE}\ndefault_timezone = {KHAL_ZONE}\ntimeformat = %H:%M\n"
            "dateformat = %Y-%m-%d\nlongdateformat = %Y-%m-%d\ndatetimeformat = %Y-%m-%d %H:%M\n"
            "longdatetimeformat = %Y-%m-%d %H:%M\n")
        lines = self.run_program(
            "khal", "-c", str(config), "list", "--day-format", "", "--format",
            "{start-long-full}|{end-long-full}|{title}", "2025-01-01", "2032-01-01", zone=KHAL_ZONE)
        # An event of several days is listed on each.
        return {line for line in lines.splitlines() if line}


class Icalendar(WrittenFiles):
    def test_reads_the_instants_by_name_and_by_vtimezone(self):
        for zone in ZONES:
            with self.subTest(zone=zone):
                self.write(zone)
                items = self.listing("work")
                winter, summer = (self.one(items, title) for title in ("Winter", "Summer; a, b"))
                self.expect_at(winter, "DTSTART", "2025-01-15T09:00:00+00:00", zone)
                self.expect_at(winter, "DTEND", "2025-01-15T10:00:00+00:00", zone)
                self.expect_at(summer, "DTSTART", "2031-07-15T09:00:00+00:00", zone)
                fair = self.one(items, "Fair")
                self.assertEqual((fair["DTSTART"], fair["DTEND"]), ("2025-08-04", "2025-08-07"))
                late = self.one(items, "Late standup")
                self.expect_at(late, "RECURRENCE-ID", "2025-03-31T07:30:00+00:00", "Europe/Berlin")
                self.expect_at(late, "DTSTART", "2025-03-31T10:00:00+00:00", "Europe/Berlin")
                self.assertEqual(self.one(items, "Standup")["EXDATE"], ["2025-04-07T07:30:00+00:00"])
                self.assertEqual(self.one(items, "Bins")["EXDATE"], ["2025-05-04"])

    def test_reads_what_was_completed_and_what_follows(self):
        self.write("Europe/Berlin")
        plants = sorted((item for item in self.listing("tasks") if item["SUMMARY"] == "Plants"),
                        key=lambda item: item["DUE"])
        self.assertEqual([item["DUE"] for item in plants], ["2025-06-02", "2025-06-09"])
        self.assertEqual(plants[0]["uid"], "plants")
        self.assertEqual(plants[0]["STATUS"], "COMPLETED")
        self.assertNotIn("RRULE", plants[0])
        self.assertNotEqual(plants[1].get("STATUS"), "COMPLETED")
        self.assertEqual(plants[1]["RRULE"], "FREQ=WEEKLY;COUNT=2")

    def listing(self, collection):
        files = sorted(map(str, (self.calendars / collection).glob("*.ics")))
        items = json.loads(self.run_program(ICALENDAR_PYTHON, str(HERE / "list_with_icalendar.py"), *files, zone="UTC"))
        for item in items:
            self.assertEqual(item["errors"], [])
        return items

    def one(self, items, title):
        found = [item for item in items if item["SUMMARY"] == title]
        self.assertEqual(len(found), 1, title)
        return found[0]

    def expect_at(self, item, name, instant, zone):
        self.assertEqual(item[name], instant)
        if zone != "UTC":
            self.assertEqual(item[name + " by VTIMEZONE"], instant)


class Todoman(WrittenFiles):
    def test_lists_what_is_done_and_what_is_due(self):
        for zone in ZONES:
            with self.subTest(zone=zone):
                self.write(zone)
                # A due date is told as the second in which its local day begins.
                self.assertEqual(self.listing(zone), {
                    (True, midnight("2025-06-02", zone).timestamp(), "Plants"),
                    (False, midnight("2025-06-09", zone).timestamp(), "Plants"),
                    (False, midnight("2025-09-01", zone).timestamp(), "Passport"),
                })

    def listing(self, zone):
        config = self.home / "todoman.py"
        config.write_text(f"path = {str(self.calendars / 'tasks')!r}\ncache_path = {str(self.home / 'todo.db')!r}\n")
        text = self.run_program("todoman", "--config", str(config), "--porcelain", "list", "--status", "ANY", zone=zone)
        return {(todo["completed"], todo["due"], todo["summary"]) for todo in json.loads(text)}


def python_with_icalendar():
    """Debian's package is for Debian's Python, which is not always the one that runs this."""
    for python in (sys.executable, "/usr/bin/python3"):
        if shutil.which(python):
            status = subprocess.run([python, str(HERE / "list_with_icalendar.py")], capture_output=True).returncode
            if status == 0:
                return python
    return None


if __name__ == "__main__":
    BRIDGE = os.path.abspath(sys.argv[1])
    ICALENDAR_PYTHON = python_with_icalendar()
    installed = ICALENDAR_PYTHON if sys.argv[2] == "icalendar" else shutil.which(sys.argv[2])
    if not installed:
        print(f"{sys.argv[2]} is not installed")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1] + [sys.argv[2].capitalize()])

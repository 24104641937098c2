"""Scenarios that the simulator refuses: status 2, one line on standard error, nothing else."""

import subprocess
import unittest

import suite

DATE = "2025-03-03T10:00:00Z"

REFUSED = {
    "not JSON": b"{",
    "no file content": b"",
    "not UTF-8": b'{"sources": [{"title": "\xff"}]}',
    "an array": [],
    "a text": "office",
    "unknown key": {"calender": []},
    "unknown key of a status": {"status": {"event": 3}},
    "unknown key of an access": {"access": {"events": {"grant": True}}},
    "unknown key of a source": {"sources": [{"id": "s", "name": "S"}]},
    "unknown key of a calendar": {"calendars": [{"id": "c", "colour": None}]},
    "unknown key of a color": {"calendars": [{"color": {"space": "sRGB", "values": []}}]},
    "unknown key of an event": {"events": [{"summary": "E"}]},
    "unknown key of an attendee": {"events": [{"attendees": [{"mail": "a@b"}]}]},
    "unknown key of a reminder": {"reminders": [{"dueDate": DATE}]},
    "unknown key of a due date": {"reminders": [{"due": {"hours": 3}}]},
    "unknown key of fail": {"fail": {"save": "No."}},
    "unknown key of fetch": {"fetch": {"overdue": {}}},
    "unknown key of a change": {"changes": [{"after": 1}]},
    "keys with a line feed": {"a\nb\r": 1},
    "unknown source": {"calendars": [{"id": "c", "source": "s"}]},
    "unknown calendar": {"events": [{"calendar": "c"}]},
    "list for a calendar": {"calendars": [{"id": "l", "type": 1}], "events": [{"calendar": "l"}]},
    "unknown list": {"reminders": [{"list": "l"}]},
    "unknown default calendar": {"defaultCalendarForNewEvents": "c"},
    "unknown default list": {"defaultCalendarForNewReminders": "l"},
    "unknown colour space": {"calendars": [{"color": {"space": "cmyk", "components": []}}]},
    "unknown calendar type": {"calendars": [{"type": 2}]},
    "status as a text": {"status": {"events": "denied"}},
    "status with a fraction": {"status": {"events": 2.5}},
    "granted as a number": {"access": {"events": {"granted": 1}}},
    "negative delay": {"access": {"events": {"delayMs": -1}}},
    "delay beyond all time": {"fetch": {"completed": {"delayMs": 10**18}}},
    "events as an object": {"events": {"id": "e"}},
    "event as a text": {"events": ["e"]},
    "title as a number": {"events": [{"title": 5}]},
    "date without a zone": {"events": [{"start": "2025-03-03T10:00:00"}]},
    "date with an offset": {"events": [{"start": "2025-03-03T10:00:00+01:00"}]},
    "date that is a day": {"events": [{"end": "2025-03-03"}]},
    "date that no calendar has": {"events": [{"end": "2025-02-30T10:00:00Z"}]},
    "date as a number": {"reminders": [{"completionDate": 1740996000}]},
    "components as texts": {"calendars": [{"color": {"components": ["1"]}}]},
    "failure as a flag": {"fail": {"saveEvent": True}},
    "number of changes below none": {"changes": [{"count": -1}]},
    "number beyond 64 bits": {"events": [{"availability": 2**64}]},
}

ACCEPTED = {
    "nothing": {},
    "nulls": {
        key: None
        for key in (
            "status access sources calendars defaultCalendarForNewEvents "
            "defaultCalendarForNewReminders events reminders fail fetch changes"
        ).split()
    },
    "empty parts": {
        "status": {}, "access": {"events": {}, "reminders": {}}, "sources": [{}],
        "calendars": [{}], "events": [{}], "reminders": [{}], "fail": {}, "changes": [],
        "fetch": {"incomplete": {}, "completed": {}},
    },
    "blanks around": b" \r\n\t{} \n",
    "dates with fractions": {
        "events": [{"start": "2025-03-03T10:00:00.5Z", "end": "2025-03-03T10:00:00.123456Z"}]
    },
}


def run(*arguments):
    return subprocess.run(
        [suite.PROGRAM, *arguments], input=b'{"cmd":"status"}\n', capture_output=True, timeout=60
    )


class Scenarios(unittest.TestCase):
    def assert_refused(self, result):
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertRegex(result.stderr, rb"\Atidemark-cal-sim: [^\n]+\n\Z")

    def test_refused(self):
        for name, scenario in REFUSED.items():
            content = b'"office"' if scenario == "office" else scenario
            with self.subTest(name), suite.scenario_file(content) as path:
                self.assert_refused(run(path))

    def test_the_place_is_named(self):
        scenario = {"events": [{"id": "a"}, {"id": "b", "calendar": "nowhere"}]}
        with suite.scenario_file(scenario) as path:
            self.assertIn(b": events[1].calendar names no event calendar", run(path).stderr)

    def test_accepted(self):
        for name, scenario in ACCEPTED.items():
            with self.subTest(name), suite.scenario_file(scenario) as path:
                result = run(path)
                self.assertEqual((result.returncode, result.stderr), (0, b""))
                self.assertIn(b'{"status":"fullAccess"}\n', result.stdout)

    def test_files_that_cannot_be_read(self):
        self.assert_refused(run("/nonexistent/scenario.json"))
        self.assert_refused(run("/"))
        self.assert_refused(run(""))

    def test_arguments(self):
        self.assert_refused(run())
        with suite.scenario_file({}) as path:
            self.assert_refused(run(path, path))


if __name__ == "__main__":
    suite.main()

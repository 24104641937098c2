"""Each scenario does what the table in docs/simulator.md says. Usage: scenarios_test.py SIMULATOR"""

import concurrent.futures
import json
import pathlib
import re
import runpy
import shutil
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCENARIOS = ROOT / "examples/scenarios"
sys.path.insert(0, str(ROOT / "examples/python"))
from bridge import Bridge, Refused  # noqa: E402

WEEK = {"from_": "2026-03-23T00:00:00Z", "to": "2026-03-30T00:00:00Z"}


class Scenarios(unittest.TestCase):
    def play(self, name, **options):
        self.lines = []
        trace = lambda direction, line: self.lines.append((direction, json.loads(line)))  # noqa: E731
        bridge = Bridge(sys.argv[1], str(SCENARIOS / f"{name}.json"), trace=trace, environment={"TZ": "UTC"}, **options)
        self.addCleanup(bridge.close)
        return bridge

    def test_table_lists_them_all(self):
        page = (ROOT / "docs/simulator.md").read_text(encoding="utf-8")
        listed = re.findall(r"^\| `(\w+\.json)` \|", page, re.MULTILINE)
        self.assertEqual(sorted(listed), sorted(path.name for path in SCENARIOS.glob("*.json")))

    def test_permission_not_yet_asked(self):
        bridge = self.play("permission_not_yet_asked")
        self.assertEqual(bridge.status, "notDetermined")
        with self.assertRaisesRegex(Refused, "no calendar access: notDetermined"):
            bridge.ask("calendars")
        for command in ("auth", "reminders-auth"):
            answer = bridge.ask(command)
            self.assertEqual((answer["status"], answer["granted"]), ("fullAccess", True))
        self.assertEqual(len(bridge.ask("events", **WEEK)["events"]), 1)

    def test_permission_granted_late(self):
        bridge = self.play("permission_granted_late")
        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            granted = pool.submit(bridge.ask, "auth")
            self.assertEqual(bridge.ask("status")["status"], "notDetermined")
            self.assertFalse(granted.done())
            self.assertTrue(granted.result(30)["granted"])
        self.assertEqual(bridge.ask("status")["status"], "fullAccess")

    def test_permission_that_is_none(self):
        for name, status in [("permission_denied", "denied"), ("permission_write_only", "writeOnly")]:
            bridge = self.play(name)
            for command in ("auth", "reminders-auth"):
                answer = bridge.ask(command)
                self.assertEqual((answer["status"], answer["granted"]), (status, False))
            with self.assertRaisesRegex(Refused, f"no reminders access: {status}"):
                bridge.ask("reminder-lists")

    def test_saves_fail(self):
        bridge = self.play("saves_fail")
        for command, fields, message in [
            ("create", {"start": "2026-03-24T10:00:00Z"}, "The disk is full."),
            ("update", {"eventId": "tea", "title": "Coffee"}, "The disk is full."),
            ("delete", {"eventId": "tea"}, "The server cannot be reached."),
            ("reminder-create", {}, "The disk is full."),
            ("reminder-complete", {"reminderId": "milk"}, "The disk is full."),
            ("reminder-delete", {"reminderId": "milk"}, "The server cannot be reached."),
        ]:
            with self.assertRaisesRegex(Refused, re.escape(message)):
                bridge.ask(command, **fields)
        self.assertEqual([event["title"] for event in bridge.ask("events", **WEEK)["events"]], ["Tea"])

    def test_burst_of_changes(self):
        bridge = self.play("burst_of_changes")
        while sum(line.get("event") == "changed" for _, line in list(self.lines)) < 101:
            self.assertTrue(bridge.wait_for_change(timeout=30))

    def test_slow_reminders(self):
        bridge = self.play("slow_reminders")
        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            answer = pool.submit(bridge.ask, "reminders", **WEEK)
            self.assertEqual(len(bridge.ask("events", **WEEK)["events"]), 1)
            self.assertFalse(answer.done())
            self.assertEqual({reminder["title"] for reminder in answer.result(30)["reminders"]}, {"Milk", "Rent"})

    def test_big_week(self):
        bridge = self.play("big_week")
        events = bridge.ask("events", **WEEK)
        self.assertEqual(len(events["events"]), 700)
        self.assertGreater(len(json.dumps(events)), 65536)
        self.assertEqual(len(bridge.ask("reminders", **WEEK)["reminders"]), 300)

    def test_big_week_is_what_its_script_makes(self):
        with tempfile.TemporaryDirectory() as scratch:
            copy = shutil.copy(SCENARIOS / "make_big_week.py", scratch)
            runpy.run_path(copy)
            self.assertEqual(pathlib.Path(scratch, "big_week.json").read_bytes(), (SCENARIOS / "big_week.json").read_bytes())


unittest.main(argv=[sys.argv[0]])

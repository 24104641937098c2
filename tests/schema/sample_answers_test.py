"""Validates what the bridge says of the sample calendars. Usage: sample_answers_test.py PATH_OF_TIDEMARK_CAL"""

import json
import pathlib
import shutil
import sys
import tempfile
import unittest

from protocol_schema import ROOT, validator

sys.path.insert(0, str(ROOT / "examples/python"))
from bridge import Bridge  # noqa: E402

YEARS = {"from_": "2025-01-01", "to": "2028-01-01"}


class SampleAnswers(unittest.TestCase):
    def test_answers_fit_the_schema(self):
        lines = []
        with tempfile.TemporaryDirectory() as data_home:
            shutil.copytree(ROOT / "examples/calendars", pathlib.Path(data_home) / "calendars")
            environment = {"XDG_DATA_HOME": data_home, "TZ": "Europe/Berlin", "TIDEMARK_DESKTOP": "1"}
            with Bridge(sys.argv[1], environment=environment, trace=lambda *line: lines.append(line)) as bridge:
                answers = {command: bridge.ask(command, **fields) for command, fields in [
                    ("calendars", {}), ("reminder-lists", {}), ("events", YEARS), ("reminders", YEARS),
                    ("create", {"start": "2026-03-24", "isAllDay": True, "url": "https://example.net/a b"}),
                    ("reminder-create", {"dueDate": "2026-03-24T09:00:00Z", "notes": None}),
                    ("status", {}), ("auth", {}),
                ]}
        self.assertGreater(len(answers["events"]["events"]), 500)
        self.assertGreater(len(answers["reminders"]["reminders"]), 5)
        for command, answer in answers.items():
            validator(f"{command}.answer").validate(answer)
        for direction, line in lines:
            validator("request" if direction == ">" else "output").validate(json.loads(line))


unittest.main(argv=[sys.argv[0]])

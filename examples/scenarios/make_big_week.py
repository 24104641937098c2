#!/usr/bin/env python3
"""Writes big_week.json: 700 events in the week of 23 March 2026, notes and all, and 300 reminders."""

import datetime
import json
import pathlib

MONDAY = datetime.datetime(2026, 3, 23, 6)


def event(number):
    start = MONDAY + datetime.timedelta(days=number % 7, minutes=9 * (number // 7))
    return {
        "id": f"event-{number}",
        "title": f"Appointment {number}",
        "calendar": f"room-{number % 20}",
        "start": f"{start:%Y-%m-%dT%H:%M:%SZ}",
        "end": f"{start + datetime.timedelta(minutes=45):%Y-%m-%dT%H:%M:%SZ}",
        "notes": "Agenda to follow. " * (number % 5),
    }


def reminder(number):
    return {"id": f"reminder-{number}", "title": f"Call back {number}", "list": "calls",
            "due": {"year": 2026, "month": 3, "day": 23 + number % 7, "hour": 8 + number % 10}}


def array(items):
    """One item a line, so that a change shows as one."""
    return "[\n    " + ",\n    ".join(json.dumps(item) for item in items) + "\n  ]"


calendars = [{"id": f"room-{number}", "title": f"Room {number}", "source": "office"} for number in range(20)]
calendars.append({"id": "calls", "title": "Calls", "source": "office", "type": 1})
parts = {
    "sources": array([{"id": "office", "title": "Office", "type": 1}]),
    "calendars": array(calendars),
    "defaultCalendarForNewEvents": '"room-0"',
    "defaultCalendarForNewReminders": '"calls"',
    "events": array(event(number) for number in range(700)),
    "reminders": array(reminder(number) for number in range(300)),
}
text = "{\n" + ",\n".join(f'  "{key}": {value}' for key, value in parts.items()) + "\n}\n"
pathlib.Path(__file__).with_name("big_week.json").write_text(text, encoding="utf-8")

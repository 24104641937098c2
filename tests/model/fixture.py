"""What both stores hold before the first command: once as calendar files, once as a scenario of the simulator."""

import contextlib
import datetime
import zoneinfo

UTC = datetime.timezone.utc
SECOND = datetime.timedelta(seconds=1)
HOUR = datetime.timedelta(hours=1)
DAY = datetime.timedelta(days=1)
EVENT_CALENDARS = ("plans", "work")
READ_ONLY_CALENDAR = "archive"
REMINDER_LISTS = ("chores", "shopping")
READ_ONLY_LIST = "locked"
BERLIN = zoneinfo.ZoneInfo("Europe/Berlin")


def midnight(day, zone):
    """The first instant of the local day, also where clocks skip midnight."""
    instant = datetime.datetime.combine(day, datetime.time(), zone).astimezone(UTC)
    return instant.astimezone(zone).astimezone(UTC)


def written(instant):
    return instant.astimezone(UTC).strftime("%Y-%m-%dT%H:%M:%SZ")


def calendar_file(component, uid, *lines):
    text = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//Example//Model//EN", f"BEGIN:{component}", f"UID:{uid}",
            "DTSTAMP:20250101T000000Z", f"SUMMARY:{uid}", *lines, f"END:{component}", "END:VCALENDAR", ""]
    return "\r\n".join(text).encode()


class Fixture:
    """Items are numbered in the order in which they were added. Their names differ between the stores."""

    def __init__(self, zone):
        self.file_names = []
        self.memory_names = []
        self.series = {}  # number: where its occurrences were meant to be
        self.events = {}  # number: the record of an event that does not repeat
        self.reminders = {}
        self._files = {}
        self._scenario_events = []
        self._scenario_reminders = []

        first = datetime.datetime(2025, 3, 3, 9, tzinfo=BERLIN)  # the clocks change on 30 March
        self._add_series("plans", "weekly", [first + n * 7 * DAY for n in range(12)], HOUR,
                         "DTSTART;TZID=Europe/Berlin:20250303T090000", "DTEND;TZID=Europe/Berlin:20250303T100000",
                         "RRULE:FREQ=WEEKLY;COUNT=12")
        first = datetime.datetime(2025, 6, 1, 22, 30, tzinfo=UTC)
        self._add_series("work", "every third", [first + n * 3 * DAY for n in range(10) if n not in (2, 5)], HOUR / 2,
                         "DTSTART:20250601T223000Z", "DURATION:PT30M",
                         "RRULE:FREQ=DAILY;INTERVAL=3;UNTIL=20250629T000000Z",
                         "EXDATE:20250607T223000Z,20250616T223000Z")
        days = [datetime.date(2025, 4, 22), datetime.date(2025, 4, 25), datetime.date(2025, 10, 23)]
        self._add_days("work", "given days", days, zone,
                       "DTSTART;VALUE=DATE:20250422", "RDATE;VALUE=DATE:20250425,20251023")
        self._add_days("plans", "monthly days", [datetime.date(2025, month, 28) for month in range(1, 13)], zone,
                       "DTSTART;VALUE=DATE:20250128", "DTEND;VALUE=DATE:20250129", "RRULE:FREQ=MONTHLY;COUNT=12")
        first = datetime.datetime(2025, 2, 1, 8, tzinfo=UTC)
        self._add_series(READ_ONLY_CALENDAR, "kept series", [first + n * 30 * DAY for n in range(4)], HOUR,
                         "DTSTART:20250201T080000Z", "DTEND:20250201T090000Z", "RRULE:FREQ=DAILY;INTERVAL=30;COUNT=4")
        self._add_kept_event()
        self._add_kept_reminder()

    def _add(self, component, collection, uid, lines):
        self._files[f"{collection}/{uid}.ics"] = calendar_file(component, uid, *lines)
        self.file_names.append(f"{collection}:{uid}")
        self.memory_names.append(uid)
        return len(self.file_names) - 1

    def _add_series(self, calendar, uid, starts, length, *lines):
        self.series[self._add("VEVENT", calendar, uid, lines)] = [start.astimezone(UTC) for start in starts]
        for start in starts:
            end = start.astimezone(UTC) + length
            self._scenario_events.append({"id": uid, "title": uid, "calendar": calendar, "recurring": True,
                                          "start": written(start), "end": written(end), "occurrence": written(start)})

    def _add_days(self, calendar, uid, days, zone, *lines):
        starts = [midnight(day, zone) for day in days]
        self.series[self._add("VEVENT", calendar, uid, lines)] = starts
        for day, start in zip(days, starts):
            self._scenario_events.append({"id": uid, "title": uid, "calendar": calendar, "recurring": True,
                                          "isAllDay": True, "start": written(start), "occurrence": written(start),
                                          "end": written(midnight(day + DAY, zone) - SECOND)})

    def _add_kept_event(self):
        number = self._add("VEVENT", READ_ONLY_CALENDAR, "kept", [
            "DTSTART:20250505T100000Z", "DTEND:20250505T110000Z", "LOCATION:Room 4\\, left",
            "ATTENDEE;CN=Mira:mailto:mira@example.net"])
        start = "2025-05-05T10:00:00Z"
        self.events[number] = {"start": start, "end": "2025-05-05T11:00:00Z", "first": start, "isAllDay": False}
        self._scenario_events.append({
            "id": "kept", "title": "kept", "calendar": READ_ONLY_CALENDAR, "start": start, "occurrence": start,
            "end": "2025-05-05T11:00:00Z", "location": "Room 4, left",
            "attendees": [{"name": "Mira", "url": "mailto:mira@example.net"}]})

    def _add_kept_reminder(self):
        number = self._add("VTODO", READ_ONLY_LIST, "owed", ["DUE;VALUE=DATE:20250506", "PRIORITY:1"])
        self.reminders[number] = {}
        self._scenario_reminders.append({"id": "owed", "title": "owed", "list": READ_ONLY_LIST, "priority": 1,
                                         "due": {"year": 2025, "month": 5, "day": 6}})

    @contextlib.contextmanager
    def written_to(self, root):
        for component, names in (("VEVENT", (*EVENT_CALENDARS, READ_ONLY_CALENDAR)),
                                 ("VTODO", (*REMINDER_LISTS, READ_ONLY_LIST))):
            for name in names:
                (root / name).mkdir(parents=True)
                (root / name / "supported-calendar-component-set").write_text(component)
        for path, text in self._files.items():
            (root / path).write_bytes(text)
        for name in (READ_ONLY_CALENDAR, READ_ONLY_LIST):
            (root / name).chmod(0o555)
        try:
            yield
        finally:
            for name in (READ_ONLY_CALENDAR, READ_ONLY_LIST):
                (root / name).chmod(0o755)

    def scenario(self):
        kinds = ((*EVENT_CALENDARS, READ_ONLY_CALENDAR), (*REMINDER_LISTS, READ_ONLY_LIST))
        return {
            "sources": [{"id": "local", "title": "On This Computer"}],
            "calendars": [
                {"id": name, "title": name, "source": "local", "type": kind,
                 "writable": name not in (READ_ONLY_CALENDAR, READ_ONLY_LIST)}
                for kind, names in enumerate(kinds) for name in names
            ],
            "defaultCalendarForNewEvents": EVENT_CALENDARS[0],
            "defaultCalendarForNewReminders": REMINDER_LISTS[0],
            "events": self._scenario_events,
            "reminders": self._scenario_reminders,
        }

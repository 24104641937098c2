"""Sends the same random commands to the bridge over files and to the simulator; the answers must agree.

    stores_agree_test.py BRIDGE SIMULATOR CALENDAR_COMPLAINTS [--zone ZONE] [--seed SEED] [--steps STEPS]

Between any two commands the bridge over files may be started anew: what it answers must be in the
files. Identifiers are compared by the order in which the items were made. Left out of the comparison:
lastModified (two clocks) and the occurrence of what does not repeat, which each store must answer by its own rule, see
check_own(). All-day events are given whole days, local midnight to 23:59:59, which both stores answer unchanged.

Some items are there from the start (see fixture.py), in files and in the scenario: series, whose occurrences move less
than the distance to the next one, since the first of a series is the earliest in files and the first named in memory;
and a calendar and a list that are read-only. After every command libical reads the files that it changed.
"""

import argparse
import datetime
import json
import os
import pathlib
import random
import sys
import tempfile
import zoneinfo

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(TESTS / "transcripts"), str(TESTS / "support")]
import bridge  # noqa: E402
import written_files  # noqa: E402
from fixture import (  # noqa: E402
    DAY, EVENT_CALENDARS, HOUR, READ_ONLY_CALENDAR, READ_ONLY_LIST, REMINDER_LISTS, SECOND, UTC, Fixture, midnight, written)

FIRST_DAY = datetime.date(2025, 1, 1)
TITLES = ["", "Tea", "a, b; c\\n \\ d", "two\nlines", "Zürich 🎻", "long " * 40, "e\u0301te", ' "quoted": x']
URLS = ["https://example.net/a?b=c#d", "mailto:a@example.net", "", "no url", "relative/path"]
WRONG = [None, 5, [], {}, True]


def read(text):
    return datetime.datetime.strptime(text, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=UTC)


class Side:
    """One program, and what it calls the items: names[n] is the n-th item that was made."""

    def __init__(self, start, names, fixture):
        self._start = start
        self._process = start()
        self._expect_ready()
        self.names = list(names)
        self._series = fixture.series
        self.occurrences = {number: event["first"] for number, event in fixture.events.items()}

    def _expect_ready(self):
        assert bridge.parse_output(self._process.read_line())["event"] == "ready"

    def restart(self):
        self.close()
        self._process = self._start()
        self._expect_ready()

    def close(self):
        try:
            self._process.finish()
        finally:
            self._process.__exit__()

    def ask(self, step):
        request = dict(step)
        for key in ("eventId", "reminderId"):
            if type(request.get(key)) is int:
                request[key] = self.names[request[key]]
        if isinstance(request.get("occurrence"), datetime.timedelta):
            own = read(self.occurrences[step["eventId"]])
            request["occurrence"] = written(own + request["occurrence"])
        self._process.send(json.dumps(request))
        while True:  # a reply may hold an event; a notice holds its name
            line = self._process.read_line()
            assert line is not None, f"the output ended before the reply to {request}"
            if not line.startswith(b'{"event":"'):
                return bridge.parse_output(line)

    def learn(self, step, record):
        """Takes the identifier of a saved item over; moving an item may rename it."""
        item = step.get("eventId", step.get("reminderId"))
        if item is None:
            item = len(self.names)
            self.names.append(record["id"])
        self.names[item] = record["id"]
        if "occurrence" in record:
            self.occurrences[item] = record["occurrence"]
        return item

    def neutral(self, reply):
        """The reply without what the two may answer differently."""
        numbers = {name: number for number, name in enumerate(self.names)}

        def record(value):
            item = numbers.get(value["id"], value["id"])
            hidden = ("lastModified",) if item in self._series else ("lastModified", "occurrence")
            value = {k: v for k, v in value.items() if k not in hidden}
            value["id"] = item
            # Files know four kinds.
            if value.get("availability", "0") not in ("0", "1", "2", "3"):
                value["availability"] = "0"
            return value

        reply = dict(reply)
        for key in ("event", "reminder"):
            if key in reply:
                reply[key] = record(reply[key])
        for key in ("events", "reminders"):
            if key in reply:
                if key == "events":
                    starts = [event["start"] for event in reply[key]]
                    assert starts == sorted(starts), f"not by start: {starts}"
                records = map(record, reply[key])
                reply[key] = sorted(records, key=lambda item: (str(item["id"]), item.get("occurrence")))
        error = reply.get("error", "")
        if error.partition(": ")[2] in numbers:
            before, _, name = error.partition(": ")
            reply["error"] = f"{before}: {numbers[name]}"
        return reply


class Commands:
    """Random requests; items are numbers, an occurrence is an offset from the item's own."""

    def __init__(self, seed, zone, fixture):
        self.random = random.Random(seed)
        self.zone = zoneinfo.ZoneInfo(zone)
        self.series = fixture.series  # number: its occurrences
        self.events = dict(fixture.events)  # number: the record as last answered
        self.reminders = dict(fixture.reminders)
        self.items = len(fixture.file_names)

    def chance(self, probability):
        return self.random.random() < probability

    def instant(self):
        known = [read(event[key]) for event in self.events.values() for key in ("start", "end")]
        if known and self.chance(0.4):
            return self.random.choice(known) + self.random.choice([-1, 0, 0, 1]) * SECOND
        start = datetime.datetime.combine(FIRST_DAY, datetime.time(), UTC)
        return start + self.random.randrange(365 * 24 * 4) * datetime.timedelta(minutes=15)

    def said(self, instant):
        """One of the ways to write it."""
        if self.chance(0.6):
            return written(instant)
        zone = datetime.timezone(self.random.choice([-12, -3.5, 0, 2, 5.75, 14]) * HOUR)
        local = instant.astimezone(zone)
        if local.microsecond:
            return local.isoformat(timespec="milliseconds")
        return local.isoformat(timespec=self.random.choice(["seconds", "milliseconds"]))

    def whole_days(self, first=None):
        first = first or FIRST_DAY + self.random.randrange(365) * DAY
        end = midnight(first + self.random.randint(1, 3) * DAY, self.zone) - SECOND
        return self.said(midnight(first, self.zone)), self.said(end)

    def range(self):
        start = self.instant() + self.random.choice([0, 0, 0.25, 0.999]) * SECOND
        lengths = [-DAY, 0 * DAY, SECOND, SECOND / 4, DAY, 7 * DAY, 60 * DAY, 4000 * DAY]
        return {"from": self.said(start), "to": self.said(start + self.random.choice(lengths))}

    def event_fields(self, item=None, occurrence=None):
        values = {
            "title": TITLES, "notes": TITLES, "location": TITLES, "url": URLS,
            "availability": [0, 1, 2, 3, 2.0, 1.5, "busy", True, 4, -1, 2**40],
            "calendarId": [*EVENT_CALENDARS, *EVENT_CALENDARS, "nowhere", REMINDER_LISTS[0], READ_ONLY_CALENDAR],
        }
        if item in self.series:
            del values["calendarId"]  # one occurrence alone cannot move
        fields = {}
        for key, choices in values.items():
            if self.chance(0.3):
                wrong = WRONG[:4] if key != "availability" else [None, [], {}]
                fields[key] = self.random.choice(wrong if self.chance(0.1) else choices)
        if item in self.series:
            if occurrence and self.chance(0.6):
                fields.update(self.occurrence_times(occurrence))
            return fields
        all_day = self.events.get(item, {}).get("isAllDay", False)
        if self.chance(0.6) or item is None:
            all_day = self.chance(0.3)
            fields["isAllDay"] = self.random.choice([True, 1] if all_day else [False, 0])
            if all_day:
                fields["start"], fields["end"] = self.whole_days()
            else:
                start = self.instant()
                fields["start"] = self.said(start)
                length = self.random.choice([-1, 0, 60, 1800, 7200, 86400, 300000])
                fields["end"] = self.said(start + length * SECOND)
        elif self.chance(0.3):
            fields["isAllDay"] = self.random.choice(["yes", 2, 1.5, None])
        elif not all_day and self.chance(0.5):
            fields[self.random.choice(["start", "end"])] = self.random.choice([self.said(self.instant()), "soon", 5])
        return fields

    def occurrence_times(self, occurrence):
        """Near where it was meant to be."""
        if self.chance(0.3):
            start, end = self.whole_days(occurrence.astimezone(self.zone).date())
            return {"isAllDay": True, "start": start, "end": end}
        start = occurrence + self.random.randrange(-20, 21) * HOUR / 2
        end = start + self.random.choice([0, 0.5, 2, 30]) * HOUR
        return {"isAllDay": False, "start": self.said(start), "end": self.said(end)}

    def reminder_fields(self):
        values = {
            "title": [*TITLES, 5], "notes": [*TITLES, None],
            "listId": [*REMINDER_LISTS, *REMINDER_LISTS, "nowhere", 5, READ_ONLY_LIST],
            "dueDate": [
                self.said(self.instant()), self.said(self.instant() + 0.75 * SECOND), "2025-03-30", "soon", None],
            "hasDueTime": [True, False, "no"], "completed": [True, False, "yes"],
        }
        return {key: self.random.choice(choices) for key, choices in values.items() if self.chance(0.4)}

    def any_item(self, known):
        if self.chance(0.1) or not known:
            choices = ["nobody", 5.5, None] + list(range(self.items))
            return self.random.choice(choices)
        return self.random.choice(list(known))

    def event_named(self):
        if self.chance(0.3):
            item = self.random.choice(list(self.series))
            if self.chance(0.1):
                return {"eventId": item}, None  # the first that is left
            occurrence = self.random.choice(self.series[item])
            near = self.random.choice([0 * SECOND, 0 * SECOND, 0 * SECOND, 0.5 * SECOND, SECOND, -2 * DAY])
            return {"eventId": item, "occurrence": self.said(occurrence + near)}, occurrence
        item = self.any_item(self.events)
        named = {"eventId": item}
        if item in self.events and type(item) is int:
            event = self.events[item]
            near = abs(read(event["start"]) - read(event["first"])) < DAY / 2
            if near and self.chance(0.4):
                named["occurrence"] = self.random.choice([0 * DAY, 0 * DAY, SECOND, -2 * DAY])
            elif self.chance(0.1):
                named["occurrence"] = "soon"
        return named, None

    def next(self):
        cmd = self.random.choices(
            ["create", "update", "delete", "events", "reminder-create", "reminder-update", "reminder-complete",
             "reminder-delete", "reminders", "calendars", "reminder-lists", "restart"],
            # So that about forty of each are there after a while.
            [5, 8, len(self.events) / 8, 5, 4, 6, 3, len(self.reminders) / 10, 5, 0.3, 0.3, 0.5])[0]
        step = {"cmd": cmd}
        if cmd == "create":
            step.update(self.event_fields())
        elif cmd == "update":
            named, occurrence = self.event_named()
            item = named["eventId"] if type(named["eventId"]) is int else None
            step.update(self.event_fields(item, occurrence))
            step.update(named)
        elif cmd == "delete":
            step.update(self.event_named()[0])
        elif cmd.startswith("reminder-") and cmd != "reminder-lists":
            if cmd != "reminder-create":
                step["reminderId"] = self.any_item(self.reminders)
            if cmd in ("reminder-create", "reminder-update"):
                step.update(self.reminder_fields())
            if cmd == "reminder-complete" and self.chance(0.6):
                step["completed"] = self.random.choice([True, False, "no"])
        elif cmd in ("events", "reminders"):
            step.update(self.range())
            key, names = ("calendars", EVENT_CALENDARS) if cmd == "events" else ("lists", REMINDER_LISTS)
            if self.chance(0.4):
                step[key] = self.random.choice([[], [names[0]], [names[1], "nowhere"], names[0], [names[0], 5]])
            if cmd == "reminders" and self.chance(0.5):
                step["overdue"] = self.random.choice([True, False, "yes"])
        return step

    def learn(self, step, item, reply):
        """Takes over what the simulator answered."""
        if type(item) is int and item in self.series:
            return
        if "event" in reply:
            first = reply["event"]["occurrence"]
            self.events[item] = {**reply["event"], "first": first}
        elif "reminder" in reply:
            self.reminders[item] = reply["reminder"]
        elif "ok" in reply:
            (self.events if step["cmd"] == "delete" else self.reminders).pop(item)
        if type(item) is int:
            self.items = max(self.items, item + 1)


def check_own(step, ours, simulated, commands, item):
    """Where an event was first saved is its occurrence in memory; in files it is where it starts."""
    if item in commands.series:
        return
    assert ours["occurrence"] == ours["start"], f"occurrence of {ours}"
    first = commands.events[item]["first"] if item in commands.events else simulated["start"]
    assert simulated["occurrence"] == first, f"occurrence of {simulated}"


def play(programs, zone, seed, steps):
    # In memory where there is such a folder: the answers are compared, and syncing a disk takes most of the time.
    memory_disk = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="tidemark-model-", dir=memory_disk) as folder:
        folder = pathlib.Path(folder)
        fixture = Fixture(zoneinfo.ZoneInfo(zone))
        file = folder / "scenario.json"
        file.write_text(json.dumps(fixture.scenario()))
        environment = {"TZ": zone, "TIDEMARK_DESKTOP": "1", "XDG_DATA_HOME": str(folder)}
        root = folder / "calendars"
        with fixture.written_to(root), written_files.Reader(programs[2]) as reader:
            return compare(
                Side(lambda: bridge.Bridge([programs[0]], environment), fixture.file_names, fixture),
                Side(lambda: bridge.Bridge([programs[1], str(file)], environment), fixture.memory_names, fixture),
                Commands(seed, zone, fixture), lambda: reader.complaints(root), seed, steps)


def compare(files, memory, commands, complaints, seed, steps):
    for number in range(steps):
        step = commands.next()
        if step["cmd"] == "restart":
            files.restart()
            continue
        ours, simulated = files.ask(step), memory.ask(step)
        try:
            record = simulated.get("event", simulated.get("reminder"))
            item = step.get("eventId", step.get("reminderId"))
            if record and ours.keys() == simulated.keys():
                files.learn(step, ours.get("event", ours.get("reminder")))
                item = memory.learn(step, record)
            if files.neutral(ours) != memory.neutral(simulated):
                raise AssertionError("the answers differ")
            assert not complaints(), "libical cannot read what was written"
            if "event" in ours:
                check_own(step, ours["event"], simulated["event"], commands, item)
        except AssertionError as error:
            print(f"zone {commands.zone}, seed {seed}, step {number}: {error}\nrequest {step}\n"
                  f"files   {files.neutral(ours)}\nmemory  {memory.neutral(simulated)}\n"
                  f"before  {commands.events.get(item, commands.reminders.get(item))}")
            return False
        commands.learn(step, item, simulated)
    files.close()
    memory.close()
    return True


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs", nargs=3)
    parser.add_argument("--zone", default="Europe/Berlin")
    parser.add_argument("--seed", type=int, action="append")
    parser.add_argument("--steps", type=int, default=2000)
    options = parser.parse_args()
    programs = [os.path.abspath(program) for program in options.programs]
    seeds = options.seed or [1, 2, random.SystemRandom().randrange(10**6)]
    print(f"zone {options.zone}, seeds {seeds}, {options.steps} steps each", flush=True)
    return 0 if all([play(programs, options.zone, seed, options.steps) for seed in seeds]) else 1


if __name__ == "__main__":
    sys.exit(main())

"""Sends the same random commands to the bridge over files and to the simulator; the answers must agree.

    stores_agree_test.py BRIDGE SIMULATOR [--zone ZONE] [--seed SEED] [--steps STEPS]

Between any two commands the bridge over files may be started anew: what it answers must be in the
files. Identifiers are compared by the order in which the items were made. Left out of the comparison:
lastModified (two clocks) and occurrence, which each store must answer by its own rule, see check_own().
All-day events are given whole days, local midnight to 23:59:59, which both stores answer unchanged.
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

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "transcripts"))
import bridge  # noqa: E402

UTC = datetime.timezone.utc
SECOND = datetime.timedelta(seconds=1)
DAY = datetime.timedelta(days=1)
FIRST_DAY = datetime.date(2025, 1, 1)
EVENT_CALENDARS = ("plans", "work")
REMINDER_LISTS = ("chores", "shopping")
TITLES = ["", "Tea", "a, b; c\\n \\ d", "two\nlines", "Zürich 🎻", "long " * 40, "e\u0301te", ' "quoted": x']
URLS = ["https://example.net/a?b=c#d", "mailto:a@example.net", "", "no url", "relative/path"]
WRONG = [None, 5, [], {}, True]


def written(instant):
    return instant.astimezone(UTC).strftime("%Y-%m-%dT%H:%M:%SZ")


def read(text):
    return datetime.datetime.strptime(text, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=UTC)


class Side:
    """One program, and what it calls the items: names[n] is the n-th item that was made."""

    def __init__(self, start):
        self._start = start
        self._process = start()
        self._expect_ready()
        self.names = []
        self.occurrences = {}

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
            value = {k: v for k, v in value.items() if k not in ("lastModified", "occurrence")}
            value["id"] = numbers.get(value["id"], value["id"])
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
                reply[key] = sorted(map(record, reply[key]), key=lambda item: str(item["id"]))
        error = reply.get("error", "")
        if error.partition(": ")[2] in numbers:
            before, _, name = error.partition(": ")
            reply["error"] = f"{before}: {numbers[name]}"
        return reply


class Commands:
    """Random requests; items are numbers, an occurrence is an offset from the item's own."""

    def __init__(self, seed, zone):
        self.random = random.Random(seed)
        self.zone = zoneinfo.ZoneInfo(zone)
        self.events = {}  # number: the record as last answered
        self.reminders = {}
        self.items = 0

    def chance(self, probability):
        return self.random.random() < probability

    def instant(self):
        known = [read(event[key]) for event in self.events.values() for key in ("start", "end")]
        if known and self.chance(0.4):
            return self.random.choice(known) + self.random.choice([-1, 0, 0, 1]) * SECOND
        start = datetime.datetime.combine(FIRST_DAY, datetime.time(), UTC)
        return start + self.random.randrange(365 * 24 * 4) * datetime.timedelta(minutes=15)

    def midnight(self, day):
        """The first instant of the local day, also where clocks skip midnight."""
        instant = datetime.datetime.combine(day, datetime.time(), self.zone).astimezone(UTC)
        return instant.astimezone(self.zone).astimezone(UTC)

    def whole_days(self):
        first = FIRST_DAY + self.random.randrange(365) * DAY
        end = self.midnight(first + self.random.randint(1, 3) * DAY) - SECOND
        return written(self.midnight(first)), written(end)

    def range(self):
        start = self.instant()
        lengths = [-DAY, 0 * DAY, SECOND, DAY, 7 * DAY, 60 * DAY, 4000 * DAY]
        return {"from": written(start), "to": written(start + self.random.choice(lengths))}

    def event_fields(self, item=None):
        values = {
            "title": TITLES, "notes": TITLES, "location": TITLES, "url": URLS,
            "availability": [0, 1, 2, 3, 2.0, 1.5, "busy"],
            "calendarId": [*EVENT_CALENDARS, *EVENT_CALENDARS, "nowhere", REMINDER_LISTS[0]],
        }
        fields = {}
        for key, choices in values.items():
            if self.chance(0.3):
                wrong = WRONG[:4] if key != "availability" else [None, [], {}]
                fields[key] = self.random.choice(wrong if self.chance(0.1) else choices)
        all_day = self.events.get(item, {}).get("isAllDay", False)
        if self.chance(0.6) or item is None:
            all_day = self.chance(0.3)
            fields["isAllDay"] = self.random.choice([True, 1] if all_day else [False, 0])
            if all_day:
                fields["start"], fields["end"] = self.whole_days()
            else:
                start = self.instant()
                fields["start"] = written(start)
                length = self.random.choice([-1, 0, 60, 1800, 7200, 86400, 300000])
                fields["end"] = written(start + length * SECOND)
        elif self.chance(0.3):
            fields["isAllDay"] = self.random.choice(["yes", 2, 1.5, None])
        elif not all_day and self.chance(0.5):
            fields[self.random.choice(["start", "end"])] = self.random.choice([written(self.instant()), "soon", 5])
        return fields

    def reminder_fields(self):
        values = {
            "title": [*TITLES, 5], "notes": [*TITLES, None],
            "listId": [*REMINDER_LISTS, *REMINDER_LISTS, "nowhere", 5],
            "dueDate": [written(self.instant()), written(self.instant()), "2025-03-30", "soon", None],
            "hasDueTime": [True, False, "no"], "completed": [True, False, "yes"],
        }
        return {key: self.random.choice(choices) for key, choices in values.items() if self.chance(0.4)}

    def any_item(self, known):
        if self.chance(0.1) or not known:
            choices = ["nobody", 5.5, None] + list(range(self.items))
            return self.random.choice(choices)
        return self.random.choice(list(known))

    def event_named(self):
        item = self.any_item(self.events)
        named = {"eventId": item}
        if item in self.events and type(item) is int:
            event = self.events[item]
            near = abs(read(event["start"]) - read(event["first"])) < DAY / 2
            if near and self.chance(0.4):
                named["occurrence"] = self.random.choice([0 * DAY, 0 * DAY, SECOND, -2 * DAY])
            elif self.chance(0.1):
                named["occurrence"] = "soon"
        return named

    def next(self):
        cmd = self.random.choices(
            ["create", "update", "delete", "events", "reminder-create", "reminder-update", "reminder-complete",
             "reminder-delete", "reminders", "calendars", "reminder-lists", "restart"],
            [5, 8, 2, 5, 4, 6, 3, 1, 5, 0.3, 0.3, 0.5])[0]
        step = {"cmd": cmd}
        if cmd == "create":
            step.update(self.event_fields())
        elif cmd == "update":
            step.update(self.event_named())
            step.update(self.event_fields(step["eventId"] if type(step["eventId"]) is int else None))
        elif cmd == "delete":
            step.update(self.event_named())
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
    assert ours["occurrence"] == ours["start"], f"occurrence of {ours}"
    first = commands.events[item]["first"] if item in commands.events else simulated["start"]
    assert simulated["occurrence"] == first, f"occurrence of {simulated}"


def scenario():
    local = "On This Computer"
    return {
        "sources": [{"id": "local", "title": local}],
        "calendars": [
            {"id": name, "title": name, "source": "local", "type": kind}
            for kind, names in enumerate((EVENT_CALENDARS, REMINDER_LISTS)) for name in names
        ],
        "defaultCalendarForNewEvents": EVENT_CALENDARS[0],
        "defaultCalendarForNewReminders": REMINDER_LISTS[0],
    }


def play(programs, zone, seed, steps):
    with tempfile.TemporaryDirectory(prefix="tidemark-model-") as folder:
        for component, names in (("VEVENT", EVENT_CALENDARS), ("VTODO", REMINDER_LISTS)):
            for name in names:
                path = pathlib.Path(folder, "calendars", name)
                path.mkdir(parents=True)
                (path / "supported-calendar-component-set").write_text(component)
        file = pathlib.Path(folder, "scenario.json")
        file.write_text(json.dumps(scenario()))
        environment = {"TZ": zone, "TIDEMARK_DESKTOP": "1", "XDG_DATA_HOME": folder}
        files = Side(lambda: bridge.Bridge([programs[0]], environment))
        memory = Side(lambda: bridge.Bridge([programs[1], str(file)], environment))
        commands = Commands(seed, zone)
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
                if "event" in ours:
                    check_own(step, ours["event"], simulated["event"], commands, item)
            except AssertionError as error:
                print(f"zone {zone}, seed {seed}, step {number}: {error}\nrequest {step}\n"
                      f"files   {files.neutral(ours)}\nmemory  {memory.neutral(simulated)}\n"
                      f"before  {commands.events.get(item, commands.reminders.get(item))}")
                return False
            commands.learn(step, item, simulated)
        files.close()
        memory.close()
    return True


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("programs", nargs=2)
    parser.add_argument("--zone", default="Europe/Berlin")
    parser.add_argument("--seed", type=int, action="append")
    parser.add_argument("--steps", type=int, default=500)
    options = parser.parse_args()
    programs = [os.path.abspath(program) for program in options.programs]
    seeds = options.seed or [1, 2, random.SystemRandom().randrange(10**6)]
    print(f"zone {options.zone}, seeds {seeds}, {options.steps} steps each", flush=True)
    return 0 if all([play(programs, options.zone, seed, options.steps) for seed in seeds]) else 1


if __name__ == "__main__":
    sys.exit(main())

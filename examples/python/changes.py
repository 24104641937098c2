#!/usr/bin/env python3
"""Creates an event, moves one occurrence of a series and deletes one, and shows what each did to the files.

An example of a host that writes. It works on a scratch copy of examples/calendars, so your own calendars are not touched.
"""

import argparse
import difflib

from bridge import Bridge
from samples import default_bridge, paint, sample_calendars


def texts(calendars):
    """The lines of every calendar file, by its path below the root."""
    return {f"{path.relative_to(calendars)}": path.read_text(encoding="utf-8").splitlines()
            for path in sorted(calendars.rglob("*.ics"))}


def print_difference(before, after):
    for path in sorted(before.keys() | after.keys()):
        old_name, new_name = (path if path in files else "(no file)" for files in (before, after))
        for line in difflib.unified_diff(
                before.get(path, []), after.get(path, []), old_name, new_name, n=1, lineterm=""):
            color = {"+": "#2E7D32", "-": "#C62828"}.get(line[0])
            print("  " + paint(line, color, dim=line.startswith(("---", "+++", "@@"))))


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--bridge", default=default_bridge())
    program = arguments.parse_args().bridge
    requests = []

    def trace(direction, line):
        if direction == ">":
            requests.append(line.decode())

    with sample_calendars() as calendars, Bridge(program, trace=trace) as bridge:

        def change(heading, command, **fields):
            before = texts(calendars)
            bridge.ask(command, **fields)
            # The answer comes when the change is on disk: there is nothing to wait for.
            print(f"{heading}\n\n  > {requests[-1]}\n")
            print_difference(before, texts(calendars))
            print()

        week = bridge.ask("events", from_="2026-03-23", to="2026-03-30")["events"]
        swimming = next(event for event in week if event["title"] == "Swimming lesson")
        choir = next(event for event in week if event["title"] == "Choir rehearsal")

        change("A new event is a new file", "create", title="Lunch with Inês", calendarId="home",
               start="2026-03-24T12:00:00+01:00", end="2026-03-24T13:00:00+01:00")
        # The id names the series, "occurrence" one of it.
        change("One swimming lesson is an hour later; the series stays as it was", "update",
               eventId=swimming["id"], occurrence=swimming["occurrence"],
               start="2026-03-25T16:30:00+01:00", end="2026-03-25T17:15:00+01:00")
        change("One choir rehearsal is cancelled", "delete", eventId=choir["id"], occurrence=choir["occurrence"])


main()

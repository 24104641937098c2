#!/usr/bin/env python3
"""Prints one week of the sample calendars, then the lines that went over the pipe to get it.

An example of a host that reads; bridge.py is its client. It works on a scratch copy of examples/calendars, so your own
calendars are neither shown nor touched.
"""

import argparse
import datetime
import shutil
import unicodedata

from bridge import Bridge
from samples import default_bridge, paint, sample_calendars

MONDAY = datetime.date(2026, 3, 23)  # one week, so that the page is the same every day: that in which Europe's clocks change
WEEK = datetime.timedelta(days=7)


def fit(text, width):
    """Cuts a line to the terminal's width, counting wide characters as the two columns that they take."""
    columns = 0
    for position, character in enumerate(text):
        columns += 2 if unicodedata.east_asian_width(character) in "WF" else 1
        if columns > width or (columns == width and position + 1 < len(text)):
            return text[:position] + "…"
    return text


def local(text):
    return datetime.datetime.strptime(text, "%Y-%m-%dT%H:%M:%S%z").astimezone()


def weekly_slot(event):
    """What stays the same from week to week in a repeating event: where its occurrence was meant to be."""
    meant = local(event["occurrence"])
    return event["id"], meant.weekday(), meant.time()


def event_rows(event):
    """(day, order within the day, text) for each day that shows the event."""
    start, end = local(event["start"]), local(event["end"])
    marks = []
    if event["isRecurring"]:
        marks.append("↻")
    if event["occurrence"] != event["start"]:
        marks.append(f"moved from {local(event['occurrence']):%a %H:%M}")
    if event["availability"] in (2, 3):
        marks.append({2: "tentative", 3: "away"}[event["availability"]])
    if event.get("attendees"):
        marks.append("with " + ", ".join(event["attendees"]))
    title = paint("● ", event.get("color")) + event["title"]
    tail = paint("  " + " · ".join([event["calendar"], *marks]), dim=True)
    if not event["isAllDay"]:
        until = f"{end:%H:%M}" if end.date() == start.date() else f"{end:%a %H:%M}"
        yield start.date(), start.time(), f"{f'{start:%H:%M}–{until}':16}{title}{tail}"
        return
    days = (end.date() - start.date()).days + 1
    for day in range(days):
        part = f"all day {day + 1}/{days}" if days > 1 else "all day"
        yield start.date() + datetime.timedelta(days=day), datetime.time.min, f"{part:16}{title}{tail}"


def missing_rows(events):
    """Repeating events that were there a week earlier and are there a week later, but not in this week."""
    slots = {-1: {}, 0: {}, 1: {}}
    for event in events:
        if event["isRecurring"]:
            week = (local(event["occurrence"]).date() - MONDAY).days // 7
            slots.get(week, {})[weekly_slot(event)] = event
    for slot in slots[-1].keys() & slots[1].keys() - slots[0].keys():
        text = f"{f'{slot[2]:%H:%M}':16}○ {slots[1][slot]['title']}  cancelled this week"
        yield MONDAY + datetime.timedelta(days=slot[1]), slot[2], paint(text, dim=True)


def print_week(events):
    rows = [row for event in events for row in event_rows(event)] + list(missing_rows(events))
    # Order by start alone: what starts together stays in the bridge's order.
    rows.sort(key=lambda row: row[:2])
    for day in (MONDAY + datetime.timedelta(days=n) for n in range(7)):
        print(f"\n{day:%A, %d %B %Y}")
        for text in [row[2] for row in rows if row[0] == day] or ["-"]:
            print(f"  {text}")


def print_reminders(reminders):
    print("\nReminders")
    # The bridge gives them in no order.
    for reminder in sorted(reminders, key=lambda r: (r["isCompleted"], r["dueDate"], r["title"])):
        due = local(reminder["dueDate"])
        when = f"{due:%a %d %b}" + (f" {due:%H:%M}" if reminder["hasDueTime"] else "")
        notes = [reminder["list"]]
        if reminder["isCompleted"]:
            notes.append("done")
        elif due.date() < MONDAY:
            notes.append("overdue")
        if reminder["priority"]:
            notes.append(f"priority {reminder['priority']}")
        box = "[x] " if reminder["isCompleted"] else "[ ] "
        print(f"  {when:18}" + paint(box, reminder.get("color")) + reminder["title"]
              + paint("  " + " · ".join(notes), dim=True))


def print_lines(lines):
    print("\nWhat went over the pipe (> to the bridge, < from it)")
    width = shutil.get_terminal_size((100, 24)).columns
    for direction, line in lines:
        text = fit(f"{direction} {line.decode()}", width)
        print(text if direction == ">" else paint(text, dim=True))


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--bridge", default=default_bridge())
    program = arguments.parse_args().bridge
    lines = []
    with sample_calendars(), Bridge(program, trace=lambda *line: lines.append(line)) as bridge:
        calendars = bridge.ask("calendars")["calendars"]
        # A week more on both sides shows which repeating events are left out in the middle.
        events = bridge.ask("events", from_=f"{MONDAY - WEEK}", to=f"{MONDAY + 2 * WEEK}")["events"]
        reminders = bridge.ask("reminders", from_=f"{MONDAY}", to=f"{MONDAY + WEEK}", overdue=True)["reminders"]
    print(f"Calendars (access: {bridge.status})")
    for calendar in calendars:
        print("  " + paint("● ", calendar.get("color")) + calendar["title"] + paint("  " + calendar["source"], dim=True))
    print_week(events)
    print_reminders(reminders)
    print_lines(lines)


main()

#!/usr/bin/env python3
"""Creates a reminder in a scratch copy of the sample calendars, completes it, and shows what the bridge answers.

An example of a host that writes reminders. Your own are not touched.
"""

import argparse

from bridge import Bridge, Refused
from samples import default_bridge, sample_calendars


def show(reminder):
    due = reminder["dueDate"] if reminder["hasDueTime"] else f"the day that begins at {reminder['dueDate']}"
    print(f"[{'x' if reminder['isCompleted'] else ' '}] {reminder['title']}, {reminder['list']}, due {due}")


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--bridge", default=default_bridge())
    program = arguments.parse_args().bridge
    with sample_calendars(), Bridge(program) as bridge:
        lists = [reminders for reminders in bridge.ask("reminder-lists")["lists"] if reminders["writable"]]
        created = bridge.ask("reminder-create", title="Order cake", listId=lists[0]["id"],
                             dueDate="2026-03-27", hasDueTime=False)["reminder"]
        show(created)
        show(bridge.ask("reminder-complete", reminderId=created["id"])["reminder"])
        try:
            bridge.ask("reminder-complete", reminderId="no such reminder")
        except Refused as refusal:
            print(f"refused: {refusal}")


main()

#!/usr/bin/env python3
"""Prints the coming days of your own calendars, and prints them anew whenever something changed. It changes nothing.

An example of a host that shows calendars: a change line says that something changed, not what, so it asks again.
"""

import argparse
import datetime
import time

from bridge import Bridge, Ended, Refused
from samples import default_bridge


def print_days(bridge, days):
    today = datetime.date.today()
    events = bridge.ask("events", from_=f"{today}", to=f"{today + datetime.timedelta(days=days)}")["events"]
    print(f"{len(events)} events in {days} days", flush=True)
    for event in events:
        start = datetime.datetime.strptime(event["start"], "%Y-%m-%dT%H:%M:%S%z").astimezone()
        # All-day events begin at local midnight: the day is right in local time alone.
        hour = "all day" if event["isAllDay"] else f"{start:%H:%M}"
        print(f"  {start:%a %d %b}  {hour:7}  {event['title']}", flush=True)


def main():
    arguments = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    arguments.add_argument("--bridge", nargs="+", default=[default_bridge()], help="program and its arguments")
    arguments.add_argument("--days", type=int, default=7)
    options = arguments.parse_args()
    with Bridge(*options.bridge) as bridge:
        try:
            if bridge.status == "notDetermined":
                bridge.ask("auth", timeout=None)  # as long as the user takes
            while True:
                print_days(bridge, options.days)
                bridge.wait_for_change()
                # A sync brings many changes: let it go on for a moment, and ask once for all of them.
                time.sleep(0.2)
                bridge.wait_for_change(timeout=0)
        except KeyboardInterrupt:
            pass
        except (Refused, Ended) as reason:
            print(reason)


main()

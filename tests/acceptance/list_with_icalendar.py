"""Prints what the icalendar package reads in .ics files, as JSON: the components, and the zones that they bring along.

    list_with_icalendar.py FILE...

Exits with 77 when this Python has no such package.
"""

import datetime
import json
import sys

try:
    import icalendar
except ImportError:
    sys.exit(77)


def text_of(value):
    """A date as it stands, a time as an instant in UTC."""
    if isinstance(value, datetime.datetime):
        return value.astimezone(datetime.timezone.utc).isoformat() if value.tzinfo else value.isoformat() + " floating"
    return value.isoformat()


def in_zone(zone, value):
    """The same reading in a zone of icalendar's: pytz's until version 5, a tzinfo like any other since 6."""
    reading = value.replace(tzinfo=None)
    return zone.localize(reading) if hasattr(zone, "localize") else reading.replace(tzinfo=zone)


def listing(path):
    with open(path, "rb") as file:
        calendar = icalendar.Calendar.from_ical(file.read())
    zones = {str(zone["TZID"]): zone.to_tz() for zone in calendar.walk("VTIMEZONE")}
    items = []
    for component in calendar.walk():
        if component.name not in ("VEVENT", "VTODO"):
            continue
        item = {"errors": [str(error) for error in component.errors], "uid": str(component["UID"])}
        for name in ("SUMMARY", "STATUS"):
            if name in component:
                item[name] = str(component[name])
        if "RRULE" in component:
            item["RRULE"] = component["RRULE"].to_ical().decode()
        for name in ("DTSTART", "DTEND", "DUE", "RECURRENCE-ID"):
            if name not in component:
                continue
            value = component[name].dt
            item[name] = text_of(value)
            zone = zones.get(component[name].params.get("TZID"))
            if zone:
                item[name + " by VTIMEZONE"] = text_of(in_zone(zone, value))
        if "EXDATE" in component:
            lines = component["EXDATE"] if isinstance(component["EXDATE"], list) else [component["EXDATE"]]
            item["EXDATE"] = [text_of(date.dt) for line in lines for date in line.dts]
        items.append(item)
    return items


print(json.dumps([item for path in sys.argv[1:] for item in listing(path)]))

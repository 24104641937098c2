#!/usr/bin/env python3
"""Writes a store of N items as people have them: generate_store.py N DIRECTORY

The same N gives the same bytes. 90% are events: an eighth of them repeat (some with EXDATEs and changed occurrences),
8% are all-day, most carry a VTIMEZONE, attendees or alarms. 10% are to-dos. They lie in the ten years around 2025 and
are about 1.1 kB each; a week holds about 16, 150 and 1350 occurrences for 1,000, 10,000 and 100,000 items.
"""

import datetime
import pathlib
import random
import sys

FIRST_DAY = datetime.date(2020, 1, 1)
DAYS = 3652
CALENDARS = ["home", "work", "team", "account/private", "account/projects", "account/travel"]
LISTS = ["tasks", "account/errands"]
WORDS = """agenda airport budget call client coffee contract customer delivery dentist design dinner draft family figures
flight garden hotel interview invoice journey kitchen lesson letter lunch market meeting minutes notes office order
parents party plan platform question rehearsal release report review room school server session sketch station
summary supplier ticket train travel visit workshop""".split()
PEOPLE = ["Amira Haddad", "Jonas Keller", "Sofía Márquez", "Wei Chen", "Olu Adeyemi", "Ida Nygård", "Pavel Novák"]
ALARM = "BEGIN:VALARM\nACTION:DISPLAY\nDESCRIPTION:Reminder\nTRIGGER:-PT{}M\nEND:VALARM\n"


def zone_block(tzid, standard, daylight, standard_rule, daylight_rule, standard_start, daylight_start):
    return (
        f"BEGIN:VTIMEZONE\nTZID:{tzid}\nBEGIN:DAYLIGHT\nTZOFFSETFROM:{standard}\nTZOFFSETTO:{daylight}\n"
        f"DTSTART:{daylight_start}\nRRULE:FREQ=YEARLY;{daylight_rule}\nEND:DAYLIGHT\n"
        f"BEGIN:STANDARD\nTZOFFSETFROM:{daylight}\nTZOFFSETTO:{standard}\n"
        f"DTSTART:{standard_start}\nRRULE:FREQ=YEARLY;{standard_rule}\nEND:STANDARD\nEND:VTIMEZONE\n")


def european_zone(tzid):
    return zone_block(tzid, "+0100", "+0200", "BYMONTH=10;BYDAY=-1SU", "BYMONTH=3;BYDAY=-1SU",
                      "19961027T030000", "19810329T020000")


# (TZID, its block, share). An empty TZID stands for UTC times.
ZONES = [
    ("Europe/Berlin", european_zone("Europe/Berlin"), 60),
    ("W. Europe Standard Time", european_zone("W. Europe Standard Time"), 12),
    ("America/New_York", zone_block("America/New_York", "-0500", "-0400", "BYMONTH=11;BYDAY=1SU",
                                    "BYMONTH=3;BYDAY=2SU", "20071104T020000", "20070311T020000"), 10),
    ("/example.org/20200101_1/Europe/Paris", european_zone("/example.org/20200101_1/Europe/Paris"), 6),
    ("", "", 12),
]
# (rule without its end, fewest and most occurrences, share): on average about one occurrence in nine weeks.
RULES = [
    ("FREQ=WEEKLY", 15, 160, 40),
    ("FREQ=WEEKLY;INTERVAL=2", 10, 80, 12),
    ("FREQ=WEEKLY;BYDAY=MO,WE,FR", 20, 180, 10),
    ("FREQ=DAILY", 3, 20, 10),
    ("FREQ=MONTHLY", 6, 60, 8),
    ("FREQ=MONTHLY;BYDAY=1TU", 6, 60, 8),
    ("FREQ=YEARLY", 0, 0, 12),
]


def fold(line):
    """RFC 5545, section 3.1: at most 75 octets a line."""
    octets, pieces = line.encode(), []
    while len(octets) > 75:
        cut = 75 if not pieces else 74
        while octets[cut] & 0xC0 == 0x80:
            cut -= 1
        pieces.append(octets[:cut])
        octets = octets[cut:]
    return b"\r\n ".join([*pieces, octets])


class Generator:
    def __init__(self, count):
        self.random = random.Random(count)

    def chance(self, percent):
        return self.random.random() * 100 < percent

    def pick(self, shares):
        return self.random.choices(shares, [share[-1] for share in shares])[0]

    def words(self, count):
        return " ".join(self.random.choices(WORDS, k=count))

    def uid(self):
        digits = f"{self.random.getrandbits(128):032X}"
        return "-".join([digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]])

    def day(self):
        return FIRST_DAY + datetime.timedelta(days=self.random.randrange(DAYS))

    def attendees(self):
        people = self.random.sample(PEOPLE, self.random.randint(2, 4))
        lines = [f"ORGANIZER;CN={people[0]}:mailto:{people[0].split()[0].lower()}@office.example\n"]
        for name in people:
            lines.append(f"ATTENDEE;CN={name};CUTYPE=INDIVIDUAL;ROLE=REQ-PARTICIPANT;PARTSTAT=ACCEPTED"
                         f":mailto:{name.split()[0].lower()}@office.example\n")
        return "".join(lines)

    def common(self, stamp):
        text = f"SUMMARY:{self.words(self.random.randint(2, 5)).capitalize()}\n"
        text += f"DTSTAMP:{stamp}\nCREATED:{stamp}\nLAST-MODIFIED:{stamp}\nSEQUENCE:{self.random.randrange(4)}\n"
        if self.chance(75):
            sentences = [self.words(self.random.randint(6, 14)).capitalize() for _ in range(self.random.randint(1, 7))]
            text += "DESCRIPTION:" + "\\, or not.\\n".join(sentences) + "\n"
        return text

    def event(self):
        uid, day = self.uid(), self.day()
        stamp = f"{day - datetime.timedelta(days=20):%Y%m%d}T081500Z"
        all_day = self.chance(8)
        tzid, block, _ = self.pick(ZONES)
        start = datetime.datetime.combine(day, datetime.time(self.random.randint(7, 19), self.random.choice([0, 15, 30])))
        length = datetime.timedelta(minutes=self.random.choice([15, 30, 45, 60, 90, 120]))
        if all_day:
            start, length, block = datetime.datetime.combine(day, datetime.time.min), datetime.timedelta(days=1), ""
            if self.chance(20):
                length *= self.random.randint(2, 14)

        def moment(name, value):
            if all_day:
                return f"{name};VALUE=DATE:{value:%Y%m%d}\n"
            return f"{name};TZID={tzid}:{value:%Y%m%dT%H%M%S}\n" if tzid else f"{name}:{value:%Y%m%dT%H%M%SZ}\n"

        body = f"BEGIN:VEVENT\nUID:{uid}\n" + moment("DTSTART", start) + moment("DTEND", start + length)
        overrides = ""
        if self.chance(12.5):
            rule, fewest, most, _ = self.pick(RULES)
            count = self.random.randint(fewest, most)
            body += f"RRULE:{rule}" + (f";COUNT={count}\n" if count else "\n")
            if rule in ("FREQ=WEEKLY", "FREQ=DAILY"):
                step = datetime.timedelta(days=7 if rule == "FREQ=WEEKLY" else 1)
                if self.chance(40):
                    for skipped in sorted(self.random.sample(range(1, count), min(3, count - 1))):
                        body += moment("EXDATE", start + skipped * step)
                if self.chance(30):
                    meant = start + self.random.randrange(1, count) * step
                    moved = meant + datetime.timedelta(days=1)
                    overrides = (f"BEGIN:VEVENT\nUID:{uid}\n" + moment("RECURRENCE-ID", meant) + moment("DTSTART", moved)
                                 + moment("DTEND", moved + length) + self.common(stamp) + "END:VEVENT\n")
        body += self.common(stamp)
        if self.chance(50):
            body += f"LOCATION:{self.words(2).title()}\\, {self.random.randint(1, 99)} Station Road\n"
        if self.chance(15):
            body += f"URL:https://meet.office.example/{self.random.getrandbits(40):x}\n"
        if self.chance(35):
            body += self.attendees()
        body += "TRANSP:" + self.random.choice(["OPAQUE", "OPAQUE", "TRANSPARENT"]) + "\n"
        if self.chance(45):
            body += ALARM.format(self.random.choice([5, 15, 30, 60]))
        return uid, block + body + "END:VEVENT\n" + overrides

    def todo(self):
        uid, day = self.uid(), self.day()
        stamp = f"{day - datetime.timedelta(days=20):%Y%m%d}T081500Z"
        tzid, block, _ = ZONES[0]
        body = f"BEGIN:VTODO\nUID:{uid}\n" + self.common(stamp)
        if self.chance(45):
            body, block = body + f"DUE;VALUE=DATE:{day:%Y%m%d}\n", ""
        elif self.chance(75):
            body += f"DUE;TZID={tzid}:{day:%Y%m%d}T{self.random.randint(7, 20):02}0000\n"
        else:
            block = ""
        if self.chance(60):
            body += f"STATUS:COMPLETED\nCOMPLETED:{day:%Y%m%d}T150000Z\nPERCENT-COMPLETE:100\n"
        else:
            body += "STATUS:NEEDS-ACTION\n"
        body += f"PRIORITY:{self.random.choice([0, 0, 1, 5, 9])}\n"
        if self.chance(50):
            body += ALARM.format(0)
        return uid, block + body + "END:VTODO\n"


def main():
    count, root = int(sys.argv[1]), pathlib.Path(sys.argv[2])
    for name in CALENDARS + LISTS:
        (root / name).mkdir(parents=True, exist_ok=True)
        (root / name / "displayname").write_text(name.split("/")[-1].capitalize() + "\n")
        (root / name / "color").write_text("#1565C0\n")
    generator = Generator(count)
    for number in range(count):
        is_todo = number % 10 == 9
        uid, components = generator.todo() if is_todo else generator.event()
        folder = generator.random.choice(LISTS if is_todo else CALENDARS)
        text = f"BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//Example//Generator 1//EN\n{components}END:VCALENDAR"
        lines = b"\r\n".join(fold(line) for line in text.split("\n"))
        (root / folder / f"{uid}.ics").write_bytes(lines + b"\r\n")


main()

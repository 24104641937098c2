"""Holds the schema, docs/protocol.md, the sources and the records against each other: commands, keys and messages.

Usage: same_everywhere_test.py PATH_OF_THE_SIMULATOR
"""

import json
import pathlib
import re
import sys
import tempfile
import unittest

from protocol_schema import COMMANDS, DEFINITIONS, ROOT, resolved

sys.path.insert(0, str(ROOT / "examples/python"))
from bridge import Bridge  # noqa: E402

PAGE = (ROOT / "docs/protocol.md").read_text(encoding="utf-8")
CODE_SPAN = re.compile(r"(`+) ?(.+?) ?\1(?!`)")
DATE = "2026-03-24T09:00:00Z"
# A calendar, an event and a reminder that have all that there is, and those that have the least.
RECORDS = {
    "sources": [{"id": "s", "title": "S"}],
    "calendars": [
        {"id": "full", "title": "F", "source": "s", "color": {"space": "sRGB", "components": [1, 1, 1]}},
        {"id": "least", "title": "L", "source": "s"},
        {"id": "full list", "title": "F", "source": "s", "type": 1, "color": {"space": "sRGB", "components": [1, 1, 1]}},
        {"id": "least list", "title": "L", "source": "s", "type": 1},
    ],
    "events": [
        {"id": "full", "title": "F", "calendar": "full", "start": DATE, "end": DATE, "occurrence": DATE, "lastModified": DATE,
         "notes": "n", "url": "u:", "location": "l", "attendees": []},
        {"id": "least", "calendar": "least"},
    ],
    "reminders": [
        {"id": "full", "title": "F", "list": "full list", "due": {"year": 2026, "month": 3, "day": 24}, "notes": "n"},
        # Shown by its completion: a due date that is no date is none.
        {"id": "least", "list": "least list", "completed": True, "completionDate": DATE, "due": {}},
    ],
}
ACCESS_MESSAGES = {"no calendar access:", "no reminders access:"}


def code_spans(text):
    return [span for _, span in CODE_SPAN.findall(text)]


def section(heading):
    """A section of the page, up to the next heading of its level or above."""
    level = heading.split()[0]
    body = PAGE.split(f"\n{heading}\n", 1)[1]
    return re.split(rf"^#{{1,{len(level)}}} ", body, maxsplit=1, flags=re.MULTILINE)[0]


def table_rows(text):
    """The cells of all rows of all tables, their heads left out."""
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in text.splitlines() if line.startswith("|")]
    rules = [index for index, row in enumerate(rows) if set(row[0]) == {"-"}]
    return [row for index, row in enumerate(rows) if index not in rules and index + 1 not in rules]


def source(path):
    """C++ without its comments."""
    return re.sub(r"//.*", "", (ROOT / path).read_text(encoding="utf-8"))


def sources(*folders):
    return "".join(source(path) for folder in folders for path in sorted((ROOT / "src" / folder).glob("*.cpp")))


def request_keys(command):
    return set(DEFINITIONS[f"{command}.request"]["properties"]) - {"id", "cmd"}


def messages(schema):
    """The messages of a command's error: fixed texts, and beginnings up to the colon. The store's own are none."""
    schema = resolved(schema)
    if "anyOf" in schema:
        return set().union(*map(messages, schema["anyOf"]))
    if "const" in schema:
        return {schema["const"]}
    return {schema["pattern"].removeprefix("^").split(": ")[0] + ":"} if "pattern" in schema else set()


def error_messages(command):
    return messages(resolved(DEFINITIONS[f"{command}.error"]).get("properties", {}).get("error", {}))


class SameEverywhere(unittest.TestCase):
    def test_commands(self):
        dispatched = re.findall(r'^ +\{"([a-z-]+)", ', source("src/host/dispatcher.cpp"), re.MULTILINE)
        self.assertEqual(COMMANDS, sorted(dispatched))
        named = re.findall(r"\*\*`([a-z-]+)`\*\*", section("## Commands"))
        self.assertEqual(COMMANDS, sorted(named))
        for command in COMMANDS:
            self.assertEqual(DEFINITIONS[f"{command}.request"]["properties"]["cmd"], {"const": command})
        for kind, union in [("request", "oneOf"), ("answer", "anyOf")]:
            self.assertEqual(
                {f"#/$defs/{command}.{kind}" for command in COMMANDS},
                {option["$ref"] for option in DEFINITIONS[kind][union]})

    def test_keys_of_records(self):
        with tempfile.TemporaryDirectory() as scratch:
            scenario = pathlib.Path(scratch, "records.json")
            scenario.write_text(json.dumps(RECORDS), encoding="utf-8")
            with Bridge(sys.argv[1], str(scenario), environment={"TZ": "UTC"}) as bridge:
                year = {"from_": "2026-01-01", "to": "2027-01-01"}
                shown = {"calendar": bridge.ask("calendars")["calendars"], "event": bridge.ask("events", **year)["events"],
                         "reminder": bridge.ask("reminders", **year)["reminders"]}
        for name, records in shown.items():
            with self.subTest(name):
                keys = {record["id"]: set(record) for record in records}
                definition = DEFINITIONS[name]
                self.assertEqual(set(definition["properties"]), keys["full"])
                self.assertEqual(set(definition["required"]), keys["least"])

                rows = table_rows(section(f"### {name.capitalize()} record"))
                documented = {key: row[2] for row in rows for key in code_spans(row[0])}
                self.assertEqual(set(definition["properties"]), set(documented))
                self.assertEqual(set(definition["required"]), {key for key, when in documented.items() if when == "yes"})

    def test_keys_of_requests(self):
        read = set(re.findall(r'(?:request, |request\.find\()"(\w+)"', sources("access", "events", "reminders")))
        self.assertEqual(set().union(*map(request_keys, COMMANDS)), read)

        # A paragraph that begins with commands in bold is about them, and so is what follows.
        for part in re.split(r"\n(?=\*\*`)", section("## Commands"))[1:]:
            about = re.findall(r"\*\*`([a-z-]+)`\*\*", part)
            table = {key for row in table_rows(part.split("\n#")[0]) for key in code_spans(row[0])}
            known = set().union(*map(request_keys, about))
            self.assertLessEqual(known, set(code_spans(part)), about)
            if known and table:
                self.assertEqual(known, table, about)

    def test_messages(self):
        written = re.findall(r'"([a-z][^"\n]* [^"\n]*)"', sources("access", "events", "reminders", "host"))
        in_schema = set().union(*map(error_messages, COMMANDS))
        for name in ("badJson", "unknownCommand"):
            in_schema |= messages(DEFINITIONS[f"{name}.error"]["properties"]["error"])
        self.assertEqual(in_schema, {message.strip() for message in written})
        self.assertEqual(in_schema, messages(DEFINITIONS["message"]))

        rows = table_rows(section("## Every message"))
        documented = {span.strip(): row[1] for row in rows for span in code_spans(row[0]) if " " in span}
        self.assertEqual(in_schema, set(documented))

    def test_who_gives_which_message(self):
        for row in table_rows(section("## Every message")):
            commands = set(code_spans(row[1]))
            for message in [span.strip() for span in code_spans(row[0]) if " " in span]:
                # A message that names its command is that one's alone, whoever else stands in the row.
                named = {command for command in commands if message.startswith(f"{command} needs")}
                givers = {command for command in COMMANDS if message in error_messages(command)}
                if commands:
                    self.assertEqual(givers, named or commands, message)

    def test_who_needs_access(self):
        events = {"calendars", "events", "create", "update", "delete"}
        reminders = {command for command in COMMANDS if command.startswith("reminder")}
        for command in set(COMMANDS):
            refusals = error_messages(command) & ACCESS_MESSAGES
            if command in events:
                self.assertEqual(refusals, {"no calendar access:"}, command)
            elif command in reminders - {"reminders-status", "reminders-auth"}:
                self.assertEqual(refusals, {"no reminders access:"}, command)
            else:
                self.assertEqual(refusals, set(), command)


unittest.main(argv=[sys.argv[0]])

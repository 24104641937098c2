"""Validates every line of every transcript, and sees that lines with a fault in them fail."""

import collections
import copy
import json
import pathlib
import unittest

from protocol_schema import COMMANDS, ROOT, SCHEMA, is_valid, jsonschema

WRONG_REQUESTS = pathlib.Path(__file__).with_name("wrong_requests.txt")
NOTHING = object()


def parsed(text):
    try:
        return json.loads(text)
    except ValueError:
        return NOTHING


def transcripts():
    """(name, requests, output) of the transcripts and of the documents that show some."""
    files = sorted((ROOT / "tests/transcripts").glob("*.jsonl"))
    for file in [*files, ROOT / "README.md", ROOT / "docs/protocol.md"]:
        # Line feeds alone part lines: other separators stand within some strings.
        lines = file.read_text(encoding="utf-8").split("\n")
        requests = [parsed(line[2:]) for line in lines if line.startswith("> ")]
        output = [json.loads(line[2:].replace('"$date"', '"2025-03-03T10:00:00Z"')) for line in lines
                  if line.startswith("< ")]
        yield file.name, requests, output


def expected_definition(line, requests):
    """What a line of output has to be, by the request that it answers."""
    if isinstance(line.get("event"), str):
        return line["event"]
    if "id" not in line:
        # Sent without an id, or not read as far as that.
        return "badJson.error" if line.get("error") == "bad JSON" else "output"
    commands = [request.get("cmd") for request in requests if isinstance(request, dict) and "id" in request
                and json.dumps(request["id"]) == json.dumps(line["id"])]
    assert commands, f"answers nothing: {json.dumps(line)}"
    command = commands[-1]
    if command not in COMMANDS:
        return "unknownCommand.error"
    return f"{command}.error" if "error" in line else f"{command}.answer"


def spoiled(value):
    """Copies of a line with one fault each: a null, a value of another type, a key too many."""
    for path, holder in containers(value, ()):
        # Whatever stands in an id comes back, and an error's text may be the store's.
        for key in [key for key in holder if path or key != "id"]:
            yield changed(value, path, key, None)
            yield changed(value, path, key, [holder[key]])
        yield changed(value, path, "nonsense", "x")


def containers(value, path):
    if isinstance(value, dict):
        yield path, value
    for key, child in value.items() if isinstance(value, dict) else enumerate(value):
        if isinstance(child, (dict, list)) and (path or key != "id"):
            yield from containers(child, (*path, key))


def changed(value, path, key, content):
    result = copy.deepcopy(value)
    holder = result
    for step in path:
        holder = holder[step]
    holder[key] = content
    return result


class Lines(unittest.TestCase):
    def test_schema_is_one_itself(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)

    def test_output_fits_its_command(self):
        count = 0
        for name, requests, output in transcripts():
            for line in output:
                definition = expected_definition(line, requests)
                self.assertTrue(is_valid(definition, line), f"{name}: not {definition}: {json.dumps(line)}")
                count += 1
        self.assertGreater(count, 500)

    def test_requests_are_refused_where_they_try_the_leniency_of_the_process_and_nowhere_else(self):
        refused = collections.Counter()
        for name, requests, _ in transcripts():
            refused.update(name for request in requests if not is_valid("request", request))
        listed = dict(line.split() for line in WRONG_REQUESTS.read_text(encoding="utf-8").splitlines()
                      if not line.startswith("#"))
        self.assertEqual({name: str(count) for name, count in refused.items()}, listed)

    def test_a_line_with_a_fault_is_none(self):
        count = 0
        for name, requests, output in transcripts():
            for line in output:
                definition = expected_definition(line, requests)
                for wrong in spoiled(line):
                    self.assertFalse(is_valid(definition, wrong), f"{name}: {definition}: {json.dumps(wrong)}")
                    count += 1
        self.assertGreater(count, 5000)

    def test_a_line_with_a_key_gone_is_none(self):
        for definition, line in [
            ("event", {"id": "e", "title": "", "isAllDay": False, "calendarId": "c", "calendar": "C",
                       "isRecurring": False, "writable": True, "availability": 0}),
            ("reminder", {"id": "r", "title": "", "listId": "l", "list": "L", "isCompleted": False, "priority": 0,
                          "hasDueTime": False, "writable": True}),
            ("calendar", {"id": "c", "title": "", "source": "S", "sourceType": "local", "writable": True}),
            ("ready", {"event": "ready", "status": "denied"}),
            ("auth.answer", {"status": "denied", "granted": False}),
            ("request", {"cmd": "events", "from": "2025-03-03", "to": "2025-03-04"}),
        ]:
            self.assertTrue(is_valid(definition, line), line)
            for key in line:
                rest = {name: value for name, value in line.items() if name != key}
                self.assertFalse(is_valid(definition, rest), f"{definition} without {key}")

    def test_values_out_of_range_are_none(self):
        for definition, value in [
            ("date", "2025-03-03T10:00:00.250Z"), ("date", "2025-03-03T10:00:00+01:00"), ("date", "2025-03-03"),
            ("requestDate", "2025-03-03T10:00:00"), ("requestDate", "03.03.2025"), ("requestDate", 1740821400),
            ("color", "#ff8000"), ("color", "#FF8000FF"), ("status", "granted"),
            ("events.error", {"error": "create needs `start`"}), ("calendars.error", {"error": "no calendar to write to"}),
            ("auth.error", {"error": "bad JSON"}), ("create.error", {"error": "event not found: x"}),
            ("status.error", {"error": "no calendar access: denied"}), ("delete.answer", {"ok": False}),
        ]:
            self.assertFalse(is_valid(definition, value), (definition, value))


unittest.main()

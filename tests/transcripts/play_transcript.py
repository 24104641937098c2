"""Plays one transcript against a built program and compares every line that comes back.

    play_transcript.py PROGRAM TRANSCRIPT

A transcript is text, read line by line:

    # ...      a comment
    {...}      the header, once, before anything is sent:
                 "scenario"     a file of scenarios/, or the scenario itself
                 "with"         keys that replace the scenario's
                 "calendars"    instead of a scenario: a folder of calendars/ to serve
                 "TZ"           the time zone (UTC)
                 "environment"  further variables
                 "ready"        the status that the ready line tells ("fullAccess")
    > ...      a request line, sent as it stands
    < {...}    a line that must have come; it is waited for
    end        ends the input here; without it the input ends after the last line

An expected line with an "id" is met by the line with that id, any other by an equal line that has
none, whatever stands between: answers may come late. JSON is compared by value, numbers digit for
digit; the order of the records in a "reminders" answer carries no meaning. "$date" stands for any
date. The ready line is expected first in every transcript and not written down. A line that nothing
expected fails the transcript; so do output on standard error and an exit status other than 0.
"""

import json
import os
import pathlib
import re
import shutil
import sys
import tempfile

import bridge

HERE = pathlib.Path(__file__).resolve().parent
DATE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ")


def matches(expected, actual, key=None):
    if expected == "$date":
        return isinstance(actual, str) and DATE.fullmatch(actual) is not None
    if type(expected) is not type(actual):
        return False
    if isinstance(expected, dict):
        return expected.keys() == actual.keys() and all(
            matches(value, actual[name], name) for name, value in expected.items()
        )
    if isinstance(expected, list):
        if key == "reminders":
            expected, actual = sorted(expected, key=text_of), sorted(actual, key=text_of)
        return len(expected) == len(actual) and all(map(matches, expected, actual))
    return expected == actual


def text_of(value):
    return json.dumps(value, sort_keys=True, ensure_ascii=False)


class Transcript:
    def __init__(self, path):
        self.header = {}
        self.steps = []  # (line number, kind, content)
        for number, line in enumerate(path.read_text("utf-8").split("\n"), start=1):
            if line.startswith("{") and not self.steps and not self.header:
                self.header = json.loads(line)
            elif line.startswith(">"):
                self.steps.append((number, "send", line[2:]))
            elif line.startswith("<"):
                self.steps.append((number, "expect", bridge.parse_json(line[1:])))
            elif line == "end":
                self.steps.append((number, "end", None))
            elif line.strip() and not line.startswith("#"):
                raise SystemExit(f"{path}:{number}: neither comment, header, request nor answer")
        unknown = self.header.keys() - {
            "scenario", "with", "calendars", "TZ", "environment", "ready",
        }
        if unknown:
            raise SystemExit(f"{path}: unknown in the header: {', '.join(unknown)}")
        if not any(kind == "expect" for _, kind, _ in self.steps):
            raise SystemExit(f"{path}: expects nothing, so it could not fail")


class Player:
    def __init__(self, process):
        self._process = process
        self._unmatched = []

    def play(self, steps, ready):
        # The process does not ask its host to wait for this line; what it tells would otherwise
        # hang on which of its threads comes first.
        self._expect({"event": "ready", "status": ready})
        for number, kind, content in steps:
            try:
                if kind == "send":
                    self._process.send(content)
                elif kind == "expect":
                    self._expect(content)
                else:
                    self._process.end_input()
            except AssertionError as error:
                raise AssertionError(f"line {number}: {error}") from None
        self._unmatched += map(bridge.parse_output, self._process.finish())
        if self._unmatched:
            raise AssertionError("nothing expected " + "; ".join(map(text_of, self._unmatched)))

    def _expect(self, expected):
        deadline = bridge.Deadline()
        while True:
            for candidate in self._unmatched:
                if self._is_answer(expected, candidate):
                    self._unmatched.remove(candidate)
                    return
            try:
                line = self._process.read_line(deadline.left())
            except AssertionError:
                line = None
            if line is None:
                came = "; ".join(map(text_of, self._unmatched)) or "nothing"
                raise AssertionError(f"expected {text_of(expected)}, came {came}")
            self._unmatched.append(bridge.parse_output(line))

    @staticmethod
    def _is_answer(expected, candidate):
        if "id" not in expected or candidate.get("id", ...) != expected["id"]:
            return matches(expected, candidate)
        if not matches(expected, candidate):
            raise AssertionError(f"expected {text_of(expected)}, came {text_of(candidate)}")
        return True


def scenario_of(header):
    scenario = header.get("scenario", {})
    if isinstance(scenario, str):
        scenario = json.loads((HERE / "scenarios" / scenario).read_text("utf-8"))
    return {**scenario, **header.get("with", {})}


def main(program, path):
    transcript = Transcript(pathlib.Path(path))
    header = transcript.header
    environment = {"TZ": header.get("TZ", "UTC"), **header.get("environment", {})}
    with tempfile.TemporaryDirectory(prefix="tidemark-transcript-") as scratch:
        command = [program]
        if "calendars" in header:
            data = os.path.join(scratch, "data")
            folder = HERE / "calendars" / header["calendars"]
            shutil.copytree(folder, os.path.join(data, "calendars"))
            environment["XDG_DATA_HOME"] = data
        else:
            scenario = pathlib.Path(scratch, "scenario.json")
            scenario.write_text(json.dumps(scenario_of(header)), "utf-8")
            command.append(str(scenario))
        with bridge.Bridge(command, environment) as process:
            try:
                Player(process).play(transcript.steps, header.get("ready", "fullAccess"))
            except AssertionError as error:
                raise SystemExit(f"{path}: {error}") from None


if __name__ == "__main__":
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    main(sys.argv[1], sys.argv[2])

"""Plays the transcript in README.md against the built bridge. Usage: readme_test.py PATH_OF_TIDEMARK_CAL"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def transcript():
    """(sent, expected) pairs in the README's order; the notice at its start was sent by nothing."""
    lines = (ROOT / "README.md").read_text(encoding="utf-8").splitlines()
    sent = None
    for line in lines:
        if line.startswith("> "):
            sent = line[2:]
        elif line.startswith("< "):
            yield sent, json.loads(line[2:])
            sent = None


class Readme(unittest.TestCase):
    def test_transcript_is_what_the_bridge_says(self):
        self.maxDiff = None
        steps = list(transcript())
        self.assertGreater(len(steps), 2)
        with tempfile.TemporaryDirectory() as data_home:
            shutil.copytree(ROOT / "examples/calendars", pathlib.Path(data_home) / "calendars")
            environment = {**os.environ, "XDG_DATA_HOME": data_home, "TZ": "Europe/Berlin", "TIDEMARK_DESKTOP": "1"}
            with subprocess.Popen([sys.argv[1]], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  env=environment, encoding="utf-8") as bridge:
                for sent, expected in steps:
                    if sent is not None:
                        print(sent, file=bridge.stdin, flush=True)
                    self.assertEqual(json.loads(bridge.stdout.readline()), expected)
                rest, errors = bridge.communicate()
                self.assertEqual((rest, errors, bridge.returncode), ("", "", 0))


unittest.main(argv=[sys.argv[0]])

"""Plays the transcript in README.md against the built bridge, and runs its programs.

Usage: readme_test.py PATH_OF_TIDEMARK_CAL
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap
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


def program(language):
    text = (ROOT / "README.md").read_text(encoding="utf-8")
    return textwrap.dedent(re.search(rf"^ *```{language}\n(.*?)^ *```$", text, re.DOTALL | re.MULTILINE)[1])


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

    def run_program(self, language, client, name, *interpreter):
        with tempfile.TemporaryDirectory() as scratch:
            folder = pathlib.Path(scratch)
            shutil.copytree(ROOT / "examples/calendars", folder / "calendars")
            shutil.copy(ROOT / "examples" / client, folder)
            (folder / "tidemark-cal").symlink_to(pathlib.Path(sys.argv[1]).resolve())
            (folder / name).write_text(program(language), encoding="utf-8")
            result = subprocess.run(
                [*interpreter, folder / name], cwd=folder, capture_output=True, encoding="utf-8", timeout=120, env={
                    **os.environ, "PATH": f"{folder}:{os.environ['PATH']}", "XDG_DATA_HOME": scratch,
                    "TZ": "Europe/Berlin", "LC_ALL": "C.UTF-8"})
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            return result.stdout.splitlines()

    def test_program_in_python(self):
        lines = self.run_program("python", "python/bridge.py", "host.py", sys.executable)
        self.assertIn("2026-03-24T07:15:00Z Dentist", lines)

    @unittest.skipUnless(shutil.which("node"), "no node")
    def test_program_in_javascript(self):
        lines = self.run_program("js", "node/bridge.mjs", "host.mjs", "node")
        self.assertIn("2026-03-24T07:15:00Z Dentist", lines)


unittest.main(argv=[sys.argv[0]])

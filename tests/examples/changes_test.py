"""Runs the changes example against the built bridge. Usage: changes_test.py PATH_OF_TIDEMARK_CAL"""

import os
import pathlib
import re
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
CHANGES = [sys.executable, ROOT / "examples/python/changes.py", "--bridge", sys.argv[1]]


def without_what_varies(text):
    """The page with the new event's UID and the instants of the changes, its added stamps, named."""
    uid = re.search(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", text)
    text = text.replace(uid.group(), "{uid}") if uid else text
    # CREATED of an override is its series', which stays.
    created = r"\+UID:{uid}\n  \+DTSTAMP:.*\n  \+CREATED:"
    text = re.sub(rf"({created})\d{{8}}T\d{{6}}Z", r"\1{now}", text)
    return re.sub(r"^(  \+(?:DTSTAMP|LAST-MODIFIED):)\d{8}T\d{6}Z$", r"\1{now}", text, flags=re.MULTILINE)


class Changes(unittest.TestCase):
    def test_shows_what_each_change_did_to_the_files(self):
        self.maxDiff = None
        before = {path: path.read_bytes() for path in (ROOT / "examples/calendars").rglob("*") if path.is_file()}
        environment = {**os.environ, "LC_ALL": "C.UTF-8", "TZ": "Asia/Tokyo"}
        result = subprocess.run(CHANGES, capture_output=True, env=environment, encoding="utf-8")
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(
            without_what_varies(result.stdout), (HERE / "changes.txt").read_text(encoding="utf-8"))

        # The examples work on a copy.
        after = {path: path.read_bytes() for path in (ROOT / "examples/calendars").rglob("*") if path.is_file()}
        self.assertEqual(after, before)


unittest.main(argv=[sys.argv[0]])

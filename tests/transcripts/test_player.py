"""The player of transcripts itself: it has to fail where a transcript is not what happens."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import bridge
import suite

STATUS = '> {"id":1,"cmd":"status"}\n'
ANSWER = '< {"id":1,"status":"fullAccess"}\n'
PLAYER = pathlib.Path(__file__).resolve().parent / "play_transcript.py"


class Player(unittest.TestCase):
    def play(self, text):
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch, "one.jsonl")
            path.write_text(text, "utf-8")
            return subprocess.run(
                [sys.executable, PLAYER, suite.PROGRAM, path],
                capture_output=True,
                text=True,
                # Most of these wait in vain.
                env={**os.environ, "TRANSCRIPT_DEADLINE": "3"},
            )

    def assert_fails(self, text, complaint):
        result = self.play(text)
        self.assertNotEqual(result.returncode, 0, text)
        self.assertIn(complaint, result.stderr)

    def test_passes_what_happens(self):
        result = self.play("# A comment.\n{}\n" + STATUS + ANSWER)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_fails_another_answer(self):
        self.assert_fails(STATUS + '< {"id":1,"status":"denied"}\n', "line 2: expected")

    def test_fails_a_missing_key(self):
        self.assert_fails(STATUS + '< {"id":1}\n', "line 2: expected")

    def test_fails_another_type(self):
        self.assert_fails(STATUS + '< {"id":"1","status":"fullAccess"}\n', "expected")
        self.assert_fails(STATUS + '< {"id":1.0,"status":"fullAccess"}\n', "expected")

    def test_fails_an_answer_that_never_comes(self):
        self.assert_fails(STATUS + "end\n" + ANSWER + '< {"id":2}\n', 'expected {"id": "2"}')

    def test_fails_an_answer_that_nobody_expects(self):
        self.assert_fails(STATUS + ANSWER + STATUS, "nothing expected")

    def test_fails_another_ready_line(self):
        self.assert_fails('{"ready": "denied"}\n' + STATUS + ANSWER, '"ready"')

    def test_fails_a_word_on_standard_error(self):
        self.assert_fails('{"scenario": {"no such key": 1}}\n' + STATUS + ANSWER, "came nothing")

    def test_refuses_a_transcript_that_cannot_fail(self):
        self.assert_fails("# Nothing.\n", "expects nothing")
        self.assert_fails(STATUS, "expects nothing")

    def test_refuses_what_it_does_not_know(self):
        self.assert_fails("status\n" + STATUS + ANSWER, "neither comment")
        self.assert_fails('{"zone": "UTC"}\n' + STATUS + ANSWER, "unknown in the header: zone")


class Output(unittest.TestCase):
    def test_form_of_a_line(self):
        self.assertEqual(bridge.parse_output(b'{"a":"\\/"}\n'), {"a": "/"})
        for line in (b'{"a":"/"}\n', b"[]\n", b'{"a":1}', b'{"a":1,"a":1}\n'):
            self.assertRaises(AssertionError, bridge.parse_output, line)
        self.assertRaises(UnicodeDecodeError, bridge.parse_output, b'{"a":"\xff"}\n')


if __name__ == "__main__":
    suite.main()

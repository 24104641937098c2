"""The Python client against the simulator and against bridges that go wrong. Usage: python_client_test.py SIMULATOR"""

import concurrent.futures
import pathlib
import sys
import threading
import time
import unittest

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(ROOT / "examples/python"))
from bridge import Bridge, Ended, Refused  # noqa: E402

OFFICE = str(ROOT / "tests/transcripts/scenarios/office.json")
START = "2025-03-03T10:00:00Z"
SHORT = 0.3  # for answers that never come


def simulator(scenario=OFFICE):
    return Bridge(sys.argv[1], scenario)


def odd_bridge(kind, **options):
    return Bridge(sys.executable, str(HERE / "odd_bridge.py"), kind, **options)


class Client(unittest.TestCase):
    def test_asks_and_ends(self):
        with simulator() as bridge:
            self.assertEqual(bridge.status, "fullAccess")
            self.assertIn("calendars", bridge.ask("calendars"))
            with self.assertRaisesRegex(Refused, "events needs `from` and `to`"):
                bridge.ask("events")
            self.assertEqual(bridge.close(), 0)

    def test_text_with_every_line_separator_comes_back_whole(self):
        title = "a\u2028b\u2029c\u0085d\x0be\x0cf\r\ng\x1ch"
        with simulator() as bridge:
            self.assertEqual(bridge.ask("create", start=START, title=title)["event"]["title"], title)

    def test_lines_may_be_long(self):
        notes = "é" * 1_000_000
        with simulator() as bridge:
            self.assertEqual(bridge.ask("create", start=START, notes=notes)["event"]["notes"], notes)

    def test_refuses_what_no_line_can_hold(self):
        with simulator() as bridge:
            for title in ("\ud83d", float("nan")):
                with self.assertRaises(ValueError):
                    bridge.ask("create", start=START, title=title)
            self.assertEqual(bridge.ask("status")["status"], "fullAccess")

    def test_many_may_ask_at_once(self):
        with simulator() as bridge:
            notes = "x" * 100_000
            with concurrent.futures.ThreadPoolExecutor(16) as pool:
                made = list(pool.map(
                    lambda n: bridge.ask("create", start=START, title=f"{n}", notes=notes)["event"]["title"], range(200)))
            self.assertEqual(made, [f"{n}" for n in range(200)])

    def test_tells_of_changes(self):
        with simulator() as bridge:
            self.assertFalse(bridge.wait_for_change(timeout=0))
            bridge.ask("create", start=START)
            self.assertTrue(bridge.wait_for_change(timeout=30))

    def test_answers_are_matched_by_id(self):
        with odd_bridge("backwards") as bridge, concurrent.futures.ThreadPoolExecutor(2) as pool:
            answers = pool.map(lambda command: bridge.ask(command)["cmd"], ["calendars", "events"])
            self.assertEqual(list(answers), ["calendars", "events"])

    def test_an_answer_that_never_comes(self):
        with odd_bridge("forgetful") as bridge:
            with self.assertRaisesRegex(TimeoutError, "the answer to status did not come within 0.3 seconds"):
                bridge.ask("status", timeout=SHORT)
            # The first answer comes now, too late, and is not taken for the second one.
            self.assertEqual(bridge.ask("status")["status"], "denied")
            self.assertTrue(bridge.wait_for_change(timeout=0))

    def test_a_bridge_that_is_never_ready(self):
        with self.assertRaisesRegex(TimeoutError, "the ready line did not come"):
            odd_bridge("mute", timeout=SHORT)

    def test_a_bridge_that_is_not_there(self):
        with self.assertRaises(FileNotFoundError):
            Bridge(str(HERE / "no such program"))

    def test_a_bridge_that_ends(self):
        for kind in ("ends", "ends_in_a_line"):
            with self.subTest(kind), odd_bridge(kind) as bridge:
                with self.assertRaises(Ended):
                    bridge.ask("status")
                with self.assertRaises(Ended):
                    bridge.ask("status")
                with self.assertRaises(Ended):
                    bridge.wait_for_change()

    def test_a_bridge_that_reads_nothing(self):
        bridge = odd_bridge("deaf")
        began = time.monotonic()
        for _ in range(3):
            with self.assertRaises(TimeoutError):
                bridge.ask("create", timeout=SHORT, notes="x" * 1_000_000)
        self.assertLess(bridge.close(timeout=SHORT), 0)
        self.assertLess(time.monotonic() - began, 30)

    def test_leaves_no_thread_behind(self):
        before = threading.active_count()
        with simulator() as bridge:
            bridge.ask("status")
        self.assertEqual(threading.active_count(), before)


unittest.main(argv=[sys.argv[0]])

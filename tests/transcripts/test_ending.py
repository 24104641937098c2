"""How a bridge ends, and what its host may do to it meanwhile."""

import contextlib
import signal
import time
import unittest

import suite

AUTH = b'{"id":1,"cmd":"auth"}'
REMINDERS = b'{"id":2,"cmd":"reminders","from":"2025-01-01","to":"2026-01-01"}'
STATUS = b'{"id":3,"cmd":"status"}'
AN_HOUR = 3_600_000


class EndOfInput(unittest.TestCase):
    def test_waits_for_access_requests(self):
        with suite.simulator({"access": {"events": {"delayMs": 400}}}) as process:
            started = time.monotonic()
            process.send(AUTH)
            lines = process.finish()
            self.assertGreaterEqual(time.monotonic() - started, 0.4)
            self.assertEqual(sum(b'"granted":true' in line for line in lines), 1, lines)

    def test_waits_for_access_requests_that_fail(self):
        scenario = {"access": {"reminders": {"delayMs": 300, "error": "No."}}}
        with suite.simulator(scenario) as process:
            process.send(b'{"cmd":"reminders-auth"}')
            self.assertIn(b'{"error":"No."}\n', process.finish())

    def test_does_not_wait_for_queries(self):
        with suite.simulator({"fetch": {"completed": {"delayMs": AN_HOUR}}}) as process:
            process.send(REMINDERS)
            process.send(STATUS)
            lines = process.finish()
            self.assertFalse([line for line in lines if b"reminders" in line], lines)
            self.assertTrue([line for line in lines if b"fullAccess" in line], lines)

    def test_does_not_wait_for_later_changes(self):
        with suite.simulator({"changes": [{"afterMs": AN_HOUR}]}) as process:
            process.send(STATUS)
            self.assertFalse([line for line in process.finish() if b"changed" in line])

    def test_nobody_is_left_behind_by_a_query_and_an_access_request(self):
        scenario = {
            "access": {"events": {"delayMs": 200}},
            "fetch": {"incomplete": {"delayMs": 50}},
        }
        with suite.simulator(scenario) as process:
            process.send(AUTH)
            process.send(REMINDERS)
            lines = process.finish()
            # The query is not waited for, but the wait for the other is long enough for it.
            self.assertEqual(sum(b'"reminders":[]' in line for line in lines), 1, lines)


class Host(unittest.TestCase):
    EVENTS = b'{"id":7,"cmd":"events","from":"2025-01-01","to":"2026-01-01"}\n'

    def assert_answers_all(self, process, count):
        """More answers than a pipe holds, read only after all was asked, and none is lost."""
        process.send_bytes(self.EVENTS * count)  # some kilobytes: the pipe takes them at once
        process.start_reading()
        answers = [process.read_reply() for _ in range(count)]
        self.assertGreater(sum(map(len, answers)), 2 * 65536)
        self.assertEqual(len(set(answers)), 1)
        process.finish()

    def test_that_stops_reading(self):
        with suite.simulator("office.json", reading=False) as process:
            self.assert_answers_all(process, 300)

    def test_that_uses_non_blocking_pipes(self):
        with suite.simulator("office.json", reading=False, blocking=False) as process:
            self.assert_answers_all(process, 300)

    def test_that_stops_reading_while_changes_come(self):
        with suite.simulator({"changes": [{"count": 20_000}]}, reading=False) as process:
            process.send(STATUS)
            process.start_reading()
            lines = [process.read_line() for _ in range(20_002)]
            self.assertEqual(lines.count(b'{"event":"changed"}\n'), 20_000)
            process.finish()

    def test_that_stops_reading_and_ends_the_input(self):
        """What was asked before the end is answered, though nobody has read yet."""
        with suite.simulator("office.json", reading=False) as process:
            process.send_bytes(self.EVENTS * 100)
            process.end_input()
            process.start_reading()
            lines = process.finish()
            self.assertEqual(sum(b'"events":' in line for line in lines), 100)

    def test_that_vanishes_between_requests(self):
        with suite.simulator(reading=False) as process:
            process.send(STATUS)
            process.end_input()
            process.close_output()
            self.assertEqual(process.wait(), 0)

    def test_that_closes_the_output(self):
        with suite.simulator(reading=False) as process:
            process.close_output()
            with contextlib.suppress(BrokenPipeError):
                for _ in range(100_000):
                    process.send(STATUS)
            self.assertEqual(process.wait(), 0)

    def test_that_closes_the_output_while_it_is_written(self):
        with suite.simulator("office.json", reading=False) as process:
            process.send_bytes(self.EVENTS * 300)  # the answers do not fit in the pipe
            process.close_output()
            self.assertEqual(process.wait(), 0)

    def test_that_closes_the_output_while_changes_come(self):
        scenario = {"changes": [{"afterMs": 50, "count": 1000}]}
        with suite.simulator(scenario, reading=False) as process:
            process.close_output()
            self.assertEqual(process.wait(), 0)

    def test_that_vanishes_with_an_access_request_pending(self):
        scenario = {"access": {"events": {"delayMs": 200}}}
        with suite.simulator(scenario, reading=False) as process:
            process.send(AUTH)
            process.end_input()
            process.close_output()
            self.assertEqual(process.wait(), 0)

    def test_that_terminates_it(self):
        with suite.simulator() as process:
            process.read_line()
            process.interrupt(signal.SIGTERM)
            self.assertEqual(process.wait(), -signal.SIGTERM)


class BrokenPromises(unittest.TestCase):
    """A store that gives a calendar without a source, or an item without a calendar, is not served
    from: the process ends at once, without an answer and without a word."""

    def assert_stops(self, scenario, request):
        with suite.simulator(scenario) as process:
            self.assertIn(b"ready", process.read_line())
            process.send(request)
            self.assertLess(process.wait(), 0)
            self.assertEqual(process.finish(process.wait()), [])

    def test_calendar_without_a_source(self):
        self.assert_stops({"calendars": [{"id": "c", "title": "C"}]}, b'{"id":1,"cmd":"calendars"}')

    def test_list_without_a_source(self):
        scenario = {"calendars": [{"id": "c", "title": "C", "type": 1}]}
        self.assert_stops(scenario, b'{"id":1,"cmd":"reminder-lists"}')

    def test_calendars_that_cannot_be_ordered(self):
        scenario = {
            "sources": [{"id": "s", "title": "S"}],
            "calendars": [{"id": "c", "source": "s"}, {"id": "d"}],
        }
        self.assert_stops(scenario, b'{"id":1,"cmd":"calendars"}')

    def test_event_without_a_calendar(self):
        event = {"id": "e", "title": "E", "start": "2025-03-03T10:00:00Z"}
        self.assert_stops(
            {"events": [event]}, b'{"id":1,"cmd":"events","from":"2025-03-03","to":"2025-03-04"}'
        )
        self.assert_stops({"events": [event]}, b'{"id":1,"cmd":"update","eventId":"e"}')

    def test_reminder_without_a_list(self):
        reminder = {"id": "r", "due": {"year": 2025, "month": 3, "day": 3}}
        for command in ("update", "complete", "delete"):
            self.assert_stops(
                {"reminders": [reminder]},
                f'{{"id":1,"cmd":"reminder-{command}","reminderId":"r"}}'.encode(),
            )
        self.assert_stops(
            {"reminders": [reminder]},
            b'{"id":1,"cmd":"reminders","from":"2025-03-03","to":"2025-03-04"}',
        )

    def test_one_calendar_without_a_source_is_found_by_its_identifier(self):
        """A look-up compares nothing but identifiers: the record is what needs the source."""
        with suite.simulator({"calendars": [{"id": "c", "title": "C"}]}) as process:
            reply = process.ask(
                b'{"cmd":"create","start":"2025-03-03T10:00:00Z","calendarId":"d"}'
            )
            self.assertEqual(reply, '{"error":"no calendar to write to"}')
            process.finish()


if __name__ == "__main__":
    suite.main()

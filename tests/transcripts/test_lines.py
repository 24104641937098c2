"""Lines in and lines out, byte for byte."""

import unittest

import suite
from bridge import parse_output

STATUS = b'{"id":1,"cmd":"status"}'
OFFICE_TITLE = "Büro/日本 😀"


def reply_bytes(value):
    """The two orders in which the keys of a status reply may stand."""
    return (
        b'{"id":' + value + b',"status":"fullAccess"}\n',
        b'{"status":"fullAccess","id":' + value + b"}\n",
    )


class Output(unittest.TestCase):
    def test_ready_line(self):
        with suite.simulator() as process:
            self.assertIn(
                process.read_line(),
                (
                    b'{"event":"ready","status":"fullAccess"}\n',
                    b'{"status":"fullAccess","event":"ready"}\n',
                ),
            )
            self.assertEqual(process.finish(), [])

    def test_changed_line(self):
        with suite.simulator({"changes": [{}]}) as process:
            self.assertEqual(
                sorted([process.read_line(), process.read_line()])[0], b'{"event":"changed"}\n'
            )
            process.finish()

    def test_compact_with_escaped_slashes_and_raw_unicode(self):
        scenario = {
            "sources": [{"id": "s", "title": 'A "b" \\ /'}],
            "calendars": [{"id": "a/b", "title": OFFICE_TITLE, "source": "s"}],
        }
        with suite.simulator(scenario) as process:
            line = process.ask('{"cmd":"calendars"}')
            self.assertIn(r'"id":"a\/b"', line)
            self.assertIn(r'"title":"Büro\/日本 😀"', line)
            self.assertIn(r'"source":"A \"b\" \\ \/"', line)
            self.assertTrue(line.startswith('{"calendars":[{"') and line.endswith("}]}"), line)
            self.assertNotIn('": ', line)
            process.finish()

    def test_control_characters_are_escaped(self):
        with suite.simulator() as process:
            line = process.ask(r'{"id":"\u0000\u0001\b\t\n\f\r\u001f\u007f\u2028","cmd":"status"}')
            self.assertEqual(parse_output(line.encode() + b"\n")["id"],
                             "\0\1\b\t\n\f\r\x1f\x7f\u2028")
            self.assertFalse([c for c in line if ord(c) < 0x20], line)
            process.finish()

    def test_escapes_of_the_request_become_characters(self):
        with suite.simulator() as process:
            line = process.ask(r'{"id":"\u00e9\ud83d\ude00\/","cmd":"status"}')
            self.assertIn('"id":"é😀\\/"', line)
            process.finish()

    def test_each_line_is_there_before_the_next_request(self):
        with suite.simulator() as process:
            for _ in range(100):
                self.assertIn(process.ask(STATUS).encode() + b"\n", reply_bytes(b"1"))
            process.finish()


class Ids(unittest.TestCase):
    def test_numbers_come_back_digit_for_digit(self):
        numbers = [
            b"0", b"-0", b"7", b"9007199254740993", b"-9007199254740993", b"1.50", b"1e3", b"1E+3",
            b"1.0", b"0.1000000000000000055511151231257827", b"12345678901234567890",
            b"18446744073709551616", b"-99999999999999999999", b"1e-400", b"2.5e-5", b"9" * 300,
        ]
        with suite.simulator() as process:
            for number in numbers:
                reply = process.ask(b'{"cmd":"status","id":' + number + b"}")
                self.assertIn(reply.encode() + b"\n", reply_bytes(number))
            process.finish()

    def test_numbers_inside_of_ids(self):
        with suite.simulator() as process:
            value = b'{"n":[9007199254740993,1.50,{"e":1e3}],"t":true,"x":null}'
            reply = process.ask(b'{"cmd":"status","id":' + value + b"}")
            self.assertIn(reply.encode() + b"\n", reply_bytes(value))
            process.finish()

    def test_number_that_no_double_can_hold(self):
        with suite.simulator() as process:
            self.assertEqual(process.ask(b'{"id":1e999,"cmd":"status"}'), '{"error":"bad JSON"}')
            self.assertIn(process.ask(STATUS).encode() + b"\n", reply_bytes(b"1"))
            process.finish()

    def test_a_million_characters(self):
        with suite.simulator() as process:
            value = b'"' + b"x" * 1_000_000 + b'"'
            reply = process.ask(b'{"cmd":"status","id":' + value + b"}")
            self.assertIn(reply.encode() + b"\n", reply_bytes(value))
            process.finish()


class Input(unittest.TestCase):
    def assert_answers(self, data, expected):
        """What `data` is answered with when the input ends behind it, but for the ready line."""
        with suite.simulator() as process:
            ready = process.read_line()
            self.assertIn(b"ready", ready)
            process.send_bytes(data)
            self.assertEqual(process.finish(), expected)

    def assert_status(self, data, count=1):
        with suite.simulator() as process:
            process.read_line()
            process.send_bytes(data)
            lines = process.finish()
            self.assertEqual(len(lines), count, lines)
            for line in lines:
                self.assertIn(line, reply_bytes(b"1"))

    def assert_bad_then_served(self, data):
        with suite.simulator() as process:
            process.send(data)
            self.assertEqual(process.read_reply(), b'{"error":"bad JSON"}\n')
            self.assertIn(process.ask(STATUS).encode() + b"\n", reply_bytes(b"1"))
            self.assertEqual([line for line in process.finish() if b"ready" not in line], [])

    def test_no_input_at_all(self):
        with suite.simulator() as process:
            lines = process.finish()  # the ready line may be missing then
            self.assertTrue(all(b'"ready"' in line for line in lines) and len(lines) <= 1, lines)

    def test_blank_lines_are_passed_over(self):
        self.assert_status(b"\n\n  \n\t\n \t \r\n\xc2\xa0\xe3\x80\x80\n" + STATUS + b"\n \n")

    def test_blanks_around_a_request(self):
        self.assert_status(b" \t\xc2\xa0" + STATUS + b"\xe2\x80\xaf\xe3\x80\x80 \t\n")

    def test_other_control_characters_are_no_blanks(self):
        self.assert_answers(b"\x0b\n\x0c" + STATUS + b"\n", [b'{"error":"bad JSON"}\n'] * 2)

    def test_carriage_return_and_line_feed(self):
        self.assert_status(STATUS + b"\r\n" + STATUS + b"\n\r\n" + STATUS + b"\r\n", count=3)

    def test_last_line_without_a_line_feed(self):
        self.assert_status(STATUS)
        self.assert_status(STATUS + b"\r\n" + STATUS, count=2)

    def test_request_in_pieces(self):
        with suite.simulator() as process:
            for byte in STATUS:
                process.send_bytes(bytes([byte]))
            process.send_bytes(b"\n")
            self.assertIn(process.read_reply(), reply_bytes(b"1"))
            process.finish()

    def test_many_requests_in_one_piece(self):
        self.assert_status((STATUS + b"\n") * 5000, count=5000)

    def test_bytes_that_are_not_utf8(self):
        self.assert_bad_then_served(b"\xff\xfe")
        self.assert_bad_then_served(b'{"id":"\xff","cmd":"status"}')
        self.assert_bad_then_served(b'{"id":"\xc3","cmd":"status"}')
        self.assert_bad_then_served(b'{"id":"\xc0\xaf","cmd":"status"}')
        self.assert_bad_then_served(b'{"id":"\xed\xa0\x80","cmd":"status"}')
        self.assert_bad_then_served(b'{"id":"\xf4\x90\x80\x80","cmd":"status"}')

    def test_zero_bytes(self):
        self.assert_bad_then_served(STATUS + b"\0")
        self.assert_bad_then_served(b"\0")
        self.assert_bad_then_served(b'{"id":"a\0b","cmd":"status"}')

    def test_raw_control_character_in_a_string(self):
        self.assert_bad_then_served(b'{"id":"a\tb","cmd":"status"}')

    def test_deep_nesting(self):
        self.assert_bad_then_served(b"[" * 10_000_000)
        self.assert_bad_then_served(b'{"id":' * 1_000_000)
        self.assert_bad_then_served(b'{"cmd":"status","id":' + b"[" * 513 + b"]" * 513 + b"}")

    def test_nesting_that_a_host_may_use(self):
        value = b"[" * 500 + b"]" * 500
        with suite.simulator() as process:
            reply = process.ask(b'{"cmd":"status","id":' + value + b"}")
            self.assertIn(reply.encode() + b"\n", reply_bytes(value))
            process.finish()

    def test_lines_of_five_megabytes(self):
        self.assert_bad_then_served(b"x" * 5_000_000)
        self.assert_status(b'{"id":1,"cmd":"status","pad":"' + b"x" * 5_000_000 + b'"}\n')
        self.assert_status(b" " * 5_000_000 + STATUS + b"\n")

    def test_an_unknown_command_of_five_megabytes(self):
        with suite.simulator() as process:
            name = "y" * 5_000_000
            reply = process.ask(f'{{"cmd":"{name}"}}')
            self.assertTrue(reply == f'{{"error":"unknown command: {name}"}}', reply[:100])
            process.finish()


if __name__ == "__main__":
    suite.main()

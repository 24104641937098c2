"""Every message of the protocol, byte for byte: hosts tell them apart by their text."""

import unittest

import suite

START = '"start":"2025-03-03T10:00:00Z"'
OFFICE = "office.json"
SOURCE = {"sources": [{"id": "s", "title": "S"}]}
EVENTS_DENIED = {"status": {"events": 2}}
REMINDERS_DENIED = {"status": {"reminders": 1}}

# What the scenario is, the request, the message.
MESSAGES = [
    ({}, "nonsense", "bad JSON"),
    ({}, '{"cmd":"nonsense"}', "unknown command: nonsense"),
    ({}, "{}", "unknown command: none"),
    ({"access": {"events": {"error": "Ask later."}}}, '{"cmd":"auth"}', "Ask later."),
    ({"access": {"reminders": {"error": "No."}}}, '{"cmd":"reminders-auth"}', "No."),
    (EVENTS_DENIED, '{"cmd":"calendars"}', "no calendar access: denied"),
    (EVENTS_DENIED, '{"cmd":"events"}', "no calendar access: denied"),
    (EVENTS_DENIED, '{"cmd":"create"}', "no calendar access: denied"),
    (EVENTS_DENIED, '{"cmd":"update"}', "no calendar access: denied"),
    (EVENTS_DENIED, '{"cmd":"delete"}', "no calendar access: denied"),
    ({"status": {"events": 0}}, '{"cmd":"calendars"}', "no calendar access: notDetermined"),
    ({"status": {"events": 4}}, '{"cmd":"calendars"}', "no calendar access: writeOnly"),
    ({"status": {"events": 5}}, '{"cmd":"calendars"}', "no calendar access: unknown"),
    (REMINDERS_DENIED, '{"cmd":"reminder-lists"}', "no reminders access: restricted"),
    (REMINDERS_DENIED, '{"cmd":"reminders"}', "no reminders access: restricted"),
    (REMINDERS_DENIED, '{"cmd":"reminder-create"}', "no reminders access: restricted"),
    (REMINDERS_DENIED, '{"cmd":"reminder-update"}', "no reminders access: restricted"),
    (REMINDERS_DENIED, '{"cmd":"reminder-complete"}', "no reminders access: restricted"),
    (REMINDERS_DENIED, '{"cmd":"reminder-delete"}', "no reminders access: restricted"),
    (OFFICE, '{"cmd":"events"}', "events needs `from` and `to`"),
    (OFFICE, '{"cmd":"events","from":"2025-03-03"}', "events needs `from` and `to`"),
    (OFFICE, '{"cmd":"create"}', "create needs `start`"),
    ({}, '{"cmd":"create",' + START + "}", "no calendar to write to"),
    (OFFICE, '{"cmd":"create","calendarId":"a/b",' + START + "}", r"unknown calendar: a\/b"),
    (
        OFFICE,
        '{"cmd":"create","calendarId":"birthdays",' + START + "}",
        "calendar is read-only: Birthdays",
    ),
    (
        OFFICE,
        '{"cmd":"create","end":"2025-03-03T09:00:00Z",' + START + "}",
        "The start date must be before the end date.",
    ),
    (
        {"fail": {"saveEvent": "Full."}, **SOURCE, "calendars": [{"id": "c", "source": "s"}]},
        '{"cmd":"create","calendarId":"c",' + START + "}",
        "Full.",
    ),
    (OFFICE, '{"cmd":"update"}', "update needs `eventId`"),
    (OFFICE, '{"cmd":"update","eventId":"x"}', "event not found: x"),
    (OFFICE, '{"cmd":"update","eventId":"birthday"}', "calendar is read-only: Birthdays"),
    (OFFICE, '{"cmd":"update","eventId":"lunch","calendarId":"é"}', "unknown calendar: é"),
    (
        OFFICE,
        '{"cmd":"update","eventId":"lunch","calendarId":"birthdays"}',
        "calendar is read-only: Birthdays",
    ),
    (OFFICE, '{"cmd":"delete"}', "delete needs `eventId`"),
    (OFFICE, '{"cmd":"delete","eventId":""}', "event not found: "),
    (OFFICE, '{"cmd":"delete","eventId":"birthday"}', "The calendar is read-only."),
    (OFFICE, '{"cmd":"reminders"}', "reminders needs `from` and `to`"),
    (OFFICE, '{"cmd":"reminders","to":"2025-03-03"}', "reminders needs `from` and `to`"),
    ({}, '{"cmd":"reminder-create"}', "no reminders list to write to"),
    (OFFICE, '{"cmd":"reminder-create","listId":"x"}', "unknown list: x"),
    (OFFICE, '{"cmd":"reminder-create","listId":"shared"}', "list is read-only: Shared"),
    (OFFICE, '{"cmd":"reminder-update"}', "needs `reminderId`"),
    (OFFICE, '{"cmd":"reminder-complete"}', "needs `reminderId`"),
    (OFFICE, '{"cmd":"reminder-delete"}', "needs `reminderId`"),
    (OFFICE, '{"cmd":"reminder-update","reminderId":"x"}', "reminder not found: x"),
    (OFFICE, '{"cmd":"reminder-complete","reminderId":"x"}', "reminder not found: x"),
    (OFFICE, '{"cmd":"reminder-delete","reminderId":"x"}', "reminder not found: x"),
    (OFFICE, '{"cmd":"reminder-update","reminderId":"rules"}', "list is read-only: Shared"),
    (OFFICE, '{"cmd":"reminder-complete","reminderId":"rules"}', "list is read-only: Shared"),
    (OFFICE, '{"cmd":"reminder-delete","reminderId":"rules"}', "list is read-only: Shared"),
    (OFFICE, '{"cmd":"reminder-update","reminderId":"milk","listId":"x"}', "unknown list: x"),
    (
        OFFICE,
        '{"cmd":"reminder-update","reminderId":"milk","listId":"shared"}',
        "list is read-only: Shared",
    ),
]


class Messages(unittest.TestCase):
    def test_every_message(self):
        for scenario, request, message in MESSAGES:
            with self.subTest(request=request), suite.simulator(scenario) as process:
                self.assertEqual(process.ask(request), f'{{"error":"{message}"}}')
                process.finish()

    def test_message_beside_an_id(self):
        with suite.simulator() as process:
            self.assertIn(
                process.ask('{"id":7,"cmd":"update"}'),
                (
                    '{"id":7,"error":"update needs `eventId`"}',
                    '{"error":"update needs `eventId`","id":7}',
                ),
            )
            process.finish()


if __name__ == "__main__":
    suite.main()

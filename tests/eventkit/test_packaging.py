"""What macOS asks of the program beside its code: test_packaging.py PACKAGING_FOLDER"""

import pathlib
import plistlib
import re
import sys
import unittest

FOLDER = pathlib.Path(sys.argv.pop(1))


class Packaging(unittest.TestCase):
    def test_information_has_what_a_permission_needs(self):
        text = (FOLDER / "Info.plist.in").read_text("utf-8")
        information = plistlib.loads(text.encode())
        for key in ["NSCalendarsFullAccessUsageDescription", "NSRemindersFullAccessUsageDescription"]:
            self.assertRegex(information[key], r"^[A-Z].*\.$")
        self.assertEqual(information["CFBundleExecutable"], "tidemark-cal")
        # What is left for CMake to fill in, no more and no less.
        self.assertEqual(
            set(re.findall(r"@(\w+)@", text)),
            {"TIDEMARK_BUNDLE_IDENTIFIER", "PROJECT_VERSION", "CMAKE_OSX_DEPLOYMENT_TARGET"})

    def test_entitlements_are_one(self):
        entitlements = plistlib.loads((FOLDER / "tidemark-cal.entitlements").read_bytes())
        self.assertEqual(entitlements, {"com.apple.security.personal-information.calendars": True})


unittest.main(argv=[sys.argv[0]])

"""Runs the commands of docs/sync.md against a server on loopback. Usage: sync_page_test.py PATH_OF_TIDEMARK_CAL"""

import json
import re
import shutil
import sys
import unittest

from people import ROOT, blocks_of, caldav_server, homes, make_calendar, skip_without


class SyncPage(unittest.TestCase):
    def test_commands(self):
        with caldav_server() as url, homes("home", server_url=url) as [home]:
            make_calendar(url, "kids", "Kids", "#F57C00FF")
            make_calendar(url, "tasks", "Tasks", component="VTODO")
            outputs = [home.run(commands) for _, commands in blocks_of("docs/sync.md", "sh")]
            self.assertEqual(len(outputs), 5)
            answers = [json.loads(line) for line in outputs[2].splitlines()]
            # The list is none of the calendars, since the page's commands say that it is for reminders.
            [calendar] = next(answer["calendars"] for answer in answers if "id" in answer)
            self.assertEqual((calendar["id"], calendar["title"], calendar["source"], calendar["color"]),
                             ("family/kids", "Kids", "family", "#F57C00"))

    def test_packages_have_the_programs(self):
        page = (ROOT / "docs/sync.md").read_text(encoding="utf-8")
        packages = re.search(r"^sudo apt install (.*)$", page, re.MULTILINE)[1].split()
        self.assertEqual([name for name in packages if not shutil.which(name)], [])


skip_without("vdirsyncer", "khal", "todoman", "radicale")
unittest.main(argv=[sys.argv[0]])

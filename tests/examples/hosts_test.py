"""Runs the example hosts in Python and Node. Usage: hosts_test.py PATH_OF_TIDEMARK_CAL PATH_OF_THE_SIMULATOR"""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent.parent / "examples"
BRIDGE, SIMULATOR = sys.argv[1:]
NODE = shutil.which("node")
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8", "TZ": "Asia/Tokyo"}
REMINDER = """\
[ ] Order cake, Groceries, due the day that begins at 2026-03-26T23:00:00Z
[x] Order cake, Groceries, due the day that begins at 2026-03-26T23:00:00Z
refused: reminder not found: no such reminder
"""


def hosts(name):
    yield [sys.executable, EXAMPLES / f"python/{name}.py", "--bridge"]
    if NODE:
        yield [NODE, EXAMPLES / f"node/{name}.mjs"]


class Hosts(unittest.TestCase):
    def run_host(self, *command):
        result = subprocess.run(command, capture_output=True, env=ENVIRONMENT, encoding="utf-8", timeout=120)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout

    def test_reminder(self):
        for host in hosts("reminder"):
            with self.subTest(host[1].name):
                self.assertEqual(self.run_host(*host, BRIDGE), REMINDER)

    @unittest.skipUnless(NODE, "no node")
    def test_agenda_in_node(self):
        self.maxDiff = None
        expected = (HERE / "agenda_node.txt").read_text(encoding="utf-8")
        self.assertEqual(self.run_host(NODE, EXAMPLES / "node/agenda.mjs", BRIDGE), expected)

    def test_watch_prints_anew_after_each_burst(self):
        for host in hosts("watch"):
            with self.subTest(host[1].name), subprocess.Popen(
                    [*host, SIMULATOR, EXAMPLES / "scenarios/burst_of_changes.json"], stdout=subprocess.PIPE,
                    stderr=subprocess.PIPE, env=ENVIRONMENT, encoding="utf-8") as process:
                # At the start and after bursts, of which a slow machine may see the first two as one.
                pages = [process.stdout.readline() for _ in range(3)]
                self.assertEqual(pages, ["0 events in 7 days\n"] * 3)
                process.send_signal(signal.SIGINT)
                rest, errors = process.communicate(timeout=60)
                self.assertEqual((errors, process.returncode), ("", 0))
                # It may meet a burst in its middle, but never prints change by change.
                self.assertLess(rest.count("events in"), 10)

    def test_watch_tells_why_it_may_not(self):
        for host in hosts("watch"):
            with self.subTest(host[1].name):
                printed = self.run_host(*host, SIMULATOR, EXAMPLES / "scenarios/permission_denied.json")
                self.assertIn("no calendar access: denied", printed)

    def test_watch_ends_with_the_bridge(self):
        for host in hosts("watch"):
            with self.subTest(host[1].name):
                # Ready, and gone at the first request.
                printed = self.run_host(*host, sys.executable, HERE / "odd_bridge.py", "ends")
                self.assertIn("the bridge has ended", printed)


unittest.main(argv=[sys.argv[0]])

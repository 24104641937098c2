"""The relaunch as it really runs: test_relaunch.py PROBE PROBE_WITHOUT_THE_PRIVATE_FUNCTION"""

import os
import signal
import subprocess
import sys
import unittest

PROBE, WITHOUT = sys.argv.pop(1), sys.argv.pop(1)
DEADLINE = 60
DESKTOP, FLAG = "TIDEMARK_DESKTOP", "TIDEMARK_CAL_DISCLAIMED"


def environment(variables):
    kept = {name: value for name, value in os.environ.items() if name not in (DESKTOP, FLAG)}
    return {**kept, **variables}


class Run:
    """One process that was started and has ended."""

    def __init__(self, *arguments, program=PROBE, text=b"", **variables):
        self._process = subprocess.Popen(
            [program, *arguments], env=environment(variables),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.started = self._process.pid
        try:
            self.output, self.errors = self._process.communicate(text, DEADLINE)
        finally:
            self._process.kill()
        self.status = self._process.returncode

    def told(self, thing):
        lines = [line.split(" ", 1) for line in self.output.decode().split("\n") if " " in line]
        return [value for name, value in lines if name == thing]


class Relaunch(unittest.TestCase):
    def assert_relaunched(self, run):
        self.assertNotEqual(run.told("process"), [str(run.started)])
        self.assertEqual(run.told("parent"), [str(run.started)])
        self.assertEqual(run.told("disclaimed"), ["1"])
        self.assertEqual(run.told("flag"), ["1"])
        self.assertEqual((run.status, run.errors), (0, b""))

    def assert_served_by_itself(self, run, flag):
        self.assertEqual(run.told("process"), [str(run.started)])
        self.assertEqual(run.told("disclaimed"), ["0"])
        self.assertEqual(run.told("flag"), [flag])
        self.assertEqual((run.status, run.errors), (0, b""))

    def test_the_child_is_disclaimed_and_alone_speaks(self):
        self.assert_relaunched(Run("report"))

    def test_only_the_exact_value_says_that_the_desktop_is_the_host(self):
        self.assert_served_by_itself(Run("report", TIDEMARK_DESKTOP="1"), flag="(none)")
        for value in ["", "0", "true", "yes", "11", " 1", "1 ", "01"]:
            with self.subTest(value=value):
                self.assert_relaunched(Run("report", TIDEMARK_DESKTOP=value))

    def test_the_flag_stops_the_loop_whatever_its_value(self):
        for value in ["1", "0", "", "no"]:
            with self.subTest(value=value):
                run = Run("report", TIDEMARK_CAL_DISCLAIMED=value)
                self.assert_served_by_itself(run, flag=value)

    def test_without_the_private_function_nothing_is_changed(self):
        self.assert_served_by_itself(Run("report", program=WITHOUT), flag="(none)")

    def test_exit_status_passes_on(self):
        for status in [0, 1, 3, 255]:
            with self.subTest(status=status):
                self.assertEqual(Run("exit", str(status)).status, status)

    def test_a_signal_becomes_status_one(self):
        for number in [signal.SIGKILL, signal.SIGTERM, signal.SIGUSR1]:
            with self.subTest(signal=number):
                run = Run("signal", str(int(number)))
                self.assertEqual((run.status, run.output), (1, b""))

    def test_standard_input_reaches_the_child_whole(self):
        text = b"".join(b"%d \xff\x00\n" % number for number in range(200_000))
        run = Run("copy", text=text)
        self.assertTrue(run.output == text)  # a difference would be long to print
        self.assertEqual(run.status, 0)

    def test_arguments_reach_the_child_as_they_are(self):
        arguments = ["report", "", "two words", "-x", "ü", "\"'\\*"]
        run = Run(*arguments)
        self.assertEqual(run.told("argument"), [PROBE, *arguments])
        self.assert_relaunched(run)


unittest.main(argv=[sys.argv[0]])

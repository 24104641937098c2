"""A bridge process under test: starting it, talking to it and ending it, all with deadlines.

Used by the transcripts and by the byte-exact tests. Python's standard library only.
"""

import json
import os
import queue
import re
import subprocess
import tempfile
import threading
import time

# Long enough for a sanitizer's build on a busy machine; a test that passes never waits for it.
DEADLINE = float(os.environ.get("TRANSCRIPT_DEADLINE", "30"))


class Number(str):
    """A JSON number as it was written, so that 1.50 and 1.5 differ, and 1 and true too."""


def parse_json(text):
    def members(pairs):
        names = [name for name, _ in pairs]
        if len(set(names)) != len(names):
            raise AssertionError(f"a key stands twice: {text!r}")
        return dict(pairs)

    return json.loads(text, parse_int=Number, parse_float=Number, object_pairs_hook=members)


def parse_output(line):
    """What one line of output says, once its form is right: one compact object, slashes escaped."""
    assert line.endswith(b"\n"), f"the last line is not whole: {line!r}"
    text = line[:-1].decode("utf-8")  # strict: other bytes fail the test
    assert not re.search(r"(?<!\\)/", text), f"a slash stands without a backslash: {text!r}"
    value = parse_json(text)
    assert isinstance(value, dict), f"not an object: {text!r}"
    return value


def clean_environment(home, **variables):
    """Nothing of the user's own, but what the sanitizers and the loader are told."""
    environment = {
        name: value
        for name, value in os.environ.items()
        if name.endswith("_OPTIONS") or name in ("PATH", "LD_LIBRARY_PATH")
    }
    environment.update(HOME=home, XDG_DATA_HOME=os.path.join(home, "data"), TZ="UTC")
    environment.update(variables)
    return environment


class Bridge:
    """One process. Use it as a context manager: on leaving, the process is gone whatever happened.

    With reading=False nothing is read before start_reading(); with blocking=False its ends of the
    pipes are non-blocking, as some hosts' are.
    """

    def __init__(self, command, environment=None, reading=True, blocking=True):
        self._home = tempfile.TemporaryDirectory(prefix="tidemark-home-")
        its_input, self._input = os.pipe()
        self._output, its_output = os.pipe()
        os.set_blocking(its_input, blocking)
        os.set_blocking(its_output, blocking)
        self._process = subprocess.Popen(
            command,
            stdin=its_input,
            stdout=its_output,
            stderr=subprocess.PIPE,
            env=clean_environment(self._home.name, **(environment or {})),
        )
        os.close(its_input)
        os.close(its_output)
        self._lines = queue.Queue()
        self._error_output = b""
        self._readers = [threading.Thread(target=self._read_error_output, daemon=True)]
        self._readers[0].start()
        if reading:
            self.start_reading()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self.end_input()
        for reader in self._readers:
            reader.join(DEADLINE)
        self.close_output()
        self._process.stderr.close()
        self._home.cleanup()

    def start_reading(self):
        self._readers.append(threading.Thread(target=self._read_lines, daemon=True))
        self._readers[-1].start()

    def close_output(self):
        """Reads no more; only for a process whose output is not being read, or has ended."""
        if self._output is not None:
            os.close(self._output)
            self._output = None

    def interrupt(self, signal):
        self._process.send_signal(signal)

    def send(self, line):
        """Writes a line and its line feed."""
        self.send_bytes(line.encode("utf-8") if isinstance(line, str) else line)
        self.send_bytes(b"\n")

    def send_bytes(self, data):
        view = memoryview(data)
        while view:
            view = view[os.write(self._input, view):]

    def end_input(self):
        if self._input is not None:
            os.close(self._input)
            self._input = None

    def read_line(self, deadline=DEADLINE):
        """The next line with its line feed; None once the output has ended."""
        try:
            return self._lines.get(timeout=deadline)
        except queue.Empty:
            raise AssertionError(f"no line within {deadline} seconds") from None

    def read_reply(self, deadline=DEADLINE):
        """The next line that is no notice; a reply may hold an event, a notice holds the name of one."""
        while True:
            line = self.read_line(deadline)
            if line is None:
                raise AssertionError("the output ended before the reply")
            if not line.startswith(b'{"event":"'):
                return line

    def ask(self, request):
        """Sends one request and gives the reply, as text without its line feed."""
        self.send(request)
        return self.read_reply()[:-1].decode("utf-8")

    def wait(self, deadline=DEADLINE):
        """The exit status; negative for a signal."""
        try:
            return self._process.wait(deadline)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"still running after {deadline} seconds") from None

    def finish(self, status=0):
        """Ends the input; the process must end with that status and without a word of complaint.

        Gives the lines that nobody has read.
        """
        self.end_input()
        actual = self.wait()
        for reader in self._readers:
            reader.join(DEADLINE)
        assert self._error_output == b"", f"on standard error: {self._error_output!r}"
        assert actual == status, f"exit status {actual}, not {status}"
        return self.unread_lines()

    def unread_lines(self):
        lines = []
        while not self._lines.empty():
            line = self._lines.get()
            if line is not None:
                lines.append(line)
        return lines

    def _read_lines(self):
        with open(self._output, "rb", closefd=False) as output:
            for line in output:
                self._lines.put(line)
        self._lines.put(None)

    def _read_error_output(self):
        self._error_output = self._process.stderr.read()


class Deadline:
    """The time that is left until a moment which is fixed now."""

    def __init__(self, seconds=DEADLINE):
        self._end = time.monotonic() + seconds

    def left(self):
        return max(0.0, self._end - time.monotonic())

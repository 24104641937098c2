"""A client of tidemark-cal for any host in Python: copy this file. It needs the standard library alone.

    with Bridge() as bridge:
        week = bridge.ask("events", from_="2026-03-23", to="2026-03-30")["events"]

Every method may be called from any thread.
"""

import concurrent.futures
import contextlib
import itertools
import json
import os
import queue
import subprocess
import threading


class Refused(Exception):
    """The bridge answered with an error; its text is for the user, or for whoever wrote the request."""


class Ended(Exception):
    """The bridge has ended, so there is no answer. What became of a change that was asked for is not known."""


class Bridge:
    """The process at the other end of two pipes.

    A thread of its own reads all the time, or the bridge would one day wait for the host while the host waits for the
    bridge; another one writes, so that a bridge which reads nothing cannot hold up who asks.
    """

    def __init__(self, program="tidemark-cal", *arguments, environment=None, timeout=30, trace=None):
        """Starts the bridge and waits for its ready line, at most timeout seconds. That is the default of ask() too.

        environment: variables that differ from the host's. trace: called with ">" or "<" and each line, as bytes.
        """
        self._timeout = timeout
        self._trace = trace or (lambda direction, line: None)
        self._ids = itertools.count(1)
        self._waiting = {}  # futures by id, guarded by the lock
        self._has_ended = False  # likewise
        self._lock = threading.Lock()
        self._ready = concurrent.futures.Future()
        self._changed = threading.Event()
        self._outgoing = queue.Queue(maxsize=1000)
        self._process = subprocess.Popen(
            [program, *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            # A desktop application adds TIDEMARK_DESKTOP=1; for others the bridge asks for the permission itself.
            env={**os.environ, **(environment or {})})
        self._threads = [threading.Thread(target=work, daemon=True) for work in (self._read, self._write)]
        for thread in self._threads:
            thread.start()
        try:
            self.status = self._result(self._ready, timeout, "the ready line")
        except BaseException:
            self._process.kill()
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def ask(self, command, timeout=..., **fields):
        """Sends one request and gives its answer, a dictionary.

        A field that Python has a keyword for is written with an underscore at its end: from_. timeout: in seconds; None
        waits for ever, which suits "auth", where a user thinks. Raises Refused, Ended, TimeoutError, or ValueError for
        fields that no JSON can hold, such as half a surrogate pair.
        """
        identifier = next(self._ids)
        request = {"id": identifier, "cmd": command, **{name.rstrip("_"): value for name, value in fields.items()}}
        # Strict: the bridge could only answer "bad JSON", without an id, and nobody would know to what.
        line = json.dumps(request, ensure_ascii=False, allow_nan=False).encode("utf-8")
        timeout = self._timeout if timeout is ... else timeout
        answer = concurrent.futures.Future()
        with self._lock:
            if self._has_ended:
                raise Ended("the bridge has ended")
            self._waiting[identifier] = answer
        try:
            self._outgoing.put(line, timeout=timeout)
            value = self._result(answer, timeout, f"the answer to {command}")
        except queue.Full:
            raise TimeoutError(f"the bridge reads nothing: {command}") from None
        finally:
            # An answer that comes later than this is passed over.
            with self._lock:
                self._waiting.pop(identifier, None)
        if "error" in value:
            raise Refused(value["error"])
        return value

    def wait_for_change(self, timeout=None):
        """Whether the store changed since the last call, waiting up to timeout seconds for it. Many changes count as one."""
        if not self._changed.wait(timeout):
            return False
        self._changed.clear()
        with self._lock:
            if self._has_ended:
                self._changed.set()
                raise Ended("the bridge has ended")
        return True

    def close(self, timeout=5):
        """Ends the bridge by ending its input, and gives its exit status. One that has not ended by itself is killed."""
        try:
            self._outgoing.put(None, timeout=timeout)
            self._process.wait(timeout)
        except (queue.Full, subprocess.TimeoutExpired):
            self._process.kill()
        for thread in self._threads:
            thread.join(timeout)
        return self._process.wait()

    @staticmethod
    def _result(future, timeout, what):
        try:
            return future.result(timeout)
        except concurrent.futures.TimeoutError:
            raise TimeoutError(f"{what} did not come within {timeout} seconds") from None

    def _read(self):
        try:
            # As bytes, which end at line feeds alone: text would be parted at other separators too.
            with self._process.stdout as output:
                for line in output:
                    if line.endswith(b"\n"):  # else the bridge was killed while it wrote
                        self._trace("<", line[:-1])
                        self._take(json.loads(line))
        finally:
            with self._lock:
                self._has_ended = True
                waiting = [self._ready, *self._waiting.values()]
            for future in waiting:
                if not future.done():
                    future.set_exception(Ended("the bridge has ended"))
            self._changed.set()
            with contextlib.suppress(queue.Full):  # with a full queue the writer finds out by itself
                self._outgoing.put_nowait(None)

    def _take(self, line):
        if line.get("event") == "ready":
            self._ready.set_result(line["status"])
        elif line.get("event") == "changed":
            self._changed.set()
        else:
            with self._lock:
                answer = self._waiting.get(line.get("id"))
            if answer is not None:
                answer.set_result(line)

    def _write(self):
        with contextlib.suppress(OSError), self._process.stdin as bridge_input:  # its end is the reader's to tell
            while (line := self._outgoing.get()) is not None:
                self._trace(">", line)
                bridge_input.write(line + b"\n")
                bridge_input.flush()

"""Has an independent parser (libical) read what was written."""

import os
import subprocess


class Reader:
    """Takes the program calendar_complaints. Each file is read once, and again when it changed."""

    def __init__(self, program):
        self._process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._seen = {}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.communicate()

    def complaints(self, root):
        """The files of the collections below the root that libical complains about."""
        return [path for path in self._changed_files(root) if self._ask(path) != 0]

    def _changed_files(self, root):
        for collection in os.scandir(root):
            for entry in os.scandir(collection):
                if entry.name.startswith(".") or not entry.name.endswith(".ics"):
                    continue
                status = entry.stat()
                state = (status.st_ino, status.st_mtime_ns, status.st_ctime_ns, status.st_size)
                if self._seen.get(entry.path) != state:
                    self._seen[entry.path] = state
                    yield entry.path

    def _ask(self, path):
        self._process.stdin.write(path + "\n")
        self._process.stdin.flush()
        return int(self._process.stdout.readline())

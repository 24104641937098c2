"""What the tests with other programs share: a home of one's own, those programs, and a CalDAV server on loopback."""

import base64
import contextlib
import os
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "examples/python"))
from bridge import Bridge  # noqa: E402

PROGRAM = sys.argv[1]
DEADLINE = 60
SERVER = "https://dav.example.net/"  # as docs/sync.md has it
USER, PASSWORD = "family", "a secret"


def skip_without(*programs):
    missing = [name for name in programs if not shutil.which(name)]
    if missing:
        print("skipped: not installed:", ", ".join(missing))
        sys.exit(77)


def blocks_of(page, kind):
    """The fenced blocks of that kind in a document, with the path in the line above when there is one."""
    text = (ROOT / page).read_text(encoding="utf-8")
    return re.findall(rf"(?:^`(~/[^`]+)`:\n\n)?^```{kind}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


class Home:
    """One machine of one user, set up as docs/sync.md says."""

    def __init__(self, directory, server_url, time_zone="Europe/Berlin"):
        self.path = pathlib.Path(directory)
        self.calendars = self.path / ".local/share/calendars"
        tools = self.path / "bin"
        tools.mkdir(parents=True)
        (tools / "tidemark-cal").symlink_to(pathlib.Path(PROGRAM).resolve())
        (tools / "pass").write_text(f"#!/bin/sh\n[ \"$*\" = 'show dav.example.net' ] && echo '{PASSWORD}'\n")
        (tools / "pass").chmod(0o755)
        self.environment = {"HOME": f"{self.path}", "PATH": f"{tools}:/usr/bin:/bin", "TZ": time_zone, "LC_ALL": "C.UTF-8",
                            "TIDEMARK_DESKTOP": "1"}
        for kind in ("ini", "python"):
            for path, text in blocks_of("docs/sync.md", kind):
                file = self.path / path.removeprefix("~/")
                file.parent.mkdir(parents=True)
                file.write_text(text.replace(SERVER, server_url), encoding="utf-8")

    def run(self, *command, succeeds=True):
        """What the program says; a shell runs a single text."""
        result = subprocess.run(command if len(command) > 1 else ["sh", "-euc", command[0]], env=self.environment,
                                cwd=self.path, capture_output=True, encoding="utf-8", timeout=DEADLINE)
        assert (result.returncode == 0) == succeeds, f"{command}: {result.returncode}\n{result.stdout}{result.stderr}"
        return result.stdout

    def bridge(self, **changes):
        return Bridge(PROGRAM, environment={**clear_of_the_user(), **self.environment, **changes})

    def set_up(self):
        """Step 3 of the page, without what asks the bridge."""
        self.run(blocks_of("docs/sync.md", "sh")[0][1])

    def sync(self, **options):
        return self.run("vdirsyncer", "sync", **options)

    def files(self):
        return sorted(self.calendars.rglob("*.ics"))


def clear_of_the_user():
    """Empty values for variables that would lead to the user's own calendars."""
    return {name: "" for name in os.environ if name.startswith("XDG_")}


@contextlib.contextmanager
def caldav_server():
    """The address of a server with nothing on it."""
    with tempfile.TemporaryDirectory(prefix="tidemark-server-") as scratch:
        folder = pathlib.Path(scratch)
        (folder / "users").write_text(f"{USER}:{PASSWORD}\n")
        with socket.create_server(("127.0.0.1", 0)) as probe:
            address = probe.getsockname()
        (folder / "config").write_text(
            f"[server]\nhosts = {address[0]}:{address[1]}\n"
            f"[auth]\ntype = htpasswd\nhtpasswd_filename = {folder}/users\nhtpasswd_encryption = plain\n"
            f"[storage]\nfilesystem_folder = {folder}/collections\n")
        with open(folder / "log", "w+", encoding="utf-8") as log:
            server = subprocess.Popen(["radicale", "--config", f"{folder}/config"], stdout=log, stderr=log)
            try:
                wait_for_server(server, address, folder / "log")
                yield f"http://{address[0]}:{address[1]}/"
            finally:
                server.terminate()
                server.wait(DEADLINE)


MAKE_CALENDAR = """<?xml version="1.0" encoding="utf-8"?>
<C:mkcalendar xmlns="DAV:" xmlns:C="urn:ietf:params:xml:ns:caldav" xmlns:I="http://apple.com/ns/ical/"><set><prop>
  <displayname>{title}</displayname><I:calendar-color>{color}</I:calendar-color>
  <C:supported-calendar-component-set><C:comp name="{component}"/></C:supported-calendar-component-set>
</prop></set></C:mkcalendar>"""


def make_calendar(server_url, name, title, color="#336699FF", component="VEVENT"):
    """As a phone or the server's own page makes one."""
    login = base64.b64encode(f"{USER}:{PASSWORD}".encode()).decode()
    body = MAKE_CALENDAR.format(title=title, color=color, component=component).encode()
    request = urllib.request.Request(f"{server_url}{USER}/{name}/", body, method="MKCALENDAR", headers={
        "Authorization": f"Basic {login}", "Content-Type": "application/xml"})
    with urllib.request.urlopen(request, timeout=DEADLINE) as answer:
        assert answer.status == 201, answer.status


def wait_for_server(server, address, log):
    end = time.monotonic() + DEADLINE
    while True:
        try:
            return socket.create_connection(address, timeout=1).close()
        except OSError:
            if server.poll() is not None or time.monotonic() > end:
                raise AssertionError(f"no server:\n{log.read_text()}") from None
            time.sleep(0.05)


@contextlib.contextmanager
def homes(*names, server_url=SERVER):
    with tempfile.TemporaryDirectory(prefix="tidemark-homes-") as scratch:
        yield [Home(pathlib.Path(scratch, name), server_url) for name in names]

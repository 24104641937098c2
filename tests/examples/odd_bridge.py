"""Stands in for a bridge that goes wrong. Usage: odd_bridge.py KIND"""

import json
import sys
import time


def say(line):
    print(json.dumps(line), flush=True)


def requests():
    return map(json.loads, sys.stdin)


def mute():
    """Never ready."""
    sys.stdin.read()


def deaf():
    """Ready, and then it neither reads nor ends."""
    say({"event": "ready", "status": "fullAccess"})
    time.sleep(600)


def ends():
    """Ends at the first request."""
    say({"event": "ready", "status": "fullAccess"})
    sys.stdin.readline()


def ends_in_a_line():
    say({"event": "ready", "status": "fullAccess"})
    sys.stdin.readline()
    print('{"id":1,"status":"fullA', end="", flush=True)


def backwards():
    """Answers in pairs, the later request first."""
    say({"event": "ready", "status": "fullAccess"})
    for first, second in zip(it := requests(), it):
        say({"id": second["id"], "cmd": second["cmd"]})
        say({"id": first["id"], "cmd": first["cmd"]})


def forgetful():
    """Answers the first request only after the second one, with a notice and an answer to nothing in between."""
    say({"event": "ready", "status": "fullAccess"})
    first, second = next(requests()), next(requests())
    say({"event": "changed"})
    say({"id": first["id"], "late": True})
    say({"id": 1000000, "status": "fullAccess"})
    say({"id": second["id"], "status": "denied"})
    sys.stdin.read()


globals()[sys.argv[1]]()

"""Lists a week of a store with khal, twice: khal builds an index first. Prints both times in seconds.

Usage: khal_week.py ROOT SCRATCH LONGEST, which is how many seconds khal may take for one of them.
"""

import pathlib
import shutil
import subprocess
import sys
import time

root, scratch = map(pathlib.Path, sys.argv[1:3])
shutil.rmtree(scratch, ignore_errors=True)
scratch.mkdir(parents=True)
(scratch / "config").write_text(f"""\
[calendars]
[[own]]
path = {root}/*
type = discover
[[account]]
path = {root}/account/*
type = discover
[sqlite]
path = {scratch}/index
[locale]
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
""", encoding="utf-8")

for _ in range(2):
    began = time.monotonic()
    subprocess.run(["khal", "-c", scratch / "config", "list", "2025-06-09", "7d"], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=float(sys.argv[3]))
    print(time.monotonic() - began, flush=True)

#!/usr/bin/env python3
"""Runs `measure`, and draws what it prints, time against store size, as SVG.

plots.py SCRATCH MEASURE [ARGUMENT...]

Beside the bridge stand the limits that `measure` names and, where they are installed, other programs that answer the
same question from the same store: khal, and ical.js in Node. They are timed once, after everything else.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import time

UNITS = {"us": 1e-6, "ms": 1e-3}
LONGEST = 300  # seconds, after which another program is not waited for
TICKS = ", ".join(f"'{number} {unit}' {number * size:g}" for unit, size in [("µs", 1e-6), ("ms", 1e-3)]
                  for number in (1, 10, 100)) + ", '1 s' 1, '10 s' 10, '100 s' 100"

COLORS = ["#3b6ea5", "#c2571a", "#4b8b3b", "#8a4fa3", "#b8860b"]

# File, title, and the lines: what is drawn, which row, and whether its own figure or its limit.
PLOTS = [
    ("first-answer", "The events of a week, from the start of the process", [
        ("tidemark-cal", "first answer (week), wall", "measured"),
        ("finding and reading all files", "first answer (week), wall", "limit"),
        ("libical, parsing alone", "libical", "measured"),
        ("ical.js", "ical.js", "measured"),
        ("khal, first run", "khal, first run", "measured"),
        ("khal, with its index", "khal, with its index", "measured"),
    ]),
    ("warm-answers", "Answers of a running process", [
        ("a year", "year, warm", "measured"),
        ("echo of that size", "year, warm", "limit"),
        ("a week", "week, warm", "measured"),
        ("echo of that size", "week, warm", "limit"),
        ("a week right after a change", "week right after a change", "measured"),
        ("status", "status round trip", "measured"),
        ("echo", "status round trip", "limit"),
    ]),
    ("changes", "Changes, on disk before they are answered", [
        ("create", "create", "measured"),
        ("update", "update", "measured"),
        ("a durable write", "update", "limit"),
        ("update of one occurrence", "update of one occurrence", "measured"),
        ("delete", "delete", "measured"),
    ]),
]


def read_rows(lines):
    """{(row, "measured" or "limit"): {items: seconds}} of the rows that are times; every line goes on to the output."""
    rows = {}
    for line in lines:
        print(line, end="", flush=True)
        name, *columns = re.split(r"  +", line.strip())
        if columns and columns[0].isdigit():
            times = re.findall(r"([\d.]+) (us|ms)", " ".join(columns[1:3]))
            for which, (number, unit) in zip(("measured", "limit"), times):
                rows.setdefault((name, which), {})[int(columns[0])] = float(number) * UNITS[unit]
    # A program beside the bridge rather than a limit of it.
    rows[("libical", "measured")] = rows.get(("first answer, CPU against libical's parse", "limit"), {})
    return rows


def ical_js():
    """The folder that Node's package is in, or None."""
    npm = shutil.which("npm")
    places = [pathlib.Path.cwd() / "node_modules", pathlib.Path("/usr/share/nodejs")]
    if npm:
        places.append(pathlib.Path(subprocess.run([npm, "root", "-g"], capture_output=True, text=True).stdout.strip()))
    return next((place / "ical.js" for place in places if (place / "ical.js").exists()), None)


def output_of(*command, timeout=None):
    """What the program prints; None when it fails or takes too long."""
    try:
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              timeout=timeout).stdout
    except (subprocess.TimeoutExpired, subprocess.CalledProcessError) as reason:
        print(f"left out: {' '.join(command)}: {type(reason).__name__}", flush=True)
        return None


def add_row(rows, name, items, seconds):
    print(f"{name:42} {items:7} {seconds * 1e3:9.2f} ms", flush=True)
    rows.setdefault((name, "measured"), {})[items] = seconds


def time_others(scratch, others, rows):
    package = ical_js() if shutil.which("node") else None
    for items in sorted(rows[("first answer (week), wall", "measured")]):
        root = scratch / f"store-{items}" / "calendars"
        if package:
            began = time.monotonic()
            if output_of("node", str(others / "ical_js_week.mjs"), str(package), str(root), timeout=LONGEST):
                add_row(rows, "ical.js", items, time.monotonic() - began)
        if shutil.which("khal"):
            times = output_of(sys.executable, str(others / "khal_week.py"), str(root), str(scratch / "khal"), f"{LONGEST}")
            for row, seconds in zip(("khal, first run", "khal, with its index"), (times or "").split()):
                add_row(rows, row, items, float(seconds))


def draw(path, title, lines, rows):
    drawn = [(label, which, sorted(rows[(row, which)].items())) for label, row, which in lines if (row, which) in rows]
    blocks = "\n".join(f"$p{number} << EOD\n" + "\n".join(f"{items} {seconds:g}" for items, seconds in points) + "\nEOD"
                       for number, (_, _, points) in enumerate(drawn))
    # A limit is dashed, and has the colour of what stands before it.
    curves, color = [], 0
    for number, (label, which, _) in enumerate(drawn):
        color += which == "measured"
        dashes = "" if which == "measured" else "dashtype 2 "
        curves.append(f"$p{number} using 1:2 with linespoints linewidth 2 pointtype 7 pointsize 0.5 {dashes}"
                      f"linecolor rgb '{COLORS[color - 1]}' title \"{label}\"")
    script = f"""
        set terminal svg size 860,420 noenhanced background '#ffffff' font 'sans-serif,14'
        set output '{path}'
        set title "{title}"
        set logscale xy
        set xrange [700:150000]
        set xlabel 'items in the store'
        set xtics ('1,000' 1000, '10,000' 10000, '100,000' 100000)
        set ytics ({TICKS})
        set grid linecolor rgb '#dddddd'
        set key outside right center Left reverse
        """ + f"\n{blocks}\nplot " + ", ".join(curves) + "\n"
    subprocess.run(["gnuplot"], input=script, check=True, text=True)
    print(f"drawn: {path}", flush=True)


def main():
    scratch, *measure = sys.argv[1:]
    scratch = pathlib.Path(scratch)
    with subprocess.Popen(measure, stdout=subprocess.PIPE, text=True) as process:
        rows = read_rows(process.stdout)
    if process.returncode != 0:
        sys.exit(process.returncode)
    if not shutil.which("gnuplot"):
        print("no gnuplot, so nothing is drawn")
        return
    time_others(scratch, pathlib.Path(__file__).with_name("others"), rows)
    for name, title, lines in PLOTS:
        draw(scratch / f"{name}.svg", title, lines, rows)


main()

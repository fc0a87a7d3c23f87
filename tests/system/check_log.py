#!/usr/bin/env python3
"""Reads a log file of the dash as an analysis tool would, with the csv module.

Usage: check_log.py FILE [NAME=TEXT ...]

Checks every row after the five header lines: 154 fields, a time stamp of the dash's
form, 20 ms between rows, and for each NAME (a column name of the header) the TEXT
in every row. Prints the number of rows; exits 1 with the faults found.
"""
import csv
import re
import statistics
import sys

STAMP = re.compile(r"^2000-01-(\d\d)::(\d\d):(\d\d):(\d\d)\.(\d{3})$")


def stamp_ms(text):
    m = STAMP.match(text)
    if not m:
        return None
    day, hours, minutes, seconds, ms = (int(g) for g in m.groups())
    return (((day - 1) * 24 + hours) * 60 + minutes) * 60000 + seconds * 1000 + ms


def main():
    with open(sys.argv[1], newline="") as f:
        lines = list(csv.reader(f))
    names = lines[1]
    faults = []
    expected = {}
    for arg in sys.argv[2:]:
        name, text = arg.split("=", 1)
        if name not in names:
            faults.append(f"no column {name}")
        else:
            expected[names.index(name)] = text
    rows = lines[5:]
    times = []
    for number, row in enumerate(rows, 6):
        if len(row) != 154:
            faults.append(f"line {number}: {len(row)} fields")
            continue
        times.append(stamp_ms(row[0]))
        if times[-1] is None:
            faults.append(f"line {number}: time stamp {row[0]!r}")
        for column, text in expected.items():
            if row[column] != text:
                faults.append(f"line {number}: {names[column]} is {row[column]!r}, not {text!r}")
    gaps = [b - a for a, b in zip(times, times[1:]) if a is not None and b is not None]
    # A tick can come late on a busy machine and the next one early, but the rows keep
    # the task's period, and two never come in one tick.
    if not gaps or abs(statistics.median(gaps) - 20) > 1 or min(gaps) < 5:
        faults.append(f"gaps between rows: {sorted(gaps)[:3]} ... median {gaps and statistics.median(gaps)}")
    if gaps:
        print(f"{len(rows)} rows, {min(gaps)} to {max(gaps)} ms apart, median {statistics.median(gaps)}")
    for fault in faults[:20]:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

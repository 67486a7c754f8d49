#!/usr/bin/env python3
"""Whether two builds send the same: compares logs of the risk server byte by byte, but for what
differs from run to run.

Usage: compare_logs.py BEFORE AFTER

Both are logs (demo_host JOURNEY --log FILE), or folders of logs that are compared by name. Identifiers
and times are masked: within a call each identifier gets a number, so that where one stands twice still
counts. Calls run beside each other, so their order in the log says nothing and is left out; the order of
keys counts. Prints each call that only one side has; exits with 1 if there is any, with 2 if there is
nothing to compare.
"""

import difflib
import re
import sys
from pathlib import Path

UUID = r"[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}"

# Sessions (a UUID and a number), UUIDs, the server's device identifiers, signed verdicts.
IDENTIFIER = re.compile(
    rf"{UUID}(?:-\d+)?|\bdevice-[0-9a-f]{{32}}\b|\beyJ[\w-]+\.[\w-]+\.[\w-]+"
)

MASKS = [
    # Milliseconds since 1970 until the year 2033, the same as text, ports, threads.
    (re.compile(r"\b1\d{12}\b"), "<time>"),
    (re.compile(r"\b\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z"), "<time>"),
    (re.compile(r"(?<=\b127\.0\.0\.1:)\d+|(?<=\blocalhost:)\d+"), "<port>"),
    (re.compile(r"\bthread \d+\b"), "thread <number>"),
    # Frames of a call stack: where a program lies, and where its code is.
    (re.compile(r"(?:/[\w.+-]+)*/(?=[\w.+-]+\([^()\s]*\)\[)"), ""),
    (re.compile(r"\+0x[0-9a-f]+|\b0x[0-9a-f]+"), "<address>"),
]


def masked(line):
    """A call as it would stand in every run."""
    numbers = {}

    def number(match):
        return f"<identifier {numbers.setdefault(match.group(0), len(numbers) + 1)}>"

    line = IDENTIFIER.sub(number, line)
    for pattern, mask in MASKS:
        line = pattern.sub(mask, line)
    return line


def calls(path):
    lines = path.read_text(encoding="utf-8").splitlines()
    return sorted(masked(line) for line in lines if line.strip())


def differences(before, after):
    """The calls that only one log has, as lines that begin with "-" or "+"."""
    lines = difflib.unified_diff(calls(before), calls(after), lineterm="", n=0)
    return [line for line in lines if not line.startswith(("---", "+++", "@@"))]


def pairs(before, after):
    """(name, log before, log after); a log that is missing is None."""
    if before.is_file() and after.is_file():
        return [(after.name, before, after)]
    sides = [{path.name: path for path in side.glob("*.jsonl")} for side in (before, after)]
    return [(name, *(side.get(name) for side in sides)) for name in sorted(sides[0] | sides[1])]


def main(arguments):
    if len(arguments) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    compared, differing = 0, 0
    for name, before, after in pairs(*map(Path, arguments)):
        if before is None or after is None:
            found = [f"only {'after' if before is None else 'before'}"]
        else:
            found = differences(before, after)
            compared += len(calls(after))
        differing += 1 if found else 0
        for line in found:
            print(f"{name}: {line}")
    print(f"{compared} calls compared, {differing} logs differ")
    if differing:
        return 1
    return 0 if compared else 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

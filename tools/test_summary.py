#!/usr/bin/env python3
"""The last line of a test run: 'N passed, N failed, N skipped', from ctest's JUnit file.

Usage: test_summary.py FILE [--strict]

A test that could not be started has failed; one that is disabled counts as skipped. Exits with 1
when a test failed. With --strict also when one was skipped, or when there was none at all.
"""

import sys
import xml.etree.ElementTree as ElementTree


def outcome(case):
    """passed, failed or skipped, for one <testcase>."""
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    status = case.get("status", "")
    if status == "disabled" or (case.find("skipped") is not None and not not_started(case)):
        return "skipped"
    return "passed" if status == "run" else "failed"


def not_started(case):
    """Whether ctest calls a test skipped that it had no executable for."""
    message = case.find("skipped").get("message", "")
    return message.startswith(("Unable to find executable", "Bad command", "Failed to start"))


def summary(path):
    """The (test name, outcome) pairs of a JUnit file."""
    cases = ElementTree.parse(path).getroot().iter("testcase")
    return [(case.get("name", "?"), outcome(case)) for case in cases]


def main(arguments):
    strict = "--strict" in arguments
    paths = [argument for argument in arguments if argument != "--strict"]
    if len(paths) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        outcomes = summary(paths[0])
    except (OSError, ElementTree.ParseError) as error:
        print(f"no result of the tests: {error}", file=sys.stderr)
        return 1
    counts = {kind: 0 for kind in ("passed", "failed", "skipped")}
    for name, kind in outcomes:
        counts[kind] += 1
        if kind == "skipped":
            print(f"skipped: {name}")
    print(", ".join(f"{count} {kind}" for kind, count in counts.items()))
    if strict and not outcomes:
        print("no tests at all", file=sys.stderr)
        return 1
    if strict and counts["skipped"]:
        print("a skipped test is an error here", file=sys.stderr)
        return 1
    return 1 if counts["failed"] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

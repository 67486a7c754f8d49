#!/usr/bin/env python3
"""Times from a fault to the end of its process: the library's capture against a plain handler that
makes the same writes and syncs. Aim: at most twice the plain one.

usage: crash_benchmark.py CRASH_CHILD [ROUNDS]

CRASH_CHILD is build/plain/test/crash_child. The kinds take turns, so that a machine which changes its
speed changes it for all.
"""

import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

BASE = ("null_write", "plain_handler")
KINDS = [
    BASE,
    ("null_write", "captured"),
    ("abort", "captured"),
    ("abort_inside_malloc", "beside_a_thread"),
]
# The child notes two 64-bit numbers: allocator calls, and the time of its fault.
NOTES = struct.Struct("<Qq")


def milliseconds_to_end(child, kind):
    folder = Path(tempfile.mkdtemp(prefix="crash-benchmark-"))
    try:
        (folder / "data").mkdir()
        notes = folder / "notes"
        notes.write_bytes(bytes(NOTES.size))
        subprocess.run(
            [child, *kind, folder / "data", notes],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            check=False,
        )
        end = time.monotonic_ns()
        return (end - NOTES.unpack(notes.read_bytes())[1]) / 1e6
    finally:
        shutil.rmtree(folder)


def main(arguments):
    if len(arguments) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    rounds = int(arguments[2]) if len(arguments) == 3 else 40
    times = {kind: [] for kind in KINDS}
    for _ in range(rounds):
        for kind in KINDS:
            times[kind].append(milliseconds_to_end(arguments[1], kind))
    base = statistics.median(times[BASE])
    for kind in KINDS:
        median = statistics.median(times[kind])
        print(f"{' '.join(kind):36} median {median:5.2f} ms, {median / base:4.2f} x the plain handler")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))

#!/usr/bin/env python3
"""What a host without its user's consent asks of the kernel, and what an erasure leaves.

Usage: consent_test.py CONSENT_CHILD RISK_SERVER
"""

import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

WRITES = re.compile(r"O_WRONLY|O_RDWR|O_CREAT|^\d+\s+(mkdir|rename|unlink|link|symlink|chmod|fchmod)")
CALLS = "openat,open,creat,mkdir,mkdirat,rename,renameat,renameat2,unlink,unlinkat,socket,connect"
TIMEOUT = 60


def fail(text: str) -> None:
    sys.exit(f"consent_test: {text}")


def traced(child: str, mode: str, folder: Path, url: str) -> list[str]:
    """The calls that write files or make sockets."""
    log = folder.parent / f"{mode}.strace"
    command = ["strace", "-f", "-qq", "-e", f"trace={CALLS}", "-o", str(log)]
    command += [child, mode, str(folder), url]
    said = subprocess.run(command, capture_output=True, text=True, timeout=TIMEOUT, check=True)
    if mode == "off" and said.stdout != "undefined\n":
        fail(f"without consent the verdict was {said.stdout!r}")
    lines = log.read_text().splitlines()
    return [line for line in lines if "socket(" in line or WRITES.search(line)]


def main() -> None:
    child, server = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as name, subprocess.Popen(
        [server, "--port", "0", "--console-port", "off"], stdout=subprocess.PIPE, text=True
    ) as running:
        url = running.stdout.readline().split()[-1]
        data = Path(name) / "data"
        if shutil.which("strace"):
            if calls := traced(child, "off", data, url):
                fail("without consent it did " + "\n".join(calls))
            if data.exists():
                fail("without consent there is a data folder")
            # The same eyes see what a host with consent does.
            if not any("socket(" in call for call in traced(child, "on", data, url)):
                fail("no socket was seen with consent")
        said = subprocess.run(
            [child, "erase", str(data), url], capture_output=True, text=True, timeout=TIMEOUT, check=True
        )
        if not said.stdout.endswith("erased\n") or said.stdout.startswith("undefined"):
            fail(f"the erasing host said {said.stdout!r}")
        if left := [entry.name for entry in data.iterdir()]:
            fail(f"erased, and left {left}")
        running.terminate()


main()

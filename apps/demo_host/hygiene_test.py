#!/usr/bin/env python3
"""What the demo leaves behind when a signal ends it, and what it says of a useless data folder.

Usage: hygiene_test.py DEMO_HOST RISK_SERVER JOURNEYS
"""

import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

TIMEOUT = 30.0


def wait_until(what: str, is_done) -> None:
    deadline = time.monotonic() + TIMEOUT
    while not is_done():
        if time.monotonic() > deadline:
            sys.exit(f"hygiene_test: {what}")
        time.sleep(0.02)


def heed_signals() -> None:
    """Who runs the tests in the background may have them ignore some."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)


def processes_of(program: Path) -> list[str]:
    """The command lines that begin with the program, which has a name of this run's own."""
    found = []
    for folder in Path("/proc").glob("[0-9]*"):
        try:
            words = (folder / "cmdline").read_bytes().split(b"\0")
        except OSError:
            continue  # it has ended
        if words[0] == os.fsencode(program):
            found.append(folder.name)
    return found


def check_signal(number: signal.Signals, demo: str, server: str, journey: Path) -> None:
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        temporary = folder / "tmp"
        temporary.mkdir()
        own_server = folder / "server"
        own_server.symlink_to(server)
        command = [demo, str(journey), "--risk-server", str(own_server)]
        command += ["--report", str(folder / "report.html")]
        with subprocess.Popen(
            command,
            env=os.environ | {"TMPDIR": str(temporary)},
            stdout=subprocess.PIPE,
            text=True,
            start_new_session=True,
            preexec_fn=heed_signals,
        ) as process:
            for line in process.stdout:
                if line.startswith("session"):
                    break
            is_used = len(list(temporary.iterdir())) == 2 and processes_of(own_server)
            process.send_signal(number)
        if not is_used or process.returncode != -number:
            sys.exit(f"hygiene_test: {number.name}: used {is_used}, ended {process.returncode}")
        wait_until(f"{number.name} left files", lambda: not list(temporary.iterdir()))
        wait_until(f"{number.name} left a server", lambda: not processes_of(own_server))


def check_unusable(folder: str, demo: str, server: str, journey: Path) -> None:
    command = [demo, str(journey), "--risk-server", server, "--data-folder", folder]
    result = subprocess.run(command, capture_output=True, text=True, timeout=TIMEOUT, check=False)
    told = f"demo_host: --data-folder: {folder}: "
    if result.returncode != 2 or not result.stderr.startswith(told) or result.stdout:
        sys.exit(f"hygiene_test: {folder}: status {result.returncode}, {result.stderr!r}")


def main() -> None:
    demo, server = (os.path.abspath(program) for program in sys.argv[1:3])
    journey = Path(sys.argv[3]) / "banking_day.json"
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
        check_signal(number, demo, server, journey)
    for folder in (__file__, f"{__file__}/below", "/proc/nowhere"):
        check_unusable(folder, demo, server, journey)


main()

#!/usr/bin/env python3
"""play.py QT_BANK RISK_SERVER [OPTIONS OF QT_BANK]: the bank against a risk server of its own.

For a user, with the server's console, until the window is closed. With --script JOURNEY, or where
there is no display, the bank is driven by touches, and what the server was told of them is checked.
Ends with 0 when all came out as expected.
"""

import json
import os
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

RULES = Path(__file__).resolve().parent / "rules.json"
# Nobody listens there.
NO_SERVER = "http://127.0.0.1:1/"
MOST_SECONDS = 90
SERVER_END_SECONDS = 10

PUT_DOWN, LIFTED = 1, -1
# What the journey of a day touches and decides.
DAY_CHECKPOINTS = [
    ("LOGIN", None, "LOW", "APPROVED"),
    ("TRANSACTION", 50, "LOW", "APPROVED"),
    ("TRANSACTION", 900, "HIGH", "APPROVED"),
    ("TRANSACTION", 9000, "VERY_HIGH", "DENIED"),
    ("ADD_PAYMENT_METHOD", None, "MEDIUM", "APPROVED"),
]
# Screens in their order, with how often a finger was put down on each: two PINs; a swipe, and the way
# to the next screen; amounts, payees and "send"; two codes.
DAY_SCREENS = [
    ("PINCODE", 8),
    ("MAIN_SCREEN", 2),
    ("TRANSACTION_DETAILS", 5),
    ("MAIN_SCREEN", 1),
    ("TRANSACTION_DETAILS", 7),
    ("PINCODE", 12),
    ("MAIN_SCREEN", 1),
    ("TRANSACTION_DETAILS", 7),
    ("MAIN_SCREEN", 1),
    ("ADD_PAYMENT_SCREEN", 9),
]
RISKS = {"LOW": 0, "MEDIUM": 1, "HIGH": 2, "VERY_HIGH": 3}


def fail(reason):
    sys.exit(f"play: {reason}")


def expect(what, got, expected):
    if got != expected:
        fail(f"{what}: expected {expected}, got {got}")


class RiskServer:
    """Runs while the block does."""

    def __init__(self, program, log, has_console):
        command = [program, "--rules", RULES, "--log", log, "--port", "0"]
        command += [] if has_console else ["--console-port", "off"]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.url = self.read("risk server ready at ")
        self.console = self.read("console at ") if has_console else None

    def read(self, prefix):
        line = self.process.stdout.readline().strip()
        if not line.startswith(prefix):
            self.process.kill()
            fail(f"the risk server said {line!r}")
        return line.removeprefix(prefix)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(timeout=SERVER_END_SECONDS)


def calls_of(log):
    """(service, call) in the order in which the server took them."""
    calls = [json.loads(line) for line in log.read_text(encoding="utf-8").splitlines()]
    return [(call["path"].split("/")[-2], call) for call in calls]


def check_checkpoints(calls):
    """Each verdict was asked for with its amount, and its outcome told under its identifier."""
    outcomes = {
        call["request"]["transactionUpdate"]["requestID"]: call["request"]["transactionUpdate"]
        for service, call in calls
        if service == "UpdateTransactionResult"
    }
    asked = [call for service, call in calls if service == "GetCheckpointRisk"]
    expect("verdicts", len(asked), len(DAY_CHECKPOINTS))
    for call, (kind, amount, risk, status) in zip(asked, DAY_CHECKPOINTS):
        request = call["request"]
        expect(f"amount of {kind}", request[kind].get("amount"), amount)
        expect(f"risk of {kind} {amount}", call["risk"], RISKS[risk])
        outcome = outcomes.pop(request["keys"]["requestID"], {})
        expect(f"outcome of {kind} {amount}", outcome.get("status"), status)
    expect("further outcomes", outcomes, {})


def check_screens(calls):
    """Every finger that was put down and lifted has its row, on its screen."""
    # Calls overtake each other on the way; rows have their times.
    bodies = [
        call["request"]["bio_sensor_event_data"]
        for service, call in calls
        if service == "BiometricData"
    ]
    bodies.sort(key=lambda body: body["eventListTS"][0][0])
    down = [sum(row[4] == PUT_DOWN for row in body["eventList"]) for body in bodies]
    lifted = [sum(row[4] == LIFTED for row in body["eventList"]) for body in bodies]
    got = list(zip([body["actionType"] for body in bodies], down))
    # The privacy screen is not among them: the consent was taken back before its end.
    expect("screens and touches", got, DAY_SCREENS)
    expect("fingers lifted", lifted, down)


def check_day(calls):
    services = {service for service, _ in calls}
    for service in ("getSdkConfiguration", "GetDeviceID", "SendSessionData", "SendCheckpointEvent"):
        if service not in services:
            fail(f"the server was not asked for {service}")
    expect("refused calls", [call["fault"] for _, call in calls if "fault" in call], [])
    check_checkpoints(calls)
    check_screens(calls)


def run_bank(bank, url, options, most_seconds):
    begin = time.monotonic()
    try:
        status = subprocess.run(
            [bank, "--server", url, *options], timeout=most_seconds, check=False
        ).returncode
    except subprocess.TimeoutExpired:
        fail(f"the bank was not done after {most_seconds} s")
    return status, time.monotonic() - begin


def check_stored(folder, has_consent):
    """The answer is kept; without consent nothing else is, nor after the customer has erased it."""
    kept = (folder / "bank.ini").read_text(encoding="utf-8")
    if f"consent={str(has_consent).lower()}\n" not in kept:
        fail(f"the bank has not kept the answer, but {kept!r}")
    if not has_consent:
        expect("what is stored", sorted(path.name for path in folder.iterdir()), ["bank.ini"])


def play(bank, server_program, journey, options, folder):
    log = folder / "calls.jsonl"
    data = folder / "data"
    data.mkdir()
    options = ["--data-folder", data, *options]
    if journey == "no-server":
        status, seconds = run_bank(bank, NO_SERVER, options, MOST_SECONDS)
    else:
        with RiskServer(server_program, log, has_console=False) as server:
            status, seconds = run_bank(bank, server.url, options, MOST_SECONDS)
    expect("exit status of the bank", status, 0)
    calls = calls_of(log) if log.exists() else []
    if journey == "day":
        check_day(calls)
    elif journey != "debug":
        expect("calls", [service for service, _ in calls], [])
    check_stored(data, has_consent=journey in ("debug", "no-server"))
    print(f"played in {seconds:.1f} s, {len(calls)} calls to the server, all as expected")


def main(bank, server_program, *options):
    options = list(options)
    has_display = any(os.environ.get(name) for name in ("DISPLAY", "WAYLAND_DISPLAY"))
    with tempfile.TemporaryDirectory() as folder:
        os.environ.setdefault("XDG_RUNTIME_DIR", folder)
        if "--script" not in options and has_display:
            with RiskServer(server_program, Path(folder) / "calls.jsonl", has_console=True) as server:
                print(f"risk server        {server.url}\nconsole            {server.console}", flush=True)
                sys.exit(run_bank(bank, server.url, ["--mouse-is-finger", *options], None)[0])
        if "--script" not in options:
            options += ["--script", "day"]
        play(bank, server_program, options[options.index("--script") + 1], options, Path(folder))


def interrupt(_number, _frame):
    raise KeyboardInterrupt


if __name__ == "__main__":
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)
    try:
        main(*sys.argv[1:])
    except KeyboardInterrupt:
        sys.exit(130)

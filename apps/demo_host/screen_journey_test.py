#!/usr/bin/env python3
"""screen_journey_test.py DEMO_HOST RISK_SERVER JOURNEYS: what the server got of each screen is what
its recording holds, row by row and column by column, by a second telling of the rules."""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

FIRST_GIVEN_TAG = 59000
ACTIONS = {"began": 1, "changed": 0, "ended": -1}
COLUMNS = ("acceleration", "rotation", "gravity")


def fail(reason):
    sys.exit(f"screen_journey_test: {reason}")


def expect(what, got, expected):
    if got != expected:
        fail(f"{what}: expected {expected}, got {got}")


def view_under(x, y, view):
    """The tag of the view that a touch is on; None outside of all."""

    def holds(frame):
        return frame[0] <= x < frame[0] + frame[2] and frame[1] <= y < frame[1] + frame[3]

    given = FIRST_GIVEN_TAG
    found = None
    for subview in view.get("subviews", []):
        tag = subview.get("tag", 0)
        if tag == 0:
            tag, given = given, given + 1
        if found is None and holds(subview["frame"]):
            found = tag
    if found is None and holds(view["frame"]):
        found = view.get("tag", 0)
    return found


def rows_of(recording, columns):
    """The four lists that the screen must send; times are those of the recording."""
    touches, touch_times, motion, motion_times = [], [], [], []
    latest = None
    for time, word, *values in recording["rows"]:
        if word == "began":
            latest = {column: [0, 0, 0] for column in columns}
        if word in ACTIONS:
            x, y, force, radius = values
            touches.append([x, y, radius, force, ACTIONS[word]])
            tag = view_under(x, y, recording["view"])
            if tag is not None:
                touch_times.append([time, tag])
        if word in ("ended", "cancelled"):
            latest = None
        if latest is not None and word in latest:
            latest[word] = values
            if word == "acceleration":
                motion.append([value for column in columns for value in latest[column]])
                motion_times.append([time])
    return touches, touch_times, motion, motion_times


def check_body(name, body, recording, columns):
    data = body["bio_sensor_event_data"]
    touches, touch_times, motion, motion_times = rows_of(recording, columns)
    start = data["sensorsTS"][0][0] - motion_times[0][0]
    expect(f"{name} touches", data["eventList"], touches)
    expect(f"{name} motion", data["sensorsData"], motion)
    expect(f"{name} touch times", [[t - start, v] for t, v in data["eventListTS"]], touch_times)
    expect(f"{name} motion times", [[t - start] for (t,) in data["sensorsTS"]], motion_times)


def play(demo, server, journey, folder):
    """The server's log of a journey, as (service, body)."""
    log = Path(folder) / f"{journey.stem}.log"
    command = [demo, journey, "--risk-server", server, "--fast", "--log", log]
    status = subprocess.run(command, stdout=subprocess.DEVNULL, check=False).returncode
    expect(f"status of {journey.name}", status, 0)
    calls = [json.loads(line) for line in log.read_text(encoding="utf-8").splitlines()]
    return [(call["path"].split("/")[-2], call["request"]) for call in calls]


def check_journey(demo, server, journey, folder):
    script = json.loads(journey.read_text(encoding="utf-8"))
    columns = COLUMNS + (("magneticField",) if script["setup"].get("debug") else ())
    seen = set()
    calls = play(demo, server, journey, folder)
    events = [body["screenListenerEvent"] for path, body in calls if path == "sendScreenListenerEvent"]
    # Calls overtake each other on the way.
    events.sort(key=lambda event: (event["timestamp"], event["action"] == "END"))
    bodies = {
        body["bio_sensor_event_data"]["actionType"]: body
        for path, body in calls
        if path == "BiometricData"
    }
    screens = [step["screen"] for step in script["steps"] if "screen" in step]
    expect("screen events", len(events), 2 * len(screens))
    for screen in screens:
        label = {"screenListenerType": screen["type"], "screenId": screen["id"]}
        actions = [event["action"] for event in events if event.items() >= label.items()]
        expect(f"events of {screen['type']}", actions, ["START", "END"])
        recording = screen["recording"]
        if isinstance(recording, str):
            recording = json.loads((journey.parent / recording).read_text(encoding="utf-8"))
            body = bodies.pop(screen["type"])
            check_body(screen["type"], body, recording, columns)
            seen |= kinds_of(recording, body["bio_sensor_event_data"])
    expect("further bodies", list(bodies), [])
    return seen, calls


def check_first_record(calls, user):
    """The record of a screen goes out with the reports that a later checkpoint asks for, one after
    the other: of a short journey, some wait for the next run."""
    first = [body for path, body in calls if path == "ActivityMap" and body.get("screenId") == "3"]
    expect("activity records of the first screen", len(first), 1)
    expect("its user", first[0]["userId"], user)


def kinds_of(recording, data):
    """What this screen had of the kinds that the shipped recordings are there to show."""
    kinds = {f"{len(row)} columns" for row in data["sensorsData"]}
    if len(data["eventListTS"]) < len(data["eventList"]):
        kinds.add("a touch outside of all views")
    if any(word == "cancelled" for _, word, *_ in recording["rows"]):
        kinds.add("a cancelled press")
    return kinds


def main(demo, server, journeys):
    with tempfile.TemporaryDirectory() as folder:
        seen, calls = check_journey(demo, server, Path(journeys) / "banking_day.json", folder)
        check_first_record(calls, "alice")
        seen |= check_journey(demo, server, Path(journeys) / "screens_in_debug.json", folder)[0]
    for kind in ("9 columns", "12 columns", "a touch outside of all views", "a cancelled press"):
        if kind not in seen:
            fail(f"no recording shows {kind}")


if __name__ == "__main__":
    main(*sys.argv[1:])

#!/usr/bin/env python3
"""Runs the demo's inspection of this machine: in production, in debug mode, and where none of the
optional libraries can be opened. There a whole journey is played as well.

Usage: inspect_test.py DEMO_HOST RISK_SERVER JOURNEY
"""

import json
import os
import subprocess
import sys
import tempfile
from pathlib import Path

OPTIONAL_LIBRARIES = ["libfontconfig.so.1", "libsystemd.so.0", "libelogind.so.0", "libbasu.so.0",
                      "libgio-2.0.so.0", "libgobject-2.0.so.0", "libglib-2.0.so.0"]
DEBUG_ONLY = {
    "kindModel", "isMultitaskingSupported", "systemName", "isPortrait", "isLandscape", "isFlat",
    "orientation", "isValidInterfaceOrientation", "isBatteryMonitoringEnabled", "batteryLevel",
    "batteryState", "isProximityMonitoringEnabled", "proximityState",
    "isGeneratingDeviceOrientationNotifications",
}
ALWAYS = {
    "device_data": {"collectTime", "uuid", "storageSize", "ramSize", "model"},
    "settings_data": {"collectTime", "isEmulator", "inAppPurchase", "internetConnectType", "isJailbreak"},
    "sim_data": {"collectTime", "networkType"},
}


def inspect(demo, *arguments, **variables):
    environment = dict(os.environ, **variables)
    run = subprocess.run([demo, "--inspect", "--json", *arguments], env=environment,
                         capture_output=True, text=True, timeout=60, check=True)
    told = json.loads(run.stdout)
    for record, keys in ALWAYS.items():
        assert keys <= set(told[record]), (record, keys - set(told[record]))
    assert "installKeyboards" not in told["settings_data"]
    assert told["permissions"]["contacts"] == "notDetermined"
    for field in told["fields"]:
        assert field["source"] and field["governed_by"], field
    return told


def hide_libraries(folder):
    """Variables with which an empty file is found, and cannot be opened, in each library's place."""
    for name in OPTIONAL_LIBRARIES:
        (Path(folder) / name).touch()
    return {"LD_LIBRARY_PATH": folder}


def sessions_of(demo, server, journey, folder, **variables):
    """The sessions' bodies of a journey that must end well."""
    log = Path(folder) / "calls.log"
    log.unlink(missing_ok=True)
    subprocess.run([demo, journey, "--risk-server", server, "--fast", "--log", log],
                   env=dict(os.environ, **variables), stdout=subprocess.DEVNULL, timeout=60, check=True)
    calls = [json.loads(line) for line in log.read_text(encoding="utf-8").splitlines()]
    sessions = [call["request"] for call in calls if call["path"].endswith("/SendSessionData/")]
    assert sessions
    return sessions


def main(demo, server, journey):
    production = inspect(demo)
    assert not DEBUG_ONLY & set(production["device_data"])
    assert production["device_data"]["storageSize"] > 0
    assert production["device_data"]["fontCount"] > 0
    assert production["settings_data"]["isEmulator"] is False
    debug = inspect(demo, "--debug")
    assert {"kindModel", "systemName", "isMultitaskingSupported"} <= set(debug["device_data"])
    simulated = inspect(demo, SIMULATOR_MODEL_IDENTIFIER="Sim1,2")
    assert simulated["device_data"]["model"] == "Sim1,2"
    assert simulated["settings_data"]["isEmulator"] is True
    with tempfile.TemporaryDirectory() as folder:
        hidden = hide_libraries(folder)
        bare = inspect(demo, **hidden)
        assert "fontCount" not in bare["device_data"]
        assert "networkOperatorName" not in bare["sim_data"]
        assert bare["device_data"]["uuid"] == production["device_data"]["uuid"] or not os.path.exists("/etc/machine-id")
        with_fonts = sessions_of(demo, server, journey, folder)
        assert any("familyNames" in body["device_data"] for body in with_fonts)
        for body in sessions_of(demo, server, journey, folder, **hidden):
            assert body["device_data"]["model"] and "familyNames" not in body["device_data"]
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

#!/usr/bin/env python3
"""Runs the demo's inspection of this machine: in production, in debug mode, and where none of the
optional libraries can be opened.

Usage: inspect_test.py DEMO_HOST
"""

import glob
import json
import os
import subprocess
import sys

OPTIONAL_LIBRARIES = ["libfontconfig.so.1*", "libsystemd.so.0*", "libelogind.so.0*", "libbasu.so.0*"]
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


def inspect(command, *arguments, **variables):
    environment = dict(os.environ, **variables)
    run = subprocess.run([*command, "--inspect", "--json", *arguments], env=environment,
                         capture_output=True, text=True, timeout=60, check=True)
    told = json.loads(run.stdout)
    for record, keys in ALWAYS.items():
        assert keys <= set(told[record]), (record, keys - set(told[record]))
    assert "installKeyboards" not in told["settings_data"]
    assert told["permissions"]["contacts"] == "notDetermined"
    for field in told["fields"]:
        assert field["source"] and field["governed_by"], field
    return told


def without_libraries(demo):
    """The demo in a mount namespace where empty files stand in the libraries' places."""
    files = [os.path.realpath(path) for pattern in OPTIONAL_LIBRARIES
             for path in glob.glob("/usr/lib/*/" + pattern) + glob.glob("/lib/*/" + pattern)]
    hide = "".join(f"mount --bind /dev/null {path} && " for path in sorted(set(files)))
    return ["unshare", "--mount", "sh", "-c", hide + 'exec "$@"', "-", demo]


def main(demo):
    production = inspect([demo])
    assert not DEBUG_ONLY & set(production["device_data"])
    assert production["device_data"]["storageSize"] > 0
    assert production["device_data"]["fontCount"] > 0
    assert production["settings_data"]["isEmulator"] is False
    debug = inspect([demo], "--debug")
    assert {"kindModel", "systemName", "isMultitaskingSupported"} <= set(debug["device_data"])
    simulated = inspect([demo], SIMULATOR_MODEL_IDENTIFIER="Sim1,2")
    assert simulated["device_data"]["model"] == "Sim1,2"
    assert simulated["settings_data"]["isEmulator"] is True
    if os.geteuid() != 0:
        print("without root, no library can be hidden")
        return 77
    bare = inspect(without_libraries(demo))
    assert "fontCount" not in bare["device_data"]
    assert bare["device_data"]["uuid"] == production["device_data"]["uuid"] or not os.path.exists("/etc/machine-id")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))

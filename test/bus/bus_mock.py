#!/usr/bin/python3
"""Plays services of a Linux desktop on a private bus, for the tests.

Usage: bus_mock.py ADDRESS

Reads statements from standard input, one a line, runs each with the functions of this file at hand,
and answers it with the line "done". What a client does to a service is told by lines of its own.
"""

import sys

import dbus
import dbus.service
import dbusmock.mockobject
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

PROPERTIES = "org.freedesktop.DBus.Properties"
MODEM_MANAGER = "org.freedesktop.ModemManager1"
GEO_CLUE = "org.freedesktop.GeoClue2"
PERMISSION_STORE = "org.freedesktop.impl.portal.PermissionStore"

DBusGMainLoop(set_as_default=True)
bus = dbus.bus.BusConnection(sys.argv[1])
services = {}


def own(name, path, interface, **options):
    """Makes the service's first object and takes its name."""
    bus_name = dbus.service.BusName(name, bus, replace_existing=True, do_not_queue=True)
    mock = dbusmock.mockobject.DBusMockObject(bus_name, path, interface, {}, "/dev/null", **options)
    dbusmock.mockobject.objects[path] = mock
    services[name] = mock
    return mock


def say(line):
    print(line, flush=True)


# --- ModemManager --------------------------------------------------------------------------------


def modem_manager():
    own(MODEM_MANAGER, "/org/freedesktop/ModemManager1", MODEM_MANAGER, is_object_manager=True)


def modem(number, state, technologies, sim="/", voice=False, serving=("", "")):
    path = f"/org/freedesktop/ModemManager1/Modem/{number}"
    services[MODEM_MANAGER].AddObject(
        path,
        MODEM_MANAGER + ".Modem",
        {
            "EquipmentIdentifier": "351234567890123",
            "AccessTechnologies": dbus.UInt32(technologies),
            "State": dbus.Int32(state),
            "Sim": dbus.ObjectPath(sim),
            "Ports": dbus.Array([("wwan0", dbus.UInt32(2))], signature="(su)"),
        },
        [],
    )
    mock = dbusmock.mockobject.objects[path]
    mock.AddProperties(
        MODEM_MANAGER + ".Modem.Modem3gpp",
        {"Imei": "351234567890123", "OperatorCode": serving[0], "OperatorName": serving[1]},
    )
    if voice:
        mock.AddProperties(MODEM_MANAGER + ".Modem.Voice", {"EmergencyOnly": False})


def sim(path, code, name):
    """An object under the manager's path is in its reply; others are not."""
    services[MODEM_MANAGER].AddObject(
        path,
        MODEM_MANAGER + ".Sim",
        {"Imsi": "262011234567890", "OperatorIdentifier": code, "OperatorName": name},
        [],
    )


# --- accessibility -------------------------------------------------------------------------------


def accessibility(is_on):
    mock = own("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus")
    mock.AddProperties("org.a11y.Status", {"IsEnabled": True, "ScreenReaderEnabled": is_on})


# --- GeoClue -------------------------------------------------------------------------------------

MANAGER_PATH = "/org/freedesktop/GeoClue2/Manager"
CLIENT_PATH = "/org/freedesktop/GeoClue2/Client/1"


def client_told(verb):
    client = dbusmock.mockobject.objects[CLIENT_PATH]
    get = lambda name: client.Get(GEO_CLUE + ".Client", name)
    say(f"{verb} {get('DesktopId')} {get('RequestedAccuracyLevel')} {get('TimeThreshold')}")


def geo_clue(level):
    manager = own(GEO_CLUE, MANAGER_PATH, GEO_CLUE + ".Manager")
    manager.AddProperties(GEO_CLUE + ".Manager", {"AvailableAccuracyLevel": dbus.UInt32(level)})
    manager.AddMethod(GEO_CLUE + ".Manager", "GetClient", "", "o", f"ret = '{CLIENT_PATH}'")
    manager.AddObject(
        CLIENT_PATH,
        GEO_CLUE + ".Client",
        {
            "DesktopId": "",
            "RequestedAccuracyLevel": dbus.UInt32(0),
            "TimeThreshold": dbus.UInt32(0),
        },
        [
            ("Start", "", "", "objects[self.path].client_told('start')"),
            ("Stop", "", "", "objects[self.path].client_told('stop')"),
        ],
    )
    dbusmock.mockobject.objects[CLIENT_PATH].client_told = client_told


def accuracy_level(level):
    services[GEO_CLUE].UpdateProperties(
        GEO_CLUE + ".Manager", {"AvailableAccuracyLevel": dbus.UInt32(level)}
    )


places = 0


def place(latitude, longitude, accuracy, altitude):
    global places
    places += 1
    path = f"/org/freedesktop/GeoClue2/Location/{places}"
    told = {"Latitude": latitude, "Longitude": longitude, "Accuracy": accuracy}
    told.update({"Altitude": altitude, "Speed": -1.0, "Description": "here"})
    services[GEO_CLUE].AddObject(path, GEO_CLUE + ".Location", told, [])
    client = dbusmock.mockobject.objects[CLIENT_PATH]
    paths = [dbus.ObjectPath("/"), dbus.ObjectPath(path)]
    client.EmitSignal(GEO_CLUE + ".Client", "LocationUpdated", "oo", paths)


# --- the permission store ------------------------------------------------------------------------


def store(table, entry, application, words):
    """Answers for the user in the store that runs on the bus; the bus may start it."""
    proxy = bus.get_object(PERMISSION_STORE, "/org/freedesktop/impl/portal/PermissionStore")
    dbus.Interface(proxy, PERMISSION_STORE).SetPermission(
        table, True, entry, application, dbus.Array(words, signature="s")
    )


def forget(table, entry):
    proxy = bus.get_object(PERMISSION_STORE, "/org/freedesktop/impl/portal/PermissionStore")
    dbus.Interface(proxy, PERMISSION_STORE).Delete(table, entry)


# --- the conversation ----------------------------------------------------------------------------


def leave(name):
    """Gives the name up, as a service that ends."""
    bus.release_name(name)


def run_line(channel, _condition):
    line = channel.readline()
    if not line:
        loop.quit()
        return False
    try:
        exec(line, globals())
        say("done")
    except Exception as fault:  # whatever it is, the test is to see it
        say(f"failed: {fault!r}")
    return True


GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, run_line)
loop = GLib.MainLoop()
say("ready")
loop.run()

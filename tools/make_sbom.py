#!/usr/bin/env python3
"""Writes the bill of materials of a build, as SPDX 2.3 JSON.

Usage: make_sbom.py FILE VERSION VENDORED NAME=VERSION...

FILE is written; NAME=VERSION are the libraries that the library links, as the build found them,
tools/NAME=VERSION those that only the risk server does, and qt/NAME=VERSION those that only the
component for Qt does.
VENDORED is the list of what the risk server's console carries: lines of
"name [version] (where): licence, ...". SOURCE_DATE_EPOCH, when set, is the time that is told.
"""

import json
import os
import re
import sys
import time
import uuid
from pathlib import Path

# As SPDX spells them; of others the licence is not asserted.
LICENCES = {
    "libcurl": "curl",
    "nlohmann-json": "MIT",
    "cpp-httplib": "MIT",
    "openssl": "Apache-2.0",
    "qtbase": "LGPL-3.0-only",
    "qtdeclarative": "LGPL-3.0-only",
    "qtsensors": "LGPL-3.0-only",
}
CONSOLE_LICENCES = {"Apache License 2.0": "Apache-2.0", "MIT License": "MIT"}
HOMES = {"libcurl": "https://curl.se/libcurl/", "nlohmann-json": "https://json.nlohmann.me/"}
UNKNOWN = "NOASSERTION"


def package(name, version, licence, home=UNKNOWN):
    return {
        "SPDXID": "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name),
        "name": name,
        "versionInfo": version or UNKNOWN,
        "downloadLocation": home,
        "filesAnalyzed": False,
        "licenseConcluded": licence,
        "licenseDeclared": licence,
        "copyrightText": UNKNOWN,
    }


def vendored_packages(text):
    """The lines before the first empty one: name, perhaps a version, where, licence."""
    packages = []
    for line in text.split("\n\n", 1)[0].splitlines():
        found = re.match(r"(\S+)(?: ([0-9.]+))? \([^)]*\): (MIT License|Apache License 2\.0)", line)
        if not found:
            raise ValueError(f"not understood: {line}")
        packages.append(package(found[1], found[2], CONSOLE_LICENCES[found[3]]))
    return packages


def bill_of_materials(version, vendored, libraries, now):
    own = package("QuorvanceSDK", version, "Apache-2.0")
    linked, of_tools, of_qt = [], [], []
    for name, number in libraries:
        whose, _, name = name.rpartition("/")
        list_of = {"": linked, "tools": of_tools, "qt": of_qt}[whose]
        licence = LICENCES.get(name, UNKNOWN)
        list_of.append(package(name, number, licence, HOMES.get(name, UNKNOWN)))
    console = package("quorvance-risk-server", version, "Apache-2.0")
    component = [package("quorvance-qt", version, "Apache-2.0")] if of_qt else []
    carried = vendored_packages(vendored)

    def related(one, kind, other):
        return {
            "spdxElementId": one["SPDXID"],
            "relationshipType": kind,
            "relatedSpdxElement": other["SPDXID"],
        }

    document = {"SPDXID": "SPDXRef-DOCUMENT"}
    packages = [own, *linked, console, *of_tools, *component, *of_qt, *carried]
    identity = uuid.uuid5(uuid.NAMESPACE_URL, json.dumps(packages, sort_keys=True) + str(now))
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        **document,
        "name": f"QuorvanceSDK-{version}",
        "documentNamespace": f"https://spdx.org/spdxdocs/quorvance-{version}-{identity}",
        "creationInfo": {
            "created": time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(now)),
            "creators": ["Tool: make_sbom.py", "Organization: QuorvanceSDK"],
        },
        "packages": packages,
        "relationships": [
            related(document, "DESCRIBES", own),
            related(document, "DESCRIBES", console),
            *(related(document, "DESCRIBES", one) for one in component),
            *(related(one, "DEPENDS_ON", other) for one in component for other in [own, *of_qt]),
            *(related(own, "DEPENDS_ON", one) for one in linked),
            *(related(console, "DEPENDS_ON", one) for one in of_tools),
            *(related(console, "CONTAINS", one) for one in carried),
        ],
    }


def main(arguments):
    file, version, vendored, *libraries = arguments
    now = int(os.environ.get("SOURCE_DATE_EPOCH", time.time()))
    pairs = [library.split("=", 1) for library in libraries]
    bill = bill_of_materials(version, Path(vendored).read_text(encoding="utf-8"), pairs, now)
    Path(file).write_text(json.dumps(bill, indent=2) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(sys.argv[1:])

#!/usr/bin/env python3
"""Whether a file is a bill of materials as SPDX 2.3 asks for: sbom_test.py FILE [NAME...].

Each NAME must be in it beside what is always there."""

import json
import re
import sys

DOCUMENT = ["spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"]
PACKAGE = ["SPDXID", "name", "versionInfo", "downloadLocation", "licenseConcluded", "copyrightText"]
EXPECTED = {"QuorvanceSDK", "libcurl", "nlohmann-json", "cpp-httplib", "openssl", "uPlot", "htm"}


def main(file, *names):
    with open(file, encoding="utf-8") as stream:
        bill = json.load(stream)
    missing = [key for key in DOCUMENT if not bill.get(key)]
    assert not missing, f"the document lacks {missing}"
    assert bill["spdxVersion"] == "SPDX-2.3" and bill["dataLicense"] == "CC0-1.0"
    created = bill["creationInfo"]
    assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", created["created"]), created
    assert all(re.match("(Tool|Organization|Person): ", name) for name in created["creators"])
    identifiers = {bill["SPDXID"]}
    for package in bill["packages"]:
        missing = [key for key in PACKAGE if not package.get(key)]
        assert not missing, f"{package} lacks {missing}"
        assert re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", package["SPDXID"]), package
        assert package["SPDXID"] not in identifiers, f"{package['SPDXID']} twice"
        identifiers.add(package["SPDXID"])
    named = {package["name"]: package["versionInfo"] for package in bill["packages"]}
    expected = EXPECTED | set(names)
    assert expected <= named.keys(), f"not named: {expected - named.keys()}"
    for name in ("QuorvanceSDK", "libcurl", "nlohmann-json", "cpp-httplib", "openssl", *names):
        assert re.match(r"\d+\.\d+", named[name]), f"{name} has no version: {named[name]}"
    for one in bill["relationships"]:
        assert {one["spdxElementId"], one["relatedSpdxElement"]} <= identifiers, one
    described = [one for one in bill["relationships"] if one["relationshipType"] == "DESCRIBES"]
    assert described, "nothing is described"


if __name__ == "__main__":
    main(*sys.argv[1:])

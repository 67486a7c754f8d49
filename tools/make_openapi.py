#!/usr/bin/env python3
"""Writes the calls of the contract file as an OpenAPI 3.1 description, for teams that build a server.

Usage: make_openapi.py [--check] [CONTRACT OUTPUT]

With --check nothing is written: exits with 1 if the output is not what would be written.
What JSON Schema cannot say stands in words, in the description of the schema that it is about.
"""

import json
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CONTRACT = ROOT / "apps/risk_server/contract/contract.json"
OUTPUT = ROOT / "docs/service_openapi.json"

TYPES = {
    "text": {"type": "string"},
    "integer": {"type": "integer", "minimum": -(2**63), "maximum": 2**63 - 1},
    "number": {"type": "number"},
    "boolean": {"type": "boolean"},
    "object": {"type": "object"},
    "array": {"type": "array"},
    "any": {},
}

def record(**properties):
    return {"type": "object", "properties": properties, "required": list(properties)}


# By the kind of the reply: what it is, and its schema.
REPLIES = {
    "accepted": ("The call was accepted.", record(response={"const": "OK"})),
    "configuration": ("The configuration of the library.", {"type": "object"}),
    "deviceIdentifier": ("The identifier of the device.", record(response=record(deviceID={"type": "string"}))),
    "verdict": (
        "The verdict: -2 expire, -1 undefined, 0 low, 1 medium, 2 high, 3 very high.",
        record(
            risk={"type": "integer", "minimum": -2, "maximum": 3},
            signedRisk={"type": "string", "description": "The same verdict as a signed token."},
            requestID={"type": "string", "description": "That of the request."},
        ),
    ),
}

INTRODUCTION = """Every call is a POST of JSON to exactly the path that stands here: a doubled slash is doubled \
on purpose, and the server routes on it.

A server checks more than a schema can say:
- The Content-Type header is `{content_type}`, letter for letter.
- Integers are written without a fraction or an exponent (`1`, not `1.0`) and fit 64 bits with sign.
- A text that a pattern is about is at most 65536 bytes long and holds no NUL.
- Identifiers of users are percent-encoded (`user_id`): decode them before they are compared."""


class Schemas:
    """Makes JSON Schemas of the contract's rules."""

    def __init__(self, definitions):
        self.definitions = definitions

    def all(self):
        return {name: self.of(rule) for name, rule in self.definitions.items()}

    def of(self, rule):
        if isinstance(rule, str):
            return TYPES.get(rule, {"$ref": f"#/components/schemas/{rule}"})
        for kind, make in (
            ("is", self.constant), ("oneOf", self.words), ("pattern", self.pattern),
            ("items", self.array), ("columns", self.columns), ("select", self.select),
            ("ifHas", self.choice), ("fields", self.object), ("with", self.object),
        ):
            if kind in rule:
                return make(rule)
        raise ValueError(f"no known kind of rule: {rule}")

    def constant(self, rule):
        return {"const": rule["is"]}

    def words(self, rule):
        return {"enum": rule["oneOf"]}

    def pattern(self, rule):
        return {"type": "string", "pattern": rule["pattern"], "description": rule["called"]}

    def array(self, rule):
        schema = {"type": "array", "items": self.of(rule["items"])}
        for key, word in (("atLeast", "minItems"), ("atMost", "maxItems")):
            if key in rule:
                schema[word] = rule[key]
        return schema

    def columns(self, rule):
        """A row: one value for each column, the further ones all or none."""
        few, more = rule["columns"], rule.get("orMore", [])
        columns = [self.of(column) for column in few + more]
        schema = {"type": "array", "prefixItems": columns, "minItems": len(few), "maxItems": len(columns)}
        if more:
            schema["anyOf"] = [{"maxItems": len(few)}, {"minItems": len(columns)}]
        return schema

    def choice(self, rule):
        has = {"type": "object", "required": [rule["ifHas"]]}
        return {"if": has, "then": self.of(rule["then"]), "else": self.of(rule["else"])}

    def select(self, rule):
        keys = rule["select"].split(".")
        cases = rule["cases"].items()
        return {
            **at_path(keys, {"enum": [word for word, _ in cases]}),
            "allOf": [{"if": at_path(keys, {"const": word}), "then": self.of(case)} for word, case in cases],
        }

    def fields_of(self, rule):
        """The fields of an object by key, those that it takes over first."""
        fields = {}
        for name in rule.get("with", []):
            fields.update(self.fields_of(self.definitions[name]))
        for key, value in rule.get("fields", {}).items():
            fields[key.removesuffix("?")] = (value, not key.endswith("?"))
        return fields

    def relations_of(self, rule):
        """What members have to do with each other, in words."""
        words = [text for name in rule.get("with", []) for text in self.relations_of(self.definitions[name])]
        for key, text in (
            ("same", "`{1}` is the value of `{0}`."),
            ("sameLength", "`{0}` has as many items as `{1}`, where both are there."),
            ("noLonger", "`{0}` has no more items than `{1}`, where both are there."),
        ):
            words += [text.format(*pair) for pair in rule.get(key, [])]
        return words

    def object(self, rule):
        fields = self.fields_of(rule)
        schema = {"type": "object", "properties": {key: self.of(value) for key, (value, _) in fields.items()}}
        required = [key for key, (_, is_required) in fields.items() if is_required]
        others = self.exemptions(rule, required)
        if others:
            schema["anyOf"] = [{"required": required}, *others]
        elif required:
            schema["required"] = required
        if not rule.get("open"):
            schema["additionalProperties"] = False
        words = self.relations_of(rule)
        if words:
            schema["description"] = " ".join(words)
        return schema

    def exemptions(self, rule, required):
        """Objects that need not have all that is required."""
        found = []
        if rule.get("orEmpty"):
            found.append({"maxProperties": 0})
        listed = rule.get("orOnly")
        if listed:
            found.append({"propertyNames": {"enum": listed}, "required": [key for key in required if key in listed]})
        return found


def at_path(keys, schema):
    for key in reversed(keys):
        schema = {"type": "object", "required": [key], "properties": {key: schema}}
    return schema


def content(schema):
    return {"application/json": {"schema": schema}}


def reply(kind):
    description, schema = REPLIES[kind]
    return {"description": description, "content": content(schema)}


def operation(path, call, schemas):
    name = path.strip("/").split("/")[-1]
    return {
        "post": {
            "operationId": name,
            "requestBody": {"required": True, "content": content(schemas.of(call["body"]))},
            "responses": {"200": reply(call["reply"]), "400": {"$ref": "#/components/responses/refused"}},
        }
    }


def description_of(contract):
    schemas = Schemas(contract["definitions"])
    return {
        "openapi": "3.1.0",
        "info": {
            "title": "The risk service, as the library calls it",
            "version": library_version(),
            "description": INTRODUCTION.format(content_type=contract["contentType"]),
        },
        "servers": [{"url": "http://127.0.0.1:8080", "description": "the local risk server"}],
        "paths": {path: operation(path, call, schemas) for path, call in contract["calls"].items()},
        "components": {
            "schemas": schemas.all(),
            "responses": {
                "refused": {
                    "description": "The call does not keep to its contract; the first reason, with its place.",
                    "content": content(record(error={"type": "string"})),
                }
            },
        },
    }


def library_version():
    text = (ROOT / "src/base/version.cpp").read_text(encoding="utf-8")
    return re.search(r'QuorvanceSDKVersionString\[\] = "([^"]+)"', text).group(1)


def main(arguments):
    is_check = "--check" in arguments
    names = [argument for argument in arguments if argument != "--check"]
    contract, output = (Path(names[0]), Path(names[1])) if names else (CONTRACT, OUTPUT)
    text = json.dumps(description_of(json.loads(contract.read_text(encoding="utf-8"))), indent=1) + "\n"
    if not is_check:
        output.write_text(text, encoding="utf-8")
    elif not output.exists() or output.read_text(encoding="utf-8") != text:
        print(f"{output.name} is not that of {contract.name}: run tools/make_openapi.py")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

"""What `marovenda-check --contract` prints: a valid description, with which the app, the demo service and docs/protocol.md agree."""

import copy
import json
import os
import pathlib
import re
import shlex
import subprocess
import unittest

import jsonschema
import yaml
from demo import PATIENCE, DemoTest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs" / "protocol.md").read_text()
CHECK = os.environ["MAROVENDA_CHECK"]
OFFICIAL = pathlib.Path("/usr/share/openapi-specification/schemas")
CONTRACT = json.loads(subprocess.run([CHECK, "--contract"], stdout=subprocess.PIPE, timeout=PATIENCE, check=True).stdout)
SCHEMAS = CONTRACT["components"]["schemas"]
# The page's words for the types.
TYPES = {"text": "string", "whole number": "integer", "number": "number", "list": "array"}


def without_what_is_new_in_3_1(node):
    """The same in OpenAPI 3.0."""
    if isinstance(node, list):
        return [without_what_is_new_in_3_1(each) for each in node]
    if not isinstance(node, dict):
        return node
    node = {key: without_what_is_new_in_3_1(value) for key, value in node.items() if key != "contentEncoding"}
    if isinstance(node.get("type"), list):
        kind, null = node["type"]
        assert null == "null", node
        node.update(type=kind, nullable=True)
    return node


def operation(endpoint):
    [(method, found)] = CONTRACT["paths"][f"/{endpoint}"].items()
    return method, found


def record_of(holder):
    """The name of the record that a body is."""
    return holder["content"]["application/json"]["schema"]["$ref"].removeprefix("#/components/schemas/")


def reply_record(endpoint):
    return record_of(operation(endpoint)[1]["responses"]["200"])


def request_record(endpoint):
    return record_of(operation(endpoint)[1]["requestBody"])


def validate(value, record):
    schema = {"$ref": f"#/components/schemas/{record}", "components": CONTRACT["components"]}
    jsonschema.Draft202012Validator(schema).validate(value)


class ContractTest(DemoTest):
    def test_description_is_valid(self):
        for schema in SCHEMAS.values():
            jsonschema.Draft202012Validator.check_schema(schema)
        # Debian 12 has the official schema of OpenAPI 3.0 only.
        official, description = OFFICIAL / "v3.1" / "schema.yaml", CONTRACT
        if not official.exists():
            official = OFFICIAL / "v3.0" / "schema.yaml"
            description = {**without_what_is_new_in_3_1(copy.deepcopy(CONTRACT)), "openapi": "3.0.3"}
        schema = yaml.safe_load(official.read_text())
        jsonschema.validators.validator_for(schema)(schema).validate(description)
        self.assertEqual(CONTRACT["openapi"], "3.1.0")

    def test_every_endpoint_is_described(self):
        names = re.findall(r'"(api_\w+\.php)"', (ROOT / "api" / "Endpoints.h").read_text())
        self.assertEqual(sorted(CONTRACT["paths"]), sorted(f"/{name}" for name in names))
        self.assertEqual(re.findall(r"^## (api_\w+\.php)$", PAGE, re.MULTILINE), names)
        elsewhere = [str(file) for folder in ("api", "app", "check", "demo", "screens", "session", "ui")
                     for file in (ROOT / folder).rglob("*.[chq]*") if '"api_' in file.read_text()]
        self.assertEqual(elsewhere, [str(ROOT / "api" / "Endpoints.h")])

    def test_page_has_the_fields_of_the_records(self):
        for part in re.split(r"^## ", PAGE, flags=re.MULTILINE):
            endpoint = part.split("\n")[0]
            if not endpoint.startswith("api_"):
                continue
            tables = {head: re.findall(r"^\| `(\w+)` \| ([\w ]+) \|", rows, re.MULTILINE) for head, rows in
                      re.findall(r"^\| (Request|Reply|Row of \w+) \| Type \|.*\n((?:\|.*\n)+)", part, re.MULTILINE)}
            method, found = operation(endpoint)
            reply = reply_record(endpoint)
            expected = {"Reply": SCHEMAS[reply]["properties"]}
            if method == "post":
                expected["Request"] = SCHEMAS[request_record(endpoint)]["properties"]
                self.assertEqual(sorted(SCHEMAS[request_record(endpoint)]["required"]), sorted(expected["Request"]))
            else:
                expected["Request"] = {each["name"]: each["schema"] for each in found["parameters"]}
            for key, value in expected["Reply"].copy().items():
                if "items" in value:
                    expected[f"Row of {key}"] = SCHEMAS[value["items"]["$ref"].rsplit("/", 1)[1]]["properties"]
            with self.subTest(endpoint):
                self.assertEqual(tables.keys(), expected.keys())
                for head, fields in expected.items():
                    # What may be null in a reply is written as an absent value on the page.
                    kinds = {key: value["type"] if head == "Request" else value["type"][0] for key, value in fields.items()}
                    self.assertEqual({key: TYPES[kind] for key, kind in tables[head]}, kinds)

    def test_app_and_service_keep_to_it(self):
        self.start()
        base = f"http://127.0.0.1:{self.port}/"
        done = subprocess.run([CHECK, "--write", "--json", "--quiet", "--base", base, "bruno@marovenda.example"],
                              stdout=subprocess.PIPE, timeout=PATIENCE, check=True,
                              env={**os.environ, "MAROVENDA_CHECK_PASSWORD": "Casillero#2"})
        sent = {}
        for exchange in json.loads(done.stdout)["exchanges"]:
            endpoint = exchange["endpoint"]
            sent[endpoint] = json.loads(exchange["request"]) if exchange["request"] else None
            self.assertEqual(exchange["method"], operation(endpoint)[0].upper())
        self.assertEqual(sorted(f"/{endpoint}" for endpoint in sent), sorted(CONTRACT["paths"]))
        for endpoint, body in sent.items():
            with self.subTest(endpoint):
                if body is None:
                    for customer in (1, 2, 3, 99):
                        validate(self.listing(customer), reply_record(endpoint))
                    continue
                validate(body, request_record(endpoint))
                reply = self.ask(endpoint, body)
                validate(reply, reply_record(endpoint))
                # A body that is not the record is refused by both.
                for wrong in ({**body, "more": 1}, {key: 7.5 for key in body}, {}):
                    with self.assertRaises(jsonschema.ValidationError):
                        validate(wrong, request_record(endpoint))
                with self.assertRaises(jsonschema.ValidationError):
                    validate({**reply, "status": 1}, reply_record(endpoint))

    def test_examples_keep_to_it(self):
        blocks = re.findall(r"^```(\w+)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
        for at, (kind, command) in enumerate(blocks):
            if kind != "sh":
                continue
            with self.subTest(command):
                words = shlex.split(command)
                endpoint = re.search(r"api_\w+\.php", words[-1] if "-d" in words else words[1])[0]
                validate(json.loads(blocks[at + 1][1]), reply_record(endpoint))
                if "-d" in words:
                    validate(json.loads(words[words.index("-d") + 1]), request_record(endpoint))


if __name__ == "__main__":
    unittest.main()

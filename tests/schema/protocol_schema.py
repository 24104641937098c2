"""docs/protocol.schema.json, and one validator for each of its definitions."""

import functools
import json
import pathlib
import sys

try:
    import jsonschema
except ImportError:
    print("skipped: Python has no jsonschema (Debian: python3-jsonschema)")
    sys.exit(77)

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
SCHEMA = json.loads((ROOT / "docs/protocol.schema.json").read_text(encoding="utf-8"))
DEFINITIONS = SCHEMA["$defs"]
COMMANDS = sorted(name[:-len(".request")] for name in DEFINITIONS if name.endswith(".request"))


@functools.cache
def validator(definition):
    # The whole schema with another entry, so that its references resolve without a store of schemas.
    entry = {"$schema": SCHEMA["$schema"], "$ref": f"#/$defs/{definition}", "$defs": DEFINITIONS}
    return jsonschema.Draft202012Validator(entry)


def is_valid(definition, value):
    return validator(definition).is_valid(value)


def resolved(schema):
    """The definition at the end of a chain of references."""
    while "$ref" in schema and "properties" not in schema:
        schema = DEFINITIONS[schema["$ref"].removeprefix("#/$defs/")]
    return schema

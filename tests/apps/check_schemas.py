#!/usr/bin/env python3
"""Holds the installed JSON schemas against the program: what it writes is valid, and it reads a tree
file exactly when the schema of tree files does.

    check_schemas.py PROGRAM PROJECT_FOLDER

Exits with 77, which ctest shows as skipped, where the Python module jsonschema is not installed.
"""

import json
import subprocess
import sys
from pathlib import Path

try:
    from jsonschema import Draft202012Validator
except ImportError:
    print("skipped: the Python module jsonschema is not installed")
    sys.exit(77)

PROGRAM, PROJECT = sys.argv[1], Path(sys.argv[2])

# Tree files of one line each, good and bad ones.
TREES = [
    "{}",
    '{"label":"a","icon":"i.png","value":7,"color":9,"mergeable":true,"merged":false,"leafObject":true}',
    '{"name":"a","size":0,"children":[{},{"children":[]}]}',
    '{"value":9223372036854775807}',
    '{"value":2.0}',
    '{"x":{"value":-1},"label":"a"}',
    '[{"id":1,"name":"r","parent":null},{"id":"b","parent":1,"size":3}]',
    '[{"id":1,"name":"r"},{"id":2,"parent":1,"icon":"i"}]',
    '{"label":1}',
    '{"label":null}',
    '{"label":"a","name":"b"}',
    '{"value":1,"size":1}',
    '{"value":-1}',
    '{"value":1.5}',
    '{"value":9223372036854775808}',
    '{"value":"1"}',
    '{"color":true}',
    '{"merged":0}',
    '{"children":{}}',
    '{"children":[1]}',
    '{"children":[{"children":[{"value":-1}]}]}',
    "[]",
    "[1]",
    '[{"name":"a"}]',
    '[{"id":1.5}]',
    '[{"id":1,"children":[]}]',
    '[{"id":1,"parent":false}]',
]


def run(words, text=""):
    return subprocess.run([PROGRAM, *words], input=text, capture_output=True, text=True, check=False)


def main():
    schemas = {}
    for path in sorted((PROJECT / "apps/dataviz/schemas").glob("*.schema.json")):
        schema = json.loads(path.read_text(encoding="utf-8"))
        Draft202012Validator.check_schema(schema)
        schemas[path.name.removesuffix(".schema.json")] = Draft202012Validator(schema)
    problems = []
    example = str(PROJECT / "examples/example.step")
    inputs = [([example], ""), ([example, "--primitives"], "")]
    for text in TREES:
        is_valid = schemas["tree-file"].is_valid(json.loads(text))
        status = run(["info", "-"], text).returncode
        if (status == 0) != is_valid:
            problems.append(f"{text}: the schema says {is_valid}, the program exits with {status}")
        if is_valid:
            inputs.append((["-"], text))
    documents = 0
    for words, text in inputs:
        for schema, command in (("geometry", ["render", *words, "-o", "-", "--format", "json"]), ("info", ["info", "--json", *words])):
            result = run(command, text)
            if result.returncode != 0:
                problems.append(f"{command} {text}: {result.stderr.strip()}")
                continue
            documents += 1
            problems += [f"{command} {text}: {error.json_path}: {error.message}" for error in schemas[schema].iter_errors(json.loads(result.stdout))]
    print("\n".join(problems))
    print(f"count: {len(schemas)} schemas hold {documents} documents and {len(TREES)} tree files, {len(problems)} faults")
    return 1 if problems or len(schemas) != 3 else 0


if __name__ == "__main__":
    sys.exit(main())

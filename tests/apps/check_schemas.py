#!/usr/bin/env python3
"""Holds the installed JSON schemas against the program: what it writes is valid, and it reads a tree
file, or an events file, exactly when its schema does.

    check_schemas.py PROGRAM PROJECT_FOLDER

Fails where the Python module jsonschema, a package of the project's list, is not installed.
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

try:
    from jsonschema import Draft202012Validator
except ImportError:
    sys.exit("the Python module jsonschema is not installed: scripts/packages ensure test")

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


# Events files, good and bad ones, for a tree of five nodes.
EVENTS = [
    "[]",
    '[{"event":"press","button":1,"buttons":"0x1","modifier":0,"x":10.5,"y":-3}]',
    '{"event":"motion","x":1,"y":2e2}',
    '{"event":"release","x":1,"y":2,"comment":[{"a":[]}]}',
    '{"event":"doubleclick","button":-1,"x":1,"y":2}',
    '{"event":"key","code":"0x700000","state":1}',
    '{"event":"key","code":12.0}',
    '{"event":"select","node":4}',
    '{"event":"highlight","node":null}',
    '{"event":"setroot","node":1,"push":false}',
    '{"event":"setroot","node":null,"push":255}',
    '{"event":"lastcolumns","n":2}',
    '{"event":"lastcolumns","n":null}',
    '{"event":"enablezoom","on":true}',
    '{"event":"enablepagekeys","on":0}',
    '{"event":"extendwithkeys","on":1}',
    '{"event":"offset","x":1,"y":"0x10"}',
    '[{"event":"ime"},{"event":"unzoom"}]',
    '{"event":"draw"}',
    '{"event":"draw","position":[1,2],"size":[300,"0xFF"]}',
    "[1]",
    "[[]]",
    "[null]",
    "{}",
    '{"event":"click"}',
    '{"event":1}',
    '{"event":"press","x":1}',
    '{"event":"press","x":"1","y":1}',
    '{"event":"press","x":1e39,"y":1}',
    '{"event":"press","button":1.5,"x":1,"y":1}',
    '{"event":"press","button":2147483648,"x":1,"y":1}',
    '{"event":"key"}',
    '{"event":"key","code":-1}',
    '{"event":"key","code":4294967296}',
    '{"event":"key","code":"0xZ"}',
    '{"event":"key","code":1,"state":true}',
    '{"event":"select"}',
    '{"event":"select","node":-1}',
    '{"event":"select","node":"a"}',
    '{"event":"setroot","node":1,"push":256}',
    '{"event":"setroot","node":1,"push":null}',
    '{"event":"lastcolumns","n":0}',
    '{"event":"lastcolumns"}',
    '{"event":"enablezoom"}',
    '{"event":"enablezoom","on":null}',
    '{"event":"offset","x":1}',
    '{"event":"draw","size":[1]}',
    '{"event":"draw","size":[1,2,3]}',
    '{"event":"draw","position":[1,null]}',
    '{"event":"draw","position":7}',
]

FIVE_NODES = '{"label":"a","children":[{"label":"b","children":[{},{"value":3}]},{"label":"e"}]}'
LAYOUTS = ("treemap", "cushion", "icicle")


def run(words, text=""):
    return subprocess.run([PROGRAM, *words], input=text, capture_output=True, text=True, check=False)


def check_events(schemas, problems):
    """Plays every good events file on every layout; gives how many documents came out."""
    documents = 0
    with tempfile.TemporaryDirectory() as folder:
        tree = Path(folder, "tree.json")
        tree.write_text(FIVE_NODES, encoding="utf-8")
        for text in EVENTS:
            is_valid = schemas["events-file"].is_valid(json.loads(text))
            for layout in LAYOUTS if is_valid else LAYOUTS[:1]:
                result = run(["render", str(tree), "-o", "-", "--format", "json", "--layout", layout, "--events", "-"], text)
                if (result.returncode == 0) != is_valid:
                    problems.append(f"{text}: the schema says {is_valid}, the program exits with {result.returncode}")
                if result.returncode == 0:
                    documents += 1
                    faults = schemas["geometry"].iter_errors(json.loads(result.stdout))
                    problems += [f"{layout} {text}: {error.json_path}: {error.message}" for error in faults]
    return documents


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
        geometry = ["render", *words, "-o", "-", "--format", "json", "--layout"]
        commands = [("geometry", [*geometry, layout]) for layout in LAYOUTS]
        for schema, command in (*commands, ("info", ["info", "--json", *words])):
            result = run(command, text)
            if result.returncode != 0:
                problems.append(f"{command} {text}: {result.stderr.strip()}")
                continue
            documents += 1
            problems += [f"{command} {text}: {error.json_path}: {error.message}" for error in schemas[schema].iter_errors(json.loads(result.stdout))]
    played = check_events(schemas, problems)
    print("\n".join(problems))
    print(
        f"count: {len(schemas)} schemas hold {documents + played} documents, {len(TREES)} tree files and "
        f"{len(EVENTS)} events files, {len(problems)} faults"
    )
    return 1 if problems or len(schemas) != 4 else 0


if __name__ == "__main__":
    sys.exit(main())

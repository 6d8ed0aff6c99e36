"""The project's files, for the checks of this folder: no build trees, nothing hidden."""

import os

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOLDERS = ("host", "VisualizationCommands", "standalone", "apps", "tests", "fuzz", "benchmarks", "examples", "docs")


def sources(suffixes=(".h", ".cpp"), folders=FOLDERS):
    """Paths relative to the root of all files with one of the suffixes, sorted."""
    found = []
    for folder in folders:
        for place, names, files in os.walk(os.path.join(ROOT, folder)):
            names[:] = [name for name in names if name != "build" and not name.startswith(".")]
            found += [os.path.relpath(os.path.join(place, name), ROOT) for name in files if name.endswith(suffixes)]
    return sorted(found)


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()

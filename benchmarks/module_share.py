#!/usr/bin/env python3
"""The module's share of `dataviz render`: building the tree, weighing and laying it out, views included,
against reading and meshing the model.

    module_share.py PROGRAM [MODEL...]

Without models it takes those below KUV_MODELS (by default ../shared/data of the project) and reports the
ones that take more than two seconds to read and mesh.
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parent.parent
MODULE = ("building the tree", "laying out")
IMPORT = ("reading", "meshing")


def seconds_of(program, model):
    with tempfile.TemporaryDirectory() as folder:
        command = [program, "render", str(model), "-o", os.path.join(folder, "out.png"), "--progress"]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return None
    steps = re.findall(r": ([a-z ]+): ([0-9.]+) s$", done.stderr, re.MULTILINE)
    return {name: sum(float(s) for n, s in steps if n == name) for name, _ in steps}


def main():
    program, models = sys.argv[1], [Path(m) for m in sys.argv[2:]]
    least = 0.0 if models else 2.0
    if not models:
        root = Path(os.environ.get("KUV_MODELS", PROJECT / "../shared/data"))
        models = sorted(p for d in ("step", "iges", "gltf") for p in (root / d).rglob("*") if p.suffix != ".bin" and p.is_file())
    print(f"{'model':<44}{'import s':>10}{'module s':>10}{'share %':>9}")
    for model in models:
        steps = seconds_of(program, model)
        if steps is None:
            print(f"{model.name:<44} failed")
            continue
        imported = sum(steps.get(name, 0.0) for name in IMPORT)
        own = sum(steps.get(name, 0.0) for name in MODULE)
        if imported >= least:
            share = f"{100 * own / imported:9.2f}" if imported >= 0.1 else "        -"
            print(f"{model.name:<44}{imported:>10.2f}{own:>10.3f}{share}")


if __name__ == "__main__":
    main()

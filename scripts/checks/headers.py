#!/usr/bin/env python3
"""Each header of host/, of the module and of standalone/core compiles alone, and included twice.

    headers.py COMPILER...     e.g. headers.py g++ clang++-14
"""

import concurrent.futures
import os
import subprocess
import sys

from project_files import ROOT, sources

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Wnon-virtual-dtor", "-Woverloaded-virtual", "-Werror"]
INCLUDE_DIRS = ["host", "VisualizationCommands/include", "VisualizationCommands/KUVDataViz.m/src", "standalone"]


def compile_alone(job):
    compiler, header = job
    standard = "c++20" if header.startswith("standalone/") else "c++17"
    command = [compiler, "-x", "c++", f"-std={standard}", "-fsyntax-only", *WARNINGS]
    command += [f"-I{os.path.join(ROOT, folder)}" for folder in INCLUDE_DIRS] + ["-"]
    text = f'#include "{os.path.join(ROOT, header)}"\n' * 2
    done = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    return header, compiler, done.returncode, done.stderr


def main():
    headers = sources((".h",), ("host", "VisualizationCommands", "standalone/core"))
    jobs = [(compiler, header) for compiler in sys.argv[1:] for header in headers]
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for header, compiler, status, text in pool.map(compile_alone, jobs):
            if status:
                bad += 1
                print(f"{header} does not compile alone with {compiler}:\n{text}")
    print(f"count: {len(headers)} headers compiled alone and twice with {', '.join(sys.argv[1:])}, {bad} wrong")
    return 1 if bad or not jobs else 0


if __name__ == "__main__":
    sys.exit(main())

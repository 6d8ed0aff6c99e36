#!/usr/bin/env python3
"""clang-tidy 14 over the sources of the folders given, with the build tree's compile commands.

    tidy.py BUILD_DIR FOLDER...
"""

import concurrent.futures
import json
import os
import subprocess
import sys

from project_files import ROOT


def tidy(job):
    build, path = job
    command = ["clang-tidy-14", "-p", build, "--quiet", "--extra-arg=-Wno-unknown-warning-option", path]
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=False)
    return path, done.returncode, done.stdout, done.stderr


def main():
    build, folders = sys.argv[1], tuple(sys.argv[2:])
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        built = {os.path.relpath(entry["file"], ROOT) for entry in json.load(file)}
    jobs = [(build, path) for path in sorted(built) if path.startswith(folders)]
    bad = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for path, status, text, errors in pool.map(tidy, jobs):
            if status:
                bad += 1
                print(f"{path}:\n{text}{errors if not text else ''}")
    print(f"count: {len(jobs)} files through clang-tidy, {bad} with findings")
    return 1 if bad or not jobs else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Every source is as clang-format 14 writes it. With --fix, rewrites those that are not."""

import subprocess
import sys

from project_files import ROOT, sources


def main():
    files = sources()
    if "--fix" in sys.argv[1:]:
        return subprocess.run(["clang-format-14", "-i", *files], cwd=ROOT, check=False).returncode
    command = ["clang-format-14", "--dry-run", "-Werror", "--ferror-limit=1"]

    def differs(*paths):
        return subprocess.run([*command, *paths], cwd=ROOT, capture_output=True, check=False).returncode != 0

    # All of them at once; one by one only to say which.
    bad = [path for path in files if differs(path)] if differs(*files) else []
    for path in bad:
        print(f"{path}: not as clang-format 14 writes it")
    if bad:
        print("scripts/checks/format.py --fix rewrites them.")
    print(f"count: {len(files)} files through clang-format, {len(bad)} to rewrite")
    return 1 if bad or not files else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Files stay within 900 lines and functions within 80.

The formatter puts the braces of a function's body, and only these, on lines of their own, so a body is
what stands between a lone "{" and the "}" of the same indentation.
"""

import re
import sys

from project_files import read, sources

FILE_LIMIT = 900
FUNCTION_LIMIT = 80


def bodies(lines):
    """(first line, length) of every function body; lines are counted from 1."""
    opened = {}
    for number, line in enumerate(lines, 1):
        match = re.fullmatch(r"( *)([{}])[;)]*", line.rstrip())
        if not match:
            continue
        if match.group(2) == "{":
            opened[match.group(1)] = number
        elif match.group(1) in opened:
            begin = opened.pop(match.group(1))
            yield begin, number - begin - 1


def main():
    bad = 0
    functions = 0
    files = sources((".h", ".cpp", ".py"))
    for path in files:
        lines = read(path).splitlines()
        if len(lines) > FILE_LIMIT:
            print(f"{path}: {len(lines)} lines; the limit is {FILE_LIMIT}")
            bad += 1
        for begin, length in bodies(lines):
            functions += 1
            if length > FUNCTION_LIMIT:
                print(f"{path}:{begin}: a function of {length} lines; the limit is {FUNCTION_LIMIT}")
                bad += 1
    print(f"count: {len(files)} files and {functions} function bodies measured, {bad} too long")
    return 1 if bad or not files else 0


if __name__ == "__main__":
    sys.exit(main())

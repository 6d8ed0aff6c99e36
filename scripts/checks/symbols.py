#!/usr/bin/env python3
"""What the module exports and what it leaves to others.

    symbols.py check MODULE HOST_LIBRARY   both checks
    symbols.py rebaseline MODULE           writes the list of exported symbols anew

Exports: the symbols of MODULE equal VisualizationCommands/KUVDataViz.m/exported_symbols.txt.
Undefined: each symbol is the C++ runtime's or the C library's, or it is declared in host/ and defined
by HOST_LIBRARY.
"""

import os
import re
import subprocess
import sys

from project_files import ROOT, sources

BASELINE = os.path.join(ROOT, "VisualizationCommands/KUVDataViz.m/exported_symbols.txt")
RUNTIME = re.compile(r"@(GLIBC|GLIBCXX|CXXABI|GCC)_")
# Weak markers that the linker and the profiler leave in every library.
MARKERS = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__"}


def symbols(library, which):
    text = subprocess.run(["nm", "-D", which, "--format=posix", library], capture_output=True, text=True, check=True).stdout
    return {line.split()[0] for line in text.splitlines() if line}


def demangle(names):
    text = subprocess.run(["c++filt"], input="\n".join(names), capture_output=True, text=True, check=True).stdout
    return dict(zip(names, text.splitlines()))


def baseline_lines(module):
    names = sorted(symbols(module, "--defined-only"))
    readable = demangle(names)
    return [f"{name}  {readable[name]}" for name in names]


def check_exports(module):
    with open(BASELINE, encoding="utf-8") as file:
        expected = [line.rstrip("\n") for line in file if not line.startswith("#")]
    actual = baseline_lines(module)
    for line in sorted(set(expected) - set(actual)):
        print(f"no longer exported: {line}")
    for line in sorted(set(actual) - set(expected)):
        print(f"exported, but not in the list: {line}")
    if expected != actual:
        print(f"After a deliberate change: scripts/checks/symbols.py rebaseline {module}, and review the difference.")
    print(f"count: {len(actual)} symbols exported, {len(expected)} in the list")
    return expected == actual and bool(actual)


def host_declarations():
    """The words of the preprocessed text of host/ alone."""
    lines = "".join(f'#include "{header}"\n' for header in sources((".h",), ("host",)))
    command = ["g++", "-std=c++17", "-E", "-x", "c++", f"-I{ROOT}", f"-I{ROOT}/host", "-"]
    text = subprocess.run(command, input=lines, capture_output=True, text=True, check=True).stdout
    kept, ours = [], False
    for line in text.splitlines():
        marker = re.match(r'# \d+ "([^"]*)"', line)
        if marker:
            ours = "/host/" in marker.group(1) or marker.group(1).startswith("host/")
        elif ours:
            kept.append(line)
    return set(re.findall(r"~?\w+", "\n".join(kept)))


def words_of(symbol):
    """`vtable for A::B`, `A::F(int) const` and the like as the names A, B or A, F."""
    name = re.sub(r"^(vtable|typeinfo|typeinfo name|VTT|guard variable|(non-)?virtual thunk) (for|to) ", "", symbol)
    name = re.sub(r"operator\W+", "operator", name.split("(")[0])
    return re.sub(r"<.*?>", "", name).split("::")


def check_undefined(module, host):
    undefined = sorted(name for name in symbols(module, "--undefined-only") if not RUNTIME.search(name) and name not in MARKERS)
    offered = symbols(host, "--defined-only")
    declared = host_declarations()
    readable = demangle(undefined)
    bad = 0
    for name in undefined:
        if name not in offered:
            print(f"undefined, and not in {os.path.basename(host)}: {readable[name]}")
            bad += 1
        elif not set(words_of(readable[name])) <= declared:
            print(f"undefined, and not declared in host/: {readable[name]}")
            bad += 1
    print(f"count: {len(undefined)} symbols left to the host, {bad} of them not its own")
    return not bad


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "rebaseline":
        lines = baseline_lines(sys.argv[2])
        with open(BASELINE, "w", encoding="utf-8") as file:
            file.write("# What libKUVDataViz.so exports: scripts/checks/symbols.py compares, and rewrites with `rebaseline`.\n")
            file.writelines(line + "\n" for line in lines)
        return 0
    if len(sys.argv) == 4 and sys.argv[1] == "check":
        exports = check_exports(sys.argv[2])
        return 0 if check_undefined(sys.argv[2], sys.argv[3]) and exports else 1
    print(__doc__)
    return 2


if __name__ == "__main__":
    sys.exit(main())

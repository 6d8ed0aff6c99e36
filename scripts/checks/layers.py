#!/usr/bin/env python3
"""Who may include whom: every #include of every source against the table of docs/architecture.md.

Prints each include that a layer may not make, and exits with 1 if there is one.
"""

import os
import re
import sys

from project_files import ROOT, read, sources

STD = set(
    """algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
    climits clocale cmath compare complex concepts condition_variable csetjmp csignal cstdarg cstddef cstdint cstdio
    cstdlib cstring ctime cwchar deque exception filesystem forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new
    numbers numeric optional ostream queue random ranges ratio regex semaphore set shared_mutex source_location span
    sstream stack stdexcept stop_token streambuf string string_view system_error thread tuple type_traits typeindex
    typeinfo unordered_map unordered_set utility valarray variant vector version""".split()
)

# Layer -> folder prefix. The first that matches counts.
LAYERS = (
    ("host", "host/"),
    ("include", "VisualizationCommands/include/"),
    ("private", "VisualizationCommands/KUVDataViz.m/src/private/"),
    ("module", "VisualizationCommands/KUVDataViz.m/src/"),
    ("core", "standalone/core/"),
    ("import", "standalone/import/"),
    ("paint", "standalone/paint/"),
    ("view3d", "standalone/view3d/"),
    ("widgets", "standalone/widgets/"),
    ("player", "apps/player/"),
    ("dataviz", "apps/dataviz/"),
    ("viewer", "apps/viewer/"),
    ("support", "tests/support/"),
    ("consumer", "tests/consumer/"),
    ("module tests", "tests/module/"),
    ("standalone tests", "tests/standalone/"),
    ("apps tests", "tests/apps/"),
    ("fuzz", "fuzz/"),
    ("benchmarks", "benchmarks/"),
    ("examples", "examples/"),
    ("docs", "docs/"),
)

MODULE = {"std", "host", "include", "private"}
TEST = {"std", "posix", "gtest", "rapidcheck", "json", "support"}
PROGRAM = {"std", "posix", "cli11", "json", "include", "host", "core", "import", "paint", "player", "occt", "qt"}
MODULE_TEST = TEST | MODULE | {"core", "player"}

# What each layer may include; its own folder always. "posix" is the platform's C headers, which the
# module does without; "compiler" is the vector instructions that the compiler offers as functions.
ALLOWED = {
    "host": {"std"},
    "include": {"std", "host"},
    "private": MODULE | {"compiler"},
    "module": MODULE,
    "core": {"std", "posix", "host"},
    "import": {"std", "posix", "host", "core", "occt", "assimp", "json"},
    "paint": {"std", "posix", "host", "core", "qt"},
    "view3d": {"std", "posix", "host", "core", "import", "occt"},
    "widgets": {"std", "posix", "host", "core", "import", "paint", "view3d", "qt"},
    "player": {"std", "json", "host", "include", "core"},
    "dataviz": PROGRAM,
    "viewer": PROGRAM | {"view3d", "widgets"},
    "support": TEST | {"host", "include", "core"},
    "consumer": {"std", "host", "include"},
    "module tests": MODULE_TEST,
    "standalone tests": TEST | {"host", "include", "core", "import", "paint", "view3d", "widgets", "occt", "assimp", "qt"},
    "apps tests": TEST | PROGRAM | {"dataviz"},
    # The reader of tree files is fuzzed too, and labels are timed with a real font.
    "fuzz": MODULE_TEST | {"fuzzer", "dataviz"},
    "benchmarks": MODULE_TEST | {"compiler", "benchmark", "paint", "qt"},
    "examples": {"std", "occt"},
    "docs": {"std", "host", "include", "core", "import", "paint"},
}

INCLUDE_DIRS = ("host", "VisualizationCommands/include", "VisualizationCommands/KUVDataViz.m/src", "standalone", "apps", "apps/dataviz", "tests")


def layer_of(path):
    for layer, prefix in LAYERS:
        if path.startswith(prefix):
            return layer
    return None


def outside(name):
    """The layer of an include in angle brackets."""
    if name in STD:
        return "std"
    if name == "immintrin.h":
        return "compiler"
    if name.startswith("gtest/") or name.startswith("gmock/"):
        return "gtest"
    if name.startswith("rapidcheck"):
        return "rapidcheck"
    if name.startswith("benchmark/"):
        return "benchmark"
    if name.startswith("nlohmann/"):
        return "json"
    if name.startswith("CLI/"):
        return "cli11"
    if name.startswith("assimp/"):
        return "assimp"
    if name.startswith("fuzzer/"):
        return "fuzzer"
    if re.fullmatch(r"Q\w+", name) or name.startswith("Qt"):
        return "qt"
    if name.endswith((".hxx", ".lxx", ".gxx")):
        return "occt"
    if name.endswith(".h"):
        return "posix"
    return "unknown"


def inside(path, name):
    """The layer of an include in quotes: beside the file first, then along the include folders."""
    for folder in (os.path.dirname(path),) + INCLUDE_DIRS:
        candidate = os.path.normpath(os.path.join(folder, name))
        if os.path.isfile(os.path.join(ROOT, candidate)):
            return layer_of(candidate) or "unknown"
    return "unknown"


def main():
    bad = 0
    seen = 0
    for path in sources((".h", ".cpp", ".hpp", ".inl")):
        layer = layer_of(path)
        if layer is None:
            print(f"{path}: stands in no known folder")
            bad += 1
            continue
        for number, line in enumerate(read(path).splitlines(), 1):
            match = re.match(r"\s*#\s*include\s*(<([^>]+)>|\"([^\"]+)\")", line)
            if not match:
                continue
            seen += 1
            target = outside(match.group(2)) if match.group(2) else inside(path, match.group(3))
            if target != layer and target not in ALLOWED[layer]:
                print(f"{path}:{number}: {layer} may not include {target}: {match.group(1)}")
                bad += 1
    print(f"count: {seen} includes against the layer table, {bad} wrong")
    return 1 if bad or not seen else 0


if __name__ == "__main__":
    sys.exit(main())

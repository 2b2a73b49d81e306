#!/usr/bin/env python3
"""Prints what is longer than it may be, and fails if there is anything:

  - a test of tests/ with more than 60 lines: it has two facts in it, or a table that a helper can walk;
  - a function of src/ with more than 60 lines. clang-tidy measures them too, but not those in the
    sources for Windows, which it cannot compile;
  - a file of src/ with more than 300 lines: it has two ideas in it;
  - the launcher, when it has more than 600 lines altogether: it reads the command line and leaves
    everything else to the tools.
"""

import pathlib
import re
import sys

MOST_LINES = 60
MOST_LINES_OF_A_FILE = 300
MOST_LINES_OF_THE_LAUNCHER = 600
ROOT = pathlib.Path(__file__).resolve().parent.parent
# Begins at the first column and is neither a function nor part of one.
NO_FUNCTION = re.compile(r"\s|//|#|}|using |namespace |class |struct |enum |template |extern ")


def lines_of(source):
    return source.read_text(encoding="utf-8").splitlines()


def tests_in(source):
    """Yields (number of the first line, number of lines, first line) of each test."""
    first = None
    for number, line in enumerate(lines_of(source), 1):
        if re.match(r"(TYPED_)?TEST(_[FP])?\(", line):
            first = (number, line)
        if first is not None and line.endswith("}") and (line == "}" or number == first[0]):
            yield first[0], number - first[0] + 1, first[1]
            first = None


def functions_in(source):
    """The same of each function outside classes, whose last line is a brace in the first column."""
    first = None
    is_open = False  # the function's body has begun
    for number, line in enumerate(lines_of(source), 1):
        if first is None and line and not NO_FUNCTION.match(line):
            first = (number, line)
            is_open = False
        is_open = is_open or line.endswith("{")
        if first is not None and (line == "}" or not is_open and re.search(r"[;}]( *//.*)?$", line)):
            yield first[0], number - first[0] + 1, first[1]
            first = None


def too_long(folder, patterns, parts_of):
    for source in sorted(path for pattern in patterns for path in (ROOT / folder).rglob(pattern)):
        for number, length, line in parts_of(source):
            if length > MOST_LINES:
                yield f"{source.relative_to(ROOT)}:{number}: {length} lines: {line}"


def too_long_files():
    launcher = 0
    for source in sorted((ROOT / "src").rglob("*")):
        if source.suffix in (".h", ".cpp"):
            length = len(lines_of(source))
            launcher += length if source.parent.name == "launcher" else 0
            if length > MOST_LINES_OF_A_FILE:
                yield f"{source.relative_to(ROOT)}: {length} lines"
    if launcher > MOST_LINES_OF_THE_LAUNCHER:
        yield f"src/launcher: {launcher} lines"


found = [*too_long("tests", ["*.cpp"], tests_in), *too_long("src", ["*.cpp"], functions_in),
         *too_long_files()]
print("\n".join(found), end="\n" if found else "")
sys.exit(1 if found else 0)

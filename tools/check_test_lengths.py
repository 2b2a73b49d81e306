#!/usr/bin/env python3
"""Prints every test of tests/ with more than 60 lines, and fails if there is one.

A longer test has two facts in it, or a table that a helper can walk.
"""

import pathlib
import re
import sys

MOST_LINES = 60
TESTS = pathlib.Path(__file__).resolve().parent.parent / "tests"


def too_long(source):
    """Yields (number of the first line, number of lines, first line) of each test that is too long."""
    first = None
    for number, line in enumerate(source.read_text(encoding="utf-8").splitlines(), 1):
        if re.match(r"(TYPED_)?TEST(_[FP])?\(", line):
            first = (number, line)
        if first is not None and line.endswith("}") and (line == "}" or number == first[0]):
            length = number - first[0] + 1
            if length > MOST_LINES:
                yield first[0], length, first[1]
            first = None


found = [
    f"{source.relative_to(TESTS.parent)}:{number}: {length} lines: {line}"
    for source in sorted(TESTS.rglob("*.cpp"))
    for number, length, line in too_long(source)
]
print("\n".join(found), end="\n" if found else "")
sys.exit(1 if found else 0)

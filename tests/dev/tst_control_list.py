#!/usr/bin/env python3
"""docs/controls.md names the tests that work each control: every one of them must be there.

tst_control_list.py CHECKOUT
"""

import pathlib
import re
import sys

TEST = re.compile(r"((?:qml|e2e)/(?:\w+/)?\w+\.(?:cpp|qml)): ([^;|]+)")
NAME = re.compile(r"\w+")


def rows(text):
    """Control, place and tests of each row of each table."""
    for line in text.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split(" | ")]
        if line.startswith("|") and len(cells) == 3 and cells[0] != "Control" and not set(line) <= set("|- "):
            yield cells


def problems(checkout):
    seen = 0
    for control, place, tests in rows((checkout / "docs/controls.md").read_text(encoding="utf-8")):
        seen += 1
        where = f"{control} in {place}"
        found = TEST.findall(tests)
        if not found:
            yield f"{where}: no test"
        for path, names in found:
            file = checkout / "tests" / path
            source = file.read_text(encoding="utf-8") if file.exists() else ""
            # What stands in brackets tells more, the rest are names of functions.
            for name in NAME.findall(re.sub(r"\([^)]*\)", "", names)):
                if not re.search(rf"\b(void|function) (\w+::)?{name}\(\)", source):
                    yield f"{where}: {path} has no test {name}"
    if seen < 100:
        yield f"only {seen} controls"


def main():
    found = list(problems(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Processor time of connected cameras that are not selected, against fetching and parsing alone.

Both programs run at the same time and poll the same cameras at the same pace. Prints two rows as JSON.
"""

import json
import sys

from processes import measured, result, simulated_cameras, virtual_display

SECONDS = 15
POLLS_PER_SECOND = 4
BOUND = 1.5


def row(build, environment, count, name):
    with simulated_cameras(build, count) as addresses, \
            measured(build, environment, "idle", "vesk", SECONDS, *addresses) as ours, \
            measured(build, environment, "idle", "plain", SECONDS, *addresses) as plain:
        used, needed = result(ours, SECONDS + 20), result(plain, SECONDS + 20)
    expected = SECONDS * POLLS_PER_SECOND * count
    for polled in (used["polls"], needed["polls"]):
        if abs(polled - expected) > 0.1 * expected:
            sys.exit(f"{name}: {polled} polls instead of {expected}")
    ratio = (used["cpu_s"] / used["polls"]) / (needed["cpu_s"] / needed["polls"])
    return {"what": f"Processor time with {name}", "ratio": ratio, "bound": BOUND, "sense": "at_most"}


def main():
    build = sys.argv[1]
    with virtual_display() as environment:
        print(json.dumps([row(build, environment, 1, "one camera, not selected"),
                          row(build, environment, 8, "eight cameras, none selected")]))


if __name__ == "__main__":
    main()

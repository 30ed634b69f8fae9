#!/usr/bin/env python3
"""The listing of a camera's drive of 10,000 recordings in the window, on the same machine. Prints rows as JSON.

Each is the longest time in which the window answered nothing against what an operator begins to notice.
"""

import json
import subprocess
import sys

from processes import simulated_cameras, virtual_display

ENTRIES = 10_000
STALL_S = 0.05
PARTS = {"open_s": "opened", "sort_s": "sorted by each column", "scroll_s": "scrolled from end to end"}


def main():
    build = sys.argv[1]
    with virtual_display() as environment, \
            simulated_cameras(build, 1, "--recordings", str(ENTRIES)) as addresses:
        command = [f"{build}/bench/bench_listing", addresses[0], str(ENTRIES)]
        output = subprocess.run(command, env=environment, check=True, text=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, timeout=300).stdout
    longest = json.loads(output)
    for part, what in PARTS.items():
        print(f"{what}: {longest[part] * 1000:.0f} ms", file=sys.stderr)
    print(json.dumps([{"what": f"Listing of 10000 recordings {what}, window's answer against 50 ms",
                       "ratio": longest[part] / STALL_S, "bound": 1.0, "sense": "at_most"}
                      for part, what in PARTS.items()]))


if __name__ == "__main__":
    main()

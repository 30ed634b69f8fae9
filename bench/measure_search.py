#!/usr/bin/env python3
"""The search through a take of 640x480 colour frames on the same machine. Prints one row as JSON.

Frames searched in a second against the same frames fetched and adjusted one after the other; the two run in
turn, the ratio is that of the medians.
"""

import json
import statistics
import subprocess
import sys

from processes import simulated_cameras, virtual_display

FRAMES = 400
ROUNDS = 5
BOUND = 0.8


def main():
    build = sys.argv[1]
    take = json.dumps({"first": 0, "last": FRAMES, "scene": "still"})
    with virtual_display() as environment, \
            simulated_cameras(build, 1, "--pattern", "rggb", "--take", take) as addresses:
        command = [f"{build}/bench/bench_search", addresses[0], str(FRAMES), str(ROUNDS)]
        output = subprocess.run(command, env=environment, check=True, text=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, timeout=300).stdout
    rates = json.loads(output)
    ratio = statistics.median(rates["search"]) / statistics.median(rates["plain"])
    print(json.dumps([{"what": "Frames searched against frames fetched and adjusted", "ratio": ratio,
                       "bound": BOUND, "sense": "at_least"}]))


if __name__ == "__main__":
    main()

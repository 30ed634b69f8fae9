#!/usr/bin/env python3
"""The live picture of a 640x480 colour camera on the same machine. Prints two rows as JSON.

The time between two pictures against the preview's 33 ms, and the share of the time in which the GUI
thread works, against half of it.
"""

import json
import sys

from processes import measured, result, simulated_cameras, virtual_display

SECONDS = 15
INTERVAL_S = 0.033
# A tick that meets a frame in flight is dropped: at most one in ten.
INTERVAL_BOUND = 1.1


def main():
    build = sys.argv[1]
    with virtual_display() as environment, \
            simulated_cameras(build, 1, "--pattern", "rggb") as addresses, \
            measured(build, environment, "live", SECONDS, *addresses) as program:
        live = result(program, SECONDS + 20)
    if (live["width"], live["height"]) != (640, 480):
        sys.exit(f"the picture is {live['width']} x {live['height']}")
    interval = live["elapsed_s"] / max(live["frames"], 1)
    busy = live["gui_cpu_s"] / live["elapsed_s"]
    print(json.dumps([
        {"what": "Live picture: time between pictures against 33 ms", "ratio": interval / INTERVAL_S,
         "bound": INTERVAL_BOUND, "sense": "at_most"},
        {"what": "Live picture: busy share of the GUI thread against half", "ratio": busy / 0.5,
         "bound": 1.0, "sense": "at_most"}]))


if __name__ == "__main__":
    main()

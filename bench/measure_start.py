#!/usr/bin/env python3
"""Start of the program to the first frame of its window, against a minimal window of the same controls.

The two start in turn, each with the files in memory; the ratio is that of the medians. Prints one row.
"""

import json
import statistics
import subprocess
import sys
import time

from processes import START_LIMIT_S, started, virtual_display

ROUNDS = 9
BOUND = 2.0
# The scene graph says so when the first frame has been handed to the display.
FRAME_LINE = "Frame prepared"


def seconds_to_first_frame(command, environment):
    environment = {**environment, "QT_LOGGING_RULES": "qt.scenegraph.time.renderloop.debug=true",
                   "QSG_RENDER_LOOP": "threaded"}
    begin = time.monotonic()
    with started([command], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                 text=True) as process:
        for line in process.stderr:
            if FRAME_LINE in line:
                return time.monotonic() - begin
            if time.monotonic() - begin > START_LIMIT_S:
                break
    sys.exit(f"{command} showed no frame")


def main():
    build = sys.argv[1]
    programs = {"ours": f"{build}/app/vesk", "minimal": f"{build}/bench/bench_window"}
    times = {name: [] for name in programs}
    with virtual_display() as environment:
        for _ in range(ROUNDS + 1):
            for name, command in programs.items():
                times[name].append(seconds_to_first_frame(command, environment))
    # The first round fills the caches.
    ours, minimal = (statistics.median(times[name][1:]) for name in ("ours", "minimal"))
    print(f"first frame after {ours * 1000:.0f} ms, minimal window {minimal * 1000:.0f} ms", file=sys.stderr)
    print(json.dumps({"what": "Start to the first frame of the window", "ratio": ours / minimal, "bound": BOUND,
                      "sense": "at_most"}))


if __name__ == "__main__":
    main()

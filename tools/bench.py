#!/usr/bin/env python3
"""Runs the measurements of bench/rows.json and shows what holds.

A row is an object of one of two kinds. Of two benchmarks in one Google Benchmark program:

    {"what": "...", "program": "bench/bench_x", "ours": "BM_x", "peer": "BM_y",
     "bound": 1.6, "sense": "at_least"}

`program` is a path in the build folder; it runs once for all its rows, so that ours and the peer are
measured side by side. Of a command that measures whole programs:

    {"what": "...", "command": ["python3", "bench/measure_x.py", "{build}"]}

which prints one JSON object or a list of them with "what", "ratio", "bound" and "sense"; "{build}" stands
for the build folder.

"at_least": the ratio is how many times as fast ours is as the peer. "at_most": it is how many times as
long ours takes as the peer.
"""

import argparse
import json
import pathlib
import subprocess
import sys

REPETITIONS = 7
ROW_KEYS = ("what", "ratio", "bound", "sense")


class MeasurementError(Exception):
    """A measurement gave no usable result."""


def run(command, cwd):
    result = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, text=True, check=False)
    if result.returncode != 0:
        raise MeasurementError(f"{command[0]} ended with code {result.returncode}")
    try:
        # Google Benchmark and the commands may say something before their JSON.
        start = min(i for i in (result.stdout.find("{"), result.stdout.find("[")) if i >= 0)
        return json.loads(result.stdout[start:])
    except ValueError as error:
        raise MeasurementError(f"{command[0]} printed no JSON: {error}") from error


def medians(document):
    """Median real time of each benchmark by its name, in the unit of the document's row."""
    times = {}
    for entry in document["benchmarks"]:
        if entry.get("error_occurred"):
            raise MeasurementError(f'{entry["run_name"]}: {entry.get("error_message", "failed")}')
        if entry.get("aggregate_name") == "median":
            name = entry["run_name"].removesuffix("/real_time").removesuffix("/process_time")
            times[name] = (entry["real_time"], entry["time_unit"])
    return times


def measure_program(program, rows, build):
    command = [str(build / program), "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}",
               "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"]
    times = medians(run(command, build))
    for row in rows:
        for name in (row["ours"], row["peer"]):
            if name not in times:
                raise MeasurementError(f"{program} has no benchmark {name}")
        (ours, our_unit), (peer, peer_unit) = times[row["ours"]], times[row["peer"]]
        if our_unit != peer_unit:
            raise MeasurementError(f'{program}: {row["ours"]} and {row["peer"]} differ in their unit')
        ratio = peer / ours if row["sense"] == "at_least" else ours / peer
        yield {"what": row["what"], "ratio": ratio, "bound": row["bound"], "sense": row["sense"]}


def measure_command(row, build, root):
    command = [part.replace("{build}", str(build)) for part in row["command"]]
    measured = run(command, root)
    for entry in measured if isinstance(measured, list) else [measured]:
        missing = [key for key in ROW_KEYS if key not in entry]
        if missing:
            raise MeasurementError(f'{row["what"]}: the row lacks {", ".join(missing)}')
        yield entry


def judged(row):
    if row["sense"] not in ("at_least", "at_most"):
        raise MeasurementError(f'{row["what"]}: the sense "{row["sense"]}" is unknown')
    holds = row["ratio"] >= row["bound"] if row["sense"] == "at_least" else row["ratio"] <= row["bound"]
    return {**row, "ratio": round(row["ratio"], 3), "holds": holds}


def measurements(declared, build, root):
    """Pairs of a title and a function that measures its rows; a program with many rows runs once."""
    programs = {}
    for row in declared:
        if "program" in row:
            programs.setdefault(row["program"], []).append(row)
    for program, rows in programs.items():
        yield program, lambda program=program, rows=rows: measure_program(program, rows, build)
    for row in declared:
        if "command" in row:
            yield row["what"], lambda row=row: measure_command(row, build, root)


def table(rows):
    width = max([len(row["what"]) for row in rows] + [4])
    lines = [f'{"what":<{width}}  {"ratio":>8}  {"bound":>11}  holds']
    for row in rows:
        bound = (">= " if row["sense"] == "at_least" else "<= ") + f'{row["bound"]:g}'
        lines.append(f'{row["what"]:<{width}}  {row["ratio"]:>8.2f}  {bound:>11}  {"yes" if row["holds"] else "NO"}')
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="Runs the measurements and shows what holds.")
    parser.add_argument("--rows", required=True, type=pathlib.Path)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--only", default="")
    args = parser.parse_args()

    if not args.rows.exists():
        sys.exit(f"dev: there is no {args.rows} that lists the measurements")
    declared = [row for row in json.loads(args.rows.read_text(encoding="utf-8")) if args.only in row["what"]]
    if not declared:
        sys.exit(f'dev: no measurement has "{args.only}" in its name')
    rows, failed = [], False
    for title, measure in measurements(declared, args.build, args.rows.parent.parent):
        print(f"dev: measuring {title}", file=sys.stderr)
        try:
            rows += [judged(row) for row in measure()]
        except (MeasurementError, OSError, KeyError, TypeError) as error:
            print(f"dev: {title}: {error!r}", file=sys.stderr)
            failed = True
    print(json.dumps(rows, indent=2) if args.json else table(rows))
    sys.exit(0 if not failed and all(row["holds"] for row in rows) else 1)


if __name__ == "__main__":
    main()

"""tst_bench_driver.py CHECKOUT: the driver of the measurements, with programs that print known times."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECKOUT = pathlib.Path(sys.argv.pop(1))

# A stand-in for a Google Benchmark program: fixed medians, in a shuffled order, after a line of chat.
PROGRAM = """#!/usr/bin/env python3
import json
times = {"BM_fast": (2.0, "ms"), "BM_slow/real_time": (7.0, "ms"), "BM_other_unit": (3.0, "us")}
print("Running on two cores")
print(json.dumps({"benchmarks": [
    {"run_name": name, "aggregate_name": kind, "real_time": time if kind == "median" else 1000, "time_unit": unit}
    for name, (time, unit) in times.items() for kind in ("mean", "median", "stddev")]}))
"""


class BenchDriver(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "bench").mkdir()
        program = self.root / "bench" / "bench_x"
        program.write_text(PROGRAM, encoding="utf-8")
        program.chmod(0o755)

    def measure(self, rows, *options):
        declared = self.root / "bench" / "rows.json"
        declared.write_text(json.dumps(rows), encoding="utf-8")
        return subprocess.run(
            [sys.executable, CHECKOUT / "tools/bench.py", "--rows", declared, "--build", self.root, *options],
            capture_output=True, text=True, check=False)

    @staticmethod
    def pair(**changes):
        return {"what": "pair", "program": "bench/bench_x", "ours": "BM_fast", "peer": "BM_slow",
                "bound": 3.0, "sense": "at_least", **changes}

    def test_ratioOfMediansSaysHowManyTimesAsFast(self):
        result = self.measure([self.pair()], "--json")
        self.assertEqual(json.loads(result.stdout), [
            {"what": "pair", "ratio": 3.5, "bound": 3.0, "sense": "at_least", "holds": True}])
        self.assertEqual(result.returncode, 0)

    def test_missedBoundIsShownAndFails(self):
        result = self.measure([self.pair(bound=3.6)])
        self.assertRegex(result.stdout, r"pair\s+3\.50\s+>= 3\.6\s+NO")
        self.assertEqual(result.returncode, 1)

    def test_atMostTurnsTheRatioRound(self):
        result = self.measure([self.pair(ours="BM_slow", peer="BM_fast", bound=3.6, sense="at_most")], "--json")
        row = json.loads(result.stdout)[0]
        self.assertEqual((row["ratio"], row["holds"], result.returncode), (3.5, True, 0))

    def test_commandPrintsItsOwnRows(self):
        script = 'import json,sys; print(json.dumps([{"what": sys.argv[1], "ratio": 2.5, "bound": 2, "sense": "at_most"}]))'
        result = self.measure([{"what": "start", "command": [sys.executable, "-c", script, "{build}"]}], "--json")
        self.assertEqual(json.loads(result.stdout), [
            {"what": str(self.root), "ratio": 2.5, "bound": 2, "sense": "at_most", "holds": False}])
        self.assertEqual(result.returncode, 1)

    def test_whatCannotBeMeasuredFailsAndTheRestIsShown(self):
        broken = [self.pair(what="missing", ours="BM_none"), self.pair(what="unit", peer="BM_other_unit"),
                  {"what": "ends", "command": ["false"]}, {"what": "silent", "command": ["true"]},
                  {"what": "absent", "command": ["/no/such/program"]},
                  self.pair(what="absent program", program="bench/none")]
        for row in broken:
            good = {"what": "good", "command": [sys.executable, "-c",
                    'print(\'{"what": "good", "ratio": 1, "bound": 1, "sense": "at_least"}\')']}
            result = self.measure([row, good], "--json")
            self.assertEqual([r["what"] for r in json.loads(result.stdout)], ["good"], row)
            self.assertEqual(result.returncode, 1, row)

    def test_onlyMeasuresWhatIsNamed(self):
        result = self.measure([self.pair(what="one"), self.pair(what="two")], "--json", "--only", "two")
        self.assertEqual([row["what"] for row in json.loads(result.stdout)], ["two"])
        self.assertEqual(self.measure([self.pair()], "--only", "nothing").returncode, 1)


if __name__ == "__main__":
    unittest.main()

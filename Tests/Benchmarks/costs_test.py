#!/usr/bin/env python3
"""costs_test.py: Benchmarks/costs.py against programs and recordings made by hand."""

import pathlib
import stat
import subprocess
import sys
import tempfile
import unittest

COSTS = pathlib.Path(__file__).resolve().parents[2] / "Benchmarks" / "costs.py"
COMPILER = "GCC 1.2, glibc 3.4"
# A tool in Valgrind's place writes what callgrind would: the work and its freeing, one file each.
CALLGRIND = """#!/bin/bash
for argument in "$@"; do
    case $argument in --callgrind-out-file=*) out=${argument#*=} ;; esac
done
printf 'desc: Trigger: Client Request: Load/4\\ntotals: 900\\n' >"$out.1"
printf 'desc: Trigger: Client Request: Load/4/free\\ntotals: 100\\n' >"$out.2"
printf 'desc: Trigger: Program termination\\ntotals: 5\\n' >"$out.3"
"""


class Costs(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.program = self.script("program", self.printing(COMPILER, "Load/4\t10\t1000"))
        self.valgrind = self.script("callgrind", CALLGRIND)

    def printing(self, compiler, *lines):
        return "#!/bin/bash\ncat <<'END'\n" + "\n".join([f"# {compiler}", *lines]) + "\nEND\n"

    def script(self, name, text):
        path = pathlib.Path(self.folder.name) / name
        path.write_text(text)
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        return str(path)

    def compare(self, *lines, compiler=COMPILER):
        recorded = pathlib.Path(self.folder.name) / "costs.tsv"
        recorded.write_text("\n".join(["# comment", f"# {compiler}", *lines]) + "\n")
        return self.run_costs("--recorded", str(recorded))

    def run_costs(self, *options):
        done = subprocess.run(
            [sys.executable, COSTS, "--program", self.program, "--valgrind", self.valgrind, *options],
            capture_output=True,
            text=True,
            check=False,
        )
        return done.returncode, done.stdout

    def test_equal_costs_pass_in_silence(self):
        self.assertEqual(self.compare("Load\t4\t1000\t10\t1000"), (0, ""))

    def test_more_than_the_tolerance_fails(self):
        self.assertEqual(
            self.compare("Load\t4\t900\t10\t1000"), (1, "costs: Load 4: 1000 instructions, 900 are recorded\n")
        )
        self.assertEqual(self.compare("Load\t4\t1000\t9\t1000"), (1, "costs: Load 4: 10 allocations, 9 are recorded\n"))
        self.assertEqual(self.compare("Load\t4\t1000\t10\t900"), (1, "costs: Load 4: 1000 bytes, 900 are recorded\n"))

    def test_within_the_tolerance_passes(self):
        self.assertEqual(self.compare("Load\t4\t960\t10\t960"), (0, ""))

    def test_much_less_asks_for_a_new_recording(self):
        self.assertEqual(
            self.compare("Load\t4\t2000\t10\t1000"),
            (0, "costs: Load 4: 1000 instructions are less than the recorded 2000; record them anew\n"),
        )

    def test_rows_without_their_counterpart_fail(self):
        code, text = self.compare("Save\t4\t1000\t10\t1000")
        self.assertEqual(code, 1)
        self.assertIn("costs: recorded and not measured: [('Save', '4')]\n", text)
        self.assertIn("costs: Load 4: instructions are not recorded (scripts/bench --record)\n", text)

    def test_another_compiler_is_not_compared(self):
        self.assertEqual(
            self.compare("Load\t4\t1\t1\t1", compiler="GCC 9, glibc 3.4"),
            (77, f"costs: skipped: recorded with GCC 9, glibc 3.4, compiled with {COMPILER}\n"),
        )

    def test_what_is_not_optimized_is_not_compared(self):
        self.program = self.script("program", self.printing(f"{COMPILER}, not optimized", "Load/4\t10\t1000"))
        self.assertEqual(
            self.compare("Load\t4\t1\t1\t1"), (77, f"costs: skipped: {COMPILER}, not optimized\n")
        )

    def test_without_valgrind_memory_is_compared(self):
        self.valgrind = "/nonexistent"
        absent = "costs: without Valgrind, no instructions are compared\n"
        self.assertEqual(self.compare("Load\t4\t1\t10\t1000"), (0, absent))
        self.assertEqual(
            self.compare("Load\t4\t1\t9\t1000"), (1, f"{absent}costs: Load 4: 10 allocations, 9 are recorded\n")
        )

    def test_a_recording_is_read_back(self):
        recorded = pathlib.Path(self.folder.name) / "new.tsv"
        self.assertEqual(self.run_costs("--record", str(recorded)), (0, ""))
        self.assertEqual(recorded.read_text().splitlines()[-1], "Load\t4\t1000\t10\t1000")
        self.assertEqual(self.run_costs("--recorded", str(recorded)), (0, ""))


if __name__ == "__main__":
    unittest.main()

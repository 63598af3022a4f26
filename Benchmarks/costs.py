#!/usr/bin/env python3
"""Compares what work costs in instructions, allocations and bytes with what is recorded.

costs.py --program PROGRAM [--valgrind PROGRAM] (--recorded FILE | --record FILE)

The exit code is 1 when something costs more than is recorded, and 77 when nothing can be compared: what compiled the program is
not what was recorded, or it is not optimised. Without Valgrind, no instructions are compared.
"""

import argparse
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
# How much more is the noise of where things are in memory, of each column.
TOLERANCES = {"instructions": 0.05, "allocations": 0.02, "bytes": 0.05}
HEADER = f"""# What the work of Benchmarks/Costs.cpp costs. Recorded by scripts/bench --record; Benchmarks/costs.py compares.
# Instructions are those of the work and of freeing what it returned; bytes are those that it keeps.
# row\tsize\t{chr(9).join(TOLERANCES)}
"""


def count_memory(program):
    """What compiled the program, and allocations and bytes by (row, size)."""
    lines = subprocess.run([program], capture_output=True, text=True, check=True).stdout.splitlines()
    costs = {}
    for line in lines[1:]:
        name, allocations, size_kept = line.split("\t")
        row, size = name.split("/")
        costs[row, size] = {"allocations": int(allocations), "bytes": int(size_kept)}
    return lines[0].removeprefix("# "), costs


def count_instructions(program, valgrind):
    counts = {}
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            [valgrind, "--tool=callgrind", "--instr-atstart=no", f"--callgrind-out-file={folder}/out", program],
            capture_output=True,
            check=True,
        )
        for path in pathlib.Path(folder).iterdir():
            text = path.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
            total = re.search(r"^(?:totals|summary): (\d+)", text, re.MULTILINE)
            if name and total:
                row, size = name.group(1).split("/")[:2]
                counts[row, size] = counts.get((row, size), 0) + int(total.group(1))
    return counts


def read_recorded(path):
    compiler, costs = "", {}
    for line in path.read_text().splitlines():
        if line.startswith("# GCC"):
            compiler = line.removeprefix("# ")
        elif not line.startswith("#"):
            row, size, *values = line.split("\t")
            costs[row, size] = dict(zip(TOLERANCES, map(int, values), strict=True))
    return compiler, costs


def compare(now, then):
    """Prints each cost that changed, and returns whether none is more than recorded."""
    is_fit = True
    if missing := then.keys() - now.keys():
        print(f"costs: recorded and not measured: {sorted(missing)}")
        is_fit = False
    for key, costs in now.items():
        for name, value in costs.items():
            recorded = then.get(key, {}).get(name)
            if recorded is None:
                print(f"costs: {' '.join(key)}: {name} are not recorded (scripts/bench --record)")
                is_fit = False
                continue
            allowed = recorded * (1 + TOLERANCES[name]) + (16 if name == "bytes" else 0)
            if value > allowed:
                print(f"costs: {' '.join(key)}: {value} {name}, {recorded} are recorded")
                is_fit = False
            elif value < recorded * (1 - 2 * TOLERANCES[name]):
                print(f"costs: {' '.join(key)}: {value} {name} are less than the recorded {recorded}; record them anew")
    return is_fit


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--valgrind", default="valgrind")
    parser.add_argument("--recorded", type=pathlib.Path)
    parser.add_argument("--record", type=pathlib.Path)
    arguments = parser.parse_args()
    compiler, now = count_memory(arguments.program)
    if "not optimized" in compiler:
        print(f"costs: skipped: {compiler}")
        return SKIPPED
    if arguments.recorded:
        recorded_compiler, then = read_recorded(arguments.recorded)
        if compiler != recorded_compiler:
            print(f"costs: skipped: recorded with {recorded_compiler}, compiled with {compiler}")
            return SKIPPED
    if shutil.which(arguments.valgrind):
        for key, count in count_instructions(arguments.program, arguments.valgrind).items():
            now[key] = {"instructions": count} | now[key]
    elif arguments.record:
        sys.exit("costs: Valgrind is not installed")
    else:
        print("costs: without Valgrind, no instructions are compared")
    if arguments.record:
        lines = ["\t".join([*key, *(str(costs[name]) for name in TOLERANCES)]) for key, costs in now.items()]
        arguments.record.write_text(f"{HEADER}# {compiler}\n" + "\n".join(lines) + "\n")
        return 0
    return 0 if compare(now, then) else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Reads what `llvm-cov show --show-branches=count` prints, and says which lines and decisions no test ran through.

A decision is a condition that stands in the source: each operand of `&&` and `||`, each condition of `if`, `?:` and
of a loop, and each case of a switch. It has two sides: it held, or it did not. Branches that only the compiler makes,
such as those around the destruction of temporaries, to where an exception is caught, or past the cases of a switch
without `default`, are not decisions. A template counts once, with the sides of everything that it is instantiated for.
"""

import argparse
import collections
import pathlib
import re
import sys

#: Only files of the libraries; what the compiler calls them begins with the folder that it ran in.
FILE = re.compile(r"^(?:\S*/)?((?:Core|Conf|Media)/\S+):$")
LINE = re.compile(r"^ *(\d+)\| *([0-9.]+[kMGTPEZY]?)?\|(.*)$")
SWITCH = re.compile(r"^ *switch \(")
BRANCH = re.compile(r"^[ |]*Branch \((\d+):(\d+)\): \[(.*)\]$")


class File:
    def __init__(self):
        self.lines = {}
        #: By place and side, whether a test ran through it.
        self.sides = collections.defaultdict(bool)
        #: Where the conditions of switches begin, by line and column.
        self.switches = set()

    def lines_missing(self):
        return sorted(number for number, ran in self.lines.items() if not ran)

    def sides_missing(self):
        return sorted(place for place, ran in self.sides.items() if not ran)


def read(text):
    """The files of the report by their names."""
    files = {}
    current = File()
    for line in text.splitlines():
        if found := FILE.match(line):
            current = files.setdefault(found[1], File())
        elif found := LINE.match(line):
            if found[2] is not None:
                number = int(found[1])
                current.lines[number] = current.lines.get(number, False) or found[2] != "0"
            if condition := SWITCH.match(found[3]):
                current.switches.add((int(found[1]), condition.end() + 1))
        elif (found := BRANCH.match(line)) and "Folded" not in found[3]:
            place = int(found[1]), int(found[2])
            for side in found[3].split(", ") if place not in current.switches else []:
                name, count = side.split(": ")
                current.sides[(*place, name)] |= count != "0"
    return {name: file for name, file in files.items() if file.lines}


def ranges(numbers):
    """1, 2, 3, 7 as "1-3, 7"."""
    texts = []
    for number in numbers:
        if texts and texts[-1][1] == number - 1:
            texts[-1][1] = number
        else:
            texts.append([number, number])
    return ", ".join(str(first) if first == last else f"{first}-{last}" for first, last in texts)


def share(part, whole):
    return 100.0 * part / whole if whole else 100.0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("report", type=pathlib.Path, help="what llvm-cov printed")
    parser.add_argument("--least-lines", type=float, default=0.0, help="the percentage of lines that has to be reached")
    parser.add_argument("--least-branches", type=float, default=0.0, help="the same of decisions")
    options = parser.parse_args()

    files = read(options.report.read_text())
    if not files:
        sys.exit(f"{options.report}: no file is in the report")
    for name, file in sorted(files.items()):
        for number in [ranges(file.lines_missing())] if file.lines_missing() else []:
            print(f"{name}: lines {number}")
        for line, column, side in file.sides_missing():
            print(f"{name}:{line}:{column}: never {side.lower()}")
    figures = []
    for what, least, parts in (("lines", options.least_lines, [file.lines for file in files.values()]),
                               ("decisions", options.least_branches, [file.sides for file in files.values()])):
        total = sum(len(part) for part in parts)
        ran = sum(sum(part.values()) for part in parts)
        print(f"campaign: {share(ran, total):.1f} % of the {what} ({ran:,} of {total:,})")
        figures.append(share(ran, total) >= least)
    return 0 if all(figures) else 1


if __name__ == "__main__":
    sys.exit(main())

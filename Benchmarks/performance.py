#!/usr/bin/env python3
"""Makes Docs/performance.md and its drawing of what the benchmarks wrote.

performance.py --rows rows.tsv --template performance.md.in --machine TEXT [--docs FOLDER] RESULT.json...
"""

import argparse
import json
import math
import pathlib
import re
import subprocess
import sys

OURS = "Zelnor"


def read_rows(path):
    names = ["row", "size", "items", "reference", "subtracted", "goal", "title"]
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            row = dict(zip(names, line.split("\t"), strict=True))
            row["items"], row["goal"] = int(row["items"]), float(row["goal"])
            yield row


def read_times(paths):
    """Medians in nanoseconds by (row, size) and by who did it, and the number of repetitions."""
    times, repetitions = {}, 0
    for path in paths:
        for result in json.loads(path.read_text())["benchmarks"]:
            if result.get("error_occurred"):
                sys.exit(f"performance: {result['name']}: {result['error_message']}")
            if result.get("aggregate_name") != "median":
                continue
            repetitions = max(repetitions, result["repetitions"])
            words = result["run_name"].split("/")
            by_hand = words[-1] == "manual_time"
            words = words[:-1] if by_hand else words
            row, who = words[:2]
            size = words[2] if len(words) > 2 else "-"
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[result["time_unit"]]
            clock = "real_time" if by_hand else "cpu_time"
            times.setdefault((row, size), {})[who] = result[clock] * scale
    return times, repetitions


def compare(rows, times):
    """Adds to each row our time, the reference's, and everybody's multiples of it."""
    for row in rows:
        measured = dict(times.get((row["row"], row["size"]), {}))
        if OURS not in measured:
            continue
        minus = measured.pop(row["subtracted"], None)
        if row["subtracted"] != "-":
            if minus is None:
                continue
            measured[OURS] -= minus
        row["ours"] = measured.pop(OURS) / row["items"]
        reference = measured.pop(row["reference"], None)
        row["unit"] = reference / row["items"] if reference else None
        if row["reference"] != "-" and not row["unit"]:
            continue
        row["multiple"] = row["ours"] / (row["unit"] or 1)
        row["peers"] = {who: time / row["items"] / row["unit"] for who, time in sorted(measured.items())} if row["unit"] else {}
        yield row


def time_text(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def multiple_text(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.2g}" if value < 10 else f"{value:.3g}"


def table(rows):
    lines = ["| Work | Ours | Reference | Ours, multiple | Goal | Peers, multiples |", "|---|---|---|---|---|---|"]
    for row in rows:
        has_reference = row["unit"] is not None
        reference = f"{row['reference']}, {time_text(row['unit'])}" if has_reference else "-"
        goal = f"{multiple_text(row['goal'])} x" if has_reference else f"below {time_text(row['goal'])}"
        multiple = f"{multiple_text(row['multiple'])} x" if has_reference else "-"
        reached = row["multiple"] <= row["goal"] * 1.05
        peers = ", ".join(f"{who} {multiple_text(value)}" for who, value in row["peers"].items())
        lines.append(
            f"| {row['title']} | {time_text(row['ours'])} | {reference} | {multiple} | {goal}{'' if reached else ' (missed)'}"
            f" | {peers or '-'} |"
        )
    return "\n".join(lines)


def draw(rows, path):
    """A line a row: ours, the goal and the peers, in multiples of the reference."""
    rows = [row for row in rows if row["unit"] is not None and row["multiple"] > 0]
    rows.reverse()
    blocks = {"peers": [], "goal": [], "ours": []}
    for height, row in enumerate(rows, 1):
        blocks["ours"].append(f"{row['multiple']} {height}")
        blocks["goal"].append(f"{row['goal']} {height}")
        blocks["peers"] += [f"{value} {height}" for value in row["peers"].values()]
    quoted = [re.sub(r'[\\"]', "", row["title"]) for row in rows]
    tics = ", ".join(f'"{title}" {height}' for height, title in enumerate(quoted, 1))
    data = "".join(f"${name} << EOD\n" + "\n".join(lines) + "\nEOD\n" for name, lines in blocks.items())
    highest = max(float(line.split()[0]) for lines in blocks.values() for line in lines)
    script = f"""{data}
set terminal svg size 900,{60 + 26 * len(rows)} font 'sans-serif,12' background '#ffffff' name 'performance'
set output '{path.name}'
set title "Multiples of the reference's time (less is better)"
set logscale x
set xrange [0.02:{10 ** math.ceil(math.log10(highest))}]
set yrange [0.4:{len(rows)}.6]
set ytics ({tics})
set xtics nomirror
set grid x y lc rgb '#dddddd'
set arrow from 1,0.4 to 1,{len(rows)}.6 nohead lc rgb '#888888' lw 1.5 back
set key outside bottom center horizontal
plot $peers with points pt 6 ps 0.7 lc rgb '#999999' title 'peers', \\
     $goal with points pt 2 ps 0.9 lw 2 lc rgb '#cc7700' title 'goal', \\
     $ours with points pt 7 ps 0.8 lc rgb '#1f77b4' title 'ours'
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True, cwd=path.parent)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rows", type=pathlib.Path, required=True)
    parser.add_argument("--template", type=pathlib.Path, required=True)
    parser.add_argument("--machine", required=True)
    parser.add_argument("--docs", type=pathlib.Path)
    parser.add_argument("results", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    times, repetitions = read_times(arguments.results)
    rows = list(compare(read_rows(arguments.rows), times))
    if not rows:
        sys.exit("performance: no row was measured")
    print(table(rows))
    if arguments.docs:
        page = arguments.template.read_text()
        for name, text in (("TABLE", table(rows)), ("REPETITIONS", str(repetitions)), ("MACHINE", arguments.machine)):
            page = page.replace(f"@{name}@", text)
        (arguments.docs / "performance.md").write_text(page)
        draw(rows, arguments.docs / "performance.svg")


if __name__ == "__main__":
    main()

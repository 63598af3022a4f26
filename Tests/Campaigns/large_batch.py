#!/usr/bin/env python3
"""large_batch.py <zconf> <jobs>: as many links to one clip become a batch, all of whose jobs are done as far as it can tell. Planning
it, asking how it stands, running what is not done, which is nothing, and making its report must take seconds, and memory for little more
than what the record of the batch says. Exit code 1: one of that does not hold."""

import json
import os
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PRESET = '{"wav":{"container":"wav","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}'

# Far more than each takes, also without optimisation on a busy machine; what grows with the square of the jobs takes more than that.
MOST_MILLISECONDS = {"new": 30, "status": 2, "run": 2, "report": 3}
# A record of a job is a few hundred bytes, and some kilobytes when it is read.
MOST_BYTES = 8192
# Of a process that does nothing yet.
FEW = 10


def run(folder, expected, *words):
    """What the command took: seconds of the clock, seconds of processors, and its most bytes."""
    begin = time.monotonic()
    with open(folder / "messages", "wb") as messages:
        process = subprocess.Popen(words, cwd=folder, stdin=subprocess.DEVNULL, stdout=messages, stderr=messages)
        _, status, used = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != expected:
        raise AssertionError(f"{words}: exit code {process.returncode}\n{(folder / 'messages').read_text(errors='replace')[-2000:]}")
    return time.monotonic() - begin, used.ru_utime + used.ru_stime, used.ru_maxrss * 1024


def make_inputs(folder, count):
    folder.mkdir()
    for number in range(1, count + 1):
        (folder / f"{number}.wav").symlink_to("../clip.wav")


def pretend(folder, batch):
    """The first job was run; the others have its result, and its output under their own names."""
    jobs = json.loads((folder / batch / "batch.json").read_text())["batch"]["jobs"]
    first, *others = jobs.items()
    result = (folder / batch / "results" / f"{first[0]}.json").read_text()
    for number, job in others:
        (folder / batch / "results" / f"{number}.json").write_text(result)
        os.link(folder / "out" / first[1]["output"], folder / "out" / job["output"])


def measure(zconf, folder, count):
    """What each command takes for a batch of so many jobs."""
    inputs, batch = f"in{count}", f"batch{count}"
    make_inputs(folder / inputs, count)
    (folder / "out").mkdir()
    taken = {"new": run(folder, 0, zconf, "batch", "new", "-p", "./wav.json", "--output-dir", "out", "-o", batch, inputs)}
    run(folder, 0, zconf, "batch", "run", batch, "--only", "1")
    pretend(folder, batch)
    taken["status"] = run(folder, 0, zconf, "batch", "status", batch)
    told = (folder / "messages").read_text().splitlines()[0]
    if told != f"{batch}: {count} jobs: {count} done":
        raise AssertionError(told)
    # A program that is not there shows that none is started.
    taken["run"] = run(folder, 0, zconf, "batch", "run", batch, "--ffmpeg", "/none")
    taken["report"] = run(folder, 0, zconf, "batch", "report", batch, "-o", "report.html")
    rows = len(re.findall('<tr id="job-', (folder / "report.html").read_text()))
    if rows != count:
        raise AssertionError(f"the report has {rows} rows")
    subprocess.run(["rm", "-rf", "out"], cwd=folder, check=True)
    return taken


def main():
    zconf, count = os.path.abspath(sys.argv[1]), int(sys.argv[2])
    findings = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "wav.json").write_text(PRESET)
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.2", "clip.wav"], cwd=folder, check=True)
        few, many = measure(zconf, folder, FEW), measure(zconf, folder, count)
        for command, (clock, seconds, memory) in many.items():
            growth = (memory - few[command][2]) / (count - FEW)
            milliseconds = 1000 * (seconds - few[command][1]) / (count - FEW)
            is_good = milliseconds <= MOST_MILLISECONDS[command] and growth <= MOST_BYTES
            findings += not is_good
            print(f"campaign: {command} {clock:.1f} s ({seconds:.1f} s of processors), {memory / 1e6:.0f} MB, {growth / 1000:.1f} kB a job"
                  + ("" if is_good else f", which is more than {MOST_MILLISECONDS[command]} ms or {MOST_BYTES} bytes a job"))
    print(f"campaign: {count} jobs, {findings} findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())

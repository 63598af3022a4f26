#!/usr/bin/env python3
"""Converts a media file by a preset, shows how far it is, and tells what was made."""

import sys

import zelnor


def show(progress: zelnor.RunProgress) -> None:
    part = "" if progress.part is None else f" {progress.part:.0%}"
    print(f"{progress.file}:{part}", file=sys.stderr)


def main(source: str, preset: str, output: str) -> int:
    request = zelnor.JobRequest(output=output)
    planned = zelnor.plan(zelnor.probe(source), zelnor.Preset.open(zelnor.find_preset(preset)), request)
    for note in planned.notes:
        print(f"note: {note}", file=sys.stderr)

    # Everything that would keep it from running, each with its place.
    faults = zelnor.check(planned.graph)
    for fault in faults:
        print(fault, file=sys.stderr)
    if faults:
        return 1

    result = zelnor.run(planned.graph, on_progress=show)
    for target in result.targets:
        for stream in zelnor.probe(target.file).streams:
            print(f"{target.file}: {stream.kind.value}, {stream.codec}")
    return 0 if result.is_done else 1


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit("usage: transcode.py <media file> <preset> <output file>")
    try:
        sys.exit(main(*sys.argv[1:]))
    except zelnor.ZelnorException as error:
        sys.exit(f"transcode.py: {error}")

#!/usr/bin/env python3
"""Tells what is in media files, several at once, since looking into one leaves the others their turn."""

import sys
from concurrent.futures import ThreadPoolExecutor
from typing import Union

import zelnor
from zelnor import StreamKind


def probe(path: str) -> Union[zelnor.MediaFile, zelnor.ProbeException]:
    try:
        return zelnor.probe(path)
    except zelnor.ProbeException as error:
        return error


def describe(stream: zelnor.MediaStream) -> str:
    words = [stream.kind.value, stream.codec]
    record = stream.record
    if stream.kind is StreamKind.VIDEO:
        words.append(f"{record['width'].as_int()}x{record['height'].as_int()}")
        words.append(f"{float(record['frameRateRatio'].as_fraction()):g} fps")
    elif stream.kind is StreamKind.AUDIO:
        words.append(f"{record['sample_rate'].as_int()} Hz, {stream.channels} channels")
    return ", ".join(words)


def main(*paths: str) -> int:
    zelnor.keep_ffmpeg_messages()
    failures = 0
    with ThreadPoolExecutor() as threads:
        for found in threads.map(probe, paths):
            if isinstance(found, zelnor.ProbeException):
                print(found, file=sys.stderr)
                failures += 1
                continue
            print(f"{found.name}: {(found.duration or 0) / 1e6:.1f} s")
            for stream in found.streams:
                print(f"  {stream.index}: {describe(stream)}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

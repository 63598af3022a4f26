#!/usr/bin/env python3
"""Makes a job without looking at any media, edits it, saves it and draws it."""

import sys
from fractions import Fraction

import zelnor
from zelnor import Graph, IFormatCodecVideo as Video, IFormatFile as File, Record


def main(document: str, drawing: str) -> None:
    # A source, its first stream, and the file that it shall become.
    job = Graph()
    source = job.add_node(Graph.in_file("holiday.mov"))
    stream = job.add_node(Graph.raw_stream(0))
    target = job.add_node(Record("target", {File.TAG_CONTAINER: File.FORMAT_MP4, "filePath": "holiday.mp4"}))
    job.add_link(source, stream)

    settings = Record(Video.TAG_FORMAT_CODEC_VIDEO, {"codec_id": Video.CODEC_ID_H264})
    settings[Video.TAG_WIDTH] = 1280
    settings[Video.TAG_HEIGHT] = 720
    settings[Video.TAG_FPS] = Fraction(30000, 1001)
    settings["bitrate"] = zelnor.default_video_bitrate(Video.CODEC_ID_H264, 1280, 720, Fraction(30000, 1001))
    job.add_link(stream, target, settings)
    print(settings, end="")

    # What a record is comes back as plain Python values.
    changed = settings.copy()
    changed["bitrate"] = settings["bitrate"].as_int() // 2
    other = Graph.from_json(job.to_json())
    other.remove_link(stream, target)
    other.add_link(stream, target, changed)
    for difference in zelnor.diff(Graph.from_json(job.to_json()), other):
        print(f"{difference.place}, {difference.key}: {difference.one} became {difference.other}")

    other.add_node(Record("alone"))
    for fault in other.faults():
        print(fault)

    job.save(document)
    job.draw(drawing)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit("usage: edit_job.py <job document> <drawing>")
    try:
        main(*sys.argv[1:])
    except zelnor.ZelnorException as error:
        sys.exit(f"edit_job.py: {error}")

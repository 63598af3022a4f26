"""What the tests share: a clip, presets and jobs."""

from __future__ import annotations

import os
import pathlib
import signal
import subprocess
import sys
from fractions import Fraction
from typing import Any, Callable, Iterator, List

import pytest

import zelnor

SOURCES = pathlib.Path(__file__).resolve().parents[2]
PRESETS = SOURCES / "Presets"


# A sanitizer that is loaded into the tests is not for ffmpeg and dot, but for other interpreters.
PRELOAD = os.environ.pop("LD_PRELOAD", "")


# A shell that starts the tests in the background has them ignore Ctrl+C, and so would the interpreters that they start.
signal.signal(signal.SIGINT, signal.default_int_handler)


def _ffmpeg(*arguments: str) -> None:
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", *arguments], check=True)


@pytest.fixture(scope="session")
def preloaded() -> str:
    """The libraries that stand before the interpreter's own: those of a sanitizer, or none."""
    return PRELOAD


@pytest.fixture
def run_python() -> Callable[..., "subprocess.CompletedProcess[str]"]:
    """Runs an interpreter of its own."""

    def run(*arguments: object, **options: Any) -> "subprocess.CompletedProcess[str]":
        command = [sys.executable, *map(str, arguments)]
        environment = {**os.environ, "LD_PRELOAD": PRELOAD}
        return subprocess.run(command, capture_output=True, text=True, timeout=120, env=environment, **options)

    return run


@pytest.fixture
def start_python() -> Iterator[Callable[..., "subprocess.Popen[str]"]]:
    """Starts an interpreter in a process group of its own, and ends it after the test."""
    started: List["subprocess.Popen[str]"] = []

    def start(*arguments: object) -> "subprocess.Popen[str]":
        process = subprocess.Popen(
            [sys.executable, *map(str, arguments)],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            env={**os.environ, "LD_PRELOAD": PRELOAD},
            start_new_session=True,
        )
        started.append(process)
        return process

    yield start
    for process in started:
        process.kill()
        process.communicate()


@pytest.fixture(scope="session")
def clip(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """A second of video (64x48, 25 fps) and of stereo sound, with a title and a chapter."""
    folder = tmp_path_factory.mktemp("clip")
    metadata = folder / "metadata.txt"
    metadata.write_text(
        ";FFMETADATA1\ntitle=Holiday\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\ntitle=Beach\n"
    )
    made = folder / "clip.mkv"
    _ffmpeg(
        *("-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=1"),
        *("-f", "lavfi", "-i", "sine=d=1"),
        *("-i", str(metadata), "-map_metadata", "2", "-map_chapters", "2"),
        *("-map", "0:v", "-map", "1:a", "-ac", "2", "-c:v", "mpeg4", "-c:a", "ac3"),
        *("-metadata:s:a:0", "language=deu", str(made)),
    )
    return made


@pytest.fixture(scope="session")
def long_clip(tmp_path_factory: pytest.TempPathFactory) -> pathlib.Path:
    """Sound that takes long to encode: a quarter of an hour of silence."""
    folder = tmp_path_factory.mktemp("long")
    once, made = folder / "once.mkv", folder / "long.mkv"
    _ffmpeg("-f", "lavfi", "-i", "anullsrc=r=44100:cl=stereo", "-t", "30", "-c:a", "flac", str(once))
    _ffmpeg("-stream_loop", "29", "-i", str(once), "-c", "copy", str(made))
    return made


@pytest.fixture(scope="session")
def media(clip: pathlib.Path) -> zelnor.MediaFile:
    return zelnor.probe(clip)


@pytest.fixture(scope="session")
def mp3() -> zelnor.Preset:
    return zelnor.Preset.open(PRESETS / "mp3.json")


@pytest.fixture(scope="session")
def mp4() -> zelnor.Preset:
    return zelnor.Preset.open(PRESETS / "mp4-h264-aac.json")


@pytest.fixture
def plan_mp3(
    media: zelnor.MediaFile, mp3: zelnor.Preset, tmp_path: pathlib.Path
) -> Callable[..., zelnor.PlannedJob]:
    """Plans a job that makes an MP3 file of the clip."""

    def plan(name: str = "out.mp3", **request: Any) -> zelnor.PlannedJob:
        return zelnor.plan(media, mp3, zelnor.JobRequest(output=tmp_path / name, **request))

    return plan


@pytest.fixture
def long_job(
    long_clip: pathlib.Path, mp3: zelnor.Preset, tmp_path: pathlib.Path
) -> zelnor.Graph:
    """A job that runs for many seconds."""
    request = zelnor.JobRequest(output=tmp_path / "long.mp3")
    return zelnor.plan(zelnor.probe(long_clip), mp3, request).graph


@pytest.fixture
def graph() -> zelnor.Graph:
    """1 -> 3 -> 2: a source, its stream and a target."""
    made = zelnor.Graph()
    source = made.add_node(zelnor.Graph.in_file("in.mkv"))
    target = made.add_node(zelnor.Record("target", {"container": "mp4", "filePath": "out.mp4"}))
    stream = made.add_node(zelnor.Graph.raw_stream(0))
    made.add_link(source, stream)
    settings = {"codec_id": "CODEC_ID_H264", "frameRateRatio": Fraction(25)}
    made.add_link(stream, target, zelnor.Record("format_codec_video", settings))
    return made

"""The example programs, each as its user would run it."""

from __future__ import annotations

import json
import pathlib
import re
import shutil
from typing import Any

import pytest

SOURCES = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = SOURCES / "Examples" / "Python"


def test_transcode_makes_a_file(run_python: Any, clip: pathlib.Path, tmp_path: pathlib.Path) -> None:
    output = tmp_path / "out.mp4"
    done = run_python(EXAMPLES / "transcode.py", clip, SOURCES / "Presets" / "mp4-h264-aac.json", output)
    assert done.returncode == 0
    # FFmpeg keeps chapters of such a file as a stream, too.
    assert done.stdout == "".join(f"{output}: {stream}\n" for stream in ("video, h264", "audio, aac", "data, bin_data"))
    assert f"{output}: " in done.stderr  # how far it is depends on the machine


def test_transcode_tells_what_is_wrong_in_one_line(run_python: Any, tmp_path: pathlib.Path) -> None:
    done = run_python(EXAMPLES / "transcode.py", tmp_path / "no.mkv", "mp3", tmp_path / "out.mp3")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.startswith(f"transcode.py: {tmp_path}/no.mkv: ")
    assert done.stderr.count("\n") == 1


def test_edit_job_tells_records_differences_and_faults(run_python: Any, tmp_path: pathlib.Path) -> None:
    done = run_python(EXAMPLES / "edit_job.py", "job.json", "job.dot", cwd=tmp_path)
    assert (done.returncode, done.stderr) == (0, "")
    lines = done.stdout.splitlines()
    bitrate = int(lines[5].split()[-1])
    assert lines[:5] == [
        "format_codec_video:",
        "  codec_id: CODEC_ID_H264",
        "  width: 1280",
        "  height: 720",
        "  frameRateRatio: 30000/1001",
    ]
    assert lines[6] == f"link 2 -> 3, bitrate: {bitrate} became {bitrate // 2}"
    assert len(lines) == 8  # the last is a sentence of the library
    assert len(json.loads((tmp_path / "job.json").read_text())["vertices"]) == 3
    assert (tmp_path / "job.dot").read_text().startswith("digraph")


@pytest.mark.skipif(shutil.which("dot") is None, reason="Graphviz is not installed")
def test_edit_job_draws_a_picture(run_python: Any, tmp_path: pathlib.Path) -> None:
    assert run_python(EXAMPLES / "edit_job.py", "job.json", "job.svg", cwd=tmp_path).returncode == 0
    assert "<svg" in (tmp_path / "job.svg").read_text()


def test_describe_media_tells_the_streams(run_python: Any, clip: pathlib.Path, tmp_path: pathlib.Path) -> None:
    done = run_python(EXAMPLES / "describe_media.py", clip, tmp_path / "no.mkv", clip)
    once = f"{clip}: 1.0 s\n  0: video, mpeg4, 64x48, 25 fps\n  1: audio, ac3, 44100 Hz, 2 channels\n"
    assert (done.returncode, done.stdout) == (1, once * 2)
    assert done.stderr.startswith(f"{tmp_path}/no.mkv: ")


@pytest.mark.parametrize("document", ["README.md", "Bindings/Python/README.md"])
def test_the_example_of_a_document_works(
    run_python: Any, clip: pathlib.Path, tmp_path: pathlib.Path, document: str
) -> None:
    [program] = re.findall(r"^```python\n(.*?)^```$", (SOURCES / document).read_text(), re.DOTALL | re.MULTILINE)
    shutil.copy(clip, tmp_path / "holiday.mov")
    done = run_python("-c", program, cwd=tmp_path)
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.startswith("holiday.mp4 ")  # how far it is depends on the machine
    assert (tmp_path / "holiday.mp4").exists()

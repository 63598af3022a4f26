"""What the library forgot to free; the address sanitizer's part for leaks tells, while the interpreter is still alive."""

from __future__ import annotations

import os
import pathlib
import textwrap
from typing import Any

import pytest

# The interpreter itself finds what it holds; at its end it leaves much behind.
OPTIONS = "detect_leaks=1:leak_check_at_exit=0:symbolize=0"
CHECK = textwrap.dedent(
    """
    import ctypes, gc, sys
    gc.collect()
    sys.exit(ctypes.CDLL(None).__lsan_do_recoverable_leak_check())
    """
)
USE = textwrap.dedent(
    """
    import sys, threading, zelnor
    source, preset, output = sys.argv[1:]
    record = zelnor.Record("x", {"a": [{"b": 1}, {"b": "two"}], "c": {"d": None}})
    token = zelnor.CancelToken()

    def stop(progress):
        raise KeyError(progress)

    def use():
        graph = zelnor.Graph()
        graph.add_node(record)
        zelnor.Graph.from_json(graph.to_json()).to_dot()
        zelnor.Record.from_json(record.to_json())
        request = zelnor.JobRequest(output=output, codecs=["CODEC_ID_MP3"])
        opened = zelnor.Preset.open(preset)
        job = zelnor.plan(zelnor.probe(source), opened, request).graph
        zelnor.report(job)
        zelnor.diff(job, graph)
        assert not zelnor.validate_document(job.to_json().replace("MP3", "MP33")).is_valid
        zelnor.explain_codec_support("mp4", "CODEC_ID_VP8")
        for wrong in (
            lambda: zelnor.probe("/nonexistent"),
            lambda: zelnor.Graph.from_json("{"),
            lambda: zelnor.Graph.from_json('{"vertices":[{"id":1,"data":{"data":{"x":true}}}]}'),
            lambda: zelnor.Preset.read("{}"),
            lambda: zelnor.Preset.from_record(record),
            lambda: graph.node(7),
            lambda: graph.add_link(1, 7),
            lambda: graph.add_node(1),
            lambda: zelnor.plan(zelnor.probe(source), opened, zelnor.JobRequest(output=output, codecs=[1])),
            lambda: zelnor.explain_codec_support("mp5", "x"),
            lambda: zelnor.codec_id(-1),
            lambda: zelnor.run(job, ffmpeg="/nonexistent"),
            lambda: zelnor.run(job, on_progress=stop),
            lambda: zelnor.run(job, overwrite=1),
        ):
            try:
                wrong()
            except Exception:
                pass
            else:
                raise SystemExit("nothing was raised")

    for _ in range(3):
        use()
    thread = threading.Thread(target=use)
    thread.start()
    thread.join()
    del thread
    """
)


@pytest.fixture
def _leak_check(monkeypatch: pytest.MonkeyPatch, preloaded: str) -> None:
    if "asan" not in preloaded:
        pytest.skip("only the address sanitizer finds leaks")
    monkeypatch.setenv("ASAN_OPTIONS", f"{os.environ['ASAN_OPTIONS']}:{OPTIONS}")


PRESET = pathlib.Path(__file__).resolve().parents[2] / "Presets" / "mp3.json"


def test_nothing_is_leaked(_leak_check: None, clip: pathlib.Path, tmp_path: pathlib.Path, run_python: Any) -> None:
    done = run_python("-c", USE + CHECK, clip, PRESET, tmp_path / "out.mp3")
    assert (done.returncode, done.stderr) == (0, "")


def test_a_leak_is_found(_leak_check: None, run_python: Any) -> None:
    leak = "import ctypes, zelnor\nctypes.CDLL(None).malloc(12345)\n"
    done = run_python("-c", leak + CHECK)
    assert done.returncode == 1
    assert "12345 byte(s)" in done.stderr

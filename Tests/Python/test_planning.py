"""From media files and presets to jobs: probe, plan, check, diff."""

from __future__ import annotations

import os
import pathlib
import pickle
import threading
from fractions import Fraction
from typing import Any, Callable, List

import pytest

import zelnor
from zelnor import JobRequest, Record, StreamRequest

Plan = Callable[..., zelnor.PlannedJob]


# Probe


def test_a_media_file_tells_its_streams(media: zelnor.MediaFile, clip: pathlib.Path) -> None:
    assert media.name == str(clip)
    assert media.demuxer.startswith("matroska")
    assert [(stream.index, stream.kind, stream.codec) for stream in media.streams] == [
        (0, zelnor.StreamKind.VIDEO, "mpeg4"),
        (1, zelnor.StreamKind.AUDIO, "ac3"),
    ]


def test_a_media_file_tells_its_record_chapters_and_duration(media: zelnor.MediaFile) -> None:
    assert media.record["metadata"]["title"].as_str() == "Holiday"
    assert media.chapters == (zelnor.MediaChapter(0, 500000, "Beach"),)
    assert media.duration is not None and abs(media.duration - 1000000) < 100000
    assert media.duration_is_estimated is False
    assert media.timecode == ""


def test_a_video_stream_tells_what_it_is(media: zelnor.MediaFile) -> None:
    video = media.streams[0]
    assert video.record["width"].as_int() == 64
    assert video.record["frameRateRatio"].as_fraction() == 25
    assert video.pixel_format == "yuv420p"
    assert video.rotation == 0
    assert video.programs == []
    assert isinstance(video.color, zelnor.VideoColor)
    assert video.hdr == zelnor.VideoHdr("", "", "", False)
    assert video.picture == b""
    assert not video.is_attached_picture


def test_an_audio_stream_tells_what_it_is(media: zelnor.MediaFile) -> None:
    audio = media.streams[1]
    assert audio.channels == 2
    assert audio.record["codec_id"].as_str() == "CODEC_ID_AC3"
    assert audio.record["metadata"]["language"].as_str() == "deu"


def test_a_stream_stays_when_its_file_is_gone(clip: pathlib.Path) -> None:
    stream = zelnor.probe(clip).streams[1]
    assert stream.codec == "ac3"
    assert repr(stream) == "<zelnor.MediaStream 1: audio, ac3>"


def test_the_record_of_a_file_is_a_copy(media: zelnor.MediaFile) -> None:
    media.record["metadata"]["title"] = "Other"
    assert media.record["metadata"]["title"].as_str() == "Holiday"


def test_what_a_file_is_cannot_be_changed(media: zelnor.MediaFile) -> None:
    with pytest.raises(AttributeError):
        media.name = "other"  # type: ignore[misc]


@pytest.mark.parametrize("name", ["MediaFile", "MediaStream", "Preset"])
def test_what_only_the_library_makes_is_not_made(name: str) -> None:
    with pytest.raises(TypeError, match="^cannot create "):
        getattr(zelnor, name)()


def test_a_file_that_is_not_there_is_named(tmp_path: pathlib.Path) -> None:
    path = str(tmp_path / "no.mkv")
    with pytest.raises(zelnor.ProbeException) as caught:
        zelnor.probe(path)
    assert caught.value.file == path
    assert caught.value.stream is None
    assert str(caught.value).startswith(f"{path}: ")  # the reason is FFmpeg's


def test_a_file_that_is_not_media_is_refused(tmp_path: pathlib.Path) -> None:
    (tmp_path / "x.mkv").write_bytes(b"no media")
    with pytest.raises(zelnor.ProbeException):
        zelnor.probe(tmp_path / "x.mkv")


def test_threads_may_probe_at_once(clip: pathlib.Path) -> None:
    found: List[int] = []
    threads = [threading.Thread(target=lambda: found.append(len(zelnor.probe(clip).streams))) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [2, 2, 2, 2]


# Presets


def test_a_preset_tells_its_record_and_streams(mp4: zelnor.Preset) -> None:
    assert mp4.record.name == "mp4-h264-aac"
    assert mp4.stream_count == 2
    assert mp4.stream_indexes(zelnor.IPreset.STREAM_TYPE_AUDIO) == [1]
    assert mp4.stream_indexes("no such") == []
    assert not mp4.is_audio_only
    assert repr(mp4) == "<zelnor.Preset 'mp4-h264-aac'>"


def test_a_preset_is_made_of_a_record(mp3: zelnor.Preset) -> None:
    record = mp3.record
    record["$$STREAMS$$"]["audio"]["bitrate"] = 96000
    made = zelnor.Preset.from_record(record)
    assert made.is_audio_only
    assert made.record == record


def test_the_rules_of_presets_hold_for_a_record(mp3: zelnor.Preset) -> None:
    record = mp3.record
    record["$$STREAMS$$"]["audio"]["bitrate"] = "fast"
    with pytest.raises(zelnor.PresetFileException) as caught:
        zelnor.Preset.from_record(record, name="mine")
    assert caught.value.file == "mine"
    assert caught.value.key == "mp3.$$STREAMS$$.audio.bitrate"


def test_a_preset_is_read_from_a_text(mp3: zelnor.Preset) -> None:
    assert zelnor.Preset.read(mp3.record.to_json()).record == mp3.record


@pytest.mark.parametrize("text", ["", "x", "{}", "[]", "\0"])
def test_a_text_that_is_not_a_preset_is_refused(text: str) -> None:
    with pytest.raises(zelnor.PresetFileException):
        zelnor.Preset.read(text, name="mine.json")


def test_a_preset_file_that_is_not_there_is_named(tmp_path: pathlib.Path) -> None:
    with pytest.raises(zelnor.PresetFileException, match="No such file or directory$"):
        zelnor.Preset.open(tmp_path / "no.json")


def test_presets_are_found_in_folders(tmp_path: pathlib.Path, mp3: zelnor.Preset) -> None:
    (tmp_path / "mine.json").write_text(mp3.record.to_json())
    assert zelnor.list_presets([tmp_path]) == ["mine"]
    assert zelnor.find_preset("mine", [tmp_path]) == str(tmp_path / "mine.json")
    with pytest.raises(zelnor.PresetFileException, match=r"^yours: neither a file nor a known preset \(known: mine\)"):
        zelnor.find_preset("yours", [tmp_path])
    assert zelnor.list_presets([]) == []


def test_the_default_folders_exist() -> None:
    assert all(os.path.isdir(folder) for folder in zelnor.default_preset_folders())


# Plan


def test_a_job_is_planned(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    planned = plan_mp3("out")
    assert planned.output == str(tmp_path / "out.mp3")
    assert planned.graph.topology_is_valid()
    assert planned.graph.node(2)["container"].as_str() == "mp3"
    assert all(isinstance(note, str) for note in planned.notes)


def test_a_request_changes_what_the_preset_says(media: zelnor.MediaFile, mp4: zelnor.Preset) -> None:
    request = JobRequest(
        output="out.mp4",
        streams=StreamRequest(max_size=zelnor.FrameLimit(32, 32), chosen=[0, 1]),
        codecs=["CODEC_ID_MPEG4"],
        frame_rate=Fraction(25, 2),
        settings=[zelnor.parse_setting("audio.bitrate=96000"), zelnor.SettingOverride("video.bitrate", Record("", 99000))],
        start=100000,
        end=900000,
    )
    graph = zelnor.plan(media, mp4, request).graph
    records = {graph.link(*link).name: graph.link(*link) for link in graph.links()}
    video = records["format_codec_video"]
    assert video["codec_id"].as_str() == "CODEC_ID_MPEG4"
    assert video["width"].as_int() <= 32
    assert video["frameRateRatio"].as_fraction() == Fraction(25, 2)
    assert video["bitrate"].as_int() == 99000
    assert records["format_codec_audio"]["bitrate"].as_int() == 96000
    assert graph.node(2)["start"].as_int() == 100000
    assert graph.node(2)["end"].as_int() == 900000


def test_streams_are_copied_by_their_kind(media: zelnor.MediaFile, mp4: zelnor.Preset) -> None:
    request = JobRequest("out.mp4", StreamRequest(copied=[zelnor.StreamKind.AUDIO]))
    graph = zelnor.plan(media, mp4, request).graph
    audio = [graph.link(*link) for link in graph.links() if graph.link(*link).name == "format_codec_audio"]
    assert audio[0]["codec_id"].as_str() == "CODEC_ID_AC3"


def test_a_language_that_there_is_not_is_refused(plan_mp3: Plan) -> None:
    with pytest.raises(zelnor.PlanException):
        plan_mp3(streams=StreamRequest(audio_languages=["fra"]))
    assert plan_mp3(streams=StreamRequest(audio_languages=["ger"])).graph.topology_is_valid()


def test_a_stream_that_there_is_not_is_refused_with_its_file(plan_mp3: Plan, clip: pathlib.Path) -> None:
    with pytest.raises(zelnor.PlanException) as caught:
        plan_mp3(streams=StreamRequest(chosen=[7]))
    assert caught.value.file == str(clip)


def test_a_codec_that_the_container_cannot_hold_is_refused_with_what_it_holds(
    media: zelnor.MediaFile, tmp_path: pathlib.Path
) -> None:
    preset = zelnor.Preset.read('{"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_VP8"}}}}')
    reason = "the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, "
    with pytest.raises(zelnor.PlanException, match=reason) as caught:
        zelnor.plan(media, preset, JobRequest(output=tmp_path / "out"))
    assert caught.value.key == "p.$$STREAMS$$.video.codec_id"
    [said] = zelnor.explain_codec_support("mp4", "CODEC_ID_VP8").reasons
    assert said.startswith("The container mp4 cannot hold CODEC_ID_VP8. It holds CODEC_ID_H264, ")


def test_a_strict_request_refuses_losses(plan_mp3: Plan) -> None:
    with pytest.raises(zelnor.PlanException):
        plan_mp3(strict=True)


@pytest.mark.parametrize(
    "request_, error",
    [
        (None, TypeError),
        ("out.mp3", TypeError),
        (JobRequest(output=None), TypeError),  # type: ignore[arg-type]
        (JobRequest(output="a\0b"), ValueError),
        (JobRequest(start="1"), TypeError),  # type: ignore[arg-type]
        (JobRequest(start=2**63), OverflowError),
        (JobRequest(strict="no"), TypeError),  # type: ignore[arg-type]
        (JobRequest(codecs="CODEC_ID_MP3"), TypeError),
        (JobRequest(codecs=["\ud800"]), UnicodeEncodeError),
        (JobRequest(frame_rate=Fraction(1, 2**70)), OverflowError),
        (JobRequest(frame_rate="x"), ValueError),  # type: ignore[arg-type]
        (JobRequest(frame_rate=29.97), TypeError),  # type: ignore[arg-type]
        (JobRequest(frame_rate=True), TypeError),
        (JobRequest(streams=None), AttributeError),  # type: ignore[arg-type]
        (JobRequest(streams=StreamRequest(chosen=[-1])), OverflowError),
        (JobRequest(streams=StreamRequest(chosen=[True])), TypeError),
        (JobRequest(streams=StreamRequest(max_size=zelnor.FrameLimit(2**32, 1))), OverflowError),
        (JobRequest(streams=StreamRequest(copied=["video"])), AttributeError),  # type: ignore[list-item]
        (JobRequest(merges=[(0, 1)]), AttributeError),  # type: ignore[list-item]
        (JobRequest(settings=[zelnor.SettingOverride("a", None)]), AttributeError),  # type: ignore[arg-type]
    ],
)
def test_a_request_that_is_not_one_is_refused(
    media: zelnor.MediaFile, mp3: zelnor.Preset, request_: Any, error: Any
) -> None:
    with pytest.raises(error):
        zelnor.plan(media, mp3, request_)


@pytest.mark.parametrize("arguments", [(None, 1), (0, None), (0, 0), ("in.mkv", 1)])
def test_source_and_preset_are_what_they_are(media: zelnor.MediaFile, mp3: zelnor.Preset, arguments: Any) -> None:
    things = {0: media, 1: mp3}
    with pytest.raises(TypeError):
        zelnor.plan(*(things.get(argument, argument) for argument in arguments), JobRequest("x.mp3"))


def test_a_setting_is_read_with_its_type() -> None:
    assert zelnor.parse_setting("video.frameRateRatio=30000/1001").value.as_fraction() == Fraction(30000, 1001)
    with pytest.raises(zelnor.PlanException, match="did you mean 'bitrate'"):
        zelnor.parse_setting("video.bitrat=1")


def test_a_job_document_is_read_with_notes(plan_mp3: Plan, tmp_path: pathlib.Path) -> None:
    planned = plan_mp3()
    planned.graph.save(tmp_path / "job.json")
    job = zelnor.read_job(tmp_path / "job.json")
    assert zelnor.diff(job.graph, zelnor.Graph.from_json(planned.graph.to_json())) == []
    assert job.notes == ()
    (tmp_path / "bad.json").write_text("{}")
    with pytest.raises(zelnor.JobException) as caught:
        zelnor.read_job(tmp_path / "bad.json")
    assert caught.value.file == str(tmp_path / "bad.json")


# Check, diff


def test_a_job_that_can_be_run_has_no_faults(plan_mp3: Plan) -> None:
    assert zelnor.check(plan_mp3().graph) == []


def test_a_fault_tells_its_place(plan_mp3: Plan) -> None:
    graph = zelnor.Graph.from_json(plan_mp3().graph.to_json().replace("CODEC_ID_MP3", "CODEC_ID_MP33"))
    fault = zelnor.check(graph, "job.json")[0]
    assert fault.place.file == "job.json"
    assert fault.place.link == (3, 2)
    assert fault.place.node is None
    assert fault.place.text == str(fault.place)
    assert "CODEC_ID_MP33" in fault.reason  # the wording is the library's
    assert pickle.loads(pickle.dumps(fault)) == fault


def test_a_report_has_faults_and_losses(plan_mp3: Plan) -> None:
    report = zelnor.report(plan_mp3().graph)
    assert report.faults == ()
    assert {loss.kind for loss in report.losses} == {zelnor.JobFaultKind.LOSS}


def test_jobs_differ_by_key(plan_mp3: Plan) -> None:
    document = plan_mp3().graph.to_json()
    graph = zelnor.Graph.from_json(document)
    other = zelnor.Graph.from_json(document.replace("192000", "96000"))
    assert [(d.place, d.key, d.one, d.other) for d in zelnor.diff(graph, other)] == [
        ("link 3 -> 2", "bitrate", "192000", "96000")
    ]
    assert zelnor.diff(graph, other)[0].one_value == Record("bitrate", 192000)


@pytest.mark.parametrize("call", ["check", "report", "run", "verify"])
@pytest.mark.parametrize("graph", [None, 1, "job.json", {}])
def test_what_is_not_a_graph_is_refused(call: str, graph: Any) -> None:
    with pytest.raises(TypeError):
        getattr(zelnor, call)(graph)

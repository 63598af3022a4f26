"""What is wrong with documents that people wrote, and what a container can hold."""

from __future__ import annotations

import json
import os
import pathlib
import pickle
import threading
from typing import Any, Dict, List

import pytest

import zelnor
from zelnor import DocumentFault, DocumentFaultKind, DocumentKind, validate_document, validate_file

JOB: Dict[str, Any] = {
    "vertices": [
        {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "in.mkv"}}}},
        {"id": 2, "data": {"data": {"target": {"container": "mp4", "filePath": "out.mp4"}}}},
        {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}},
    ],
    "edges": [
        {"id": 1, "from": 1, "to": 3},
        {"id": 2, "from": 3, "to": 2, "data": {"data": {"format_codec_video": {
            "codec_id": "CODEC_ID_H264", "bitrate": 400000, "frameRateRatio": [25, 1], "PIXELFORMAT": 0}}}},
    ],
}
GOOD = json.dumps(JOB, indent=2)
WRONG_CODEC = GOOD.replace("H264", "H246")


def lines_of(text: str) -> List[str]:
    return [str(fault) for fault in validate_document(text).faults]


def test_a_good_job_has_no_faults() -> None:
    found = validate_document(GOOD)
    assert found == zelnor.DocumentFaults(DocumentKind.JOB, (), True)
    assert found.is_valid


def test_a_preset_is_told_apart_by_what_it_contains() -> None:
    preset = '{"small":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264"}}}}'
    assert validate_document(preset) == zelnor.DocumentFaults(DocumentKind.PRESET, (), True)


def test_a_wrong_name_has_its_place_and_a_suggestion() -> None:
    [fault] = validate_document(WRONG_CODEC, "job.json").faults
    line = next(i for i, text in enumerate(WRONG_CODEC.splitlines()) if "H246" in text)
    text = WRONG_CODEC.splitlines()[line]
    assert fault.kind == DocumentFaultKind.ENCODER
    assert fault.name == "encoder"
    assert fault.pointer == "/edges/1/data/data/format_codec_video/codec_id"
    assert (fault.line, fault.column) == (line + 1, text.index('"CODEC_ID_H246"') + 1)
    assert WRONG_CODEC[fault.offset : fault.offset + fault.length] == '"CODEC_ID_H246"'
    assert fault.found == '"CODEC_ID_H246"'
    assert fault.suggestion == fault.nearest[0] == "CODEC_ID_H264"
    assert (fault.place.file, fault.place.link, fault.place.key) == ("job.json", (3, 2), "codec_id")
    assert str(fault) == f"{fault.line}:{fault.column}: {fault.sentence}"
    assert fault.sentence == f"link 3 -> 2, video stream 0, codec_id: {fault.reason}"


def test_a_wrong_value_tells_what_was_found_and_expected() -> None:
    [fault] = validate_document(GOOD.replace("400000", '"fast"')).faults
    assert (fault.kind, fault.found, fault.suggestion) == (DocumentFaultKind.SETTING, '"fast"', None)
    assert fault.expected
    assert fault.reason == f"expected {fault.expected}, found 'fast'"


def test_all_faults_are_told_in_the_order_of_the_text() -> None:
    text = WRONG_CODEC.replace('"mp4"', '"matrosk"').replace('"bitrate"', '"bitrat"')
    faults = validate_document(text).faults
    assert [fault.suggestion for fault in faults] == ["matroska", "CODEC_ID_H264", "bitrate"]
    assert [fault.offset for fault in faults] == sorted(fault.offset for fault in faults)


def test_a_column_counts_characters_and_an_offset_bytes() -> None:
    text = '{"vertices":[{"id":1,"é😀\udcff":1}],"edges":[]}'
    fault = next(fault for fault in validate_document(text).faults if fault.kind == DocumentFaultKind.IGNORED)
    assert fault.line == 1
    assert text[fault.column - 1] == '"'
    assert text.encode("utf-8", "surrogateescape")[fault.offset : fault.offset + 1] == b'"'
    assert "é" in fault.found or "é" in fault.reason


@pytest.mark.parametrize(
    "text, kind",
    [("", DocumentKind.UNKNOWN), ("{", DocumentKind.UNKNOWN), ("\0", DocumentKind.UNKNOWN), ("[]", DocumentKind.UNKNOWN),
     ("\udcff", DocumentKind.UNKNOWN), (GOOD + "\0", DocumentKind.UNKNOWN)],
)
def test_a_text_that_is_neither_has_a_fault(text: str, kind: DocumentKind) -> None:
    found = validate_document(text)
    assert found.kind == kind
    assert not found.is_valid


def test_very_deep_texts_have_a_fault() -> None:
    for text in ("[" * 1_000_000, '{"a":' * 1_000_000, GOOD.replace("400000", "[" * 100_000 + "]" * 100_000)):
        assert not validate_document(text).is_valid


def test_after_very_many_faults_the_rest_is_not_told() -> None:
    found = validate_document(json.dumps({"vertices": [{"id": "x"}] * 3000, "edges": []}))
    assert not found.is_complete
    assert len(found.faults) == 1000


@pytest.mark.parametrize("text", [None, 1, b"{}", ["{}"], {"vertices": []}])
def test_what_is_not_a_text_is_refused(text: Any) -> None:
    with pytest.raises(TypeError):
        validate_document(text)


def test_a_surrogate_that_is_not_a_byte_is_refused() -> None:
    with pytest.raises(UnicodeEncodeError):
        validate_document("\ud800")


def test_a_file_is_validated_under_its_name(tmp_path: pathlib.Path) -> None:
    path = tmp_path / "job.json"
    path.write_text(WRONG_CODEC)
    [fault] = validate_file(path).faults
    assert fault.place.file == str(path)
    assert fault.sentence == validate_document(WRONG_CODEC).faults[0].sentence


def test_no_file_that_a_job_names_is_opened(tmp_path: pathlib.Path) -> None:
    fifo = tmp_path / "in.mkv"
    os.mkfifo(fifo)  # whoever opened it would wait
    assert validate_document(GOOD.replace("in.mkv", str(fifo))).is_valid


@pytest.mark.parametrize("name", ["none.json", "."])
def test_a_file_that_cannot_be_read_is_named(tmp_path: pathlib.Path, name: str) -> None:
    with pytest.raises(zelnor.CoreException) as caught:
        validate_file(tmp_path / name)
    assert str(tmp_path) in str(caught.value)


def test_a_nul_in_a_path_is_refused() -> None:
    with pytest.raises(ValueError):
        validate_file("a\0b")


def test_faults_compare_copy_and_pickle() -> None:
    found = validate_document(WRONG_CODEC)
    assert pickle.loads(pickle.dumps(found)) == found
    assert hash(found) == hash(validate_document(WRONG_CODEC))
    assert isinstance(found.faults[0], DocumentFault)
    with pytest.raises(AttributeError):
        found.faults[0].line = 1  # type: ignore[misc]


def test_what_passes_is_loaded_and_what_does_not_says_why() -> None:
    assert len(zelnor.Graph.from_json(GOOD)) == 3
    assert lines_of(GOOD.replace('"from": 3', '"from": 4')) != []


def test_threads_validate_at_once() -> None:
    wanted = validate_document(WRONG_CODEC)
    found: List[zelnor.DocumentFaults] = []
    threads = [
        threading.Thread(target=lambda: found.extend(validate_document(WRONG_CODEC) for _ in range(5)))
        for _ in range(4)
    ]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert found == [wanted] * 20


def test_a_codec_that_a_container_holds_is_explained() -> None:
    support = zelnor.explain_codec_support("mp4", "CODEC_ID_H264")
    assert support.is_held is True
    assert (support.container, support.codec, support.muxer) == ("mp4", "CODEC_ID_H264", "mp4")
    assert support.encoder
    assert support.has_bitrate_curve is True
    assert support.reasons == ()


def test_a_codec_that_a_container_does_not_hold_has_reasons_and_what_is_near() -> None:
    support = zelnor.explain_codec_support("mp4", "CODEC_ID_VP8")
    assert support.is_held is False
    assert len(support.reasons) == 1
    assert support.codecs and all(zelnor.explain_codec_support("mp4", codec).is_held for codec in support.codecs)
    assert support.containers
    assert all(zelnor.explain_codec_support(held, "CODEC_ID_VP8").is_held for held in support.containers)


@pytest.mark.parametrize("codec, has_curve", [("CODEC_ID_H264", True), ("CODEC_ID_FFV1", False)])
def test_a_codec_of_video_may_have_a_bitrate_curve(codec: str, has_curve: bool) -> None:
    assert zelnor.has_video_bitrate_curve(codec) is has_curve
    assert zelnor.explain_codec_support("matroska", codec).has_bitrate_curve is has_curve


def test_a_codec_of_audio_has_no_bitrate_curve_to_ask_for() -> None:
    assert zelnor.explain_codec_support("mp4", "CODEC_ID_AAC").has_bitrate_curve is None


@pytest.mark.parametrize(
    "container, codec, text",
    [
        ("matrosk", "CODEC_ID_H264", "'matrosk' is not a known container; did you mean 'matroska'?"),
        ("mp4", "CODEC_ID_H246", "'CODEC_ID_H246' is not a known codec; did you mean 'CODEC_ID_H264'"),
        ("\udcff", "CODEC_ID_H264", " is not a known container"),
        ("", "", "'' is not a known container"),
    ],
)
def test_a_name_that_is_not_known_is_refused(container: str, codec: str, text: str) -> None:
    with pytest.raises(zelnor.PlanException) as caught:
        zelnor.explain_codec_support(container, codec)
    assert text in str(caught.value)  # what is near follows


@pytest.mark.parametrize("container, codec", [(None, "CODEC_ID_H264"), ("mp4", None), (1, 2), (b"mp4", b"CODEC_ID_H264")])
def test_names_are_texts(container: Any, codec: Any) -> None:
    with pytest.raises(TypeError):
        zelnor.explain_codec_support(container, codec)

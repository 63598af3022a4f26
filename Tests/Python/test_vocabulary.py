"""The vocabulary: classes of constants and enumerations."""

from __future__ import annotations

import enum
import pathlib
import pickle
import re
from typing import Any, Dict

import pytest

import zelnor

VOCABULARY = pathlib.Path(__file__).resolve().parents[2] / "Conf" / "Interfaces" / "Vocabulary"
CLASSES = [
    "IFormat",
    "IFormatCodec",
    "IFormatCodecAudio",
    "IFormatCodecSubtitle",
    "IFormatCodecVideo",
    "IFormatFile",
    "IPreset",
    "IPropertyConstraint",
    "ITranscodingMetaGraph",
]


def rows_of(name: str) -> Dict[str, str]:
    """The names and the texts of a list, read without the library."""
    source = (VOCABULARY / f"{name}.def").read_text()
    rows = {}
    for kind, arguments in re.findall(r"^ZELNOR_(\w+)\((.*)\)", source, re.MULTILINE):
        parts = [part.strip() for part in arguments.split(",")]
        text = parts[1] if kind in ("TEXT", "CONTAINER") else parts[2] if kind == "LAYOUT" else None
        rows[parts[0]] = parts[0] if text is None else ",".join(
            arguments.split(",")[1:]).strip().strip('"') if kind == "TEXT" else text.strip('"')
    return rows


def constants_of(name: str) -> Dict[str, Any]:
    return {key: value for key, value in vars(getattr(zelnor, name)).items() if not key.startswith("_")}


@pytest.mark.parametrize("name", CLASSES)
def test_a_class_has_the_names_and_texts_of_its_list(name: str) -> None:
    texts = {key: value for key, value in constants_of(name).items() if isinstance(value, str)}
    beside = {"IFormat": {"TAG_OBJECT"}, "IFormatCodecVideo": {"TAG_PIX_FMT"}}.get(name, set())
    assert {key: value for key, value in texts.items() if key not in beside} == rows_of(name)


@pytest.mark.parametrize("name", CLASSES)
def test_the_order_is_that_of_the_list(name: str) -> None:
    rows = list(rows_of(name))
    assert list(constants_of(name))[: len(rows)] == rows


def test_no_class_is_empty() -> None:
    assert [name for name in CLASSES if not constants_of(name)] == []


@pytest.mark.parametrize(
    "name, constant, value",
    [
        ("IFormatFile", "FORMAT_MP4", "mp4"),
        ("IFormatCodecVideo", "CODEC_ID_H264", "CODEC_ID_H264"),
        ("IFormatCodecVideo", "TAG_PIX_FMT", "PIXELFORMAT"),
        ("IFormatCodecVideo", "MAX_VIDEO_BITRATE", 500000000),
        ("IFormatCodecAudio", "TAG_CH_LAYOUT_STEREO", "STEREO"),
        ("IFormatCodec", "MAX_QUALITY", 32),
        ("IFormatFile", "DISK_SIZE_DVD_STANDARD", 4700000000),
        ("IPreset", "KEY_STREAMS", "$$STREAMS$$"),
        ("ITranscodingMetaGraph", "MERGE_WITH", "$$MERGE_WITH$$"),
        ("JobKeys", "LEFT_OUT", "leftOut"),
        ("JobKeys", "DEINTERLACE_KEEP", "keep"),
    ],
)
def test_a_constant_has_its_value(name: str, constant: str, value: Any) -> None:
    assert getattr(getattr(zelnor, name), constant) == value


@pytest.mark.parametrize("name", [*CLASSES, "JobKeys"])
def test_a_constant_cannot_be_changed(name: str) -> None:
    constants = getattr(zelnor, name)
    key = next(iter(constants_of(name)))
    with pytest.raises(AttributeError, match=f"^{name}.{key} is a constant$"):
        setattr(constants, key, "other")
    with pytest.raises(AttributeError, match=f"^{name}.{key} is a constant$"):
        delattr(constants, key)


def test_constants_have_no_instances() -> None:
    with pytest.raises(TypeError, match="^IFormatFile holds constants and has no instances$"):
        zelnor.IFormatFile()


@pytest.mark.parametrize("name", [*CLASSES, "JobKeys", "PixFmt", "SampleFormats", "ChannelLayout"])
def test_a_class_says_what_it_holds(name: str) -> None:
    assert getattr(zelnor, name).__doc__


@pytest.mark.parametrize("name, count", [("PixFmt", 29), ("SampleFormats", 11), ("ChannelLayout", 28)])
def test_an_enumeration_has_the_rows_of_its_list(name: str, count: int) -> None:
    enumeration = getattr(zelnor, name)
    assert issubclass(enumeration, enum.IntEnum)
    assert len(enumeration) == count


@pytest.mark.parametrize(
    "member, value",
    [("PixFmt.PIX_FMT_NONE", -1), ("PixFmt.PIX_FMT_0RGB", 295), ("SampleFormats.SAMPLE_FMT_DBLP", 9),
     ("ChannelLayout.CH_LAYOUT_STEREO", 2)],
)
def test_an_enumerator_has_the_number_of_the_library(member: str, value: int) -> None:
    enumeration, name = member.split(".")
    assert getattr(zelnor, enumeration)[name] == value


def test_an_enumerator_is_pickled() -> None:
    member = zelnor.PixFmt.PIX_FMT_RGBA
    assert pickle.loads(pickle.dumps(member)) is member


def test_an_enumerator_may_be_the_value_of_a_record() -> None:
    assert zelnor.Record("x", zelnor.PixFmt.PIX_FMT_RGBA).as_int() == 28

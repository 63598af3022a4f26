"""Arguments that are not what they say."""

from __future__ import annotations

import collections.abc
import threading
from fractions import Fraction
from typing import Any, Callable

import pytest

import zelnor
from zelnor import Graph, Record

Plan = Callable[..., zelnor.PlannedJob]


def lying(kind: type, **attributes: Any) -> Any:
    """An object that says that it is of the class."""
    return type("Lying", (), {"__class__": kind, **attributes})()


class LongSequence(collections.abc.Sequence):  # type: ignore[type-arg]
    """A sequence that says that it is as long as can be."""

    def __len__(self) -> int:
        return 2**62

    def __getitem__(self, position: Any) -> Any:
        raise IndexError(position)


def test_an_impostor_of_a_record_does_not_reach_the_library() -> None:
    for attributes in ({}, {"_name": "x"}, {"_name": 1, "_value": 1}, {"_name": "x", "_value": 0.5}):
        with pytest.raises((AttributeError, TypeError)):
            Graph().add_node(lying(Record, **attributes))


def test_an_impostor_of_a_fraction_does_not_reach_the_library() -> None:
    for attributes in (
        {},
        {"numerator": 1, "denominator": 0},
        {"numerator": 1, "denominator": -1},
        {"numerator": "1", "denominator": 1},
        {"numerator": 1 << 64, "denominator": 1},
    ):
        record = Record("x")
        record._value = lying(Fraction, **attributes)
        with pytest.raises((AttributeError, TypeError, OverflowError)):
            Graph().add_node(record)


def test_a_fraction_that_is_not_reduced_is_reduced() -> None:
    record = Record("x")
    record._value = lying(Fraction, numerator=-(2**63), denominator=2**63 - 2)
    graph = Graph()
    graph.add_node(record)
    assert graph.node(1).as_fraction() == Fraction(-(2**63), 2**63 - 2)


@pytest.mark.parametrize("value", [-1, 3, 77, 2**40, "1", None])
def test_an_impostor_of_a_depth_is_refused(plan_mp3: Plan, value: Any) -> None:
    with pytest.raises(TypeError, match="^the depth is a VerificationDepth$"):
        zelnor.run(plan_mp3().graph, verification=lying(zelnor.VerificationDepth, value=value))


@pytest.mark.parametrize("name", ["merges", "codecs", "settings"])
def test_a_sequence_that_lies_about_its_length_is_refused(plan_mp3: Plan, name: str) -> None:
    with pytest.raises((IndexError, MemoryError, OverflowError, TypeError, ValueError)):
        plan_mp3(**{name: LongSequence()})


def test_a_sequence_of_streams_that_lies_about_its_length_is_refused(plan_mp3: Plan) -> None:
    for name in ("chosen", "audio_languages", "copied"):
        with pytest.raises((IndexError, MemoryError, OverflowError, TypeError, ValueError)):
            plan_mp3(streams=zelnor.StreamRequest(**{name: LongSequence()}))


def test_an_attribute_of_a_request_may_raise(plan_mp3: Plan) -> None:
    class Odd(zelnor.JobRequest):
        @property
        def codecs(self) -> Any:
            raise ZeroDivisionError("odd")

        @codecs.setter
        def codecs(self, value: Any) -> None:
            pass

    job = plan_mp3().graph
    with pytest.raises(ZeroDivisionError):
        zelnor.plan(zelnor.probe(job.node(1)["filePath"].as_str()), zelnor.Preset.read(PRESET), Odd("x.mp3"))


PRESET = '{"p":{"container":"mp3","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_MP3"}}}}'


def test_a_sequence_may_change_while_it_is_read(plan_mp3: Plan) -> None:
    codecs = ["CODEC_ID_MP3"]

    class Emptying(str):
        def __init__(self, *_: object) -> None:
            super().__init__()

        def __fspath__(self) -> str:
            codecs.clear()
            return str(self)

    assert plan_mp3(codecs=codecs, name=Emptying("out.mp3")).output.endswith("out.mp3")


def test_a_list_of_children_may_change_while_it_is_read() -> None:
    children = [Record("a", i) for i in range(50)]
    record = Record("x")
    record._value = children
    stop = threading.Event()

    def change() -> None:
        while not stop.is_set():
            children.clear()
            children.extend(Record("a", i) for i in range(50))

    thread = threading.Thread(target=change)
    thread.start()
    try:
        for _ in range(200):
            graph = Graph()
            graph.add_node(record)
            assert len(graph.node(1)) <= 50
    finally:
        stop.set()
        thread.join()


@pytest.mark.parametrize("text", ["\0", "mp4\0", "CODEC_ID_H264\0x", "\udc80"])
@pytest.mark.parametrize("count", [1, 10_000])
def test_odd_texts_are_names_that_nobody_knows(text: str, count: int) -> None:
    text *= count
    assert not zelnor.is_container(text)
    assert zelnor.muxer_description(text) == ""
    assert zelnor.codec_media_type(text) is None
    with pytest.raises(zelnor.FormatException):
        zelnor.codec_number(text)
    with pytest.raises(zelnor.PlanException):
        zelnor.explain_codec_support(text, text)


def test_a_replaced_class_of_values_does_not_end_the_process(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr("zelnor._values.DocumentFaults", lambda *_: 1)
    assert zelnor.validate_document("{") == 1
    monkeypatch.delattr("zelnor._values.DocumentFaults")
    with pytest.raises(AttributeError):
        zelnor.validate_document("{")
    monkeypatch.setattr("zelnor._record.Record", 1)
    with pytest.raises(TypeError):
        Graph().add_node(Record("x"))

"""The tree of exceptions."""

from __future__ import annotations

import copy
import pathlib
import pickle
import re
from typing import Any

import pytest

import zelnor

SOURCES = pathlib.Path(__file__).resolve().parents[2]
TREE = {
    "CoreException": "ZelnorException",
    "PropertyException": "CoreException",
    "MethodIsNotApplicable": "PropertyException",
    "RecordKeyError": "PropertyException",
    "RecordIndexError": "PropertyException",
    "RecordTypeError": "PropertyException",
    "ConfException": "ZelnorException",
    "PresetException": "ConfException",
    "ConstraintException": "ConfException",
    "ConstraintIsNotApplicableForTypeException": "ConstraintException",
    "CheckedPropertyHasDifferentTypeException": "ConstraintException",
    "HelperException": "ConfException",
    "FormatException": "ConfException",
    "ProfileException": "ConfException",
    "NodeNotFound": "ProfileException",
    "LinkExists": "ProfileException",
    "LinkNotFound": "ProfileException",
    "BadJson": "ProfileException",
    "MediaException": "ZelnorException",
    "DrawingException": "MediaException",
    "ProbeException": "MediaException",
    "PresetFileException": "MediaException",
    "PlanException": "MediaException",
    "JobException": "MediaException",
    "RunException": "MediaException",
    "TranscodeFailed": "RunException",
    "VerificationFailed": "RunException",
}


@pytest.mark.parametrize("name", TREE)
def test_an_exception_stands_in_its_place(name: str) -> None:
    assert getattr(zelnor, name).__bases__[0] is getattr(zelnor, TREE[name])
    assert getattr(zelnor, name).__doc__


def test_the_root_is_an_exception() -> None:
    assert zelnor.ZelnorException.__bases__ == (Exception,)


def test_there_are_no_other_exceptions() -> None:
    names = {name for name, value in vars(zelnor).items() if isinstance(value, type) and issubclass(value, Exception)}
    assert names == {*TREE, "ZelnorException"}


@pytest.mark.parametrize(
    "name, tags",
    [
        ("ZelnorException", ["description", "call_stack", "unit", "line"]),
        ("PropertyException", ["property_name", "property_type", "method_name"]),
        ("ProfileException", ["requested_link", "requested_node_id", "json_bad_structure"]),
        ("MediaException", ["file", "node", "link", "stream", "key"]),
        ("TranscodeFailed", ["exit_code", "messages"]),
        ("VerificationFailed", ["differences", "kept_file"]),
    ],
)
def test_a_tag_that_is_absent_is_none(name: str, tags: Any) -> None:
    exception = getattr(zelnor, name)("text")
    assert [getattr(exception, tag) for tag in tags] == [None] * len(tags)


def test_an_exception_tells_where_it_was_thrown() -> None:
    with pytest.raises(zelnor.BadJson) as caught:
        zelnor.Graph.from_json("[]")
    assert caught.value.call_stack
    assert caught.value.unit
    assert isinstance(caught.value.line, int)
    assert caught.value.description is None


@pytest.mark.parametrize("clone", [copy.copy, lambda e: pickle.loads(pickle.dumps(e))])
def test_an_exception_is_copied_with_its_tags(clone: Any) -> None:
    with pytest.raises(zelnor.LinkNotFound) as caught:
        zelnor.Graph.from_json('{"vertices":[{"id":1},{"id":2}],"edges":[]}').link(1, 2)
    cloned = clone(caught.value)
    assert type(cloned) is zelnor.LinkNotFound
    assert cloned.requested_link == (1, 2)
    assert str(cloned) == str(caught.value) == "There is no link from node 1 to node 2"


def test_an_exception_of_the_library_is_the_context_of_one_that_follows() -> None:
    with pytest.raises(RuntimeError) as caught:
        try:
            zelnor.Graph().node(1)
        except zelnor.NodeNotFound as error:
            raise RuntimeError("no job") from error
    assert isinstance(caught.value.__cause__, zelnor.NodeNotFound)


# What the libraries throw seldom or never


thrower = pytest.importorskip("thrower")


def thrown(name: str) -> Any:
    with pytest.raises(BaseException) as caught:
        thrower.throw_(name)
    return caught.value


@pytest.mark.parametrize("name", [name for name in [*TREE, "ZelnorException"] if not name.startswith("Record")])
def test_every_exception_arrives_as_its_class(name: str) -> None:
    error = thrown(name)
    assert type(error) is getattr(zelnor, name)
    assert str(error) == error.description == "described"
    assert error.unit == "Tests/Python/thrower"
    assert error.call_stack


def test_the_tags_of_a_property_are_attributes() -> None:
    error = thrown("property tags")
    assert (error.property_name, error.method_name) == ("width", "SetChildT")
    assert error.property_type is zelnor.PropertyType.RATIO


def test_the_tags_of_a_graph_are_attributes() -> None:
    error = thrown("profile tags")
    assert (error.requested_link, error.requested_node_id, error.json_bad_structure) == ((3, 2), 7, "bad")


def test_the_tags_of_a_place_are_attributes() -> None:
    error = thrown("media tags")
    assert (error.file, error.node, error.link, error.stream, error.key) == ("caf\udce9.mkv", 2, (3, 2), 1, "a.b")


def test_the_tags_of_a_failed_transcode_are_attributes() -> None:
    error = thrown("transcode tags")
    assert (error.exit_code, error.messages, error.node) == (137, ("one", "\udcff"), 2)


def test_the_tags_of_a_failed_verification_are_attributes() -> None:
    error = thrown("verification tags")
    assert error.kept_file == "out.unverified.mp4"
    assert str(error.differences[0]) == "duration: wanted 10 s, found 5 s"


def test_a_cause_is_chained_and_so_is_its_own() -> None:
    # The standard library copies nested exceptions without their tags, so only the classes remain.
    error = thrown("nested")
    assert type(error) is zelnor.ProbeException
    assert type(error.__cause__) is zelnor.CoreException
    root = error.__cause__.__cause__
    assert (type(root), str(root)) == (ValueError, "the root")
    assert root.__cause__ is None


def test_a_cause_in_a_tag_is_chained() -> None:
    error = thrown("cause in a tag")
    assert (type(error), str(error)) == (zelnor.ProbeException, "the failure")
    assert (type(error.__cause__), str(error.__cause__)) == (zelnor.CoreException, "the cause")


def test_a_long_chain_of_causes_ends() -> None:
    error = thrown("chain")
    length = 0
    while error is not None:
        error = error.__cause__
        length += 1
    assert length == 65


@pytest.mark.parametrize(
    "name, kind, text",
    [
        ("bad rational", ValueError, "bad rational: zero denominator"),
        ("memory", MemoryError, "std::bad_alloc"),
        ("nothing to say", ValueError, "Failed with St11logic_error"),
    ],
)
def test_an_exception_of_the_standard_library_is_a_built_in_one(name: str, kind: type, text: str) -> None:
    error = thrown(name)
    assert (type(error), str(error)) == (kind, text)


def test_every_exception_of_the_libraries_is_there() -> None:
    documented = re.findall(r"^### (\w+)$", (SOURCES / "Docs" / "errors.md").read_text(), re.MULTILINE)
    ours = {"RecordKeyError", "RecordIndexError", "RecordTypeError"}
    assert {*TREE} - ours == {*documented} - {"Exception"}

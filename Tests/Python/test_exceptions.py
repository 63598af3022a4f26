"""The tree of exceptions."""

from __future__ import annotations

import copy
import pickle
from typing import Any

import pytest

import zelnor

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

"""The children of records: finding, setting, adding, removing and iterating."""

from __future__ import annotations

from fractions import Fraction
from typing import Any

import pytest

import zelnor
from zelnor import Record

VIDEO = {"width": 1920, "rate": Fraction(30000, 1001), "name": "Holiday", "none": None, "metadata": {"a": {}}}


def test_a_child_is_found_by_its_name() -> None:
    assert Record("x", VIDEO)["width"].as_int() == 1920


def test_of_equal_names_the_first_is_found() -> None:
    assert Record("x", [{"a": 1}, {"a": 2}])["a"].value == 1


def test_all_children_of_a_name_are_found() -> None:
    found = Record("x", [{"a": 1}, {"b": 2}, {"a": 3}]).find_all("a")
    assert [child.value for child in found] == [1, 3]


def test_negative_positions_count_from_the_end() -> None:
    assert Record("x", VIDEO)[-1].name == "metadata"


def test_a_slice_is_a_list_of_children() -> None:
    assert [child.name for child in Record("x", VIDEO)[1:3]] == ["rate", "name"]


def test_a_slice_backwards_is_a_list_of_children() -> None:
    assert [child.name for child in Record("x", VIDEO)[::-2]] == ["metadata", "name", "width"]


def test_a_slice_of_a_scalar_is_empty() -> None:
    assert Record("x", 1)[:] == []


def test_a_child_that_is_not_there_is_a_key_error_with_tags() -> None:
    with pytest.raises(KeyError) as caught:
        Record("video", VIDEO)["height"]
    error = caught.value
    assert isinstance(error, zelnor.PropertyException)
    assert str(error) == "Property 'video' has no child 'height'"
    assert error.property_name == "video"
    assert error.property_type is zelnor.PropertyType.GROUP


@pytest.mark.parametrize("position", [5, -6, 2**63 - 1])
def test_a_position_that_is_not_there_is_an_index_error(position: int) -> None:
    with pytest.raises(IndexError) as caught:
        Record("video", VIDEO)[position]
    assert isinstance(caught.value, zelnor.PropertyException)
    assert str(caught.value) == f"Property 'video' has no child at position {position}, it has 5"


def test_a_position_that_cannot_be_printed_is_an_index_error() -> None:
    with pytest.raises(IndexError, match="^Property 'x' has no child at that position, it has 5$"):
        Record("x", VIDEO)[10**5000]


@pytest.mark.parametrize("key", [None, 1.5, b"x", ()])
def test_a_key_of_another_type_is_refused(key: Any) -> None:
    with pytest.raises(TypeError):
        Record("x", VIDEO)[key]


def test_a_child_is_set_in_its_place() -> None:
    record = Record("x", {"a": 1, "b": 2})
    record["a"] = "one"
    assert record.to_python() == {"a": "one", "b": 2}


def test_a_child_that_is_not_there_is_appended() -> None:
    record = Record("x", {"a": 1})
    record["b"] = {"c": 2}
    assert record.to_python() == {"a": 1, "b": {"c": 2}}


def test_a_child_is_set_by_its_position_and_keeps_its_name() -> None:
    record = Record("x", {"a": 1, "b": 2})
    record[-1] = None
    assert record.to_python() == {"a": 1, "b": None}


def test_setting_a_child_to_a_record_keeps_the_key() -> None:
    record = Record("x")
    record["key"] = Record("other", 7)
    assert record.to_python() == {"key": 7}


def test_a_child_that_was_taken_before_shows_what_is_set_later() -> None:
    record = Record("x", {"a": {"b": 1}})
    child = record["a"]
    record["a"] = {"c": 2}
    assert child.to_python() == {"c": 2}


def test_a_child_stays_when_it_is_removed_and_the_group_is_gone() -> None:
    record = Record("x", {"a": {"b": 1}})
    child = record["a"]["b"]
    del record["a"]
    del record
    assert child.as_int() == 1


def test_a_value_that_is_refused_leaves_the_record_as_it_was() -> None:
    record = Record("x", VIDEO)
    with pytest.raises(TypeError):
        record["width"] = {"a": 1, "b": 0.5}
    with pytest.raises(OverflowError):
        record["new"] = 2**64
    assert record == Record("x", VIDEO)


def test_the_children_of_a_slice_cannot_be_set() -> None:
    with pytest.raises(TypeError, match="^the children of a slice cannot be set$"):
        Record("x", VIDEO)[0:2] = 1  # type: ignore[index]


def test_children_are_removed_by_name_position_and_slice() -> None:
    record = Record("x", [{"a": 1}, {"a": 2}, {"b": 3}, {"c": 4}])
    del record["a"]
    assert record.to_python() == {"a": 2, "b": 3, "c": 4}
    del record[-1]
    assert record.to_python() == {"a": 2, "b": 3}
    del record[0:2]
    assert record.to_python() == {}


def test_of_equal_children_the_one_at_the_position_is_removed() -> None:
    record = Record("x", [{"a": 1}, {"b": 2}, {"a": 1}])
    first = record[0]
    del record[2]
    assert record[0] is first
    assert record.names() == ["a", "b"]


def test_a_child_is_added_beside_one_of_its_name() -> None:
    record = Record("x", {"a": 1})
    child = record.add("a", 2)
    assert record.to_python() == [{"a": 1}, {"a": 2}]
    assert record[1] is child


def test_a_record_that_is_appended_is_copied() -> None:
    record = Record("x")
    other = Record("a", 1)
    assert record.append(other) is not other
    assert record.to_python() == {"a": 1}


def test_what_is_not_a_record_is_not_appended() -> None:
    with pytest.raises(TypeError, match="^a record was expected, not NoneType$"):
        Record("x").append(None)  # type: ignore[arg-type]


def test_clear_removes_all_children() -> None:
    record = Record("x", VIDEO)
    record.clear()
    assert record == Record("x")


@pytest.mark.parametrize("value", [1, "s", Fraction(1, 2), None])
def test_a_scalar_cannot_get_children(value: Any) -> None:
    record = Record("width", value)
    with pytest.raises(zelnor.MethodIsNotApplicable) as caught:
        record["a"] = 1
    assert str(caught.value) == "'width' is not a group, so it cannot have children"
    assert caught.value.method_name == "SetChildT"
    assert caught.value.property_type is record.type
    assert record.value == value


def test_in_asks_for_a_name() -> None:
    record = Record("x", {"a": None})
    assert "a" in record
    assert "b" not in record
    assert 0 not in record


def test_get_returns_none_for_a_child_that_is_not_there() -> None:
    assert Record("x", VIDEO).get("height") is None
    assert Record("x", 1).get("height") is None


def test_a_record_is_true_even_if_it_is_empty() -> None:
    assert Record("x")
    assert Record("x", 0)


def test_a_scalar_has_no_children() -> None:
    assert len(Record("x", 1)) == 0
    assert list(Record("x", "text")) == []


def test_reversed_goes_backwards() -> None:
    assert [child.name for child in reversed(Record("x", {"a": 1, "b": 2}))] == ["b", "a"]  # type: ignore[call-overload]


def test_adding_while_iterating_is_noticed() -> None:
    record = Record("x", {"a": 1, "b": 2})
    with pytest.raises(RuntimeError, match="^the group changed while it was iterated$"):
        for child in record:
            record.add("c", child)


def test_removing_while_iterating_is_noticed() -> None:
    record = Record("x", {"a": 1, "b": 2})
    with pytest.raises(RuntimeError, match="^the group changed while it was iterated$"):
        for _ in record:
            del record[0]


def test_a_group_that_becomes_a_scalar_while_iterating_is_noticed() -> None:
    record = Record("x", {"a": 1, "b": 2})
    with pytest.raises(RuntimeError, match="^the group changed while it was iterated$"):
        for _ in record:
            record.value = 1


def test_setting_children_while_iterating_is_allowed() -> None:
    record = Record("x", {"a": 1, "b": 2})
    for child in record:
        child.value = 0
    assert record.to_python() == {"a": 0, "b": 0}


def test_a_dict_that_changes_while_it_is_read_is_noticed() -> None:
    value: Any = {"a": 1}

    class Growing(dict):  # type: ignore[type-arg]
        def items(self) -> Any:
            for item in super().items():
                value[len(value)] = 1
                yield item

    value = Growing(a=1)
    with pytest.raises(RuntimeError):
        Record("x", value)

"""Records as Python values, without loss."""

from __future__ import annotations

import copy
import enum
import pickle
import random
from collections import OrderedDict
from fractions import Fraction
from typing import Any

import pytest

import zelnor
from zelnor import PropertyType, Record

VIDEO = {"width": 1920, "rate": Fraction(30000, 1001), "name": "Holiday", "none": None, "metadata": {"a": {}}}

# Python refuses to print it, which pytest would try for its name.
HUGE = pytest.param(10**5000, id="huge")


def nested(depth: int) -> Any:
    """Returns a value of so many groups inside each other."""
    value: Any = {}
    for _ in range(depth - 1):
        value = {"g": value}
    return value


def test_without_a_value_a_record_is_an_empty_group() -> None:
    assert Record("target").is_group
    assert len(Record("target")) == 0


def test_without_a_name_a_record_has_the_empty_name() -> None:
    assert Record().name == ""


@pytest.mark.parametrize("value", [0, -1, 2**63 - 1, -(2**63), "", "é😀", Fraction(1, 3), Fraction(25), None, {}, VIDEO])
def test_a_value_comes_back_as_it_was_given(value: Any) -> None:
    assert Record("x", value).to_python() == value


@pytest.mark.parametrize("value", [0, -(2**63), "", "é😀", Fraction(-1, 3), None, {}, VIDEO])
def test_a_value_comes_back_from_the_library_as_it_was_given(value: Any) -> None:
    graph = zelnor.Graph()
    node = graph.add_node(Record("x", value))
    assert graph.node(node) == Record("x", value)


def test_the_least_numerator_passes_through_the_library() -> None:
    graph = zelnor.Graph()
    record = Record("x", Fraction(-(2**63), 2**63 - 1))
    assert graph.node(graph.add_node(record)) == record


def test_a_fraction_that_is_an_integer_stays_a_fraction() -> None:
    assert Record("x", Fraction(25)).type is PropertyType.RATIO
    graph = zelnor.Graph()
    assert graph.node(graph.add_node(Record("x", Fraction(25)))).type is PropertyType.RATIO


def test_names_that_occur_twice_become_a_list_of_dicts_with_one_member() -> None:
    value = [{"audio": {"id": 1}}, {"audio": {"id": 2}}, {"video": 3}]
    assert Record("streams", value).to_python() == value


def test_names_that_occur_twice_pass_through_the_library() -> None:
    record = Record("streams", [{"": 1}, {"": 2}])
    graph = zelnor.Graph()
    assert graph.node(graph.add_node(record)).to_python() == [{"": 1}, {"": 2}]


def test_the_order_of_the_children_is_kept() -> None:
    assert Record("x", OrderedDict([("b", 1), ("a", 2)])).names() == ["b", "a"]


def test_a_group_is_made_of_records_with_their_names() -> None:
    assert Record("x", [Record("a", 1), Record("b")]).to_python() == {"a": 1, "b": {}}


def test_a_group_is_made_of_what_a_generator_yields() -> None:
    assert Record("x", (Record("", i) for i in range(3))).to_python() == [{"": 0}, {"": 1}, {"": 2}]


def test_a_record_as_a_value_is_copied() -> None:
    inner = Record("a", {"b": 1})
    outer = Record("x", {"c": inner})
    inner["b"] = 2
    assert outer["c"]["b"].value == 1


def test_a_name_with_dots_is_one_name() -> None:
    assert Record("x", {"codec.options.encode": {"crf": "20"}})["codec.options.encode"]["crf"].as_str() == "20"


def test_a_nul_is_a_character_of_a_text() -> None:
    graph = zelnor.Graph()
    record = Record("a\0b", "c\0d")
    assert graph.node(graph.add_node(record)) == record


def test_bytes_that_are_not_utf8_are_kept_as_surrogates() -> None:
    text = b"caf\xe9".decode("utf-8", "surrogateescape")
    graph = zelnor.Graph()
    assert graph.node(graph.add_node(Record("x", text))).as_str() == text


@pytest.mark.parametrize("text", ["\ud800", "a\udfff", "\udc00\ud800"])
def test_a_surrogate_that_is_not_a_byte_is_refused(text: str) -> None:
    with pytest.raises(UnicodeEncodeError):
        Record("x", text)
    with pytest.raises(UnicodeEncodeError):
        Record(text)


@pytest.mark.parametrize("value", [2**63, -(2**63) - 1, HUGE, Fraction(2**63, 5), Fraction(1, 2**63)])
def test_a_number_beyond_64_bits_is_an_overflow(value: Any) -> None:
    with pytest.raises(OverflowError, match="is an integer from -9223372036854775808 to 9223372036854775807"):
        Record("x", value)


@pytest.mark.parametrize("value", [True, False])
def test_a_bool_is_refused(value: bool) -> None:
    with pytest.raises(TypeError, match="^a record cannot hold a bool: use 0 or 1$"):
        Record("x", value)


def test_a_float_is_refused() -> None:
    with pytest.raises(TypeError, match="^a record cannot hold a float: use a Fraction$"):
        Record("x", 0.5)


@pytest.mark.parametrize("value", [b"bytes", bytearray(b"x"), 1j, object(), print])
def test_another_value_is_refused_with_its_type(value: Any) -> None:
    with pytest.raises(TypeError, match=f"of type {type(value).__name__}$"):
        Record("x", value)


@pytest.mark.parametrize("value", [[1, 2], [30000, 1001], ["a"], [{}], [{"a": 1, "b": 2}], [[]], [None]])
def test_an_element_without_a_name_is_refused(value: Any) -> None:
    with pytest.raises(TypeError, match="^an element of a group is a Record or a mapping with one member$"):
        Record("x", value)


@pytest.mark.parametrize("name", [None, 1, b"x", ("a",)])
def test_a_name_that_is_not_a_text_is_refused(name: Any) -> None:
    with pytest.raises(TypeError, match="^the name of a record is a str, not "):
        Record(name)
    with pytest.raises(TypeError, match="^the name of a record is a str, not "):
        Record("x", {name: 1})


def test_512_groups_may_be_nested() -> None:
    record = Record("x", nested(512))
    assert Record.from_json(record.to_json()) == record


def test_513_groups_are_refused() -> None:
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        Record("x", nested(513))


def test_groups_that_were_nested_too_deep_child_by_child_do_not_reach_the_library() -> None:
    record = Record("x", nested(500))
    child = record
    while len(child):
        child = child[0]
    child["g"] = nested(100)
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        zelnor.Graph().add_node(record)
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        record.copy()


def test_a_dict_that_contains_itself_is_refused() -> None:
    value: Any = {}
    value["a"] = {"b": value}
    with pytest.raises(ValueError, match="^a group cannot contain itself$"):
        Record("x", value)


def test_a_list_that_contains_itself_is_refused() -> None:
    value: Any = []
    value.append({"a": value})
    with pytest.raises(ValueError, match="^a group cannot contain itself$"):
        Record("x", value)


def test_the_same_dict_may_stand_in_several_places() -> None:
    shared = {"b": 1}
    assert Record("x", {"a": shared, "c": shared}).to_python() == {"a": {"b": 1}, "c": {"b": 1}}


def test_a_record_may_be_put_into_itself() -> None:
    record = Record("x", {"a": 1})
    record["self"] = record
    assert record.to_python() == {"a": 1, "self": {"a": 1}}


def test_a_subclass_of_int_or_str_loses_what_it_adds() -> None:
    class Word(str):
        pass

    class Number(enum.IntEnum):
        ONE = 1

    record = Record("x", {"word": Word("w"), "number": Number.ONE})
    assert type(record["word"].value) is str
    assert type(record["number"].value) is int


@pytest.mark.parametrize(
    "read, value, text",
    [
        ("as_int", "1", "Property 'x' holds a string, not a 64-bit integer"),
        ("as_str", 1, "Property 'x' holds a 64-bit integer, not a string"),
        ("as_fraction", 1, "Property 'x' holds a 64-bit integer, not a rational"),
        ("as_int", None, "Property 'x' holds nothing, not a 64-bit integer"),
        ("as_str", {}, "Property 'x' holds a group, not a string"),
        ("as_int", Fraction(1), "Property 'x' holds a rational, not a 64-bit integer"),
    ],
)
def test_reading_another_type_is_refused(read: str, value: Any, text: str) -> None:
    with pytest.raises(TypeError) as caught:
        getattr(Record("x", value), read)()
    assert isinstance(caught.value, zelnor.PropertyException)
    assert str(caught.value) == text


def test_the_value_of_a_group_is_its_children() -> None:
    record = Record("x", {"a": 1})
    assert record.value == (record["a"],)


def test_the_types_have_the_numbers_of_the_library() -> None:
    values = [None, 1, "s", Fraction(1, 2), {}]
    assert [int(Record("x", value).type) for value in values] == [0, 1, 2, 3, 6]


def test_a_name_may_be_changed() -> None:
    record = Record("x", {"a": 1})
    record["a"].name = "b"
    assert record.to_python() == {"b": 1}


@pytest.mark.parametrize("other", [Record("y", VIDEO), Record("x"), Record("x", 1), Record("x", {"width": 1}), 1, None])
def test_records_that_differ_are_not_equal(other: Any) -> None:
    assert Record("x", VIDEO) != other


def test_an_integer_and_its_rational_are_not_equal() -> None:
    assert Record("x", 1) != Record("x", Fraction(1))


def test_the_order_of_children_matters_to_equality() -> None:
    assert Record("x", {"a": 1, "b": 2}) != Record("x", {"b": 2, "a": 1})


def test_a_record_has_no_hash() -> None:
    with pytest.raises(TypeError, match="unhashable"):
        hash(Record("x"))


@pytest.mark.parametrize("clone", [copy.copy, copy.deepcopy, Record.copy, lambda r: pickle.loads(pickle.dumps(r))])
def test_a_copy_is_equal_and_independent(clone: Any) -> None:
    record = Record("x", [{"a": VIDEO}, {"a": [{"": 1}, {"": "\udce9"}]}])
    cloned = clone(record)
    assert cloned == record
    cloned["a"]["width"] = 1
    assert record["a"]["width"].value == 1920


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_512_groups_are_pickled(protocol: int) -> None:
    record = Record("x", nested(512))
    assert pickle.loads(pickle.dumps(record, protocol)) == record


def test_repr_shows_how_to_make_the_record() -> None:
    record = Record("x", [{"a": 1}, {"a": None}])
    assert repr(record) == "Record('x', [{'a': 1}, {'a': None}])"
    assert eval(repr(record)) == record


def test_str_is_a_dump_for_people() -> None:
    record = Record("video", {"width": 1920, "rate": Fraction(30000, 1001), "metadata": {"none": None}})
    assert str(record) == "video:\n  width: 1920\n  rate: 30000/1001\n  metadata:\n    none: null\n"


def test_str_escapes_what_would_change_the_terminal() -> None:
    assert str(Record("x", "\x1b[31m")) == "x: \\033[31m\n"


def test_json_is_that_of_job_documents() -> None:
    record = Record("video", {"width": 1920, "rate": Fraction(30000, 1001), "none": None, "list": [{"": 1}, {"": 2}]})
    text = '{"video":{"width":1920,"rate":[30000,1001],"none":null,"list":[{"":1},{"":2}]}}'
    assert record.to_json() == text
    assert Record.from_json(text) == record


def test_a_text_that_is_not_json_is_refused_with_the_place() -> None:
    with pytest.raises(ValueError, match="^the text is not JSON, from byte 5$"):
        Record.from_json('{"a":}')


def test_json_behind_json_is_refused() -> None:
    with pytest.raises(ValueError, match="^the text is not JSON, from byte 7$"):
        Record.from_json('{"a":1}x')


@pytest.mark.parametrize("text", ["null", " null\n"])
def test_json_null_is_not_a_record(text: str) -> None:
    with pytest.raises(ValueError, match=r"^expected a record \(an object with one member\), found null$"):
        Record.from_json(text)


@pytest.mark.parametrize(
    "text, found",
    [("{}", "an object with 0 members"), ('{"a":1,"b":2}', "an object with 2 members"), ("[]", "an array"), ("1", "an integer")],
)
def test_json_that_is_not_one_record_is_refused(text: str, found: str) -> None:
    with pytest.raises(zelnor.PropertyException) as caught:
        Record.from_json(text)
    assert str(caught.value) == f"record: expected a record (an object with one member), found {found}"


def test_keys_that_occur_twice_in_json_are_both_kept() -> None:
    assert Record.from_json('{"x":{"a":1,"a":2}}').to_python() == [{"a": 1}, {"a": 2}]


@pytest.mark.parametrize("seed", range(20))
def test_random_records_pass_through_everything_without_loss(seed: int) -> None:
    chance = random.Random(seed)

    def text() -> str:
        letters = ["a", "b", "", "é", "\0", "\n", '"', "\\", "\U0001f600", "\u202e", "$$"]
        return "".join(chance.choices(letters, k=chance.randrange(3)))

    def value(depth: int) -> Any:
        kind = chance.randrange(6 if depth < 5 else 4)
        if kind == 0:
            return None
        if kind == 1:
            return chance.choice([0, -1, 2**63 - 1, -(2**63), chance.randrange(10**6)])
        if kind == 2:
            return text()
        if kind == 3:
            return Fraction(chance.randrange(-(2**63), 2**63), chance.randrange(1, 2**63))
        return [Record(text(), value(depth + 1)) for _ in range(chance.randrange(5))]

    graph = zelnor.Graph()
    for _ in range(20):
        record = Record(text(), value(0))
        assert Record(record.name, record.to_python()) == record
        assert Record.from_json(record.to_json()) == record
        assert graph.node(graph.add_node(record)) == record
        assert pickle.loads(pickle.dumps(record)) == record


def test_json_that_is_not_a_record_is_refused_with_the_place() -> None:
    with pytest.raises(zelnor.PropertyException, match="^a.b: expected an integer"):
        Record.from_json('{"a":{"b":1.5}}')


def test_a_subclass_that_holds_something_else_does_not_reach_the_library() -> None:
    class Odd(Record):
        _value = property(lambda self: 0.5)  # type: ignore[assignment]

    odd = Odd.__new__(Odd)
    Record._name.__set__(odd, "x")  # type: ignore[attr-defined]
    with pytest.raises(TypeError, match="^a record holds an int, a str, a Fraction, None or a group$"):
        zelnor.Graph().add_node(odd)


def test_a_record_that_nobody_initialised_does_not_reach_the_library() -> None:
    with pytest.raises(AttributeError):
        zelnor.Graph().add_node(Record.__new__(Record))


def test_children_that_are_not_records_do_not_reach_the_library() -> None:
    with pytest.raises(TypeError, match="^the children of a group are records$"):
        zelnor.Graph().add_node(Record._make("x", [1]))


def test_a_cycle_that_was_forced_does_not_reach_the_library() -> None:
    record = Record("x")
    record._children("Add").append(record)
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        zelnor.Graph().add_node(record)

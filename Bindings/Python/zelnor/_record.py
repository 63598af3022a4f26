"""Records: named values and groups of them, in which everything is described."""

from __future__ import annotations

import operator
from enum import IntEnum
from fractions import Fraction
from typing import Any, Iterable, Iterator, List, Mapping, Optional, Set, SupportsIndex, Tuple, Union, overload

from ._exceptions import MethodIsNotApplicable, RecordIndexError, RecordKeyError, RecordTypeError

__all__ = ["PropertyType", "Record"]

_LEAST = -(2**63)
_MOST = 2**63 - 1
# Deeper groups could not be saved.
_MAX_DEPTH = 512

Scalar = Union[None, int, str, Fraction]
Value = Union[Scalar, "Record", Mapping[str, Any], Iterable[Any]]
"""What a record can be given; `Record` says what becomes of it."""


class PropertyType(IntEnum):
    """What a record holds."""

    NONE = 0
    INT64 = 1
    STRING = 2
    RATIO = 3
    GROUP = 6


_KINDS = {
    PropertyType.NONE: "nothing",
    PropertyType.INT64: "a 64-bit integer",
    PropertyType.STRING: "a string",
    PropertyType.RATIO: "a rational",
    PropertyType.GROUP: "a group",
}


class _Group:
    """What `_to_scalar` returns for a group."""


_GROUP = _Group()


class _ValueOfRecord:
    """The value; of a group, its children. Setting it keeps the name."""

    # Not a property: type checkers allow one to be set only to what it returns.

    @overload
    def __get__(self, record: None, kind: object = None) -> _ValueOfRecord: ...

    @overload
    def __get__(self, record: Record, kind: object = None) -> Union[None, int, str, Fraction, Tuple[Record, ...]]: ...

    def __get__(self, record: Optional[Record], kind: object = None) -> Any:
        if record is None:
            return self
        return tuple(record._value) if isinstance(record._value, list) else record._value

    def __set__(self, record: Record, value: Value) -> None:
        record._value = _convert(value)


class Record:
    """A named value, or a named group of such records in order.

    A value is None, an int of 64 bits, a str of any characters (bytes that are not UTF-8 are surrogates, as in
    file names), a Fraction of two ints of 64 bits, or a group: a mapping of names to values, or an iterable of
    records and of mappings with one member, in which a name may occur twice. `to_python` returns the same form.

    Values are copied in. `record["name"]` and `record[0]` are the children themselves, and stay what they are
    when they are taken out of the group.
    """

    __slots__ = ("_name", "_value")
    __hash__ = None  # type: ignore[assignment]

    _name: str
    _value: Union[None, int, str, Fraction, List[Record]]

    def __init__(self, name: str = "", value: Value = ()) -> None:
        self._name = _to_text(name, "the name of a record")
        self._value = _convert(value)

    @classmethod
    def _make(cls, name: str, value: Any) -> Record:
        """Make a record of parts that need no copy and no check."""
        made = cls.__new__(cls)
        made._name = name
        made._value = value
        return made

    @staticmethod
    def from_json(text: str) -> Record:
        """Read the JSON form of a record: an object with one member."""
        from . import _zelnor

        return _zelnor._record_from_json(text)

    def to_json(self) -> str:
        """Return the JSON form. Raise ValueError when groups are nested deeper than 512."""
        from . import _zelnor

        return _zelnor._record_to_json(self)

    @property
    def name(self) -> str:
        """The name. It may be empty."""
        return self._name

    @name.setter
    def name(self, name: str) -> None:
        self._name = _to_text(name, "the name of a record")

    value = _ValueOfRecord()

    @property
    def type(self) -> PropertyType:
        """What it holds."""
        if self._value is None:
            return PropertyType.NONE
        if isinstance(self._value, str):
            return PropertyType.STRING
        if isinstance(self._value, Fraction):
            return PropertyType.RATIO
        return PropertyType.GROUP if isinstance(self._value, list) else PropertyType.INT64

    @property
    def is_group(self) -> bool:
        """Whether it is a group."""
        return isinstance(self._value, list)

    def as_int(self) -> int:
        """Return the integer. Raise RecordTypeError when it holds something else."""
        if not isinstance(self._value, int):
            raise self._other_kind("a 64-bit integer")
        return self._value

    def as_str(self) -> str:
        """Return the string. Raise RecordTypeError when it holds something else."""
        if not isinstance(self._value, str):
            raise self._other_kind("a string")
        return self._value

    def as_fraction(self) -> Fraction:
        """Return the rational. Raise RecordTypeError when it holds something else."""
        if not isinstance(self._value, Fraction):
            raise self._other_kind("a rational")
        return self._value

    def to_python(self) -> Any:
        """Return the value as nested dicts, lists, ints, strs, Fractions and None.

        A group becomes a dict; if a name occurs twice in it, a list of dicts with one member.
        """
        if not isinstance(self._value, list):
            return self._value
        result = _container(self._value)
        stack = [(result, iter(self._value))]
        while stack:
            container, children = stack[-1]
            child = next(children, None)
            if child is None:
                stack.pop()
                continue
            value: Any = child._value
            if isinstance(value, list):
                inner = _container(value)
                stack.append((inner, iter(value)))
                value = inner
            if isinstance(container, dict):
                container[child._name] = value
            else:
                container.append({child._name: value})
        return result

    # A group's children

    def __len__(self) -> int:
        return len(self._value) if isinstance(self._value, list) else 0

    def __bool__(self) -> bool:
        """True: a record is there, whatever it holds."""
        return True

    def __iter__(self) -> Iterator[Record]:
        children = self._value
        if not isinstance(children, list):
            return
        count = len(children)
        for child in children:
            yield child
            if self._value is not children or len(children) != count:
                raise RuntimeError("the group changed while it was iterated")

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and self.get(name) is not None

    def names(self) -> List[str]:
        """Return the names of the children, in order."""
        return [child._name for child in self]

    def get(self, name: str) -> Optional[Record]:
        """Return the first child of that name; None if there is none."""
        for child in self._value if isinstance(self._value, list) else ():
            if child._name == name:
                return child
        return None

    def find_all(self, name: str) -> List[Record]:
        """Return all children of that name, in order."""
        return [child for child in self if child._name == name]

    @overload
    def __getitem__(self, key: Union[str, SupportsIndex]) -> Record: ...

    @overload
    def __getitem__(self, key: slice) -> List[Record]: ...

    def __getitem__(self, key: Union[str, SupportsIndex, slice]) -> Union[Record, List[Record]]:
        if isinstance(key, slice):
            return self._value[key] if isinstance(self._value, list) else []
        if isinstance(key, str):
            child = self.get(key)
            if child is None:
                raise self._refusal(RecordKeyError, f"Property '{self._name}' has no child '{key}'")
            return child
        position = operator.index(key)
        children: List[Record] = self._value if isinstance(self._value, list) else []
        try:
            return children[position]
        except IndexError:
            raise self._no_position(position) from None

    def __setitem__(self, key: Union[str, SupportsIndex], value: Value) -> None:
        """Set the value of a child, in its place; a name that there is not is appended."""
        if isinstance(key, slice):
            raise TypeError("the children of a slice cannot be set")
        if isinstance(key, str):
            self.set(key, value)
        else:
            self[key].value = value

    def __delitem__(self, key: Union[str, SupportsIndex, slice]) -> None:
        """Remove the first child of a name, the child at a position, or those of a slice."""
        if isinstance(key, slice):
            del self._children("RemoveChild")[key]
            return
        child = self[key]
        children = self._children("RemoveChild")
        # By identity: equal children are not the same.
        del children[next(i for i, candidate in enumerate(children) if candidate is child)]

    def set(self, name: str, value: Value = ()) -> Record:
        """Set the value of the first child of that name, which is appended if there is none; return it."""
        children = self._children("SetChildT")
        converted = _convert(value)
        child = self.get(name)
        if child is None:
            child = Record._make(_to_text(name, "the name of a record"), converted)
            children.append(child)
        else:
            child._value = converted
        return child

    def add(self, name: str, value: Value = ()) -> Record:
        """Append a child, even if there is one of that name; return it."""
        children = self._children("CreateChildT")
        child = Record(name, value)
        children.append(child)
        return child

    def append(self, record: Record) -> Record:
        """Append a copy of a record, under its name; return the copy."""
        if not isinstance(record, Record):
            raise TypeError(f"a record was expected, not {type(record).__name__}")
        return self.add(record._name, record)

    def clear(self) -> None:
        """Remove all children."""
        self._children("RemoveChild").clear()

    # As a value

    def copy(self) -> Record:
        """Return a copy of it and of everything in it."""
        return type(self)._make(self._name, _convert(self))

    def __copy__(self) -> Record:
        return self.copy()

    def __deepcopy__(self, memo: object) -> Record:
        return self.copy()

    def __reduce__(self) -> Tuple[Any, ...]:
        return (_restore, (type(self), _flatten(self)))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Record):
            return NotImplemented
        pairs = [(self, other)]
        while pairs:
            one, two = pairs.pop()
            if one._name != two._name or one.type != two.type:
                return False
            if isinstance(one._value, list) and isinstance(two._value, list):
                if len(one._value) != len(two._value):
                    return False
                pairs.extend(zip(one._value, two._value))
            elif one._value != two._value:
                return False
        return True

    def __repr__(self) -> str:
        try:
            return f"Record({self._name!r}, {self.to_python()!r})"
        except RecursionError:
            return f"Record({self._name!r}, ...)"

    def __str__(self) -> str:
        """Return a dump for people, one record a line."""
        from . import _zelnor

        return _zelnor._record_dump(self)

    def _children(self, method: str) -> List[Record]:
        if not isinstance(self._value, list):
            reason = f"'{self._name}' is not a group, so it cannot have children"
            refusal = self._refusal(MethodIsNotApplicable, reason)
            refusal.method_name = method
            raise refusal
        return self._value

    def _refusal(self, kind: Any, text: str) -> Any:
        refusal = kind(text)
        refusal.description = text
        refusal.property_name = self._name
        refusal.property_type = self.type
        return refusal

    def _no_position(self, position: int) -> Any:
        # Python refuses to print numbers that are very long.
        where = f"position {position}" if _LEAST <= position <= _MOST else "that position"
        text = f"Property '{self._name}' has no child at {where}, it has {len(self)}"
        return self._refusal(RecordIndexError, text)

    def _other_kind(self, wanted: str) -> Any:
        text = f"Property '{self._name}' holds {_KINDS[self.type]}, not {wanted}"
        return self._refusal(RecordTypeError, text)


def _to_text(text: object, what: str) -> str:
    if not isinstance(text, str):
        raise TypeError(f"{what} is a str, not {type(text).__name__}")
    # Raises UnicodeEncodeError for surrogates that are not bytes.
    text.encode("utf-8", "surrogateescape")
    # Of a class derived from str, the text alone.
    return str.__str__(text)


def _to_int(number: int, what: str) -> int:
    if not _LEAST <= number <= _MOST:
        # Without the number: Python refuses to print those that are very long.
        raise OverflowError(f"{what} is an integer from {_LEAST} to {_MOST}")
    return int.__index__(number)


def _to_scalar(value: Any) -> Any:
    """Return a scalar as a record holds it; _GROUP for a group."""
    if isinstance(value, Record):
        return _GROUP if isinstance(value._value, list) else value._value
    if value is None:
        return None
    if isinstance(value, bool):
        raise TypeError("a record cannot hold a bool: use 0 or 1")
    if isinstance(value, int):
        return _to_int(value, "the value of a record")
    if isinstance(value, str):
        return _to_text(value, "the value of a record")
    if isinstance(value, Fraction):
        numerator = _to_int(value.numerator, "a numerator")
        return Fraction(numerator, _to_int(value.denominator, "a denominator"))
    if isinstance(value, float):
        raise TypeError("a record cannot hold a float: use a Fraction")
    if isinstance(value, (bytes, bytearray, memoryview)) or not isinstance(value, (Mapping, Iterable)):
        raise TypeError(f"a record cannot hold a value of type {type(value).__name__}")
    return _GROUP


def _members(group: Any) -> Iterator[Tuple[str, Any]]:
    """Return the names and values of a group, in whatever form it is."""
    if isinstance(group, Record):
        for child in group:
            yield child._name, child
    elif isinstance(group, Mapping):
        for name, value in group.items():
            yield _to_text(name, "the name of a record"), value
    else:
        for element in group:
            if isinstance(element, Record):
                yield element._name, element
            elif isinstance(element, Mapping) and len(element) == 1:
                yield from _members(element)
            else:
                raise TypeError("an element of a group is a Record or a mapping with one member")


def _convert(value: Any) -> Any:
    """Return a copy of a value as a record holds it."""
    scalar = _to_scalar(value)
    if scalar is not _GROUP:
        return scalar
    children: List[Record] = []
    # Not by recursion: the interpreter allows fewer calls than groups may be nested.
    stack = [(children, _members(value), value)]
    open_groups: Set[int] = {id(value)}
    while stack:
        target, members, group = stack[-1]
        for name, member in members:
            scalar = _to_scalar(member)
            if scalar is not _GROUP:
                target.append(Record._make(name, scalar))
                continue
            if id(member) in open_groups:
                raise ValueError("a group cannot contain itself")
            if len(stack) == _MAX_DEPTH:
                raise ValueError(f"groups are nested deeper than {_MAX_DEPTH}")
            inner: List[Record] = []
            target.append(Record._make(name, inner))
            stack.append((inner, _members(member), member))
            open_groups.add(id(member))
            break
        else:
            stack.pop()
            open_groups.discard(id(group))
    return children


def _container(children: List[Record]) -> Any:
    """Return an empty dict if the children have distinct names, else an empty list."""
    return {} if len({child._name for child in children}) == len(children) else []


def _flatten(record: Record) -> List[Tuple[int, str, bool, Scalar]]:
    """Return the records of a tree in order: level, name, whether it is a group, value."""
    rows: List[Tuple[int, str, bool, Scalar]] = []
    stack = [(0, record)]
    while stack:
        level, top = stack.pop()
        if isinstance(top._value, list):
            rows.append((level, top._name, True, None))
            stack.extend((level + 1, child) for child in reversed(top._value))
        else:
            rows.append((level, top._name, False, top._value))
    return rows


def _restore(kind: Any, rows: List[Tuple[int, str, bool, Scalar]]) -> Record:
    """Make the tree of which `_flatten` made the rows."""
    root: Optional[Record] = None
    path: List[List[Record]] = []
    for level, name, is_group, value in rows:
        made = (kind if root is None else Record)(name, () if is_group else value)
        if root is None:
            root = made
        else:
            path[level - 1].append(made)
        del path[level:]
        if is_group:
            path.append(made._value)
    if root is None:
        raise ValueError("there is no record")
    return root

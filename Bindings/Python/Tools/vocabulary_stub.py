"""Prints the type stub of the vocabulary. The target python_vocabulary writes it to zelnor/_vocabulary.pyi."""

from __future__ import annotations

from typing import Iterator

import zelnor
from zelnor import _zelnor


def lines() -> Iterator[str]:
    yield "# Made by vocabulary_stub.py from the library's own lists."
    yield ""
    yield "from enum import IntEnum"
    yield "from typing import Final"
    for name, members in _zelnor._constants.items():
        yield ""
        yield f"class {name}:"
        for member, value in members.items():
            yield f"    {member}: Final[{type(value).__name__}]"
    for name, members in _zelnor._numbers.items():
        yield ""
        yield f"class {name}(IntEnum):"
        for member in members:
            # An alias has the number of another, too.
            yield f"    {member} = {int(getattr(zelnor, name)[member])}"


if __name__ == "__main__":
    for line in lines():
        print(line)

"""Pictures of graphs, which Graphviz's program dot makes of the DOT language."""

from __future__ import annotations

import os
import shutil
import subprocess
from typing import TYPE_CHECKING, Optional, Union

from . import _zelnor

if TYPE_CHECKING:
    from . import Graph

_PICTURES = ("svg", "png", "pdf")
_SOURCES = ("dot", "gv")
# A drawing of thousands of nodes takes dot minutes, and a notebook would wait for it.
_SECONDS = 60


def _render(graph: Graph, kind: str) -> bytes:
    program = shutil.which("dot")
    if program is None:
        raise FileNotFoundError("Graphviz's program dot was not found")
    text = graph.to_dot().encode("utf-8", "surrogateescape")
    done = subprocess.run([program, f"-T{kind}"], input=text, capture_output=True, timeout=_SECONDS, check=True)
    return done.stdout


def to_svg(graph: Graph) -> Optional[str]:
    """Return the drawing as an <svg> element; None when dot cannot make one."""
    try:
        svg = _render(graph, "svg").decode("utf-8", "replace")
    except (OSError, subprocess.SubprocessError):
        return None
    begin = svg.find("<svg")
    return svg[begin:] if begin >= 0 else None


def draw(graph: Graph, path: Union[str, bytes, os.PathLike[str]]) -> None:
    """Write the drawing in the form that the extension names."""
    extension = os.path.splitext(os.fsdecode(path))[1][1:].lower()
    if extension in _PICTURES:
        contents = _render(graph, extension)
    elif extension not in _SOURCES:
        expected = ", ".join(f".{known}" for known in _SOURCES + _PICTURES)
        raise ValueError(f"a drawing has one of the extensions {expected}, not '{os.path.basename(os.fsdecode(path))}'")
    else:
        contents = graph.to_dot().encode("utf-8", "surrogateescape")
    _zelnor._write_file(path, contents)

"""What a program may do to the interpreter without ending it."""

from __future__ import annotations

import gc
import pathlib
import sys
import textwrap
import threading
import weakref
from typing import Any, List

import pytest

import zelnor
from zelnor import Graph, Record


def test_a_subinterpreter_is_refused(run_python: Any) -> None:
    program = textwrap.dedent(
        """
        import _xxsubinterpreters as interpreters
        {first}
        made = interpreters.create()
        try:
            interpreters.run_string(made, "import zelnor")
        except interpreters.RunFailedError as error:
            print(error)
        interpreters.destroy(made)
        """
    )
    for first in ("import zelnor", "pass"):
        done = run_python("-c", program.format(first=first))
        assert (done.returncode, done.stderr) == (0, "")
        assert "zelnor does not support subinterpreters" in done.stdout  # after the class of the error


def test_the_package_is_imported_after_it_was_forgotten(run_python: Any) -> None:
    program = textwrap.dedent(
        """
        import sys, zelnor
        graph = zelnor.Graph()
        graph.add_node(zelnor.Record("x", {"a": 1}))
        for name in [name for name in sys.modules if name.startswith("zelnor") and not name.endswith("._zelnor")]:
            del sys.modules[name]
        import zelnor
        print(graph.node(1))
        """
    )
    done = run_python("-c", program)
    assert (done.returncode, done.stdout) == (0, "x:\n  a: 1\n\n")


def test_an_import_leaves_signals_and_streams_alone(run_python: Any) -> None:
    program = "import signal; a = signal.getsignal(2); import zelnor; assert signal.getsignal(2) is a"
    done = run_python("-c", program)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


def test_an_import_works_without_the_source_of_docstrings(run_python: Any) -> None:
    assert run_python("-OO", "-c", "import zelnor; zelnor.Graph().to_json()").returncode == 0


@pytest.mark.parametrize("locale", ["C", "POSIX", "C.UTF-8"])
def test_texts_are_the_same_in_every_locale(run_python: Any, monkeypatch: pytest.MonkeyPatch, locale: str) -> None:
    monkeypatch.setenv("LC_ALL", locale)
    program = "import zelnor; print(ascii(zelnor.Record.from_json('{\"\\u00e9\":\"\\u00fc\"}')))"
    assert run_python("-c", program).stdout == "Record('\\xe9', '\\xfc')\n"


def test_what_was_given_to_the_library_is_not_kept() -> None:
    class Watched(Record):
        __slots__ = ("__weakref__",)

    record = Watched("x", {"a": 1})
    graph = Graph()
    graph.add_node(record)
    watch = weakref.ref(record)
    del record
    gc.collect()
    assert watch() is None


def test_references_are_counted() -> None:
    graph = Graph()
    record = Record("x", {"a": {"b": [{"": 1}, {"": 2}]}})

    def use() -> None:
        node = graph.add_node(record)
        graph.node(node)
        graph.to_json()
        graph.remove_node(node)
        try:
            graph.node(node)
        except zelnor.NodeNotFound:
            pass
        try:
            graph.add_node(None)  # type: ignore[arg-type]
        except TypeError:
            pass

    def objects() -> int:
        gc.collect()
        return len(gc.get_objects())

    for _ in range(3):
        use()
    before = objects()
    for _ in range(50):
        use()
    assert abs(objects() - before) < 10
    assert sys.getrefcount(None) > 0


def test_deep_records_are_freed() -> None:
    record = Record("x")
    child = record
    for _ in range(100_000):
        child = child.add("g")
    del child
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        record.copy()
    assert record == record
    assert repr(record) == "Record('x', ...)"
    with pytest.raises(ValueError, match="^groups are nested deeper than 512$"):
        Graph().add_node(record)
    del record
    gc.collect()


def test_records_may_be_changed_while_another_thread_gives_them_to_the_library() -> None:
    record = Record("x", {"a": 1})
    graph = Graph()
    stop = threading.Event()
    errors: List[BaseException] = []

    def change() -> None:
        while not stop.is_set():
            record["b"] = {"c": [{"d": 1}, {"d": 2}]}
            record["b"] = 1
            del record["b"]

    thread = threading.Thread(target=change)
    thread.start()
    for _ in range(300):
        try:
            graph.add_node(record)
        except BaseException as error:
            errors.append(error)
    stop.set()
    thread.join()
    assert errors == []
    assert len(graph) == 300


def test_a_value_whose_methods_raise_passes_the_error_on() -> None:
    class Odd(dict):  # type: ignore[type-arg]
        def items(self) -> Any:
            raise ZeroDivisionError("odd")

    class OddPath:
        def __fspath__(self) -> str:
            raise ZeroDivisionError("odd")

    class OddIndex:
        def __index__(self) -> int:
            raise ZeroDivisionError("odd")

    class OddFloat:
        def __float__(self) -> float:
            raise ZeroDivisionError("odd")

    with pytest.raises(ZeroDivisionError):
        Record("x", Odd(a=1))
    with pytest.raises(ZeroDivisionError):
        Graph.load(OddPath())
    with pytest.raises(ZeroDivisionError):
        Graph().node(OddIndex())  # type: ignore[arg-type]
    with pytest.raises(ZeroDivisionError):
        zelnor.default_video_bitrate("CODEC_ID_H264", 1, 1, OddFloat())


def test_a_path_that_returns_no_text_is_refused() -> None:
    class OddPath:
        def __fspath__(self) -> Any:
            return 1

    with pytest.raises(TypeError):
        Graph.load(OddPath())


def test_an_attribute_of_a_bound_class_cannot_be_added() -> None:
    with pytest.raises(AttributeError):
        Graph().other = 1  # type: ignore[attr-defined]


def test_calling_init_again_changes_nothing(graph: Graph) -> None:
    with pytest.raises(TypeError):
        graph.__init__()  # type: ignore[misc]
    assert len(graph) == 3


def test_methods_of_another_class_are_refused(graph: Graph, tmp_path: pathlib.Path) -> None:
    with pytest.raises(TypeError):
        Graph.nodes(Record("x"))  # type: ignore[arg-type]
    with pytest.raises(TypeError):
        Graph.nodes(None)  # type: ignore[arg-type]
    with pytest.raises(TypeError):
        zelnor.CancelToken.cancel(graph)  # type: ignore[arg-type]


@pytest.mark.parametrize("kind", [Graph, zelnor.Preset, zelnor.MediaFile, zelnor.MediaStream, zelnor.CancelToken])
def test_none_is_not_an_object_of_any_class(kind: Any) -> None:
    for member in vars(kind).values():
        call = member.fget if isinstance(member, property) else member
        if isinstance(member, staticmethod) or not callable(call):
            continue
        with pytest.raises((AttributeError, TypeError)):
            call(None)


ATTACK = """
import inspect, random, sys
from fractions import Fraction
import zelnor

odd = [
    None, True, -1, 0, 1, 2**31, 2**64, -(10**500), 0.5, float("nan"), float("inf"), "", "x", "\\0", "\\ud800", "\\udce9",
    "CODEC_ID_H264", b"x", b"\\xff", [], [None], [0.5] * 4, (), {}, {"a": 1}, object(), object, print, lambda *a: 1 / 0,
    Fraction(1, 3), zelnor.Record("x"), zelnor.Record("x", 1), zelnor.Graph(), zelnor.CancelToken(), zelnor.JobRequest(),
    zelnor.Graph.from_json('{"vertices":[{"id":1},{"id":2}],"edges":[{"id":1,"from":1,"to":2}]}'), zelnor.PixFmt.PIX_FMT_RGBA,
]
made = [zelnor.Graph, zelnor.CancelToken, zelnor.Record]
chance = random.Random(int(sys.argv[1]))
calls = [value for name, value in vars(zelnor).items() if not name.startswith("_") and callable(value)]
for kind in [zelnor.Graph, zelnor.Preset, zelnor.MediaFile, zelnor.MediaStream, zelnor.CancelToken, zelnor.Record]:
    calls += [getattr(kind, name) for name in dir(kind) if callable(getattr(kind, name)) and name != "__class__"]
for call in calls:
    for count in [0, 1, 1, 2, 2, 2, 3, 4, 5] * 4:
        arguments = [chance.choice(odd) for _ in range(count)]
        if arguments and chance.random() < 0.5:
            arguments[0] = chance.choice(made)()
        try:
            call(*arguments)
        except (SystemError, RuntimeError) as error:
            print(call, arguments, repr(error))
        except Exception:
            pass
print(len(calls) > 150)
"""


@pytest.mark.parametrize("seed", range(3))
def test_odd_arguments_raise_errors_and_nothing_else(run_python: Any, tmp_path: pathlib.Path, seed: int) -> None:
    done = run_python("-c", ATTACK, seed, cwd=tmp_path)
    assert (done.returncode, done.stdout) == (0, "True\n"), done.stderr

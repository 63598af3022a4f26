"""What type checkers and readers are told."""

from __future__ import annotations

import ast
import inspect
import os
import pathlib
import shutil
import subprocess
import sys
from typing import Any, Dict, List, Set

import pytest

import zelnor

PACKAGE = pathlib.Path(__file__).resolve().parents[2] / "Bindings" / "Python"
STUB = ast.parse((PACKAGE / "zelnor" / "__init__.pyi").read_text())
CLASSES = ["Graph", "Preset", "MediaFile", "MediaStream", "CancelToken"]


def functions_of(nodes: List[ast.stmt]) -> Dict[str, ast.FunctionDef]:
    return {node.name: node for node in nodes if isinstance(node, ast.FunctionDef)}


def stub_class(name: str) -> Dict[str, ast.FunctionDef]:
    [found] = [node for node in STUB.body if isinstance(node, ast.ClassDef) and node.name == name]
    return functions_of(found.body)


def names_of_stub() -> Set[str]:
    names: Set[str] = set()
    for node in STUB.body:
        if isinstance(node, ast.ImportFrom) and node.level == 1:
            names.update(alias.asname or alias.name for alias in node.names)
        elif isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            names.add(node.name)
    return names


def test_the_stub_has_the_names_of_the_module() -> None:
    assert names_of_stub() == {name for name in vars(zelnor) if not name.startswith("_")}


@pytest.mark.parametrize("name", CLASSES)
def test_the_stub_of_a_class_has_its_names(name: str) -> None:
    public = {key for key in vars(getattr(zelnor, name)) if not key.startswith("_") or key in ("__len__", "_repr_svg_")}
    assert set(stub_class(name)) == public


def signature_of(documentation: str) -> List[str]:
    """The names of the arguments, from the first line of what pybind11 says of a function."""
    line = documentation.splitlines()[0]
    arguments = line[line.index("(") + 1 : line.rindex(") ->")]
    depth = 0
    parts = [""]
    for character in arguments:
        depth += (character in "[(<") - (character in "])>")
        if character == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += character
    return [part.split(":")[0].strip() for part in parts if part.strip()]


def arguments_of(node: ast.FunctionDef) -> List[str]:
    names = [argument.arg for argument in node.args.args]
    if node.args.kwonlyargs:
        names += ["*", *(argument.arg for argument in node.args.kwonlyargs)]
    return names


@pytest.mark.parametrize("name", sorted(functions_of(STUB.body)))
def test_the_stub_of_a_function_has_its_arguments(name: str) -> None:
    assert arguments_of(functions_of(STUB.body)[name]) == signature_of(getattr(zelnor, name).__doc__)


@pytest.mark.parametrize("name", ["Graph", "Preset", "CancelToken"])
def test_the_stub_of_a_method_has_its_arguments(name: str) -> None:
    for method, node in stub_class(name).items():
        found = vars(getattr(zelnor, name))[method]
        if isinstance(found, property) or method.startswith("_"):
            continue
        documented = signature_of(getattr(zelnor.__dict__[name], method).__doc__)
        # pybind11 calls an object that it passes as it is "arg0".
        assert [argument for argument in documented if argument != "arg0"] in (
            arguments_of(node),
            arguments_of(node)[1:],
        ), method


def test_the_stub_of_the_vocabulary_is_not_stale(run_python: Any) -> None:
    made = run_python(PACKAGE / "Tools" / "vocabulary_stub.py")
    assert made.returncode == 0
    is_new = made.stdout == (PACKAGE / "zelnor" / "_vocabulary.pyi").read_text()
    assert is_new, "write it anew: cmake --build --preset release --target python_vocabulary"


def test_everything_has_a_docstring() -> None:
    lacking = []
    for name, value in vars(zelnor).items():
        if name.startswith("_"):
            continue
        if not inspect.getdoc(value):
            lacking.append(name)
        if inspect.isclass(value) and name in [*CLASSES, "Record"]:
            lacking += [
                f"{name}.{key}"
                for key, member in vars(value).items()
                if not key.startswith("_") and not inspect.getdoc(member)
            ]
    assert lacking == []


def test_a_docstring_of_a_function_says_more_than_its_signature() -> None:
    short = [name for name in functions_of(STUB.body) if len(getattr(zelnor, name).__doc__.strip().splitlines()) < 3]
    assert short == []


@pytest.mark.skipif(shutil.which("mypy") is None, reason="mypy is not installed")
def test_mypy_takes_the_package_its_examples_and_a_program(tmp_path: pathlib.Path) -> None:
    program = tmp_path / "program.py"
    program.write_text(
        "from fractions import Fraction\n"
        "import zelnor\n"
        "record = zelnor.Record('x', {'a': Fraction(1, 2)})\n"
        "record.value = {'a': record, 'b': [zelnor.Record('c', None)]}\n"
        "reveal_type(record['a'].as_fraction())\n"
        "reveal_type(record[0:1])\n"
        "reveal_type(zelnor.IFormatFile.FORMAT_MP4)\n"
        "reveal_type(zelnor.PixFmt.PIX_FMT_RGBA)\n"
        "reveal_type(zelnor.probe('a').streams[0].kind)\n"
        "reveal_type(zelnor.run(zelnor.Graph(), on_progress=lambda p: print(p.part)).targets[0].size)\n"
    )
    wrong = tmp_path / "wrong.py"
    wrong.write_text("import zelnor\nzelnor.Graph().add_node('x')\nzelnor.IFormatFile.FORMAT_MP5\n")
    environment = {**os.environ, "MYPYPATH": str(PACKAGE)}
    command = ["mypy", "--strict", "--no-error-summary", f"--cache-dir={tmp_path}", f"--python-executable={sys.executable}"]
    examples = sorted((PACKAGE.parents[1] / "Examples" / "Python").glob("*.py"))
    sources = [*map(str, (PACKAGE / "zelnor").glob("*.py*")), *map(str, examples), str(program), str(wrong)]
    sources = [source for source in sources if not source.endswith(("py.typed", "__init__.py", "_vocabulary.py"))]
    done = subprocess.run([*command, *sources], capture_output=True, text=True, env=environment)
    said = [line.split("/")[-1] for line in done.stdout.splitlines()]
    assert done.stderr == ""
    assert sorted(said) == [
        'program.py:10: note: Revealed type is "builtins.int"',
        'program.py:5: note: Revealed type is "fractions.Fraction"',
        'program.py:6: note: Revealed type is "builtins.list[zelnor._record.Record]"',
        'program.py:7: note: Revealed type is "builtins.str"',
        'program.py:8: note: Revealed type is "Literal[zelnor._vocabulary.PixFmt.PIX_FMT_RGBA]?"',
        'program.py:9: note: Revealed type is "zelnor._values.StreamKind"',
        'wrong.py:2: error: Argument 1 to "add_node" of "Graph" has incompatible type "str"; expected "Record"  [arg-type]',
        'wrong.py:3: error: "Type[IFormatFile]" has no attribute "FORMAT_MP5"  [attr-defined]',
    ]

"""`pip install` against an installed library, without a network."""

from __future__ import annotations

import os
import pathlib
import shutil
import subprocess
import sys
from typing import Any

import pytest

import zelnor

SOURCES = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(str(zelnor.__path__[0])).parents[1]
# At the same place each time, so that ccache knows what was compiled before: nothing here takes as long.
SCRATCH = BUILD / "Tests" / "Python" / "install"
CCACHE = "/usr/lib/ccache"


@pytest.fixture(scope="module")
def prefix() -> pathlib.Path:
    """The library, installed as this build makes it."""
    if not (BUILD / "cmake_install.cmake").exists() or "ZELNOR_SANITIZE:STRING=address" in (
        BUILD / "CMakeCache.txt"
    ).read_text():
        pytest.skip("only a build that is delivered is installed")
    shutil.rmtree(SCRATCH, ignore_errors=True)
    made = SCRATCH / "prefix"
    for component in ("libzelnor1", "libzelnor-media1", "libzelnor-dev"):
        command = ["cmake", "--install", str(BUILD), "--prefix", str(made), "--component", component]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    return made


@pytest.fixture(scope="module")
def installed(prefix: pathlib.Path) -> pathlib.Path:
    """The package, installed from a copy of its folder, so that the tree stays clean."""
    copy = SCRATCH / "Bindings" / "Python"
    shutil.copytree(SOURCES / "Bindings" / "Python", copy)
    target = SCRATCH / "site"
    [packages] = prefix.glob("**/pkgconfig")
    environment = {**os.environ, "PKG_CONFIG_PATH": str(packages), "CFLAGS": "-O0", "PIP_NO_INDEX": "1"}
    environment["PATH"] = f"{CCACHE}:{environment['PATH']}"
    environment.pop("PYTHONPATH", None)
    command = [sys.executable, "-m", "pip", "install", "--quiet", "--target", str(target), str(copy)]
    done = subprocess.run(command, capture_output=True, text=True, env=environment)
    assert done.returncode == 0, done.stdout + done.stderr
    return target


def test_the_installed_package_works_elsewhere(
    installed: pathlib.Path, run_python: Any, monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path
) -> None:
    monkeypatch.setenv("PYTHONPATH", str(installed))
    program = "import zelnor; print(zelnor.__file__); print(zelnor.Record('x', {'a': 1}).to_json(), zelnor.list_presets())"
    program += "; print(zelnor.muxer_description('mp3'))"  # FFmpeg's libraries are found from there, too
    done = run_python("-c", program, cwd=tmp_path)
    assert done.stderr == ""
    file, answer, muxer = done.stdout.splitlines()
    assert muxer == zelnor.muxer_description("mp3")
    assert file == str(installed / "zelnor" / "__init__.py")
    assert answer.startswith('{"x":{"a":1}} [')
    assert "'mp4-h264-aac'" in answer  # beside those of the tests of others


def test_the_installed_package_has_its_types(installed: pathlib.Path) -> None:
    files = {file.name for file in (installed / "zelnor").iterdir()}
    assert {"py.typed", "__init__.pyi", "_vocabulary.pyi", "_zelnor.pyi"} <= files


def test_without_the_library_setup_says_what_is_missing(tmp_path: pathlib.Path) -> None:
    environment = {**os.environ, "PKG_CONFIG_PATH": "", "PKG_CONFIG_LIBDIR": str(tmp_path)}
    command = [sys.executable, str(SOURCES / "Bindings" / "Python" / "setup.py"), "--version"]
    done = subprocess.run(command, capture_output=True, text=True, env=environment)
    assert done.returncode == 1
    assert done.stderr.splitlines()[-1] == (
        "setup.py: pkg-config does not find 'zelnor-media': set PKG_CONFIG_PATH to where it is"
    )

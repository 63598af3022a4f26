"""Builds the Python package against an installed Zelnor, which pkg-config finds: `pip install .`

Nothing is fetched. There is no pyproject.toml on purpose: with one, pip makes an environment of its own to build in, and
fetches setuptools for it, though Debian has it.
"""

import glob
import os
import shlex
import subprocess

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

here = os.path.dirname(os.path.abspath(__file__))
# Paths of setup.py are relative to its folder.
os.chdir(here)


def pkg_config(*arguments):
    command = [os.environ.get("PKG_CONFIG", "pkg-config"), *arguments]
    try:
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, universal_newlines=True).stdout.strip()
    except FileNotFoundError:
        raise SystemExit("setup.py: pkg-config was not found")
    except subprocess.CalledProcessError:
        raise SystemExit("setup.py: pkg-config does not find 'zelnor-media': set PKG_CONFIG_PATH to where it is")


class BuildAtOnce(build_ext):
    """Compiles all sources as one: reading the headers takes most of the time."""

    def build_extension(self, extension):
        whole = os.path.join(self.build_temp, "zelnor.cpp")
        os.makedirs(self.build_temp, exist_ok=True)
        with open(whole, "w") as file:
            for source in extension.sources:
                file.write(f'#include "Bindings/Python/{source}"\n')
        extension.sources = [whole]
        super().build_extension(extension)


libraries = os.path.realpath(pkg_config("--variable=libdir", "zelnor-media"))
extension = Extension(
    "zelnor._zelnor",
    sorted(glob.glob("Source/*.cpp")),
    depends=sorted(glob.glob("Source/*.h")),
    # As in cmake/ZelnorPython.cmake, which says why.
    define_macros=[("PYBIND11_INTERNALS_KIND", '"_zelnor"')],
    extra_compile_args=[
        "-std=c++17",
        "-g0",
        "-fvisibility=hidden",
        "-fvisibility-inlines-hidden",
        # The installed headers stand before those of the tree, of which only our own are meant.
        *shlex.split(pkg_config("--cflags", "zelnor-media")),
        "-I" + os.path.join(here, "..", ".."),
    ],
    extra_link_args=[*shlex.split(pkg_config("--libs", "zelnor-media")), f"-Wl,-rpath,{libraries}"],
    language="c++",
)

setup(
    name="zelnor",
    version=pkg_config("--modversion", "zelnor-media"),
    description="One vocabulary for media and one model of a transcoding job",
    license="MIT",
    packages=["zelnor"],
    package_data={"zelnor": ["*.pyi", "py.typed"]},
    ext_modules=[extension],
    cmdclass={"build_ext": BuildAtOnce},
    python_requires=">=3.11",
    zip_safe=False,
)

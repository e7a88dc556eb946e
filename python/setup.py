"""Puts the libraries and the simulated head of a platform into the wheel; pyproject.toml has everything else.

FRINGIX_TREE names the folder that they are taken from, a dist/PLATFORM or build/PLATFORM; its platform is the wheel's. Without it a
checkout's own is taken. A source distribution has none: its wheel uses the libraries that the system has.
"""

from __future__ import annotations

import os
import pathlib
import platform
import re
import shutil
import sys

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:
    from wheel.bdist_wheel import bdist_wheel

HERE = pathlib.Path(__file__).resolve().parent
IS_CHECKOUT = not (HERE / "PKG-INFO").exists()
LIBRARIES = {"windows": ["DAXFringix.dll", "fringix-scan.dll"], "linux": ["libDAXFringix.so", "libfringix-scan.so"]}
PROGRAMS = {"windows": ["fringix-head.exe"], "linux": ["fringix-head"]}


def version() -> str:
    """The project's; a source distribution tells it by itself."""
    file = HERE.parent / "CMakeLists.txt" if IS_CHECKOUT else HERE / "PKG-INFO"
    pattern = r"^project\(Fringix VERSION (\S+)" if IS_CHECKOUT else r"^Version: (\S+)"
    found = re.search(pattern, file.read_text(encoding="utf-8"), re.MULTILINE)
    if not found:
        raise SystemExit(f"{file} does not tell the version")
    return found.group(1)


def find(tree: pathlib.Path, name: str) -> pathlib.Path | None:
    return next((path for path in [tree / "lib" / name, tree / "bin" / name] if path.is_file()), None)


def files_of(tree: pathlib.Path) -> tuple[str, dict[str, list[pathlib.Path]]] | None:
    """The platform of a tree, and what goes into which folder of the package; None where anything is missing."""
    for system in LIBRARIES:
        libraries, programs = ([find(tree, name) for name in names[system]] for names in (LIBRARIES, PROGRAMS))
        if None not in libraries + programs:
            licenses = sorted((tree / "share" / "licenses").glob("*.txt"))
            return system, {"lib": libraries, "bin": programs, "licenses": licenses}
    return None


def native_files() -> tuple[str, dict[str, list[pathlib.Path]]] | None:
    named = os.environ.get("FRINGIX_TREE")
    if not named and not IS_CHECKOUT:
        return None
    host = "windows" if sys.platform == "win32" else "linux"
    trees = [pathlib.Path(named).resolve()] if named else [HERE.parent / kind / host for kind in ("dist", "build")]
    found = next(filter(None, map(files_of, trees)), None)
    if not found:
        places = " nor in ".join(str(tree) for tree in trees)
        raise SystemExit(f"The libraries and the simulated head are not in {places}. Build them first: ./run build")
    return found


def platform_tag(system: str, files: dict[str, list[pathlib.Path]]) -> str:
    """Windows, or the oldest Linux that has the C library which the files name as their requirement."""
    if system == "windows":
        return "win_amd64"
    contents = b"".join(file.read_bytes() for file in files["lib"] + files["bin"])
    newest = max(int(minor) for minor in re.findall(rb"GLIBC_2\.(\d+)(?:\.\d+)?\0", contents))
    return f"manylinux_2_{newest}_{platform.machine()}"


class PackageWithLibraries(build_py):
    def run(self) -> None:
        shutil.rmtree(self.build_lib, ignore_errors=True)  # it may have another platform's libraries
        super().run()
        native = native_files()
        for folder, files in native[1].items() if native else []:
            target = pathlib.Path(self.build_lib, "fringix", folder)
            target.mkdir(exist_ok=True)
            for file in files:
                shutil.copy(file, target)


class PlatformWheel(bdist_wheel):
    def get_tag(self) -> tuple[str, str, str]:
        native = native_files()
        return "py3", "none", platform_tag(*native) if native else "any"


class PlatformDistribution(Distribution):
    def has_ext_modules(self) -> bool:
        return IS_CHECKOUT or "FRINGIX_TREE" in os.environ


setup(version=version(), distclass=PlatformDistribution, cmdclass={"build_py": PackageWithLibraries, "bdist_wheel": PlatformWheel})

"""The tree that the changes are compiled in: a copy of the project, so that the sources themselves stay as they are."""

from __future__ import annotations

import os
import pathlib
import re
import shutil
import subprocess

from schemata import rewritten
from sites import Site

ROOT = pathlib.Path(__file__).resolve().parent.parent
TREE = ROOT / "build" / "mutate" / "tree"
BUILD = TREE / "build" / "linux"
NOT_COPIED = {"build", "dist", "out", ".git", "__pycache__"}

# Programs whose tests are about the changed rooms.
PROGRAMS = ["fringix-memory-network-tests", "fringix-scan-tests", "fringix-tests", "fringix-scan-abi-tests", "fringix-abi-tests"]


def copy_tree() -> None:
    """Brings the copy up to date; what is the same keeps its time, so that it is not compiled again."""
    wanted = set()
    for folder, folders, files in os.walk(ROOT):
        folders[:] = [f for f in folders if f not in NOT_COPIED]
        for name in files:
            file = pathlib.Path(folder) / name
            wanted.add(file.relative_to(ROOT))
            if not is_rewritten(file.relative_to(ROOT)):
                copy_file(file, TREE / file.relative_to(ROOT))
    for folder, folders, files in os.walk(TREE):
        folders[:] = [f for f in folders if f not in NOT_COPIED]
        for name in files:
            if not name.endswith(".inc") and (pathlib.Path(folder) / name).relative_to(TREE) not in wanted:
                (pathlib.Path(folder) / name).unlink()


def copy_file(source: pathlib.Path, target: pathlib.Path) -> None:
    if target.exists() and target.read_bytes() == source.read_bytes():
        return
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy2(source, target)


def is_rewritten(file: pathlib.Path) -> bool:
    return file.parts[0] in ("src", "scan", "json") and file.suffix in (".cpp", ".h")


def write(name: str, text: str) -> None:
    target = TREE / name
    target.parent.mkdir(parents=True, exist_ok=True)
    if not target.exists() or target.read_text(encoding="latin-1") != text:
        target.write_text(text, encoding="latin-1")


def write_sources(numbered: dict[int, Site]) -> None:
    for file in [*ROOT.glob("src/**/*"), *ROOT.glob("scan/**/*"), *ROOT.glob("json/*")]:
        name = str(file.relative_to(ROOT))
        if not is_rewritten(file.relative_to(ROOT)):
            continue
        text = file.read_text(encoding="latin-1")
        mine = {number: site for number, site in numbered.items() if site.file == name}
        if mine:
            text = f'#pragma GCC system_header\n#include "{ROOT}/mutation/mutant.h"\n#line 1 "{name}"\n{rewritten(text, mine)}'
        if mine and name.endswith(".cpp"):
            write(f"{name}.inc", text)  # in a file that is included the compiler can be told not to warn
            text = f'#include "{file.name}.inc"\n'
        write(name, text)


def build() -> str:
    """What the compiler says where it fails; nothing when all is built."""
    environment = {**os.environ, "CCACHE_BASEDIR": str(TREE), "CCACHE_NOHASHDIR": "1"}
    subprocess.run(["cmake", "--preset", "linux"], cwd=TREE, env=environment, check=True, stdout=subprocess.DEVNULL)
    done = subprocess.run(["cmake", "--build", "--preset", "linux", "--target", *PROGRAMS, "--", "--quiet", "-k", "0"],
                          cwd=TREE, env=environment, capture_output=True, text=True)
    return "" if done.returncode == 0 else done.stdout + done.stderr


def not_compiled(told: str, numbered: dict[int, Site]) -> set[int]:
    """The changes that the compiler refuses: on a line that it complains of, the innermost that it can mean."""
    refused = set()
    for file, line in set(re.findall(r"^(?:\S*/tree/)?((?:src|scan|json)/[\w/]+\.(?:cpp|h)):(\d+):(?:\d+:)? (?:error|  +required from)", told, re.M)):
        text = (ROOT / file).read_text(encoding="latin-1")
        start = sum(len(part) + 1 for part in text.split("\n")[: int(line) - 1])
        end = text.find("\n", start)
        there = [(site.end - site.start, number) for number, site in numbered.items()
                 if site.file == file and site.start <= end and start <= site.end]
        beginning = [pair for pair in there if start <= numbered[pair[1]].start <= end]
        refused |= {number for _, number in (beginning or there)}
    return refused

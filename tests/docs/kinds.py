"""What is done with a block, by its language."""

from __future__ import annotations

import itertools
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
from typing import Callable

from heads import PATIENCE, Heads, matches, on_this_machine
from page import ROOT, Block

TREE = pathlib.Path(os.environ.get("FRINGIX_TREE", ""))

# Who is asked to tilt the board tilts it, and has enough after six poses.
TILT = """
import fringix
places = iter(range(1, 7))
def input(asked):
    place = next(places, None)
    if place is None:
        return "q"
    with fringix.open("127.0.0.20") as other:
        other.data["scene.txt"] = f"board:{place}".encode()
"""

HEADERS = {"c": ["stdio.h", "stdlib.h", "fringix/fringix.h", "fringix/scan.h"]}
HEADERS["cpp"] = ["chrono", "iostream", "thread", "fringix/fringix.hpp", "fringix/scan.hpp"]

CSHARP = """using System; using System.Threading; using Fringix;
static class Blocks {
  %s
  static void Main() { %s }
}
"""


class Skipped(Exception):
    """What stands in the way of running a block here."""


def run(command: list[str], folder: pathlib.Path) -> str:
    done = subprocess.run(
        command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=5 * PATIENCE
    )
    assert done.returncode == 0, f"{shlex.join(command[:3])} ... ended with {done.returncode}:\n{done.stdout}"
    return done.stdout


def head_options(command: str) -> list[str] | None:
    """Those of a command that starts a simulated head, whether or not it is told to go on beside what follows."""
    for start in ("fringix-head", "python -m fringix head"):
        if re.match(rf"{start}( |$)", command):
            return shlex.split(command[len(start) :].replace("&", ""), comments=True)
    return None


def require_tshark(text: str) -> None:
    if "tshark" not in text:
        return
    if not shutil.which("tshark"):
        raise Skipped("tshark is not installed")
    if not re.search(r"\blo\b", subprocess.run(["tshark", "-D"], capture_output=True, text=True).stdout):
        raise Skipped("this user may not capture")


def check_sh(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    if "pkg-config" in block.text and not (TREE / "lib/pkgconfig").exists():
        raise Skipped("this tree has no files for pkg-config")
    if "dist/windows" in block.text and not (folder / "dist/windows").exists():
        raise Skipped("this run does not build for Windows")
    require_tshark(block.text)
    if re.search(r"\$!|\|.*fringix-head", block.text):  # it ends what it starts
        heads.make_room()
        run(["sh", "-e", "-c", on_this_machine(block.text)], folder)
        return
    lines = on_this_machine(block.text).splitlines()
    for starts_head, part in itertools.groupby(lines, lambda line: head_options(line) is not None):
        if starts_head:
            for line in part:
                heads.start(head_options(line) or [], full_size=False)
        else:
            script = "\n".join(part)
            heads.need(full_size=False, text=script)
            run(["sh", "-e", "-c", script], folder)


def commands_of(text: str) -> list[tuple[str, str]]:
    """Each command behind a dollar sign, with what is shown below it."""
    parts = re.split(r"^\$ (.*)\n", text, flags=re.MULTILINE)
    assert len(parts) > 1 and not parts[0], "the block begins with no command"
    return list(zip(parts[1::2], parts[2::2]))


def check_console(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    require_tshark(block.text)
    for command, shown in commands_of(block.text):
        options = head_options(command)
        if options is None:
            heads.need(full_size=True, text=on_this_machine(command))
            told = run(["sh", "-e", "-c", on_this_machine(command)], folder)
            assert matches(on_this_machine(shown), told), f"{command} told:\n{told}"
        else:
            typed = re.findall("[^,]+", block.told("typed:") or "")
            head = heads.start(options, full_size=True)
            answers = "".join(line for line in shown.splitlines(keepends=True) if line.strip() not in map(str.strip, typed))
            for line in typed:
                head.type(line.strip())
            head.wait_for(lambda told: matches(answers, told))


def check_python(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    text = on_this_machine(block.text)
    program = folder / "program_test.py"
    command = [sys.executable, "-W", "error::ResourceWarning", str(program)]
    if "def test_" in text:
        command = [sys.executable, "-m", "pytest", "-q", "-p", "fringix.testing", "-p", "no:cacheprovider", program.name]
    elif "input(" in text:
        heads.need_board()
        text = TILT + text.replace("127.0.0.10", "127.0.0.20")
    else:
        heads.need(full_size=False, text=text, fresh=True)
    program.write_text(text, encoding="utf-8")
    told = run(command, folder)
    tests = len(re.findall("^def test_", text, re.MULTILINE))
    assert not tests or f"{tests} passed" in told, f"it told:\n{told}"


def complete(block: Block) -> tuple[str, bool]:
    """A block as a source, and whether it is a program of its own."""
    if "#include" in block.text:
        return block.text, True
    has_functions = re.search(r"^\w[^\[\]]*\) \{$", block.text, re.MULTILINE)
    body = block.text if has_functions else f"void block() {{\n{block.text}}}\n"
    headers = HEADERS[block.language] + (["head/serving/head_server.h"] if "fringix::head::" in body else [])
    return "".join(f"#include <{header}>\n" for header in headers) + body, False


def check_compiled(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    source, is_program = complete(block)
    file = folder / f"block.{block.language}"
    file.write_text(on_this_machine(source), encoding="utf-8")
    of_head = "fringix::head::" in source
    compiler = {"c": ["gcc"], "cpp": ["g++", "-std=c++20" if of_head else "-std=c++17"]}[block.language]
    command = [*compiler, "-Wall", "-Wextra", "-Werror", f"-I{TREE / 'include'}", *([f"-I{ROOT}", f"-I{ROOT / 'src'}"] if of_head else []), str(file)]
    if not is_program:
        run([*command, "-Wno-unused", "-fsyntax-only"], folder)
        return
    libraries = [f"-L{TREE / 'lib'}", "-lDAXFringix", "-lfringix-scan", f"-Wl,-rpath,{TREE / 'lib'}"]
    run([*command, *libraries, "-o", "block"], folder)
    heads.need(full_size=False, text=source)
    run(["./block"], folder)


def check_cmake(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    if not (TREE / "lib/cmake").exists():
        raise Skipped("this tree has no CMake package")
    target = re.findall(r"target_link_libraries\((\w+)", block.text)[0]
    project = f"cmake_minimum_required(VERSION 3.16)\nproject(own LANGUAGES C CXX)\nadd_executable({target} first_picture.cpp)\n"
    (folder / "CMakeLists.txt").write_text(project + block.text, encoding="utf-8")
    run(["cmake", "-S", ".", "-B", "built", f"-DCMAKE_PREFIX_PATH={TREE}"], folder)
    run(["cmake", "--build", "built"], folder)
    heads.need(full_size=False, text="")
    run([f"built/{target}"], folder)


def check_csharp(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    source = block.text if "static void Main" in block.text else CSHARP % (f"static void Block() {{ {block.text} }}", "Block();")
    (folder / "Block.cs").write_text(on_this_machine(source), encoding="utf-8")
    if not (folder / "Fringix.dll").exists():
        run(["mcs", "-unsafe", "-target:library", "-out:Fringix.dll", str(ROOT / "bindings/csharp/Fringix.cs")], folder)
    run(["mcs", "-r:Fringix.dll", "-out:Block.exe", "Block.cs"], folder)
    heads.need(full_size=False, text=on_this_machine(source), fresh=True)
    run(["mono", "Block.exe"], folder)


def check_matlab(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    if not shutil.which("octave-cli"):
        raise Skipped("Octave is not installed")
    (folder / "block.m").write_text(block.text, encoding="utf-8")
    run(["octave-cli", "--norc", "--eval", "__parse_file__('block.m')"], folder)


def check_json(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    json.loads(block.text)


def accept(block: Block, heads: Heads, folder: pathlib.Path) -> None:
    """Data and drawings: there is nothing to run."""


Check = Callable[[Block, Heads, pathlib.Path], None]
CHECKS: dict[str, Check] = {
    "sh": check_sh,
    "console": check_console,
    "python": check_python,
    "c": check_compiled,
    "cpp": check_compiled,
    "cmake": check_cmake,
    "csharp": check_csharp,
    "matlab": check_matlab,
    "json": check_json,
    "text": accept,
}

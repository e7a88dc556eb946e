"""Every block of code in docs/python.md, against simulated heads. How it installs is tested with the packages."""

from __future__ import annotations

import os
import pathlib
import re
import subprocess
import sys
from typing import Any, Iterator

import fringix
import pytest
from documented import CALIBRATE, COMMANDS, PROGRAMS, TEN_LINES, TESTS, TEXT, blocks
from fringix.simulation import SimulatedHead

SMALL: dict[str, Any] = {"camera": (320, 256), "projector": (640, 400), "image_time": 0, "trigger_every": "300ms"}


def on_this_machine(block: str) -> str:
    return block.replace("192.168.0.", "127.0.0.")


@pytest.fixture(autouse=True)
def heads() -> Iterator[None]:
    """Those that the document speaks of."""
    with SimulatedHead(address="127.0.0.2", serial=2, **SMALL), SimulatedHead(address="127.0.0.10", heads=2, **SMALL):
        yield


def run(command: list[str], folder: pathlib.Path) -> str:
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    assert done.returncode == 0, done.stdout
    return done.stdout


@pytest.mark.parametrize("block", PROGRAMS, ids=range(len(PROGRAMS)))
def test_a_program_runs(block: str, tmp_path: pathlib.Path) -> None:
    (tmp_path / "program.py").write_text(on_this_machine(block), encoding="utf-8")
    assert run([sys.executable, "-W", "error::ResourceWarning", "program.py"], tmp_path)


# Who is asked to tilt the board tilts it.
TILT = """
import fringix
places = iter(range(1, 17))
def input(asked):
    with fringix.open("127.0.0.20") as other:
        other.data["scene.txt"] = f"board:{next(places)}".encode()
"""


def test_the_calibration_runs(tmp_path: pathlib.Path) -> None:
    program = TILT + CALIBRATE.replace("192.168.0.10", "127.0.0.20")
    (tmp_path / "program.py").write_text(program, encoding="utf-8")
    with SimulatedHead(address="127.0.0.20", camera=(640, 512), projector=(640, 400), image_time=0) as head:
        told = run([sys.executable, "program.py"], tmp_path)
        assert 0 < float(re.findall("uncertain by ([0-9.]+) mm", told)[0]) < 0.1
        with fringix.open(head.address) as calibrated:
            assert calibrated.scan().calibration.serial == head.serial


def test_the_ten_lines_are_ten() -> None:
    assert len([line for line in TEN_LINES.splitlines() if line]) <= 10


@pytest.mark.parametrize("block", TESTS, ids=range(len(TESTS)))
def test_a_test_passes(block: str, tmp_path: pathlib.Path) -> None:
    (tmp_path / "station_test.py").write_text(block, encoding="utf-8")
    count = len(re.findall("^def test_", block, re.MULTILINE))
    told = run([sys.executable, "-m", "pytest", "-q", "-p", "fringix.testing", "-p", "no:cacheprovider", "station_test.py"], tmp_path)
    assert f"{count} passed" in told


@pytest.mark.parametrize("block", COMMANDS, ids=range(len(COMMANDS)))
def test_commands_succeed(block: str, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    (tmp_path / "bin").mkdir()
    (tmp_path / "bin/python").symlink_to(sys.executable)
    monkeypatch.setenv("PATH", f"{tmp_path / 'bin'}{os.pathsep}{os.environ['PATH']}")
    assert run(["sh", "-e", "-c", on_this_machine(block)], tmp_path)


def test_no_block_is_left_out() -> None:
    assert len(re.findall("^```", TEXT, re.MULTILINE)) == 2 * (len(blocks("python")) + len(blocks("sh")))

"""The examples, as people start them."""

from __future__ import annotations

import pathlib
import re
import signal
import subprocess
import sys
from typing import Any, Callable, Iterator

import pytest
from fringix.testing import SimulatedHead, SimulatedHeads

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples/python"
SMALL: dict[str, Any] = {"camera": (320, 256), "projector": (640, 400), "image_time": 0}
TRIGGERING = {**SMALL, "trigger_every": "300ms"}  # again and again: the first ones may come before the session listens

Example = Callable[..., str]


def command_of(name: str, *words: object) -> list[str]:
    return [sys.executable, "-u", str(EXAMPLES / name), *map(str, words)]


@pytest.fixture
def example(tmp_path: pathlib.Path) -> Example:
    def run(name: str, *words: object) -> str:
        done = subprocess.run(command_of(name, *words), cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        assert done.returncode == 0, done.stdout
        return done.stdout

    return run


@pytest.fixture
def head(simulated_heads: SimulatedHeads) -> SimulatedHead:
    return simulated_heads(**SMALL)


def points_of(cloud: pathlib.Path) -> int:
    found = re.search(rb"element vertex (\d+)\n", cloud.read_bytes())
    assert found
    return int(found.group(1))


def numbers_in(pattern: str, text: str) -> list[int]:
    return [int(number) for number in re.findall(pattern, text)]


def test_first_picture(example: Example, head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    assert example("first_picture.py", head.address).startswith("picture.pgm: 320 x 256 pixels, mean grey level ")
    assert len((tmp_path / "picture.pgm").read_bytes()) == len(b"P5 320 256 255\n") + 320 * 256


def test_scan_to_cloud(example: Example, head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    told = example("scan_to_cloud.py", head.address, "cloud.ply")
    assert numbers_in(r"cloud.ply: (\d+) points", told) == [points_of(tmp_path / "cloud.ply")]


def test_several_heads(example: Example, simulated_heads: SimulatedHeads, tmp_path: pathlib.Path) -> None:
    heads = [simulated_heads(serial=serial, **SMALL) for serial in (1, 2, 3)]
    told = example("several_heads.py", *(head.address for head in heads))
    assert numbers_in(r"cloud-(\d).ply", told) == [1, 2, 3]
    assert all(points_of(tmp_path / f"cloud-{serial}.ply") > 40000 for serial in (1, 2, 3))


def test_several_heads_of_which_one_fails(head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    command = command_of("several_heads.py", "127.0.0.9", head.address)
    done = subprocess.run(command, cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    assert done.returncode == 1 and "127.0.0.9:44330 refuses the connection" in done.stderr
    assert done.stdout.startswith("cloud-1001.ply: ")


def test_triggers(simulated_heads: SimulatedHeads) -> None:
    head = simulated_heads(**TRIGGERING)
    with subprocess.Popen(command_of("triggers.py", head.address, 2), stdout=subprocess.PIPE, text=True) as running:
        assert running.stdout is not None and next(running.stdout).startswith("waiting for triggers of head 1001")
        assert [line.endswith("trigger of head 1001\n") for line in running.stdout] == [True, True]
    assert running.returncode == 0


def test_hdr(example: Example, simulated_heads: SimulatedHeads, tmp_path: pathlib.Path) -> None:
    head = simulated_heads(shine=5, **SMALL)
    points = numbers_in(r"us: (\d+) points", example("hdr.py", head.address))
    assert len(points) == 3 and points[0] < points[1] <= points[2]
    assert points_of(tmp_path / "cloud.ply") == points[2]


def wait_for(text: str, lines: Iterator[str]) -> None:
    said = []
    for line in lines:
        said.append(line)
        if text in line:
            return
    pytest.fail(f'"{text}" is not in:\n{"".join(said)}')


def test_station_waits_for_a_head_that_is_gone(simulated_heads: SimulatedHeads, tmp_path: pathlib.Path) -> None:
    head = simulated_heads(**TRIGGERING)
    command = command_of("station.py", head.address, tmp_path)
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) as station:
        assert station.stdout is not None
        try:
            wait_for("scan-0001.ply: ", station.stdout)
            head.close()
            wait_for("Trying again", station.stdout)
            simulated_heads(address=head.address, **TRIGGERING)
            wait_for("connected to head 1001", station.stdout)
            wait_for(".ply: ", station.stdout)
            station.send_signal(signal.SIGINT)
            wait_for("ended", station.stdout)
        except BaseException:
            station.kill()
            raise
    assert station.returncode == 0
    clouds = sorted(tmp_path.glob("scan-*.ply"))
    assert len(clouds) >= 2 and all(points_of(cloud) > 40000 for cloud in clouds)


def test_test_with_simulated_head(tmp_path: pathlib.Path) -> None:
    command = [sys.executable, "-m", "pytest", "-q", "-p", "fringix.testing", "-p", "no:cacheprovider"]
    file = EXAMPLES / "test_with_simulated_head.py"
    done = subprocess.run([*command, file], cwd=tmp_path, stdout=subprocess.PIPE, text=True)
    assert done.returncode == 0 and "3 passed" in done.stdout, done.stdout


@pytest.mark.parametrize("name", ["first_picture", "scan_to_cloud", "several_heads", "triggers", "hdr", "station"])
def test_an_example_says_how_it_is_started(name: str) -> None:
    done = subprocess.run(command_of(f"{name}.py"), stderr=subprocess.PIPE, text=True)
    assert done.returncode == 1 and f"{name}.py ADDRESS" in done.stderr


def test_the_readme_names_every_example() -> None:
    named = set(re.findall(r"\(python/(\w+\.py)\)", (ROOT / "examples/README.md").read_text()))
    assert named == {path.name for path in EXAMPLES.glob("*.py")}

"""``python -m fringix``, as people start it."""

from __future__ import annotations

import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time
from typing import Any, Callable, Iterator

import numpy as np
import pytest
from fringix import _png
from fringix._tool import main
from fringix.testing import SimulatedHead, SimulatedHeads

SMALL: dict[str, Any] = {"camera": (320, 256), "projector": (640, 400), "image_time": 0}

Tool = Callable[..., "subprocess.CompletedProcess[str]"]


@pytest.fixture
def tool(tmp_path: pathlib.Path) -> Tool:
    def run(*words: object) -> subprocess.CompletedProcess[str]:
        command = [sys.executable, "-m", "fringix", *map(str, words)]
        return subprocess.run(command, cwd=tmp_path, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    return run


@pytest.fixture
def head(simulated_heads: SimulatedHeads) -> SimulatedHead:
    return simulated_heads(**SMALL)


@pytest.fixture
def folder(tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """What is written goes there."""
    monkeypatch.chdir(tmp_path)


def without_uptime(table: str) -> list[str]:
    return [line.rsplit(None, 1)[0] for line in table.splitlines()]


def test_list_tells_what_its_big_brother_tells(tool: Tool, simulated_heads: SimulatedHeads) -> None:
    simulated_heads(heads=2)
    mine = tool("list")
    assert mine.returncode == 0 and len(mine.stdout.splitlines()) == 3
    tree = os.environ.get("FRINGIX_LINUX_TREE")
    if tree:
        his = subprocess.run([pathlib.Path(tree, "bin/fringix"), "list"], check=True, stdout=subprocess.PIPE, text=True).stdout
        assert without_uptime(mine.stdout) == without_uptime(his)


def test_list_gives_json(tool: Tool, head: SimulatedHead) -> None:
    (found,) = json.loads(tool("list", "--json").stdout)
    assert (found["serial"], found["address"]) == (head.serial, head.address)
    assert found["camera"] == {"width": 320, "height": 256} and found["projector"] == {"width": 640, "height": 400}


def test_list_fails_where_nobody_answers(tool: Tool) -> None:
    nobody = tool("list")
    assert nobody.returncode == 1 and "no head answers the search" in nobody.stderr


def test_live_writes_the_picture(tool: Tool, head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    told = tool("live", head.address)
    assert told.returncode == 0 and told.stdout.startswith("live.png: 320 x 256 pixels"), told.stderr
    assert _png.read(tmp_path / "live.png").shape == (256, 320)


def test_live_takes_parts_reduces_them_and_numbers_the_files(tool: Tool, head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    options = ["--roi", "10,20,100x80", "--factor", 2, "--channel", 1]
    told = json.loads(tool("live", "--serial", head.serial, *options, "-n", 10, "-o", "part.png", "--json").stdout)
    assert told["files"] == [f"part-{number:02}.png" for number in range(1, 11)]
    assert {_png.read(tmp_path / file).shape for file in told["files"]} == {(40, 50)}


def test_a_picture_goes_to_standard_output(head: SimulatedHead) -> None:
    command = [sys.executable, "-m", "fringix", "live", head.address, "-o", "-"]
    assert _png.decode(subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout).shape == (256, 320)


@pytest.mark.parametrize("shape", [(1, 1), (3, 2), (64, 48)])
def test_a_picture_survives_its_file(shape: tuple[int, int]) -> None:
    picture = np.random.default_rng(1).integers(0, 256, shape, np.uint8)
    assert np.array_equal(_png.decode(_png.encode(picture)), picture)


def test_scan_writes_clouds(tool: Tool, head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    told = tool("scan", head.address, "-o", "scan")
    assert told.returncode == 0, told.stderr
    points = int(re.match(r"points +(\d+) of 81920 pixels", told.stdout).group(1))  # type: ignore[union-attr]
    assert points > 40000 and f"element vertex {points}\n".encode() in (tmp_path / "scan/cloud.ply").read_bytes()
    assert np.isfinite(np.load(tmp_path / "scan/range.npy")[..., 2]).sum() == points
    assert (tmp_path / "scan/cloud.pcd").read_bytes().startswith(b"# .PCD v0.7")


def test_scan_takes_a_region_all_cameras_and_exposures(tool: Tool, head: SimulatedHead) -> None:
    options = ["--roi", "100,80,60x50", "--channel", "all", "--exposure", "20000,5000", "--unit", "m"]
    told = tool("scan", head.address, "-o", "scan", "--json", *options)
    result = json.loads(told.stdout)
    assert (result["width"], result["height"], result["channels"]) == (60, 100, [0, 1])


def test_head_is_the_simulated_head(tmp_path: pathlib.Path) -> None:
    command = [sys.executable, "-m", "fringix", "head", "--address", "127.0.0.7", "--serial", "77"]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True) as head:
        assert head.stdout is not None
        lines: Iterator[str] = iter(head.stdout)
        assert next(lines).startswith("head 77 at 127.0.0.7:") and next(lines).startswith("ready")
        head.send_signal(signal.SIGINT)
        assert head.wait() == 0


def test_head_passes_its_exit_code_on(tool: Tool) -> None:
    assert tool("head", "--heads", "none").returncode == 2
    assert "--trigger-every" in tool("head", "--help").stdout


def test_calibrate_is_the_program_of_that_name(tool: Tool) -> None:
    assert "calibrate" in tool("--help").stdout
    wrong = tool("calibrate", "--board", "12x9", "--square", "20")
    assert wrong.returncode == 2 and "give either the address of a head, or --from FOLDER" in wrong.stderr


WRONG_USAGE = [
    ([], "COMMAND"),
    (["lve", "127.0.0.1"], "'lve'"),
    (["live"], "a head is required, by ADDRESS or by --serial"),
    (["live", "127.0.0.1", "--serial", "7"], "ADDRESS and --serial exclude each other"),
    (["live", "127.0.0"], '"127.0.0" is no IPv4 address'),
    (["live", "127.0.0.1", "--roi", "1,2"], '"1,2" is no region: give X,Y,WIDTHxHEIGHT'),
    (["live", "127.0.0.1", "--roi", "1,2,0x3"], "is no region"),
    (["live", "127.0.0.1", "-o", "live.jpg"], '"live.jpg" is no name of a PNG file'),
    (["live", "127.0.0.1", "-n", "2", "-o", "-"], "2 pictures are too many for standard output"),
    (["live", "127.0.0.1", "--timeout", "2x"], '"2x" is no time such as 1s, 500ms or 2min'),
    (["live", "127.0.0.1", "--channel", "9"], '"9" is no number from 0 to 3'),
    (["live", "127.0.0.1", "--bogus"], "--bogus"),
    (["scan", "127.0.0.1"], "-o/--output"),
    (["scan", "-o", "scan", "--from", "raw", "127.0.0.1"], "--from needs no head"),
    (["scan", "-o", "scan", "--from", "raw", "--exposure", "5"], "have been taken"),
    (["scan", "127.0.0.1", "-o", "scan", "--exposure", "5,5"], '"5,5" is not up to 5 different numbers'),
]


@pytest.mark.parametrize("words, said", WRONG_USAGE)
def test_wrong_usage_is_told_in_a_line(capsys: pytest.CaptureFixture[str], words: list[str], said: str) -> None:
    assert main(words) == 2
    told = capsys.readouterr()
    (line,) = told.err.splitlines()
    assert not told.out
    assert line.startswith("fringix: ") and said in line and '--help" tells what can be given.' in line


FAILURES = [
    (["live", "127.0.0.9"], "127.0.0.9:44330 refuses the connection"),
    (["live", "--serial", "4711"], "no head with serial number 4711 answers"),
    (["live", "{head}", "--channel", "3"], "there is no channel 3"),
    (["live", "{head}", "--factor", "3"], "does not divide"),
    (["live", "{head}", "--roi", "0,0,999x999"], "SLBAD_PARAMETER"),
    (["live", "{head}", "-o", "no/folder.png"], 'cannot write "no/folder.png": No such file or directory'),
    (["scan", "{head}", "-o", "/dev/null/scan"], '"/dev/null/scan": Not a directory'),
    (["scan", "{head}", "-o", "scan", "--calibration", "none.json"], '"none.json": No such file or directory'),
    (["scan", "--from", "nothing", "-o", "scan"], '"nothing/scan.json": No such file or directory'),
]


@pytest.mark.usefixtures("folder")
@pytest.mark.parametrize("words, said", FAILURES)
def test_a_failure_is_told_in_a_line(capsys: pytest.CaptureFixture[str], head: SimulatedHead, words: list[str], said: str) -> None:
    assert main([word.format(head=head.address) for word in words]) == 1
    told = capsys.readouterr()
    (line,) = told.err.splitlines()
    assert not told.out
    assert line.startswith("fringix: ") and said in line


def test_failures_come_as_json_too(capsys: pytest.CaptureFixture[str]) -> None:
    main(["live", "127.0.0.9", "--json"])
    refused = json.loads(capsys.readouterr().err)["error"]
    assert refused["kind"] == "SLCONNECTION_ERROR" and refused["status"] == -10
    assert refused["what"].endswith("no head serves it") and refused["next"].startswith("Check that the head is on")
    main(["live", "--json"])
    assert json.loads(capsys.readouterr().err)["error"]["kind"] == "usage"


@pytest.mark.skipif(sys.platform == "win32", reason="there is no /dev/full on Windows")
@pytest.mark.parametrize("unbuffered", ["", "1"])
def test_output_that_cannot_be_written_is_a_failure(head: SimulatedHead, unbuffered: str) -> None:
    with open("/dev/full", "w") as full:
        environment = {**os.environ, "PYTHONUNBUFFERED": unbuffered}
        command = [sys.executable, "-m", "fringix", "list"]
        failed = subprocess.run(command, env=environment, stdout=full, stderr=subprocess.PIPE, text=True)
    assert (failed.returncode, failed.stderr) == (1, "fringix: standard output cannot be written: No space left on device\n")


def test_ctrl_c_leaves_whole_files(head: SimulatedHead, tmp_path: pathlib.Path) -> None:
    command = [sys.executable, "-m", "fringix", "live", head.address, "-n", "999999", "-o", "live.png"]
    with subprocess.Popen(command, cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as series:
        while not list(tmp_path.glob("*.png")) and series.poll() is None:
            time.sleep(0.01)
        series.send_signal(signal.SIGINT)
        told, complaint = series.communicate()
    assert (series.returncode, told, complaint) == (130, "", "")
    files = sorted(tmp_path.iterdir())
    assert all(_png.read(file).shape == (256, 320) for file in files) and files[0].name == "live-000001.png"

"""Simulated heads for tests: started, ready, told what to do, ended."""

from __future__ import annotations

import os
import pathlib
import re
import socket
import subprocess
import sys

import fringix
import pytest
from fringix import simulation
from fringix.testing import SimulatedHead, SimulatedHeads


def answers(address: str) -> bool:
    with socket.socket() as client:
        return client.connect_ex((address, simulation.COMMAND_PORT)) == 0


def test_a_simulated_head_answers_until_it_is_closed(simulated_heads: SimulatedHeads) -> None:
    head = simulated_heads()
    assert answers(head.address)
    head.close()
    assert not answers(head.address)


def test_heads_have_addresses_of_their_own(simulated_heads: SimulatedHeads) -> None:
    several = simulated_heads(heads=3, serial=2001)
    other = simulated_heads()
    assert len({*several.addresses, other.address}) == 4
    assert several.serials == [2001, 2002, 2003]
    assert all(answers(address) for address in [*several.addresses, other.address])


@pytest.mark.simulated_head(camera=(64, 48), serial=77)
def test_the_marker_has_options(simulated_head: SimulatedHead) -> None:
    assert simulated_head.serial == 77
    assert "camera 64x48" in simulated_head.output


def test_options_that_it_refuses_are_told_with_its_words() -> None:
    with pytest.raises(ValueError, match="no such option|--sceene"):
        SimulatedHead(sceene="plane:1")


def test_an_address_that_is_taken_is_told(simulated_head: SimulatedHead) -> None:
    with pytest.raises(ValueError, match="exit code 1"):
        SimulatedHead(address=simulated_head.address)


@pytest.mark.simulated_head(camera=(64, 48), faults=["after 1 pictures: cut at byte 700"])
def test_faults_strike_from_the_start(simulated_head: SimulatedHead) -> None:
    with fringix.open(simulated_head.address) as head:
        head.live()
        with pytest.raises(fringix.HeadConnectionError):
            head.live()
    with fringix.open(simulated_head.address) as head:
        head.live()


@pytest.mark.simulated_head(camera=(64, 48), heads=2, verbose=True)
def test_faults_are_switched_on_and_off(simulated_head: SimulatedHead) -> None:
    with fringix.open(simulated_head.addresses[1]) as head:
        simulated_head.fault("always: no picture")
        with pytest.raises(fringix.HeadSystemError):
            head.live()
        simulated_head.fault("none")
        head.live()
    with pytest.raises(ValueError, match='"alwyas: cut": expected always, at, after or random at character 1.*did you mean "always"'):
        simulated_head.fault("alwyas: cut")
    with pytest.raises(ValueError, match="--fault: .*expected a number"):
        SimulatedHead(faults=["always: wrong status"])


def test_a_head_that_has_ended_takes_no_faults(simulated_heads: SimulatedHeads) -> None:
    head = simulated_heads()
    head.close()
    with pytest.raises((OSError, ValueError)):
        head.fault("none")


def test_a_missing_program_is_told_with_what_to_do(monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path) -> None:
    monkeypatch.setenv(simulation.PROGRAM_VARIABLE, str(tmp_path / "nothing"))
    with pytest.raises(FileNotFoundError, match=r"FRINGIX_HEAD names .*nothing, which is no file. Install"):
        simulation.find_program()


def test_the_program_is_found_on_the_path(monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path) -> None:
    program = tmp_path / ("fringix-head.exe" if sys.platform == "win32" else "fringix-head")
    program.write_text("")
    program.chmod(0o755)
    monkeypatch.delenv(simulation.PROGRAM_VARIABLE, raising=False)
    monkeypatch.setenv("PATH", str(tmp_path))
    assert pathlib.Path(simulation.find_program()) == program


@pytest.mark.parametrize("options", [[], ["-p", "fringix.testing"]], ids=["installed", "named"])
def test_pytest_knows_the_plugin_of_an_installed_package(tmp_path: pathlib.Path, options: list[str]) -> None:
    project = (pathlib.Path(__file__).resolve().parents[2] / "python/pyproject.toml").read_text()
    entry = re.search(r"\[project.entry-points.pytest11\]\n\"?([\w.]+)\"? = \"([\w.]+)\"", project)
    assert entry is not None
    information = tmp_path / "fringix-1.dist-info"
    information.mkdir()
    (information / "METADATA").write_text("Metadata-Version: 2.1\nName: fringix\nVersion: 1\n")
    (information / "entry_points.txt").write_text("[pytest11]\n{} = {}\n".format(*entry.groups()))
    (tmp_path / "one_test.py").write_text("def test_it(simulated_head): assert simulated_head.address")
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join([os.environ.get("PYTHONPATH", ""), str(tmp_path)])}
    command = [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", *options, str(tmp_path / "one_test.py")]
    done = subprocess.run(command, env=environment, cwd=tmp_path, capture_output=True, text=True, timeout=120)
    assert done.returncode == 0 and "1 passed" in done.stdout, done.stdout + done.stderr

"""A pytest plugin: simulated heads for tests of programs that use heads.

``pip install fringix`` makes it known to pytest; from a checkout ``pytest -p fringix.testing`` does::

    def test_my_station(simulated_head):
        with fringix.open(simulated_head.address) as head:
            assert head.live().shape == (1024, 1280)

    @pytest.mark.simulated_head(scene="ballbar:2", noise=0)
    def test_ball_bar(simulated_head): ...

    @pytest.mark.simulated_head(faults=["after 3 pictures: cut at byte 700"])
    def test_a_head_that_breaks_off(simulated_head):
        simulated_head.fault("at SLGetGain: stall for 2 s")  # while it runs; fault("none") ends all of them

    def test_two_heads(simulated_heads):
        left, right = simulated_heads(seed=1), simulated_heads(seed=2, scene="plane:1")

For a fixture of a wider scope use ``fringix.simulation.SimulatedHead``, which is a context manager.
"""

from __future__ import annotations

import contextlib
from typing import Any, Iterator, Protocol

import pytest

from .simulation import SimulatedHead, find_program

__all__ = ["SimulatedHead", "SimulatedHeads", "find_program", "simulated_head", "simulated_heads"]


class SimulatedHeads(Protocol):
    """Starts a simulated head that lives until the test ends; the options are those of SimulatedHead."""

    def __call__(self, **options: Any) -> SimulatedHead: ...


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "simulated_head(**options): options of the fixture simulated_head, as fringix-head has them")


@pytest.fixture
def simulated_heads() -> Iterator[SimulatedHeads]:
    """A function that starts simulated heads, each on a loopback address of its own: ``simulated_heads(scene="plane:1")``."""
    with contextlib.ExitStack() as running:

        def start(**options: Any) -> SimulatedHead:
            return running.enter_context(SimulatedHead(**options))

        yield start


@pytest.fixture
def simulated_head(request: pytest.FixtureRequest, simulated_heads: SimulatedHeads) -> SimulatedHead:
    """A simulated head, with the options of the test's marker ``simulated_head``."""
    marker = request.node.get_closest_marker("simulated_head")
    return simulated_heads(**(marker.kwargs if marker else {}))

"""Several threads, several heads, and processes that were forked."""

from __future__ import annotations

import concurrent.futures
import contextlib
import gc
import multiprocessing
import os
import subprocess
import sys
import threading
import time
import warnings
from typing import Any, Callable, Iterator

import fringix
import numpy as np
import pytest
from fringix import _waiting
from fringix.head import Head
from fringix.simulation import SimulatedHead
from watched_head import FAREWELL, WatchedHead

small: dict[str, Any] = {"camera": (160, 120), "projector": (40, 30), "noise": 0, "image_time": 0}
can_fork = pytest.mark.skipif(not hasattr(os, "fork"), reason="there is no fork")


@pytest.fixture(scope="module")
def simulated() -> Iterator[SimulatedHead]:
    with SimulatedHead(heads=8, **small) as running:
        yield running


@pytest.fixture
def head(simulated: SimulatedHead) -> Iterator[Head]:
    with fringix.open(simulated.address, timeout=10) as opened:
        yield opened


def measure_with(address: str) -> list[float]:
    with fringix.open(address, timeout=10) as head, head.sequence(4) as seq:
        for index in range(4):
            seq[index] = np.full(40, index * 60, np.uint8)
        head.measure(seq)
        return [float(picture.mean()) for picture in head.pictures(seq)]


def test_eight_heads_work_side_by_side(simulated: SimulatedHead) -> None:
    with concurrent.futures.ThreadPoolExecutor(8) as threads:
        measured = list(threads.map(measure_with, simulated.addresses))
    assert len(measured) == 8
    assert all(means == sorted(means) and means[3] > means[0] + 20 for means in measured)


def test_eight_measurements_take_the_time_of_one() -> None:
    begins, ends = [], []
    together = threading.Barrier(8)

    def measure(address: str) -> None:
        with fringix.open(address, timeout=10) as head, head.sequence(1) as seq:
            together.wait()
            begins.append(time.monotonic())
            head.measure(seq)
            ends.append(time.monotonic())

    options: dict[str, Any] = {**small, "image_time": 2000}
    with SimulatedHead(heads=8, **options) as slow, concurrent.futures.ThreadPoolExecutor(8) as threads:
        list(threads.map(measure, slow.addresses))
    assert max(begins) < min(ends)


def test_one_head_serves_many_threads(head: Head) -> None:
    expected = head.live(roi=(0, 30, 100, 50))

    def look(_: int) -> bool:
        return bool((head.live(roi=(0, 30, 100, 50)) == expected).all())

    with concurrent.futures.ThreadPoolExecutor(8) as threads:
        assert all(threads.map(look, range(200)))


@pytest.mark.skipif(sys.platform == "win32", reason="a program cannot be stopped there")
def test_other_threads_run_while_a_call_waits() -> None:
    frozen = WatchedHead()
    with contextlib.closing(frozen), fringix.open(frozen.address) as head:
        frozen.freeze()
        waiting = threading.Thread(target=head.live)
        waiting.start()
        counted = 0
        until = time.monotonic() + 0.3
        while time.monotonic() < until:
            counted += 1
        assert waiting.is_alive() and counted > 1000
        frozen.thaw()
        waiting.join()


def test_a_head_is_closed_while_other_threads_use_it(simulated: SimulatedHead) -> None:
    head = fringix.open(simulated.address)

    def use() -> None:
        with pytest.raises((fringix.UnknownDeviceError, fringix.HeadSystemError)):
            while True:
                head.live()

    threads = [threading.Thread(target=use) for _ in range(4)]
    for thread in threads:
        thread.start()
    time.sleep(0.05)
    for closing in [threading.Thread(target=head.close) for _ in range(3)]:
        closing.start()
        threads.append(closing)
    for thread in threads:
        thread.join(30)
    assert not any(thread.is_alive() for thread in threads) and not head.is_open


def test_a_head_that_is_forgotten_is_closed_with_a_warning() -> None:
    with contextlib.closing(WatchedHead()) as simulated:
        with pytest.warns(ResourceWarning, match="was never closed"):
            fringix.open(simulated.address)
            gc.collect()
        assert simulated.says(FAREWELL)


def test_heads_that_are_left_open_are_closed_at_the_end_of_the_program() -> None:
    program = "import fringix, sys; head = fringix.open(sys.argv[1]); head.on_event(print); print(head.serial)"
    with contextlib.closing(WatchedHead()) as simulated:
        subprocess.run([sys.executable, "-c", program, simulated.address], check=True, timeout=60)
        assert simulated.says(FAREWELL)


def test_calls_work_where_no_thread_can_be_started(head: Head, monkeypatch: pytest.MonkeyPatch) -> None:
    """As in functions that run at the end of a program, from Python 3.12 on."""

    def refuse(thread: threading.Thread) -> None:
        raise RuntimeError("can't create new thread at interpreter shutdown")

    monkeypatch.setattr(_waiting, "_idle", [])
    monkeypatch.setattr(threading.Thread, "start", refuse)
    assert head.live().shape == (120, 160)
    head.close()


# Processes.


def try_in_child(head: Head) -> str:
    said = []
    uses: list[Callable[[], object]] = [
        lambda: head.gain,
        lambda: head.data["x"],
        fringix.discover,
        fringix.library_version,
        lambda: fringix.open(head.address),
    ]
    for use in uses:
        try:
            use()
            said.append("nothing")
        except fringix.ForkedProcessError as error:
            said.append(type(error).__name__)
    head.close()
    return " ".join(said) + f" {head.is_open} {head!r}"


@can_fork
def test_a_forked_child_is_refused(head: Head) -> None:
    reading, writing = os.pipe()
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DeprecationWarning)
        child = os.fork()
    if child == 0:
        try:
            os.write(writing, try_in_child(head).encode())
        finally:
            os._exit(0)
    os.close(writing)
    with os.fdopen(reading) as pipe:
        said = pipe.read()
    os.waitpid(child, 0)
    assert said == " ".join(["ForkedProcessError"] * 5) + f" False <head {head.serial} at {head.address}, closed>"
    assert head.live().shape == (120, 160)


@can_fork
def test_the_refusal_says_what_to_do(head: Head) -> None:
    context: Any = multiprocessing.get_context("fork")
    with context.Pool(1) as pool, pytest.raises(Exception, match="forked from one that had used the library.*set_start_method"):
        pool.apply(measure_with, (head.address,))


def test_a_spawned_process_has_heads_of_its_own(head: Head) -> None:
    with multiprocessing.get_context("spawn").Pool(1) as pool:
        means = pool.apply(measure_with, (head.address,))
    assert means == sorted(means)


@can_fork
def test_a_child_that_was_forked_before_the_first_use_is_served(simulated: SimulatedHead) -> None:
    program = (
        "import fringix, os, sys\n"
        "if os.fork() == 0: print(fringix.open(sys.argv[1]).serial)\n"
        "else: sys.exit(os.waitstatus_to_exitcode(os.wait()[1]))"
    )
    done = subprocess.run([sys.executable, "-c", program, simulated.address], capture_output=True, text=True, timeout=60)
    assert (done.stdout, done.returncode) == ("1001\n", 0), done.stderr

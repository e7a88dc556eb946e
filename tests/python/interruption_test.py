"""Ctrl-C while a call waits: it ends the wait, and the session goes on or is closed in order."""

from __future__ import annotations

import asyncio
import contextlib
import os
import signal
import socket
import subprocess
import sys
import threading
import time
from typing import Any, Callable, Iterator

import fringix
import numpy as np
import pytest
from fringix import _waiting
from fringix.head import Head
from watched_head import FAREWELL, WatchedHead

pytestmark = pytest.mark.skipif(sys.platform == "win32", reason="a program cannot be stopped there, nor be sent Ctrl-C alone")

SOON = 10  # seconds: well below the 30 that a call waits, and more than a busy machine takes for what should last half a second


@contextlib.contextmanager
def interrupted(after: float = 0.3) -> Iterator[None]:
    """Expects that Ctrl-C ends the block soon."""
    timer = threading.Timer(after, os.kill, (os.getpid(), signal.SIGINT))
    begin = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        timer.start()
        yield
    timer.join()
    assert after <= time.monotonic() - begin < SOON


@pytest.fixture
def frozen() -> Iterator[WatchedHead]:
    head = WatchedHead()
    yield head
    head.close()


def wait_for_event(head: Head) -> None:
    next(head.events())


def wait_for_async_event(head: Head) -> None:
    async def hear() -> None:
        async for _ in head.events_async():
            pass

    asyncio.run(hear())


commands: dict[str, Callable[[Head], object]] = {
    "a live picture": lambda head: head.live(),
    "a stored picture": lambda head: head.picture(0),
    "pictures that are fetched ahead": lambda head: list(head.pictures(range(5))),
    "a sequence": lambda head: head.sequence(4),
    "an image to show": lambda head: head.show(np.zeros((30, 40, 3), np.uint8)),
    "a reading": lambda head: head.temperature,
    "a check": lambda head: head.check(),
    "a line": lambda head: head.gpio[1],
    "a setting": lambda head: setattr(head, "gain", 20),
    "a block to load": lambda head: head.data["calibration.json"],
    "a block to save": lambda head: head.data.__setitem__("block", b"content"),
    "a configuration value": lambda head: head.ini["Camera", "Exposure"],
    "the serial port": lambda head: head.serial_port.command("hello"),
}


@pytest.mark.parametrize("command", commands.values(), ids=[name.replace(" ", "-") for name in commands])
def test_a_frozen_head_does_not_keep_ctrl_c_waiting(frozen: WatchedHead, command: Callable[[Head], object]) -> None:
    with fringix.open(frozen.address) as head:
        frozen.freeze()
        with interrupted():
            command(head)
        assert not head.is_open
        with pytest.raises(fringix.UnknownDeviceError, match="Ctrl-C ended a call"):
            head.gain
    frozen.thaw()
    assert frozen.says(FAREWELL), frozen.simulated.output


def test_a_measurement_that_takes_long(simulated_heads: Any) -> None:
    simulated = simulated_heads(camera=(64, 48), projector=(40, 30), image_time=20000)
    with fringix.open(simulated.address) as head:
        seq = head.sequence(1)
        with interrupted():
            head.measure(seq)
        assert not head.is_open


def test_waiting_for_events_leaves_the_session_as_it_is(frozen: WatchedHead) -> None:
    with fringix.open(frozen.address) as head:
        for wait in (wait_for_event, wait_for_async_event):
            with interrupted():
                wait(head)
        assert head.live().shape == (48, 64)


def test_closing_while_another_thread_waits(frozen: WatchedHead) -> None:
    head = fringix.open(frozen.address)
    busy = threading.Thread(target=head.live)
    frozen.freeze()
    busy.start()
    time.sleep(0.2)
    with interrupted():
        head.close()
    assert not head.is_open
    frozen.thaw()
    busy.join()
    assert frozen.says(FAREWELL)


def test_a_call_that_ends_in_time_leaves_the_session_open(simulated_heads: Any, monkeypatch: pytest.MonkeyPatch) -> None:
    assert _waiting.PATIENCE == 0.5
    monkeypatch.setattr(_waiting, "PATIENCE", 20)  # a busy machine takes its time
    simulated = simulated_heads(camera=(64, 48), projector=(40, 30), image_time=1000)
    with fringix.open(simulated.address) as head, head.sequence(1) as seq:
        with interrupted():
            head.measure(seq)
        assert head.is_open and head.live().shape == (48, 64)


def test_a_second_ctrl_c_ends_the_patience(frozen: WatchedHead, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_waiting, "PATIENCE", 60)
    with fringix.open(frozen.address) as head:
        frozen.freeze()
        with interrupted():
            threading.Timer(0.6, os.kill, (os.getpid(), signal.SIGINT)).start()
            head.live()
        assert not head.is_open


def test_a_loop_of_pictures(frozen: WatchedHead) -> None:
    with fringix.open(frozen.address) as head:
        with interrupted():
            while True:
                head.live()
        assert head.live().shape == (48, 64)


def test_connecting_to_what_does_not_greet() -> None:
    with socket.create_server(("127.77.0.1", 44330)):
        with interrupted():
            fringix.open("127.77.0.1", timeout=60)


def test_connecting_past_the_probe(monkeypatch: pytest.MonkeyPatch, frozen: WatchedHead) -> None:
    frozen.freeze()
    monkeypatch.setattr("fringix._probe.probe", lambda address, timeout: None)
    with interrupted():
        fringix.open(frozen.address)
    frozen.thaw()
    assert frozen.says(FAREWELL)


def test_another_handlers_exception_ends_the_wait_as_well(frozen: WatchedHead) -> None:
    def give_up(*_: object) -> None:
        raise InterruptedError("time is up")

    before = signal.signal(signal.SIGALRM, give_up)
    try:
        with fringix.open(frozen.address) as head:
            frozen.freeze()
            signal.setitimer(signal.ITIMER_REAL, 0.2)
            with pytest.raises(InterruptedError, match="time is up"):
                head.live()
    finally:
        signal.signal(signal.SIGALRM, before)


def test_a_handler_that_raises_nothing_leaves_the_call_alone(frozen: WatchedHead) -> None:
    heard: list[object] = []
    before = signal.signal(signal.SIGALRM, lambda *_: heard.append(None))
    try:
        with fringix.open(frozen.address) as head:
            frozen.freeze()
            signal.setitimer(signal.ITIMER_REAL, 0.1)
            threading.Timer(0.4, frozen.thaw).start()
            assert head.live().shape == (48, 64)
    finally:
        signal.signal(signal.SIGALRM, before)
    assert heard == [None]


program = """
import fringix, sys
with fringix.open(sys.argv[1]) as head:
    print("open", flush=True)
    sys.stdin.readline()
    print("waiting", flush=True)
    head.live()
"""


def test_a_program_ends_at_once(frozen: WatchedHead) -> None:
    with subprocess.Popen(
        [sys.executable, "-c", program, frozen.address], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    ) as running:
        assert running.stdin and running.stdout and running.stdout.readline() == "open\n"
        frozen.freeze()
        running.stdin.write("\n")
        running.stdin.flush()
        running.stdout.readline()
        time.sleep(0.3)
        begin = time.monotonic()
        running.send_signal(signal.SIGINT)
        _, said = running.communicate(timeout=60)
        assert time.monotonic() - begin < SOON
    assert running.returncode == -signal.SIGINT and "KeyboardInterrupt" in said and "Fatal" not in said


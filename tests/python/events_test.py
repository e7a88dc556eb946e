"""Events of a head: as a callback, an iterator, a stream, a post."""

from __future__ import annotations

import asyncio
import os
import queue
import sys
import threading
import time
from typing import Any, Callable, Iterator

import fringix
import pytest
from fringix import events
from fringix.head import Head
from fringix.simulation import SimulatedHead

LIMIT = 30  # seconds for what comes at once


@pytest.fixture(scope="module")
def simulated() -> Iterator[SimulatedHead]:
    with SimulatedHead(camera=(64, 48), projector=(40, 30), image_time=0, serial=31) as running:
        yield running


@pytest.fixture
def head(simulated: SimulatedHead) -> Iterator[Head]:
    with fringix.open(simulated.address, timeout=10) as opened:
        yield opened


def is_soon(condition: Callable[[], bool]) -> bool:
    until = time.monotonic() + LIMIT
    while not condition() and time.monotonic() < until:
        time.sleep(0.01)
    return condition()


def raise_until(simulated: SimulatedHead, is_heard: Callable[[], bool]) -> bool:
    """Raises triggers until one has got through: the listener may still be on its way to the port."""
    until = time.monotonic() + LIMIT
    while not is_heard() and time.monotonic() < until:
        simulated.trigger()
        time.sleep(0.1)
    return is_heard()


def measure(head: Head) -> None:
    with head.sequence(1) as seq:
        head.measure(seq)


def test_a_callback_hears_triggers(head: Head, simulated: SimulatedHead) -> None:
    heard: queue.Queue[fringix.Event] = queue.Queue()
    before = time.time()
    with head.on_event(heard.put):
        assert raise_until(simulated, lambda: not heard.empty())
    event = heard.get()
    assert (event.kind, event.serial) == (fringix.Kind.TRIGGER, 31)
    assert before <= event.time <= time.time()


def test_a_callback_hears_measurements_before_the_call_returns(head: Head) -> None:
    heard: list[fringix.Event] = []
    with head.on_event(heard.append):
        measure(head)
        assert [event.kind for event in heard] == [fringix.Kind.MEASUREMENT]
    measure(head)
    assert len(heard) == 1


def test_a_callback_may_use_the_head_and_end_its_subscription(head: Head) -> None:
    seen: list[int] = []

    def once(event: fringix.Event) -> None:
        seen.append(head.gain)
        subscription.close()

    subscription = head.on_event(once)
    measure(head)
    measure(head)
    assert seen == [10]


def test_an_exception_in_a_callback_is_told_and_does_no_harm(head: Head, monkeypatch: pytest.MonkeyPatch) -> None:
    told: list[Any] = []
    heard: list[fringix.Event] = []
    monkeypatch.setattr(sys, "unraisablehook", told.append)

    def fail(event: fringix.Event) -> None:
        raise ZeroDivisionError("of a callback")

    with head.on_event(fail), head.on_event(heard.append):
        measure(head)
        measure(head)
    assert [str(report.exc_value) for report in told] == ["of a callback"] * 2
    assert len(heard) == 2 and head.live().shape == (48, 64)


def test_an_exception_of_a_trigger_is_told(head: Head, simulated: SimulatedHead, monkeypatch: pytest.MonkeyPatch) -> None:
    told: list[Any] = []
    monkeypatch.setattr(sys, "unraisablehook", told.append)
    head.on_trigger(lambda: 1 // 0)
    assert raise_until(simulated, lambda: bool(told))
    assert {report.exc_type for report in told} == {ZeroDivisionError}
    heard: list[None] = []
    head.on_trigger(lambda: heard.append(None))
    assert raise_until(simulated, lambda: bool(heard))
    head.on_trigger(None)


def test_a_callback_must_not_close_its_head(head: Head, monkeypatch: pytest.MonkeyPatch) -> None:
    told: list[Any] = []
    monkeypatch.setattr(sys, "unraisablehook", told.append)
    with head.on_event(lambda event: head.close()):
        measure(head)
    assert "must not close it" in str(told[0].exc_value)
    assert head.is_connected


def test_a_callback_may_close_another_head(head: Head, simulated: SimulatedHead) -> None:
    other = fringix.open(simulated.address)
    with head.on_event(lambda event: other.close()):
        measure(head)
    assert not other.is_open and head.is_open


def test_an_iterator_gives_what_came_since_it_was_made(head: Head, simulated: SimulatedHead) -> None:
    with head.events() as stream:
        measure(head)
        measure(head)
        assert [next(stream).kind, stream.get(LIMIT).kind] == [fringix.Kind.MEASUREMENT] * 2
        with pytest.raises(TimeoutError, match="no event of head"):
            stream.get(0.01)
        assert raise_until(simulated, lambda: not stream._events.empty())
        assert next(stream).kind == fringix.Kind.TRIGGER


def test_an_iterator_ends_with_the_session(simulated: SimulatedHead) -> None:
    head = fringix.open(simulated.address)
    stream = head.events()
    threading.Timer(0.1, head.close).start()
    assert list(stream) == []


def test_an_iterator_says_that_the_connection_is_lost() -> None:
    with SimulatedHead(camera=(64, 48), projector=(40, 30)) as simulated, fringix.open(simulated.address) as head:
        stream = head.events()
        simulated.close()
        with pytest.raises(fringix.HeadConnectionError):
            head.gain
        with pytest.raises(fringix.HeadConnectionError, match="lost while events were waited for"):
            next(stream)


def test_an_iterator_that_is_dropped_hears_no_more(head: Head) -> None:
    before = len(events._subscriptions)
    for _ in range(3):
        head.events()
    assert is_soon(lambda: len(events._subscriptions) == before)


def test_a_stream_for_asyncio(head: Head, simulated: SimulatedHead) -> None:
    async def hear() -> set[fringix.Kind]:
        loop = asyncio.get_running_loop()
        kinds: set[fringix.Kind] = set()
        async with head.events_async() as stream:
            await loop.run_in_executor(None, measure, head)
            raising = loop.run_in_executor(None, raise_until, simulated, lambda: len(kinds) == 2)
            async for event in stream:
                kinds.add(event.kind)
                if len(kinds) == 2:
                    break
            await raising
        return kinds

    before = len(events._subscriptions)
    assert asyncio.run(asyncio.wait_for(hear(), 2 * LIMIT)) == {fringix.Kind.MEASUREMENT, fringix.Kind.TRIGGER}
    assert len(events._subscriptions) == before


def test_a_stream_leaves_the_loop_free_and_ends_with_the_session(simulated: SimulatedHead) -> None:
    head = fringix.open(simulated.address)

    async def hear() -> int:
        stream = head.events_async()
        loop = asyncio.get_running_loop()
        loop.call_later(0.1, lambda: loop.run_in_executor(None, head.close))
        return len([event async for event in stream])

    assert asyncio.run(asyncio.wait_for(hear(), LIMIT)) == 0


@pytest.mark.skipif(sys.platform == "win32", reason="events are posted to windows there")
def test_events_are_posted_to_a_pipe(head: Head) -> None:
    reading, writing = os.pipe()
    head.post_events(writing, 77)
    measure(head)
    message, event = events.posted_event(os.read(reading, events.POSTED_SIZE))
    assert (message, event.kind, event.serial) == (77, fringix.Kind.MEASUREMENT, 31)
    os.close(reading)
    os.close(writing)


def test_subscriptions_go_with_their_session(simulated: SimulatedHead) -> None:
    before = len(events._subscriptions)
    head = fringix.open(simulated.address)
    subscription = head.on_event(print)
    assert len(events._subscriptions) == before + 1
    head.close()
    assert len(events._subscriptions) == before
    subscription.close()

"""What a head tells by itself: triggers of its inputs, ends of measurements. As a callback, an iterator or an ``asyncio`` stream."""

from __future__ import annotations

import asyncio
import contextlib
import enum
import itertools
import queue
import struct
import threading
import time
from types import TracebackType
from typing import TYPE_CHECKING, Any, Callable, NamedTuple

from . import _native, errors

if TYPE_CHECKING:
    from .head import Head

_SLICE = 0.1  # seconds after which a wait looks whether the session still lives


class Kind(enum.IntEnum):
    MEASUREMENT = 0
    TRIGGER = 1


class Event(NamedTuple):
    kind: Kind
    serial: int
    """The head's serial number."""
    time: float
    """When it arrived, as ``time.time()`` tells it."""


Function = Callable[[Event], object]

_subscriptions: dict[int, Subscription] = {}
_numbers = itertools.count(1)
_telling = threading.local()


def is_telling(head: Head) -> bool:
    """Whether this thread is in a callback of the head."""
    return head in getattr(_telling, "heads", ())


def tell(head: Head, function: Callable[..., object], *arguments: Any) -> None:
    """Calls a user's function on a thread of the library, which nothing can be raised on: ctypes hands exceptions to
    ``sys.unraisablehook``."""
    outer = getattr(_telling, "heads", ())
    _telling.heads = (*outer, head)
    try:
        function(*arguments)
    finally:
        _telling.heads = outer


def _dispatch_event(event: int, context: int, parameter: int) -> None:
    subscription = _subscriptions.get(context)
    if subscription is not None:
        tell(subscription.head, subscription.function, Event(Kind(event), parameter, time.time()))


_dispatch = _native.EventHandler(_dispatch_event)


class Subscription:
    """A function that hears the events of a head, until ``close`` or the end of a ``with`` block or of the session.

    It is called on a thread of the session, at the end of a measurement on the one that measures; one call at a time for a head. It
    should return soon, must not close its own head, and must not call that head while another thread may be measuring with it. It may
    close its own subscription.
    """

    def __init__(self, head: Head, function: Function) -> None:
        self.head, self.function = head, function
        self._number = next(_numbers)
        _subscriptions[self._number] = self
        try:
            head._call("SLRegisterEventhandler", _dispatch, self._number)
        except BaseException:
            self.forget()
            raise

    def forget(self) -> None:
        _subscriptions.pop(self._number, None)

    def close(self) -> None:
        """On another thread than the callback's it waits for a call that is under way; none follows."""
        if self._number in _subscriptions and self.head.is_open:
            with contextlib.suppress(errors.UnknownDeviceError):  # closed on another thread
                self.head._call("SLUnregisterEventhandler", _dispatch, self._number)
        self.forget()

    def __enter__(self) -> Subscription:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        self.close()


def forget_all(head: Head) -> None:
    """After the session of a head has ended."""
    for subscription in list(_subscriptions.values()):
        if subscription.head is head:
            subscription.forget()


def _require_connection(head: Head) -> None:
    if not head.is_connected:
        reason = "the connection was lost while events were waited for"
        raise errors.HeadConnectionError("SLRegisterEventhandler", head.address, reason)


class EventStream:
    """An iterator over the events of a head from now on, which waits for the next one; it ends when the session is closed.

    Raises HeadConnectionError when the connection is lost.

    >>> with head.events() as events, head.sequence(1) as seq:
    ...     head.measure(seq)
    ...     next(events).kind
    <Kind.MEASUREMENT: 0>
    """

    def __init__(self, head: Head) -> None:
        self._head = head
        self._events: queue.SimpleQueue[Event] = queue.SimpleQueue()
        self._subscription = Subscription(head, self._events.put)

    def get(self, timeout: float | None = None) -> Event:
        """The next event. Raises TimeoutError when none comes within so many seconds, StopIteration when the session was closed."""
        until = None if timeout is None else time.monotonic() + timeout
        while True:
            remaining = _SLICE if until is None else min(_SLICE, until - time.monotonic())
            with contextlib.suppress(queue.Empty):
                return self._events.get(timeout=max(remaining, 0))
            if not self._head.is_open:
                raise StopIteration
            _require_connection(self._head)
            if remaining <= 0:
                raise TimeoutError(f"no event of head {self._head.address} within {timeout} s")

    def close(self) -> None:
        self._subscription.close()

    def __iter__(self) -> EventStream:
        return self

    def __next__(self) -> Event:
        return self.get()

    def __enter__(self) -> EventStream:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        self.close()

    def __del__(self) -> None:
        if hasattr(self, "_subscription"):
            self._subscription.close()


class AsyncEventStream:
    """The same for ``async for`` in the running loop, which stays free while no event comes."""

    def __init__(self, head: Head) -> None:
        self._head = head
        self._loop = asyncio.get_running_loop()
        self._events: asyncio.Queue[Event] = asyncio.Queue()
        loop, events = self._loop, self._events
        self._subscription = Subscription(head, lambda event: _hand_over(loop, events, event))
        self._next: asyncio.Task[Event] | None = None

    def __aiter__(self) -> AsyncEventStream:
        return self

    async def __anext__(self) -> Event:
        while True:
            self._next = self._next or self._loop.create_task(self._events.get())
            await asyncio.wait({self._next}, timeout=_SLICE)
            if self._next.done():
                event, self._next = self._next.result(), None
                return event
            if not self._head.is_open:
                await self.aclose()
                raise StopAsyncIteration
            _require_connection(self._head)

    async def aclose(self) -> None:
        if self._next is not None:
            self._next.cancel()
            self._next = None
        await self._loop.run_in_executor(None, self._subscription.close)

    async def __aenter__(self) -> AsyncEventStream:
        return self

    async def __aexit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        await self.aclose()

    def __del__(self) -> None:
        if hasattr(self, "_subscription"):
            self._subscription.close()


def _hand_over(loop: asyncio.AbstractEventLoop, events: asyncio.Queue[Event], event: Event) -> None:
    with contextlib.suppress(RuntimeError):  # the loop has been closed, and with it whoever would hear
        loop.call_soon_threadsafe(events.put_nowait, event)


_posted = struct.Struct("=IIQq")
POSTED_SIZE = _posted.size


def posted_event(record: bytes) -> tuple[int, Event]:
    """The message number and the event of a record of ``POSTED_SIZE`` bytes that ``Head.post_events`` wrote to a descriptor."""
    message, _, event, serial = _posted.unpack(record)
    return message, Event(Kind(event), serial, time.time())

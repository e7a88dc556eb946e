"""Calls that Ctrl-C ends.

Python runs its signal handlers on the main thread, between two of its own instructions: a call that waits in C keeps Ctrl-C waiting, too.
So the main thread hands its calls to a worker and waits for that, which handlers do interrupt. Other threads call directly, for no handler
ever runs on them. The hand-over takes some 15 us.
"""

from __future__ import annotations

import os
import threading
import time
from typing import Any, Callable, Sequence

PATIENCE = 0.5  # seconds that a call gets to end in order after Ctrl-C
_SLICE = 0.1  # on Windows handlers run only between two waits

Cleanup = Callable[[], None]


class _Worker:
    def __init__(self) -> None:
        self.work: Callable[..., Any] | None = None
        self.arguments: Sequence[Any] = ()
        self.outcome: Any = None
        self.failure: BaseException | None = None
        self.finished = False
        self.cleanup: Cleanup | None = None
        self.guard = threading.Lock()
        self.begin, self.done = threading.Lock(), threading.Lock()
        self.begin.acquire()
        self.done.acquire()
        threading.Thread(target=self._serve, name="fringix call", daemon=True).start()

    def _serve(self) -> None:
        while True:
            self.begin.acquire()
            if self.work is None:
                return
            try:
                self.outcome = self.work(*self.arguments)
            except BaseException as failure:  # belongs to the thread that waits
                self.failure = failure
            with self.guard:
                self.finished = True
                self.done.release()
            if self.cleanup is not None:
                self.cleanup()
                return

    def start(self, work: Callable[..., Any], arguments: Sequence[Any]) -> None:
        self.work, self.arguments, self.finished = work, arguments, False
        self.begin.release()

    def wait(self, limit: float | None) -> None:
        until = None if limit is None else time.monotonic() + limit
        while not self.done.acquire(timeout=_SLICE):
            if until is not None and time.monotonic() > until:
                raise TimeoutError

    def take(self) -> Any:
        outcome, failure = self.outcome, self.failure
        self.work, self.arguments, self.outcome, self.failure = None, (), None, None
        if failure is not None:
            raise failure
        return outcome

    def wait_patiently(self) -> None:
        """After an interruption; another one ends the patience."""
        try:
            until = time.monotonic() + PATIENCE
            while not self.finished and time.monotonic() < until:
                self.done.acquire(timeout=0.01)
        except BaseException:
            pass

    def leave(self, make_cleanup: Callable[[], Cleanup]) -> None:
        """Lets the worker end by itself, after a cleanup when its call has not ended yet."""
        with self.guard:
            if not self.finished:
                self.cleanup = make_cleanup()
                return
        self.work = None
        self.begin.release()


_idle: list[_Worker] = []
if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=_idle.clear)


def _no_cleanup() -> Cleanup:
    return lambda: None


def on_main_thread() -> bool:
    return threading.get_ident() == threading.main_thread().ident


def _idle_worker() -> _Worker | None:
    try:
        return _idle.pop()
    except IndexError:
        pass
    try:
        return _Worker()
    except RuntimeError:  # at the end of the process there are no new threads
        return None


def run(
    work: Callable[..., Any],
    arguments: Sequence[Any] = (),
    make_cleanup: Callable[[], Cleanup] | None = None,
    limit: float | None = None,
) -> Any:
    """Gives what ``work(*arguments)`` gives, or raises what it raises.

    An exception of a signal handler, such as KeyboardInterrupt, ends the wait: after at most ``PATIENCE`` seconds the work is left to
    itself. ``make_cleanup`` is called then, and what it gives runs on the worker's thread when the work has ended. The same happens
    after ``limit`` seconds, with TimeoutError.
    """
    if limit is None and not on_main_thread():
        return work(*arguments)
    worker = _idle_worker()
    if worker is None:
        return work(*arguments)
    worker.start(work, arguments)
    try:
        worker.wait(limit)
    except BaseException as reason:
        if not isinstance(reason, TimeoutError):
            worker.wait_patiently()
        worker.leave(make_cleanup or _no_cleanup)
        raise
    _idle.append(worker)
    return worker.take()

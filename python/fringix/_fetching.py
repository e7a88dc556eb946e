"""Pictures that are fetched while the one before is worked on."""

from __future__ import annotations

import queue
import threading
from typing import TYPE_CHECKING, Callable, Iterable, Iterator

from . import _waiting
from ._pixels import Pixels

if TYPE_CHECKING:
    from .head import Head

_AHEAD = 2
_SLICE = 0.1


class _Fetcher:
    def __init__(self, indices: Iterable[int], fetch: Callable[[int], Pixels]) -> None:
        self.pictures: queue.Queue[Pixels | BaseException | None] = queue.Queue()
        self._room = threading.Semaphore(_AHEAD)
        self._indices, self._fetch = indices, fetch
        self._stopping = False
        self.thread = threading.Thread(target=self._run, name="fringix pictures", daemon=True)
        self.thread.start()

    def _run(self) -> None:
        try:
            for index in self._indices:
                self._room.acquire()
                if self._stopping:
                    return
                self.pictures.put(self._fetch(index))
            self.pictures.put(None)
        except BaseException as failure:  # belongs to who takes the pictures
            self.pictures.put(failure)

    def take(self) -> Pixels | None:
        while True:
            try:
                taken = self.pictures.get(timeout=_SLICE)
            except queue.Empty:  # time for signal handlers
                continue
            if isinstance(taken, BaseException):
                raise taken
            self._room.release()
            return taken

    def stop(self) -> None:
        self._stopping = True
        self._room.release()


def _leave(head: Head, thread: threading.Thread) -> None:
    """After Ctrl-C: a picture that does not come soon is left behind, and the session closed once it has come."""
    thread.join(_waiting.PATIENCE)
    if thread.is_alive():
        threading.Thread(target=_close_after, args=(thread, head._leave()), name="fringix call", daemon=True).start()


def _close_after(thread: threading.Thread, close: Callable[[], None]) -> None:
    thread.join()
    close()


def ahead(head: Head, indices: Iterable[int], fetch: Callable[[int], Pixels]) -> Iterator[Pixels]:
    fetcher = _Fetcher(indices, fetch)
    try:
        while (picture := fetcher.take()) is not None:
            yield picture
    except KeyboardInterrupt:
        fetcher.stop()
        _leave(head, fetcher.thread)
        raise
    finally:
        fetcher.stop()

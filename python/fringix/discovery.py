"""The search for heads."""

from __future__ import annotations

import contextlib
import ctypes
import threading
from typing import Any, NamedTuple

from . import _native, _waiting, errors

_MOST_GIVEN = 256
_searching = threading.Lock()  # the list of found heads is the process's


class FoundHead(NamedTuple):
    """A head that answered a search. Numbers that it did not tell are -1."""

    serial: int
    model: str
    """"UNKNOWN_DEVICE" for a model that the library does not know."""
    address: str
    info: tuple[int, ...]
    """Seven numbers whose meaning is the head's."""


class SelectedHead(NamedTuple):
    """A head that a user picked."""

    serial: int
    info1: int
    address: str


def _text(value: bytes | None) -> str:
    return (value or b"").decode(errors="replace")


def _entry(operation: str, record: Any, index: int) -> Any:
    _native.call(operation, index, ctypes.byref(record))
    return record


def _search() -> list[FoundHead]:
    _native.function("SLGetDeviceKeyListSize")  # a forked process would wait for a lock that nobody gives back
    with _searching:
        count = _native.get("SLGetDeviceKeyListSize", ctypes.c_int32)
        return [_found(_entry("SLGetDeviceKeyListEntryEx", _native.DeviceKeyEntryEx(), index)) for index in range(min(count, _MOST_GIVEN))]


def _found(entry: _native.DeviceKeyEntryEx) -> FoundHead:
    info = tuple(getattr(entry, f"info{number}") for number in range(1, 8))
    return FoundHead(entry.serial, _text(entry.model_name), _text(entry.ip_address), info)


def discover() -> list[FoundHead]:
    """Searches all IPv4 networks of this machine, each for at least 300 ms. Gives the heads that answer, at most 256, by serial number.

    >>> simulated.serial in [head.serial for head in fringix.discover()]
    True
    """
    found: list[FoundHead] = _waiting.run(_search)
    return found


def _found_addresses() -> dict[int, str]:
    _native.function("SLGetDeviceKeyListEntry")
    addresses: dict[int, str] = {}
    with _searching, contextlib.suppress(errors.BadParameterError):  # behind the last entry
        for index in range(_MOST_GIVEN):
            entry = _entry("SLGetDeviceKeyListEntry", _native.DeviceKeyEntry(), index)
            addresses.setdefault(entry.serial, _text(entry.ip_address))
    return addresses


def found_addresses() -> dict[int, str]:
    """Addresses by serial number, as the last search of this process found them, without a new one."""
    found: dict[int, str] = _waiting.run(_found_addresses)
    return found


def open_by_serial(serial: int, timeout: float) -> tuple[int, str]:
    """A new session and its head's address. Raises TimeoutError, and closes the session should it come later."""
    _native.function("SLDevAllocBySerial")
    handle = ctypes.c_int32(-1)

    def search_and_open() -> str:
        with _searching:
            _native.call("SLDevAllocBySerial", serial, ctypes.byref(handle))
            key = _native.DeviceKeyEntry()
            _native.call("SLGetDevKey", handle.value, ctypes.byref(key))
            return _text(key.ip_address)

    def close() -> None:
        if handle.value != -1:
            _native.close(handle.value)

    address: str = _waiting.run(search_and_open, (), lambda: close, timeout)
    return handle.value, address


def select_head(parent: int | None = None) -> SelectedHead | None:
    """Shows the device selector and waits until the user has closed it. None when nothing was picked, or where it cannot be shown.

    parent -- the window before which it stands: a window handle on Windows, the number of an X11 window on Linux

    Raises HeadConnectionError when the head that was picked does not answer any more. Ctrl-C does not end it. Call it from the thread
    that uses GTK, if one does, else always from the same.
    """
    picked = _native.DeviceKeyEntry(0, 0, None)
    with _searching:
        status = _native.value("SLShowDeviceDialog", parent, ctypes.byref(picked))
    if status != 0:
        errors.fail("SLShowDeviceDialog", status)
    if picked.ip_address is not None:
        return SelectedHead(picked.serial, picked.info1, _text(picked.ip_address))
    if picked.serial == -1:
        raise errors.HeadConnectionError("SLShowDeviceDialog", None, "the head that was picked does not answer any more")
    return None

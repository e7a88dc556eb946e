"""What a head keeps for its user: blocks of bytes, and integers of its configuration."""

from __future__ import annotations

import ctypes
from typing import TYPE_CHECKING, Any, TypeVar

import numpy as np

from . import _native, _waiting, errors

if TYPE_CHECKING:
    from .head import Head

T = TypeVar("T")


class Data:
    """Blocks of bytes in files on the head, by name. No head lists its names, so there is nothing to iterate over.

    >>> head.data["notes.txt"] = b"left station"
    >>> head.data["notes.txt"]
    b'left station'
    >>> "nothing.txt" in head.data
    False
    """

    def __init__(self, head: Head) -> None:
        self._head = head

    def __getitem__(self, name: str) -> bytes:
        """Raises KeyError for a block that is empty, which is what heads say of one that they do not have."""
        block = self._load(name)
        if not block:
            raise KeyError(name)
        return block

    def __setitem__(self, name: str, block: Any) -> None:
        """Saves anything that has bytes: bytes, a bytearray, an array. It must not be empty."""
        content = np.frombuffer(np.ascontiguousarray(block) if isinstance(block, np.ndarray) else block, np.uint8)
        if not content.size:
            raise errors.BadParameterError("SLSaveData", self._head.address, f"the block {name!r} is empty, which no head takes")
        self._head._call("SLSaveData", content, content.size, name)

    def __contains__(self, name: str) -> bool:
        """Fetches the block, for there is no other way to know."""
        return bool(self._load(name))

    def get(self, name: str, default: T | None = None) -> bytes | T | None:
        return self._load(name) or default

    def _load(self, name: str) -> bytes:
        return bytes(_waiting.run(self._load_whole, (name,), self._head._leave))

    def _load_whole(self, name: str) -> bytes:
        block, size = ctypes.POINTER(ctypes.c_uint8)(), ctypes.c_int32()
        try:
            self._head._call("SLLoadData", ctypes.byref(block), ctypes.byref(size), name)
            return ctypes.string_at(block, size.value) if block else b""
        finally:
            if block:
                _native.call("SLFreeData", block)


class Ini:
    """Integers of the head's configuration, by section and key.

    >>> head.ini["Camera", "Exposure"]
    20000
    >>> head.ini["Station", "Number"] = 7
    """

    def __init__(self, head: Head) -> None:
        self._head = head

    def __getitem__(self, section_and_key: tuple[str, str]) -> int:
        value = ctypes.c_int32()
        self._call("SLReadIniInt", ctypes.byref(value), section_and_key, "")
        return value.value

    def __setitem__(self, section_and_key: tuple[str, str], value: int) -> None:
        self._call("SLWriteIniInt", value, section_and_key, f" {value}")

    def _call(self, operation: str, value: Any, section_and_key: tuple[str, str], said: str) -> None:
        section, key = section_and_key
        try:
            self._head._call(operation, value, section, key)
        except errors.HeadSystemError:
            if not self._head.is_connected:
                raise
            reason = f"the head does not take{said} for [{section}] {key}" if said else f"the head knows no [{section}] {key}"
            raise errors.HeadSystemError(operation, self._head.address, reason) from None

"""Settings and readings of a head: numbers that know their unit and range."""

from __future__ import annotations

import ctypes
from typing import Any, NamedTuple, Protocol, overload

from . import errors


class Owner(Protocol):
    """What has settings: a head, or a part of it."""

    @property
    def address(self) -> str: ...

    @property
    def is_connected(self) -> bool: ...

    def _call(self, operation: str, *arguments: Any) -> None: ...

    def _get(self, operation: str, ctype: Any) -> Any: ...


class Range(NamedTuple):
    """The values that a setting takes, both ends included.

    >>> 10 in Range(10, 100), 9 in Range(10, 100)
    (True, False)
    """

    min: int
    max: int

    def __contains__(self, value: object) -> bool:
        return isinstance(value, (int, float)) and self.min <= value <= self.max


class Value(int):
    """A number that a head told, with its unit, "" where it has none, and the range in which it can be set."""

    _origin: tuple[Setting, Owner]

    @property
    def unit(self) -> str:
        return self._origin[0].unit

    @property
    def range(self) -> Range:
        """Asks the head for the range. Raises AttributeError for a value that has none."""
        setting, head = self._origin
        return setting.range_of(head)

    def __reduce__(self) -> tuple[type[int], tuple[int]]:
        return int, (int(self),)  # a copy that leaves the process has no head


def _get(head: Owner, operation: str) -> int:
    return int(head._get(operation, ctypes.c_int32))


class Setting:
    """A property of a head that is read from it, set on it, or both; which of them is told by the C functions that it has."""

    def __init__(self, meaning: str, unit: str = "", get: str = "", set: str = "", limits: str | Range = "", hint: str = "") -> None:
        self.__doc__ = meaning
        self.unit, self._getter, self._setter, self._limits, self._hint = unit, get, set, limits, hint

    def __set_name__(self, owner: type, name: str) -> None:
        self.name = name

    @overload
    def __get__(self, head: None, owner: type) -> Setting: ...

    @overload
    def __get__(self, head: Owner, owner: type) -> Value: ...

    def __get__(self, head: Owner | None, owner: type | None = None) -> Setting | Value:
        if head is None:
            return self
        if not self._getter:
            raise AttributeError(f"{self.name} can only be set: no head tells it")
        value = Value(_get(head, self._getter))
        value._origin = self, head
        return value

    def __set__(self, head: Owner, value: int) -> None:
        if not self._setter:
            raise AttributeError(f"{self.name} can only be read{self._hint}")
        try:
            head._call(self._setter, value)
        except (errors.BadParameterError, errors.HeadSystemError, errors.HeadRefusedError) as error:
            self._tell_range(head, value, error)
            raise

    def _tell_range(self, head: Owner, value: int, error: errors.Error) -> None:
        """Asked only now, so that setting costs no question."""
        if not self._limits or not head.is_connected:
            return
        limits = self.range_of(head)
        if value not in limits:
            reason = f"{self.name} is {limits.min} to {limits.max}, not {value}"
            raise errors.BadParameterError(self._setter, head.address, reason) from error

    def range_of(self, head: Owner) -> Range:
        if isinstance(self._limits, Range):
            return self._limits
        if not self._limits:
            raise AttributeError(f"no head tells a range of {self.name}")
        smallest, largest = ctypes.c_int32(), ctypes.c_int32()
        head._call(self._limits, ctypes.byref(smallest), ctypes.byref(largest))
        return Range(smallest.value, largest.value)

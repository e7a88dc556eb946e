"""About the library itself."""

from __future__ import annotations

from . import _native

_without_text = {-11: "SLHANDSHAKE_TIMEOUT", -40: "SLVERSION_TOO_OLD"}


def library_version() -> int:
    """The version of the native library.

    >>> fringix.library_version()
    4002
    """
    return int(_native.value("QORFringixVersion"))


def status_name(code: int) -> str:
    """The name of a status code, as the C header spells it.

    >>> fringix.status_name(-10)
    'SLCONNECTION_ERROR'
    """
    return _without_text.get(code) or str(_native.value("SLErrorcodeToChar", code).decode())


def set_tracing(on: bool) -> None:
    """Switches trace lines on or off for the whole process: to the debugger on Windows, to standard error elsewhere."""
    _native.call("SLSetDebugFlag", int(on))

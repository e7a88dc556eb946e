"""The table of exports against the lists that the library itself is built from."""

from __future__ import annotations

import ctypes
import pathlib
import re

import numpy as np
import pytest
from fringix import _native, errors

root = pathlib.Path(__file__).resolve().parents[2]


def exported_names() -> set[str]:
    listed = (root / "src/resources/DAXFringix.def").read_text()
    return set(re.findall(r"^\s+(\w+)\s+@\d+", listed, re.MULTILINE))


def declared_parameters() -> dict[str, list[str]]:
    header = (root / "include/fringix/fringix.h").read_text()
    found = re.findall(r"^FRINGIX_API\s[^;]*?(\w+)\(([^)]*)\);", header, re.MULTILINE)
    return {name: [] if parameters == "void" else [part.strip() for part in parameters.split(",")] for name, parameters in found}


c_types = {
    "int32_t": ctypes.c_int32,
    "uint32_t": ctypes.c_uint32,
    "uint8_t": ctypes.c_uint8,
    "const char*": ctypes.c_char_p,
    "char*": ctypes.c_char_p,
    "const uint8_t*": ctypes.c_void_p,
    "void*": ctypes.c_void_p,
    "int32_t*": ctypes.POINTER(ctypes.c_int32),
    "uint32_t*": ctypes.POINTER(ctypes.c_uint32),
    "uint8_t**": ctypes.POINTER(ctypes.POINTER(ctypes.c_uint8)),
    "DeviceKeyEntry*": ctypes.POINTER(_native.DeviceKeyEntry),
    "DeviceKeyEntryEx*": ctypes.POINTER(_native.DeviceKeyEntryEx),
    "SLEventHandler": _native.EventHandler,
    "SLGPIOCallback": _native.GPIOCallback,
}


def fits(kind: _native.Kind, declared: str) -> bool:
    if declared == "uint8_t*":  # pixels, a block of the library's, or one number
        return kind.ctype in (ctypes.c_void_p, ctypes.POINTER(ctypes.c_uint8))
    return bool(kind.ctype == c_types[declared])


def nothing(*_: object) -> None:
    pass


def zero_of(kind: _native.Kind) -> object:
    zeros: dict[_native.Kind, object] = {
        _native.I32: 0,
        _native.U32: 0,
        _native.U8: 0,
        _native.TEXT: "",
        _native.BYTES: b"",
        _native.BUFFER: np.zeros(1, np.uint8),
        _native.EVENTS: _native.EventHandler(nothing),
        _native.GPIO: _native.GPIOCallback(nothing),
    }
    return zeros.get(kind)


def test_no_export_is_forgotten_and_none_invented() -> None:
    assert len(exported_names()) == 70
    assert set(_native.EXPORTS) == exported_names()


@pytest.mark.parametrize("name", sorted(exported_names()))
def test_each_row_is_what_the_header_declares(name: str) -> None:
    declared = [parameter.rpartition(" ")[0] for parameter in declared_parameters()[name]]
    kinds = list(_native.EXPORTS[name].parameters.values())
    assert len(kinds) == len(declared)
    assert [text for kind, text in zip(kinds, declared) if not fits(kind, text)] == []


@pytest.mark.parametrize("name", sorted(exported_names()))
def test_the_library_has_it(name: str) -> None:
    assert _native.function(name).pointer


@pytest.mark.parametrize("name", sorted(name for name in exported_names() if "handle" in _native.EXPORTS[name].parameters))
def test_a_closed_session_is_told_by_every_call(name: str) -> None:
    arguments = [zero_of(kind) for kind in list(_native.EXPORTS[name].parameters.values())[1:]]
    with pytest.raises(errors.UnknownDeviceError, match=name):
        _native.call(name, 123456, *arguments, head="127.0.0.99")

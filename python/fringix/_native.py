"""The C interface, as the header ``fringix.h`` describes it: one row for each export, and ``call``, which raises what a call says."""

from __future__ import annotations

import ctypes
import operator
import os
import threading
from typing import Any, Callable, NamedTuple, Sequence

import numpy as np

from . import _library, _waiting, errors

LONGEST_TEXT = 999999
UNKNOWN_SIZE = 0xFFFFFFFF

_uint8 = np.dtype(np.uint8)


class DeviceKeyEntry(ctypes.Structure):
    _fields_ = [("serial", ctypes.c_int32), ("info1", ctypes.c_int32), ("ip_address", ctypes.c_char_p)]


class DeviceKeyEntryEx(ctypes.Structure):
    _fields_ = [
        ("reserved", ctypes.c_int32),
        ("serial", ctypes.c_int32),
        ("info1", ctypes.c_int32),
        ("ip_address", ctypes.c_char_p),
        ("model_name", ctypes.c_char_p),
        *((f"info{number}", ctypes.c_int32) for number in range(2, 8)),
    ]


class PostedEvent(ctypes.Structure):
    _fields_ = [
        ("message", ctypes.c_uint32),
        ("reserved", ctypes.c_uint32),
        ("event", ctypes.c_uint64),
        ("parameter", ctypes.c_int64),
    ]


EventHandler = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_void_p, ctypes.c_int64)
GPIOCallback = ctypes.CFUNCTYPE(None, ctypes.c_void_p)


class Kind(NamedTuple):
    """What a parameter is: its C type, and what makes a value of it that C can take."""

    ctype: Any
    accept: Callable[[Any], Any]


def _integer(ctype: Any, smallest: int, largest: int) -> Kind:
    def accept(value: Any) -> int:
        number = operator.index(value)
        if smallest <= number <= largest:
            return number
        raise ValueError(f"{number} is not in {smallest} to {largest}")

    return Kind(ctype, accept)


def _accept_text(value: str) -> bytes:
    text = value.encode()
    if b"\0" in text or len(text) > LONGEST_TEXT:
        raise ValueError(f"a text has no zero character and at most {LONGEST_TEXT} bytes")
    return text


def _is_uint8(array: Any) -> bool:
    return isinstance(array, np.ndarray) and (array.dtype is _uint8 or array.dtype == _uint8)


def _accept_bytes(value: Any) -> Any:
    if isinstance(value, bytes):
        return value
    if not _is_uint8(value) or not value.flags.c_contiguous:
        raise TypeError(f"a contiguous array of uint8 is needed, not {describe(value)}")
    return value.__array_interface__["data"][0]


def _accept_buffer(value: Any) -> Any:
    if not _is_uint8(value) or not value.flags.carray:
        raise TypeError(f"a contiguous array of uint8 that can be written to is needed, not {describe(value)}")
    return value.__array_interface__["data"][0]


def _as_it_is(value: Any) -> Any:
    return value


def describe(value: Any) -> str:
    """What a value is, for messages: ``"float64[480, 640]"``, or the name of its type."""
    if not isinstance(value, np.ndarray):
        return type(value).__name__
    layout = "" if value.flags.c_contiguous else ", not contiguous"
    return f"{value.dtype}{list(value.shape)}{layout}"


def _out(ctype: Any) -> Kind:
    return Kind(ctypes.POINTER(ctype), _as_it_is)


I32 = _integer(ctypes.c_int32, -(2**31), 2**31 - 1)
U32 = _integer(ctypes.c_uint32, 0, 2**32 - 1)
U8 = _integer(ctypes.c_uint8, 0, 255)
TEXT = Kind(ctypes.c_char_p, _accept_text)
BYTES = Kind(ctypes.c_void_p, _accept_bytes)  # read by the call
BUFFER = Kind(ctypes.c_void_p, _accept_buffer)  # written by the call
POINTER = Kind(ctypes.c_void_p, _as_it_is)
EVENTS = Kind(EventHandler, _as_it_is)
GPIO = Kind(GPIOCallback, _as_it_is)
OUT_I32, OUT_U32, OUT_U8 = _out(ctypes.c_int32), _out(ctypes.c_uint32), _out(ctypes.c_uint8)
OUT_TEXT, OUT_BLOCK = Kind(ctypes.c_char_p, _as_it_is), _out(ctypes.POINTER(ctypes.c_uint8))
OUT_KEY, OUT_KEY_EX = _out(DeviceKeyEntry), _out(DeviceKeyEntryEx)


class Export(NamedTuple):
    result: Any
    parameters: dict[str, Kind]


def _gives(result: Any = ctypes.c_int32, **parameters: Kind) -> Export:
    return Export(result, parameters)


def _of_session(**parameters: Kind) -> Export:
    return Export(ctypes.c_int32, {"handle": I32, **parameters})


_roi = {"roi_x": U32, "roi_y": U32, "roi_width": U32, "roi_height": U32}
_make = {"sequence_id": U32, "g1": U8, "g2": U8, "g3": U8, "g4": U8}
_make_from = {"sequence_id": U32, "image_index": U8, "data": BYTES, "length": U32}

# The result is a status unless a row says otherwise.
EXPORTS = {
    "SLDevAlloc": _gives(address=TEXT, new_handle=OUT_I32),
    "SLDevAllocBySerial": _gives(serial=I32, new_handle=OUT_I32),
    "SLDevFree": _of_session(),
    "SLGetDevKey": _of_session(key=OUT_KEY),
    "SLSetDebugFlag": _gives(flag=I32),
    "SLErrorcodeToChar": _gives(ctypes.c_char_p, code=I32),
    "SLGetDeviceKeyListSize": _gives(count=OUT_I32),
    "SLGetDeviceKeyListEntry": _gives(index=I32, entry=OUT_KEY),
    "SLGetDeviceKeyListEntryEx": _gives(index=I32, entry=OUT_KEY_EX),
    "SLShowDeviceDialog": _gives(parent=POINTER, picked=OUT_KEY),
    "SLSeqAlloc": _of_session(image_count=U32, sequence_id=OUT_U32),
    "SLSeqFree": _of_session(sequence_id=U32),
    "SLSeqPut": _of_session(sequence_id=U32, data=BYTES, width=U32, height=U32, stride=U32, image_index=U8),
    "SLSeqMakeGrayCode": _of_session(**_make),
    "SLSeqMakePhase": _of_session(**_make),
    "SLSeqMakeFromLine8": _of_session(**_make_from),
    "SLSeqMakeFromCol8": _of_session(**_make_from),
    "SLSeqMakeFromLine24": _of_session(**_make_from),
    "SLSeqMakeFromCol24": _of_session(**_make_from),
    "SLSeqMakeImage": _of_session(**_make),
    "SLShowImage": _of_session(data=BYTES, width=I32, height=I32, stride=I32),
    "SLShowImageFromSeq": _of_session(sequence_id=U32, image_index=U32),
    "SLStartMeasurement": _of_session(sequence_id=U32),
    "SLStartFromTo": _of_session(sequence_id=U32, from_index=U32, to_index=U32),
    "SLGetCameraSize": _of_session(width=OUT_U32, height=OUT_U32),
    "SLGetProjectorSize": _of_session(width=OUT_U32, height=OUT_U32),
    "SLGetNumberOfChannels": _of_session(channel_count=OUT_U32),
    "SLGetLiveImage": _of_session(buffer=BUFFER, width=U32, height=U32),
    "SLGetLiveImageEx": _of_session(channel=U32, buffer=BUFFER, width=U32, height=U32),
    "SLGetLiveImageROI": _of_session(buffer=BUFFER, **_roi),
    "SLGetLiveImageROIEx": _of_session(channel=U32, buffer=BUFFER, **_roi),
    "SLGetLiveImageROILowRes": _of_session(channel=U32, buffer=BUFFER, **_roi, factor=I32),
    "SLGetLiveImageLowRes": _of_session(channel=U32, buffer=BUFFER, factor=U32),
    "SLGetImageIndex": _of_session(image_index=U8, buffer=BUFFER),
    "SLGetImageIndexEx": _of_session(channel=U32, image_index=U8, buffer=BUFFER),
    "SLGetImageIndexROI": _of_session(image_index=U8, buffer=BUFFER, **_roi),
    "SLGetImageIndexROIEx": _of_session(channel=U32, image_index=U8, buffer=BUFFER, **_roi),
    "SLCheckSystem": _of_session(found=OUT_I32),
    "SLGetTemperature": _of_session(temperature=OUT_I32),
    "SLGetLEDPower": _of_session(power=OUT_I32),
    "SLSetLEDPower": _of_session(power=I32),
    "SLGetLEDPowerMinMax": _of_session(smallest=OUT_I32, largest=OUT_I32),
    "SLGetBrightnessLevel": _of_session(level=OUT_I32),
    "SLSetBrightnessLevel": _of_session(level=I32),
    "SLGetBrightnessMinMax": _of_session(smallest=OUT_I32, largest=OUT_I32),
    "SLGetGain": _of_session(gain=OUT_I32),
    "SLSetGain": _of_session(gain=I32),
    "SLGetGainMinMax": _of_session(smallest=OUT_I32, largest=OUT_I32),
    "SLGetCurrentExposure": _of_session(exposure=OUT_I32),
    "SLGetUptime": _of_session(uptime=OUT_I32),
    "SLGetProjectorTemperature": _of_session(temperature=OUT_I32),
    "SLGetProjectorStatus": _of_session(projector_status=OUT_I32),
    "SLSetDMDState": _of_session(state=I32),
    "SLSetMask": _of_session(mask=BYTES, selector=I32, width=I32, height=I32),
    "SLClearMask": _of_session(),
    "SLSetLedPowerValue": _of_session(value=U8),
    "SLSaveData": _of_session(data=BYTES, size=I32, file_name=TEXT),
    "SLLoadData": _of_session(data=OUT_BLOCK, size=OUT_I32, file_name=TEXT),
    "SLFreeData": _gives(data=Kind(ctypes.POINTER(ctypes.c_uint8), _as_it_is)),
    "SLReadIniInt": _of_session(value=OUT_I32, section=TEXT, key=TEXT),
    "SLWriteIniInt": _of_session(value=I32, section=TEXT, key=TEXT),
    "SLExecRS232": _of_session(command=TEXT, reply=OUT_TEXT, reply_size=I32),
    "SLExecProjCmd": _of_session(command=U8, argument=U8, result1=OUT_U8, result2=OUT_U8, result3=OUT_U8),
    "SLGetGPIOStatus": _of_session(line=I32, state=OUT_I32),
    "SLSetGPIOValue": _of_session(line=I32, value=I32),
    "SLRegisterGPIOCallback": _of_session(callback=GPIO),
    "SLRegisterGPIOHandle": _of_session(window=POINTER, message=I32),
    "SLRegisterEventhandler": _of_session(handler=EVENTS, context=POINTER),
    "SLUnregisterEventhandler": _of_session(handler=EVENTS, context=POINTER),
    "QORFringixVersion": _gives(),
}


class Function:
    """An export of the loaded library."""

    def __init__(self, library: ctypes.CDLL, name: str) -> None:
        export = EXPORTS[name]
        self.parameters = export.parameters
        self.accepts = tuple(kind.accept for kind in export.parameters.values())
        self.pointer = getattr(library, name)
        self.pointer.restype = export.result
        self.pointer.argtypes = [kind.ctype for kind in export.parameters.values()]

    def accepted(self, operation: str, arguments: tuple[Any, ...], head: str | None) -> list[Any]:
        if len(arguments) != len(self.accepts):
            raise TypeError(f"{operation} takes {', '.join(self.parameters) or 'nothing'}: {len(arguments)} arguments were given")
        try:
            return [accept(value) for accept, value in zip(self.accepts, arguments)]
        except ValueError as error:
            raise errors.BadParameterError(operation, head, self._explain(arguments, error)) from None
        except (TypeError, AttributeError) as error:
            raise TypeError(f"{operation}: {self._explain(arguments, error)}") from None

    def _explain(self, arguments: tuple[Any, ...], error: Exception) -> str:
        for (name, kind), value in zip(self.parameters.items(), arguments):
            try:
                kind.accept(value)
            except (ValueError, TypeError, AttributeError) as reason:
                return f"{name}: {reason}"
        return str(error)


_functions: dict[str, Function] = {}
_abandoned: set[int] = set()
_loading = threading.Lock()
_forked = False


def _load() -> None:
    with _loading:
        if not _functions:
            library = _library.load("DAXFringix")
            _functions.update({name: Function(library, name) for name in EXPORTS})


def _refuse_in_child() -> None:
    global _forked
    _forked = bool(_functions)


if hasattr(os, "register_at_fork"):
    os.register_at_fork(after_in_child=_refuse_in_child)


def function(operation: str) -> Function:
    """An export, with the library loaded. Raises ForkedProcessError in a child of a process that has used the library."""
    if _forked:
        raise errors.ForkedProcessError(operation)
    if not _functions:
        _load()
    return _functions[operation]


def _keep(*_: Any) -> None:
    pass


def close(handle: int, *_: Any) -> None:
    """Ends a session whose end nobody waits for."""
    _functions["SLDevFree"].pointer(handle)


def is_usable(handle: int) -> bool:
    """Whether this process may still use the session."""
    return not _forked and handle not in _abandoned


def leave(handle: int, *kept: Any) -> Callable[[], None]:
    """Gives up a session: it takes no calls from now on. What this gives closes it, and keeps alive what a call still uses."""
    _abandoned.add(handle)
    return lambda: close(handle, kept)


def _leave_call(export: Function, arguments: tuple[Any, ...]) -> Callable[[], None]:
    if "handle" in export.parameters:
        return leave(arguments[0], arguments)
    if "new_handle" in export.parameters:
        return lambda: close(arguments[-1]._obj.value, arguments)
    return lambda: _keep(arguments)


def call(operation: str, *arguments: Any, head: str | None = None) -> None:
    """Calls an export that gives a status, without the interpreter lock, and raises the exception of a status that is not success.

    On the main thread Ctrl-C ends the wait: a call that has not ended half a second later is left behind, and its session is closed.

    operation -- its name; the arguments follow as its row has them
    head      -- the head's address, for the exception
    """
    export = function(operation)
    _perform(operation, export, export.accepted(operation, arguments, head), arguments, head)


def fill(operation: str, handle: int, picture: Any, head: str) -> None:
    """As ``call``, of an export that fetches a whole picture into an array that is known to fit, in less time."""
    height, width = picture.shape
    values = (handle, picture.__array_interface__["data"][0], width, height)
    _perform(operation, function(operation), values, (handle, picture), head)


def _perform(operation: str, export: Function, values: Sequence[Any], arguments: tuple[Any, ...], head: str | None) -> None:
    if _abandoned and "handle" in export.parameters and values[0] in _abandoned:
        raise errors.UnknownDeviceError(operation, head, "Ctrl-C ended a call of this session before the head had answered")
    status = _waiting.run(export.pointer, values, lambda: _leave_call(export, arguments))
    if status != 0:
        errors.fail(operation, status, head)


def get(operation: str, ctype: Any, *arguments: Any, head: str | None = None) -> Any:
    """As ``call``, of an export whose last parameter is a pointer to its result; gives that result."""
    result = ctype()
    call(operation, *arguments, ctypes.byref(result), head=head)
    return result.value


def value(operation: str, *arguments: Any) -> Any:
    """Calls an export that gives something else than a status, and returns in no time."""
    export = function(operation)
    return export.pointer(*export.accepted(operation, arguments, None))

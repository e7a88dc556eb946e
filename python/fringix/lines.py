"""What hangs on a head: GPIO lines, a serial port, the projector."""

from __future__ import annotations

import ctypes
from typing import TYPE_CHECKING, Any

from . import _native, _pixels
from ._pixels import Pixels, Size
from .settings import Setting

if TYPE_CHECKING:
    from .head import Head


class GPIO:
    """The head's GPIO lines by their number. Lines and values are the head's.

    >>> head.gpio[2] = 1
    >>> head.gpio[2]
    1
    """

    def __init__(self, head: Head) -> None:
        self._head = head

    def __getitem__(self, line: int) -> int:
        return int(self._head._get("SLGetGPIOStatus", ctypes.c_int32, line))

    def __setitem__(self, line: int, value: int) -> None:
        self._head._call("SLSetGPIOValue", line, value)


class SerialPort:
    """The head's serial port."""

    def __init__(self, head: Head) -> None:
        self._head = head

    def command(self, text: str) -> str:
        """Passes a command on and gives the answer. Needs a head of protocol version 2500.

        >>> head.serial_port.command("ID?")
        'ID?'
        """
        reply = ctypes.create_string_buffer(_native.LONGEST_TEXT + 1)
        self._head._call("SLExecRS232", text, reply, len(reply))
        return reply.value.decode(errors="backslashreplace")


class Projector:
    """The head's projector."""

    temperature = Setting("Temperature of the projector.", unit="degC", get="SLGetProjectorTemperature")
    status = Setting("State of the projector, as the head defines it.", get="SLGetProjectorStatus")
    dmd_state = Setting("State of the mirrors, as the head defines it: 0, off, and 1, on, on documented heads.", set="SLSetDMDState")

    def __init__(self, head: Head, size: Size) -> None:
        self._head, self.size, self.address = head, size, head.address

    def _call(self, operation: str, *arguments: Any) -> None:
        self._head._call(operation, *arguments)

    def _get(self, operation: str, ctype: Any) -> Any:
        return self._head._get(operation, ctype)

    @property
    def is_connected(self) -> bool:
        return self._head.is_connected

    def command(self, command: int, argument: int = 0) -> tuple[int, int, int]:
        """Passes a command of the projector's own on, 0 to 255 with an argument of 0 to 255, and gives its three results."""
        results = [ctypes.c_uint8() for _ in range(3)]
        self._call("SLExecProjCmd", command, argument, *map(ctypes.byref, results))
        return results[0].value, results[1].value, results[2].value

    def set_mask(self, mask: Pixels, selector: int = 0) -> None:
        """Multiplies what is projected: uint8[h, w] of the projector's size. The selector's meaning is the head's. Needs 3200."""
        pixels = _pixels.plane("SLSetMask", self.address, mask)
        height, width = pixels.shape
        self._call("SLSetMask", pixels, selector, width, height)

    def clear_mask(self) -> None:
        """No answer of the head is awaited. Needs 3100."""
        self._call("SLClearMask")

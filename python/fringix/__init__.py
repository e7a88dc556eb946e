"""Structured-light 3D sensor heads in the network: pictures, patterns, measurements, events and scans.

>>> with fringix.open(simulated.address, timeout=3) as head:
...     picture = head.live()
>>> picture.shape, picture.dtype
((1024, 1280), dtype('uint8'))
"""

from __future__ import annotations

from .diagnosis import library_version, set_tracing, status_name
from .discovery import FoundHead, SelectedHead, discover, found_addresses, select_head
from .errors import (
    BadCalibrationError,
    BadParameterError,
    BadPicturesError,
    Error,
    ForkedProcessError,
    HandshakeTimeoutError,
    HeadConnectionError,
    HeadRefusedError,
    HeadSystemError,
    MeasurementFailedError,
    UnknownDeviceError,
    UnknownSequenceError,
    VersionMismatchError,
    VersionTooOldError,
)
from .events import Event, Kind
from .head import Head, open
from .sequence import Sequence
from .settings import Range

__all__ = [
    "BadCalibrationError",
    "BadParameterError",
    "BadPicturesError",
    "Error",
    "Event",
    "ForkedProcessError",
    "FoundHead",
    "HandshakeTimeoutError",
    "Head",
    "HeadConnectionError",
    "HeadRefusedError",
    "HeadSystemError",
    "Kind",
    "MeasurementFailedError",
    "Range",
    "SelectedHead",
    "Sequence",
    "UnknownDeviceError",
    "UnknownSequenceError",
    "VersionMismatchError",
    "VersionTooOldError",
    "discover",
    "found_addresses",
    "library_version",
    "open",
    "select_head",
    "set_tracing",
    "status_name",
]

"""The exports of fringix-scan with their types, as ``scan.h`` declares them."""

from __future__ import annotations

import ctypes
from ctypes import POINTER, c_char, c_char_p, c_double, c_float, c_int32, c_uint8, c_uint32, c_uint64, c_void_p
from typing import Any

from ._library import load
from .errors import fail

REASONS = 11


class SLScanPlan(ctypes.Structure):
    _fields_ = [("method", c_int32), ("projectorWidth", c_int32), ("period", c_int32), ("steps", c_int32)]


class SLScanPicture(ctypes.Structure):
    _fields_ = [("kind", c_int32), ("frequency", c_int32), ("number", c_int32)]


class SLScanOptics(ctypes.Structure):
    _fields_ = [
        ("width", c_int32),
        ("height", c_int32),
        ("fx", c_double),
        ("fy", c_double),
        ("cx", c_double),
        ("cy", c_double),
        ("distortion", c_double * 5),
        ("rotation", c_double * 9),
        ("translation", c_double * 3),
    ]


class SLScanCalibration(ctypes.Structure):
    _fields_ = [
        ("serial", c_int32),
        ("date", c_char * 12),
        ("cameraCount", c_int32),
        ("reserved", c_int32),
        ("cameras", SLScanOptics * 4),
        ("projector", SLScanOptics),
    ]


class SLScanSettings(ctypes.Structure):
    _fields_ = [
        ("threads", c_int32),
        ("saturation", c_int32),
        ("noise", c_double),
        ("noisePerLevel", c_double),
        ("periodShare", c_double),
        ("grayMargin", c_double),
        ("residual", c_double),
        ("unsteadiness", c_double),
        ("sigma", c_double),
        ("nearest", c_double),
        ("farthest", c_double),
        ("clean", c_int32),
        ("leastPatch", c_int32),
        ("edgeAngle", c_double),
        ("outlier", c_double),
    ]


class SLScanFindings(ctypes.Structure):
    _fields_ = [
        ("counts", c_uint64 * REASONS),
        ("expectedSigma", c_double),
        ("measuredNoise", c_double),
        ("flicker", c_double),
        ("flickers", c_int32),
        ("moves", c_int32),
    ]


class SLScanCloud(ctypes.Structure):
    _fields_ = [
        ("pixels", c_uint64),
        ("points", POINTER(c_float)),
        ("normals", POINTER(c_float)),
        ("sigma", POINTER(c_float)),
        ("intensity", POINTER(c_uint8)),
        ("reason", POINTER(c_uint8)),
        ("column", POINTER(c_float)),
        ("modulation", POINTER(c_float)),
        ("offset", POINTER(c_float)),
    ]


_plan, _calibration, _settings = POINTER(SLScanPlan), POINTER(SLScanCalibration), POINTER(SLScanSettings)
_cloud, _findings, _scanner = POINTER(SLScanCloud), POINTER(SLScanFindings), c_void_p

EXPORTS: dict[str, tuple[Any, list[Any]]] = {
    "SLScanVersion": (c_int32, []),
    "SLScanErrorText": (c_char_p, []),
    "SLScanPlanDefaults": (c_int32, [c_int32, c_int32, _plan]),
    "SLScanPlanPictureCount": (c_int32, [_plan, POINTER(c_int32)]),
    "SLScanPlanPicture": (c_int32, [_plan, c_int32, POINTER(SLScanPicture)]),
    "SLScanPlanLine": (c_int32, [_plan, c_int32, POINTER(c_uint8), c_uint32]),
    "SLScanCalibrationRead": (c_int32, [c_char_p, c_uint32, _calibration]),
    "SLScanCalibrationWrite": (c_int32, [_calibration, c_char_p, c_uint32, POINTER(c_uint32)]),
    "SLScanSettingsDefaults": (c_int32, [_settings]),
    "SLScannerAlloc": (c_int32, [_plan, _calibration, _settings, POINTER(_scanner)]),
    "SLScannerFree": (c_int32, [_scanner]),
    "SLScanCompute": (c_int32, [_scanner, c_int32, POINTER(POINTER(c_uint8)), c_int32, c_int32, c_int32, _cloud, _findings]),
    "SLScanAddPicture": (c_int32, [_scanner, c_int32, POINTER(c_uint8), c_int32, c_int32]),
    "SLScanFinish": (c_int32, [_scanner, c_int32, _cloud, _findings]),
    "SLScanNextExposure": (c_int32, [_scanner, c_int32]),
    "SLScanUseWindow": (c_int32, [_scanner, c_int32, c_int32, c_int32, c_int32, c_int32]),
    "SLScanForget": (c_int32, [_scanner, c_int32]),
    "SLScanGather": (c_int32, [_cloud, c_int32, _cloud, POINTER(c_uint64)]),
}


def _typed(library: ctypes.CDLL) -> ctypes.CDLL:
    for name, (result, arguments) in EXPORTS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return library


library = _typed(load("fringix-scan"))


def call(name: str, *arguments: Any) -> None:
    """Calls an export that gives a status. Raises the exception of a status that tells of a failure, with the library's own reason."""
    status = getattr(library, name)(*arguments)
    if status != 0:
        fail(name, status, reason=error_text())


def error_text() -> str:
    """What was wrong with the calling thread's last call that failed."""
    text: bytes = library.SLScanErrorText() or b""
    return text.decode("utf-8", "replace")


def version() -> tuple[int, int, int, int]:
    """The version of fringix-scan."""
    number = library.SLScanVersion() & 0xFFFFFFFF
    return number >> 24, number >> 16 & 0xFF, number >> 8 & 0xFF, number & 0xFF

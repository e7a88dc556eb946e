"""Pictures of a plan to points in millimetres."""

from __future__ import annotations

import ctypes
import dataclasses
import enum
import os
import threading
import weakref
from typing import Any, Mapping, Optional, Sequence, Tuple

import numpy
import numpy.typing

from . import _scan_native as native
from .calibration import Calibration
from .errors import BadPicturesError
from .plan import Plan

Floats = numpy.typing.NDArray[numpy.float32]
Bytes = numpy.typing.NDArray[numpy.uint8]


class Reason(enum.IntEnum):
    """Why a pixel gives no point: the first that applies."""

    POINT = 0  # it gives one
    SATURATION = 1  # too bright in a picture
    NOISE = 2  # expected deviation too large, as where no light falls
    GRAY_MARGIN = 3  # a Gray bit can be read either way, and it matters
    RESIDUAL = 4  # period number and phase contradict each other
    COLUMN = 5  # outside of the projector's picture, or within 3 columns of its border
    UNSTEADY = 6  # the steps fit no cosine, or not the white picture: something moved
    GEOMETRY = 7  # ray and column do not meet where the projector shines and depths are wanted
    EDGE = 8  # beside a depth step
    OUTLIER = 9  # stands out of its neighbours
    COMPONENT = 10  # in a patch of few points


@dataclasses.dataclass(frozen=True)
class Settings:
    """What a pixel has to fulfil to give a point. Whatever is not given is as the library has it.

    threads         -- 1 to 256; the machine's, up to 16, unless given. The points do not depend on it
    saturation      -- grey levels from here on count as too bright, 1 to 256; 256: none
    noise           -- standard deviation of a pixel in the dark, in grey levels, 0 to 256; where pictures scatter more, that counts
    noise_per_level -- what each grey level adds to its variance, 0 to 256; the same holds
    period_share    -- largest expected standard deviation of the phase, in periods, above 0
    gray_margin     -- in standard deviations, above 0: a Gray bit closer to the middle of white and black is uncertain
    residual        -- largest disagreement of period number and phase, in periods, above 0; below 0.5 to have an effect
    unsteadiness    -- largest misfit of the steps beyond noise, in proportion to the modulation, above 0
    sigma           -- largest expected standard deviation of a point, in mm, above 0
    nearest, farthest -- depths that are wanted, in mm: z in the camera's frame
    clean           -- 0: the next three have no effect
    least_patch     -- points of the smallest patch that stays; 0: no limit
    edge_angle      -- between normal and ray, in degrees, up to 90: a steeper step to a neighbour is an edge; 90: no limit
    outlier         -- largest distance from the neighbours' middle, in standard deviations; 0: no limit
    """

    threads: Optional[int] = None
    saturation: Optional[int] = None
    noise: Optional[float] = None
    noise_per_level: Optional[float] = None
    period_share: Optional[float] = None
    gray_margin: Optional[float] = None
    residual: Optional[float] = None
    unsteadiness: Optional[float] = None
    sigma: Optional[float] = None
    nearest: Optional[float] = None
    farthest: Optional[float] = None
    clean: Optional[int] = None
    least_patch: Optional[int] = None
    edge_angle: Optional[float] = None
    outlier: Optional[float] = None

    def record(self) -> native.SLScanSettings:
        """The settings as the C interface has them."""
        record = native.SLScanSettings()
        native.call("SLScanSettingsDefaults", record)
        record.threads = max(1, min(os.cpu_count() or 1, 16))
        for name, value in dataclasses.asdict(self).items():
            if value is not None:
                setattr(record, _native_name(name), value)
        return record


def _native_name(name: str) -> str:
    first, *others = name.split("_")
    return first + "".join(word.capitalize() for word in others)


@dataclasses.dataclass(frozen=True)
class Findings:
    """What the pictures tell of the scan.

    counts         -- pixels by reason; ``counts[Reason.POINT]`` are the points
    expected_sigma -- root of the mean square of the points' sigma, in mm
    measured_noise -- of the grey levels, rounding included, by the scatter of the steps; 0 with too few steps to tell
    flicker        -- largest deviation of the light in a step from the mean of all, as a share
    flickers       -- by more than 0.01
    moves          -- more than 0.2 % of the lit pixels are unsteady or contradict themselves
    """

    counts: Mapping[Reason, int]
    expected_sigma: float
    measured_noise: float
    flicker: float
    flickers: bool
    moves: bool

    @property
    def points(self) -> int:
        return self.counts[Reason.POINT]

    @classmethod
    def from_record(cls, record: native.SLScanFindings) -> Findings:
        counts = {reason: record.counts[reason] for reason in Reason}
        return cls(counts, record.expectedSigma, record.measuredNoise, record.flicker, bool(record.flickers), bool(record.moves))


@dataclasses.dataclass(frozen=True, eq=False)
class Cloud:
    """What a camera gives, an entry for each of its pixels.

    points     -- float32[h, w, 3]: x, y, z in mm in the frame of camera 0; NaN where there is no point
    normals    -- float32[h, w, 3]: unit vectors towards the camera; NaN where there is none
    sigma      -- float32[h, w]: expected standard deviation of the point, along the camera's ray, in mm; look at the reason
    intensity  -- uint8[h, w]: level in the white picture
    reason     -- uint8[h, w]: a Reason
    column     -- float32[h, w]: of the projector, as far as it can be told; look at the reason
    modulation -- float32[h, w]: amplitude of the light's cosine in grey levels
    offset     -- float32[h, w]: and its mean
    findings   -- Findings
    """

    points: Floats
    normals: Floats
    sigma: Floats
    intensity: Bytes
    reason: Bytes
    column: Floats
    modulation: Floats
    offset: Floats
    findings: Findings

    @property
    def valid(self) -> numpy.typing.NDArray[numpy.bool_]:
        """bool[h, w]: which pixels give a point."""
        return numpy.asarray(numpy.isfinite(self.points[..., 0]))


_ARRAYS = ("points", "normals", "sigma", "intensity", "reason", "column", "modulation", "offset")


class _Buffers:
    """Memory for a cloud, before it is filled."""

    def __init__(self, *shape: int) -> None:
        self.arrays = {name: numpy.empty(*_shape_and_type(name, shape)) for name in _ARRAYS}
        self.findings = native.SLScanFindings()
        self.record = _record_of(self.arrays)

    def cloud(self) -> Cloud:
        return Cloud(**self.arrays, findings=Findings.from_record(self.findings))


def _shape_and_type(name: str, shape: Tuple[int, ...]) -> Tuple[Tuple[int, ...], Any]:
    return (*shape, 3) if name in ("points", "normals") else shape, numpy.uint8 if name in ("intensity", "reason") else numpy.float32


def _record_of(arrays: Mapping[str, Any]) -> native.SLScanCloud:
    record = native.SLScanCloud(pixels=arrays["sigma"].size)
    for name, kind in native.SLScanCloud._fields_[1:]:
        setattr(record, name, arrays[name].ctypes.data_as(kind))
    return record


def _gray(picture: Any) -> Bytes:
    array = numpy.asarray(picture)
    if array.ndim != 2 or array.dtype != numpy.uint8:
        raise TypeError(f"a picture is uint8[h, w], and this one is {array.dtype}{list(array.shape)}")
    return numpy.ascontiguousarray(array)


def _pixels(picture: Bytes) -> Any:
    return picture.ctypes.data_as(ctypes.POINTER(ctypes.c_uint8))


class Scanner:
    """Makes points of pictures: all at once with ``compute``, or one at a time with ``add`` and ``finish``.

    Settings are given by their names, as Settings describes them. A scanner may be used by several threads, one after the other.
    Raises BadParameterError for a plan or a setting that is out of range, BadCalibrationError for what cannot be that of a head.

    >>> with Scanner(Plan.defaults(1280), calibration, least_patch=20) as scanner:  # doctest: +SKIP
    ...     cloud = scanner.compute(pictures)
    """

    def __init__(self, plan: Plan, calibration: Calibration, **settings: float) -> None:
        handle = ctypes.c_void_p()
        record = Settings(**settings).record()  # type: ignore[arg-type]
        native.call("SLScannerAlloc", plan.record(), calibration.record(), record, handle)
        self._handle = handle
        self._free = weakref.finalize(self, native.library.SLScannerFree, handle)
        self._lock = threading.Lock()
        self._sizes = [(camera.height, camera.width) for camera in calibration.cameras]

    def __enter__(self) -> Scanner:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Frees its memory. Harmless when that was done before."""
        with self._lock:
            self._free()

    def _call(self, name: str, *arguments: Any) -> None:
        with self._lock:
            if not self._free.alive:
                raise ValueError("the scanner is closed")
            native.call(name, self._handle, *arguments)

    def _buffers(self, camera: int) -> _Buffers:
        height, width = self._sizes[camera] if 0 <= camera < len(self._sizes) else (1, 1)
        return _Buffers(height, width)

    def compute(self, pictures: Sequence[Any], camera: int = 0) -> Cloud:
        """Points of all pictures of a camera, each ``uint8[h, w]``, in the plan's order. Raises BadPicturesError."""
        grays = [_gray(picture) for picture in pictures]
        if len({gray.shape for gray in grays}) > 1:
            raise ValueError("the pictures are of different sizes")
        height, width = grays[0].shape if grays else (0, 0)
        buffers = self._buffers(camera)
        rows = (ctypes.POINTER(ctypes.c_uint8) * max(len(grays), 1))(*map(_pixels, grays))
        self._call("SLScanCompute", camera, rows, len(grays), width, height, buffers.record, buffers.findings)
        return buffers.cloud()

    def add(self, picture: Any, camera: int = 0) -> None:
        """The next picture of a camera, ``uint8[h, w]``, in the plan's order. Raises BadPicturesError."""
        gray = _gray(picture)
        self._call("SLScanAddPicture", camera, _pixels(gray), gray.shape[1], gray.shape[0])

    def next_exposure(self, camera: int = 0) -> None:
        """Says that the plan's pictures are all there, and that they come once more in another exposure; up to 16 of them."""
        self._call("SLScanNextExposure", camera)

    def use_window(self, x: int, y: int, width: int, height: int, camera: int = 0) -> None:
        """From now on pictures and clouds are this part of what the camera sees, in pixels. Pictures that were added are forgotten."""
        self._call("SLScanUseWindow", camera, x, y, width, height)
        self._sizes[camera] = (height, width)

    def forget(self, camera: int = 0) -> None:
        """Forgets the pictures of a camera that were added."""
        self._call("SLScanForget", camera)

    def finish(self, camera: int = 0, accept_none: bool = False) -> Cloud:
        """The points of what was added.

        Raises BadPicturesError when pictures are missing or, unless ``accept_none``, no pixel gives a point.
        """
        buffers = self._buffers(camera)
        try:
            self._call("SLScanFinish", camera, buffers.record, buffers.findings)
        except BadPicturesError:
            if not accept_none or sum(buffers.findings.counts) == 0:
                raise
        return buffers.cloud()


def gather(clouds: Sequence[Cloud]) -> Cloud:
    """The points of several cameras, one after the other without gaps: arrays of a single dimension. Its findings count the points only."""
    records = (native.SLScanCloud * max(len(clouds), 1))(*[_record_of(vars(cloud)) for cloud in clouds])
    count = ctypes.c_uint64()
    buffers = _Buffers(sum(cloud.findings.points for cloud in clouds))
    native.call("SLScanGather", records, len(clouds), buffers.record, count)
    buffers.findings.counts[Reason.POINT] = count.value
    return buffers.cloud()

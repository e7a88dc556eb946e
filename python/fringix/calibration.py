"""How cameras and projector of a head see: ``calibration.json`` as numpy arrays, and back.

Lengths are in millimetres, pixel centres have integer coordinates, x points to the right, y down, z forward.
"""

from __future__ import annotations

import ctypes
import dataclasses
import pathlib
from typing import Any, Tuple

import numpy
import numpy.typing

from . import _scan_native as native
from ._files import PathLike, write_file
from .errors import BadCalibrationError, fail

Floats = numpy.typing.NDArray[numpy.float64]


def _floats(values: Any, *shape: int) -> Floats:
    array = numpy.array(values, numpy.float64)
    if array.shape != shape:
        raise ValueError(f"an array of shape {shape} is wanted, and this one has {array.shape}")
    array.setflags(write=False)
    return array


@dataclasses.dataclass(frozen=True, eq=False)
class Optics:
    """A camera, or the projector: a camera that emits light.

    width, height  -- pixels
    fx, fy, cx, cy -- focal lengths and principal point in pixels
    distortion     -- float64[5]: k1, k2, p1, p2, k3
    rotation, translation -- float64[3, 3] and float64[3], in mm: a point X of the reference frame, that of camera 0, is at
                      ``rotation @ X + translation`` in the frame of these optics
    """

    width: int
    height: int
    fx: float
    fy: float
    cx: float
    cy: float
    distortion: Floats
    rotation: Floats = dataclasses.field(default_factory=lambda: numpy.eye(3))
    translation: Floats = dataclasses.field(default_factory=lambda: numpy.zeros(3))

    def __post_init__(self) -> None:
        for name, shape in (("distortion", (5,)), ("rotation", (3, 3)), ("translation", (3,))):
            object.__setattr__(self, name, _floats(getattr(self, name), *shape))

    @property
    def matrix(self) -> Floats:
        """The camera matrix, float64[3, 3]."""
        return numpy.array([[self.fx, 0, self.cx], [0, self.fy, self.cy], [0, 0, 1]])

    @property
    def centre(self) -> Floats:
        """The pinhole in the reference frame, float64[3] in mm."""
        return -self.rotation.T @ self.translation

    def project(self, points: Any) -> Floats:
        """Where points of the reference frame, ``[..., 3]`` in mm, are seen: float64[..., 2], column and row in pixels."""
        own = numpy.asarray(points, numpy.float64) @ self.rotation.T + self.translation
        x, y = own[..., 0] / own[..., 2], own[..., 1] / own[..., 2]
        k1, k2, p1, p2, k3 = self.distortion
        r2 = x * x + y * y
        radial = 1 + r2 * (k1 + r2 * (k2 + r2 * k3))
        seen_x = x * radial + 2 * p1 * x * y + p2 * (r2 + 2 * x * x)
        seen_y = y * radial + p1 * (r2 + 2 * y * y) + 2 * p2 * x * y
        return numpy.stack([self.fx * seen_x + self.cx, self.fy * seen_y + self.cy], axis=-1)

    @classmethod
    def from_record(cls, record: native.SLScanOptics) -> Optics:
        rotation = numpy.reshape(list(record.rotation), (3, 3))
        return cls(
            record.width,
            record.height,
            record.fx,
            record.fy,
            record.cx,
            record.cy,
            numpy.array(list(record.distortion)),
            rotation,
            numpy.array(list(record.translation)),
        )

    def record(self) -> native.SLScanOptics:
        """The optics as the C interface has them."""
        record = native.SLScanOptics(self.width, self.height, self.fx, self.fy, self.cx, self.cy)
        record.distortion[:] = self.distortion.tolist()
        record.rotation[:] = self.rotation.ravel().tolist()
        record.translation[:] = self.translation.tolist()
        return record


@dataclasses.dataclass(frozen=True, eq=False)
class Calibration:
    """The calibration of a head: 1 to 4 cameras, whose first is the reference, and the projector.

    serial -- of the head
    date   -- day of the calibration, ``"YYYY-MM-DD"``
    """

    serial: int
    date: str
    cameras: Tuple[Optics, ...]
    projector: Optics

    @classmethod
    def parse(cls, text: str | bytes) -> Calibration:
        """From the text of a ``calibration.json``. Raises BadCalibrationError with what is wrong and where."""
        content = text.encode() if isinstance(text, str) else bytes(text)
        record = native.SLScanCalibration()
        native.call("SLScanCalibrationRead", content, len(content), record)
        return cls.from_record(record)

    @classmethod
    def read(cls, path: PathLike) -> Calibration:
        """From a file. Raises OSError when it cannot be read, BadCalibrationError with what is wrong and where."""
        return cls.parse(pathlib.Path(path).read_bytes())

    @classmethod
    def from_record(cls, record: native.SLScanCalibration) -> Calibration:
        cameras = tuple(Optics.from_record(record.cameras[index]) for index in range(record.cameraCount))
        return cls(record.serial, record.date.decode(), cameras, Optics.from_record(record.projector))

    def record(self) -> native.SLScanCalibration:
        """The calibration as the C interface has it. Raises BadCalibrationError when it has not 1 to 4 cameras or no date."""
        record = native.SLScanCalibration(serial=self.serial, cameraCount=len(self.cameras), projector=self.projector.record())
        if not 1 <= len(self.cameras) <= len(record.cameras):
            raise BadCalibrationError("Calibration", reason=f"{len(self.cameras)} cameras; 1 to {len(record.cameras)} are possible")
        if len(self.date.encode()) > 10:
            raise BadCalibrationError("Calibration", reason=f'the date "{self.date}" is not of the form YYYY-MM-DD')
        record.date = self.date.encode()
        for index, camera in enumerate(self.cameras):
            record.cameras[index] = camera.record()
        return record

    def text(self) -> str:
        """The text of its ``calibration.json``, for ``head.data["calibration.json"]``. Raises BadCalibrationError for what is no head."""
        record, length = self.record(), ctypes.c_uint32()
        status = native.library.SLScanCalibrationWrite(record, None, 0, length)
        if status != 0 and length.value == 0:
            fail("SLScanCalibrationWrite", status, reason=native.error_text())
        text = ctypes.create_string_buffer(length.value + 1)
        native.call("SLScanCalibrationWrite", record, text, len(text), length)
        return text.value.decode()

    def save(self, path: PathLike) -> None:
        """Writes ``calibration.json``: whole, or not at all."""
        write_file(path, self.text().encode())

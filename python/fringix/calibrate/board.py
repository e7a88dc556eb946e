"""A checkerboard, and where its corners are in a picture."""

from __future__ import annotations

import dataclasses
import importlib
from typing import Any, Optional

import numpy
import numpy.typing

from .corner_fit import Floats, fit

_SEARCH_WIDTH = 420  # pixels in which a board is found quickly; its corners are then refined in the whole picture


def opencv() -> Any:
    """OpenCV. Raises ImportError, which says how to get it."""
    try:
        return importlib.import_module("cv2")
    except ImportError as error:
        raise ImportError("a calibration needs OpenCV: pip install fringix[calibrate], or Debian's python3-opencv") from error


@dataclasses.dataclass(frozen=True)
class Board:
    """A flat checkerboard of ``columns`` x ``rows`` squares, 4 or more each, with sides of ``square`` mm.

    Its frame: x along the columns, y along the rows, z away from the viewer; the origin is the first corner where four squares meet.
    """

    columns: int
    rows: int
    square: float

    def __post_init__(self) -> None:
        if min(self.columns, self.rows) < 4 or not 0 < self.square < 1e4:
            raise ValueError(f"a board has 4 x 4 squares or more with sides above 0 mm, and not {self}")

    @property
    def corners(self) -> Floats:
        """Where four squares meet, float64[(columns - 1) * (rows - 1), 2] in mm, row by row."""
        y, x = numpy.mgrid[: self.rows - 1, : self.columns - 1]
        return numpy.asarray(self.square * numpy.stack([x.ravel(), y.ravel()], axis=1))

    def find(self, picture: numpy.typing.NDArray[numpy.uint8]) -> Optional[Floats]:
        """The corners in a picture, uint8[h, w], as float64[n, 2]: column and row in pixels; None when they are not all there.

        Which of the board's ends comes first is open: they may be in the reverse order.
        """
        cv2 = opencv()
        for width, flags in ((_SEARCH_WIDTH, 0), (_SEARCH_WIDTH, cv2.CALIB_CB_EXHAUSTIVE), (2 * _SEARCH_WIDTH, cv2.CALIB_CB_EXHAUSTIVE)):
            scale = max(picture.shape[1] / width, 1.0)
            size = (round(picture.shape[1] / scale), round(picture.shape[0] / scale))
            found, corners = cv2.findChessboardCornersSB(
                cv2.resize(picture, size, interpolation=cv2.INTER_AREA), (self.columns - 1, self.rows - 1), flags=flags
            )
            if found:
                factors = numpy.array(picture.shape[::-1]) / size
                return fit(picture, ((corners.reshape(-1, 2) + 0.5) * factors - 0.5).reshape(self.rows - 1, self.columns - 1, 2))
        return None

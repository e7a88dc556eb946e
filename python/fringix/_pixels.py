"""Arrays of pixels: made for pictures, checked when they are given."""

from __future__ import annotations

from typing import Any, NamedTuple, Sequence

import numpy as np
import numpy.typing as npt

from ._native import describe
from .errors import BadParameterError

Pixels = npt.NDArray[np.uint8]


class Size(NamedTuple):
    """A size in pixels. A picture of this size is an array of the shape (height, width)."""

    width: int
    height: int


class Region(NamedTuple):
    """A part of a picture, in pixels from its top left corner."""

    x: int
    y: int
    width: int
    height: int


def region_of(operation: str, head: str, roi: Sequence[int], camera: Size) -> Region:
    if len(roi) != 4:
        raise BadParameterError(operation, head, f"a region is (x, y, width, height), not {tuple(roi)}")
    region = Region(*roi)
    if min(region) < 0 or region.x + region.width > camera.width or region.y + region.height > camera.height:
        raise BadParameterError(operation, head, f"{region} is not inside the camera's {camera.width} x {camera.height} pixels")
    return region


def reduced(operation: str, head: str, size: Size, factor: int) -> Size:
    if factor < 1 or size.width % factor or size.height % factor:
        raise BadParameterError(operation, head, f"{factor} does not divide {size.width} and {size.height}")
    return Size(size.width // factor, size.height // factor)


def picture_for(operation: str, head: str, size: Size, out: Pixels | None) -> Pixels:
    """A new picture of a size, or the given one when a picture of this size can be written into it."""
    shape = (size.height, size.width)
    if out is None:
        return np.empty(shape, np.uint8)
    _require_uint8(operation, "out", out)
    if out.shape != shape or not out.flags.c_contiguous or not out.flags.writeable:
        needed = f"out has to be a contiguous uint8{list(shape)} that can be written to"
        raise BadParameterError(operation, head, f"{needed}, not {describe(out)}{'' if out.flags.writeable else ', read only'}")
    return out


def _require_uint8(operation: str, name: str, array: Any) -> None:
    if not isinstance(array, np.ndarray) or array.dtype != np.uint8:
        raise TypeError(f"{operation}: {name} has to be an array of uint8, not {describe(array)}")


def projector_image(operation: str, head: str, image: Any, size: Size, exactly: bool) -> Pixels:
    """Pixels of 24 bits, row by row, from uint8[h, w, 3] or the grey uint8[h, w], of the projector's size or at most that."""
    _require_uint8(operation, "an image", image)
    if image.ndim not in (2, 3) or (image.ndim == 3 and image.shape[2] != 3):
        raise BadParameterError(operation, head, f"an image has the shape (h, w, 3) or (h, w), not {image.shape}")
    height, width = image.shape[:2]
    fits = (width, height) == size if exactly else 1 <= width <= size.width and 1 <= height <= size.height
    if not fits:
        limit = "of the projector's size" if exactly else "at most as large as the projector"
        raise BadParameterError(operation, head, f"an image is {limit}, {size.width} x {size.height}, not {width} x {height}")
    return np.ascontiguousarray(image if image.ndim == 3 else np.repeat(image[:, :, np.newaxis], 3, axis=2))


def pixel_row(operation: str, head: str, pixels: Any, length: int) -> Pixels:
    """A line or column: uint8[length], or uint8[length, 3]."""
    _require_uint8(operation, "a line or column", pixels)
    if pixels.shape not in ((length,), (length, 3)):
        raise BadParameterError(operation, head, f"the projector's has the shape ({length},) or ({length}, 3), not {pixels.shape}")
    return np.ascontiguousarray(pixels)


def plane(operation: str, head: str, mask: Any) -> Pixels:
    """A mask: uint8[h, w]."""
    _require_uint8(operation, "a mask", mask)
    if mask.ndim != 2 or 0 in mask.shape:
        raise BadParameterError(operation, head, f"a mask has the shape (h, w), not {mask.shape}")
    return np.ascontiguousarray(mask)

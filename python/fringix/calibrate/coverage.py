"""A picture of where in the cameras' pictures the board was."""

from __future__ import annotations

import colorsys

import numpy
import numpy.typing

from .._files import PathLike, write_file
from .board import opencv
from .measurements import Measurements

_WIDTH = 480
_GAP = 8
_GROUND, _FIELD = 24, 56  # levels of what was never and what was reached

Picture = numpy.typing.NDArray[numpy.uint8]


def draw_coverage(measured: Measurements) -> Picture:
    """uint8[h, w, 3], red, green, blue: cameras side by side. Corners have a colour for each pose, fields that have some are lighter."""
    panels = [_panel(measured, camera) for camera in range(len(measured.cameras))]
    gap = numpy.full((panels[0].shape[0], _GAP, 3), 255, numpy.uint8)
    parts = [part for panel in panels for part in (panel, gap)]
    return numpy.concatenate(parts[:-1], axis=1)


def _panel(measured: Measurements, camera: int) -> Picture:
    cv2 = opencv()
    width, height = measured.sizes[camera]
    scale = _WIDTH / width
    panel = numpy.full((round(height * scale), _WIDTH, 3), _GROUND, numpy.uint8)
    corners = numpy.concatenate([seen.corners for seen in measured.cameras[camera]])
    for column, row in numpy.unique(numpy.clip(corners / (width, height) * 8, 0, 7).astype(int), axis=0):
        rows, columns = (slice(at * side // 8 + 1, (at + 1) * side // 8) for at, side in zip((row, column), panel.shape[:2]))
        panel[rows, columns] = _FIELD
    for pose, seen in enumerate(measured.cameras[camera]):
        for x, y in numpy.rint(seen.corners * scale).astype(int).tolist():
            cv2.circle(panel, (x, y), 2, _colour(pose, len(measured.names)), -1)
    return panel


def _colour(pose: int, poses: int) -> "tuple[int, int, int]":
    red, green, blue = colorsys.hsv_to_rgb(pose / poses, 0.8, 1)
    return round(255 * red), round(255 * green), round(255 * blue)


def save_picture(picture: Picture, path: PathLike) -> None:
    """Writes a picture as PNG: whole, or not at all."""
    cv2 = opencv()
    _, content = cv2.imencode(".png", cv2.cvtColor(picture, cv2.COLOR_RGB2BGR))
    write_file(path, content.tobytes())

"""Calibration of a head with a checkerboard. It needs OpenCV: the extra ``[calibrate]``, or Debian's python3-opencv.

::

    board = Board(columns=12, rows=9, square=20)
    with fringix.open("192.168.0.10") as head:
        views = [take_view(head, f"pose {number}") for number in asked_for(range(12))]
        result = calibrate(views, board)
    result.calibration.save("calibration.json")

``python -m fringix.calibrate --help`` tells of the same as a program.
"""

from __future__ import annotations

from .board import Board
from .coverage import save_picture
from .refusal import CalibrationRefused
from .result import Residuals, Result, calibrate
from .sight import Sight, View, take_view

__all__ = ["Board", "CalibrationRefused", "Residuals", "Result", "Sight", "View", "calibrate", "save_picture", "take_view"]

"""From views of a board to the calibration of a head."""

from __future__ import annotations

import dataclasses
import datetime
from typing import Mapping, Optional, Sequence, Tuple

import numpy

from ..calibration import Calibration
from ..errors import BadCalibrationError
from . import checks
from .adjust import Solution, solve
from .board import Board
from .coverage import Picture, draw_coverage
from .measurements import measure
from .refusal import CalibrationRefused
from .sight import View


@dataclasses.dataclass(frozen=True, eq=False)
class Residuals:
    """Root mean squares of what is left: of the board's corners in pixels of the cameras, of the light in pixels of the projector."""

    corners: float
    light: float


@dataclasses.dataclass(frozen=True, eq=False)
class Result:
    """What comes out of a calibration.

    calibration    -- Calibration
    residuals      -- of all poses
    by_pose        -- of each pose that was used, by its name
    expected_error -- mm by which chance moves points where the board was, at worst. A board that is bent, or squares of another size,
                      cannot be seen in the pictures
    warnings       -- what could be better, and why poses were left out
    coverage       -- uint8[h, w, 3]: where in the cameras' pictures the board was
    """

    calibration: Calibration
    residuals: Residuals
    by_pose: Mapping[str, Residuals]
    expected_error: float
    warnings: Tuple[str, ...]
    coverage: Picture


def calibrate(views: Sequence[View], board: Board, *, date: Optional[str] = None) -> Result:
    """Finds lenses and poses of cameras and projector with which all views show one flat board.

    views -- 4 or more, better 12, each from ``take_view`` or ``View.read``, with other poses of the board
    date  -- "YYYY-MM-DD", today's unless given

    Raises CalibrationRefused when the views are no base for one, with the reason.
    """
    _require_alike(views)
    measured = measure(board, views)
    checks.require_poses(measured)
    try:
        solution = solve(measured)
    except numpy.linalg.LinAlgError as error:
        raise CalibrationRefused(f"no calibration fits these poses ({error}): tilt the board by 20 to 40 degrees to all sides") from error
    checks.require_fit(solution)
    return _result_of(solution, _calibration_of(solution, views[0].serial, date or datetime.date.today().isoformat()))


def _require_alike(views: Sequence[View]) -> None:
    if not views:
        raise CalibrationRefused("there is no view of the board")
    shapes = [(view.serial, view.projector, *(sight.white.shape for sight in view.sights)) for view in views]
    odd = [view.name for view, shape in zip(views, shapes) if shape != shapes[0] or not view.sights]
    if odd:
        raise CalibrationRefused(f"{', '.join(odd)}: of another head, with other cameras or sizes, than in {views[0].name}")


def _calibration_of(solution: Solution, serial: int, date: str) -> Calibration:
    *cameras, projector = (solution.model.optics(solution.numbers, device) for device in range(solution.model.devices))
    calibration = Calibration(serial, date, tuple(cameras), projector)
    try:
        calibration.text()
    except BadCalibrationError as error:
        raise CalibrationRefused(f"what fits these poses best is no head: {error.reason}") from error
    return calibration


def _result_of(solution: Solution, calibration: Calibration) -> Result:
    measured = solution.model.measured
    by_pose = zip(measured.names, *checks.deviations_by_pose(solution))
    return Result(
        calibration,
        Residuals(solution.corner, solution.cell),
        {name: Residuals(corners, light) for name, corners, light in by_pose},
        checks.expected_error(solution),
        tuple(checks.warnings_of(solution)),
        draw_coverage(measured),
    )

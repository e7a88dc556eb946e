"""Whether poses of a board are enough to calibrate with, and how good the result can be."""

from __future__ import annotations

from typing import List

import numpy

from .adjust import Solution
from .board import opencv
from .corner_fit import Floats
from .measurements import Measurements
from .model import show
from .refusal import CalibrationRefused

LEAST_POSES = 4
_LEAST_SPREAD = 10.0  # degrees between the two poses that differ most
_GOOD_SPREAD = 25.0
_LEAST_COVERED = 0.5  # of each camera's picture
_GOOD_ERROR = 0.05  # mm
_LARGEST_ERROR = 0.2
_LARGEST_DEVIATION = 2.0  # pixels
_ODD_POSE = 4.0  # times the deviation of the pose in the middle


def require_poses(measured: Measurements) -> None:
    """Raises CalibrationRefused when there are too few, or when they are too alike to tell lens and distance apart."""
    if len(measured.names) < LEAST_POSES:
        missing = "".join(f"\n  {why}" for why in measured.left_out)
        poses = "1 pose" if len(measured.names) == 1 else f"{len(measured.names)} poses"
        raise CalibrationRefused(f"the whole board is seen in {poses} only, and {LEAST_POSES} at least are needed, better 12.{missing}")
    spread = spread_of(measured)
    if spread < _LEAST_SPREAD:
        raise CalibrationRefused(
            f"the poses are too alike: the board is turned by {spread:.0f} degrees at most from one to the other, and "
            f"{_LEAST_SPREAD:.0f} at least are needed. Tilt it to the left, right, top and bottom, by 20 to 40 degrees."
        )


def spread_of(measured: Measurements) -> float:
    """The largest angle between two poses of the board, in degrees, with a lens that is roughly guessed: by the board's vanishing lines."""
    width, height = measured.sizes[0]
    guess = numpy.array([[1.3 * width, 0, width / 2], [0, 1.3 * width, height / 2], [0, 0, 1]])
    normals = []
    for seen in measured.cameras[0]:
        matrix, _ = opencv().findHomography(measured.board.corners, seen.corners)
        normal = guess.T @ numpy.linalg.inv(matrix)[2]
        normals.append(normal / numpy.linalg.norm(normal))
    alike = numpy.abs(numpy.array(normals) @ numpy.array(normals).T)
    return float(numpy.degrees(numpy.arccos(numpy.clip(alike.min(), 0, 1))))


def covered_of(measured: Measurements, camera: int) -> float:
    """The share of a camera's picture in which the corners of all poses lie, by a grid of 8 x 8 fields."""
    corners = numpy.concatenate([seen.corners for seen in measured.cameras[camera]])
    fields = numpy.clip(corners / measured.sizes[camera] * 8, 0, 7.99).astype(int)
    return len(numpy.unique(fields, axis=0)) / 64


def require_fit(solution: Solution) -> None:
    """Raises CalibrationRefused when the pictures do not fit one board in front of one head."""
    if not solution.corner < _LARGEST_DEVIATION:
        raise CalibrationRefused(
            f"the corners deviate by {solution.corner:.1f} pixels from what any calibration explains, more than {_LARGEST_DEVIATION:.0f}. "
            "Is the board flat, does it stand still while its pictures are taken, are its squares as many as was said?"
        )
    error = expected_error(solution)
    if not error < _LARGEST_ERROR:
        raise CalibrationRefused(
            f"with these poses points are uncertain by {error:.1f} mm. Take more, tilted by 20 to 40 degrees to all sides, near and far."
        )


def expected_error(solution: Solution) -> float:
    """How far the calibration's own uncertainty moves a point, in mm: the worst of the places where the board was.

    Only chance is counted: a board that is not flat, or squares of another size, are not to be seen in the pictures.
    """
    model, numbers = solution.model, solution.numbers
    rotations, shifts = model.boards(numbers)
    points = (numpy.einsum("pij,nj->pni", rotations, model.targets[:: max(len(model.targets) // 400, 1)]) + shifts[:, None]).reshape(-1, 3)
    points = points[:: max(len(points) // 200, 1)]
    here = _seen(solution, numbers, points)
    spatial = numpy.stack([(_seen(solution, numbers, points + step) - here) / 1e-3 for step in 1e-3 * numpy.eye(3)], -1)
    steps = numpy.abs(numbers[: model.shared]) * 1e-6 + 1e-7
    moved = [numbers + step * (numpy.arange(len(numbers)) == i) for i, step in enumerate(steps)]
    by_number = numpy.stack([(_seen(solution, m, points) - here) / step for m, step in zip(moved, steps)], -1)
    influence = numpy.linalg.solve(spatial, by_number)
    covariance = solution.covariance[: model.shared, : model.shared]
    variances = numpy.einsum("nij,jk,nik->n", influence, covariance, influence)
    return float(numpy.sqrt(max(variances.max(), 0)))


def _seen(solution: Solution, numbers: Floats, points: Floats) -> Floats:
    """What makes a point: column and row in camera 0, and the projector's column."""
    model = solution.model
    turn, shift = model.pose(numbers, model.devices - 1)
    projector = show(model.lens(numbers, model.devices - 1), points @ turn.T + shift)
    return numpy.concatenate([show(model.lens(numbers, 0), points), projector[:, :1]], axis=1)


def warnings_of(solution: Solution) -> List[str]:
    """What could be better."""
    measured, said = solution.model.measured, list(solution.model.measured.left_out)
    spread, error = spread_of(measured), expected_error(solution)
    if spread < _GOOD_SPREAD:
        said.append(f"the poses are alike: the board is turned by {spread:.0f} degrees at most; tilt it by 20 to 40 degrees to all sides")
    for camera in range(len(measured.cameras)):
        covered = covered_of(measured, camera)
        if covered < _LEAST_COVERED:
            said.append(f"camera {camera}: the board was in {100 * covered:.0f} % of the picture only; points beyond are less certain")
    if error > _GOOD_ERROR:
        said.append(f"points are uncertain by {error:.2f} mm: take more poses")
    return said + _odd_poses(solution)


def _odd_poses(solution: Solution) -> List[str]:
    _, cells = deviations_by_pose(solution)
    limit = _ODD_POSE * float(numpy.median(cells))
    odd = [name for name, size in zip(solution.model.measured.names, cells) if size > limit]
    return [f"{name} fits the others badly: did the board move, or bend? Leave it out, or take it again" for name in odd]


def deviations_by_pose(solution: Solution) -> "tuple[list[float], list[float]]":
    """Root mean squares of each pose: of the corners, in pixels of the cameras, and of the cells, in pixels of the projector."""
    corners, cells = solution.model.deviations(solution.numbers)
    return (
        [_over(corners, solution.model.pose_of_corner, pose) for pose in range(solution.model.poses)],
        [_over(cells, solution.model.pose_of_cell, pose) for pose in range(solution.model.poses)],
    )


def _over(deviations: List[Floats], owners: List[numpy.typing.NDArray[numpy.int64]], pose: int) -> float:
    own = numpy.concatenate([part[owner == pose] for part, owner in zip(deviations, owners)])
    return float(numpy.sqrt(numpy.mean(own**2))) if own.size else 0.0

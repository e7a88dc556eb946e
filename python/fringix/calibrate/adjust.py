"""The numbers with the least deviations: a start by OpenCV, then steps of Levenberg and Marquardt."""

from __future__ import annotations

import dataclasses
from typing import List, Optional, Tuple

import numpy

from .board import opencv
from .corner_fit import Floats
from .measurements import Measurements, Seen
from .model import POSE, Model, rotations

_MOST_STEPS = 40
_LEAST_DEVIATION = 3e-4  # pixels: nothing counts as more exact
_OUTLIER = 6  # times the deviation that is in the middle of a pose's
_FEW_CELLS = 10  # of so many one, as long as the numbers are far from the best ones
_STEPS = {"focal": 1e-2, "centre": 1e-2, "lens": 1e-5, "turn": 1e-6, "shift": 1e-3}  # of the numeric derivatives


@dataclasses.dataclass(frozen=True, eq=False)
class Solution:
    """numbers -- of the model; corner, cell -- root mean square deviations in pixels; covariance -- of the numbers."""

    model: Model
    numbers: Floats
    corner: float
    cell: float
    covariance: Floats


def start(measured: Measurements) -> Floats:
    """First numbers, from each device alone and from the devices in pairs."""
    devices = [[seen.corners for seen in camera] for camera in measured.cameras]
    devices.append([seen.places for seen in measured.cameras[0]])
    sizes = (*measured.sizes, measured.projector)
    alone = [_alone(measured, corners, size) for corners, size in zip(devices, sizes)]
    numbers = [alone[0][0]]
    for lens, turns, shifts in alone[1:]:
        numbers += [lens, _between(alone[0][1], alone[0][2], turns, shifts)]
    boards = numpy.concatenate([alone[0][1], alone[0][2]], axis=1)
    return numpy.concatenate([*numbers, boards.ravel()])


def _alone(measured: Measurements, corners: List[Floats], size: Tuple[int, int]) -> Tuple[Floats, Floats, Floats]:
    cv2 = opencv()
    flat = measured.board.corners
    targets = [numpy.concatenate([flat, numpy.zeros((len(flat), 1))], axis=1).astype(numpy.float32)] * len(corners)
    seen = [each.astype(numpy.float32).reshape(-1, 1, 2) for each in corners]
    _, matrix, lens, turns, shifts = cv2.calibrateCamera(targets, seen, size, None, None, flags=cv2.CALIB_FIX_K3)
    numbers = [matrix[0, 0], matrix[1, 1], matrix[0, 2], matrix[1, 2], *lens.ravel()[:5]]
    return numpy.array(numbers), numpy.reshape(turns, (-1, 3)), numpy.reshape(shifts, (-1, 3))


def _between(turns: Floats, shifts: Floats, own_turns: Floats, own_shifts: Floats) -> Floats:
    """The pose between two devices that saw the same boards: of what the boards say the one in the middle."""
    relative = rotations(own_turns) @ rotations(turns).transpose(0, 2, 1)
    cv2 = opencv()
    vectors = numpy.array([cv2.Rodrigues(each)[0].ravel() for each in relative])
    moved = own_shifts - numpy.einsum("nij,nj->ni", relative, shifts)
    return numpy.concatenate([numpy.median(vectors, axis=0), numpy.median(moved, axis=0)])


def solve(measured: Measurements) -> Solution:
    """The best numbers; corners and cells count as exactly as they turn out to be. Cells that do not fit are left out."""
    numbers, weights = start(measured), None
    for share in (_FEW_CELLS, _FEW_CELLS, 1):
        model = Model(_thinned(measured, share))
        numbers, _ = _descend(model, numbers, weights)
        model = Model(_without_outliers(model, numbers))
        weights = _Weights(model, numbers)
    numbers, information = _descend(model, numbers, weights)
    return Solution(model, numbers, *_root_mean_squares(model, numbers), _inverse(information))


def _inverse(information: Floats) -> Floats:
    """Numbers of all sizes, and some perhaps undetermined: these become uncertain, not certain."""
    sizes = numpy.sqrt(numpy.diag(information) + 1e-300)
    scaled = information / numpy.outer(sizes, sizes) + 1e-13 * numpy.eye(len(sizes))
    return numpy.asarray(numpy.linalg.inv(scaled) / numpy.outer(sizes, sizes))


def _root_mean_squares(model: Model, numbers: Floats) -> Tuple[float, float]:
    corners, cells = model.deviations(numbers)
    return _root_mean_square(numpy.concatenate(corners)), _root_mean_square(numpy.concatenate(cells))


def _root_mean_square(deviations: Floats) -> float:
    return float(numpy.sqrt(numpy.mean(deviations**2))) if deviations.size else 0.0


def _without_outliers(model: Model, numbers: Floats) -> Measurements:
    _, cells = model.deviations(numbers)
    cameras = []
    for camera, deviations in zip(model.measured.cameras, cells):
        parts = numpy.split(numpy.linalg.norm(deviations, axis=1), numpy.cumsum([len(seen.pixels) for seen in camera])[:-1])
        cameras.append(tuple(_only(seen, sizes <= _OUTLIER * numpy.median(sizes)) for seen, sizes in zip(camera, parts)))
    return dataclasses.replace(model.measured, cameras=tuple(cameras))


def _thinned(measured: Measurements, step: int) -> Measurements:
    """With every so many-th of the cells."""
    cameras = tuple(tuple(_only(seen, numpy.arange(len(seen.pixels)) % step == 0) for seen in camera) for camera in measured.cameras)
    return dataclasses.replace(measured, cameras=cameras)


def _only(seen: Seen, kept: numpy.typing.NDArray[numpy.bool_]) -> Seen:
    return dataclasses.replace(seen, pixels=seen.pixels[kept], lit=seen.lit[kept])


class _Weights:
    """Corners count as exactly as those of their pose in their camera turn out to be: the steeper a board, the coarser; what stands out of
    them, not at all. Cells count all alike."""

    def __init__(self, model: Model, numbers: Floats) -> None:
        corners, cells = model.deviations(numbers)
        self.cell = 1 / max(_root_mean_square(numpy.concatenate(cells)), _LEAST_DEVIATION)
        self.corners = [_weights_by_pose(part, owner, model.poses) for part, owner in zip(corners, model.pose_of_corner)]


def _weights_by_pose(deviations: Floats, owner: numpy.typing.NDArray[numpy.int64], poses: int) -> Floats:
    squares = (deviations**2).mean(axis=1)
    weights = numpy.zeros((len(owner), 1))
    for own in (owner == pose for pose in range(poses)):
        kept = own & (squares <= _OUTLIER**2 * numpy.median(squares[own]))
        weights[kept] = 1 / max(float(numpy.sqrt(squares[kept].mean())), _LEAST_DEVIATION)
    return weights


def _flat(model: Model, numbers: Floats, weights: Optional[_Weights]) -> Floats:
    corners, cells = model.deviations(numbers)
    if weights is not None:
        corners = [part * weight for part, weight in zip(corners, weights.corners)]
        cells = [part * weights.cell for part in cells]
    return numpy.concatenate([part.ravel() for part in corners + cells])


def _step_sizes(model: Model) -> Tuple[Floats, Floats]:
    lens = [_STEPS["focal"]] * 2 + [_STEPS["centre"]] * 2 + [_STEPS["lens"]] * 5
    pose = [_STEPS["turn"]] * 3 + [_STEPS["shift"]] * 3
    return numpy.array(lens + (lens + pose) * (model.devices - 1)), numpy.array(pose)


def _derivatives(model: Model, numbers: Floats, weights: Optional[_Weights], here: Floats) -> Floats:
    """float64[deviations, numbers]. The poses of the board are moved all at once, for each acts on its own deviations only."""
    shared, pose = _step_sizes(model)
    table = numpy.zeros((len(here), len(numbers)))
    for i, step in enumerate(shared):
        moved = numbers.copy()
        moved[i] += step
        table[:, i] = (_flat(model, moved, weights) - here) / step
    owner = numpy.repeat(numpy.concatenate(model.pose_of_corner + model.pose_of_cell), 2)
    for i, step in enumerate(pose):
        moved = numbers.copy()
        moved[model.shared + i :: POSE] += step
        table[numpy.arange(len(here)), model.shared + POSE * owner + i] = (_flat(model, moved, weights) - here) / step
    return table


@numpy.errstate(over="ignore", invalid="ignore")  # a step too far is taken back
def _descend(model: Model, numbers: Floats, weights: Optional[_Weights]) -> Tuple[Floats, Floats]:
    """Numbers with the least sum of squares, and the information about them."""
    damping = 1e-4
    here = _flat(model, numbers, weights)
    for _ in range(_MOST_STEPS):
        table = _derivatives(model, numbers, weights, here)
        information, gradient = table.T @ table, table.T @ here
        before = here @ here
        for _ in range(12):
            damped = information + damping * numpy.diag(numpy.diag(information) + 1e-12)
            tried = numbers - numpy.linalg.solve(damped, gradient)
            there = _flat(model, tried, weights)
            if there @ there < before:
                break
            damping *= 10
        else:
            return numbers, information
        numbers, here, damping = tried, there, damping / 10
        if before - here @ here < 1e-5 * before:
            break
    return numbers, information

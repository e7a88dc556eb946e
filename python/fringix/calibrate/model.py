"""Cameras, projector and poses as one vector of numbers, and what they say of the measurements."""

from __future__ import annotations

from typing import List, Sequence, Tuple

import numpy

from ..calibration import Optics
from .corner_fit import Floats
from .measurements import Measurements

LENS = 9  # fx, fy, cx, cy, k1, k2, p1, p2, k3
POSE = 6  # a rotation vector and a translation


def rotations(vectors: Floats) -> Floats:
    """Rotation matrices float64[n, 3, 3] of rotation vectors float64[n, 3]."""
    angles = numpy.linalg.norm(vectors, axis=1)[:, None, None]
    x, y, z = vectors.T
    zero = numpy.zeros(len(vectors))
    cross = numpy.stack([zero, -z, y, z, zero, -x, -y, x, zero], axis=1).reshape(-1, 3, 3)
    small = angles < 1e-8
    safe = numpy.where(small, 1, angles)
    sine = numpy.where(small, 1, numpy.sin(safe) / safe)
    cosine = numpy.where(small, 0.5, (1 - numpy.cos(safe)) / safe**2)
    return numpy.asarray(numpy.eye(3) + sine * cross + cosine * cross @ cross)


def distort(lens: Floats, slopes: Floats) -> Floats:
    """Where the lens shows rays of the slopes x / z and y / z, before focal length and principal point."""
    x, y = slopes.T
    k1, k2, p1, p2, k3 = lens[4:]
    r2 = x * x + y * y
    radial = 1 + r2 * (k1 + r2 * (k2 + r2 * k3))
    shown_x = x * radial + 2 * p1 * x * y + p2 * (r2 + 2 * x * x)
    shown_y = y * radial + p1 * (r2 + 2 * y * y) + 2 * p2 * x * y
    return numpy.stack([shown_x, shown_y], axis=1)


def show(lens: Floats, points: Floats) -> Floats:
    """Pixels of points in the frame of a device."""
    return numpy.asarray(distort(lens, points[:, :2] / points[:, 2:]) * lens[:2] + lens[2:4])


def undistort(lens: Floats, pixels: Floats) -> Floats:
    """The slopes of the rays that pixels see."""
    wanted = (pixels - lens[2:4]) / lens[:2]
    slopes = wanted.copy()
    for _ in range(8):
        slopes = slopes + wanted - distort(lens, slopes)
    return numpy.asarray(slopes)


class Model:
    """Numbers in this order: the first camera's lens; lens and pose of each other camera and of the projector; a pose for each view.

    Deviations are those of the corners, in pixels of the cameras, and those of the cells, in pixels of the projector.
    """

    def __init__(self, measured: Measurements) -> None:
        self.measured = measured
        self.devices = len(measured.cameras) + 1
        self.shared = LENS + (self.devices - 1) * (LENS + POSE)
        self.poses = len(measured.names)
        self.corners = [numpy.concatenate([seen.corners for seen in camera]) for camera in measured.cameras]
        self.pixels = [numpy.concatenate([seen.pixels for seen in camera]) for camera in measured.cameras]
        self.lit = [numpy.concatenate([seen.lit for seen in camera]) for camera in measured.cameras]
        self.pose_of_corner = [_poses_of(camera, [len(seen.corners) for seen in camera]) for camera in measured.cameras]
        self.pose_of_cell = [_poses_of(camera, [len(seen.pixels) for seen in camera]) for camera in measured.cameras]
        flat = measured.board.corners
        self.targets = numpy.tile(numpy.concatenate([flat, numpy.zeros((len(flat), 1))], axis=1), (self.poses, 1))

    def lens(self, numbers: Floats, device: int) -> Floats:
        start = device and LENS + (device - 1) * (LENS + POSE)
        return numbers[start : start + LENS]

    def pose(self, numbers: Floats, device: int) -> Tuple[Floats, Floats]:
        """Rotation and translation from the frame of camera 0 into that of a device."""
        if device == 0:
            return numpy.eye(3), numpy.zeros(3)
        start = LENS + (device - 1) * (LENS + POSE) + LENS
        return rotations(numbers[None, start : start + 3])[0], numbers[start + 3 : start + 6]

    def boards(self, numbers: Floats) -> Tuple[Floats, Floats]:
        poses = numbers[self.shared :].reshape(self.poses, POSE)
        return rotations(poses[:, :3]), poses[:, 3:]

    def deviations(self, numbers: Floats) -> Tuple[List[Floats], List[Floats]]:
        """Of corners and of cells, for each camera float64[n, 2]."""
        cameras = range(self.devices - 1)
        boards = self.boards(numbers)
        return [self._of_corners(numbers, boards, c) for c in cameras], [self._of_cells(numbers, boards, c) for c in cameras]

    def _of_corners(self, numbers: Floats, boards: Tuple[Floats, Floats], camera: int) -> Floats:
        pose = self.pose_of_corner[camera]
        points = numpy.einsum("nij,nj->ni", boards[0][pose], self.targets) + boards[1][pose]
        rotation, translation = self.pose(numbers, camera)
        return numpy.asarray(show(self.lens(numbers, camera), points @ rotation.T + translation) - self.corners[camera])

    def _of_cells(self, numbers: Floats, boards: Tuple[Floats, Floats], camera: int) -> Floats:
        """The ray of each cell's middle is led to the board, and what it meets there is held against what lit it."""
        pose = self.pose_of_cell[camera]
        rotation, translation = self.pose(numbers, camera)
        slopes = undistort(self.lens(numbers, camera), self.pixels[camera])
        rays = numpy.concatenate([slopes, numpy.ones((len(slopes), 1))], axis=1) @ rotation
        pinhole = -translation @ rotation
        normals = boards[0][:, :, 2]
        distances = numpy.einsum("pi,pi->p", normals, boards[1] - pinhole)
        points = pinhole + rays * (distances[pose] / numpy.einsum("ni,ni->n", normals[pose], rays))[:, None]
        turn, shift = self.pose(numbers, self.devices - 1)
        return numpy.asarray(show(self.lens(numbers, self.devices - 1), points @ turn.T + shift) - self.lit[camera])

    def optics(self, numbers: Floats, device: int) -> Optics:
        width, height = (*self.measured.sizes, self.measured.projector)[device]
        rotation, translation = self.pose(numbers, device)
        lens = self.lens(numbers, device)
        fx, fy, cx, cy = map(float, lens[:4])
        return Optics(width, height, fx, fy, cx, cy, lens[4:], rotation, translation)


def _poses_of(camera: Sequence[object], counts: Sequence[int]) -> numpy.typing.NDArray[numpy.int64]:
    return numpy.repeat(numpy.arange(len(camera)), counts)

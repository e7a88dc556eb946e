"""Corners of a checkerboard as exactly as the picture tells them: two edges that cross, laid through the grey levels around each."""

from __future__ import annotations

from typing import Tuple

import numpy
import numpy.typing

Floats = numpy.typing.NDArray[numpy.float64]

_STEPS = 12
_LARGEST_STEP = numpy.array([0.5] * 2 + [0.2] * 3 + [255] * 2 + [0.02] * 2)
_ERF = (1.1283, 0.1009)  # erf(x) is tanh(1.1283 x + 0.1009 x^3) to 4 places
_X, _Y, _FIRST, _SECOND, _WIDTH, _LEVEL, _CONTRAST, _SLOPE_X, _SLOPE_Y = range(9)


def fit(picture: numpy.typing.NDArray[numpy.uint8], grid: Floats) -> Floats:
    """Corners near those of a grid, float64[rows, columns, 2] in pixels. Those of which no fit comes stay where they were.

    The levels around a corner are ``light * (level + contrast * s(d1 / width) * s(d2 / width))``, d1 and d2 the distances from the
    two edges, s the step that a blur by a normal distribution leaves,
    light a slope: least squares by Gauss and Newton, for all corners at once.
    """
    along, down = numpy.gradient(grid, axis=1), numpy.gradient(grid, axis=0)
    reach = int(max(0.4 * min(numpy.linalg.norm(along, axis=2).min(), numpy.linalg.norm(down, axis=2).min()), 2))
    corners = grid.reshape(-1, 2)
    inside = ((corners > reach + 1) & (corners < numpy.array(picture.shape[::-1]) - reach - 2)).all(axis=1)
    fitted = corners.copy()
    fitted[inside] = _fit_all(picture, corners[inside], along.reshape(-1, 2)[inside], down.reshape(-1, 2)[inside], reach)
    return fitted


def _fit_all(picture: numpy.typing.NDArray[numpy.uint8], corners: Floats, along: Floats, down: Floats, reach: int) -> Floats:
    offsets, levels = _windows(picture, numpy.rint(corners).astype(int), reach)
    numbers = numpy.zeros((len(corners), 9))
    numbers[:, :2] = corners - numpy.rint(corners)
    numbers[:, _FIRST] = numpy.arctan2(along[:, 0], -along[:, 1])
    numbers[:, _SECOND] = numpy.arctan2(down[:, 0], -down[:, 1])
    numbers[:, _WIDTH], numbers[:, _LEVEL] = 1, levels.mean(axis=1)
    shape, _ = _modelled(numbers * 1.0 + numpy.eye(9)[_CONTRAST], offsets)
    shape -= numbers[:, [_LEVEL]]
    numbers[:, _CONTRAST] = (shape * (levels - numbers[:, [_LEVEL]])).sum(axis=1) / (shape**2).sum(axis=1)
    for _ in range(_STEPS):
        modelled, table = _modelled(numbers, offsets)
        information = numpy.einsum("nki,nkj->nij", table, table) + 1e-6 * numpy.eye(9)
        step = numpy.linalg.solve(information, numpy.einsum("nki,nk->ni", table, levels - modelled)[..., None])[..., 0]
        numbers += numpy.clip(step, -_LARGEST_STEP, _LARGEST_STEP)
        numbers[:, _WIDTH] = numpy.clip(numbers[:, _WIDTH], 0.2, reach)
    found = numpy.rint(corners) + numbers[:, :2]
    good = (numpy.linalg.norm(found - corners, axis=1) < max(1.5, 0.2 * reach)) & numpy.isfinite(found).all(axis=1)
    return numpy.where(good[:, None], found, corners)


def _windows(picture: numpy.typing.NDArray[numpy.uint8], middles: numpy.typing.NDArray[numpy.int64], reach: int) -> Tuple[Floats, Floats]:
    """The pixels within reach: their offsets, float64[k, 2], and levels, float64[n, k]."""
    y, x = numpy.mgrid[-reach : reach + 1, -reach : reach + 1]
    near = x * x + y * y <= reach * reach + 1
    offsets = numpy.stack([x[near], y[near]], axis=1)
    columns, rows = (middles[:, None] + offsets).transpose(2, 0, 1)
    return offsets.astype(numpy.float64), picture[rows, columns].astype(numpy.float64)


def _modelled(numbers: Floats, offsets: Floats) -> Tuple[Floats, Floats]:
    """Levels float64[n, k], and their derivatives float64[n, k, 9]."""
    n = numbers[:, :, None]
    x, y = offsets[:, 0] - n[:, _X], offsets[:, 1] - n[:, _Y]
    edges, turns = [], []
    for angle in (n[:, _FIRST], n[:, _SECOND]):
        distance = (x * numpy.cos(angle) + y * numpy.sin(angle)) / n[:, _WIDTH]
        edges.append(numpy.tanh(distance * (_ERF[0] + _ERF[1] * distance**2)))
        turns.append((angle, distance, (1 - edges[-1] ** 2) * (_ERF[0] + 3 * _ERF[1] * distance**2)))
    contrast, width = n[:, _CONTRAST], n[:, _WIDTH]
    both = edges[0] * edges[1]
    table = numpy.empty((*both.shape, 9))
    light = 1 + n[:, _SLOPE_X] * x + n[:, _SLOPE_Y] * y
    plain = n[:, _LEVEL] + contrast * both
    steep = [light * contrast * slope * other / width for (_, _, slope), other in zip(turns, edges[::-1])]
    table[..., _X] = -sum(part * numpy.cos(angle) for part, (angle, _, _) in zip(steep, turns)) - plain * n[:, _SLOPE_X]
    table[..., _Y] = -sum(part * numpy.sin(angle) for part, (angle, _, _) in zip(steep, turns)) - plain * n[:, _SLOPE_Y]
    for i, part, (angle, _, _) in zip((_FIRST, _SECOND), steep, turns):
        table[..., i] = part * (y * numpy.cos(angle) - x * numpy.sin(angle))
    table[..., _WIDTH] = -sum(part * distance for part, (_, distance, _) in zip(steep, turns))
    table[..., _LEVEL], table[..., _CONTRAST], table[..., _SLOPE_X], table[..., _SLOPE_Y] = light, light * both, plain * x, plain * y
    return light * plain, table

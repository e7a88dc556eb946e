"""What the views tell: corners of the board in each camera, and places of the board that camera and projector both see."""

from __future__ import annotations

import dataclasses
import weakref
from typing import List, MutableMapping, Optional, Sequence, Tuple

import numpy

from .board import Board, opencv
from .corner_fit import Floats
from .sight import Sight, View

_CELL = 8  # pixels of a side: the noise of so many is averaged, and within them the places of the projector lie evenly
_LEAST_CELL = 3
_BRIGHT = 0.4  # of the light of the brightest: in dark squares a place is several times as uncertain
_MARGIN = 0.18  # of a square: so close to an edge its blur may have moved the phase
_MOST_CELLS = 600  # of a sight


@dataclasses.dataclass(frozen=True, eq=False)
class Seen:
    """A pose in a camera.

    pose    -- its number
    corners -- float64[n, 2]: column and row of the board's corners
    places  -- float64[n, 2]: the same in the projector
    pixels, lit -- float64[m, 2] each: places within squares in the camera, and in the projector
    """

    pose: int
    corners: Floats
    places: Floats
    pixels: Floats
    lit: Floats


@dataclasses.dataclass(frozen=True, eq=False)
class Measurements:
    """cameras -- of each camera what it saw; names -- of the poses; left_out -- why poses are missing."""

    board: Board
    sizes: Tuple[Tuple[int, int], ...]
    projector: Tuple[int, int]
    cameras: Tuple[Tuple[Seen, ...], ...]
    names: Tuple[str, ...]
    left_out: Tuple[str, ...]


def measure(board: Board, views: Sequence[View]) -> Measurements:
    """Finds the board in all views. A view in which a camera or the projector does not reach all corners is left out."""
    cameras: List[List[Seen]] = [[] for _ in views[0].sights]
    names: List[str] = []
    left_out: List[str] = []
    for view in views:
        seen = [_see_once(board, sight, len(names)) for sight in view.sights]
        missing = [f"{view.name}: camera {camera}: {what}" for camera, what in enumerate(seen) if isinstance(what, str)]
        left_out += missing
        if not missing:
            names.append(view.name)
            for each, what in zip(cameras, _in_one_order([what for what in seen if isinstance(what, Seen)])):
                each.append(what)
    sizes = tuple((sight.white.shape[1], sight.white.shape[0]) for sight in views[0].sights)
    return Measurements(board, sizes, views[0].projector, tuple(map(tuple, cameras)), tuple(names), tuple(left_out))


# Who adds a pose, or leaves one out, calibrates again with views that have been looked at.
_known: MutableMapping[Sight, Tuple[Board, Seen | str]] = weakref.WeakKeyDictionary()


def _see_once(board: Board, sight: Sight, pose: int) -> Seen | str:
    if sight not in _known or _known[sight][0] != board:
        _known[sight] = (board, see(board, sight, pose))
    what = _known[sight][1]
    return what if isinstance(what, str) else dataclasses.replace(what, pose=pose)


def _in_one_order(seen: List[Seen]) -> List[Seen]:
    """A board looks the same from its other end: by the projector the cameras agree on where it begins."""
    first = seen[0].places
    turned = [numpy.abs(each.places - first).sum() > numpy.abs(each.places[::-1] - first).sum() for each in seen]
    return [dataclasses.replace(e, corners=e.corners[::-1], places=e.places[::-1]) if t else e for e, t in zip(seen, turned)]


def see(board: Board, sight: Sight, pose: int) -> Seen | str:
    """A pose as a camera sees it; a text that says what is missing when it does not."""
    if int(numpy.percentile(sight.white, 95)) >= 254:
        return "the white picture is too bright: less light, or a shorter exposure"
    corners = board.find(sight.white)
    if corners is None:
        return f"the board's {len(board.corners)} inner corners are not all to be seen"
    grid = _on_board(board, corners, sight.white.shape)
    places = _places_at(board, corners, grid, sight)
    if places is None:
        return "the projector's light does not reach all corners of the board"
    pixels, lit = _cells(board, grid, sight)
    if len(pixels) < 20:
        return "the projector's light reaches too little of the board"
    return Seen(pose, corners, places, pixels, lit)


def _on_board(board: Board, corners: Floats, shape: Tuple[int, ...]) -> Floats:
    """Where on the board each pixel looks, roughly, in squares from the first corner: float64[h, w, 2]."""
    matrix, _ = opencv().findHomography(corners, board.corners / board.square)
    y, x = numpy.mgrid[: shape[0], : shape[1]]
    found = numpy.stack([x, y, numpy.ones(x.shape)], axis=-1) @ matrix.T
    return numpy.asarray(found[..., :2] / found[..., 2:])


def _inside_squares(grid: Floats) -> numpy.typing.NDArray[numpy.bool_]:
    share = grid - numpy.floor(grid)
    return numpy.asarray(((share > _MARGIN) & (share < 1 - _MARGIN)).all(axis=-1))


def _places_at(board: Board, corners: Floats, grid: Floats, sight: Sight) -> Optional[Floats]:
    """The projector's place at each corner, by the pixels within the squares around it."""
    told = numpy.isfinite(sight.place).all(axis=-1) & _inside_squares(grid)
    places = []
    for corner, target in zip(corners, board.corners / board.square):
        reach = int(0.8 * numpy.linalg.norm(corners[1] - corners[0])) + 2
        rows, columns = (slice(max(int(at) - reach, 0), int(at) + reach + 1) for at in corner[::-1])
        near = told[rows, columns] & (numpy.abs(grid[rows, columns] - target).max(axis=-1) < 0.6)
        if near.sum() < 24:
            return None
        places.append(_fitted(numpy.argwhere(near)[:, ::-1] + [columns.start, rows.start] - corner, sight.place[rows, columns][near]))
    return numpy.array(places)


def _fitted(offsets: Floats, values: numpy.typing.NDArray[numpy.float32]) -> Floats:
    """A surface of the second degree through values, where the offsets are 0."""
    x, y = offsets.T / numpy.abs(offsets).max()
    terms = numpy.stack([numpy.ones(len(x)), x, y, x * x, x * y, y * y], axis=1)
    return numpy.asarray(numpy.linalg.lstsq(terms, values.astype(numpy.float64), rcond=None)[0][0])


def _cells(board: Board, grid: Floats, sight: Sight) -> Tuple[Floats, Floats]:
    """Means of cells that lie within a bright square and whose pixels are all told: their middles, and the projector's places there."""
    within = ((grid > -0.9) & (grid < [board.columns - 1.1, board.rows - 1.1])).all(axis=-1)
    told = numpy.isfinite(sight.place).all(axis=-1) & _inside_squares(grid) & within
    told &= sight.light > _BRIGHT * numpy.percentile(sight.light[told], 95) if told.any() else False
    side = int(min(max(_side_of_squares(grid) * (1 - 2 * _MARGIN) / 2, _LEAST_CELL), _CELL))
    height, width = (length // side * side for length in told.shape)
    whole = _by_cells(told[:height, :width], side).all(axis=(1, 3))
    means = _by_cells(sight.place[:height, :width].astype(numpy.float64), side).mean(axis=(1, 3))[whole]
    pixels = numpy.argwhere(whole)[:, ::-1] * side + (side - 1) / 2
    chosen = numpy.unique(numpy.linspace(0, len(pixels) - 1, _MOST_CELLS).astype(int)) if len(pixels) else slice(0)
    return pixels[chosen], means[chosen]


def _side_of_squares(grid: Floats) -> float:
    """In pixels, where the picture has the middle of the board."""
    steps = numpy.linalg.norm(numpy.diff(grid, axis=1), axis=-1)
    return float(1 / numpy.median(steps))


def _by_cells(array: numpy.typing.NDArray[numpy.generic], side: int) -> numpy.typing.NDArray[numpy.generic]:
    height, width, *rest = array.shape
    return array.reshape(height // side, side, width // side, side, *rest)

"""What a camera sees of a pose: a white picture, and which place of the projector lights each pixel."""

from __future__ import annotations

import dataclasses
import io
import pathlib
import zipfile
import zlib
from typing import TYPE_CHECKING, Any, Iterable, List, NamedTuple, Sequence, Tuple

import numpy
import numpy.typing

from .._files import PathLike, write_file
from ..calibration import Calibration, Optics
from ..plan import Plan
from ..scanner import Reason, Scanner
from .refusal import CalibrationRefused

if TYPE_CHECKING:
    from ..head import Head

_NO_LIMIT = 1e8
_KINDS = ("white", "place", "light")


@dataclasses.dataclass(frozen=True, eq=False)
class Sight:
    """What a camera sees of a pose. The arrays can no longer be written to.

    white -- uint8[h, w]
    place -- float32[h, w, 2]: the projector's column and row, NaN where they cannot be told
    light -- float32[h, w]: amplitude of the patterns in grey levels
    """

    white: numpy.typing.NDArray[numpy.uint8]
    place: numpy.typing.NDArray[numpy.float32]
    light: numpy.typing.NDArray[numpy.float32]

    def __post_init__(self) -> None:
        arrays: Tuple[numpy.typing.NDArray[Any], ...] = (self.white, self.place, self.light)
        for array in arrays:
            array.setflags(write=False)


class Decoded(NamedTuple):
    """The white picture; the column or row that lights each pixel, NaN where none does; the patterns' amplitude there."""

    white: numpy.typing.NDArray[numpy.uint8]
    lines: numpy.typing.NDArray[numpy.float32]
    light: numpy.typing.NDArray[numpy.float32]


@dataclasses.dataclass(frozen=True, eq=False)
class View:
    """A pose of the board, as each of the cameras sees it.

    name      -- what messages call it
    projector -- (width, height) in pixels, of the head with the serial number ``serial``
    """

    name: str
    sights: Tuple[Sight, ...]
    projector: Tuple[int, int]
    serial: int

    def save(self, path: PathLike) -> None:
        """Keeps it in a file ``.npz``: whole, or not at all."""
        facts = {"name": numpy.array(self.name), "projector": numpy.array(self.projector), "serial": numpy.array(self.serial)}
        arrays = {f"{kind}{i}": getattr(sight, kind) for i, sight in enumerate(self.sights) for kind in _KINDS}
        file = io.BytesIO()
        numpy.savez_compressed(file, **facts, **arrays)
        write_file(path, file.getvalue())

    @classmethod
    def read(cls, path: PathLike) -> View:
        """From a file that ``save`` left. Raises OSError, and CalibrationRefused when it is none."""
        content = pathlib.Path(path).read_bytes()
        try:
            with numpy.load(io.BytesIO(content)) as file:
                return cls._from_arrays(file)
        except (ValueError, KeyError, TypeError, AttributeError, EOFError, zipfile.BadZipFile, zlib.error) as error:
            raise CalibrationRefused(f"{path} is no view that was kept: {error}") from error

    @classmethod
    def _from_arrays(cls, file: Any) -> View:
        count = sum(name.startswith("white") for name in file.files)
        sights = tuple(Sight(*(file[f"{kind}{i}"] for kind in _KINDS)) for i in range(count))
        width, height = (int(number) for number in file["projector"])
        for sight in sights:
            shape = sight.white.shape
            if len(shape) != 2 or sight.place.shape != (*shape, 2) or sight.light.shape != shape or sight.white.dtype != numpy.uint8:
                raise ValueError("its pictures are of different sizes")
        return cls(str(file["name"]), sights, (width, height), int(file["serial"]))


def plans_for(projector: Tuple[int, int]) -> Tuple[Plan, Plan]:
    """The patterns that number the columns, and those that number the rows of a projector of (width, height)."""
    return Plan.defaults(projector[0]), Plan.defaults(projector[1])


def take_view(head: Head, name: str, channels: Sequence[int] = (0,)) -> View:
    """Lights what stands before the head, and takes its pictures. Raises what the head's commands raise."""
    decoded: List[List[Decoded]] = []
    for along, plan in enumerate(plans_for(head.projector.size)):
        with head.sequence(len(plan)) as sequence:
            for index, line in enumerate(plan.lines):
                sequence.column(index, line) if along else sequence.line(index, line)
            head.measure(sequence)
            decoded.append([decode(head.pictures(sequence, channel=channel), plan) for channel in channels])
    sights = tuple(sight_of(columns, rows) for columns, rows in zip(*decoded))
    width, height = head.projector.size
    return View(name, sights, (width, height), head.serial)


def sight_of(columns: Decoded, rows: Decoded) -> Sight:
    """From what the patterns of the columns and those of the rows tell."""
    return Sight(columns.white, numpy.stack([columns.lines, rows.lines], axis=-1), numpy.minimum(columns.light, rows.light))


def decode(pictures: Iterable[Any], plan: Plan) -> Decoded:
    """The line of a plan that lights each pixel of its pictures, each uint8[h, w]."""
    taken = iter(pictures)
    first = next(taken)
    with Scanner(plan, _stand_in(plan, first.shape), clean=0, sigma=_NO_LIMIT) as scanner:
        scanner.add(first)
        for picture in taken:
            scanner.add(picture)
        cloud = scanner.finish(accept_none=True)
    told = (cloud.reason == Reason.POINT) | (cloud.reason >= Reason.GEOMETRY)
    return Decoded(cloud.intensity, numpy.where(told, cloud.column, numpy.float32("nan")), cloud.modulation)


def _stand_in(plan: Plan, shape: Tuple[int, int]) -> Calibration:
    """A scanner wants a calibration; the lines that it tells do not depend on which."""
    height, width = shape
    camera = Optics(width, height, width, width, (width - 1) / 2, (height - 1) / 2, numpy.zeros(5))
    lines, aside = plan.projector_width, numpy.array([-100.0, 0, 0])
    projector = Optics(lines, lines, lines, lines, (lines - 1) / 2, (lines - 1) / 2, numpy.zeros(5), translation=aside)
    return Calibration(1, "2000-01-01", (camera,), projector)

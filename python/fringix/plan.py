"""What to project: a plan of patterns, each one line of pixels that every row of the projector shows."""

from __future__ import annotations

import ctypes
import dataclasses
import enum
from typing import Iterator

import numpy
import numpy.typing

from . import _scan_native as native


class Method(enum.IntEnum):
    """How the columns are coded."""

    GRAY_AND_PHASE = 0  # Gray code of half periods and a phase: works with any surface
    THREE_FREQUENCIES = 1  # phases of three frequencies, each 8 times the one before


class Kind(enum.IntEnum):
    """What a picture shows."""

    WHITE = 0
    BLACK = 1
    GRAY = 2
    PHASE = 3


@dataclasses.dataclass(frozen=True)
class Picture:
    """A picture of a plan.

    frequency -- of a phase: 0 the finest
    number    -- of a Gray picture: the bit, 0 the lowest; of a phase: the step
    """

    kind: Kind
    frequency: int
    number: int


@dataclasses.dataclass(frozen=True)
class Plan:
    """Patterns that number a projector's columns.

    projector_width -- columns, 16 to 16384
    period          -- columns of the finest period, 4 to the projector's width; with three frequencies 64 of them have to be at least
                       1.04 times that width
    steps           -- pictures of each frequency, 3 to 64
    method          -- Method.GRAY_AND_PHASE or Method.THREE_FREQUENCIES

    Raises BadParameterError when a value is out of range.

    >>> plan = Plan.defaults(1280)
    >>> len(plan), plan.period, plan.steps
    (20, 10, 10)
    >>> plan[0].kind.name, plan.line(0)[:3].tolist()
    ('WHITE', [255, 255, 255])
    """

    projector_width: int
    period: int
    steps: int
    method: Method = Method.GRAY_AND_PHASE

    def __post_init__(self) -> None:
        object.__setattr__(self, "method", Method(self.method))
        len(self)

    @classmethod
    def defaults(cls, projector_width: int, method: Method = Method.GRAY_AND_PHASE) -> Plan:
        """The plan for a projector of so many columns: periods of 10 columns in 10 steps, or three frequencies in 6 steps each."""
        plan = native.SLScanPlan()
        native.call("SLScanPlanDefaults", method, projector_width, plan)
        return cls(plan.projectorWidth, plan.period, plan.steps, Method(plan.method))

    def record(self) -> native.SLScanPlan:
        """The plan as the C interface has it."""
        return native.SLScanPlan(int(self.method), self.projector_width, self.period, self.steps)

    def __len__(self) -> int:
        """How many pictures it has, at most 256: white, black, Gray code from the highest bit, phases from the coarsest."""
        count = ctypes.c_int32()
        native.call("SLScanPlanPictureCount", self.record(), count)
        return count.value

    def __getitem__(self, index: int) -> Picture:
        """What a picture shows. Raises IndexError behind the last one."""
        if not -len(self) <= index < len(self):
            raise IndexError(f"the plan has {len(self)} pictures, and no picture {index}")
        picture = native.SLScanPicture()
        native.call("SLScanPlanPicture", self.record(), index % len(self), picture)
        return Picture(Kind(picture.kind), picture.frequency, picture.number)

    def __iter__(self) -> Iterator[Picture]:
        return (self[index] for index in range(len(self)))

    def line(self, index: int) -> numpy.typing.NDArray[numpy.uint8]:
        """A picture as ``uint8[projector_width]``, for ``sequence[index]`` or, along the rows, ``sequence.column(index, line)``."""
        line = numpy.empty(self.projector_width, numpy.uint8)
        native.call("SLScanPlanLine", self.record(), index, line.ctypes.data_as(ctypes.POINTER(ctypes.c_uint8)), len(line))
        return line

    @property
    def lines(self) -> numpy.typing.NDArray[numpy.uint8]:
        """All pictures as ``uint8[len(plan), projector_width]``."""
        return numpy.stack([self.line(index) for index in range(len(self))])

"""The pictures that ``fringix scan --raw`` keeps."""

from __future__ import annotations

import dataclasses
import json
import pathlib
from typing import Any, Iterator, Optional, Tuple

from . import _png
from ._files import PathLike
from .calibration import Calibration
from .errors import BadPicturesError
from .plan import Method, Plan

_METHODS = {"Gray code and phase": Method.GRAY_AND_PHASE, "three frequencies": Method.THREE_FREQUENCIES}


def _refuse(reason: str) -> BadPicturesError:
    return BadPicturesError("from_folder", reason=reason)


@dataclasses.dataclass(frozen=True)
class RawScan:
    """A folder with ``raw-00.png`` and so on: exposure by exposure, each in the plan's order, each picture of all cameras.

    plan      -- Plan
    channels  -- the cameras
    exposures -- how many
    roi       -- (x, y, width, height) of the wanted part, or None for all
    generated -- the patterns are those of the head's own generators
    """

    folder: pathlib.Path
    plan: Plan
    channels: Tuple[int, ...]
    exposures: int
    roi: Optional[Tuple[int, int, int, int]]
    generated: bool

    @classmethod
    def read(cls, folder: PathLike) -> RawScan:
        """What ``scan.json`` of the folder tells. Raises OSError, and BadPicturesError when it is no such file."""
        path = pathlib.Path(folder) / "scan.json"
        try:
            return cls._from_json(pathlib.Path(folder), json.loads(path.read_bytes()))
        except (ValueError, KeyError, TypeError, AttributeError) as error:
            raise _refuse(f"{path} cannot be used: {type(error).__name__}: {error}") from error

    @classmethod
    def _from_json(cls, folder: pathlib.Path, told: Any) -> RawScan:
        if (told["format"], told["version"]) != ("fringix-scan", 1):
            raise ValueError('it is no "fringix-scan" of version 1')
        plan, part = told["plan"], told["roi"]
        channels = tuple(int(channel) for channel in told["channels"])
        if not channels:
            raise ValueError("it names no channel")
        roi = None if part is None else (int(part["x"]), int(part["y"]), int(part["width"]), int(part["height"]))
        patterns = Plan(int(plan["projectorWidth"]), int(plan["period"]), int(plan["steps"]), _METHODS[plan["method"]])
        return cls(folder, patterns, channels, max(len(told["exposuresInUs"]), 1), roi, bool(plan["generated"]))

    def calibration(self) -> Calibration:
        """The folder's own."""
        return Calibration.read(self.folder / "calibration.json")

    def pictures(self, exposure: int, camera: int) -> Iterator[Any]:
        """Those of an exposure and a camera, both counted from 0, in the plan's order. Raises BadPicturesError."""
        each, cameras = len(self.plan), len(self.channels)
        for index in range(each):
            yield self._picture((exposure * each + index) * cameras + camera, each * self.exposures * cameras)

    def _picture(self, number: int, count: int) -> Any:
        digits = len(str(max(count - 1, 10)))
        path = self.folder / f"raw-{number:0{digits}}.png"
        try:
            return _png.read(path)
        except FileNotFoundError:
            raise _refuse(f"{path} is missing: picture {number + 1} of the scan's {count}") from None
        except _png.BadPictureFile as error:
            raise _refuse(f"{path} {error}") from error

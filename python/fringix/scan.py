"""From a head, or from pictures that were kept, to points."""

from __future__ import annotations

import concurrent.futures
import contextlib
import dataclasses
import functools
import time
from typing import TYPE_CHECKING, Any, Callable, Dict, Iterable, Iterator, List, Mapping, Optional, Sequence, Tuple, Union

import numpy

from . import clouds
from ._files import PathLike
from .calibration import Calibration, Optics
from .errors import BadCalibrationError, BadPicturesError
from .plan import Plan
from .raw import RawScan
from .scanner import Cloud, Findings, Floats, Reason, Scanner, Settings

if TYPE_CHECKING:
    from .head import Head

Region = Tuple[int, int, int, int]
Channels = Union[int, Sequence[int], None]

_NEIGHBOURS = 2  # of a normal, at points that a neighbour's edge may take away


@dataclasses.dataclass(frozen=True, eq=False)
class Scan(Cloud):
    """The points of a scan. Of several cameras there is one below the other, h = cameras * height; ``camera(i)`` is one of them.

    Beside what a Cloud has:

    calibration -- Calibration that was used
    plan        -- Plan
    channels    -- the cameras, as the head counts them
    timings     -- seconds that each step took: calibration, upload, measure, fetch (or read) and compute
    cautions    -- what is odd and did not hinder
    """

    calibration: Calibration
    plan: Plan
    channels: Tuple[int, ...]
    timings: Mapping[str, float]
    cautions: Tuple[str, ...] = ()

    @property
    def quality(self) -> Floats:
        """float32[h, w]: expected standard deviation of the points in mm, NaN where there is none; the files of points name it so, too."""
        return numpy.where(self.valid, self.sigma, numpy.float32("nan"))

    def camera(self, index: int) -> Cloud:
        """What the camera ``channels[index]`` gave. Its findings count its pixels; the rest of them is that of all cameras."""
        height = len(self.points) // len(self.channels)
        rows = slice(range(len(self.channels))[index] * height, (range(len(self.channels))[index] + 1) * height)
        return _counted(Cloud(**{name: array[rows] for name, array in _arrays(self).items()}, findings=self.findings))

    def save(self, path: PathLike, unit: str = "mm") -> None:
        """Writes the points as ``.ply``, ``.pcd`` or ``.npy``, in ``"mm"`` or ``"m"``, as ``fringix scan`` does; see ``clouds.save``."""
        clouds.save(self, path, unit)

    def to_open3d(self) -> Any:
        """The points as an ``open3d.geometry.PointCloud`` with normals and gray levels as colours."""
        return clouds.to_open3d(self)


def scan(
    head: Head,
    *,
    plan: Optional[Plan] = None,
    calibration: Optional[Calibration] = None,
    channels: Channels = 0,
    exposures: Sequence[int] = (),
    roi: Optional[Region] = None,
    **settings: float,
) -> Scan:
    """Projects a plan, takes its pictures and makes points of them, each picture while the next one is fetched.

    plan        -- the usual one for the head's projector, unless given
    calibration -- the one that the head keeps, unless given
    channels    -- a camera, several, or None for all that the calibration knows
    exposures   -- in microseconds; several, up to 16, are merged: each pixel comes from the longest that does not saturate it. The
                   head's exposure is set back
    roi         -- (x, y, width, height): points of this part of the pictures only
    settings    -- as Settings describes them: ``least_patch=20``

    Raises BadCalibrationError when the calibration is not that of the head, BadPicturesError when no pixel gives a point, and what the
    head's commands raise.
    """
    clock = _Clock()
    with clock("calibration"):
        task = _task_of_head(head, plan, calibration, channels, roi, Settings(**settings))  # type: ignore[arg-type]
    with contextlib.ExitStack() as stack:
        decoders = [stack.enter_context(_Decoder(task, channel)) for channel in task.channels]
        sequence = stack.enter_context(head.sequence(len(task.plan)))
        with clock("upload"):
            for index, line in enumerate(task.plan.lines):
                sequence[index] = line
        for set_exposure in stack.enter_context(_exposures(head, exposures)):
            set_exposure()
            with clock("measure"):
                head.measure(sequence)
            with clock("fetch"):
                for decoder in decoders:
                    decoder.take(head.pictures(sequence, channel=decoder.channel, roi=_needed(task) if roi else None))
        with clock("compute"):
            cloud = _finish(task, decoders)
    return _scan_of(cloud, task, clock.seconds)


def from_folder(folder: PathLike, *, calibration: Optional[Calibration] = None, roi: Optional[Region] = None, **settings: float) -> Scan:
    """Computes again from what ``fringix scan --raw`` left in a folder; gives the same points.

    Raises OSError when a file cannot be read, BadPicturesError when it is not what it should be, and as ``scan`` does.
    """
    raw = RawScan.read(folder)
    wanted = Settings(**settings)  # type: ignore[arg-type]
    task = _Task(raw.plan, calibration or raw.calibration(), raw.channels, raw.roi or roi, wanted, raw.generated)
    if raw.roi and roi and raw.roi != roi:
        raise ValueError(f"the pictures in {folder} show the region {raw.roi} only, and {roi} is wanted")
    _require_fit(task, None)
    clock = _Clock()
    with contextlib.ExitStack() as stack:
        decoders = [stack.enter_context(_Decoder(task, channel)) for channel in task.channels]
        for exposure in range(raw.exposures):
            for index, decoder in enumerate(decoders):
                with clock("read"):
                    decoder.take(_cut_to_needed(task, picture) for picture in raw.pictures(exposure, index))
        with clock("compute"):
            cloud = _finish(task, decoders)
    return _scan_of(cloud, task, clock.seconds)


@dataclasses.dataclass(frozen=True)
class _Task:
    plan: Plan
    calibration: Calibration
    channels: Tuple[int, ...]
    roi: Optional[Region]
    settings: Settings
    generated: bool = False  # the patterns are those of the head's own generators
    cautions: Tuple[str, ...] = ()

    @property
    def camera(self) -> Optics:
        """The cameras of a head have pictures of one size."""
        return self.calibration.cameras[self.channels[0]]


class _Clock:
    """Seconds by the name of a step; one that comes again goes on counting."""

    def __init__(self) -> None:
        self.seconds: Dict[str, float] = {}

    @contextlib.contextmanager
    def __call__(self, name: str) -> Iterator[None]:
        started = time.perf_counter()
        yield
        self.seconds[name] = self.seconds.get(name, 0.0) + time.perf_counter() - started


class _Decoder:
    """Of one camera. Its scanner is made, which takes a while, while the first picture is waited for."""

    def __init__(self, task: _Task, channel: int) -> None:
        self.channel = channel
        self._started = False
        self._maker = concurrent.futures.ThreadPoolExecutor(1)
        self._making = self._maker.submit(_scanner_for, task, channel)

    def __enter__(self) -> _Decoder:
        return self

    def __exit__(self, *_: object) -> None:
        self._maker.shutdown()
        if self._making.exception() is None:
            self._making.result().close()

    def take(self, pictures: Iterable[Any]) -> None:
        """All pictures of an exposure."""
        if self._started:
            self._making.result().next_exposure(self.channel)
        self._started = True
        for picture in pictures:
            self._making.result().add(picture, self.channel)

    def finish(self) -> Cloud:
        return self._making.result().finish(self.channel, accept_none=True)


def _scanner_for(task: _Task, channel: int) -> Scanner:
    calibration = dataclasses.replace(task.calibration, cameras=task.calibration.cameras[: channel + 1])  # it has tables for each of them
    if task.generated:  # the generators' phase is 0 in the middle of the first column, a plan's at its left border
        calibration = dataclasses.replace(calibration, projector=_moved(calibration.projector, -0.5))
    settings = {name: value for name, value in dataclasses.asdict(task.settings).items() if value is not None}
    scanner = Scanner(task.plan, calibration, **settings)
    if task.roi is not None:
        scanner.use_window(*_needed(task), camera=channel)
    return scanner


def _moved(projector: Optics, columns: float) -> Optics:
    return dataclasses.replace(projector, cx=projector.cx + columns)


def _task_of_head(
    head: Head, plan: Optional[Plan], calibration: Optional[Calibration], channels: Channels, roi: Optional[Region], settings: Settings
) -> _Task:
    known = calibration or Calibration.parse(_stored_calibration(head))
    cameras = range(len(known.cameras)) if channels is None else [channels] if isinstance(channels, int) else channels
    cautions = [] if known.serial == head.serial else [f"the calibration is that of head {known.serial}, and this is head {head.serial}"]
    task = _Task(plan or Plan.defaults(head.projector.size[0]), known, tuple(cameras), roi, settings, cautions=tuple(cautions))
    _require_fit(task, head)
    return task


def _stored_calibration(head: Head) -> bytes:
    try:
        text: bytes = head.data["calibration.json"]
        return text
    except KeyError:
        reason = "it has no calibration.json. Give one as calibration=Calibration.read(path)"
        raise BadCalibrationError("scan", head.address, reason) from None


def _require_fit(task: _Task, head: Optional[Head]) -> None:
    address = head.address if head else None
    for channel in task.channels:
        if not 0 <= channel < len(task.calibration.cameras):
            raise BadCalibrationError("scan", address, f"it has no camera {channel}: it knows {len(task.calibration.cameras)}")
    if len(set(task.channels)) != len(task.channels) or not task.channels:
        raise ValueError(f"channels are different cameras, one or more, and not {task.channels}")
    if head is not None:
        _require_size("camera", task.camera, head.camera_size, address)
        _require_size("projector", task.calibration.projector, head.projector.size, address)
    x, y, width, height = _wanted(task)
    if min(x, y) < 0 or min(width, height) < 1 or x + width > task.camera.width or y + height > task.camera.height:
        raise ValueError(f"a region of {width} x {height} pixels at {x}, {y} is not within {task.camera.width} x {task.camera.height}")


def _require_size(device: str, optics: Optics, size: Tuple[int, int], address: Optional[str]) -> None:
    if (optics.width, optics.height) != tuple(size):
        known = f"a {device} with {optics.width} x {optics.height} pixels"
        raise BadCalibrationError("scan", address, f"it is of {known}, but this one has {size[0]} x {size[1]}")


def _wanted(task: _Task) -> Region:
    return task.roi or (0, 0, task.camera.width, task.camera.height)


def _needed(task: _Task) -> Region:
    """What the pictures have to show: cleaning and normals look at the pixels around a point, too."""
    x, y, width, height = _wanted(task)
    settings = task.settings.record()
    margin = max(settings.leastPatch, _NEIGHBOURS) if settings.clean else _NEIGHBOURS
    left, top = max(x - margin, 0), max(y - margin, 0)
    return left, top, min(x + width + margin, task.camera.width) - left, min(y + height + margin, task.camera.height) - top


def _cut_to_needed(task: _Task, picture: Any) -> Any:
    if task.roi is None or picture.shape != (task.camera.height, task.camera.width):
        return picture
    x, y, width, height = _needed(task)
    return picture[y : y + height, x : x + width]


@contextlib.contextmanager
def _exposures(head: Head, exposures: Sequence[int]) -> Iterator[List[Callable[[], None]]]:
    """What sets each exposure; nothing, once, when there are none. The head's own comes back at the end."""
    if not exposures:
        yield [lambda: None]
        return
    before = head.ini["Camera", "Exposure"]
    try:
        yield [functools.partial(head.ini.__setitem__, ("Camera", "Exposure"), exposure) for exposure in exposures]
    finally:
        head.ini["Camera", "Exposure"] = before


def _finish(task: _Task, decoders: Sequence[_Decoder]) -> Cloud:
    parts = [_cut(decoder.finish(), task) for decoder in decoders]
    cloud = parts[0] if len(parts) == 1 else _stacked(parts)
    if cloud.findings.points == 0:
        most = max(Reason, key=lambda reason: cloud.findings.counts[reason]).name.lower()
        raise BadPicturesError("scan", reason=f"no pixel gives a point; most of them for this reason: {most}")
    return cloud


def _arrays(cloud: Cloud) -> Dict[str, Any]:
    return {field.name: getattr(cloud, field.name) for field in dataclasses.fields(Cloud) if field.name != "findings"}


def _cut(cloud: Cloud, task: _Task) -> Cloud:
    if task.roi is None:
        return cloud
    (x, y, width, height), (left, top, *_) = _wanted(task), _needed(task)
    rows, columns = slice(y - top, y - top + height), slice(x - left, x - left + width)
    parts = {name: numpy.ascontiguousarray(array[rows, columns]) for name, array in _arrays(cloud).items()}
    return _counted(Cloud(**parts, findings=cloud.findings))


def _counted(cloud: Cloud) -> Cloud:
    """With findings that count its own pixels."""
    counts = numpy.bincount(cloud.reason.ravel(), minlength=len(Reason))
    sigma = cloud.sigma[cloud.reason == Reason.POINT].astype(numpy.float64)
    expected = float(numpy.sqrt(numpy.mean(sigma**2))) if len(sigma) else 0.0
    findings = dataclasses.replace(cloud.findings, counts={reason: int(counts[reason]) for reason in Reason}, expected_sigma=expected)
    return dataclasses.replace(cloud, findings=findings)


def _stacked(parts: Sequence[Cloud]) -> Cloud:
    """One below the other."""
    arrays = {name: numpy.concatenate([getattr(part, name) for part in parts]) for name in _arrays(parts[0])}
    all_findings: List[Findings] = [part.findings for part in parts]
    worst = {name: max(getattr(each, name) for each in all_findings) for name in ("measured_noise", "flicker", "flickers", "moves")}
    return _counted(Cloud(**arrays, findings=dataclasses.replace(all_findings[0], **worst)))


def _scan_of(cloud: Cloud, task: _Task, timings: Mapping[str, float]) -> Scan:
    arrays = _arrays(cloud)
    return Scan(
        **arrays,
        findings=cloud.findings,
        calibration=task.calibration,
        plan=task.plan,
        channels=task.channels,
        timings=timings,
        cautions=task.cautions,
    )

"""A session with a head."""

from __future__ import annotations

import atexit
import contextlib
import ctypes
import threading
import warnings
import weakref
from types import TracebackType
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator
from typing import Sequence as Numbers

from . import _fetching, _native, _pixels, _probe, discovery, errors
from ._pixels import Pixels, Size
from .data import Data, Ini
from .events import AsyncEventStream, EventStream, Function, Subscription, forget_all, is_telling, tell
from .lines import GPIO, Projector, SerialPort
from .sequence import Sequence
from .settings import Range, Setting

if TYPE_CHECKING:
    from .calibration import Calibration
    from .plan import Plan
    from .scan import Scan

_CLOSED = -1
_CONNECT = "SLDevAlloc"
_no_callback: Any = _native.GPIOCallback


def open(address: str | None = None, *, serial: int | None = None, timeout: float = 5.0) -> Head:
    """Opens a session with a head, at an address or with a serial number; use it in a ``with`` block.

    address -- IPv4 address or host name
    serial  -- the head's serial number: all networks of this machine are searched for it, which takes at least 300 ms for each
    timeout -- seconds until the head has to answer

    Raises HeadConnectionError when no head answers in time, HandshakeTimeoutError when something connects and does not greet.

    >>> with fringix.open(simulated.address, timeout=3) as head:
    ...     head.live().shape
    (1024, 1280)
    """
    if (address is None) == (serial is None):
        raise TypeError("open takes either an address or a serial number")
    if address is not None:
        return Head(*_open_at(_probe.resolve(address, timeout), timeout))
    assert serial is not None
    try:
        return Head(*discovery.open_by_serial(serial, timeout))
    except TimeoutError:
        raise errors.HeadConnectionError("SLDevAllocBySerial", None, f"no head {serial} was open within {timeout:g} s") from None


def _open_at(address: str, timeout: float) -> tuple[int, str]:
    _probe.probe(address, timeout)
    handle = ctypes.c_int32(_CLOSED)
    _native.call(_CONNECT, address, ctypes.byref(handle), head=address)
    return handle.value, address


class Head:
    """A session with a head, from ``fringix.open`` until ``close`` or the end of its ``with`` block.

    Any number of threads may use it. Its commands run one after the other, those of different heads side by side, without the
    interpreter lock. A command waits for the head's answer, 30 seconds at most. On the main thread Ctrl-C ends the wait: when the
    answer does not come within half a second, the session is given up and closed as soon as it has come.

    Pictures are new arrays uint8[h, w], 0 dark to 255 bright, which the library writes to itself.

    Errors: every command raises HeadConnectionError when the connection breaks and HeadSystemError after that, VersionTooOldError for
    what the head is too old for, UnknownDeviceError once the session is closed.
    """

    gain = Setting("Gain of the cameras.", get="SLGetGain", set="SLSetGain", limits="SLGetGainMinMax")
    led_power = Setting("Power of the projector's light.", get="SLGetLEDPower", set="SLSetLEDPower", limits="SLGetLEDPowerMinMax")
    direct_led_power = Setting("The same, 0 to 255, past the range of led_power.", set="SLSetLedPowerValue", limits=Range(0, 255))
    brightness = Setting(
        "Level of the projector's brightness, from 1.",
        get="SLGetBrightnessLevel",
        set="SLSetBrightnessLevel",
        limits="SLGetBrightnessMinMax",
    )
    exposure = Setting(
        "Exposure of the cameras.",
        unit="us",
        get="SLGetCurrentExposure",
        hint=': it is part of the configuration, head.ini["Camera", "Exposure"]',
    )
    temperature = Setting("Temperature of the head.", unit="degC", get="SLGetTemperature")
    uptime = Setting("How long the head has been on.", unit="s", get="SLGetUptime")

    def __init__(self, handle: int, address: str) -> None:
        self._handle, self.address = handle, address
        self._closing = threading.Lock()
        self._trigger_callbacks: list[Any] = []
        try:
            self.camera_size = self._size("SLGetCameraSize")
            self._projector_size = self._size("SLGetProjectorSize")
            key = _native.DeviceKeyEntry()
            self._call("SLGetDevKey", ctypes.byref(key))
        except BaseException:
            _free_silently(handle)
            raise
        self.serial, self.protocol_version = int(key.serial), int(key.info1)
        _open_heads.add(self)

    def __repr__(self) -> str:
        state = "" if self.is_connected else ", connection lost" if self.is_open else ", closed"
        return f"<head {self.serial} at {self.address}{state}>"

    # The session.

    def _call(self, operation: str, *arguments: Any) -> None:
        _native.call(operation, self._handle, *arguments, head=self.address)

    def _get(self, operation: str, ctype: Any, *arguments: Any) -> Any:
        return _native.get(operation, ctype, self._handle, *arguments, head=self.address)

    def _leave(self) -> Callable[[], None]:
        return _native.leave(self._handle)

    def _known_size(self, operation: str) -> Size | None:
        """Without asking the head. None: it is unknown, because the connection is lost."""
        width, height = ctypes.c_uint32(_native.UNKNOWN_SIZE), ctypes.c_uint32()
        _native.value(operation, self._handle, ctypes.byref(width), ctypes.byref(height))
        return None if width.value == _native.UNKNOWN_SIZE else Size(width.value, height.value)

    def _size(self, operation: str) -> Size:
        size = self._known_size(operation)
        if size is None:
            raise errors.HeadSystemError(operation, self.address, "the connection is lost")
        return size

    @property
    def handle(self) -> int:
        """The session's number for the C functions; -1 when it is closed."""
        return self._handle

    @property
    def is_open(self) -> bool:
        return self._handle != _CLOSED and _native.is_usable(self._handle)

    @property
    def is_connected(self) -> bool:
        """Whether the library still has a connection to the head. Asks the library only."""
        return self.is_open and self._known_size("SLGetCameraSize") is not None

    def _take_handle(self) -> int:
        with self._closing:
            handle, self._handle = self._handle, _CLOSED
        return handle if _native.is_usable(handle) else _CLOSED

    def _free(self, handle: int) -> None:
        _native.call("SLDevFree", handle, head=self.address)

    def close(self) -> None:
        """Ends the session, and with it its subscriptions to events. Does nothing when that was done.

        Raises HeadSystemError when a callback does not return within 2 seconds, HeadConnectionError when the farewell could not be
        sent. The session is closed all the same.
        """
        if is_telling(self):
            raise RuntimeError(f"a callback of head {self.address} must not close it: another thread has to")
        handle = self._take_handle()
        try:
            if handle != _CLOSED:
                self._free(handle)
                self._trigger_callbacks.clear()
        finally:
            forget_all(self)

    def __enter__(self) -> Head:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        lost = not self.is_connected
        with contextlib.suppress(*([errors.Error] if kind or lost else [])):
            self.close()

    def __del__(self) -> None:
        if not hasattr(self, "_closing") or not self.is_open:
            return
        warnings.warn(f"the session with head {self.address} was never closed", ResourceWarning, source=self)
        handle = self._take_handle()
        try:  # not on this thread, which may be one of the session's
            threading.Thread(target=_free_silently, args=(handle,), daemon=True).start()
        except RuntimeError:  # at the end of the process there are no new threads
            _free_silently(handle)

    # What belongs to the head. Made anew each time: a head that is forgotten is not kept by its parts.

    @property
    def projector(self) -> Projector:
        return Projector(self, self._projector_size)

    @property
    def data(self) -> Data:
        return Data(self)

    @property
    def ini(self) -> Ini:
        return Ini(self)

    @property
    def gpio(self) -> GPIO:
        return GPIO(self)

    @property
    def serial_port(self) -> SerialPort:
        return SerialPort(self)

    # Pictures.

    @property
    def channel_count(self) -> int:
        """The number of cameras."""
        return int(self._get("SLGetNumberOfChannels", ctypes.c_uint32))

    def live(self, roi: Numbers[int] | None = None, channel: int = 0, reduce: int = 1, out: Pixels | None = None) -> Pixels:
        """What a camera sees now, uint8[h, w].

        roi     -- a part of the picture: (x, y, width, height) in pixels
        channel -- the camera, from 0; others than 0 need a head of protocol version 2600
        reduce  -- a factor that divides width and height: one pixel for each cell of so many in both directions; needs 2600, too
        out     -- a contiguous array of the picture's shape to write to, in place of a new one

        Raises BadParameterError for what does not fit, HeadSystemError when the head has no picture of that channel.

        >>> head.live(roi=(100, 50, 640, 480), reduce=2).shape
        (240, 320)
        """
        if reduce != 1:
            return self._live_reduced(roi, channel, reduce, out)
        if roi is None:
            picture = _pixels.picture_for("SLGetLiveImage", self.address, self.camera_size, out)
            if channel == 0:
                _native.fill("SLGetLiveImage", self._handle, picture, self.address)
            else:
                self._fetch("SLGetLiveImage", channel, picture, *self.camera_size)
            return picture
        region = _pixels.region_of("SLGetLiveImageROI", self.address, roi, self.camera_size)
        picture = _pixels.picture_for("SLGetLiveImageROI", self.address, Size(*region[2:]), out)
        self._fetch("SLGetLiveImageROI", channel, picture, *region)
        return picture

    def _fetch(self, operation: str, channel: int, *arguments: Any) -> None:
        try:
            if channel == 0:
                self._call(operation, *arguments)
            else:
                self._call(operation + "Ex", channel, *arguments)
        except (errors.HeadSystemError, errors.BadParameterError) as error:
            if error.reason or not self.is_connected:
                raise
            stored = f" {arguments[0]}" if operation.startswith("SLGetImageIndex") else ""
            raise type(error)(error.operation, self.address, f"the head has no picture{stored} of channel {channel}") from None

    def _live_reduced(self, roi: Numbers[int] | None, channel: int, factor: int, out: Pixels | None) -> Pixels:
        operation = "SLGetLiveImageLowRes" if roi is None else "SLGetLiveImageROILowRes"
        region = () if roi is None else _pixels.region_of(operation, self.address, roi, self.camera_size)
        size = _pixels.reduced(operation, self.address, Size(*region[2:]) if region else self.camera_size, factor)
        picture = _pixels.picture_for(operation, self.address, size, out)
        self._call(operation, channel, picture, *region, factor)
        return picture

    def picture(self, index: int, channel: int = 0, roi: Numbers[int] | None = None, out: Pixels | None = None) -> Pixels:
        """The picture that a measurement stored under an index, 0 to 255; the rest is as for ``live``."""
        if roi is None:
            picture = _pixels.picture_for("SLGetImageIndex", self.address, self.camera_size, out)
            self._fetch("SLGetImageIndex", channel, index, picture)
            return picture
        region = _pixels.region_of("SLGetImageIndexROI", self.address, roi, self.camera_size)
        if 0 in region[2:]:
            raise errors.BadParameterError("SLGetImageIndexROI", self.address, f"{region} is empty")
        picture = _pixels.picture_for("SLGetImageIndexROI", self.address, Size(*region[2:]), out)
        self._fetch("SLGetImageIndexROI", channel, index, picture, *region)
        return picture

    def pictures(self, seq: Sequence | Iterable[int], channel: int = 0, roi: Numbers[int] | None = None) -> Iterator[Pixels]:
        """The stored pictures of a sequence, or of some indices, one after the other: the next ones are fetched meanwhile, on a thread."""
        indices = range(len(seq)) if isinstance(seq, Sequence) else seq
        return _fetching.ahead(self, indices, lambda index: self.picture(index, channel, roi))

    # Projection and measurements.

    def sequence(self, length: int) -> Sequence:
        """Allocates a sequence of so many images on the head; use it in a ``with`` block."""
        return Sequence(self, length)

    def measure(self, seq: Sequence, first: int | None = None, last: int | None = None) -> None:
        """Shows the images of a sequence one after the other, and stores a picture of each camera under each image's index.

        first, last -- the images to show, both included; all of them unless one is given. Event 0 is for all of them only.

        Waits until the head has finished, 30 seconds at most: split longer measurements. Raises MeasurementFailedError.
        """
        if first is None and last is None:
            self._call("SLStartMeasurement", seq.id)
        else:
            self._call("SLStartFromTo", seq.id, seq._index(first or 0), seq._index(-1 if last is None else last))

    def show(self, image: Pixels) -> None:
        """Shows an image, uint8[h, w, 3] or the grey uint8[h, w], at most as large as the projector, until something else is shown."""
        pixels = _pixels.projector_image("SLShowImage", self.address, image, self.projector.size, exactly=False)
        height, width = pixels.shape[:2]
        self._call("SLShowImage", pixels, width, height, width * 3)

    def scan(
        self,
        *,
        plan: Plan | None = None,
        calibration: Calibration | None = None,
        channels: int | Numbers[int] | None = 0,
        exposures: Numbers[int] = (),
        roi: tuple[int, int, int, int] | None = None,
        **settings: float,
    ) -> Scan:
        """Points of what stands before the head; ``fringix.scan.scan`` describes all parameters.

        plan        -- the patterns to show; the usual ones unless given
        calibration -- the one that the head keeps, unless given
        channels    -- a camera, several, or None for all that the calibration knows
        exposures   -- in us; several are merged, for scenes both dark and shiny
        roi         -- (x, y, width, height): points of this part of the pictures only
        settings    -- as ``fringix.scanner.Settings`` has them

        >>> scan = head.scan()
        >>> scan.points.shape, scan.points.dtype
        ((1024, 1280, 3), dtype('float32'))
        """
        from .scan import scan  # which loads the second library: heads are used without it, too

        return scan(self, plan=plan, calibration=calibration, channels=channels, exposures=exposures, roi=roi, **settings)

    def check(self) -> int:
        """What the head finds when it checks itself; 0 when all is well."""
        return int(self._get("SLCheckSystem", ctypes.c_int32))

    # Events.

    def on_event(self, function: Function) -> Subscription:
        """Calls a function with each Event, until the subscription that this gives is closed, or the session."""
        return Subscription(self, function)

    def events(self) -> EventStream:
        """An iterator over the events from now on."""
        return EventStream(self)

    def events_async(self) -> AsyncEventStream:
        """The same for ``async for``."""
        return AsyncEventStream(self)

    def on_trigger(self, function: Callable[[], object] | None) -> None:
        """Calls a function on each trigger, in place of the one before; None for none. What holds for ``on_event`` holds for it."""
        callback = _no_callback() if function is None else self._trigger_callback(function)
        self._trigger_callbacks.append(callback)
        self._call("SLRegisterGPIOCallback", callback)

    def _trigger_callback(self, function: Callable[[], object]) -> Any:
        me = weakref.ref(self)

        def told(_: int) -> None:
            head = me()
            if head is not None:
                tell(head, function)

        return _native.GPIOCallback(told)

    def post_events(self, window: int, message: int) -> None:
        """Has events posted to a window, until the session is closed: on Windows to a HWND, elsewhere to a descriptor, the writing end
        of a pipe, which gets records for ``fringix.events.posted_event``."""
        self._call("SLRegisterGPIOHandle", window, message)


def _free_silently(handle: int) -> None:
    with contextlib.suppress(errors.Error):
        _native.call("SLDevFree", handle)


_open_heads: weakref.WeakSet[Head] = weakref.WeakSet()


@atexit.register
def _close_all() -> None:
    for head in list(_open_heads):
        handle = head._take_handle()
        if handle != _CLOSED:
            _free_silently(handle)

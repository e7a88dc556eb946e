"""A session with a head: pictures, sequences, measurements, settings."""

from __future__ import annotations

import pathlib
import pickle
from typing import Any, Callable, Iterator

import fringix
import numpy as np
import numpy.typing as npt
import pytest
from fringix import _native, _waiting
from fringix.head import Head
from fringix.simulation import SimulatedHead

Pixels = npt.NDArray[np.uint8]
small: dict[str, Any] = {"camera": (160, 120), "projector": (40, 30), "noise": 0, "image_time": 0}


def scene(picture: Pixels) -> Pixels:
    """Without the numbers in the corner, which are others in each picture."""
    return picture[20:]


@pytest.fixture(scope="module")
def simulated() -> Iterator[SimulatedHead]:
    with SimulatedHead(**small, serial=4711) as running:
        yield running


@pytest.fixture
def head(simulated: SimulatedHead) -> Iterator[Head]:
    with fringix.open(simulated.address, timeout=10) as opened:
        yield opened


def test_a_head_tells_who_it_is(head: Head, simulated: SimulatedHead) -> None:
    assert (head.serial, head.address, head.protocol_version) == (4711, simulated.address, 3300)
    assert (head.camera_size, head.projector.size, head.channel_count) == ((160, 120), (40, 30), 2)
    assert head.is_open and head.is_connected
    assert repr(head) == f"<head 4711 at {simulated.address}>"


def test_a_head_is_opened_by_its_serial_number(simulated: SimulatedHead) -> None:
    with fringix.open(serial=4711, timeout=30) as head:
        assert head.address == simulated.address


def test_a_serial_number_that_nobody_has() -> None:
    with pytest.raises(fringix.HeadConnectionError, match="SLDevAllocBySerial"):
        fringix.open(serial=815)


def test_a_closed_head_says_so(simulated: SimulatedHead) -> None:
    head = fringix.open(simulated.address)
    head.close()
    head.close()
    assert not head.is_open and not head.is_connected
    assert repr(head).endswith("closed>")
    with pytest.raises(fringix.UnknownDeviceError, match=r"SLGetGain of head .*SLUNKNOWN_DEVICE_ID \(-2\)"):
        head.gain


def test_open_takes_an_address_or_a_serial_number() -> None:
    with pytest.raises(TypeError):
        fringix.open()
    with pytest.raises(TypeError):
        fringix.open("127.0.0.1", serial=1)


# Pictures.


def test_a_live_picture(head: Head) -> None:
    picture = head.live()
    assert picture.dtype == np.uint8 and picture.shape == (120, 160)
    assert picture.min() >= 1 and picture.max() > picture.min()


def test_parts_are_those_of_the_whole(head: Head) -> None:
    whole = head.live()
    assert (head.live(roi=(8, 24, 20, 10)) == whole[24:34, 8:28]).all()
    assert head.live(roi=(0, 0, 0, 0)).shape == (0, 0)


def test_a_reduced_picture_has_the_means_of_the_cells(head: Head) -> None:
    cells = head.live().reshape(60, 2, 80, 2).mean(axis=(1, 3))
    assert np.abs(head.live(reduce=2) - cells)[10:].max() <= 0.5
    assert np.abs(head.live(roi=(8, 24, 20, 10), reduce=2) - cells[12:17, 4:14]).max() <= 0.5


def test_the_second_camera_sees_something_else(head: Head) -> None:
    assert (head.live(channel=1) != head.live()).any()
    assert (head.live(channel=1, roi=(8, 24, 20, 10)) == head.live(channel=1)[24:34, 8:28]).all()


def test_the_library_writes_into_the_array_that_is_returned(head: Head, monkeypatch: pytest.MonkeyPatch) -> None:
    written: list[int] = []
    run = _waiting.run

    def watch(work: Any, values: Any, *options: Any) -> Any:
        written.extend(value for value in values if isinstance(value, int) and value > 2**20)  # what C gets: the only large number
        return run(work, values, *options)

    monkeypatch.setattr(_waiting, "run", watch)
    pictures = [head.live(), head.live(roi=(1, 1, 9, 9)), head.live(reduce=2), head.live(channel=1)]
    assert written == [picture.__array_interface__["data"][0] for picture in pictures]
    assert all(picture.base is None and picture.flags.owndata for picture in pictures)


def test_a_picture_goes_into_the_array_that_is_given(head: Head) -> None:
    out = np.zeros((120, 160), np.uint8)
    assert head.live(out=out) is out
    assert (scene(out) == scene(head.live())).all()


def test_an_array_of_another_process_is_as_good(head: Head) -> None:
    out = pickle.loads(pickle.dumps(np.zeros((120, 160), np.uint8)))
    assert head.live(out=out) is out and out.any()


@pytest.mark.parametrize(
    "out, said",
    [
        (np.zeros((160, 120), np.uint8), r"not uint8\[160, 120\]"),
        (np.zeros((120, 320), np.uint8)[:, ::2], "not contiguous"),
        (np.frombuffer(bytes(160 * 120), np.uint8).reshape(120, 160), "read only"),
    ],
)
def test_an_array_that_does_not_fit_is_refused(head: Head, out: Pixels, said: str) -> None:
    with pytest.raises(fringix.BadParameterError, match=said):
        head.live(out=out)


def test_an_array_of_another_type_is_refused(head: Head) -> None:
    with pytest.raises(TypeError, match=r"SLGetLiveImage: out has to be an array of uint8, not float64\[120, 160\]"):
        head.live(out=np.zeros((120, 160)))  # type: ignore[arg-type]


@pytest.mark.parametrize("roi", [(0, 0, 161, 1), (156, 0, 5, 1), (-1, 0, 5, 5), (0, 119, 1, 2)])
def test_a_region_outside_of_the_picture_is_refused(head: Head, roi: tuple[int, int, int, int]) -> None:
    ways: list[Callable[[], Pixels]] = [
        lambda: head.live(roi=roi),
        lambda: head.picture(0, roi=roi),
        lambda: head.live(roi=roi, reduce=5),
    ]
    for take in ways:
        with pytest.raises(fringix.BadParameterError, match="not inside the camera's 160 x 120 pixels"):
            take()


def test_an_empty_stored_region_does_not_cost_the_connection(head: Head) -> None:
    with pytest.raises(fringix.BadParameterError, match="empty"):
        head.picture(0, roi=(1, 1, 0, 4))
    assert head.is_connected


def test_a_factor_that_does_not_divide_is_refused(head: Head) -> None:
    with pytest.raises(fringix.BadParameterError, match="7 does not divide 160 and 120"):
        head.live(reduce=7)


def test_what_the_head_has_no_picture_of(head: Head) -> None:
    with pytest.raises(fringix.BadParameterError, match="no picture 200 of channel 0"):
        head.picture(200)
    with pytest.raises(fringix.HeadSystemError, match="no picture of channel 7"):
        head.live(channel=7)
    assert head.is_connected


# Sequences and measurements.


def seen(head: Head, fill: Any) -> Pixels:
    """What the camera sees of an image that `fill` puts into a sequence of one."""
    with head.sequence(1) as seq:
        fill(seq)
        head.measure(seq)
    return scene(head.picture(0))


def test_a_line_a_column_and_an_image_show_the_same_light(head: Head) -> None:
    level = np.arange(40, dtype=np.uint8) * 6
    rgb = np.repeat(level[:, None], 3, axis=1)
    image = np.repeat(rgb[None], 30, axis=0)
    ways = [level, rgb, image, image[:, :, 0], image[:, ::-1][:, ::-1]]
    pictures = [seen(head, lambda seq, way=way: seq.__setitem__(0, way)) for way in ways]
    assert all((picture == pictures[0]).all() for picture in pictures)
    assert pictures[0].max() > 50


def test_columns_run_along_the_rows(head: Head) -> None:
    level = np.arange(30, dtype=np.uint8) * 8
    column = seen(head, lambda seq: seq.column(0, level))
    assert (column == seen(head, lambda seq: seq.column(0, np.repeat(level[:, None], 3, axis=1)))).all()
    assert (column == seen(head, lambda seq: seq.upload(0, np.repeat(level[:, None], 40, axis=1)))).all()


def test_generated_patterns(head: Head) -> None:
    numbers = np.arange(40)
    gray = (((numbers ^ numbers >> 1) >> 3 & 1) * 255).astype(np.uint8)
    assert (seen(head, lambda seq: seq.gray(0, bit=3)) == seen(head, lambda seq: seq.__setitem__(0, gray))).all()
    assert (seen(head, lambda seq: seq.gray(0, bit=3, inverted=True)) == seen(head, lambda seq: seq.__setitem__(0, 255 - gray))).all()
    cosine = np.round(127.5 * (1 + np.cos(2 * np.pi * numbers / 8))).astype(np.uint8)
    assert (seen(head, lambda seq: seq.phase(0, 1, period=8)) == seen(head, lambda seq: seq.__setitem__(0, cosine))).all()
    even = np.full(40, 99, np.uint8)
    assert (seen(head, lambda seq: seq.image(0, level=99)) == seen(head, lambda seq: seq.__setitem__(0, even))).all()


def test_pictures_come_in_order(head: Head) -> None:
    levels = [0, 80, 160, 240]
    with head.sequence(4) as seq:
        for index, level in enumerate(levels):
            seq[index] = np.full(40, level, np.uint8)
        head.measure(seq)
        means = [picture.mean() for picture in head.pictures(seq)]
        parts = list(head.pictures(range(2, 4), channel=1, roi=(3, 24, 20, 10)))
    assert means == sorted(means) and means[0] < means[-1] / 2
    assert [part.shape for part in parts] == [(10, 20), (10, 20)]
    assert (parts[1] == head.picture(3, channel=1)[24:34, 3:23]).all()


def test_pictures_can_be_left_early_and_tell_what_went_wrong(head: Head) -> None:
    with head.sequence(2) as seq:
        head.measure(seq)
        for _ in head.pictures(seq):
            break
    with pytest.raises(fringix.BadParameterError, match="no picture 222"):
        list(head.pictures([0, 222, 1]))
    assert head.live().shape == (120, 160)


def test_a_range_of_a_sequence_is_measured(head: Head) -> None:
    with head.sequence(3) as seq:
        for index in range(3):
            seq[index] = np.full(40, 0, np.uint8)
        head.measure(seq)
        dark = head.picture(1).mean()
        for index in range(3):
            seq[index] = np.full(40, 255, np.uint8)
        head.measure(seq, first=1, last=1)
        assert head.picture(0).mean() == pytest.approx(dark, abs=5) and head.picture(1).mean() > dark + 20
        head.measure(seq, first=-1)
        assert head.picture(0).mean() == pytest.approx(dark, abs=5) and head.picture(2).mean() > dark + 20


def test_a_sequence_knows_its_length_and_is_freed(head: Head) -> None:
    with head.sequence(2) as seq:
        assert len(seq) == 2 and f"sequence {seq.id} of 2" in repr(seq)
        seq[-1] = np.zeros(40, np.uint8)
        for index in (2, -3):
            with pytest.raises(IndexError, match="has 2 images"):
                seq[index] = np.zeros(40, np.uint8)
    seq.close()
    with pytest.raises(fringix.HeadSystemError):
        head.measure(seq)


def test_a_sequence_whose_making_is_interrupted_is_freed(head: Head, monkeypatch: pytest.MonkeyPatch) -> None:
    called: list[str] = []
    call = _native.call

    def interrupt(operation: str, *arguments: Any, **options: Any) -> None:
        call(operation, *arguments, **options)
        called.append(operation)
        if operation == "SLSeqAlloc":
            raise KeyboardInterrupt

    monkeypatch.setattr(_native, "call", interrupt)
    with pytest.raises(KeyboardInterrupt):
        head.sequence(2)
    assert called == ["SLSeqAlloc", "SLSeqFree"]


@pytest.mark.parametrize("shape", [(39,), (40, 2), (30, 40, 4), (29, 40, 3), (40, 30), (1, 30, 40, 3)])
def test_patterns_of_other_shapes_are_refused(head: Head, shape: tuple[int, ...]) -> None:
    with head.sequence(1) as seq, pytest.raises(fringix.BadParameterError, match="shape|size"):
        seq[0] = np.zeros(shape, np.uint8)


@pytest.mark.parametrize("wrong", [np.zeros(40), [0] * 40, None, np.zeros((30, 40, 3), np.uint16)])
def test_patterns_of_other_types_are_refused(head: Head, wrong: Any) -> None:
    with head.sequence(1) as seq, pytest.raises(TypeError, match="uint8"):
        seq[0] = wrong


def test_numbers_that_have_no_place_in_a_byte_are_refused(head: Head) -> None:
    with head.sequence(1) as seq:
        with pytest.raises(fringix.BadParameterError, match="g2: 256 is not in 0 to 255"):
            seq.gray(0, bit=256)
        with pytest.raises(fringix.BadParameterError, match=r"SLBAD_PARAMETER \(-3\)"):
            seq.gray(0, bit=24)


def test_what_is_shown_is_seen(head: Head) -> None:
    head.show(np.zeros((30, 40, 3), np.uint8))
    dark = head.live().mean()
    head.show(np.full((30, 40), 255, np.uint8))
    assert head.live().mean() > dark + 20
    with head.sequence(1) as seq:
        seq[0] = np.zeros(40, np.uint8)
        seq.show(0)
        assert head.live().mean() == pytest.approx(dark, abs=1)
    head.show(np.full((30, 40), 255, np.uint8))
    with pytest.raises(fringix.BadParameterError, match="at most as large"):
        head.show(np.zeros((31, 40), np.uint8))


def test_a_failed_measurement_has_its_own_exception() -> None:
    with SimulatedHead(**small, measurement_fault=-2) as simulated, fringix.open(simulated.address) as head, head.sequence(1) as seq:
        with pytest.raises(fringix.MeasurementFailedError, match="SLMEASUREMENT_FAILED") as caught:
            head.measure(seq)
        assert (caught.value.code, caught.value.head, caught.value.operation) == (-30, simulated.address, "SLStartMeasurement")


def test_an_older_head_says_what_it_is_too_old_for() -> None:
    with SimulatedHead(**small, protocol=2300) as simulated, fringix.open(simulated.address) as head:
        assert head.protocol_version == 2300 and head.live().shape == (120, 160)
        with pytest.raises(fringix.VersionTooOldError, match="SLGetTemperature"):
            head.temperature
        with pytest.raises(fringix.VersionTooOldError, match="SLGetLiveImageLowRes"):
            head.live(reduce=2)


# Settings.


@pytest.mark.parametrize("name, smallest, largest", [("gain", 10, 100), ("led_power", 10, 200), ("brightness", 1, 10)])
def test_settings_have_values_and_ranges(head: Head, name: str, smallest: int, largest: int) -> None:
    before = getattr(head, name)
    assert before.range == (smallest, largest) and before in before.range
    setattr(head, name, smallest + 1)
    assert getattr(head, name) == smallest + 1
    with pytest.raises(fringix.BadParameterError, match=f"{name} is {smallest} to {largest}, not {largest + 1}"):
        setattr(head, name, largest + 1)
    setattr(head, name, before)
    assert getattr(head, name) == before


def test_readings_have_units(head: Head) -> None:
    assert (head.temperature in range(17, 28), head.temperature.unit) == (True, "degC")
    assert 20 <= head.projector.temperature <= 40
    assert head.uptime >= 0 and head.uptime.unit == "s"
    assert (head.exposure, head.exposure.unit, head.check(), head.projector.status) == (20000, "us", 0, 3)
    with pytest.raises(AttributeError, match='head.ini\\["Camera", "Exposure"\\]'):
        head.exposure = 1
    with pytest.raises(AttributeError, match="no head tells a range"):
        head.uptime.range


def test_what_can_only_be_set(head: Head) -> None:
    head.direct_led_power = 201
    assert head.led_power == 201
    head.led_power = 100
    head.projector.dmd_state = 0
    assert head.projector.status == 1
    head.projector.dmd_state = 1
    with pytest.raises(AttributeError, match="can only be set"):
        head.direct_led_power
    with pytest.raises(fringix.BadParameterError, match="is 0 to 255, not 256"):
        head.direct_led_power = 256


# What hangs on it.


def test_blocks_of_bytes(head: Head, tmp_path: pathlib.Path) -> None:
    head.data["a.bin"] = b"\0\1\2"
    assert head.data["a.bin"] == b"\0\1\2" and "a.bin" in head.data
    head.data["a.bin"] = np.arange(6, dtype=np.uint16).reshape(2, 3).T
    assert np.frombuffer(head.data["a.bin"], np.uint16).tolist() == [0, 3, 1, 4, 2, 5]
    assert b'"fringix-calibration"' in head.data["calibration.json"]
    assert head.data.get("nothing") is None and head.data.get("nothing", b"else") == b"else" and "nothing" not in head.data
    with pytest.raises(KeyError, match="nothing"):
        head.data["nothing"]
    with pytest.raises(fringix.BadParameterError, match="empty"):
        head.data["a.bin"] = b""


def test_names_that_the_head_refuses(head: Head) -> None:
    with pytest.raises(fringix.HeadRefusedError, match="refused with the number 1") as caught:
        head.data["x" * 65] = b"1"
    assert caught.value.code == 1
    with pytest.raises(fringix.HeadSystemError):
        head.data["../up"] = b"1"
    with pytest.raises(fringix.BadParameterError, match="zero character"):
        head.data["a\0b"]


def test_configuration_values(head: Head) -> None:
    assert head.ini["Head", "SerialNumber"] == 4711
    head.ini["Camera", "Exposure"] = 30000
    assert head.exposure == 30000
    head.ini["Camera", "Exposure"] = 20000
    with pytest.raises(fringix.HeadSystemError, match=r"knows no \[Nothing\] At All"):
        head.ini["Nothing", "At All"]
    with pytest.raises(fringix.HeadSystemError, match=r"does not take 1 for \[Head\] SerialNumber"):
        head.ini["Head", "SerialNumber"] = 1


def test_lines_and_ports(head: Head) -> None:
    head.gpio[3] = 1
    assert [head.gpio[line] for line in (2, 3)] == [0, 1]
    with pytest.raises(fringix.HeadSystemError, match="SLGetGPIOStatus"):
        head.gpio[8]
    assert head.serial_port.command("POS? ü") == "POS? ü"
    assert head.projector.command(1) == (1, 0, 0)
    with pytest.raises(fringix.HeadSystemError, match="SLExecProjCmd"):
        head.projector.command(99)


def test_a_mask_darkens(head: Head) -> None:
    bright = head.live().mean()
    head.projector.set_mask(np.zeros((30, 40), np.uint8))
    assert head.live().mean() < bright - 20
    assert head.projector.status == 7
    head.projector.clear_mask()
    assert head.live().mean() == pytest.approx(bright, abs=1)
    with pytest.raises(fringix.BadParameterError, match="a mask has the shape"):
        head.projector.set_mask(np.zeros(40, np.uint8))
    with pytest.raises(fringix.HeadSystemError, match="SLSetMask"):
        head.projector.set_mask(np.zeros((3, 4), np.uint8))

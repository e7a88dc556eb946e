"""Scans of simulated heads: the points are, to the bit, those of the tool."""

import dataclasses
import threading
from typing import Any

import fringix
import numpy
import pytest
from fringix.calibration import Calibration
from fringix.errors import BadCalibrationError, BadPicturesError
from fringix.plan import Method, Plan
from tool_scans import SMALL, raw_scan


def open_head(simulated_heads: Any, **options: Any) -> Any:
    return fringix.open(simulated_heads(**{**SMALL, **options}).address)


@pytest.fixture
def head(simulated_heads):
    with open_head(simulated_heads) as opened:
        yield opened



@pytest.mark.parametrize(
    "options, words",
    [
        ({}, []),
        ({"channels": None}, ["--channel", "all"]),
        ({"channels": [1, 0]}, ["--channel", "1,0"]),
        ({"roi": (100, 60, 120, 100)}, ["--roi", "100,60,120x100"]),
        ({"exposures": [20000, 5000]}, ["--exposure", "20000,5000"]),
    ],
)
def test_points_are_those_of_the_tool(simulated_heads, tmp_path, options, words):
    folder = raw_scan(tmp_path / "scan", *words, seed=5)
    with open_head(simulated_heads, seed=5) as head:
        scan = head.scan(**options)
    for index, channel in enumerate(scan.channels):
        name = "range.npy" if len(scan.channels) == 1 else f"range-{channel}.npy"
        numpy.testing.assert_array_equal(scan.camera(index).points, numpy.load(folder / name))
    scan.save(tmp_path / "cloud.ply")
    assert (tmp_path / "cloud.ply").read_bytes() == (folder / "cloud.ply").read_bytes()


def test_noise_is_another_each_time(head):
    assert (head.scan().points != head.scan().points).any()


def test_steps_are_timed(head):
    scan = head.scan()
    assert list(scan.timings) == ["calibration", "upload", "measure", "fetch", "compute"]
    assert min(scan.timings.values()) > 0
    assert not scan.cautions


def test_exposure_comes_back(head):
    head.ini["Camera", "Exposure"] = 15000
    head.scan(exposures=[4000, 16000])
    assert head.ini["Camera", "Exposure"] == 15000
    with pytest.raises(fringix.HeadSystemError):
        head.scan(exposures=[4000, 99])
    assert head.ini["Camera", "Exposure"] == 15000


def test_sequence_is_freed_whatever_happens(simulated_heads):
    with open_head(simulated_heads) as head:
        for _ in range(3):  # each takes 19 of the 699 images that a head of this size has room for
            head.scan()
            with pytest.raises(fringix.HeadSystemError):
                head.scan(exposures=[99])
        with head.sequence(256), head.sequence(256), head.sequence(699 - 512):
            pass


def test_plan_and_settings_are_ones_own(head):
    scan = head.scan(plan=Plan.defaults(640, Method.THREE_FREQUENCIES), least_patch=0, clean=0)
    assert scan.plan.method == Method.THREE_FREQUENCIES
    assert scan.findings.points > 60000


def test_other_calibration_is_used_with_a_caution(head):
    own = Calibration.parse(head.data["calibration.json"])
    scan = head.scan(calibration=dataclasses.replace(own, serial=7))
    assert scan.cautions == ("the calibration is that of head 7, and this is head 1001",)


def test_calibration_that_does_not_fit_is_refused(head):
    own = Calibration.parse(head.data["calibration.json"])
    wide = dataclasses.replace(own.projector, width=1280)
    with pytest.raises(BadCalibrationError, match="a projector with 1280 x 400 pixels, but this one has 640 x 400"):
        head.scan(calibration=dataclasses.replace(own, projector=wide))
    small = tuple(dataclasses.replace(camera, width=300) for camera in own.cameras)
    with pytest.raises(BadCalibrationError, match="a camera with 300 x 256 pixels, but this one has 320 x 256"):
        head.scan(calibration=dataclasses.replace(own, cameras=small))
    with pytest.raises(BadCalibrationError, match="no camera 2"):
        head.scan(channels=2)


@pytest.mark.parametrize("block, reason", [(b"{", "calibration"), (b'{"format": "fringix-truth"}', "format")])
def test_damaged_calibration_is_refused(head, block, reason):
    head.data["calibration.json"] = block
    with pytest.raises(BadCalibrationError, match=reason):
        head.scan()


@pytest.mark.parametrize("channels", [(), (0, 0)])
def test_channels_are_different_ones(head, channels):
    with pytest.raises(ValueError, match="different cameras, one or more"):
        head.scan(channels=channels)


def test_unknown_option_is_refused(head):
    with pytest.raises(TypeError, match="exposure"):
        head.scan(exposure=3)


def test_head_without_light_gives_no_points(simulated_heads):
    with open_head(simulated_heads, ambient=40) as head:
        head.brightness, head.led_power = 1, 10
        with pytest.raises(BadPicturesError, match="no pixel gives a point; most of them for this reason: noise"):
            head.scan()


def test_heads_are_scanned_side_by_side(simulated_heads):
    addresses = [simulated_heads(**SMALL, seed=seed).address for seed in range(1, 9)]
    scans: dict[int, Any] = {}

    def scan_one(number: int) -> None:
        with fringix.open(addresses[number]) as head:
            scans[number] = head.scan(threads=1)

    threads = [threading.Thread(target=scan_one, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(scans) == list(range(8))
    assert all(scan.findings.points > 60000 for scan in scans.values())
    assert len({scan.points.tobytes() for scan in scans.values()}) == 8

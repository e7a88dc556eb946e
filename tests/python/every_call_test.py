"""Each export is reached by the package: one session that uses everything."""

from __future__ import annotations

import os
import sys

import fringix
import numpy as np
import pytest
from fringix import _native
from fringix.head import Head
from fringix.simulation import SimulatedHead


def use_pictures(head: Head) -> None:
    for channel in (0, 1):
        head.live(channel=channel)
        head.live(channel=channel, roi=(0, 0, 8, 8))
        head.live(channel=channel, reduce=2)
        head.live(channel=channel, roi=(0, 0, 8, 8), reduce=2)
        head.picture(0, channel=channel)
        head.picture(0, channel=channel, roi=(0, 0, 8, 8))


def use_patterns(head: Head) -> None:
    size = head.projector.size
    with head.sequence(8) as seq:
        seq.gray(0, 1)
        seq.phase(1, 2, 8)
        seq.image(3, 1)
        seq[4] = np.zeros(size.width, np.uint8)
        seq[5] = np.zeros((size.width, 3), np.uint8)
        seq.column(6, np.zeros(size.height, np.uint8))
        seq.column(6, np.zeros((size.height, 3), np.uint8))
        seq[7] = np.zeros((size.height, size.width, 3), np.uint8)
        head.measure(seq)
        head.measure(seq, 0, 1)
        seq.show(0)
    head.show(np.zeros((size.height, size.width, 3), np.uint8))


def use_settings(head: Head) -> None:
    for name in ("gain", "led_power", "brightness"):
        value = getattr(head, name)
        setattr(head, name, value.range.max)
    head.direct_led_power = 50
    head.projector.dmd_state = 1
    assert head.check() == 0
    assert all(value >= 0 for value in (head.exposure, head.temperature, head.uptime, head.projector.temperature, head.projector.status))
    assert head.channel_count == 2
    head.projector.set_mask(np.zeros((head.projector.size.height, head.projector.size.width), np.uint8))
    head.projector.clear_mask()


def use_what_hangs_on_it(head: Head) -> None:
    head.data["block"] = b"content"
    assert head.data["block"] == b"content"
    head.ini["Station", "Number"] = 7
    assert head.ini["Station", "Number"] == 7
    head.gpio[1] = 1
    assert head.gpio[1] == 1
    assert head.serial_port.command("hello") == "hello"
    assert head.projector.command(1) == (1, 0, 0)


def use_events(head: Head) -> None:
    head.on_event(print).close()
    head.on_trigger(print)
    reading, writing = os.pipe()
    head.post_events(writing, 1)
    os.close(reading)
    os.close(writing)


def use_the_library(simulated: SimulatedHead) -> None:
    assert simulated.address in [found.address for found in fringix.discover()]
    assert fringix.found_addresses()[simulated.serial] == simulated.address
    assert fringix.select_head() is None
    assert fringix.library_version() == 4002
    assert fringix.status_name(-30) == "SLMEASUREMENT_FAILED" and fringix.status_name(-11) == "SLHANDSHAKE_TIMEOUT"
    fringix.set_tracing(False)
    fringix.open(serial=simulated.serial, timeout=30).close()


@pytest.mark.skipif(sys.platform == "win32", reason="post_events wants a window there, and the dialog would show")
@pytest.mark.simulated_head(camera=(64, 48), projector=(40, 30), image_time=0, serial=90125)
def test_every_export_is_used(simulated_head: SimulatedHead, monkeypatch: pytest.MonkeyPatch) -> None:
    used: set[str] = set()
    function = _native.function

    def record(operation: str) -> _native.Function:
        used.add(operation)
        return function(operation)

    monkeypatch.setattr(_native, "function", record)
    monkeypatch.delenv("DISPLAY", raising=False)
    monkeypatch.delenv("WAYLAND_DISPLAY", raising=False)
    use_the_library(simulated_head)
    with fringix.open(simulated_head.address) as head:
        for use in (use_patterns, use_pictures, use_settings, use_what_hangs_on_it, use_events):
            use(head)
    assert set(_native.EXPORTS) - used == set()


@pytest.mark.skipif(sys.platform == "win32", reason="they go to the debugger there")
def test_trace_lines_are_switched(capfd: pytest.CaptureFixture[str]) -> None:
    fringix.set_tracing(True)
    with pytest.raises(fringix.UnknownDeviceError):
        _native.call("SLGetGain", 4711, None)
    fringix.set_tracing(False)
    said = capfd.readouterr().err
    with pytest.raises(fringix.UnknownDeviceError):
        _native.call("SLGetGain", 4711, None)
    assert "<QOR> " in said and "SLGetGain" in said
    assert capfd.readouterr().err == ""

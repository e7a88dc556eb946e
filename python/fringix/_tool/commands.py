"""What the commands do."""

from __future__ import annotations

import argparse
import contextlib
import json
import os
import pathlib
import subprocess
import sys
import time
from typing import Any, Dict, Iterator, List, Sequence, Union

import numpy as np

import fringix

from .. import _png
from .._files import write_file
from ..calibration import Calibration
from ..scan import Scan, from_folder
from ..simulation import find_program
from .failures import Failure, UsageError


def _print_json(result: object) -> None:
    print(json.dumps(result, indent=2))


def _open(arguments: argparse.Namespace) -> fringix.Head:
    if arguments.address is None and arguments.serial is None:
        raise UsageError("a head is required, by ADDRESS or by --serial")
    if arguments.address is not None and arguments.serial is not None:
        raise UsageError("ADDRESS and --serial exclude each other")
    if arguments.serial is None:
        return fringix.open(arguments.address, timeout=arguments.timeout)
    try:
        return fringix.open(serial=arguments.serial, timeout=arguments.timeout)
    except fringix.HeadConnectionError:
        raise Failure(
            f"no head with serial number {arguments.serial} answers",
            '"python -m fringix list" shows the heads that answer. One in another network is reached by its address.',
            "not-found",
        ) from None


def list_heads(arguments: argparse.Namespace) -> None:
    heads = fringix.discover()
    if arguments.json:
        _print_json([_described(head) for head in heads])
    if not heads:
        next_step = "Check that the head is on and in a network of this machine, and that no firewall keeps UDP port 44332 from answering"
        raise Failure("no head answers the search", f"{next_step}. A head in another network is reached by its address.", "not-found")
    if not arguments.json:
        _print_table(heads)


def _described(head: fringix.FoundHead) -> Dict[str, object]:
    protocol, channels, camera_width, camera_height, projector_width, projector_height, uptime = head.info
    return {
        "serial": head.serial,
        "model": head.model,
        "address": head.address,
        "protocolVersion": protocol,
        "channels": channels,
        "camera": {"width": camera_width, "height": camera_height},
        "projector": {"width": projector_width, "height": projector_height},
        "uptime": uptime,
        "info": list(head.info),
    }


_ROW = "{:<13}  {:<14}  {:<15}  {:<8}  {:<8}  {:<13}  {:<13}  {}"


def _print_table(heads: Sequence[fringix.FoundHead]) -> None:
    print(_ROW.format("serial number", "model", "address", "protocol", "channels", "camera px", "projector px", "uptime s"))
    for head in heads:
        told = ["-" if number == -1 else str(number) for number in head.info]
        sizes = [f"{told[2]} x {told[3]}", f"{told[4]} x {told[5]}"]
        print(_ROW.format(head.serial, head.model, head.address, told[0], told[1], *sizes, told[6]))


def live(arguments: argparse.Namespace) -> None:
    _require_picture_output(arguments.output, arguments.count)
    names, fetching, started = [], 0.0, time.perf_counter()
    with _open(arguments) as head:
        _require_channels(head, [arguments.channel])
        for number in range(1, arguments.count + 1):
            before = time.perf_counter()
            picture = head.live(roi=arguments.roi, channel=arguments.channel, reduce=arguments.factor)
            fetching += time.perf_counter() - before
            names.append(_numbered(arguments.output, number, arguments.count))
            _write_picture(names[-1], picture)
    if arguments.output != "-":
        _tell_pictures(arguments, names, picture.shape, fetching, time.perf_counter() - started)


def _require_picture_output(output: str, count: int) -> None:
    if output != "-" and not output.lower().endswith(".png"):
        raise UsageError(f'--output: "{output}" is no name of a PNG file: let it end in .png')
    if output == "-" and count > 1:
        raise UsageError(f"--output: {count} pictures are too many for standard output: name a file, or fetch one")
    if output == "-" and sys.stdout.isatty():
        raise UsageError("--output: a terminal cannot show a PNG file: lead standard output to a file or a program")


def _require_channels(head: fringix.Head, channels: Sequence[int]) -> None:
    """The head has no better answer than that it has no picture. Camera 0 is there always, and older heads do not tell their number."""
    for channel in filter(None, channels):
        count = head.channel_count
        if channel >= count:
            raise Failure(f"there is no channel {channel}: the head at {head.address} has {count}", "They count from 0.", "no-channel")


def _numbered(output: str, number: int, count: int) -> str:
    stem, ending = os.path.splitext(output)
    return output if count == 1 else f"{stem}-{number:0{len(str(count))}}{ending}"


def _write_picture(name: str, picture: np.ndarray[Any, np.dtype[np.uint8]]) -> None:
    if name == "-":
        sys.stdout.buffer.write(_png.encode(picture))
        return
    with _writing(name):
        write_file(name, _png.encode(picture))


@contextlib.contextmanager
def _writing(name: Union[str, pathlib.Path]) -> Iterator[None]:
    """Files get their names when they are whole: the system would name the part."""
    try:
        yield
    except OSError as error:
        raise Failure(f'cannot write "{name}": {error.strerror or error}') from None


def _tell_pictures(arguments: argparse.Namespace, names: List[str], shape: Any, fetching: float, total: float) -> None:
    height, width = shape
    if arguments.json:
        _print_json({"files": names, "width": width, "height": height, "fetchingSeconds": fetching, "totalSeconds": total})
    elif len(names) == 1:
        print(f"{names[0]}: {width} x {height} pixels, fetched in {fetching * 1000:.1f} ms")
    else:
        print(f"{names[0]} to {names[-1]}: {width} x {height} pixels")
        rates = [len(names) / seconds for seconds in (fetching, total)]
        print(f"{len(names)} pictures, {rates[0]:.1f} frames/s fetched, {rates[1]:.1f} frames/s with writing the files")


def scan(arguments: argparse.Namespace) -> None:
    result, folder = _measured(arguments), pathlib.Path(arguments.output)
    folder.mkdir(parents=True, exist_ok=True)
    started = time.perf_counter()
    files = ["cloud.ply", "cloud.pcd", "range.npy"]
    for file in files:
        with _writing(folder / file):
            result.save(folder / file, unit=arguments.unit)
    seconds = {**result.timings, "write": time.perf_counter() - started}
    if arguments.json:
        _print_json(_summary(result, seconds))
    else:
        _print_summary(result, seconds)
        print(f"{folder}: {', '.join(files)}")


def _measured(arguments: argparse.Namespace) -> Scan:
    calibration = Calibration.read(arguments.calibration) if arguments.calibration else None
    if arguments.source is not None:
        return from_folder(_alone(arguments), calibration=calibration, roi=arguments.roi)
    with _open(arguments) as head:
        _require_channels(head, arguments.channel or [])
        options = {"channels": arguments.channel, "exposures": arguments.exposure, "roi": arguments.roi}
        result: Scan = head.scan(calibration=calibration, **options)
    return result


def _alone(arguments: argparse.Namespace) -> str:
    """The folder of --from, which goes with nothing that a head is asked for."""
    if arguments.address is not None or arguments.serial is not None:
        raise UsageError("--from needs no head: leave its address out")
    if arguments.exposure or arguments.channel != [0]:
        raise UsageError("--from: the pictures in the folder have been taken: leave --channel and --exposure out")
    return str(arguments.source)


def _summary(result: Scan, seconds: Dict[str, float]) -> Dict[str, object]:
    height, width = result.valid.shape
    return {
        "points": int(result.valid.sum()),
        "width": width,
        "height": height,
        "serial": result.calibration.serial,
        "channels": list(result.channels),
        "medianSigma": float(np.median(result.sigma[result.valid])),
        "cautions": list(result.cautions),
        "seconds": seconds,
    }


def _print_summary(result: Scan, seconds: Dict[str, float]) -> None:
    rows = {
        "points": f"{result.valid.sum()} of {result.valid.size} pixels",
        "expected error": f"{np.median(result.sigma[result.valid]):.4f} mm (median sigma)",
    }
    rows.update({step: f"{time_taken * 1000:.1f} ms" for step, time_taken in seconds.items()})
    rows["total"] = f"{sum(seconds.values()) * 1000:.1f} ms"
    for name, text in rows.items():
        print(f"{name:<16}{text}")
    for caution in result.cautions:
        print(f"{'caution':<16}{caution}")


def run_calibrate(words: Sequence[str]) -> int:
    """What ``python -m fringix.calibrate`` does; loaded only when it is wanted."""
    from ..calibrate.__main__ import main

    return main(words)


def run_head(words: Sequence[str]) -> int:
    """Becomes the simulated head; its exit code is this program's."""
    command = [find_program(), *words]
    if sys.platform != "win32":
        os.execv(command[0], command)
    with subprocess.Popen(command) as head:
        while True:
            try:
                return head.wait()
            except KeyboardInterrupt:  # the head has been told, too
                continue

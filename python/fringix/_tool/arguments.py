"""The command line."""

from __future__ import annotations

import argparse
import ipaddress
import re
from typing import Any, Callable, List, NoReturn, Optional, Tuple

from . import commands
from .failures import UsageError

MOST_CHANNELS = 4
LONGEST_EXPOSURE = 10_000_000
LONGEST_WAIT = 24 * 60 * 60.0
SECONDS = {"ms": 0.001, "s": 1.0, "min": 60.0, "": 1.0}

_EXIT_CODES = "Exit code: 0 success, 1 failure, 2 wrong usage."


class _Parser(argparse.ArgumentParser):
    """Whatever is wrong with a command line is told in one line."""

    def error(self, message: str) -> NoReturn:
        raise UsageError(re.sub(r"^argument ([^:]*): ", lambda found: found.group(1).split("/")[-1] + ": ", message), self.prog)


def _number(least: int, most: int) -> Callable[[str], int]:
    def read(text: str) -> int:
        if not re.fullmatch(r"[+-]?\d{1,10}", text) or not least <= int(text) <= most:
            raise argparse.ArgumentTypeError(f'"{text}" is no number from {least} to {most}')
        return int(text)

    return read


def _numbers(least: int, most: int, count: int) -> Callable[[str], List[int]]:
    def read(text: str) -> List[int]:
        numbers = [_number(least, most)(word) for word in text.split(",")]
        if len(numbers) > count or len(set(numbers)) < len(numbers):
            raise argparse.ArgumentTypeError(f'"{text}" is not up to {count} different numbers')
        return numbers

    return read


def _channels(text: str) -> Optional[List[int]]:
    return None if text == "all" else _numbers(0, MOST_CHANNELS - 1, MOST_CHANNELS)(text)


def _duration(text: str) -> float:
    found = re.fullmatch(r"(\d+(?:\.\d*)?|\.\d+)(ms|s|min|)", text)
    seconds = float(found.group(1)) * SECONDS[found.group(2)] if found else 0.0
    if not 0.001 <= seconds <= LONGEST_WAIT:
        raise argparse.ArgumentTypeError(f'"{text}" is no time such as 1s, 500ms or 2min, from 1ms to 1440min')
    return seconds


def _region(text: str) -> Tuple[int, int, int, int]:
    found = re.fullmatch(r"(\d{1,9}),(\d{1,9}),(\d{1,9})[,x](\d{1,9})", text)
    if not found or not int(found.group(3)) or not int(found.group(4)):
        raise argparse.ArgumentTypeError(f'"{text}" is no region: give X,Y,WIDTHxHEIGHT in pixels, such as 0,0,640x480')
    x, y, width, height = map(int, found.groups())
    return x, y, width, height


def _address(text: str) -> str:
    if re.fullmatch(r"[\d.]+", text):
        try:
            ipaddress.IPv4Address(text)
        except ValueError:
            raise argparse.ArgumentTypeError(f'"{text}" is no IPv4 address, such as 192.168.0.10') from None
    return text


def _add_head(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("address", nargs="?", type=_address, metavar="ADDRESS", help="IPv4 address of the head, or its host name")
    parser.add_argument("--serial", type=_number(0, 2**31 - 1), metavar="N", help="serial number of the head, which is searched for")
    wait = "how long a head may take to answer when it is connected to, 5s unless told otherwise"
    parser.add_argument("--timeout", type=_duration, default=5.0, metavar="5s", help=wait)


def _add_json(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--json", action="store_true", help="print the result, and on standard error what goes wrong, as JSON")


def _add_region(parser: argparse.ArgumentParser) -> None:
    parser.add_argument("--roi", type=_region, metavar="X,Y,WxH", help="only this part of the picture, in pixels")


def _add_list(parser: argparse.ArgumentParser) -> None:
    _add_json(parser)
    parser.set_defaults(command=commands.list_heads)


def _add_live(parser: argparse.ArgumentParser) -> None:
    _add_head(parser)
    _add_json(parser)
    output = "PNG file to write, - is standard output, live.png unless told otherwise"
    parser.add_argument("-o", "--output", default="live.png", metavar="FILE", help=output)
    channel = "camera channel, 0 unless told otherwise"
    parser.add_argument("--channel", type=_number(0, MOST_CHANNELS - 1), default=0, metavar="N", help=channel)
    _add_region(parser)
    count = "how many pictures; their files are numbered"
    parser.add_argument("-n", "--count", type=_number(1, 999999), default=1, metavar="N", help=count)
    parser.add_argument("--factor", type=_number(1, 65536), default=1, metavar="N", help="reduce the picture by this factor")
    parser.set_defaults(command=commands.live)


def _add_scan(parser: argparse.ArgumentParser) -> None:
    _add_head(parser)
    _add_json(parser)
    parser.add_argument("-o", "--output", required=True, metavar="FOLDER", help="folder for the clouds, made when it is missing")
    parser.add_argument("--from", dest="source", metavar="FOLDER", help="compute again from what fringix scan --raw left there")
    parser.add_argument("--calibration", metavar="FILE", help="calibration in place of the one that the head keeps")
    cameras = "cameras to measure with: one, several as 0,1, or all; 0 unless told otherwise"
    parser.add_argument("--channel", type=_channels, default=[0], metavar="N[,N...]", help=cameras)
    exposure = "exposure in microseconds; several, up to 5, are merged"
    parser.add_argument("--exposure", type=_numbers(1, LONGEST_EXPOSURE, 5), default=[], metavar="US[,US...]", help=exposure)
    _add_region(parser)
    parser.add_argument("--unit", choices=["mm", "m"], default="mm", help="unit of lengths in the files, mm unless told otherwise")
    parser.set_defaults(command=commands.scan)


def make_parser() -> argparse.ArgumentParser:
    description = "Talks to structured-light 3D sensor heads."
    parser = _Parser(prog="python -m fringix", description=description, epilog=_EXIT_CODES, allow_abbrev=False)
    subcommands: Any = parser.add_subparsers(metavar="COMMAND", required=True)
    table: List[Tuple[str, str, Callable[[argparse.ArgumentParser], None]]] = [
        ("list", "Search the network for heads", _add_list),
        ("live", "Fetch the camera's current picture", _add_live),
        ("scan", "Measure points in millimetres", _add_scan),
        ("calibrate", "Calibrate a head with a checkerboard; its options are those of python -m fringix.calibrate", lambda parser: None),
        ("head", "Start a simulated head; its options are those of fringix-head", lambda parser: None),
    ]
    for name, summary, add in table:
        add(subcommands.add_parser(name, help=summary, description=summary, epilog=_EXIT_CODES, allow_abbrev=False))
    return parser

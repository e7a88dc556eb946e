"""``python -m fringix.calibrate``: calibrates a head."""

from __future__ import annotations

import argparse
import contextlib
import pathlib
import sys
from typing import Callable, Iterator, List, Optional, Sequence, Tuple

import fringix

from ..head import Head
from . import Board, CalibrationRefused, Result, View, calibrate, save_picture, take_view
from .measurements import see

_SIMULATED_POSES = 20


def _board(text: str) -> Tuple[int, int]:
    columns, _, rows = text.partition("x")
    if not columns.isdigit() or not rows.isdigit():
        raise argparse.ArgumentTypeError(f'"{text}" is not of the form 12x9')
    return int(columns), int(rows)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser("python -m fringix.calibrate", description="Calibrates a head with a checkerboard in several poses.")
    parser.add_argument("address", nargs="?", help="address of the head")
    parser.add_argument("--board", type=_board, required=True, metavar="12x9", help="squares of the board along and across")
    parser.add_argument("--square", type=float, required=True, metavar="MM", help="side of a square")
    parser.add_argument("-o", "--output", type=pathlib.Path, default=pathlib.Path("calibration.json"), help="calibration.json unless given")
    parser.add_argument("--cameras", type=int, metavar="N", help="how many cameras to calibrate, from the first; all that the head has")
    parser.add_argument("--coverage", type=pathlib.Path, metavar="FILE.png", help="write a picture of where the board was")
    parser.add_argument("--keep", type=pathlib.Path, metavar="FOLDER", help="keep the views, for --from")
    parser.add_argument("--from", dest="folder", type=pathlib.Path, metavar="FOLDER", help="calibrate again from views that were kept")
    parser.add_argument("--simulated", action="store_true", help="before a simulated head: go through its own poses of a board")
    parser.add_argument("--install", action="store_true", help="save the calibration on the head, too, as calibration.json")
    return parser


@contextlib.contextmanager
def _simulated_poses(head: Head) -> Iterator[Iterator[str]]:
    """Puts a board before a simulated head, pose after pose; at the end what stood there stands there again."""
    before = head.data.get("scene.txt")
    if not before:
        raise CalibrationRefused("this head is no simulated one: leave --simulated out, and place the board yourself")

    def poses() -> Iterator[str]:
        for number in range(1, _SIMULATED_POSES + 1):
            head.data["scene.txt"] = f"board:{number}".encode()
            yield f"board:{number}"

    try:
        yield poses()
    finally:
        head.data["scene.txt"] = before


def _poses_by_hand() -> Iterator[str]:
    number = 1
    while True:
        print(f"pose {number}: place the board, then Enter; or q and Enter to end: ", end="", flush=True)
        line = sys.stdin.readline()
        if not line or line.strip() == "q":
            return
        yield f"pose {number}"
        number += 1


def _take_views(head: Head, board: Board, options: argparse.Namespace) -> List[View]:
    channels = range(options.cameras or head.channel_count)
    views: List[View] = []
    with contextlib.ExitStack() as stack:
        poses = stack.enter_context(_simulated_poses(head)) if options.simulated else _poses_by_hand()
        for name in poses:
            view = take_view(head, name, channels)
            print(f"{name}: {_said_of(board, view)}")
            if options.keep:
                options.keep.mkdir(parents=True, exist_ok=True)
                view.save(options.keep / f"view-{len(views):02}.npz")
            views.append(view)
    return views


def _said_of(board: Board, view: View) -> str:
    seen = [see(board, sight, 0) for sight in view.sights]
    said = [f"camera {camera}: {what}" for camera, what in enumerate(seen) if isinstance(what, str)]
    return "; ".join(said) or "the whole board is seen"


def _kept_views(folder: pathlib.Path) -> List[View]:
    paths = sorted(folder.glob("view-*.npz"))
    if not paths:
        raise CalibrationRefused(f"{folder} has no view-00.npz and so on, as --keep leaves them")
    return [View.read(path) for path in paths]


def _report(result: Result) -> None:
    for name, residuals in result.by_pose.items():
        print(f"{name:<12} corners {residuals.corners:.3f} px, light {residuals.light:.4f} px")
    print(f"{'all':<12} corners {result.residuals.corners:.3f} px, light {result.residuals.light:.4f} px")
    print(f"points are uncertain by up to {result.expected_error:.3f} mm")
    for warning in result.warnings:
        print(f"warning: {warning}")


def _save(result: Result, options: argparse.Namespace) -> None:
    result.calibration.save(options.output)
    print(f"saved as {options.output}")
    if options.coverage:
        save_picture(result.coverage, options.coverage)


def _from_head(options: argparse.Namespace, board: Board) -> None:
    with fringix.open(options.address) as head:
        views = _take_views(head, board, options)
        result = calibrate(views, board)
        _report(result)
        _save(result, options)
        if options.install:
            head.data["calibration.json"] = result.calibration.text().encode()


def _from_folder(options: argparse.Namespace, board: Board) -> None:
    views = _kept_views(options.folder)
    result = calibrate(views, board)
    _report(result)
    _save(result, options)


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Exit code: 0 when there is a calibration, 1 when there is none, 2 for wrong usage, 130 after Ctrl-C."""
    parser = _parser()
    options = parser.parse_args(arguments)
    if bool(options.address) == bool(options.folder):
        parser.error("give either the address of a head, or --from FOLDER")
    if options.folder and (options.simulated or options.install or options.keep):
        parser.error("--simulated, --keep and --install need a head")
    run: Callable[[argparse.Namespace, Board], None] = _from_folder if options.folder else _from_head
    try:
        run(options, Board(options.board[0], options.board[1], options.square))
    except (CalibrationRefused, fringix.Error, OSError, ImportError, ValueError) as error:
        print(f"python -m fringix.calibrate: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())

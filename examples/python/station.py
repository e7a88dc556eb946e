"""Scans at each trigger of a head until Ctrl-C, and waits for a head that is gone: station.py ADDRESS FOLDER"""

from __future__ import annotations

import itertools
import logging
import pathlib
import sys
import time

import fringix

LOST = (fringix.HeadConnectionError, fringix.HeadSystemError, fringix.HandshakeTimeoutError)
RECONNECT_AFTER = 2.0
ASK_AFTER = 2.0  # seconds without an event; the library's own keep-alive notices a lost head within a minute

log = logging.getLogger("station")


def free_name(folder: pathlib.Path) -> pathlib.Path:
    names = (folder / f"scan-{number:04}.ply" for number in itertools.count(1))
    return next(name for name in names if not name.exists())


def scan(head: fringix.Head, folder: pathlib.Path) -> None:
    try:
        result = head.scan()
    except fringix.BadPicturesError as error:
        log.warning("no points: %s", error)
        return
    name = free_name(folder)
    result.save(name)
    log.info("%s: %d points", name, result.valid.sum())


def serve(head: fringix.Head, folder: pathlib.Path) -> None:
    """Until the connection is lost. Triggers that come during a scan are served after it."""
    with head.events() as events:
        log.info("connected to head %d at %s", head.serial, head.address)
        while True:
            try:
                event = events.get(timeout=ASK_AFTER)
            except TimeoutError:
                _ = head.gain  # raises when the head is gone
            else:
                if event.kind == fringix.Kind.TRIGGER:
                    scan(head, folder)


def main(address: str, folder: pathlib.Path) -> None:
    folder.mkdir(parents=True, exist_ok=True)
    while True:
        try:
            with fringix.open(address, timeout=3) as head:
                serve(head, folder)
        except LOST as error:
            log.warning("%s Trying again.", error)
            time.sleep(RECONNECT_AFTER)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    logging.basicConfig(format="%(asctime)s %(message)s", level=logging.INFO)
    try:
        main(sys.argv[1], pathlib.Path(sys.argv[2]))
    except KeyboardInterrupt:
        log.info("ended")

"""Prints the triggers of a head as they come, until there were so many: triggers.py ADDRESS [COUNT]"""

from __future__ import annotations

import sys
import threading
import time

import fringix


def main(address: str, count: int = 10) -> None:
    remaining = threading.Semaphore(0)

    def told(event: fringix.Event) -> None:  # on a thread of the session: it should return soon
        if event.kind == fringix.Kind.TRIGGER:
            print(f"{time.strftime('%H:%M:%S', time.localtime(event.time))} trigger of head {event.serial}", flush=True)
            remaining.release()

    with fringix.open(address) as head, head.on_event(told):
        print(f"waiting for triggers of head {head.serial}", flush=True)
        for _ in range(count):
            remaining.acquire()


if __name__ == "__main__":
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    main(sys.argv[1], *map(int, sys.argv[2:]))

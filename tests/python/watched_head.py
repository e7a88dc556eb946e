"""A simulated head that tests listen to and can stop: its system goes on taking connections and bytes meanwhile."""

from __future__ import annotations

import os
import pathlib
import signal
import time

from fringix.simulation import SimulatedHead

FAREWELL = "ByeBye="  # what a session says when it is closed


def is_stopped(task: pathlib.Path) -> bool:
    try:
        return "\nState:\tT" in (task / "status").read_text()
    except OSError:  # it has ended
        return True


class WatchedHead:
    def __init__(self) -> None:
        self.simulated = SimulatedHead(camera=(64, 48), projector=(40, 30), image_time=0, verbose=True)
        self.address = self.simulated.address

    def freeze(self) -> None:
        """Returns when none of its threads runs any more."""
        os.kill(self.simulated.pid, signal.SIGSTOP)
        while any(not is_stopped(task) for task in pathlib.Path(f"/proc/{self.simulated.pid}/task").iterdir()):
            time.sleep(0.001)

    def thaw(self) -> None:
        os.kill(self.simulated.pid, signal.SIGCONT)

    def says(self, what: str) -> bool:
        until = time.monotonic() + 30
        while what not in self.simulated.output and time.monotonic() < until:
            time.sleep(0.02)
        return what in self.simulated.output

    def close(self) -> None:
        self.thaw()
        self.simulated.close()

"""The simulated heads that a page speaks of, on this machine."""

from __future__ import annotations

import os
import queue
import re
import subprocess
import threading
import time

PATIENCE = 60  # seconds

# For all that shows no numbers: its scans take a tenth of the time.
SMALL = "--camera 320x256 --projector 640x400 --image-time 0".split()
FAR = ["--address", "127.0.0.10", "--serial", "2001", "--heads", "2", "--trigger-every", "300ms", *SMALL]
BOARD = "--address 127.0.0.20 --serial 20 --camera 640x512 --projector 640x400 --image-time 0".split()


def on_this_machine(text: str) -> str:
    return text.replace("192.168.0.", "127.0.0.").replace("head-3.local", "127.0.0.11")


def matches(shown: str, told: str) -> bool:
    """Whether a program told what is shown; a line of dots stands for any lines, dots in a line for any text."""
    lines = [re.escape(line.rstrip()).replace(r"\.\.\.", ".*") + r"\n" for line in shown.splitlines()]
    pattern = "".join("(?:.*\n)*" if line == r".*\n" else line for line in lines)
    return re.fullmatch(pattern, "".join(line.rstrip() + "\n" for line in told.splitlines())) is not None


class HeadProgram:
    """A running fringix-head, and what it has printed."""

    def __init__(self, options: list[str]) -> None:
        command = [os.environ["FRINGIX_HEAD"], *options]
        pipe = subprocess.PIPE
        self._process = subprocess.Popen(command, stdin=pipe, stdout=pipe, stderr=subprocess.STDOUT, text=True)
        self._lines: queue.Queue[str] = queue.Queue()
        self.told = ""
        threading.Thread(target=self._read, daemon=True).start()
        self.wait_for(lambda told: "\nready" in told)

    def _read(self) -> None:
        assert self._process.stdout
        for line in self._process.stdout:
            self._lines.put(line)
        self._lines.put("")

    def wait_for(self, is_told) -> None:
        end = time.monotonic() + PATIENCE
        while not is_told(self.told):
            try:
                line = self._lines.get(timeout=max(0.0, end - time.monotonic()))
            except queue.Empty:
                line = ""
            if not line:
                raise AssertionError(f"fringix-head told:\n{self.told}")
            self.told += line

    def type(self, line: str) -> None:
        assert self._process.stdin
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def close(self) -> None:
        self._process.terminate()
        self._process.wait(PATIENCE)


class Heads:
    """The one at 127.0.0.2, as large as a block wants it unless the page starts its own, two at 192.168.0.10, and one before a board."""

    def __init__(self) -> None:
        self._near: HeadProgram | None = None
        self._near_is: str | None = None
        self._others: dict[str, HeadProgram] = {}

    def need(self, full_size: bool, text: str, fresh: bool = False) -> None:
        """For what a text says; fresh ones have no settings left of what was before."""
        if fresh:
            self._renew()
        if "127.0.0.1" in text and "far" not in self._others:
            self._others["far"] = HeadProgram(FAR)
        wanted = "full size" if full_size else "small"
        if self._near_is not in ("the page's", wanted):
            self._start([] if full_size else [*SMALL, "--trigger-every", "300ms"], wanted)

    def _renew(self) -> None:
        if "far" in self._others:
            self._others.pop("far").close()
        if self._near_is != "the page's":
            self.make_room()

    def need_board(self) -> None:
        if "board" not in self._others:
            self._others["board"] = HeadProgram(BOARD)

    def start(self, options: list[str], full_size: bool) -> HeadProgram:
        """As the page itself does."""
        return self._start(options if full_size else [*SMALL, *options], "the page's")

    def make_room(self) -> None:
        """At 127.0.0.2."""
        if self._near:
            self._near.close()
        self._near, self._near_is = None, None

    def _start(self, options: list[str], what: str) -> HeadProgram:
        self.make_room()
        self._near, self._near_is = HeadProgram(options), what
        return self._near

    def close(self) -> None:
        for head in [self._near, *self._others.values()]:
            if head:
                head.close()

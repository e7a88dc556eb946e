"""Simulated heads for programs and tests: ``fringix-head``, started on a free loopback address and ended again."""

from __future__ import annotations

import atexit
import itertools
import os
import pathlib
import queue
import random
import re
import shutil
import socket
import subprocess
import sys
import threading
import weakref
from types import TracebackType
from typing import IO, Any, Iterable, Sequence

PROGRAM_VARIABLE = "FRINGIX_HEAD"
COMMAND_PORT = 44330

_program_name = "fringix-head.exe" if sys.platform == "win32" else "fringix-head"
_running: weakref.WeakSet[SimulatedHead] = weakref.WeakSet()


def find_program() -> str:
    """The simulated head's program: the one that FRINGIX_HEAD names, the package's own, or that on PATH.

    Raises FileNotFoundError, which says what to do, when there is none.
    """
    chosen = os.environ.get(PROGRAM_VARIABLE)
    own = pathlib.Path(__file__).resolve().parent / "bin" / _program_name
    found = chosen or (str(own) if own.exists() else shutil.which(_program_name))
    if found and os.path.isfile(found):
        return found
    where = f"{PROGRAM_VARIABLE} names {chosen}, which is no file" if chosen else f"it is neither {own} nor on PATH"
    raise FileNotFoundError(
        f"there is no simulated head to start: {where}. Install a wheel of fringix that has it inside, "
        f"or give the path of {_program_name} in {PROGRAM_VARIABLE}."
    )


def is_free(address: str) -> bool:
    with socket.socket() as listener:
        if sys.platform != "win32":
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            listener.bind((address, COMMAND_PORT))
            return True
        except OSError:
            return False


def free_address(heads: int = 1) -> str:
    """A loopback address, drawn at random, where a head can listen, and others at the addresses that follow."""
    for _ in range(1000):
        network, first = f"127.{random.randint(1, 254)}.{random.randint(0, 254)}", random.randint(1, 254 - heads)
        if all(is_free(f"{network}.{first + number}") for number in range(heads)):
            return f"{network}.{first}"
    raise OSError(f"no loopback address has port {COMMAND_PORT} free: does something listen there at 0.0.0.0?")


def _written(value: Any) -> str:
    return "x".join(str(part) for part in value) if isinstance(value, tuple) else str(value)


def command_line(address: str, options: dict[str, Any]) -> list[str]:
    """The program and its arguments; ``image_time=0`` becomes ``--image-time 0``, ``camera=(640, 480)`` becomes ``--camera 640x480``."""
    words = [find_program(), "--address", address]
    for name, value in options.items():
        option = "--" + name.replace("_", "-")
        words += [option] if value is True else [] if value is False or value is None else [option, _written(value)]
    return words


def _each(option: str, values: Iterable[str]) -> list[str]:
    return [word for value in values for word in (option, value)]


class SimulatedHead:
    """A simulated head, or several at once, each in a program of its own, until it is closed.

    options -- those of the program ``fringix-head``, with underscores: ``scene="ballbar:2"``, ``seed=7``, ``noise=0``,
               ``camera=(640, 480)`` (width, height), ``serial=1001``, ``protocol=3300``, ``image_time=0`` (ms for each image),
               ``trigger_every="500ms"``, ``verbose=True``; ``heads=3`` starts three, with the addresses and serial numbers that follow
    faults  -- what goes wrong on purpose, as ``--fault`` takes it: ``faults=["after 3 pictures: cut at byte 700"]``; see :meth:`fault`

    Raises FileNotFoundError when there is no program to start, ValueError when it refuses the options, TimeoutError when it does
    not get ready.

    >>> with SimulatedHead(scene="plane:1", seed=3) as simulated, fringix.open(simulated.address) as head:
    ...     head.live().shape
    (1024, 1280)
    """

    def __init__(self, *, ready_within: float = 60, faults: Sequence[str] = (), **options: Any) -> None:
        self.options = options
        self._faults = [faults] if isinstance(faults, str) else list(faults)
        self.addresses: list[str] = []
        self.serials = list(range(int(options.get("serial", 1001)), int(options.get("serial", 1001)) + int(options.get("heads", 1))))
        self._lines: queue.Queue[str | None] = queue.Queue()
        self._said: list[str] = []
        for attempt in itertools.count(1):
            if self._start(ready_within):
                return
            if attempt == 5:
                raise OSError("the simulated head cannot listen: " + self.output)

    @property
    def address(self) -> str:
        """The address of the first head."""
        return self.addresses[0]

    @property
    def serial(self) -> int:
        """The serial number of the first head."""
        return self.serials[0]

    @property
    def pid(self) -> int:
        """The process that the heads run in."""
        return self._process.pid

    @property
    def output(self) -> str:
        """What the program has printed."""
        return "\n".join(self._said)

    def _start(self, ready_within: float) -> bool:
        """Whether it got ready; False when the address was taken meanwhile."""
        first = str(self.options.get("address") or free_address(len(self.serials)))
        network, _, number = first.rpartition(".")
        self.addresses = [f"{network}.{int(number) + offset}" for offset in range(len(self.serials))]
        options = {name: value for name, value in self.options.items() if name != "address"}
        self._process = subprocess.Popen(
            command_line(first, options) + _each("--fault", self._faults), stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, bufsize=1
        )
        _running.add(self)
        assert self._process.stdout is not None
        threading.Thread(target=self._read, args=(self._process.stdout,), name="fringix-head output", daemon=True).start()
        return self._wait_until_ready(ready_within)

    def _read(self, output: IO[str]) -> None:
        with output:
            for line in output:
                self._said.append(line.rstrip("\n"))
                self._lines.put(self._said[-1])
        self._lines.put(None)

    def _wait_until_ready(self, ready_within: float) -> bool:
        try:
            while (line := self._lines.get(timeout=ready_within)) is not None:
                if line.startswith("ready:"):
                    return True
        except queue.Empty:
            self.close()
            raise TimeoutError(f"the simulated head did not get ready within {ready_within} s:\n{self.output}") from None
        status = self._process.wait()
        self.close()
        if status == 1 and "address" not in self.options and "listen" in self.output:
            return False
        raise ValueError(f"the simulated head ended with exit code {status}:\n{self.output}")

    def _tell(self, line: str) -> None:
        assert self._process.stdin is not None
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def trigger(self, number: int = 1) -> None:
        """Raises a GPIO trigger of a head, counted from 1.

        A session that has just been opened may still be on its way to the port of triggers: the option ``trigger_every`` raises them again
        and again.
        """
        self._tell(f"trigger {number}")

    def show_scene(self, scene: str) -> None:
        """Puts another scene before all heads, ``"ballbar:3"``."""
        self._tell(f"scene {scene}")

    def fault(self, fault: str, *, within: float = 20) -> None:
        """Makes all heads do something wrong from now on: ``fault("at SLGetGain: stall for 2 s")``; ``fault("none")`` ends all faults.

        docs/simulated-head.md has the words for it. Raises ValueError, which says what is allowed, when they mean nothing.

        >>> with SimulatedHead() as faulty, fringix.open(faulty.address) as connected:
        ...     faulty.fault("at SLSetGain: wrong status -7")
        ...     try:
        ...         connected.gain = 20
        ...     except fringix.HeadSystemError:
        ...         print("the station has noticed")
        the station has noticed
        """
        while not self._lines.empty():  # of before
            self._lines.get_nowait()
        self._tell("fault " + " ".join(fault.split()))
        answer = re.compile(r"head \d+  (no )?fault")
        missing = len(self.serials)
        try:
            while missing > 0:
                line = self._lines.get(timeout=within)
                if line is None:
                    raise OSError(f"the simulated head has ended:\n{self.output}")
                if line.startswith("fault: "):
                    raise ValueError(line.removeprefix("fault: "))
                missing -= answer.match(line) is not None
        except queue.Empty:
            raise TimeoutError(f"the simulated head did not answer within {within} s") from None

    def close(self) -> None:
        """Ends the program."""
        process = self._process
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        if process.stdin is not None:
            process.stdin.close()

    def __enter__(self) -> SimulatedHead:
        return self

    def __exit__(self, kind: type[BaseException] | None, value: BaseException | None, trace: TracebackType | None) -> None:
        self.close()


@atexit.register
def _end_all() -> None:
    for head in list(_running):
        head.close()

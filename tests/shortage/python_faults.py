#!/usr/bin/python3
"""Uses everything that the Python package offers, with each call of the system failing that this makes: python_faults.py BUILD [NAME...]

Each use gives a result or raises what the package says it raises, and another session works afterwards. Each fault has a process of its own,
forked from one that has everything loaded. Memory fails inside the calls of the library only: the interpreter waits for ever for a thread
of its own that had none for its first step.
"""

from __future__ import annotations

import argparse
import collections
import errno
import json
import os
import pathlib
import signal
import sys
import tempfile
from typing import Any, Callable, Iterator

from shortage import NO_FAULT, Fault, Table

MEMORY, NEVER = 0, 1 << 30  # the place of malloc in the table; a call that nobody makes
LIMIT = 30  # seconds
INTERPRETER = ('RuntimeError("can\'t allocate lock")', 'RuntimeError("can\'t start new thread")')  # says so when memory is short
NO_THREAD_DATA = 127  # with which glibc ends the process, see docs/reliability.md
SMALL = dict(camera=(64, 48), projector=(40, 30), image_time=0, noise=0)


def preload(build: pathlib.Path) -> None:
    """What stands in front of the C library has to be there from the beginning."""
    library = str(build / "bin" / "libfringix-shortage.so")
    if os.environ.get("LD_PRELOAD") != library:
        environment = {**os.environ, "LD_PRELOAD": library, "FRINGIX_LIBRARY_PATH": str(build / "bin"), "FRINGIX_HEAD": str(build / "bin" / "fringix-head")}
        root = pathlib.Path(__file__).resolve().parents[2]
        environment["PYTHONPATH"], environment["PYTHONDONTWRITEBYTECODE"] = str(root / "python"), "1"
        os.execve(sys.executable, [sys.executable, *sys.argv], environment)


def use_sequence(head: Any, fill: Callable[[Any], None]) -> None:
    with head.sequence(2) as sequence:
        fill(sequence)


def use_file(head: Any) -> None:
    head.data["block"] = b"content"
    assert head.data["block"] == b"content"


def use_tool(*words: str) -> None:
    from fringix._tool import FAILURE, SUCCESS, main

    status = main(words)
    if status == FAILURE:
        raise OSError("the tool tells a failure")
    assert status == SUCCESS, f"exit code {status}"


def uses(head_address: str, serial: int) -> dict[str, Callable[[Any], Any]]:
    """By name; those without a session get None."""
    import fringix
    import numpy as np
    from fringix.calibration import Calibration

    def settings(name: str) -> Callable[[Any], Any]:
        return lambda head: setattr(head, name, getattr(head, name).range.max)

    table: dict[str, Callable[[Any], Any]] = {
        "open by address": lambda _: fringix.open(head_address).close(),
        "open by serial": lambda _: fringix.open(serial=serial, timeout=2).close(),
        "discover": lambda _: fringix.discover(),
        "head.live": lambda head: head.live(),
        "head.live region": lambda head: head.live(roi=(0, 0, 8, 8), reduce=2),
        "head.picture": lambda head: use_sequence(head, lambda sequence: (head.measure(sequence), head.picture(0))),
        "head.show": lambda head: head.show(np.zeros((30, 40, 3), np.uint8)),
        "head.sequence": lambda head: use_sequence(head, lambda sequence: None),
        "sequence.gray": lambda head: use_sequence(head, lambda sequence: sequence.gray(0, 1)),
        "sequence.show": lambda head: use_sequence(head, lambda sequence: sequence.show(0)),
        "head.measure": lambda head: use_sequence(head, head.measure),
        "head.gain": settings("gain"),
        "head.led_power": settings("led_power"),
        "head.brightness": settings("brightness"),
        "head.check": lambda head: head.check(),
        "head.temperature": lambda head: head.temperature,
        "head.data": use_file,
        "head.ini": lambda head: head.ini.__setitem__(("Station", "Number"), 7),
        "head.gpio": lambda head: head.gpio[1],
        "head.serial_port": lambda head: head.serial_port.command("hello"),
        "head.projector": lambda head: head.projector.command(1),
        "head.on_event": lambda head: head.on_event(print).close(),
        "head.on_trigger": lambda head: head.on_trigger(print),
        "calibration": lambda head: Calibration.parse(head.data["calibration.json"]).text(),
        "python -m fringix": lambda _: use_tool("live", head_address, "-o", "-"),
    }
    return table


class Sweep:
    def __init__(self, table: Table, address: str, serial: int, most: int) -> None:
        self.table, self.address, self.most = table, address, most
        self.uses = uses(address, serial)
        self.native = table._native
        self.tally: collections.Counter[tuple[int, int]] = collections.Counter()
        self.complaints: list[str] = []
        self.without_thread_data = 0

    def over(self, name: str) -> None:
        plain = self.play(name, NO_FAULT)
        if plain["wrong"] or plain["outcome"] != "a result":
            self.complain(f"{name}: without a fault: {plain['wrong'] or plain['outcome']}")
            return
        inside = self.play(name, Fault(MEMORY, errno.ENOMEM, NEVER, False))
        count = 0
        for fault in self.faults([inside["calls"][MEMORY], *plain["calls"][1:]]):
            outcome = self.play(name, fault)
            struck = outcome.get("struck", 1)
            if outcome.get("harmless") and name != "open by serial" and outcome["outcome"] != plain["outcome"]:
                outcome["wrong"] = outcome["wrong"] or f"harmless, and gave {outcome['outcome']}"
            count += struck > 0
            self.tally[fault.function, fault.failure] += struck > 0
            if outcome["wrong"]:
                self.complain(f"{name}: {self.table.text(fault)}: {outcome['wrong']}")
        print(f"{name:24}{count:7} runs, {plain['outcome']}, {inside['calls'][MEMORY]} requests for memory", flush=True)

    def complain(self, text: str) -> None:
        self.complaints.append(text)
        print("WRONG", text, flush=True)

    def faults(self, all_calls: list[int]) -> Iterator[Fault]:
        for function, calls in enumerate(all_calls):
            step = max(1, calls // self.most)
            if self.table.functions[function] == "mmap":  # of the interpreter's alone
                continue
            for failure in self.table.failures(function):
                for lasting in (False, True):
                    for first in range(0, calls, step):
                        yield Fault(function, failure, first, lasting)

    def play(self, name: str, fault: Fault) -> dict[str, Any]:
        reading, writing = os.pipe()
        child = os.fork()
        if child == 0:
            os.close(reading)
            signal.alarm(LIMIT)
            try:
                os.write(writing, json.dumps(self.use(name, fault)).encode())
            finally:
                os._exit(0)
        os.close(writing)
        with os.fdopen(reading) as answer:
            text = answer.read()
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        if status == NO_THREAD_DATA and self.table.functions[fault.function] == "malloc":
            self.without_thread_data += 1
            return {"wrong": "", "outcome": ""}
        if status != 0 or not text:
            return {"wrong": f"ended with {status} and said {text!r}", "outcome": ""}
        outcome: dict[str, Any] = json.loads(text)
        return outcome

    def watch_inside(self) -> None:
        from fringix import _native

        def watched(pointer: Any) -> Any:
            def call(*arguments: Any) -> Any:
                self.native.shortage_watch(1)
                try:
                    return pointer(*arguments)
                finally:
                    self.native.shortage_watch(0)

            return call

        for function in _native._functions.values():
            function.pointer = watched(function.pointer)

    def use(self, name: str, fault: Fault) -> dict[str, Any]:
        import fringix

        fringix.library_version()  # loads the library
        wants_head = not name.startswith(("open", "discover", "python"))
        sys.stdout = sys.stderr = open(os.devnull, "w")
        outcome, wrong, head = "", "", fringix.open(self.address) if wants_head else None
        if fault.function == MEMORY:
            self.watch_inside()
        else:
            self.native.shortage_watch_all()
        self.native.shortage_hurry(1)
        self.native.shortage_plan(fault.function, fault.failure, fault.first, int(fault.lasting))
        try:
            self.uses[name](head)
            outcome = "a result"
        except (fringix.Error, MemoryError, OSError) as error:
            outcome = type(error).__name__
        except BaseException as error:
            outcome = repr(error)
            wrong = "" if outcome in INTERPRETER else outcome
        struck = self.native.shortage_end()
        calls = [self.native.shortage_calls(function) for function in range(len(self.table.functions))]
        is_harmless = self.table.is_harmless(fault.failure) and self.table.functions[fault.function] != "pthread_create"
        try:
            if head is not None:
                head.close()
        except fringix.Error:
            pass
        try:
            with fringix.open(self.address) as other:
                assert other.gain > 0
        except BaseException as error:
            wrong = wrong or f"another session gave {error!r}"
        return {"outcome": outcome, "wrong": wrong, "struck": struck, "calls": calls, "harmless": struck > 0 and is_harmless}


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--most", type=int, default=3)
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    preload(build)
    from fringix.simulation import SimulatedHead

    table = Table(build / "bin" / "libfringix-shortage.so")
    with tempfile.TemporaryDirectory() as folder, SimulatedHead(**SMALL) as simulated:
        os.chdir(folder)
        sweep = Sweep(table, simulated.address, simulated.serial, arguments.most)
        for name in sweep.uses:
            if not arguments.names or name in arguments.names:
                sweep.over(name)
    print(f"{sum(sweep.tally.values())} faults, {len(sweep.complaints)} complaints, {sweep.without_thread_data} ended by the C library")
    return 1 if sweep.complaints else 0


if __name__ == "__main__":
    sys.exit(main())

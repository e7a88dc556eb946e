"""What the sweeps over programs share: the table of what can fail, and a program that is run again and again with one failure each."""

from __future__ import annotations

import ctypes
import dataclasses
import errno
import os
import pathlib
import subprocess
from typing import IO, Iterator, Sequence

NO_FUNCTION = -1
SHORT, END = 0, -1


@dataclasses.dataclass(frozen=True)
class Fault:
    function: int
    failure: int
    first: int
    lasting: bool


@dataclasses.dataclass(frozen=True)
class Run:
    status: int  # as os.waitstatus_to_exitcode() gives it
    struck: int
    calls: Sequence[int]
    output: str
    errors: str


class Table:
    """What can fail and how, as the library tells it."""

    def __init__(self, library: pathlib.Path) -> None:
        self.library = library
        self._native = ctypes.CDLL(str(library))
        self._native.shortage_function.restype = ctypes.c_char_p
        self._native.shortage_failures.restype = ctypes.POINTER(ctypes.c_int)
        self._none = ctypes.c_int.in_dll(self._native, "shortage_no_failure").value
        self.functions = []
        while name := self._native.shortage_function(len(self.functions)):
            self.functions.append(name.decode())

    def failures(self, function: int) -> Iterator[int]:
        failures = self._native.shortage_failures(function)
        place = 0
        while failures[place] != self._none:
            yield failures[place]
            place += 1

    def is_harmless(self, failure: int) -> bool:
        return bool(self._native.shortage_is_harmless(failure))

    def text(self, fault: Fault) -> str:
        if fault.function == NO_FUNCTION:
            return "without a fault"
        how = {SHORT: "short count", END: "end"}.get(fault.failure) or errno.errorcode[fault.failure]
        return f"{self.functions[fault.function]}: {how} at call {fault.first}{' and those behind it' if fault.lasting else ''}"


NO_FAULT = Fault(NO_FUNCTION, 0, 0, False)


class Program:
    """Started once, and forked for each run, see interposer/server.cpp."""

    def __init__(self, table: Table, command: Sequence[str], folder: pathlib.Path, environment: dict[str, str], limit: int) -> None:
        requests, self._requests = os.pipe()
        self._replies, replies = os.pipe()
        self._output, self._errors = (open(folder / name, "w+b", buffering=0) for name in ("output", "errors"))
        self._process = subprocess.Popen(
            command,
            env={**environment, "LD_PRELOAD": str(table.library), "FRINGIX_SHORTAGE": f"{requests},{replies},{limit}"},
            stdin=subprocess.DEVNULL,
            stdout=self._output,
            stderr=self._errors,
            pass_fds=(requests, replies),
            cwd=folder / "place",
        )
        os.close(requests)
        os.close(replies)
        self._lines = os.fdopen(self._replies)

    def run(self, fault: Fault) -> Run:
        for file in (self._output, self._errors):
            file.seek(0)
            file.truncate()
        os.write(self._requests, f"{fault.function} {fault.failure} {fault.first} {int(fault.lasting)}\n".encode())
        words = self._lines.readline().split()
        return Run(os.waitstatus_to_exitcode(int(words[0])), int(words[1]), [int(word) for word in words[2:]], self._read(self._output), self._read(self._errors))

    @staticmethod
    def _read(file: IO[bytes]) -> str:
        file.seek(0)
        return file.read().decode(errors="replace")

    def close(self) -> None:
        os.close(self._requests)
        self._process.wait()
        for file in (self._lines, self._output, self._errors):
            file.close()

    def __enter__(self) -> Program:
        return self

    def __exit__(self, *reason: object) -> None:
        self.close()

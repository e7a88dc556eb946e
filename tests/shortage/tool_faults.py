#!/usr/bin/python3
"""Runs each subcommand of fringix with each call of the system failing that it makes: tool_faults.py BUILD [--most N] [SUBCOMMAND...]

Each run succeeds with what it gives otherwise, or fails with exit code 1 and a line that says so; no file is left half written. Of the
requests for memory, of which there are thousands, N are taken for each way to fail, evenly over the run.
"""

from __future__ import annotations

import argparse
import collections
import contextlib
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
from typing import Iterator

from shortage import NO_FAULT, NO_FUNCTION, Fault, Program, Run, Table

HEAD, RELAY = "127.0.0.1", "127.0.0.9"
HEAD_OPTIONS = f"--address {HEAD} --serial 4711 --camera 160x128 --projector 160x128 --image-time 0 --noise 0 --trigger-every 20ms"

# What each subcommand is asked, from a folder "place" with "inputs" and "made" in it.
ROWS = f"""
list
select
info {HEAD}
status {HEAD}
get {HEAD} gain
set {HEAD} gain 20
live {HEAD} -o made/live.png
live {HEAD} -o -
picture {HEAD} 0 -o made/picture.png
pattern alloc {HEAD} 2
pattern upload {HEAD} 1 inputs/live.png
pattern gray {HEAD} 1 0 1 0 0
show {HEAD} black
measure {HEAD} 1
scan {HEAD} -o made
accept {HEAD} --simulated --artefact plane --positions 1
bench {HEAD} --seconds 0.01
conform {HEAD}
record {HEAD} --listen {RELAY} -o made/recording -n 1
recording show inputs/recording
watch {HEAD} -n 1
mask {HEAD} clear
data save {HEAD} block inputs/block
data load {HEAD} block -o made/block
ini read {HEAD} Camera Width
ini write {HEAD} My value 5
gpio read {HEAD} 1
gpio set {HEAD} 1 1
serial {HEAD} hello
projector {HEAD} 1 0
sheet inputs/live.png -o made/sheet.png
doctor {HEAD}
explain SLCONNECTION_ERROR
"""


MEASURES = ("accept", "bench", "doctor", "record", "scan")  # what they print is never the same

ENDLESS = ("record", "watch")  # go on until Ctrl-C when nobody connects or nothing is heard any more
LIMITS = collections.defaultdict(lambda: 60, record=2, watch=2)  # seconds


def masked(row: str, output: str) -> str:
    """Without what differs from run to run: numbers, and what is in pictures."""
    if output.startswith("\ufffdPNG"):
        return f"picture, {'whole' if 'IEND' in output[-20:] else 'cut'}"
    return "something" if output and row.startswith(MEASURES) else re.sub(r"[0-9.]+", "#", output)


def files_of(folder: pathlib.Path) -> list[str]:
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


class Sweep:
    def __init__(self, table: Table, build: pathlib.Path, folder: pathlib.Path, most: int) -> None:
        self.table, self.build, self.folder, self.most = table, build, folder, most
        self.made = folder / "place" / "made"
        self.tally: collections.Counter[tuple[int, int]] = collections.Counter()
        self.complaints: list[str] = []

    def clear(self) -> None:
        shutil.rmtree(self.made, ignore_errors=True)
        self.made.mkdir()

    def over(self, row: str) -> None:
        environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8"}
        with Program(self.table, [str(self.build / "bin" / "fringix"), *row.split()], self.folder, environment, LIMITS[row.split()[0]]) as program:
            self.clear()
            program.run(NO_FAULT)
            self.clear()
            plain = program.run(NO_FAULT)
            files = files_of(self.made)
            count = 0
            for fault in self.faults(plain):
                self.clear()
                run = program.run(fault)
                count += run.struck > 0
                self.tally[fault.function, fault.failure] += run.struck > 0
                if run.struck > 0:
                    self.judge(row, fault, run, plain, files)
        print(f"{row:40}{count:7} runs, exit code {plain.status}, {plain.calls[0]} requests for memory", flush=True)

    def faults(self, plain: Run) -> Iterator[Fault]:
        for function, calls in enumerate(plain.calls):
            step = max(1, calls // self.most)
            for failure in self.table.failures(function):
                for lasting in (False, True):
                    for first in range(0, calls, step):
                        yield Fault(function, failure, first, lasting)

    def judge(self, row: str, fault: Fault, run: Run, plain: Run, files: list[str]) -> None:
        wrong = self.complaint(row, fault, run, plain, files)
        if wrong:
            self.complaints.append(f"fringix {row}: {self.table.text(fault)}: {wrong}")
            print("WRONG", self.complaints[-1], flush=True)

    def complaint(self, row: str, fault: Fault, run: Run, plain: Run, files: list[str]) -> str:
        left = files_of(self.made)
        if run.status == -signal.SIGALRM and row.startswith(ENDLESS):
            return ""
        if run.status < 0:
            return f"killed by signal {-run.status}: {run.errors}"
        if run.status == plain.status == 0:
            if masked(row, run.output) != masked(row, plain.output):
                return f"other output: {run.output[:300]!r} for {plain.output[:300]!r}"
            return "" if left == files else f"left {left}"
        if run.status != 1:
            return f"exit code {run.status}: {run.errors}"
        if not set(left) <= set(files):
            return f"left {left}"
        may_be_silent = self.table.functions[fault.function] == "write" and (fault.lasting or plain.status != 0)
        said_it = may_be_silent or "fringix: " in run.errors
        return "" if said_it else f"said {run.errors!r}"


def keep_calling(stop: threading.Event) -> None:
    """A client of what "fringix record" offers."""
    while not stop.wait(0.02):
        with contextlib.suppress(OSError), socket.create_connection((RELAY, 44330), timeout=1) as connection:
            connection.recv(4)


@contextlib.contextmanager
def simulated_head(build: pathlib.Path) -> Iterator[None]:
    head = subprocess.Popen([build / "bin" / "fringix-head", *HEAD_OPTIONS.split()], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    assert head.stdout is not None
    for line in head.stdout:
        if line.startswith("ready:"):
            break
    over = threading.Event()
    client = threading.Thread(target=keep_calling, args=(over,))
    client.start()
    try:
        yield
    finally:
        over.set()
        client.join()
        head.terminate()
        head.communicate()


def make_inputs(build: pathlib.Path, place: pathlib.Path) -> None:
    inputs = place / "inputs"
    inputs.mkdir(parents=True)
    (inputs / "block").write_bytes(b"content")
    tool = build / "bin" / "fringix"
    recording = f"record {HEAD} --listen {RELAY} -o inputs/recording -n 1"
    for words in (f"live {HEAD} -o inputs/live.png", f"pattern alloc {HEAD} 2", f"pattern gray {HEAD} 1 0 1 0 0", f"measure {HEAD} 1", f"data save {HEAD} block inputs/block", recording):
        subprocess.run([tool, *words.split()], cwd=place, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--most", type=int, default=10)
    parser.add_argument("subcommands", nargs="*")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    table = Table(build / "bin" / "libfringix-shortage.so")
    with tempfile.TemporaryDirectory() as folder, simulated_head(build):
        make_inputs(build, pathlib.Path(folder) / "place")
        sweep = Sweep(table, build, pathlib.Path(folder), arguments.most)
        for row in ROWS.strip().splitlines():
            if not arguments.subcommands or row.split()[0] in arguments.subcommands:
                sweep.over(row)
    for (function, failure), count in sorted(sweep.tally.items()):
        print(f"{table.text(Fault(function, failure, 0, False)).removesuffix(' at call 0'):40}{count:8}")
    print(f"{sum(sweep.tally.values())} faults, {len(sweep.complaints)} complaints")
    return 1 if sweep.complaints else 0


if __name__ == "__main__":
    sys.exit(main())

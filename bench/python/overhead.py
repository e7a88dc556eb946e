"""What Python adds to a live picture: `Head.live` against the same call in a loop in C, in turns, in one session of one process: with
the simulated head, and with one that answers at once.

    PYTHONPATH=python FRINGIX_LIBRARY_PATH=build/linux/bin FRINGIX_HEAD=build/linux/bin/fringix-head \\
        /usr/bin/python3 bench/python/overhead.py [--check] [--quick]

With --check it exits with 1 when a picture of the simulated head costs more than the bound. --quick is a smoke test.
"""

from __future__ import annotations

import concurrent.futures
import contextlib
import ctypes
import pathlib
import subprocess
import sys
import tempfile
import time
from typing import Any, Callable, Iterator

import fringix
import numpy as np
from fringix import _native, simulation
from fringix.head import Head

ROUNDS, CALLS = 100, 12
SIZES = ((4096, 3000), (1280, 1024), (320, 240), (64, 48))
QUANTILE = 0.25  # below the median: what else runs on the machine makes times longer, never shorter
here = pathlib.Path(__file__).resolve().parent


def compiled(folder: str) -> Any:
    library = pathlib.Path(folder) / "bare_calls.so"
    include = here.parents[1] / "include"
    subprocess.run(["cc", "-O2", "-shared", "-fPIC", f"-I{include}", "-o", str(library), str(here / "bare_calls.c")], check=True)
    return ctypes.CDLL(str(library)).bareCalls


def in_c(bare_calls: Any, head: Head) -> list[float]:
    width, height = head.camera_size
    buffer = np.empty((height, width), np.uint8)
    times = np.zeros(CALLS, np.int64)
    get = ctypes.cast(_native.function("SLGetLiveImage").pointer, ctypes.c_void_p)
    pixels, nanoseconds = buffer.ctypes.data_as(ctypes.c_void_p), times.ctypes.data_as(ctypes.c_void_p)
    assert bare_calls(get, head.handle, pixels, width, height, nanoseconds, CALLS) == 0
    return [float(time) / 1000 for time in times]


def in_python(head: Head) -> list[float]:
    times = []
    for _ in range(CALLS):
        begin = time.perf_counter_ns()
        picture = head.live()
        times.append((time.perf_counter_ns() - begin) / 1000)
    assert picture.size
    return times


def compare(bare_calls: Any, head: Head, rounds: int) -> bool:
    ways: dict[str, Callable[[], list[float]]] = {
        "C": lambda: in_c(bare_calls, head),
        "main": lambda: in_python(head),
        "other": lambda: threads.submit(in_python, head).result(),
    }
    times: dict[str, list[float]] = {name: [] for name in ways}
    with concurrent.futures.ThreadPoolExecutor(1) as threads:
        for _ in range(rounds):
            for name, way in ways.items():
                times[name] += way()
    bare, main, other = (float(np.quantile(times[name], QUANTILE)) for name in ways)
    width, height = head.camera_size
    bound = 1.05 * bare + 30
    print(f"{width:5} x {height:<5} {bare:9.1f} {main:12.1f} {main / bare:6.3f} {other:14.1f} {other / bare:6.3f} {bound:9.1f}", flush=True)
    return main <= bound


@contextlib.contextmanager
def replaying(width: int, height: int) -> Iterator[str]:
    address = simulation.free_address()
    command = [sys.executable, str(here / "replay_head.py"), address, str(width), str(height)]
    with subprocess.Popen(command, stdout=subprocess.PIPE) as replay:
        assert replay.stdout is not None and replay.stdout.readline() == b"ready\n"
        try:
            yield address
        finally:
            replay.kill()


def main(options: list[str]) -> int:
    rounds = 1 if "--quick" in options else ROUNDS
    print("  picture         C, us  main thread  ratio  other thread  ratio  bound, us")
    with tempfile.TemporaryDirectory() as folder:
        bare_calls = compiled(folder)
        with simulation.SimulatedHead() as simulated, fringix.open(simulated.address) as head:
            kept = compare(bare_calls, head, rounds)
        print("a head that answers at once:")
        for width, height in SIZES:
            with replaying(width, height) as address, fringix.open(address) as head:
                compare(bare_calls, head, rounds)
    return 0 if kept or "--check" not in options else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

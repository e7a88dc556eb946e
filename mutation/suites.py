"""The suites of the tests: which changes each comes by, how long it takes, and whether it notices one."""

from __future__ import annotations

import dataclasses
import os
import pathlib
import resource
import signal
import subprocess
import tempfile
import time

from tree import BUILD, PROGRAMS, TREE

MEMORY = 6 << 30  # bytes of addresses that a process may have: a change may allocate without end


@dataclasses.dataclass
class Suite:
    program: str
    name: str
    seconds: float = 0
    reached: frozenset[int] = frozenset()

    def __str__(self) -> str:
        return self.name

    def run(self, limit: float, **variables: str) -> str:
        """What went wrong, or nothing."""
        command = ["scripts/isolated", f"{BUILD}/bin/{self.program}", f"--gtest_filter={self.name}.*", "--gtest_brief=1"]
        environment = {**os.environ, "GTEST_FAIL_FAST": "1", **variables}
        environment.pop("DISPLAY", None)
        with tempfile.TemporaryFile() as told:
            process = subprocess.Popen(command, cwd=TREE, env=environment, stdin=subprocess.DEVNULL, stdout=told, stderr=told,
                                       start_new_session=True, preexec_fn=bounded)
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                return f"does not end within {limit:.0f} s"
            finally:
                end(process)
            if status == 0:
                return ""
            told.seek(0)
            return first_failure(told.read().decode(errors="replace")) or f"ends with status {status}"


def bounded() -> None:
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def end(process: subprocess.Popen[bytes]) -> None:
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def first_failure(told: str) -> str:
    for line in told.splitlines():
        if line.startswith("[  FAILED  ] ") and "." in line:
            return line.split("] ")[1].split(",")[0].split(" (")[0]
    return ""


def all_suites() -> list[Suite]:
    found = []
    for program in PROGRAMS:
        told = subprocess.run([f"{BUILD}/bin/{program}", "--gtest_list_tests"], cwd=TREE, capture_output=True, text=True, check=True).stdout
        for line in told.splitlines():
            if line and not line.startswith((" ", "Running")):
                found.append(Suite(program, line.split(".")[0]))
    return found


def explore(suite: Suite, count: int, limit: float) -> str:
    """Runs a suite without any change, and notes how long it takes and what it comes by."""
    with tempfile.NamedTemporaryFile() as reached:
        reached.write(bytes(count + 1))
        reached.flush()
        start = time.monotonic()
        told = suite.run(limit, FRINGIX_MUTANTS_REACHED=reached.name)
        suite.seconds = time.monotonic() - start
        suite.reached = frozenset(number for number, byte in enumerate(pathlib.Path(reached.name).read_bytes()) if byte)
        return told

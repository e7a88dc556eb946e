#!/usr/bin/python3
"""check.py COVERAGE.json UNCOVERED: holds what gcovr tells against the goals, and each line that no test runs against the list of those.

A line of the list is `FILE: SOURCE LINE | REASON`, with the line above and a slash before one that a file has twice. Where the reason begins
with `at times`, the line may have run, too.
"""

from __future__ import annotations

import collections
import json
import pathlib
import sys
from typing import Any

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))
from reasons import read_reasons  # noqa: E402

GOALS = {"line": 0.98, "branch": 0.95}

Counts = collections.Counter[tuple[str, str]]


def room_of(file: str) -> str:
    return str(pathlib.PurePosixPath(file).parent)


def name_of(text: list[str], number: int) -> str:
    line = text[number - 1].strip()
    return line if sum(other.strip() == line for other in text) == 1 else f"{text[number - 2].strip()} / {line}"


def branches_of(line: dict[str, Any]) -> list[bool]:
    """Whether each way out of each decision of a line was taken.

    Of a call the compiler tells two ways, too, the second for what is thrown. A decision that was never come to does not count in a line that
    ran: either the one before it counts as half taken, or it belongs to what the compiler does when something is thrown.
    """
    ways: list[bool] = []
    for branch in line["branches"]:
        if branch["throw"]:
            del ways[-1:]
        else:
            ways.append(branch["count"] > 0)
    pairs = [ways[i : i + 2] for i in range(0, len(ways), 2)]
    return [way for pair in pairs if any(pair) or not line["count"] for way in pair]


def lines_of(told: dict[str, Any], counts: Counts) -> dict[str, bool]:
    """Of each line, as the list would name it, whether all that look like it have run. Adds to the counts by room."""
    ran: dict[str, bool] = {}
    for file in told["files"]:
        text = pathlib.Path(file["file"]).read_text(encoding="utf-8").splitlines()
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            place = f"{file['file']}: {name_of(text, line['line_number'])}"
            ran[place] = ran.get(place, True) and line["count"] > 0
            branches = branches_of(line)
            for name in (room_of(file["file"]), "all"):
                counts[name, "line"] += 1
                counts[name, "line that ran"] += line["count"] > 0
                counts[name, "branch"] += len(branches)
                counts[name, "branch that ran"] += sum(branches)
    return ran


def share(counts: Counts, name: str, what: str) -> float:
    return counts[name, f"{what} that ran"] / counts[name, what] if counts[name, what] else 1.0


def complaints(ran: dict[str, bool], reasons: dict[str, str], counts: Counts) -> list[str]:
    told = [f"no test runs this line, and no reason is listed: {place}" for place, did in ran.items() if not did and place not in reasons]
    for place, reason in reasons.items():
        if place not in ran:
            told.append(f"listed, but not there: {place}")
        elif ran[place] and not reason.startswith("at times"):
            told.append(f"listed, but a test runs it: {place}")
    told += [f"less than {goal:.0%} of all ran: {what}" for what, goal in GOALS.items() if share(counts, "all", what) < goal]
    return told


def main() -> None:
    counts: Counts = collections.Counter()
    ran = lines_of(json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")), counts)
    told = complaints(ran, read_reasons(pathlib.Path(sys.argv[2])), counts)
    print(f"{'':22}{'lines':>8}{'ran':>8}{'branches':>10}{'ran':>8}")
    for name in sorted({name for name, _ in counts} - {"all"}) + ["all"]:
        print(f"{name:22}{counts[name, 'line']:8}{share(counts, name, 'line'):8.1%}{counts[name, 'branch']:10}"
              f"{share(counts, name, 'branch'):8.1%}")
    print(*told, sep="\n", end="\n" if told else "")
    sys.exit(1 if told else 0)


if __name__ == "__main__":
    main()

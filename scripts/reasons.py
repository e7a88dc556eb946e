"""Kept lists of what is let be: lines of `WHAT | REASON`, and # before what is for the reader."""

from __future__ import annotations

import pathlib


def read_reasons(path: pathlib.Path) -> dict[str, str]:
    """From what is let be to the reason."""
    reasons = {}
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if line.strip() and not line.startswith("#"):
            what, bar, reason = line.rpartition(" | ")
            if not bar or len(reason.split()) < 3:
                raise SystemExit(f"{path}:{number} states no reason")
            reasons[what] = reason
    return reasons

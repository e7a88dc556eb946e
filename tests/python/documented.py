"""The blocks of code in docs/python.md."""

from __future__ import annotations

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
TEXT = (ROOT / "docs/python.md").read_text(encoding="utf-8")


def blocks(language: str) -> list[str]:
    found: list[str] = re.findall(rf"^```{language}\n(.*?)^```$", TEXT, re.MULTILINE | re.DOTALL)
    return found


(INSTALL,) = (block for block in blocks("sh") if "venv" in block)
(START_HEAD,) = (block for block in blocks("sh") if block == "python -m fringix head\n")
COMMANDS = [block for block in blocks("sh") if block not in (INSTALL, START_HEAD)]
(TEN_LINES,) = (block for block in blocks("python") if "cloud.ply" in block)
TESTS = [block for block in blocks("python") if "def test_" in block]
(CALIBRATE,) = (block for block in blocks("python") if "fringix.calibrate" in block)
PROGRAMS = [block for block in blocks("python") if block not in (CALIBRATE, *TESTS)]

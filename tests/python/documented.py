"""The blocks of code in docs/python.md that a wheel is tested with."""

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
(TEN_LINES,) = (block for block in blocks("python") if "cloud.ply" in block)
TESTS = [block for block in blocks("python") if "def test_" in block]

"""What goes wrong, told in one line: what it is, and what to do next."""

from __future__ import annotations

import json
import sys
from typing import Dict, Union

from ..errors import Error


class Failure(Exception):
    """Something that the tool finds out by itself. ``kind`` is a word for programs."""

    def __init__(self, what: str, next_step: str = "", kind: str = "failure") -> None:
        super().__init__(f"{what}. {next_step}" if next_step else what)
        self.what, self.next_step, self.kind = what, next_step, kind


class UsageError(Failure):
    """The command line cannot be understood."""

    def __init__(self, what: str, program: str = "python -m fringix") -> None:
        super().__init__(what, f'"{program} --help" tells what can be given.', "usage")


def _text_of(error: Exception) -> str:
    if isinstance(error, OSError) and error.strerror and not isinstance(error, Error):
        return f'"{error.filename}": {error.strerror}' if error.filename else f"standard output cannot be written: {error.strerror}"
    return str(error)


def _described(error: Exception) -> Dict[str, Union[str, int]]:
    if isinstance(error, Failure):
        return {"kind": error.kind, "what": error.what, "next": error.next_step}
    if isinstance(error, Error):
        what = str(error)[: -len(error.next_step)].rstrip(". ") if error.next_step else str(error)
        return {"kind": error.name or "head", "what": what, "next": error.next_step, "status": error.code}
    return {"kind": "failure", "what": _text_of(error), "next": ""}


def tell(error: Exception, as_json: bool) -> None:
    line = json.dumps({"error": _described(error)}) if as_json else f"fringix: {_text_of(error)}"
    print(line, file=sys.stderr)

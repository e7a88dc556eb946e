"""The little brother of the tool ``fringix``: the same words, where both do the same."""

from __future__ import annotations

import os
import sys
from typing import Callable, Sequence

from ..errors import Error
from .arguments import make_parser
from .commands import run_calibrate, run_head
from .failures import Failure, UsageError, tell

SUCCESS, FAILURE, WRONG_USAGE, INTERRUPTED = 0, 1, 2, 130


def main(words: Sequence[str]) -> int:
    """Carries a command line out and gives its exit code."""
    as_json = "--json" in words
    status = _run(words, as_json)
    try:
        sys.stdout.flush()
    except OSError as error:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # the interpreter flushes once more at its end
        if status == SUCCESS:
            tell(Failure(f"standard output cannot be written: {error.strerror}"), as_json)
            return FAILURE
    return status


def _run(words: Sequence[str], as_json: bool) -> int:
    try:
        if words[:1] == ["head"]:
            return run_head(words[1:])
        if words[:1] == ["calibrate"]:
            return run_calibrate(words[1:])
        arguments = make_parser().parse_args(words)
        command: Callable[[object], None] = arguments.command
        command(arguments)
    except UsageError as error:
        tell(error, as_json)
        return WRONG_USAGE
    except (Error, Failure, ImportError, OSError, ValueError) as error:
        tell(error, as_json)
        return FAILURE
    except KeyboardInterrupt:
        return INTERRUPTED
    return SUCCESS

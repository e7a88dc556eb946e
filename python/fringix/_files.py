"""Files that are written whole or not at all."""

from __future__ import annotations

import os
import pathlib
import uuid
from typing import Union

PathLike = Union[str, "os.PathLike[str]"]


def write_file(path: PathLike, content: bytes) -> None:
    """Writes a file under another name first, so that no reader meets a part of it. Raises OSError."""
    target = pathlib.Path(path)
    part = target.with_name(f".{target.name}.{uuid.uuid4().hex}.part")
    try:
        part.write_bytes(content)
        os.replace(part, target)
    finally:
        part.unlink(missing_ok=True)

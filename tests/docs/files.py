"""The files that commands of the documentation read: pictures for a projector, first programs, the dissector, and dist/ as a build leaves it."""

from __future__ import annotations

import os
import pathlib
import shutil
import struct
import zlib

from page import ROOT

PICTURES = ("stripes.png", "image.png", "mask.png")
PROGRAMS = ("c/first_picture.c", "cpp/first_picture.cpp")


def png(width: int, height: int, row: bytes) -> bytes:
    """A grey picture of equal rows."""

    def chunk(kind: bytes, content: bytes) -> bytes:
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress((b"\0" + row) * height)) + chunk(b"IEND", b"")


def write_files(folder: pathlib.Path, head_options: list[str]) -> None:
    """The pictures are as large as the projector of a head with these options."""
    width, height = map(int, head_options[head_options.index("--projector") + 1].split("x"))
    row = bytes(255 if column % 16 < 8 else 0 for column in range(width))
    for name in PICTURES:
        (folder / name).write_bytes(png(width, height, row))
    for name in PROGRAMS:
        shutil.copy(ROOT / "examples" / name, folder)
    shutil.copy(ROOT / "examples" / PROGRAMS[0], folder / "program.c")
    shutil.copy(ROOT / "tools/wireshark/fringix.lua", folder)
    (folder / "dist").symlink_to(os.environ.get("FRINGIX_DIST", ROOT / "dist"))

"""PNG files of gray pictures with 8 bits, as scans have them."""

from __future__ import annotations

import pathlib
import struct
import zlib
from typing import Iterator, Tuple

import numpy
import numpy.typing

from ._files import PathLike

Picture = numpy.typing.NDArray[numpy.uint8]

_SIGNATURE = b"\x89PNG\r\n\x1a\n"
_MOST_PIXELS = 1 << 28


class BadPictureFile(ValueError):
    """The file is no picture of a scan; the text tells why."""


def _chunks(content: bytes) -> Iterator[Tuple[bytes, bytes]]:
    at = len(_SIGNATURE)
    while at + 12 <= len(content):
        length, kind = struct.unpack_from(">I4s", content, at)
        data = content[at + 8 : at + 8 + length]
        if content[at + 8 + length : at + 12 + length] != struct.pack(">I", zlib.crc32(kind + data)):
            raise BadPictureFile("is damaged")
        yield kind, data
        at += 12 + length
    if at != len(content):
        raise BadPictureFile("is damaged")


def _size_of(header: bytes) -> Tuple[int, int]:
    if len(header) != 13:
        raise BadPictureFile("is damaged")
    width, height, depth, colour, _, _, interlace = struct.unpack(">IIBBBBB", header)
    if (depth, colour, interlace) != (8, 0, 0):
        raise BadPictureFile("is no gray picture of 8 bits, as those of a scan are")
    if not 0 < width * height <= _MOST_PIXELS:
        raise BadPictureFile(f"has {width} x {height} pixels, and at most {_MOST_PIXELS} altogether are taken")
    return width, height


def _unpack(packed: bytes, size: int) -> bytes:
    unpacking = zlib.decompressobj()
    try:
        rows = unpacking.decompress(packed, size)
    except zlib.error as error:
        raise BadPictureFile("is damaged") from error
    if len(rows) != size:
        raise BadPictureFile("is damaged")
    return rows


def _nearest(left: int, up: int, corner: int) -> int:
    """Which of the three neighbours is closest to the plane through them."""
    ways = (abs(up - corner), abs(left - corner), abs(left + up - 2 * corner))
    return (left, up, corner)[ways.index(min(ways))]


def _row_by_pixels(kind: int, row: Picture, above: Picture) -> Picture:
    done, left, corner = bytearray(len(row)), 0, 0
    for i, (difference, up) in enumerate(zip(row.tobytes(), above.tobytes())):
        guess = (left + up) // 2 if kind == 3 else _nearest(left, up, corner)
        left, corner = (difference + guess) & 255, up
        done[i] = left
    return numpy.frombuffer(bytes(done), numpy.uint8)


def _undo_filters(kinds: Picture, rows: Picture) -> Picture:
    """The pixels of rows that were stored as differences to their neighbours."""
    if (kinds == 2).all():
        return numpy.add.accumulate(rows, axis=0, dtype=numpy.uint8)
    above = numpy.zeros_like(rows[0])
    pixels = numpy.empty_like(rows)
    for i, kind in enumerate(kinds.tolist()):
        if kind > 4:
            raise BadPictureFile("is damaged")
        if kind < 3:
            row = numpy.add.accumulate(rows[i], dtype=numpy.uint8) if kind == 1 else rows[i] + (above if kind == 2 else numpy.uint8(0))
        else:
            row = _row_by_pixels(kind, rows[i], above)
        pixels[i] = above = row
    return pixels


def decode(content: bytes) -> Picture:
    """The pixels of a PNG file, ``uint8[h, w]``. Raises BadPictureFile with the reason."""
    if not content.startswith(_SIGNATURE):
        raise BadPictureFile("is no PNG file")
    chunks = list(_chunks(content))
    if not chunks or chunks[0][0] != b"IHDR" or chunks[-1][0] != b"IEND":
        raise BadPictureFile("is damaged")
    width, height = _size_of(chunks[0][1])
    rows = _unpack(b"".join(data for kind, data in chunks if kind == b"IDAT"), height * (width + 1))
    table = numpy.frombuffer(rows, numpy.uint8).reshape(height, width + 1)
    return _undo_filters(table[:, 0], table[:, 1:])


def read(path: PathLike) -> Picture:
    """The same from a file. Raises OSError, too."""
    return decode(pathlib.Path(path).read_bytes())


def _chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def encode(picture: Picture) -> bytes:
    """A PNG file with the pixels of ``uint8[h, w]``, each row as differences to the one above it."""
    height, width = picture.shape
    rows = numpy.full((height, width + 1), 2, numpy.uint8)
    rows[:, 1:] = picture
    rows[1:, 1:] -= picture[:-1]
    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    content = [(b"IHDR", header), (b"IDAT", zlib.compress(rows.tobytes(), 1)), (b"IEND", b"")]
    return _SIGNATURE + b"".join(_chunk(kind, data) for kind, data in content)

import struct
import zlib

import numpy
import pytest

from fringix import _png

PICTURE = numpy.random.default_rng(1).integers(0, 256, (7, 11), numpy.uint8)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def neighbours(row, column):
    left = int(PICTURE[row, column - 1]) if column else 0
    up = int(PICTURE[row - 1, column]) if row else 0
    return left, up, int(PICTURE[row - 1, column - 1]) if row and column else 0


def paeth(left, up, corner):
    guess = left + up - corner
    return min((left, up, corner), key=lambda value: abs(int(guess - value)))


GUESSES = [
    lambda left, up, corner: 0,
    lambda left, up, corner: left,
    lambda left, up, corner: up,
    lambda left, up, corner: (left + up) // 2,
    paeth,
]


def packed(kinds, header=(8, 0, 0, 0, 0), width=11, height=7):
    rows = bytearray()
    for row, kind in enumerate(kinds):
        guess = GUESSES[kind % 5]
        rows += bytes([kind]) + bytes((int(PICTURE[row, column]) - guess(*neighbours(row, column))) & 255 for column in range(11))
    image = struct.pack(">IIBBBBB", width, height, *header)
    chunks = [(b"IHDR", image), (b"tEXt", b"a\0b"), (b"IDAT", zlib.compress(rows)), (b"IEND", b"")]
    return b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*each) for each in chunks)


@pytest.mark.parametrize("kinds", [7 * [0], 7 * [1], 7 * [2], 7 * [3], 7 * [4], [4, 3, 2, 1, 0, 1, 2]])
def test_every_filter_is_undone(kinds):
    numpy.testing.assert_array_equal(_png.decode(packed(kinds)), PICTURE)


def test_every_damaged_byte_and_every_cut_is_noticed():
    whole = packed(7 * [2])
    damaged = [whole[:i] + bytes([whole[i] ^ 0x40]) + whole[i + 1 :] for i in range(len(whole))]
    for content in damaged + [whole[:i] for i in range(len(whole))] + [whole + b"\0"]:
        with pytest.raises(_png.BadPictureFile):
            _png.decode(content)


@pytest.mark.parametrize(
    "content, reason",
    [
        (b"GIF89a", "is no PNG file"),
        (packed(7 * [2], header=(16, 0, 0, 0, 0)), "no gray picture of 8 bits"),
        (packed(7 * [2], header=(8, 2, 0, 0, 0)), "no gray picture of 8 bits"),
        (packed(7 * [2], header=(8, 0, 0, 0, 1)), "no gray picture of 8 bits"),
        (packed(7 * [2], width=12), "is damaged"),
        (packed(7 * [5]), "is damaged"),
        (packed(7 * [2], width=1 << 31, height=1 << 31), "at most 268435456"),
        (packed(7 * [2], height=0), "at most 268435456"),
    ],
)
def test_other_content_is_refused_with_the_reason(content, reason):
    with pytest.raises(_png.BadPictureFile, match=reason):
        _png.decode(content)


def test_small_file_cannot_claim_much_memory():
    bomb = zlib.compress(bytes(1 << 26))
    header = struct.pack(">IIBBBBB", 11, 7, 8, 0, 0, 0, 0)
    content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", bomb) + chunk(b"IEND", b"")
    numpy.testing.assert_array_equal(_png.decode(content), numpy.zeros((7, 11)))

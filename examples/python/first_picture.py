"""Fetches the camera's current picture and writes it as a PGM file: first_picture.py ADDRESS [FILE]"""

from __future__ import annotations

import pathlib
import sys

import fringix


def main(address: str, file: str = "picture.pgm") -> None:
    with fringix.open(address) as head:
        picture = head.live()
    height, width = picture.shape
    pathlib.Path(file).write_bytes(b"P5 %d %d 255\n" % (width, height) + picture.tobytes())
    print(f"{file}: {width} x {height} pixels, mean grey level {picture.mean():.1f}")


if __name__ == "__main__":
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])

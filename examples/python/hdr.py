"""Scans dark and shiny parts with several exposures, and says what each of them adds: hdr.py ADDRESS [FILE]"""

from __future__ import annotations

import sys

import fringix


def main(address: str, file: str = "cloud.ply") -> None:
    with fringix.open(address) as head:
        present = head.ini["Camera", "Exposure"]
        exposures = [present, present // 4, present * 4]
        for count in range(1, len(exposures) + 1):
            scan = head.scan(exposures=exposures[:count])
            print(f"{exposures[:count]} us: {scan.valid.sum()} points, {(scan.reason == 1).sum()} pixels too bright")
    scan.save(file)


if __name__ == "__main__":
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])

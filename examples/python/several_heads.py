"""Scans with several heads at once, each on a thread of its own: several_heads.py ADDRESS..."""

from __future__ import annotations

import sys
from concurrent.futures import ThreadPoolExecutor

import fringix


def scan(address: str) -> str:
    with fringix.open(address) as head:
        result = head.scan()
        file = f"cloud-{head.serial}.ply"
    result.save(file)
    return f"{file}: {result.valid.sum()} points from {address}"


def main(addresses: list[str]) -> None:
    with ThreadPoolExecutor(len(addresses)) as threads:
        for told in threads.map(scan, addresses):
            print(told)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    main(sys.argv[1:])

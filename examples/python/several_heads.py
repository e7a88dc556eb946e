"""Scans with several heads at once, each on a thread of its own, of which one may fail: several_heads.py ADDRESS..."""

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


def main(addresses: list[str]) -> int:
    failures = 0
    with ThreadPoolExecutor(len(addresses)) as threads:
        for scanned in [threads.submit(scan, address) for address in addresses]:
            try:
                print(scanned.result())
            except fringix.Error as error:
                failures += 1
                print(error, file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))

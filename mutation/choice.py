"""Chooses among all changes, the same ones for the same seed, spread over the rooms."""

from __future__ import annotations

import hashlib

from schemata import overlaps
from sites import Site

ROOMS = ["src/device", "src/net", "src/threads", "src/discovery", "scan", "scan/api", "json"]


def shares(available: dict[str, int], count: int) -> dict[str, int]:
    """As many of each room as of any other, as far as it has them."""
    given = dict.fromkeys(available, 0)
    while count > 0 and any(given[room] < available[room] for room in available):
        for room in available:
            if given[room] < available[room] and count > 0:
                given[room] += 1
                count -= 1
    return given


class Choice:
    def __init__(self, sites: list[Site], count: int, seed: int) -> None:
        self.waiting: dict[str, list[Site]] = {}
        for site in sites:
            self.waiting.setdefault(site.room, []).append(site)
        self.share = shares({room: len(some) for room, some in self.waiting.items()}, count)
        for some in self.waiting.values():
            some.sort(key=lambda site: hashlib.sha256(f"{seed} {site.key}".encode()).digest())  # an edit elsewhere leaves it as it is
        self.chosen: dict[int, Site] = {}
        self.last = 0

    def fill(self) -> bool:
        """Whether any was added."""
        before = self.last
        for room, some in self.waiting.items():
            held = sum(site.room == room for site in self.chosen.values())
            while held < self.share[room] and some:
                held += self.take(some.pop(0))
        return self.last > before

    def take(self, site: Site) -> bool:
        if any(overlaps(site, other) for other in self.chosen.values() if other.file == site.file):
            return False
        self.last += 1
        self.chosen[self.last] = site
        return True

"""Writes sources that hold many changes at once, each taken or not when the program starts: a build for all of them."""

from __future__ import annotations

from sites import Site


def overlaps(a: Site, b: Site) -> bool:
    """Whether they cannot stand in one text: neither is a part of the other, and they have something in common."""
    if a.end <= b.start or b.end <= a.start:
        return False
    return not (a.start <= b.start and b.end <= a.end) and not (b.start <= a.start and a.end <= b.end)


def wrapped(site: Site, number: int, original: str) -> str:
    if site.changed == "void()":
        return f"(fringix_mutant({number}) ? void() : static_cast<void>({original}))"
    if site.kind == "order" and site.told.count(" after "):
        return f"if (fringix_mutant({number})) {{ {site.changed} }} else {{ {original} }}"
    return f"(fringix_mutant({number}) ? ({site.changed}) : ({original}))"


def rewritten(text: str, numbered: dict[int, Site]) -> str:
    """The source with the changes, in the lines that it had."""
    ordered = sorted(numbered.items(), key=lambda item: (item[1].start, -item[1].end, item[1].changed != "void()", item[0]))

    def render(start: int, end: int, inner: list[tuple[int, Site]]) -> str:
        parts, place = [], start
        while inner:
            number, site = inner[0]
            below = [other for other in inner[1:] if other[1].start < site.end]
            inner = inner[1 + len(below):]
            parts += [text[place:site.start], wrapped(site, number, render(site.start, site.end, below))]
            place = site.end
        return "".join([*parts, text[place:end]])

    return render(0, len(text), ordered)

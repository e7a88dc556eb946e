"""Every link of the documentation leads to a file of the tree, and to a heading that is there."""

from __future__ import annotations

import pathlib
import sys

from page import ROOT, anchors_of, links_of, pages


def wrong_links(name: str, text: str, root: pathlib.Path = ROOT) -> list[str]:
    wrong = []
    for link in links_of(text):
        if "://" in link or link.startswith("mailto:"):
            continue
        path, _, anchor = link.partition("#")
        target = (root / name).parent / path if path else root / name
        if not target.exists():
            wrong.append(f"{name} links to {link}, which is not there")
        elif anchor and anchor not in anchors_of(target.read_text(encoding="utf-8")):
            wrong.append(f"{name} links to {link}, a heading that {path or 'it'} does not have")
    return wrong


def pages_that_nothing_links_to() -> list[str]:
    linked = set()
    for name in pages():
        for link in links_of((ROOT / name).read_text(encoding="utf-8")):
            linked.add(((ROOT / name).parent / link.partition("#")[0]).resolve())
    return [f"no page links to {name}" for name in pages() if name.startswith("docs/") and (ROOT / name).resolve() not in linked]


def main() -> None:
    texts = {name: (ROOT / name).read_text(encoding="utf-8") for name in pages()}
    wrong = [line for name, text in texts.items() for line in wrong_links(name, text)] + pages_that_nothing_links_to()
    if wrong:
        sys.exit("\n".join(wrong))
    print(f"docs: {sum(len(links_of(text)) for text in texts.values())} links of {len(texts)} pages resolve")


if __name__ == "__main__":
    main()

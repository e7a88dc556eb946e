"""check_site.py FOLDER: every link of a site leads to a file and a place that are there, and no page loads anything from elsewhere."""

from __future__ import annotations

import html.parser
import pathlib
import re
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path: pathlib.Path) -> None:
        super().__init__()
        self.links: list[str] = []
        self.loads: list[str] = []
        self.places: set[str] = set()
        self.feed(path.read_text(encoding="utf-8", errors="replace"))

    def handle_starttag(self, tag: str, attributes: list[tuple[str, str | None]]) -> None:
        told = {name: value or "" for name, value in attributes}
        self.places.update(told[name] for name in ("id", "name") if name in told)
        if tag == "a" and "href" in told:
            self.links.append(told["href"])
        if tag == "link" and told.get("rel") in ("stylesheet", "icon"):
            self.loads.append(told["href"])
        if "src" in told:
            self.loads.append(told["src"])


def styles_from_elsewhere(folder: pathlib.Path) -> list[str]:
    found = []
    for path in folder.rglob("*.css"):
        urls = re.findall(r"url\([\"']?((?:/|https?:)[^)\"']*)", path.read_text(encoding="utf-8"))
        found += [f"{path.relative_to(folder)} loads {url}" for url in urls]
    return found


def main() -> None:
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in folder.rglob("*.html")}
    wrong, count = styles_from_elsewhere(folder), 0
    for path, page in pages.items():
        wrong += [f"{path.relative_to(folder)} loads {load}" for load in page.loads if "//" in load]
        for link in [*page.links, *(load for load in page.loads if "//" not in load)]:
            url = urllib.parse.urlsplit(link)
            if url.scheme or link.startswith("//"):
                continue
            count += 1
            target = (path.parent / urllib.parse.unquote(url.path)).resolve() if url.path else path
            place = urllib.parse.unquote(url.fragment)
            if not target.exists():
                wrong.append(f"{path.relative_to(folder)} links to {link}, which is not there")
            elif place and target in pages and place not in pages[target].places:
                wrong.append(f"{path.relative_to(folder)} links to {link}, a place that is not there")
    if wrong:
        sys.exit("\n".join(wrong))
    print(f"{len(pages)} pages, {count} links, all of which resolve")


if __name__ == "__main__":
    main()

"""gather.py FOLDER: puts the pages of the tree into one folder, for Sphinx.

Links to pages lead to their new places, links to headers to what Doxygen makes of them, and other files of the tree come along.
"""

from __future__ import annotations

import pathlib
import pkgutil
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/docs"))
from page import pages  # noqa: E402

HEADERS = {f"include/fringix/{name}.{kind}": f"api/{name}_8{kind}.html" for name in ("fringix", "scan") for kind in ("h", "hpp")}


def place_of(page: str) -> str:
    """examples/labview/README.md becomes examples-labview-readme.md."""
    return page[len("docs/") :] if page.startswith("docs/") else page.replace("/", "-").lower()


class Gathered:
    def __init__(self, folder: pathlib.Path) -> None:
        self._folder = folder
        self._pages = {page: place_of(page) for page in pages()}

    def _led_elsewhere(self, page: str, text: str, link: str) -> str:
        path, _, anchor = link.partition("#")
        if "://" in link or not path:
            return f"[{text}]({link})"
        target = str(((ROOT / page).parent / path).resolve().relative_to(ROOT))
        if target in self._pages:
            return f"[{text}]({self._pages[target]}{'#' + anchor if anchor else ''})"
        if target in HEADERS:
            return f'<a href="{HEADERS[target]}">{self._as_html(text)}</a>'
        return self._with_file(target, text)

    @staticmethod
    def _as_html(text: str) -> str:
        return re.sub("`([^`]*)`", r"<code>\1</code>", text)

    def _with_file(self, target: str, text: str) -> str:
        if target == "docs":
            return f"[{text}](index.md)"
        copied = self._folder / "extra/files" / target
        copied.parent.mkdir(parents=True, exist_ok=True)
        if (ROOT / target).is_dir():
            return f"[{text}]({self._pages[target + '/README.md']})"
        shutil.copy(ROOT / target, copied)
        return f'<a href="files/{target}">{self._as_html(text)}</a>'

    def page(self, page: str) -> None:
        text = (ROOT / page).read_text(encoding="utf-8")
        text = re.sub(r"(?<!!)\[((?:[^\]\[]|\[[^\]]*\])*)\]\(([^)\s]+)\)", lambda link: self._led_elsewhere(page, link[1], link[2]), text)
        text = re.sub(r"!\[([^\]]*)\]\((?:docs/)?images/", r"![\1](images/", text)
        if page == "docs/index.md":
            text += contents(text)
            self._listed = text
        elif f"({self._pages[page]})" not in self._listed:
            text = f"---\norphan: true\n---\n{text}"
        (self._folder / self._pages[page]).write_text(text, encoding="utf-8")

    def all(self) -> None:
        """The first page says which others stand in the margin."""
        self.page("docs/index.md")
        for page in self._pages:
            if page != "docs/index.md":
                self.page(page)


def contents(index: str) -> str:
    """What is in the margin of each page: the tables of the first one."""
    parts = re.split(r"^\| ([^|\n]+) \| \|\n(?=\|---)", index, flags=re.MULTILINE)
    found = []
    for caption, table in zip(parts[1::2], parts[2::2]):
        entries = re.findall(r"^\| \[[^\]]*\]\((\S+)\.md\)", table, re.MULTILINE)
        entries += ["Functions in C and C++ <api>", "python-api"] if caption == "to look up" else []
        found.append("\n".join(["", "```{toctree}", ":hidden:", f":caption: {caption}", *entries, "```", ""]))
    return "".join(found)


def python_api() -> str:
    modules = [module.name for module in pkgutil.iter_modules([str(ROOT / "python/fringix")]) if not module.name.startswith("_")]
    lines = ["Python, by module", "=================", "", "What is named at the top of ``fringix`` is imported from these.", ""]
    for module in modules:
        title = f"fringix.{module}"
        lines += [title, "-" * len(title), "", f".. automodule:: fringix.{module}", ""]
    return "\n".join(lines)


API = """# Functions in C and C++

Made from the headers, which tell the same:

- <a href="api/fringix_8h.html"><code>fringix.h</code></a>: heads, in C
- <a href="api/fringix_8hpp.html"><code>fringix.hpp</code></a>: heads, in C++
- <a href="api/scan_8h.html"><code>scan.h</code></a>: from pictures to points, in C
- <a href="api/scan_8hpp.html"><code>scan.hpp</code></a>: the same in C++
"""


def main() -> None:
    folder = pathlib.Path(sys.argv[1])
    shutil.copytree(ROOT / "docs/images", folder / "images")
    Gathered(folder).all()
    (folder / "python-api.rst").write_text(python_api(), encoding="utf-8")
    (folder / "api.md").write_text(API, encoding="utf-8")


if __name__ == "__main__":
    main()

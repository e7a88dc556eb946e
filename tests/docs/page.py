"""What a page of the documentation has: blocks of code, headings, links."""

from __future__ import annotations

import dataclasses
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]

MADE = ("build", "dist", "out")

_FENCE = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
_REMARK = re.compile(r"<!-- ((?:(?!-->).)+) -->\n\Z", re.DOTALL)
_LINK = re.compile(r"\[(?:[^\]\[]|\[[^\]]*\])*\]\(([^)\s]+)\)")


@dataclasses.dataclass(frozen=True)
class Block:
    """A fenced block, and what the comment right above it says about how it is tested."""

    page: str
    line: int
    language: str
    text: str
    remark: str

    @property
    def place(self) -> str:
        return f"{self.page}:{self.line}"

    def told(self, subject: str) -> str | None:
        """The rest of a remark that begins with a subject, such as "not run:"."""
        return self.remark[len(subject) :].strip() if self.remark.startswith(subject) else None


def blocks_of(page: str, text: str) -> list[Block]:
    found = []
    for fence in _FENCE.finditer(text):
        above = text[: fence.start()]
        remark = _REMARK.search(above)
        words = " ".join(remark.group(1).split()) if remark else ""
        found.append(Block(page, above.count("\n") + 1, fence.group(1), fence.group(2), words))
    return found


def prose_of(text: str) -> str:
    """A page without its blocks, what is quoted as code, and remarks."""
    return re.sub(r"`[^`\n]*`", "code", re.sub(r"<!--.*?-->", "", _FENCE.sub("", text), flags=re.DOTALL))


def links_of(text: str) -> list[str]:
    return _LINK.findall(prose_of(text))


def anchors_of(text: str) -> set[str]:
    """The names that headings get as targets of links."""
    headings = re.findall(r"^#+ (.+)$", _FENCE.sub("", text), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def pages() -> list[str]:
    """All that is read as documentation."""
    found = [path.relative_to(ROOT) for depth in ("*.md", "*/*.md", "*/*/*.md") for path in ROOT.glob(depth)]
    return sorted(str(path) for path in found if path.parts[0] not in MADE and not path.parts[0].startswith("."))


if __name__ == "__main__":
    for name in pages():
        if "\n```" in (ROOT / name).read_text(encoding="utf-8"):
            print(name)

"""check.py PAGE: does what the blocks of a page say, and compares what they show.

A block whose remark says "not run: WHY" is left out, one "from FILE" or "run by FILE" is held against that file.
"""

from __future__ import annotations

import collections
import pathlib
import sys
import tempfile

from files import write_files
from heads import SMALL, Heads
from kinds import CHECKS, Skipped
from page import ROOT, Block, blocks_of


def quoted(block: Block, file: str) -> None:
    source = ROOT / file
    assert source.exists(), f"{file} is not there"
    assert block.text in source.read_text(encoding="utf-8"), f"{file} does not have that text"


def check(block: Block, heads: Heads, folder: pathlib.Path) -> str:
    """What became of it, in a word or with the reason."""
    file = block.told("from ")
    if file is not None:
        quoted(block, file)
        return "quoted"
    other = block.told("run by ")
    if other is not None:
        assert (ROOT / other).exists(), f"{other} is not there"
        return f"not run: {other} runs it"
    reason = block.told("not run:")
    if reason is not None:
        assert len(reason.split()) > 2, "that is no reason"
        return f"not run: {reason}"
    assert block.language in CHECKS, f'nothing is known to do with "{block.language}", and no reason is stated not to run it'
    try:
        CHECKS[block.language](block, heads, folder)
    except Skipped as skipped:
        return f"not run: {skipped}"
    return "data" if block.language in ("text", "json") else "run"


def check_page(page: str, text: str) -> tuple[collections.Counter[str], list[str]]:
    """Counts, and what to tell of single blocks."""
    counts: collections.Counter[str] = collections.Counter()
    told = []
    heads = Heads()
    with tempfile.TemporaryDirectory() as folder:
        write_files(pathlib.Path(folder), SMALL)
        try:
            for block in blocks_of(page, text):
                try:
                    became = check(block, heads, pathlib.Path(folder))
                except Exception as failure:
                    became = f"failed: {failure}"
                counts[became.partition(":")[0]] += 1
                if ":" in became:
                    told.append(f"{block.place}: {became}")
        finally:
            heads.close()
    return counts, told


def main() -> None:
    page = sys.argv[1]
    counts, told = check_page(page, (ROOT / page).read_text(encoding="utf-8"))
    for line in told:
        print(line)
    print("counts found", counts.total(), *(f"{what.replace(' ', '-')} {number}" for what, number in counts.items()))
    if counts["failed"]:
        sys.exit(1)


if __name__ == "__main__":
    main()

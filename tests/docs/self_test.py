"""The check is shown pages with something wrong, and has to say so."""

from __future__ import annotations

import unittest

from check import check_page
from heads import matches
from links import wrong_links
from page import ROOT, anchors_of


def outcome(*lines: str) -> str:
    counts, told = check_page("page.md", "\n".join(lines) + "\n")
    return " ".join([*counts, *told])


class Wrong(unittest.TestCase):
    def test_a_block_without_language_or_reason(self) -> None:
        self.assertIn("failed", outcome("```", "make", "```"))
        self.assertIn("failed", outcome("<!-- not run: -->", "```sh", "false", "```"))
        self.assertIn("not run", outcome("<!-- not run: for Windows' own shell -->", "```bat", "dir", "```"))

    def test_a_remark_counts_right_above_its_block_only(self) -> None:
        self.assertIn("failed", outcome("<!-- not run: for some good reason -->", "", "```bat", "dir", "```"))

    def test_a_remark_begins_where_it_begins(self) -> None:
        self.assertEqual(outcome("<!-- not run: for some good reason -->", "Text", "<!-- typed: a -->", "```sh", "true", "```"), "run")

    def test_a_command_that_fails(self) -> None:
        self.assertIn("page.md:2: failed: sh -e", outcome("Text", "```sh", "false", "true", "```"))

    def test_other_output_than_shown(self) -> None:
        self.assertEqual(outcome("```console", "$ printf 'a\\nb\\nc\\n'", "a", "...", "c", "```"), "run")
        self.assertIn("failed", outcome("```console", "$ echo a", "b", "```"))
        self.assertIn("failed", outcome("```console", "$ echo a", "```"))

    def test_a_quotation_that_is_none(self) -> None:
        self.assertIn("failed", outcome("<!-- from CONTRIBUTING.md -->", "```c", "int other;", "```"))
        self.assertIn("failed", outcome("<!-- run by tests/nobody.py -->", "```sh", "true", "```"))

    def test_sources_that_do_not_compile(self) -> None:
        self.assertIn("failed", outcome("```c", "int32_t count = SLGetNothing();", "```"))
        self.assertIn("failed", outcome("```json", "{,}", "```"))

    def test_dots_stand_for_what_differs(self) -> None:
        self.assertTrue(matches("time ... ms\n...\nend\n", "time 3.1 ms\nend\n"))
        self.assertFalse(matches("time ... ms\nend\n", "time 3.1 s\nend\n"))
        self.assertFalse(matches("end\n", "end\nmore\n"))

    def test_links(self) -> None:
        self.assertEqual(wrong_links("README.md", "[a](CONTRIBUTING.md#build-and-test) [b](https://example.org) `[c](d)`"), [])
        self.assertEqual(len(wrong_links("README.md", "[a](nothing.md) [b](CONTRIBUTING.md#nothing) ![c](no.png)")), 3)
        self.assertIn("threads-ctrl-c-forks", anchors_of("## Threads, Ctrl-C, forks\n"))
        self.assertTrue((ROOT / "README.md").exists())


if __name__ == "__main__":
    unittest.main()

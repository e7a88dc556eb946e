"""The check is shown a small source, and has to find each kind of change in it and write one that compiles."""

from __future__ import annotations

import os
import pathlib
import subprocess
import tempfile
import unittest

from choice import Choice, shares
from schemata import overlaps, rewritten
from sites import Site, sites_of
from tree import ROOT, not_compiled

SOURCE = """\
// A comment with 7 < 8.
#include <string>
constexpr int most = 5;
static_assert(most < 6);
struct Row {
  Row& send(int value) { sum = 10 * sum + value; return *this; }
  Row& twice() { sum *= 2; return *this; }
  int sum = 0;
};
void note(int& place, int a, int b) { place = 100 * a + b; }
int sum(int limit) {
  Row row;
  for (int i = 0; i < limit; ++i) {
    if (i == most || !(limit > 3)) break;  // with a comment
    row.send(3)
        .twice();
  }
  int noted = 0;
  note(noted, limit, row.sum);
  noted += 1;
  return noted + std::string("text").front();
}
"""


class Small(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = tempfile.TemporaryDirectory()
        self.root = pathlib.Path(self.folder.name)
        (self.root / "small.cpp").write_text(SOURCE, encoding="utf-8")
        self.sites, self.left_out = sites_of(self.root, "small.cpp", [])

    def tearDown(self) -> None:
        self.folder.cleanup()

    def results(self, numbered: dict[int, Site]) -> list[str]:
        """What the source gives without any change and with each."""
        text = f'#include "{ROOT}/mutation/mutant.h"\n#include <cstdio>\n' + rewritten(SOURCE, numbered)
        program = self.root / "small"
        (self.root / "rewritten.cpp").write_text(text + 'int main() { std::printf("%d", sum(4)); }\n', encoding="utf-8")
        subprocess.run(["g++", "-std=c++20", "-w", self.root / "rewritten.cpp", "-o", program], check=True)
        return [subprocess.run([program], env={**os.environ, "FRINGIX_MUTANT": str(number)}, capture_output=True, text=True, timeout=10,
                               check=False).stdout for number in [0, *numbered]]

    def find(self, told: str) -> Site:
        return next(site for site in self.sites if site.told == told)

    def test_each_kind_is_found(self) -> None:
        told = {site.told for site in self.sites}
        for one in ("i < limit -> i <=", "i == most -> i !=", "!(limit > 3) -> (limit > 3)", ".twice() left out",
                    ".send(3).twice() -> .twice().send(3)", "note(noted, limit, row.sum) left out", '"text" -> "?text"',
                    "note(noted, limit, row.sum); after noted += 1;", "i == most || !(limit > 3): most -> most + 1", "int i = 0: 0 -> 1",
                    "note(noted, limit, row.sum): limit, row.sum -> row.sum, limit"):
            self.assertIn(one, told)
        self.assertFalse([site for site in self.sites if site.line in (1, 3, 4)], "what is no code, or known when it is compiled")
        self.assertGreaterEqual(self.left_out, 3)
        self.assertEqual(self.find(".twice() left out").key, "small.cpp sum: .twice() left out")

    def test_each_makes_a_difference_in_one_build(self) -> None:
        changes = ["note(noted, limit, row.sum) left out", "i < limit -> i <=", ".send(3).twice() -> .twice().send(3)", ".twice() left out",
                   "note(noted, limit, row.sum); after noted += 1;", '"text" -> "?text"', "row.send(3) .twice(): 3 -> 4"]
        results = self.results({number: self.find(told) for number, told in enumerate(changes, 1)})
        self.assertEqual(len(set(results)), len(changes) + 1, results)

    def test_what_the_compiler_refuses_is_found_by_its_line(self) -> None:
        site = next(s for s in sites_of(ROOT, "src/discovery/announce_reply.cpp", [f"-I{ROOT}/src"])[0] if s.told.startswith('"HXA_T3D"'))
        told = f"/tree/{site.file}:{site.line}:14: error: no\n"
        self.assertEqual(not_compiled(told, {1: site}), {1})
        self.assertEqual(not_compiled("other.cpp:1:1: error: no\n", {1: site}), set())

    def test_the_choice(self) -> None:
        self.assertEqual(shares({"a": 2, "b": 100, "c": 100}, 12), {"a": 2, "b": 5, "c": 5})
        first, again, other = (Choice(self.sites, 8, seed) for seed in (1, 1, 2))
        for choice in (first, again, other):
            choice.fill()
        self.assertEqual(first.chosen, again.chosen)
        self.assertNotEqual(first.chosen, other.chosen)
        self.assertFalse(any(overlaps(a, b) for a in first.chosen.values() for b in first.chosen.values()))


if __name__ == "__main__":
    unittest.main()

"""mutate.py [--only PATH] [--count N] [--seed S]: changes the libraries in many small ways and tells which ones no test notices."""

from __future__ import annotations

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import pickle
import sys

from choice import ROOMS, Choice
from sites import Site, sites_of
from suites import Suite, all_suites, explore
from tree import ROOT, build, copy_tree, not_compiled, write_sources

sys.path.insert(0, str(ROOT / "scripts"))
from reasons import read_reasons  # noqa: E402

GOAL = 0.95  # of the changes that make a difference
QUICK = 5.0  # seconds of a suite that mostly computes
LONGEST = 60.0  # seconds that a suite may take without any change
LAST = ROOT / "build" / "mutate" / "last.json"
EQUIVALENT = ROOT / "mutation" / "equivalent.txt"


def files_of(rooms: list[str], only: str) -> list[str]:
    found = [str(f.relative_to(ROOT)) for room in rooms for f in sorted((ROOT / room).glob("*")) if f.suffix in (".cpp", ".h")]
    return [f for f in found if f.startswith(only)]


def sites_by_cache(root: pathlib.Path, file: str, flags: list[str]) -> tuple[list[Site], int]:
    """As long as neither the file nor what looks for changes in it is another."""
    contents = (root / file).read_bytes() + (ROOT / "mutation" / "sites.py").read_bytes()
    kept = ROOT / "build" / "mutate" / "sites" / hashlib.sha256(file.encode() + contents).hexdigest()
    if not kept.exists():
        kept.parent.mkdir(parents=True, exist_ok=True)
        kept.write_bytes(pickle.dumps(sites_of(root, file, flags)))
    return pickle.loads(kept.read_bytes())


def find_sites(only: str) -> tuple[list[Site], int]:
    flags = [f"-I{ROOT}/src", f"-I{ROOT}/include", f"-I{ROOT}/scan", f"-I{ROOT}", "-DFRINGIX_STRIP_LOOPS=", "-DFRINGIX_BUILD", "-DFRINGIX_SCAN_BUILD"]
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(sites_by_cache, *zip(*((ROOT, f, flags) for f in files_of(ROOMS, only)))))
    return [site for sites, _ in results for site in sites], sum(left_out for _, left_out in results)


def build_all(choice: Choice) -> int:
    """Builds what is chosen, with others in place of what the compiler refuses. Gives how many those were."""
    refused: set[int] = set()
    while True:
        added = choice.fill()
        write_sources(choice.chosen)
        told = build()
        if not told:
            return len(refused)
        wrong = not_compiled(told, choice.chosen)
        if not wrong and not added:
            raise SystemExit(told)
        for number in wrong:
            del choice.chosen[number]
        refused |= wrong


def notice(number: int, suite: Suite) -> str:
    """What a suite tells of a change, or nothing. A failure counts when it comes twice, because a busy machine may fail a test, too."""
    limit = 10 + 5 * suite.seconds
    told = suite.run(limit, FRINGIX_MUTANT=str(number))
    sure = told.startswith("does not end") or told and suite.run(limit, FRINGIX_MUTANT=str(number))
    return f"{suite}: {told}" if sure else ""


def try_all(choice: Choice, suites: list[Suite], caught: dict[int, str], jobs: int) -> None:
    """First by the quick suites, one after another; then by the others, of which those in real time only wait: many side by side."""
    quick = [suite for suite in suites if suite.seconds < QUICK]
    slow = [suite for suite in suites if suite.seconds >= QUICK]

    def by_quick_ones(number: int) -> None:
        for suite in quick:
            if number in suite.reached and not caught.get(number):
                caught[number] = notice(number, suite)

    def by_slow_one(pair: tuple[Suite, int]) -> None:
        suite, number = pair
        told = "" if caught.get(number) else notice(number, suite)
        if told:
            caught[number] = told

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(by_quick_ones, choice.chosen))
    left = [number for number in choice.chosen if not caught.get(number)]
    print(f"{len(left)} are left for the tests that take longer", flush=True)
    for real_time, at_once in ((False, jobs), (True, 4 * jobs)):
        pairs = [(suite, n) for suite in slow if ("RealTime" in suite.name) == real_time for n in left if n in suite.reached]
        with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
            list(pool.map(by_slow_one, pairs))


def caught_before(choice: Choice) -> dict[int, str]:
    """Of the last run with the same choice, as far as a change is still the same."""
    if not LAST.exists():
        return {}
    last = json.loads(LAST.read_text(encoding="utf-8"))
    return {number: last[site.key] for number, site in choice.chosen.items() if last.get(site.key)}


def explore_all(suites: list[Suite], choice: Choice, jobs: int) -> list[Suite]:
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        told = list(pool.map(lambda suite: explore(suite, choice.last, LONGEST) and explore(suite, choice.last, LONGEST), suites))
    failed = [f"{suite}: {why}" for suite, why in zip(suites, told) if why]
    for line in failed:
        print(f"left out, because it fails without any change: {line}")
    good = [suite for suite, why in zip(suites, told) if not why]
    return sorted(good, key=lambda suite: suite.seconds)


def report(choice: Choice, caught: dict[int, str], reasons: dict[str, str]) -> bool:
    counts: collections.Counter[tuple[str, str]] = collections.Counter()
    lines = []
    for number, site in sorted(choice.chosen.items(), key=lambda item: (item[1].file, item[1].line, item[0])):
        verdict = "caught" if caught.get(number) else "equivalent" if site.key in reasons else "survived"
        counts[site.room, verdict] += 1
        counts[site.kind, verdict] += 1
        counts["all", verdict] += 1
        by = f"caught by {caught[number]}" if caught.get(number) else f"makes no difference: {reasons[site.key]}" if site.key in reasons else "SURVIVED"
        lines.append(f"{site.file}:{site.line} {site.place}: {site.told}: {by}")
    (ROOT / "build" / "mutate" / "results.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(*(line for line in lines if line.endswith("SURVIVED") or ": makes no difference" in line), sep="\n")
    print(f"{'':12}{'changes':>9}{'caught':>9}{'equal':>9}{'survived':>9}{'score':>9}")
    for name in [*ROOMS, "constant", "comparison", "order", "call", "all"]:
        hit, equal, lost = (counts[name, verdict] for verdict in ("caught", "equivalent", "survived"))
        if hit + equal + lost:
            print(f"{name:12}{hit + equal + lost:9}{hit:9}{equal:9}{lost:9}{score(hit, lost):8.1%}")
    return score(counts["all", "caught"], counts["all", "survived"]) >= GOAL


def score(caught: int, survived: int) -> float:
    return caught / (caught + survived) if caught + survived else 1.0


def main() -> None:
    parser = argparse.ArgumentParser(prog="mutate", description=__doc__)
    parser.add_argument("--only", default="", metavar="PATH", help="change only what begins with it, e.g. src/net or scan/clean.cpp")
    parser.add_argument("--count", type=int, default=300, help="how many changes")
    parser.add_argument("--seed", type=int, default=1, help="which ones")
    parser.add_argument("--again", action="store_true", help="only those of the same choice that nobody noticed the last time")
    parser.add_argument("--list", action="store_true", help="only tell which changes there are")
    options = parser.parse_args()
    sites, left_out = find_sites(options.only)
    reasons = read_reasons(EQUIVALENT)
    if options.list:
        print(*(f"{site.file}:{site.line} {site.kind} {site.place}: {site.told}" for site in sites), sep="\n")
        return
    print(f"{len(sites)} changes can be made; {left_out} more would be of what is known when it is compiled")
    if not options.only:
        for key in reasons.keys() - {site.key for site in sites}:
            print(f"{EQUIVALENT.name} names a change that cannot be made: {key}")
            sys.exit(1)
    choice = Choice(sites, options.count, options.seed)
    copy_tree()
    refused = build_all(choice)
    known = caught_before(choice) if options.again else {}
    print(f"{len(choice.chosen) - len(known)} are tried, with seed {options.seed}; {refused} others do not compile", flush=True)
    jobs = 3 * (os.cpu_count() or 1)
    suites = explore_all(all_suites(), choice, jobs)
    try_all(choice, suites, known, jobs)
    LAST.write_text(json.dumps({site.key: known.get(number, "") for number, site in choice.chosen.items()}), encoding="utf-8")
    if not report(choice, known, reasons):
        sys.exit(1)


if __name__ == "__main__":
    main()

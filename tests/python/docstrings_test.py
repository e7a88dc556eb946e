"""The examples in docstrings do what they say, with a simulated head."""

from __future__ import annotations

import doctest
import importlib
import pkgutil
from typing import Iterator

import fringix
import numpy
import pytest
from fringix.simulation import SimulatedHead

names = ["fringix", *(f"fringix.{module.name}" for module in pkgutil.iter_modules(fringix.__path__) if module.name != "__main__")]


@pytest.fixture(scope="module")
def simulated() -> Iterator[SimulatedHead]:
    with SimulatedHead(image_time=0) as running:
        yield running


@pytest.mark.parametrize("name", names)
def test_examples_of(name: str, simulated: SimulatedHead) -> None:
    module = importlib.import_module(name)
    examples = [test for test in doctest.DocTestFinder().find(module, name) if test.examples]
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS)
    for test in examples:
        with fringix.open(simulated.address) as head:
            test.globs.update(fringix=fringix, np=numpy, simulated=simulated, address=simulated.address, head=head)
            runner.run(test)
    assert runner.summarize(verbose=False).failed == 0


def test_there_are_examples() -> None:
    found = [test for name in names for test in doctest.DocTestFinder().find(importlib.import_module(name), name) if test.examples]
    assert len(found) >= 10

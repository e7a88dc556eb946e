"""What exceptions say to do next stands in docs/statuses.md."""

import pathlib
import re

import pytest
from fringix.errors import Error, HeadRefusedError

ROOT = pathlib.Path(__file__).parents[2]
PAGE = (ROOT / "docs/statuses.md").read_text(encoding="utf-8")
SECTIONS = re.findall(r"\n## (-?\d+) (\w+)\n(.*?)(?=\n## |\Z)", PAGE, re.DOTALL)
BY_CODE = {int(code): (name, text.split("\nNext step: ")[1].strip()) for code, name, text in SECTIONS}


@pytest.mark.parametrize("code", sorted(set(BY_CODE) - {0}))
def test_every_status_has_an_exception_that_ends_with_its_next_step(code):
    (kind,) = [each for each in Error.__subclasses__() if each.code == code]
    assert (kind.name, kind.next_step) == BY_CODE[code]


def test_no_other_status_has_an_exception():
    assert {each.code for each in Error.__subclasses__()} - {0} == set(BY_CODE) - {0}


def test_numbers_of_heads_have_their_next_step():
    assert PAGE.rstrip().endswith(f"Next step: {HeadRefusedError.next_step}")


def test_exceptions_of_c_sharp_end_with_the_same():
    source = (ROOT / "bindings/csharp/Fringix.cs").read_text(encoding="utf-8")
    said = dict(re.findall(r'base\(failure, "(\w+)",\s+"([^"]*)"\)', source))
    assert said == {name: step for code, (name, step) in BY_CODE.items() if code != 0}

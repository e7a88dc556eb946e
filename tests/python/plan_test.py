import numpy
import pytest

from fringix.errors import BadParameterError
from fringix.plan import Kind, Method, Picture, Plan


def test_defaults_are_twenty_pictures():
    plan = Plan.defaults(1280)
    assert (plan, len(plan)) == (Plan(1280, period=10, steps=10), 20)


def test_pictures_come_in_order():
    plan = Plan(64, period=16, steps=4)
    kinds = [picture.kind for picture in plan]
    assert kinds == [Kind.WHITE, Kind.BLACK] + 3 * [Kind.GRAY] + 4 * [Kind.PHASE]
    assert [picture.number for picture in plan][2:] == [2, 1, 0, 0, 1, 2, 3]
    assert plan[-1] == Picture(Kind.PHASE, 0, 3)


def test_three_frequencies_begin_with_the_coarsest():
    plan = Plan.defaults(640, Method.THREE_FREQUENCIES)
    assert [picture.frequency for picture in plan][2:] == 6 * [2] + 6 * [1] + 6 * [0]


def test_lines_show_the_patterns():
    plan = Plan(64, period=16, steps=4)
    lines = plan.lines
    assert lines.shape == (9, 64) and lines.dtype == numpy.uint8
    assert (lines[0] == 255).all() and (lines[1] == 0).all()
    numbers = (2 * numpy.arange(64) + 1) // 16
    numpy.testing.assert_array_equal(lines[4], 255 * ((numbers ^ numbers >> 1) & 1))
    columns = numpy.arange(64) + 0.5
    numpy.testing.assert_allclose(lines[6], 127.5 + 127.5 * numpy.cos(2 * numpy.pi * (columns / 16 - 0.25)), atol=0.51)


@pytest.mark.parametrize("values, reason", [((15, 10, 10), "15 columns"), ((640, 3, 10), "period of 3"), ((640, 10, 2), "2 steps")])
def test_values_out_of_range_are_refused(values, reason):
    with pytest.raises(BadParameterError, match=reason):
        Plan(*values)


def test_unknown_method_is_refused():
    with pytest.raises(ValueError, match="7 is not a valid Method"):
        Plan(640, 10, 10, 7)  # type: ignore[arg-type]


def test_there_is_no_picture_behind_the_last():
    plan = Plan.defaults(640)
    with pytest.raises(IndexError, match="no picture 19"):
        plan[19]
    with pytest.raises(BadParameterError, match="no picture 19"):
        plan.line(19)

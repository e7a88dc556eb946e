import dataclasses
import json
import pathlib
import re

import numpy
import pytest

from fringix.calibration import Calibration, Optics
from fringix.errors import BadCalibrationError

CAMERA = Optics(640, 512, 900, 901, 320, 255, numpy.array([-0.1, 0.05, 1e-3, -1e-3, 0.01]))
TURN = numpy.array([[0.8, 0, 0.6], [0, 1, 0], [-0.6, 0, 0.8]])
PROJECTOR = Optics(640, 400, 700, 700, 320, 200, numpy.zeros(5), TURN, numpy.array([-140.0, 0, 50]))
CALIBRATION = Calibration(1001, "2024-02-29", (CAMERA,), PROJECTOR)


def test_text_keeps_everything():
    again = Calibration.parse(CALIBRATION.text())
    assert again.text() == CALIBRATION.text()
    assert (again.serial, again.date, len(again.cameras)) == (1001, "2024-02-29", 1)
    for read, written in ((again.cameras[0], CAMERA), (again.projector, PROJECTOR)):
        for field in dataclasses.fields(Optics):
            numpy.testing.assert_array_equal(getattr(read, field.name), getattr(written, field.name))


def test_text_is_that_of_the_documentation():
    text = (pathlib.Path(__file__).parents[2] / "docs/calibration.md").read_text(encoding="utf-8")
    example = json.loads(re.findall(r"```json\n(.*?)```", text, flags=re.DOTALL)[0])
    example["projector"]["rotation"] = TURN.tolist()  # the page's is rounded
    assert json.loads(Calibration.parse(json.dumps(example)).text()) == example


def test_file_is_read_and_written(tmp_path):
    CALIBRATION.save(tmp_path / "calibration.json")
    assert Calibration.read(tmp_path / "calibration.json").text() == CALIBRATION.text()
    assert [path.name for path in tmp_path.iterdir()] == ["calibration.json"]


def test_file_that_cannot_be_written_leaves_nothing(tmp_path):
    (tmp_path / "calibration.json").mkdir()
    with pytest.raises(OSError):
        CALIBRATION.save(tmp_path / "calibration.json")
    assert [path.name for path in tmp_path.iterdir()] == ["calibration.json"]


@pytest.mark.parametrize("length", [0, 1, 100, 500])
def test_text_that_ends_early_is_refused(length):
    with pytest.raises(BadCalibrationError):
        Calibration.parse(CALIBRATION.text()[:length])


@pytest.mark.parametrize(
    "change, reason",
    [
        (lambda told: told.update(unit="m"), "unit"),
        (lambda told: told.update(cameras=[]), "camera"),
        (lambda told: told["projector"].update(fx=-1), "focal lengths"),
        (lambda told: told["projector"].update(rotation=[[1, 0, 0], [0, 1, 0], [0, 0, 2]]), "rotation"),
        (lambda told: told["projector"].pop("distortion"), "distortion"),
    ],
)
def test_text_that_no_head_can_have_is_refused_with_the_reason(change, reason):
    told = json.loads(CALIBRATION.text())
    change(told)
    with pytest.raises(BadCalibrationError, match=reason):
        Calibration.parse(json.dumps(told))


@pytest.mark.parametrize(
    "changes",
    [{"cameras": ()}, {"cameras": 5 * (CAMERA,)}, {"date": "29 February 2024"}, {"projector": dataclasses.replace(PROJECTOR, fx=-1)}],
)
def test_what_no_head_can_have_is_not_written(changes):
    with pytest.raises(BadCalibrationError):
        dataclasses.replace(CALIBRATION, **changes).text()


def test_arrays_have_their_shapes():
    with pytest.raises(ValueError, match=r"shape \(3, 3\) is wanted"):
        dataclasses.replace(CAMERA, rotation=numpy.zeros(9))
    with pytest.raises(ValueError, match="read-only"):
        CAMERA.distortion[0] = 1


def test_point_is_seen_as_the_documentation_says():
    x, y = 20 / 500, 30 / 500
    r2 = x * x + y * y
    radial = 1 - 0.1 * r2 + 0.05 * r2**2 + 0.01 * r2**3
    column = 900 * (x * radial + 2 * 1e-3 * x * y - 1e-3 * (r2 + 2 * x * x)) + 320
    row = 901 * (y * radial + 1e-3 * (r2 + 2 * y * y) - 2 * 1e-3 * x * y) + 255
    numpy.testing.assert_allclose(CAMERA.project([20, 30, 500]), [column, row])


def test_pinhole_is_where_the_pose_puts_it():
    numpy.testing.assert_allclose(PROJECTOR.rotation @ PROJECTOR.centre + PROJECTOR.translation, 0, atol=1e-12)

"""Calibrations of simulated heads: they agree with the true one, and say when they cannot."""

import dataclasses
import json
import struct
from typing import Any

import fringix
import numpy
import pytest
from fringix.calibration import Calibration
from tool_scans import SMALL

pytest.importorskip("cv2")
from fringix.calibrate import Board, CalibrationRefused, View, calibrate, save_picture, take_view  # noqa: E402
from fringix.calibrate.__main__ import main  # noqa: E402
from fringix.calibrate.sight import decode  # noqa: E402
from fringix.plan import Plan  # noqa: E402

BOARD = Board(columns=12, rows=9, square=20)
POSES = (2, 3, 4, 5, 6, 8, 10, 16, 17, 19)
CAMERAS = (0, 1)


@dataclasses.dataclass
class Taken:
    views: list[View]
    true: Calibration


@pytest.fixture(scope="module")
def taken(tmp_path_factory: Any) -> Any:
    """Views of the board before a head of half the columns and rows, all else as usual."""
    from fringix.simulation import SimulatedHead

    views = []
    with SimulatedHead(camera=(640, 512), projector=(640, 400), image_time=0) as simulated, fringix.open(simulated.address) as head:
        for pose in POSES:
            head.data["scene.txt"] = f"board:{pose}".encode()
            views.append(take_view(head, f"board:{pose}", CAMERAS))
        return Taken(views, Calibration.parse(head.data["calibration.json"]))


@pytest.fixture(scope="module")
def result(taken: Any) -> Any:
    return calibrate(taken.views, BOARD, date="2024-02-29")


def only(taken, *poses):
    return [view for view in taken.views if view.name in [f"board:{pose}" for pose in poses]]


def in_measuring_volume(true, points):
    """Whether points are within the 200 x 200 x 140 mm around what all devices look at, 500 mm before the projector."""
    from_middle = points @ true.projector.rotation.T + true.projector.translation - [0, 0, 500]
    return (numpy.abs(from_middle) <= [100, 100, 70]).all(axis=-1)


def one_camera(views):
    return [dataclasses.replace(view, sights=view.sights[:1]) for view in views]


def changed(view, camera=0, **arrays):
    sights = list(view.sights)
    sights[camera] = dataclasses.replace(sights[camera], **arrays)
    return dataclasses.replace(view, sights=tuple(sights))


@pytest.mark.parametrize("channel", CAMERAS)
@pytest.mark.parametrize("scene", ["default", "plane:2", "plane:3"])  # the last two are nearest and farthest
def test_points_are_where_the_true_calibration_has_them(simulated_heads, taken, result, scene, channel):
    simulated = simulated_heads(camera=(640, 512), projector=(640, 400), image_time=0, noise=0, scene=scene)
    with fringix.open(simulated.address) as head:
        by_true, by_found = (head.scan(calibration=each, channels=channel) for each in (taken.true, result.calibration))
    both = by_true.valid & by_found.valid & in_measuring_volume(taken.true, by_true.points)
    assert both.sum() > 30000
    distances = numpy.linalg.norm(by_true.points[both].astype(float) - by_found.points[both], axis=1)
    print(f"{scene} camera {channel}: {distances.mean():.4f} mm, {distances.max():.4f} mm at most")
    assert distances.max() < 0.05


def test_lenses_are_the_true_ones(taken, result):
    for true, found in zip((*taken.true.cameras, taken.true.projector), (*result.calibration.cameras, result.calibration.projector)):
        assert (found.width, found.height) == (true.width, true.height)
        numpy.testing.assert_allclose([found.fx, found.fy], [true.fx, true.fy], rtol=2e-4)
        numpy.testing.assert_allclose([found.cx, found.cy], [true.cx, true.cy], atol=0.3)
        numpy.testing.assert_allclose(found.rotation, true.rotation, atol=2e-4)
        numpy.testing.assert_allclose(found.translation, true.translation, atol=0.1)


def test_result_is_the_calibration_of_the_head(result):
    again = Calibration.parse(result.calibration.text())
    assert (again.serial, again.date, len(again.cameras)) == (1001, "2024-02-29", 2)


def test_residuals_are_told(result):
    assert list(result.by_pose) == [f"board:{pose}" for pose in POSES]
    assert 0 < result.residuals.corners < 0.05
    assert 0 < result.residuals.light < 0.01
    assert all(0 < each.corners < 0.1 and 0 < each.light < 0.01 for each in result.by_pose.values())
    assert 0.001 < result.expected_error < 0.05


def test_coverage_shows_where_the_board_was(result, tmp_path):
    assert result.coverage.shape == (384, 968, 3)
    save_picture(result.coverage, tmp_path / "coverage.png")
    content = (tmp_path / "coverage.png").read_bytes()
    assert content.startswith(b"\x89PNG") and struct.unpack(">II", content[16:24]) == (968, 384)
    assert len(numpy.unique(result.coverage.reshape(-1, 3), axis=0)) >= 3 + len(POSES)


def test_a_single_camera_is_enough(taken):
    calibration = calibrate(one_camera(taken.views), BOARD).calibration
    assert len(calibration.cameras) == 1
    numpy.testing.assert_allclose(calibration.projector.translation, taken.true.projector.translation, atol=0.1)


def test_squares_of_another_size_scale_the_head(taken, result):
    larger = calibrate(one_camera(taken.views[:6]), Board(12, 9, 40)).calibration
    numpy.testing.assert_allclose(larger.projector.translation, 2 * result.calibration.projector.translation, atol=0.2)


def test_too_few_poses_are_refused(taken):
    with pytest.raises(CalibrationRefused, match="in 3 poses only, and 4 at least are needed"):
        calibrate(only(taken, 4, 5, 6), BOARD)
    with pytest.raises(CalibrationRefused, match="no view"):
        calibrate([], BOARD)


def test_poses_that_are_too_alike_are_refused(taken):
    with pytest.raises(CalibrationRefused, match="too alike: the board is turned by [01] degrees at most"):
        calibrate(3 * one_camera(only(taken, 2, 3)), BOARD)


def test_poses_that_do_not_tell_enough_are_refused(taken):
    with pytest.raises(CalibrationRefused, match=r"with these poses points are uncertain by \d+\.\d mm"):
        calibrate(2 * one_camera(only(taken, 2, 4)), BOARD)


def test_poses_that_are_rather_alike_give_a_warning(taken):
    said = calibrate(one_camera(only(taken, 2, 3, 4, 16)), BOARD).warnings
    assert any("the poses are alike: the board is turned by" in warning for warning in said)


def test_other_board_is_not_found(taken):
    with pytest.raises(CalibrationRefused, match=r"in 0 poses only(.|\n)*board:2: camera 0: the board's 72 inner corners"):
        calibrate(one_camera(taken.views[:2]), Board(10, 9, 20))


def test_pose_that_is_not_seen_is_left_out_with_a_warning(taken):
    blind = changed(taken.views[0], white=numpy.full_like(taken.views[0].sights[0].white, 20))
    found = calibrate(one_camera([blind, *taken.views[1:7]]), BOARD)
    assert "board:2" not in found.by_pose
    assert any(warning.startswith("board:2: camera 0: the board's 88 inner corners") for warning in found.warnings)


@pytest.mark.parametrize(
    "what, reason",
    [
        (lambda sight: {"white": numpy.maximum(sight.white, 254)}, "too bright"),
        (lambda sight: {"place": numpy.full_like(sight.place, numpy.nan)}, "the projector's light does not reach all corners"),
    ],
)
def test_why_a_pose_is_left_out_is_told(taken, what, reason):
    spoiled = changed(taken.views[0], 1, **what(taken.views[0].sights[1]))
    found = calibrate([spoiled, *taken.views[1:6]], BOARD)
    assert any(warning.startswith("board:2: camera 1: ") and reason in warning for warning in found.warnings)


def test_board_that_moved_between_its_pictures_is_told(taken):
    """By what a pixel sees, before the patterns of the rows."""
    view = taken.views[4]
    place = view.sights[0].place.copy()
    place[..., 1] = numpy.roll(place[..., 1], 1, axis=0)
    found = calibrate(one_camera([*taken.views[:4], changed(view, place=place), *taken.views[5:]]), BOARD)
    assert any(warning.startswith("board:6 fits the others badly") for warning in found.warnings)


def test_board_that_is_no_plane_is_refused(taken):
    bent = []
    for view in one_camera(taken.views[:5]):
        white = view.sights[0].white
        rows = numpy.arange(white.shape[0]) + numpy.rint(12 * numpy.sin(numpy.arange(white.shape[0]) / 40)).astype(int)
        bent.append(changed(view, white=white[numpy.clip(rows, 0, white.shape[0] - 1)]))
    with pytest.raises(CalibrationRefused, match="the corners deviate by .* pixels|inner corners are not all to be seen"):
        calibrate(bent, BOARD)


def test_views_of_different_heads_are_refused(taken):
    other = dataclasses.replace(taken.views[1], serial=7)
    with pytest.raises(CalibrationRefused, match="board:3: of another head"):
        calibrate([taken.views[0], other, *taken.views[2:]], BOARD)
    with pytest.raises(CalibrationRefused, match="board:3: of another head, with other cameras"):
        calibrate([taken.views[0], dataclasses.replace(taken.views[1], sights=taken.views[1].sights[:1]), *taken.views[2:]], BOARD)


@pytest.mark.parametrize("columns, rows, square", [(3, 9, 20), (12, 3, 20), (12, 9, 0), (12, 9, float("nan"))])
def test_board_has_squares(columns, rows, square):
    with pytest.raises(ValueError, match="4 x 4 squares or more"):
        Board(columns, rows, square)


def test_view_is_kept(taken, tmp_path):
    view = taken.views[0]
    view.save(tmp_path / "view.npz")
    again = View.read(tmp_path / "view.npz")
    assert (again.name, again.projector, again.serial, len(again.sights)) == (view.name, view.projector, view.serial, 2)
    for one, other in zip(again.sights, view.sights):
        for name in ("white", "place", "light"):
            numpy.testing.assert_array_equal(getattr(one, name), getattr(other, name))


@pytest.mark.parametrize("cut", [0, 10, 2000, -10])
def test_damaged_view_is_refused(taken, tmp_path, cut):
    path = tmp_path / "view.npz"
    taken.views[0].save(path)
    path.write_bytes(path.read_bytes()[:cut])
    with pytest.raises(CalibrationRefused, match="view.npz is no view that was kept"):
        View.read(path)


def test_array_is_no_view(tmp_path):
    numpy.save(tmp_path / "view.npy", numpy.zeros(3))
    with pytest.raises(CalibrationRefused, match="view.npy is no view that was kept"):
        View.read(tmp_path / "view.npy")


def test_ctrl_c_ends_the_program_in_order(simulated_heads, monkeypatch):
    def interrupted():
        raise KeyboardInterrupt

    monkeypatch.setattr("sys.stdin.readline", interrupted)
    assert run(simulated_heads(**SMALL).address, "--board", "12x9", "--square", "20") == 130


def test_view_with_pictures_of_different_sizes_is_refused(taken, tmp_path):
    changed(taken.views[0], light=numpy.zeros((3, 3), numpy.float32)).save(tmp_path / "view.npz")
    with pytest.raises(CalibrationRefused, match="different sizes"):
        View.read(tmp_path / "view.npz")


def test_lines_are_decoded_exactly():
    plan = Plan.defaults(400)
    place = numpy.linspace(20, 380, 300)[:, None] + numpy.zeros(40)
    pictures = [numpy.rint(10 + 0.7 * numpy.interp(place, range(400), line)).astype(numpy.uint8) for line in plan.lines]
    decoded = decode(pictures, plan)
    numpy.testing.assert_allclose(decoded.lines, place, atol=0.06)
    dark = decode([numpy.full_like(picture, 10) for picture in pictures], plan)
    assert numpy.isnan(dark.lines).all()


def run(*words):
    return main([str(word) for word in words])


def test_program_calibrates_and_installs(simulated_heads, tmp_path, capsys, monkeypatch):
    monkeypatch.setattr("fringix.calibrate.__main__._SIMULATED_POSES", 6)
    simulated = simulated_heads(camera=(640, 512), projector=(640, 400), image_time=0, scene="plane:3")
    output = ["--board", "12x9", "--square", "20", "-o", tmp_path / "calibration.json"]
    kept = tmp_path / "kept"
    files = ["--keep", kept, "--coverage", tmp_path / "c.png"]
    assert run(simulated.address, *output, *files, "--simulated", "--cameras", 1, "--install") == 0
    said = capsys.readouterr().out
    assert "board:6: the whole board is seen" in said and "points are uncertain by up to 0.0" in said
    with fringix.open(simulated.address) as head:
        assert head.data["scene.txt"] == b"plane:3"
        assert json.loads(head.data["calibration.json"]) == json.loads((tmp_path / "calibration.json").read_text(encoding="utf-8"))
        assert head.scan().findings.points > 50000
    first = (tmp_path / "calibration.json").read_bytes()
    assert (tmp_path / "c.png").read_bytes().startswith(b"\x89PNG")
    assert run("--from", kept, *output) == 0
    assert (tmp_path / "calibration.json").read_bytes() == first


def test_program_asks_for_poses(simulated_heads, tmp_path, capsys, monkeypatch):
    answers = iter(["\n", "\n", "q\n"])
    monkeypatch.setattr("sys.stdin.readline", lambda: next(answers))
    simulated = simulated_heads(**SMALL, scene="board:4")
    assert run(simulated.address, "--board", "12x9", "--square", "20", "-o", tmp_path / "c.json", "--cameras", 1) == 1
    said = capsys.readouterr()
    assert "pose 2: place the board" in said.out and "pose 2: the whole board is seen" in said.out
    assert "in 2 poses only" in said.err
    assert not (tmp_path / "c.json").exists()


@pytest.mark.parametrize(
    "words, reason",
    [
        ([], "give either the address of a head, or --from"),
        (["127.0.0.1", "--from", "x"], "give either"),
        (["--from", "x", "--install"], "need a head"),
        (["127.0.0.1", "--board", "12"], "not of the form 12x9"),
    ],
)
def test_program_refuses_wrong_usage(capsys, words, reason):
    with pytest.raises(SystemExit) as ended:
        run("--board", "12x9", "--square", "20", *words)
    assert ended.value.code == 2
    assert reason in capsys.readouterr().err


def test_program_says_what_is_wrong_with_a_folder(tmp_path, capsys):
    assert run("--from", tmp_path, "--board", "12x9", "--square", "20") == 1
    assert "has no view-00.npz" in capsys.readouterr().err
    (tmp_path / "view-00.npz").write_bytes(b"PK")
    assert run("--from", tmp_path, "--board", "12x9", "--square", "20") == 1
    assert "is no view that was kept" in capsys.readouterr().err
    assert run("--from", tmp_path, "--board", "2x9", "--square", "20") == 1
    assert "4 x 4 squares or more" in capsys.readouterr().err

"""Points from the pictures that the tool kept, and the files that are written of them: to the bit those of the tool."""

import json
import shutil

import numpy
import pytest

from fringix.calibration import Calibration
from fringix.errors import BadCalibrationError, BadPicturesError
from fringix.scan import from_folder
from fringix.scanner import Reason
from tool_scans import raw_scan


@pytest.fixture(scope="module")
def one(tmp_path_factory):
    return raw_scan(tmp_path_factory.mktemp("one") / "scan")


@pytest.fixture(scope="module")
def two(tmp_path_factory):
    return raw_scan(tmp_path_factory.mktemp("two") / "scan", "--channel", "all", "--hdr", 2)


@pytest.fixture(scope="module")
def part(tmp_path_factory):
    return raw_scan(tmp_path_factory.mktemp("part") / "scan", "--roi", "100,60,120x100", "--generate")


@pytest.fixture
def damaged(one, tmp_path):
    return shutil.copytree(one, tmp_path / "damaged")


def change(path, **members):
    told = json.loads(path.read_text(encoding="utf-8"))
    told.update(members)
    path.write_text(json.dumps(told), encoding="utf-8")


def test_points_are_those_of_the_tool(one):
    scan = from_folder(one)
    numpy.testing.assert_array_equal(scan.points, numpy.load(one / "range.npy"))
    told = json.loads((one / "scan.json").read_text(encoding="utf-8"))
    assert scan.findings.points == told["points"] > 60000
    assert [scan.findings.counts[reason] for reason in Reason] == list(told["pixels"].values())
    assert scan.findings.measured_noise == told["measuredNoise"]
    assert scan.findings.expected_sigma == pytest.approx(told["errorsInMm"]["rootMeanSquareSigma"], rel=1e-12)
    assert set(scan.timings) == {"read", "compute"}


def test_points_of_several_cameras_and_exposures_are_those_of_the_tool(two):
    scan = from_folder(two)
    told = json.loads((two / "scan.json").read_text(encoding="utf-8"))
    assert (scan.channels, scan.points.shape) == ((0, 1), (512, 320, 3))
    for index in (0, 1):
        camera = scan.camera(index)
        numpy.testing.assert_array_equal(camera.points, numpy.load(two / f"range-{index}.npy"))
        assert camera.findings.points == camera.valid.sum()
    assert [scan.findings.counts[reason] for reason in Reason] == list(told["pixels"].values())
    assert scan.findings.expected_sigma == pytest.approx(told["errorsInMm"]["rootMeanSquareSigma"], rel=1e-9)
    with pytest.raises(IndexError):
        scan.camera(2)


def test_points_of_a_part_under_generated_patterns_are_those_of_the_tool(part):
    scan = from_folder(part)
    assert scan.points.shape == (100, 120, 3)
    numpy.testing.assert_array_equal(scan.points, numpy.load(part / "range.npy"))
    assert scan.findings.points == json.loads((part / "scan.json").read_text(encoding="utf-8"))["points"]


def test_part_of_whole_pictures_has_their_points(one):
    whole, inner = from_folder(one), from_folder(one, roi=(100, 60, 120, 100))
    numpy.testing.assert_array_equal(inner.points, whole.points[60:160, 100:220])


@pytest.mark.parametrize("ending", ["ply", "pcd"])
@pytest.mark.parametrize("folder", ["one", "two", "part"])
def test_clouds_are_those_of_the_tool(folder, ending, request, tmp_path):
    folder = request.getfixturevalue(folder)
    from_folder(folder).save(tmp_path / f"cloud.{ending}")
    assert (tmp_path / f"cloud.{ending}").read_bytes() == (folder / f"cloud.{ending}").read_bytes()


def test_points_are_saved_for_numpy(one, tmp_path):
    from_folder(one).save(tmp_path / "range.npy")
    numpy.testing.assert_array_equal(numpy.load(tmp_path / "range.npy"), numpy.load(one / "range.npy"))


def test_points_are_saved_in_metres(one, tmp_path):
    from_folder(one).save(tmp_path / "range.npy", unit="m")
    numpy.testing.assert_array_equal(numpy.load(tmp_path / "range.npy"), numpy.load(one / "range.npy") * numpy.float32(0.001))


def test_points_go_to_open3d(one):
    pytest.importorskip("open3d")
    scan = from_folder(one)
    cloud = scan.to_open3d()
    numpy.testing.assert_array_equal(numpy.asarray(cloud.points), scan.points[scan.valid])
    numpy.testing.assert_allclose(255 * numpy.asarray(cloud.colors)[:, 1], scan.intensity[scan.valid], atol=1e-9)
    lengths = numpy.linalg.norm(numpy.asarray(cloud.normals), axis=1)
    assert set(numpy.round(lengths, 4)) <= {0.0, 1.0}


def test_quality_is_the_deviation_of_the_points(one):
    scan = from_folder(one)
    numpy.testing.assert_array_equal(scan.quality[scan.valid], scan.sigma[scan.valid])
    assert numpy.isnan(scan.quality[~scan.valid]).all()


@pytest.mark.parametrize("name, unit, reason", [("cloud.obj", "mm", ".ply, .pcd, .npy"), ("cloud.ply", "inch", "neither mm nor m")])
def test_files_of_other_kinds_are_refused(one, tmp_path, name, unit, reason):
    with pytest.raises(ValueError, match=reason):
        from_folder(one).save(tmp_path / name, unit)
    assert not list(tmp_path.iterdir())


def test_other_calibration_is_used(one):
    calibration = Calibration.read(one / "calibration.json")
    assert from_folder(one, calibration=calibration).findings == from_folder(one).findings
    assert (from_folder(one, least_patch=5000).findings.points) < from_folder(one).findings.points


def test_missing_picture_is_named(damaged):
    (damaged / "raw-07.png").unlink()
    with pytest.raises(BadPicturesError, match="raw-07.png is missing: picture 8 of the scan's 19"):
        from_folder(damaged)


@pytest.mark.parametrize("length, reason", [(0, "is no PNG file"), (100, "is damaged")])
def test_damaged_picture_is_named(damaged, length, reason):
    picture = damaged / "raw-03.png"
    picture.write_bytes(picture.read_bytes()[:length])
    with pytest.raises(BadPicturesError, match=f"raw-03.png {reason}"):
        from_folder(damaged)


def test_picture_of_another_size_is_refused(damaged, part):
    shutil.copy(part / "raw-03.png", damaged / "raw-03.png")
    with pytest.raises(BadPicturesError, match="320 x 256"):
        from_folder(damaged)


def test_pictures_without_light_tell_why_they_give_no_point(damaged):
    dark = (damaged / "raw-01.png").read_bytes()
    for number in range(19):
        (damaged / f"raw-{number:02}.png").write_bytes(dark)
    with pytest.raises(BadPicturesError, match="no pixel gives a point; most of them for this reason: noise"):
        from_folder(damaged)


@pytest.mark.parametrize(
    "members, reason",
    [
        ({"format": "other"}, "fringix-scan"),
        ({"version": 2}, "of version 1"),
        ({"channels": []}, "names no channel"),
        ({"channels": 3}, "TypeError"),
        ({"plan": {}}, "projectorWidth"),
        ({"roi": {"x": 1}}, "'y'"),
    ],
)
def test_damaged_description_is_refused(damaged, members, reason):
    change(damaged / "scan.json", **members)
    with pytest.raises(BadPicturesError, match=reason):
        from_folder(damaged)


def test_description_that_is_no_json_is_refused(damaged):
    (damaged / "scan.json").write_text("{", encoding="utf-8")
    with pytest.raises(BadPicturesError, match="scan.json cannot be used"):
        from_folder(damaged)


def test_missing_files_are_named(damaged):
    (damaged / "calibration.json").unlink()
    with pytest.raises(FileNotFoundError, match="calibration.json"):
        from_folder(damaged)
    with pytest.raises(FileNotFoundError, match="scan.json"):
        from_folder(damaged / "nowhere")


def test_camera_that_the_calibration_lacks_is_refused(damaged):
    change(damaged / "scan.json", channels=[2])
    with pytest.raises(BadCalibrationError, match="no camera 2: it knows 2"):
        from_folder(damaged)


@pytest.mark.parametrize("roi", [(300, 0, 40, 40), (-1, 0, 40, 40), (0, 0, 0, 40)])
def test_part_outside_of_the_picture_is_refused(one, roi):
    with pytest.raises(ValueError, match="is not within 320 x 256"):
        from_folder(one, roi=roi)


def test_other_part_than_the_pictures_show_is_refused(part):
    with pytest.raises(ValueError, match=r"\(100, 60, 120, 100\) only"):
        from_folder(part, roi=(90, 60, 120, 100))

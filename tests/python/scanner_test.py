"""Pictures to points, without a head: pictures of a wall, computed here."""

import dataclasses
import threading

import numpy
import pytest

from fringix import _scan_native as native
from fringix.calibration import Calibration, Optics
from fringix.errors import BadCalibrationError, BadParameterError, BadPicturesError
from fringix.plan import Plan
from fringix.scanner import Reason, Scanner, Settings, gather

WIDTH, HEIGHT, DEPTH = 96, 64, 500.0
CAMERA = Optics(WIDTH, HEIGHT, 150, 150, 47.5, 31.5, numpy.zeros(5))
PROJECTOR = Optics(640, 400, 700, 700, 319.5, 199.5, numpy.zeros(5), numpy.eye(3), numpy.array([-60.0, 0, 0]))
CALIBRATION = Calibration(7, "2024-02-29", (CAMERA,), PROJECTOR)
PLAN = Plan.defaults(640)


def wall():
    """The points of a wall that the camera's pixels see, float64[h, w, 3]."""
    y, x = numpy.mgrid[:HEIGHT, :WIDTH]
    return DEPTH * numpy.stack([(x - CAMERA.cx) / CAMERA.fx, (y - CAMERA.cy) / CAMERA.fy, numpy.ones(x.shape)], axis=-1)


def pictures(plan=PLAN, light=0.8):
    column = PROJECTOR.project(wall())[..., 0]
    inside = (column > 0) & (column < 639)
    return [numpy.where(inside, 5 + light * numpy.interp(column, range(640), line), 5).astype(numpy.uint8) for line in plan.lines]


@pytest.fixture
def scanner():
    with Scanner(PLAN, CALIBRATION) as made:
        yield made


def same(one, other):
    for field in dataclasses.fields(one):
        if field.name != "findings":
            numpy.testing.assert_array_equal(getattr(one, field.name), getattr(other, field.name))
    assert one.findings == other.findings


def test_wall_is_where_it_is(scanner):
    cloud = scanner.compute(pictures())
    assert cloud.findings.points == cloud.valid.sum() > 0.5 * WIDTH * HEIGHT
    numpy.testing.assert_allclose(cloud.points[cloud.valid], wall()[cloud.valid], atol=0.3)
    assert (numpy.abs(cloud.points - wall())[cloud.valid] > 0).any()


def test_arrays_have_their_shapes_and_types(scanner):
    cloud = scanner.compute(pictures())
    for name in ("points", "normals"):
        assert (getattr(cloud, name).shape, getattr(cloud, name).dtype) == ((HEIGHT, WIDTH, 3), numpy.float32)
    for name in ("sigma", "column", "modulation", "offset"):
        assert (getattr(cloud, name).shape, getattr(cloud, name).dtype) == ((HEIGHT, WIDTH), numpy.float32)
    for name in ("intensity", "reason"):
        assert (getattr(cloud, name).shape, getattr(cloud, name).dtype) == ((HEIGHT, WIDTH), numpy.uint8)
    assert numpy.isnan(cloud.points[cloud.reason != Reason.POINT]).all()
    numpy.testing.assert_allclose(numpy.linalg.norm(cloud.normals[numpy.isfinite(cloud.normals[..., 0])], axis=-1), 1, atol=1e-5)
    numpy.testing.assert_allclose(cloud.column[cloud.valid], PROJECTOR.project(wall())[cloud.valid][:, 0], atol=0.1)
    numpy.testing.assert_array_equal(cloud.intensity, pictures()[0])


def test_findings_count_the_pixels(scanner):
    cloud = scanner.compute(pictures())
    assert list(cloud.findings.counts.values()) == numpy.bincount(cloud.reason.ravel(), minlength=len(Reason)).tolist()
    assert len(Reason) == native.REASONS


def test_one_picture_at_a_time_gives_the_same(scanner):
    whole = scanner.compute(pictures())
    for picture in pictures():
        scanner.add(picture)
    same(scanner.finish(), whole)


def test_pictures_may_be_views_of_others(scanner):
    wide = [numpy.repeat(picture, 2, axis=1)[:, ::2] for picture in pictures()]
    assert not wide[0].flags.c_contiguous
    same(scanner.compute(wide), scanner.compute(pictures()))


def test_pictures_that_were_added_can_be_forgotten(scanner):
    scanner.add(pictures()[3])
    scanner.forget()
    for picture in pictures():
        scanner.add(picture)
    same(scanner.finish(), scanner.compute(pictures()))


def test_exposures_are_merged(scanner):
    bright, dim = pictures(light=0.9), pictures(light=0.4)
    bright[0][:, :48] = 255
    for exposure in (bright, dim):
        if exposure is dim:
            scanner.next_exposure()
        for picture in exposure:
            scanner.add(picture)
    merged = scanner.finish()
    assert not scanner.compute(bright).valid[:, :48].any()
    assert merged.valid[:, 20:48].mean() > 0.5


def test_window_gives_the_points_of_the_whole_picture(scanner):
    whole = scanner.compute(pictures())
    with Scanner(PLAN, CALIBRATION, clean=0) as part, Scanner(PLAN, CALIBRATION, clean=0) as all_of_it:
        part.use_window(30, 10, 40, 20)
        cloud = part.compute([picture[10:30, 30:70] for picture in pictures()])
        assert cloud.points.shape == (20, 40, 3)
        numpy.testing.assert_array_equal(cloud.points, all_of_it.compute(pictures()).points[10:30, 30:70])
    assert whole.valid.any()


def test_gathered_points_have_no_gaps(scanner):
    cloud = scanner.compute(pictures())
    both = gather([cloud, cloud])
    assert both.points.shape == (2 * cloud.findings.points, 3)
    numpy.testing.assert_array_equal(both.points, numpy.tile(cloud.points[cloud.valid], (2, 1)))
    numpy.testing.assert_array_equal(both.sigma, numpy.tile(cloud.sigma[cloud.valid], 2))


def test_settings_are_the_librarys_unless_given():
    defaults, given = Settings().record(), Settings(least_patch=3, noise_per_level=0.5, threads=2).record()
    assert (given.leastPatch, given.noisePerLevel, given.threads) == (3, 0.5, 2)
    assert (defaults.leastPatch, defaults.saturation, given.saturation) == (50, 254, 254)


def test_settings_have_an_effect():
    with Scanner(PLAN, CALIBRATION, nearest=501) as far:
        with pytest.raises(BadPicturesError, match="no pixel gives a point"):
            far.compute(pictures())


def test_number_of_threads_changes_nothing():
    with Scanner(PLAN, CALIBRATION, threads=1) as one, Scanner(PLAN, CALIBRATION, threads=7) as seven:
        same(one.compute(pictures()), seven.compute(pictures()))


@pytest.mark.parametrize("setting", [{"threads": 0}, {"saturation": 0}, {"gray_margin": 0}, {"noise": -1}, {"sigma": float("nan")}])
def test_settings_out_of_range_are_refused(setting):
    with pytest.raises(BadParameterError):
        Scanner(PLAN, CALIBRATION, **setting)


def test_unknown_setting_is_refused():
    with pytest.raises(TypeError, match="treads"):
        Scanner(PLAN, CALIBRATION, treads=2)


def test_plan_for_another_projector_is_refused():
    with pytest.raises(BadParameterError, match="640"):
        Scanner(Plan.defaults(1280), CALIBRATION)


def test_calibration_of_no_head_is_refused():
    with pytest.raises(BadCalibrationError):
        Scanner(PLAN, dataclasses.replace(CALIBRATION, projector=dataclasses.replace(PROJECTOR, translation=[0, 0, 0])))


def test_missing_pictures_are_refused(scanner):
    with pytest.raises(BadPicturesError):
        scanner.compute(pictures()[:-1])
    with pytest.raises(BadPicturesError):
        scanner.compute([])
    scanner.add(pictures()[0])
    with pytest.raises(BadPicturesError):
        scanner.finish()
    with pytest.raises(BadPicturesError):
        scanner.finish(accept_none=True)


@pytest.mark.parametrize("picture", [numpy.zeros((HEIGHT, WIDTH)), numpy.zeros((HEIGHT, WIDTH, 3), numpy.uint8), "text"])
def test_what_is_no_gray_picture_is_refused(scanner, picture):
    with pytest.raises(TypeError, match=r"uint8\[h, w\]"):
        scanner.add(picture)


def test_pictures_of_another_size_are_refused(scanner):
    with pytest.raises(BadPicturesError, match="96 x 64"):
        scanner.add(numpy.zeros((HEIGHT, WIDTH + 1), numpy.uint8))
    with pytest.raises(ValueError, match="different sizes"):
        scanner.compute(pictures()[:-1] + [numpy.zeros((HEIGHT, WIDTH + 1), numpy.uint8)])


@pytest.mark.parametrize("camera", [-1, 1, 4])
def test_camera_that_does_not_exist_is_refused(scanner, camera):
    with pytest.raises(BadParameterError):
        scanner.add(pictures()[0], camera)
    with pytest.raises(BadParameterError):
        scanner.finish(camera)
    with pytest.raises(BadParameterError):
        scanner.use_window(0, 0, 8, 8, camera)


def test_closed_scanner_says_so(scanner):
    scanner.close()
    scanner.close()
    with pytest.raises(ValueError, match="closed"):
        scanner.add(pictures()[0])


def test_threads_wait_for_each_other(scanner):
    whole = scanner.compute(pictures())
    clouds = []
    threads = [threading.Thread(target=lambda: clouds.append(scanner.compute(pictures()))) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(clouds) == 4
    for cloud in clouds:
        same(cloud, whole)

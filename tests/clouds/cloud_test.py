"""The clouds of a scan, opened by what people use elsewhere: Open3D, which is told nothing but the name of a file, and numpy.

usage: cloud_test.py FOLDER [OTHER], what a scan left, and what the same scan left on another platform."""

import json
import pathlib
import sys
import unittest

import numpy
import open3d

PCD_TYPES = {"F4": "<f4", "U1": "u1", "U4": "<u4"}


def facts(folder):
    return json.loads((folder / "scan.json").read_text(encoding="utf-8"))


def points(grid):
    return grid[numpy.isfinite(grid).all(axis=-1)]


def bounds(places):
    return numpy.array([places.min(axis=0), places.max(axis=0)])


def read_pcd(path):
    """Header and entries of an organised PCD file, as its own header says where they are."""
    head, _, body = path.read_bytes().partition(b"DATA binary\n")
    header = dict(line.split(" ", 1) for line in head.decode("ascii").splitlines())
    names = header["FIELDS"].split()
    types = [PCD_TYPES[kind + size] for kind, size in zip(header["TYPE"].split(), header["SIZE"].split())]
    return numpy.frombuffer(body, numpy.dtype(list(zip(names, types)))).reshape(int(header["HEIGHT"]), int(header["WIDTH"]))


class Clouds(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.facts = facts(FOLDER)
        cls.grid = numpy.load(FOLDER / "range.npy")
        cls.pcd = read_pcd(FOLDER / "cloud.pcd")
        cls.ply = open3d.io.read_point_cloud(str(FOLDER / "cloud.ply"))

    def test_the_scan_is_worth_reading(self):
        self.assertGreater(self.facts["points"], 20000)

    def test_the_ranges_have_the_size_of_the_camera(self):
        self.assertEqual(self.grid.shape, (self.facts["height"], self.facts["width"], 3))
        self.assertEqual(self.grid.dtype, numpy.float32)
        self.assertEqual(len(points(self.grid)), self.facts["points"])

    def test_ply_has_the_count_and_the_bounds_of_the_ranges(self):
        self.assertEqual(len(self.ply.points), self.facts["points"])
        numpy.testing.assert_array_equal(bounds(numpy.asarray(self.ply.points)), bounds(points(self.grid)))

    def test_ply_has_every_point_in_the_order_of_the_pixels(self):
        numpy.testing.assert_array_equal(numpy.asarray(self.ply.points), points(self.grid))

    def test_ply_has_colours(self):
        self.assertTrue(self.ply.has_colors())
        levels = numpy.rint(255 * numpy.asarray(self.ply.colors))
        expected = self.pcd["intensity"][numpy.isfinite(self.pcd["x"])]
        self.assertGreater(len(numpy.unique(expected)), 10)
        for channel in levels.T:
            numpy.testing.assert_array_equal(channel, expected)

    def test_ply_has_normals(self):
        self.assertTrue(self.ply.has_normals())
        normals = numpy.asarray(self.ply.normals)
        lengths = numpy.linalg.norm(normals, axis=1)
        there = lengths > 0  # zero where there is none
        self.assertGreater(there.mean(), 0.9)
        numpy.testing.assert_allclose(lengths[there], 1, atol=1e-5)
        towards = (normals * numpy.asarray(self.ply.points)).sum(axis=1)
        self.assertTrue((towards[there] < 0).all())

    def test_pcd_has_a_place_for_every_pixel(self):
        self.assertEqual(self.pcd.shape, self.grid.shape[:2])
        places = numpy.stack([self.pcd[axis] for axis in "xyz"], axis=-1)
        numpy.testing.assert_array_equal(places, self.grid)

    def test_pcd_is_read_elsewhere(self):
        cloud = open3d.io.read_point_cloud(str(FOLDER / "cloud.pcd"), remove_nan_points=True)
        numpy.testing.assert_array_equal(numpy.asarray(cloud.points), points(self.grid))
        self.assertTrue(cloud.has_normals())


class BothPlatforms(unittest.TestCase):
    def setUp(self):
        if OTHER is None:
            self.skipTest("there is a scan of one platform only")

    def test_measure_as_many_points(self):
        self.assertEqual(facts(OTHER)["points"], facts(FOLDER)["points"])

    def test_measure_the_same_points(self):
        ours, others = (numpy.load(folder / "range.npy") for folder in (FOLDER, OTHER))
        numpy.testing.assert_allclose(others, ours, rtol=0, atol=0.001)  # not a number in the same pixels, too

    def test_write_the_same_points(self):
        ours, others = (open3d.io.read_point_cloud(str(folder / "cloud.ply")) for folder in (FOLDER, OTHER))
        numpy.testing.assert_allclose(numpy.asarray(others.points), numpy.asarray(ours.points), rtol=0, atol=0.001)
        numpy.testing.assert_array_equal(numpy.asarray(others.colors), numpy.asarray(ours.colors))


if __name__ == "__main__":
    FOLDER, OTHER = (pathlib.Path(name) for name in sys.argv[1:3]) if len(sys.argv) > 2 else (pathlib.Path(sys.argv[1]), None)
    unittest.main(argv=sys.argv[:1])

"""Files of points, as ``fringix scan`` writes them: PLY, PCD and NPY."""

from __future__ import annotations

import importlib
import io
import pathlib
from typing import TYPE_CHECKING, Any, Callable, Dict

import numpy

from ._files import PathLike, write_file

if TYPE_CHECKING:
    from .scan import Scan

_UNITS = {"mm": numpy.float32(1), "m": numpy.float32(0.001)}
_PLY_FIELDS = [*((name, "<f4") for name in ("x", "y", "z", "nx", "ny", "nz"))]
_PLY_FIELDS += [*((name, "u1") for name in ("red", "green", "blue")), ("intensity", "<f4"), ("quality", "<f4")]
_PCD_FIELDS = ("x", "y", "z", "normal_x", "normal_y", "normal_z", "intensity", "quality")
_PLY_TYPES = {"<f4": "float", "u1": "uchar"}


def save(scan: Scan, path: PathLike, unit: str = "mm") -> None:
    """Writes the points of a scan; the file's ending says how.

    Raises ValueError for another ending or unit, OSError when the file cannot be written.

    ``.ply`` -- the points alone, with normals (0, 0, 0 where there is none), gray levels as colours, intensity and quality, the expected
                standard deviation
    ``.pcd`` -- organised: an entry for each pixel, NaN without a point. Of several cameras the points alone, without an order
    ``.npy`` -- float32[h, w, 3]: x, y, z, NaN without a point
    """
    make = _writers.get(pathlib.Path(path).suffix.lower())
    if make is None:
        raise ValueError(f"\"{path}\" is no name for points: {', '.join(_writers)} are possible endings")
    if unit not in _UNITS:
        raise ValueError(f'"{unit}" is neither mm nor m')
    write_file(path, make(scan, unit))


def _ply(scan: Scan, unit: str) -> bytes:
    valid, scale = scan.valid, _UNITS[unit]
    table = numpy.empty(int(valid.sum()), _PLY_FIELDS)
    points, normals = scan.points[valid] * scale, scan.normals[valid]
    normals[~numpy.isfinite(normals[:, 0])] = 0
    for axis in range(3):
        table["xyz"[axis]], table["n" + "xyz"[axis]] = points[:, axis], normals[:, axis]
    for name in ("red", "green", "blue", "intensity"):
        table[name] = scan.intensity[valid]
    table["quality"] = scan.sigma[valid] * scale
    comments = [f"unit {unit}", f"serial {scan.calibration.serial}", f"quality is the expected standard deviation in {unit}"]
    lines = ["ply", "format binary_little_endian 1.0", *(f"comment {comment}" for comment in comments), f"element vertex {len(table)}"]
    lines += [f"property {_PLY_TYPES[kind]} {name}" for name, kind in _PLY_FIELDS]
    return "\n".join([*lines, "end_header\n"]).encode() + table.tobytes()


def _pcd(scan: Scan, unit: str) -> bytes:
    columns = [scan.points * _UNITS[unit], scan.normals, scan.intensity[..., None], scan.quality[..., None] * _UNITS[unit]]
    table = numpy.concatenate(columns, axis=-1, dtype="<f4")
    if len(scan.channels) > 1:
        table = table[scan.valid][None]
    height, width, count = table.shape
    lines = ["# .PCD v0.7 - Point Cloud Data file format", "VERSION 0.7", "FIELDS " + " ".join(_PCD_FIELDS)]
    lines += [f"{name} " + " ".join([each] * count) for name, each in (("SIZE", "4"), ("TYPE", "F"), ("COUNT", "1"))]
    lines += [f"WIDTH {width}", f"HEIGHT {height}", "VIEWPOINT 0 0 0 1 0 0 0", f"POINTS {width * height}", "DATA binary\n"]
    return "\n".join(lines).encode() + table.tobytes()


def _npy(scan: Scan, unit: str) -> bytes:
    file = io.BytesIO()
    numpy.save(file, scan.points * _UNITS[unit])
    return file.getvalue()


_writers: Dict[str, Callable[[Scan, str], bytes]] = {".ply": _ply, ".pcd": _pcd, ".npy": _npy}


def to_open3d(scan: Scan) -> Any:
    """The points as an ``open3d.geometry.PointCloud`` with normals and gray levels as colours. Raises ImportError without Open3D."""
    open3d: Any = importlib.import_module("open3d")
    valid = scan.valid
    cloud = open3d.geometry.PointCloud()
    vectors = open3d.utility.Vector3dVector
    cloud.points = vectors(scan.points[valid].astype(numpy.float64))
    cloud.normals = vectors(numpy.nan_to_num(scan.normals[valid].astype(numpy.float64)))
    cloud.colors = vectors(numpy.repeat(scan.intensity[valid][:, None] / 255.0, 3, axis=1))
    return cloud

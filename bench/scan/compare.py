"""How much faster the library makes points than what one would use instead, on one core.

usage: compare.py [--check] [--quick] FOLDER, which fringix-scan-bench has filled. With --check missed bounds give exit code 1."""

import os

os.environ.update({name: "1" for name in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS")})  # before numpy is there

import argparse
import json
import pathlib
import sys
import time

import cv2
import numpy

import numpy_decoder
from opencv_decoder import GrayCode, Phases

MEGAPIXELS = 1280 * 1024 / 1e6


def least_seconds(work, rounds):
    """Of the processor, all threads together: what other programs disturb least."""
    times = []
    for _ in range(rounds):
        start = time.process_time()
        result = work()
        times.append(time.process_time() - start)
    return min(times), result


class Scan:
    def __init__(self, folder):
        self.facts = json.loads((folder / "scan.json").read_text())
        calibration = json.loads((folder / "calibration.json").read_text())
        self.camera, self.projector = calibration["cameras"][0], calibration["projector"]
        size = self.camera["height"], self.camera["width"]
        self.pictures = numpy.fromfile(folder / "pictures.bin", numpy.uint8).reshape(self.facts["pictures"], *size)
        self.points = numpy.fromfile(folder / "points.bin", numpy.float32).reshape(*size, 3)

    def by_numpy(self):
        columns = numpy_decoder.columns(self.pictures, self.facts["period"], self.facts["steps"])
        return numpy_decoder.points(columns, self.camera, self.projector)


def require_same_points(ours, others):
    both = numpy.isfinite(ours).all(axis=-1) & numpy.isfinite(others).all(axis=-1)
    distances = numpy.linalg.norm(ours[both] - others[both], axis=-1)
    share = both.mean()
    if share < 0.99 or distances.max() > 0.001:
        raise RuntimeError(f"numpy and the library see different points: {share:.1%} in common, up to {distances.max():.4f} mm apart")


def report(name, unit, library, other, bound):
    ratio = other / library
    verdict = "" if ratio >= bound else ", missed"
    print(f"{name:<58} {library:7.1f} {other:8.1f} {unit:<26} {ratio:5.1f} times as fast (at least {bound}{verdict})", flush=True)
    return ratio >= bound


def compare_numpy(scan, rounds):
    seconds, points = least_seconds(scan.by_numpy, rounds)
    require_same_points(scan.points, points)
    return report(f"numpy {numpy.__version__}, the same pictures", "ms", 1000 * scan.facts["seconds"], 1000 * seconds, 10)


def compare_opencv(scan, other, rounds):
    cv2.setNumThreads(1)
    seconds, result = least_seconds(other.decode, rounds)
    if not other.is_right(result):
        raise RuntimeError(f"OpenCV does not find what its own patterns show, with {other.name}")
    ours = 1000 * scan.facts["seconds"] / (len(scan.pictures) * MEGAPIXELS)
    others = 1000 * seconds / (other.count * MEGAPIXELS)
    return report(f"OpenCV {cv2.__version__}, {other.name}, {other.count} pictures", "ms a picture and megapixel", ours, others, 20)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    scan = Scan(options.folder)
    rounds = 1 if options.quick else 3
    print(f"\n{'pictures to points, on one core':<58} library    other")
    met = [compare_numpy(scan, 3 * rounds)] + [compare_opencv(scan, other(), rounds) for other in (GrayCode, Phases)]
    sys.exit(1 if options.check and not all(met) else 0)


if __name__ == "__main__":
    main()

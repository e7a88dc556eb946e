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
        self.sigma = numpy.fromfile(folder / "sigma.bin", numpy.float32).reshape(size)

    def numpy_decoder(self):
        return numpy_decoder.Decoder(self.camera, self.projector, self.facts["period"], self.facts["steps"])


def require_same(scan, points, sigma):
    both = numpy.isfinite(scan.points).all(axis=-1) & numpy.isfinite(points).all(axis=-1)
    farthest = numpy.linalg.norm(scan.points[both] - points[both], axis=-1).max()
    share, ratio = both.mean(), numpy.median(sigma[both] / scan.sigma[both])
    if share < 0.98 or farthest > 0.001 or abs(ratio - 1) > 0.1:
        raise RuntimeError(
            f"numpy and the library differ: {share:.1%} points in common, up to {farthest:.4f} mm apart, sigma {ratio:.2f} times as large"
        )


def report(name, unit, library, other, bound=None):
    """Whether the bound is met, if there is one."""
    ratio = other / library
    met = bound is None or ratio >= bound
    told = "" if bound is None else f" (at least {bound}{'' if met else ', missed'})"
    print(f"{name:<58} {library:7.1f} {other:8.1f} {unit:<26} {ratio:5.1f} times as fast{told}", flush=True)
    return met


def compare_numpy(scan, rounds):
    decoder = scan.numpy_decoder()
    seconds, (points, sigma) = least_seconds(lambda: decoder.decode(scan.pictures), rounds)
    require_same(scan, points, sigma)
    return report(f"numpy {numpy.__version__}, the same pictures", "ms", 1000 * scan.facts["seconds"], 1000 * seconds, 10)


def time_opencv(method, rounds):
    """Milliseconds for each picture and megapixel."""
    seconds, result = least_seconds(method.decode, rounds)
    if not method.is_right(result):
        raise RuntimeError(f"OpenCV does not find what its own patterns show, with {method.name}")
    return 1000 * seconds / (method.count * MEGAPIXELS)


def compare_opencv(scan, rounds):
    """Its methods one by one, and in the shares that a plan of both has: the module has none that does both."""
    cv2.setNumThreads(1)
    name, unit = f"OpenCV {cv2.__version__}", "ms a picture and megapixel"
    count, steps = scan.facts["pictures"], scan.facts["steps"]
    ours = 1000 * scan.facts["seconds"] / (count * MEGAPIXELS)
    gray, phases = (time_opencv(method, rounds) for method in (GrayCode(), Phases()))
    report(f"{name}, Gray code alone", unit, ours, gray)
    report(f"{name}, phase shifting alone", unit, ours, phases)
    both = ((count - steps) * gray + steps * phases) / count
    return report(f"{name}, {count - steps} pictures of one and {steps} of the other", unit, ours, both, 20)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    scan = Scan(options.folder)
    rounds = 1 if options.quick else 3
    print(f"\n{'pictures to points, on one core':<58} library    other")
    met = [compare_numpy(scan, 3 * rounds), compare_opencv(scan, rounds)]
    sys.exit(1 if options.check and not all(met) else 0)


if __name__ == "__main__":
    main()

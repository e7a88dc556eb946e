"""Measures points and writes them as a cloud, .ply, .pcd or .npy: scan_to_cloud.py ADDRESS [FILE]"""

from __future__ import annotations

import sys

import fringix
import numpy as np


def main(address: str, file: str = "cloud.ply") -> None:
    with fringix.open(address) as head:
        scan = head.scan()
    scan.save(file)
    points = scan.points[scan.valid]
    print(f"{file}: {len(points)} points, {points[:, 2].min():.1f} to {points[:, 2].max():.1f} mm before the camera")
    print(f"expected deviation of a point: {np.median(scan.sigma[scan.valid]):.4f} mm")


if __name__ == "__main__":
    if not 2 <= len(sys.argv) <= 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])

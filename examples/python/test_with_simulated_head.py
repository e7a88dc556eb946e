"""Tests of one's own code against simulated heads: pytest test_with_simulated_head.py"""

from __future__ import annotations

import fringix
import numpy as np
import pytest
from fringix.testing import SimulatedHead


def unevenness(address: str) -> float:
    """The code to be tested, which a station would import: how far, in mm, the plate in the picture's middle is from being a plane."""
    with fringix.open(address) as head:
        width, height = head.camera_size
        scan = head.scan(roi=(width // 4, height // 4, width // 2, height // 2))
    points = scan.points[scan.valid].astype(float)
    points -= points.mean(axis=0)
    *_, normal = np.linalg.svd(points, full_matrices=False)[2]
    return float(np.sqrt(np.mean((points @ normal) ** 2)))


@pytest.mark.simulated_head(scene="plane:1", camera=(320, 256), projector=(640, 400), image_time=0)
def test_a_plate_is_even(simulated_head: SimulatedHead) -> None:
    assert unevenness(simulated_head.address) < 0.1


@pytest.mark.simulated_head(scene="stairs", camera=(320, 256), projector=(640, 400), image_time=0)
def test_stairs_are_not(simulated_head: SimulatedHead) -> None:
    assert unevenness(simulated_head.address) > 1


def test_a_head_that_is_gone_is_told(simulated_head: SimulatedHead) -> None:
    simulated_head.close()
    with pytest.raises(fringix.HeadConnectionError, match="refuses the connection"):
        unevenness(simulated_head.address)

"""Pictures to points as one writes it with numpy: all pictures at a time, in double numbers. What does not depend on them is made once."""

import numpy

TOO_BRIGHT = 255
READ_NOISE = 1.04  # standard deviation of a pixel in grey levels, rounding included
LARGEST_SHARE = 0.1  # of a period: where its deviation is expected to be larger, there is no pattern to be seen
LARGEST_DISAGREEMENT = 0.4  # of period number and phase, in periods
LARGEST_WHERE_UNCERTAIN = 0.3  # the same where a Gray bit can be read either way
GRAY_MARGIN = 3  # in standard deviations: closer to the middle of white and black a bit is uncertain
LARGEST_MISFIT = 0.1  # of the steps and a cosine, or the white picture, in proportion to the modulation: something moved
BORDER = 3  # columns
NEAREST, FARTHEST = 50, 5000  # mm


def distorted(lens, x, y):
    k1, k2, p1, p2, k3 = lens
    square = x * x + y * y
    radial = 1 + square * (k1 + square * (k2 + square * k3))
    return x * radial + 2 * p1 * x * y + p2 * (square + 2 * x * x), y * radial + p1 * (square + 2 * y * y) + 2 * p2 * x * y


def rays_of(camera):
    """Directions with z = 1, height x width x 3, without what the lens does."""
    column, row = numpy.meshgrid(numpy.arange(camera["width"]), numpy.arange(camera["height"]))
    shown = (column - camera["cx"]) / camera["fx"], (row - camera["cy"]) / camera["fy"]
    x, y = shown
    for _ in range(10):
        reached = distorted(camera["distortion"], x, y)
        x, y = x + shown[0] - reached[0], y + shown[1] - reached[1]
    return numpy.stack([x, y, numpy.ones_like(x)], axis=-1)


class Decoder:
    """For a Gray code of half periods and a phase."""

    def __init__(self, camera, projector, period, steps):
        self.projector, self.period, self.steps = projector, period, steps
        self.rays = rays_of(camera)
        self.seen = self.rays @ numpy.array(projector["rotation"]).T
        self.rows = (numpy.array([-0.5, projector["height"] - 0.5]) - projector["cy"]) / projector["fy"]
        self.lengths = numpy.linalg.norm(self.rays, axis=-1)

    def decode(self, pictures):
        """Points and their expected standard deviations along the rays, in mm; not a number where there is no point."""
        column, deviation = self.columns(pictures)
        depth, growth = self.depths(column)
        return depth[..., None] * self.rays, deviation * numpy.abs(growth) * self.lengths

    def columns(self, pictures):
        """The projector's column for each pixel, and its expected standard deviation."""
        levels = pictures.astype(float)
        white, black, gray, phases = levels[0], levels[1], levels[2 : -self.steps], levels[-self.steps :]
        middle = (white + black) / 2
        bits = numpy.logical_xor.accumulate(gray > middle)
        code = (bits * 2 ** numpy.arange(len(bits))[::-1, None, None]).sum(axis=0)
        angles = 2 * numpy.pi * numpy.arange(self.steps)[:, None, None] / self.steps
        sine = (phases * numpy.sin(angles)).sum(axis=0)
        cosine = (phases * numpy.cos(angles)).sum(axis=0)
        phase = numpy.arctan2(sine, cosine) / (2 * numpy.pi)
        distance = (code + 0.5) / 2 - phase
        number = numpy.round(distance)
        disagreement = numpy.abs(distance - number)
        uncertain = numpy.abs(gray - middle).min(axis=0) < GRAY_MARGIN * READ_NOISE
        column = self.period * (number + phase) - 0.5
        modulation = numpy.hypot(sine, cosine) * 2 / self.steps
        offset = phases.mean(axis=0)
        fitted = offset + (sine * numpy.sin(angles) + cosine * numpy.cos(angles)) * 2 / self.steps
        misfit = ((phases - fitted) ** 2).sum(axis=0) / (self.steps - 3)
        share = numpy.sqrt(2 / self.steps) * READ_NOISE / (2 * numpy.pi * modulation)
        right = (
            (levels.max(axis=0) < TOO_BRIGHT)
            & (share < LARGEST_SHARE)
            & (disagreement < numpy.where(uncertain, LARGEST_WHERE_UNCERTAIN, LARGEST_DISAGREEMENT))
            & (column > BORDER)
            & (column < self.projector["width"] - BORDER)
            & (misfit < 4 * READ_NOISE**2 + (LARGEST_MISFIT * modulation) ** 2)
            & (numpy.abs(white - offset - modulation) < 4 * READ_NOISE + LARGEST_MISFIT * modulation)
        )
        return numpy.where(right, column, numpy.nan), self.period * share

    def depths(self, column):
        """Where each pixel's ray meets its column, and by how much that moves from column to column. Behind a lens a column is no plane."""
        focal, centre = self.projector["fx"], self.projector["cx"]
        shown = (column - centre) / focal
        tx, ty, tz = self.projector["translation"]
        x, y, z = numpy.moveaxis(self.seen, -1, 0)
        place = shown
        for _ in range(4):
            depth = (place * tz - tx) / (x - place * z)
            row = (depth * y + ty) / (depth * z + tz)
            place = place + shown - distorted(self.projector["distortion"], place, row)[0]
        depth = (place * tz - tx) / (x - place * z)
        growth = (x * tz - tx * z) / (x - place * z) ** 2 / focal
        lit = (row > self.rows[0]) & (row < self.rows[1]) & (depth > NEAREST) & (depth < FARTHEST)
        return numpy.where(lit, depth, numpy.nan), growth

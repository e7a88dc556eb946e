"""Pictures to points as one writes them with numpy: whole pictures at a time, without lenses, masks and sigma."""

import numpy

WEAKEST = 5  # modulation in grey levels: below it there is no pattern to be seen


def columns(pictures, period, steps):
    """The projector's column for each pixel of a Gray code of half periods and a phase; not a number where there is no light."""
    white, black, gray, phases = pictures[0], pictures[1], pictures[2:-steps], pictures[-steps:]
    middle = (white.astype(float) + black) / 2
    code = numpy.zeros(middle.shape, int)
    for picture in gray:
        code = 2 * code + ((code & 1) ^ (picture > middle))
    angles = 2 * numpy.pi * numpy.arange(steps) / steps
    sine = numpy.tensordot(numpy.sin(angles), phases, axes=1)
    cosine = numpy.tensordot(numpy.cos(angles), phases, axes=1)
    phase = numpy.arctan2(sine, cosine) / (2 * numpy.pi)
    column = period * (numpy.round((code + 0.5) / 2 - phase) + phase) - 0.5
    column[numpy.hypot(sine, cosine) * 2 / steps < WEAKEST] = numpy.nan
    return column


def points(column, camera, projector):
    """Where each pixel's ray meets the plane of its column."""
    rotation, translation = numpy.array(projector["rotation"]), numpy.array(projector["translation"])
    height, width = column.shape
    x, y = numpy.meshgrid((numpy.arange(width) - camera["cx"]) / camera["fx"], (numpy.arange(height) - camera["cy"]) / camera["fy"])
    rays = numpy.stack([x, y, numpy.ones_like(x)], axis=-1)
    place = (column - projector["cx"]) / projector["fx"]
    planes = rotation[0] - place[..., None] * rotation[2]
    depth = (place * translation[2] - translation[0]) / (planes * rays).sum(axis=-1)
    return depth[..., None] * rays

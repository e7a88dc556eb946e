"""OpenCV's structured-light module: its Gray code, with a wall that two cameras see, and its phase shifting, each of 1280 x 1024 pixels."""

import cv2
import numpy

WIDTH, HEIGHT = 1280, 1024


def seen(pattern, shift, chance):
    """A pattern as a camera sees it, with ambient light and noise."""
    light = 10 + 200 / 255 * numpy.roll(pattern, shift, axis=1) + chance.normal(0, 1, pattern.shape)
    return numpy.rint(light).astype(numpy.uint8)


class GrayCode:
    """Pictures to the distance in columns between what the two cameras see."""

    name = "Gray code"
    shift = 40

    def __init__(self):
        chance = numpy.random.default_rng(1)
        self.code = cv2.structured_light.GrayCodePattern.create(WIDTH, HEIGHT)
        patterns = self.code.generate()[1]
        dark, bright = numpy.zeros((HEIGHT, WIDTH), numpy.uint8), numpy.full((HEIGHT, WIDTH), 255, numpy.uint8)
        shifts = (0, self.shift)
        self.pictures = [[seen(pattern, shift, chance) for pattern in patterns] for shift in shifts]
        self.black = [seen(dark, shift, chance) for shift in shifts]
        self.white = [seen(bright, shift, chance) for shift in shifts]
        self.count = sum(len(pictures) + 2 for pictures in self.pictures)

    def decode(self):
        return self.code.decode(self.pictures, None, self.black, self.white, cv2.structured_light.DECODE_3D_UNDERWORLD)[1]

    def is_right(self, disparity):
        return numpy.median(numpy.abs(disparity)) == self.shift


class Phases:
    """Pictures to a phase that goes on from period to period."""

    name = "phase shifting, unwrapped"
    periods = 20

    def __init__(self):
        parameters = cv2.structured_light.SinusoidalPattern.Params()
        parameters.width, parameters.height, parameters.nbrOfPeriods = WIDTH, HEIGHT, self.periods
        parameters.horizontal, parameters.setMarkers = False, False
        parameters.methodId = cv2.structured_light.PSP
        self.pattern = cv2.structured_light.SinusoidalPattern.create(parameters)
        chance = numpy.random.default_rng(1)
        self.pictures = [seen(pattern, 0, chance) for pattern in self.pattern.generate()[1]]
        self.count = len(self.pictures)

    def decode(self):
        wrapped = self.pattern.computePhaseMap(self.pictures)[0]
        return self.pattern.unwrapPhaseMap(wrapped, (WIDTH, HEIGHT))

    def is_right(self, phase):
        """Each row goes through as many turns as the pattern has periods, evenly."""
        turns = numpy.abs(phase - phase[:, :1]) / (2 * numpy.pi)
        return numpy.quantile(numpy.abs(turns - numpy.arange(WIDTH) * self.periods / WIDTH), 0.99) < 0.02

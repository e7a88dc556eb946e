"""What is refused."""

from __future__ import annotations


class CalibrationRefused(ValueError):
    """The pictures are no base for a calibration; the text tells why, and what to do."""

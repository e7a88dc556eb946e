"""What all tests of the package share."""

from __future__ import annotations

pytest_plugins = ["fringix.testing"]

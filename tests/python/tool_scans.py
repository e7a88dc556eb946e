"""Scans of simulated heads by the tool, to compare with."""

import os
import pathlib
import subprocess
from typing import Any, Dict

from fringix.simulation import SimulatedHead, find_program

SMALL: Dict[str, Any] = {"camera": (320, 256), "projector": (640, 400), "image_time": 0}


def tool():
    """The program ``fringix``, which stands beside the simulated head's."""
    head = pathlib.Path(find_program())
    return str(head.with_name(head.name.replace("fringix-head", "fringix")))


def run_tool(*words):
    done = subprocess.run([tool(), *map(str, words)], capture_output=True, text=True, check=False, timeout=300)
    assert done.returncode == 0, done.stderr
    return done.stdout


def raw_scan(folder, *options, **head_options):
    """What ``fringix scan --raw`` of a simulated head leaves in a folder."""
    with SimulatedHead(**{**SMALL, **head_options}) as head:
        run_tool("scan", head.address, "-o", folder, "--raw", *options)
    return folder

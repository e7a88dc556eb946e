"""Finds and loads the two native libraries."""

from __future__ import annotations

import ctypes
import os
import pathlib
import sys

FOLDER_VARIABLE = "FRINGIX_LIBRARY_PATH"

_here = pathlib.Path(__file__).resolve().parent
_file_names = {
    "DAXFringix": {"win32": "DAXFringix.dll", "linux": "libDAXFringix.so"},
    "fringix-scan": {"win32": "fringix-scan.dll", "linux": "libfringix-scan.so"},
}


def _candidates(file_name: str) -> list[str]:
    """Where a library may be, best first: the folder that the user names, the package's own folder, wherever the system looks."""
    chosen = os.environ.get(FOLDER_VARIABLE)
    if chosen:
        return [str(pathlib.Path(chosen).resolve() / file_name)]
    own = [str(path) for path in [_here / "lib" / file_name] if path.exists()]
    # Without the version it belongs to the development package, which need not be installed and may be of another version.
    return own + [file_name + ".4", file_name] if file_name.endswith(".so") else own + [file_name]


def load(name: str) -> ctypes.CDLL:
    """Loads ``DAXFringix`` or ``fringix-scan``. Calls through it release the interpreter lock.

    Raises ImportError, with each place that was tried and what the system said of it.
    """
    file_name = _file_names[name].get(sys.platform)
    if file_name is None:
        raise ImportError(f"fringix runs on Windows and Linux, not on {sys.platform}")
    said = []
    for path in _candidates(file_name):
        try:
            return ctypes.CDLL(path)
        except OSError as error:
            said.append(f"{path}: {error}")
    raise ImportError(
        f"cannot load {file_name}. Install a wheel that has it inside, or name its folder in {FOLDER_VARIABLE}.\n  " + "\n  ".join(said)
    )

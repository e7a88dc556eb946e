"""How Sphinx makes the site: of pages that gather.py has put into one folder, and of the docstrings of the Python package."""

import os
import pathlib
import re
import sys
import unittest.mock

ROOT = pathlib.Path(os.environ["FRINGIX_ROOT"])
sys.path.insert(0, str(ROOT / "python"))

# The package loads the libraries when it is imported; its docstrings are read without them.
from fringix import _library  # noqa: E402

_library.load = lambda name: unittest.mock.MagicMock()

project = "Fringix"
author = copyright = ""
version = re.search(r"project\(Fringix VERSION ([0-9.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
extensions = ["myst_parser", "sphinx.ext.autodoc"]
myst_heading_anchors = 4
autodoc_mock_imports = ["cv2", "open3d", "pytest"]
autodoc_member_order = "bysource"
autodoc_default_options = {"members": True, "undoc-members": True, "show-inheritance": True}

html_theme = "furo"
html_title = f"Fringix {version}"
html_copy_source = html_show_sphinx = html_show_copyright = False
html_extra_path = ["extra"]


def as_definitions(app, what, name, obj, options, lines):
    """A list of "name -- meaning" becomes one of definitions."""
    found = []
    in_list = False
    for line in lines:
        item = re.fullmatch(r"(\S.{0,40}?) +-- (.*)", line)
        goes_on = in_list and line.startswith(" ")
        if (bool(item) or goes_on) != in_list:
            found.append("")
        found += [item[1], f"    {item[2]}"] if item else [f"    {line.strip()}" if goes_on else line]
        in_list = bool(item) or goes_on
    lines[:] = found


def setup(app):
    app.connect("autodoc-process-docstring", as_definitions)

"""``python -m fringix``: finds heads, fetches pictures, scans, and starts simulated heads."""

from __future__ import annotations

import sys

from ._tool import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

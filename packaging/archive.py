#!/usr/bin/python3
"""archive.py FOLDER FILE

Packs what is in a folder into a .zip or .tar.gz: sorted by name, of nobody, at the time of SOURCE_DATE_EPOCH.
"""

import gzip
import os
import pathlib
import sys
import tarfile
import time
import zipfile


def mode_of(path: pathlib.Path) -> int:
    return 0o755 if os.access(path, os.X_OK) else 0o644


def write_zip(files: dict[str, pathlib.Path], target: str, moment: int) -> None:
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, path in files.items():
            entry = zipfile.ZipInfo(name, time.gmtime(moment)[:6])
            entry.external_attr = (0o100000 | mode_of(path)) << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, path.read_bytes())


def write_tar(files: dict[str, pathlib.Path], target: str, moment: int) -> None:
    with open(target, "wb") as raw, gzip.GzipFile("", "wb", 9, raw, moment) as packed, tarfile.open(fileobj=packed, mode="w") as archive:
        for name, path in files.items():
            entry = tarfile.TarInfo(name)
            entry.size, entry.mode, entry.mtime = path.stat().st_size, mode_of(path), moment
            with open(path, "rb") as content:
                archive.addfile(entry, content)


folder, target = pathlib.Path(sys.argv[1]), sys.argv[2]
paths = sorted(path for path in folder.rglob("*") if path.is_file())
write = write_zip if target.endswith(".zip") else write_tar
write({path.relative_to(folder).as_posix(): path for path in paths}, target, int(os.environ["SOURCE_DATE_EPOCH"]))
